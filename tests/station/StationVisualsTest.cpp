#include "mesh/MeshManager.h"
#include "platform/smart/StationLogic.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "station/CompoundVisual.h"
#include "station/MechanismVisual.h"
#include "station/PartVisual.h"
#include "station/TcpTraceVisual.h"
#include "station/WObjVisual.h"
#include "station/support/TestStation.h"
#include "visual/DynamicLines.h"
#include "visual/Edges.h"
#include "visual/FrameVisual.h"
#include "visual/SolidVisual.h"
#include "visual/VisualMark.h"
#include "visual/VisualStateManager.h"

#include <BRepBuilderAPI_MakeVertex.hxx>
#include <Ogre.h>

#include <cmath>

namespace vrk::visual {
namespace {

using layout::Layout;
using testing::StrEq;
using testing::ThrowsMessage;

constexpr const char* unknownKey = "invalid unordered_map<K, T> key";

class StationVisuals : public test::SceneFixture {
protected:
    std::shared_ptr<layout::Part> addPart(const std::string& name)
    {
        const auto part = test::makePart(name);
        Layout::inst().addPart(part);
        scene.addPart(part.get());
        drain();
        return part;
    }
    std::shared_ptr<layout::Assembly> addAssembly(int parts)
    {
        const auto assembly = test::makeAssembly("assembly", parts);
        Layout::inst().addAssembly(assembly);
        scene.addAssembly(assembly.get());
        drain();
        return assembly;
    }
    std::shared_ptr<layout::Manipulator> addArm(const std::string& vendor)
    {
        const auto arm = test::makeArm(vendor);
        Layout::inst().addManipulator(arm);
        scene.addMechanism(arm.get(), true);
        drain();
        return arm;
    }
    static PartVisual& partVisual(const sdf::SdfObject& part)
    {
        return dynamic_cast<PartVisual&>(*Scene::GetVisual(part.getId()));
    }
    static std::string materialOf(const layout::Part& part)
    {
        const auto& solid = dynamic_cast<SolidVisual&>(*Scene::GetVisual(part.getBodies()[0]->getId()));
        return solid.getEntity()->getSubEntity(0)->getMaterialName();
    }
    static std::string pointMaterialOf(const Visual& point)
    {
        const auto& drawn = dynamic_cast<Ogre::ManualObject&>(*point.getSceneNode()->getAttachedObject(0));
        return drawn.getSections().front()->getMaterialName();
    }
    static layout::Part& memberPart(const layout::PartContainer& owner, std::size_t index)
    {
        return dynamic_cast<layout::Part&>(*owner.getParts()[index]);
    }
};

struct VendorCase {
    const char* name;
    const char* vendor;
    const char* material;
};

class Makers : public StationVisuals, public testing::WithParamInterface<VendorCase> {};

TEST_P(Makers, ColourTheWholeArm)
{
    const auto arm = addArm(GetParam().vendor);

    const std::string base = GetParam().material;
    for (const auto& link : arm->getLinks()) {
        EXPECT_EQ(materialOf(memberPart(*link, 0)), base);
        const Visual* solid = Scene::GetVisual(memberPart(*link, 0).getBodies()[0]->getId());
        const std::vector<Visual*> wires = test::childrenOfType(*solid, VisualType::WireFrame);
        ASSERT_EQ(wires.size(), 1u);
        EXPECT_EQ(test::materialOf(*wires.front()), base) << "its edges too";
    }
    Scene::GetVisual(arm->getId())->setSelected();
    EXPECT_EQ(materialOf(memberPart(*arm->getLinks()[1], 0)), base + "Selected");
    Scene::GetVisual(arm->getId())->setHighlighted();
    EXPECT_EQ(materialOf(memberPart(*arm->getLinks()[1], 0)), base + "Highlighted");
}

INSTANTIATE_TEST_SUITE_P(Table, Makers,
                         testing::Values(VendorCase{"Abb", "abb", "ABB"}, VendorCase{"Kuka", "kuka", "KUKA"},
                                         VendorCase{"Fanuc", "fanuc", "FANUC"},
                                         VendorCase{"Yaskawa", "yaskawa", "YASKAWA"},
                                         VendorCase{"CapitalsAreNoMaker", "ABB", "Mechanism"},
                                         VendorCase{"NoMaker", "", "Mechanism"}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(StationVisuals, SelectedPartAtTheTopShowsItsFrameUntilItIsDeselected)
{
    const auto part = addPart("part");
    EXPECT_FALSE(partVisual(*part).getLocalFrame()->isVisible());

    scene.setVisualSelected(part->getId());
    drain();
    EXPECT_TRUE(partVisual(*part).getLocalFrame()->isVisible());
    EXPECT_EQ(materialOf(*part), "BodySelected");

    scene.clearSelections();
    drain();
    EXPECT_FALSE(partVisual(*part).getLocalFrame()->isVisible());
    EXPECT_EQ(materialOf(*part), "Body");
}

TEST_F(StationVisuals, SelectedAssemblyShowsItsOwnFrameAndNotThoseOfItsMembers)
{
    const auto assembly = addAssembly(2);

    scene.setVisualSelected(assembly->getId());
    drain();

    EXPECT_EQ(materialOf(memberPart(*assembly, 1)), "BodySelected");
    EXPECT_FALSE(partVisual(*assembly->getParts()[0]).getLocalFrame()->isVisible());
    bool frameShown = false;
    for (Visual* child : Scene::GetVisual(assembly->getId())->getChildren())
        if (child->getType() == VisualType::Frame)
            frameShown = child->isVisible();
    EXPECT_TRUE(frameShown);
}

TEST_F(StationVisuals, MemberHangsWhereItsOwnParentIdSays)
{
    const auto other = addPart("other");
    const auto assembly = test::makeAssembly("assembly", 0);
    const auto arm = test::makeArm();
    const std::pair<unsigned, Visual*> expected[] = {{other->getId(), Scene::GetVisual(other->getId())}, {0, world}};
    std::vector<std::pair<std::shared_ptr<layout::Part>, Visual*>> strangers;
    for (sdf::SdfContainer* owner : std::initializer_list<sdf::SdfContainer*>{assembly.get(), arm->getLinks()[0].get()})
        for (const auto& [parentId, parent] : expected) {
            const auto part = test::makePart("stranger");
            part->setParentId(parentId);
            Layout::inst().addPart(part);
            owner->addForeignChild(*part);
            strangers.emplace_back(part, parent);
        }
    const auto inAssembly = test::makeAssembly("stranger", 0), inLink = test::makeAssembly("stranger", 0);
    for (const auto& stranger : {inAssembly, inLink}) {
        stranger->setParentId(other->getId());
        Layout::inst().addAssembly(stranger);
    }
    assembly->addForeignChild(*inAssembly);
    arm->getLinks()[0]->addForeignChild(*inLink);
    Layout::inst().addAssembly(assembly);
    Layout::inst().addManipulator(arm);

    scene.addAssembly(assembly.get());
    scene.addMechanism(arm.get(), true);
    drain();

    for (const auto& [part, parent] : strangers)
        EXPECT_EQ(Scene::GetVisual(part->getId())->getParent(), parent);
    for (const auto& stranger : {inAssembly, inLink})
        EXPECT_EQ(Scene::GetVisual(stranger->getId())->getParent(), Scene::GetVisual(other->getId()));
}

TEST_F(StationVisuals, PartSelectedInASelectedAssemblyKeepsItsFrameHidden)
{
    const auto assembly = addAssembly(2);

    scene.setVisualsSelected({assembly->getId(), assembly->getParts()[0]->getId()});
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), testing::SizeIs(2));
    EXPECT_EQ(materialOf(memberPart(*assembly, 0)), "BodySelected");
    EXPECT_FALSE(partVisual(*assembly->getParts()[0]).getLocalFrame()->isVisible());
}

TEST_F(StationVisuals, AssemblySelectedAfterItsPartTakesThePartsFrameAway)
{
    const auto assembly = addAssembly(2);
    const unsigned part = assembly->getParts()[0]->getId();

    scene.setVisualsSelected({part, assembly->getId()});
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), testing::ElementsAre(part, assembly->getId()));
    EXPECT_EQ(materialOf(memberPart(*assembly, 0)), "BodySelected");
    EXPECT_EQ(materialOf(memberPart(*assembly, 1)), "BodySelected");
    EXPECT_FALSE(partVisual(*assembly->getParts()[0]).getLocalFrame()->isVisible());
}

TEST_F(StationVisuals, PartSelectedInsideAnAssemblyShowsItsFrame)
{
    const auto assembly = addAssembly(2);

    scene.setVisualSelected(assembly->getParts()[0]->getId());
    drain();

    EXPECT_TRUE(partVisual(*assembly->getParts()[0]).getLocalFrame()->isVisible());
}

TEST_F(StationVisuals, HoverOverAPartLeavesItsBodyInCollision)
{
    const auto part = addPart("part");
    scene.setCollision(part->getId(), true);
    drain();

    scene.setVisualHighlighted(part->getId());
    drain();
    EXPECT_EQ(materialOf(*part), "CollisionContact");

    scene.clearHighlightedVisual();
    drain();
    EXPECT_EQ(materialOf(*part), "CollisionContact");

    scene.clearAllCollisionContacts();
    drain();
    EXPECT_EQ(materialOf(*part), "Body");
}

TEST_F(StationVisuals, HoverOverAnAssemblyLeavesItsSelectedMember)
{
    const auto assembly = addAssembly(2);
    layout::Part& selected = memberPart(*assembly, 0);
    layout::Part& other = memberPart(*assembly, 1);
    scene.setVisualSelected(selected.getId());
    drain();

    scene.setVisualHighlighted(assembly->getId());
    drain();
    EXPECT_EQ(materialOf(selected), "BodySelected");
    EXPECT_EQ(materialOf(other), "BodyHighlighted");
    EXPECT_TRUE(partVisual(selected).getLocalFrame()->isVisible());

    scene.clearHighlightedVisual();
    drain();
    EXPECT_EQ(materialOf(selected), "BodySelected");
    EXPECT_EQ(materialOf(other), "Body");
    EXPECT_TRUE(partVisual(selected).getLocalFrame()->isVisible());
}

TEST_F(StationVisuals, SelectionOfAnAssemblyThatEndsLeavesWhatItsMembersShow)
{
    const auto assembly = addAssembly(2);
    const unsigned colored = memberPart(*assembly, 0).getBodies()[0]->getId();
    scene.bodyVisualUseMaterial(colored, "KUKA");
    scene.setCollision(memberPart(*assembly, 1).getId(), true);
    scene.setVisualSelected(assembly->getId());
    drain();

    scene.clearSelections();
    drain();

    EXPECT_EQ(materialOf(memberPart(*assembly, 0)), "KUKA");
    EXPECT_EQ(materialOf(memberPart(*assembly, 1)), "CollisionContact");
}

TEST_F(StationVisuals, EmphasisAndMarksOfAWholeLeaveWhatItsMembersShow)
{
    const auto arm = addArm("abb");
    layout::Part& link = memberPart(*arm->getLinks()[0], 0);
    scene.setCollision(link.getId(), true);
    scene.setVisualCollisionEmphasizeState(arm->getId(), Scene::VisualCollisionState::GroupA);
    drain();
    EXPECT_EQ(materialOf(link), "CollisionContact");
    scene.clearVisualCollisionEmphasizeState(arm->getId());
    {
        const HighlightedVisual mark(Scene::GetVisual(arm->getId()));
        drain();
    }
    drain();

    EXPECT_EQ(materialOf(link), "CollisionContact");
    EXPECT_EQ(materialOf(memberPart(*arm->getLinks()[1], 0)), "ABB");
}

TEST_F(StationVisuals, HighlightPassesOverSelectedMembers)
{
    const auto assembly = addAssembly(2);
    scene.setVisualSelected(assembly->getParts()[0]->getId());
    drain();

    Scene::GetVisual(assembly->getId())->setHighlighted();

    EXPECT_EQ(materialOf(memberPart(*assembly, 0)), "BodySelected");
    EXPECT_EQ(materialOf(memberPart(*assembly, 1)), "BodyHighlighted");
}

TEST_F(StationVisuals, AttachedPartDoesNotTakeTheLooksOfItsCarrier)
{
    const auto arm = addArm("kuka");
    const auto tool = test::makeTool();
    Layout::inst().addTool(tool);
    scene.addMechanism(tool.get(), true);
    scene.addAttachment(tool->getId(), arm->getLinks()[1]->getId(), {});
    const auto part = addPart("carried");
    scene.addAttachment(part->getId(), arm->getLinks()[1]->getId(), {});
    drain();

    Scene::GetVisual(arm->getId())->setSelected();

    EXPECT_EQ(materialOf(memberPart(*arm->getLinks()[1], 0)), "KUKASelected");
    EXPECT_EQ(materialOf(memberPart(*tool->getLinks()[0], 0)), "Body");
    EXPECT_EQ(materialOf(*part), "Body");
}

TEST_F(StationVisuals, CarrierLeavesTheLooksOfWhatIsAttachedToIt)
{
    const auto arm = addArm("kuka");
    const auto part = addPart("carried");
    scene.addAttachment(part->getId(), arm->getLinks()[1]->getId(), {});
    drain();
    Visual* carrier = Scene::GetVisual(arm->getLinks()[1]->getId());
    Scene::GetVisual(part->getId())->setSelected();

    for (void (Visual::*change)() :
         {&Visual::setHighlighted, &Visual::setSelected, &Visual::resetAppearance, &Visual::clearHighlightOrSelect}) {
        (carrier->*change)();
        EXPECT_EQ(materialOf(*part), "BodySelected");
        EXPECT_TRUE(partVisual(*part).getLocalFrame()->isVisible());
    }
}

TEST_F(StationVisuals, AttachedBodyDoesNotTakeTheLooksOfThePartItHangsOn)
{
    const auto part = addPart("part");
    Scene::GetVisual(part->getBodies()[0]->getId())->setAttachState(true);

    Scene::GetVisual(part->getId())->setSelected();
    EXPECT_EQ(materialOf(*part), "Body");
    Scene::GetVisual(part->getId())->setHighlighted();
    EXPECT_EQ(materialOf(*part), "Body");
}

TEST_F(StationVisuals, CurvesAndPointsOfAPartTakeItsLooks)
{
    const auto part = test::makePart("part");
    part->getBodies()[0]->setShape(test::straightEdge({0, 0, 0}, {10, 0, 0}));
    const auto vertex = part->addBody("vertex");
    vertex->setGeometry("station-test-vertex", "brep");
    vertex->setShape(BRepBuilderAPI_MakeVertex(gp_Pnt(1, 2, 3)).Shape());
    scene.addPart(part.get());
    drain();
    const Visual* curve = Scene::GetVisual(part->getBodies()[0]->getId());
    const auto materials = [&] {
        return std::vector<std::string>{test::materialOf(*test::childrenOfType(*curve, VisualType::Edge).front()),
                                        pointMaterialOf(*Scene::GetVisual(vertex->getId()))};
    };
    Visual* visual = Scene::GetVisual(part->getId());
    const std::vector<std::string> plain = materials();

    visual->setSelected();
    EXPECT_THAT(materials(), testing::ElementsAre("BodyCurveSelected", "PointSelected"));
    visual->setHighlighted();
    EXPECT_THAT(materials(), testing::ElementsAre("BodyCurveHighlighted", "PointHighlighted"));
    visual->clearHighlightOrSelect();
    EXPECT_EQ(materials(), plain);
}

TEST_F(StationVisuals, FrameOfAPartIsHiddenByAResetToo)
{
    const auto part = addPart("part");
    Scene::GetVisual(part->getId())->setSelected();
    EXPECT_TRUE(partVisual(*part).getLocalFrame()->isVisible());

    Scene::GetVisual(part->getId())->resetAppearance();

    EXPECT_FALSE(partVisual(*part).getLocalFrame()->isVisible());
}

TEST_F(StationVisuals, AssembliesInsideAssembliesAndLinksTakeTheirLooks)
{
    const auto outer = test::makeAssembly("outer", 0);
    const auto inner = test::makeAssembly("inner", 1);
    outer->addAssembly(inner);
    Layout::inst().addAssembly(outer);
    const auto arm = test::makeArm("kuka");
    const auto carried = test::makeAssembly("carried", 1);
    arm->getLinks()[0]->addAssembly(carried);
    Layout::inst().addManipulator(arm);
    scene.addAssembly(outer.get());
    scene.addMechanism(arm.get(), true);
    drain();
    EXPECT_EQ(Scene::GetVisual(carried->getId())->getParent(), Scene::GetVisual(arm->getLinks()[0]->getId()));
    EXPECT_EQ(Scene::GetVisual(carried->getId())->getType(), VisualType::Assembly);

    Scene::GetVisual(outer->getId())->setSelected();
    Scene::GetVisual(arm->getId())->setSelected();

    EXPECT_EQ(materialOf(memberPart(*inner, 0)), "BodySelected");
    EXPECT_EQ(materialOf(memberPart(*carried, 0)), "KUKASelected");
}

TEST_F(StationVisuals, FramesHaveTheirNames)
{
    const auto part = addPart("part");
    const auto assembly = addAssembly(0);
    const auto device = test::makeDevice();
    scene.addMechanism(device.get(), true);
    drain();
    const auto frameOf = [](unsigned id) {
        return test::childrenOfType(*Scene::GetVisual(id), VisualType::Frame).front()->getName();
    };

    EXPECT_THAT(frameOf(part->getId()), testing::StartsWith("Local Frame"));
    EXPECT_THAT(frameOf(assembly->getId()), testing::StartsWith("Local Frame"));
    EXPECT_THAT(frameOf(device->getId()), testing::StartsWith("Base Frame"));
    EXPECT_THAT(frameOf(device->getLinks()[0]->getId()), testing::StartsWith("Device Frame"));
}

TEST_F(StationVisuals, SelectedMechanismShowsItsBaseFrame)
{
    const auto arm = addArm("kuka");
    const auto& visual = dynamic_cast<MechanismVisual&>(*Scene::GetVisual(arm->getId()));
    EXPECT_FALSE(visual.getBaseFrame()->isVisible());

    scene.setVisualSelected(arm->getId());
    drain();
    EXPECT_TRUE(visual.getBaseFrame()->isVisible());

    scene.clearSelections();
    drain();
    EXPECT_FALSE(visual.getBaseFrame()->isVisible());
}

TEST_F(StationVisuals, PlainChildrenOfAMechanismAreBareVisuals)
{
    const auto device = test::makeDevice();
    const auto child = std::make_shared<sdf::SdfNode>(sdf::ModelType::Unknown, test::newId(), "plain");
    child->setPose(rob::Posed(rob::Posd(1, 2, 3)));
    device->addPlainChild(child);
    scene.addMechanism(device.get(), true);
    drain();

    const Visual* visual = Scene::GetVisual(child->getId());
    EXPECT_EQ(visual->getType(), VisualType::None);
    EXPECT_EQ(visual->getPosition(), rob::Posf(1, 2, 3));
    EXPECT_EQ(visual->getParent(), Scene::GetVisual(device->getId()));
}

TEST_F(StationVisuals, MechanismShowsItsBaseFrameAlsoInsideWhatIsSelected)
{
    const auto owner = addPart("owner");
    const auto tool = test::makeTool();
    tool->setParentId(owner->getId());
    scene.addMechanism(tool.get(), true);
    const auto isFrameShown = [&] {
        drain();
        return dynamic_cast<MechanismVisual&>(*Scene::GetVisual(tool->getId())).getBaseFrame()->isVisible();
    };
    EXPECT_FALSE(isFrameShown());

    scene.setVisualsSelected({owner->getId(), tool->getId()});

    EXPECT_TRUE(isFrameShown());
}

TEST_F(StationVisuals, HighlightOfAMechanismDoesNotPassOverWhatIsSelectedOfIt)
{
    const auto tool = test::makeTool();
    scene.addMechanism(tool.get(), true);
    scene.setVisualSelected(tool->getFrames()[0]->getId());
    drain();
    const auto& frame = dynamic_cast<FrameVisual&>(*Scene::GetVisual(tool->getFrames()[0]->getId()));
    EXPECT_EQ(frame.getLines().front()->getMaterial()->getName(), "RedFrameLineSelected");

    Scene::GetVisual(tool->getId())->setHighlighted();

    EXPECT_EQ(frame.getLines().front()->getMaterial()->getName(), "WhiteFrameLine");
}

TEST_F(StationVisuals, MechanismWithoutChildrenHasBareLinks)
{
    const auto tool = test::makeTool();
    Layout::inst().addTool(tool); // the links' parts are known to the model
    scene.addMechanism(tool.get(), false);
    drain();

    EXPECT_EQ(Scene::GetVisual(tool->getLinks()[0]->getId())->getBodiesNum(), 0u);
    EXPECT_FALSE(Scene::HasVisual(memberPart(*tool->getLinks()[0], 0).getId()));
}

TEST_F(StationVisuals, AnyMechanismCanBeBuiltWithoutChildren)
{
    const auto arm = test::makeArm();
    const auto device = test::makeDevice();
    Layout::inst().addManipulator(arm);
    Layout::inst().addDevice(device);
    scene.addMechanism(arm.get(), false);
    scene.addMechanism(device.get(), false);
    drain();

    for (const layout::Mechanism* mechanism : std::initializer_list<const layout::Mechanism*>{arm.get(), device.get()})
        EXPECT_EQ(Scene::GetVisual(mechanism->getId())->getBodiesNum(), 0u);
    EXPECT_TRUE(Scene::HasVisual(arm->getWrist()->getId()));
    EXPECT_TRUE(Scene::HasVisual(device->getFrames()[0]->getId()));
}

TEST_F(StationVisuals, ToolFrameHangsOnTheToolAndCanBePicked)
{
    const auto tool = test::makeTool();
    scene.addMechanism(tool.get(), true);
    drain();

    Visual* frame = Scene::GetVisual(tool->getFrames()[0]->getId());
    EXPECT_EQ(frame->getParent(), Scene::GetVisual(tool->getId()));
    EXPECT_EQ(frame->getPosition(), rob::Posf(50, 0, 0));
    EXPECT_THAT(frame->getName(), testing::StartsWith("Tool Frame"));
    EXPECT_TRUE(selection::VisualSelection::Get()->hasVisual(frame));
}

TEST_F(StationVisuals, FrameOfADeviceOnAnUnknownVisualFails)
{
    const auto device = test::makeDevice();
    device->getFrames()[0]->setParentId(4711);
    scene.addMechanism(device.get(), true);

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey)));
}

TEST_F(StationVisuals, WristOnAnUnknownVisualFails)
{
    const auto arm = test::makeArm();
    arm->getWrist()->setParentId(4711);
    scene.addMechanism(arm.get(), true);

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey)));
}

class Programs : public StationVisuals {
protected:
    Programs()
    {
        Layout::inst().addPart(owner);
        scene.addPart(owner.get());
        workObject->setOwnerId(owner->getId());
        workObject->setPose(rob::Posed(rob::Posd(1, 2, 3)));
        workObject->getObjectFrame()->setPose(rob::Posed(rob::Posd(10, 0, 0)));
        toolData->setOwnerId(owner->getId());
        toolData->setPose(rob::Posed(rob::Posd(0, 0, 50)));
        program->addDataItem(workObject);
        program->addDataItem(toolData);
        Layout::inst().addTask(program);
        drain();
    }
    WObjVisual& group() const { return dynamic_cast<WObjVisual&>(*Scene::GetVisual(workObject->getId())); }

    std::shared_ptr<layout::Part> owner = test::makePart("owner", {100, 0, 0});
    std::shared_ptr<task::WObjDataItem> workObject = std::make_shared<task::WObjDataItem>(test::newId(), "wobj");
    std::shared_ptr<task::ToolDataItem> toolData = std::make_shared<task::ToolDataItem>(test::newId(), "tcp");
    std::shared_ptr<task::Task> program = std::make_shared<task::Task>(test::newId(), "task");
};

TEST_F(Programs, WorkObjectIsAUserFrameWithAnObjectFrameOnIt)
{
    scene.addWObj(workObject.get());
    drain();

    EXPECT_EQ(group().getParent(), Scene::GetVisual(owner->getId()));
    EXPECT_EQ(group().getPosition(), rob::Posf(1, 2, 3));
    EXPECT_TRUE(group().isAnchored());
    EXPECT_THAT(group().getName(), testing::MatchesRegex("__WOBJ_" + std::to_string(workObject->getId()) + "[0-9]+"));
    const std::string number = std::to_string(workObject->getId());
    EXPECT_THAT(group().getUserFrame()->getName(), testing::StartsWith("uframe" + number));
    EXPECT_THAT(group().getObjectFrame()->getName(), testing::StartsWith("oframe" + number));
    EXPECT_EQ(group().getUserFrame()->getParent(), &group());
    EXPECT_EQ(group().getUserFrame()->getType(), VisualType::UserFrame);
    EXPECT_EQ(group().getObjectFrame()->getParent(), group().getUserFrame());
    EXPECT_EQ(group().getObjectFrame()->getType(), VisualType::ObjectFrame);
    EXPECT_EQ(group().getObjectFrame()->getPosition(), rob::Posf(10, 0, 0));
    EXPECT_EQ(Scene::GetVisual(workObject->getObjectFrame()->getId()), group().getObjectFrame());
    EXPECT_FALSE(Scene::HasVisual(group().getUserFrame()->getId())) << "the user frame is not registered";
    EXPECT_TRUE(selection::VisualSelection::Get()->hasVisual(group().getUserFrame()));
    EXPECT_TRUE(selection::VisualSelection::Get()->hasVisual(group().getObjectFrame()));
}

TEST_F(Programs, UserFrameThatIsNotFixedKeepsThePlaceOfItsOwner)
{
    workObject->setFixedUFrame(false);
    scene.addWObj(workObject.get());
    drain();

    EXPECT_EQ(group().getPosition(), rob::Posf(0, 0, 0));
}

TEST_F(Programs, UpdatedWorkObjectFollowsTheModel)
{
    scene.addWObj(workObject.get());
    const auto other = addPart("other");
    workObject->setOwnerId(other->getId());
    workObject->setPose(rob::Posed(rob::Posd(4, 5, 6)));
    workObject->getObjectFrame()->setPose(rob::Posed(rob::Posd(0, 20, 0)));

    scene.updateWObj(workObject->getId());
    drain();

    EXPECT_EQ(group().getParent(), Scene::GetVisual(other->getId()));
    EXPECT_EQ(group().getPosition(), rob::Posf(4, 5, 6));
    EXPECT_EQ(group().getObjectFrame()->getPosition(), rob::Posf(0, 20, 0));
}

TEST_F(Programs, UpdatedWorkObjectOfTheStationHangsOnTheWorld)
{
    for (const unsigned station : {0u, smartcomp::StationLogic::inst()->getId()}) {
        scene.addWObj(workObject.get());
        drain();
        ASSERT_NE(group().getParent(), world);
        workObject->setOwnerId(station);

        scene.updateWObj(workObject->getId());
        drain();

        EXPECT_EQ(group().getParent(), world) << "owner " << station;
        scene.removeVisual(workObject->getId());
        workObject->setOwnerId(owner->getId());
    }
}

TEST_F(Programs, UpdatedWorkObjectOfAnUnknownOwnerFails)
{
    scene.addWObj(workObject.get());
    workObject->setOwnerId(4711);

    scene.updateWObj(workObject->getId());

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey)));
}

TEST_F(Programs, UpdatingAWorkObjectWithoutVisualFails)
{
    scene.updateWObj(workObject->getId());

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey)));
}

TEST_F(Programs, LooksOfAWorkObjectAreThoseOfItsFrames)
{
    const auto materialsOfX = [this] {
        std::vector<std::string> names;
        for (const FrameVisual* frame : {group().getUserFrame(), group().getObjectFrame()})
            names.push_back(frame->getLines().front()->getMaterial()->getName());
        return names;
    };
    scene.addWObj(workObject.get());
    drain();
    EXPECT_THAT(materialsOfX(), testing::Each(StrEq("RedFrameLine")));

    scene.setVisualHighlighted(workObject->getId());
    drain();
    EXPECT_THAT(materialsOfX(), testing::Each(StrEq("WhiteFrameLine")));

    scene.setVisualSelected(workObject->getId());
    drain();
    EXPECT_TRUE(Scene::GetStateManager()->hasLayer(&group(), VisualStateLayer::Selected));
    EXPECT_THAT(materialsOfX(), testing::Each(StrEq("RedFrameLineSelected")));

    scene.clearSelections();
    drain();
    EXPECT_THAT(materialsOfX(), testing::Each(StrEq("RedFrameLine")));
}

TEST_F(Programs, WorkObjectDoesWithoutAnObjectFrameThatWasRemoved)
{
    scene.addWObj(workObject.get());
    scene.removeVisual(workObject->getObjectFrame()->getId());
    drain();

    scene.updateWObj(workObject->getId());
    scene.setFrameSize(33, VisualType::WObj);
    scene.setVisualHighlighted(workObject->getId());
    scene.setVisualSelected(workObject->getId());
    scene.clearSelections();

    EXPECT_NO_THROW(drain());
    EXPECT_EQ(group().getObjectFrame(), nullptr);
}

TEST_F(Programs, HidingTheOwnerLeavesTheWorkObject)
{
    scene.addWObj(workObject.get());
    drain();

    Scene::GetVisual(owner->getId())->setVisible(false, true);

    EXPECT_TRUE(group().isVisible());
}

TEST_F(Programs, WorkObjectsAreShownAndHiddenWithTheirFrames)
{
    scene.addWObj(workObject.get());
    scene.setWObjVisualVisible(false);
    drain();

    EXPECT_FALSE(group().isVisible());
    EXPECT_FALSE(group().getUserFrame()->isVisible());
    EXPECT_FALSE(group().getObjectFrame()->isVisible());
}

TEST_F(Programs, SizeOfWorkObjectsReachesBothFrames)
{
    scene.addWObj(workObject.get());
    scene.setFrameSize(33, VisualType::WObj);
    drain();

    for (const FrameVisual* frame : {group().getUserFrame(), group().getObjectFrame()})
        EXPECT_EQ(frame->getLines().front()->getPoints().at(1), rob::Posf(33, 0, 0));
    EXPECT_EQ(SceneCore::Get()->settings.wobjFrameSize, 33);
    SceneCore::Get()->settings.wobjFrameSize = test::testSettings().wobjFrameSize;
}

TEST_F(Programs, ToolDataIsAFrameOnItsOwner)
{
    scene.addToolData(toolData->getId());
    drain();

    Visual* tcp = Scene::GetVisual(toolData->getId());
    EXPECT_EQ(tcp->getType(), VisualType::Tcp);
    EXPECT_THAT(tcp->getName(), testing::StartsWith("TCP_" + std::to_string(toolData->getId())));
    EXPECT_EQ(tcp->getParent(), Scene::GetVisual(owner->getId()));
    EXPECT_EQ(tcp->getPosition(), rob::Posf(0, 0, 50));
    EXPECT_TRUE(selection::VisualSelection::Get()->hasVisual(tcp));

    toolData->setPose(rob::Posed(rob::Posd(0, 0, 70)));
    scene.updateToolData(toolData->getId());
    drain();
    EXPECT_EQ(Scene::GetVisual(toolData->getId())->getPosition(), rob::Posf(0, 0, 70));
}

TEST_F(Programs, ToolDataOfAnUnknownOwnerFails)
{
    // The world is no tool either.
    for (const unsigned unknown : {4711u, 0u, smartcomp::StationLogic::inst()->getId()}) {
        toolData->setOwnerId(unknown);
        scene.addToolData(toolData->getId());

        EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey))) << "owner " << unknown;
        EXPECT_FALSE(Scene::HasVisual(toolData->getId()));
    }
}

TEST_F(Programs, UpdatingToolDataWithoutVisualFails)
{
    scene.updateToolData(toolData->getId());

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey)));
}

TEST_F(Programs, TaskBringsItsWorkObjectsAndToolData)
{
    scene.buildTask(program->getId());
    scene.buildTask(4711); // no task

    EXPECT_EQ(group().getParent(), Scene::GetVisual(owner->getId()));
    EXPECT_TRUE(Scene::HasVisual(toolData->getId()));
}

TEST_F(Programs, ToolDataMayHangOnAWorkObjectThatStandsBehindItInTheList)
{
    const auto late = std::make_shared<task::Task>(test::newId(), "late");
    const auto frame = std::make_shared<task::WObjDataItem>(test::newId(), "frame");
    const auto onFrame = std::make_shared<task::ToolDataItem>(test::newId(), "on the frame");
    onFrame->setOwnerId(frame->getId());
    late->addDataItem(onFrame);
    late->addDataItem(frame);
    Layout::inst().addTask(late);

    EXPECT_NO_THROW(scene.buildTask(late->getId()));

    EXPECT_EQ(Scene::GetVisual(onFrame->getId())->getParent(), Scene::GetVisual(frame->getId()));
}

TEST_F(Programs, SelectedTaskSelectsWhatItHoldsAndItsRobot)
{
    const auto arm = addArm("kuka");
    program->setManipulatorId(arm->getId());
    scene.buildTask(program->getId());

    scene.setVisualSelected(program->getId());
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), testing::ElementsAre(toolData->getId(), workObject->getId(), arm->getId()));
}

TEST_F(Programs, SelectedOperationSelectsItsMembers)
{
    const auto operation = std::make_shared<task::Operation>(test::newId(), "operation");
    operation->addMember(owner->getId());
    Layout::inst().addOperation(operation);

    scene.setVisualSelected(operation->getId());
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), testing::ElementsAre(owner->getId()));
}

/// Notes, when it is to look selected, whether the model was free.
class LooksAtTheModel : public Visual {
public:
    LooksAtTheModel(unsigned id, Visual* parent) : Visual(id, parent) { SceneCore::Get()->visuals.enter(this); }
    void setSelected() override { seen.push_back(test::isModelFree()); }

    std::vector<bool> seen;
};

TEST_F(Programs, ModelIsNotLockedWhileWhatAnObjectStandsForIsSelected)
{
    const auto operation = std::make_shared<task::Operation>(test::newId(), "operation");
    operation->addMember(program->getId()); // which has no visual either
    Layout::inst().addOperation(operation);
    auto* visual = new LooksAtTheModel(toolData->getId(), world);

    scene.setVisualSelected(operation->getId());
    drain();

    EXPECT_THAT(visual->seen, testing::ElementsAre(true)) << "a thread must not take the lock twice";
}

class TcpTrace : public test::RenderTest {
protected:
    static const Ogre::ManualObject& traceOf(const Visual& visual)
    {
        return dynamic_cast<Ogre::ManualObject&>(*visual.getSceneNode()->getAttachedObject(0));
    }
};

TEST_F(TcpTrace, LineShowsFromTheSecondPointOn)
{
    auto* trace = new TcpTraceVisual(world);
    const test::View view{{0, -200, 0}, {0, 0, 0}, {0, 0, 1}};
    trace->addColorPoint({-50, 0, 0}, {1, 0, 0});
    const test::Picture empty = render(view);

    trace->addColorPoint({50, 0, 0}, {1, 0, 0});
    const test::Picture line = render(view);

    EXPECT_EQ(test::largestDifference(empty, render({{0, 200, 50000}, {0, 200, 60000}, {0, 1, 0}})), 0);
    EXPECT_GT(test::largestDifference(empty, line), 60);
    EXPECT_EQ(traceOf(*trace).getRenderQueueGroup(), 70);
}

TEST_F(TcpTrace, IsAStripInTheColoursOfItsPoints)
{
    auto* trace = new TcpTraceVisual(world);
    trace->addColorPoint({-50, 0, 0}, {1, 0, 0});
    trace->addColorPoint({50, 0, 0}, {0, 0.2f, 0.6f});

    ASSERT_EQ(traceOf(*trace).getSections().size(), 1u);
    Ogre::ManualObject::ManualObjectSection& strip = *traceOf(*trace).getSections()[0];
    EXPECT_EQ(strip.getMaterialName(), "TcpTrace");
    EXPECT_EQ(strip.getRenderOperation()->operationType, Ogre::RenderOperation::OT_LINE_STRIP);
    const Ogre::VertexData& data = *strip.getRenderOperation()->vertexData;
    const Ogre::VertexElement* diffuse = data.vertexDeclaration->findElementBySemantic(Ogre::VES_DIFFUSE);
    ASSERT_NE(diffuse, nullptr);
    const Ogre::HardwareVertexBufferSharedPtr buffer = data.vertexBufferBinding->getBuffer(diffuse->getSource());
    const Ogre::HardwareBufferLockGuard lock(buffer, Ogre::HardwareBuffer::HBL_READ_ONLY);
    const auto* second = static_cast<const unsigned char*>(lock.pData) + buffer->getVertexSize() + diffuse->getOffset();
    EXPECT_THAT(std::vector<unsigned char>(second, second + 4), testing::ElementsAre(0, 51, 153, 255));
}

TEST_F(TcpTrace, PlaceThatIsNoNumberIsLeftOut)
{
    auto* trace = new TcpTraceVisual(world);
    for (const double x : {std::nan(""), -50.0, std::nan(""), 50.0, HUGE_VAL})
        trace->addColorPoint({x, 0, 0}, {1, 0, 0});

    ASSERT_EQ(traceOf(*trace).getSections().size(), 1u);
    EXPECT_EQ(traceOf(*trace).getSections()[0]->getRenderOperation()->vertexData->vertexCount, 2u);
    EXPECT_EQ(traceOf(*trace).getBoundingBox(), Ogre::AxisAlignedBox(-50, 0, 0, 50, 0, 0));
}

TEST_F(TcpTrace, ClearedItStartsAgain)
{
    auto* trace = new TcpTraceVisual(world);
    trace->addColorPoint({-50, 0, 0}, {1, 0, 0});
    trace->addColorPoint({50, 0, 0}, {1, 0, 0});

    trace->clear();
    EXPECT_TRUE(traceOf(*trace).getSections().empty());

    trace->addColorPoint({-50, 0, 0}, {0, 1, 0});
    trace->addColorPoint({50, 0, 0}, {0, 1, 0});
    ASSERT_FALSE(traceOf(*trace).getSections().empty());
    EXPECT_EQ(traceOf(*trace).getSections()[0]->getRenderOperation()->vertexData->vertexCount, 2u);
}

TEST_F(TcpTrace, TwoTracesHaveNamesOfTheirOwn)
{
    const auto* first = new TcpTraceVisual(world);
    const auto* second = new TcpTraceVisual(world);

    EXPECT_NE(traceOf(*first).getName(), traceOf(*second).getName());
}

TEST_F(TcpTrace, OneThatDiedWithItsParentIsForgotten)
{
    auto* parent = new Visual(world);
    scene.setTcpTrace(new TcpTraceVisual(parent));
    scene.deleteVisual(parent);
    auto* next = new TcpTraceVisual(world); // very likely in its place

    scene.clearTcpTrace();
    drain();

    EXPECT_THAT(addedToWorld(), testing::Contains(next));
}

TEST_F(TcpTrace, OneThatWasNotHandedOverStaysWhenTheTraceIsCleared)
{
    auto* trace = new TcpTraceVisual(world);
    trace->addColorPoint({-50, 0, 0}, {1, 0, 0});

    scene.clearTcpTrace();
    drain();

    EXPECT_EQ(trace->getParent(), world);
    EXPECT_FALSE(traceOf(*trace).getSections().empty());
}

TEST_F(TcpTrace, OneThatWasHandedOverIsDeletedByAPost)
{
    scene.clearTcpTrace();
    EXPECT_NO_THROW(drain()) << "none was";
    scene.setTcpTrace(new TcpTraceVisual(world));

    scene.clearTcpTrace();
    drain();
    scene.clearTcpTrace();

    EXPECT_NO_THROW(drain());
}

} // namespace
} // namespace vrk::visual
