#include "selection/ShapeBorders.h"

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
#include <TopoDS_Face.hxx>

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

/// The polygon of an edge along which the triangles of a face end, else the edge's own. Places that are not finite are left
/// out.
class FacePolygons {
public:
    explicit FacePolygons(const TopoDS_Face& face) : triangles(BRep_Tool::Triangulation(face, location)) {}

    void read(const TopoDS_Edge& edge, std::vector<rob::Posd>& polygon)
    {
        polygon.clear();
        if (BRep_Tool::Degenerated(edge))
            return;
        if (!triangles.IsNull()) {
            const auto& nodes = BRep_Tool::PolygonOnTriangulation(edge, triangles, location);
            for (int i = 1; !nodes.IsNull() && i <= nodes->NbNodes(); ++i)
                add(triangles->Node(nodes->Nodes().Value(i)).Transformed(location.Transformation()), polygon);
        }
        if (!polygon.empty())
            return;
        TopLoc_Location ofEdge;
        const Handle(Poly_Polygon3D) own = BRep_Tool::Polygon3D(edge, ofEdge);
        for (int i = 1; !own.IsNull() && i <= own->NbNodes(); ++i)
            add(own->Nodes().Value(i).Transformed(ofEdge.Transformation()), polygon);
    }

private:
    static void add(const gp_Pnt& p, std::vector<rob::Posd>& polygon)
    {
        if (isFinite(toPosd(p)))
            polygon.push_back(toPosd(p));
    }

    TopLoc_Location location;
    Handle(Poly_Triangulation) triangles;
};

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

ShapeBorders::Piece::Piece(std::span<const rob::Posd> points, unsigned number, bool isVertex)
    : points(points), number(number), isVertex(isVertex)
{
    for (const rob::Posd& p : points)
        box.addPoint(rob::PosTemplate<float>(p));
    box.updateCenter();
}

ShapeBorders::ShapeBorders(const TopoDS_Shape& shape, const std::vector<BVHPrimitive*>& faces)
    : shape(shape), faces(faces)
{
    TopTools_IndexedMapOfShape all;
    TopExp::MapShapes(shape, TopAbs_EDGE, all);
    std::vector<bool> isKnown(static_cast<std::size_t>(all.Size()) + 1);
    std::vector<rob::Posd> polygon;
    for (const BVHPrimitive* primitive : faces) {
        const TopoDS_Face& face = static_cast<const SensitiveFace*>(primitive)->getFace();
        FacePolygons polygons(face);
        for (TopExp_Explorer explorer(face, TopAbs_EDGE); explorer.More(); explorer.Next()) {
            const auto number = static_cast<unsigned>(all.FindIndex(explorer.Current()));
            if (number == 0 || isKnown[number])
                continue;
            isKnown[number] = true;
            polygons.read(TopoDS::Edge(explorer.Current()), polygon);
            addEdge(number, polygon);
        }
    }
}

void ShapeBorders::addEdge(unsigned number, const std::vector<rob::Posd>& polygon)
{
    if (polygon.size() < 2)
        return;
    Edge edge{number, points.size(), points.size() + polygon.size(), polygon.front(), polygon.front()};
    for (const rob::Posd& p : polygon) {
        edge.lower = {std::min(edge.lower.x, p.x), std::min(edge.lower.y, p.y), std::min(edge.lower.z, p.z)};
        edge.higher = {std::max(edge.higher.x, p.x), std::max(edge.higher.y, p.y), std::max(edge.higher.z, p.z)};
    }
    edges.push_back(edge);
    points.insert(points.end(), polygon.begin(), polygon.end());
}

const BVHNode* ShapeBorders::getRoot() const
{
    std::call_once(treeAsked, [this] { buildHierarchy(); });
    return bvh.root;
}

void ShapeBorders::gatherVertices() const
{
    TopTools_IndexedMapOfShape all;
    TopExp::MapShapes(shape, TopAbs_VERTEX, all);
    std::vector<bool> isKnown(static_cast<std::size_t>(all.Size()) + 1);
    for (const BVHPrimitive* face : faces)
        for (TopExp_Explorer explorer(static_cast<const SensitiveFace*>(face)->getFace(), TopAbs_VERTEX);
             explorer.More(); explorer.Next()) {
            const auto number = static_cast<unsigned>(all.FindIndex(explorer.Current()));
            if (number == 0 || isKnown[number])
                continue;
            isKnown[number] = true;
            if (const rob::Posd place = toPosd(BRep_Tool::Pnt(TopoDS::Vertex(explorer.Current()))); isFinite(place))
                vertices.push_back({number, place});
        }
}

void ShapeBorders::buildHierarchy() const
{
    pieces.clear(); // of an attempt that failed
    vertices.clear();
    gatherVertices();
    for (const Vertex& vertex : vertices)
        pieces.emplace_back(std::span(&vertex.place, 1), vertex.number, true);
    for (const Edge& edge : edges) {
        const std::span<const rob::Posd> all = pointsOf(edge);
        for (std::size_t at = 0; at + 1 < all.size(); at += sectionsOfAPiece)
            pieces.emplace_back(all.subspan(at, std::min(sectionsOfAPiece + 1, all.size() - at)), edge.number, false);
    }
    std::vector<BVHPrimitive*> all;
    for (Piece& piece : pieces)
        all.push_back(&piece);
    if (!all.empty())
        bvh.root = nodeOver(all, *bvh.arena);
}

} // namespace vrk::selection
