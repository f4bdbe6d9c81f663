#include "TargetFixture.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"

#include <typeinfo>

/// Robot targets and joint targets: what sets them apart, and how they are built from the model.
namespace vrk::visual {
namespace {

using test::highlightedLook;
using test::looksOf;
using test::normalLook;
using test::scalesOf;
using testing::ElementsAre;

class TargetVisuals : public test::WithTargets<test::SceneFixture> {
protected:
    static std::shared_ptr<sdf::SdfNode> addNode(const rob::Posed& pose)
    {
        auto node = std::make_shared<sdf::SdfNode>(sdf::ModelType::Frame, sdf::SdfManager::inst().generateId(), "p10");
        node->setPose(pose);
        sdf::SdfManager::inst().add(node);
        return node;
    }
};

const rob::Posed pose({1.5, 2.5, 3.5}, rob::Rotationd(0.5, 0.5, 0.5, 0.5));

TEST_F(TargetVisuals, RobotTargetHasItsNameTypeSizeAndMaterial)
{
    const RobtargetVisual* target = addTarget(801);

    EXPECT_EQ(target->getName(), "ROBTARGET_801");
    EXPECT_EQ(target->getType(), VisualType::Robtarget);
    EXPECT_EQ(target->getFrameSize(), 50);
    EXPECT_THAT(looksOf(*target), ElementsAre("InstanceRobTarget"));
    EXPECT_FALSE(Scene::HasVisual(801));
    EXPECT_FALSE(picking.hasVisual(const_cast<RobtargetVisual*>(target)));
}

TEST_F(TargetVisuals, JointTargetHasItsNameTypeSizeAndMaterial)
{
    const JointTargetVisual* target = addJointTarget(802);

    EXPECT_EQ(target->getName(), "JOINTTARGET_802");
    EXPECT_EQ(target->getType(), VisualType::JointTarget);
    EXPECT_EQ(target->getFrameSize(), 60);
    EXPECT_THAT(looksOf(*target), ElementsAre("InstanceFrame"));
}

TEST_F(TargetVisuals, RobotTargetIsBuiltFromTheNodeOfItsId)
{
    const auto node = addNode(pose);
    auto* parent = new Visual(world);

    RobtargetVisual* target = RobtargetVisual::Build(parent, node->getId());

    EXPECT_EQ(target->getId(), node->getId());
    EXPECT_EQ(Scene::GetVisual(node->getId()), target);
    EXPECT_EQ(target->getParent(), parent);
    EXPECT_EQ(target->getPose(), rob::Posef(pose));
    EXPECT_TRUE(picking.hasVisual(target));
    EXPECT_TRUE(picking.isEnabled(target));
    EXPECT_TRUE(picking.isDetectable(target));
}

TEST_F(TargetVisuals, RobotTargetOfAnIdThatIsNoNodeFailsAndLeavesNothing)
{
    const unsigned plain = sdf::SdfManager::inst().generateId();
    sdf::SdfManager::inst().add(std::make_shared<sdf::SdfObject>(sdf::ModelType::Operation, plain, "weld"));

    EXPECT_THROW(RobtargetVisual::Build(world, plain), std::bad_cast);
    EXPECT_THROW(RobtargetVisual::Build(world, 4711), std::bad_cast);

    EXPECT_FALSE(Scene::HasVisual(plain) || Scene::HasVisual(4711));
    EXPECT_FALSE(sceneManager->hasSceneNode("ROBTARGET_4711"));
}

TEST_F(TargetVisuals, JointTargetIsBuiltFromItsItemUnderTheIdOfTheItem)
{
    task::JointTargetDataItem item(77, "home"); // known to no table
    item.setPose(pose);

    JointTargetVisual* target = JointTargetVisual::Build(world, &item);

    EXPECT_EQ(target->getId(), 77u);
    EXPECT_EQ(Scene::GetVisual(77), target);
    EXPECT_EQ(target->getPose(), rob::Posef(pose));
    EXPECT_TRUE(picking.hasVisual(target));
    EXPECT_TRUE(picking.isEnabled(target));
}

TEST_F(TargetVisuals, OneTargetInTwoMovesHasTwoVisualsOfWhichTheYoungerIsFound)
{
    const auto node = addNode(pose);
    RobtargetVisual* first = RobtargetVisual::Build(world, node->getId());
    const RobtargetVisual* second = RobtargetVisual::Build(world, node->getId());
    EXPECT_NE(first->getName(), second->getName());

    scene.deleteVisual(first);

    EXPECT_EQ(Scene::GetVisual(node->getId()), second);
}

TEST_F(TargetVisuals, PreviewAndItsEndGiveTheNormalLook)
{
    RobtargetVisual* target = addTarget();

    target->setHighlighted();
    target->preview();
    EXPECT_THAT(looksOf(*target), ElementsAre(normalLook));
    target->setHighlighted();
    EXPECT_THAT(looksOf(*target), ElementsAre(highlightedLook));
    target->cancelPreview();
    EXPECT_THAT(looksOf(*target), ElementsAre(normalLook));
}

} // namespace
} // namespace vrk::visual
