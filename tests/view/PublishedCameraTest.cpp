#include "platform/broker/SignalBroker.h"
#include "view/OffscreenTarget.h"
#include "view/ViewTools.h"

#include <random>

namespace vrk::visual {
namespace {

class PublishedCameraTest : public test::RenderTest {
protected:
    PublishedCameraTest() : camera(*Camera::Get()) { test::lookAlong(camera, {300, -400, 250}, {-3, 4, -2}); }
    ~PublishedCameraTest() override
    {
        camera.setHFOV(1.0471976f);
        camera.setClipDist(1, 100000);
    }

    Camera& camera;
};

rob::Posef randomPose(std::mt19937& random)
{
    std::uniform_real_distribution<float> place(-5000, 5000);
    std::normal_distribution<float> part;
    const float w = part(random);
    const float x = part(random);
    const float y = part(random);
    const float z = part(random);
    const float length = std::sqrt(w * w + x * x + y * y + z * z);
    return {{place(random), place(random), place(random)},
            rob::Rotationf(w / length, x / length, y / length, z / length)};
}

TEST_F(PublishedCameraTest, AnswersAreThoseOfTheCameraBitByBit)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> share(0, 1);
        if (seed % 10 == 0)
            setSize(50 + 37 * seed, 900 - 13 * seed);
        camera.setHFOV(0.2f + 2.5f * share(random));
        camera.setClipDist(0.1f + share(random), 1000 + 1e5f * share(random));
        camera.setWorldPose(randomPose(random));

        const CameraSnapshot snapshot = *Camera::Published();

        EXPECT_EQ(snapshot.pose, camera.getWorldPose());
        EXPECT_EQ(snapshot.vfov, camera.getVFOV());
        EXPECT_EQ(snapshot.width, camera.viewportWidth());
        EXPECT_EQ(snapshot.height, camera.viewportHeight());
        EXPECT_EQ(snapshot.nearClip, camera.ogreCamera()->getNearClipDistance());
        EXPECT_EQ(snapshot.farClip, camera.ogreCamera()->getFarClipDistance());
        for (int i = 0; i < 40; ++i) {
            const float x = (1.2f * share(random) - 0.1f) * static_cast<float>(snapshot.width);
            const float y = (1.2f * share(random) - 0.1f) * static_cast<float>(snapshot.height);
            const Ray fromCamera = camera.getViewportRay(x, y);
            const Ray ray = snapshot.rayThrough(x, y);
            ASSERT_EQ(ray.origin, fromCamera.origin) << x << ", " << y;
            ASSERT_EQ(ray.direction, fromCamera.direction) << x << ", " << y;
            ASSERT_EQ(ray.length, fromCamera.length);
        }
    }
}

TEST_F(PublishedCameraTest, MatricesPutAPointWhereItIsDrawn)
{
    const CameraSnapshot snapshot = camera.getSnapshot();
    const rob::Posf point(20, -30, 40);
    const auto applied = [](const CameraSnapshot::Matrix& m, const Ogre::Vector4& v) {
        return Ogre::Matrix4(m[0], m[1], m[2], m[3], m[4], m[5], m[6], m[7], m[8], m[9], m[10], m[11], m[12], m[13],
                             m[14], m[15]) *
               v;
    };

    const Ogre::Vector4 clip =
        applied(snapshot.projection, applied(snapshot.view, Ogre::Vector4(point.x, point.y, point.z, 1)));

    const rob::Vec2f pixel = test::pixelOf(camera, point);
    EXPECT_NEAR((clip.x / clip.w * 0.5f + 0.5f) * static_cast<float>(snapshot.width), pixel.x, 1e-3);
    EXPECT_NEAR((0.5f - clip.y / clip.w * 0.5f) * static_cast<float>(snapshot.height), pixel.y, 1e-3);
    const Ogre::Vector4 back = applied(snapshot.cubeToWorld, clip);
    EXPECT_NEAR(back.x / back.w, point.x, 0.1);
    EXPECT_NEAR(back.y / back.w, point.y, 0.1);
    EXPECT_NEAR(back.z / back.w, point.z, 0.1);
}

TEST_F(PublishedCameraTest, EachChangeIsPublishedAtOnce)
{
    const auto expectPublished = [this](const char* change) {
        EXPECT_EQ(*Camera::Published(), camera.getSnapshot()) << change;
    };
    const auto before = Camera::Published();

    camera.setWorldPosition({1, 2, 3});
    EXPECT_EQ(Camera::Published()->pose.position, rob::Posf(1, 2, 3));
    expectPublished("position");
    camera.setWorldRotation(rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f));
    expectPublished("rotation");
    camera.setHFOV(0.7f);
    expectPublished("lens");
    camera.setClipDist(3, 30000);
    EXPECT_EQ(Camera::Published()->farClip, 30000);
    expectPublished("clip distances");
    setSize(120, 90);
    EXPECT_EQ(Camera::Published()->width, 120u);
    expectPublished("another target");
    camera.ogreCamera()->getViewport()->setDimensions(0, 0, 0.5f, 1);
    EXPECT_EQ(Camera::Published()->width, 60u) << "as a window that has another size";
    expectPublished("another size");
    camera.updateFOV();
    expectPublished("angles fitted");
    camera.ogreCamera()->setProjectionType(Ogre::PT_ORTHOGRAPHIC);
    camera.setCameraProjection("perspective");
    expectPublished("projection");
    camera.zoom(60, 45, 0, 1);
    drain();
    expectPublished("navigation");

    EXPECT_NE(*before, *Camera::Published());
    EXPECT_NE(before->pose.position, rob::Posf(1, 2, 3)) << "one that is held stays as it was";
}

TEST_F(PublishedCameraTest, WhoHearsThatTheCameraMovedReadsTheNewPlace)
{
    std::vector<rob::Posf> read;
    const boost::signals2::scoped_connection connection =
        broker::SignalBroker::onCameraMoved([&read] { read.push_back(Camera::Published()->pose.position); });

    camera.setWorldPosition({7, 8, 9});

    EXPECT_THAT(read, testing::ElementsAre(rob::Posf(7, 8, 9)));
}

TEST_F(PublishedCameraTest, NodeMovedByHandShowsWithTheNextFrame)
{
    camera.getSceneNode()->setPosition(11, 12, 13);

    Ogre::Root::getSingleton().renderOneFrame();

    EXPECT_EQ(Camera::Published()->pose.position, rob::Posf(11, 12, 13));
    EXPECT_EQ(*Camera::Published(), camera.getSnapshot());
}

TEST_F(PublishedCameraTest, TargetThatDiesLeavesTheCameraWithoutPixels)
{
    {
        const OffscreenTarget target(64, 48, 0);
        camera.setRenderTarget(target.renderTarget());
        ASSERT_EQ(Camera::Published()->height, 48u);
    }

    EXPECT_FALSE(camera.isRenderTargetValid());
    EXPECT_FALSE(Camera::Published()->hasPixels());
    camera.setWorldPosition({1, 2, 3});
    EXPECT_EQ(Camera::Published()->pose.position, rob::Posf(1, 2, 3));
    setSize(64, 64);
    EXPECT_TRUE(Camera::Published()->hasPixels());
}

TEST_F(PublishedCameraTest, OnlyTheMainCameraIsPublished)
{
    const CameraSnapshot before = *Camera::Published();
    Camera* second = scene.createCamera("not published");

    second->setWorldPosition({5, 5, 5});
    second->setHFOV(0.3f);

    EXPECT_EQ(*Camera::Published(), before);
    EXPECT_EQ(second->getSnapshot().pose.position, rob::Posf(5, 5, 5));
    EXPECT_FALSE(second->getSnapshot().hasPixels()) << "it draws into nothing";
}

} // namespace
} // namespace vrk::visual
