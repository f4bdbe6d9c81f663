#include "platform/common/NumberText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>

namespace vrk::common {
namespace {

/// What is left behind the number; "refused" or "too large" in place of it where it is that.
template <typename Number>
std::string read(std::string_view text, Number& value)
{
    const char* const end = text.data() + text.size();
    const auto [stop, error] = readNumber(text.data(), end, value);
    if (error == std::errc::result_out_of_range)
        return "too large";
    if (error != std::errc()) {
        EXPECT_EQ(stop, text.data());
        return "refused";
    }
    return {stop, end};
}

TEST(ReadNumber, EndsWhereNoMoreOfItFollows)
{
    double value = 0;
    EXPECT_EQ(read("1.5mm", value), "mm");
    EXPECT_EQ(value, 1.5);
    EXPECT_EQ(read("-.5e2 7", value), " 7");
    EXPECT_EQ(value, -50);
}

TEST(ReadNumber, PlusMayStandBeforeIt)
{
    float value = 0;
    EXPECT_EQ(read("+2", value), "");
    EXPECT_EQ(value, 2);
    for (const char* text : {"+", "+-2", "++2", "-+2", "--2", "", "mm"})
        EXPECT_EQ(read(text, value), "refused") << text;
    EXPECT_EQ(value, 2);
}

TEST(ReadNumber, TooSmallOneIsRounded)
{
    float single = 1;
    EXPECT_EQ(read("1e-400", single), "");
    EXPECT_EQ(single, 0);
    EXPECT_EQ(read("+1e-45", single), "");
    EXPECT_EQ(single, std::numeric_limits<float>::denorm_min());
    double value = 1;
    EXPECT_EQ(read("0." + std::string(400, '0') + "1", value), "");
    EXPECT_EQ(value, 0);
}

TEST(ReadNumber, TooLargeOneIsToldAndChangesNothing)
{
    float single = 1;
    EXPECT_EQ(read("1e39", single), "too large");
    EXPECT_EQ(read("-1e400", single), "too large");
    EXPECT_EQ(single, 1);
    double value = 1;
    EXPECT_EQ(read("1e39", value), "");
    EXPECT_EQ(read("1" + std::string(400, '0') + "e-5", value), "too large");
    EXPECT_EQ(value, 1e39);
}

} // namespace
} // namespace vrk::common
