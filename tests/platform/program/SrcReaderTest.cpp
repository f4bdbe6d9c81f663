#include "ProgramTexts.h"

#include <cmath>

namespace vrk::program {
namespace {

using task::Motion;
using task::MoveLine;
using test::expectRows;
using test::movesOf;
using test::placingsOf;
using test::targetOf;
using testing::ElementsAre;
using testing::StrEq;
using testing::ThrowsMessage;

Program routineOf(const std::string& lines, const std::string& data = {})
{
    return readSrc("&ACCESS RVP\nDEF weld( )\n" + lines + "\nEND\n",
                   data.empty() ? "" : "&REL 1\nDEFDAT weld PUBLIC\n" + data + "\nENDDAT\n");
}

TEST(SrcReader, MovesAreReadWithTheDataThatBelongsToThem)
{
    const Program program = routineOf(
        ";FOLD PTP P1 Vel=50 % PDAT1 Tool[1] Base[2]\nPDAT_ACT=PPDAT1\nFDAT_ACT=FP1\nBAS(#PTP_PARAMS,50)\nPTP XP1 "
        "C_PTP\n"
        "BAS(#CP_PARAMS,0.25)\nLIN XP2 C_DIS ; to the part\nCIRC XH1, XP1\nLIN XP1:{X 0,Y 0,Z 10,A 0,B 0,C 0}",
        "DECL E6POS XP1={X 1.5,Y -2,Z 3,A 0,B 0,C 0,S 2,T 35,E1 0.0}\nDECL POS XP2={X 10,Y 0,Z 0,A 90,B 0,C 0}\n"
        "DECL E6POS XH1={X 5,Y 5,Z 0,A 0,B 0,C 0}\n"
        "DECL FDAT FP1={TOOL_NO 1,BASE_NO 2,IPO_FRAME #BASE,POINT2[] \"XP1\",TQ_STATE FALSE}\n"
        "DECL PDAT PPDAT1={VEL 100.0,ACC 100.0}");

    const std::vector<Step> moves = movesOf(program);
    ASSERT_EQ(moves.size(), 4u);
    EXPECT_EQ(targetOf(program, 0).pose.position, rob::Posd(1.5, -2, 3));
    EXPECT_EQ(moves[0].drawn, MoveLine::Dashed);
    EXPECT_EQ(moves[0].zone, "C_PTP");
    EXPECT_EQ(moves[0].speed, "50 %");
    EXPECT_EQ(moves[1].motion, Motion::Linear);
    EXPECT_EQ(moves[1].speed, "0.25 m/s");
    EXPECT_EQ(moves[2].motion, Motion::Circular);
    EXPECT_EQ(program.targets.at(static_cast<std::size_t>(moves[2].via)).name, "XH1");
    EXPECT_EQ(targetOf(program, 3).pose.position, rob::Posd(1.5, -2, 13));
    const WorkObject& base = program.workObjects.at(static_cast<std::size_t>(moves[0].workObject));
    EXPECT_EQ(base.name, "BASE_DATA[2]");
    EXPECT_FALSE(base.isTold);
    EXPECT_EQ(program.tools.at(static_cast<std::size_t>(moves[0].tool)).name, "TOOL_DATA[1]");
    EXPECT_EQ(program.name, "weld");
}

TEST(SrcReader, FramesOfTheTextPlaceTheMovesBehindThem)
{
    const Program program =
        routineOf("DECL POS here\nBASE_DATA[3]={X 100,Y 0,Z 0,A 0,B 90,C 0}\n$BASE=BASE_DATA[3]\n"
                  "$TOOL={X 0,Y 0,Z 200,A 0,B 0,C 0}\n$VEL.CP=0.2\nhere={X 1,Y 2,Z 3,A 0,B 0,C 0}\n"
                  "LIN here\n$BASE=$NULLFRAME\nLIN here\n$BASE=found\nSLIN here WITH $BASE=$NULLFRAME\n"
                  "$BASE=BASE_DATA[i]\nLIN here");

    const std::vector<Step> moves = movesOf(program);
    const WorkObject& base = program.workObjects.at(static_cast<std::size_t>(moves.at(0).workObject));
    EXPECT_TRUE(base.isTold);
    EXPECT_EQ(base.user.position, rob::Posd(100, 0, 0));
    expectRows(base.user.rotation(), {{{0, 0, 1}, {0, 1, 0}, {-1, 0, 0}}});
    EXPECT_EQ(program.tools.at(static_cast<std::size_t>(moves[0].tool)).pose.position, rob::Posd(0, 0, 200));
    EXPECT_EQ(moves[0].speed, "$VEL.CP=0.2");
    EXPECT_EQ(moves[1].workObject, 0);
    EXPECT_EQ(moves[2].workObject, 0);
    EXPECT_THAT(placingsOf(program), ElementsAre(Placing::Placed, Placing::Placed, Placing::Placed, Placing::RunTime));
}

TEST(SrcReader, AnglesTurnAboutZThenYThenX)
{
    // Rz(30) Ry(60) Rx(90), worked out by hand.
    const double h = 0.5, r = std::sqrt(3.0) / 2;
    const Program program = routineOf("LIN {X 0,Y 0,Z 0,A 30,B 60,C 90}");

    expectRows(targetOf(program, 0).pose.rotation(), {{{r * h, r * r, h}, {h * h, h * r, -r}, {-r, h, 0}}});
}

TEST(SrcReader, WhatIsKnownOnlyWhenItRunsIsListedAndNotPlaced)
{
    const Program program =
        routineOf("twice={X 1,Y 2,Z 3,A 0,B 0,C 0}\ntwice.X=5\nLIN twice\nLIN {X 100}\nPTP {A3 45}\n"
                  "LIN_REL {X 10,Y 0,Z 0,A 0,B 0,C 0}\nLIN P[i]\nPTP $POS_ACT : {X 1,Y 0,Z 0,A 0,B 0,C 0}\n"
                  "LIN {X 0,Y 0,Z hoehe,A 0,B 0,C 0}\nPTP XHOME\nLIN computed()\n"
                  "PTP {A1 0,A2 -90,A3 90,A4 0,A5 90,A6 0}");

    using enum Placing;
    EXPECT_THAT(placingsOf(program),
                ElementsAre(RunTime, RunTime, RunTime, RunTime, RunTime, RunTime, RunTime, Missing, RunTime, Placed));
    EXPECT_NEAR(targetOf(program, 9).joints.at(1), -std::acos(-1.0) / 2, 1e-12);
}

TEST(SrcReader, SplineMovesTakeTheirFramesFromTheLine)
{
    const Program program =
        routineOf("SPTP XP1 WITH $VEL_AXIS[1]=SVEL_JOINT(100.0), $TOOL=STOOL2(FP1), $BASE=SBASE(FP1.BASE_NO) C_Spl\n"
                  "SLIN XP1 WITH $VEL=SVEL_CP(0.5, , LCPDAT1), $BASE=SBASE(FP1.BASE_NO)\nSPLINE\nSPL XP1\nENDSPLINE",
                  "DECL E6POS XP1={X 1,Y 2,Z 3,A 0,B 0,C 0}\nDECL FDAT FP1={TOOL_NO 4,BASE_NO 0}");

    const std::vector<Step> moves = movesOf(program);
    ASSERT_EQ(moves.size(), 3u);
    EXPECT_EQ(moves[0].speed, "SVEL_JOINT(100.0)");
    EXPECT_EQ(program.tools.at(static_cast<std::size_t>(moves[0].tool)).name, "TOOL_DATA[4]");
    EXPECT_EQ(moves[0].workObject, 0);
    EXPECT_EQ(moves[1].speed, "SVEL_CP(0.5, , LCPDAT1)");
    EXPECT_EQ(moves[2].drawn, MoveLine::Dashed);
}

TEST(SrcReader, OtherStatementsAreListed)
{
    const Program program =
        routineOf("DECL INT i\nFOR i=1 TO 3\nweld_seam(i)\nENDFOR\nIF $IN[1]==TRUE THEN\nHALT\nENDIF");

    std::vector<std::string> texts;
    for (const Step& step : program.routines.at(0).steps)
        texts.push_back(step.text);
    EXPECT_THAT(texts, ElementsAre("FOR i=1 TO 3", "weld_seam(i)", "ENDFOR", "IF $IN[1]==TRUE THEN", "HALT", "ENDIF"));
}

struct Damage {
    const char* name;
    const char* text;
    const char* data;
    const char* expected;
};

class SrcReaderDamage : public testing::TestWithParam<Damage> {};

TEST_P(SrcReaderDamage, IsToldWithItsLine)
{
    EXPECT_THAT([] { readSrc(GetParam().text, GetParam().data); },
                ThrowsMessage<ProgramFault>(StrEq(GetParam().expected)));
}

INSTANTIATE_TEST_SUITE_P(
    Table, SrcReaderDamage,
    testing::Values(
        Damage{"Empty", "", "", "line 1: expected DEF"},
        Damage{"Foreign", ";a\n#include <x>\n", "", "line 2: expected DEF"},
        Damage{"Cut", "DEF a()\nHALT\n", "", "line 2: 'a' of line 1 has no END"},
        Damage{"Braces", "DEF a()\nLIN {X 1, Y\nEND", "", "line 2: braces that do not hold names and numbers"},
        Damage{"NoTarget", "DEF a()\nLIN\nEND", "", "line 2: a move without a target"},
        Damage{"CircleOfOne", "DEF a()\nCIRC P1\nEND", "", "line 2: 'CIRC' needs a via point and a target"},
        Damage{"ForeignData", "DEF a()\nEND", "x", "line 1 of the .dat file: expected DEFDAT"},
        Damage{"CutData", "DEF a()\nEND", "DEFDAT a\n", "line 1 of the .dat file: the file ends before ENDDAT"},
        Damage{"DamagedData", "DEF a()\nEND", "DEFDAT a\nDECL POS XP1={X 1,,}\nENDDAT",
               "line 2 of the .dat file: 'XP1': braces that do not hold names and numbers"}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vrk::program
