#include "mesh/ShapeTriangles.h"

#include "mesh/AppendMade.h"
#include "platform/common/Logger.h"
#include "platform/geometry/ColorText.h"
#include "scene/core/OcctCompat.h"

#include <BRep_Tool.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Dir.hxx>
#include <gp_Mat.hxx>
#include <gp_Trsf.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace vrk::visual {
namespace {

bool isFinite(const rob::Posf& p)
{
    // One test for three numbers: any of them that is not finite makes the sum so.
    return std::isfinite(p.x * 0 + p.y * 0 + p.z * 0);
}

gp_XYZ coordinates(const gp_Pnt& node)
{
    return node.XYZ();
}
gp_XYZ coordinates(const gp_Vec3f& node)
{
    return {node.x(), node.y(), node.z()};
}
rob::Posf narrow(const gp_XYZ& p)
{
    return {static_cast<float>(p.X()), static_cast<float>(p.Y()), static_cast<float>(p.Z())};
}

template <typename Node>
void appendNodes(Mesh& mesh, const Node* nodes, std::size_t count, const gp_Trsf* trsf)
{
    if (trsf == nullptr)
        appendMade(mesh.vertices, count, [nodes](std::size_t i) { return narrow(coordinates(nodes[i])); });
    else
        appendMade(mesh.vertices, count, [nodes, trsf](std::size_t i) {
            gp_XYZ p = coordinates(nodes[i]);
            trsf->Transforms(p);
            return narrow(p);
        });
}

/// The nodes of a triangulation in their place, as floats.
void appendNodes(Mesh& mesh, const Poly_ArrayOfNodes& nodes, const gp_Trsf* trsf)
{
    using Array = NCollection_AliasedArray<>; // its look-up refuses a type of another size
    const auto count = static_cast<std::size_t>(nodes.Length());
    if (nodes.IsDoublePrecision())
        appendNodes(mesh, &nodes.Array::Value<gp_Pnt>(0), count, trsf);
    else
        appendNodes(mesh, &nodes.Array::Value<gp_Vec3f>(0), count, trsf);
}

/// The normals of a triangulation, made unit length and turned in doubles.
void appendNormals(Mesh& mesh, const NCollection_Array1<gp_Vec3f>& normals, const gp_Trsf* trsf, bool negate)
{
    const gp_Vec3f* first = &normals.First();
    const double side = negate ? -1.0 : 1.0;
    const auto unit = [first, side](std::size_t i) {
        const gp_XYZ n = coordinates(first[i]);
        const double length = n.Modulus();
        if (length <= gp::Resolution())
            gp_Dir{n}; // refuses it
        return n * (side / length);
    };
    const auto count = static_cast<std::size_t>(normals.Length());
    if (trsf == nullptr) {
        appendMade(mesh.normals, count, [&](std::size_t i) { return rob::Vec3f(narrow(unit(i))); });
        return;
    }
    gp_Mat turn = trsf->HVectorialPart();
    if (trsf->ScaleFactor() < 0)
        turn.Multiply(-1);
    appendMade(mesh.normals, count, [&](std::size_t i) { return rob::Vec3f(narrow(unit(i).Multiplied(turn))); });
}

/// Puts the bad nodes of the vertices from `base` on in order. Returns whether each of them is bad; empty if none is.
std::vector<bool> mendNodes(Mesh& mesh, std::size_t base, BadNodes badNodes)
{
    const auto begin = mesh.vertices.begin() + static_cast<std::ptrdiff_t>(base);
    const auto firstBad = std::find_if_not(begin, mesh.vertices.end(), isFinite);
    if (firstBad == mesh.vertices.end())
        return {};
    std::vector<bool> bad(mesh.vertices.size() - base);
    for (auto vertex = firstBad; vertex != mesh.vertices.end(); ++vertex) {
        if (isFinite(*vertex))
            continue;
        bad[static_cast<std::size_t>(vertex - begin)] = true;
        if (badNodes == BadNodes::DropTriangles)
            *vertex = {};
        for (float* coordinate : {&vertex->x, &vertex->y, &vertex->z})
            if (!std::isfinite(*coordinate))
                *coordinate = 0;
    }
    return bad;
}

/// @param dropped  for each node whether its triangles are left out; empty if all stay.
void appendTriangles(Mesh& mesh, const Poly_Array1OfTriangle& triangles, std::size_t base, bool turned,
                     const std::vector<bool>& dropped)
{
    const auto isDropped = [&dropped](int node) { return dropped[static_cast<std::size_t>(node) - 1]; };
    const unsigned offset = static_cast<unsigned>(base) - 1; // nodes are counted from 1
    // Gathered in the cache and copied in groups: a push_back for each index costs several times as much.
    std::array<unsigned, 3 * 512> group;
    std::size_t used = 0;
    const auto flush = [&] {
        mesh.indices.insert(mesh.indices.end(), group.begin(), group.begin() + static_cast<std::ptrdiff_t>(used));
        used = 0;
    };
    const Poly_Triangle* const first = &triangles.First();
    for (const Poly_Triangle& triangle : std::span(first, static_cast<std::size_t>(triangles.Length()))) {
        int a = 0, b = 0, c = 0;
        triangle.Get(a, b, c);
        if (!dropped.empty() && (isDropped(a) || isDropped(b) || isDropped(c)))
            continue;
        if (turned)
            std::swap(a, b);
        if (used == group.size())
            flush();
        for (const int node : {a, b, c})
            group[used++] = offset + static_cast<unsigned>(node);
    }
    flush();
}

/// Makes room for all visible faces at once.
void reserveFaces(Mesh& mesh, const layout::FaceMap& faces, const FaceFilter& isVisible, bool withColors)
{
    std::size_t nodes = 0;
    std::size_t triangles = 0;
    for (int i = 1; i <= faces.Extent(); ++i) {
        const TopoDS_Shape& entry = faces.FindKey(i);
        // What is no face is refused when its turn comes, not here.
        if (entry.IsNull() || entry.ShapeType() != TopAbs_FACE || !isVisible(static_cast<unsigned>(i)))
            continue;
        TopLoc_Location location;
        const Handle(Poly_Triangulation) triangulation = triangulationOf(entry, location);
        if (triangulation.IsNull())
            continue;
        nodes += static_cast<std::size_t>(triangulation->NbNodes());
        triangles += static_cast<std::size_t>(triangulation->NbTriangles());
    }
    mesh.vertices.reserve(nodes);
    mesh.normals.reserve(nodes);
    mesh.colors.reserve(withColors ? nodes : 0);
    mesh.indices.reserve(3 * triangles);
}

rob::Colorf colorOfFace(const ColorInfo& colors, unsigned face, const rob::Colorf& bodyColor)
{
    const auto found = colors.faceColors.find(face);
    return found == colors.faceColors.end() ? bodyColor : geometry::ParseColorText(found->second);
}

} // namespace

Handle(Poly_Triangulation) triangulationOf(const TopoDS_Shape& entry, TopLoc_Location& location)
{
    const TopoDS_Face& face = TopoDS::Face(entry);
    if (face.IsNull())
        return {};
    return BRep_Tool::Triangulation(face, location);
}

std::size_t appendFace(Mesh& mesh, const TopoDS_Shape& entry, const rob::Colorf* color, BadNodes badNodes)
{
    TopLoc_Location location;
    const Handle(Poly_Triangulation) triangulation = triangulationOf(entry, location);
    if (triangulation.IsNull() || triangulation->NbNodes() == 0)
        return 0;
    const gp_Trsf trsf = location.Transformation();
    const gp_Trsf* moved = location.IsIdentity() ? nullptr : &trsf;
    if (!triangulation->HasNormals())
        computeNormals(TopoDS::Face(entry), triangulation);

    const std::size_t base = mesh.vertices.size();
    const TopAbs_Orientation orientation = entry.Orientation();
    appendNodes(mesh, triangulation->InternalNodes(), moved);
    appendNormals(mesh, triangulation->InternalNormals(), moved, orientation == TopAbs_REVERSED);
    if (color != nullptr)
        mesh.colors.insert(mesh.colors.end(), mesh.vertices.size() - base, *color);

    const std::vector<bool> bad = mendNodes(mesh, base, badNodes);
    // The winding turns for every orientation but forward, the normals for reversed alone.
    if (triangulation->NbTriangles() > 0)
        appendTriangles(mesh, triangulation->InternalTriangles(), base, orientation != TopAbs_FORWARD,
                        badNodes == BadNodes::DropTriangles ? bad : std::vector<bool>());
    return static_cast<std::size_t>(std::count(bad.begin(), bad.end(), true));
}

std::unique_ptr<Mesh> makeShapeMesh(std::string meshName, const layout::FaceMap& faces, const FaceFilter& isVisible,
                                    const ColorInfo* colors, const std::string& visualName)
{
    if (faces.IsEmpty())
        return nullptr;
    const rob::Colorf bodyColor =
        colors == nullptr ? rob::Colorf(1, 1, 1) : geometry::ParseColorText(colors->bodyColor);
    auto mesh = std::make_unique<Mesh>(std::move(meshName));
    reserveFaces(*mesh, faces, isVisible, colors != nullptr);

    std::vector<unsigned> missing;
    for (unsigned i = 1; i <= static_cast<unsigned>(faces.Extent()); ++i) {
        if (!isVisible(i))
            continue;
        const TopoDS_Shape& entry = faces.FindKey(static_cast<int>(i));
        TopLoc_Location location;
        if (triangulationOf(entry, location).IsNull()) {
            missing.push_back(i);
            continue;
        }
        std::optional<rob::Colorf> color;
        if (colors != nullptr)
            color = colorOfFace(*colors, i, bodyColor);
        const std::size_t bad = appendFace(*mesh, entry, color ? &*color : nullptr, BadNodes::DropTriangles);
        if (bad > 0)
            AppLogger::inst()->warn(fmt::format(
                "Face {} of '{}' has {} invalid (NaN/Inf) nodes, its triangles are dropped", i, visualName, bad));
    }
    if (mesh->indices.empty() || mesh->vertices.size() < 3)
        return nullptr;
    for (const unsigned i : missing)
        AppLogger::inst()->warn(
            fmt::format("Face {} of '{}' has no triangulation, it is missing in rendering", i, visualName));
    return mesh;
}

VertexRun runOfFace(const layout::FaceMap& faces, const FaceFilter& isVisible, unsigned face)
{
    VertexRun run;
    if (!isVisible(face))
        return run;
    for (unsigned i = 1; i <= face; ++i) {
        if (!isVisible(i))
            continue;
        TopLoc_Location location;
        const Handle(Poly_Triangulation) triangulation = triangulationOf(faces.FindKey(static_cast<int>(i)), location);
        run.start += run.count;
        run.count = triangulation.IsNull() ? 0 : static_cast<std::size_t>(triangulation->NbNodes());
    }
    return run;
}

std::vector<rob::Colorf> vertexColors(const layout::FaceMap& faces, const FaceFilter& isVisible,
                                      const ColorInfo& colors)
{
    std::vector<rob::Colorf> result;
    const rob::Colorf bodyColor = geometry::ParseColorText(colors.bodyColor);
    for (unsigned i = 1; i <= static_cast<unsigned>(faces.Extent()); ++i) {
        if (!isVisible(i))
            continue;
        TopLoc_Location location;
        const Handle(Poly_Triangulation) triangulation = triangulationOf(faces.FindKey(static_cast<int>(i)), location);
        if (triangulation.IsNull())
            continue;
        result.insert(result.end(), static_cast<std::size_t>(triangulation->NbNodes()),
                      colorOfFace(colors, i, bodyColor));
    }
    return result;
}

} // namespace vrk::visual
