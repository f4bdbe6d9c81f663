#include "mesh/MeshManager.h"
#include "OgreMeshes.h"
#include "StlTexts.h"
#include "support/SceneFixture.h"
#include "support/ThrowsExactly.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <unistd.h>
#include <utility>

namespace vrk::visual {
namespace {

using rob::Posf;
using rob::Vec3f;
using test::indicesOf;
using test::ogreMesh;
using test::vertexDataOf;
using test::verticesOf;
using testing::ElementsAre;
using testing::IsEmpty;

const bool wasNullBeforeStartUp = MeshManager::Get() == nullptr;

std::unique_ptr<Mesh> triangle(const std::string& name, float size)
{
    auto mesh = std::make_unique<Mesh>(name);
    mesh->vertices = {{0, 0, 0}, {size, 0, 0}, {0, size, 1}};
    mesh->indices = {0, 1, 2};
    return mesh;
}

class MeshManagerTest : public test::SceneFixture {
protected:
    ~MeshManagerTest() override
    {
        for (const std::string& name : registered)
            if (Mesh* mesh = manager.getMesh(name))
                manager.deleteMesh(mesh);
    }

    /// Registers the mesh until the end of the test.
    Mesh* add(std::unique_ptr<Mesh> mesh)
    {
        registered.push_back(mesh->name);
        manager.addMesh(mesh.get());
        return mesh.release();
    }

    MeshManager& manager = *MeshManager::Get();
    std::vector<std::string> registered;
};

class LoadStl : public MeshManagerTest {
protected:
    LoadStl() { std::filesystem::create_directories(folder); }
    ~LoadStl() override { std::filesystem::remove_all(folder); }

    std::string write(const std::string& name, const std::string& content)
    {
        const std::string path = (folder / name).string();
        std::ofstream(path, std::ios::binary) << content;
        registered.push_back(path);
        return path;
    }

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("vrk_load_stl_" + std::to_string(getpid()));
};

} // namespace

TEST_F(MeshManagerTest, IsNullBeforeStartUpAndNeverReplaced)
{
    EXPECT_TRUE(wasNullBeforeStartUp);

    MeshManager::Init();

    EXPECT_EQ(MeshManager::Get(), &manager);
}

TEST_F(MeshManagerTest, AddMeshRegistersAndUploads)
{
    Mesh* mesh = add(triangle("t", 2));

    EXPECT_EQ(manager.getMesh("t"), mesh);
    EXPECT_TRUE(manager.hasMesh("t"));
    ASSERT_NE(ogreMesh("t"), nullptr);
    EXPECT_TRUE(ogreMesh("t")->isLoaded());
}

TEST_F(MeshManagerTest, AddMeshOfATakenNameLeavesTheFirstInPlace)
{
    Mesh* first = add(triangle("t", 2));
    const std::unique_ptr<Mesh> second = triangle("t", 7); // stays ours

    manager.addMesh(second.get());

    EXPECT_EQ(manager.getMesh("t"), first);
    EXPECT_THAT(verticesOf("t"), ElementsAre(0, 0, 0, 2, 0, 0, 0, 2, 1));
}

TEST_F(MeshManagerTest, FirstUploadOfANameWins)
{
    manager.deleteMesh(add(triangle("t", 2)));
    Ogre::MeshManager::getSingleton().createManual("t", Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);

    add(triangle("t", 3));

    EXPECT_EQ(ogreMesh("t")->getNumSubMeshes(), 0u);
}

TEST_F(MeshManagerTest, SecondUploadOfANameKeepsTheGeometryOfTheFirst)
{
    add(triangle("t", 2));
    MeshManager other(manager);
    const MeshManager taken(std::move(other)); // `other` knows no name now, OGRE still does
    const std::unique_ptr<Mesh> second = triangle("t", 7);

    other.addMesh(second.get());

    EXPECT_EQ(other.getMesh("t"), second.get());
    EXPECT_THAT(verticesOf("t"), ElementsAre(0, 0, 0, 2, 0, 0, 0, 2, 1));
}

TEST_F(MeshManagerTest, MeshOfPositionsHasOneElement)
{
    add(triangle("t", 2));

    const Ogre::VertexData& data = vertexDataOf("t");
    ASSERT_EQ(data.vertexDeclaration->getElementCount(), 1u);
    EXPECT_EQ(data.vertexDeclaration->getElement(0)->getSemantic(), Ogre::VES_POSITION);
    EXPECT_EQ(data.vertexDeclaration->getElement(0)->getType(), Ogre::VET_FLOAT3);
    EXPECT_EQ(data.vertexCount, 3u);
    EXPECT_THAT(indicesOf("t"), ElementsAre(0, 1, 2));
}

TEST_F(MeshManagerTest, MeshWithNormalsAndColoursHasThreeElementsWithTheColourLast)
{
    std::unique_ptr<Mesh> mesh = triangle("t", 2);
    mesh->normals = {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}};
    mesh->colors = {{0.1f, 0.2f, 0.3f}, {0.4f, 0.5f, 0.6f}, {0.7f, 0.8f, 0.9f}};
    add(std::move(mesh));

    const Ogre::VertexDeclaration& declaration = *vertexDataOf("t").vertexDeclaration;
    ASSERT_EQ(declaration.getElementCount(), 3u);
    const Ogre::VertexElementSemantic semantics[] = {Ogre::VES_POSITION, Ogre::VES_NORMAL, Ogre::VES_DIFFUSE};
    for (unsigned short i = 0; i < 3; ++i) {
        EXPECT_EQ(declaration.getElement(i)->getSemantic(), semantics[i]);
        EXPECT_EQ(declaration.getElement(i)->getOffset(), 12u * i);
        EXPECT_EQ(declaration.getElement(i)->getType(), Ogre::VET_FLOAT3);
        EXPECT_EQ(declaration.getElement(i)->getSource(), 0);
    }
    const std::vector<float> vertices = verticesOf("t");
    EXPECT_THAT(std::vector<float>(vertices.begin() + 9, vertices.begin() + 18),
                ElementsAre(2, 0, 0, 0, 1, 0, 0.4f, 0.5f, 0.6f));
}

TEST_F(MeshManagerTest, UploadIsOneSubmeshOfTrianglesInStaticBuffersWith32BitIndices)
{
    add(triangle("t", 2));

    ASSERT_EQ(ogreMesh("t")->getNumSubMeshes(), 1u);
    const Ogre::SubMesh& subMesh = *ogreMesh("t")->getSubMesh(0);
    EXPECT_FALSE(subMesh.useSharedVertices);
    EXPECT_EQ(subMesh.operationType, Ogre::RenderOperation::OT_TRIANGLE_LIST);
    EXPECT_EQ(subMesh.indexData->indexBuffer->getType(), Ogre::HardwareIndexBuffer::IT_32BIT);
    EXPECT_EQ(subMesh.indexData->indexBuffer->getUsage(), Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
    EXPECT_FALSE(subMesh.indexData->indexBuffer->hasShadowBuffer());
    const auto vertexBuffer = subMesh.vertexData->vertexBufferBinding->getBuffer(0);
    EXPECT_EQ(vertexBuffer->getUsage(), Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
    EXPECT_FALSE(vertexBuffer->hasShadowBuffer());
}

TEST_F(MeshManagerTest, BoundsAreThoseOfTheVerticesWithoutPadding)
{
    add(triangle("t", 2));

    EXPECT_EQ(ogreMesh("t")->getBounds(), Ogre::AxisAlignedBox(0, 0, 0, 2, 2, 1));
}

TEST_F(MeshManagerTest, VerticesThatOgreCannotHaveInABoxAreNotInItsBounds)
{
    std::unique_ptr<Mesh> mesh = triangle("t", 2);
    const float infinite = std::numeric_limits<float>::infinity();
    const float largest = std::numeric_limits<float>::max();
    mesh->vertices.insert(mesh->vertices.end(),
                          {{5, infinite, 5}, {-infinite, 5, 5}, {5, 5, largest}, {5, 5, std::nanf("")}});
    add(std::move(mesh));

    EXPECT_EQ(ogreMesh("t")->getBounds(), Ogre::AxisAlignedBox(0, 0, 0, 2, 2, 1));
    EXPECT_EQ(vertexDataOf("t").vertexCount, 7u) << "they are there all the same";
}

TEST_F(MeshManagerTest, MeshFarOutHasItsBounds)
{
    add(triangle("t", 1e15f));

    EXPECT_EQ(ogreMesh("t")->getBounds(), Ogre::AxisAlignedBox(0, 0, 0, 1e15f, 1e15f, 1));
}

TEST_F(MeshManagerTest, EmptyMeshUploadsWithNothingToDrawAndNoBounds)
{
    add(std::make_unique<Mesh>("empty"));

    EXPECT_EQ(vertexDataOf("empty").vertexCount, 0u);
    EXPECT_EQ(ogreMesh("empty")->getSubMesh(0)->indexData->indexCount, 0u);
    EXPECT_TRUE(ogreMesh("empty")->getBounds().isNull());
}

TEST_F(MeshManagerTest, UnknownNamesHaveNoMesh)
{
    EXPECT_EQ(manager.getMesh("unknown"), nullptr);
    EXPECT_FALSE(manager.hasMesh("unknown"));
    EXPECT_EQ(manager.getGlobalMesh("unknown"), nullptr);
    EXPECT_FALSE(manager.hasGlobalMesh("unknown"));
}

TEST_F(MeshManagerTest, DeleteMeshForgetsItAndItsOgreMesh)
{
    manager.deleteMesh(add(triangle("t", 2)));

    EXPECT_FALSE(manager.hasMesh("t"));
    EXPECT_EQ(ogreMesh("t"), nullptr);
}

TEST_F(MeshManagerTest, DeleteMeshRunsTheDestructorOfADerivedMesh)
{
    struct Watched : Mesh {
        explicit Watched(bool& deleted) : Mesh("watched"), deleted(deleted) {}
        ~Watched() override { deleted = true; }
        bool& deleted;
    };
    bool deleted = false;

    manager.deleteMesh(add(std::make_unique<Watched>(deleted)));

    EXPECT_TRUE(deleted);
}

TEST_F(MeshManagerTest, RemoveOgreMeshOfAnUnknownNameDoesNothing)
{
    add(triangle("t", 2));

    manager.removeOgreMesh("unknown");
    manager.removeOgreMesh("t"); // uploaded, but no solid's

    EXPECT_NE(ogreMesh("t"), nullptr);
}

TEST_F(MeshManagerTest, CopySharesTheMeshesAndBuildsNone)
{
    Mesh* mesh = add(triangle("t", 2));

    MeshManager copy(manager);
    MeshManager assigned(copy);
    assigned = manager;

    EXPECT_EQ(copy.getMesh("t"), mesh);
    EXPECT_EQ(assigned.getMesh("t"), mesh);
    EXPECT_EQ(copy.getGlobalMesh("DragHandleX"), manager.getGlobalMesh("DragHandleX"));
}

TEST_F(MeshManagerTest, MoveLeavesAnEmptyManagerThatCanBeUsed)
{
    Mesh* mesh = add(triangle("t", 2));
    MeshManager source(manager);

    MeshManager target(std::move(source));

    EXPECT_EQ(target.getMesh("t"), mesh);
    EXPECT_TRUE(target.hasGlobalMesh("DragHandleX"));
    EXPECT_FALSE(source.hasMesh("t"));
    EXPECT_FALSE(source.hasGlobalMesh("DragHandleX"));
    source = std::move(target);
    EXPECT_EQ(source.getMesh("t"), mesh);
}

TEST_F(MeshManagerTest, CreatedMeshIsNeitherRegisteredNorUploaded)
{
    const std::unique_ptr<Mesh> mesh(MeshManager::CreateMesh("flat", {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}}, {0, 1, 2}));

    EXPECT_EQ(mesh->name, "flat");
    EXPECT_THAT(mesh->normals, testing::Each(Vec3f(0, 0, 4)));
    EXPECT_FALSE(manager.hasMesh("flat"));
    EXPECT_EQ(ogreMesh("flat"), nullptr);
}

TEST_F(LoadStl, RegistersAndUploadsUnderThePath)
{
    const std::string path = write("part.stl", oneFacet);

    Mesh* mesh = manager.loadStl(path);

    EXPECT_EQ(mesh->name, path);
    EXPECT_EQ(manager.getMesh(path), mesh);
    EXPECT_EQ(vertexDataOf(path).vertexCount, 3u);
}

TEST_F(LoadStl, EndingInCapitalsIsTaken)
{
    EXPECT_NE(manager.loadStl(write("part.STL", oneFacet)), nullptr);
}

TEST_F(LoadStl, RegisteredNameIsReturnedAsItIs)
{
    const std::string path = write("part.stl", oneFacet);
    Mesh* first = manager.loadStl(path);
    write("part.stl", oneFacet + oneFacet);

    EXPECT_EQ(manager.loadStl(path), first);
    EXPECT_EQ(first->vertices.size(), 3u);
}

TEST_F(LoadStl, FileWithoutTrianglesIsAnEmptyMesh)
{
    const std::string path = write("empty.stl", binaryStl({}));

    EXPECT_THAT(manager.loadStl(path)->vertices, IsEmpty());
    EXPECT_NE(ogreMesh(path), nullptr);
}

TEST_F(LoadStl, OtherEndingsAreRefusedEvenOfARegisteredMesh)
{
    add(triangle("t", 2));

    for (const char* path : {"t", "part.obj", "part.Stl", "part.stl ", ""})
        EXPECT_THAT([&] { manager.loadStl(path); }, test::throwsExactly<std::runtime_error>("Not stl file")) << path;
}

TEST_F(LoadStl, FailureRegistersNothing)
{
    const std::string broken = write("broken.stl", "facet normal 0 0 up");
    const std::string absent = (folder / "absent.stl").string();

    EXPECT_THAT([&] { manager.loadStl(broken); }, test::throwsExactly<std::runtime_error>("Error in reading normal"));
    EXPECT_THAT([&] { manager.loadStl(absent); }, test::throwsExactly<std::runtime_error>(absent));

    EXPECT_FALSE(manager.hasMesh(broken));
    EXPECT_EQ(ogreMesh(broken), nullptr);
    EXPECT_FALSE(manager.hasMesh(absent));
}

} // namespace vrk::visual
