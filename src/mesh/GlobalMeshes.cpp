#include "mesh/ConesAhead.h"
#include "mesh/MeshManager.h"
#include "mesh/ProceduralMeshes.h"
#include "mesh/TextMesh.h"

#include <initializer_list>
#include <numbers>
#include <string>
#include <utility>

namespace vrk::visual {
namespace {

using Pose = rob::PoseTemplate<float>;
using Position = rob::PosTemplate<float>;
using Direction = rob::DirTemplate<float>;
using Rotation = rob::RotationTemplate<float>;

constexpr float pi = std::numbers::pi_v<float>;
constexpr Direction plusX(1, 0, 0), minusX(-1, 0, 0), plusY(0, 1, 0), plusZ(0, 0, 1), minusZ(0, 0, -1);

struct Part {
    const Mesh* mesh;
    Pose pose;
};

std::unique_ptr<Mesh> compose(std::string name, std::initializer_list<Part> parts)
{
    auto mesh = std::make_unique<Mesh>(std::move(name));
    for (const Part& part : parts)
        append(*mesh, *part.mesh, part.pose);
    return mesh;
}

Pose turned(const Rotation& rotation)
{
    return {Position(), rotation};
}

} // namespace

Mesh* MeshManager::createConeComponent(const std::string& name, float radius, float height)
{
    std::unique_ptr<Mesh> ahead = ConesAhead::Take(name, radius, height);
    return enterGlobalMesh(ahead ? std::move(ahead) : makeCone(name, radius, height));
}

Mesh* MeshManager::createCylinderComponent(const std::string& name, float radius, float height, int stacks, int slices)
{
    return enterGlobalMesh(makeCylinder(name, radius, height, stacks, slices));
}

Mesh* MeshManager::createSphereComponent(const std::string& name, float radius, int stacks, int slices)
{
    Mesh* mesh = enterGlobalMesh(makeSphere(name, radius, stacks, slices));
    loadToGpu(mesh);
    return mesh;
}

Mesh* MeshManager::createTorusComponent(const std::string& name, float major, float minor, int stacks, int slices)
{
    return enterGlobalMesh(makeTorus(name, major, minor, stacks, slices));
}

Mesh* MeshManager::createTorusSectorComponent(const std::string& name, float sweep, float major, float minor,
                                              int stacks, int slices)
{
    return enterGlobalMesh(makeTorusSector(name, sweep, major, minor, stacks, slices));
}

void MeshManager::createGlobleMeshes()
{
    createGlobalFrameMesh();
    createDragHandleMesh();
    loadToGpu(createConeComponent("joint_arrow_head", 20, 200));
    loadToGpu(createConeComponent("path_arrow_head", 5, 20));
    createMfgArrow();
    createVectorHandleMesh();
    createUVIndicator();
    createFrameOgreMesh("VRK_FrameMesh");
}

void MeshManager::createGlobalFrameMesh()
{
    loadToGpu(createCylinderComponent("frame_axis_x_shaft", 0.5f, 10, 1, 16));
    loadToGpu(createConeComponent("frame_axis_head", 1, 3));
}

void MeshManager::createDragHandleMesh()
{
    createCylinderComponent("HandleShaft", 3, 200, 1, 16);
    createConeComponent("HandleHead", 10, 45);
    createTorusSectorComponent("torus_sector", pi / 2, 150, 3, 32, 16);
    createTorusSectorComponent("torus_full", 2 * pi, 150, 3, 32, 16);
    createTorusSectorComponent("torus_half", pi, 150, 3, 32, 16);
    createDragHandle();
}

void MeshManager::createDragHandle()
{
    const Mesh* shaft = getGlobalMesh("HandleShaft");
    const Mesh* head = getGlobalMesh("HandleHead");
    const auto addArrow = [&](const char* name, const Rotation& rotation, const Position& tip) {
        loadToGpu(enterGlobalMesh(compose(name, {{shaft, turned(rotation)}, {head, {tip, rotation}}})));
    };
    addArrow("DragHandleX", {pi / 2, plusY}, {200, 0, 0});
    addArrow("DragHandleY", {pi / 2, minusX}, {0, 200, 0});
    addArrow("DragHandleZ", {}, {0, 0, 200});

    const auto addRing = [&](const char* name, const char* torus, const Rotation& rotation) {
        loadToGpu(enterGlobalMesh(compose(name, {{getGlobalMesh(torus), turned(rotation)}})));
    };
    // The tori lie in the xy plane; these turn them about x and about y.
    const Rotation roll(-pi / 2, plusY);
    const Rotation pitch(pi / 2, plusX);
    addRing("DragHandleRoll", "torus_sector", roll);
    addRing("DragHandlePitch", "torus_sector", pitch);
    addRing("DragHandleYaw", "torus_sector", {});
    addRing("RollHandleFull", "torus_full", roll);
    addRing("PitchHandleFull", "torus_full", pitch);
    addRing("YawHandleFull", "torus_full", {});
    addRing("RollHandleMain", "torus_half", Rotation(pi / 4, plusX) * roll);
    addRing("PitchHandleMain", "torus_half", Rotation(pi / 4, plusY) * pitch);
    addRing("YawHandleMain", "torus_half", {-pi / 4, plusZ});
    addRing("RollHandleAssist", "torus_half", Rotation(-3 * pi / 4, plusX) * roll);
    addRing("PitchHandleAssist", "torus_half", Rotation(-3 * pi / 4, plusY) * pitch);
    addRing("YawHandleAssist", "torus_half", {3 * pi / 4, plusZ});
}

void MeshManager::createMfgArrow()
{
    const Mesh* shaft = createConeComponent("mfg_arrow_shaft", 1, 25);
    const Mesh* head = createConeComponent("mfg_arrow_head", 2, 8);
    // The shaft is turned over, its tip at the origin; the head stands on its base.
    const Position base(0, 0, 25);
    addGlobalMesh(compose("mfg_arrow", {{shaft, {base, Rotation(pi, minusX)}}, {head, Pose(base)}}).release());
}

void MeshManager::createVectorHandleMesh()
{
    const Mesh* torus = createTorusSectorComponent("tilt_torus", 2 * pi, 150, 10, 32, 16);
    addGlobalMesh(compose("TiltHandle", {{torus, turned({pi / 2, plusX})}}).release());
    addGlobalMesh(compose("TwistHandle", {{torus, turned({pi / 2, plusY})}}).release());

    const Mesh* sphere = createSphereComponent("VectorSphere", 25, 16, 16);
    const Mesh* axis = createCylinderComponent("VectorAxis", 10, 210, 1, 16);
    const Mesh* head = createConeComponent("VectorHead", 20, 100);
    addGlobalMesh(compose("VectorDirHandle", {{sphere, {}}, {axis, {}}, {head, Pose(Position(0, 0, 210))}}).release());

    for (const char* name : {"PathStartHandle", "PathEndHandle"})
        addGlobalMesh(createSphereComponent(name, 2.5f, 32, 32));
}

void MeshManager::createUVIndicator()
{
    const Mesh* shaft = createCylinderComponent("shaft", 0.2f, 15, 1, 16);
    const Mesh* head = createConeComponent("head", 0.6f, 3.75f);
    const Rotation alongX(pi / 2, plusY);
    const Rotation alongY(-pi / 2, plusX);
    addGlobalMesh(compose("uv_indicator", {{shaft, turned(alongX)},
                                           {head, {Position(15, 0, 0), alongX}},
                                           {makeTextMesh("U").get(), Pose(Position(20, 0, 0))},
                                           {shaft, turned(alongY)},
                                           {head, {Position(0, 15, 0), alongY}},
                                           {makeTextMesh("V").get(), Pose(Position(-2, 20, 0))}})
                      .release());
}

void MeshManager::createFrameOgreMesh(const std::string& name)
{
    const rob::Colorf x(0.94f, 0.05f, 0.0f);
    const rob::Colorf y(0.74f, 0.86f, 0.13f);
    const rob::Colorf z(0.29f, 0.36f, 0.76f);
    Mesh mesh(name); // both ends of each axis
    mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 0, 0}, {0, 1, 0}, {0, 0, 0}, {0, 0, 1}};
    mesh.colors = {x, x, y, y, z, z};
    // Instance batches take triangle lists only: a triangle of no area for each axis, which the geometry program of the
    // instancing materials turns into a line.
    mesh.indices = {0, 1, 1, 2, 3, 3, 4, 5, 5};
    loadToGpu(&mesh);
}

} // namespace vrk::visual
