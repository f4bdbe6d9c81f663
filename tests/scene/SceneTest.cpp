#include "platform/broker/SignalBroker.h"
#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "support/ThrowsExactly.h"
#include "visual/FrameVisual.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

#include <thread>

namespace vrk::visual {
namespace {

using testing::ElementsAre;

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
    EXPECT_THAT([] { Scene::GetVisual(0); }, test::throwsExactly<std::out_of_range>(unknownKey));
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

struct UnknownIdCase {
    const char* name;
    void (*call)(Scene& scene, unsigned id, Visual* known);
    bool fails;
};

class PostedOnAnUnknownId : public SceneTest, public testing::WithParamInterface<UnknownIdCase> {};

TEST_P(PostedOnAnUnknownId, FailsOnTheRenderThreadOrIsPassedOver)
{
    Visual* known = addVisual();
    const CountedUpdates updates;

    EXPECT_NO_THROW(GetParam().call(scene, 4711, known));
    EXPECT_EQ(updates.count, 1) << "one task";

    if (GetParam().fails)
        EXPECT_THAT([this] { drain(); }, test::throwsExactly<std::out_of_range>(unknownKey));
    else
        EXPECT_NO_THROW(drain());
    EXPECT_FALSE(Scene::HasVisual(4711)) << "nothing was entered for it";
    EXPECT_EQ(known->getParent(), world);
}

INSTANTIATE_TEST_SUITE_P(
    Table, PostedOnAnUnknownId,
    testing::Values(
        UnknownIdCase{"Removal", [](Scene& s, unsigned id, Visual*) { s.removeVisual(id); }, true},
        UnknownIdCase{"RemovalOfATemporaryOne", [](Scene& s, unsigned id, Visual*) { s.removeTempVisual(id); }, true},
        UnknownIdCase{"Colour", [](Scene& s, unsigned id, Visual*) { s.setVisualColor(id, 1, 0, 0); }, true},
        UnknownIdCase{"ColourOfTheModel", [](Scene& s, unsigned id, Visual*) { s.resetColor(id); }, true},
        UnknownIdCase{"Attaching", [](Scene& s, unsigned id, Visual* known) { s.attachVisual(id, known); }, true},
        UnknownIdCase{"Attachment", [](Scene& s, unsigned id, Visual* v) { s.addAttachment(v->getId(), id, {}); },
                      true},
        UnknownIdCase{"Detachment", [](Scene& s, unsigned id, Visual* v) { s.deleteAttachment(v->getId(), 0, id, {}); },
                      true},
        UnknownIdCase{"NewParent", [](Scene& s, unsigned id, Visual* v) { s.reparentVisual(v->getId(), id); }, true},
        UnknownIdCase{"NewParentOfNone", [](Scene& s, unsigned id, Visual* v) { s.reparentVisual(id, v->getId()); },
                      true},
        UnknownIdCase{"Move", [](Scene& s, unsigned id, Visual* v) { s.moveVisualToParent(v->getId(), id, {}); }, true},
        UnknownIdCase{"Copy", [](Scene& s, unsigned id, Visual*) { s.showCopiedVisual(id, {}); }, true},
        UnknownIdCase{"Pose", [](Scene& s, unsigned id, Visual*) { s.setVisualPose(id, {}); }, false},
        UnknownIdCase{"WorldPose", [](Scene& s, unsigned id, Visual*) { s.setVisualWorldPose(id, {}); }, false},
        UnknownIdCase{"Orientations", [](Scene& s, unsigned id, Visual*) { s.setVisualsOrientations({id}, {{}}); },
                      true},
        UnknownIdCase{"LocalOrigin", [](Scene& s, unsigned id, Visual*) { s.setLocalOrigin(id, {}, {}); }, true},
        UnknownIdCase{"WorkObject", [](Scene& s, unsigned id, Visual*) { s.updateWObj(id); }, true},
        UnknownIdCase{"ToolData", [](Scene& s, unsigned id, Visual*) { s.addToolData(id); }, false},
        UnknownIdCase{"ToolDataAnew", [](Scene& s, unsigned id, Visual*) { s.updateToolData(id); }, true}),
    [](const auto& info) { return std::string(info.param.name); });

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

    EXPECT_THAT(addedToWorld(), testing::IsEmpty());
}

TEST_F(SceneTest, RemovedTemporaryVisualCanNoLongerBePicked)
{
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
    const TopoDS_Shape shape = test::meshedBox(10, 10, 10);
    auto* solid = new SolidVisual(shape, world);
    picking.addShape(shape, solid, true);
    scene.addTempVisual(solid);

    scene.removeTempVisual(solid->getId());
    drain();

    EXPECT_FALSE(picking.hasVisual(solid));
    EXPECT_NO_THROW(picking.update());
}

TEST_F(SceneTest, TemporaryVisualThatDiedWithItsParentIsForgotten)
{
    auto* parent = new Visual(world);
    auto* visual = new Visual(parent);
    const unsigned id = visual->getId();
    scene.addTempVisual(visual);

    scene.deleteVisual(parent);
    scene.removeTempVisual(id);

    EXPECT_THAT([this] { drain(); }, test::throwsExactly<std::out_of_range>(unknownKey));
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

    bool isModelFree = true; // a thread must not take the lock twice
    const boost::signals2::scoped_connection posts =
        broker::SignalBroker::onUpdateScene([&] { isModelFree = isModelFree && test::isModelFree(); });
    const CountedUpdates updates;

    scene.setVisualVisible(500, false);
    EXPECT_EQ(updates.count, 2) << "the selection's end and the member; nothing for the group itself";
    drain();

    EXPECT_FALSE(Scene::GetVisual(body->getId())->isVisible());
    EXPECT_TRUE(isModelFree) << "the members are visited without the lock";
}

/// A group whose members are told one by one, itself among them.
class NamedGroup : public Group {
public:
    using Group::Group;
    void getMembers(std::vector<sdf::SdfObject*>& found) const override
    {
        found.insert(found.end(), members.begin(), members.end());
    }
    std::vector<sdf::SdfObject*> members;
};

TEST_F(SceneTest, GroupsThatHoldEachOtherAreEnteredOnceAndTheirMembersPostedAsNamed)
{
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "grouped");
    SolidVisual::Build(world, body.get(), body->getShape());
    const auto first = std::make_shared<NamedGroup>(500);
    const auto second = std::make_shared<NamedGroup>(501);
    first->members = {first.get(), body.get(), second.get(), second.get(), body.get()};
    second->members = {first.get(), body.get()};
    sdf::SdfManager::inst().add(first);
    sdf::SdfManager::inst().add(second);
    const CountedUpdates updates;

    scene.setVisualVisible(500, false);

    EXPECT_EQ(updates.count, 5) << "the selection's end for each of the two groups, and the body three times";
    drain();
    EXPECT_FALSE(Scene::GetVisual(body->getId())->isVisible());
}

TEST_F(SceneTest, ShowingOrHidingAGroupEndsTheSelection)
{
    const auto body = test::addModelBody(test::meshedBox(10, 10, 10), "deselected");
    SolidVisual::Build(world, body.get(), body->getShape());
    auto* solid = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    sdf::SdfManager::inst().add(std::make_shared<Group>(501));
    scene.setVisualSelected(solid);
    drain();
    scene.selectBaseFace(solid->getId(), 1);

    scene.setVisualVisible(501, true);
    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), testing::IsEmpty());
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

    auto* solid = dynamic_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
    ASSERT_NE(solid, nullptr);
    EXPECT_EQ(solid->getParent(), world);
    // The mesh is named by the URI as it is now: another shape has got one of its own.
    EXPECT_EQ(solid->getMeshName(), body->getGeometryUri());
    EXPECT_THAT(solid->getMeshName(), testing::MatchesRegex("replacing~[0-9a-f]{16}"));
    EXPECT_EQ(solid->getTrianglesNum(), 12u);
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
