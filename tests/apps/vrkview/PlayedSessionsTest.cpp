#include "Program.h"

#include "support/Picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>

namespace vrkview::test {
namespace {

using nlohmann::ordered_json;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::Values;

std::string sessionFile(const std::string& name)
{
    return std::string(VRK_SESSIONS) + "/" + name + ".jsonl";
}

struct SessionCase {
    const char* name;
    const char* baseline;
};
class PlayedSession : public testing::TestWithParam<SessionCase> {};

TEST_P(PlayedSession, PicksTheSameAndEndsWithTheSamePicture)
{
    const Files files;
    const std::string picture = files.path("last.png");

    const Outcome outcome = runViewer({"--play", sessionFile(GetParam().name), "--play-picture", picture});

    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_TRUE(vrk::test::matchesBaseline(vrk::test::readPng(picture), GetParam().baseline));
}

INSTANTIATE_TEST_SUITE_P(Table, PlayedSession,
                         Values(SessionCase{"orbit-and-pick", "session_orbit_and_pick"},
                                SessionCase{"select-faces-and-hide", "session_select_faces_and_hide"},
                                SessionCase{"load-attach-joints", "session_load_attach_joints"},
                                SessionCase{"band-and-path", "session_band_and_path"},
                                SessionCase{"rectangle-and-lasso", "session_rectangle_and_lasso"},
                                SessionCase{"candidates-and-pieces", "session_candidates_and_pieces"}),
                         [](const auto& info) { return std::string(info.param.baseline); });

/// What is left of a recording of moves: station and view, each in a folder of its own, since the station's file names the
/// folder beside it.
class PlayedMoves : public testing::Test {
protected:
    struct End {
        Files files;
        std::string station() const { return bytesOf(files.path("end.station.json")); }
        vrk::test::Picture view() const { return vrk::test::readPng(files.path("view.png")); }
    };
    static std::unique_ptr<End> play(const std::string& session)
    {
        auto end = std::make_unique<End>();
        const Outcome outcome =
            runViewer({"--play", end->files.write("session.jsonl", session), "--play-save",
                       end->files.path("end.station.json"), "--play-picture", end->files.path("view.png")});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return end;
    }
    /// The lines before the first one that has this text.
    std::string before(const std::string& text) const
    {
        return whole.substr(0, whole.rfind('\n', whole.find(text)) + 1);
    }

    const std::string whole = bytesOf(sessionFile("move-turn-and-type"));
    const std::string nothingDone = whole.substr(0, whole.find('\n') + 1);
};

TEST_F(PlayedMoves, LeaveStationAndViewAsTheyWereWhereTheyAreTakenBack)
{
    ASSERT_THAT(whole,
                AllOf(HasSubstr(R"("held":["left"])"), HasSubstr(R"("event":"type")"), HasSubstr(R"("key":"Ctrl+Z")")));

    const auto end = play(whole), start = play(nothingDone);

    EXPECT_TRUE(end->station() == start->station()) << "byte by byte";
    EXPECT_EQ(vrk::test::largestDifference(end->view(), start->view()), 0);
}

/// Qt has an option of that name, by which the program ended.
TEST_F(PlayedMoves, DisplayIsTheProgramsOwnOption)
{
    const Files files;
    const Outcome outcome = runViewer({"--display", "edges", "--play", files.write("session.jsonl", nothingDone)});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
}

TEST_F(PlayedMoves, HaveMovedOneThingUntilThen)
{
    const auto moved = play(before(R"("key":"Ctrl+Z")")), start = play(nothingDone);

    std::string thing;
    std::map<std::string, double> changed; // of its pose
    for (const ordered_json& change :
         ordered_json::diff(ordered_json::parse(start->station()), ordered_json::parse(moved->station()))) {
        const auto path = change.at("path").get<std::string>();
        EXPECT_THAT(path, AllOf(StartsWith("/parts/"), HasSubstr("/pose/")));
        if (thing.empty())
            thing = path.substr(0, path.rfind('/'));
        EXPECT_THAT(path, StartsWith(thing));
        changed[path.substr(path.rfind('/') + 1)] = change.at("value").get<double>();
    }
    // Along x by the mouse, up by the number, and turned about z.
    EXPECT_THAT(changed, testing::ElementsAre(testing::Key("0"), testing::Pair("2", 125.0), testing::Key("3"),
                                              testing::Key("6")));
    EXPECT_GT(vrk::test::largestDifference(moved->view(), start->view()), 50);
}

/// The lines of a shipped recording, to be spoilt.
class SpoiltSession : public testing::Test {
protected:
    void SetUp() override
    {
        std::istringstream stream(bytesOf(sessionFile("orbit-and-pick")));
        for (std::string line; std::getline(stream, line);)
            lines.push_back(ordered_json::parse(line));
    }
    std::size_t firstPick() const
    {
        std::size_t i = 0;
        while (!lines.at(i).contains("pick"))
            ++i;
        return i;
    }
    Outcome play() const
    {
        std::string text;
        for (const ordered_json& line : lines)
            text += line.dump() + "\n";
        return runViewer({"--play", files.write("spoilt.jsonl", text)});
    }

    Files files;
    std::vector<ordered_json> lines;
};

TEST_F(SpoiltSession, OtherPickIsToldWithItsLineAndBothPicks)
{
    const std::size_t pick = firstPick();
    lines[pick]["thing"] = 4711;

    const Outcome outcome = play();

    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_THAT(outcome.err, HasSubstr("spoilt.jsonl: line " + std::to_string(pick + 1) +
                                       ": the pick differs: \"thing\" was 4711, and is "));
    EXPECT_THAT(outcome.err, AllOf(HasSubstr("\n  then: {"), HasSubstr("\n  now:  {")));
}

TEST_F(SpoiltSession, PickThatIsMissingInTheRecordingIsTold)
{
    lines.erase(lines.begin() + static_cast<long>(firstPick()));

    const Outcome outcome = play();

    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_THAT(outcome.err, HasSubstr("a pick is made now that was not recorded: {"));
}

TEST_F(SpoiltSession, PickThatIsNotMadeIsTold)
{
    const std::size_t pick = firstPick();
    lines.insert(lines.begin() + static_cast<long>(pick), lines[pick]);

    const Outcome outcome = play();

    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_THAT(outcome.err, HasSubstr("a pick was recorded, but none is made now: {"));
}

TEST_F(SpoiltSession, RecordingOfAnotherStationIsRefused)
{
    lines[0]["station"] = "cell.station.json";

    const Outcome outcome = play();

    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("recorded with 'cell.station.json', but what is shown is 'Demo station'"));
}

TEST_F(SpoiltSession, JointsOfNothingAreRefused)
{
    lines = {lines[0], {{"event", "joints"}, {"id", 4711}, {"values", {1.0}}}};

    const Outcome outcome = play();

    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("line 2: nothing with joints has the id 4711"));
}

TEST_F(SpoiltSession, NumberForNoHandleIsTold)
{
    lines = {lines[0], {{"event", "type"}, {"key", "5"}}};

    const Outcome outcome = play();

    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_THAT(outcome.err, HasSubstr("line 2: the key '5' is for no number now"));
}

TEST_F(SpoiltSession, SelectionOfNothingIsRefused)
{
    lines = {lines[0], {{"event", "select"}, {"ids", {4711}}}};

    const Outcome outcome = play();

    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("line 2: nothing in the station has the id 4711"));
}

TEST_F(SpoiltSession, FileThatCannotBeOpenedEndsIt)
{
    lines = {lines[0], {{"event", "open"}, {"files", {"gone.step"}}}};

    const Outcome outcome = play();

    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err,
                AllOf(StartsWith("vrkview: "), HasSubstr("line 2: "), EndsWith("gone.step: no such file\n")));
    EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 1);
}

struct BadFileCase {
    const char* name;
    const char* text; // of the file; with "@" the head of a good one
    const char* told;
};
class BadSessionFile : public testing::TestWithParam<BadFileCase> {};

TEST_P(BadSessionFile, IsRefusedWithItsLine)
{
    const Files files;
    std::string text = GetParam().text;
    if (text.starts_with('@'))
        text.replace(0, 1,
                     R"({"vrkview":"recording","version":1,"station":"Demo station","view":[800,600],"mouse":"middle",)"
                     R"("clickRadius":4.0,"display":"shaded","grid":true,"camera":[0,0,0,1,0,0,0]})"
                     "\n");

    const Outcome outcome = runViewer({"--play", files.write("bad.jsonl", text)});

    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, AllOf(StartsWith("vrkview: "), HasSubstr(GetParam().told)));
}

INSTANTIATE_TEST_SUITE_P(
    Table, BadSessionFile,
    Values(BadFileCase{"Empty", "", "bad.jsonl: the recording is empty"},
           BadFileCase{"NoJson", "a picture?\n", "bad.jsonl: line 1: this is no JSON, or it is cut short\n"},
           BadFileCase{"OtherJson", "{\"format\": 1}\n", "line 1: this is no recording of vrkview"},
           BadFileCase{"OtherVersion", R"({"vrkview":"recording","version":2})", "line 1: version 2 is not known"},
           BadFileCase{"HeadCutOff", R"({"vrkview":"recording","version":1})", "line 1: key 'station' not found\n"},
           BadFileCase{"UnknownEvent", "@{\"event\":\"dance\"}\n", "line 2: event 'dance' is not known"},
           BadFileCase{"NoEvent", "@{\"at\":[1,2]}\n", "line 2: "},
           BadFileCase{"UnknownButton", "@{\"event\":\"press\",\"at\":[1,2],\"button\":\"fourth\"}\n",
                       "line 2: 'fourth' is not known"},
           BadFileCase{"PlaceOfOneNumber", "@{\"event\":\"move\",\"at\":[1]}\n",
                       "line 2: [1] is not a list of 2 numbers"},
           BadFileCase{"TypeWithoutKey", "@{\"event\":\"type\"}\n", "line 2: key 'key' not found"},
           BadFileCase{"SnapWithoutItsState", "@{\"event\":\"snap\"}\n", "line 2: key 'on' not found"},
           BadFileCase{"StepsOfOneNumber", "@{\"event\":\"steps\",\"steps\":[1]}\n",
                       "line 2: [1] is not a list of 2 numbers"},
           BadFileCase{"ViewWithoutArea", "@{\"event\":\"resize\",\"view\":[0,600]}\n",
                       "line 2: [0,600] is no size of a view"},
           BadFileCase{"LineCutOff", "@{\"event\":\"move\",\"a", "line 2: this is no JSON, or it is cut short\n"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(PlayOptions, MissingRecordingIsTold)
{
    const Outcome outcome = runViewer({"--play", "/gone/session.jsonl"});

    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("/gone/session.jsonl: the recording cannot be read"));
}

TEST(PlayOptions, PictureNeedsPlay)
{
    EXPECT_EQ(runViewer({"--play-picture", "a.png"}).exitCode, 1);
    EXPECT_EQ(runViewer({"--play-save", "a.station.json"}).exitCode, 1);
    EXPECT_EQ(runViewer({"--play", "a.jsonl", "--play-save", "a.json"}).exitCode, 1);
}

TEST(PlayOptions, RecordAndPlayExcludeEachOther)
{
    EXPECT_EQ(runViewer({"--play", "a.jsonl", "--record", "b.jsonl"}).exitCode, 1);
}

TEST(PlayOptions, UnknownKeyIsTold)
{
    const Files files;
    std::istringstream stream(bytesOf(sessionFile("orbit-and-pick")));
    std::string head;
    std::getline(stream, head);

    const Outcome outcome =
        runViewer({"--play", files.write("keys.jsonl", head + "\n{\"event\":\"key\",\"key\":\"Ctrl+Alt+9\"}\n")});

    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("line 2: no command has the key 'Ctrl+Alt+9'"));
}

} // namespace
} // namespace vrkview::test
