#include "visual/Visual.h"
#include "visual/VisualWatch.h"

#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/MeshVisual.h"
#include "visual/RenderGroups.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::StartsWith;
using testing::UnorderedElementsAre;

std::vector<Visual*> childrenOf(const Visual& visual)
{
    const VisualChildren children = visual.getChildren();
    return {children.begin(), children.end()};
}

class VisualTest : public test::SceneFixture {
protected:
    selection::VisualSelection& picking = *selection::VisualSelection::Get();

    void makeClean()
    {
        picking.update();
        ASSERT_FALSE(picking.isDirty());
    }
    /// A visual that the picking service knows.
    Visual* pickable(Visual* parent)
    {
        auto* visual = new Visual(parent);
        visual->setType(VisualType::Mesh);
        picking.addMeshVisual(visual, false, false);
        return visual;
    }
};

TEST(RenderGroups, AreNumberedInDrawingOrder)
{
    EXPECT_EQ(renderGroup::normal, 50);
    EXPECT_EQ(renderGroup::selected, 51);
    EXPECT_EQ(renderGroup::lines, 60);
    EXPECT_EQ(renderGroup::trace, 70);
    EXPECT_EQ(renderGroup::handles, 80);
}

TEST_F(VisualTest, RootStandsOnTheRootNode)
{
    EXPECT_EQ(world->getType(), VisualType::World);
    EXPECT_EQ(world->getSceneNode(), sceneManager->getRootSceneNode());
    EXPECT_EQ(world->getParent(), nullptr);
    EXPECT_FALSE(world->isTopLevel());
}

TEST_F(VisualTest, NameFollowsTheConstructor)
{
    const Visual* named = new Visual("Thing", world);
    const Visual* exact = new Visual(31, "Exactly this", world);
    const Visual* plain = new Visual(world);
    const Visual* ofOgre = new Visual(35, world);
    sdf::SdfNode node(sdf::ModelType::Part, 32, "part");
    const Visual* ofNode = new Visual(&node, world);

    EXPECT_EQ(named->getName(), "Thing" + std::to_string(named->getId()));
    EXPECT_EQ(exact->getName(), "Exactly this");
    EXPECT_EQ(exact->getId(), 31u);
    EXPECT_EQ(plain->getName(), "Visual_" + std::to_string(plain->getId()));
    EXPECT_EQ(ofNode->getName(), "part_32");
    EXPECT_EQ(ofOgre->getName(), ofOgre->getSceneNode()->getName()) << "OGRE's choice, which may be none";
    EXPECT_EQ(ofOgre->getId(), 35u);
}

struct KindCase {
    const char* name;
    VisualType type;
    std::uint64_t number;
    bool copied;
    bool compound;
};

/// All kinds, with what depends on the kind alone.
class VisualKinds : public VisualTest, public testing::WithParamInterface<KindCase> {
protected:
    VisualKinds() : visual(new Visual(600, world)) { visual->setType(GetParam().type); }
    ~VisualKinds() override { visual->setType(VisualType::None); } // what says that it is the root would leave its node

    Visual* visual;
};

TEST_P(VisualKinds, HaveTheNumberThatApplicationsStore)
{
    EXPECT_EQ(static_cast<std::uint64_t>(GetParam().type), GetParam().number);
}

TEST_P(VisualKinds, AreCopiedOrNot)
{
    const std::optional<Visual*> copy = visual->copy(world);

    ASSERT_EQ(copy.has_value(), GetParam().copied);
    if (copy) {
        EXPECT_EQ((*copy)->getType(), GetParam().type);
    }
}

TEST_P(VisualKinds, HidingOneTakesWhatLiesBelowOutOfPickingOrNot)
{
    sdf::SdfManager::inst().add(std::make_shared<sdf::SdfNode>(sdf::ModelType::Part, 600, "any"));
    SceneCore::Get()->visuals.enter(visual);
    Visual* below = pickable(visual);

    scene.setVisualVisible(600, false);
    drain();

    EXPECT_FALSE(below->isVisible());
    EXPECT_EQ(picking.isEnabled(below), !GetParam().compound);
}

INSTANTIATE_TEST_SUITE_P(
    Table, VisualKinds,
    testing::Values(
        KindCase{"None", VisualType::None, 0, false, false}, KindCase{"World", VisualType::World, 1, false, false},
        KindCase{"Manipulator", VisualType::Manipulator, 2, true, true},
        KindCase{"Tool", VisualType::Tool, 3, true, true}, KindCase{"Device", VisualType::Device, 4, false, true},
        KindCase{"Link", VisualType::Link, 5, true, true}, KindCase{"Assembly", VisualType::Assembly, 7, true, true},
        KindCase{"PointCloud", VisualType::PointCloud, 8, false, false},
        KindCase{"Part", VisualType::Part, 9, true, true}, KindCase{"Solid", VisualType::Solid, 10, true, false},
        KindCase{"Curve", VisualType::Curve, 11, true, false}, KindCase{"Edge", VisualType::Edge, 12, false, false},
        KindCase{"WireFrame", VisualType::WireFrame, 13, false, false},
        KindCase{"Mesh", VisualType::Mesh, 14, true, false}, KindCase{"Point", VisualType::Point, 15, false, false},
        KindCase{"Path", VisualType::Path, 16, false, true},
        KindCase{"MoveInstruction", VisualType::MoveInstruction, 17, false, true},
        KindCase{"Gui", VisualType::Gui, 19, false, false}, KindCase{"Frame", VisualType::Frame, 20, true, false},
        KindCase{"Tcp", VisualType::Tcp, 21, false, false},
        KindCase{"Robtarget", VisualType::Robtarget, 22, false, false},
        KindCase{"JointTarget", VisualType::JointTarget, 23, false, false},
        KindCase{"WObj", VisualType::WObj, 24, false, true},
        KindCase{"UserFrame", VisualType::UserFrame, 25, false, false},
        KindCase{"ObjectFrame", VisualType::ObjectFrame, 26, false, false},
        KindCase{"Paint", VisualType::Paint, 29, false, false}, KindCase{"Wrist", VisualType::Wrist, 30, false, false},
        KindCase{"PreviewCurve", VisualType::PreviewCurve, 31, false, false},
        KindCase{"GeneratedEdge", VisualType::GeneratedEdge, 32, false, false},
        KindCase{"UVIndicator", VisualType::UVIndicator, 33, false, false},
        KindCase{"WorkEnvelope", VisualType::WorkEnvelope, 34, false, false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(VisualTest, DoubledObjectNamesTheSameNode)
{
    auto* visual = new Visual(78, "shared", world);
    visual->setType(VisualType::Part);
    visual->setAttachState(true);
    // Their end would be the end of the node: they lie in memory of their own, and are left there.
    alignas(Visual) std::byte room[2][sizeof(Visual)];
    auto* made = new (room[0]) Visual(*visual);
    auto* assigned = new (room[1]) Visual("replaced");
    Ogre::SceneNode* replaced = assigned->getSceneNode();
    *assigned = *visual;

    for (const Visual* doubled : {made, assigned}) {
        EXPECT_EQ(doubled->getSceneNode(), visual->getSceneNode());
        EXPECT_EQ(doubled->getId(), 78u);
        EXPECT_EQ(doubled->getType(), VisualType::Part);
        EXPECT_TRUE(doubled->isAttached());
    }
    EXPECT_EQ(visualOf(*visual->getSceneNode()), visual);
    sceneManager->destroySceneNode(replaced);
}

TEST_F(VisualTest, VisualThatIsCalledAWorldEndsItsNodeAllTheSame)
{
    auto* visual = new Visual(79, "no-world", world);
    visual->setType(VisualType::World);

    delete visual;

    EXPECT_FALSE(sceneManager->hasSceneNode("no-world"));
}

TEST_F(VisualTest, SecondVisualOfANameGetsAFreeLabel)
{
    const Visual* first = new Visual(41, "ROBTARGET_41", world);
    const Visual* second = new Visual(41, "ROBTARGET_41", world);

    EXPECT_EQ(first->getName(), "ROBTARGET_41");
    EXPECT_THAT(second->getName(), testing::StartsWith("ROBTARGET_41#"));
    EXPECT_EQ(second->getId(), 41u);
}

TEST_F(VisualTest, LooseVisualHangsNowhere)
{
    Visual loose("Loose");

    EXPECT_EQ(loose.getParent(), nullptr);
    EXPECT_EQ(loose.getName(), "Loose");
}

TEST_F(VisualTest, ModelPoseIsNarrowedAndSet)
{
    sdf::SdfNode node(sdf::ModelType::Part, 33, "part");
    node.setPose({{1.5, 2.5, 3.5}, rob::Rotationd(0.5, 0.5, 0.5, 0.5)});

    const Visual* visual = new Visual(&node, world);

    EXPECT_EQ(visual->getPose(), rob::Posef({1.5f, 2.5f, 3.5f}, rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f)));
}

TEST_F(VisualTest, NodeWithoutPoseStaysAtTheOrigin)
{
    sdf::SdfNode node(sdf::ModelType::Part, 34, "part");

    EXPECT_EQ((new Visual(&node, world))->getPose(), rob::Posef());
}

TEST_F(VisualTest, ParentAndChildrenAreThoseOfTheNodes)
{
    auto* parent = new Visual(world);
    auto* first = new Visual(parent);
    auto* second = new Visual(parent);
    parent->getSceneNode()->createChildSceneNode(); // carries no visual

    EXPECT_EQ(first->getParent(), parent);
    EXPECT_TRUE(parent->isTopLevel());
    EXPECT_FALSE(first->isTopLevel());
    EXPECT_THAT(childrenOf(*parent), UnorderedElementsAre(first, second));
    sceneManager->destroySceneNode(static_cast<Ogre::SceneNode*>(parent->getSceneNode()->getChildren().back()));
}

TEST_F(VisualTest, NodeBoundToSomethingElseIsABadCast)
{
    Ogre::SceneNode* foreign = sceneManager->getRootSceneNode()->createChildSceneNode();
    foreign->getUserObjectBindings().setUserAny(Ogre::Any(std::string("not a visual")));
    Visual loose("Under foreign");
    foreign->addChild(loose.getSceneNode());

    EXPECT_THROW(loose.getParent(), std::bad_cast);
    EXPECT_THROW(childrenOf(*world), std::bad_cast);

    foreign->removeChild(loose.getSceneNode());
    sceneManager->getRootSceneNode()->removeChild(foreign);
    loose.getSceneNode()->addChild(foreign);
    EXPECT_THROW(loose.clearChildren(), std::bad_cast);
    loose.getSceneNode()->removeChild(foreign);
    sceneManager->destroySceneNode(foreign);
}

TEST_F(VisualTest, UnderANodeWithoutVisualThereIsNoParentToBeDetachedFrom)
{
    Ogre::SceneNode* foreign = sceneManager->getRootSceneNode()->createChildSceneNode();
    Visual loose("Under a plain node");
    foreign->addChild(loose.getSceneNode());

    EXPECT_EQ(loose.getParent(), nullptr);
    loose.detach();

    EXPECT_EQ(loose.getSceneNode()->getParent(), foreign);
    foreign->removeChild(loose.getSceneNode());
    sceneManager->destroySceneNode(foreign);
}

TEST_F(VisualTest, AttachingAChildWhereItIsMarksNothing)
{
    Visual* child = pickable(world);
    makeClean();

    world->attachVisual(child);

    EXPECT_FALSE(picking.isDirty());
    EXPECT_EQ(child->getParent(), world);
}

TEST_F(VisualTest, AttachingElsewhereMovesTheChildAndMarksIt)
{
    auto* parent = new Visual(world);
    Visual* child = pickable(world);
    makeClean();

    parent->attachVisual(child);

    EXPECT_TRUE(picking.isDirty());
    EXPECT_EQ(child->getParent(), parent);
}

TEST_F(VisualTest, AttachingUnderAnOwnDescendantIsIgnored)
{
    auto* parent = new Visual(world);
    auto* child = new Visual(parent);

    parent->attachTo(child);
    parent->attachTo(parent);

    EXPECT_EQ(parent->getParent(), world);
    EXPECT_EQ(child->getParent(), parent);
}

TEST_F(VisualTest, DetachedVisualLivesOutsideTheTree)
{
    auto* visual = new Visual(world);

    visual->detach();
    EXPECT_EQ(visual->getParent(), nullptr);

    visual->detach(); // without parent nothing happens
    EXPECT_EQ(visual->getParent(), nullptr);
    delete visual;
}

TEST_F(VisualTest, DetachingIsNotToldToTheSelection)
{
    Visual* visual = pickable(world);
    makeClean();

    visual->detach();

    EXPECT_FALSE(picking.isDirty());
    EXPECT_TRUE(picking.hasVisual(visual));
    world->attachVisual(visual);
}

TEST_F(VisualTest, DetachVisualTakesTheChildOut)
{
    auto* parent = new Visual(world);
    auto* child = new Visual(parent);

    parent->detachVisual(child);

    EXPECT_TRUE(childrenOf(*parent).empty());
    world->attachVisual(child);
}

TEST_F(VisualTest, HidingAPartLeavesItsLocalFrameAndWhatIsAttached)
{
    auto* part = new Visual(world);
    auto* body = new Visual(part);
    auto* frame = new Visual("Local Frame", part);
    auto* tool = new Visual(part);
    tool->setAttachState(true);

    part->setVisible(false, true);

    EXPECT_FALSE(part->isVisible());
    EXPECT_FALSE(body->isVisible());
    EXPECT_TRUE(frame->isVisible());
    EXPECT_TRUE(tool->isVisible());
}

/// As the group of a work object is.
class AnchoredVisual : public Visual {
public:
    explicit AnchoredVisual(Visual* parent) : Visual(parent) { anchored = true; }
};

TEST_F(VisualTest, HidingAVisualLeavesWhatIsAnchoredOnItAndAFrameWhoseNameHoldsLocalFrame)
{
    auto* part = new Visual(world);
    auto* anchored = new AnchoredVisual(part);
    auto* frame = new Visual("Its Local Frame ", part);
    auto* other = new Visual("Local", part);

    part->setVisible(false, true);

    EXPECT_TRUE(anchored->isVisible());
    EXPECT_TRUE(frame->isVisible());
    EXPECT_FALSE(other->isVisible());
}

TEST_F(VisualTest, WhatKeepsItsStateIsDrawnOnUnderAHiddenVisual)
{
    auto* part = new Visual(world);
    auto* frame = new Visual("Local Frame", part);
    Ogre::ManualObject* object = sceneManager->createManualObject("drawn on");
    frame->attachObject(object);

    part->setVisible(false, true);
    EXPECT_TRUE(object->isVisible());

    frame->setVisible(false, false);
    EXPECT_FALSE(object->isVisible());
    sceneManager->destroyManualObject(object);
}

TEST_F(VisualTest, HidingAMechanismHidesItsBaseFrameAndItsToolFrames)
{
    auto* tool = new Visual(world);
    auto* base = new Visual("Base Frame", tool);
    auto* toolFrame = new Visual("Tool Frame", tool);

    tool->setVisible(false, true);
    EXPECT_FALSE(base->isVisible());
    EXPECT_FALSE(toolFrame->isVisible());

    tool->setVisible(true, true);
    EXPECT_TRUE(base->isVisible());
    EXPECT_TRUE(toolFrame->isVisible());
}

TEST_F(VisualTest, HidingWithoutRecursionLeavesTheChildren)
{
    auto* part = new Visual(world);
    auto* body = new Visual(part);

    part->setVisible(false, false);

    EXPECT_FALSE(part->isVisible());
    EXPECT_TRUE(body->isVisible());
}

struct PoseSetter {
    const char* name;
    void (*set)(Visual&);
};

class VisualPoseSetters : public VisualTest, public testing::WithParamInterface<PoseSetter> {};

TEST_P(VisualPoseSetters, TellTheSelection)
{
    Visual* visual = pickable(world);
    makeClean();

    GetParam().set(*visual);

    EXPECT_TRUE(picking.isDirty());
}

INSTANTIATE_TEST_SUITE_P(Table, VisualPoseSetters,
                         testing::Values(PoseSetter{"Pose", [](Visual& v) { v.setPose({}); }},
                                         PoseSetter{"Position",
                                                    [](Visual& v) {
                                                        v.setPosition({1, 2, 3});
                                                    }},
                                         PoseSetter{"PositionOfThreeNumbers",
                                                    [](Visual& v) { v.setPosition(1, 2, 3); }},
                                         PoseSetter{"Rotation", [](Visual& v) { v.setRotation({}); }},
                                         PoseSetter{"Orientation", [](Visual& v) { v.setOrientation({}); }},
                                         PoseSetter{"WorldPose", [](Visual& v) { v.setWorldPose({}); }},
                                         PoseSetter{"WorldPosition",
                                                    [](Visual& v) {
                                                        v.setWorldPosition({1, 2, 3});
                                                    }}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(VisualTest, MovedParentMarksItsDescendants)
{
    auto* parent = new Visual(world);
    pickable(parent);
    makeClean();

    parent->setPosition(1, 2, 3);

    EXPECT_TRUE(picking.isDirty());
}

TEST_F(VisualTest, ScaleDoesNotMarkTheSelection)
{
    Visual* visual = pickable(world);
    makeClean();

    visual->setScale(2, 3, 4);

    EXPECT_FALSE(picking.isDirty());
    EXPECT_EQ(visual->getSceneNode()->getScale(), Ogre::Vector3(2, 3, 4));
}

TEST_F(VisualTest, WorldPoseComposesThoseOfTheParents)
{
    auto* parent = new Visual(world);
    parent->setPose({{10, 0, 0}, rob::Rotationf(std::sqrt(0.5f), 0, 0, std::sqrt(0.5f))}); // a quarter about z
    auto* child = new Visual(parent);
    child->setPosition(5, 0, 0);

    const rob::Posef pose = child->getWorldPose();

    EXPECT_NEAR(pose.position.x, 10, 1e-5);
    EXPECT_NEAR(pose.position.y, 5, 1e-5);
    EXPECT_NEAR(pose.orientation.w, std::sqrt(0.5f), 1e-6);
    EXPECT_NEAR(pose.orientation.z, std::sqrt(0.5f), 1e-6);
}

TEST_F(VisualTest, SettingTheWorldPoseUndoesTheParents)
{
    auto* parent = new Visual(world);
    parent->setPose({{10, 20, 30}, rob::Rotationf(0.6f, 0.8f, 0, 0)});
    auto* child = new Visual(parent);
    const rob::Posef wanted({1, 2, 3}, rob::Rotationf(0, 0, 1, 0));

    child->setWorldPose(wanted);

    const rob::Posef pose = child->getWorldPose();
    EXPECT_NEAR((pose.position - wanted.position).length(), 0, 1e-4);
    EXPECT_NEAR(pose.orientation.y, 1, 1e-5);
}

TEST_F(VisualTest, OrientationIsNarrowed)
{
    auto* visual = new Visual(world);

    visual->setOrientation({0.5, 0.5, 0.5, -0.5});

    EXPECT_EQ(visual->getPose().orientation, rob::Orientf(0.5f, 0.5f, 0.5f, -0.5f));
}

TEST_F(VisualTest, CountsSumOverChildrenThatAreNotAttached)
{
    auto* part = new Visual(world);
    const auto first = test::addModelBody(test::meshedBox(1, 1, 1), "counted");
    SolidVisual::Build(part, first.get(), first->getShape());
    auto* tool = new Visual(part);
    const auto second = test::addModelBody(test::meshedBox(1, 1, 1), "counted");
    SolidVisual::Build(tool, second.get(), second->getShape());
    tool->setAttachState(true);

    EXPECT_EQ(part->getBodiesNum(), 1u);
    EXPECT_EQ(part->getFacesNum(), 6u);
    EXPECT_EQ(part->getTrianglesNum(), 12u);
    EXPECT_EQ(part->getVerticesNum(), 24u);
}

TEST_F(VisualTest, LeafWithoutBodyCountsNothing)
{
    Visual* leaf = new Visual(world);

    EXPECT_EQ(leaf->getBodiesNum(), 0u);
    EXPECT_EQ(leaf->getFacesNum(), 0u);
    EXPECT_EQ(leaf->getTrianglesNum(), 0u);
    EXPECT_EQ(leaf->getVerticesNum(), 0u);
}

TEST_F(VisualTest, EmptyMaterialNamesLeaveTheEntityAsItWas)
{
    SolidVisual* solid = SolidVisual::Build(world, test::meshedBox(1, 1, 1), "Body");

    world->setMaterial({}, {}, {});
    solid->setSelected();
    solid->setHighlighted();

    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "Body");
}

TEST_F(VisualTest, MaterialsReachTheChildren)
{
    auto* part = new Visual(world);
    SolidVisual* solid = SolidVisual::Build(part, test::meshedBox(1, 1, 1), "Body");

    part->setMaterial("ABB", "ABBSelected", "ABBHighlighted");
    const Ogre::SubEntity* drawn = solid->getEntity()->getSubEntity(0);
    EXPECT_EQ(drawn->getMaterialName(), "ABB");

    solid->setSelected();
    EXPECT_EQ(drawn->getMaterialName(), "ABBSelected");

    solid->setHighlighted();
    EXPECT_EQ(drawn->getMaterialName(), "ABBHighlighted");

    solid->clearHighlightOrSelect();
    EXPECT_EQ(drawn->getMaterialName(), "ABB");

    part->setSelected(); // shows on the part's own objects, of which it has none
    EXPECT_EQ(drawn->getMaterialName(), "ABB");
}

TEST_F(VisualTest, UnknownMaterialIsPassedOver)
{
    SolidVisual* solid = SolidVisual::Build(world, test::meshedBox(1, 1, 1), "Body");

    solid->useNamedMaterial("No such material");

    EXPECT_EQ(solid->getEntity()->getSubEntity(0)->getMaterialName(), "Body");
}

TEST_F(VisualTest, SelectingWithoutSelectedMaterialChangesNothing)
{
    auto* visual = new Visual(world);

    EXPECT_NO_THROW(visual->setSelected());
}

TEST_F(VisualTest, AttachedObjectIsFoundByName)
{
    auto* visual = new Visual(world);
    Ogre::ManualObject* object = sceneManager->createManualObject("an object");
    visual->attachObject(object);

    EXPECT_TRUE(visual->hasAttachedObject("an object"));
    EXPECT_FALSE(visual->hasAttachedObject("another object"));

    visual->detachObject(object);
    EXPECT_FALSE(visual->hasAttachedObject("an object"));
    sceneManager->destroyManualObject(object);
}

TEST_F(VisualTest, WorkObjectsAndDevicesAreNotCopied)
{
    auto* workObject = new Visual(world);
    workObject->setType(VisualType::WObj);
    auto* device = new Visual(world);
    device->setType(VisualType::Device);

    EXPECT_FALSE(workObject->copy(world).has_value());
    EXPECT_FALSE(device->copy(world).has_value());
}

TEST_F(VisualTest, CopyBearsTheIdAndPoseAndHangsOnTheWorld)
{
    auto* holder = new Visual(world);
    holder->setPose({{100, 0, 0}, rob::Rotationf(0, 1, 0, 0)}); // the pose of the copy is the local one
    auto* part = new Visual(holder);
    part->setType(VisualType::Part);
    part->setPose({{1, 2, 3}, rob::Rotationf(0, 0, 1, 0)});
    part->setVisible(false, false);
    auto* inner = new Visual(part);
    inner->setType(VisualType::Assembly);
    auto* innermost = new Visual(inner);
    innermost->setType(VisualType::Part);
    auto* left = new Visual(part); // of a kind that is not copied
    left->setType(VisualType::WObj);

    Visual* copy = part->copy(nullptr).value();

    EXPECT_EQ(copy->getParent(), world);
    EXPECT_EQ(copy->getId(), part->getId());
    EXPECT_EQ(copy->getType(), VisualType::Part);
    EXPECT_EQ(copy->getPose(), part->getPose());
    EXPECT_THAT(copy->getName(), StartsWith(part->getName() + "_Copied_"));
    EXPECT_TRUE(copy->isCopied());
    ASSERT_EQ(childrenOf(*copy).size(), 1u);
    EXPECT_EQ(childrenOf(*copy).front()->getId(), inner->getId());
    EXPECT_TRUE(copy->isVisible()) << "whatever its source is";
    EXPECT_FALSE(Scene::HasVisual(copy->getId())) << "a copy stands in no registry";
    const std::vector<Visual*> deepest = childrenOf(*childrenOf(*copy).front());
    ASSERT_EQ(deepest.size(), 1u);
    const std::string deepestName = deepest.front()->getName();

    copy->clearCopiedChildren();
    EXPECT_TRUE(childrenOf(*copy).empty());
    EXPECT_FALSE(sceneManager->hasSceneNode(deepestName)) << "the copies below the copies too";
    delete copy;
}

TEST_F(VisualTest, ClearedChildrenLeaveRegistryAndSelection)
{
    auto* parent = new Visual(world);
    Visual* child = pickable(parent);
    SceneCore::Get()->visuals.enter(child);
    const unsigned childId = child->getId();

    parent->clearChildren();

    EXPECT_TRUE(childrenOf(*parent).empty());
    EXPECT_FALSE(Scene::HasVisual(childId));
    EXPECT_FALSE(picking.hasVisual(child));
}

TEST_F(VisualTest, EndOfAVisualLeavesItsObjectsAndItsChildrenToTheirOwners)
{
    auto* parent = new Visual(world);
    Visual* child = pickable(parent);
    SceneCore::Get()->visuals.enter(child);
    Ogre::ManualObject* object = sceneManager->createManualObject("left behind");
    parent->attachObject(object);

    delete parent;

    EXPECT_EQ(child->getParent(), nullptr);
    EXPECT_TRUE(Scene::HasVisual(child->getId()));
    EXPECT_TRUE(picking.hasVisual(child));
    ASSERT_TRUE(sceneManager->hasManualObject("left behind"));
    EXPECT_FALSE(object->isAttached());
    sceneManager->destroyManualObject(object);
    scene.deleteVisual(child);
}

TEST_F(VisualTest, DumpWritesTheSubtreeIndented)
{
    auto* parent = new Visual(11, "Parent", world);
    parent->setType(VisualType::Part);
    new Visual(12, "Child", parent);

    testing::internal::CaptureStdout();
    parent->dump(1);

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "    Visual : Parent id: 11 type: 9\n"
                                                      "      children:\n"
                                                      "        Visual : Child id: 12 type: 0\n");
}

TEST_F(VisualTest, WatchTellsADeathAlsoWhereAnotherVisualTookTheIdSince)
{
    auto* watched = new Visual("watched", world);
    auto* other = new Visual("other", world);
    VisualWatch watch;
    watch.add(watched);
    Visual::Delete(other);
    EXPECT_FALSE(watch.hasAnyDied());
    const unsigned id = watched->getId();

    Visual::Delete(watched);
    new Visual(id, "watched", world); // often at the same address

    EXPECT_TRUE(watch.hasAnyDied());
    watch.clear();
    EXPECT_FALSE(watch.hasAnyDied());
}

} // namespace
} // namespace vrk::visual
