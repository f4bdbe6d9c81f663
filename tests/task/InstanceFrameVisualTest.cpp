#include "task/InstanceFrameVisual.h"

#include "TargetFixture.h"

#include "visual/RenderGroups.h"

#include <new>

namespace vrk::visual {
namespace {

using Ogre::Vector3;
using test::highlightedLook;
using test::instancesOf;
using test::looksOf;
using test::normalLook;
using test::scalesOf;
using test::selectedLook;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using InstanceFrameVisualTest = test::WithTargets<test::SceneFixture>;

TEST_F(InstanceFrameVisualTest, IsOneInstanceOfTheSizeOfItsType)
{
    const InstanceFrameVisual* target =
        new InstanceFrameVisual(world, 810, "target", VisualType::Robtarget, "InstanceFrame");

    EXPECT_EQ(target->getType(), VisualType::Robtarget);
    EXPECT_EQ(target->getId(), 810u);
    EXPECT_EQ(target->getName(), "target");
    EXPECT_EQ(target->getFrameSize(), 50);
    EXPECT_THAT(scalesOf(*target), ElementsAre(Vector3(50, 50, 50)));
    EXPECT_THAT(looksOf(*target), ElementsAre("InstanceFrame"));
    EXPECT_EQ(instancesOf(*target).front()->_getOwner()->_getMeshReference()->getName(), "VRK_FrameMesh");
    EXPECT_EQ(instancesOf(*target).front()->_getOwner()->getRenderQueueGroup(), renderGroup::lines);
}

TEST_F(InstanceFrameVisualTest, TypeWithoutASizeHasSizeZero)
{
    const InstanceFrameVisual* target = new InstanceFrameVisual(world, 810, "x", VisualType::Path, "InstanceFrame");

    EXPECT_EQ(target->getFrameSize(), 0);
}

TEST_F(InstanceFrameVisualTest, UnknownMaterialFailsAndLeavesNothing)
{
    EXPECT_THROW(InstanceFrameVisual(world, 810, "target", VisualType::Robtarget, "NoSuchMaterial"),
                 Ogre::ItemIdentityException);

    EXPECT_FALSE(sceneManager->hasSceneNode("target"));
}

TEST_F(InstanceFrameVisualTest, SelectingForTheFirstTimeMakesOneInstanceAndLaterNone)
{
    RobtargetVisual* target = addTarget();

    target->setSelected();
    EXPECT_THAT(instancesOf(*target), SizeIs(2));
    EXPECT_THAT(looksOf(*target), ElementsAre(selectedLook));

    target->resetAppearance();
    target->setSelected();
    EXPECT_THAT(instancesOf(*target), SizeIs(2));
    EXPECT_THAT(looksOf(*target), ElementsAre(selectedLook));
}

TEST_F(InstanceFrameVisualTest, HighlightingForTheFirstTimeMakesOneInstanceAndLaterNone)
{
    JointTargetVisual* target = addJointTarget();

    target->setHighlighted();
    target->resetAppearance();
    EXPECT_THAT(looksOf(*target), ElementsAre("InstanceFrame"));
    target->setHighlighted();

    EXPECT_THAT(instancesOf(*target), SizeIs(2));
    EXPECT_THAT(looksOf(*target), ElementsAre(highlightedLook)) << "of both kinds of targets";
}

TEST_F(InstanceFrameVisualTest, LookThatWasAskedForLastIsShownAlone)
{
    RobtargetVisual* target = addTarget();

    target->setHighlighted();
    target->setSelected();
    EXPECT_THAT(looksOf(*target), ElementsAre(selectedLook));
    target->setHighlighted();
    EXPECT_THAT(looksOf(*target), ElementsAre(highlightedLook));
    target->resetAppearance();
    EXPECT_THAT(looksOf(*target), ElementsAre(normalLook));
    EXPECT_THAT(instancesOf(*target), SizeIs(3));
}

TEST_F(InstanceFrameVisualTest, InstancesOfLooksAreDrawnAmongTheLines)
{
    RobtargetVisual* target = addTarget();

    target->setHighlighted();
    target->setSelected();

    for (const Ogre::InstancedEntity* instance : instancesOf(*target))
        EXPECT_EQ(instance->_getOwner()->getRenderQueueGroup(), renderGroup::lines);
}

TEST_F(InstanceFrameVisualTest, ClearingAVisibleTargetGivesTheNormalLook)
{
    RobtargetVisual* target = addTarget();
    target->setSelected();

    target->clearHighlightOrSelect();

    EXPECT_THAT(looksOf(*target), ElementsAre(normalLook));
}

TEST_F(InstanceFrameVisualTest, ClearingATargetLeavesItsChildrenAsTheyAre)
{
    RobtargetVisual* target = addTarget();
    auto* child = new RobtargetVisual(target, 811);
    child->setVisible(false, false);

    target->clearHighlightOrSelect();

    EXPECT_FALSE(child->isVisible());
}

TEST_F(InstanceFrameVisualTest, HiddenTargetShowsNothingAndIsNormalWhenItIsShownAgain)
{
    RobtargetVisual* target = addTarget();
    target->setHighlighted();

    target->setVisible(false, false);
    EXPECT_THAT(looksOf(*target), IsEmpty());
    EXPECT_THAT(instancesOf(*target), SizeIs(2)) << "the highlighted one is left for the next time";

    target->setVisible(true, false);
    EXPECT_THAT(looksOf(*target), ElementsAre(normalLook));
}

TEST_F(InstanceFrameVisualTest, HiddenTargetStaysHiddenWhateverItsLook)
{
    RobtargetVisual* target = addTarget();
    target->setVisible(false, false);

    target->setHighlighted();
    EXPECT_THAT(looksOf(*target), IsEmpty());
    target->setSelected();
    EXPECT_THAT(looksOf(*target), IsEmpty());
    target->resetAppearance();
    EXPECT_THAT(looksOf(*target), IsEmpty());
    target->clearHighlightOrSelect();
    EXPECT_THAT(looksOf(*target), IsEmpty());
    EXPECT_FALSE(target->isVisible());
}

TEST_F(InstanceFrameVisualTest, HidingReachesChildrenOnlyWhenAsked)
{
    RobtargetVisual* target = addTarget();
    auto* child = new RobtargetVisual(target, 811);

    target->setVisible(false, false);
    EXPECT_TRUE(child->isVisible());
    target->setVisible(false, true);
    EXPECT_FALSE(child->isVisible());
    EXPECT_THAT(looksOf(*child), IsEmpty());
}

TEST_F(InstanceFrameVisualTest, SizeReachesAllLooks)
{
    RobtargetVisual* target = addTarget();
    target->setHighlighted();
    target->setSelected();

    target->setFrameSize(20);

    EXPECT_EQ(target->getFrameSize(), 20);
    EXPECT_THAT(scalesOf(*target), Each(Vector3(20, 20, 20)));
}

TEST_F(InstanceFrameVisualTest, LookThatIsMadeLaterHasTheSizeOfTheScene)
{
    RobtargetVisual* target = addTarget();
    target->setFrameSize(20);

    target->setSelected();

    EXPECT_THAT(scalesOf(*target), ElementsAre(Vector3(20, 20, 20), Vector3(50, 50, 50)));
}

TEST_F(InstanceFrameVisualTest, SizeZeroIsAllowed)
{
    RobtargetVisual* target = entered(addTarget());

    target->setFrameSize(0);
    EXPECT_NO_THROW(picking.update());

    EXPECT_EQ(target->getFrameSize(), 0);
}

TEST_F(InstanceFrameVisualTest, OfZAloneTheOtherAxesAreTooShortToBeSeen)
{
    settings.drawTargetZAxisOnly = true;
    RobtargetVisual* target = addTarget();
    target->setSelected();

    EXPECT_THAT(scalesOf(*target), Each(Vector3(0.01f, 0.01f, 50)));
    EXPECT_EQ(target->getFrameSize(), 50);
    target->setFrameSize(20);
    EXPECT_THAT(scalesOf(*target), Each(Vector3(0.01f, 0.01f, 20)));
    EXPECT_EQ(target->getFrameSize(), 20);
}

TEST_F(InstanceFrameVisualTest, UpdateTakesSizeAndAxesFromTheSceneWhateverItsArgument)
{
    RobtargetVisual* target = addTarget();
    settings.targetFrameSize = 33;
    settings.drawTargetZAxisOnly = true;

    target->updateEntity(false);
    EXPECT_THAT(scalesOf(*target), ElementsAre(Vector3(0.01f, 0.01f, 33)));

    settings.drawTargetZAxisOnly = false;
    target->updateEntity(true);
    EXPECT_THAT(scalesOf(*target), ElementsAre(Vector3(33, 33, 33)));
}

TEST_F(InstanceFrameVisualTest, PickingFollowsTheSizeAndKeepsItsFlags)
{
    RobtargetVisual* target = entered(addTarget());
    picking.setObjectEnabled(target, false);
    picking.setDetectable(target, false);
    picking.update();

    target->setFrameSize(20);

    EXPECT_TRUE(picking.isDirty());
    ASSERT_TRUE(picking.hasVisual(target));
    EXPECT_FALSE(picking.isEnabled(target));
    EXPECT_FALSE(picking.isDetectable(target));
}

TEST_F(InstanceFrameVisualTest, SizeOfATargetThatCannotBePickedLeavesPickingAlone)
{
    RobtargetVisual* target = addTarget();
    picking.update();

    target->setFrameSize(20);

    EXPECT_FALSE(picking.isDirty());
    EXPECT_FALSE(picking.hasVisual(target));
}

TEST_F(InstanceFrameVisualTest, DeathLeavesTheSelectionAndFreesEveryInstance)
{
    auto* target = new RobtargetVisual(world, 801);
    picking.addFrameVisual(target);
    target->setHighlighted();
    target->setSelected();
    const std::vector<Ogre::InstancedEntity*> instances = instancesOf(*target);
    ASSERT_THAT(instances, SizeIs(3));

    delete target; // by itself, without the help of the scene

    EXPECT_FALSE(picking.hasVisual(target));
    for (const Ogre::InstancedEntity* instance : instances)
        EXPECT_FALSE(instance->isInUse());
}

TEST_F(InstanceFrameVisualTest, TargetMadeFromAUsedInstanceIsVisibleAndOfItsOwnSize)
{
    RobtargetVisual* first = addTarget();
    const Ogre::InstancedEntity* instance = instancesOf(*first).front();
    first->setFrameSize(7);
    first->setVisible(false, false);
    scene.deleteVisual(first);

    const RobtargetVisual* second = addTarget();

    ASSERT_EQ(instancesOf(*second).front(), instance);
    EXPECT_THAT(looksOf(*second), ElementsAre(normalLook));
    EXPECT_THAT(scalesOf(*second), ElementsAre(Vector3(50, 50, 50)));
}

TEST_F(InstanceFrameVisualTest, TargetOutsideTheTreeIsNotDrawnAndKeepsItsLook)
{
    auto* group = new Visual(world);
    auto* target = new RobtargetVisual(group, 801);
    target->setHighlighted();

    group->detach();
    EXPECT_THAT(looksOf(*target), IsEmpty());
    const auto* made = new RobtargetVisual(group, 803);
    EXPECT_THAT(looksOf(*made), IsEmpty());
    target->setSelected();
    EXPECT_THAT(looksOf(*target), IsEmpty());

    world->attachVisual(group);
    EXPECT_THAT(looksOf(*target), ElementsAre(selectedLook));
    EXPECT_THAT(looksOf(*made), ElementsAre(normalLook));

    world->detachVisual(group);
    EXPECT_THAT(looksOf(*target), IsEmpty());
    target->setVisible(true, false);
    EXPECT_THAT(looksOf(*target), IsEmpty());
    group->attachTo(world);
    EXPECT_THAT(looksOf(*target), ElementsAre(normalLook));
}

TEST_F(InstanceFrameVisualTest, CopyNamesTheSameNodeAndInstances)
{
    const RobtargetVisual* target = addTarget();

    // It never dies: both would end the one node.
    alignas(RobtargetVisual) static std::byte place[sizeof(RobtargetVisual)];
    const auto* copy = new (place) RobtargetVisual(*target);

    EXPECT_EQ(copy->getSceneNode(), target->getSceneNode());
    EXPECT_EQ(copy->getFrameSize(), target->getFrameSize());
    EXPECT_EQ(copy->getId(), target->getId());
    EXPECT_EQ(copy->getType(), VisualType::Robtarget);
}

TEST_F(InstanceFrameVisualTest, IsNotAmongWhatIsCopiedSeeThrough)
{
    EXPECT_FALSE(addTarget()->copy(nullptr).has_value());
}

} // namespace
} // namespace vrk::visual
