#include "Program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>

#include <nlohmann/json.hpp>

#include <algorithm>
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
                                   HasSubstr("front, back, left, right, top, bottom")));
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
    for (const json& part : list["tree"]) {
        EXPECT_EQ(part["type"], "part");
        collect(part, all);
    }
    std::set<unsigned> ids;
    std::uint64_t bodies = 0, faces = 0, triangles = 0, meshes = 0;
    for (const json& entry : all) {
        EXPECT_TRUE(ids.insert(entry["id"].get<unsigned>()).second) << entry;
        EXPECT_FALSE(entry["name"].get<std::string>().empty());
        if (entry.contains("children"))
            continue;
        bodies += entry["bodies"].get<unsigned>();
        faces += entry["faces"].get<unsigned>();
        triangles += entry["triangles"].get<unsigned>();
        meshes += entry["type"] == "mesh" ? 1 : 0;
    }
    EXPECT_GE(bodies, 8u);
    EXPECT_EQ(list["bodies"], bodies);
    EXPECT_EQ(list["faces"], faces);
    EXPECT_EQ(list["triangles"], triangles);
    EXPECT_EQ(meshes, 1u);
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

TEST(ViewerShot, DemoStationFillsAPictureOfTheSizeAskedFor)
{
    const Files files;

    const Outcome outcome = runViewer({"--shot", files.path("demo.png"), "--size", "400x300"});

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

    const Outcome outcome = runViewer({"--shot", files.path("demo.png"), "--size", "200x150", "--view", "front,top"});

    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_FALSE(std::filesystem::exists(files.path("demo.png")));
    const QImage front(QString::fromStdString(files.path("demo-front.png")));
    const QImage top(QString::fromStdString(files.path("demo-top.png")));
    EXPECT_EQ(front.size(), QSize(200, 150));
    EXPECT_EQ(top.size(), QSize(200, 150));
    EXPECT_GT(shown(top), shown(front)); // the plate, seen from above and from its edge
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

    ASSERT_EQ(runViewer({"--shot", files.path("p.png"), "--size", "300x300", "--view", "all", brep}).exitCode, 0);

    for (const Case& c : {Case{"front", 30, 10}, Case{"back", 30, 10}, Case{"left", 20, 10}, Case{"right", 20, 10},
                          Case{"top", 30, 20}, Case{"bottom", 30, 20}}) {
        SCOPED_TRACE(c.view);
        const QImage picture(QString::fromStdString(files.path(std::string("p-") + c.view + ".png")));
        int left = 300, right = -1, upper = 300, lower = -1;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                if (!isBackground(picture.pixel(x, y))) {
                    left = std::min(left, x);
                    right = std::max(right, x);
                    upper = std::min(upper, y);
                    lower = std::max(lower, y);
                }
        ASSERT_GT(right, left);
        EXPECT_NEAR(static_cast<double>(right - left) / (lower - upper), c.across / c.upwards, 0.1);
        EXPECT_GT(right - left, 250); // fitted
    }
}

TEST(ViewerShot, SamePictureComesTwice)
{
    const Files files;

    ASSERT_EQ(runViewer({"--shot", files.path("a.png"), "--size", "160x120"}).exitCode, 0);
    ASSERT_EQ(runViewer({"--shot", files.path("b.png"), "--size", "160x120"}).exitCode, 0);

    EXPECT_EQ(QImage(QString::fromStdString(files.path("a.png"))), QImage(QString::fromStdString(files.path("b.png"))));
}

} // namespace
} // namespace vrkview::test
