#include "selection/FlatViewFixture.h"

#include "selection/PointCloudObject.h"
#include "selection/SensitivePoints.h"
#include "selection/ViewPixels.h"

#include "scene/core/SceneCore.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>

namespace vrk::selection {
namespace {

using ::testing::IsEmpty;

class LassoSelect : public FlatViewFixture {
protected:
    using Polygon = std::vector<rob::Posf>;

    PointsOfClouds select(const Polygon& polygon)
    {
        service.update();
        return service.lassoSelectPointCloud(polygon);
    }
    LassoSelector lasso(const Polygon& polygon) const { return {polygon, *cameraWithPixels()}; }

    static std::vector<std::uint64_t> sorted(std::vector<std::uint64_t> numbers)
    {
        std::ranges::sort(numbers);
        return numbers;
    }
};

const std::vector<rob::Posf> square{{100, 100, 0}, {200, 100, 0}, {200, 200, 0}, {100, 200, 0}};

TEST_F(LassoSelect, PointsInsideAreFound)
{
    visual::PointCloudVisual* cloud = addCloud({at(150, 150), at(50, 150), at(101, 199), at(201, 150), at(150, 250)});
    const PointsOfClouds found = select(square);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(sorted(found.at(cloud->getId())), (std::vector<std::uint64_t>{0, 2}));
}

TEST_F(LassoSelect, HiddenPointsAreLeftOut)
{
    visual::PointCloudVisual* cloud = addCloud({at(150, 150), at(50, 150), at(101, 199), at(120, 150)});
    cloud->hidePoints(std::make_shared<const layout::PointSet>(std::vector<std::uint32_t>{2}));
    EXPECT_EQ(sorted(select(square).at(cloud->getId())), (std::vector<std::uint64_t>{0, 3}));

    cloud->hidePoints(std::make_shared<const layout::PointSet>(std::vector<std::uint32_t>{0, 2, 3}));
    EXPECT_THAT(select(square), IsEmpty());
}

TEST_F(LassoSelect, CloudWhollyInsideThatHidesPointsIsListed)
{
    // Without a number the entry would stand for all points.
    visual::PointCloudVisual* cloud = addCloud({at(150, 150), at(120, 150), at(160, 170)});
    cloud->hidePoints(std::make_shared<const layout::PointSet>(std::vector<std::uint32_t>{1}));
    EXPECT_EQ(sorted(select(square).at(cloud->getId())), (std::vector<std::uint64_t>{0, 2}));

    cloud->hidePoints(std::make_shared<const layout::PointSet>(std::vector<std::uint32_t>{0, 1, 2}));
    EXPECT_THAT(select(square), IsEmpty());
}

TEST_F(LassoSelect, ConvexIsTheSame)
{
    addCloud({at(150, 150), at(50, 150), at(101, 199)});
    service.update();
    EXPECT_EQ(service.convexSelectPointCloud(square), service.lassoSelectPointCloud(square));
    EXPECT_EQ(service.convexSelectPointCloud(square).size(), 1u);
}

TEST_F(LassoSelect, ConcavePolygonLeavesItsNotchOut)
{
    visual::PointCloudVisual* cloud = addCloud({at(110, 150), at(150, 150), at(190, 150), at(300, 150)});
    // A "U" whose notch is open at the top
    const Polygon u{{100, 100, 0}, {120, 100, 0}, {120, 180, 0}, {180, 180, 0},
                    {180, 100, 0}, {200, 100, 0}, {200, 200, 0}, {100, 200, 0}};
    EXPECT_EQ(sorted(select(u).at(cloud->getId())), (std::vector<std::uint64_t>{0, 2}));
}

TEST_F(LassoSelect, WhatIsGoneRoundTwiceIsOutside)
{
    visual::PointCloudVisual* cloud = addCloud({at(150, 150), at(110, 150), at(300, 150)});
    // Twice round the middle, once round the rest
    const Polygon spiral{{100, 100, 0}, {200, 100, 0}, {200, 200, 0}, {100, 200, 0}, {100, 100, 0},
                         {130, 130, 0}, {170, 130, 0}, {170, 170, 0}, {130, 170, 0}, {130, 130, 0}};
    EXPECT_EQ(sorted(select(spiral).at(cloud->getId())), (std::vector<std::uint64_t>{1}));
}

TEST_F(LassoSelect, TwoPointsHoldNothingButTouchTheCloudThatTheyCross)
{
    visual::PointCloudVisual* cloud = addCloud({at(100, 100), at(200, 200), at(150, 150)});
    const PointsOfClouds found = select({{50, 150, 0}, {350, 150, 0}});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_THAT(found.at(cloud->getId()), IsEmpty());
    EXPECT_FALSE(lasso({{50, 150, 0}, {350, 150, 0}}).isInsidePolygon({0, 0}));
}

TEST_F(LassoSelect, CloudCoveredInPartHasAnEntryAlsoWithoutAPoint)
{
    visual::PointCloudVisual* cloud = addCloud({at(50, 50), at(250, 250)});
    const PointsOfClouds found = select(square);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_THAT(found.at(cloud->getId()), IsEmpty());
}

TEST_F(LassoSelect, CloudWhollyInsideHasAnEntryWithoutANumber)
{
    visual::PointCloudVisual* cloud = addCloud({at(140, 140), at(160, 160), at(150, 150)});
    const PointsOfClouds found = select(square);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_THAT(found.at(cloud->getId()), IsEmpty());
}

TEST_F(LassoSelect, CloudOutsideHasNoEntry)
{
    addCloud({at(300, 250), at(310, 260)});
    EXPECT_THAT(select(square), IsEmpty());
}

TEST_F(LassoSelect, DisabledCloudIsSkipped)
{
    visual::PointCloudVisual* inside = addCloud({at(140, 140), at(160, 160)});
    visual::PointCloudVisual* partly = addCloud({at(50, 50), at(150, 150)});
    service.update();
    service.disableObject(inside);
    service.disableObject(partly);
    EXPECT_THAT(select(square), IsEmpty());
}

TEST_F(LassoSelect, DirtyServiceAnswersNothing)
{
    addCloud({at(50, 50), at(150, 150)});
    ASSERT_TRUE(service.isDirty());
    EXPECT_THAT(service.lassoSelectPointCloud(square), IsEmpty());
    EXPECT_THAT(service.convexSelectPointCloud(square), IsEmpty());
}

TEST_F(LassoSelect, WithoutARenderTargetThereIsNothing)
{
    addCloud({at(50, 50), at(150, 150)});
    service.update();
    visual::SceneCore::Get()->mainCamera.withdraw();
    EXPECT_THAT(service.lassoSelectPointCloud(square), IsEmpty());
}

TEST_F(LassoSelect, PointBehindTheCameraIsProjectedAsItFalls)
{
    // Mirrored through the eye: what lies behind to the lower left appears to the upper right.
    const rob::Posf ahead = at(150, 120);
    const rob::Posf behind(-ahead.x, -2000, -ahead.z);
    const LassoSelector selector = lasso(square);
    EXPECT_NEAR(selector.project(behind).x, selector.project(ahead).x, 1e-5);
    EXPECT_NEAR(selector.project(behind).y, selector.project(ahead).y, 1e-5);
    EXPECT_TRUE(selector.isInsidePolygon(selector.project(behind)));

    visual::PointCloudVisual* cloud = addCloud({at(50, 50), behind});
    EXPECT_EQ(sorted(select(square).at(cloud->getId())), (std::vector<std::uint64_t>{1}));
}

TEST_F(LassoSelect, ProjectionIsTheCamerasOwn)
{
    look({{300, -900, 500}, {20, 10, 30}});
    const Ogre::Camera& camera = *visual::Camera::Get()->ogreCamera();
    const Ogre::Matrix4 matrix = camera.getProjectionMatrix() * Ogre::Matrix4(camera.getViewMatrix(true));
    const LassoSelector selector = lasso(square);
    std::mt19937 random(3);
    std::uniform_real_distribution<float> uniform(-500, 500);
    for (int i = 0; i < 1000; ++i) {
        const rob::Posf p(uniform(random), uniform(random), uniform(random));
        const Ogre::Vector4 expected = matrix * Ogre::Vector4(p.x, p.y, p.z, 1.0f);
        const rob::Vec2f found = selector.project(p);
        ASSERT_NEAR(found.x, expected.x / expected.w, 1e-5);
        ASSERT_NEAR(found.y, expected.y / expected.w, 1e-5);
    }
}

TEST_F(LassoSelect, BoxIsClassifiedByTheRectangleThatItCovers)
{
    const LassoSelector selector = lasso(square);
    const auto boxAt = [&](double x1, double y1, double x2, double y2) {
        const rob::Posf a = at(x1, y2), b = at(x2, y1);
        return visual::Box(a.x, 0, a.z, b.x, 0, b.z);
    };
    EXPECT_EQ(selector.classifyBox(boxAt(140, 140, 160, 160), {}), LassoCoverage::Inside);
    EXPECT_EQ(selector.classifyBox(boxAt(50, 140, 150, 160), {}), LassoCoverage::Partial); // two corners inside
    EXPECT_EQ(selector.classifyBox(boxAt(50, 50, 350, 250), {}), LassoCoverage::Partial);  // around the polygon
    EXPECT_EQ(selector.classifyBox(boxAt(50, 140, 250, 160), {}), LassoCoverage::Partial); // across it
    EXPECT_EQ(selector.classifyBox(boxAt(250, 140, 260, 160), {}), LassoCoverage::Outside);
    // All corners inside, and an edge of the polygon through the middle
    const LassoSelector notched = lasso(
        {{100, 100, 0}, {200, 100, 0}, {200, 149, 0}, {150, 150, 0}, {200, 151, 0}, {200, 200, 0}, {100, 200, 0}});
    EXPECT_EQ(notched.classifyBox(boxAt(140, 120, 190, 180), {}), LassoCoverage::Partial);
}

TEST_F(LassoSelect, WalkTakesRightChildrenFirstAndTellsWhatIsWhole)
{
    std::vector<rob::Posf> points;
    for (int i = 0; i < 20000; ++i)
        points.push_back(at(60 + i % 200, 60 + i / 100));
    visual::PointCloudVisual* cloud = addCloud(points);
    service.update();
    auto& cloudObject = static_cast<PointCloudObject&>(object(cloud));
    const auto groups = lasso(square).selectPrimitives(cloudObject.getRoot(), cloudObject.worldPose);
    int whole = 0, partly = 0;
    std::vector<std::uint64_t> expected;
    const LassoSelector selector = lasso(square);
    for (const auto& [coverage, primitive] : groups) {
        (coverage == 0 ? whole : partly) += 1;
        for (const unsigned index : static_cast<const SensitivePoints*>(primitive)->getIndices())
            if (coverage == 0 || selector.isInsidePolygon(selector.project(points[index])))
                expected.push_back(index);
    }
    EXPECT_GT(whole, 0);
    EXPECT_GT(partly, 0);
    // In the order of the walk, and within a group in that of its list
    EXPECT_EQ(select(square).at(cloud->getId()), expected);
    EXPECT_THAT(lasso(square).selectPrimitives(nullptr, {}), IsEmpty());
}

TEST_F(LassoSelect, PolygonsThatAreNoneDoNoHarm)
{
    addCloud({at(50, 50), at(150, 150)});
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_THAT(select({}), IsEmpty());
    EXPECT_NO_THROW(select({{150, 150, 0}}));
    EXPECT_NO_THROW(select({{nan, nan, 0}, {nan, 5, 0}, {100, nan, 0}}));
    EXPECT_NO_THROW(select({{100, 100, 0}, {nan, 150, 0}, {200, 200, 0}}));
    EXPECT_NO_THROW(select({{100, 100, 0}, {150, 150, 0}, {200, 200, 0}})); // of no area
    Polygon large;
    for (int i = 0; i < 100000; ++i)
        large.emplace_back(150 + 60 * std::cos(i * 6.2831853f / 100000), 150 + 60 * std::sin(i * 6.2831853f / 100000),
                           0.0f);
    EXPECT_EQ(select(large).size(), 1u);
}

/// Random clouds and polygons, concave and self-crossing, in random poses and views, against angles in double precision.
TEST_F(LassoSelect, AgreesWithALoopOverAllPoints)
{
    std::mt19937 random(7);
    compareWithALoop(random, 910000, [&](int round) {
        Polygon polygon;
        for (int i = 0; i < 3 + round % 9; ++i) {
            const auto x = static_cast<float>(uniform(random, 60, 340));
            polygon.emplace_back(x, static_cast<float>(uniform(random, 60, 240)), 0.0f);
        }
        return Question{[=, this] { return select(polygon); },
                        [=](const DoubleView::Pixel& p) { return insidePolygon(polygon, p.x, p.y); }};
    });
}

} // namespace
} // namespace vrk::selection
