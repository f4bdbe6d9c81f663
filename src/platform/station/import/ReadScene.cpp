#include "platform/station/import/ReadScene.h"

#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <exception>
#include <limits>

namespace vrk::station {
namespace {

using geometry::TriangleMesh;

constexpr double readingShare = 0.8; // of the whole

/// What a kind of file says of its numbers.
struct Convention {
    double scale = 1;             // millimetres in one of its units
    bool isYUp = false;           // else its axes are taken as they stand
    bool areColorsLinear = false; // as light is, not as screens are
};

std::string lowerEnding(const std::filesystem::path& file)
{
    std::string ending = file.extension().string();
    std::ranges::transform(ending, ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return ending;
}

Convention conventionOf(const std::filesystem::path& file, SceneAxes axes)
{
    const std::string ending = lowerEnding(file);
    const double metre = MillimetresIn(LengthUnit::Metre);
    if (ending == ".gltf" || ending == ".glb")
        return {.scale = metre, .isYUp = true, .areColorsLinear = true};
    if (ending == ".dae") // the package turns and scales what the file says, to this
        return {.scale = metre, .isYUp = axes == SceneAxes::ZUp};
    return {};
}

/// Tells how far the package is. What is thrown must not pass through it.
class SceneProgress : public Assimp::ProgressHandler {
public:
    explicit SceneProgress(const Progress& progress) : progress(progress) {}

    bool Update(float part) override
    {
        if (failure)
            return false;
        try {
            report(progress, "reading", readingShare * std::clamp(static_cast<double>(part), 0.0, 1.0));
        } catch (...) {
            failure = std::current_exception();
        }
        return !failure;
    }
    void rethrow() const
    {
        if (failure)
            std::rethrow_exception(failure);
    }

private:
    const Progress& progress;
    std::exception_ptr failure;
};

/// Gathers the pieces of a scene in one mesh.
class SceneGatherer {
public:
    SceneGatherer(const aiScene& scene, const Convention& convention) : scene(scene), convention(convention)
    {
        aiMatrix4x4 place;
        const auto s = static_cast<ai_real>(convention.scale);
        if (convention.isYUp)
            place = aiMatrix4x4(s, 0, 0, 0, 0, 0, -s, 0, 0, s, 0, 0, 0, 0, 0, 1);
        else
            place = aiMatrix4x4(s, 0, 0, 0, 0, s, 0, 0, 0, 0, s, 0, 0, 0, 0, 1);
        visit(*scene.mRootNode, place, 0);
        if (!anyColor)
            whole.colors.clear();
    }

    TriangleMesh whole;

private:
    void visit(const aiNode& node, const aiMatrix4x4& above, int depth)
    {
        constexpr int deepest = 1000;
        if (depth > deepest)
            return;
        const aiMatrix4x4 place = above * node.mTransformation;
        for (unsigned i = 0; i < node.mNumMeshes; ++i)
            append(pieceOf(*scene.mMeshes[node.mMeshes[i]], place));
        for (unsigned i = 0; i < node.mNumChildren; ++i)
            visit(*node.mChildren[i], place, depth + 1);
    }

    TriangleMesh pieceOf(const aiMesh& mesh, const aiMatrix4x4& place)
    {
        TriangleMesh piece;
        piece.points.reserve(mesh.mNumVertices);
        for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
            const aiVector3D at = place * mesh.mVertices[i];
            piece.points.emplace_back(at.x, at.y, at.z);
        }
        const bool isMirrored = aiMatrix3x3(place).Determinant() < 0;
        for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
            const aiFace& face = mesh.mFaces[i];
            if (face.mNumIndices != 3) // lines and points
                continue;
            for (unsigned corner = 0; corner < 3; ++corner)
                piece.indices.push_back(face.mIndices[isMirrored ? 2 - corner : corner]);
        }
        addColors(piece, mesh);
        addNormals(piece, mesh, place);
        return piece;
    }

    void addColors(TriangleMesh& piece, const aiMesh& mesh)
    {
        if (mesh.HasVertexColors(0)) {
            anyColor = true;
            for (unsigned i = 0; i < mesh.mNumVertices; ++i)
                piece.colors.push_back(colorOf(mesh.mColors[0][i]));
            return;
        }
        piece.colors.assign(piece.points.size(), materialColor(mesh.mMaterialIndex));
    }

    PointColor materialColor(unsigned index)
    {
        if (index >= scene.mNumMaterials)
            return uncoloured;
        aiMaterial& material = *scene.mMaterials[index];
        aiColor4D color;
        const bool isMade =
            material.GetName() == aiString(AI_DEFAULT_MATERIAL_NAME); // by the package, where there is none
        if (isMade || material.Get(AI_MATKEY_COLOR_DIFFUSE, color) != AI_SUCCESS)
            return uncoloured;
        anyColor = true;
        return colorOf(color);
    }

    PointColor colorOf(const aiColor4D& color) const
    {
        constexpr double screenGamma = 2.2;
        const auto byte = [this](double part) {
            const double held = part > 0 ? std::min(part, 1.0) : 0; // what is no number is dark
            return static_cast<std::uint8_t>(
                std::lround(255 * (convention.areColorsLinear ? std::pow(held, 1 / screenGamma) : held)));
        };
        return {byte(color.r), byte(color.g), byte(color.b)};
    }

    static void addNormals(TriangleMesh& piece, const aiMesh& mesh, const aiMatrix4x4& place)
    {
        if (!mesh.HasNormals())
            return addCreaseNormals(piece);
        aiMatrix3x3 turn(place);
        turn.Inverse().Transpose();
        piece.normals.reserve(mesh.mNumVertices);
        for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
            const aiVector3D normal = turn * mesh.mNormals[i];
            const float length = normal.Length();
            if (!(length > 0) || !std::isfinite(length)) {
                piece.normals.clear();
                return addCreaseNormals(piece);
            }
            piece.normals.emplace_back(normal.x / length, normal.y / length, normal.z / length);
        }
    }

    void append(const TriangleMesh& piece)
    {
        if (whole.points.size() + piece.points.size() > std::numeric_limits<std::uint32_t>::max())
            throw std::bad_alloc();
        const auto base = static_cast<unsigned>(whole.points.size());
        whole.points.insert(whole.points.end(), piece.points.begin(), piece.points.end());
        whole.normals.insert(whole.normals.end(), piece.normals.begin(), piece.normals.end());
        whole.colors.insert(whole.colors.end(), piece.colors.begin(), piece.colors.end());
        for (const unsigned index : piece.indices)
            whole.indices.push_back(base + index);
    }

    const aiScene& scene;
    const Convention& convention;
    bool anyColor = false;
};

} // namespace

TriangleMesh readScene(const std::filesystem::path& file, const Progress& progress, SceneAxes axes)
{
    const Convention convention = conventionOf(file, axes);
    Assimp::Importer importer;
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_IGNORE_UP_DIRECTION, axes == SceneAxes::AsTheyStand);
    auto* const telling = new SceneProgress(progress);
    importer.SetProgressHandler(telling); // which deletes it at its end
    const aiScene* const scene = importer.ReadFile(
        file.string(), aiProcess_Triangulate | aiProcess_JoinIdenticalVertices | aiProcess_ValidateDataStructure);
    telling->rethrow();
    if (!scene || !scene->mRootNode)
        throw ImportError(file, fmt::format("the mesh cannot be read: {}", oneLine(importer.GetErrorString())));
    report(progress, "gathering", readingShare);
    TriangleMesh mesh = SceneGatherer(*scene, convention).whole;
    if (mesh.indices.empty())
        throw ImportError(file, "the file holds no triangle");
    return mesh;
}

} // namespace vrk::station
