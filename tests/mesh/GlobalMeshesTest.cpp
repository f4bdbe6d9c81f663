#include "OgreMeshes.h"
#include "mesh/MeshManager.h"
#include "support/SceneFixture.h"

#include <cmath>
#include <numbers>

namespace vrk::visual {
namespace {

using rob::Posf;
using test::indicesOf;
using test::ogreMesh;
using test::vertexDataOf;
using test::verticesOf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t byOpenCascade = 0; // a cone: the mesher says how many vertices it has
constexpr std::size_t cylinder16 = 2 * 17 + 2 * 18;
constexpr std::size_t torus = 33 * 17;
/// How far the ends of a half torus reach that lies across the diagonal: the outer rim at 45 degrees.
const float end = 153 * std::numbers::sqrt2_v<float> / 2;

enum class Uploaded { No, Yes };

struct GlobalMeshCase {
    const char* name;
    std::size_t vertices;
    Posf min;
    Posf max;
    float tolerance; // chords of a circle stay inside of it
    Uploaded uploaded;
};

void PrintTo(const GlobalMeshCase& c, std::ostream* out)
{
    *out << c.name;
}

class GlobalMesh : public test::SceneFixture, public testing::WithParamInterface<GlobalMeshCase> {};
class GlobalMeshes : public test::SceneFixture {};

std::string nameOf(const testing::TestParamInfo<GlobalMeshCase>& info)
{
    return info.param.name;
}

void expectNear(const Posf& a, const Posf& b, float tolerance)
{
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

} // namespace

TEST_P(GlobalMesh, HasItsPlaceAndShape)
{
    const GlobalMeshCase& c = GetParam();

    Mesh* mesh = MeshManager::Get()->getGlobalMesh(c.name);

    ASSERT_NE(mesh, nullptr);
    EXPECT_TRUE(MeshManager::Get()->hasGlobalMesh(c.name));
    EXPECT_EQ(mesh->name, c.name);
    if (c.vertices != byOpenCascade) {
        EXPECT_EQ(mesh->vertices.size(), c.vertices);
    }
    EXPECT_EQ(mesh->normals.size(), mesh->vertices.size());
    EXPECT_THAT(mesh->colors, IsEmpty());
    expectNear(mesh->getBounds().min, c.min, c.tolerance);
    expectNear(mesh->getBounds().max, c.max, c.tolerance);
    ASSERT_EQ(ogreMesh(c.name) != nullptr, c.uploaded == Uploaded::Yes);
    if (c.uploaded == Uploaded::Yes) {
        EXPECT_EQ(vertexDataOf(c.name).vertexCount, mesh->vertices.size());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Components, GlobalMesh,
    testing::Values(
        GlobalMeshCase{"frame_axis_x_shaft", cylinder16, {-0.5f, -0.5f, 0}, {0.5f, 0.5f, 10}, 0.01f, Uploaded::Yes},
        GlobalMeshCase{"frame_axis_head", byOpenCascade, {-1, -1, 0}, {1, 1, 3}, 0.25f, Uploaded::Yes},
        GlobalMeshCase{"joint_arrow_head", byOpenCascade, {-20, -20, 0}, {20, 20, 200}, 0.4f, Uploaded::Yes},
        GlobalMeshCase{"path_arrow_head", byOpenCascade, {-5, -5, 0}, {5, 5, 20}, 0.3f, Uploaded::Yes},
        GlobalMeshCase{"HandleShaft", cylinder16, {-3, -3, 0}, {3, 3, 200}, 0.01f, Uploaded::No},
        GlobalMeshCase{"HandleHead", byOpenCascade, {-10, -10, 0}, {10, 10, 45}, 0.3f, Uploaded::No},
        GlobalMeshCase{"torus_sector", torus, {0, 0, -3}, {153, 153, 3}, 0.01f, Uploaded::No},
        GlobalMeshCase{"torus_full", torus, {-153, -153, -3}, {153, 153, 3}, 0.01f, Uploaded::No},
        GlobalMeshCase{"torus_half", torus, {-153, 0, -3}, {153, 153, 3}, 0.01f, Uploaded::No},
        GlobalMeshCase{"mfg_arrow_shaft", byOpenCascade, {-1, -1, 0}, {1, 1, 25}, 0.25f, Uploaded::No},
        GlobalMeshCase{"mfg_arrow_head", byOpenCascade, {-2, -2, 0}, {2, 2, 8}, 0.25f, Uploaded::No},
        GlobalMeshCase{"tilt_torus", torus, {-160, -160, -10}, {160, 160, 10}, 0.01f, Uploaded::No},
        GlobalMeshCase{"VectorSphere", 17 * 17, {-25, -25, -25}, {25, 25, 25}, 0.01f, Uploaded::Yes},
        GlobalMeshCase{"VectorAxis", cylinder16, {-10, -10, 0}, {10, 10, 210}, 0.01f, Uploaded::No},
        GlobalMeshCase{"VectorHead", byOpenCascade, {-20, -20, 0}, {20, 20, 100}, 0.4f, Uploaded::No},
        GlobalMeshCase{"shaft", cylinder16, {-0.2f, -0.2f, 0}, {0.2f, 0.2f, 15}, 0.01f, Uploaded::No},
        GlobalMeshCase{"head", byOpenCascade, {-0.6f, -0.6f, 0}, {0.6f, 0.6f, 3.75f}, 0.1f, Uploaded::No},
        GlobalMeshCase{"PathStartHandle", 33 * 33, {-2.5f, -2.5f, -2.5f}, {2.5f, 2.5f, 2.5f}, 0.01f, Uploaded::Yes},
        GlobalMeshCase{"PathEndHandle", 33 * 33, {-2.5f, -2.5f, -2.5f}, {2.5f, 2.5f, 2.5f}, 0.01f, Uploaded::Yes}),
    nameOf);

// The tori of the handles turn around the axis of their name: roll around x, pitch around y, yaw around z.
INSTANTIATE_TEST_SUITE_P(
    Composed, GlobalMesh,
    testing::Values(GlobalMeshCase{"DragHandleX", byOpenCascade, {0, -10, -10}, {245, 10, 10}, 0.3f, Uploaded::Yes},
                    GlobalMeshCase{"DragHandleY", byOpenCascade, {-10, 0, -10}, {10, 245, 10}, 0.3f, Uploaded::Yes},
                    GlobalMeshCase{"DragHandleZ", byOpenCascade, {-10, -10, 0}, {10, 10, 245}, 0.3f, Uploaded::Yes},
                    GlobalMeshCase{"DragHandleRoll", torus, {-3, 0, 0}, {3, 153, 153}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"DragHandlePitch", torus, {0, -3, 0}, {153, 3, 153}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"DragHandleYaw", torus, {0, 0, -3}, {153, 153, 3}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"RollHandleFull", torus, {-3, -153, -153}, {3, 153, 153}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"PitchHandleFull", torus, {-153, -3, -153}, {153, 3, 153}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"YawHandleFull", torus, {-153, -153, -3}, {153, 153, 3}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"RollHandleMain", torus, {-3, -end, -end}, {3, 153, 153}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"PitchHandleMain", torus, {-end, -3, -end}, {153, 3, 153}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"YawHandleMain", torus, {-end, -end, -3}, {153, 153, 3}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"RollHandleAssist", torus, {-3, -153, -153}, {3, end, end}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"PitchHandleAssist", torus, {-153, -3, -153}, {end, 3, end}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"YawHandleAssist", torus, {-153, -153, -3}, {end, end, 3}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"mfg_arrow", byOpenCascade, {-2, -2, 0}, {2, 2, 33}, 0.25f, Uploaded::Yes},
                    GlobalMeshCase{"TiltHandle", torus, {-160, -10, -160}, {160, 10, 160}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{"TwistHandle", torus, {-10, -160, -160}, {10, 160, 160}, 0.01f, Uploaded::Yes},
                    GlobalMeshCase{
                        "VectorDirHandle", byOpenCascade, {-25, -25, -25}, {25, 25, 310}, 0.4f, Uploaded::Yes}),
    nameOf);

TEST_F(GlobalMeshes, HeadsOfTheDragHandleStandOnTheEndsOfTheirShafts)
{
    for (const auto& [name, axis] : {std::pair{"DragHandleX", 0u}, {"DragHandleY", 1u}, {"DragHandleZ", 2u}}) {
        const Mesh& mesh = *MeshManager::Get()->getGlobalMesh(name);
        // Behind the shaft's vertices, the head's reach from 200 to 245.
        float low = 1000, high = 0;
        for (std::size_t i = cylinder16; i < mesh.vertices.size(); ++i) {
            low = std::min(low, mesh.vertices[i][axis]);
            high = std::max(high, mesh.vertices[i][axis]);
        }
        EXPECT_NEAR(low, 200, 1e-3f) << name;
        EXPECT_NEAR(high, 245, 1e-3f) << name;
    }
}

TEST_F(GlobalMeshes, ShaftOfTheMfgArrowHasItsTipAtTheOrigin)
{
    const Mesh& mesh = *MeshManager::Get()->getGlobalMesh("mfg_arrow");
    const std::size_t shaft = MeshManager::Get()->getGlobalMesh("mfg_arrow_shaft")->vertices.size();

    for (std::size_t i = 0; i < shaft; ++i) {
        const Posf& p = mesh.vertices[i];
        EXPECT_LE(std::hypot(p.x, p.y), p.z / 25 + 1e-3f); // radius 1 at z = 25
    }
}

TEST_F(GlobalMeshes, NormalsOfComposedMeshesTurnWithTheirParts)
{
    const Mesh& mesh = *MeshManager::Get()->getGlobalMesh("DragHandleX");

    for (std::size_t i = 0; i < 2 * 17; ++i) // the shaft's side
        EXPECT_NEAR(mesh.normals[i].x, 0, 1e-6f);
}

TEST_F(GlobalMeshes, OfASecondManagerAreItsOwnOverTheUploadsOfTheFirst)
{
    const MeshManager& first = *MeshManager::Get();
    const char* const names[] = {"frame_axis_x_shaft", "DragHandleX", "VectorSphere", "PathEndHandle", "uv_indicator"};
    const Ogre::ResourceHandle frame = ogreMesh("VRK_FrameMesh")->getHandle();

    MeshManager second; // its meshes stay to the end of the process, as those of any manager

    EXPECT_EQ(ogreMesh("VRK_FrameMesh")->getHandle(), frame);
    for (const char* name : names) {
        Mesh* kept = MeshManager(first).getGlobalMesh(name);
        ASSERT_NE(second.getGlobalMesh(name), nullptr) << name;
        EXPECT_NE(second.getGlobalMesh(name), kept) << name;
        EXPECT_EQ(MeshManager::Get()->getGlobalMesh(name), kept) << name;
        EXPECT_EQ(vertexDataOf(name).vertexCount, kept->vertices.size()) << name;
    }
}

TEST_F(GlobalMeshes, FrameMeshIsKnownToOgreAlone)
{
    EXPECT_FALSE(MeshManager::Get()->hasGlobalMesh("VRK_FrameMesh"));
    EXPECT_FALSE(MeshManager::Get()->hasMesh("VRK_FrameMesh"));

    ASSERT_NE(ogreMesh("VRK_FrameMesh"), nullptr);
    EXPECT_TRUE(ogreMesh("VRK_FrameMesh")->isLoaded());
    EXPECT_EQ(ogreMesh("VRK_FrameMesh")->getBounds(), Ogre::AxisAlignedBox(0, 0, 0, 1, 1, 1));
}

TEST_F(GlobalMeshes, FrameMeshHasATriangleOfNoAreaForEachAxis) // instance batches refuse lines
{
    const Ogre::SubMesh& subMesh = *ogreMesh("VRK_FrameMesh")->getSubMesh(0);

    EXPECT_EQ(subMesh.operationType, Ogre::RenderOperation::OT_TRIANGLE_LIST);
    EXPECT_FALSE(subMesh.useSharedVertices);
    EXPECT_THAT(indicesOf("VRK_FrameMesh"), ElementsAre(0, 1, 1, 2, 3, 3, 4, 5, 5));
}

TEST_F(GlobalMeshes, FrameMeshHasPositionAndColourOfBothEndsOfEachAxis)
{
    const Ogre::VertexDeclaration& declaration = *vertexDataOf("VRK_FrameMesh").vertexDeclaration;

    ASSERT_EQ(declaration.getElementCount(), 2u);
    EXPECT_EQ(declaration.getElement(0)->getSemantic(), Ogre::VES_POSITION);
    EXPECT_EQ(declaration.getElement(1)->getSemantic(), Ogre::VES_DIFFUSE);
    EXPECT_EQ(declaration.getElement(1)->getOffset(), 12u);
    const std::vector<float> expected = {
        0, 0, 0, 0.94f, 0.05f, 0,     1, 0, 0, 0.94f, 0.05f, 0,     0, 0, 0, 0.74f, 0.86f, 0.13f,
        0, 1, 0, 0.74f, 0.86f, 0.13f, 0, 0, 0, 0.29f, 0.36f, 0.76f, 0, 0, 1, 0.29f, 0.36f, 0.76f,
    };
    EXPECT_EQ(verticesOf("VRK_FrameMesh"), expected);
    const auto buffer = vertexDataOf("VRK_FrameMesh").vertexBufferBinding->getBuffer(0);
    EXPECT_EQ(buffer->getUsage(), Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
    EXPECT_FALSE(buffer->hasShadowBuffer());
}

} // namespace vrk::visual
