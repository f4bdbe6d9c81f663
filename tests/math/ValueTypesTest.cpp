#include "scene/math/Color.h"
#include "scene/math/Shapes.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace vrk::rob {
namespace {

/// What crosses the library's interface: values that tasks take along as they are, their fields in a fixed order.
template <typename Value>
class ValueTypes : public testing::Test {
};

using AllTypes = testing::Types<Vec2f, Vec3f, Vec3d, Posf, Posd, Dirf, Dird, Rotationf, Rotationd, Orientd, Posef,
                                Posed, Colorf, Linef, Trianglef, TPCircle, visual::Color>;
TYPED_TEST_SUITE(ValueTypes, AllTypes);

TYPED_TEST(ValueTypes, ArePlain)
{
    EXPECT_TRUE(std::is_trivially_copyable_v<TypeParam>);
    EXPECT_TRUE(std::is_standard_layout_v<TypeParam>);
    EXPECT_FALSE(std::is_polymorphic_v<TypeParam>);
}

template <typename Value>
void expectNumbersInOrder(const Value& value)
{
    const auto* numbers = reinterpret_cast<const float*>(&value);
    for (std::size_t i = 0; i < sizeof(Value) / sizeof(float); ++i)
        EXPECT_EQ(numbers[i], static_cast<float>(i + 1)) << i;
}

TEST(ValueTypes, PairIsXThenY)
{
    expectNumbersInOrder(Vec2f(1, 2));
    EXPECT_EQ(sizeof(Vec2f), 2 * sizeof(float));
}

TEST(ValueTypes, LineIsStartThenEnd)
{
    expectNumbersInOrder(Linef(Posf(1, 2, 3), Posf(4, 5, 6)));
    EXPECT_EQ(sizeof(Linef), 6 * sizeof(float));
}

TEST(ValueTypes, TriangleIsItsThreeCorners)
{
    expectNumbersInOrder(Trianglef(Posf(1, 2, 3), Posf(4, 5, 6), Posf(7, 8, 9)));
    EXPECT_EQ(sizeof(Trianglef), 9 * sizeof(float));
}

TEST(ValueTypes, KindsOfLinesAreNumbered)
{
    EXPECT_EQ(static_cast<int>(visual::RenderOpType::Points), 0);
    EXPECT_EQ(static_cast<int>(visual::RenderOpType::Lines), 1);
    EXPECT_EQ(static_cast<int>(visual::RenderOpType::LineStrip), 2);
}

} // namespace
} // namespace vrk::rob
