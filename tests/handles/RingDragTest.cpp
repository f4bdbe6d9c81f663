#include "handles/RingDrag.h"

#include "DragViews.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace vrk::visual {
namespace {

using std::numbers::pi;
using test::imageOf;
using test::lookingAt;
using test::PixelPlace;
using testing::DoubleNear;
using testing::Optional;

/// A place on a ring about the z axis of a pose.
rob::Posd onRing(const rob::Posed& pose, double radius, double angle)
{
    return pose * rob::Posd(radius * std::cos(angle), radius * std::sin(angle), 0);
}

TEST(RingDrag, PlaceOfTheRingIsHeldUnderTheMouseOverSeveralTurns)
{
    int asked = 0;
    for (unsigned seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        const test::RandomSight sight(random, seed);
        const rob::Posed& pose = sight.pose;
        const CameraSnapshot& view = sight.view;
        const double radius = 0.1 * sight.distance;
        const rob::Dird axis = dragDirection(pose, 2, DragAxes::Local);
        if (std::abs((rob::normalized(pose.position - rob::Posd(view.pose.position))).dot(axis)) < 0.25)
            continue; // near the edge: has its own test
        std::uniform_real_distribution<double> angles(-pi, pi);
        const double start = angles(random);
        const double whole = 4 * angles(random); // up to two turns either way
        RingDrag drag(view, pose, 2, DragAxes::Local, imageOf(view, onRing(pose, radius, start)).value());
        const int steps = 40;
        for (int i = 1; i <= steps; ++i) {
            const double turned = whole * i / steps;
            const DragAnswer answer = drag.moveTo(imageOf(view, onRing(pose, radius, start + turned)).value());
            ASSERT_THAT(answer.value, Optional(DoubleNear(turned, 1e-6))) << reasonOf(answer.refusal);
        }
        // What was taken hold of is where the mouse is.
        const rob::Posd held =
            drag.poseAt(drag.getValue()) * rob::Posd(radius * std::cos(start), radius * std::sin(start), 0);
        EXPECT_LT((held - onRing(pose, radius, start + whole)).length(), 1e-5 * radius);
        ++asked;
    }
    EXPECT_GT(asked, 600);
}

TEST(RingDrag, IsCounterclockwiseAsSeenFromTheTipOfTheAxis)
{
    const CameraSnapshot above = lookingAt({0, 0, 1000}, {0, 0, 0});
    const CameraSnapshot below = lookingAt({0, 0, -1000}, {0, 0, 0});
    for (const CameraSnapshot& view : {above, below}) {
        RingDrag drag(view, {}, 2, DragAxes::World, imageOf(view, {100, 0, 0}).value());
        EXPECT_THAT(drag.moveTo(imageOf(view, {0, 100, 0}).value()).value, Optional(DoubleNear(pi / 2, 1e-6)));
    }
}

TEST(RingDrag, TakesTheShortWay)
{
    const CameraSnapshot view = lookingAt({0, 0, 1000}, {0, 0, 0});
    RingDrag drag(view, {}, 2, DragAxes::World, imageOf(view, onRing({}, 100, 3.0)).value());

    EXPECT_THAT(drag.moveTo(imageOf(view, onRing({}, 100, -3.0)).value()).value,
                Optional(DoubleNear(2 * pi - 6, 1e-6)));
}

TEST(RingDrag, RingSeenFromItsEdgeIsRefused)
{
    const CameraSnapshot view = lookingAt({0, -1000, 20}, {0, 0, 0});
    RingDrag drag(view, {}, 2, DragAxes::World, {500, 300});

    EXPECT_EQ(RingDrag::RefusalIn(view, {}, {0, 0, 1}), DragRefusal::SeenEdgeOn);
    EXPECT_EQ(RingDrag::RefusalIn(view, {}, {0, 1, 0}), DragRefusal::None);
    EXPECT_EQ(drag.moveTo({520, 300}).refusal, DragRefusal::SeenEdgeOn);
    EXPECT_FALSE(drag.moveTo({100, 100}).value);
    EXPECT_EQ(drag.getValue(), 0);
}

TEST(RingDrag, BeyondTheHorizonOfItsPlaneItStays)
{
    const CameraSnapshot view = lookingAt({0, -1000, 150}, {0, 0, 0});
    RingDrag drag(view, {}, 2, DragAxes::World, imageOf(view, {100, 0, 0}).value());
    drag.moveTo(imageOf(view, onRing({}, 100, 0.5)).value());

    for (const double y : {190.0, 100.0, 0.0}) { // the horizon lies at about 155
        const DragAnswer answer = drag.moveTo({450, y});
        EXPECT_FALSE(answer.value) << y;
        EXPECT_NE(answer.refusal, DragRefusal::None);
    }
    EXPECT_NEAR(drag.getValue(), 0.5, 1e-6);
    EXPECT_THAT(drag.moveTo(imageOf(view, onRing({}, 100, 0.7)).value()).value, Optional(DoubleNear(0.7, 1e-6)));
}

TEST(RingDrag, CentreHasNoDirection)
{
    const CameraSnapshot view = lookingAt({0, 0, 1000}, {0, 0, 0});
    RingDrag drag(view, {}, 2, DragAxes::World, imageOf(view, {100, 0, 0}).value());

    EXPECT_EQ(drag.moveTo({401, 300}).refusal, DragRefusal::AtCentre);
    EXPECT_EQ(drag.getValue(), 0);
}

TEST(RingDrag, WhatIsBehindTheViewerIsRefused)
{
    const CameraSnapshot view = lookingAt({0, 0, 1000}, {0, 0, 2000});

    EXPECT_EQ(RingDrag(view, {}, 2, DragAxes::World, {500, 300}).moveTo({500, 310}).refusal, DragRefusal::BehindViewer);
}

TEST(RingDrag, ViewWithoutPixelsAndWhatIsNotFiniteAreRefused)
{
    CameraSnapshot view = lookingAt({0, 0, 1000}, {0, 0, 0});
    const double nan = std::numeric_limits<double>::quiet_NaN();

    EXPECT_EQ(RingDrag(view, {}, 2, DragAxes::World, {500, 300}).moveTo({nan, 310}).refusal, DragRefusal::NotFinite);
    view.width = 0;
    EXPECT_EQ(RingDrag(view, {}, 2, DragAxes::World, {500, 300}).moveTo({500, 310}).refusal, DragRefusal::NoPixels);
}

TEST(RingDrag, GoesOnInAnotherViewFromWhereItWas)
{
    const CameraSnapshot first = lookingAt({0, 0, 1000}, {0, 0, 0});
    const CameraSnapshot second = lookingAt({500, -300, 700}, {0, 0, 0});
    RingDrag drag(first, {}, 2, DragAxes::World, imageOf(first, {100, 0, 0}).value());
    drag.moveTo(imageOf(first, onRing({}, 100, 1.2)).value());

    drag.changeView(second, imageOf(second, onRing({}, 100, -2.0)).value());

    EXPECT_THAT(drag.moveTo(imageOf(second, onRing({}, 100, -1.9)).value()).value, Optional(DoubleNear(1.3, 1e-6)));
}

TEST(RingDrag, PoseTurnsAboutItsOwnOrigin)
{
    const rob::Posed pose({10, 20, 30}, rob::Rotationd(0.4, rob::Dird(1, 0, 0)));
    const CameraSnapshot view = lookingAt({10, 20, 1000}, {10, 20, 30});
    const RingDrag drag(view, pose, 2, DragAxes::World, {500, 300});

    const rob::Posed turned = drag.poseAt(pi / 2);

    EXPECT_EQ(turned.position, pose.position);
    const rob::Dird x = turned.rotation() * rob::Dird(1, 0, 0);
    EXPECT_NEAR(x.y, 1, 1e-12);
}

TEST(DragRefusal, EachHasASentenceOfItsOwn)
{
    std::vector<std::string> sentences;
    for (const DragRefusal refusal : {DragRefusal::NoPixels, DragRefusal::NotFinite, DragRefusal::TowardsViewer,
                                      DragRefusal::SeenEdgeOn, DragRefusal::BehindViewer, DragRefusal::AtCentre}) {
        const std::string sentence = reasonOf(refusal);
        EXPECT_FALSE(sentence.empty());
        EXPECT_THAT(sentences, testing::Not(testing::Contains(sentence)));
        sentences.push_back(sentence);
    }
    EXPECT_STREQ(reasonOf(DragRefusal::None), "");
}

} // namespace
} // namespace vrk::visual
