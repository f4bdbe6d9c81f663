#include "window/SelectionLine.h"

#include "canvas/Counted.h"
#include "canvas/ViewState.h"
#include "edit/CloudPoints.h"

#include <QStringList>

namespace vrkview {
namespace {

QString describeSelection(const ViewState& state)
{
    QStringList parts;
    if (const std::size_t things = state.getSelected().size(); things > 0)
        parts << counted(things, "thing", "things");
    if (const std::size_t faces = state.getSelectedFaces().size(); faces > 0)
        parts << counted(faces, "face", "faces");
    if (const std::size_t edges = state.getSelectedEdges().size(); edges > 0)
        parts << counted(edges, "edge", "edges");
    if (const ViewState::CloudPoints& clouds = state.getSelectedPoints(); !clouds.empty()) {
        std::size_t points = 0;
        for (const auto& [id, numbers] : clouds)
            points += numbers.size();
        parts << counted(points, "point", "points") + " of " + counted(clouds.size(), "cloud", "clouds");
    }
    return parts.isEmpty() ? QString() : parts.join(", ") + " selected";
}

} // namespace

SelectionLine::SelectionLine(const ViewState& state, QWidget* parent) : QLabel(parent), state(state)
{
    connect(&state, &ViewState::selectionChanged, this, &SelectionLine::follow);
    connect(&state, &ViewState::visibilityChanged, this, &SelectionLine::follow);
    connect(&state, &ViewState::stationChanged, this, &SelectionLine::follow);
    follow();
}

void SelectionLine::follow()
{
    QStringList parts;
    if (const QString selected = describeSelection(state); !selected.isEmpty())
        parts << selected;
    if (const std::size_t hidden = countHiddenPoints(); hidden > 0)
        parts << counted(hidden, "point", "points") + " hidden";
    setText(parts.join(", "));
}

} // namespace vrkview
