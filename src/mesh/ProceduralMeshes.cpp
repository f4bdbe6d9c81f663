#include "mesh/ProceduralMeshes.h"

#include "mesh/ShapeTriangles.h"
#include "platform/common/Checks.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <TopExp.hxx>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vrk::visual {
namespace {

using Position = rob::PosTemplate<float>;
using Normal = rob::Vec3Template<float>;

constexpr double fullTurn = 2 * std::numbers::pi;

void addVertex(Mesh& mesh, const Position& position, const Normal& normal)
{
    mesh.vertices.push_back(position);
    mesh.normals.push_back(normal);
}

void addTriangle(Mesh& mesh, unsigned a, unsigned b, unsigned c)
{
    mesh.indices.insert(mesh.indices.end(), {a, b, c});
}

/// The direction from `centre` to `position`.
Normal outward(const Position& position, const Position& centre)
{
    return Normal(rob::normalized(position - centre));
}

/// Joins the rings of a grid that starts at vertex 0: `stacks` + 1 rings of `slices` + 1 vertices. All columns are
/// treated alike, so the first and the last one get triangles of no area across the seam.
void joinRings(Mesh& mesh, int stacks, int slices)
{
    const unsigned columns = static_cast<unsigned>(slices) + 1;
    const unsigned last = static_cast<unsigned>(stacks) * columns;
    for (unsigned current = 0; current < last; ++current) {
        const unsigned next = current + columns;
        addTriangle(mesh, next, current, next - 1);
        addTriangle(mesh, next, current + 1, current);
    }
}

enum class CapFacing { Up, Down };

/// A disc of `slices` triangles around a centre on the z axis.
void addCap(Mesh& mesh, float radius, float z, int slices, CapFacing facing)
{
    const float step = static_cast<float>(fullTurn / slices);
    const Normal normal(0, 0, facing == CapFacing::Up ? 1.0f : -1.0f);
    const auto ring = static_cast<unsigned>(mesh.vertices.size());
    for (int j = 0; j <= slices; ++j) {
        const float angle = static_cast<float>(j) * step;
        addVertex(mesh, {radius * std::sin(angle), radius * std::cos(angle), z}, normal);
    }
    const auto centre = static_cast<unsigned>(mesh.vertices.size());
    addVertex(mesh, {0, 0, z}, normal);
    for (unsigned k = ring; k < ring + static_cast<unsigned>(slices); ++k) {
        if (facing == CapFacing::Up)
            addTriangle(mesh, centre, k + 1, k);
        else
            addTriangle(mesh, centre, k, k + 1);
    }
}

} // namespace

std::unique_ptr<Mesh> makeCylinder(std::string name, float radius, float height, int stacks, int slices)
{
    auto mesh = std::make_unique<Mesh>(std::move(name));
    const float step = static_cast<float>(fullTurn / slices);
    for (int i = 0; i <= stacks; ++i) {
        const float z = static_cast<float>(i) * height / static_cast<float>(stacks);
        for (int j = 0; j <= slices; ++j) {
            const float angle = static_cast<float>(j) * step;
            const Position position(radius * std::sin(angle), radius * std::cos(angle), z);
            addVertex(*mesh, position, outward(position, {0, 0, z}));
        }
    }
    joinRings(*mesh, stacks, slices);
    addCap(*mesh, radius, height * 0.5f, slices, CapFacing::Up);
    addCap(*mesh, radius, 0, slices, CapFacing::Down);
    return mesh;
}

std::unique_ptr<Mesh> makeSphere(std::string name, float radius, int stacks, int slices)
{
    auto mesh = std::make_unique<Mesh>(std::move(name));
    const float around = static_cast<float>(fullTurn / slices);
    const float down = static_cast<float>(std::numbers::pi / stacks);
    for (int i = 0; i <= stacks; ++i) {
        const float b = static_cast<float>(i) * down;
        const float ringRadius = radius * std::sin(b);
        const float y = radius * std::cos(b);
        for (int j = 0; j <= slices; ++j) {
            const float a = static_cast<float>(j) * around;
            const Position position(ringRadius * std::sin(a), y, ringRadius * std::cos(a));
            addVertex(*mesh, position, outward(position, {}));
        }
    }
    joinRings(*mesh, stacks, slices);
    return mesh;
}

std::unique_ptr<Mesh> makeTorusSector(std::string name, float sweep, float major, float minor, int stacks, int slices)
{
    stacks = std::max(stacks, 3);
    slices = std::max(slices, 3);
    auto mesh = std::make_unique<Mesh>(std::move(name));
    const float step = sweep / static_cast<float>(stacks);
    const float tube = static_cast<float>(fullTurn / slices);
    for (int i = 0; i <= stacks; ++i) {
        const float t = static_cast<float>(i) * step;
        const Position centre(major * std::cos(t), major * std::sin(t), 0);
        for (int j = 0; j <= slices; ++j) {
            const float u = static_cast<float>(j) * tube;
            const Position position(minor * std::cos(u) * std::cos(t) + centre.x,
                                    minor * std::cos(u) * std::sin(t) + centre.y, minor * std::sin(u));
            addVertex(*mesh, position, outward(position, centre));
        }
    }
    joinRings(*mesh, stacks, slices);
    return mesh;
}

std::unique_ptr<Mesh> makeTorus(std::string name, float major, float minor, int stacks, int slices)
{
    return makeTorusSector(std::move(name), static_cast<float>(fullTurn), major, minor, stacks, slices);
}

std::unique_ptr<Mesh> makeCone(std::string name, float radius, float height)
{
    constexpr double deflection = 0.25;                      // absolute, whatever the size of the cone
    constexpr double angularDeflection = 0.3490658503988659; // 20 degrees
    const TopoDS_Shape cone = BRepPrimAPI_MakeCone(radius, 0, height).Shape();
    layout::FaceMap faces;
    TopExp::MapShapes(cone, TopAbs_FACE, faces);
    const BRepMesh_IncrementalMesh mesher(cone, deflection, false, angularDeflection, false);
    auto mesh = std::make_unique<Mesh>(std::move(name));
    for (int i = 1; i <= faces.Extent(); ++i)
        appendFace(*mesh, faces.FindKey(i), nullptr, BadNodes::ZeroCoordinate);
    return mesh;
}

std::unique_ptr<Mesh> makeFlatMesh(std::string name, const std::vector<rob::PosTemplate<float>>& points,
                                   const std::vector<unsigned>& indices)
{
    auto mesh = std::make_unique<Mesh>(std::move(name));
    mesh->vertices.reserve(indices.size());
    mesh->normals.reserve(indices.size());
    mesh->indices.reserve(indices.size());
    for (std::size_t j = 0; j < indices.size(); j += 3) {
        const auto corner = [&](std::size_t k) {
            return common::checkedSubscript(points, common::checkedSubscript(indices, j + k));
        };
        const Position a = corner(0), b = corner(1), c = corner(2);
        const Normal normal = (b - a).cross(c - b);
        for (const Position& position : {a, b, c})
            addVertex(*mesh, position, normal);
        const auto first = static_cast<unsigned>(j);
        addTriangle(*mesh, first, first + 1, first + 2);
    }
    return mesh;
}

void append(Mesh& target, const Mesh& source, const rob::PoseTemplate<float>& pose)
{
    const std::size_t base = target.vertices.size();
    const std::size_t normalBase = target.normals.size();
    target.vertices.insert(target.vertices.end(), source.vertices.begin(), source.vertices.end());
    target.normals.insert(target.normals.end(), source.normals.begin(), source.normals.end());

    const auto& q = pose.orientation;
    const auto isNear = [](float value, float wanted) { return std::abs(value - wanted) < 0.001f; };
    const bool turns = !(isNear(q.w, 1) && isNear(q.x, 0) && isNear(q.y, 0) && isNear(q.z, 0));
    if (turns || pose.position.length() >= 0.01f) {
        for (std::size_t i = base; i < target.vertices.size(); ++i)
            target.vertices[i] = pose * target.vertices[i];
        for (std::size_t i = normalBase; i < target.normals.size(); ++i)
            target.normals[i] = pose.rotation() * target.normals[i];
    }

    target.colors.insert(target.colors.end(), source.colors.begin(), source.colors.end());
    target.indices.reserve(target.indices.size() + source.indices.size());
    for (const unsigned index : source.indices)
        target.indices.push_back(static_cast<unsigned>(base) + index);
}

} // namespace vrk::visual
