#include "platform/common/Checks.h"

#include "support/ThrowsExactly.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <unordered_map>
#include <vector>

namespace vrk::common {
namespace {

using testing::Throws;

TEST(CheckedAt, KnownKeyGivesItsValueToChange)
{
    std::unordered_map<unsigned, std::string> map{{7, "seven"}};

    checkedAt(map, 7u) += "!";

    EXPECT_EQ(map.at(7), "seven!");
}

TEST(CheckedAt, UnknownKeyIsRefusedAndNotEntered)
{
    std::unordered_map<unsigned, std::string> map{{7, "seven"}};

    EXPECT_THAT([&] { checkedAt(map, 8u); }, test::throwsExactly<std::out_of_range>("invalid unordered_map<K, T> key"));
    EXPECT_EQ(map.size(), 1u);
}

TEST(CheckedSubscript, LastElementIsThere)
{
    const std::vector<int> numbers{1, 2, 3};

    EXPECT_EQ(checkedSubscript(numbers, 2), 3);
}

TEST(CheckedSubscript, PastTheEndIsRefused)
{
    const std::vector<int> numbers{1, 2, 3};

    EXPECT_THAT([&] { checkedSubscript(numbers, 3); },
                test::throwsExactly<std::out_of_range>("invalid vector subscript"));
}

struct HexCase {
    const char* name;
    const char* text;
    int value;
};
class HexByte : public testing::TestWithParam<HexCase> {};

TEST_P(HexByte, ReadsTwoCharactersAsTheStandardConversionDoes)
{
    EXPECT_EQ(hexByte(GetParam().text, 0), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Table, HexByte,
                         testing::Values(HexCase{"Capitals", "FF", 255}, HexCase{"SmallLetters", "ff", 255},
                                         HexCase{"OnlyTwo", "123", 0x12}, HexCase{"StopsAtNoDigit", "1G", 1},
                                         HexCase{"OneCharacter", "A", 10}, HexCase{"LeadingSpace", " F", 15},
                                         HexCase{"PlusSign", "+F", 15}, HexCase{"MinusSign", "-F", -15},
                                         HexCase{"PrefixWithoutDigit", "0x", 0}),
                         [](const auto& info) { return std::string(info.param.name); });

class HexByteFailure : public testing::TestWithParam<const char*> {};

TEST_P(HexByteFailure, TextWithoutADigitIsRefused)
{
    EXPECT_THAT([] { hexByte(GetParam(), 0); }, test::throwsExactly<std::invalid_argument>("invalid stoi argument"));
}

INSTANTIATE_TEST_SUITE_P(Texts, HexByteFailure, testing::Values("", "G1", "  ", "+", "--", "#F"));

TEST(HexBytePosition, AtTheEndOfTheTextHasNoDigit)
{
    EXPECT_THAT([] { hexByte("12", 2); }, test::throwsExactly<std::invalid_argument>("invalid stoi argument"));
}

TEST(HexBytePosition, PastTheEndOfTheTextIsOutOfRange)
{
    EXPECT_THAT([] { hexByte("12", 3); }, Throws<std::out_of_range>());
}

} // namespace
} // namespace vrk::common
