#include "mesh/MeshManager.h"
#include "mesh/OgreMeshes.h"
#include "mesh/paint/PaintMesh.h"
#include "support/SceneFixture.h"

#include <Ogre.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>

namespace vrk::visual {
namespace {

using rob::Posf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto fixed = Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY;
constexpr auto changing = Ogre::HardwareBuffer::HBU_DYNAMIC_WRITE_ONLY;

class PaintMeshes : public test::SceneFixture {
protected:
    ~PaintMeshes() override
    {
        if (Mesh* left = manager.getMesh("skin"))
            manager.deleteMesh(left);
    }

    /// A skin in the registry: a row of so many vertices, each of its own blue.
    PaintMesh* addSkin(unsigned vertices)
    {
        auto skin = std::make_unique<PaintMesh>("skin");
        for (unsigned i = 0; i < vertices; ++i) {
            skin->vertices.emplace_back(static_cast<float>(i), 0, 0);
            skin->normals.emplace_back(0, 1, 0);
            skin->addColor(0, 0, static_cast<float>(i));
        }
        skin->indices = {0, 1, 2};
        manager.addPaintMesh(skin.get());
        return skin.release();
    }
    static Ogre::HardwareVertexBufferSharedPtr bufferOf(unsigned short source)
    {
        return test::vertexDataOf("skin").vertexBufferBinding->getBuffer(source);
    }
    /// What lies on the GPU.
    static std::vector<float> colorsOnGpu()
    {
        std::vector<float> floats(4 * test::vertexDataOf("skin").vertexCount);
        const Ogre::HardwareBufferLockGuard lock(bufferOf(1), Ogre::HardwareBuffer::HBL_READ_ONLY);
        std::memcpy(floats.data(), lock.pData, floats.size() * sizeof(float));
        return floats;
    }
    static std::vector<float> colorsOf(const PaintMesh& skin)
    {
        std::vector<float> floats;
        for (const Color& c : skin.colorTable)
            floats.insert(floats.end(), {c.r, c.g, c.b, c.a});
        return floats;
    }

    MeshManager& manager = *MeshManager::Get();
};

TEST_F(PaintMeshes, ColorsLieInABufferOfTheirOwnThatMayBeWrittenOften)
{
    PaintMesh* skin = addSkin(3);

    const Ogre::VertexData& data = test::vertexDataOf("skin");
    const Ogre::VertexDeclaration& declaration = *data.vertexDeclaration;
    ASSERT_EQ(declaration.getElementCount(), 3u);
    EXPECT_EQ(*declaration.getElement(0), Ogre::VertexElement(0, 0, Ogre::VET_FLOAT3, Ogre::VES_POSITION));
    EXPECT_EQ(*declaration.getElement(1), Ogre::VertexElement(0, 12, Ogre::VET_FLOAT3, Ogre::VES_NORMAL));
    EXPECT_EQ(*declaration.getElement(2), Ogre::VertexElement(1, 0, Ogre::VET_FLOAT4, Ogre::VES_DIFFUSE));
    EXPECT_EQ(bufferOf(0)->getUsage(), fixed);
    EXPECT_EQ(bufferOf(1)->getUsage(), changing);
    EXPECT_THAT(test::verticesOf("skin"), ElementsAre(0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 1, 0, 2, 0, 0, 0, 1, 0));
    EXPECT_EQ(colorsOnGpu(), colorsOf(*skin));
    EXPECT_THAT(test::indicesOf("skin"), ElementsAre(0, 1, 2));
    EXPECT_EQ(test::ogreMesh("skin")->getBounds().getMaximum(), Ogre::Vector3(2, 0, 0));
    EXPECT_TRUE(test::ogreMesh("skin")->isLoaded());
    EXPECT_EQ(manager.getMesh("skin"), skin);
}

TEST_F(PaintMeshes, FirstUploadOfANameWinsAndTheRegistryTakesTheLatest)
{
    PaintMesh* first = addSkin(3);
    PaintMesh* second = addSkin(5);

    EXPECT_EQ(manager.getMesh("skin"), second);
    EXPECT_EQ(test::vertexDataOf("skin").vertexCount, 3u);
    delete first;
}

TEST_F(PaintMeshes, WhatItsMakerLeftOutIsFilledIn)
{
    auto* skin = new PaintMesh("skin");
    skin->vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    skin->indices = {0, 1, 2};

    manager.addPaintMesh(skin);

    EXPECT_THAT(colorsOnGpu(), ElementsAre(0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0));
    EXPECT_EQ(skin->normals.back(), rob::Vec3f(0, 0, 1));
}

TEST_F(PaintMeshes, DeletedOneLeavesNothingBehind)
{
    manager.deleteMesh(addSkin(3));

    EXPECT_FALSE(manager.hasMesh("skin"));
    EXPECT_EQ(test::ogreMesh("skin"), nullptr);
}

/// The two ways to the GPU.
struct Upload {
    const char* name;
    void (*upload)(MeshManager& manager, PaintMesh* skin);
};

class PaintUploads : public PaintMeshes, public testing::WithParamInterface<Upload> {
protected:
    void upload(PaintMesh* skin) { GetParam().upload(manager, skin); }
};

TEST_P(PaintUploads, ChangedColorsReachTheGpuTheLatestOfEachVertex)
{
    PaintMesh* skin = addSkin(300);
    skin->setColor(299, {1, 0, 0, 0.25f});
    skin->setColor(7, {0, 1, 0, 0.5f});
    skin->setColor(299, {0, 0, 0, 1});

    upload(skin);

    EXPECT_EQ(colorsOnGpu(), colorsOf(*skin));
    EXPECT_EQ(colorsOnGpu()[4 * 299 + 3], 1.0f);
    EXPECT_THAT(skin->changedColorIndexes, IsEmpty());
}

TEST_P(PaintUploads, VerticesFarFromWhatChangedAreNotWritten)
{
    PaintMesh* skin = addSkin(3000);
    skin->colorTable[1000].r = 1; // past the list of changes
    skin->setColor(0, {1, 1, 1, 1});
    skin->setColor(2999, {1, 1, 1, 1});

    upload(skin);

    EXPECT_EQ(colorsOnGpu()[4 * 1000], 0.0f);
    EXPECT_EQ(colorsOnGpu()[4 * 2999], 1.0f);
}

TEST_P(PaintUploads, ManyRandomChangesEndAsTheTableSays)
{
    PaintMesh* skin = addSkin(2000);
    std::mt19937 random(5);
    for (int round = 0; round < 20; ++round) {
        const unsigned count = round == 0 ? 1 : random() % 500;
        for (unsigned i = 0; i < count; ++i)
            skin->setColor(random() % 2000, {static_cast<float>(random() % 100), 1, 2, 3});
        upload(skin);
        ASSERT_EQ(colorsOnGpu(), colorsOf(*skin)) << round;
    }
}

TEST_P(PaintUploads, TakesNoLockWhereNothingChanged)
{
    PaintMesh* skin = addSkin(3);
    {
        const Ogre::HardwareBufferLockGuard held(bufferOf(1), Ogre::HardwareBuffer::HBL_WRITE_ONLY);
        EXPECT_NO_THROW(upload(skin)); // a buffer is not locked twice
    }
    skin->setColor(1, {1, 1, 1, 1});
    upload(skin);
    EXPECT_EQ(colorsOnGpu()[4], 1.0f);
}

TEST_P(PaintUploads, OfASkinThatIsNotOnTheGpuKeepsTheChanges)
{
    PaintMesh skin("nowhere");
    skin.addColor(0, 0, 0);
    skin.setColor(0, {1, 1, 1, 1});

    upload(&skin);

    EXPECT_THAT(skin.changedColorIndexes, ElementsAre(0));
}

INSTANTIATE_TEST_SUITE_P(
    Both, PaintUploads,
    testing::Values(Upload{"UpdatePaintMeshColor",
                           [](MeshManager& manager, PaintMesh* skin) { manager.updatePaintMeshColor(skin); }},
                    Upload{"UploadPaintColors",
                           [](MeshManager& manager, PaintMesh* skin) { manager.uploadPaintColors(skin); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(PaintMeshes, UpdateLocksTheWholeBufferOnce)
{
    PaintMesh* skin = addSkin(3);
    skin->setColor(1, {1, 1, 1, 1});
    const Ogre::HardwareBufferLockGuard held(bufferOf(1), Ogre::HardwareBuffer::HBL_WRITE_ONLY);

    EXPECT_THROW(manager.updatePaintMeshColor(skin), Ogre::Exception) << "there is a lock on it already";
    EXPECT_THAT(skin->changedColorIndexes, ElementsAre(1)) << "and the change still waits";
}

/// A square in the xy plane, of two triangles that share no vertex.
Mesh square(float side)
{
    Mesh mesh("square");
    mesh.vertices = {{0, 0, 0}, {side, 0, 0}, {side, side, 0}, {0, 0, 0}, {side, side, 0}, {0, side, 0}};
    mesh.indices = {0, 1, 2, 3, 4, 5};
    return mesh;
}

double meanEdge(const Mesh& mesh)
{
    double sum = 0;
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
        for (std::size_t k = 0; k < 3; ++k)
            sum += (mesh.vertices[mesh.indices[i + k]] - mesh.vertices[mesh.indices[i + (k + 1) % 3]]).length();
    return sum / static_cast<double>(mesh.indices.size());
}

struct EdgeCase {
    const char* name;
    float extent;
    double edge;
};

class PaintSkinOfMesh : public PaintMeshes, public testing::WithParamInterface<EdgeCase> {};

TEST_P(PaintSkinOfMesh, HasEdgesOfAboutTheLengthForItsExtent)
{
    Mesh source = square(GetParam().extent);
    const Mesh before = source;

    const std::unique_ptr<PaintMesh> skin(manager.createPaintMeshFromMesh(&source));

    EXPECT_EQ(skin->name, "square_paint");
    EXPECT_NEAR(meanEdge(*skin), GetParam().edge, 0.25 * GetParam().edge);
    EXPECT_EQ(skin->colorTable.size(), skin->vertices.size());
    EXPECT_EQ(skin->normals.size(), skin->vertices.size());
    for (const rob::Vec3f& normal : skin->normals)
        EXPECT_NEAR(normal.z, 1.0f, 1e-5) << "towards the side that is seen as the front";
    EXPECT_EQ(source.vertices, before.vertices);
    EXPECT_EQ(source.indices, before.indices);
    EXPECT_FALSE(manager.hasMesh("square_paint"));
}

INSTANTIATE_TEST_SUITE_P(Table, PaintSkinOfMesh,
                         testing::Values(EdgeCase{"Of50Is2", 50, 2}, EdgeCase{"Of250Is5", 250, 5},
                                         EdgeCase{"Of1000Is10", 1000, 10}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(PaintMeshes, SkinOfAnEmptyMeshIsEmpty)
{
    Mesh nothing("nothing");

    const std::unique_ptr<PaintMesh> skin(manager.createPaintMeshFromMesh(&nothing));

    EXPECT_EQ(skin->name, "nothing_paint");
    EXPECT_THAT(skin->vertices, IsEmpty());
    EXPECT_FALSE(skin->hasColor());
}

} // namespace
} // namespace vrk::visual
