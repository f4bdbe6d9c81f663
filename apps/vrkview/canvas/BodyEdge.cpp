#include "canvas/BodyEdge.h"

#include "scene/Scene.h"
#include "visual/SolidVisual.h"

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Vertex.hxx>

namespace vrkview {

using vrk::visual::Scene;

namespace {

TopoDS_Shape pieceOf(unsigned body, TopAbs_ShapeEnum kind, unsigned number)
{
    const auto* solid =
        Scene::HasVisual(body) ? dynamic_cast<const vrk::visual::SolidVisual*>(Scene::GetVisual(body)) : nullptr;
    if (!solid)
        return {};
    TopTools_IndexedMapOfShape pieces;
    TopExp::MapShapes(solid->getShape(), kind, pieces);
    return number >= 1 && static_cast<int>(number) <= pieces.Size() ? pieces(static_cast<int>(number)) : TopoDS_Shape();
}

} // namespace

TopoDS_Edge edgeOfBody(unsigned body, unsigned edge)
{
    return TopoDS::Edge(pieceOf(body, TopAbs_EDGE, edge));
}

TopoDS_Face faceOfBody(unsigned body, unsigned face)
{
    return TopoDS::Face(pieceOf(body, TopAbs_FACE, face));
}

TopoDS_Vertex vertexOfBody(unsigned body, unsigned vertex)
{
    return TopoDS::Vertex(pieceOf(body, TopAbs_VERTEX, vertex));
}

} // namespace vrkview
