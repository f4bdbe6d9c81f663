// Units and colours of meshes and scans, from the command line.

#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A PLY file of a box with this side.
std::string plyBox(double side)
{
    std::string text = "ply\nformat ascii 1.0\nelement vertex 8\nproperty float x\nproperty float y\nproperty float z\n"
                       "element face 6\nproperty list uchar int vertex_indices\nend_header\n";
    for (int corner = 0; corner < 8; ++corner)
        text += std::to_string(side * (corner & 1)) + " " + std::to_string(side * (corner >> 1 & 1)) + " " +
                std::to_string(side * (corner >> 2)) + "\n";
    return text + "4 0 2 3 1\n4 4 5 7 6\n4 0 1 5 4\n4 2 6 7 3\n4 0 4 6 2\n4 1 3 7 5\n";
}

class ViewerScan : public testing::Test {
protected:
    Outcome shoot(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.end(), {"--shot", files.path("p.png"), "--size", "200x150"});
        return runViewer(arguments);
    }

    Files files;
};

TEST_F(ViewerScan, TinyOneBesideALargeBodyIsToldOfUnlessTheUnitWasSaid)
{
    const std::string room = files.write("room.xyz", "0 0 0\n4 0 0\n0 3 2.5\n");
    const std::string cell = files.write("cell.ply", plyBox(2000));

    const Outcome told = shoot({cell, room});
    EXPECT_EQ(told.exitCode, 0);
    EXPECT_EQ(told.err, "vrkview: room: this scan seems to be in metres: --unit m\n");
    EXPECT_THAT(shoot({cell, room, "--unit", "mm"}).err, IsEmpty());
    EXPECT_THAT(shoot({files.write("hand.ply", plyBox(900)), room}).err, IsEmpty());
    EXPECT_THAT(shoot({room}).err, IsEmpty());
}

TEST_F(ViewerScan, UnitIsKeptInTheStation)
{
    const std::string saved = files.path("a.station.json");
    ASSERT_EQ(runViewer({"--list", "--unit", "in", files.write("hand.ply", plyBox(9)), "--save", saved}).exitCode, 0);
    EXPECT_THAT(bytesOf(saved), HasSubstr("\"unit\": \"in\""));

    const Outcome again = runViewer({"--list", saved, "--save", files.path("b.station.json")});

    EXPECT_EQ(again.exitCode, 0);
    EXPECT_EQ(bytesOf(files.path("b.station.json")), bytesOf(saved));
}

TEST_F(ViewerScan, ColoursOfTheFileAreDrawnOrItsHeights)
{
    std::string points;
    for (int i = 0; i < 400; ++i)
        points += std::to_string(i % 20) + " " + std::to_string(i / 20) + " " + std::to_string(i % 7) + " 255 0 0\n";
    const std::string scan = files.write("scan.xyz", points);

    ASSERT_EQ(shoot({scan}).exitCode, 0);
    const std::string colored = bytesOf(files.path("p.png"));
    ASSERT_EQ(shoot({scan, "--by-height"}).exitCode, 0);

    EXPECT_NE(bytesOf(files.path("p.png")), colored);
}

TEST_F(ViewerScan, PlyThatEndsWithinItsFacesIsRefused)
{
    const std::string text = plyBox(9);
    const std::string cut = files.write("cut.ply", text.substr(0, text.size() - 3));

    const Outcome outcome = runViewer({"--list", cut});

    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_EQ(outcome.err, "vrkview: " + cut + ": line 23: a list of another length than it says\n");
}

TEST_F(ViewerScan, MeshOfAnotherFormatIsABody)
{
    const Outcome outcome = runViewer({"--list", files.write("lamp.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")});

    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, HasSubstr("\"triangles\": 1"));
    EXPECT_THAT(outcome.err, Not(HasSubstr("vrkview:")));
}

} // namespace
} // namespace vrkview::test
