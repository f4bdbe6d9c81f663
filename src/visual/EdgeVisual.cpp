#include "visual/EdgeVisual.h"

#include "platform/common/SharedThings.h"
#include "platform/sdf/SdfManager.h"
#include "scene/math/Trsf.h"
#include "visual/ArrowVisual.h"
#include "visual/DynamicLines.h"

#include <BRep_Tool.hxx>
#include <Poly_Polygon3D.hxx>
#include <TopLoc_Location.hxx>

#include <algorithm>
#include <utility>

namespace vrk::visual {
namespace {

/// The strip through the nodes of a polygon, with which all edges of it are drawn. It keeps the polygon, by which it is known.
struct PolygonLines {
    explicit PolygonLines(const Handle(Poly_Polygon3D) & polygon) : polygon(polygon)
    {
        for (const gp_Pnt& node : polygon->Nodes()) {
            const rob::PosTemplate<float> point = rob::toPosf(node);
            if (point.isFinite())
                lines.addPoint(point.x, point.y, point.z);
        }
        lines.update();
    }

    Handle(Poly_Polygon3D) polygon;
    DynamicLines lines{RenderOpType::LineStrip};
};

std::shared_ptr<const DynamicLines> linesOf(const Handle(Poly_Polygon3D) & polygon)
{
    using AllLines = common::SharedThings<const Poly_Polygon3D*, PolygonLines>;
    static auto* const all = new AllLines; // edges may live as long as the process
    const std::shared_ptr<const PolygonLines> known = all->get(
        polygon.get(), [](const PolygonLines&) { return true; },
        [&polygon] { return std::make_shared<const PolygonLines>(polygon); });
    return {known, &known->lines};
}

} // namespace

EdgeVisual::EdgeVisual(unsigned id, const std::string& name, Visual* parent, const TopoDS_Edge& edge, EdgeOrigin origin)
    : Visual(id, name, parent), lines(std::make_unique<DynamicLines>(RenderOpType::LineStrip)), edge(edge)
{
    type = origin == EdgeOrigin::Generated ? VisualType::GeneratedEdge : VisualType::Edge;
    attachObject(lines.get());
}

EdgeVisual::~EdgeVisual() = default;

std::optional<EdgeVisual*> EdgeVisual::Build(Visual* parent, const std::string& prefix, const TopoDS_Edge& edge,
                                             const EdgeMaterials& materials, EdgeOrigin origin)
{
    if (edge.IsNull())
        return std::nullopt;
    TopLoc_Location location;
    const Handle(Poly_Polygon3D) polygon = BRep_Tool::Polygon3D(edge, location);
    if (polygon.IsNull())
        return std::nullopt;
    const unsigned id = sdf::SdfManager::GenerateTransientId();
    auto* visual = new EdgeVisual(id, prefix + std::to_string(id), parent, edge, origin);
    visual->setMaterial(materials.normal, materials.selected, materials.highlighted);
    if (!location.IsIdentity())
        visual->setPose(rob::GP_Trsf2Posef(location.Transformation()));
    visual->lines->drawAs(linesOf(polygon));
    return visual;
}

void EdgeVisual::addArrow(bool forward)
{
    const TopAbs_Orientation orientation = edge.Orientation();
    const bool atEnd = (forward && orientation == TopAbs_FORWARD) || (!forward && orientation == TopAbs_REVERSED);
    const ArrowPlace place = ArrowVisual::PlaceOn(edge, atEnd);
    // The place has the edge's location in it, which what is drawn has not: that lies in the frame of this visual, wherever
    // it was put.
    TopLoc_Location location;
    BRep_Tool::Polygon3D(edge, location);
    const rob::PoseTemplate<float> toLocal = rob::GP_Trsf2Posef(location.Transformation()).inverse();
    arrow = MeshVisual::BuildArrow(this, toLocal * place.position, toLocal * place.direction);
}

void EdgeVisual::clearArrow()
{
    MeshVisual* latest = std::exchange(arrow, nullptr);
    const VisualChildren children = getChildren();
    // It may have been deleted like any other visual.
    if (latest && std::find(children.begin(), children.end(), latest) != children.end())
        Delete(latest);
}

void EdgeVisual::setRenderGroup(std::uint8_t group)
{
    lines->setRenderQueueGroup(group);
}

void EdgeVisual::update()
{
    lines->update();
}

} // namespace vrk::visual
