#include "canvas/Picked.h"

#include "docks/ProgramText.h"
#include "docks/StationTree.h"

#include "selection/geometry/Result.h"
#include "visual/SolidVisual.h"

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::selection::Result;
using vrk::visual::Visual;

/// The move whose target or arrow was hit, or the path whose line; null for anything else.
const Visual* moveOf(const Result& result)
{
    for (const Visual* visual = result.hit ? result.visual : nullptr; visual; visual = visual->getParent())
        if (visual->getType() == VisualType::MoveInstruction || visual->getType() == VisualType::Path)
            return visual;
    return nullptr;
}

/// The row of what was hit, or of the next thing above it that has one: edges of a body have none.
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

} // namespace

unsigned thingOf(const StationTree& tree, const Result& result)
{
    if (const Visual* move = moveOf(result))
        return move->getId();
    const int row = rowOf(tree, result.hit ? result.visual : nullptr);
    return row == StationTree::none ? 0 : at(tree, wholeOf(tree, row)).id;
}

bool hasHighlight(const Visual& thing)
{
    return thing.getType() != VisualType::PointCloud;
}

unsigned faceOf(const Result& result)
{
    const auto* solid = dynamic_cast<const vrk::visual::SolidVisual*>(result.visual);
    return result.hit && solid && !result.face.IsNull() ? solid->getFaceIndex(TopoDS::Face(result.face)) : 0;
}

unsigned edgeOf(const Result& result)
{
    const auto* solid = dynamic_cast<const vrk::visual::SolidVisual*>(result.visual);
    const auto edge = solid ? result.getFaceEdge() : std::nullopt;
    if (!edge)
        return 0;
    TopTools_IndexedMapOfShape edges; // the result counts those of the face
    TopExp::MapShapes(solid->getShape(), TopAbs_EDGE, edges);
    return static_cast<unsigned>(edges.FindIndex(edge->edge));
}

QString describeForUser(const StationTree& tree, const Result& result)
{
    if (const Visual* move = moveOf(result))
        return describeProgramThing(move->getId());
    const int row = rowOf(tree, result.hit ? result.visual : nullptr);
    if (row == StationTree::none)
        return {};
    const StationTree::Row& piece = at(tree, row);
    const StationTree::Row& whole = at(tree, wholeOf(tree, row));
    QString text = QString::fromStdString(whole.name);
    // A part of one body has mostly its name.
    if (&piece != &whole && piece.name != whole.name)
        text += QStringLiteral(" › ") + QString::fromStdString(piece.name);
    if (const unsigned face = faceOf(result))
        text += QStringLiteral(", face %1").arg(face);
    if (result.pointIndex >= 0)
        text += QStringLiteral(", point %1").arg(result.pointIndex);
    return text;
}

} // namespace vrkview
