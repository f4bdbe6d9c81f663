#include "canvas/Ghosts.h"

#include "canvas/ProgramThings.h"
#include "canvas/ViewState.h"
#include "docks/StationTree.h"

#include "scene/ViewLook.h"

#include <fmt/format.h>

#include <stdexcept>

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

void showGhostsExcept(const std::vector<std::string>& names)
{
    const StationTree tree = StationTree::OfScene();
    std::vector<unsigned> whole;
    for (const std::string& name : names) {
        const std::size_t before = whole.size();
        for (const StationTree::Row& row : tree.getRows())
            if (row.name == name)
                whole.push_back(row.id);
        if (whole.size() == before)
            throw std::runtime_error(fmt::format("nothing in the station is named '{}'", name));
    }
    vrk::visual::SetGhostsExcept(visualsOf(whole));
}

} // namespace vrkview
