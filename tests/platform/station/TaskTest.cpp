#include "platform/task/Task.h"

#include "platform/layout/Group.h"
#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/smart/SmartComponent.h"
#include "platform/smart/StationLogic.h"
#include "platform/task/DataItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <shared_mutex>

namespace vrk {
namespace {

using layout::Group;
using layout::Layout;
using smartcomp::SmartComponent;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ThrowsMessage;

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

class StationTest : public testing::Test {
protected:
    ~StationTest() override { Layout::inst().clear(); }
};

using TaskTest = StationTest;
using GroupTest = StationTest;
using SmartComponentTest = StationTest;

TEST_F(TaskTest, DataItemKeepsItsOwnerWhenItEntersATask)
{
    task::Task program(newId(), "weld");
    const auto tool = std::make_shared<task::ToolDataItem>(newId(), "torch");
    tool->setOwnerId(77);

    program.addDataItem(tool);

    EXPECT_EQ(tool->getOwnerId(), 77u);
    EXPECT_EQ(tool->getParentId(), 77u);
    EXPECT_THAT(program.getObjChildren(), ElementsAre(tool->getId()));
    EXPECT_THAT(program.getPieces(), ElementsAre(tool));
}

TEST_F(TaskTest, RemovedDataItemIsGone)
{
    task::Task program(newId(), "weld");
    const auto kept = std::make_shared<task::ToolDataItem>(newId(), "torch");
    const auto removed = std::make_shared<task::WObjDataItem>(newId(), "table");
    program.addDataItem(kept);
    program.addDataItem(removed);

    program.removeDataItem(removed->getId());

    EXPECT_THAT(program.getDataItems(), ElementsAre(kept));
    EXPECT_THAT(program.getObjChildren(), ElementsAre(kept->getId()));
}

TEST_F(TaskTest, ItemsOfATaskInTheStationAreInTheTable)
{
    const auto program = std::make_shared<task::Task>(newId(), "weld");
    const auto wobj = std::make_shared<task::WObjDataItem>(newId(), "table");
    program->addDataItem(wobj);

    Layout::inst().addTask(program);

    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    EXPECT_THAT(task::GetAllTasks(), ElementsAre(program.get()));
    EXPECT_THAT(program->getChildren(), ElementsAre(wobj.get()));
    EXPECT_EQ(sdf::SdfManager::inst().find(wobj->getObjectFrame()->getId()), wobj->getObjectFrame().get());
}

TEST_F(TaskTest, PathsAndManipulatorAreKeptById)
{
    task::Task program(newId(), "weld");
    EXPECT_EQ(program.getManipulatorId(), 0u);
    EXPECT_THAT(program.getPaths(), IsEmpty());

    program.setManipulatorId(5);
    program.addPath(9);
    program.addPath(8);

    EXPECT_EQ(program.getManipulatorId(), 5u);
    EXPECT_THAT(program.getPaths(), ElementsAre(9, 8));
}

TEST_F(TaskTest, WorkObjectHasAFixedUserFrameAndAnObjectFrameOnIt)
{
    task::WObjDataItem wobj(newId(), "table");
    wobj.setPose(rob::Posed(rob::Posd(1, 2, 3)));

    EXPECT_TRUE(wobj.hasFixedUFrame());
    EXPECT_EQ(wobj.getPose(), rob::Posed(rob::Posd(1, 2, 3)));
    EXPECT_EQ(wobj.getObjectFrame()->getPose(), rob::Posed());
    EXPECT_EQ(wobj.getObjectFrame()->getParentId(), wobj.getId());

    wobj.setFixedUFrame(false);
    EXPECT_FALSE(wobj.hasFixedUFrame());
}

TEST_F(TaskTest, OperationGathersItsMembers)
{
    const auto operation = std::make_shared<task::Operation>(newId(), "weld seam 1");
    const auto program = std::make_shared<task::Task>(newId(), "weld");
    operation->addMember(program->getId());
    operation->addMember(999999); // not in the table
    Layout::inst().addTask(program);
    Layout::inst().addOperation(operation);

    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    std::vector<sdf::SdfObject*> members;
    operation->getMembers(members);

    EXPECT_THAT(members, ElementsAre(program.get()));
}

TEST_F(GroupTest, GathersWithoutOwning)
{
    const auto group = std::make_shared<Group>(sdf::ModelType::GroupFirst, newId(), "fence");
    const auto program = std::make_shared<task::Task>(newId(), "weld");
    group->addMember(program->getId());
    Layout::inst().addTask(program);
    Layout::inst().addGroup(group);

    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    std::vector<sdf::SdfObject*> members;
    group->getMembers(members);

    EXPECT_THAT(members, ElementsAre(program.get()));
    EXPECT_EQ(program->getParentId(), 0u);
    EXPECT_THAT(group->getPieces(), IsEmpty());
}

TEST_F(GroupTest, OtherKindOfObjectIsRefused)
{
    EXPECT_THAT([] { Group(sdf::ModelType::Part, 1, "part"); },
                ThrowsMessage<std::invalid_argument>("not a kind of group"));
}

/// A component that notes where it was built.
class Conveyor : public SmartComponent {
public:
    using SmartComponent::SmartComponent;
    std::string getKind() const override { return "test conveyor"; }
    bool hasVisual() const override { return true; }
    void buildVisual(visual::Visual* parent) override { builtOn = parent; }

    visual::Visual* builtOn = nullptr;
};

TEST_F(SmartComponentTest, HasNoVisualByItself)
{
    SmartComponent component(newId(), "logic");

    EXPECT_FALSE(component.hasVisual());
    EXPECT_TRUE(component.isTopLevel());
    EXPECT_EQ(component.getKind(), "component");
}

TEST_F(SmartComponentTest, BuildsItsVisualOnTheParentThatItIsGiven)
{
    Conveyor conveyor(newId(), "conveyor");
    int marker = 0;
    auto* const parent = reinterpret_cast<visual::Visual*>(&marker); // only handed through

    smartcomp::BuildVisual(&conveyor, parent);

    EXPECT_EQ(conveyor.builtOn, parent);
}

TEST_F(SmartComponentTest, AllAreFoundThoseInsideAfterTheirOwner)
{
    const auto line = std::make_shared<SmartComponent>(newId(), "line");
    const auto inside = std::make_shared<Conveyor>(newId(), "conveyor");
    const auto other = std::make_shared<SmartComponent>(newId(), "other");
    line->addComponent(inside);

    Layout::inst().addSmartComponent(line);
    Layout::inst().addSmartComponent(other);

    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    EXPECT_THAT(smartcomp::GetAllSmartComponents(), ElementsAre(line.get(), inside.get(), other.get()));
    EXPECT_TRUE(line->isTopLevel());
    EXPECT_FALSE(inside->isTopLevel());
    EXPECT_EQ(inside->getParentId(), line->getId());
}

TEST_F(SmartComponentTest, IsMadeByItsKindOnceThatIsKnown)
{
    EXPECT_EQ(smartcomp::MakeSmartComponent("test conveyor", 5, "belt"), nullptr);
    smartcomp::RegisterSmartComponent(
        "test conveyor", [](unsigned id, std::string name) { return std::make_shared<Conveyor>(id, std::move(name)); });

    const auto made = smartcomp::MakeSmartComponent("test conveyor", 5, "belt");

    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->getId(), 5u);
    EXPECT_EQ(made->getName(), "belt");
    EXPECT_TRUE(made->hasVisual());
}

TEST(StationLogic, HasAnIdOfItsOwnThatIsNeverGivenToAnObject)
{
    const smartcomp::StationLogic* station = smartcomp::StationLogic::inst();

    EXPECT_EQ(station->getId(), sdf::SdfManager::stationId);
    EXPECT_NE(station->getId(), 0u);
    EXPECT_LT(station->getId(), sdf::SdfManager::GenerateTransientId());
    EXPECT_EQ(station->getModelType(), sdf::ModelType::Station);
    EXPECT_EQ(station, smartcomp::StationLogic::inst());
}

} // namespace
} // namespace vrk
