#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QColor>
#include <QImage>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <map>
#include <numbers>
#include <set>

namespace vrkview::test {
namespace {

using nlohmann::json;
using testing::Gt;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::StrEq;
using testing::UnorderedElementsAre;

constexpr int rows = 200; // of the pictures that are picked in

/// What is printed in the view from above.
json picked(const std::string& pixels, const std::string& file)
{
    const Outcome outcome = runViewer({"--pick", pixels, "--size", "300x200", "--view", "top", file});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.err, IsEmpty());
    return json::parse(outcome.out);
}

std::set<std::string> keysOf(const json& entry)
{
    std::set<std::string> keys;
    for (const auto& [key, value] : entry.items())
        keys.insert(key);
    return keys;
}

void expectPosition(const json& entry, double x, double y, double z, double tolerance)
{
    ASSERT_EQ(entry["position"].size(), 3u);
    EXPECT_NEAR(entry["position"][0].get<double>(), x, tolerance);
    EXPECT_NEAR(entry["position"][1].get<double>(), y, tolerance);
    EXPECT_NEAR(entry["position"][2].get<double>(), z, tolerance);
}

TEST(ViewerPick, SolidIsToldWithItsFaceAndItsPlace)
{
    const Files files;

    const json list = picked("150,100", files.writeBrep("box.brep"));

    ASSERT_EQ(list.size(), 1u);
    const json& pick = list[0];
    EXPECT_THAT(keysOf(pick), UnorderedElementsAre("x", "y", "hit", "id", "name", "type", "face", "distance",
                                                   "position", "microseconds"));
    EXPECT_EQ(pick["x"], 150);
    EXPECT_EQ(pick["y"], 100);
    EXPECT_EQ(pick["hit"], true);
    EXPECT_GT(pick["id"].get<unsigned>(), 0u);
    EXPECT_EQ(pick["name"], "box");
    EXPECT_EQ(pick["type"], "solid");
    EXPECT_EQ(pick["face"], 6); // of a box the upper one is made last
    EXPECT_GT(pick["distance"].get<double>(), 10.0);
    EXPECT_GT(pick["microseconds"].get<double>(), 0.0);
    expectPosition(pick, 15, 10, 10, 0.01);
}

TEST(ViewerPick, AllThatAClickCouldMeanIsToldInItsOrderWithTheVerdicts)
{
    const Files files;

    const Outcome outcome =
        runViewer({"--pick", "150,100", "--all", "--size", "300x200", "--view", "top", files.writeBrep("box.brep")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    const json list = json::parse(outcome.out);

    ASSERT_EQ(list.size(), 1u);
    EXPECT_THAT(keysOf(list[0]), UnorderedElementsAre("x", "y", "candidates", "microseconds"));
    const json& candidates = list[0]["candidates"];
    ASSERT_EQ(candidates.size(), 3u) << candidates; // the box is 10 high
    EXPECT_THAT(keysOf(candidates[0]), UnorderedElementsAre("kind", "id", "name", "type", "number", "distance",
                                                            "pixels", "position", "verdict"));
    EXPECT_EQ(candidates[0]["kind"], "face");
    EXPECT_EQ(candidates[0]["number"], 6);
    EXPECT_EQ(candidates[0]["name"], "box");
    EXPECT_EQ(candidates[0]["type"], "solid");
    EXPECT_EQ(candidates[0]["verdict"], "chosen");
    expectPosition(candidates[0], 15, 10, 10, 0.01);
    EXPECT_EQ(candidates[1]["kind"], "body");
    EXPECT_EQ(candidates[1]["verdict"], "possible");
    EXPECT_EQ(candidates[2]["kind"], "face");
    EXPECT_EQ(candidates[2]["number"], 5);
    EXPECT_EQ(candidates[2]["verdict"], "behind by 10 mm");
}

TEST(ViewerPick, NearTheBorderOfAFaceTheEdgeIsToldToo)
{
    const Files files;
    const std::string box = files.writeBrep("box.brep");

    // The upper face is 30 wide and fills 0.92 of the picture's width; its border lies at about 12 and 288.
    const json list = picked("282,100,18,100", box);

    ASSERT_EQ(list.size(), 2u);
    for (const json& pick : list) {
        ASSERT_TRUE(pick.contains("edge")) << pick;
        EXPECT_EQ(pick["face"], 6);
        EXPECT_THAT(keysOf(pick["edge"]), UnorderedElementsAre("index", "param"));
        EXPECT_NEAR(pick["edge"]["param"].get<double>(), 10, 0.1); // halfway along an edge of 20
    }
    EXPECT_NE(list[0]["edge"]["index"], list[1]["edge"]["index"]);
}

TEST(ViewerPick, CurveIsToldWithItsEdgeAndTheParameterThere)
{
    const Files files;

    // Down to the middle from above: the circle of radius 20 fills the height.
    std::string pixels;
    for (int y = 0; y < rows / 2; y += 4)
        pixels += (y > 0 ? "," : "") + std::string("150,") + std::to_string(y);
    const json list = picked(pixels, files.writeCurves("sketch.brep"));

    std::size_t curves = 0;
    for (const json& pick : list) {
        if (pick["hit"] == false || pick["type"] != "curve")
            continue;
        ++curves;
        EXPECT_THAT(keysOf(pick), UnorderedElementsAre("x", "y", "hit", "id", "name", "type", "edge", "distance",
                                                       "position", "microseconds"));
        EXPECT_EQ(pick["edge"]["index"], 1);
        EXPECT_NEAR(pick["edge"]["param"].get<double>(), std::numbers::pi / 2, 0.02);
        expectPosition(pick, 0, 20, 0, 0.3);
    }
    EXPECT_GE(curves, 1u);
    EXPECT_LE(curves, 4u); // it is met within 5 pixels
}

TEST(ViewerPick, PointIsToldByItsPlaceAlone)
{
    const Files files;

    const json pick = picked("150,100", files.writeCurves("sketch.brep"))[0];

    EXPECT_THAT(keysOf(pick),
                UnorderedElementsAre("x", "y", "hit", "id", "name", "type", "distance", "position", "microseconds"));
    EXPECT_EQ(pick["type"], "point");
    expectPosition(pick, 0, 0, 10, 1e-3);
}

TEST(ViewerPick, MeshHasNeitherFacesNorEdges)
{
    const Files files;
    const std::string plate = files.write("plate.stl", "solid plate\n"
                                                       "facet normal 0 0 1 outer loop vertex 0 0 0 vertex 30 0 0 "
                                                       "vertex 30 20 0 endloop endfacet\n"
                                                       "facet normal 0 0 1 outer loop vertex 0 0 0 vertex 30 20 0 "
                                                       "vertex 0 20 0 endloop endfacet\n"
                                                       "endsolid plate\n");

    const json pick = picked("200,60", plate)[0];

    EXPECT_THAT(keysOf(pick),
                UnorderedElementsAre("x", "y", "hit", "id", "name", "type", "distance", "position", "microseconds"));
    EXPECT_EQ(pick["type"], "mesh");
    EXPECT_EQ(pick["name"], "plate");
    EXPECT_NEAR(pick["position"][2].get<double>(), 0, 0.01);
}

TEST(ViewerPick, CloudIsToldWithTheNumberOfThePoint)
{
    const Files files;

    const json pick = picked("150,100", files.writeCloud("scan.xyz", 40))[0];

    EXPECT_THAT(keysOf(pick), UnorderedElementsAre("x", "y", "hit", "id", "name", "type", "point", "distance",
                                                   "position", "microseconds"));
    EXPECT_EQ(pick["type"], "cloud");
    EXPECT_EQ(pick["name"], "scan");
    // The points stand in rows of 21, two units apart. Within three units of the ray it is the highest one.
    const int point = pick["point"].get<int>();
    ASSERT_GE(point, 0);
    ASSERT_LT(point, 441);
    expectPosition(pick, 2 * (point / 21 - 10), 2 * (point % 21 - 10), 4.0 * ((point / 21) * (point % 21) % 7) / 7,
                   1e-3);
    EXPECT_LE(std::hypot(pick["position"][0].get<double>(), pick["position"][1].get<double>()), 3.5);
}

TEST(ViewerPick, ScanInMetresIsPickedAsTheSameInMillimetres)
{
    const Files files;
    const auto pickIn = [&files](const std::string& unit, double units) {
        std::string text;
        for (int i = 0; i < 441; ++i) // rows of 21, two units apart, no two at one height
            text += fmt::format("{:.6f} {:.6f} {:.6f}\n", (i / 21 * 2 - 20.4) / units, (i % 21 * 2 - 20.6) / units,
                                i * 37 % 441 / 40.0 / units);
        const std::string file = files.write("scan-" + unit + ".xyz", text);
        const Outcome outcome =
            runViewer({"--pick", "150,100", "--size", "300x200", "--view", "top", "--unit", unit, file});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return json::parse(outcome.out)[0];
    };

    const json millimetres = pickIn("mm", 1), metres = pickIn("m", 1000);

    EXPECT_EQ(metres["type"], "cloud");
    EXPECT_EQ(metres["point"], millimetres["point"]);
    EXPECT_NEAR(metres["distance"].get<double>(), millimetres["distance"].get<double>(), 1e-3);
    const auto place = millimetres["position"].get<std::vector<double>>();
    expectPosition(metres, place.at(0), place.at(1), place.at(2), 1e-3);
}

TEST(ViewerPick, PixelOfNothingIsToldWithItsPlaceOnTheFloor)
{
    const Files files;

    const json list = picked("0,0,300,200", files.writeBrep("box.brep"));

    ASSERT_EQ(list.size(), 2u);
    for (const json& pick : list) {
        EXPECT_THAT(keysOf(pick), UnorderedElementsAre("x", "y", "hit", "position", "microseconds"));
        EXPECT_EQ(pick["hit"], false);
        EXPECT_NEAR(pick["position"][2].get<double>(), 0, 1e-3);
    }
    // x goes to the right and y upwards, as the view from above has them.
    EXPECT_LT(list[0]["position"][0].get<double>(), 0);
    EXPECT_GT(list[0]["position"][1].get<double>(), 20);
    EXPECT_GT(list[1]["position"][0].get<double>(), 30);
    EXPECT_LT(list[1]["position"][1].get<double>(), 0);
}

TEST(ViewerPick, SameIsToldTwiceButForTheTimes)
{
    const auto pick = [] {
        json list = json::parse(runViewer({"--pick", "160,100,40,180", "--size", "320x200"}).out);
        for (json& entry : list)
            entry.erase("microseconds");
        return list;
    };

    EXPECT_EQ(pick(), pick());
}

/// The grid's summary, checked to add up.
json gridSummary(const std::vector<std::string>& arguments, int across, int down)
{
    const Outcome outcome = runViewer(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    const json summary = json::parse(outcome.out);
    EXPECT_THAT(keysOf(summary), UnorderedElementsAre("grid", "hits", "misses", "microseconds", "objects"));
    EXPECT_EQ(summary["grid"], json({across, down}));
    const int hits = summary["hits"].get<int>(), misses = summary["misses"].get<int>();
    EXPECT_EQ(hits + misses, across * down);
    int cells = 0;
    std::set<unsigned> ids;
    std::set<std::string> colors;
    for (const json& object : summary["objects"]) {
        EXPECT_THAT(keysOf(object), UnorderedElementsAre("id", "name", "type", "color", "cells"));
        EXPECT_TRUE(ids.insert(object["id"].get<unsigned>()).second) << object;
        EXPECT_TRUE(colors.insert(object["color"].get<std::string>()).second) << object;
        EXPECT_THAT(object["cells"].get<int>(), Gt(0));
        cells += object["cells"].get<int>();
    }
    EXPECT_EQ(cells, hits);
    const json& times = summary["microseconds"];
    EXPECT_THAT(keysOf(times), UnorderedElementsAre("median", "p99", "longest"));
    EXPECT_LE(times["median"].get<double>(), times["p99"].get<double>());
    EXPECT_LE(times["p99"].get<double>(), times["longest"].get<double>());
    return summary;
}

TEST(ViewerPickGrid, BoxFromAboveFillsThePartOfTheGridThatItFillsOfThePicture)
{
    const Files files;

    const json summary = gridSummary(
        {"--pick-grid", "60x40", "--size", "300x200", "--view", "top", files.writeBrep("box.brep")}, 60, 40);

    ASSERT_EQ(summary["objects"].size(), 1u);
    EXPECT_EQ(summary["objects"][0]["name"], "box");
    EXPECT_EQ(summary["objects"][0]["type"], "solid");
    EXPECT_NEAR(summary["hits"].get<double>() / (60 * 40), 0.92 * 0.92, 0.03);
}

TEST(ViewerPickGrid, PictureHasTheColoursOfTheSummaryAndAsManyOfThem)
{
    const Files files;
    const std::string file = files.path("ids.png");

    const json summary = gridSummary({"--pick-grid", "80x50", "--size", "400x250", "--pick-picture", file}, 80, 50);

    const QImage picture(QString::fromStdString(file));
    ASSERT_EQ(picture.size(), QSize(400, 250));
    std::map<std::string, int> pixels;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            ++pixels[QColor(picture.pixel(x, y)).name().toStdString()];
    constexpr int cell = 5 * 5;
    std::map<std::string, int> expected{{"#737373", summary["misses"].get<int>() * cell}};
    for (const json& object : summary["objects"])
        expected[object["color"].get<std::string>()] = object["cells"].get<int>() * cell;
    EXPECT_EQ(pixels, expected);
}

TEST(ViewerPickGrid, DemoStationShowsEveryKindThatCanBePickedAmongItsNames)
{
    const json summary = gridSummary({"--pick-grid", "200x125"}, 200, 125);

    std::set<std::string> types, names;
    for (const json& object : summary["objects"]) {
        types.insert(object["type"].get<std::string>());
        names.insert(object["name"].get<std::string>());
    }
    EXPECT_THAT(types, IsSupersetOf({"solid", "mesh", "curve", "cloud", "frame", "tool data"}));
    EXPECT_GE(summary["objects"].size(), 60u);
    EXPECT_THAT(names, IsSupersetOf({"Shoulder", "Elbow", "Fixture plate", "Door"}));
}

TEST(ViewerPickGrid, PictureThatCannotBeWrittenIsRefused)
{
    const Files files;
    const std::string blocked = files.write("file", "not a folder") + "/ids.png";

    const Outcome outcome = runViewer({"--pick-grid", "4x4", "--pick-picture", blocked, files.writeBrep("box.brep")});

    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, StrEq("vrkview: " + blocked + ": the picture cannot be written\n"));
}

} // namespace
} // namespace vrkview::test
