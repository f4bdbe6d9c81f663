#include "platform/station/urdf/UrdfMesh.h"

#include "platform/geometry/ColorText.h"
#include "platform/station/GeometryCache.h"
#include "platform/station/import/ImportFormats.h"
#include "platform/station/import/StlFile.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepTools.hxx>

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

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

/// Gathers the triangles of a scene by the colour of their material.
class ColladaReader {
public:
    explicit ColladaReader(const aiScene& scene) : scene(scene) { visit(*scene.mRootNode, aiMatrix4x4()); }

    std::map<std::string, Facets> byColor;

private:
    void visit(const aiNode& node, const aiMatrix4x4& above)
    {
        const aiMatrix4x4 place = above * node.mTransformation;
        for (unsigned i = 0; i < node.mNumMeshes; ++i)
            append(*scene.mMeshes[node.mMeshes[i]], place);
        for (unsigned i = 0; i < node.mNumChildren; ++i)
            visit(*node.mChildren[i], place);
    }

    void append(const aiMesh& mesh, const aiMatrix4x4& place)
    {
        const bool isMirrored = aiMatrix3x3(place).Determinant() < 0;
        Facets& facets = byColor[colorOf(mesh)];
        for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
            const aiFace& face = mesh.mFaces[i];
            if (face.mNumIndices != 3) // lines and points
                continue;
            StlFacet facet;
            for (unsigned corner = 0; corner < 3; ++corner) {
                const unsigned from = isMirrored ? 2 - corner : corner;
                const aiVector3D at = place * mesh.mVertices[face.mIndices[from]];
                facet.corners[3 * corner] = at.x;
                facet.corners[3 * corner + 1] = at.y;
                facet.corners[3 * corner + 2] = at.z;
            }
            facets.push_back(facet);
        }
    }

    std::string colorOf(const aiMesh& mesh) const
    {
        aiColor4D color;
        if (mesh.mMaterialIndex >= scene.mNumMaterials ||
            aiGetMaterialColor(scene.mMaterials[mesh.mMaterialIndex], AI_MATKEY_COLOR_DIFFUSE, &color) != AI_SUCCESS)
            return {};
        const auto held = [](float value) { return std::clamp(value, 0.0f, 1.0f); };
        return geometry::ColorToText({held(color.r), held(color.g), held(color.b)});
    }

    const aiScene& scene;
};

std::vector<CachedShape> cachedCollada(const std::filesystem::path& mesh, const rob::Vec3d& scale)
{
    Assimp::Importer importer;
    // Robot descriptions take the coordinates as they stand in the file, whichever axis it calls up.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_IGNORE_UP_DIRECTION, true);
    const aiScene* const scene = importer.ReadFile(mesh.string(), aiProcess_Triangulate);
    if (!scene || !scene->mRootNode)
        throw ImportError(mesh, fmt::format("the Collada file cannot be read: {}", oneLine(importer.GetErrorString())));
    ColladaReader reader(*scene);
    std::erase_if(reader.byColor, [](const auto& entry) { return entry.second.empty(); });
    if (reader.byColor.empty())
        throw ImportError(mesh, "the Collada file holds no triangle");

    std::vector<CachedShape> shapes;
    for (auto& [color, facets] : reader.byColor) {
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
