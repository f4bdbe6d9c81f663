#include "selection/pick/ShapeBorders.h"

#include "selection/SensitiveFace.h"
#include "selection/geometry/BVHNode.h"

#include <BRep_Tool.hxx>
#include <Poly_Polygon3D.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Vertex.hxx>

#include <algorithm>
#include <cmath>

namespace vrk::selection {
namespace {

constexpr std::size_t sectionsOfAPiece = 8;

rob::Posd toPosd(const gp_Pnt& p)
{
    return {p.X(), p.Y(), p.Z()};
}

bool isFinite(const rob::Posd& p)
{
    return rob::PosTemplate<float>(p).isFinite();
}

/// The polygon along which the triangles of the face end, else the edge's own. Places that are not finite are left out.
std::vector<rob::Posd> polygonOf(const TopoDS_Edge& edge, const TopoDS_Face& face)
{
    std::vector<rob::Posd> polygon;
    const auto add = [&polygon](const gp_Pnt& p) {
        if (isFinite(toPosd(p)))
            polygon.push_back(toPosd(p));
    };
    TopLoc_Location location;
    const Handle(Poly_Triangulation) triangles = BRep_Tool::Triangulation(face, location);
    if (!triangles.IsNull()) {
        const Handle(Poly_PolygonOnTriangulation) nodes = BRep_Tool::PolygonOnTriangulation(edge, triangles, location);
        for (int i = 1; !nodes.IsNull() && i <= nodes->NbNodes(); ++i)
            add(triangles->Node(nodes->Nodes().Value(i)).Transformed(location.Transformation()));
    }
    if (!polygon.empty())
        return polygon;
    const Handle(Poly_Polygon3D) own = BRep_Tool::Polygon3D(edge, location);
    for (int i = 1; !own.IsNull() && i <= own->NbNodes(); ++i)
        add(own->Nodes().Value(i).Transformed(location.Transformation()));
    return polygon;
}

/// A node over pieces, which are halved in the middle of the longest axis of their centres, whatever the unit.
BVHNode* nodeOver(std::span<BVHPrimitive*> pieces, Arena& arena)
{
    constexpr std::size_t alignment = 8;
    if (pieces.size() <= BVHLeaf::capacity) {
        auto* leaf = new (arena.allocate(sizeof(BVHLeaf), alignment)) BVHLeaf();
        for (BVHPrimitive* piece : pieces)
            leaf->add(piece);
        return leaf;
    }
    visual::Box centers;
    for (BVHPrimitive* piece : pieces)
        centers.addPoint(piece->box.getCenter());
    const unsigned axis = centers.maxDim();
    const std::size_t half = pieces.size() / 2;
    std::ranges::nth_element(pieces, pieces.begin() + static_cast<std::ptrdiff_t>(half), {},
                             [axis](BVHPrimitive* piece) { return piece->box.getCenter()[axis]; });
    BVHNode* left = nodeOver(pieces.first(half), arena);
    BVHNode* right = nodeOver(pieces.subspan(half), arena);
    return new (arena.allocate(sizeof(BVHInnerNode), alignment)) BVHInnerNode(left, right, axis);
}

} // namespace

ShapeBorders::Piece::Piece(const rob::Posd* first, unsigned count, unsigned number, bool isVertex)
    : points(first, count), number(number), isVertex(isVertex)
{
    for (const rob::Posd& p : points)
        box.addPoint(rob::PosTemplate<float>(p));
    box.updateCenter();
}

ShapeBorders::ShapeBorders(const TopoDS_Shape& shape, const std::vector<BVHPrimitive*>& faces)
{
    struct Strip {
        std::size_t first, count;
        unsigned number;
        bool isVertex;
    };
    TopTools_IndexedMapOfShape edges, vertices;
    TopExp::MapShapes(shape, TopAbs_EDGE, edges);
    TopExp::MapShapes(shape, TopAbs_VERTEX, vertices);
    std::vector<bool> hasEdge(static_cast<std::size_t>(edges.Size()) + 1);
    std::vector<bool> hasVertex(static_cast<std::size_t>(vertices.Size()) + 1);
    std::vector<Strip> strips;
    const auto addVertex = [&](const TopoDS_Vertex& vertex) {
        const auto number = static_cast<unsigned>(vertex.IsNull() ? 0 : vertices.FindIndex(vertex));
        if (number == 0 || hasVertex[number])
            return;
        hasVertex[number] = true;
        const rob::Posd place = toPosd(BRep_Tool::Pnt(vertex));
        if (!isFinite(place))
            return;
        strips.push_back({points.size(), 1, number, true});
        points.push_back(place);
    };
    for (const BVHPrimitive* primitive : faces) {
        const TopoDS_Face& face = static_cast<const SensitiveFace*>(primitive)->getFace();
        for (TopExp_Explorer explorer(face, TopAbs_EDGE); explorer.More(); explorer.Next()) {
            const TopoDS_Edge& edge = TopoDS::Edge(explorer.Current());
            const auto number = static_cast<unsigned>(edges.FindIndex(edge));
            if (number == 0 || hasEdge[number])
                continue;
            hasEdge[number] = true;
            addVertex(TopExp::FirstVertex(edge));
            addVertex(TopExp::LastVertex(edge));
            if (BRep_Tool::Degenerated(edge))
                continue;
            const std::vector<rob::Posd> polygon = polygonOf(edge, face);
            if (polygon.size() < 2)
                continue;
            strips.push_back({points.size(), polygon.size(), number, false});
            points.insert(points.end(), polygon.begin(), polygon.end());
        }
    }
    // Now that the points stay where they are.
    for (const Strip& strip : strips) {
        const rob::Posd* first = points.data() + strip.first;
        if (strip.isVertex) {
            pieces.emplace_back(first, 1, strip.number, true);
            continue;
        }
        for (std::size_t at = 0; at + 1 < strip.count; at += sectionsOfAPiece) {
            const std::size_t count = std::min(sectionsOfAPiece + 1, strip.count - at);
            pieces.emplace_back(first + at, static_cast<unsigned>(count), strip.number, false);
        }
    }
    std::vector<BVHPrimitive*> all;
    for (Piece& piece : pieces)
        all.push_back(&piece);
    if (!all.empty())
        bvh.root = nodeOver(all, *bvh.arena);
}

} // namespace vrk::selection
