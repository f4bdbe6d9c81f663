#include "canvas/Picked.h"

#include "docks/ProgramText.h"
#include "docks/StationTree.h"

#include "visual/Visual.h"

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::selection::PickCandidate;
using vrk::selection::PickKind;
using vrk::visual::Visual;

/// The move whose target or arrow this is, or the path whose line; null for anything else.
const Visual* moveOf(const Visual& part)
{
    for (const Visual* visual = &part; visual; visual = visual->getParent())
        if (visual->getType() == VisualType::MoveInstruction || visual->getType() == VisualType::Path)
            return visual;
    return nullptr;
}

/// The row of this, or of the next thing above it that has one: edges of a body have none.
int rowOf(const StationTree& tree, const Visual* visual)
{
    for (; visual; visual = visual->getParent())
        if (const int row = tree.find(visual->getId()); row != StationTree::none)
            return row;
    return StationTree::none;
}

const StationTree::Row& at(const StationTree& tree, int row)
{
    return tree.getRows()[static_cast<std::size_t>(row)];
}

/// Whether it is a piece of what stands above it in the tree.
bool isPiece(const StationTree& tree, const StationTree::Row& row)
{
    if (row.parent == StationTree::none || !row.followsParent)
        return false;
    switch (row.kind) {
    case VisualType::Solid:
    case VisualType::Mesh:
    case VisualType::Curve:
    case VisualType::Point:
    case VisualType::Link:
    case VisualType::Wrist:
        return true;
    case VisualType::Part: // the shape of a link
        return at(tree, row.parent).kind == VisualType::Link || at(tree, row.parent).kind == VisualType::Wrist;
    default:
        return false;
    }
}

int wholeOf(const StationTree& tree, int row)
{
    while (isPiece(tree, at(tree, row)))
        row = at(tree, row).parent;
    return row;
}

/// What of the thing was found, beyond its name.
QString describePiece(const PickCandidate& found)
{
    switch (found.kind) {
    case PickKind::Face:
        return QStringLiteral(", face %1").arg(found.subId);
    case PickKind::Edge:
        return QStringLiteral(", edge %1").arg(found.subId);
    case PickKind::CloudPoint:
        return QStringLiteral(", point %1").arg(found.subId);
    case PickKind::Vertex:
        return QStringLiteral(", vertex at (%1, %2, %3)")
            .arg(found.place.x, 0, 'f', 2)
            .arg(found.place.y, 0, 'f', 2)
            .arg(found.place.z, 0, 'f', 2);
    default:
        return {};
    }
}

} // namespace

unsigned thingOf(const StationTree& tree, const Visual& visual)
{
    if (const Visual* move = moveOf(visual))
        return move->getId();
    const int row = rowOf(tree, &visual);
    return row == StationTree::none ? 0 : at(tree, wholeOf(tree, row)).id;
}

bool hasHighlight(const Visual& thing)
{
    return thing.getType() != VisualType::PointCloud;
}

QString describeForUser(const StationTree& tree, const PickCandidate& found)
{
    if (const Visual* move = moveOf(*found.visual))
        return describeProgramThing(move->getId());
    const int row = rowOf(tree, found.visual);
    if (row == StationTree::none)
        return {};
    const StationTree::Row& piece = at(tree, row);
    const StationTree::Row& whole = at(tree, wholeOf(tree, row));
    QString text = QString::fromStdString(whole.name);
    // A part of one body has mostly its name.
    if (&piece != &whole && piece.name != whole.name)
        text += QStringLiteral(" › ") + QString::fromStdString(piece.name);
    return text + describePiece(found);
}

Picked::Picked(const StationTree& tree, const PickCandidate& candidate)
    : candidate(candidate), thing(thingOf(tree, *candidate.visual)), text(describeForUser(tree, candidate))
{
}

} // namespace vrkview
