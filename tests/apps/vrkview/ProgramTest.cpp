#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <QRect>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <set>
#include <vector>

namespace vrkview::test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StrEq;

bool isBackground(QRgb pixel)
{
    constexpr int grey = 115; // 0.45 of 255
    return std::abs(qRed(pixel) - grey) <= 1 && std::abs(qGreen(pixel) - grey) <= 1 &&
           std::abs(qBlue(pixel) - grey) <= 1;
}

/// The share of the pixels that show something, 0 to 1.
double shown(const QImage& picture)
{
    long count = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            count += isBackground(picture.pixel(x, y)) ? 0 : 1;
    return static_cast<double>(count) / (static_cast<double>(picture.width()) * picture.height());
}

std::size_t colors(const QImage& picture)
{
    std::set<QRgb> seen;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            seen.insert(picture.pixel(x, y));
    return seen.size();
}

void collect(const json& entry, std::vector<json>& all)
{
    all.push_back(entry);
    if (entry.contains("children"))
        for (const json& child : entry["children"])
            collect(child, all);
}

TEST(ViewerProgram, VersionIsToldOnStandardOutput)
{
    const Outcome outcome = runViewer({"--version"});

    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, StrEq("vrkview " VRK_VERSION "\n"));
    EXPECT_THAT(outcome.err, IsEmpty());
}

TEST(ViewerProgram, HelpNamesTheOptionsAndTheKeys)
{
    const Outcome outcome = runViewer({"--help"});

    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.out, AllOf(HasSubstr("--shot"), HasSubstr("--list"), HasSubstr("--view"), HasSubstr("Keys"),
                                   HasSubstr("F5 to F8"), HasSubstr("shaded, shaded-edges, edges, wire"),
                                   HasSubstr("front, back, left, right, top, bottom"), HasSubstr("--record"),
                                   HasSubstr("--play-picture"), HasSubstr("Alt+click")));
    EXPECT_THAT(outcome.err, IsEmpty());
}

TEST(ViewerList, DemoStationIsATreeWhoseCountsAddUp)
{
    const Outcome outcome = runViewer({"--list"});

    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.err, IsEmpty());
    const json list = json::parse(outcome.out);
    EXPECT_EQ(list["station"], "Demo station");
    std::vector<json> all;
    std::multiset<std::string> types;
    for (const json& part : list["tree"]) {
        types.insert(part["type"].get<std::string>());
        collect(part, all);
    }
    std::set<unsigned> ids;
    for (const char* one : {"manipulator", "device", "assembly", "cloud", "frame"})
        EXPECT_EQ(types.count(one), 1u) << one;
    EXPECT_EQ(types.count("part"), list["tree"].size() - 5);
    std::uint64_t bodies = 0, faces = 0, triangles = 0, meshes = 0, curves = 0, points = 0;
    for (const json& entry : all) {
        EXPECT_TRUE(ids.insert(entry["id"].get<unsigned>()).second) << entry;
        EXPECT_FALSE(entry["name"].get<std::string>().empty());
        if (entry.contains("children") && entry["type"] != "solid") // a body may carry a band
            continue;
        bodies += entry["bodies"].get<unsigned>();
        faces += entry["faces"].get<unsigned>();
        triangles += entry["triangles"].get<unsigned>();
        meshes += entry["type"] == "mesh" ? 1 : 0;
        curves += entry["type"] == "curve" ? 1 : 0;
        points += entry["points"].get<unsigned>();
    }
    EXPECT_GE(bodies, 50u);
    EXPECT_EQ(list["bodies"], bodies);
    EXPECT_EQ(list["faces"], faces);
    EXPECT_EQ(list["triangles"], triangles);
    EXPECT_EQ(meshes, 5u); // panels of the fence
    EXPECT_EQ(curves, 1u);
    EXPECT_EQ(list["curves"], curves);
    EXPECT_EQ(points, 200000u);
    EXPECT_EQ(list["points"], points);
}

/// The first entry of that type on the way down, null if there is none.
const json* findType(const json& tree, const std::string& type)
{
    for (const json& entry : tree) {
        if (entry["type"] == type)
            return &entry;
        if (const json* found = entry.contains("children") ? findType(entry["children"], type) : nullptr)
            return found;
    }
    return nullptr;
}

TEST(ViewerList, DemoStationIsACellWhoseArmAndPositionerCarryThings)
{
    const json tree = json::parse(runViewer({"--list"}).out)["tree"];

    const json* arm = findType(tree, "manipulator");
    ASSERT_TRUE(arm);
    std::vector<std::string> links;
    for (const json& child : (*arm)["children"])
        links.push_back(child["type"]);
    EXPECT_THAT(links, testing::Each(StrEq("link")));
    EXPECT_EQ(links.size(), 7u); // of six axes
    const json* wrist = findType((*arm)["children"], "wrist");
    ASSERT_TRUE(wrist);
    const json* torch = findType((*wrist)["children"], "tool");
    ASSERT_TRUE(torch);
    EXPECT_TRUE(findType((*torch)["children"], "tool data"));
    const json* table = &findType(tree, "device")->at("children").back();
    const json* fixture = &table->at("children").back();
    EXPECT_EQ(fixture->at("name"), "Fixture");
    EXPECT_TRUE(findType(fixture->at("children"), "work object"));
    EXPECT_EQ(fixture->at("children").back()["name"], "Workpiece");
}

TEST(ViewerList, DemoStationThatWasSavedOpensAsTheSameTree)
{
    const Files files;
    const std::string saved = files.path("cell.station.json");

    const Outcome made = runViewer({"--list", "--save", saved});
    const Outcome opened = runViewer({"--list", saved});

    ASSERT_EQ(opened.exitCode, 0) << opened.err;
    const auto things = [](const json& list) {
        std::vector<json> all;
        for (const json& entry : list["tree"])
            collect(entry, all);
        std::vector<std::string> told;
        for (const json& entry : all)
            told.push_back(entry["id"].dump() + entry["type"].dump() + entry["name"].dump());
        return told;
    };
    const json before = json::parse(made.out), after = json::parse(opened.out);
    EXPECT_EQ(things(after), things(before));
    EXPECT_EQ(after["bodies"], before["bodies"]);
    EXPECT_EQ(after["points"], before["points"]);
}

TEST(ViewerList, FilesAreListedTogetherUnderTheirNames)
{
    const Files files;

    const Outcome outcome = runViewer({"--list", files.writeBrep("first.brep"), files.writeStep("second.step")});

    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const json list = json::parse(outcome.out);
    EXPECT_EQ(list["station"], "first.brep and 1 more");
    ASSERT_EQ(list["tree"].size(), 2u);
    EXPECT_EQ(list["tree"][0]["name"], "first");
    EXPECT_EQ(list["bodies"], 2);
    EXPECT_EQ(list["faces"], 12);
    EXPECT_EQ(list["triangles"], 24);
}

TEST(ViewerList, CloudsStandBesideCad)
{
    const Files files;

    const Outcome outcome = runViewer({"--list", files.writeCloud("scan.xyz", 5), files.writeBrep("box.brep")});

    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const json list = json::parse(outcome.out);
    EXPECT_EQ(list["bodies"], 1);
    EXPECT_EQ(list["points"], 441);
    ASSERT_EQ(list["tree"].size(), 2u);
    EXPECT_EQ(list["tree"][0]["type"], "part");
    EXPECT_EQ(list["tree"][1]["type"], "cloud");
    EXPECT_EQ(list["tree"][1]["name"], "scan");
    EXPECT_EQ(list["tree"][1]["points"], 441);
}

TEST(ViewerList, CurvesAndPointsOfAFileAreListed)
{
    const Files files;

    const Outcome outcome = runViewer({"--list", files.writeCurves("sketch.brep")});

    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const json list = json::parse(outcome.out);
    EXPECT_EQ(list["bodies"], 0);
    EXPECT_EQ(list["curves"], 1);
    EXPECT_EQ(list["points"], 1);
    ASSERT_EQ(list["tree"][0]["children"].size(), 2u);
    EXPECT_EQ(list["tree"][0]["children"][0]["type"], "curve");
    EXPECT_EQ(list["tree"][0]["children"][1]["type"], "point");
}

QImage shot(const Files& files, const std::string& name, std::vector<std::string> arguments)
{
    const std::string picture = files.path(name + ".png");
    arguments.insert(arguments.end(), {"--background", "none", "--no-shadow", "--shot", picture, "--size", "300x200"});
    const Outcome outcome = runViewer(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return QImage(QString::fromStdString(picture));
}

TEST(ViewerShot, DisplayChoosesWhatIsDrawnOfTheBodies)
{
    const Files files;
    const std::string box = files.writeBrep("box.brep");

    const QImage plain = shot(files, "plain", {box});
    const QImage shaded = shot(files, "shaded", {"--display", "shaded", box});
    const QImage shadedEdges = shot(files, "shaded-edges", {"--display", "shaded-edges", box});
    const QImage edges = shot(files, "edges", {"--display", "edges", box});
    const QImage wire = shot(files, "wire", {"--display", "wire", box});

    EXPECT_EQ(plain, shadedEdges);
    EXPECT_NE(shaded, shadedEdges);
    EXPECT_GT(shown(shaded), 0.3);
    EXPECT_LT(shown(edges), shown(shaded) / 4);
    EXPECT_GT(shown(edges), 0.01);
    EXPECT_LT(shown(wire), shown(shaded) / 4);
    EXPECT_GT(shown(wire), 0.01);
    EXPECT_NE(wire, edges);
}

TEST(ViewerShot, LinesLeaveTheFacesOfBodiesAway)
{
    const Files files;
    const std::string box = files.writeBrep("box.brep");

    const QImage shaded = shot(files, "shaded", {"--display", "shaded", box});
    const QImage edges = shot(files, "edges", {"--display", "edges", box});
    const QImage lines = shot(files, "lines", {"--display", "lines", box});
    const QImage dashed = shot(files, "dashed", {"--display", "lines-dashed", box});

    EXPECT_LT(shown(lines), shown(shaded) / 4);
    EXPECT_GT(shown(lines), 0.01);
    EXPECT_NE(lines, edges) << "hidden edges";
    EXPECT_GT(shown(dashed), 1.02 * shown(lines)) << "in dashes";
}

TEST(ViewerShot, AllButSomeThingsAreGhosts)
{
    const Files files;
    const std::string first = files.writeBrep("first.brep");
    const std::string second = files.writeBrep("second.brep");

    const QImage plain = shot(files, "plain", {first, second});
    const QImage whole = shot(files, "whole", {"--ghosts-except", "first", "--ghosts-except", "second", first, second});
    const QImage one = shot(files, "one", {"--ghosts-except", "first", first, second});

    EXPECT_EQ(whole, plain);
    EXPECT_NE(one, plain);
    const Outcome unknown = runViewer({"--ghosts-except", "third", "--shot", files.path("none.png"), first});
    EXPECT_EQ(unknown.exitCode, 2);
    EXPECT_THAT(unknown.err, HasSubstr("nothing in the station is named 'third'"));
    EXPECT_EQ(runViewer({"--ghosts-except", "first", first}).exitCode, 1) << "it is for pictures";
}

TEST(ViewerShot, MeshIsDrawnWithTheEdgesAtWhichItIsBent)
{
    const Files files;
    // A roof: its ridge runs through the middle of the picture, seen from above.
    const std::string roof =
        files.write("roof.ply", "ply\nformat ascii 1.0\nelement vertex 6\nproperty float x\nproperty "
                                "float y\nproperty float z\nelement face 2\nproperty list uchar int "
                                "vertex_indices\nend_header\n-100 -60 0\n100 -60 0\n100 0 60\n-100 0 "
                                "60\n100 60 0\n-100 60 0\n4 0 1 2 3\n4 3 2 4 5\n");
    /// Of 400 columns in the middle of the picture; the line lies half in one row of pixels and half in the next.
    const auto darkOnTheRidge = [&](const char* mode) {
        const std::string file = files.path(std::string(mode) + ".png");
        EXPECT_EQ(runViewer({"--shot", file, "--size", "1200x800", "--view", "top", "--display", mode, roof}).exitCode,
                  0);
        const QImage picture(QString::fromStdString(file));
        int dark = 0;
        for (int x = 400; x < 800; ++x) {
            int least = 255;
            for (int y = 395; y <= 405; ++y)
                least = std::min(least, qRed(picture.pixel(x, y)));
            dark += 4 * least < 3 * std::min(qRed(picture.pixel(x, 380)), qRed(picture.pixel(x, 420))) ? 1 : 0;
        }
        return dark;
    };

    EXPECT_GE(darkOnTheRidge("shaded-edges"), 395);
    EXPECT_EQ(darkOnTheRidge("shaded"), 0);
}

TEST(ViewerShot, SmoothMeshIsSavedWithTheStationAndLooksTheSame)
{
    const Files files;
    // Twelve sides of a wall, each bent by 30 degrees against the next.
    std::string ply = "ply\nformat ascii 1.0\nelement vertex 24\nproperty float x\nproperty float y\nproperty float z\n"
                      "element face 12\nproperty list uchar int vertex_indices\nend_header\n";
    for (int i = 0; i < 24; ++i)
        ply +=
            fmt::format("{} {} {}\n", 100 * std::cos(i / 2 * M_PI / 6), 100 * std::sin(i / 2 * M_PI / 6), i % 2 * 150);
    for (int i = 0; i < 12; ++i)
        ply += fmt::format("4 {} {} {} {}\n", 2 * i, (2 * i + 2) % 24, (2 * i + 3) % 24, 2 * i + 1);
    const std::string wall = files.write("wall.ply", ply), station = files.path("wall.station.json");

    const QImage usual = shot(files, "usual", {wall});
    const QImage facets = shot(files, "facets", {"--smooth=0", "--save", station, wall});

    EXPECT_NE(facets, usual);
    EXPECT_EQ(shot(files, "smooth", {"--smooth", wall}), usual) << "which a PLY file without normals is anyway";
    EXPECT_EQ(shot(files, "again", {station}), facets);
    EXPECT_THAT(runViewer({"--list", "--smooth=181", wall}).err, HasSubstr("'181' is no angle from 0 to 180 degrees"));
}

TEST(ViewerShot, CrossOfAxesTakesTheSamePartOfEveryPicture)
{
    const Files files;
    const std::string plate = files.writeBrep("plate.brep");
    const auto crossArea = [&](const std::string& size) {
        const Outcome outcome = runViewer({"--background", "none", "--no-shadow", "--shot", files.path("cross.png"),
                                           "--size", size, "--view", "front", plate});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        const QImage picture(QString::fromStdString(files.path("cross.png")));
        QRect area;
        for (int y = picture.height() * 7 / 10; y < picture.height(); ++y) // below the plate
            for (int x = 0; x < picture.width(); ++x)
                if (!isBackground(picture.pixel(x, y)))
                    area |= QRect(x, y, 1, 1);
        const auto part = [&](int pixels) { return static_cast<double>(pixels) / picture.height(); };
        return std::array{part(area.left()), part(area.width()), part(area.height())};
    };

    const std::array small = crossArea("600x600");
    const std::array large = crossArea("2200x2200"); // this one is not averaged down from a larger one

    for (std::size_t i = 0; i < small.size(); ++i)
        EXPECT_NEAR(small[i], large[i], 0.012);
    EXPECT_GT(large[1], 0.05);
    const std::array smallest = crossArea("320x320"); // its letters could not be read otherwise
    EXPECT_GT(smallest[2], 1.5 * small[2]);
}

TEST(ViewerShot, BackgroundIsTheOneAskedFor)
{
    const Files files;
    const auto corners = [&](std::vector<std::string> background) {
        const std::string picture = files.path("background.png");
        background.insert(background.end(), {"--shot", picture, "--size", "200x150", files.writeBrep("plate.brep")});
        EXPECT_EQ(runViewer(background).exitCode, 0);
        const QImage drawn(QString::fromStdString(picture));
        return std::pair(drawn.pixel(199, 0), drawn.pixel(199, 149));
    };
    const auto isNear = [](QRgb pixel, int r, int g, int b) {
        return std::abs(qRed(pixel) - r) <= 2 && std::abs(qGreen(pixel) - g) <= 2 && std::abs(qBlue(pixel) - b) <= 2;
    };

    const auto [top, bottom] = corners({"--background", "#205080,#A0C0E0"});
    EXPECT_TRUE(isNear(top, 0x20, 0x50, 0x80));
    EXPECT_TRUE(isNear(bottom, 0xA0, 0xC0, 0xE0));
    const auto [one, same] = corners({"--background", "#FFFFFF"});
    EXPECT_TRUE(isNear(one, 255, 255, 255) && isNear(same, 255, 255, 255));
    const auto [usualTop, usualBottom] = corners({});
    EXPECT_GT(qGray(usualBottom), qGray(usualTop) + 40) << "a gradient";
}

TEST(ViewerShot, BodiesThrowAShadowOnTheGroundUnlessTheyMayNot)
{
    const Files files;
    const std::string box = files.writeBrep("box.brep");

    const QImage without = shot(files, "without", {box});
    const std::string picture = files.path("with.png");
    ASSERT_EQ(runViewer({"--background", "none", "--shot", picture, "--size", "300x200", box}).exitCode, 0);
    const QImage with(QString::fromStdString(picture));

    int darker = 0;
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 300; ++x)
            if (isBackground(without.pixel(x, y)))
                darker += qGray(with.pixel(x, y)) < qGray(without.pixel(x, y)) - 10;
    EXPECT_GT(darker, 300);
    EXPECT_EQ(with.pixel(150, 90), without.pixel(150, 90)) << "the box itself";
}

TEST(ViewerShot, CurvesFillThePicture)
{
    const Files files;

    const QImage picture = shot(files, "sketch", {"--view", "top", files.writeCurves("sketch.brep")});

    EXPECT_FALSE(isBackground(picture.pixel(150, 100))); // the point, and the frame below it
    const int radius = static_cast<int>(0.46 * 200);
    bool isDrawn = false;
    for (int x = 150 + radius - 12; x < 150 + radius + 4; ++x)
        isDrawn = isDrawn || !isBackground(picture.pixel(x, 99));
    EXPECT_TRUE(isDrawn);
}

TEST(ViewerShot, CloudOfAnySizeFillsThePicture)
{
    const Files files;

    for (const double side : {0.5, 5.0, 500.0}) {
        SCOPED_TRACE(side);
        const QImage picture = shot(files, "cloud", {"--view", "top", files.writeCloud("cloud.xyz", side)});

        QRect area;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 60; x < picture.width(); ++x) { // without the cross of axes, and without the legend
                const bool mayBeLegend = x > 200 && y > 80;
                if (!mayBeLegend && !isBackground(picture.pixel(x, y)))
                    area |= QRect(x, y, 1, 1);
            }
        EXPECT_NEAR(area.height(), 0.92 * 200, 6);
        EXPECT_NEAR(area.width(), 0.92 * 200, 6);
    }
}

TEST(ViewerShot, GridIsShownFromOneCellOn)
{
    const Files files;

    const QImage small = shot(files, "small", {files.writeCloud("small.xyz", 960)});
    const QImage large = shot(files, "large", {files.writeCloud("large.xyz", 1040)});

    const auto lineIn = [](const QImage& picture) { // above the cloud
        for (int x = 0; x < picture.width(); ++x)
            if (!isBackground(picture.pixel(x, 4)))
                return true;
        return false;
    };
    EXPECT_FALSE(lineIn(small));
    EXPECT_TRUE(lineIn(large));
}

TEST(ViewerShot, SurveyedCloudIsAsSharpAsOneAtTheOrigin)
{
    const Files files;

    const QImage here = shot(files, "here", {files.writeCloud("here.xyz", 20)});
    const QImage far = shot(files, "far", {files.writeCloud("far.xyz", 20, 512000, 5403000)});

    EXPECT_NEAR(shown(far), shown(here), 0.1 * shown(here));
}

TEST(ViewerShot, DemoStationFillsAPictureOfTheSizeAskedFor)
{
    const Files files;

    const Outcome outcome =
        runViewer({"--background", "none", "--no-shadow", "--shot", files.path("demo.png"), "--size", "400x300"});

    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_THAT(outcome.out, IsEmpty());
    EXPECT_THAT(outcome.err, IsEmpty());
    const QImage picture(QString::fromStdString(files.path("demo.png")));
    EXPECT_EQ(picture.size(), QSize(400, 300));
    EXPECT_TRUE(isBackground(picture.pixel(2, 2)));
    EXPECT_GT(shown(picture), 0.25);
    EXPECT_GT(colors(picture), 1000u); // lit and smoothed, not a flat shape
}

TEST(ViewerShot, SeveralViewsMakeSeveralPicturesThatDiffer)
{
    const Files files;

    const Outcome outcome = runViewer({"--background", "none", "--no-shadow", "--shot", files.path("demo.png"),
                                       "--size", "200x150", "--view", "front,top"});

    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_FALSE(std::filesystem::exists(files.path("demo.png")));
    const QImage front(QString::fromStdString(files.path("demo-front.png")));
    const QImage top(QString::fromStdString(files.path("demo-top.png")));
    EXPECT_EQ(front.size(), QSize(200, 150));
    EXPECT_EQ(top.size(), QSize(200, 150));
    EXPECT_NE(top, front);
}

TEST(ViewerShot, StationIsDrawnInTheViewThatItWasLeftInUnlessAnotherIsChosen)
{
    const Files files;

    const QImage left = shot(files, "left", {});
    const QImage iso = shot(files, "iso", {"--view", "iso"});

    EXPECT_NE(left, iso);
    EXPECT_GT(shown(left), shown(iso)); // it is nearer
}

TEST(ViewerShot, JointsMoveTheArmOfTheDemoStation)
{
    const Files files;

    const QImage ready = shot(files, "ready", {});

    EXPECT_NE(shot(files, "turned", {"--joints", "60"}), ready);
    EXPECT_NE(shot(files, "wrist", {"--joints", "-12.1,23.8,12,5.5,-40"}), ready);
}

TEST(ViewerShot, EachDirectionShowsTheSideThatItIsNamedAfter)
{
    // A plate of 30 x 20 x 10 is as wide as its longer side says, whatever the direction.
    struct Case {
        const char* view;
        double across, upwards;
    };
    const Files files;
    const std::string brep = files.writeBrep("plate.brep");

    ASSERT_EQ(runViewer({"--background", "none", "--no-shadow", "--shot", files.path("p.png"), "--size", "600x600",
                         "--view", "all", brep})
                  .exitCode,
              0);

    for (const Case& c : {Case{"front", 30, 10}, Case{"back", 30, 10}, Case{"left", 20, 10}, Case{"right", 20, 10},
                          Case{"top", 30, 20}, Case{"bottom", 30, 20}}) {
        SCOPED_TRACE(c.view);
        const QImage picture(QString::fromStdString(files.path(std::string("p-") + c.view + ".png")));
        int left = 600, right = -1, upper = 600, lower = -1;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (!isBackground(picture.pixel(x, y)) && !(x < 100 && y > 510)) { // there is the cross of axes
                    left = std::min(left, x);
                    right = std::max(right, x);
                    upper = std::min(upper, y);
                    lower = std::max(lower, y);
                }
        ASSERT_GT(right, left);
        EXPECT_NEAR(static_cast<double>(right - left) / (lower - upper), c.across / c.upwards, 0.1);
        EXPECT_GT(right - left, 500); // fitted
    }
}

TEST(ViewerShot, SamePictureComesTwice)
{
    const Files files;

    ASSERT_EQ(
        runViewer({"--background", "none", "--no-shadow", "--shot", files.path("a.png"), "--size", "160x120"}).exitCode,
        0);
    ASSERT_EQ(
        runViewer({"--background", "none", "--no-shadow", "--shot", files.path("b.png"), "--size", "160x120"}).exitCode,
        0);

    EXPECT_EQ(QImage(QString::fromStdString(files.path("a.png"))), QImage(QString::fromStdString(files.path("b.png"))));
}

} // namespace
} // namespace vrkview::test
