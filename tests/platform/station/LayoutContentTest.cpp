#include "StationModels.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Group.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <shared_mutex>
#include <stdexcept>

namespace vrk::layout {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

class LayoutContentTest : public testing::Test {
protected:
    ~LayoutContentTest() override { Layout::inst().clear(); }

    static bool isKnown(unsigned id)
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        return sdf::SdfManager::inst().find(id) != nullptr;
    }
    static std::size_t tableSize()
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        return sdf::SdfManager::inst().size();
    }

    Layout& station = Layout::inst();
};

TEST_F(LayoutContentTest, MembersOfAnAssemblyAreListedAndInTheTable)
{
    const auto outer = std::make_shared<Assembly>(newId(), "outer");
    const auto inner = std::make_shared<Assembly>(newId(), "inner");
    const auto part = std::make_shared<Part>(newId(), "part");
    const auto body = part->addBody("body");
    inner->addPart(part);
    outer->addAssembly(inner);

    station.addAssembly(outer);

    EXPECT_THAT(station.assemblies, ElementsAre(outer, inner));
    EXPECT_THAT(station.parts, ElementsAre(part));
    EXPECT_TRUE(outer->isStandalone());
    EXPECT_FALSE(part->isStandalone());
    for (unsigned id : {outer->getId(), inner->getId(), part->getId(), body->getId()})
        EXPECT_TRUE(isKnown(id));

    station.remove(outer->getId());

    EXPECT_THAT(station.assemblies, IsEmpty());
    EXPECT_THAT(station.parts, IsEmpty());
    for (unsigned id : {outer->getId(), inner->getId(), part->getId(), body->getId()})
        EXPECT_FALSE(isKnown(id));
}

TEST_F(LayoutContentTest, MemberIsRemovedByItselfAndItsAssemblyStays)
{
    const auto assembly = std::make_shared<Assembly>(newId(), "assembly");
    const auto part = std::make_shared<Part>(newId(), "part");
    assembly->addPart(part);
    station.addAssembly(assembly);

    station.remove(part->getId());

    EXPECT_FALSE(isKnown(part->getId()));
    EXPECT_THAT(station.parts, IsEmpty());
    EXPECT_THAT(assembly->getParts(), IsEmpty());
    EXPECT_THAT(station.assemblies, ElementsAre(assembly));
}

TEST_F(LayoutContentTest, MechanismEntersTheListOfItsKind)
{
    const auto arm = std::make_shared<Manipulator>(newId(), "arm");
    const auto tool = std::make_shared<Tool>(newId(), "tool");
    const auto device = std::make_shared<Device>(newId(), "device");

    station.addMechanism(arm);
    station.addMechanism(tool);
    station.addMechanism(device);

    EXPECT_THAT(station.manipulators, ElementsAre(arm));
    EXPECT_THAT(station.tools, ElementsAre(tool));
    EXPECT_THAT(station.devices, ElementsAre(device));
    EXPECT_TRUE(isKnown(arm->getWrist()->getId()));
    EXPECT_TRUE(isKnown(arm->getControllerTaskFrame()->getId()));
}

TEST_F(LayoutContentTest, PartOnTheStationOrOnAnotherObjectStandsByItself)
{
    const auto part = std::make_shared<Part>(newId(), "part");

    part->setParentId(sdf::SdfManager::stationId);
    EXPECT_TRUE(part->isStandalone());

    part->setParentId(newId());
    EXPECT_TRUE(part->isStandalone());
}

TEST_F(LayoutContentTest, RemovedObjectIsForgottenEverywhere)
{
    const auto carrier = std::make_shared<Part>(newId(), "carrier");
    const auto part = std::make_shared<Part>(newId(), "part");
    const auto frame = std::make_shared<Frame>(newId(), "frame");
    const auto group = std::make_shared<Group>(sdf::ModelType::GroupFirst, newId(), "group");
    const auto operation = std::make_shared<task::Operation>(newId(), "operation");
    frame->setParentId(carrier->getId());
    group->addMember(carrier->getId());
    group->addMember(part->getId());
    operation->addMember(carrier->getId());
    station.addPart(carrier);
    station.addPart(part);
    station.addFrame(frame);
    station.addGroup(group);
    station.addOperation(operation);
    station.addAttachment(part->getId(), carrier->getId(), {});
    station.setHidden(carrier->getId(), true);

    station.remove(carrier->getId());

    EXPECT_THAT(station.parts, ElementsAre(part));
    EXPECT_EQ(frame->getParentId(), 0u);
    EXPECT_THAT(group->getMemberIds(), ElementsAre(part->getId()));
    EXPECT_THAT(operation->getMemberIds(), IsEmpty());
    EXPECT_THAT(station.attachments, IsEmpty());
    EXPECT_THAT(station.visibilities, IsEmpty());
}

TEST_F(LayoutContentTest, DimensionGoesWithWhatItMeasures)
{
    const auto part = std::make_shared<Part>(newId(), "part");
    const auto body = part->addBody("body");
    const auto frame = std::make_shared<Frame>(newId(), "frame");
    station.addPart(part);
    station.addFrame(frame);
    using End = DimensionEnd;
    const auto ofBoth = std::make_shared<const Dimension>(
        Dimension{"",
                  Dimension::Type::Distance,
                  {{End::Kind::Frame, frame->getId(), 0, {}}, {End::Kind::Face, body->getId(), 1, {}}}});
    const auto ofFrame = std::make_shared<const Dimension>(
        Dimension{"",
                  Dimension::Type::Distance,
                  {{End::Kind::Frame, frame->getId(), 0, {}}, {End::Kind::Point, frame->getId(), 0, {}}}});
    station.addDimension(ofBoth);
    station.addDimension(ofFrame);

    station.remove(part->getId());

    EXPECT_THAT(station.dimensions, ElementsAre(ofFrame));
}

TEST_F(LayoutContentTest, DimensionWithoutAllOfItsEndsIsRefused)
{
    const auto expectRefused = [&](std::shared_ptr<const Dimension> dimension) {
        EXPECT_THAT([&] { station.addDimension(std::move(dimension)); },
                    testing::ThrowsMessage<std::invalid_argument>("a dimension has as many ends as its type says"));
    };
    expectRefused(nullptr);
    expectRefused(std::make_shared<Dimension>(Dimension{"", Dimension::Type::Area, {{}, {}}}));
    expectRefused(std::make_shared<Dimension>(Dimension{"", Dimension::Type::Nearest, {{}}}));
    EXPECT_THAT(station.dimensions, IsEmpty());
}

TEST_F(LayoutContentTest, ReachOfARemovedManipulatorIsForgotten)
{
    const auto arm = std::make_shared<Manipulator>(newId(), "arm");
    const auto other = std::make_shared<Manipulator>(newId(), "other");
    station.addManipulator(arm);
    station.addManipulator(other);
    station.reaches = {other->getId(), arm->getId()};

    station.remove(arm->getId());

    EXPECT_THAT(station.reaches, ElementsAre(other->getId()));
}

TEST_F(LayoutContentTest, ToolDataGoesWithItsToolAndTheProgramStays)
{
    const auto arm = std::make_shared<Manipulator>(newId(), "arm");
    const auto program = std::make_shared<task::Task>(newId(), "program");
    const auto toolData = std::make_shared<task::ToolDataItem>(newId(), "tool data");
    const auto wobj = std::make_shared<task::WObjDataItem>(newId(), "wobj");
    toolData->setOwnerId(arm->getWrist()->getId());
    wobj->setOwnerId(arm->getId());
    program->addDataItem(toolData);
    program->addDataItem(wobj);
    program->setManipulatorId(arm->getId());
    station.addManipulator(arm);
    station.addTask(program);

    station.remove(arm->getId());

    EXPECT_FALSE(isKnown(toolData->getId()));
    EXPECT_THAT(program->getDataItems(), ElementsAre(wobj));
    EXPECT_EQ(wobj->getOwnerId(), 0u);
    EXPECT_EQ(program->getManipulatorId(), 0u);
}

TEST_F(LayoutContentTest, ObjectIsCarriedByOneOtherOnly)
{
    station.addAttachment(1, 2, {});
    station.addAttachment(1, 3, rob::Posed(rob::Posd(1, 0, 0)));

    ASSERT_EQ(station.attachments.size(), 1u);
    EXPECT_EQ(station.attachments[0].child, 1u);
    EXPECT_EQ(station.attachments[0].parent, 3u);
    EXPECT_EQ(station.attachments[0].pose, rob::Posed(rob::Posd(1, 0, 0)));

    station.removeAttachment(1);

    EXPECT_THAT(station.attachments, IsEmpty());
}

TEST_F(LayoutContentTest, HiddenIdIsNotedOnceUntilItIsShownAgain)
{
    station.setHidden(4, true);
    station.setHidden(4, true);
    EXPECT_THAT(station.visibilities, ElementsAre(4));

    station.setHidden(4, false);

    EXPECT_THAT(station.visibilities, IsEmpty());
}

TEST_F(LayoutContentTest, ReplacedStationLeavesNothingBehind)
{
    const test::WholeStation models;
    const std::size_t before = tableSize();
    ASSERT_GT(before, 20u);
    StationContent other;
    const auto part = std::make_shared<Part>(models.part->getId(), "another of the same id");
    other.parts.push_back(part);
    other.visibilities.push_back(part->getId());

    station.replace(std::move(other));

    EXPECT_EQ(tableSize(), 1u);
    EXPECT_THAT(station.parts, ElementsAre(part));
    EXPECT_THAT(station.visibilities, ElementsAre(part->getId()));
    EXPECT_THAT(station.manipulators, IsEmpty());
    EXPECT_THAT(station.attachments, IsEmpty());
    EXPECT_EQ(station.lastViewPointPose, rob::Posed());
}

} // namespace
} // namespace vrk::layout
