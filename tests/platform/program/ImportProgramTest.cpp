#include "platform/station/ImportProgram.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/StationFile.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numbers>

namespace vrk::station {
namespace {

using layout::Layout;
using rob::Posd;
using rob::Posed;
using sdf::ModelType;
using task::MoveInst;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;

const std::string rest = ",[0,0,0,0],[9E9,9E9,9E9,9E9,9E9,9E9]]";
const std::string weld = "MODULE weld\nPERS tooldata torch:=[TRUE,[[0,0,100],[1,0,0,0]],[1,[0,0,1],[1,0,0,0],0,0,0]];\n"
                         "PERS wobjdata table:=[FALSE,TRUE,\"\",[[500,0,0],[1,0,0,0]],[[0,0,20],[1,0,0,0]]];\n"
                         "CONST robtarget a:=[[1,0,0],[1,0,0,0]" +
                         rest + ";\nCONST robtarget b:=[[2,1,0],[1,0,0,0]" + rest +
                         ";\nCONST robtarget c:=[[3,0,0],[1,0,0,0]" + rest +
                         ";\nCONST robtarget spare:=[[9,9,9],[1,0,0,0]" + rest +
                         ";\nCONST jointtarget home:=[[90,0,0,0,0,0],[9E9,9E9,9E9,9E9,9E9,9E9]];\n"
                         "PROC main()\nMoveAbsJ home,v1,fine,torch;\nMoveJ a,v1,z50,torch\\WObj:=table;\nMoveC "
                         "b,c,v1,fine,torch\\WObj:=table;\n"
                         "MoveL a,v1,fine,tool0;\nMoveL CRobT(),v1,fine,torch;\nENDPROC\nENDMODULE\n";

/// An arm of six joints about z, one above the other, whose controller counts from 300 above its foot.
std::shared_ptr<layout::Manipulator> newArm()
{
    sdf::SdfManager& model = sdf::SdfManager::inst();
    auto arm = std::make_shared<layout::Manipulator>(model.generateId(), "arm");
    std::shared_ptr<layout::Link> last = std::make_shared<layout::Link>(model.generateId(), "foot");
    arm->addLink(last);
    for (int i = 0; i < 6; ++i) {
        auto link = std::make_shared<layout::Link>(model.generateId(), "link");
        arm->addLink(link);
        layout::Joint joint;
        joint.type = layout::JointType::Continuous;
        joint.parentLink = last->getId();
        joint.childLink = link->getId();
        joint.origin = Posed(Posd(i == 1 ? 50 : 0, 0, 100));
        arm->addJoint(joint);
        last = link;
    }
    arm->placeWrist(last->getId(), Posed(Posd(0, 0, 10)));
    arm->setPose(Posed(Posd(1000, 0, 0), rob::Rotationd(std::numbers::pi / 2, rob::Dird(0, 0, 1))));
    arm->getControllerTaskFrame()->setPose(Posed(Posd(1000, 0, 300), arm->getPose().rotation()));
    return arm;
}

class ImportProgramTest : public testing::Test {
protected:
    ~ImportProgramTest() override { Layout::inst().clear(); }

    static const task::DataItem& itemNamed(const task::Task& task, const std::string& name)
    {
        for (const auto& item : task.getDataItems())
            if (item->getName() == name)
                return *item;
        throw std::out_of_range(name);
    }

    test::TempFolder folder;
    ProgramSummary summary;
};

TEST_F(ImportProgramTest, TargetsStandInTheUserFrameOfTheirWorkObject)
{
    Layout::inst().addManipulator(newArm());
    const auto task = AddProgram(ImportProgram(folder.write("weld.MOD", weld)), summary);

    const layout::Manipulator& arm = *Layout::inst().manipulators[0];
    ASSERT_EQ(task->getOwnPaths().size(), 1u);
    const auto& moves = task->getOwnPaths()[0]->getMoveInstructions();
    ASSERT_EQ(moves.size(), 4u);
    EXPECT_EQ(task->getManipulatorId(), arm.getId());

    EXPECT_EQ(moves[1]->getModelType(), ModelType::DashedMoveInst);
    EXPECT_EQ(moves[1]->getWObjItem()->getName(), "table");
    EXPECT_EQ(moves[1]->getTargetItem()->getPose().position, Posd(1, 0, 20)) << "with the object frame";
    EXPECT_EQ(moves[1]->getTargetItem()->getOwnerId(), moves[1]->getWObjItemId());
    EXPECT_EQ(moves[1]->getWObjItem()->getOwnerId(), arm.getId());
    EXPECT_NEAR(moves[1]->getWObjItem()->getPose().position.x, 500, 1e-9);
    EXPECT_NEAR(moves[1]->getWObjItem()->getPose().position.z, 300, 1e-9) << "from where the controller counts";
    EXPECT_EQ(moves[2]->getCircleItem()->getPose().position, Posd(2, 1, 20));
    EXPECT_EQ(moves[3]->getWObjItem()->getName(), "wobj0");
    EXPECT_EQ(moves[3]->getTargetItem()->getPose().position, Posd(1, 0, 0));
    EXPECT_NE(moves[3]->getTargetItemId(), moves[1]->getTargetItemId()) << "one name in two work objects is two places";
    EXPECT_EQ(itemNamed(*task, "torch").getOwnerId(), arm.getWrist()->getId());
    EXPECT_EQ(itemNamed(*task, "spare").getPose().position, Posd(9, 9, 9));
}

TEST_F(ImportProgramTest, PostureStandsWhereItBringsTheWrist)
{
    const auto arm = newArm();
    const auto task = MakeTask(ImportProgram(folder.write("weld.mod", weld)), arm.get(), summary);
    const MoveInst& move = *task->getOwnPaths()[0]->getMoveInstructions()[0];

    const Posed pose = move.getTargetItem()->getPose();

    EXPECT_TRUE(move.isJointTargetInst());
    EXPECT_NEAR(pose.position.x, 0, 1e-9); // the first joint turns the offset of the second towards y
    EXPECT_NEAR(pose.position.y, 50, 1e-9);
    EXPECT_NEAR(pose.position.z, 610, 1e-9);
    EXPECT_EQ(move.getWObjItemId(), 0u);
    arm->setJointValues(std::vector<double>{std::numbers::pi / 2, 0, 0, 0, 0, 0});
    for (const layout::LinkPose& link : arm->getLinkPoses()) {
        if (link.id == arm->getWrist()->getParentId()) {
            EXPECT_NEAR((link.pose * arm->getWrist()->getPose()).position.y, pose.position.y, 1e-9);
        }
    }
}

TEST_F(ImportProgramTest, SummaryCountsWhatIsPlacedAndWhatIsNot)
{
    const auto arm = newArm();
    const auto task = MakeTask(ImportProgram(folder.write("weld.mod", weld)), arm.get(), summary);

    EXPECT_EQ(summary.text(), "5 moves, 4 placed, 1 not known before it runs; 5 targets");
    EXPECT_THAT(summary.notes, IsEmpty());
    const auto& last = *task->getOwnPaths()[0]->getInstructions().back();
    EXPECT_FALSE(last.isMoveInst());
    EXPECT_EQ(last.getName(), "MoveL CRobT(),v1,fine,torch");
    EXPECT_EQ(last.remark, "not known before it runs");
    EXPECT_EQ(last.line, 14u);
}

TEST_F(ImportProgramTest, WithoutARobotPlacesStandInTheWorldAndPosturesAreListed)
{
    const auto task = AddProgram(ImportProgram(folder.write("weld.mod", weld)), summary);

    EXPECT_EQ(task->getManipulatorId(), 0u);
    EXPECT_EQ(task->getOwnPaths()[0]->moveInstructionCount(), 3u);
    EXPECT_EQ(task->getOwnPaths()[0]->getMoveInstructions()[0]->getWObjItem()->getOwnerId(), 0u);
    EXPECT_EQ(task->getOwnPaths()[0]->getMoveInstructions()[0]->getToolItemId(), 0u);
    EXPECT_EQ(task->getOwnPaths()[0]->getInstructions()[0]->remark, "a posture, and no robot of as many joints");
    EXPECT_EQ(summary.text(), "5 moves, 3 placed, 1 not known before it runs, 1 to postures without a robot of as many "
                              "joints; 5 targets");
}

TEST_F(ImportProgramTest, CircularMoveOnALineIsNoted)
{
    std::string text = weld;
    text.replace(text.find("[2,1,0]"), 7, "[2,0,0]");
    MakeTask(ImportProgram(folder.write("weld.mod", text)), nullptr, summary);

    ASSERT_EQ(summary.notes.size(), 1u);
    EXPECT_EQ(summary.notes[0].line, 12u);
    EXPECT_THAT(summary.notes[0].text, HasSubstr("lie on a line"));
}

TEST_F(ImportProgramTest, SecondProgramOfANameGetsANumber)
{
    const program::Program program = ImportProgram(folder.write("weld.mod", weld));

    EXPECT_EQ(AddProgram(program, summary)->getName(), "weld");
    EXPECT_EQ(AddProgram(program, summary)->getName(), "weld (2)");
    EXPECT_EQ(AddProgram(program, summary)->getName(), "weld (3)");
    EXPECT_EQ(Layout::inst().tasks.size(), 3u);
}

TEST_F(ImportProgramTest, StationWithAProgramIsSavedAsTheSameBytesAfterLoading)
{
    Layout::inst().addManipulator(newArm());
    AddProgram(ImportProgram(folder.write("weld.mod", weld)), summary);
    SaveStationFile(folder / "a.station.json");

    LoadStationFile(folder / "a.station.json");
    SaveStationFile(folder / "b.station.json");

    EXPECT_EQ(test::TempFolder::Read(folder / "a.station.json"), test::TempFolder::Read(folder / "b.station.json"));
    EXPECT_EQ(Layout::inst().tasks.at(0)->getOwnPaths().at(0)->moveInstructionCount(), 4u);
}

TEST_F(ImportProgramTest, DataBesideTheProgramIsReadInAnyCase)
{
    folder.write("seam.DAT", "DEFDAT seam\nDECL POS XP1={X 1,Y 2,Z 3,A 0,B 0,C 0}\nENDDAT\n");
    const auto with = ImportProgram(folder.write("seam.Src", "DEF seam()\nLIN XP1\nEND\n"));
    const auto without = ImportProgram(folder.write("other.src", "DEF other()\nLIN XP1\nEND\n"));

    EXPECT_EQ(with.routines.at(0).steps.at(0).placing, program::Placing::Placed);
    EXPECT_EQ(without.routines.at(0).steps.at(0).placing, program::Placing::Missing);
}

TEST_F(ImportProgramTest, DamagedFileIsToldInOneLineAndTheStationStays)
{
    const auto file = folder.write("weld.mod", "MODULE weld\nPROC main()\n");
    EXPECT_THAT([&] { ImportProgram(file); },
                ThrowsMessage<ImportError>(StrEq(file.string() + ": line 3: 'main' of line 2 has no ENDPROC")));
    EXPECT_THROW(ImportProgram(folder / "none.mod"), ImportError);
    EXPECT_THAT(Layout::inst().tasks, IsEmpty());
}

TEST(IsProgramFile, KnowsTheEndingsInAnyCase)
{
    for (const char* name : {"a.mod", "a.MOD", "b/a.Src", "A.LS"})
        EXPECT_TRUE(isProgramFile(name)) << name;
    for (const char* name : {"a.dat", "a.model", "mod", "a.ls.txt"})
        EXPECT_FALSE(isProgramFile(name)) << name;
}

} // namespace
} // namespace vrk::station
