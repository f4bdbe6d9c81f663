#include "ProgramTexts.h"

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

std::string position(const std::string& index, const std::string& numbers, const std::string& frames = "UF : 0, UT : 1")
{
    return "P[" + index + "]{\n   GP1:\n\t" + frames + ",\t\tCONFIG : 'N U T, 0, 0, 0',\n\t" + numbers + "\n};\n";
}

const std::string flat = "X = 1.5 mm, Y = -2 mm, Z = .25 mm,\n W = 0 deg, P = 0.000 deg, R = 0 deg";

Program programOf(const std::string& lines, const std::string& positions)
{
    return readLs("/PROG  WELD-1\n/ATTR\nOWNER = X;\n/MN\n" + lines + "/POS\n" + positions + "/END\n");
}

TEST(LsReader, MovesAreReadWithTheirPositions)
{
    const Program program = programOf(
        "   1:  UTOOL_NUM=1 ;\n   2:J P[1] 100% CNT100    ;\n   3:L P[2:above] 500mm/sec FINE ;\n"
        "   4:C P[1]    \n    :  P[2] 100mm/sec CNT50    ;\n   5:  CALL SUB ;\n   6:  ! remark ;\n",
        position("1", flat) + position("2:\"above\"", "X = 9 mm, Y = 8 mm, Z = 7 mm, W = 0 deg, P = 0 deg, R = 0 deg"));

    const std::vector<Step> moves = movesOf(program);
    ASSERT_EQ(moves.size(), 3u);
    EXPECT_EQ(program.name, "WELD-1");
    EXPECT_EQ(targetOf(program, 0).pose.position, rob::Posd(1.5, -2, 0.25));
    EXPECT_EQ(moves[0].drawn, MoveLine::Dashed);
    EXPECT_EQ(moves[0].speed, "100%");
    EXPECT_EQ(moves[0].zone, "CNT100");
    EXPECT_EQ(moves[0].line, 6u);
    EXPECT_EQ(moves[1].speed, "500mm/sec");
    EXPECT_EQ(moves[1].zone, "FINE");
    EXPECT_EQ(moves[1].motion, Motion::Linear);
    EXPECT_EQ(targetOf(program, 1).pose.position, rob::Posd(9, 8, 7));
    EXPECT_EQ(moves[2].motion, Motion::Circular);
    EXPECT_EQ(program.targets.at(static_cast<std::size_t>(moves[2].via)).name, "P[1]");
    EXPECT_EQ(moves[2].text, "C P[1] P[2] 100mm/sec CNT50");
    EXPECT_EQ(program.tools.at(static_cast<std::size_t>(moves[0].tool)).name, "UTOOL 1");
    EXPECT_EQ(program.routines.at(0).steps.size(), 5u) << "remarks are none";
}

TEST(LsReader, AnglesTurnAboutTheFixedXThenYThenZ)
{
    // W about x, P about y, R about z of the frame that stays: Rz(30) Ry(60) Rx(90), worked out by hand.
    const double h = 0.5, r = std::sqrt(3.0) / 2;
    const Program program = programOf(
        "1:L P[1] 1mm/sec FINE ;\n", position("1", "X = 0 mm, Y = 0 mm, Z = 0 mm, W = 90 deg, P = 60 deg, R = 30 deg"));

    expectRows(targetOf(program, 0).pose.rotation(), {{{r * h, r * r, h}, {h * h, h * r, -r}, {-r, h, 0}}});
}

TEST(LsReader, WhatIsKnownOnlyWhenItRunsIsListedAndNotPlaced)
{
    const Program program = programOf(
        "1:L PR[1] 1mm/sec FINE ;\n2:L P[R[1]] 1mm/sec FINE ;\n3:L P[1] 1mm/sec FINE Offset,PR[2] ;\n"
        "4:L P[1] 1mm/sec FINE INC ;\n5:L P[7] 1mm/sec FINE ;\n6:L P[2] 1mm/sec FINE ;\n7:J P[3] 20% FINE ;\n",
        position("1", flat) + position("2", "X = ********  mm, Y = 0 mm, Z = 0 mm, W = 0 deg, P = 0 deg, R = 0 deg") +
            position("3", "J1= 90.000 deg, J2= 0 deg, J3= 0 deg,\nJ4= 0 deg, J5= 0 deg, J6= -45 deg"));

    using enum Placing;
    EXPECT_THAT(placingsOf(program), ElementsAre(RunTime, RunTime, RunTime, RunTime, Missing, Faulty, Placed));
    EXPECT_NEAR(targetOf(program, 6).joints.at(5), -std::acos(-1.0) / 4, 1e-12);
    EXPECT_EQ(movesOf(program)[6].drawn, MoveLine::Solid);
    EXPECT_EQ(program.declaredWithoutPlace, 1u);
    ASSERT_EQ(program.notes.size(), 1u);
    EXPECT_THAT(program.notes[0].text, HasSubstr("'P[2]'"));
}

TEST(LsReader, FramesComeFromThePositionOrTheLineInForce)
{
    const Program program = programOf("1:  UFRAME_NUM=4 ;\n2:L P[1] 1mm/sec FINE ;\n3:L P[2] 1mm/sec FINE ;\n"
                                      "4:  UFRAME_NUM=R[1] ;\n5:L P[2] 1mm/sec FINE ;\n",
                                      position("1", flat, "UF : 2, UT : 1") + position("2", flat, "UF : F, UT : F"));

    const std::vector<Step> moves = movesOf(program);
    EXPECT_EQ(program.workObjects.at(static_cast<std::size_t>(moves.at(0).workObject)).name, "UFRAME 2");
    EXPECT_EQ(program.workObjects.at(static_cast<std::size_t>(moves.at(1).workObject)).name, "UFRAME 4");
    EXPECT_EQ(moves.at(2).placing, Placing::RunTime);
    EXPECT_EQ(program.notes.size(), 2u) << "the numbers of frames stand in no such file";
}

TEST(LsReader, SecondGroupOfAPositionIsLeftAlone)
{
    const Program program = programOf("1:L P[1] 1mm/sec FINE ;\n", "P[1]{\n GP1:\n UF : 0, UT : 1,\n" + flat +
                                                                       "\n GP2:\n UF : 0, UT : 1,\n J1= 5 deg\n};\n");

    EXPECT_TRUE(targetOf(program, 0).joints.empty());
}

struct Damage {
    const char* name;
    const char* text;
    const char* expected;
};

class LsReaderDamage : public testing::TestWithParam<Damage> {};

TEST_P(LsReaderDamage, IsToldWithItsLine)
{
    EXPECT_THAT([] { readLs(GetParam().text); }, ThrowsMessage<ProgramFault>(StrEq(GetParam().expected)));
}

INSTANTIATE_TEST_SUITE_P(
    Table, LsReaderDamage,
    testing::Values(Damage{"Empty", "", "line 1: expected /PROG"},
                    Damage{"Foreign", "\nMODULE m", "line 2: expected /PROG"},
                    Damage{"Cut", "/PROG A\n/MN\n1: ;\n", "line 3: the file ends before /END"},
                    Damage{"LineWithoutNumber", "/PROG A\n/MN\nL P[1]\n/END",
                           "line 3: expected the number of a line and a colon"},
                    Damage{"OpenBlock", "/PROG A\n/POS\nP[1]{\n GP1:\n/END", "line 3: the block of P[1] is not closed"},
                    Damage{"OtherBlock", "/PROG A\n/POS\nQ{\n};\n/END", "line 3: 'Q{' where a position is expected"},
                    Damage{"NumberOfAPositionThatNoneHas", "/PROG A\n/POS\nP[3000000000]{\n};\n/END",
                           "line 3: a position without its number"},
                    Damage{"CircleOfOne", "/PROG A\n/MN\n1:C P[1] 5mm/sec FINE ;\n/END",
                           "line 3: a circular move without its second position"}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vrk::program
