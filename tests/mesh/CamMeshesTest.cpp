#include "OgreMeshes.h"
#include "mesh/MeshManager.h"
#include "platform/cam/TMesh.h"
#include "scene/Scene.h"
#include "support/SceneFixture.h"
#include "visual/CamMeshVisual.h"
#include "visual/FrameVisual.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>

namespace vrk::visual {
namespace {

using rob::Posf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* camMeshName = "__UNIQUE_PREVIEW_CAM_MESH__";

/// A square sheet from the origin, of `cells` by `cells` squares, whose height is `height(x, y)` of its length.
Mesh sheet(float length, unsigned cells, const std::function<float(float, float)>& height)
{
    Mesh mesh("sheet");
    for (unsigned j = 0; j <= cells; ++j)
        for (unsigned i = 0; i <= cells; ++i) {
            const float x = static_cast<float>(i) / static_cast<float>(cells);
            const float y = static_cast<float>(j) / static_cast<float>(cells);
            mesh.vertices.emplace_back(length * x, length * y, height(x, y));
        }
    const unsigned row = cells + 1;
    for (unsigned j = 0; j < cells; ++j)
        for (unsigned i = 0; i < cells; ++i) {
            const unsigned a = j * row + i;
            mesh.indices.insert(mesh.indices.end(), {a, a + 1, a + row + 1, a, a + row + 1, a + row});
        }
    return mesh;
}

float flat(float, float)
{
    return 0;
}

/// Even waves of this height from trough to crest, three of them along the sheet; none at the border.
std::function<float(float, float)> waves(float height)
{
    return [height](float x, float y) {
        constexpr float pi = 3.14159265f;
        return height * std::abs(std::sin(3 * pi * x) * std::sin(3 * pi * y));
    };
}

struct Simple {
    std::vector<Posf> vertices{{7, 7, 7}};
    std::vector<unsigned> indices{9};
    bool isSimpler = false;

    explicit Simple(const Mesh& mesh) { isSimpler = MeshManager::simplifyMesh(mesh, vertices, indices); }
    bool isUntouched() const { return vertices == std::vector<Posf>{{7, 7, 7}} && indices == std::vector<unsigned>{9}; }
    /// Of the vertices that are left, above the ground.
    float highest() const
    {
        return std::max_element(vertices.begin(), vertices.end(),
                                [](const Posf& a, const Posf& b) { return a.z < b.z; })
            ->z;
    }
};

TEST(SimplifyMesh, FlatSheetIsMadeOfFewTriangles)
{
    const Mesh mesh = sheet(10, 10, flat);

    const Simple simple(mesh);

    EXPECT_TRUE(simple.isSimpler);
    EXPECT_LE(simple.indices.size() / 3, 20u);
    EXPECT_GE(simple.vertices.size(), 4u);
    EXPECT_LT(*std::max_element(simple.indices.begin(), simple.indices.end()), simple.vertices.size());
    EXPECT_EQ(simple.highest(), 0.0f);
}

TEST(SimplifyMesh, Of63TrianglesReturnsFalseWithoutCallingTheDecimator)
{
    Mesh mesh = sheet(10, 6, flat); // 72
    mesh.indices.resize(3 * 63);
    mesh.indices[0] = 1000; // the decimator refuses such an index

    EXPECT_TRUE(Simple(mesh).isUntouched());
    EXPECT_FALSE(Simple(mesh).isSimpler);

    mesh = sheet(10, 6, flat);
    mesh.indices.resize(3 * 64);
    EXPECT_TRUE(Simple(mesh).isSimpler);
    mesh.indices[0] = 1000;
    EXPECT_THROW(Simple{mesh}, std::out_of_range);
}

TEST(SimplifyMesh, WithoutBoundsReturnsFalse)
{
    Mesh mesh("indices without vertices");
    mesh.indices.assign(3 * 64, 0); // of no vertex: the decimator would refuse them

    const Simple simple(mesh);

    EXPECT_FALSE(simple.isSimpler);
    EXPECT_TRUE(simple.isUntouched());
}

TEST(SimplifyMesh, OfNothingButPointsReturnsFalse)
{
    Mesh mesh("one point, over and over");
    mesh.vertices = {{1, 2, 3}};
    mesh.indices.assign(3 * 64, 0);

    const Simple simple(mesh);

    EXPECT_FALSE(simple.isSimpler);
    EXPECT_TRUE(simple.isUntouched());
}

TEST(SimplifyMesh, ThatComesOutNoSimplerReturnsFalse)
{
    // Single triangles, far from each other: there is no edge that could go.
    Mesh mesh("leaves");
    for (unsigned i = 0; i < 64; ++i) {
        const float x = 10.0f * static_cast<float>(i);
        mesh.vertices.insert(mesh.vertices.end(), {{x, 0, 0}, {x + 5, 0, 0}, {x, 5, 0}});
        mesh.indices.insert(mesh.indices.end(), {3 * i, 3 * i + 1, 3 * i + 2});
    }

    const Simple simple(mesh);

    EXPECT_FALSE(simple.isSimpler);
    EXPECT_TRUE(simple.isUntouched());
}

TEST(SimplifyMesh, LeavesTheMeshAsItWas)
{
    const Mesh mesh = sheet(100, 20, waves(1));
    const Mesh before = mesh;

    const Simple simple(mesh);

    EXPECT_TRUE(simple.isSimpler);
    EXPECT_EQ(mesh.vertices, before.vertices);
    EXPECT_EQ(mesh.indices, before.indices);
}

struct ToleranceCase {
    const char* name;
    float length;
    float flattened; ///< waves that are lost within the tolerance, and would not be within a smaller one
    float kept;      ///< waves that are not, and would be within a larger one
};

class SimplifyMeshTolerance : public testing::TestWithParam<ToleranceCase> {};

TEST_P(SimplifyMeshTolerance, LosesWavesBelowItAndKeepsThoseAbove)
{
    const ToleranceCase& c = GetParam();

    const Simple lost(sheet(c.length, 24, waves(c.flattened)));
    const Simple kept(sheet(c.length, 24, waves(c.kept)));

    ASSERT_TRUE(lost.isSimpler);
    EXPECT_LE(lost.indices.size() / 3, 8u) << "of 1152";
    if (kept.isSimpler) {
        EXPECT_GE(kept.highest(), 0.5f * c.kept);
        EXPECT_GE(kept.indices.size() / 3, 16u);
    }
}

// A thousandth of 10 is below the least tolerance, 0.02; of 100 it is 0.1, and of 5000 it is above the greatest, 1.
INSTANTIATE_TEST_SUITE_P(Table, SimplifyMeshTolerance,
                         testing::Values(ToleranceCase{"Of10Is0_02", 10, 0.016f, 0.03f},
                                         ToleranceCase{"Of100Is0_1", 100, 0.08f, 0.15f},
                                         ToleranceCase{"Of5000Is1", 5000, 0.8f, 1.5f}),
                         [](const auto& info) { return std::string(info.param.name); });

class CamMesh : public test::SceneFixture {
protected:
    ~CamMesh() override
    {
        // A mesh of this name outlives its visual, and so would the first one of the program.
        Ogre::MeshManager& meshes = Ogre::MeshManager::getSingleton();
        if (meshes.resourceExists(camMeshName, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME))
            meshes.remove(camMeshName, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    }

    static cadcam::TMesh<double> triangle(double size)
    {
        cadcam::TTriangle<cadcam::TPoint3d<double>> triangle;
        triangle.vertices = {2, 1, 0};
        return {{{0, 0, 0}, {size, 0, 0}, {0, size, 0.5}}, {triangle}};
    }
    std::size_t entities() const
    {
        return sceneManager->getMovableObjects(Ogre::EntityFactory::FACTORY_TYPE_NAME).size();
    }
    Visual* lastAdded() const { return addedToWorld().back(); }
    static Ogre::Entity* entityOf(const Visual& visual)
    {
        return dynamic_cast<Ogre::Entity*>(visual.getSceneNode()->getAttachedObjects().at(0));
    }

    MeshManager& manager = *MeshManager::Get();
};

TEST_F(CamMesh, IsLoadedAsFloatsUnderItsFixedNameAndNotRegistered)
{
    cadcam::TMesh<double> source = triangle(0.1);
    *source.normals() = {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}};

    const std::unique_ptr<Mesh> mesh(manager.loadCamMesh(&source));

    EXPECT_EQ(mesh->name, camMeshName);
    EXPECT_THAT(mesh->vertices, ElementsAre(Posf(0, 0, 0), Posf(0.1f, 0, 0), Posf(0, 0.1f, 0.5f)));
    EXPECT_THAT(mesh->normals, ElementsAre(rob::Vec3f(0, 0, 1), rob::Vec3f(0, 1, 0), rob::Vec3f(1, 0, 0)));
    EXPECT_THAT(mesh->indices, ElementsAre(2, 1, 0));
    EXPECT_FALSE(manager.hasMesh(camMeshName));
    EXPECT_THAT(test::indicesOf(camMeshName), ElementsAre(2, 1, 0));
    EXPECT_EQ(test::verticesOf(camMeshName).size(), 3u * 6);
}

TEST_F(CamMesh, WithoutANormalForEachVertexHasNone)
{
    cadcam::TMesh<double> source = triangle(1);
    source.normals()->push_back({0, 0, 1});

    const std::unique_ptr<Mesh> mesh(manager.loadCamMesh(&source));

    EXPECT_THAT(mesh->normals, IsEmpty());
    EXPECT_EQ(test::verticesOf(camMeshName).size(), 3u * 3);
}

TEST_F(CamMesh, SecondOneShowsTheFirstUntilThatIsRemoved)
{
    cadcam::TMesh<double> first = triangle(1), second = triangle(2);
    const std::unique_ptr<Mesh> one(manager.loadCamMesh(&first));
    const std::unique_ptr<Mesh> two(manager.loadCamMesh(&second));

    EXPECT_EQ(test::verticesOf(camMeshName)[3], 1.0f);
    EXPECT_EQ(two->vertices[1].x, 2.0f);

    Ogre::MeshManager::getSingleton().remove(camMeshName, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    const std::unique_ptr<Mesh> three(manager.loadCamMesh(&second));
    EXPECT_EQ(test::verticesOf(camMeshName)[3], 2.0f);
}

TEST_F(CamMesh, EmptyOneIsLoaded)
{
    cadcam::TMesh<double> nothing;

    const std::unique_ptr<Mesh> mesh(manager.loadCamMesh(&nothing));

    EXPECT_THAT(mesh->vertices, IsEmpty());
    EXPECT_EQ(test::vertexDataOf(camMeshName).vertexCount, 0u);
}

TEST_F(CamMesh, IsShownInTheWorldForTheId0)
{
    cadcam::TMesh<double> source = triangle(10);

    scene.debugViewCamMesh(&source, 0);
    EXPECT_THAT(addedToWorld(), IsEmpty()) << "it is posted";
    drain();

    const auto* shown = dynamic_cast<CamMeshVisual*>(lastAdded());
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(entityOf(*shown)->getName(), "CAM_MESH_ENTITY");
    EXPECT_EQ(entityOf(*shown)->getMesh()->getName(), camMeshName);
    EXPECT_EQ(entityOf(*shown)->getSubEntity(0)->getMaterialName(), "MeshBody");
    EXPECT_TRUE(entityOf(*shown)->getSubEntity(0)->hasCustomParameter(0)) << "which that material reads";
    EXPECT_FALSE(Scene::HasVisual(shown->getId()));
}

TEST_F(CamMesh, IsShownUnderTheVisualOfTheId)
{
    cadcam::TMesh<double> source = triangle(10);
    scene.debugViewCamMesh(&source, worldFrame->getId());

    drain();

    EXPECT_THAT(addedToWorld(), IsEmpty());
    Visual* shown = nullptr;
    for (Visual* child : worldFrame->getChildren())
        shown = dynamic_cast<CamMeshVisual*>(child) ? child : shown;
    ASSERT_NE(shown, nullptr);
    scene.deleteVisual(shown);
}

TEST_F(CamMesh, UnderAnIdWithoutVisualFailsAndMakesNothing)
{
    cadcam::TMesh<double> source = triangle(10);
    const std::size_t before = entities();
    scene.debugViewCamMesh(&source, 4242);

    EXPECT_THROW(drain(), std::out_of_range);

    EXPECT_THAT(addedToWorld(), IsEmpty());
    EXPECT_EQ(entities(), before);
}

TEST_F(CamMesh, EntityOutlivesItsVisualAndGoesBeforeTheNextOne)
{
    cadcam::TMesh<double> source = triangle(10);
    std::size_t withOne = 0;
    for (int i = 0; i < 3; ++i) {
        scene.debugViewCamMesh(&source, 0);
        drain();
        EXPECT_EQ(entityOf(*lastAdded())->getName(), "CAM_MESH_ENTITY");
        if (i == 0)
            withOne = entities(); // what earlier tests left behind is gone by now
        EXPECT_EQ(entities(), withOne);

        scene.deleteVisual(lastAdded());
        EXPECT_TRUE(sceneManager->hasEntity("CAM_MESH_ENTITY"));
        EXPECT_EQ(entities(), withOne);
    }
}

TEST_F(CamMesh, SecondVisualBesideTheFirstIsDrawnToo)
{
    cadcam::TMesh<double> source = triangle(10);
    scene.debugViewCamMesh(&source, 0);
    scene.debugViewCamMesh(&source, 0);
    drain();

    ASSERT_EQ(addedToWorld().size(), 2u);
    EXPECT_NE(entityOf(*addedToWorld()[0]), entityOf(*addedToWorld()[1]));
}

} // namespace
} // namespace vrk::visual
