#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/StationFile.h"
#include "platform/station/file/StationText.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "support/ProcessorTime.h"
#include "support/TempFolder.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <gp_Circ.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numbers>

namespace vrk::task {
namespace {

using geometry::MfgVector;
using geometry::MfgVectors;
using layout::Layout;
using rob::Dird;
using rob::Posd;
using rob::Posed;
using sdf::ModelType;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

std::shared_ptr<RobTargetDataItem> newTarget(const std::string& name = "p10")
{
    return std::make_shared<RobTargetDataItem>(newId(), name);
}

std::shared_ptr<MoveInst> newMove(Motion motion = Motion::Linear, MoveLine line = MoveLine::Solid)
{
    return std::make_shared<MoveInst>(newId(), "MoveL p10", motion, newTarget(), line);
}

TEST(MoveInst, IsAMoveWhateverItsKind)
{
    const auto linear = newMove(), circular = newMove(Motion::Circular),
               dashed = newMove(Motion::Joint, MoveLine::Dashed);
    const Instruction plain(newId(), "SetDO gun, 1");

    for (const auto& move : {linear, circular, dashed}) {
        EXPECT_TRUE(move->asType(ModelType::MoveInst));
        EXPECT_FALSE(move->asType(ModelType::PlainInst));
        EXPECT_TRUE(move->isMoveInst());
    }
    EXPECT_EQ(static_cast<unsigned>(linear->getModelType()), 31u);
    EXPECT_EQ(static_cast<unsigned>(circular->getModelType()), 33u);
    EXPECT_EQ(static_cast<unsigned>(dashed->getModelType()), 34u);
    EXPECT_EQ(static_cast<unsigned>(plain.getModelType()), 36u);
    EXPECT_FALSE(linear->asType(ModelType::CircularMoveInst));
    EXPECT_FALSE(plain.asType(ModelType::MoveInst));
    EXPECT_FALSE(plain.isMoveInst() || plain.isRobTargetInst() || plain.isJointTargetInst());
}

TEST(MoveInst, KindOfItsTargetIsItsOwn)
{
    MoveInst move(newId(), "move", Motion::Joint, newTarget());
    EXPECT_TRUE(move.isRobTargetInst());

    move.setTargetItem(std::make_shared<JointTargetDataItem>(newId(), "home"));

    EXPECT_TRUE(move.isJointTargetInst());
    EXPECT_FALSE(move.isRobTargetInst());
}

TEST(MoveInst, RefusesWhatItCannotBe)
{
    const auto tool = std::make_shared<ToolDataItem>(newId(), "torch");
    EXPECT_THAT([&] { MoveInst(1, "", Motion::Linear, nullptr); },
                ThrowsMessage<std::invalid_argument>(StrEq("a move needs a robot target or a joint target")));
    EXPECT_THAT([&] { MoveInst(1, "", Motion::Linear, tool); },
                ThrowsMessage<std::invalid_argument>(StrEq("a move needs a robot target or a joint target")));
    EXPECT_THAT([] { newMove(Motion::Circular, MoveLine::Dashed); },
                ThrowsMessage<std::invalid_argument>(StrEq("a circular move is not dashed")));
    EXPECT_THAT([] { newMove()->setCircleItem(newTarget()); },
                ThrowsMessage<std::invalid_argument>(StrEq("only a circular move has a via point")));
}

TEST(Path, PreviousMoveSkipsWhatDrawsNothing)
{
    Path path(newId(), "main");
    const auto first = newMove(), last = newMove();
    const auto call = std::make_shared<Instruction>(newId(), "call");
    path.addInstruction(first);
    path.addInstruction(call);
    path.addInstruction(last);

    EXPECT_EQ(first->getPrevMoveInstruction(), std::nullopt);
    EXPECT_EQ(call->getPrevMoveInstruction(), first.get());
    EXPECT_EQ(last->getPrevMoveInstruction(), first.get());
    EXPECT_THAT(path.getMoveInstructions(), ElementsAre(first.get(), last.get()));
    EXPECT_EQ(path.moveInstructionCount(), 2u);
    EXPECT_THAT(path.getObjChildren(), ElementsAre(first->getId(), call->getId(), last->getId()));
    EXPECT_EQ(last->getParentId(), path.getId());
}

TEST(Path, EditsLinkTheMovesAnew)
{
    Path path(newId(), "main");
    const auto a = newMove(), b = newMove(), c = newMove();
    path.addInstruction(a);
    path.addInstruction(c);

    path.insertInstruction(1, b);
    EXPECT_EQ(b->getPrevMoveInstruction(), a.get());
    EXPECT_EQ(c->getPrevMoveInstruction(), b.get());
    EXPECT_THAT(path.getObjChildren(), ElementsAre(a->getId(), b->getId(), c->getId()));

    path.removeInstruction(a->getId());
    path.removeInstruction(4000000);
    EXPECT_EQ(b->getPrevMoveInstruction(), std::nullopt);
    EXPECT_EQ(a->getPath(), nullptr);
    EXPECT_THAT(path.getMoveInstructions(), ElementsAre(b.get(), c.get()));
    EXPECT_THAT([&] { path.insertInstruction(3, newMove()); },
                ThrowsMessage<std::out_of_range>(StrEq("invalid vector subscript")));
}

TEST(Path, InstructionsKnowTheirTaskUntilItGoes)
{
    const auto path = std::make_shared<Path>(newId(), "main");
    const auto move = newMove();
    path->addInstruction(move);
    EXPECT_EQ(move->getTask(), nullptr);
    {
        Task program(newId(), "weld");
        program.addPath(path);
        EXPECT_EQ(move->getTask(), &program);
        EXPECT_THAT(program.getPaths(), ElementsAre(path->getId()));
        EXPECT_EQ(path->getParentId(), program.getId());
    }
    EXPECT_EQ(move->getTask(), nullptr);
}

TEST(Task, RemovedItemIsForgottenByMovesAndATargetInUseStays)
{
    Task program(newId(), "weld");
    const auto path = std::make_shared<Path>(newId(), "main");
    const auto move = newMove(Motion::Circular);
    const auto wobj = std::make_shared<WObjDataItem>(newId(), "table");
    const auto tool = std::make_shared<ToolDataItem>(newId(), "torch");
    const auto via = newTarget();
    via->setOwnerId(wobj->getId());
    move->setWObjItem(wobj);
    move->setToolItem(tool);
    move->setCircleItem(via);
    for (const std::shared_ptr<DataItem>& item :
         std::vector<std::shared_ptr<DataItem>>{wobj, tool, via, move->getTargetItem()})
        program.addDataItem(item);
    path->addInstruction(move);
    program.addPath(path);

    program.removeDataItem(wobj->getId());
    program.removeDataItem(tool->getId());
    EXPECT_EQ(via->getOwnerId(), 0u);
    program.removeDataItem(via->getId());

    EXPECT_EQ(move->getWObjItemId(), 0u);
    EXPECT_EQ(move->getToolItemId(), 0u);
    EXPECT_EQ(move->getCircleItemId(), 0u);
    EXPECT_THAT([&] { program.removeDataItem(move->getTargetItemId()); },
                ThrowsMessage<std::invalid_argument>(StrEq("a move needs this target")));
    EXPECT_EQ(program.getDataItems().size(), 1u);
}

TEST(Task, TargetsGoWithTheObjectFrameTheyLieIn)
{
    Task program(newId(), "weld");
    const auto wobj = std::make_shared<WObjDataItem>(newId(), "table");
    const auto inside = newTarget(), outside = newTarget();
    inside->setOwnerId(wobj->getId());
    inside->setPose(Posed(Posd(10, 0, 0)));
    outside->setPose(Posed(Posd(10, 0, 0)));
    for (const std::shared_ptr<DataItem>& item : std::vector<std::shared_ptr<DataItem>>{wobj, inside, outside})
        program.addDataItem(item);

    program.moveObjectFrame(*wobj, Posed(Posd(0, 0, 5), rob::Rotationd(std::numbers::pi / 2, Dird(0, 0, 1))));

    EXPECT_NEAR(inside->getPose().position.y, 10, 1e-12); // the frame's x axis is along y now
    EXPECT_NEAR(inside->getPose().position.z, 5, 1e-12);
    EXPECT_EQ(outside->getPose().position, Posd(10, 0, 0));
}

// Edges and the directions on them

MfgVectors lineOf(const gp_Pnt& a, const gp_Pnt& b, std::vector<MfgVector> vectors)
{
    return {BRepBuilderAPI_MakeEdge(a, b).Edge(), std::move(vectors), 0, 0};
}

TEST(EdgePoints, TangentIsThatOfTheDirectionOfTravel)
{
    TopoDS_Edge arc = BRepBuilderAPI_MakeEdge(gp_Circ(gp_Ax2(), 50), 0, std::numbers::pi).Edge();

    EXPECT_NEAR(geometry::GetPointAtParameter(arc, std::numbers::pi / 2).y, 50, 1e-9);
    EXPECT_NEAR(geometry::GetEdgePointInfoAtParam(arc, 0).second.y, 1, 1e-12);
    arc.Reverse();
    EXPECT_NEAR(geometry::GetEdgePointInfoAtParam(arc, 0).second.y, -1, 1e-12);
    EXPECT_NEAR(geometry::GetEdgeParameters(arc).first, std::numbers::pi, 1e-12);
}

TEST(EdgePoints, SamplesStayWithinTheChord)
{
    const TopoDS_Edge arc = BRepBuilderAPI_MakeEdge(gp_Circ(gp_Ax2(), 1000), 0, std::numbers::pi).Edge();
    const std::vector<double> samples = geometry::SampleEdge(arc, 0, std::numbers::pi, 0.1);

    ASSERT_GT(samples.size(), 10u);
    for (std::size_t i = 1; i < samples.size(); ++i)
        EXPECT_LE(1000 * (1 - std::cos((samples[i] - samples[i - 1]) / 2)), 0.1 * 1.01);
    EXPECT_EQ(samples.front(), 0);
    EXPECT_EQ(samples.back(), std::numbers::pi);
}

TEST(MfgVector, PoseStandsOnTheEdgeWithXAlongItAndThatOfTheToolLooksIntoIt)
{
    const MfgVectors edge = lineOf({0, 0, 0}, {100, 0, 0}, {{25, Dird(0.5, 0, 2)}});
    const geometry::MfgVector& vector = edge.vectors[0];

    EXPECT_EQ(vector.getPos(edge.edge), Posd(25, 0, 0));
    EXPECT_NEAR(vector.getDir(edge.edge).length(), 1, 1e-12);
    for (const auto& [pose, side] :
         {std::pair(vector.getPose(edge.edge), 1.0), std::pair(vector.getToolPose(edge.edge), -1.0)}) {
        const Dird z = pose * Dird(0, 0, 1), x = pose * Dird(1, 0, 0);
        EXPECT_EQ(pose.position, Posd(25, 0, 0));
        EXPECT_NEAR(z.dot(vector.getDir(edge.edge)), side, 1e-12);
        EXPECT_NEAR(x.dot(z), 0, 1e-12);
        EXPECT_GT(x.x, 0.9);
    }
}

TEST(MfgVector, DirectionAlongTheEdgeHasNoPose)
{
    const MfgVectors edge = lineOf({0, 0, 0}, {100, 0, 0}, {{25, Dird(1, 0, 0)}});

    EXPECT_THAT([&] { edge.vectors[0].getPose(edge.edge); },
                ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
    EXPECT_THAT([&] { edge.vectors[0].getToolPose(edge.edge); },
                ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
}

EdgeMfgShape& addCorner(EdgeMfgShape& shape)
{
    shape.addEdge(lineOf({0, 0, 0}, {100, 0, 0}, {{80, Dird(0, 1, 1)}, {20, Dird(0, 0, 1)}}));
    shape.addEdge(lineOf({100, 0, 0}, {100, 50, 0}, {{10, Dird(0, 0, 1)}}));
    return shape;
}

TEST(EdgeMfgShape, PointsRunFromStartToEndOverEveryVector)
{
    EdgeMfgShape shape(newId(), "seam");
    addCorner(shape);
    using P = EdgeMfgShape::PathPoint;

    EXPECT_THAT(shape.getPathPointsForRender(),
                ElementsAre(P{0, 0}, P{0, 20}, P{0, 80}, P{0, 100}, P{1, 0}, P{1, 10}, P{1, 50}));
    EXPECT_THAT(shape.getPathPointsForRender({1, 20}, {0, 50}),
                ElementsAre(P{0, 50}, P{0, 80}, P{0, 100}, P{1, 0}, P{1, 10}, P{1, 20}));
    shape.closed = true;
    EXPECT_THAT(shape.getPathPointsForRender({1, 20}, {0, 10}), ElementsAre(P{1, 20}, P{1, 50}, P{0, 0}, P{0, 10}));
}

TEST(EdgeMfgShape, VectorBetweenTwoHasADirectionBetweenTheirs)
{
    EdgeMfgShape shape(newId(), "seam");
    addCorner(shape);

    const Dird middle = shape.getMfgVector({0, 50}).direction;

    EXPECT_NEAR(std::atan2(middle.y, middle.z), std::numbers::pi / 8, 1e-9); // between 0 and 45 degrees
    EXPECT_EQ(shape.getMfgVector({0, 20}).direction, Dird(0, 0, 1));
    EXPECT_EQ(shape.getMfgVector({0, 0}).direction, Dird(0, 0, 1));
    EXPECT_NEAR(shape.getMfgVector({0, 100}).direction.y, std::sqrt(0.5), 1e-12);
    EXPECT_THROW(shape.getMfgVector({2, 0}), std::out_of_range);
    EXPECT_THROW(shape.getMfgVector({-1, 0}), std::out_of_range);
}

TEST(EdgeMfgShape, UsedVectorsLieBetweenStartAndEnd)
{
    EdgeMfgShape shape(newId(), "seam");
    addCorner(shape);
    shape.setStart({0, 50});
    shape.setEnd({1, 5});

    ASSERT_EQ(shape.getUsedMfgVectors().size(), 1u);
    EXPECT_EQ(shape.getUsedMfgVectors()[0].vectors.size(), 1u);
    EXPECT_EQ(shape.getUsedMfgVectors()[0].vectors[0].parameter, 80);
    EXPECT_EQ(shape.getMfgVectorsIndex(shape.getEdge(1)), 1);
    EXPECT_EQ(shape.getMfgVectorsIndex(lineOf({0, 0, 0}, {1, 0, 0}, {}).edge), std::nullopt);
    EXPECT_THAT([&] { shape.setEnd({7, 0}); }, ThrowsMessage<std::out_of_range>(StrEq("invalid vector subscript")));
}

TEST(EdgeMfgShape, WithoutEdgesHasNoPoints)
{
    EdgeMfgShape shape(newId(), "seam");

    EXPECT_THAT(shape.getPathPointsForRender(), IsEmpty());
    EXPECT_EQ(shape.getStart(), (EdgeMfgShape::PathPoint{0, 0}));
    EXPECT_THAT(
        [&] {
            shape.addEdge(lineOf({0, 0, 0}, {1, 0, 0}, {}));
        },
        ThrowsMessage<std::invalid_argument>(StrEq("an edge of a run needs a vector")));
}

// In the station file

class ProgramFileTest : public testing::Test {
protected:
    ~ProgramFileTest() override { Layout::inst().clear(); }

    std::string saved(const std::string& name)
    {
        station::SaveStationFile(folder / name);
        return test::TempFolder::Read(folder / name);
    }

    /// A box with a program on it that has one of everything.
    std::shared_ptr<Task> addProgram()
    {
        const auto part = std::make_shared<layout::Part>(newId(), "plate");
        const auto body = part->addBody(newId(), "plate");
        body->setShape(BRepPrimAPI_MakeBox(10, 20, 30).Shape());
        body->setGeometry("memory", "brep");
        Layout::inst().addPart(part);

        auto program = std::make_shared<Task>(newId(), "weld");
        const auto wobj = std::make_shared<WObjDataItem>(newId(), "table");
        const auto tool = std::make_shared<ToolDataItem>(newId(), "torch");
        tool->setOwnerId(part->getId());
        const auto a = newTarget("a"), b = newTarget("b");
        a->setOwnerId(wobj->getId());
        b->setOwnerId(wobj->getId());
        b->setPose(Posed(Posd(1, 2, 3), rob::Rotationd(0.6, 0, 0.8, 0)));
        const auto home = std::make_shared<JointTargetDataItem>(newId(), "home");
        home->jointValues = {0, 0.5};
        for (const std::shared_ptr<DataItem>& item : std::vector<std::shared_ptr<DataItem>>{wobj, tool, a, b, home})
            program->addDataItem(item);

        const auto path = std::make_shared<Path>(newId(), "main");
        path->addInstruction(std::make_shared<MoveInst>(newId(), "MoveAbsJ home", Motion::Joint, home));
        const auto dashed = std::make_shared<MoveInst>(newId(), "MoveJ a", Motion::Joint, a, MoveLine::Dashed);
        dashed->setWObjItem(wobj);
        path->addInstruction(dashed);
        const auto listed = std::make_shared<Instruction>(newId(), "MoveL pick");
        listed->remark = "not known before it runs";
        path->addInstruction(listed);
        const auto arc = std::make_shared<MoveInst>(newId(), "MoveC a, b", Motion::Circular, b);
        arc->setCircleItem(a);
        arc->setWObjItem(wobj);
        arc->setToolItem(tool);
        arc->speed = "v100";
        arc->zone = "z10";
        arc->line = 12;
        path->addInstruction(arc);
        program->addPath(path);
        program->addPath(std::make_shared<Path>(newId(), "empty"));

        const auto seam = std::make_shared<EdgeMfgShape>(newId(), "seam");
        TopTools_IndexedMapOfShape edges;
        TopExp::MapShapes(body->getShape(), TopAbs_EDGE, edges);
        for (const int number : {3, 5}) {
            const TopoDS_Edge edge =
                TopoDS::Edge(edges(number).Oriented(number == 5 ? TopAbs_REVERSED : TopAbs_FORWARD));
            seam->addEdge(
                {edge, {{1.5, Dird(1, 2, 3)}, {4, Dird(3, 2, 1)}}, body->getId(), static_cast<unsigned>(number)});
        }
        seam->setStart({0, 1});
        seam->setEnd({1, 2});
        seam->closed = true;
        program->addMfgShape(seam);
        Layout::inst().addTask(program);
        return program;
    }

    test::TempFolder folder;
};

TEST_F(ProgramFileTest, EverythingOfAProgramComesBack)
{
    addProgram();
    const std::string first = saved("first.station.json");
    EXPECT_THAT(first, testing::HasSubstr("\"version\": 2"));
    Layout::inst().clear();

    station::LoadStationFile(folder / "first.station.json");

    ASSERT_EQ(Layout::inst().tasks.size(), 1u);
    const Task& program = *Layout::inst().tasks[0];
    ASSERT_EQ(program.getOwnPaths().size(), 2u);
    const auto& instructions = program.getOwnPaths()[0]->getInstructions();
    ASSERT_EQ(instructions.size(), 4u);
    EXPECT_TRUE(instructions[0]->isJointTargetInst());
    EXPECT_TRUE(static_cast<const MoveInst&>(*instructions[1]).isDashed());
    EXPECT_EQ(instructions[2]->remark, "not known before it runs");
    const auto& arc = static_cast<const MoveInst&>(*instructions[3]);
    EXPECT_EQ(arc.getModelType(), ModelType::CircularMoveInst);
    EXPECT_EQ(arc.getCircleItem()->getName(), "a");
    EXPECT_EQ(arc.getTargetItem()->getPose().position, Posd(1, 2, 3));
    EXPECT_EQ(arc.getToolItem()->getName(), "torch");
    EXPECT_EQ(arc.getWObjItem()->getName(), "table");
    EXPECT_EQ(arc.speed, "v100");
    EXPECT_EQ(arc.zone, "z10");
    EXPECT_EQ(arc.line, 12u);
    ASSERT_EQ(program.getMfgShapes().size(), 1u);
    const EdgeMfgShape& seam = *program.getMfgShapes()[0];
    EXPECT_TRUE(seam.closed);
    ASSERT_EQ(seam.getMfgVectors().size(), 2u);
    EXPECT_EQ(seam.getMfgVectors()[1].edge.Orientation(), TopAbs_REVERSED);
    EXPECT_EQ(seam.getMfgVectors()[1].vectors[0].parameter, 4); // a reversed edge is run through from its far end
    EXPECT_EQ(seam.getStart(), (EdgeMfgShape::PathPoint{0, 1}));
    EXPECT_FALSE(seam.getEdge(0).IsNull());
    EXPECT_EQ(saved("second.station.json"), first);
}

TEST_F(ProgramFileTest, RunsAndToolsGoWithTheBodiesThatTheyLieOn)
{
    const auto program = addProgram();
    const unsigned seam = program->getMfgShapes()[0]->getId();
    Layout::inst().remove(Layout::inst().parts[0]->getId());

    EXPECT_THAT(program->getMfgShapes(), IsEmpty());
    EXPECT_EQ(program->getOwnPaths()[0]->getMoveInstructions().back()->getToolItem(), nullptr);
    EXPECT_EQ(sdf::SdfManager::inst().find(seam), nullptr);
    EXPECT_NO_THROW(saved("after.station.json"));
    EXPECT_NO_THROW(station::LoadStationFile(folder / "after.station.json"));
}

TEST_F(ProgramFileTest, StationWithoutProgramsKeepsTheFirstFormat)
{
    const auto program = std::make_shared<Task>(newId(), "weld");
    program->addDataItem(std::make_shared<WObjDataItem>(newId(), "table"));
    Layout::inst().addTask(program);

    EXPECT_THAT(saved("old.station.json"), testing::HasSubstr("\"version\": 1"));
}

/// Seconds of the processor that a path of so many instructions takes to be read.
double secondsToRead(int instructions)
{
    std::string text = R"({"format":"vrk-station","version":2,"tasks":[{"id":1,"name":"t","paths":[{"id":2,"name":"p",
        "instructions":[)";
    for (int i = 0; i < instructions; ++i)
        text += (i == 0 ? "{\"id\":" : ",{\"id\":") + std::to_string(3 + i) + ",\"name\":\"\"}";
    text += "]}]}]}";
    layout::StationContent content;
    const double seconds = test::threadSecondsOf(
        [&] { content = station::parseStation(text, "/cell.station.json", station::GeometryUse::Skip); });
    EXPECT_EQ(content.tasks.at(0)->getOwnPaths().at(0)->getInstructions().size(),
              static_cast<std::size_t>(instructions));
    return seconds;
}

TEST_F(ProgramFileTest, TimeToReadGrowsWithTheLengthOfAProgram)
{
    const double small = secondsToRead(25000);
    const double large = secondsToRead(100000);

    EXPECT_LT(large, 8 * small) << small << " s and " << large << " s"; // four times as long
}

struct ProgramFault {
    const char* name;
    const char* from; // replaced in the text of a good file
    const char* to;
    const char* expected;
};

class ProgramFileFault : public ProgramFileTest, public testing::WithParamInterface<ProgramFault> {};

TEST_P(ProgramFileFault, IsRefusedWithItsPlace)
{
    std::string text = R"({"format": "vrk-station", "version": 2, "tasks": [{"id": 1, "name": "t", "data": [
      {"type": "work_object", "id": 2, "name": "w", "pose": [0,0,0,1,0,0,0], "fixed": true,
       "object_frame": {"id": 3, "name": "o", "pose": [0,0,0,1,0,0,0]}},
      {"type": "robot_target", "id": 4, "name": "p", "owner": 2, "pose": [0,0,0,1,0,0,0]}],
      "paths": [{"id": 5, "name": "main", "instructions": [{"id": 6, "name": "call"},
        {"id": 7, "name": "m", "motion": "linear", "target": 4, "work_object": 2, "line": 3}]}]}]})";
    const std::filesystem::path good = folder.write("good.station.json", text);
    ASSERT_NO_THROW(station::LoadStationFile(good));
    const std::size_t at = text.find(GetParam().from);
    ASSERT_NE(at, std::string::npos);
    text.replace(at, std::string(GetParam().from).size(), GetParam().to);
    const std::filesystem::path file = folder.write("cell.station.json", text);

    EXPECT_THAT([&] { station::LoadStationFile(file); },
                ThrowsMessage<station::StationFileError>(StrEq(file.string() + ": " + GetParam().expected)));
    EXPECT_EQ(Layout::inst().tasks.size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(
    Table, ProgramFileFault,
    testing::Values(
        ProgramFault{"OldVersion", "\"version\": 2", "\"version\": 1", "/tasks/0/paths: expected no such key"},
        ProgramFault{"NewVersion", "\"version\": 2", "\"version\": 6", "/version: expected a version from 1 to 5"},
        ProgramFault{"TargetThatIsNowhere", "\"target\": 4", "\"target\": 9",
                     "/tasks/0/paths/0/instructions/1/target: expected the id of a target of the task, not 9"},
        ProgramFault{"TargetThatIsNone", "\"target\": 4", "\"target\": 2",
                     "/tasks/0/paths/0/instructions/1/target: expected the id of a target of the task, not 2"},
        ProgramFault{"NoWorkObject", "\"work_object\": 2, ", "",
                     "/tasks/0/paths/0/instructions/1: expected the key 'work_object'"},
        ProgramFault{
            "WorkObjectThatIsNone", "\"work_object\": 2", "\"work_object\": 4",
            "/tasks/0/paths/0/instructions/1/work_object: expected the id of a work object of the task, not 4"},
        ProgramFault{"OtherMotion", "\"linear\"", "\"spline\"",
                     "/tasks/0/paths/0/instructions/1/motion: expected \"linear\", \"circular\" or \"joint\""},
        ProgramFault{"ViaOfALine", "\"line\": 3", "\"via\": 4",
                     "/tasks/0/paths/0/instructions/1/via: expected no via point of a move that is not circular"},
        ProgramFault{"LineZero", "\"line\": 3", "\"line\": 0",
                     "/tasks/0/paths/0/instructions/1/line: expected a number from 1 to 2147483647"},
        ProgramFault{"IdTwice", "\"id\": 7", "\"id\": 6",
                     "/tasks/0/paths/0/instructions/1/id: expected an id that nothing else has, not 6"},
        ProgramFault{"OwnerOfATarget", "\"owner\": 2", "\"owner\": 1",
                     "/tasks/0/data/1/owner: expected the id of a work object that stands before, not 1"}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vrk::task
