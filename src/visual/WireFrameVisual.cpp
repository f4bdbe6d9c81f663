#include "visual/WireFrameVisual.h"

#include "scene/math/Trsf.h"

#include <BRep_Tool.hxx>
#include <Poly_Polygon3D.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>

namespace vrk::visual {
namespace {

/// Draws a polyline of `count` nodes, `node(i)` being the i-th one, counted from 1.
template <typename Node>
void addPolyline(WireFrameVisual& visual, int count, const TopLoc_Location& location, const Node& node)
{
    const gp_Trsf& trsf = location.Transformation();
    gp_Pnt previous;
    for (int i = 1; i <= count; ++i) {
        const gp_Pnt point = node(i).Transformed(trsf);
        if (i > 1)
            visual.addSegment(previous, point);
        previous = point;
    }
}

void addEdge(WireFrameVisual& visual, const TopoDS_Edge& edge)
{
    if (BRep_Tool::Degenerated(edge))
        return;
    TopLoc_Location location;
    if (const Handle(Poly_Polygon3D) polygon = BRep_Tool::Polygon3D(edge, location); !polygon.IsNull()) {
        addPolyline(visual, polygon->NbNodes(), location, [&](int i) { return polygon->Nodes()(i); });
        return;
    }
    Handle(Poly_PolygonOnTriangulation) polygon;
    Handle(Poly_Triangulation) triangulation;
    BRep_Tool::PolygonOnTriangulation(edge, polygon, triangulation, location);
    if (!polygon.IsNull() && !triangulation.IsNull())
        addPolyline(visual, polygon->NbNodes(), location, [&](int i) { return triangulation->Node(polygon->Node(i)); });
}

} // namespace

WireFrameVisual::WireFrameVisual(Visual* parent) : Visual("WireFrame", parent)
{
    type = VisualType::WireFrame;
    attachObject(&lines);
}

WireFrameVisual* WireFrameVisual::Build(Visual* parent, const TopoDS_Shape& shape)
{
    auto* visual = new WireFrameVisual(parent);
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(shape, TopAbs_EDGE, edges);
    for (int i = 1; i <= edges.Extent(); ++i)
        addEdge(*visual, TopoDS::Edge(edges(i)));
    visual->update();
    visual->setMaterial("WireFrame", "BodyCurveSelected", "BodyCurveHighlighted");
    return visual;
}

void WireFrameVisual::addSegment(const gp_Pnt& a, const gp_Pnt& b)
{
    // Finite as floats, which is what is drawn.
    const auto from = rob::toPosf(a);
    const auto to = rob::toPosf(b);
    if (!from.isFinite() || !to.isFinite())
        return;
    lines.addPoint(from.x, from.y, from.z);
    lines.addPoint(to.x, to.y, to.z);
}

void WireFrameVisual::update()
{
    lines.update();
}

} // namespace vrk::visual
