#include "platform/geometry/ColorText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace vrk::geometry {
namespace {

using testing::StrEq;
using testing::Throws;
using testing::ThrowsMessage;

float channel(int byte)
{
    return static_cast<float>(byte / 255.0);
}

struct ColorCase {
    const char* name;
    const char* text;
    int r, g, b;
};
class ColorText : public testing::TestWithParam<ColorCase> {};

TEST_P(ColorText, IsReadChannelByChannel)
{
    const ColorCase& c = GetParam();

    EXPECT_EQ(ParseColorText(c.text), rob::Colorf(channel(c.r), channel(c.g), channel(c.b)));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ColorText,
    testing::Values(ColorCase{"Usual", "#ED1C24", 0xED, 0x1C, 0x24},
                    ColorCase{"SmallLetters", "#ed1c24", 0xED, 0x1C, 0x24}, ColorCase{"Black", "#000000", 0, 0, 0},
                    ColorCase{"White", "#FFFFFF", 255, 255, 255},
                    ColorCase{"AnyFirstCharacter", "xED1C24", 0xED, 0x1C, 0x24},
                    ColorCase{"TailIsNotLookedAt", "#ED1C24FF", 0xED, 0x1C, 0x24},
                    ColorCase{"StopsAtNoDigit", "#1G2H3I", 1, 2, 3}, ColorCase{"LeadingSpace", "# F 1 2", 15, 1, 2},
                    ColorCase{"PlusSign", "#+F+1+2", 15, 1, 2}, ColorCase{"MinusSign", "#-10000", -1, 0, 0},
                    ColorCase{"LastChannelOfOneDigit", "#00000F", 0, 0, 15},
                    ColorCase{"FiveDigits", "#12345", 0x12, 0x34, 5}),
    [](const auto& info) { return std::string(info.param.name); });

class FaultyColorText : public testing::TestWithParam<const char*> {};

TEST_P(FaultyColorText, ChannelWithoutADigitIsRefused)
{
    EXPECT_THAT([] { ParseColorText(GetParam()); },
                ThrowsMessage<std::invalid_argument>(StrEq("invalid stoi argument")));
}

INSTANTIATE_TEST_SUITE_P(Texts, FaultyColorText, testing::Values("#", "#FF", "#FFFF", "#GG0000", "#00GG00", "#0000  "));

TEST(ColorTextLength, TextThatEndsBeforeAChannelIsOutOfRange)
{
    EXPECT_THAT([] { ParseColorText(""); }, Throws<std::out_of_range>());
    EXPECT_THAT([] { ParseColorText("#F"); }, Throws<std::out_of_range>());
    EXPECT_THAT([] { ParseColorText("#FFF"); }, Throws<std::out_of_range>());
}

TEST(ColorToText, EachByteComesBackAsItWas)
{
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text = ColorToText({channel(byte), channel(255 - byte), 0});
        EXPECT_EQ(ParseColorText(text), rob::Colorf(channel(byte), channel(255 - byte), 0)) << text;
    }
}

TEST(ColorToText, ChannelsOutOfRangeAreHeldToIt)
{
    EXPECT_EQ(ColorToText({-1, 2, 1}), "#00FFFF");
    EXPECT_EQ(ColorToText({std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 0}),
              "#00FF00");
}

} // namespace
} // namespace vrk::geometry
