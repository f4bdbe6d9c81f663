#include "scene/core/CameraSnapshot.h"

#include "scene/core/PublishedCamera.h"
#include "support/ThrowsExactly.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

namespace vrk::visual {
namespace {

constexpr float nearClip = 2;
constexpr float farClip = 2000;
const rob::Posf eye(10, 20, 30);

/// A camera at `eye`, looking down the negative z axis at 400 x 200 pixels; a right angle from top to bottom.
CameraSnapshot lookingDown()
{
    CameraSnapshot camera;
    camera.pose = rob::Posef(eye);
    camera.vfov = std::acos(0.0f);
    camera.nearClip = nearClip;
    camera.farClip = farClip;
    camera.width = 400;
    camera.height = 200;
    const float a = -(farClip - nearClip) / (2 * farClip * nearClip);
    const float b = (farClip + nearClip) / (2 * farClip * nearClip);
    camera.cubeToWorld = {2, 0, a * eye.x, b * eye.x,     //
                          0, 1, a * eye.y, b * eye.y,     //
                          0, 0, a * eye.z, b * eye.z - 1, //
                          0, 0, a,         b};
    return camera;
}

TEST(CameraSnapshotTest, RayOfTheMiddleLeavesTheNearPlaneAlongTheView)
{
    const Ray ray = lookingDown().rayThrough(200, 100);

    EXPECT_NEAR(ray.origin.x, eye.x, 1e-4);
    EXPECT_NEAR(ray.origin.y, eye.y, 1e-4);
    EXPECT_NEAR(ray.origin.z, eye.z - nearClip, 1e-4);
    EXPECT_NEAR(ray.direction.z, -1, 1e-6);
    EXPECT_EQ(ray.length, std::numeric_limits<float>::max());
}

TEST(CameraSnapshotTest, PixelsAreCountedFromTheTopLeft)
{
    const rob::Dirf corner = lookingDown().rayThrough(0, 0).direction;

    EXPECT_NEAR(corner.x, -2 / std::sqrt(6.0), 1e-4);
    EXPECT_NEAR(corner.y, 1 / std::sqrt(6.0), 1e-4);
    EXPECT_NEAR(corner.z, -1 / std::sqrt(6.0), 1e-4);
}

TEST(CameraSnapshotTest, PixelIsAsLargeAsItsShareOfTheViewThere)
{
    const CameraSnapshot camera = lookingDown();

    EXPECT_NEAR(camera.unitsPerPixel(100), 1, 1e-5) << "200 units lie between the outer rays, as 200 pixels do";
    EXPECT_NEAR(camera.unitsPerPixel(50), 0.5, 1e-5);
    EXPECT_EQ(camera.unitsPerPixel(0), 0);
    EXPECT_EQ(camera.unitsPerPixelAt(eye + rob::Vec3f(60, 0, -80)), camera.unitsPerPixel(100));
}

TEST(CameraSnapshotTest, OneSideWithoutPixelsLeavesNothingToMeasureBy)
{
    CameraSnapshot camera = lookingDown();
    EXPECT_TRUE(camera.hasPixels());

    camera.width = 0;
    EXPECT_FALSE(camera.hasPixels());
    camera.width = 400;
    camera.height = 0;
    EXPECT_FALSE(camera.hasPixels());
    EXPECT_FALSE(CameraSnapshot().hasPixels());
}

TEST(CameraSnapshotTest, RayWithoutDirectionIsRefused)
{
    CameraSnapshot camera = lookingDown();
    camera.cubeToWorld = {};
    camera.cubeToWorld[15] = 1; // everything is one point

    EXPECT_THAT([&] { camera.rayThrough(1, 1); },
                test::throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));
}

TEST(PublishedCameraTest, LatestIsTheLastThatWasPublished)
{
    PublishedCamera published;
    EXPECT_EQ(published.latest(), nullptr);

    published.publish(lookingDown());
    const auto first = published.latest();
    CameraSnapshot moved = lookingDown();
    moved.pose.position.x = 99;
    published.publish(moved);

    EXPECT_EQ(*published.latest(), moved);
    EXPECT_EQ(*first, lookingDown()) << "who holds one keeps it as it was";
    published.withdraw();
    EXPECT_EQ(published.latest(), nullptr);
    EXPECT_EQ(*first, lookingDown());
}

TEST(PublishedCameraTest, ReadersOnOtherThreadsSeeWholeSnapshotsInOrder)
{
    constexpr unsigned last = 2000;
    PublishedCamera published;
    published.publish(CameraSnapshot());
    std::atomic<bool> isWhole = true;
    std::atomic<bool> isInOrder = true;
    std::vector<std::jthread> readers;

    for (int i = 0; i < 3; ++i)
        readers.emplace_back([&] {
            for (unsigned seen = 0; seen < last;) {
                const auto camera = published.latest();
                if (camera->width != camera->height || camera->cubeToWorld[15] != static_cast<float>(camera->width))
                    isWhole = false;
                if (camera->width < seen)
                    isInOrder = false;
                seen = camera->width;
            }
        });
    for (unsigned i = 1; i <= last; ++i) {
        CameraSnapshot next;
        next.width = i;
        next.height = i;
        next.cubeToWorld[15] = static_cast<float>(i);
        published.publish(next);
    }
    readers.clear();

    EXPECT_TRUE(isWhole);
    EXPECT_TRUE(isInOrder);
}

} // namespace
} // namespace vrk::visual
