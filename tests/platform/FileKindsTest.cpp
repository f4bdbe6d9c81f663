#include "platform/station/FileKinds.h"

#include "platform/station/ImportCloud.h"
#include "platform/station/ImportProgram.h"
#include "platform/station/ImportUrdf.h"
#include "platform/station/StationFile.h"

#include <gtest/gtest.h>

namespace vrk::station {
namespace {

struct FileKindCase {
    const char* name; // of the case
    const char* file;
    FileKind kind;
};

class FileKindOf : public testing::TestWithParam<FileKindCase> {};

TEST_P(FileKindOf, IsToldByTheEndOfTheName)
{
    const FileKindCase& c = GetParam();
    EXPECT_EQ(fileKindOf(c.file), c.kind);
    EXPECT_EQ(isShapeFile(c.file), c.kind == FileKind::Step || c.kind == FileKind::Iges || c.kind == FileKind::Brep ||
                                       c.kind == FileKind::Stl);
    EXPECT_EQ(isPointCloudFile(c.file), c.kind == FileKind::Ply || c.kind == FileKind::Pcd || c.kind == FileKind::Xyz);
    EXPECT_EQ(isUrdfFile(c.file), c.kind == FileKind::Urdf);
    EXPECT_EQ(isProgramFile(c.file), c.kind == FileKind::Program);
    EXPECT_EQ(isStationFile(c.file), c.kind == FileKind::Station);
}

INSTANTIATE_TEST_SUITE_P(
    Table, FileKindOf,
    testing::Values(
        FileKindCase{"Step", "a/part.step", FileKind::Step}, FileKindCase{"Stp", "part.stp", FileKind::Step},
        FileKindCase{"Igs", "part.IGS", FileKind::Iges}, FileKindCase{"Iges", "part.iges", FileKind::Iges},
        FileKindCase{"Capitals", "PART.STEP", FileKind::Step}, FileKindCase{"Brep", "b.brep", FileKind::Brep},
        FileKindCase{"Stl", "b.Stl", FileKind::Stl}, FileKindCase{"Obj", "lamp.obj", FileKind::Obj},
        FileKindCase{"Gltf", "a.gltf", FileKind::Scene}, FileKindCase{"Glb", "a.GLB", FileKind::Scene},
        FileKindCase{"ThreeMf", "a.3mf", FileKind::Scene}, FileKindCase{"Collada", "a.dae", FileKind::Scene},
        FileKindCase{"Urdf", "arm.urdf", FileKind::Urdf}, FileKindCase{"Ply", "room.ply", FileKind::Ply},
        FileKindCase{"Pcd", "room.pcd", FileKind::Pcd}, FileKindCase{"Xyz", "room.xyz", FileKind::Xyz},
        FileKindCase{"Mod", "weld.mod", FileKind::Program}, FileKindCase{"Src", "weld.src", FileKind::Program},
        FileKindCase{"Ls", "WELD.LS", FileKind::Program}, FileKindCase{"DataOfASrc", "weld.dat", FileKind::Other},
        FileKindCase{"Station", "cell.STATION.json", FileKind::Station},
        FileKindCase{"BareStation", ".station.json", FileKind::Station},
        FileKindCase{"Json", "cell.json", FileKind::Other}, FileKindCase{"Longer", "part.step.bak", FileKind::Other},
        FileKindCase{"OnlyAnEnding", "folder/.step", FileKind::Other},
        FileKindCase{"Glued", "partstep", FileKind::Other}, FileKindCase{"Empty", "", FileKind::Other}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(EndingsOf, AreListedForMessages)
{
    EXPECT_EQ(endingsOf(isShapeKind), ".step, .stp, .igs, .iges, .brep, .stl");
    EXPECT_EQ(endingsOf(isPointCloudKind), ".ply, .pcd, .xyz");
}

} // namespace
} // namespace vrk::station
