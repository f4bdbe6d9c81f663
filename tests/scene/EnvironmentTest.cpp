#include "platform/broker/SignalBroker.h"
#include "platform/layout/Body.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/LoggedMessages.h"
#include "support/SceneFixture.h"
#include "view/Camera.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>
#include <OgreScriptCompiler.h>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct CountedUpdates {
    int count = 0;
    boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([this] { ++count; });
};

// Lights

class EnvironmentLights : public test::SceneFixture {
protected:
    EnvironmentLights()
        : light(sceneManager->getLight("light3")), diffuse(light->getDiffuseColour()),
          specular(light->getSpecularColour()), direction(light->getDerivedDirection()),
          ambient(sceneManager->getAmbientLight())
    {
    }
    ~EnvironmentLights() override
    {
        light->setDiffuseColour(diffuse);
        light->setSpecularColour(specular);
        light->setVisible(true);
        scene.setLightDir(3, direction.x, direction.y, direction.z);
        sceneManager->setAmbientLight(ambient);
    }

    Ogre::Light* light;
    const Ogre::ColourValue diffuse;
    const Ogre::ColourValue specular;
    const Ogre::Vector3 direction;
    const Ogre::ColourValue ambient;
};

TEST_F(EnvironmentLights, AmbientLightIsSetAtOnceAndAsksForAFrame)
{
    const CountedUpdates updates;

    scene.setAmbientLight(Ogre::ColourValue(0.1f, 0.2f, 0.4f, 1));

    EXPECT_EQ(sceneManager->getAmbientLight(), Ogre::ColourValue(0.1f, 0.2f, 0.4f, 1));
    EXPECT_EQ(updates.count, 1);
}

TEST_F(EnvironmentLights, ColoursAreThoseOfTheLightOfThatNumber)
{
    const CountedUpdates updates;

    scene.setLightDiffuse(3, 0.5f, 0.25f, 0.125f);
    scene.setLightSpecular(3, 0.75f, 0.5f, 0.25f);

    EXPECT_EQ(light->getDiffuseColour(), Ogre::ColourValue(0.5f, 0.25f, 0.125f, 1));
    EXPECT_EQ(light->getSpecularColour(), Ogre::ColourValue(0.75f, 0.5f, 0.25f, 1));
    EXPECT_EQ(sceneManager->getLight("light2")->getDiffuseColour(), Ogre::ColourValue(0.4f, 0.4f, 0.4f, 1));
    EXPECT_EQ(updates.count, 2);
}

TEST_F(EnvironmentLights, DirectionIsTheWorldsHoweverTheLightLookedBefore)
{
    const CountedUpdates updates;

    scene.setLightDir(3, 0, 1, 0);
    EXPECT_TRUE(light->getDerivedDirection().positionEquals({0, 1, 0}, 1e-5f)) << light->getDerivedDirection();
    scene.setLightDir(3, 0, 1, 0);

    EXPECT_TRUE(light->getDerivedDirection().positionEquals({0, 1, 0}, 1e-5f)) << light->getDerivedDirection();
    EXPECT_EQ(updates.count, 2);
}

TEST_F(EnvironmentLights, DisabledLightIsInvisible)
{
    const CountedUpdates updates;

    scene.setLightEnable(3, false);
    EXPECT_FALSE(light->isVisible());
    scene.setLightEnable(3, true);

    EXPECT_TRUE(light->isVisible());
    EXPECT_EQ(updates.count, 2);
}

TEST_F(EnvironmentLights, UnknownLightFailsAsOgreDoesAndAsksForNoFrame)
{
    const CountedUpdates updates;

    EXPECT_THROW(scene.setLightDiffuse(7, 1, 1, 1), Ogre::ItemIdentityException);
    EXPECT_THROW(scene.setLightSpecular(0, 1, 1, 1), Ogre::ItemIdentityException);
    EXPECT_THROW(scene.setLightDir(5, 1, 1, 1), Ogre::ItemIdentityException);
    EXPECT_THROW(scene.setLightEnable(-1, true), Ogre::ItemIdentityException);

    EXPECT_EQ(updates.count, 0);
}

// Grid

class EnvironmentGrid : public test::SceneFixture {
protected:
    ~EnvironmentGrid() override
    {
        scene.setGridNormalDir(2);
        drain();
    }
    Ogre::Quaternion gridTurn() const { return gridVisual()->getSceneNode()->getOrientation(); }
};

TEST_F(EnvironmentGrid, HasTwentyCellsOfAThousand)
{
    EXPECT_EQ(Scene::GetGridCellCount(), 20u);
    EXPECT_EQ(Scene::GetGridCellLength(), 1000u);
}

TEST_F(EnvironmentGrid, LinesReachOverAllCells)
{
    const Ogre::ManualObject* lines = sceneManager->getManualObject("Grid");

    EXPECT_EQ(lines->getBoundingBox(), Ogre::AxisAlignedBox(-10000, -10000, 0, 10000, 10000, 0));
    ASSERT_EQ(lines->getSections().size(), 1u);
    EXPECT_EQ(lines->getSections()[0]->getMaterialName(), "VertexColor");
    EXPECT_EQ(lines->getRenderQueueGroup(), 50);
    EXPECT_EQ(lines->getSections()[0]->getRenderOperation()->vertexData->vertexCount, 21u * 4u);
}

TEST_F(EnvironmentGrid, StaysWhenItIsSwitchedOff)
{
    Visual* before = gridVisual();
    before->setVisible(true, false);

    scene.setGrid(false);
    drain();

    EXPECT_EQ(gridVisual(), before);
    EXPECT_TRUE(before->isVisible());
    EXPECT_EQ(Scene::GetGridCellCount(), 20u);
}

TEST_F(EnvironmentGrid, IsMadeOnlyOnce)
{
    Visual* before = gridVisual();

    scene.setGrid(true);

    EXPECT_EQ(gridVisual(), before);
    EXPECT_THAT(addedToWorld(), testing::IsEmpty());
}

TEST_F(EnvironmentGrid, NormalIsStoredAtOnceAndTheGridTurnedLater)
{
    scene.setGridNormalDir(0);

    EXPECT_EQ(SceneCore::Get()->settings.gridNormalDir, 0);
    EXPECT_EQ(gridTurn(), Ogre::Quaternion::IDENTITY);
    drain();
    EXPECT_EQ(gridTurn(), Ogre::Quaternion(0.5f, 0.5f, 0.5f, 0.5f));
}

TEST_F(EnvironmentGrid, LiesAcrossTheAxisThatIsUp)
{
    scene.setGridNormalDir(1);
    drain();
    EXPECT_EQ(gridTurn(), Ogre::Quaternion(-0.5f, 0.5f, 0.5f, 0.5f));

    scene.setGridNormalDir(2);
    drain();
    EXPECT_EQ(gridTurn(), Ogre::Quaternion::IDENTITY);
}

TEST_F(EnvironmentGrid, UnknownNormalLeavesItAsItLies)
{
    scene.setGridNormalDir(1);
    drain();

    scene.setGridNormalDir(3);
    drain();

    EXPECT_EQ(gridTurn(), Ogre::Quaternion(-0.5f, 0.5f, 0.5f, 0.5f));
    EXPECT_EQ(SceneCore::Get()->settings.gridNormalDir, 3);
}

TEST_F(EnvironmentGrid, NormalStaysUprightForTheCamera)
{
    scene.setGridNormalDir(0);
    drain();

    Ogre::SceneNode* camera = Camera::Get()->getSceneNode();
    camera->setPosition(100, 200, 300);
    camera->lookAt(Ogre::Vector3::ZERO, Ogre::Node::TS_WORLD);

    EXPECT_NEAR((camera->getOrientation() * Ogre::Vector3::UNIT_X).x, 0, 1e-5f) << "the horizon is level";
}

// Display modes

class EnvironmentDisplayMode : public test::SceneFixture {
protected:
    EnvironmentDisplayMode() : solid(new Visual(world)), wires(new Visual(solid)), other(new Visual(world))
    {
        solid->setType(VisualType::Solid);
        wires->setType(VisualType::WireFrame);
        other->setType(VisualType::Mesh);
    }
    ~EnvironmentDisplayMode() override
    {
        scene.setDisplayMode(Scene::DisplayMode::Shaded);
        drain();
    }
    void show(Scene::DisplayMode mode)
    {
        scene.setDisplayMode(mode);
        drain();
    }
    Ogre::PolygonMode polygonMode() const { return Camera::Get()->ogreCamera()->getPolygonMode(); }

    Visual* solid;
    Visual* wires; // under the solid, as the edges of a body are
    Visual* other;
};

struct DisplayModeCase {
    const char* name;
    Scene::DisplayMode mode;
    Ogre::PolygonMode polygons;
    bool solids;
    bool wires;
};

class EnvironmentDisplayModes : public EnvironmentDisplayMode, public testing::WithParamInterface<DisplayModeCase> {};

TEST_P(EnvironmentDisplayModes, ShowWhatTheyAreNamedAfter)
{
    const DisplayModeCase& c = GetParam();
    solid->setVisible(!c.solids, false);
    wires->setVisible(!c.wires, false);
    other->setVisible(false, false);

    show(c.mode);

    EXPECT_EQ(polygonMode(), c.polygons);
    EXPECT_EQ(solid->isVisible(), c.solids);
    EXPECT_EQ(wires->isVisible(), c.wires);
    EXPECT_FALSE(other->isVisible()) << "neither solid nor wires";
}

INSTANTIATE_TEST_SUITE_P(
    Table, EnvironmentDisplayModes,
    testing::Values(DisplayModeCase{"Shaded", Scene::DisplayMode::Shaded, Ogre::PM_SOLID, true, false},
                    DisplayModeCase{"ShadedWithEdges", Scene::DisplayMode::ShadedWithEdges, Ogre::PM_SOLID, true, true},
                    DisplayModeCase{"Edges", Scene::DisplayMode::Edges, Ogre::PM_SOLID, false, true},
                    DisplayModeCase{"Wire", Scene::DisplayMode::Wire, Ogre::PM_WIREFRAME, true, false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(EnvironmentDisplayMode, IsPosted)
{
    scene.setDisplayMode(Scene::DisplayMode::Edges);

    EXPECT_TRUE(solid->isVisible());
    drain();
    EXPECT_FALSE(solid->isVisible());
}

TEST_F(EnvironmentDisplayMode, ShadedWithEdgesAfterEdgesShowsBoth)
{
    show(Scene::DisplayMode::Edges);

    show(Scene::DisplayMode::ShadedWithEdges);

    EXPECT_TRUE(solid->isVisible());
    EXPECT_TRUE(wires->isVisible());
}

TEST_F(EnvironmentDisplayMode, UnknownValueDoesNothing)
{
    show(Scene::DisplayMode::Edges);

    show(static_cast<Scene::DisplayMode>(4));
    show(static_cast<Scene::DisplayMode>(-1));

    EXPECT_EQ(polygonMode(), Ogre::PM_SOLID);
    EXPECT_FALSE(solid->isVisible());
    EXPECT_TRUE(wires->isVisible());
}

TEST_F(EnvironmentDisplayMode, ReachesWhatLiesBelowAHiddenVisual)
{
    auto* part = new Visual(world);
    solid->attachTo(part);
    part->setVisible(false, true);

    show(Scene::DisplayMode::ShadedWithEdges);

    EXPECT_FALSE(part->isVisible());
    EXPECT_TRUE(solid->isVisible());
    EXPECT_TRUE(wires->isVisible());
}

TEST_F(EnvironmentDisplayMode, LeavesWhatElseLiesUnderASolidAsItIs)
{
    auto* edge = new Visual(solid);
    edge->setType(VisualType::GeneratedEdge);
    auto* hidden = new Visual(solid);
    hidden->setVisible(false, false);

    show(Scene::DisplayMode::Edges);
    EXPECT_TRUE(edge->isVisible());

    show(Scene::DisplayMode::Shaded);
    EXPECT_FALSE(hidden->isVisible());
}

TEST_F(EnvironmentDisplayMode, IsNotToldToPicking)
{
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "display-mode");
    SolidVisual::Build(world, body.get(), body->getShape());
    Visual* drawn = Scene::GetVisual(body->getId());

    show(Scene::DisplayMode::Edges);
    EXPECT_FALSE(drawn->isVisible());
    EXPECT_TRUE(selection::VisualSelection::Get()->isEnabled(drawn)) << "a solid of which edges are seen can be picked";

    selection::VisualSelection::Get()->disableObject(drawn);
    show(Scene::DisplayMode::Shaded);
    EXPECT_TRUE(drawn->isVisible());
    EXPECT_FALSE(selection::VisualSelection::Get()->isEnabled(drawn));
}

TEST_F(EnvironmentDisplayMode, BringsHiddenFacesBackWhereItShowsSolids)
{
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "display-mode-faces");
    SolidVisual::Build(world, body.get(), body->getShape());
    auto* drawn = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    drawn->setFaceVisible(2, false);

    show(Scene::DisplayMode::Edges);
    EXPECT_FALSE(drawn->isFaceVisible(2));

    show(Scene::DisplayMode::Shaded);
    EXPECT_TRUE(drawn->isFaceVisible(2));
}

// Outline

class EnvironmentBorder : public test::RenderTest {
protected:
    Ogre::Viewport* viewport() const { return Camera::Get()->ogreCamera()->getViewport(); }
    bool hasChain() const { return compositors.hasCompositorChain(viewport()); }
    Ogre::CompositorInstance* outline() const
    {
        return compositors.getCompositorChain(viewport())->getCompositor("BorderHighlight");
    }

    Ogre::CompositorManager& compositors = Ogre::CompositorManager::getSingleton();
};

TEST_F(EnvironmentBorder, FirstCallMakesTheCompositor)
{
    ASSERT_FALSE(hasChain());
    const test::LoggedMessages messages;

    scene.setBorderHighlightEnabled(true);

    ASSERT_NE(outline(), nullptr);
    EXPECT_TRUE(outline()->getEnabled());
    EXPECT_THAT(messages.others, ElementsAre("addCompositor: BorderHighlight"));
    EXPECT_THAT(messages.errors, IsEmpty());
}

TEST_F(EnvironmentBorder, SecondCallMakesNoSecondOne)
{
    scene.setBorderHighlightEnabled(true);
    const test::LoggedMessages messages;

    scene.setBorderHighlightEnabled(true);

    EXPECT_EQ(compositors.getCompositorChain(viewport())->getCompositorInstances().size(), 1u);
    EXPECT_THAT(messages.others, IsEmpty());
}

TEST_F(EnvironmentBorder, SelectingOneVisualSwitchesItOnAndSelectingSeveralDoesNot)
{
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "border");
    SolidVisual::Build(world, body.get(), body->getShape());

    scene.setVisualsSelected({body->getId()});
    drain();
    EXPECT_FALSE(hasChain());

    scene.setVisualSelected(body->getId());
    drain();
    ASSERT_TRUE(hasChain());
    EXPECT_TRUE(outline()->getEnabled());

    scene.clearSelections();
    drain();
    EXPECT_TRUE(outline()->getEnabled()) << "the application switches it off";
}

TEST_F(EnvironmentBorder, IsSwitchedOffAndOnAgain)
{
    scene.setBorderHighlightEnabled(true);

    scene.setBorderHighlightEnabled(false);
    EXPECT_FALSE(outline()->getEnabled());

    scene.setBorderHighlightEnabled(true);
    EXPECT_TRUE(outline()->getEnabled());
}

TEST_F(EnvironmentBorder, SelectionSwitchesItOnAndNoneSwitchesItOff)
{
    auto* visual = new Visual(world);
    SceneCore::Get()->visuals.enter(visual);

    scene.setVisualsSelected({visual->getId()});
    drain();
    EXPECT_FALSE(hasChain()) << "several visuals leave it as it is";
    scene.setVisualSelected(visual);
    drain();
    ASSERT_TRUE(hasChain());
    EXPECT_TRUE(outline()->getEnabled());

    scene.clearSelections();
    drain();
    EXPECT_TRUE(outline()->getEnabled());
    scene.setVisualsSelected({visual->getId()});
    scene.removeVisual(visual->getId());
    drain();
    EXPECT_TRUE(outline()->getEnabled());
}

TEST_F(EnvironmentBorder, NothingHappensWithoutAViewport)
{
    Ogre::Viewport* before = viewport();
    Camera::Get()->ogreCamera()->_notifyViewport(nullptr);
    const test::LoggedMessages messages;

    scene.setBorderHighlightEnabled(true);

    Camera::Get()->ogreCamera()->_notifyViewport(before);
    EXPECT_FALSE(hasChain());
    EXPECT_THAT(messages.others, IsEmpty());
    EXPECT_THAT(messages.errors, IsEmpty());
}

TEST_F(EnvironmentBorder, AnotherRenderTargetStartsWithoutIt)
{
    scene.setBorderHighlightEnabled(true);

    setSize(200, 150);

    EXPECT_FALSE(hasChain());
    scene.setBorderHighlightEnabled(true);
    EXPECT_NE(outline(), nullptr);
}

TEST_F(EnvironmentBorder, MissingScriptIsLogged)
{
    compositors.remove("BorderHighlight", "General");
    const test::LoggedMessages messages;

    scene.setBorderHighlightEnabled(true);

    EXPECT_THAT(messages.errors, ElementsAre("no compositor BorderHighlight in the resources"));
    // As it was, for the tests to come.
    compositors.removeCompositorChain(viewport());
    Ogre::DataStreamPtr file =
        Ogre::ResourceGroupManager::getSingleton().openResource("resource://material/border.compositor", "General");
    Ogre::ScriptCompilerManager::getSingleton().parseScript(file, "General");
    ASSERT_TRUE(compositors.resourceExists("BorderHighlight", "General"));
}

// Instance managers

class EnvironmentInstances : public test::SceneFixture {
protected:
    static std::size_t batchesOf(const Ogre::InstanceManager& manager)
    {
        std::size_t count = 0;
        for (const auto& [material, batches] : manager.getInstanceBatchMapIterator())
            count += batches.size();
        return count;
    }
    static bool hasBatch(const Ogre::InstanceManager& manager, const Ogre::InstanceBatch* wanted)
    {
        for (const auto& [material, batches] : manager.getInstanceBatchMapIterator())
            if (std::ranges::find(batches, wanted) != batches.end())
                return true;
        return false;
    }
    static const Ogre::IndexData* indicesOf(Ogre::InstanceBatch& batch)
    {
        Ogre::RenderOperation drawn;
        batch.getRenderOperation(drawn);
        return drawn.indexData;
    }
};

struct InstanceManagerCase {
    const char* key;
    const char* name;
    const char* material;
    std::size_t batchSize;
    const char* mesh;
};

class EnvironmentInstanceManagers : public EnvironmentInstances,
                                    public testing::WithParamInterface<InstanceManagerCase> {};

TEST_P(EnvironmentInstanceManagers, MakeBatchesOfTheirMesh)
{
    const InstanceManagerCase& c = GetParam();

    Ogre::InstanceManager* manager = Scene::GetInstanceMgr(c.key);

    EXPECT_EQ(manager->getName(), c.name);
    EXPECT_EQ(manager->getInstancingTechnique(), Ogre::InstanceManager::HWInstancingBasic);
    Ogre::InstancedEntity* entity = manager->createInstancedEntity(c.material);
    Ogre::InstanceBatch* batch = entity->_getOwner();
    EXPECT_EQ(batch->_getMeshReference()->getName(), c.mesh);
    EXPECT_EQ(batch->getMaterial()->getName(), c.material);
    // The batch is full when it has as many as it takes.
    std::vector<Ogre::InstancedEntity*> entities{entity};
    while (!batch->isBatchFull())
        entities.push_back(batch->createInstancedEntity());
    EXPECT_EQ(entities.size(), c.batchSize);
    for (Ogre::InstancedEntity* made : entities)
        batch->removeInstancedEntity(made);
}

INSTANTIATE_TEST_SUITE_P(Table, EnvironmentInstanceManagers,
                         testing::Values(InstanceManagerCase{"VRK_FrameInstanceManager", "VRK_FrameInstanceManager",
                                                             "InstanceRobTarget", 5000, "VRK_FrameMesh"},
                                         InstanceManagerCase{"InstanceRobTargetHighlight", "RobTargetHighlight",
                                                             "InstanceRobTargetHighlight", 5000, "VRK_FrameMesh"},
                                         InstanceManagerCase{"InstanceRobTargetSelected", "RobTargetSelected",
                                                             "InstanceRobTargetSelected", 5000, "VRK_FrameMesh"},
                                         InstanceManagerCase{"InstancePathArrow", "PathArrow", "InstanceArrow", 500,
                                                             "path_arrow_head"}),
                         [](const auto& info) { return std::string(info.param.key); });

TEST_F(EnvironmentInstances, UnknownManagerFails)
{
    EXPECT_THAT([] { Scene::GetInstanceMgr("PathArrow"); },
                testing::ThrowsMessage<std::out_of_range>(testing::StrEq("invalid unordered_map<K, T> key")));
}

TEST_F(EnvironmentInstances, CleanUpFreesEmptyBatchesButTheFirst)
{
    Ogre::InstanceManager* manager = Scene::GetInstanceMgr("InstancePathArrow");
    scene.cleanupInstanceBatches(); // what other tests left
    drain();
    std::vector<Ogre::InstancedEntity*> entities;
    for (int i = 0; i < 1200; ++i)
        entities.push_back(manager->createInstancedEntity("InstanceArrow"));
    ASSERT_EQ(batchesOf(*manager), 3u);
    // The second batch, in the middle, keeps one.
    Ogre::InstancedEntity* kept = entities[700];
    for (Ogre::InstancedEntity* entity : entities)
        if (entity != kept)
            entity->_getOwner()->removeInstancedEntity(entity);

    scene.cleanupInstanceBatches();
    EXPECT_EQ(batchesOf(*manager), 3u) << "it is posted";
    drain();

    EXPECT_EQ(batchesOf(*manager), 2u) << "the one in use and the one whose vertices all share";
    kept->_getOwner()->removeInstancedEntity(kept);
    scene.cleanupInstanceBatches();
    drain();
    EXPECT_EQ(batchesOf(*manager), 1u);
}

TEST_F(EnvironmentInstances, CleanUpKeepsWhatBatchesOfAnotherMaterialDrawWith)
{
    Ogre::InstanceManager* manager = Scene::GetInstanceMgr("InstancePathArrow");
    std::vector<Ogre::InstancedEntity*> arrows;
    const auto addArrows = [&](int count) {
        for (int i = 0; i < count; ++i)
            arrows.push_back(manager->createInstancedEntity("InstanceArrow"));
    };
    addArrows(500);                                                                 // a batch full
    Ogre::InstancedEntity* other = manager->createInstancedEntity("InstanceFrame"); // makes vertices and indices anew
    addArrows(600);                                                                 // two batches that share those
    Ogre::InstanceBatch* owner = other->_getOwner();
    const Ogre::IndexData* shared = indicesOf(*owner);
    ASSERT_EQ(indicesOf(*arrows.back()->_getOwner()), shared);
    owner->removeInstancedEntity(other);

    scene.cleanupInstanceBatches();
    drain();

    EXPECT_TRUE(hasBatch(*manager, owner)) << "its indices are drawn with";
    for (Ogre::InstancedEntity* arrow : arrows)
        arrow->_getOwner()->removeInstancedEntity(arrow);
    scene.cleanupInstanceBatches();
    drain();
    EXPECT_EQ(batchesOf(*manager), 1u);
    EXPECT_TRUE(hasBatch(*manager, owner)) << "batches still to come take its vertices and indices";
}

TEST_F(EnvironmentInstances, CleanUpWithoutAnyBatchDoesNothing)
{
    scene.cleanupInstanceBatches();

    EXPECT_NO_THROW(drain());
}

} // namespace
} // namespace vrk::visual
