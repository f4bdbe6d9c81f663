#include "visual/WireFrameVisual.h"

#include "platform/common/SharedThings.h"
#include "platform/geometry/EdgePolygons.h"
#include "platform/geometry/MeshEdges.h"
#include "platform/geometry/ShapeIdentity.h"
#include "platform/geometry/SmoothEdges.h"
#include "scene/math/Trsf.h"

#include <BRep_Tool.hxx>
#include <Poly_Polygon3D.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Shape.hxx>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace vrk::visual {
namespace {

void appendSegment(DynamicLines& lines, const gp_Pnt& a, const gp_Pnt& b)
{
    // Finite as floats, which is what is drawn.
    const auto from = rob::toPosf(a);
    const auto to = rob::toPosf(b);
    if (!from.isFinite() || !to.isFinite())
        return;
    lines.addPoint(from.x, from.y, from.z);
    lines.addPoint(to.x, to.y, to.z);
}

void addEdge(DynamicLines& lines, const TopoDS_Edge& edge)
{
    gp_Pnt previous;
    bool isFirst = true;
    geometry::forEachNode(edge, [&](const gp_Pnt& node) {
        if (!isFirst)
            appendSegment(lines, previous, node);
        previous = node;
        isFirst = false;
    });
}

/// What an edge is drawn from; null where nothing is.
Handle(Standard_Transient) polygonOf(const TopoDS_Edge& edge)
{
    TopLoc_Location location;
    if (const Handle(Poly_Polygon3D) own = BRep_Tool::Polygon3D(edge, location); !own.IsNull())
        return Handle(Standard_Transient)(own);
    Handle(Poly_PolygonOnTriangulation) onTriangles;
    Handle(Poly_Triangulation) triangles;
    BRep_Tool::PolygonOnTriangulation(edge, onTriangles, triangles, location);
    return Handle(Standard_Transient)(onTriangles);
}

/// The segments of all edges of a shape, with which all bodies of it are drawn. It keeps the shape, by whose identity it is
/// known.
struct ShapeLines {
    explicit ShapeLines(const TopoDS_Shape& shape) : shape(shape)
    {
        const auto all = geometry::facesOfEdges(shape);
        std::vector<TopoDS_Edge> smooth;
        for (int i = 1; i <= all.Extent(); ++i) {
            const TopoDS_Edge& edge = TopoDS::Edge(all.FindKey(i));
            edges.push_back({edge, polygonOf(edge)});
            if (geometry::isSmoothEdge(edge, all(i)))
                smooth.push_back(edge);
            else
                addEdge(lines, edge);
        }
        lines.drawSmoothFrom(lines.getPoints().size() / 2);
        for (const TopoDS_Edge& edge : smooth)
            addEdge(lines, edge);
        lines.update();
    }
    /// False where edges were given other polygons since.
    bool isUpToDate() const
    {
        return std::ranges::all_of(edges, [](const Source& from) { return polygonOf(from.edge) == from.polygon; });
    }

    struct Source {
        TopoDS_Edge edge;
        Handle(Standard_Transient) polygon;
    };

    TopoDS_Shape shape;
    std::vector<Source> edges;
    DynamicLines lines{RenderOpType::Lines};
};

std::shared_ptr<const DynamicLines> linesOf(const TopoDS_Shape& shape)
{
    using AllLines = common::SharedThings<geometry::ShapeIdentity, ShapeLines, geometry::ShapeIdentityHash>;
    static auto* const all = new AllLines; // bodies may live as long as the process
    const std::shared_ptr<const ShapeLines> known = all->get(
        geometry::ShapeIdentity(shape), [](const ShapeLines& before) { return before.isUpToDate(); },
        [&shape] { return std::make_shared<const ShapeLines>(shape); });
    return {known, &known->lines};
}

/// The segments of a list of edges. It keeps the list, by whose address it is known.
struct MeshLines {
    explicit MeshLines(std::shared_ptr<const geometry::MeshEdges> from) : edges(std::move(from))
    {
        for (const rob::Posf& point : edges->points)
            lines.addPoint(point.x, point.y, point.z);
        lines.update();
    }

    std::shared_ptr<const geometry::MeshEdges> edges;
    DynamicLines lines{RenderOpType::Lines};
};

std::shared_ptr<const DynamicLines> linesOf(const std::shared_ptr<const geometry::MeshEdges>& edges)
{
    static auto* const all = new common::SharedThings<const geometry::MeshEdges*, MeshLines>;
    const std::shared_ptr<const MeshLines> known = all->get(
        edges.get(), [](const MeshLines&) { return true; },
        [&edges] { return std::make_shared<const MeshLines>(edges); });
    return {known, &known->lines};
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
    visual->lines.drawAs(linesOf(shape));
    visual->useOwnMaterial();
    return visual;
}

WireFrameVisual* WireFrameVisual::Build(Visual* parent, const std::shared_ptr<const geometry::MeshEdges>& edges)
{
    auto* visual = new WireFrameVisual(parent);
    visual->lines.drawAs(linesOf(edges));
    visual->useOwnMaterial();
    return visual;
}

void WireFrameVisual::useOwnMaterial()
{
    setMaterial("WireFrame", "BodyCurveSelected", "BodyCurveHighlighted");
}

void WireFrameVisual::suitColor(const rob::ColorTemplate<float>& color)
{
    constexpr float dark = 0.16f; // as bright as eyes see it, which is green most
    lines.drawLight(0.21f * color.r + 0.72f * color.g + 0.07f * color.b < dark);
}

void WireFrameVisual::addSegment(const gp_Pnt& a, const gp_Pnt& b)
{
    appendSegment(lines, a, b);
}

void WireFrameVisual::update()
{
    lines.update();
}

} // namespace vrk::visual
