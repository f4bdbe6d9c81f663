#include "view/ViewBounds.h"

#include "view/OrbitViewController.h"
#include "view/ViewTools.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace vrk::visual {
namespace {

using rob::Posd;
using rob::Posed;
using rob::Posef;
using rob::Posf;

/// A box of 100 about (1000, 0, 0), in a picture of 400 x 300, seen from the front.
class ViewBoundsTest : public test::RenderTest {
protected:
    ViewBoundsTest() : camera(*Camera::Get()), bounds(Box(950, -50, -50, 1050, 50, 50))
    {
        test::lookAlong(camera, {1000, -400, 0}, {0, 1, 0});
    }

    CameraSnapshot lens() const { return camera.getSnapshot(); }
    Posef at(const Posf& eye) const { return {eye, camera.getWorldPose().orientation}; }
    Posef held(const Posf& eye) const { return bounds.held(lens(), at(eye)); }
    bool isSeenAlong(const Posf& eye, const rob::Dirf& along)
    {
        test::lookAlong(camera, eye, along);
        return bounds.isInView(lens(), Posed(camera.getWorldPose()));
    }

    Camera& camera;
    ViewBounds bounds;
    const float room = 500 * std::sqrt(3.0f);
};

TEST_F(ViewBoundsTest, CubeIsTenTimesAsLargeAsWhatIsShown)
{
    EXPECT_EQ(bounds.getMiddle(), Posd(1000, 0, 0));
    EXPECT_NEAR(bounds.getRadius(), 50 * std::sqrt(3.0), 1e-3);
    EXPECT_NEAR(bounds.getRoom(), 10 * bounds.getRadius(), 1e-9);
}

TEST_F(ViewBoundsTest, PointHasRoomAroundItAndNothingACubeOf200)
{
    EXPECT_NEAR(ViewBounds(Box(7, 8, 9, 7, 8, 9)).getRoom(), 100, 1e-9);
    EXPECT_EQ(ViewBounds().getMiddle(), Posd(0, 0, 0));
    EXPECT_NEAR(ViewBounds().getRadius(), 100 * std::sqrt(3.0), 1e-3);
}

TEST_F(ViewBoundsTest, PlaceOutsideIsWhereTheWayToItLeavesTheCube)
{
    EXPECT_EQ(bounds.within({1000, -600, 30}), Posd(1000, -600, 30));
    const Posd place = bounds.within({1000, -4 * bounds.getRoom(), 2 * bounds.getRoom()});
    EXPECT_NEAR(place.x, 1000, 1e-6);
    EXPECT_NEAR(place.y, -bounds.getRoom(), 1e-6);
    EXPECT_NEAR(place.z, bounds.getRoom() / 2, 1e-6);
}

TEST_F(ViewBoundsTest, PoseInsideIsGrantedBitByBit)
{
    const Posef wanted = at({1003.7f, -333.3f, 0.1f});
    EXPECT_EQ(bounds.held(lens(), wanted), wanted);
}

TEST_F(ViewBoundsTest, EyeEndsWhereTheCubeDoes)
{
    EXPECT_NEAR(held({1000, -5000, 0}).position.y, -room, 0.1f);
    EXPECT_EQ(held({1000, -5000, 0}).orientation, camera.getWorldPose().orientation);
}

TEST_F(ViewBoundsTest, EyeThatIsOutsideAlreadyComesNearerAndGoesNoFarther)
{
    camera.setWorldPosition({1000, -3000, 0});

    EXPECT_EQ(held({1000, -3000, 10}), at({1000, -3000, 10})) << "it is not thrown to the cube";
    EXPECT_EQ(held({1000, -2500, 0}), at({1000, -2500, 0}));
    EXPECT_NEAR(held({1000, -3500, 0}).position.y, -3000, 0.1f);
}

TEST_F(ViewBoundsTest, WhatIsNoPlaceIsNotGranted)
{
    const float nan = std::numeric_limits<float>::quiet_NaN(), far = std::numeric_limits<float>::infinity();
    for (const Posf& place : {Posf(nan, 0, 0), Posf(1000, far, 0), Posf(1000, -400, -far)})
        EXPECT_EQ(held(place), camera.getWorldPose());
}

TEST_F(ViewBoundsTest, PoseThatLosesWhatIsShownIsNotGranted)
{
    const Posef away{camera.getWorldPosition(), camera.getWorldRotation() * rob::Rotationf(0, 3, 0)};

    EXPECT_EQ(bounds.held(lens(), away), camera.getWorldPose());
    EXPECT_EQ(held({400, -400, 0}), camera.getWorldPose()) << "aside";
    EXPECT_EQ(held({1000, 400, 0}), camera.getWorldPose()) << "through it";
}

TEST_F(ViewBoundsTest, WhereItIsLostAlreadyAnyTurnIsFree)
{
    test::lookAlong(camera, {1000, -400, 0}, {1, -1, 0});
    const Posef next = at({900, -500, 30});
    EXPECT_EQ(bounds.held(lens(), next), next);
}

TEST_F(ViewBoundsTest, IsInViewFromWithinAndWhereACornerReachesIn)
{
    EXPECT_TRUE(isSeenAlong({1000, -400, 0}, {0, 1, 0}));
    EXPECT_TRUE(isSeenAlong({1000, 0, 0}, {0, -1, 0})) << "from within";
    EXPECT_TRUE(isSeenAlong({760, -400, 0}, {0, 1, 0})) << "its left side just reaches in";
    EXPECT_TRUE(isSeenAlong({1255, -400, 0}, {0, 1, 0})) << "its far side, and not the near one";
    EXPECT_FALSE(isSeenAlong({1312, -400, 0}, {0, 1, 0}));
    EXPECT_TRUE(isSeenAlong({1312, -400, 0}, {-0.3f, 1, 0}));
    EXPECT_FALSE(isSeenAlong({1000, -400, 0}, {0, -1, 0})) << "behind";
    EXPECT_FALSE(isSeenAlong({1000, -400, 0}, {0, 0, 1}));
    EXPECT_TRUE(isSeenAlong({1000, -52, 0}, {0.3f, 1, 0})) << "larger than the picture";
    camera.setClipDist(1, 300);
    EXPECT_FALSE(isSeenAlong({1000, -400, 0}, {0, 1, 0})) << "beyond what is drawn";
    EXPECT_TRUE(isSeenAlong({1000, -340, 0}, {0, 1, 0}));
    camera.setClipDist(1, 100000);
}

/// By what the camera itself says of points all over the box.
TEST_F(ViewBoundsTest, IsInViewWhereAPointOfTheBoxIs)
{
    std::mt19937 random(20263);
    const auto between = [&random](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    int seen = 0;
    for (int i = 0; i < 2000; ++i) {
        const rob::Vec3f along(between(-1, 1), between(-1, 1), between(-1, 1));
        const bool isInView = isSeenAlong({between(700, 1300), between(-300, 300), between(-300, 300)},
                                          rob::Dirf(rob::normalized(along)));
        const Posef toCamera = camera.getWorldPose().inverse();
        bool isPointSeen = false, isPointNear = false;
        for (int point = 0; point < 1000; ++point) {
            const Posf place(950.0f + 100.0f / 9 * static_cast<float>(point % 10),
                             -50.0f + 100.0f / 9 * static_cast<float>(point / 10 % 10),
                             -50.0f + 100.0f / 9 * static_cast<float>(point / 100));
            const rob::Vec2f pixel = test::pixelOf(camera, place);
            const float depth = -(toCamera * place).z;
            const auto isWithin = [&](float border) {
                return depth > 1 - border && pixel.x > -border && pixel.x < 400 + border && pixel.y > -border &&
                       pixel.y < 300 + border;
            };
            isPointSeen = isPointSeen || (depth > 1.01f && isWithin(-2));
            isPointNear = isPointNear || depth < 15 || isWithin(150); // its neighbours may be in view
        }
        ASSERT_TRUE(isInView || !isPointSeen) << i;
        ASSERT_TRUE(!isInView || isPointNear) << i;
        seen += isInView ? 1 : 0;
    }
    EXPECT_GT(seen, 200);
    EXPECT_LT(seen, 1800);
}

TEST_F(ViewBoundsTest, SceneIsWhatIsVisible)
{
    EXPECT_NEAR(ViewBounds::OfScene().getRadius(), 100 * std::sqrt(3.0), 1e-3) << "of nothing";
    test::addPickedBox(world, {100, 0, 0}, {10, 20, 30});
    Visual* other = test::addPickedBox(world, {500, 0, 0}, {10, 20, 30});
    test::addPickedCloud(world, {{100, 0, -40}, {105, 0, -40}});

    EXPECT_TRUE(test::isNearPoint(Posf(ViewBounds::OfScene().getMiddle()), {305, 10, -5}, 0.5f));

    other->setVisible(false, true);
    EXPECT_TRUE(test::isNearPoint(Posf(ViewBounds::OfScene().getMiddle()), {105, 10, -5}, 0.5f));
}

TEST_F(ViewBoundsTest, SolidThatIsShownByItsEdgesAloneCounts)
{
    Visual* box = test::addPickedBox(world, {100, 0, 0}, {10, 20, 30});
    box->setVisible(false, false);
    ASSERT_TRUE(std::ranges::any_of(box->getChildren(), [](const Visual* child) {
        return child->getType() == VisualType::WireFrame && child->isVisible();
    }));

    EXPECT_TRUE(test::isNearPoint(Posf(ViewBounds::OfScene().getMiddle()), {105, 10, 15}, 0.5f));
}

// The camera's gestures within bounds

class BoundedGestures : public ViewBoundsTest {
protected:
    BoundedGestures() : controller(&camera, "bounded"), free(&camera, "free")
    {
        test::addPickedBox(world, {950, -50, -50}, {100, 100, 100});
        controller.setBounds(ViewBounds::OfScene());
    }

    double reach() const
    {
        const Posd eye = Posd(camera.getWorldPosition());
        return std::max({std::abs(eye.x - 1000), std::abs(eye.y), std::abs(eye.z)});
    }
    void start() { test::lookAlong(camera, {1000, -400, 60}, {0, 1, -0.15f}); }

    OrbitViewController controller, free;
};

TEST_F(BoundedGestures, AreTheSameInside)
{
    const auto poseAfter = [this](OrbitViewController& by) {
        start();
        by.startRotating(190, 141);
        by.rotateScene(13, -7);
        by.startRotating(20, 250); // the ground
        by.rotateScene(9, 4);
        by.translateScene(200, 150, 20, 17);
        by.translateScene(200, 280, 5, -4);
        by.zoom(205, 140, 0, 1);
        by.zoom(30, 280, 0, -1);
        return camera.getWorldPose();
    };
    const Posef expected = poseAfter(free);
    EXPECT_EQ(poseAfter(controller), expected);
    EXPECT_NE(expected.position, Posf(1000, -400, 60));
}

TEST_F(BoundedGestures, PanNearTheHorizonDoesNotRunAway)
{
    const auto worst = [this](OrbitViewController& by) {
        test::lookAlong(camera, {1000, -400, 60}, {0, 1, -0.12f});
        double farthest = 0;
        for (int i = 0; i < 60 && farthest < 1e7; ++i) {
            by.translateScene(10, 140, i % 2 == 0 ? 100.0f : -90.0f, 150);
            farthest = std::max(farthest, reach());
        }
        return farthest;
    };
    EXPECT_GT(worst(free), 1e6) << "what it does without bounds";
    EXPECT_LE(worst(controller), room * 1.0001);
}

TEST_F(BoundedGestures, ZoomIntoNothingAndBackStaysNear)
{
    start();
    for (int i = 0; i < 200; ++i)
        controller.zoom(5, 5, 0, i < 100 ? 1.0f : -1.0f);
    EXPECT_LE(reach(), room * 1.0001);
    EXPECT_TRUE(bounds.isInView(lens(), Posed(camera.getWorldPose())));
}

TEST_F(BoundedGestures, ZoomFromTheFocalPointItselfDoesNothing)
{
    start();
    controller.setOrbitPivot(camera.getWorldPose());
    for (const float delta : {1.0f, -1.0f})
        EXPECT_NO_THROW(controller.zoom(200, 150, 0, delta));
    EXPECT_EQ(camera.getWorldPosition(), Posf(1000, -400, 60));
}

TEST_F(BoundedGestures, AnyOfThemLeaveSomethingInView)
{
    start();
    std::mt19937 random(20262);
    const auto between = [&random](float low, float high) {
        return std::uniform_real_distribution<float>(low, high)(random);
    };
    for (int i = 0; i < 20000; ++i) {
        const float x = between(0, 400), y = between(0, 300);
        switch (random() % 4) {
        case 0:
            controller.startRotating(x, y);
            break;
        case 1:
            controller.rotateScene(between(-200, 200), between(-200, 200));
            break;
        case 2:
            controller.translateScene(x, y, between(-200, 200), between(-200, 200));
            break;
        default:
            ASSERT_NO_THROW(controller.zoom(x, y, 0, between(-1, 1))) << i;
        }
        ASSERT_LE(reach(), room * 1.0001) << i;
        ASSERT_TRUE(bounds.isInView(lens(), Posed(camera.getWorldPose()))) << i;
    }
}

TEST_F(BoundedGestures, WithoutBoundsAgainTheyAreFree)
{
    controller.setBounds(std::nullopt);
    start();
    for (int i = 0; i < 40; ++i)
        controller.zoom(200, 150, 0, -1);
    EXPECT_GT(reach(), 2 * room);
}

} // namespace
} // namespace vrk::visual
