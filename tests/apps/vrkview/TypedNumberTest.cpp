#include "canvas/TypedNumber.h"

#include <gtest/gtest.h>

namespace vrkview::test {
namespace {

using testing::TestWithParam;
using testing::Values;

TypedNumber typed(const char* keys)
{
    TypedNumber number;
    for (const QChar key : QString(keys))
        if (key == '<')
            number.removeLast();
        else
            number.type(key);
    return number;
}

struct TypedCase {
    const char* name;
    const char* keys; // "<" takes the last one back
    const char* text;
    std::optional<double> value;
};
class TypedNumberOf : public TestWithParam<TypedCase> {};

TEST_P(TypedNumberOf, HasItsTextAndItsValue)
{
    const TypedNumber number = typed(GetParam().keys);

    EXPECT_EQ(number.getText().toStdString(), GetParam().text);
    EXPECT_EQ(number.getValue(), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(Table, TypedNumberOf,
                         Values(TypedCase{"Nothing", "", "", {}}, TypedCase{"Whole", "120", "120", 120.0},
                                TypedCase{"Broken", "12.5", "12.5", 12.5}, TypedCase{"Comma", "0,25", "0.25", 0.25},
                                TypedCase{"SecondPoint", "1.2.3", "1.23", 1.23},
                                TypedCase{"PointFirst", ".5", ".5", 0.5}, TypedCase{"PointLast", "5.", "5.", 5.0},
                                TypedCase{"PointAlone", ".", ".", {}}, TypedCase{"SignFirst", "-7", "-7", -7.0},
                                TypedCase{"SignLater", "7-", "-7", -7.0}, TypedCase{"SignTwice", "-7-", "7", 7.0},
                                TypedCase{"SignAlone", "-", "-", {}}, TypedCase{"Letters", "1e3x", "13", 13.0},
                                TypedCase{"Backspace", "12<3", "13", 13.0},
                                TypedCase{"BackspaceTakesThePoint", "1.<2", "12", 12.0},
                                TypedCase{"BackspaceTakesTheSignLast", "-1<<", "", {}},
                                TypedCase{"BackspaceOfNothing", "<<4", "4", 4.0},
                                TypedCase{"TooLong", "1234567890123456", "123456789012", 123456789012.0}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(TypedNumber, ThatIsClearedIsEmpty)
{
    TypedNumber number = typed("-1.5");
    EXPECT_FALSE(number.isEmpty());

    number.clear();

    EXPECT_TRUE(number.isEmpty());
    EXPECT_EQ(number.getValue(), std::nullopt);
}

TEST(TypedNumber, TakesOneCharacterOfANumberAsAKey)
{
    for (const char* key : {"0", "9", "-", ".", ","})
        EXPECT_TRUE(TypedNumber::Takes(key)) << key;
    for (const char* key : {"", "12", "+", "e", "Return"})
        EXPECT_FALSE(TypedNumber::Takes(key)) << key;
}

} // namespace
} // namespace vrkview::test
