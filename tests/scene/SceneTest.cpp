#include "platform/broker/SignalBroker.h"
#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/FrameVisual.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

#include <thread>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::StrEq;
using testing::ThrowsMessage;

constexpr const char* unknownKey = "invalid unordered_map<K, T> key";

class SceneTest : public test::SceneFixture {
protected:
    Visual* addVisual(VisualType type = VisualType::Part)
    {
        auto* visual = new Visual(world);
        visual->setType(type);
        SceneCore::Get()->visuals.enter(visual);
        return visual;
    }
};

/// A model object that gathers others.
class Group : public sdf::SdfContainer {
public:
    explicit Group(unsigned id) : SdfContainer(sdf::ModelType::GroupFirst, id, "group") {}
};

struct CountedUpdates {
    int count = 0;
    boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([this] { ++count; });
};

TEST_F(SceneTest, VisualOfIdZeroDoesNotExist)
{
    EXPECT_FALSE(Scene::HasVisual(0));
    EXPECT_THAT([] { Scene::GetVisual(0); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey)));
}

TEST_F(SceneTest, NameIsThatOfTheOneScene)
{
    EXPECT_EQ(Scene::GetName(), "Daltrimo Scene");
}

TEST_F(SceneTest, RemovedVisualTakesItsChildrenAlong)
{
    Visual* parent = addVisual();
    const unsigned parentId = parent->getId();
    auto* child = new Visual(parent);
    SceneCore::Get()->visuals.enter(child);
    const unsigned childId = child->getId();

    scene.removeVisual(parentId);
    EXPECT_TRUE(Scene::HasVisual(parentId));
    drain();

    EXPECT_FALSE(Scene::HasVisual(parentId));
    EXPECT_FALSE(Scene::HasVisual(childId));
}

TEST_F(SceneTest, RemovingAnUnknownVisualFailsOnTheRenderThread)
{
    scene.removeVisual(4711);

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey)));
}

TEST_F(SceneTest, ResettingTheColourOfAnUnknownVisualFailsOnTheRenderThread)
{
    scene.resetColor(4711u);

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey)));
}

TEST_F(SceneTest, TemporaryVisualIsKnownAtOnceAndRemovedByAPost)
{
    auto* visual = new Visual(world);
    const unsigned id = visual->getId();
    const CountedUpdates updates;
    scene.addTempVisual(visual);
    EXPECT_EQ(updates.count, 0) << "at once, without a post";
    EXPECT_FALSE(Scene::HasVisual(id)) << "it stands in a registry of its own";

    scene.removeTempVisual(id);
    EXPECT_EQ(updates.count, 1);
    EXPECT_EQ(visual->getParent(), world) << "it is posted";
    drain();

    EXPECT_THAT(std::vector<Visual*>(world->getChildren().begin(), world->getChildren().end()),
                testing::UnorderedElementsAre(gridVisual(), worldFrame));
}

TEST_F(SceneTest, RemovingAnUnknownTemporaryVisualFailsOnTheRenderThread)
{
    scene.removeTempVisual(4711);

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey)));
}

TEST_F(SceneTest, YoungerVisualOfAnIdStaysRegisteredWhenTheOlderOneDies)
{
    auto* older = new Visual(77, world);
    SceneCore::Get()->visuals.enter(older);
    auto* younger = new Visual(77, world);
    SceneCore::Get()->visuals.enter(younger);

    scene.deleteVisual(older);

    EXPECT_EQ(Scene::GetVisual(77), younger);
}

TEST_F(SceneTest, ShowingAnIdUnknownToTheModelPostsNothing)
{
    const CountedUpdates updates;

    scene.setVisualVisible(4711, false);

    EXPECT_EQ(updates.count, 0);
}

TEST_F(SceneTest, ShowingAModelObjectWithoutVisualPostsATaskThatDoesNothing)
{
    auto object = std::make_shared<sdf::SdfNode>(sdf::ModelType::Part, 12, "part");
    sdf::SdfManager::inst().add(object);
    const CountedUpdates updates;

    scene.setVisualVisible(12, false);
    EXPECT_EQ(updates.count, 1);

    EXPECT_NO_THROW(drain());
}

TEST_F(SceneTest, HiddenBodyIsNotDrawnAndNotPicked)
{
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "hidden-body");
    SolidVisual::Build(world, body.get(), body->getShape());
    Visual* visual = Scene::GetVisual(body->getId());

    scene.setVisualVisible(body->getId(), false);
    drain();

    EXPECT_FALSE(visual->isVisible());
    EXPECT_FALSE(selection::VisualSelection::Get()->isEnabled(visual));
}

TEST_F(SceneTest, HidingAPartDisablesPickingOfItsBodies)
{
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "hidden-part");
    auto* part = new Visual(body->getParentId(), world);
    part->setType(VisualType::Part);
    SceneCore::Get()->visuals.enter(part);
    SolidVisual::Build(part, body.get(), body->getShape());
    Visual* solid = Scene::GetVisual(body->getId());

    scene.setVisualVisible(body->getParentId(), false);
    drain();

    EXPECT_FALSE(solid->isVisible());
    EXPECT_FALSE(selection::VisualSelection::Get()->isEnabled(solid));
}

TEST_F(SceneTest, HidingAPartDisablesPickingOfWhatIsAttachedToItToo)
{
    auto* part = addVisual();
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "attached");
    sdf::SdfManager::inst().add(std::make_shared<sdf::SdfNode>(sdf::ModelType::Part, part->getId(), "part"));
    SolidVisual::Build(part, body.get(), body->getShape());
    Visual* solid = Scene::GetVisual(body->getId());
    solid->setAttachState(true);

    scene.setVisualVisible(part->getId(), false);
    drain();

    EXPECT_TRUE(solid->isVisible()) << "what is attached keeps its own visibility";
    EXPECT_FALSE(selection::VisualSelection::Get()->isEnabled(solid)) << "but not its part in picking";
}

TEST_F(SceneTest, GroupIsHiddenThroughItsMembers)
{
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "grouped");
    SolidVisual::Build(world, body.get(), body->getShape());
    auto group = std::make_shared<Group>(500);
    const unsigned owner = body->getParentId();
    group->addChild(*body);
    body->setParentId(owner);
    sdf::SdfManager::inst().add(group);

    scene.setVisualVisible(500, false);
    drain();

    EXPECT_FALSE(Scene::GetVisual(body->getId())->isVisible());
}

TEST_F(SceneTest, PostsFromManyThreadsAllRun)
{
    std::atomic<int> ran{0};
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < 100; ++i)
                    scene.addRenderTask([&ran] { ++ran; }, 0);
            });
    }

    drain();

    EXPECT_EQ(ran, 400);
}

TEST_F(SceneTest, InstanceDirtyAsksForAnotherFrame)
{
    scene.addRenderTask([this] { scene.instanceDirty(); }, 0);
    const CountedUpdates updates;

    drain();

    EXPECT_EQ(updates.count, 1);
}

TEST_F(SceneTest, LoadTasksWaitForALoad)
{
    bool ran = false;
    scene.addLoadTask([&ran] { ran = true; });

    drain();

    EXPECT_FALSE(ran);
}

TEST_F(SceneTest, UpdatedSolidKeepsIdAndParent)
{
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "replaced");
    SolidVisual::Build(world, body.get(), body->getShape());
    ASSERT_EQ(Scene::GetVisual(body->getId())->getTrianglesNum(), 12u);
    body->setGeometry("replacing", "brep");

    scene.updateSolidVisual(body.get(), test::meshedBox(10, 20, 30));
    drain();

    const auto* solid = dynamic_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    ASSERT_NE(solid, nullptr);
    EXPECT_EQ(solid->getParent(), world);
    EXPECT_EQ(solid->getMeshName(), "replacing");
}

TEST_F(SceneTest, UpdatingABodyWithoutSolidDoesNothing)
{
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "never-built");
    const CountedUpdates updates;

    scene.updateSolidVisual(body.get(), body->getShape());

    EXPECT_EQ(updates.count, 0);
}

} // namespace
} // namespace vrk::visual
