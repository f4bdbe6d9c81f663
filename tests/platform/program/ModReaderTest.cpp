#include "ProgramTexts.h"

#include "support/ProcessorTime.h"

namespace vrk::program {
namespace {

using task::Motion;
using task::MoveLine;
using test::expectRows;
using test::movesOf;
using test::placingsOf;
using test::targetOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StrEq;
using testing::ThrowsMessage;

const std::string rest = ",[0,0,0,0],[9E9,9E9,9E9,9E9,9E9,9E9]]";

Program moduleOf(const std::string& declarations, const std::string& statements)
{
    return readMod("MODULE m\n" + declarations + "\nPROC main()\n" + statements + "\nENDPROC\nENDMODULE\n");
}

std::string p(const std::string& name, const std::string& numbers)
{
    return "CONST robtarget " + name + ":=[" + numbers + rest + ";\n";
}

TEST(ModReader, MovesAreReadWithAllThatPlacesThem)
{
    const Program program =
        moduleOf("TASK PERS tooldata torch:=[TRUE,[[1,2,3],[1,0,0,0]],[1,[0,0,1],[1,0,0,0],0,0,0]];\n"
                 "PERS wobjdata table:=[FALSE,TRUE,\"\",[[100,0,0],[1,0,0,0]],[[0,0,5],[0,0,0,1]]];\n" +
                     p("p10", "[10,20,30],[0,1,0,0]") + p("p20", "[40,50,60],[1,0,0,0]") +
                     "CONST jointtarget home:=[[0,90,-90,0,45,180],[9E9,9E9,9E9,9E9,9E9,9E9]];\n",
                 "MoveAbsJ home\\NoEOffs, v1000, fine, torch;\nMoveJ p10, v1000, z50, torch\\WObj:=table;\n"
                 "MoveL p20, v100, fine, torch \\WObj := table;\nMoveC p10, p20, vArc, z1, tool0;");

    const std::vector<Step> moves = movesOf(program);
    ASSERT_EQ(moves.size(), 4u);
    EXPECT_NEAR(targetOf(program, 0).joints[1], std::acos(-1.0) / 2, 1e-12);
    EXPECT_EQ(moves[0].motion, Motion::Joint);
    EXPECT_EQ(moves[0].drawn, MoveLine::Solid);
    EXPECT_EQ(targetOf(program, 1).pose.position, rob::Posd(10, 20, 30));
    EXPECT_EQ(targetOf(program, 1).pose.orientation, rob::Orientd(0, 1, 0, 0));
    EXPECT_EQ(moves[1].drawn, MoveLine::Dashed);
    EXPECT_EQ(moves[1].speed, "v1000");
    EXPECT_EQ(moves[1].zone, "z50");
    EXPECT_EQ(program.tools.at(static_cast<std::size_t>(moves[1].tool)).pose.position, rob::Posd(1, 2, 3));
    const WorkObject& table = program.workObjects.at(static_cast<std::size_t>(moves[2].workObject));
    EXPECT_EQ(table.name, "table");
    EXPECT_EQ(table.user.position, rob::Posd(100, 0, 0));
    EXPECT_EQ(table.object.position, rob::Posd(0, 0, 5));
    EXPECT_EQ(moves[3].motion, Motion::Circular);
    EXPECT_EQ(program.targets.at(static_cast<std::size_t>(moves[3].via)).name, "p10");
    EXPECT_EQ(moves[3].speed, "vArc");
    EXPECT_EQ(moves[3].workObject, 0);
    EXPECT_EQ(moves[3].line, 12u);
}

TEST(ModReader, ArraysOffsetsAndBracketsOfNumbersArePlaced)
{
    const Program program = moduleOf("CONST num up:=2*(20+5);\nCONST robtarget row{2}:=[[[1,0,0],[1,0,0,0]" + rest +
                                         ",[[2,0,0],[0,0,0,1]" + rest + "];\n",
                                     "MoveL row{2}, v1, fine, tool0;\nMoveL Offs(row{1},0,-5,up), v1, fine, tool0;\n"
                                     "MoveL RelTool(row{2},10,0,0\\Rz:=90), v1, fine, tool0;\n"
                                     "MoveL [[7,8,9],[1,0,0,0]" +
                                         rest + ", v1, fine, tool0;\nMoveL row{3}, v1, fine, tool0;");

    EXPECT_EQ(targetOf(program, 0).pose.position.x, 2);
    EXPECT_EQ(targetOf(program, 1).pose.position, rob::Posd(1, -5, 50));
    const Target& relative = targetOf(program, 2); // the target is turned by half a circle about z
    EXPECT_NEAR(relative.pose.position.x, -8, 1e-12);
    expectRows(relative.pose.rotation(), {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}});
    EXPECT_EQ(targetOf(program, 3).pose.position, rob::Posd(7, 8, 9));
    EXPECT_EQ(movesOf(program)[4].placing, Placing::Missing);
}

TEST(ModReader, ElementsOfAnArrayWithNoneAreMissing)
{
    const Program program = moduleOf("CONST robtarget row{0}:=[];", "MoveL row{1}, v1, fine, tool0;\n"
                                                                    "MoveL row, v1, fine, tool0;\n"
                                                                    "MoveL Offs(row{1},1,2,3), v1, fine, tool0;");

    EXPECT_THAT(placingsOf(program), ElementsAre(Placing::Missing, Placing::Missing, Placing::RunTime));
}

TEST(ModReader, AnglesAreTakenInTheirOrder)
{
    // Rz(30) Ry(60) Rx(90) and Rx(30) Ry(60) Rz(90), worked out by hand.
    const double h = 0.5, r = std::sqrt(3.0) / 2;
    const Program program =
        moduleOf("CONST robtarget a:=[[0,0,0],OrientZYX(30,60,90)" + rest + ";\nCONST robtarget b:=[[0,0,0],[1,0,0,0]" +
                     rest + ";",
                 "MoveL a, v1, fine, tool0;\nMoveL RelTool(b,0,0,0\\Rx:=30\\Ry:=60\\Rz:=90), v1, fine, tool0;");

    expectRows(targetOf(program, 0).pose.rotation(), {{{r * h, r * r, h}, {h * h, h * r, -r}, {-r, h, 0}}});
    expectRows(targetOf(program, 1).pose.rotation(), {{{0, -h, r}, {r, -h * r, -h * h}, {h, r * r, r * h}}});
}

TEST(ModReader, WhatIsKnownOnlyWhenItRunsIsListedAndNotPlaced)
{
    const Program program =
        readMod("MODULE m\n" + p("fixed", "[1,2,3],[1,0,0,0]") +
                "VAR robtarget none;\nVAR robtarget list{5};\n"
                "PERS robtarget taught:=[[5,0,0],[1,0,0,0]" +
                rest + ";\nPERS robtarget kept:=[[6,0,0],[1,0,0,0]" + rest +
                ";\n"
                "PROC main(robtarget fixed, \\switch on)\nVAR num i:=0;\ntaught := CRobT();\n"
                "MoveL fixed, v1, fine, tool0;\nMoveL none, v1, fine, tool0;\nMoveL list{2}, v1, fine, tool0;\n"
                "MoveL taught, v1, fine, tool0;\nMoveL CRobT(), v1, fine, tool0;\nMoveL Offs(kept,i*2,0,far), v1, "
                "fine, tool0;\n"
                "MoveL kept, v1, fine, tool0;\nMoveL nowhere, v1, fine, tool0;\nENDPROC\nENDMODULE");

    EXPECT_THAT(placingsOf(program),
                ElementsAre(Placing::RunTime, Placing::RunTime, Placing::RunTime, Placing::RunTime, Placing::RunTime,
                            Placing::RunTime, Placing::Placed, Placing::Missing));
    EXPECT_EQ(program.targets.size(), 3u) << "what has numbers is a target, whether a move can use it or not";
    EXPECT_EQ(program.declaredWithoutPlace, 2u);
}

TEST(ModReader, WorkObjectThatIsHandedInLeavesTheMoveUnplaced)
{
    const Program program = readMod("MODULE m\n" + p("a", "[1,2,3],[1,0,0,0]") +
                                    "PROC go(PERS wobjdata w)\nMoveL a, v1, fine, tool0\\WObj:=w;\n"
                                    "MoveL a, v1, fine, tool0\\WObj:=elsewhere;\nENDPROC\nENDMODULE");

    EXPECT_THAT(placingsOf(program), ElementsAre(Placing::RunTime, Placing::Placed));
    EXPECT_FALSE(program.workObjects.at(1).isTold);
    ASSERT_EQ(program.notes.size(), 1u);
    EXPECT_THAT(program.notes[0].text, HasSubstr("'elsewhere'"));
}

TEST(ModReader, LoopsConditionsAndCallsAreListed)
{
    const Program program =
        moduleOf(p("a", "[1,2,3],[1,0,0,0]"), "again:\nIF di1=1 THEN\n  weld\\fast, 3;\nELSE\n  Stop;\nENDIF\n"
                                              "FOR i FROM 1 TO 3 DO\n  MoveL a, v1, fine, tool0;\nENDFOR\n"
                                              "IF di2=1 MoveL a, v1, fine, tool0;\nIF done GOTO again;\n"
                                              "TEST i\nCASE 1,2:\n x:=[1,2];\nDEFAULT:\nENDTEST\nERROR\nRETURN ;");

    std::vector<std::string> texts;
    for (const Step& step : program.routines.at(0).steps)
        texts.push_back(step.text);
    EXPECT_THAT(texts, ElementsAre("again", "IF di1=1 THEN", "weld\\fast, 3", "ELSE", "Stop", "ENDIF",
                                   "FOR i FROM 1 TO 3 DO", "MoveL a, v1, fine, tool0", "ENDFOR", "IF di2=1",
                                   "MoveL a, v1, fine, tool0", "IF done GOTO again", "TEST i", "CASE 1,2:", "x:=[1,2]",
                                   "DEFAULT:", "ENDTEST", "ERROR", "RETURN"));
    EXPECT_THAT(placingsOf(program), ElementsAre(Placing::Placed, Placing::Placed));
}

TEST(ModReader, WeldingAndTriggeredMovesHaveTheirToolLast)
{
    const Program program = moduleOf(p("a", "[1,2,3],[1,0,0,0]") + p("b", "[4,2,3],[1,0,0,0]"),
                                     "ArcL a, v10, seam1, weld1\\Weave:=w1, z5, torch;\n"
                                     "ArcC a, b, v10, seam1, weld1, fine, torch;\nTriggL a, v20, t1, z10, torch;\n"
                                     "MoveLDO a, v30, z20, torch, do1, 1;");

    const std::vector<Step> moves = movesOf(program);
    ASSERT_EQ(moves.size(), 4u);
    for (const Step& move : moves)
        EXPECT_EQ(program.tools.at(static_cast<std::size_t>(move.tool)).name, "torch") << move.text;
    EXPECT_THAT((std::vector{moves[0].zone, moves[1].zone, moves[2].zone, moves[3].zone}),
                ElementsAre("z5", "fine", "z10", "z20"));
    EXPECT_EQ(moves[1].motion, Motion::Circular);
}

TEST(ModReader, NumbersThatAreNoPlaceAreNotedAndNothingElseIsLost)
{
    const Program program =
        moduleOf(p("zero", "[1,2,3],[0,0,0,0]") + p("far", "[1E999,0,0],[1,0,0,0]") + p("good", "[1,2,3],[2,0,0,0]"),
                 "MoveL zero, v1, fine, tool0;\nMoveL far, v1, fine, tool0;\nMoveL good, v1, fine, tool0;");

    EXPECT_THAT(placingsOf(program), ElementsAre(Placing::Faulty, Placing::Faulty, Placing::Placed));
    EXPECT_EQ(targetOf(program, 2).pose.orientation, rob::Orientd(1, 0, 0, 0)) << "of length 1";
    ASSERT_EQ(program.notes.size(), 2u);
    EXPECT_EQ(program.notes[0].line, 2u);
    EXPECT_THAT(program.notes[0].text, HasSubstr("'zero': numbers that are no place"));
}

TEST(ModReader, TextsOfOtherAlphabetsBecomeUtf8)
{
    const Program program = readMod("\xEF\xBB\xBF%%%\n  VERSION:1\n%%%\nMODULE m(SYSMODULE)\nPROC main()\n! Gr\xFC\xDF"
                                    "e\n  TPWrite \"Gr\xFC\xDF"
                                    "e\";\nENDPROC\nENDMODULE");

    EXPECT_EQ(program.routines.at(0).steps.at(0).text, "TPWrite \"Gr\xC3\xBC\xC3\x9F"
                                                       "e\"");
}

struct Damage {
    const char* name;
    std::string text;
    const char* expected;
};

class ModReaderDamage : public testing::TestWithParam<Damage> {};

TEST_P(ModReaderDamage, IsToldWithItsLine)
{
    EXPECT_THAT([] { readMod(GetParam().text); }, ThrowsMessage<ProgramFault>(StrEq(GetParam().expected)));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ModReaderDamage,
    testing::Values(
        Damage{"Empty", "", "line 1: expected MODULE"}, Damage{"Foreign", "\n\nsolid cube", "line 3: expected MODULE"},
        Damage{"Zero", std::string("MODULE m\n\0", 10), "line 2: not a text"},
        Damage{"CutInTheModule", "MODULE m\n", "line 2: the file ends before ENDMODULE"},
        Damage{"CutInARoutine", "MODULE m\nPROC a()\nStop;\n", "line 4: 'a' of line 2 has no ENDPROC"},
        Damage{"RoutineInARoutine", "MODULE m\nPROC a()\nPROC b()\nENDPROC\nENDMODULE",
               "line 3: 'a' of line 2 has no ENDPROC"},
        Damage{"StatementWithoutEnd", "MODULE m\nPROC a()\nStop\nENDPROC\nENDMODULE",
               "line 3: 'Stop': a statement without its semicolon"},
        Damage{"ConditionWithoutEnd", "MODULE m\nPROC a()\nIF x=1\nENDPROC\nENDMODULE", "line 3: 'IF' without 'THEN'"},
        Damage{"TextWithoutEnd", "MODULE m\nPROC a()\nTPWrite \"a;\nENDPROC", "line 3: a text without its end"},
        Damage{"BracketsThatDoNotMatch", "MODULE m\nCONST num a:=(1+2;\nENDMODULE",
               "line 2: '(': brackets that do not match"},
        Damage{"TargetOfAnotherShape", "MODULE m\nCONST robtarget a:=[1,2,3];\nENDMODULE",
               "line 2: 'a': expected [[x, y, z], [q1, q2, q3, q4], ...]"},
        Damage{"MoveWithoutTool", "MODULE m\nPROC a()\nMoveL p, v1, fine;\nENDPROC\nENDMODULE",
               "line 3: 'MoveL' needs a target, a speed, a zone and a tool"},
        Damage{"WordOutside", "MODULE m\nMoveL p;\nENDMODULE",
               "line 2: 'MoveL' where a declaration or a routine is expected"},
        Damage{"NestedTooDeeply",
               "MODULE m\nCONST num a:=" + std::string(200, '(') + "1" + std::string(200, ')') + ";\n",
               "line 2: brackets nested too deeply"}),
    [](const auto& info) { return std::string(info.param.name); });

/// The seconds of the processor that a program of as many targets and moves takes.
double secondsToRead(int moves)
{
    std::string declarations, statements;
    for (int i = 0; i < moves; ++i) {
        const std::string name = "p" + std::to_string(i);
        declarations += p(name, "[" + std::to_string(i) + ".5,20.25,30.125],[0.7071,0,0.7071,0]");
        statements += "MoveL " + name + ",v1000,z50,torch\\WObj:=table;\n";
    }
    Program program;
    const double seconds = test::threadSecondsOf([&] { program = moduleOf(declarations, statements); });

    EXPECT_EQ(movesOf(program).size(), static_cast<std::size_t>(moves));
    EXPECT_EQ(targetOf(program, static_cast<std::size_t>(moves) - 1).pose.position.x, moves - 0.5);
    return seconds;
}

TEST(ModReader, LongProgramIsReadInTime)
{
    const double tenth = secondsToRead(10'000);
    const double whole = secondsToRead(100'000); // of 200,000 lines
    RecordProperty("seconds", std::to_string(whole));
    EXPECT_LT(whole, 30 * tenth) << "the time grows faster than the program";
#ifdef NDEBUG
    EXPECT_LT(whole, 2.0); // builds for debugging may take what they need
#endif
}

} // namespace
} // namespace vrk::program
