#include "view/Camera.h"

#include "platform/broker/SignalBroker.h"
#include "scene/core/SceneCore.h"
#include "selection/geometry/Plane.h"
#include "support/SceneFixture.h"
#include "view/OffscreenTarget.h"

#include <Ogre.h>

#include <cmath>
#include <utility>

namespace vrk::visual {
namespace {

constexpr float startFOV = 1.0471976f;

class CameraTest : public test::RenderTest {
protected:
    CameraTest() : camera(*Camera::Get())
    {
        camera.setWorldPose({{0, 0, 100}, rob::Rotationf()}); // looks down the negative z axis
    }
    ~CameraTest() override
    {
        camera.setHFOV(startFOV);
        camera.setClipDist(1, 100000);
        camera.setVerticleDir(2);
    }

    Camera& camera;
};

TEST_F(CameraTest, StoredPlacesDoNotMoveTheCamera)
{
    const rob::Posf before = camera.getWorldPosition();

    camera.setFromPos({1, 2, 3});
    camera.setTargetPos({4, 5, 6});

    EXPECT_EQ(camera.getWorldPosition(), before);
    EXPECT_EQ(camera.getFromPos(), rob::Posf(1, 2, 3));
    EXPECT_EQ(camera.getTargetPos(), rob::Posf(4, 5, 6));
}

TEST_F(CameraTest, HorizontalAngleIsKeptInAWideWindow)
{
    setSize(400, 200);

    EXPECT_FLOAT_EQ(camera.getHFOV(), startFOV);
    EXPECT_FLOAT_EQ(camera.getAspectRatio(), 2.0f);
    EXPECT_LT(camera.getVFOV(), camera.getHFOV());
    EXPECT_NEAR(camera.getVFOV(), 2 * std::atan(std::tan(startFOV * 0.5) / 2), 1e-6);
}

TEST_F(CameraTest, FitOfTheAnglesSpreadsTheViewOverTheTargetAgain)
{
    Ogre::Viewport& view = *camera.ogreCamera()->getViewport();
    view.setDimensions(0.25f, 0, 0.5f, 0.5f);
    camera.ogreCamera()->setAspectRatio(7);

    camera.updateFOV();

    EXPECT_EQ(camera.viewportWidth(), 400u);
    EXPECT_EQ(camera.viewportHeight(), 300u);
    EXPECT_FLOAT_EQ(camera.getAspectRatio(), 4.0f / 3);
}

TEST_F(CameraTest, VerticalAngleIsHeldBelowHalfATurnInATallWindow)
{
    setSize(20, 400);

    camera.setHFOV(3.1f);

    EXPECT_FLOAT_EQ(camera.getVFOV(), 3.138451f);
    EXPECT_FLOAT_EQ(camera.getHFOV(), 3.1f);
}

TEST_F(CameraTest, AngleOfZeroIsHeldAboveZero)
{
    camera.setHFOV(0);

    EXPECT_FLOAT_EQ(camera.getVFOV(), 0.001f);
}

TEST_F(CameraTest, OnlyThePerspectiveProjectionIsKnown)
{
    camera.setCameraProjection("orthographic");
    EXPECT_EQ(camera.ogreCamera()->getProjectionType(), Ogre::PT_PERSPECTIVE);

    camera.ogreCamera()->setProjectionType(Ogre::PT_ORTHOGRAPHIC);
    camera.setCameraProjection("Perspective");
    EXPECT_EQ(camera.ogreCamera()->getProjectionType(), Ogre::PT_ORTHOGRAPHIC) << "the name is told letter by letter";

    camera.setCameraProjection("perspective");
    EXPECT_EQ(camera.ogreCamera()->getProjectionType(), Ogre::PT_PERSPECTIVE);
}

TEST_F(CameraTest, UprightAxisStaysUprightWhenTheCameraTurns)
{
    const auto rightAfterTurning = [this] {
        camera.getSceneNode()->setDirection(Ogre::Vector3(1, 2, 3), Ogre::Node::TS_WORLD);
        return camera.getWorldRotation() * rob::Dirf(1, 0, 0);
    };
    for (int axis = 0; axis < 3; ++axis) {
        camera.setVerticleDir(axis);
        EXPECT_NEAR(rob::Vec3f(rightAfterTurning())[static_cast<unsigned>(axis)], 0, 1e-5) << axis;
    }

    camera.setVerticleDir(3); // no axis: the last one stays
    camera.setVerticleDir(-1);
    EXPECT_NEAR(rightAfterTurning().z, 0, 1e-5);
}

TEST_F(CameraTest, ClipDistancesReachOgre)
{
    camera.setClipDist(2, 500);

    EXPECT_FLOAT_EQ(camera.ogreCamera()->getNearClipDistance(), 2);
    EXPECT_FLOAT_EQ(camera.ogreCamera()->getFarClipDistance(), 500);
    EXPECT_FLOAT_EQ(camera.ogreCamera()->getRenderingDistance(), 500);
}

TEST_F(CameraTest, RenderTargetGivesASizeAndTheBackground)
{
    setSize(320, 240);

    EXPECT_TRUE(camera.isRenderTargetValid());
    EXPECT_EQ(camera.viewportWidth(), 320u);
    EXPECT_EQ(camera.viewportHeight(), 240u);
    EXPECT_EQ(camera.ogreCamera()->getViewport()->getBackgroundColour(), Ogre::ColourValue(0.45f, 0.45f, 0.45f, 1));
}

TEST_F(CameraTest, ViewCoversTheTargetAndIsClearedForEachPicture)
{
    const Ogre::Viewport& view = *camera.ogreCamera()->getViewport();

    EXPECT_EQ(view.getZOrder(), 0);
    EXPECT_EQ(Ogre::Vector4(view.getLeft(), view.getTop(), view.getWidth(), view.getHeight()),
              Ogre::Vector4(0, 0, 1, 1));
    EXPECT_TRUE(view.getClearEveryFrame());
    EXPECT_EQ(view.getClearBuffers(), 3u) << "colour and depth";
    EXPECT_TRUE(view.getOverlaysEnabled());
    EXPECT_TRUE(view.getShadowsEnabled());
}

TEST_F(CameraTest, SizeIsThatOfTheFirstViewOfTheTarget)
{
    OffscreenTarget target(64, 48, 0);
    camera.setRenderTarget(target.renderTarget());
    target.renderTarget()->addViewport(camera.ogreCamera(), 1, 0, 0, 0.5f, 0.5f); // over it
    EXPECT_EQ(camera.viewportWidth(), 64u);
    EXPECT_EQ(camera.viewportHeight(), 48u);

    target.renderTarget()->addViewport(camera.ogreCamera(), -1, 0, 0, 0.25f, 0.5f); // under it, so the first
    EXPECT_EQ(camera.viewportWidth(), 16u);
    EXPECT_EQ(camera.viewportHeight(), 24u);

    target.renderTarget()->removeViewport(-1);
    target.renderTarget()->removeViewport(1);
    setSize(64, 64);
}

TEST_F(CameraTest, SameRenderTargetMayBeSetAgain)
{
    OffscreenTarget target(64, 64, 0);

    camera.setRenderTarget(target.renderTarget());
    EXPECT_NO_THROW(camera.setRenderTarget(target.renderTarget()));

    EXPECT_EQ(target.renderTarget()->getNumViewports(), 1);
    setSize(64, 64);
}

TEST_F(CameraTest, CameraWithoutRenderTargetKeepsItsAngles)
{
    Camera* second = scene.createCamera("without target");
    EXPECT_FALSE(second->isRenderTargetValid());
    const float before = second->getVFOV();

    second->setHFOV(0.5f);

    EXPECT_FLOAT_EQ(second->getVFOV(), before);
    EXPECT_FLOAT_EQ(second->getHFOV(), 0.5f);
}

TEST_F(CameraTest, RayOfTheMiddleLooksAlongTheView)
{
    const Ray ray = camera.getViewportRay(200, 150);

    EXPECT_NEAR(ray.direction.x, 0, 1e-5);
    EXPECT_NEAR(ray.direction.y, 0, 1e-5);
    EXPECT_NEAR(ray.direction.z, -1, 1e-5);
    EXPECT_NEAR(ray.origin.x, 0, 1e-2);
    EXPECT_EQ(ray.length, std::numeric_limits<float>::max());
}

TEST_F(CameraTest, PixelsAreCountedFromTheTopLeft)
{
    const Ray ray = camera.getViewportRay(0, 0);

    EXPECT_LT(ray.direction.x, 0);
    EXPECT_GT(ray.direction.y, 0);
}

TEST_F(CameraTest, PlaneUnderAPixel)
{
    rob::Posf point;

    EXPECT_TRUE(camera.getWorldPointOnPlane(200, 150, Plane({0, 0, 1}, 40), point));

    EXPECT_NEAR(point.z, 40, 1e-3);
    EXPECT_NEAR(point.x, 0, 1e-2);
}

TEST_F(CameraTest, PlaneBehindTheCameraIsMetBehindAndAnswersFalse)
{
    rob::Posf point;

    EXPECT_FALSE(camera.getWorldPointOnPlane(200, 150, Plane({0, 0, 1}, 300), point));

    EXPECT_NEAR(point.z, 300, 1e-2);
}

TEST_F(CameraTest, ParallelPlaneAnswersFalseWithTheStartOfTheRay)
{
    rob::Posf point;

    EXPECT_FALSE(camera.getWorldPointOnPlane(200, 150, Plane({1, 0, 0}, 50), point));

    EXPECT_EQ(point, camera.getViewportRay(200, 150).origin);
}

TEST_F(CameraTest, WholePoseRaisesCameraMovedTwice)
{
    int moves = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onCameraMoved([&moves] { ++moves; });
    const rob::Posef pose({10, 20, 30}, rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f));

    camera.setWorldPose(pose);
    EXPECT_EQ(moves, 2);

    scene.setCameraPose(pose);
    EXPECT_EQ(moves, 2) << "posted";
    drain();
    EXPECT_EQ(moves, 4);
    EXPECT_EQ(camera.getWorldPose(), pose);
}

TEST_F(CameraTest, EachHalfOfAPoseMovesTheNodeAndRaisesCameraMovedOnce)
{
    const rob::Rotationf turn(0.5f, 0.5f, 0.5f, 0.5f);
    std::vector<rob::Posef> seen;
    const boost::signals2::scoped_connection connection =
        broker::SignalBroker::onCameraMoved([&] { seen.push_back(camera.getWorldPose()); });

    camera.setWorldPosition({1, 2, 3});
    camera.setWorldRotation(turn);

    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0], rob::Posef({1, 2, 3}, rob::Rotationf())) << "raised when it has moved";
    EXPECT_EQ(seen[1], rob::Posef({1, 2, 3}, turn));
}

TEST_F(CameraTest, StartsFromTheSettings)
{
    SceneSettings& settings = SceneCore::Get()->settings;
    const float nearClip = std::exchange(settings.nearClip, 3.0f);
    const float farClip = std::exchange(settings.farClip, 4000.0f);

    const Camera& made = *scene.createCamera("from settings");
    settings.nearClip = nearClip;
    settings.farClip = farClip;

    EXPECT_EQ(made.getScene(), &scene);
    EXPECT_EQ(made.getSceneNode()->getName(), made.getName());
    EXPECT_EQ(made.ogreCamera()->getName(), made.getName());
    EXPECT_EQ(made.getSceneNode()->getParentSceneNode(), sceneManager->getRootSceneNode());
    EXPECT_EQ(made.ogreCamera()->getParentSceneNode(), made.getSceneNode());
    EXPECT_EQ(made.getFromPos(), settings.cameraPosition);
    EXPECT_EQ(made.getTargetPos(), settings.cameraTarget);
    EXPECT_EQ(made.ogreCamera()->getNearClipDistance(), 3);
    EXPECT_EQ(made.ogreCamera()->getFarClipDistance(), 4000);
    EXPECT_EQ(made.ogreCamera()->getRenderingDistance(), 4000);
    EXPECT_EQ(made.getHFOV(), startFOV);
    EXPECT_EQ(made.getRenderRate(), 60u);
    EXPECT_FALSE(made.ogreCamera()->getAutoAspectRatio());
    EXPECT_FALSE(made.getSceneNode()->getInheritScale());
    ASSERT_NE(made.getViewController(), nullptr);
    EXPECT_NE(made.getViewController(), camera.getViewController());
}

struct StartCase {
    const char* name;
    int direction;
    rob::Posf position;
    rob::Dirf up;
};

class CameraStart : public CameraTest, public testing::WithParamInterface<StartCase> {};

TEST_P(CameraStart, StandsWhereTheUpAxisPutsIt)
{
    SceneSettings& settings = SceneCore::Get()->settings;
    settings.gridNormalDir = GetParam().direction;

    const Camera* made = scene.createCamera(GetParam().name);
    settings.gridNormalDir = 2;

    EXPECT_EQ(made->getWorldPosition(), GetParam().position);
    // It looks at the target with the up axis upwards in the picture.
    const rob::Dirf forward = made->getWorldRotation() * rob::Dirf(0, 0, -1);
    const rob::Dirf right = made->getWorldRotation() * rob::Dirf(1, 0, 0);
    const rob::Dirf toTarget = rob::normalized(settings.cameraTarget - GetParam().position);
    EXPECT_NEAR(forward.dot(toTarget), 1, 1e-5);
    EXPECT_NEAR(right.dot(GetParam().up), 0, 1e-5);
}

INSTANTIATE_TEST_SUITE_P(Table, CameraStart,
                         testing::Values(StartCase{"XUp", 0, {2000, 3000, -1500}, {1, 0, 0}},
                                         StartCase{"YUp", 1, {-2000, 3000, 1500}, {0, 1, 0}},
                                         StartCase{"ZUp", 2, {2000, -3000, 1500}, {0, 0, 1}},
                                         StartCase{"UnknownIsZUp", 9, {2000, -3000, 1500}, {0, 0, 1}}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vrk::visual
