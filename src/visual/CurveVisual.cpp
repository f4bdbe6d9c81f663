#include "visual/CurveVisual.h"

#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "visual/EdgeVisual.h"
#include "visual/Picking.h"

#include <BRepTools_WireExplorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Wire.hxx>

#include <algorithm>

namespace vrk::visual {
namespace {

const EdgeMaterials curveMaterials{"BodyCurve", "BodyCurveHighlighted", "BodyCurveSelected"};

template <typename Call>
void forEdges(const Visual& curve, const Call& call)
{
    for (Visual* child : curve.getChildren())
        if (child->getType() == VisualType::Edge)
            call(*child);
}

} // namespace

CurveVisual::CurveVisual(sdf::SdfNode* node, const TopoDS_Shape& shape, Visual* parent)
    : BodyVisual(node, parent), shape(shape)
{
    type = VisualType::Curve;
}

CurveVisual::CurveVisual(const std::string& name, const TopoDS_Shape& shape, Visual* parent)
    : BodyVisual(name, parent), shape(shape)
{
    type = VisualType::Curve;
}

void CurveVisual::Build(Visual* parent, sdf::SdfNode* node, const TopoDS_Shape& shape)
{
    auto* visual = new CurveVisual(node, shape, parent);
    SceneCore::Get()->visuals.enter(visual);
    const std::shared_ptr<sdf::Element> element = node->getElement();
    const std::string uri = sdf::textAt(*element, "geometry/uri");
    const std::shared_ptr<sdf::Element> owner = element->getParent();
    // Without a shape it is a wire of no edges: what is not there has no type to ask for.
    if (!shape.IsNull() && shape.ShapeType() == TopAbs_EDGE)
        visual->addEdge(uri, TopoDS::Edge(shape));
    else
        for (BRepTools_WireExplorer walk(TopoDS::Wire(shape)); walk.More(); walk.Next())
            visual->addEdge(uri, walk.Current());
    picking::addCurveVisual(shape, visual, owner && sdf::boolAt(*owner, "detectable"));
}

void CurveVisual::Build(Visual* parent, const TopoDS_Shape& shape)
{
    auto* visual = new CurveVisual(parent->getName() + "_curve_", shape, parent);
    visual->addEdge(visual->getName(), TopoDS::Edge(shape));
    picking::addCurveVisual(shape, visual, false);
}

void CurveVisual::addEdge(const std::string& prefix, const TopoDS_Edge& edge)
{
    if (const auto built = EdgeVisual::Build(this, prefix, edge, curveMaterials, EdgeOrigin::Curve))
        edges.push_back(*built);
}

void CurveVisual::dropDeletedEdges()
{
    const VisualChildren children = getChildren();
    std::erase_if(edges, [&](const EdgeVisual* edge) {
        return std::find(children.begin(), children.end(), edge) == children.end();
    });
}

void CurveVisual::addArrow(bool forward)
{
    arrowForward = forward;
    dropDeletedEdges();
    if (!edges.empty())
        (forward ? edges.back() : edges.front())->addArrow(forward);
}

void CurveVisual::clearArrow()
{
    dropDeletedEdges();
    for (EdgeVisual* edge : edges)
        edge->clearArrow();
}

void CurveVisual::resetAppearance()
{
    forEdges(*this, [](Visual& edge) { edge.resetAppearance(); });
}

void CurveVisual::setSelected()
{
    forEdges(*this, [](Visual& edge) { edge.setSelected(); });
}

void CurveVisual::setHighlighted()
{
    forEdges(*this, [](Visual& edge) { edge.setHighlighted(); });
}

} // namespace vrk::visual
