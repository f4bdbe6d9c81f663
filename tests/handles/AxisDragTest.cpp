#include "handles/AxisDrag.h"

#include "DragViews.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace vrk::visual {
namespace {

using test::imageOf;
using test::lookingAt;
using test::PixelPlace;
using testing::DoubleNear;
using testing::Optional;

PixelPlace pixelOf(const CameraSnapshot& view, const rob::Posd& point)
{
    return imageOf(view, point).value();
}

double sineTo(const CameraSnapshot& view, const rob::Posd& place, const rob::Dird& direction)
{
    return rob::normalized(place - rob::Posd(view.pose.position)).cross(direction).length();
}

TEST(AxisDrag, MouseOnTheImageOfTheAxisTellsThePlaceUnderIt)
{
    int asked = 0;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const auto [pose, view, distance, isParallel] = test::RandomSight(random, seed);
        const DragAxes axes = seed % 2 == 0 ? DragAxes::Local : DragAxes::World;
        const rob::Dird direction = dragDirection(pose, seed % 3, axes);
        std::uniform_real_distribution<double> share(-0.3, 0.3);
        const double grip = share(random) * distance * 0.2;
        const double way = share(random) * distance;
        const rob::Posd from = pose.position + rob::Vec3d(direction) * grip;
        const rob::Posd to = from + rob::Vec3d(direction) * way;
        if (!isParallel && std::min({sineTo(view, pose.position, direction), sineTo(view, from, direction),
                                     sineTo(view, to, direction)}) < 0.06)
            continue; // has its own test
        if (isParallel && (rob::Posed(view.pose).rotation() * rob::Dird(0, 0, 1)).cross(direction).length() < 0.06)
            continue;

        AxisDrag drag(view, pose, seed % 3, axes, pixelOf(view, from));
        const DragAnswer answer = drag.moveTo(pixelOf(view, to));

        EXPECT_THAT(answer.value, Optional(DoubleNear(way, 1e-7 * distance))) << reasonOf(answer.refusal);
        ++asked;
    }
    EXPECT_GT(asked, 2500);
}

TEST(AxisDrag, ElsewhereItTellsThePlaceWhoseImageIsNearest)
{
    int asked = 0;
    for (unsigned seed = 0; seed < 500; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const rob::Posed pose = test::randomPose(random, 500);
        const CameraSnapshot view = test::randomView(random, pose.position);
        std::uniform_real_distribution<double> pixels(100, 500);
        const PixelPlace mouse(pixels(random), pixels(random));
        AxisDrag drag(view, pose, seed % 3, DragAxes::Local, pixelOf(view, pose.position));

        const DragAnswer answer = drag.moveTo(mouse);

        if (!answer.value)
            continue;
        const double here = (imageOf(view, drag.poseAt(*answer.value).position).value() - mouse).length();
        const double pixel = view.unitsPerPixelAt(rob::Posf(drag.poseAt(*answer.value).position));
        for (const double beside : {-10.0, -1.0, 1.0, 10.0})
            if (const auto other = imageOf(view, drag.poseAt(*answer.value + beside * pixel).position)) {
                EXPECT_GE((*other - mouse).length(), here - 1e-9);
            }
        ++asked;
    }
    EXPECT_GT(asked, 400);
}

TEST(AxisDrag, TakenHoldOfAnywhereItBeginsWithoutAJump)
{
    const CameraSnapshot view = lookingAt({300, -1000, 400}, {0, 0, 0});
    AxisDrag drag(view, {}, 0, DragAxes::World, {500, 320});

    EXPECT_THAT(drag.moveTo({500, 320}).value, Optional(DoubleNear(0, 1e-9)));
}

TEST(AxisDrag, GoesSmoothlyWithTheMouseOrNotAtAll)
{
    // Over the whole picture, past the vanishing point of an axis that leads away from the viewer.
    const CameraSnapshot view = lookingAt({-200, -400, 300}, {0, 0, 0}, 1.6f);
    AxisDrag drag(view, {}, 1, DragAxes::World, pixelOf(view, {}));
    int answered = 0;
    int refused = 0;
    std::optional<double> before;
    for (double x = 0; x <= 800; x += 0.25) {
        const DragAnswer answer = drag.moveTo({x, 200});
        if (!answer.value) {
            EXPECT_EQ(answer.refusal, DragRefusal::TowardsViewer);
            ++refused;
        } else {
            if (before) {
                // What lies under a pixel is no farther than it can be where the axis is 20 times as long as wide.
                const double pixel = view.unitsPerPixelAt(rob::Posf(drag.poseAt(*answer.value).position));
                EXPECT_LT(std::abs(*answer.value - *before), 25 * pixel);
            }
            ++answered;
        }
        before = answer.value;
    }
    EXPECT_GT(answered, 1000);
    EXPECT_GT(refused, 100);
}

TEST(AxisDrag, WhereItCannotBeToldTheValueStays)
{
    const CameraSnapshot view = lookingAt({-200, -400, 300}, {0, 0, 0});
    AxisDrag drag(view, {}, 1, DragAxes::World, pixelOf(view, {}));
    drag.moveTo(pixelOf(view, {0, 70, 0}));

    const rob::Posd farAway(0, 1e9, 0);
    const DragAnswer answer = drag.moveTo(pixelOf(view, farAway));

    EXPECT_FALSE(answer.value);
    EXPECT_NEAR(drag.getValue(), 70, 1e-6);
    EXPECT_THAT(drag.moveTo(pixelOf(view, {0, 90, 0})).value, Optional(DoubleNear(90, 1e-6)));
}

TEST(AxisDrag, AxisTowardsTheViewerIsRefusedFromTheStart)
{
    const CameraSnapshot view = lookingAt({1000, 0, 0}, {0, 0, 0});
    AxisDrag drag(view, {}, 0, DragAxes::World, {400, 300});

    EXPECT_EQ(AxisDrag::RefusalIn(view, {}, {1, 0, 0}), DragRefusal::TowardsViewer);
    EXPECT_EQ(AxisDrag::RefusalIn(view, {}, {0, 1, 0}), DragRefusal::None);
    for (const PixelPlace mouse : {PixelPlace(400, 300), PixelPlace(500, 100)}) {
        const DragAnswer answer = drag.moveTo(mouse);
        EXPECT_FALSE(answer.value);
        EXPECT_EQ(answer.refusal, DragRefusal::TowardsViewer);
    }
    EXPECT_EQ(drag.getValue(), 0);
}

TEST(AxisDrag, WhatIsBehindTheViewerIsRefused)
{
    const CameraSnapshot view = lookingAt({1000, 0, 0}, {2000, 0, 0});

    EXPECT_EQ(AxisDrag::RefusalIn(view, {}, {0, 1, 0}), DragRefusal::BehindViewer);
    EXPECT_FALSE(AxisDrag(view, {}, 1, DragAxes::World, {400, 300}).moveTo({410, 300}).value);
}

TEST(AxisDrag, ViewWithoutPixelsIsRefused)
{
    CameraSnapshot view = lookingAt({1000, 0, 0}, {0, 0, 0});
    view.height = 0;

    EXPECT_EQ(AxisDrag(view, {}, 1, DragAxes::World, {0, 0}).moveTo({1, 0}).refusal, DragRefusal::NoPixels);
}

TEST(AxisDrag, WhatIsNotFiniteIsRefused)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const CameraSnapshot view = lookingAt({1000, 0, 0}, {0, 0, 0});
    rob::Posed nowhere;
    nowhere.position.x = nan;
    CameraSnapshot lost = view;
    lost.pose.position.x = std::numeric_limits<float>::infinity();

    EXPECT_EQ(AxisDrag(view, {}, 1, DragAxes::World, {400, 300}).moveTo({nan, 0}).refusal, DragRefusal::NotFinite);
    EXPECT_EQ(AxisDrag(view, nowhere, 1, DragAxes::World, {400, 300}).moveTo({1, 0}).refusal, DragRefusal::NotFinite);
    EXPECT_EQ(AxisDrag(lost, {}, 1, DragAxes::World, {400, 300}).moveTo({1, 0}).refusal, DragRefusal::NotFinite);
}

TEST(AxisDrag, TakenHoldOfWhereNothingCanBeToldItBeginsWithTheFirstAnswer)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const CameraSnapshot view = lookingAt({0, -1000, 0}, {0, 0, 0});
    AxisDrag drag(view, {}, 0, DragAxes::World, {nan, nan});

    EXPECT_THAT(drag.moveTo(pixelOf(view, {50, 0, 0})).value, Optional(DoubleNear(0, 1e-9)));
    EXPECT_THAT(drag.moveTo(pixelOf(view, {80, 0, 0})).value, Optional(DoubleNear(30, 1e-5)));
}

TEST(AxisDrag, GoesOnInAnotherViewFromWhereItWas)
{
    const CameraSnapshot first = lookingAt({0, -1000, 300}, {0, 0, 0});
    const CameraSnapshot second = lookingAt({800, -400, 900}, {0, 0, 0});
    AxisDrag drag(first, {}, 0, DragAxes::World, pixelOf(first, {}));
    drag.moveTo(pixelOf(first, {60, 0, 0}));

    drag.changeView(second, {123, 456});

    EXPECT_THAT(drag.moveTo({123, 456}).value, Optional(DoubleNear(60, 1e-9)));
    drag.changeView(second, pixelOf(second, {60, 0, 0}));
    EXPECT_THAT(drag.moveTo(pixelOf(second, {75, 0, 0})).value, Optional(DoubleNear(75, 1e-4)));
}

TEST(AxisDrag, LocalAxesAreThoseOfThePose)
{
    const rob::Posed pose({10, 0, 0}, rob::Rotationd(std::numbers::pi / 2, rob::Dird(0, 0, 1)));
    const CameraSnapshot view = lookingAt({0, 0, 1000}, {0, 0, 0});
    AxisDrag drag(view, pose, 0, DragAxes::Local, pixelOf(view, {10, 0, 0}));

    const double value = drag.moveTo(pixelOf(view, {10, 40, 0})).value.value();

    EXPECT_NEAR(value, 40, 1e-5);
    const rob::Posed end = drag.poseAt(value);
    EXPECT_NEAR(end.position.x, 10, 1e-9);
    EXPECT_NEAR(end.position.y, value, 1e-9);
    EXPECT_EQ(end.orientation, pose.orientation);
}

TEST(ToStep, IsTheNearestMultipleOnEitherSideOfZero)
{
    EXPECT_EQ(toStep(7.4, 5), 5);
    EXPECT_EQ(toStep(7.6, 5), 10);
    EXPECT_EQ(toStep(-7.4, 5), -5);
    EXPECT_EQ(toStep(-7.6, 5), -10);
    EXPECT_EQ(toStep(2.5, 5), 5);
    EXPECT_EQ(toStep(-2.5, 5), -5);
}

TEST(ToStep, WithoutAStepTheValueStays)
{
    for (const double step :
         {0.0, -5.0, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
        EXPECT_EQ(toStep(7.4, step), 7.4);
}

} // namespace
} // namespace vrk::visual
