#include "platform/station/urdf/UrdfMesh.h"

#include "platform/geometry/ColorText.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/clouds/PlyMesh.h"
#include "platform/station/import/CadChild.h"
#include "platform/station/import/ImportFormats.h"
#include "platform/station/import/StlFile.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepTools.hxx>

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <map>
#include <sstream>

namespace vrk::station {
namespace {

using Facets = std::vector<StlFacet>;

std::string lowerEnding(const std::filesystem::path& file)
{
    std::string ending = file.extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return ending;
}

std::string keyOf(const std::filesystem::path& mesh, const rob::Vec3d& scale, std::size_t piece)
{
    return fmt::format("{}|{} {} {}|{}", GeometryCache::KeyOf(mesh), scale.x, scale.y, scale.z, piece);
}

void scaleFacets(Facets& facets, const rob::Vec3d& scale)
{
    const bool isMirrored = scale.x * scale.y * scale.z < 0;
    for (StlFacet& facet : facets) {
        for (std::size_t i = 0; i < facet.corners.size(); ++i)
            facet.corners[i] = static_cast<float>(facet.corners[i] * scale[i % 3]);
        if (isMirrored)
            std::swap_ranges(facet.corners.begin() + 3, facet.corners.begin() + 6, facet.corners.begin() + 6);
        facet.computeNormal();
    }
}

CachedShape cachedStl(const std::filesystem::path& mesh, const rob::Vec3d& scale)
{
    const auto make = [&] {
        Facets facets = readStlFacets(mesh);
        scaleFacets(facets, scale);
        return binaryStl(facets);
    };
    return {GeometryCache::Get(mesh.stem().string(), keyOf(mesh, scale, 0), ".stl", make), "stl", {}};
}

/// The triangles of a Collada file by the colour of their material, a colour text; empty for those without.
std::map<std::string, Facets> facetsByColor(const geometry::TriangleMesh& mesh)
{
    std::map<std::string, Facets> byColor;
    for (std::size_t t = 0; t + 2 < mesh.indices.size(); t += 3) {
        const PointColor color = mesh.colors.empty() ? uncoloured : mesh.colors[mesh.indices[t]];
        const std::string text = color == uncoloured
                                     ? std::string()
                                     : geometry::ColorToText({color.r / 255.0f, color.g / 255.0f, color.b / 255.0f});
        StlFacet facet;
        for (std::size_t corner = 0; corner < 3; ++corner) {
            const rob::Posf& at = mesh.points[mesh.indices[t + corner]];
            facet.corners[3 * corner] = at.x;
            facet.corners[3 * corner + 1] = at.y;
            facet.corners[3 * corner + 2] = at.z;
        }
        byColor[text].push_back(facet);
    }
    return byColor;
}

/// Around the origin of the file, as robots are.
geometry::TriangleMesh atHome(PlyTriangles read)
{
    if (read.origin != rob::Posd())
        for (rob::Posf& point : read.mesh.points)
            point = rob::Posf(rob::Posd(point.x + read.origin.x, point.y + read.origin.y, point.z + read.origin.z));
    return std::move(read.mesh);
}

/// Read once, by the program that a damaged file may take down; what it made of the file is kept.
geometry::TriangleMesh colladaMesh(const std::filesystem::path& mesh)
{
    checkReadable(mesh);
    const std::filesystem::path kept =
        GeometryCache::Get(mesh.stem().string(), GeometryCache::KeyOf(mesh) + "|collada", ".ply",
                           [&mesh] { return plyOf(atHome(readTriangles(mesh, {}, SceneAxes::AsTheyStand))); });
    return atHome(parsePlyMesh(readWhole(kept)));
}

std::vector<CachedShape> cachedCollada(const std::filesystem::path& mesh, const rob::Vec3d& scalePerMetre)
{
    const rob::Vec3d scale = scalePerMetre * (1 / MillimetresIn(LengthUnit::Metre));
    std::map<std::string, Facets> byColor = facetsByColor(colladaMesh(mesh));
    std::vector<CachedShape> shapes;
    for (auto& [color, facets] : byColor) {
        const auto make = [&facets = facets, &scale] {
            scaleFacets(facets, scale);
            return binaryStl(facets);
        };
        const std::string key = keyOf(mesh, scale, shapes.size());
        shapes.push_back({GeometryCache::Get(mesh.stem().string(), key, ".stl", make), "stl", color});
    }
    return shapes;
}

/// @param what  names the form and its measures in full.
template <typename Make>
CachedShape cachedSolid(const std::string& stem, const std::string& what, Make make)
{
    const auto bytes = [&make] {
        const TopoDS_Shape shape = make();
        meshShape(shape);
        std::ostringstream text;
        BRepTools::Write(shape, text);
        return text.str();
    };
    return {GeometryCache::Get(stem, what, ".brep", bytes), "brep", {}};
}

gp_Pnt corner(const rob::Vec3d& at)
{
    return {at.x, at.y, at.z};
}

} // namespace

std::vector<CachedShape> cachedMesh(const std::filesystem::path& mesh, const rob::Vec3d& scale)
{
    if (!scale.isFinite() || scale.x == 0 || scale.y == 0 || scale.z == 0)
        throw ImportError(mesh, "a mesh cannot be scaled by zero or by what is no number");
    const std::string ending = lowerEnding(mesh);
    if (ending == ".stl")
        return {cachedStl(mesh, scale)};
    if (ending == ".dae")
        return cachedCollada(mesh, scale);
    throw ImportError(mesh, "not a kind of mesh that can be read (.stl, .dae)");
}

CachedShape cachedBox(const rob::Vec3d& size)
{
    return cachedSolid("box", fmt::format("box|{} {} {}", size.x, size.y, size.z),
                       [&size] { return BRepPrimAPI_MakeBox(corner(size * -0.5), corner(size * 0.5)).Shape(); });
}

CachedShape cachedCylinder(double radius, double length)
{
    return cachedSolid("cylinder", fmt::format("cylinder|{} {}", radius, length), [&] {
        return BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(0, 0, -length / 2), gp::DZ()), radius, length).Shape();
    });
}

CachedShape cachedSphere(double radius)
{
    return cachedSolid("sphere", fmt::format("sphere|{}", radius),
                       [&] { return BRepPrimAPI_MakeSphere(radius).Shape(); });
}

} // namespace vrk::station
