#include "canvas/Ghosts.h"

#include "canvas/ProgramThings.h"
#include "canvas/ViewState.h"

#include "scene/ViewLook.h"

namespace vrkview {

Ghosts::Ghosts(const ViewState& state, QObject* parent) : QObject(parent), state(state)
{
    connect(&state, &ViewState::selectionChanged, this, &Ghosts::follow);
}

void Ghosts::setOn(bool wanted)
{
    on = wanted;
    follow();
}

void Ghosts::follow() const
{
    if (!on || !state.isAnySelected()) {
        vrk::visual::EndGhosts();
        return;
    }
    std::vector<unsigned> whole = visualsOf(state.getSelected());
    for (const auto& [body, face] : state.getSelectedFaces())
        whole.push_back(body);
    for (const auto& [body, edge] : state.getSelectedEdges())
        whole.push_back(body);
    for (const auto& [cloud, points] : state.getSelectedPoints())
        whole.push_back(cloud);
    vrk::visual::SetGhostsExcept(whole);
}

} // namespace vrkview
