#include "visual/WireFrameVisual.h"

#include "platform/geometry/EdgePolygons.h"
#include "scene/math/Trsf.h"

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>

namespace vrk::visual {
namespace {

void addEdge(WireFrameVisual& visual, const TopoDS_Edge& edge)
{
    gp_Pnt previous;
    bool isFirst = true;
    geometry::forEachNode(edge, [&](const gp_Pnt& node) {
        if (!isFirst)
            visual.addSegment(previous, node);
        previous = node;
        isFirst = false;
    });
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
    visual->useOwnMaterial();
    return visual;
}

void WireFrameVisual::useOwnMaterial()
{
    setMaterial("WireFrame", "BodyCurveSelected", "BodyCurveHighlighted");
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
