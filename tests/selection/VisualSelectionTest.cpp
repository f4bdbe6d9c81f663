#include "selection/VisualSelection.h"

#include "SelectionFixture.h"

#include "platform/broker/SignalBroker.h"
#include "scene/core/SceneCore.h"
#include "selection/geometry/BVHWalk.h"
#include "selection/geometry/Math.h"
#include "task/RobtargetVisual.h"

#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <Standard_OutOfRange.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>

#include <random>

/// Registration, state and update of the service.
namespace vrk::selection {
namespace {

using rob::Posf;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;
using testing::UnorderedElementsAre;
using visual::SolidVisual;
using visual::Visual;
using Kind = SelectableObject::ObjectKind;

class VisualSelectionTest : public SelectionFixture {
protected:
    void makeClean()
    {
        service.update();
        ASSERT_FALSE(service.isDirty());
    }
    Visual* unknown() { return new Visual(world); }
};

const auto unknownKey = [] { return StrEq("invalid unordered_map<K, T> key"); };

TEST_F(VisualSelectionTest, EachKindIsEnteredAsItselfAndMakesTheServiceDirty)
{
    const auto entered = [&](Visual* visual, Kind kind) {
        EXPECT_TRUE(service.hasVisual(visual));
        EXPECT_TRUE(service.isDirty());
        EXPECT_EQ(object(visual).kind, kind);
        EXPECT_EQ(object(visual).visual, visual);
        EXPECT_TRUE(object(visual).enabled);
        EXPECT_TRUE(object(visual).worldDirty);
        EXPECT_FALSE(object(visual).built);
        EXPECT_FALSE(object(visual).priority);
        makeClean();
    };
    entered(addBox(10, {}), Kind::Shape);
    entered(addCurve({0, 0, 0}, {10, 0, 0}), Kind::Curve);
    entered(addMesh(wall(10)), Kind::Mesh);
    entered(addLine({{0, 0, 0}, {1, 0, 0}}), Kind::Line);
    auto* target = new visual::RobtargetVisual(world, 901);
    service.addFrameVisual(target);
    EXPECT_TRUE(service.isDetectable(target));
    entered(target, Kind::Line);
    entered(addPoint({1, 2, 3}), Kind::Point);
    entered(addCloud({{0, 0, 0}, {1, 1, 1}}), Kind::PointCloud);
}

TEST_F(VisualSelectionTest, DetectableIsWhatItWasEnteredWith)
{
    SolidVisual* yes = addBox(10, {}, true);
    SolidVisual* no = addBox(10, {}, false);

    EXPECT_TRUE(service.isDetectable(yes));
    EXPECT_FALSE(service.isDetectable(no));
    EXPECT_TRUE(service.isDetectable(addLine({{0, 0, 0}, {1, 0, 0}})));
}

TEST_F(VisualSelectionTest, EnteringAgainChangesNothing)
{
    SolidVisual* box = addBox(10, {}, true);
    Visual* mesh = addMesh(wall(10), true, false);
    visual::LineVisual* line = addLine({{0, 0, 0}, {1, 0, 0}});
    auto* target = new visual::RobtargetVisual(world, 901);
    service.addFrameVisual(target);
    visual::PointVisual* point = addPoint({1, 2, 3});
    visual::PointCloudVisual* cloud = addCloud({{0, 0, 0}, {1, 1, 1}});
    visual::CurveVisual* curve = addCurve({0, 0, 0}, {10, 0, 0});
    makeClean();
    const SelectableObject* before = &object(box);

    service.addShape(box->getShape(), box, false);
    service.addMeshVisual(mesh, false, true);
    service.addLineVisual(line);
    service.addFrameVisual(target);
    service.addPointVisual(point, false);
    service.addPointCloudVisual(cloud, true);
    service.addCurveVisual(curve->getShape(), curve, true);

    EXPECT_FALSE(service.isDirty());
    EXPECT_EQ(&object(box), before);
    EXPECT_TRUE(service.isDetectable(box));
    EXPECT_TRUE(service.isDetectable(mesh));
    EXPECT_FALSE(object(mesh).priority);
}

TEST_F(VisualSelectionTest, MeshesOfASubtreeAreEnteredAndNothingElse)
{
    auto* group = new Visual(world);
    Visual* first = makeMesh(wall(10), group);
    auto* inner = new Visual(group);
    Visual* second = makeMesh(wall(10), inner);
    second->setType(VisualType::Paint);

    service.addMeshVisual(group, false, true);

    EXPECT_THAT(entered(), UnorderedElementsAre(first, second));
    EXPECT_TRUE(object(first).priority && object(second).priority);
    EXPECT_FALSE(object(first).detectable || object(second).detectable);
}

TEST_F(VisualSelectionTest, RemovedObjectIsForgottenAndNoLongerFound)
{
    SolidVisual* box = addBox(10, {});
    makeClean();
    ASSERT_TRUE(along(1, 2).hit);

    service.removeObject(box);

    EXPECT_FALSE(service.hasVisual(box));
    EXPECT_TRUE(service.isDirty());
    makeClean();
    EXPECT_FALSE(along(1, 2).hit);
}

TEST_F(VisualSelectionTest, ObjectOfAVisualWithoutTypeCanBeRemovedToo)
{
    SolidVisual* box = addBox(10, {});
    box->setType(VisualType::None);
    makeClean();

    service.removeObject(box);
    makeClean();

    EXPECT_FALSE(along(1, 2).hit);
    box->setType(VisualType::Solid);
}

TEST_F(VisualSelectionTest, RemovedCloudLeavesTheClouds)
{
    visual::PointCloudVisual* cloud = addCloud({{0, 0, 0}, {1, 1, 1}});
    makeClean();
    const Ray ray({0, -100, 0}, {0, 1, 0});
    ASSERT_TRUE(service.selectPointInCloud(ray).hit);

    service.removeObject(cloud);
    makeClean();

    EXPECT_FALSE(service.selectPointInCloud(ray).hit);
}

TEST_F(VisualSelectionTest, RemovingACompoundTakesASolidAndAllBelowItInOneCall)
{
    SolidVisual* parent = addBox(10, {});
    SolidVisual* child = addBox(10, {50, 0, 0});
    SolidVisual* other = addBox(10, {90, 0, 0});
    child->attachTo(parent);
    Visual* grandchild = makeMesh(wall(5), child);
    service.addMeshVisual(grandchild, true, false);

    service.removeCompoundObject(parent);

    EXPECT_THAT(entered(), UnorderedElementsAre(other));
}

TEST_F(VisualSelectionTest, RemovingACompoundThatIsNotEnteredChangesNothing)
{
    makeClean();

    service.removeCompoundObject(unknown());

    EXPECT_FALSE(service.isDirty());
}

TEST_F(VisualSelectionTest, DeletedVisualLeavesTheService)
{
    SolidVisual* box = addBox(10, {});
    makeClean();

    scene.deleteVisual(box);

    EXPECT_THAT(entered(), IsEmpty());
    EXPECT_TRUE(service.isDirty());
    makeClean();
    EXPECT_FALSE(along(1, 2).hit);
}

TEST_F(VisualSelectionTest, DisabledObjectStaysEnteredAndIsGoneFromPicksAfterTheUpdate)
{
    SolidVisual* box = addBox(10, {});
    makeClean();

    service.disableObject(box);

    EXPECT_TRUE(service.hasVisual(box));
    EXPECT_FALSE(service.isEnabled(box));
    EXPECT_TRUE(service.isDirty());
    makeClean();
    EXPECT_FALSE(along(1, 2).hit);
    service.enableObject(box);
    EXPECT_TRUE(service.isDirty());
    makeClean();
    EXPECT_TRUE(along(1, 2).hit);
}

TEST_F(VisualSelectionTest, EnablingIsNotedEvenWhereItChangesNothing)
{
    SolidVisual* box = addBox(10, {});
    makeClean();

    service.setObjectEnabled(box, true);

    EXPECT_TRUE(service.isDirty());
}

TEST_F(VisualSelectionTest, CompoundIsEnabledWithAllBelowIt)
{
    SolidVisual* parent = addBox(10, {});
    SolidVisual* child = addBox(10, {50, 0, 0});
    child->attachTo(parent);
    makeClean();

    service.setCompoundObjectEnabled(parent, false);

    EXPECT_FALSE(service.isEnabled(parent) || service.isEnabled(child));
    EXPECT_TRUE(service.isDirty());
    service.setCompoundObjectEnabled(parent, true);
    EXPECT_TRUE(service.isEnabled(parent) && service.isEnabled(child));
}

TEST_F(VisualSelectionTest, UnknownVisualIsPassedOver)
{
    makeClean();
    Visual* stranger = unknown();

    service.enableObject(stranger);
    service.disableObject(stranger);
    service.setObjectEnabled(stranger, false);
    service.setDetectable(stranger, false);
    service.markDirty(stranger);
    EXPECT_FALSE(service.isDirty());
    service.setCompoundObjectEnabled(stranger, false); // says so before it looks
    EXPECT_TRUE(service.isDirty());
    EXPECT_FALSE(service.hasVisual(stranger));
    EXPECT_FALSE(service.hasVisual(nullptr));
}

TEST_F(VisualSelectionTest, AskingAboutAnUnknownVisualIsRefused)
{
    SolidVisual* stranger = visual::SolidVisual::Build(world, test::meshedBox(1, 1, 1), "Body");

    EXPECT_THAT([&] { service.getObject(stranger); }, ThrowsMessage<std::out_of_range>(unknownKey()));
    EXPECT_THAT([&] { service.isEnabled(stranger); }, ThrowsMessage<std::out_of_range>(unknownKey()));
    EXPECT_THAT([&] { service.isDetectable(stranger); }, ThrowsMessage<std::out_of_range>(unknownKey()));
    EXPECT_FALSE(service.hasVisual(stranger));
}

TEST_F(VisualSelectionTest, ChangingAnUnknownVisualDoesNothing)
{
    SolidVisual* known = addBox(10, {});
    SolidVisual* stranger = visual::SolidVisual::Build(world, test::meshedBox(1, 1, 1), "Body");
    makeClean();

    service.removeObject(stranger);
    service.removeCompoundObject(stranger);
    service.updateShapeFaces(stranger);
    service.setObjectEnabled(stranger, false);
    service.setDetectable(stranger, false);
    service.markDirty(stranger);

    EXPECT_FALSE(service.hasVisual(stranger));
    EXPECT_TRUE(service.hasVisual(known));
    EXPECT_FALSE(service.isDirty());
    EXPECT_TRUE(along(1, 2).hit);
}

TEST_F(VisualSelectionTest, WhatHangsOnASolidStaysRegisteredWhenItsFacesAreUpdated)
{
    SolidVisual* box = addBox(10, {});
    SolidVisual* hanging = addBox(5, {});
    box->attachVisual(hanging);
    service.getObject(hanging)->priority = true;
    service.setDetectable(hanging, false);

    service.updateShapeFaces(box);

    ASSERT_TRUE(service.hasVisual(hanging));
    EXPECT_TRUE(object(hanging).priority);
    EXPECT_FALSE(service.isDetectable(hanging));
}

TEST_F(VisualSelectionTest, WhatHangsOnASolidIsPickedAfterItsHiddenFacesAreShownAgain)
{
    SolidVisual* box = addBox(10, {});
    SolidVisual* hanging = addBox(10, {100, 0, 0});
    box->attachVisual(hanging);
    box->setFaceVisible(1, false);

    box->setVisible(true, false);
    makeClean();

    const Result hit = along(92, -3);
    ASSERT_TRUE(hit.hit);
    EXPECT_EQ(hit.visual, hanging);
}

TEST_F(VisualSelectionTest, DetectableIsSetWhileAnotherThreadSenses)
{
    SolidVisual* box = addBox(10, {});
    makeClean();
    std::atomic<bool> isOver{false};
    std::jthread sensing([&] {
        while (!isOver)
            EXPECT_TRUE(service.sense(rob::Linef({1, 2, -10}, {1, 2, 10})).valid);
    });

    for (int i = 0; i < 2000; ++i)
        service.setDetectable(box, i % 2 == 1);
    isOver = true;
    sensing.join();

    EXPECT_TRUE(service.sense(rob::Linef({1, 2, -10}, {1, 2, 10})).hit);
}

TEST_F(VisualSelectionTest, HiddenFaceIsNoLongerPickedOnceTheFacesAreUpdated)
{
    SolidVisual* box = addBox(10, {});
    makeClean();
    const TopoDS_Face front = TopoDS::Face(along(1, 2).face);
    service.getObject(box)->priority = true;
    service.disableObject(box);

    box->setFaceVisible(box->getFaceIndex(front), false);
    service.updateShapeFaces(box);
    makeClean();

    const Result behind = along(1, 2);
    ASSERT_TRUE(behind.hit);
    EXPECT_FALSE(behind.face.IsSame(front));
    EXPECT_FLOAT_EQ(behind.distance, 1005); // the back of the box
    EXPECT_TRUE(service.isDetectable(box));
    EXPECT_FALSE(object(box).priority); // the other two start again
    EXPECT_TRUE(service.isEnabled(box));
}

TEST_F(VisualSelectionTest, UpdatedFacesKeepThatTheSolidIsNotDetectable)
{
    SolidVisual* box = addBox(10, {}, false);

    service.updateShapeFaces(box);

    EXPECT_FALSE(service.isDetectable(box));
    EXPECT_TRUE(service.isDirty());
}

TEST_F(VisualSelectionTest, LinesAreSwitchedTogetherAndNothingElse)
{
    visual::LineVisual* first = addLine({{0, 0, 0}, {10, 0, 0}});
    visual::LineVisual* second = addLine({{0, 0, 20}, {10, 0, 20}});
    SolidVisual* box = addBox(10, {});
    makeClean();

    service.setLineEnabled(false);

    EXPECT_FALSE(service.isEnabled(first) || service.isEnabled(second));
    EXPECT_TRUE(service.isEnabled(box));
    EXPECT_TRUE(service.isDirty());
}

TEST_F(VisualSelectionTest, SwitchingLinesIsDirtyOnlyWhereSomethingChanges)
{
    addLine({{0, 0, 0}, {10, 0, 0}});
    makeClean();

    service.setLineEnabled(true);
    EXPECT_FALSE(service.isDirty());
    service.setLineEnabled(false);
    makeClean();
    service.setLineEnabled(false);
    EXPECT_FALSE(service.isDirty());
    service.setLineEnabled(true);
    EXPECT_TRUE(service.isDirty());
}

TEST_F(VisualSelectionTest, EnabledLineIsBroughtUpToDateAtOnceAndADisabledOneIsNot)
{
    visual::LineVisual* line = addLine({{0, 0, 0}, {10, 0, 0}});

    service.setLineEnabled(false);
    EXPECT_FALSE(object(line).built);
    EXPECT_TRUE(object(line).worldDirty);
    service.setLineEnabled(true);
    EXPECT_TRUE(object(line).built);
    EXPECT_FALSE(object(line).worldDirty);
    EXPECT_TRUE(service.isDirty());
}

TEST_F(VisualSelectionTest, WithoutLinesSwitchingThemChangesNothing)
{
    addBox(10, {});
    makeClean();

    service.setLineEnabled(false);

    EXPECT_FALSE(service.isDirty());
}

TEST_F(VisualSelectionTest, MarkingReachesAllDescendants)
{
    SolidVisual* parent = addBox(10, {});
    auto* group = new Visual(parent);
    SolidVisual* child = addBox(10, {50, 0, 0});
    SolidVisual* other = addBox(10, {90, 0, 0});
    child->attachTo(group);
    makeClean();

    service.markDirty(parent);

    EXPECT_TRUE(object(parent).worldDirty && object(child).worldDirty);
    EXPECT_FALSE(object(other).worldDirty);
    EXPECT_TRUE(service.isDirty());
}

TEST_F(VisualSelectionTest, MarkingASubtreeWithoutObjectsIsNothing)
{
    makeClean();

    service.markDirty(new Visual(new Visual(world)));

    EXPECT_FALSE(service.isDirty());
}

TEST_F(VisualSelectionTest, MovedParentMovesThePickOfItsChild)
{
    auto* group = new Visual(world);
    SolidVisual* child = addBox(10, {});
    child->attachTo(group);
    makeClean();
    ASSERT_TRUE(along(1, 2).hit);

    group->setPosition(300, 0, 0);
    makeClean();

    EXPECT_FALSE(along(1, 2).hit);
    EXPECT_EQ(along(301, 2).visual, child);
}

TEST_F(VisualSelectionTest, MovingKeepsThePartsThatWereBuilt)
{
    SolidVisual* box = addBox(10, {});
    makeClean();
    const BVHPrimitive* face = object(box).primitives.front();

    box->setPosition(500, 0, 0);
    makeClean();

    EXPECT_EQ(object(box).primitives.front(), face);
    EXPECT_EQ(object(box).box.min, Posf(499, -1, -1)); // a unit wider
}

TEST_F(VisualSelectionTest, UpdateBuildsWhatIsNewAndRaisesTheSignalOnce)
{
    int raised = 0;
    const boost::signals2::scoped_connection connection =
        broker::SignalBroker::onSnapResultInvalidated([&] { ++raised; });
    SolidVisual* box = addBox(10, {});

    service.update();
    EXPECT_EQ(raised, 1);
    EXPECT_TRUE(object(box).built);
    EXPECT_FALSE(object(box).worldDirty);
    service.update(); // clean: nothing
    EXPECT_EQ(raised, 1);
    box->setPosition(20, 0, 0);
    box->setPosition(30, 0, 0);
    service.update();
    EXPECT_EQ(raised, 2);
}

/// The hierarchies stay where nothing that they hold has come, gone or moved; a new one lies elsewhere in memory, since it
/// is built before the old one goes.
class HierarchyOfTheScene : public VisualSelectionTest {
protected:
    HierarchyOfTheScene()
    {
        for (float x : {0.0f, 100.0f, 200.0f, 300.0f, 400.0f, 500.0f})
            boxes.push_back(addBox(10, {x, 0, 0}));
        cloud = addCloud({{0, 0, 50}, {1, 1, 51}});
        handle = addMesh(wall(10));
        line = addLine({{0, 0, 80}, {10, 0, 80}});
        service.disableObject(handle);
        makeClean();
    }
    template <typename Change>
    bool isBuiltAnewBy(const Change& change)
    {
        const BVHNode* before = service.getObjectTree();
        change();
        EXPECT_TRUE(service.isDirty());
        int raised = 0;
        const boost::signals2::scoped_connection connection =
            broker::SignalBroker::onSnapResultInvalidated([&] { ++raised; });
        service.update();
        EXPECT_FALSE(service.isDirty());
        EXPECT_EQ(raised, 1);
        return service.getObjectTree() != before;
    }

    std::vector<SolidVisual*> boxes;
    visual::PointCloudVisual* cloud;
    visual::MeshVisual* handle;
    visual::LineVisual* line;
};

TEST_F(HierarchyOfTheScene, StaysWhereOnlyADisabledObjectMoves)
{
    EXPECT_FALSE(isBuiltAnewBy([&] { handle->setPosition(7, 8, 9); }));
    EXPECT_FALSE(object(handle).worldDirty);
    EXPECT_EQ(object(handle).worldPose.position, Posf(7, 8, 9));
    EXPECT_EQ(along(101, 2).visual, boxes[1]);
}

TEST_F(HierarchyOfTheScene, StaysWhereABoxIsAsBefore)
{
    EXPECT_FALSE(isBuiltAnewBy([&] { service.markDirty(boxes[2]); }));
    EXPECT_FALSE(object(boxes[2]).box.centerDirty);
    EXPECT_FALSE(isBuiltAnewBy([&] { service.disableObject(handle); }));
    EXPECT_FALSE(isBuiltAnewBy([&] { service.enableObject(boxes[2]); }));
}

TEST_F(HierarchyOfTheScene, OfTheObjectsStaysWhereACloudMoves)
{
    const BVHNode* clouds = service.getCloudTree();

    EXPECT_FALSE(isBuiltAnewBy([&] { cloud->setPosition(1, 2, 3); }));

    EXPECT_NE(service.getCloudTree(), clouds);
}

TEST_F(HierarchyOfTheScene, OfTheCloudsStaysWhereABodyMoves)
{
    const BVHNode* clouds = service.getCloudTree();

    EXPECT_TRUE(isBuiltAnewBy([&] { boxes[0]->setPosition(1, 2, 3); }));

    EXPECT_EQ(service.getCloudTree(), clouds);
}

TEST_F(HierarchyOfTheScene, IsBuiltAnewByWhateverChangesWhatItHolds)
{
    EXPECT_TRUE(isBuiltAnewBy([&] { boxes[3]->setPosition(310, 0, 0); }));
    EXPECT_TRUE(isBuiltAnewBy([&] { service.enableObject(handle); }));
    EXPECT_TRUE(isBuiltAnewBy([&] { handle->setPosition(1, 1, 1); }));
    EXPECT_TRUE(isBuiltAnewBy([&] { service.setCompoundObjectEnabled(handle, false); }));
    EXPECT_TRUE(isBuiltAnewBy([&] { service.removeObject(boxes[5]); }));
    EXPECT_TRUE(isBuiltAnewBy([&] { addBox(10, {600, 0, 0}); }));
    EXPECT_TRUE(isBuiltAnewBy([&] { service.updateShapeFaces(boxes[4]); }));
    EXPECT_TRUE(isBuiltAnewBy([&] { service.setLineEnabled(false); }));
}

TEST_F(HierarchyOfTheScene, MoveThatWasTakenOverAheadOfTheUpdateIsNotForgotten)
{
    EXPECT_TRUE(isBuiltAnewBy([&] {
        boxes[1]->setPosition(110, 0, 0);
        service.updateWorldBoxes();
    }));
    EXPECT_TRUE(isBuiltAnewBy([&] {
        line->setPosition(0, 0, 30);
        service.setLineEnabled(true); // it is enabled already, and brought up to date at once
    }));
}

TEST_F(HierarchyOfTheScene, DisabledObjectThatMovedIsFoundWhereItIsOnceEnabled)
{
    isBuiltAnewBy([&] { handle->setPosition(700, 0, 0); });

    EXPECT_TRUE(isBuiltAnewBy([&] { service.enableObject(handle); }));

    EXPECT_EQ(along(701, 2).visual, handle);
}

TEST_F(HierarchyOfTheScene, AfterAnyChangesItHoldsWhatIsEnabled)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> place(-500, 500);
        for (int step = 0; step < 25; ++step) {
            std::vector<Visual*> all = entered();
            std::ranges::sort(all, {}, &Visual::getId);
            Visual* any = all[random() % all.size()];
            switch (random() % 7) {
            case 0:
            case 1:
                any->setPosition(place(random), place(random), place(random));
                break;
            case 2:
                service.setObjectEnabled(any, random() % 2 == 0);
                break;
            case 3:
                service.updateWorldBoxes();
                break;
            case 4:
                service.setLineEnabled(random() % 2 == 0);
                break;
            case 5:
                addBox(20, {place(random), place(random), place(random)});
                break;
            default:
                if (all.size() > 5)
                    service.removeObject(any);
                break;
            }
            if (step % 3 == 0)
                continue; // several changes before one update
            service.update();

            std::vector<const BVHPrimitive*> expected;
            for (Visual* visual : entered())
                if (object(visual).enabled && object(visual).kind != Kind::PointCloud)
                    expected.push_back(&object(visual));
            std::vector<const BVHPrimitive*> held;
            walkBox(service.getObjectTree(), Box(-1e6f, -1e6f, -1e6f, 1e6f, 1e6f, 1e6f),
                    [&](const BVHPrimitive* primitive) { held.push_back(primitive); });
            ASSERT_THAT(held, testing::UnorderedElementsAreArray(expected));
            for (const BVHPrimitive* primitive : expected) { // each where its box is
                bool isFound = false;
                walkBox(service.getObjectTree(), primitive->box,
                        [&](const BVHPrimitive* found) { isFound = isFound || found == primitive; });
                ASSERT_TRUE(isFound);
            }
        }
    }
}

TEST_F(VisualSelectionTest, NeitherTasksNorFramesNorQuestionsBringItUpToDate)
{
    SolidVisual* box = addBox(10, {});
    visual::SceneCore::Get()->visuals.enter(box);
    makeClean();

    scene.setVisualWorldPose(box, rob::Posef(rob::Posf(50, 0, 0)));
    drain();
    EXPECT_TRUE(service.isDirty());
    render(test::lookingAtOrigin(500));
    EXPECT_FALSE(along(51, 2).hit || along(1, 2).hit) << "neither where it is nor where it was";
    EXPECT_FALSE(service.sense(rob::Linef({51, -9, 2}, {51, 9, 2})).valid);
    EXPECT_TRUE(service.isDirty());

    makeClean();
    EXPECT_EQ(along(51, 2).visual, box);
}

TEST_F(VisualSelectionTest, SignalIsRaisedWhenQueriesAnswerAlready)
{
    bool answered = false;
    addBox(10, {});
    const boost::signals2::scoped_connection connection =
        broker::SignalBroker::onSnapResultInvalidated([&] { answered = along(1, 2).hit; });

    service.update();

    EXPECT_TRUE(answered);
}

TEST_F(VisualSelectionTest, WorldBoxesCanBeUpdatedByThemselves)
{
    int raised = 0;
    const boost::signals2::scoped_connection connection =
        broker::SignalBroker::onSnapResultInvalidated([&] { ++raised; });
    SolidVisual* box = addBox(10, {100, 0, 0});
    visual::PointCloudVisual* cloud = addCloud({{0, 0, 0}, {4, 4, 4}});

    service.updateWorldBoxes();

    EXPECT_EQ(object(box).box.min, Posf(94, -6, -6));
    EXPECT_EQ(object(box).box.max, Posf(106, 6, 6));
    EXPECT_EQ(object(cloud).box.max, Posf(5, 5, 5));
    EXPECT_TRUE(service.isDirty()); // the hierarchies are old
    EXPECT_EQ(raised, 0);
}

/// A box with a triangle whose third node does not exist.
TopoDS_Shape malformed(Handle(Poly_Triangulation) & broken)
{
    const TopoDS_Shape shape = test::meshedBox(10, 10, 10);
    TopLoc_Location location;
    broken = BRep_Tool::Triangulation(TopoDS::Face(TopExp_Explorer(shape, TopAbs_FACE).Current()), location);
    broken->SetTriangle(1, Poly_Triangle(1, 2, 999));
    return shape;
}

TEST_F(VisualSelectionTest, FailureInABuildLeavesTheServiceDirtyAndALaterUpdateWorks)
{
    int raised = 0;
    const boost::signals2::scoped_connection connection =
        broker::SignalBroker::onSnapResultInvalidated([&] { ++raised; });
    SolidVisual* good = addBox(10, {100, 0, 0});
    Handle(Poly_Triangulation) broken;
    const TopoDS_Shape shape = malformed(broken);
    auto* bad = new SolidVisual(shape, world); // not drawn
    service.addShape(shape, bad, true);
    visual::LineVisual* last = addLine({{0, 0, 50}, {10, 0, 50}});

    EXPECT_THROW(service.update(), Standard_OutOfRange);
    EXPECT_TRUE(service.isDirty());
    EXPECT_EQ(raised, 0);
    EXPECT_FALSE(object(bad).built);
    EXPECT_TRUE(object(bad).primitives.empty());
    EXPECT_FALSE(along(101, 2).hit); // queries are refused
    EXPECT_THROW(service.update(), Standard_OutOfRange);

    broken->SetTriangle(1, Poly_Triangle(1, 2, 3));
    service.update();
    EXPECT_FALSE(service.isDirty());
    EXPECT_EQ(raised, 1);
    EXPECT_EQ(along(101, 2).visual, good);
    EXPECT_EQ(along(4, 3).visual, bad);
    EXPECT_TRUE(object(last).built);
}

TEST_F(VisualSelectionTest, FailingObjectCanBeRemoved)
{
    SolidVisual* good = addBox(10, {100, 0, 0});
    Handle(Poly_Triangulation) broken;
    const TopoDS_Shape shape = malformed(broken);
    auto* bad = new SolidVisual(shape, world);
    service.addShape(shape, bad, true);
    EXPECT_THROW(service.update(), Standard_OutOfRange);

    service.removeObject(bad);
    service.update();

    EXPECT_EQ(along(101, 2).visual, good);
}

} // namespace
} // namespace vrk::selection
