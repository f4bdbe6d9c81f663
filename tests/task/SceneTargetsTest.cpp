#include "ProgramFixture.h"

#include "platform/broker/SignalBroker.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"

/// What the scene does to all targets, and to one by its id.
namespace vrk::visual {
namespace {

using Ogre::Vector3;
using test::highlightedLook;
using test::looksOf;
using test::normalLook;
using test::scalesOf;
using test::selectedLook;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Property;

using SceneTargets = test::WithTargets<test::SceneFixture>;

TEST_F(SceneTargets, SizeOfRobotTargetsReachesThemAndThoseToCome)
{
    const RobtargetVisual* target = entered(addTarget(801));
    const JointTargetVisual* other = entered(addJointTarget(802));

    scene.setFrameSize(35, VisualType::Robtarget);
    EXPECT_EQ(target->getFrameSize(), 50) << "it is posted";
    drain();

    EXPECT_EQ(target->getFrameSize(), 35);
    EXPECT_EQ(other->getFrameSize(), 60) << "it is of another type";
    EXPECT_EQ(settings.targetFrameSize, 35);
    EXPECT_EQ(addTarget(803)->getFrameSize(), 35);
}

TEST_F(SceneTargets, SizeOfJointTargetsIsKeptForRobotTargets)
{
    const JointTargetVisual* target = entered(addJointTarget(802));

    scene.setFrameSize(35, VisualType::JointTarget);
    drain();

    EXPECT_EQ(target->getFrameSize(), 35);
    EXPECT_EQ(settings.targetFrameSize, 35);
    EXPECT_EQ(settings.jointTargetFrameSize, 60);
    EXPECT_EQ(addTarget(803)->getFrameSize(), 35);
    EXPECT_EQ(addJointTarget(804)->getFrameSize(), 60);
}

TEST_F(SceneTargets, SizeOfJointTargetsWithoutAnyChangesNothing)
{
    const RobtargetVisual* target = entered(addTarget(801));

    scene.setFrameSize(35, VisualType::JointTarget);
    drain();

    EXPECT_EQ(target->getFrameSize(), 50);
    EXPECT_EQ(settings.targetFrameSize, 50);
    EXPECT_EQ(settings.jointTargetFrameSize, 60);
}

TEST_F(SceneTargets, HidingTargetsLeavesJointTargets)
{
    RobtargetVisual* target = entered(addTarget(801));
    const JointTargetVisual* other = entered(addJointTarget(802));
    target->setHighlighted();

    scene.setTargetVisualVisible(false);
    drain();
    EXPECT_THAT(looksOf(*target), IsEmpty());
    EXPECT_THAT(looksOf(*other), ElementsAre("InstanceFrame"));

    scene.setTargetVisualVisible(true);
    drain();
    EXPECT_THAT(looksOf(*target), ElementsAre(normalLook));
}

TEST_F(SceneTargets, ZAxisAloneReachesTheTargetsThatAreThereAndThoseToCome)
{
    RobtargetVisual* target = entered(addTarget(801));
    const JointTargetVisual* joint = entered(addJointTarget(802));
    target->setSelected();
    picking.update();

    scene.setDrawTargetZAxisOnly(true);
    EXPECT_TRUE(settings.drawTargetZAxisOnly);
    EXPECT_EQ(scalesOf(*joint).front(), Vector3(60, 60, 60)) << "it is posted";
    drain();

    EXPECT_THAT(scalesOf(*target), ElementsAre(Vector3(0.01f, 0.01f, 50), Vector3(0.01f, 0.01f, 50)));
    EXPECT_THAT(scalesOf(*joint), ElementsAre(Vector3(0.01f, 0.01f, 60)));
    EXPECT_EQ(target->getFrameSize(), 50);
    EXPECT_TRUE(picking.isDirty());
    EXPECT_THAT(scalesOf(*addTarget(803)), ElementsAre(Vector3(0.01f, 0.01f, 50)));

    scene.setDrawTargetZAxisOnly(false);
    drain();
    EXPECT_THAT(scalesOf(*joint), ElementsAre(Vector3(60, 60, 60)));
}

TEST_F(SceneTargets, ZAxisAloneWithoutTargetsSwitchedOnIsOnlyStored)
{
    const RobtargetVisual* target = entered(addTarget(801));
    settings.drawTargetVisual = false;

    scene.setDrawTargetZAxisOnly(true);
    drain();

    EXPECT_TRUE(settings.drawTargetZAxisOnly);
    EXPECT_THAT(scalesOf(*target), ElementsAre(Vector3(50, 50, 50)));
}

TEST_F(SceneTargets, HidingATargetByItsIdTakesItOutOfPickingAlsoThroughAChangeOfAxes)
{
    task::JointTargetDataItem& item = *[] {
        auto made = std::make_shared<task::JointTargetDataItem>(sdf::SdfManager::inst().generateId(), "home");
        sdf::SdfManager::inst().add(made);
        return made.get();
    }();
    JointTargetVisual* target = JointTargetVisual::Build(world, &item);

    scene.setVisualVisible(item.getId(), false);
    scene.setDrawTargetZAxisOnly(true);
    drain();
    EXPECT_THAT(looksOf(*target), IsEmpty());
    EXPECT_FALSE(picking.isEnabled(target));

    scene.setVisualVisible(item.getId(), true);
    drain();
    EXPECT_THAT(looksOf(*target), ElementsAre("InstanceFrame"));
    EXPECT_TRUE(picking.isEnabled(target));
}

TEST_F(SceneTargets, SelectionAndHighlightAreLooksOfTheTarget)
{
    RobtargetVisual* target = entered(addTarget(801));

    scene.setVisualHighlighted(target);
    drain();
    EXPECT_THAT(looksOf(*target), ElementsAre(highlightedLook));
    scene.setVisualSelected(801);
    drain();
    EXPECT_THAT(looksOf(*target), ElementsAre(selectedLook));
    scene.clearSelectedVisuals();
    scene.clearHighlightedVisual();
    drain();
    EXPECT_THAT(looksOf(*target), ElementsAre(normalLook));
}

TEST_F(SceneTargets, EndOfASelectionLeavesAHiddenTargetHidden)
{
    const RobtargetVisual* target = entered(addTarget(801));
    scene.setVisualSelected(801);
    scene.setTargetVisualVisible(false);

    scene.clearSelectedVisuals();
    drain();

    EXPECT_THAT(looksOf(*target), IsEmpty());
}

TEST_F(SceneTargets, SelectionOfATaskSelectsItsJointTargets)
{
    auto task = std::make_shared<task::Task>(sdf::SdfManager::inst().generateId(), "program");
    auto item = std::make_shared<task::JointTargetDataItem>(sdf::SdfManager::inst().generateId(), "home");
    task->addDataItem(item);
    sdf::SdfManager::inst().add(task);
    sdf::SdfManager::inst().add(item);
    const JointTargetVisual* target = JointTargetVisual::Build(world, item.get());

    scene.setVisualSelected(task->getId());
    drain();

    EXPECT_THAT(looksOf(*target), ElementsAre(selectedLook));
}

TEST_F(SceneTargets, TargetsBeyondABatchLiveAndDieAndTheirBatchesAreFreedWhenAsked)
{
    constexpr unsigned count = 5100; // a batch takes 5000
    auto* group = new Visual(world);
    for (unsigned i = 0; i < count; ++i)
        new RobtargetVisual(group, 10000 + i);
    const RobtargetVisual* last = new RobtargetVisual(group, 10000 + count);
    Ogre::InstanceBatch* batch = test::instancesOf(*last).front()->_getOwner();
    Ogre::InstanceManager& manager = *Scene::GetInstanceMgr("VRK_FrameInstanceManager");
    const auto batches = [&] {
        std::size_t sum = 0;
        for (const auto& [material, made] : manager.getInstanceBatchMapIterator())
            sum += made.size();
        return sum;
    };
    const std::size_t before = batches();
    EXPECT_GE(before, 2u);

    group->clearChildren();
    drain();
    EXPECT_EQ(batches(), before) << "the batch stays";
    EXPECT_TRUE(batch->isBatchUnused());

    scene.cleanupInstanceBatches();
    drain();
    EXPECT_LT(batches(), before);
    EXPECT_THAT(looksOf(*addTarget()), ElementsAre(normalLook));
}

TEST_F(SceneTargets, TargetsByThemselvesDoNotTellThatTheViewChanged)
{
    int told = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++told; });
    const auto node = std::make_shared<sdf::SdfNode>(sdf::ModelType::Unknown, 803, "target");
    sdf::SdfManager::inst().add(node);
    task::JointTargetDataItem item(804, "home");
    RobtargetVisual* target = RobtargetVisual::Build(world, node->getId());
    JointTargetVisual::Build(world, &item);
    target->setSelected();
    target->setHighlighted();
    target->setFrameSize(5);
    scene.deleteVisual(target);

    drain();

    EXPECT_EQ(told, 0);
}

/// Two moves go to one target, and another two to one posture: of each the registry knows the visual of but one move.
class TargetsOfSeveralMoves : public test::WithProgram<test::SceneFixture> {
protected:
    void SetUp() override
    {
        const auto target = program.addTarget(test::at(10, 0, 0));
        const auto posture = program.addPosture(test::at(0, 10, 0));
        for (const auto& item : {target, posture, target, posture})
            program.add(task::Motion::Joint, item);
        show();
    }
    std::vector<const InstanceFrameVisual*> targets() const
    {
        std::vector<const InstanceFrameVisual*> found;
        for (const task::MoveInst* move : program.path->getMoveInstructions())
            for (const Visual* child : visualOf(move)->getChildren())
                if (const auto* target = dynamic_cast<const InstanceFrameVisual*>(child))
                    found.push_back(target);
        return found;
    }
};

TEST_F(TargetsOfSeveralMoves, AllOfThemGetTheSizeOfTheirType)
{
    ASSERT_EQ(targets().size(), 4u);

    scene.setFrameSize(35, VisualType::Robtarget);
    scene.setFrameSize(25, VisualType::JointTarget);
    drain();

    EXPECT_THAT(targets(), ElementsAre(Property(&InstanceFrameVisual::getFrameSize, 35),
                                       Property(&InstanceFrameVisual::getFrameSize, 25),
                                       Property(&InstanceFrameVisual::getFrameSize, 35),
                                       Property(&InstanceFrameVisual::getFrameSize, 25)));
}

TEST_F(TargetsOfSeveralMoves, AllOfThemAreDrawnByTheirZAxisAlone)
{
    scene.setDrawTargetZAxisOnly(true);
    drain();

    for (const InstanceFrameVisual* target : targets())
        EXPECT_EQ(scalesOf(*target).front().x, 0.01f);
}

TEST_F(TargetsOfSeveralMoves, AllRobotTargetsAreHiddenTogether)
{
    scene.setTargetVisualVisible(false);
    drain();

    EXPECT_THAT(targets(), ElementsAre(Property(&Visual::isVisible, false), Property(&Visual::isVisible, true),
                                       Property(&Visual::isVisible, false), Property(&Visual::isVisible, true)));
}

TEST_F(TargetsOfSeveralMoves, OneSizeReachesTargetsAndPosturesAndThoseToCome)
{
    scene.setTargetSize(15);
    EXPECT_EQ(targets().front()->getFrameSize(), 50) << "it is posted";
    drain();
    scene.setDrawTargetVisual(false);
    drain();
    ASSERT_TRUE(targets().empty());
    scene.setDrawTargetVisual(true);
    drain();

    ASSERT_EQ(targets().size(), 4u);
    for (const InstanceFrameVisual* target : targets())
        EXPECT_EQ(target->getFrameSize(), 15);
}

} // namespace
} // namespace vrk::visual
