#include "view/OrbitViewController.h"

#include "ViewTools.h"

#include "platform/broker/SignalBroker.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "support/ThrowsExactly.h"
#include "view/Camera.h"

#include <Ogre.h>

#include <cmath>
#include <random>
#include <utility>

namespace vrk::visual {
namespace {

using test::isNearPoint;
using test::pixelOf;

constexpr float middleX = 200;
constexpr float middleY = 150;
constexpr float tanHalfHFOV = 0.57735027f; // of 60 degrees
constexpr float zoomStepLimit = 1000;      // as the test settings say
constexpr float zoomMinDistance = 10;

/// A controller of its own in each test, in an empty scene whose picking is up to date, in a view of 400 x 300.
class OrbitViewControllerTest : public test::RenderTest {
protected:
    OrbitViewControllerTest() : camera(*Camera::Get()), controller(&camera, "test")
    {
        selection::VisualSelection::Get()->update();
    }
    ~OrbitViewControllerTest() override { SceneCore::Get()->settings.gridNormalDir = 2; }

    void look(const rob::Posf& eye, const rob::Dirf& along) { test::lookAlong(camera, eye, along); }
    /// Where the ray of a pixel is after this way.
    rob::Posf onRay(float x, float y, float way) const
    {
        rob::Posf origin;
        rob::Vec3f direction;
        camera.cameraToViewportRay(x, y, origin, direction);
        return origin + direction * way;
    }
    float distanceTo(const rob::Posf& point) const { return (point - camera.getWorldPosition()).length(); }

    Camera& camera;
    OrbitViewController controller;
};

// Orbit

struct OrbitStartCase {
    const char* name;
    float slope; // of the view, along z
    bool onGround;
};

class OrbitStart : public OrbitViewControllerTest, public testing::WithParamInterface<OrbitStartCase> {};

TEST_P(OrbitStart, WithNothingUnderTheMouse)
{
    look({0, -300, 400}, {0, 1, GetParam().slope});

    controller.startRotating(middleX, middleY);

    const rob::Posf focus = controller.getFocalPoint();
    if (GetParam().onGround)
        EXPECT_NEAR(focus.z, 0, 0.01f);
    else
        EXPECT_TRUE(isNearPoint(focus, onRay(middleX, middleY, 100), 0.001f));
}

INSTANTIATE_TEST_SUITE_P(Table, OrbitStart,
                         testing::Values(OrbitStartCase{"LookingDownIsOnTheGround", -1, true},
                                         OrbitStartCase{"LookingJustClearlyDownIsOnTheGround", -0.102f, true},
                                         OrbitStartCase{"LookingHardlyDownIs100UnitsAhead", -0.099f, false},
                                         OrbitStartCase{"LookingLevelIs100UnitsAhead", 0, false},
                                         OrbitStartCase{"LookingUpIs100UnitsAhead", 1, false}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OrbitViewControllerTest, OrbitBelowTheGroundLookingDownTakesTheGroundBehind)
{
    look({0, 0, -100}, {0, 1, -1});

    controller.startRotating(middleX, middleY);

    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), {0, -100, 0}, 0.1f));
}

TEST_F(OrbitViewControllerTest, GroundIsWhereTheUpAxisSays)
{
    SceneCore::Get()->settings.gridNormalDir = 0;
    look({400, 20, -300}, {-1, 0, 0.2f});

    controller.startRotating(middleX, middleY);

    EXPECT_NEAR(controller.getFocalPoint().x, 0, 0.01f);
}

TEST_F(OrbitViewControllerTest, OrbitStartsOnTheBodyUnderTheMouse)
{
    test::addPickedBox(world, {-50, -30, 0}, {100, 100, 80});
    look({0, 0, 500}, {0, 0, -1});

    controller.startRotating(middleX, middleY);

    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), {0, 0, 80}, 0.05f));
}

TEST_F(OrbitViewControllerTest, OrbitStartsOnTheCloudPointUnderTheMouse)
{
    test::addPickedCloud(world, {{0, 0, 120}});
    look({0, 0, 500}, {0, 0, -1});

    controller.startRotating(middleX, middleY);

    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), {0, 0, 120}, 2.0f));
}

TEST_F(OrbitViewControllerTest, BodiesGoAheadOfTheCloudPointsBeforeThem)
{
    test::addPickedBox(world, {-50, -30, 0}, {100, 100, 80});
    test::addPickedCloud(world, {{0, 0, 120}});
    look({0, 0, 500}, {0, 0, -1});

    controller.startRotating(middleX, middleY);

    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), {0, 0, 80}, 0.05f));
}

TEST_F(OrbitViewControllerTest, OrbitTurnsAboutTheCamerasOwnAxes)
{
    look({30, -300, 200}, {0, 1, -0.6f});
    controller.setOrbitPivot(rob::Posef(rob::Posf(0, 0, 20)));
    const rob::Posef before = camera.getWorldPose();

    controller.rotateScene(25, -10);

    const rob::Rotationf turned = before.rotation() * rob::Rotationf(10 * 0.004f, -25 * 0.004f, 0);
    const rob::Posef after = camera.getWorldPose();
    EXPECT_TRUE(
        rob::Rotationd(rob::Orientd(after.orientation)).isApprox(rob::Rotationd(rob::Orientd(turned.orient()))));
    const rob::Vec3f arm = before.position - rob::Posf(0, 0, 20);
    EXPECT_TRUE(isNearPoint(after.position, rob::Posf(0, 0, 20) + turned * (before.rotation().inverse() * arm), 0.01f));
}

TEST_F(OrbitViewControllerTest, DraggingRightMovesTheCameraLeftAndDraggingDownMovesItUp)
{
    look({0, -300, 0}, {0, 1, 0});
    controller.setOrbitPivot({});

    controller.rotateScene(20, 0);
    EXPECT_NEAR(camera.getWorldPosition().x, -300 * std::sin(0.08f), 0.01f);

    look({0, -300, 0}, {0, 1, 0});
    controller.rotateScene(0, 20);
    EXPECT_NEAR(camera.getWorldPosition().z, 300 * std::sin(0.08f), 0.01f);
}

TEST_F(OrbitViewControllerTest, FocalPointStaysWhereItIsInThePicture)
{
    look({0, -300, 400}, {0, 1, -1});
    controller.startRotating(90, 220);
    const rob::Posf focus = controller.getFocalPoint();
    const rob::Vec2f before = pixelOf(camera, focus);
    EXPECT_NEAR(before.x, 90, 0.05f);
    EXPECT_NEAR(before.y, 220, 0.05f);

    for (int step = 0; step < 40; ++step)
        controller.rotateScene(13, -7);

    EXPECT_NEAR(pixelOf(camera, focus).x, 90, 0.1f);
    EXPECT_NEAR(pixelOf(camera, focus).y, 220, 0.1f);
    EXPECT_EQ(controller.getFocalPoint(), focus);
}

TEST_F(OrbitViewControllerTest, ManyStepsNeitherDriftAwayNorSkewTheView)
{
    look({800, -300, 400}, {-2, 1, -1});
    controller.setOrbitPivot(rob::Posef(rob::Posf(10, 20, 30)));
    const float distance = distanceTo({10, 20, 30});
    std::mt19937 random(7);
    std::uniform_real_distribution<float> move(-60, 60);

    for (int step = 0; step < 10000; ++step)
        controller.rotateScene(move(random), move(random));

    EXPECT_NEAR(distanceTo({10, 20, 30}), distance, distance * 0.001f);
    const rob::Orientf q = camera.getWorldPose().orientation;
    EXPECT_NEAR(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z, 1, 1e-5f);
}

TEST_F(OrbitViewControllerTest, OrbitRaisesTheSignalsOfItsMove)
{
    int moves = 0;
    int updates = 0;
    const boost::signals2::scoped_connection moved = broker::SignalBroker::onCameraMoved([&] { ++moves; });
    const boost::signals2::scoped_connection updated = broker::SignalBroker::onUpdateScene([&] { ++updates; });

    controller.rotateScene(1, 1);

    EXPECT_EQ(moves, 2);
    EXPECT_EQ(updates, 1);
}

// Pivot

TEST_F(OrbitViewControllerTest, HasNoPivotAtFirst)
{
    EXPECT_FALSE(controller.hasOrbitPivot());
    EXPECT_EQ(controller.getFocalPoint(), rob::Posf());
    EXPECT_EQ(controller.getOrbitPivotFrame(), rob::Posef());
}

TEST_F(OrbitViewControllerTest, AllGesturesActOnThePivot)
{
    look({0, -300, 400}, {0, 1, -1});
    const rob::Posef pivot({7, 8, 9}, rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f));

    controller.setOrbitPivot(pivot);
    controller.startRotating(middleX, middleY);
    controller.rotateScene(5, 5);
    controller.translateScene(middleX, middleY, 3, 3);
    controller.zoom(middleX, middleY, 0, 1);

    EXPECT_TRUE(controller.hasOrbitPivot());
    EXPECT_EQ(controller.getFocalPoint(), rob::Posf(7, 8, 9));
    EXPECT_EQ(controller.getOrbitPivotFrame(), pivot);
}

TEST_F(OrbitViewControllerTest, ClearedPivotKeepsFrameAndFocalPointUntilTheNextGesture)
{
    look({0, -300, 400}, {0, 1, -1});
    controller.setOrbitPivot(rob::Posef(rob::Posf(7, 8, 9)));

    controller.clearOrbitPivot();
    EXPECT_FALSE(controller.hasOrbitPivot());
    EXPECT_EQ(controller.getOrbitPivotFrame(), rob::Posef(rob::Posf(7, 8, 9)));
    EXPECT_EQ(controller.getFocalPoint(), rob::Posf(7, 8, 9));

    controller.startRotating(middleX, middleY);
    EXPECT_NEAR(controller.getFocalPoint().z, 0, 0.01f);
}

// Pan

TEST_F(OrbitViewControllerTest, PointAtTheFocalDistanceFollowsTheMouse)
{
    look({0, -300, 0}, {0, 1, 0});
    controller.setOrbitPivot({});

    controller.translateScene(0, 0, 37, -21);

    EXPECT_NEAR(pixelOf(camera, {}).x, middleX + 37, 0.05f);
    EXPECT_NEAR(pixelOf(camera, {}).y, middleY - 21, 0.05f);
}

TEST_F(OrbitViewControllerTest, PanOnABodyTakesTheBodyAlong)
{
    test::addPickedBox(world, {-50, -30, 0}, {100, 100, 80});
    look({0, 0, 500}, {0, 0, -1});

    controller.translateScene(middleX, middleY, 40, 0);

    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), {0, 0, 80}, 0.05f));
    EXPECT_NEAR(pixelOf(camera, {0, 0, 80}).x, middleX + 40, 0.1f);
}

TEST_F(OrbitViewControllerTest, PanInALevelEmptyViewTakesItsSpeedFromTheOrigin)
{
    look({0, -500, 30}, {0, 1, 0});

    controller.translateScene(middleX, middleY, 40, 0);

    EXPECT_EQ(controller.getFocalPoint(), rob::Posf(0, 0, 0));
    const float distance = std::hypot(500.0f, 30.0f);
    EXPECT_NEAR(camera.getWorldPosition().x, -2 * tanHalfHFOV * 0.1f * distance, 0.01f);
}

TEST_F(OrbitViewControllerTest, PanOnACloudPointTakesThePointAlong)
{
    test::addPickedCloud(world, {{0, 0, 120}});
    look({0, 0, 500}, {0, 0, -1});

    controller.translateScene(middleX, middleY, 40, 0);

    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), {0, 0, 120}, 2.0f));
}

struct EmptyPanCase {
    const char* name;
    float slope; // of the view, along z
    bool isLevel;
};

class EmptyPan : public OrbitViewControllerTest, public testing::WithParamInterface<EmptyPanCase> {};

TEST_P(EmptyPan, TakesTheOriginInALevelViewAndElseTheGround)
{
    look({0, -500, 30}, {0, 1, GetParam().slope});
    const float ground = -30 / GetParam().slope; // along y

    controller.translateScene(middleX, middleY, 40, 0);

    const rob::Posf expected = GetParam().isLevel ? rob::Posf() : rob::Posf(0, -500 + ground, 0);
    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), expected, 0.5f));
}

INSTANTIATE_TEST_SUITE_P(Table, EmptyPan,
                         testing::Values(EmptyPanCase{"LookingJustClearlyDown", -0.102f, false},
                                         EmptyPanCase{"LookingHardlyDown", -0.099f, true},
                                         EmptyPanCase{"LookingHardlyUp", 0.099f, true},
                                         EmptyPanCase{"LookingJustClearlyUp", 0.102f, false}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OrbitViewControllerTest, PanInAnEmptyViewUpwardsTakesTheGroundBehind)
{
    look({0, 0, 100}, {0, 1, 1});

    controller.translateScene(middleX, middleY, 40, 0);

    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), {0, -100, 0}, 0.1f));
}

TEST_F(OrbitViewControllerTest, PanNearTheFocalPointHasTheSpeedOf10Units)
{
    look({0, -2, 0}, {0, 1, 0});
    controller.setOrbitPivot({});

    controller.translateScene(middleX, middleY, 40, 0);

    EXPECT_NEAR(camera.getWorldPosition().x, -2 * tanHalfHFOV * 0.1f * 10, 1e-4f);
}

TEST_F(OrbitViewControllerTest, PanKeepsTheRotation)
{
    look({0, -300, 400}, {0, 1, -1});
    const rob::Rotationf before = camera.getWorldRotation();

    controller.translateScene(10, 10, 40, 17);

    EXPECT_EQ(camera.getWorldRotation(), before);
}

// Zoom

struct ZoomCase {
    const char* name;
    float distance; // of the camera from the pivot
    float delta;
    float after;
};

class Zoom : public OrbitViewControllerTest, public testing::WithParamInterface<ZoomCase> {};

TEST_P(Zoom, EndsAtThisDistance)
{
    look({0, -GetParam().distance, 0}, {0, 1, 0});
    controller.setOrbitPivot({});
    const rob::Rotationf before = camera.getWorldRotation();

    controller.zoom(0, 0, 0, GetParam().delta);

    EXPECT_NEAR(camera.getWorldPosition().y, -GetParam().after, GetParam().after * 1e-5f);
    EXPECT_NEAR(camera.getWorldPosition().x, 0, 1e-3f);
    EXPECT_EQ(camera.getWorldRotation(), before);
}

INSTANTIATE_TEST_SUITE_P(Table, Zoom,
                         testing::Values(ZoomCase{"NotchIn", 100, 1, 84}, ZoomCase{"NotchOut", 100, -1, 116},
                                         ZoomCase{"OnlyTheSignOfDeltaCounts", 100, 120, 84},
                                         ZoomCase{"NoDeltaIsANotchOut", 100, 0, 116},
                                         ZoomCase{"LargeStepInIsLimited", 20000, 1, 20000 - zoomStepLimit},
                                         ZoomCase{"LargeStepOutIsLimited", 20000, -1, 20000 + zoomStepLimit},
                                         ZoomCase{"InStopsAtTheLeastDistance", 11, 1, zoomMinDistance},
                                         ZoomCase{"InFromNearerGoesBackToTheLeastDistance", 5, 1, zoomMinDistance},
                                         ZoomCase{"OutIsNotHeldByTheLeastDistance", 3, -1, 3.48f}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OrbitViewControllerTest, ZoomWithNothingUnderTheMouseGoesToTheGround)
{
    look({0, -300, 400}, {0, 1, -1});

    controller.zoom(120, 60, 0, 1);

    EXPECT_NEAR(controller.getFocalPoint().z, 0, 0.01f);
    EXPECT_NEAR(pixelOf(camera, controller.getFocalPoint()).x, 120, 0.1f);
    EXPECT_NEAR(pixelOf(camera, controller.getFocalPoint()).y, 60, 0.1f);
}

TEST_F(OrbitViewControllerTest, ZoomJustClearlyDownGoesToTheGround)
{
    look({0, -300, 400}, {0, 1, -0.102f});

    controller.zoom(middleX, middleY, 0, 1);

    EXPECT_NEAR(controller.getFocalPoint().z, 0, 0.01f);
}

TEST_F(OrbitViewControllerTest, ZoomFromBelowTheGroundLookingUpGoesToTheGround)
{
    look({0, -300, -400}, {0, 1, 1});

    controller.zoom(middleX, middleY, 0, 1);

    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), {0, 100, 0}, 0.5f));
}

struct ZoomAheadCase {
    const char* name;
    float slope; // of the view, along z
};

class ZoomAhead : public OrbitViewControllerTest, public testing::WithParamInterface<ZoomAheadCase> {};

TEST_P(ZoomAhead, GoesTo5000UnitsAhead)
{
    look({0, -300, 400}, {0, 1, GetParam().slope});
    const rob::Posf ahead = onRay(middleX, middleY, 5000);

    controller.zoom(middleX, middleY, 0, 1);

    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), ahead, 0.01f));
}

INSTANTIATE_TEST_SUITE_P(Table, ZoomAhead,
                         testing::Values(ZoomAheadCase{"InALevelView", 0}, ZoomAheadCase{"LookingHardlyDown", -0.099f},
                                         ZoomAheadCase{"LookingHardlyUp", 0.099f},
                                         ZoomAheadCase{"WithTheGroundBehind", 1}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(OrbitViewControllerTest, ZoomToABodyKeepsItUnderTheMouse)
{
    test::addPickedBox(world, {-50, -30, 0}, {100, 100, 80});
    look({0, 0, 480}, {0, 0, -1});
    const rob::Vec2f corner = pixelOf(camera, {30, 20, 80});

    controller.zoom(corner.x, corner.y, 0, 1);

    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), {30, 20, 80}, 0.1f));
    EXPECT_NEAR(camera.getWorldPosition().z, 80 + 400 * 0.84f, 0.05f);
    EXPECT_NEAR(pixelOf(camera, {30, 20, 80}).x, corner.x, 0.1f);
    EXPECT_NEAR(pixelOf(camera, {30, 20, 80}).y, corner.y, 0.1f);
}

TEST_F(OrbitViewControllerTest, ZoomStaysBeforeASurfaceThatIsTooNear)
{
    test::addPickedBox(world, {-50, -30, 0}, {100, 100, 80});
    look({0, 0, 91}, {0, 0, -1});

    controller.zoom(middleX, middleY, 0, 1);
    EXPECT_EQ(camera.getWorldPosition(), rob::Posf(0, 0, 91));

    controller.zoom(middleX, middleY, 0, -1);
    EXPECT_NEAR(camera.getWorldPosition().z, 80 + 11 * 1.16f, 0.01f) << "out is not held";
}

TEST_F(OrbitViewControllerTest, ZoomToACloudPointStopsAtTheLeastDistance)
{
    test::addPickedCloud(world, {{0, 0, 120}});
    look({0, 0, 131}, {0, 0, -1});

    controller.zoom(middleX, middleY, 0, 1);

    EXPECT_NEAR(distanceTo(controller.getFocalPoint()), zoomMinDistance, 0.01f) << "a cloud is no surface";
}

TEST_F(OrbitViewControllerTest, ZoomOverEmptyGroundStopsAtTheLeastDistance)
{
    look({0, 0, 11}, {0, 0, -1});

    controller.zoom(middleX, middleY, 0, 1);
    EXPECT_TRUE(isNearPoint(controller.getFocalPoint(), {0, 0, 0}, 0.01f));
    EXPECT_NEAR(camera.getWorldPosition().z, zoomMinDistance, 0.01f);

    controller.zoom(middleX, middleY, 0, 1);
    EXPECT_NEAR(camera.getWorldPosition().z, zoomMinDistance, 0.01f) << "and stays there";
}

TEST_F(OrbitViewControllerTest, ZoomFromTheFocalPointItselfFailsAndMovesNothing)
{
    look({0, 0, 100}, {0, 1, 0});
    controller.setOrbitPivot(rob::Posef(rob::Posf(0, 0, 100)));

    for (const float delta : {1.0f, -1.0f})
        EXPECT_THAT([&] { controller.zoom(middleX, middleY, 0, delta); },
                    test::throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));

    EXPECT_EQ(camera.getWorldPosition(), rob::Posf(0, 0, 100));
}

// Settings

TEST_F(OrbitViewControllerTest, LimitsAreThoseOfTheSettingsWhenItIsMade)
{
    SceneSettings& settings = SceneCore::Get()->settings;
    const float stepLimit = std::exchange(settings.zoomStepLimit, 5.0f);
    const float minDistance = std::exchange(settings.zoomMinDistance, 98.0f);

    OrbitViewController other(&camera, "other");
    settings.zoomStepLimit = stepLimit;
    settings.zoomMinDistance = minDistance;
    other.setOrbitPivot({});

    look({0, -100, 0}, {0, 1, 0});
    other.zoom(0, 0, 0, -1);
    EXPECT_NEAR(camera.getWorldPosition().y, -105, 1e-3f);
    other.zoom(0, 0, 0, 1);
    EXPECT_NEAR(camera.getWorldPosition().y, -100, 1e-3f);
    other.zoom(0, 0, 0, 1);
    EXPECT_NEAR(camera.getWorldPosition().y, -98, 1e-3f);
}

TEST_F(OrbitViewControllerTest, ReservedOrbitSettingChangesNoGesture)
{
    SceneSettings& settings = SceneCore::Get()->settings;
    const auto poseAfterGestures = [this](OrbitViewController& by) {
        look({0, -300, 400}, {0, 1, -1});
        by.startRotating(90, 220);
        by.rotateScene(13, -7);
        by.translateScene(120, 60, 40, 17);
        by.zoom(middleX, middleY, 0, 1);
        by.zoom(middleX, middleY, 0, -1);
        return camera.getWorldPose();
    };
    const rob::Posef expected = poseAfterGestures(controller);
    const float before = settings.orbitReserved;

    for (const float reserved : {-7.0f, 0.5f, 12345.0f}) {
        settings.orbitReserved = reserved;
        OrbitViewController other(&camera, "other");
        EXPECT_EQ(poseAfterGestures(other), expected) << reserved;
    }
    settings.orbitReserved = before;
}

// Without a view

TEST_F(OrbitViewControllerTest, GesturesThatNeedARayDoNothingBeforeTheRenderTarget)
{
    Camera& blind = *scene.createCamera("navigated without target");
    OrbitViewController& navigation = *blind.getViewController();
    const rob::Posef before = blind.getWorldPose();

    navigation.startRotating(10, 10);
    navigation.translateScene(10, 10, 5, 5);
    navigation.zoom(10, 10, 0, 1);
    navigation.setOrbitPivot({});
    navigation.translateScene(10, 10, 5, 5);

    EXPECT_EQ(blind.getWorldPose(), before);
    EXPECT_EQ(navigation.getFocalPoint(), rob::Posf());
}

TEST_F(OrbitViewControllerTest, GesturesThatNeedNoRayWorkBeforeTheRenderTarget)
{
    Camera& blind = *scene.createCamera("orbited without target");
    blind.setWorldPosition({0, -100, 0});
    OrbitViewController& navigation = *blind.getViewController();

    navigation.rotateScene(20, 0);
    EXPECT_NEAR(blind.getWorldPosition().length(), 100, 0.01f);
    EXPECT_NE(blind.getWorldPosition(), rob::Posf(0, -100, 0));

    navigation.setOrbitPivot({});
    navigation.zoom(10, 10, 0, 1);
    EXPECT_NEAR(blind.getWorldPosition().length(), 84, 0.01f);
}

TEST_F(OrbitViewControllerTest, NothingMovesInAViewWithoutArea)
{
    look({0, -300, 400}, {0, 1, -1});
    camera.ogreCamera()->getViewport()->setDimensions(0, 0, 0, 0); // as in a window that was folded away
    ASSERT_EQ(camera.viewportWidth(), 0u);
    const rob::Posef before = camera.getWorldPose();

    controller.startRotating(10, 10);
    controller.translateScene(10, 10, 5, 5);
    controller.zoom(10, 10, 0, 1);

    EXPECT_EQ(camera.getWorldPose(), before);
    camera.updateFOV();
}

// The posting half

class CameraNavigation : public OrbitViewControllerTest {
protected:
    CameraNavigation() : posted(*camera.getViewController())
    {
        posted.clearOrbitPivot();
        look({0, -300, 400}, {0, 1, -1});
    }
    ~CameraNavigation() override { posted.clearOrbitPivot(); }

    OrbitViewController& posted; // outlives the test
};

TEST_F(CameraNavigation, GesturesWaitForTheNextBatch)
{
    const rob::Posef before = camera.getWorldPose();

    camera.startRotating(middleX, middleY);
    camera.rotateScene(10, 0);
    camera.translateScene(middleX, middleY, 10, 0);
    camera.zoom(middleX, middleY, 0, 1);
    EXPECT_EQ(camera.getWorldPose(), before);
    drain();
    const rob::Posef after = camera.getWorldPose();

    look({0, -300, 400}, {0, 1, -1});
    controller.startRotating(middleX, middleY);
    controller.rotateScene(10, 0);
    controller.translateScene(middleX, middleY, 10, 0);
    controller.zoom(middleX, middleY, 0, 1);
    EXPECT_EQ(after, camera.getWorldPose());
    EXPECT_NE(after, before);
}

TEST_F(CameraNavigation, PivotIsSetAndClearedInTheNextBatch)
{
    camera.setOrbitPivot(rob::Posef(rob::Posf(1, 2, 3)));
    EXPECT_FALSE(posted.hasOrbitPivot());
    drain();
    EXPECT_TRUE(posted.hasOrbitPivot());
    EXPECT_EQ(posted.getFocalPoint(), rob::Posf(1, 2, 3));

    camera.clearOrbitPivot();
    EXPECT_TRUE(posted.hasOrbitPivot());
    drain();
    EXPECT_FALSE(posted.hasOrbitPivot());
}

TEST_F(CameraNavigation, ZoomFromThePivotItselfFailsOnTheRenderThread)
{
    camera.setOrbitPivot(camera.getWorldPose());
    camera.zoom(middleX, middleY, 0, 1);

    EXPECT_THAT([this] { drain(); }, test::throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));
}

TEST_F(CameraNavigation, GesturesOfACameraThatDiedMeanwhileDoNothing)
{
    auto mortal = std::make_unique<Camera>("mortal camera", &scene);
    mortal->setOrbitPivot(rob::Posef(rob::Posf(1, 2, 3)));
    mortal->startRotating(middleX, middleY);
    mortal->rotateScene(10, 5);
    mortal->translateScene(middleX, middleY, 10, 5);
    mortal->zoom(middleX, middleY, 0, 1);
    mortal->clearOrbitPivot();
    const rob::Posef before = camera.getWorldPose();
    mortal.reset();
    int ran = 0;
    scene.addRenderTask([&ran] { ++ran; }, 0);
    int moves = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onCameraMoved([&] { ++moves; });

    EXPECT_NO_THROW(drain());

    EXPECT_EQ(moves, 0);
    EXPECT_EQ(ran, 1) << "what was posted behind them is done";
    EXPECT_EQ(camera.getWorldPose(), before);
}

TEST_F(CameraNavigation, PostedGestureAsksForAFrame)
{
    int updates = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++updates; });

    camera.zoom(middleX, middleY, 0, 1);

    EXPECT_EQ(updates, 1);
}

} // namespace
} // namespace vrk::visual
