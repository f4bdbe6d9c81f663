#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>

namespace vrkview::test {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::StrEq;

constexpr int unusable = 2;

// An upright post with an arm that turns on it; lengths in metres.
const std::string robot = R"(<?xml version="1.0"?>
<robot name="kuka_post">
  <link name="base_link"><visual><geometry><box size="0.2 0.2 1"/></geometry></visual></link>
  <link name="arm"><visual><geometry><box size="0.8 0.1 0.1"/></geometry></visual></link>
  <joint name="turn" type="revolute">
    <parent link="base_link"/><child link="arm"/><origin xyz="0 0 0.55"/><axis xyz="0 0 1"/>
    <limit lower="-1" upper="1" effort="1" velocity="1"/>
  </joint>
</robot>
)";

json listed(const std::vector<std::string>& arguments)
{
    std::vector<std::string> all = {"--list"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const Outcome outcome = runViewer(all);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return json::parse(outcome.out);
}

std::string pictureOf(const Files& files, const std::string& name, std::vector<std::string> arguments)
{
    arguments.insert(arguments.end(), {"--shot", files.path(name), "--size", "160x120", "--view", "top"});
    EXPECT_EQ(runViewer(arguments).exitCode, 0);
    return bytesOf(files.path(name));
}

TEST(ViewerRobot, LinksHangOnTheManipulator)
{
    const Files files;

    const json tree = listed({files.write("post.urdf", robot)})["tree"];

    ASSERT_EQ(tree.size(), 2u) << "the robot and its task frame";
    const json& arm = tree[0]["type"] == "manipulator" ? tree[0] : tree[1];
    EXPECT_EQ(arm["name"], "kuka_post");
    EXPECT_EQ(arm["bodies"], 2);
    EXPECT_EQ(arm["faces"], 12);
}

TEST(ViewerRobot, JointValuesMoveItAndAreHeldToTheLimits)
{
    const Files files;
    const std::string file = files.write("post.urdf", robot);

    const std::string atRest = pictureOf(files, "rest.png", {file});
    const std::string turned = pictureOf(files, "turned.png", {"--joints", "40", file});
    const std::string atLimit = pictureOf(files, "limit.png", {"--joints", "57.29577951308232", file});
    const std::string beyond = pictureOf(files, "beyond.png", {"--joints", "170", file});

    EXPECT_NE(turned, atRest);
    EXPECT_NE(turned, atLimit);
    EXPECT_EQ(beyond, atLimit);
}

/// The robot under a name, all of it in a colour.
std::string colored(const std::string& name, const std::string& rgba)
{
    std::string text = robot;
    text.replace(text.find("kuka_post"), 9, name);
    const std::string end = "</geometry></visual>";
    for (std::size_t at = text.find(end); at != std::string::npos; at = text.find(end, at + end.size()))
        text.insert(at + 11, "<material name=\"paint\"><color rgba=\"" + rgba + "\"/></material>");
    return text;
}

TEST(ViewerRobot, ArmOfNoKnownMakerHasTheColoursOfItsBodies)
{
    const Files files;
    const auto picture = [&files](const std::string& name, const std::string& rgba) {
        return pictureOf(files, "arm.png", {files.write("arm.urdf", colored(name, rgba))});
    };

    EXPECT_NE(picture("plain_post", "1 0 0 1"), picture("plain_post", "0 0 1 1"));
    EXPECT_EQ(picture("kuka_post", "1 0 0 1"), picture("kuka_post", "0 0 1 1")); // its maker's
}

/// As the command line would not: the reach of all robots of a saved station is to be shown.
void showReaches(const std::string& station)
{
    json saved = json::parse(bytesOf(station));
    saved["version"] = 4;
    for (const json& arm : saved["manipulators"])
        saved["reach"].push_back(arm["id"]);
    std::ofstream(station) << saved;
}

TEST(ViewerRobot, ReachOfASavedStationIsInThePictureAndWhereItCannotBeToldInALine)
{
    const Files files;
    const std::string station = files.path("cell.station.json");
    const std::string without = pictureOf(files, "without.png", {files.write("post.urdf", robot), "--save", station});
    const std::string list = runViewer({"--list", station}).out;
    showReaches(station);

    const Outcome onAxis = runViewer({station, "--shot", files.path("axis.png"), "--size", "160x120", "--view", "top"});

    EXPECT_EQ(onAxis.exitCode, 0);
    EXPECT_THAT(onAxis.err, HasSubstr("vrkview: kuka_post: the wrist of the arm does not leave the axis of its first "
                                      "joint\n"));
    EXPECT_EQ(bytesOf(files.path("axis.png")), without);
    EXPECT_EQ(runViewer({"--list", station}).out, list);

    json saved = json::parse(bytesOf(station));
    saved["manipulators"][0]["wrist"]["pose"] = {300, 0, 0, 1, 0, 0, 0};
    std::ofstream(station) << saved;
    const Outcome reached =
        runViewer({station, "--shot", files.path("reach.png"), "--size", "160x120", "--view", "top"});
    EXPECT_EQ(reached.exitCode, 0);
    EXPECT_THAT(reached.err, testing::Not(HasSubstr("vrkview:")));
    EXPECT_NE(bytesOf(files.path("reach.png")), without);
}

/// A saved station with one dimension more. Objects are told by their ids.
void addDimension(const std::string& station, const char* type, const json& ends)
{
    json saved = json::parse(bytesOf(station));
    saved["version"] = 4;
    saved["dimensions"].push_back({{"name", ""}, {"type", type}, {"ends", ends}});
    std::ofstream(station) << saved;
}

TEST(ViewerStation, DimensionsAreInThePicture)
{
    const Files files;
    const std::string station = files.path("cell.station.json");
    const std::string without = pictureOf(files, "without.png", {files.writeStep("box.step"), "--save", station});
    const json saved = json::parse(bytesOf(station));
    const unsigned body = saved["parts"][0]["bodies"][0]["id"];
    const auto end = [body](const char* kind, int number) {
        return json{{"kind", kind}, {"object", body}, {"number", number}, {"place", {0, 0, 0}}};
    };

    addDimension(station, "length", json::array({end("edge", 999)}));
    EXPECT_EQ(pictureOf(files, "gone.png", {station}), without) << "what is no longer there is not drawn";
    addDimension(station, "distance", json::array({end("vertex", 1), end("vertex", 7)}));
    const std::string withOne = pictureOf(files, "with.png", {station});

    EXPECT_NE(withOne, without);
    EXPECT_EQ(pictureOf(files, "again.png", {station}), withOne);
}

TEST(ViewerStation, MinimumDistanceIsInThePicture)
{
    const Files files;
    const std::string station = files.path("cell.station.json");
    listed({files.writeStep("box.step"), files.writeBrep("other.brep"), "--save", station});
    json ends = json::array();
    const json saved = json::parse(bytesOf(station));
    for (const json& part : saved["parts"])
        ends.push_back({{"kind", "body"}, {"object", part["bodies"][0]["id"]}, {"place", {0, 0, 0}}});
    ASSERT_EQ(ends.size(), 2u);
    json apart = saved;
    apart["parts"][1]["pose"][0] = 50;
    std::ofstream(station) << apart;
    const std::string without = pictureOf(files, "without.png", {station});

    addDimension(station, "nearest", ends);

    EXPECT_NE(pictureOf(files, "with.png", {station}), without);
}

const std::string program =
    "MODULE weld\nCONST robtarget a:=[[10,20,30],[1,0,0,0],[0,0,0,0],[9E9,9E9,9E9,9E9,9E9,9E9]];\n"
    "PROC main()\nMoveJ a,v100,fine,tool0;\nMoveL CRobT(),v100,fine,tool0;\nENDPROC\nENDMODULE\n";

TEST(ViewerProgram, IsListedWithItsPathsAndWhatIsNotPlaced)
{
    const Files files;

    const json list = listed({files.write("post.urdf", robot), files.write("weld.mod", program)});

    ASSERT_EQ(list["programs"].size(), 1u);
    const json& weld = list["programs"][0];
    EXPECT_EQ(weld["name"], "weld");
    EXPECT_EQ(weld["targets"], 1);
    EXPECT_TRUE(weld.contains("robot"));
    ASSERT_EQ(weld["paths"].size(), 1u);
    EXPECT_EQ(weld["paths"][0]["name"], "main");
    EXPECT_EQ(weld["paths"][0]["instructions"], 2);
    EXPECT_EQ(weld["paths"][0]["moves"], 1);
    const json unplaced = {{"line", 5}, {"text", "MoveL CRobT(),v100,fine,tool0"}, {"why", "not known before it runs"}};
    EXPECT_EQ(weld["paths"][0]["not_placed"], json::array({unplaced}));
}

TEST(ViewerProgram, IsSeenInAPictureWithAndWithoutARobot)
{
    const Files files;
    const std::string post = files.write("post.urdf", robot);
    const std::string way =
        files.write("way.mod", "MODULE way\nCONST robtarget a:=[[-300,300,900],[1,0,0,0],[0,0,0,0],[9E9,9E9,9E9,"
                               "9E9,9E9,9E9]];\nPROC main()\nMoveJ a,v100,fine,tool0;\n"
                               "MoveL Offs(a,600,0,0),v100,fine,tool0;\nENDPROC\nENDMODULE\n");
    const std::string station = files.path("cell.station.json");

    const std::string withProgram = pictureOf(files, "both.png", {post, way, "--save", station});
    EXPECT_NE(withProgram, pictureOf(files, "post.png", {post}));
    EXPECT_EQ(withProgram, pictureOf(files, "saved.png", {station}));
    EXPECT_NE(pictureOf(files, "alone.png", {way}), pictureOf(files, "other.png", {files.write("weld.mod", program)}));
}

TEST(ViewerProgram, IsSavedWithTheStation)
{
    const Files files;
    const std::string station = files.path("cell.station.json");
    const json before = listed({files.write("weld.mod", program), "--save", station});

    EXPECT_EQ(listed({station})["programs"], before["programs"]);
}

TEST(ViewerProgram, ThatIsDamagedIsToldInOneLine)
{
    const Files files;
    const std::string file = files.write("weld.mod", "MODULE weld\nPROC main()\n");

    const Outcome outcome = runViewer({"--list", file});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, EndsWith("vrkview: " + file + ": line 3: 'main' of line 2 has no ENDPROC\n"));
}

TEST(ViewerRobot, JointIsMovedByItsNameAndHeldToItsLimitsWithAWord)
{
    const Files files;
    const std::string file = files.write("post.urdf", robot);
    const auto joints = [](const Outcome& outcome) {
        return nlohmann::json::parse(outcome.out).at("tree").at(0).at("joints").at(0);
    };
    const std::string name = joints(runViewer({"--list", file})).at("name");

    const Outcome moved = runViewer({"--list", "--joints", name + "=40", file});
    const Outcome beyond = runViewer({"--list", "--joints", name + "=170", file});

    EXPECT_EQ(joints(moved).at("value"), 40);
    EXPECT_EQ(joints(moved).at("unit"), "degrees");
    EXPECT_THAT(moved.err, IsEmpty());
    EXPECT_EQ(beyond.exitCode, 0);
    EXPECT_EQ(joints(beyond).at("value"), joints(beyond).at("limits").at(1));
    EXPECT_THAT(beyond.err, StartsWith("vrkview: --joints: 170 is beyond the limits of '" + name + "', "));
}

TEST(ViewerRobot, JointThatIsNotThereIsNamed)
{
    const Files files;

    const Outcome outcome = runViewer({"--list", "--joints", "knee=1", files.write("post.urdf", robot)});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.err,
                StrEq("vrkview: --joints: no joint that moves by itself is called 'knee' (--list names them)\n"));
}

TEST(ViewerRobot, MoreValuesThanJointsAreRefused)
{
    const Files files;

    const Outcome outcome = runViewer({"--list", "--joints", "1,2", files.write("post.urdf", robot)});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, StrEq("vrkview: --joints: 2 values, but kuka_post has 1 joints\n"));
}

TEST(ViewerRobot, JointValuesWithoutAnythingThatMovesAreRefused)
{
    const Files files;

    const Outcome outcome = runViewer({"--list", "--joints", "1", files.writeBrep("box.brep")});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.err, StrEq("vrkview: --joints: nothing here has joints that move\n"));
}

TEST(ViewerRobot, DamagedDescriptionIsRefusedInOneLine)
{
    const Files files;

    const Outcome outcome = runViewer({"--list", files.write("bad.urdf", "<robot name=\"x\">")});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.err, HasSubstr("bad.urdf: "));
    EXPECT_THAT(outcome.err, EndsWith("\n"));
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
}

TEST(ViewerStation, AnyMixOfFilesIsSavedAndOpensAsTheSame)
{
    const Files files;
    const std::string saved = files.path("cell.station.json");

    const json mix = listed({files.write("post.urdf", robot), files.writeStep("box.step"),
                             files.writeCloud("scan.xyz", 500), "--save", saved});
    const json opened = listed({saved, "--save", files.path("again.station.json")});

    EXPECT_EQ(opened["tree"], mix["tree"]);
    EXPECT_EQ(opened["triangles"], mix["triangles"]);
    EXPECT_EQ(opened["points"], mix["points"]);
    EXPECT_EQ(bytesOf(files.path("again.station.json")), bytesOf(saved));
}

TEST(ViewerStation, HiddenPartIsSeenInNoDisplayMode)
{
    const Files files;
    const std::string both = files.path("both.station.json"), alone = files.path("alone.station.json");
    listed({files.writeBrep("box.brep"), "--save", alone});
    listed({files.writeBrep("box.brep"), files.writeStep("hidden.step"), "--save", both});
    json station = json::parse(bytesOf(both));
    station["parts"][1]["pose"][0] = 15; // half beside the other
    files.write("both.station.json", station.dump());
    station["hidden"] = {station["parts"][1]["id"]};
    const std::string hidden = files.write("hidden.station.json", station.dump());

    for (const char* mode : {"shaded", "shaded-edges", "edges", "wire"})
        EXPECT_EQ(pictureOf(files, "hidden.png", {hidden, "--display", mode}),
                  pictureOf(files, "alone.png", {alone, "--display", mode}))
            << mode;
    EXPECT_NE(pictureOf(files, "both.png", {both}), pictureOf(files, "alone.png", {alone}));
}

TEST(ViewerStation, FilesJoinAnOpenedStation)
{
    const Files files;
    const std::string saved = files.path("cell.station.json");
    listed({files.write("post.urdf", robot), "--save", saved});

    const json joined = listed({saved, files.writeStep("box.step")});

    EXPECT_EQ(joined["bodies"], 3);
}

TEST(ViewerStation, FaultyStationIsRefusedWithThePlaceOfTheFault)
{
    const Files files;

    const Outcome outcome = runViewer({"--list", files.write("bad.station.json", R"({"format": 99})")});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr("bad.station.json: /"));
    EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1);
}

TEST(ViewerStation, SecondStationIsRefused)
{
    const Files files;
    const std::string saved = files.path("cell.station.json");
    listed({files.write("post.urdf", robot), "--save", saved});

    const Outcome outcome = runViewer({"--list", saved, saved});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.err, StrEq("vrkview: " + saved + ": a second station file; one can be opened at a time\n"));
}

TEST(ViewerStation, PlaceThatCannotBeWrittenIsRefused)
{
    const Files files;
    const std::string blocked = files.write("file", "not a folder") + "/cell.station.json";

    const Outcome outcome = runViewer({"--list", files.writeStep("box.step"), "--save", blocked});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, HasSubstr(blocked));
}

} // namespace
} // namespace vrkview::test
