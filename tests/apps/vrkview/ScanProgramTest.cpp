// Units and colours of meshes and scans, from the command line.

#include "Program.h"
#include "canvas/CloudLooks.h"
#include "canvas/HeightLegend.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QImage>
#include <QLocale>

#include <cmath>

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

/// How many pixels of the right half of the picture's lower half have a colour of the scale and stand in a column of them, as
/// only the legend's do.
int legendPixels(const QImage& picture)
{
    const auto lowest = heightColor(0), highest = heightColor(1);
    const auto isLike = [](QRgb pixel, const vrk::rob::ColorTemplate<double>& color) {
        return std::abs(qRed(pixel) - 255 * color.r) < 14 && std::abs(qGreen(pixel) - 255 * color.g) < 14 &&
               std::abs(qBlue(pixel) - 255 * color.b) < 14;
    };
    int found = 0;
    for (int x = picture.width() / 2; x < picture.width(); ++x) {
        int last = -1; // of the bar's upper end
        for (int y = picture.height() / 3; y < picture.height(); ++y)
            if (isLike(picture.pixel(x, y), highest) && last < 0)
                last = y;
            else if (isLike(picture.pixel(x, y), lowest) && last >= 0)
                ++found;
    }
    return found;
}

/// A scan along the left border of its box, so that the right corner of a picture from the front is free.
std::string scanByHeight()
{
    std::string points = "400 0 390\n400 0 400\n";
    for (int i = 0; i < 4000; ++i)
        points += std::to_string(i % 60) + " " + std::to_string(i % 7) + " " + std::to_string(i / 10) + "\n";
    return points;
}

TEST_F(ViewerScan, PictureTellsWhatHeightsMeanInAnySize)
{
    const std::string scan = files.write("scan.xyz", scanByHeight());
    for (const char* size : {"320x200", "1600x1000", "3840x2160"}) {
        SCOPED_TRACE(size);
        const std::string file = files.path("p.png");
        const Outcome outcome =
            runViewer({scan, "--view", "front", "--shot", file, "--size", size}, "XDG_RUNTIME_DIR=");
        ASSERT_EQ(outcome.exitCode, 0);
        EXPECT_THAT(outcome.err, IsEmpty());
        const QImage picture(QString::fromStdString(file));

        EXPECT_GT(legendPixels(picture), picture.height() / 100);
    }
}

TEST_F(ViewerScan, PictureHasNoLegendWhereNoColourMeansAHeight)
{
    std::string colored = scanByHeight();
    for (std::size_t end = colored.find('\n'); end != std::string::npos; end = colored.find('\n', end + 9))
        colored.insert(end, " 9 9 200");
    const auto legendOf = [this](const std::vector<std::string>& arguments) {
        std::vector<std::string> all = arguments;
        all.insert(all.end(), {"--view", "front", "--shot", files.path("p.png"), "--size", "320x200"});
        EXPECT_EQ(runViewer(all).exitCode, 0);
        return legendPixels(QImage(QString::fromStdString(files.path("p.png"))));
    };
    const std::string scan = files.write("scan.xyz", colored);

    EXPECT_EQ(legendOf({scan}), 0);
    EXPECT_GT(legendOf({scan, "--by-height"}), 0);
    EXPECT_EQ(legendOf({scan, "--by-height", files.write("hall.ply", plyBox(9000)), "--unit", "mm"}), 0);
}

TEST(HeightMarks, AreBothEndsAndRoundNumbersThatKeepApart)
{
    QLocale::setDefault(QLocale::c());
    ShownHeights heights;
    heights.clouds = 1;
    const auto textsOf = [&heights](double low, double high, double lines) {
        heights.range = {low, high};
        std::vector<std::string> texts;
        double last = -1;
        for (const HeightMark& mark : heightMarks(heights, lines)) {
            EXPECT_GE(mark.part - last, last < 0 ? 0 : 1 / lines);
            last = mark.part;
            texts.push_back(mark.text.toStdString());
        }
        return texts;
    };

    EXPECT_THAT(textsOf(0, 250, 7.5), testing::ElementsAre("0", "50", "100", "150", "200", "250"));
    EXPECT_THAT(textsOf(-1.35, 1.71, 7.5), testing::ElementsAre("-1.35", "0.00", "1.00", "1.71"));
    EXPECT_THAT(textsOf(0, 250, 1), testing::ElementsAre("0", "250"));
    EXPECT_THAT(textsOf(7, 7, 7.5), testing::ElementsAre("7"));
    heights.range.reset();
    EXPECT_EQ(heightMarks(heights, 7.5).front().text, "low");
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
