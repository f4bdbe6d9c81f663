// What the examples drew when they were built and run from the installed package.
#include "support/Picture.h"

#include <gtest/gtest.h>

namespace vrk::test {
namespace {

/// run.sh leaves them there, in the build folder.
Picture drawn(const std::string& name)
{
    return readPng("consumer/pictures/" + name + ".png");
}

TEST(ExamplePictures, BlockStandsAtTheEndOfTheBeam)
{
    EXPECT_TRUE(matchesBaseline(drawn("moving"), "example_moving"));
}

TEST(ExamplePictures, BracketIsSeenFromItsSides)
{
    EXPECT_TRUE(matchesBaseline(drawn("side1"), "example_side1"));
    EXPECT_TRUE(matchesBaseline(drawn("side8"), "example_side8"));
}

TEST(ExamplePictures, WindowShowsTheBracket)
{
    EXPECT_TRUE(matchesBaseline(drawn("window"), "example_window"));
}

/// How wide the view is there goes with the font of the label beside it.
TEST(ExamplePictures, WidgetShowsTheBracketAsTheWindowDoes)
{
    const auto lightShare = [](const Picture& picture) {
        std::size_t light = 0;
        for (unsigned y = 0; y < picture.height; ++y)
            for (unsigned x = 0; x < picture.width; ++x)
                light += picture.at(x, y).g > 125 ? 1 : 0; // brighter than what is behind it
        return static_cast<double>(light) / picture.width / picture.height;
    };
    const Picture widget = drawn("widget"), window = drawn("window");
    EXPECT_GT(widget.width, 400u);
    EXPECT_GT(lightShare(window), 0.1);
    EXPECT_NEAR(lightShare(widget) / lightShare(window), 1, 0.35);
}

} // namespace
} // namespace vrk::test
