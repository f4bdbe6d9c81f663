#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include <sys/stat.h>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::StrEq;

constexpr int wrongCommandLine = 1;
constexpr int unusable = 2;

/// One line on standard error and nothing else.
void expectRefused(const Outcome& outcome, int exitCode, const std::string& text)
{
    EXPECT_EQ(outcome.exitCode, exitCode);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, StrEq("vrkview: " + text + "\n"));
}

// The command line

struct WrongLine {
    const char* name;
    std::vector<std::string> arguments;
    const char* text;
};

class ViewerCommandLine : public testing::TestWithParam<WrongLine> {};

TEST_P(ViewerCommandLine, WrongOneIsRefusedInOneLine)
{
    expectRefused(runViewer(GetParam().arguments), wrongCommandLine,
                  GetParam().text + std::string(" (--help lists the options)"));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ViewerCommandLine,
    testing::Values(
        WrongLine{"UnknownOption", {"--bogus"}, "The following argument was not expected: --bogus"},
        WrongLine{"SizeWithoutPicture", {"--size", "10x10"}, "--size requires --shot, --pick or --pick-grid"},
        WrongLine{"PickOfOneNumber", {"--pick", "10"}, "--pick: a pixel is two numbers, x and y"},
        WrongLine{"PickOutsideThePicture",
                  {"--size", "100x50", "--pick", "10,51"},
                  "--pick: 51 lies outside the picture of 100x50"},
        WrongLine{"AllWithoutPick", {"--all"}, "--all requires --pick"},
        WrongLine{"UnknownUnit", {"--unit", "ft"}, "--unit: 'ft' is none of mm, cm, m, in"},
        WrongLine{"SimplifyByNoNumber", {"--simplify=x"}, "Could not convert: --simplify = x"},
        WrongLine{"SimplifyByLessThanNothing", {"--simplify=-1"}, "--simplify: '-1' is no distance in millimetres"},
        WrongLine{"PickOfNoNumber", {"--pick", "a,b"}, "Could not convert: --pick = a,b"},
        WrongLine{"PickWithAGap", {"--pick", "10,,20"}, "Could not convert: --pick = 10,,20"},
        WrongLine{"PickOfNothing", {"--pick", ""}, "Could not convert: --pick = "},
        WrongLine{"JointsWithAGap", {"--list", "--joints", "10,,30"}, "Could not convert: --joints = 10,,30"},
        WrongLine{"JointsOfNothing", {"--list", "--joints", ""}, "Could not convert: --joints = "},
        WrongLine{"JointWithoutEnd", {"--list", "--joints", "10,inf"}, "Could not convert: --joints = 10,inf"},
        WrongLine{"PictureWithoutName", {"--shot", ""}, "--shot: the name of a file is empty"},
        WrongLine{"BackgroundThatIsNoColor",
                  {"--background", "blue"},
                  "--background: 'blue' is no colour such as #4080C0, nor none"},
        WrongLine{"BackgroundThatIsHalfAColor",
                  {"--background", "#4080C0,#40"},
                  "--background: '#4080C0,#40' is no colour such as #4080C0, nor none"},
        WrongLine{"PictureOfAnotherKind", {"--shot", "cell.jpg"}, "--shot: 'cell.jpg' does not end in .png"},
        WrongLine{"PicturesOfPicksOfAnotherKind",
                  {"--pick-grid", "2x2", "--pick-picture", "picks"},
                  "--pick-picture: 'picks' does not end in .png"},
        WrongLine{"FileWithoutName", {"--list", ""}, "files: the name of a file is empty"},
        WrongLine{"ViewWithoutName",
                  {"--shot", "x.png", "--view", ""},
                  "--view: '' is none of iso, front, back, left, right, top, bottom, all"},
        WrongLine{"SizeOfNothing",
                  {"--shot", "x.png", "--size", ""},
                  "--size: '' is not a size such as 1600x1000, each side from 1 to 8192"},
        WrongLine{"StationUnderANameThatDoesNotOpen",
                  {"--list", "--save", "cell.json"},
                  "--save: 'cell.json' does not end in .station.json"},
        WrongLine{"PickFromSeveralViews", {"--pick", "1,1", "--view", "all"}, "--view: picking takes one direction"},
        WrongLine{"PickPictureWithoutGrid",
                  {"--pick", "1,1", "--pick-picture", "x.png"},
                  "--pick-picture requires --pick-grid"},
        WrongLine{"GridOfOneNumber",
                  {"--pick-grid", "10"},
                  "--pick-grid: '10' is not a size such as 1600x1000, each side from 1 to 8192"},
        WrongLine{"ViewWithoutPicture", {"--view", "iso"}, "--view requires --shot, --pick or --pick-grid"},
        WrongLine{"PictureAndList", {"--shot", "x.png", "--list"}, "--shot excludes --list"},
        WrongLine{"UnknownView",
                  {"--shot", "x.png", "--view", "up"},
                  "--view: 'up' is none of iso, front, back, left, right, top, bottom, all"},
        WrongLine{"JointWithoutValue", {"--list", "--joints", "elbow="}, "Could not convert: --joints = elbow="},
        WrongLine{"UnknownDisplay",
                  {"--display", "x-ray"},
                  "--display: 'x-ray' is none of shaded, shaded-edges, edges, wire, lines, lines-dashed"},
        WrongLine{"OneNumber",
                  {"--shot", "x.png", "--size", "10"},
                  "--size: '10' is not a size such as 1600x1000, each side from 1 to 8192"},
        WrongLine{"NoHeight",
                  {"--shot", "x.png", "--size", "10x0"},
                  "--size: '10x0' is not a size such as 1600x1000, each side from 1 to 8192"},
        WrongLine{"TooLarge",
                  {"--shot", "x.png", "--size", "10x8193"},
                  "--size: '10x8193' is not a size such as 1600x1000, each side from 1 to 8192"},
        WrongLine{"TextBehindTheSize",
                  {"--shot", "x.png", "--size", "10x10px"},
                  "--size: '10x10px' is not a size such as 1600x1000, each side from 1 to 8192"}),
    [](const auto& info) { return std::string(info.param.name); });

// Files

class ViewerFile : public testing::Test {
protected:
    void expectFileRefused(const std::string& file, const std::string& cause)
    {
        const std::string picture = files.path("refused.png");
        expectRefused(runViewer({"--shot", picture, file}), unusable, file + ": " + cause);
        EXPECT_FALSE(std::filesystem::exists(picture));
    }

    const Files files;
};

TEST_F(ViewerFile, MissingOneIsNamed)
{
    expectFileRefused(files.path("none.step"), "no such file");
}

TEST_F(ViewerFile, BadOnesAmongOthersAreToldAndTheOthersShown)
{
    const std::string good = files.writeBrep("good.brep");
    const std::string empty = files.write("empty.step", ""), missing = files.path("none.stl");

    const Outcome outcome = runViewer({"--list", empty, good, missing});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.out, HasSubstr("\"name\": \"good\""));
    EXPECT_THAT(outcome.err,
                StrEq("vrkview: " + empty + ": the file is empty\nvrkview: " + missing + ": no such file\n"));
}

TEST_F(ViewerFile, BadOneAmongOthersEndsAllWhereItIsWantedSo)
{
    const std::string good = files.writeBrep("good.brep"), empty = files.write("empty.step", "");
    expectRefused(runViewer({"--strict", "--list", good, empty}), unusable, empty + ": the file is empty");
}

TEST_F(ViewerFile, OfSeveralBadOnesEachIsTold)
{
    const std::string empty = files.write("empty.step", ""), missing = files.path("none.stl");
    expectRefused(runViewer({"--list", empty, missing}), unusable,
                  empty + ": the file is empty\nvrkview: " + missing + ": no such file");
}

TEST_F(ViewerFile, PipeIsRefusedAtOnce)
{
    const std::string pipe = files.path("pipe.stl");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    expectFileRefused(pipe, "not a file but a pipe or a device");
}

TEST_F(ViewerFile, EmptyOneIsNamed)
{
    expectFileRefused(files.write("empty.step", ""), "the file is empty");
}

TEST_F(ViewerFile, OneOfAnotherKindIsNamed)
{
    expectFileRefused(files.write("notes.txt", "hello"),
                      "not a kind of file that can be shown (.step, .stp, .igs, .iges, .brep, .stl, .obj, .gltf, .glb, "
                      ".3mf, .dae, .urdf, .ply, .pcd, "
                      ".xyz, .mod, .src, .ls, "
                      ".station.json)");
}

TEST_F(ViewerFile, BrepUnderTheNameOfStepIsMislabelled)
{
    expectFileRefused(files.writeBrep("mislabelled.step"), "not a STEP file");
}

TEST_F(ViewerFile, StepCutShortIsTold)
{
    const std::string whole = bytesOf(files.writeStep("whole.step"));

    expectFileRefused(files.write("cut.step", whole.substr(0, whole.size() / 2)), "the STEP file is cut short");
}

TEST_F(ViewerFile, StepWithoutGeometryIsTold)
{
    const std::string step = "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
                             "FILE_NAME('','',(''),(''),'','','');\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\n"
                             "DATA;\n#1=CARTESIAN_POINT('',(0.,0.,0.));\nENDSEC;\nEND-ISO-10303-21;\n";
    const std::string file = files.write("bare.step", step);

    const Outcome outcome = runViewer({"--list", file});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, StartsWith("vrkview: " + file + ": "));
    EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 1);
}

TEST_F(ViewerFile, BrepCutShortIsTold)
{
    const std::string whole = bytesOf(files.writeBrep("whole.brep"));

    expectFileRefused(files.write("cut.brep", whole.substr(0, whole.size() / 2)),
                      "the BREP file is cut short or damaged");
}

TEST_F(ViewerFile, TextInTheNameOfABinaryStlIsTold)
{
    expectFileRefused(files.write("text.stl",
                                  "this is a text, and a long one, that holds neither facets nor a count of "
                                  "triangles, as a binary file would"),
                      "neither a binary nor an ascii STL file");
}

TEST_F(ViewerFile, WordInPlaceOfANumberInAsciiStlIsTold)
{
    const std::string file = files.write(
        "word.stl", "solid s\nfacet normal 0 0 1\nouter loop\nvertex 0 zero 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\n"
                    "endfacet\nendsolid s\n");

    expectFileRefused(file, "a vertex of the STL file is not three numbers");
}

TEST_F(ViewerFile, WordInPlaceOfANumberInAnXyzCloudIsToldWithItsLine)
{
    expectFileRefused(files.write("word.xyz", "0 0 0\n1 zero 0\n"), "line 2: 'zero' is not a number");
}

TEST_F(ViewerFile, PlyCloudCutShortIsToldWithItsByte)
{
    const std::string header = "ply\nformat binary_little_endian 1.0\nelement vertex 2\nproperty float x\n"
                               "property float y\nproperty float z\nend_header\n";
    const std::string file = files.write("cut.ply", header + std::string(12, '\0'));

    expectFileRefused(file, "ends at byte " + std::to_string(header.size() + 12) + " of " +
                                std::to_string(header.size() + 24));
}

TEST_F(ViewerFile, PcdCloudCutShortIsToldWithItsLine)
{
    const std::string file = files.write("cut.pcd", "VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nCOUNT 1 1 1\n"
                                                    "WIDTH 2\nHEIGHT 1\nPOINTS 2\nDATA ascii\n0 0 0\n");

    expectFileRefused(file, "line 10: the file ends after 1 of 2 points");
}

TEST_F(ViewerFile, CloudWithoutAPointIsTold)
{
    expectFileRefused(files.write("bare.xyz", "# nothing\n"), "the file holds no point");
}

TEST_F(ViewerFile, PlaceFartherOutThanAnyStationReachesIsLeftOut)
{
    const std::string facets = "facet normal 0 0 1 vertex 0 0 0 vertex 1 0 0 vertex 0 1 0 endfacet "
                               "facet normal 0 0 1 vertex 0 0 0 vertex 3e38 0 0 vertex 0 -3e38 0 endfacet ";
    const std::string cloud = files.write("far.xyz", "0 0 0\n3e38 0 0\n1 1 1\n0 -3e38 0\n");
    const std::string body = files.write("far.stl", "solid s " + facets + "endsolid s\n");
    for (const std::string& file : {cloud, body}) {
        const std::string picture = files.path("far.png");

        const Outcome outcome = runViewer({"--shot", picture, "--size", "40x30", file});

        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_TRUE(std::filesystem::remove(picture)) << file;
    }
}

TEST_F(ViewerFile, GoodOneBesideABadOneIsDrawnUnlessAllAreWanted)
{
    const std::string picture = files.path("good.png"), strict = files.path("both.png");
    const std::string good = files.writeBrep("good.brep"), bad = files.write("empty.stl", "");

    const Outcome drawn = runViewer({"--shot", picture, good, bad});
    const Outcome refused = runViewer({"--strict", "--shot", strict, good, bad});

    for (const Outcome& outcome : {drawn, refused}) {
        EXPECT_EQ(outcome.exitCode, unusable);
        EXPECT_THAT(outcome.err, HasSubstr("empty.stl: the file is empty"));
    }
    EXPECT_TRUE(std::filesystem::exists(picture));
    EXPECT_FALSE(std::filesystem::exists(strict));
}

TEST_F(ViewerFile, PictureThatCannotBeWrittenIsNamed)
{
    const std::string picture = files.path("no/such/folder/x.png");

    expectRefused(runViewer({"--shot", picture, "--size", "40x30", files.writeBrep("good.brep")}), unusable,
                  picture + ": the picture cannot be written");
}

TEST_F(ViewerFile, FolderOfThePictureIsLookedForAheadOfTheImport)
{
    const std::string picture = files.path("no/such/folder/x.png");

    expectRefused(runViewer({"--shot", picture, files.write("empty.stl", "")}), unusable,
                  picture + ": the picture cannot be written");
}

// The resource zip

class ViewerResources : public testing::Test {
protected:
    void expectZipRefused(const std::string& zip, const std::string& cause)
    {
        expectRefused(runViewer({"--resources", zip, "--list"}), unusable, zip + ": " + cause);
    }

    /// The installed zip with one entry left out, or with another text in its place.
    std::string zipWithout(const std::string& entry, const std::string& instead = {})
    {
        const std::filesystem::path folder = files.path("zip");
        std::filesystem::create_directory(folder);
        const std::string inFolder = "cd '" + folder.string() + "' && '" VRK_CMAKE "' -E tar ";
        EXPECT_EQ(std::system((inFolder + "xf '" VRKVIEW_RESOURCES "'").c_str()), 0);
        EXPECT_TRUE(std::filesystem::remove(folder / entry));
        if (!instead.empty())
            std::ofstream(folder / entry) << instead;
        const std::string zip = files.path("changed.zip");
        EXPECT_EQ(std::system((inFolder + "cf '" + zip + "' --format=zip material program").c_str()), 0);
        return zip;
    }

    const Files files;
};

TEST_F(ViewerResources, MissingZipIsNamed)
{
    expectZipRefused(files.path("none.zip"), "no such file, the materials and programs are missing");
}

TEST_F(ViewerResources, TextIsNoZip)
{
    expectZipRefused(files.write("text.zip", "hello"),
                     "cannot be opened as a zip file, 'material/body.material' is not read");
}

TEST_F(ViewerResources, ZipCutShortIsTold)
{
    const std::string whole = bytesOf(VRKVIEW_RESOURCES);

    expectZipRefused(files.write("cut.zip", whole.substr(0, whole.size() / 2)),
                     "cannot be opened as a zip file, 'material/body.material' is not read");
}

TEST_F(ViewerResources, DamagedEntryIsTold)
{
    std::string bytes = bytesOf(VRKVIEW_RESOURCES);
    const std::size_t entry = bytes.find("material/body.material");
    ASSERT_NE(entry, std::string::npos);
    for (std::size_t i = entry + 60; i < entry + 100; ++i) // within the packed bytes
        bytes[i] = static_cast<char>(bytes[i] ^ 0x55);

    expectZipRefused(files.write("damaged.zip", bytes), "the entry 'material/body.material' is damaged");
}

TEST_F(ViewerResources, MissingProgramIsNamed)
{
    expectZipRefused(zipWithout("program/lit.frag"), "no entry 'program/lit.frag'");
}

TEST_F(ViewerResources, ProgramThatTheDriverDoesNotTakeIsTold)
{
    expectZipRefused(zipWithout("program/lit.frag", "void main() { this is no program }"),
                     "the material 'Body' is missing or the driver does not take its programs");
}

// The display

TEST(ViewerDisplay, WindowNeedsOne)
{
    expectRefused(runViewer({}), unusable,
                  "no display: DISPLAY is not set or does not answer (--shot needs none with Xvfb)");
}

TEST(ViewerDisplay, PictureOnThePresentOneNeedsOne)
{
    expectRefused(runViewer({"--gpu", "--list"}, "DISPLAY=:98765"), unusable,
                  "no display: DISPLAY is not set or does not answer (--shot needs none with Xvfb)");
}

TEST(ViewerDisplay, PictureWithoutXvfbNeedsOne)
{
    expectRefused(runViewer({"--list"}, "PATH=/nowhere"), unusable,
                  "no display: DISPLAY is not set or does not answer, and Xvfb is not on the PATH");
}

} // namespace
} // namespace vrkview::test
