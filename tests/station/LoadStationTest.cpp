#include "platform/broker/SignalBroker.h"
#include "platform/layout/Group.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/smart/SmartComponent.h"
#include "platform/smart/StationLogic.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "station/support/TestStation.h"
#include "support/TempFolder.h"
#include "support/ThrowsExactly.h"
#include "view/Camera.h"
#include "visual/Edges.h"
#include "visual/FrameVisual.h"
#include "visual/ScanClouds.h"
#include "visual/SolidVisual.h"

#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRep_Builder.hxx>
#include <OgreSceneNode.h>
#include <gp_Pnt.hxx>

namespace vrk::visual {
namespace {

using layout::Layout;

constexpr const char* unknownKey = "invalid unordered_map<K, T> key";

class LoadStation : public test::SceneFixture {
protected:
    void load()
    {
        Scene::LoadStation();
        drain();
    }
    static Visual* visualOfId(unsigned id) { return Scene::HasVisual(id) ? Scene::GetVisual(id) : nullptr; }
};

TEST_F(LoadStation, EmptyStationLoadsNothing)
{
    EXPECT_NO_THROW(load());
}

/// One object of every kind.
class WholeStation : public LoadStation {
protected:
    WholeStation()
    {
        toolData->setOwnerId(tool->getId());
        program->addDataItem(workObject);
        program->addDataItem(toolData);
        program->addDataItem(target);
        move->setWObjItem(workObject);
        path->addInstruction(move);
        program->addPath(path);
        Layout& station = Layout::inst();
        station.addTask(program);
        station.addPointCloud(cloud);
        station.addManipulator(arm);
        station.addAssembly(assembly);
        station.addPart(part);
        station.addTool(tool);
        station.addDevice(device);
        station.addFrame(frame);
    }
    void expectAll() const
    {
        const std::pair<unsigned, VisualType> expected[] = {
            {arm->getId(), VisualType::Manipulator},
            {arm->getLinks()[0]->getId(), VisualType::Link},
            {arm->getWrist()->getId(), VisualType::Wrist},
            {arm->getControllerTaskFrame()->getId(), VisualType::Frame},
            {assembly->getId(), VisualType::Assembly},
            {assembly->getParts()[1]->getId(), VisualType::Part},
            {part->getId(), VisualType::Part},
            {part->getBodies()[0]->getId(), VisualType::Solid},
            {cloud->getId(), VisualType::PointCloud},
            {tool->getId(), VisualType::Tool},
            {tool->getFrames()[0]->getId(), VisualType::Frame},
            {device->getId(), VisualType::Device},
            {device->getFrames()[0]->getId(), VisualType::Frame},
            {frame->getId(), VisualType::Frame},
            {workObject->getId(), VisualType::WObj},
            {workObject->getObjectFrame()->getId(), VisualType::ObjectFrame},
            {toolData->getId(), VisualType::Tcp},
            {path->getId(), VisualType::Path},
            {move->getId(), VisualType::MoveInstruction},
            {target->getId(), VisualType::Robtarget},
        };
        for (const auto& [id, type] : expected) {
            ASSERT_NE(visualOfId(id), nullptr) << "id " << id;
            EXPECT_EQ(visualOfId(id)->getType(), type) << "id " << id;
        }
        EXPECT_EQ(visualOfId(device->getFrames()[0]->getId())->getParent(), visualOfId(device->getLinks()[0]->getId()));
        EXPECT_EQ(visualOfId(arm->getWrist()->getId())->getParent(), visualOfId(arm->getLinks()[1]->getId()));
        EXPECT_EQ(visualOfId(assembly->getParts()[0]->getId())->getParent(), visualOfId(assembly->getId()));
        EXPECT_EQ(visualOfId(toolData->getId())->getParent(), visualOfId(tool->getId()));
        EXPECT_EQ(visualOfId(move->getId())->getParent(), visualOfId(workObject->getId()));
    }

    std::shared_ptr<layout::Manipulator> arm = test::makeArm();
    std::shared_ptr<layout::Assembly> assembly = test::makeAssembly("assembly", 2);
    std::shared_ptr<layout::Part> part = test::makePart("part");
    std::shared_ptr<layout::PointCloud> cloud =
        std::make_shared<layout::PointCloud>(test::newId(), "cloud", layout::PointCloud::Points{{1, 2, 3}});
    std::shared_ptr<layout::Tool> tool = test::makeTool();
    std::shared_ptr<layout::Device> device = test::makeDevice();
    std::shared_ptr<layout::Frame> frame = std::make_shared<layout::Frame>(test::newId(), "frame");
    std::shared_ptr<task::WObjDataItem> workObject = std::make_shared<task::WObjDataItem>(test::newId(), "wobj");
    std::shared_ptr<task::ToolDataItem> toolData = std::make_shared<task::ToolDataItem>(test::newId(), "tcp");
    std::shared_ptr<task::Task> program = std::make_shared<task::Task>(test::newId(), "task");
    std::shared_ptr<task::Path> path = std::make_shared<task::Path>(test::newId(), "main");
    std::shared_ptr<task::RobTargetDataItem> target = std::make_shared<task::RobTargetDataItem>(test::newId(), "p10");
    std::shared_ptr<task::MoveInst> move =
        std::make_shared<task::MoveInst>(test::newId(), "move", task::Motion::Linear, target);
};

TEST_F(WholeStation, EveryKindOfObjectHasItsVisual)
{
    load();

    expectAll();
}

TEST_F(WholeStation, LoadedASecondTimeStandsBesideTheFirstAndOutlivesIt)
{
    load();
    const std::vector<Visual*> first = addedToWorld();
    const Visual* firstPart = visualOfId(part->getId());

    load();

    EXPECT_NE(visualOfId(part->getId()), firstPart) << "the younger one is found";
    for (Visual* visual : first)
        scene.deleteVisual(visual);
    expectAll();
}

TEST_F(LoadStation, ControllersTaskFrameHangsOnTheWorldWhateverItsArmHangsOn)
{
    const auto carrier = test::makeArm();
    const auto arm = test::makeArm();
    arm->setParentId(carrier->getLinks()[1]->getId());
    Layout::inst().addManipulator(carrier);
    Layout::inst().addManipulator(arm);

    load();

    EXPECT_EQ(visualOfId(arm->getId())->getParent(), visualOfId(carrier->getLinks()[1]->getId()));
    EXPECT_EQ(visualOfId(arm->getControllerTaskFrame()->getId())->getParent(), world);
}

TEST_F(LoadStation, PartOfTheStationItselfHangsOnTheWorld)
{
    const auto part = test::makePart("part");
    part->setParentId(smartcomp::StationLogic::inst()->getId());
    Layout::inst().addPart(part);
    scene.addPart(part.get());

    drain();

    EXPECT_EQ(visualOfId(part->getId())->getParent(), world);
}

TEST_F(LoadStation, PartThatIsNotStandaloneIsBuiltByItsOwner)
{
    const auto assembly = test::makeAssembly("assembly", 1);
    Layout::inst().addAssembly(assembly);

    load();

    const unsigned member = assembly->getParts()[0]->getId();
    const Visual* owner = visualOfId(assembly->getId());
    EXPECT_EQ(visualOfId(member)->getParent(), owner);
    EXPECT_THAT(addedToWorld(), testing::SizeIs(1)) << "the assembly: the part was not built a second time";
    ASSERT_THAT(Layout::inst().parts, testing::SizeIs(1)) << "the station lists it";
    EXPECT_EQ(std::distance(owner->getChildren().begin(), owner->getChildren().end()), 2) << "its frame and the part";
}

TEST_F(LoadStation, AssemblyInsideAnotherIsBuiltWithItInOneBatch)
{
    const auto outer = test::makeAssembly("outer", 1);
    const auto inner = test::makeAssembly("inner", 2);
    outer->addAssembly(inner);
    Layout::inst().addAssembly(outer);
    scene.addAssembly(outer.get());

    drain();

    ASSERT_NE(visualOfId(inner->getId()), nullptr);
    EXPECT_EQ(visualOfId(inner->getId())->getType(), VisualType::Assembly);
    EXPECT_EQ(visualOfId(inner->getId())->getParent(), visualOfId(outer->getId()));
    EXPECT_EQ(visualOfId(outer->getId())->getBodiesNum(), 3u);
}

TEST_F(LoadStation, OwnerWithoutVisualMeansTheWorld)
{
    const auto part = test::makePart("part");
    part->setParentId(4711);
    scene.addPart(part.get());

    drain();

    EXPECT_EQ(visualOfId(part->getId())->getParent(), world);
}

TEST_F(LoadStation, WhatStandsByItselfHangsOnItsOwnerOrOnTheWorldWhereThatHasNoVisual)
{
    const auto owner = test::makePart("owner");
    Layout& station = Layout::inst();
    station.addPart(owner);
    std::vector<std::shared_ptr<sdf::SdfObject>> owned, strangers;
    for (auto* list : {&owned, &strangers}) {
        const auto tool = test::makeTool();
        const auto device = test::makeDevice();
        const auto frame = std::make_shared<layout::Frame>(test::newId(), "frame");
        *list = {tool, device, frame};
        for (const auto& object : *list)
            object->setParentId(list == &owned ? owner->getId() : 4711);
        station.addTool(tool);
        station.addDevice(device);
        station.addFrame(frame);
    }

    load();

    for (const auto& object : owned)
        EXPECT_EQ(visualOfId(object->getId())->getParent(), visualOfId(owner->getId()));
    for (const auto& object : strangers)
        EXPECT_EQ(visualOfId(object->getId())->getParent(), world);
}

TEST_F(LoadStation, SavedViewIsRestored)
{
    Camera::Get()->setWorldPose({});
    Layout::inst().lastViewPointPose = rob::Posed({100, 200, 300}, rob::Rotationd(0.5, 0.5, 0.5, 0.5));

    load();

    EXPECT_EQ(Camera::Get()->getWorldPose(), rob::Posef({100, 200, 300}, rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f)));
}

TEST_F(LoadStation, SavedViewAtTheOriginIsRestoredIfItIsTurned)
{
    Camera::Get()->setWorldPose({{1, 2, 3}, rob::Rotationf()});
    Layout::inst().lastViewPointPose = rob::Posed({0, 0, 0}, rob::Rotationd(0.5, 0.5, 0.5, 0.5));

    load();

    EXPECT_EQ(Camera::Get()->getWorldPose(), rob::Posef({0, 0, 0}, rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f)));
}

TEST_F(LoadStation, WithoutSavedViewTheCameraStays)
{
    const rob::Posef before({1, 2, 3}, rob::Rotationf());
    Camera::Get()->setWorldPose(before);

    load();

    EXPECT_EQ(Camera::Get()->getWorldPose(), before);
}

TEST_F(LoadStation, AttachmentsCarryAndHiddenObjectsAreHidden)
{
    const auto carrier = test::makePart("carrier");
    const auto carried = test::makePart("carried");
    const auto hidden = test::makePart("hidden");
    Layout& station = Layout::inst();
    for (const auto& part : {carrier, carried, hidden})
        station.addPart(part);
    station.addAttachment(carried->getId(), carrier->getId(), rob::Posed(rob::Posd(1, 2, 3)));
    station.setHidden(hidden->getId(), true);

    load();

    EXPECT_EQ(visualOfId(carried->getId())->getParent(), visualOfId(carrier->getId()));
    EXPECT_EQ(visualOfId(carried->getId())->getPosition(), rob::Posf(1, 2, 3));
    EXPECT_TRUE(visualOfId(carried->getId())->isAttached());
    EXPECT_FALSE(visualOfId(hidden->getId())->isVisible());
    EXPECT_TRUE(visualOfId(carrier->getId())->isVisible());
}

TEST_F(LoadStation, WhatIsHiddenIsReadAtTheCallAndHiddenBehindTheLoad)
{
    const auto hidden = test::makePart("hidden");
    const auto shown = test::makePart("shown");
    Layout& station = Layout::inst();
    station.addPart(hidden);
    station.addPart(shown);
    station.setHidden(hidden->getId(), true);
    bool visibleAtTheEndOfTheLoad = false;
    scene.addLoadTask([&] { visibleAtTheEndOfTheLoad = visualOfId(hidden->getId())->isVisible(); });

    Scene::LoadStation();
    station.setHidden(hidden->getId(), false);
    station.setHidden(shown->getId(), true);
    drain();

    EXPECT_TRUE(visibleAtTheEndOfTheLoad);
    EXPECT_FALSE(visualOfId(hidden->getId())->isVisible());
    EXPECT_TRUE(visualOfId(shown->getId())->isVisible());
}

TEST_F(LoadStation, LoadedCloudHangsOnItsOwnerAndOneThatIsAddedOnTheWorld)
{
    const auto owner = test::makePart("owner", {100, 0, 0});
    const auto cloud = test::addModelCloud({{0, 0, 0}, {1, 0, 0}});
    cloud->setParentId(owner->getId());
    Layout::inst().addPart(owner);
    load();
    EXPECT_EQ(visualOfId(cloud->getId())->getParent(), visualOfId(owner->getId()));

    scene.removeVisual(cloud->getId());
    scene.addPointCloud(cloud.get());
    drain();

    EXPECT_EQ(visualOfId(cloud->getId())->getParent(), world);
}

TEST_F(LoadStation, LoadTaskThatIsAddedByALoadTaskRunsInTheSameLoad)
{
    std::vector<int> ran;
    scene.addLoadTask([&] {
        ran.push_back(1);
        scene.addLoadTask([&] { ran.push_back(3); });
    });
    scene.addLoadTask([&] { ran.push_back(2); });

    load();

    EXPECT_THAT(ran, testing::ElementsAre(1, 2, 3));
}

TEST_F(LoadStation, LoadTaskThatFailsTakesTheRestAlong)
{
    int ran = 0;
    scene.addLoadTask([] { throw std::runtime_error("load task"); });
    scene.addLoadTask([&] { ++ran; });

    EXPECT_THAT([this] { load(); }, test::throwsExactly<std::runtime_error>("load task"));
    EXPECT_NO_THROW(load());

    EXPECT_EQ(ran, 0);
}

TEST_F(LoadStation, LoadTasksRunAtItsVeryEndInTheirOrder)
{
    const auto part = test::makePart("part");
    Layout::inst().addPart(part);
    std::vector<int> ran;
    scene.addLoadTask([&] { ran.push_back(visualOfId(part->getId()) ? 1 : -1); });
    scene.addLoadTask([&] { ran.push_back(2); });

    load();
    EXPECT_THAT(ran, testing::ElementsAre(1, 2));

    load(); // they ran once; and what is loaded twice does not fail
    EXPECT_THAT(ran, testing::ElementsAre(1, 2));
}

TEST_F(LoadStation, EmptyLoadTaskRaisesBadFunctionCall)
{
    scene.addLoadTask(nullptr);

    EXPECT_THROW(load(), std::bad_function_call);
    scene.addRenderTask([] {}, 0);
    EXPECT_NO_THROW(drain());
}

TEST_F(LoadStation, UnknownFileTypeIsRefused)
{
    const auto part = test::makePart("part");
    part->getBodies()[0]->setGeometry("box", "obj");
    Layout::inst().addPart(part);

    EXPECT_THAT([this] { load(); }, test::throwsExactly<std::runtime_error>("File format is not brep or stl"));
}

TEST_F(LoadStation, FailureOfAnStlFilePassesOut)
{
    const test::TempFolder folder;
    const std::string absent = (folder / "absent.stl").string();
    const std::string broken = folder.write("broken.stl", "no facet").string();
    const auto part = test::makePart("part");

    part->getBodies()[0]->setGeometry("part.obj", "stl");
    scene.addPart(part.get());
    EXPECT_THAT([this] { drain(); }, test::throwsExactly<std::runtime_error>("Not stl file"));
    part->getBodies()[0]->setGeometry(absent, "stl");
    scene.addPart(part.get());
    EXPECT_THAT([this] { drain(); }, test::throwsExactly<std::runtime_error>(absent));
    part->getBodies()[0]->setGeometry(broken, "stl");
    scene.addPart(part.get());
    EXPECT_THAT([this] { drain(); }, test::throwsExactly<std::runtime_error>("Bad STL File"));
}

void collectIds(const sdf::SdfObject& object, std::vector<unsigned>& ids)
{
    ids.push_back(object.getId());
    for (const auto& piece : object.getPieces())
        collectIds(*piece, ids);
}

TEST_F(LoadStation, MechanismThatFailsLeavesNothing)
{
    const test::TempFolder folder;
    const std::string absent = (folder / "absent.stl").string();
    const auto arm = test::makeArm();
    const auto tool = test::makeTool();
    const auto device = test::makeDevice();
    Layout::inst().addManipulator(arm);
    Layout::inst().addTool(tool);
    Layout::inst().addDevice(device);
    for (const std::shared_ptr<layout::Mechanism>& mechanism :
         std::initializer_list<std::shared_ptr<layout::Mechanism>>{arm, tool, device}) {
        // The last body fails when the others stand. One part hangs elsewhere than on its link.
        const auto stray = test::makePart("stray");
        mechanism->getLinks().back()->addPart(stray);
        stray->setParentId(4711);
        const auto failing = test::makePart("failing");
        failing->getBodies()[0]->setGeometry(absent, "stl");
        mechanism->getLinks().back()->addPart(failing);
        sdf::SdfManager::inst().add(stray);
        sdf::SdfManager::inst().add(failing);
        for (const auto& part : {stray, failing})
            sdf::SdfManager::inst().add(part->getBodies()[0]);
        std::vector<unsigned> ids;
        collectIds(*mechanism, ids);
        const std::size_t registered = SceneCore::Get()->visuals.all().size();
        const std::size_t pickable = selection::VisualSelection::Get()->registeredVisuals().size();
        const auto nodes = world->getSceneNode()->numChildren();

        scene.addMechanism(mechanism.get(), true);
        EXPECT_THAT([this] { drain(); }, test::throwsExactly<std::runtime_error>(absent));

        for (const unsigned id : ids)
            EXPECT_FALSE(Scene::HasVisual(id)) << id;
        EXPECT_EQ(SceneCore::Get()->visuals.all().size(), registered);
        EXPECT_EQ(selection::VisualSelection::Get()->registeredVisuals().size(), pickable);
        EXPECT_EQ(world->getSceneNode()->numChildren(), nodes);
    }
}

TEST_F(LoadStation, MechanismWhoseWristOrFrameHangsNowhereLeavesNothing)
{
    const auto arm = test::makeArm();
    arm->getWrist()->setParentId(4711);
    const auto device = test::makeDevice();
    device->getFrames().back()->setParentId(4711);
    for (const std::shared_ptr<layout::Mechanism>& mechanism :
         {std::shared_ptr<layout::Mechanism>(arm), std::shared_ptr<layout::Mechanism>(device)}) {
        const std::size_t registered = SceneCore::Get()->visuals.all().size();

        scene.addMechanism(mechanism.get(), true);
        EXPECT_THROW(drain(), std::out_of_range);

        EXPECT_EQ(SceneCore::Get()->visuals.all().size(), registered);
    }
}

TEST_F(LoadStation, PartWhoseLastBodyFailsKeepsTheOthers)
{
    const test::TempFolder folder;
    const auto part = test::makePart("part");
    part->addBody("absent")->setGeometry((folder / "absent.stl").string(), "stl");
    scene.addPart(part.get());

    EXPECT_THROW(drain(), std::runtime_error);

    EXPECT_EQ(visualOfId(part->getBodies()[0]->getId())->getParent(), visualOfId(part->getId()));
}

TEST_F(LoadStation, BodyOfAWireIsACurveAndOfAVertexAPoint)
{
    const TopoDS_Edge edge = test::straightEdge({0, 0, 0}, {10, 0, 0});
    const std::pair<TopoDS_Shape, VisualType> expected[] = {
        {BRepBuilderAPI_MakeVertex(gp_Pnt(1, 2, 3)).Shape(), VisualType::Point},
        {edge, VisualType::Curve},
        {BRepBuilderAPI_MakeWire(edge).Shape(), VisualType::Curve},
        {test::meshedBox(1, 2, 3), VisualType::Solid}};
    for (const auto& [shape, type] : expected) {
        const auto part = test::makePart("part");
        part->getBodies()[0]->setShape(shape);
        scene.addPart(part.get());

        drain();

        Visual* body = visualOfId(part->getBodies()[0]->getId());
        ASSERT_NE(body, nullptr);
        EXPECT_EQ(body->getType(), type);
    }
}

TEST_F(LoadStation, LoadedFrameHangsOnItsOwnerOrElseOnTheWorld)
{
    const auto owner = test::makePart("owner", {100, 0, 0});
    const auto onOwner = std::make_shared<layout::Frame>(test::newId(), "on the owner");
    onOwner->setParentId(owner->getId());
    const auto onNobody = std::make_shared<layout::Frame>(test::newId(), "on nobody");
    onNobody->setParentId(4711);
    Layout::inst().addPart(owner);
    Layout::inst().addFrame(onOwner);
    Layout::inst().addFrame(onNobody);

    load();

    EXPECT_EQ(visualOfId(onOwner->getId())->getParent(), visualOfId(owner->getId()));
    EXPECT_EQ(visualOfId(onNobody->getId())->getParent(), world);
}

TEST_F(LoadStation, AddedBodyHangsOnItsPart)
{
    const auto part = test::makePart("part");
    scene.addPart(part.get());
    const auto more = part->addBody("more");
    more->setGeometry("more", "brep");
    more->setShape(test::meshedBox(1, 2, 3));
    scene.addBody(part.get(), more.get());

    drain();

    EXPECT_EQ(visualOfId(more->getId())->getParent(), visualOfId(part->getId()));
}

TEST_F(LoadStation, BodyOfAPartWithoutVisualIsPassedOver)
{
    const auto part = test::makePart("part");
    scene.addBody(part.get(), part->getBodies()[0].get());
    scene.addPart(part.get());
    scene.addBody(part.get(), part.get()); // no body at all

    EXPECT_NO_THROW(drain());
}

TEST_F(LoadStation, MechanismIsBuiltByItsKind)
{
    const auto arm = test::makeArm();
    const auto tool = test::makeTool();
    const auto device = test::makeDevice();
    const auto part = test::makePart("no mechanism");
    for (sdf::SdfNode* node : std::initializer_list<sdf::SdfNode*>{arm.get(), tool.get(), device.get(), part.get()})
        scene.addMechanism(node, true);

    drain();

    EXPECT_EQ(visualOfId(arm->getId())->getType(), VisualType::Manipulator);
    EXPECT_EQ(visualOfId(tool->getId())->getType(), VisualType::Tool);
    EXPECT_EQ(visualOfId(device->getId())->getType(), VisualType::Device);
    EXPECT_EQ(visualOfId(part->getId()), nullptr);
}

TEST_F(LoadStation, AddedObjectsHangOnTheirOwnerOrElseOnTheWorld)
{
    const auto owner = test::makePart("owner");
    Layout::inst().addPart(owner);
    scene.addPart(owner.get());
    drain();
    for (const auto& [ownerId, parent] :
         std::initializer_list<std::pair<unsigned, Visual*>>{{owner->getId(), visualOfId(owner->getId())},
                                                             {4711, world},
                                                             {smartcomp::StationLogic::inst()->getId(), world}}) {
        const auto part = test::makePart("part");
        const auto assembly = test::makeAssembly("assembly", 0);
        const auto arm = test::makeArm();
        const auto tool = test::makeTool();
        const auto device = test::makeDevice();
        for (sdf::SdfObject* object :
             std::initializer_list<sdf::SdfObject*>{part.get(), assembly.get(), arm.get(), tool.get(), device.get()})
            object->setParentId(ownerId);

        scene.addPart(part.get());
        scene.addAssembly(assembly.get());
        scene.addMechanism(arm.get(), true);
        scene.addMechanism(tool.get(), true);
        scene.addMechanism(device.get(), true);
        drain();

        for (const unsigned id : {part->getId(), assembly->getId(), arm->getId(), tool->getId(), device->getId()})
            EXPECT_EQ(visualOfId(id)->getParent(), parent) << "owner " << ownerId;
    }
}

TEST_F(LoadStation, FrameOfAnUnknownOwnerFails)
{
    layout::Frame frame(test::newId(), "frame");
    frame.setParentId(4711);
    scene.addFrame(&frame);

    EXPECT_THAT([this] { drain(); }, test::throwsExactly<std::out_of_range>(unknownKey));
}

TEST_F(LoadStation, FrameWithoutOwnerHangsOnTheWorld)
{
    layout::Frame frame(test::newId(), "frame", rob::Posed(rob::Posd(1, 2, 3)));
    scene.addFrame(&frame);

    drain();

    EXPECT_EQ(visualOfId(frame.getId())->getParent(), world);
    EXPECT_EQ(visualOfId(frame.getId())->getPosition(), rob::Posf(1, 2, 3));
}

TEST_F(LoadStation, FrameOfTheStationItselfHangsOnTheWorld)
{
    layout::Frame frame(test::newId(), "frame");
    frame.setParentId(smartcomp::StationLogic::inst()->getId());
    scene.addFrame(&frame);

    drain();

    EXPECT_EQ(visualOfId(frame.getId())->getParent(), world);
}

TEST_F(LoadStation, DeviceFrameOfAnUnknownOwnerFails)
{
    const auto device = test::makeDevice();
    device->getFrames()[0]->setParentId(4711);
    scene.addMechanism(device.get(), true);

    EXPECT_THAT([this] { drain(); }, test::throwsExactly<std::out_of_range>(unknownKey));
    EXPECT_FALSE(Scene::HasVisual(device->getFrames()[0]->getId()));
}

/// A component that marks its place with a bare visual.
class MarkerComponent : public smartcomp::SmartComponent {
public:
    MarkerComponent(unsigned id, bool seen) : SmartComponent(id, "marker"), seen(seen) {}
    bool hasVisual() const override { return seen; }
    void buildVisual(Visual* parent) override { built = new Visual(getId(), parent); }

    Visual* built = nullptr;

private:
    bool seen;
};

TEST_F(LoadStation, ComponentsBuildTheirVisualsThemselves)
{
    const auto seen = std::make_shared<MarkerComponent>(test::newId(), true);
    const auto unseen = std::make_shared<MarkerComponent>(test::newId(), false);
    Layout::inst().addSmartComponent(seen);
    Layout::inst().addSmartComponent(unseen);

    load();

    ASSERT_NE(seen->built, nullptr);
    EXPECT_EQ(seen->built->getParent(), world);
    EXPECT_EQ(unseen->built, nullptr);
}

TEST_F(LoadStation, LaterKindHangsOnAnEarlierOneAndNotTheOtherWayRound)
{
    Layout& station = Layout::inst();
    const auto oneOfEachKind = [&station] {
        const auto arm = test::makeArm();
        const auto assembly = test::makeAssembly("assembly", 0);
        const auto part = test::makePart("part");
        const auto cloud = test::addModelCloud({{1, 2, 3}});
        const auto tool = test::makeTool();
        const auto device = test::makeDevice();
        const auto frame = std::make_shared<layout::Frame>(test::newId(), "frame");
        const auto component = std::make_shared<MarkerComponent>(test::newId(), true);
        station.addManipulator(arm);
        station.addAssembly(assembly);
        station.addPart(part);
        station.addTool(tool);
        station.addDevice(device);
        station.addFrame(frame);
        station.addSmartComponent(component);
        return std::vector<std::shared_ptr<sdf::SdfObject>>{arm, assembly, part, cloud, tool, device, frame, component};
    };
    const auto onEarlier = oneOfEachKind(), onLater = oneOfEachKind();
    for (std::size_t i = 1; i < onEarlier.size(); ++i) {
        onEarlier[i]->setParentId(onEarlier[i - 1]->getId());
        onLater[i - 1]->setParentId(onLater[i]->getId());
    }

    load();

    const auto parentOf = [](const sdf::SdfObject& object) -> const Visual* {
        if (const auto* component = dynamic_cast<const MarkerComponent*>(&object)) // it enters no registry
            return component->built ? component->built->getParent() : nullptr;
        const Visual* visual = visualOfId(object.getId());
        return visual ? visual->getParent() : nullptr;
    };
    for (std::size_t i = 1; i < onEarlier.size(); ++i) {
        EXPECT_EQ(parentOf(*onEarlier[i]), visualOfId(onEarlier[i - 1]->getId())) << "kind " << i;
        EXPECT_EQ(parentOf(*onLater[i - 1]), world) << "kind " << i - 1;
    }
}

TEST_F(LoadStation, AddedComponentIsGivenTheVisualOfItsOwner)
{
    const auto owner = test::makePart("owner");
    scene.addPart(owner.get());
    MarkerComponent component(test::newId(), true);
    component.setParentId(owner->getId());
    scene.buildVisual(&component);

    drain();

    ASSERT_NE(component.built, nullptr);
    EXPECT_EQ(component.built->getParent(), visualOfId(owner->getId()));
}

TEST_F(LoadStation, ComponentInsideAnotherIsLeftToThatOne)
{
    const auto outer = std::make_shared<MarkerComponent>(test::newId(), true);
    const auto inner = std::make_shared<MarkerComponent>(test::newId(), true);
    outer->addComponent(inner);
    Layout::inst().addSmartComponent(outer);

    load();

    EXPECT_NE(outer->built, nullptr);
    EXPECT_EQ(inner->built, nullptr);
}

TEST_F(LoadStation, ComponentWithoutVisualIsPassedOver)
{
    MarkerComponent unseen(test::newId(), false);
    scene.buildVisual(&unseen);

    drain();

    EXPECT_EQ(unseen.built, nullptr);
}

} // namespace
} // namespace vrk::visual
