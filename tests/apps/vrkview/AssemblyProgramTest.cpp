// Files with products in the viewer: what is in what, and what is not there.

#include "Program.h"
#include "platform/StepFiles.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>

#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

namespace vrkview::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::EndsWith;
using vrk::test::moved;

constexpr int unusable = 2;

/// "  part box": kind and name of each thing but the bodies, below what it is in, as deep as it lies.
void appendRows(const json& trees, const std::string& indent, std::vector<std::string>& rows)
{
    for (const json& entry : trees) {
        const std::string type = entry["type"];
        if (type != "solid")
            rows.push_back(indent + type + ' ' + std::string(entry["name"]));
        if (entry.contains("children"))
            appendRows(entry["children"], indent + "  ", rows);
    }
}

std::vector<std::string> rowsOf(const Outcome& outcome)
{
    std::vector<std::string> rows;
    appendRows(json::parse(outcome.out)["tree"], "", rows);
    return rows;
}

/// Two clamps of two pins each, and a box, in a cell.
void writeCell(const std::string& file, bool inPieces = false)
{
    vrk::test::StepDocument document;
    const TDF_Label pin = document.addProduct(BRepPrimAPI_MakeCylinder(2, 50).Shape(), "pin");
    const TDF_Label clamp = document.addAssembly("clamp");
    document.addComponent(clamp, pin, moved(100, 0, 0), "left pin");
    document.addComponent(clamp, pin, moved(0, 0, 7), "right pin");
    const TDF_Label top = document.addAssembly("cell");
    document.addComponent(top, clamp, moved(0, 1000, 0), "NAUO1");
    document.addComponent(top, document.addProduct(BRepPrimAPI_MakeBox(10, 20, 30).Shape(), "box"), moved(5, 5, 5), "");
    document.addComponent(top, clamp, vrk::test::turnedAndMoved(0, 2000, 0), "NAUO3");
    if (inPieces)
        document.writeInPieces(file);
    else
        document.write(file);
}

TEST(ViewerAssembly, LiesInTheListAsInTheFileAndInASavedStation)
{
    const Files files;
    writeCell(files.path("line.step"));

    const Outcome first = runViewer({"--list", files.path("line.step"), "--save", files.path("a.station.json")});
    const Outcome second = runViewer({"--list", files.path("a.station.json"), "--save", files.path("b.station.json")});

    EXPECT_EQ(first.exitCode, 0) << first.err;
    EXPECT_THAT(rowsOf(first),
                ElementsAre("assembly cell", "  assembly clamp", "    part left pin", "    part right pin",
                            "  part box", "  assembly clamp (2)", "    part left pin", "    part right pin"));
    EXPECT_EQ(rowsOf(second), rowsOf(first));
    EXPECT_EQ(bytesOf(files.path("b.station.json")), bytesOf(files.path("a.station.json")));
}

TEST(ViewerAssembly, ThatIsHiddenHidesItsMembers)
{
    const Files files;
    writeCell(files.path("line.step"));
    runViewer({"--list", files.path("line.step"), "--save", files.path("a.station.json")});
    json station = json::parse(bytesOf(files.path("a.station.json")));
    json& members = station["assemblies"][0]["members"];
    ASSERT_EQ(members.size(), 3u);
    const auto pictureOf = [&](const char* name) {
        const std::string file = files.write(std::string(name) + ".station.json", station.dump());
        const Outcome outcome = runViewer({"--shot", files.path("p.png"), "--size", "200x150", file});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return bytesOf(files.path("p.png"));
    };
    const std::string whole = pictureOf("whole");
    station["hidden"] = {members[0]["id"]};
    const std::string hidden = pictureOf("hidden");
    station.erase("hidden");
    members.erase(0);

    const std::string without = pictureOf("without");

    EXPECT_NE(hidden, whole);
    EXPECT_EQ(hidden, without);
}

TEST(ViewerAssembly, WhoseFilesAreMissingIsDrawnWithALineAndTheExitCodeOfWhatIsLeftOut)
{
    const Files files;
    writeCell(files.path("line.step"), true);
    std::filesystem::remove(files.path("part_pin.stp"));
    const std::string line =
        "vrkview: " + files.path("line.step") + ": 4 of 5 parts refer to a file that is not there: part_pin.stp\n";

    const Outcome outcome = runViewer({"--shot", files.path("p.png"), "--size", "200x150", files.path("line.step")});

    EXPECT_EQ(outcome.exitCode, unusable);
    EXPECT_THAT(outcome.err, EndsWith(line));
    EXPECT_TRUE(std::filesystem::exists(files.path("p.png")));
    EXPECT_THAT(rowsOf(runViewer({"--list", files.path("line.step")})), ElementsAre("assembly cell", "  part box"));

    const Outcome strict =
        runViewer({"--shot", files.path("s.png"), "--size", "200x150", "--strict", files.path("line.step")});
    EXPECT_EQ(strict.exitCode, unusable);
    EXPECT_THAT(strict.err, EndsWith(line));
    EXPECT_FALSE(std::filesystem::exists(files.path("s.png")));
}

} // namespace
} // namespace vrkview::test
