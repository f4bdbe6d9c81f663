#include "support/FuzzCorpus.h"

#include <gtest/gtest.h>

namespace {

const std::vector<std::string>& seeds()
{
    static const std::vector<std::string> all{
        "0MODULE m(SYSMODULE)\nCONST num n:=2*(3+4) DIV 2;\nCONST robtarget a{2}:=[[[1,2,3],[1,0,0,0],[0,0,0,0],[9E9]],"
        "[[4,5,6],OrientZYX(1,2,3),[0,0,0,0],[9E9]]];\nPERS wobjdata "
        "w:=[FALSE,TRUE,\"\",[[1,2,3],[1,0,0,0]],[[0,0,0],[1,0,"
        "0,0]]];\nPROC p(robtarget r,\\switch s|switch t)\nIF s THEN\nMoveC "
        "a{1},RelTool(a{2},1,2,3\\Rz:=90),v1,fine,tool0"
        "\\WObj:=w;\nENDIF\nIF x=1 MoveL Offs(a{1},1,n,a{2}.trans.z),v1,z1,t;\nTEST x\nCASE "
        "1:\nDEFAULT:\nENDTEST\nERROR\n"
        "RETURN;\nENDPROC\nENDMODULE\n",
        "1&ACCESS RVP\nDEF s()\nBAS(#VEL_PTP,50)\n$BASE={X 1,Y 2,Z 3,A 4,B 5,C 6}\nFDAT_ACT=FP1\nPTP XP1 C_PTP\nLIN "
        "P[2]:{X 0,"
        "Y 0,Z 1,A 0,B 0,C 0} C_DIS\nCIRC XP1,{X 1,Y 2,Z 3,A 4,B 5,C 6}, CA 90\nPTP {A1 1,A2 2,A3 3,A4 4,A5 5,A6 "
        "6}\nSLIN XP1 "
        "WITH $VEL=SVEL_CP(0.5, ,X), $TOOL=STOOL2(FP1), $BASE=SBASE(FP1.BASE_NO)\nLIN_REL {X 1}\nEND\n\fDEFDAT s "
        "PUBLIC\nDECL "
        "E6POS XP1={X 1,Y -2.5e1,Z 3,A 0,B 0,C 0}\nP[2]={X 1,Y 2,Z 3,A 4,B 5,C 6}\nDECL FDAT FP1={TOOL_NO 1,BASE_NO "
        "2,IPO_FRAME "
        "#BASE,POINT2[] \" \"}\nENDDAT\n",
        "2/PROG  A\n/ATTR\nOWNER = B;\n/MN\n 1: UFRAME_NUM=1 ;\n 2:J P[1] 100% CNT100 ;\n 3:C P[2:x]\n  : P[1] 5mm/sec "
        "FINE "
        "Offset,PR[1] ;\n 4:  IF R[1]=1,JMP LBL[1] ;\n/POS\nP[1]{\n GP1:\n UF : 0, UT : 1, CONFIG : 'N U T, 0, 0, "
        "0',\n X = 1 "
        "mm, Y = -.5 mm, Z = 3 mm,\n W = 1 deg, P = 2 deg, R = 3 deg\n};\nP[2:\"x\"]{\n GP1:\n UF : F, UT : F,\n J1= 1 "
        "deg, J2= "
        "2 deg\n};\n/END\n",
        "0",
        "1",
        "2"};
    return all;
}

TEST(ProgramFuzzCorpus, EachSeedIsAProgramOrAnOwnFailure) // the target itself aborts where it is not
{
    for (const std::string& seed : seeds())
        vrk::test::feed(seed);
}

TEST(ProgramFuzzCorpus, DamagedSeedsAreProgramsOrOwnFailures)
{
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i)
        vrk::test::feed(vrk::test::mutated(seeds()[random() % 3], seeds(), random));
}

TEST(ProgramFuzzCorpus, DeepNestingIsNoCrash)
{
    for (const std::string bracket : {"(", "[", "{", "-", "a{", "Offs("}) {
        std::string many;
        for (int i = 0; i < 50000; ++i)
            many += bracket;
        vrk::test::feed("0MODULE m\nCONST num a:=" + many + ";\nENDMODULE");
        vrk::test::feed("0MODULE m\nPROC p()\nMoveL " + many + ",v1,z1,t;\nENDPROC\nENDMODULE");
        vrk::test::feed("1DEF s()\nLIN " + many + "\nEND");
        vrk::test::feed("1DEF s()\nLIN {X {" + many + "\nEND");
    }
}

} // namespace
