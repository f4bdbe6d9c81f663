#include "ScanClouds.h"

#include "support/SceneFixture.h"
#include "visual/PointCloudVisual.h"
#include "visual/PointVisual.h"
#include "visual/PointsVisual.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

#include <numeric>

namespace vrk::visual {
namespace {

using test::Picture;
using test::Pixel;

const Pixel background{115, 115, 115}; // 0.45
const test::View overBall{{260, -420, 330}, {0, 0, 70}, {0, 0, 1}};

bool isYellow(const Pixel& pixel)
{
    return pixel.r > 150 && pixel.g > 150 && pixel.b < 60;
}

/// How many pixels are not background.
unsigned pixelsDrawn(const Picture& picture)
{
    unsigned drawn = 0;
    for (unsigned y = 0; y < picture.height; ++y)
        for (unsigned x = 0; x < picture.width; ++x)
            drawn += difference(picture.at(x, y), background) > 15 ? 1 : 0;
    return drawn;
}

class PointPicture : public test::RenderTest {
protected:
    PointCloudVisual* addCloud(const test::Scan& scan, bool withNormals)
    {
        const auto node = test::addModelCloud(scan.points, withNormals ? scan.normals : layout::PointCloud::Normals());
        return static_cast<PointCloudVisual*>(PointCloudVisual::Build(world, node.get()));
    }
    /// The points of the ball on the right.
    static std::vector<std::uint64_t> rightHalfOfBall(const test::Scan& scan)
    {
        std::vector<std::uint64_t> indices;
        for (std::size_t i = scan.points.size() / 2; i < scan.points.size(); ++i)
            if (scan.points[i].x > 0)
                indices.push_back(i);
        return indices;
    }

    /// Between the points of a cloud one sees through: the mean of a patch of 10 x 10 x 0 units.
    Pixel meanAround(const Picture& picture, const rob::PosTemplate<float>& centre) const
    {
        constexpr int across = 5;
        Pixel sum;
        for (int i = 0; i < across * across; ++i) {
            const rob::Vec3f step(2.0f * static_cast<float>(i % across - 2), 2.0f * static_cast<float>(i / across - 2),
                                  0);
            const Pixel pixel = pixelAt(picture, centre + step);
            sum = {sum.r + pixel.r, sum.g + pixel.g, sum.b + pixel.b};
        }
        constexpr int count = across * across;
        return {sum.r / count, sum.g / count, sum.b / count};
    }

    const test::Scan scan = test::scanOfBallOnFloor(40000);
};

TEST_F(PointPicture, CloudThatHasColoursShowsThem)
{
    for (const bool withNormals : {false, true}) {
        const auto node = test::addModelCloud(scan.points, withNormals ? scan.normals : layout::PointCloud::Normals(),
                                              layout::PointCloud::Colors(scan.points.size(), PointColor{220, 30, 30}));
        auto* cloud = static_cast<PointCloudVisual*>(PointCloudVisual::Build(world, node.get()));

        const Pixel top = meanAround(render(overBall), {0, -20, 197});
        cloud->showHeights(true);
        const Pixel byHeight = meanAround(render(overBall), {0, -20, 197});

        EXPECT_GT(top.r, top.g + 60);
        EXPECT_GT(top.r, top.b + 60);
        EXPECT_GT(byHeight.g, byHeight.r) << "green is high";
        scene.deleteVisual(cloud);
    }
}

TEST_F(PointPicture, CloudIsColouredByHeight)
{
    addCloud(scan, false);

    const Picture picture = render(overBall);

    const Pixel floor = meanAround(picture, {0, -180, 0});
    const Pixel top = meanAround(picture, {0, -20, 197});
    EXPECT_GT(floor.b, floor.g + 30) << "violet";
    EXPECT_GT(top.g, top.b + 30) << "green";
    EXPECT_TRUE(matchesBaseline(picture, "cloud_plain"));
}

TEST_F(PointPicture, CloudWithNormalsIsLit)
{
    addCloud(scan, true);

    const Picture picture = render(overBall);

    EXPECT_TRUE(matchesBaseline(picture, "cloud_phong"));
}

TEST_F(PointPicture, NormalsMayPointEitherWay)
{
    PointCloudVisual* first = addCloud(scan, true);
    const Picture outwards = render(overBall);
    scene.deleteVisual(first);
    test::Scan turned = scan;
    for (rob::Vec3f& normal : turned.normals)
        normal = -normal;
    addCloud(turned, true);

    const Picture inwards = render(overBall);

    EXPECT_EQ(inwards.rgb, outwards.rgb);
}

TEST_F(PointPicture, SelectedPointsStandOut)
{
    for (const bool withNormals : {false, true}) {
        PointCloudVisual* cloud = addCloud(scan, withNormals);
        cloud->setSelectedIndices(rightHalfOfBall(scan));

        const Picture picture = render(overBall);

        EXPECT_TRUE(isYellow(pixelAt(picture, {60, -60, 152})));
        EXPECT_FALSE(isYellow(pixelAt(picture, {-60, -60, 152})));
        EXPECT_TRUE(matchesBaseline(picture, withNormals ? "cloud_phong_selected" : "cloud_selected"));
        scene.deleteVisual(cloud);
    }
}

TEST_F(PointPicture, MarkedPointsLookLikeSelectedOnes)
{
    for (const bool withNormals : {false, true}) {
        PointCloudVisual* cloud = addCloud(scan, withNormals);
        const std::vector<std::uint64_t> right = rightHalfOfBall(scan);
        cloud->markPoints({right.begin(), right.end()});
        const Picture marked = render(overBall);

        EXPECT_TRUE(isYellow(pixelAt(marked, {60, -60, 152})));
        EXPECT_TRUE(matchesBaseline(marked, withNormals ? "cloud_phong_selected" : "cloud_selected"));
        cloud->markPoints({});
        EXPECT_FALSE(isYellow(pixelAt(render(overBall), {60, -60, 152})));
        scene.deleteVisual(cloud);
    }
}

TEST_F(PointPicture, HiddenPointsAreGoneAndTheOthersStayAsTheyAre)
{
    PointCloudVisual* cloud = addCloud(scan, true);
    const Picture before = render(overBall);
    std::vector<std::uint32_t> ball(scan.points.size() / 2);
    std::iota(ball.begin(), ball.end(), static_cast<std::uint32_t>(scan.points.size() / 2));

    cloud->hidePoints(std::make_shared<const layout::PointSet>(ball));
    const Picture floor = render(overBall);
    cloud->hidePoints(std::make_shared<const layout::PointSet>(layout::PointSet::AllBut(ball, scan.points.size())));
    const Picture onlyBall = render(overBall);

    EXPECT_TRUE(isNear(meanAround(floor, {0, -180, 0}), meanAround(before, {0, -180, 0})));
    EXPECT_FALSE(isNear(meanAround(floor, {0, -20, 197}), meanAround(before, {0, -20, 197})));
    EXPECT_TRUE(isNear(pixelAt(onlyBall, {0, -190, 0}), background));
    EXPECT_TRUE(isNear(meanAround(onlyBall, {0, -20, 197}), meanAround(before, {0, -20, 197})));
}

TEST_F(PointPicture, HiddenUnselectedPointsAreGone)
{
    PointCloudVisual* cloud = addCloud(scan, true);
    cloud->setUnselectedVisible(false);
    cloud->setSelectedIndices(rightHalfOfBall(scan));

    const Picture picture = render(overBall);

    EXPECT_TRUE(isNear(pixelAt(picture, {0, -190, 0}), background));
    EXPECT_TRUE(matchesBaseline(picture, "cloud_only_selected"));
}

TEST_F(PointPicture, HiddenCloudIsNotDrawn)
{
    PointCloudVisual* cloud = addCloud(scan, true);
    cloud->setVisible(false, true);

    EXPECT_EQ(pixelsDrawn(render(overBall)), 0u);
}

struct SizeCase {
    const char* name;
    float separation; // of the two points; the size of a point goes with it
    float distance;
    unsigned least; // pixels
    unsigned most;
};

class CloudPointSize : public PointPicture, public testing::WithParamInterface<SizeCase> {};

TEST_P(CloudPointSize, StaysLegible)
{
    // The other one is out of view, or behind the first.
    test::Scan pair;
    pair.points = {{0, 0, 0}, {0, 0, GetParam().separation}};
    addCloud(pair, false);

    const float distance = GetParam().distance;
    const unsigned drawn = pixelsDrawn(render({{0, -distance, -distance}, {0, 0, -0.3f * distance}, {0, 0, 1}}));

    EXPECT_GE(drawn, GetParam().least);
    EXPECT_LE(drawn, GetParam().most);
}

INSTANTIATE_TEST_SUITE_P(Distances, CloudPointSize,
                         testing::Values(SizeCase{"Far", 10, 50000, 4, 8}, SizeCase{"Near", 1000, 30, 40, 64},
                                         SizeCase{"VeryNear", 1000, 3, 40, 64}),
                         [](const auto& info) { return std::string(info.param.name); });

/// A near point of a cloud, in the middle of a picture of 400 x 300.
const test::View atOnePoint{{0, -30, 0}, {0, 0, 0}, {0, 0, 1}};

/// One behind the other. The size of a point goes with their distance.
test::Scan pairOf(float distance)
{
    test::Scan pair;
    pair.points = {{0, 0, 0}, {0, distance, 0}};
    return pair;
}

TEST_F(PointPicture, PointOfACloudIsADisc)
{
    addCloud(pairOf(1000), false);

    const Picture picture = render(atOnePoint);

    unsigned widest = 0, diagonal = 0;
    for (unsigned i = 0; i < 20; ++i) {
        widest += difference(picture.at(190 + i, 150), background) > 15 ? 1 : 0;
        diagonal += difference(picture.at(190 + i, 140 + i), background) > 15 ? 1 : 0;
    }
    EXPECT_GE(widest, 7u);
    EXPECT_LE(widest, 9u);
    EXPECT_LE(diagonal, 7u) << "8 / sqrt(2) are within the disc; a square has 8";
    EXPECT_GE(diagonal, 5u);
}

TEST_F(PointPicture, DiscHasASoftEdgeWhereThereAreSamples)
{
    addCloud(pairOf(1000), false);
    const auto softPixels = [this](unsigned samples) {
        setSize(400, 300, samples);
        const Picture picture = render(atOnePoint);
        const Pixel inner = picture.at(200, 150);
        unsigned soft = 0;
        for (unsigned y = 140; y < 160; ++y)
            for (unsigned x = 190; x < 210; ++x) {
                const Pixel pixel = picture.at(x, y);
                // The rim is 25 of 100 darker at most; what lies farther towards the background is mixed with it.
                soft += difference(pixel, background) > 8 && pixel.r > inner.r + 15 ? 1 : 0;
            }
        return soft;
    };

    EXPECT_EQ(softPixels(0), 0u);
    EXPECT_GE(softPixels(4), 8u);
}

TEST_F(PointPicture, FarPointIsNoSinglePixelInALargePicture)
{
    addCloud(pairOf(10), false);
    setSize(3840, 2160, 4);

    const Picture picture = render({{0, -50000, 0}, {0, 0, 0}, {0, 0, 1}});

    unsigned widest = 0;
    for (unsigned x = 1900; x < 1940; ++x)
        widest += difference(picture.at(x, 1080), background) > 15 ? 1 : 0;
    EXPECT_GE(widest, 3u);
    EXPECT_LE(widest, 5u);
    EXPECT_LE(pixelsDrawn(picture), 20u);
}

TEST_F(PointPicture, SmoothedCloudIsAsItsBaseline)
{
    addCloud(test::scanOfBallOnFloor(4000), true);
    setSize(400, 300, 4);

    EXPECT_TRUE(matchesBaseline(render({{130, -210, 165}, {0, 0, 70}, {0, 0, 1}}), "cloud_discs"));
}

TEST_F(PointPicture, PointHasThreeStates)
{
    SolidVisual* box = SolidVisual::Build(world, test::meshedBox(200, 100, 100), "ABB");
    box->setPosition(-100, 0, -100);
    std::vector<Visual*> points;
    for (const float x : {-60.0f, 0.0f, 60.0f})
        for (const float z : {40.0f, -40.0f}) { // over the background, and on a face
            auto node =
                std::make_shared<sdf::SdfNode>(sdf::ModelType::Unknown, sdf::SdfManager::inst().generateId(), "p");
            sdf::SdfManager::inst().add(node);
            points.push_back(PointVisual::Build(world, node.get(), {x, 0, z}));
        }
    for (const std::size_t i : {0, 1}) {
        points[2 + i]->setSelected();
        points[4 + i]->setHighlighted();
    }

    const Picture picture = render({{0, -260, 60}, {0, 0, -5}, {0, 0, 1}});

    for (const float z : {40.0f, -40.0f}) {
        const Pixel normal = pixelAt(picture, {-60, 0, z});
        const Pixel selected = pixelAt(picture, {0, 0, z});
        const Pixel highlighted = pixelAt(picture, {60, 0, z});
        EXPECT_TRUE(isNear(normal, {204, 204, 204}));
        EXPECT_TRUE(isNear(selected, {0, 47, 167}));
        EXPECT_TRUE(isNear(highlighted, {224, 176, 64}));
    }
    EXPECT_TRUE(matchesBaseline(picture, "point_states"));
}

TEST_F(PointPicture, PointOnAFaceSeenAtASlantIsWhole)
{
    PointVisual::Build(0, 0, 0, 0);
    const unsigned alone = pixelsDrawn(render({{0, -400, 200}, {0, 0, 0}, {0, 0, 1}}));
    SolidVisual* plate = SolidVisual::Build(world, test::meshedBox(2000, 2000, 10), "TransBody");
    plate->setMaterial("KUKA", "KUKA", "KUKA");
    plate->setPosition(-1000, -1000, -10);

    const Picture picture = render({{0, -400, 200}, {0, 0, 0}, {0, 0, 1}});

    const Pixel plain = pixelAt(picture, {30, 0, 0});
    unsigned drawn = 0;
    for (unsigned y = 130; y < 170; ++y)
        for (unsigned x = 180; x < 220; ++x)
            drawn += difference(picture.at(x, y), plain) > 15 ? 1 : 0;
    EXPECT_NEAR(drawn, alone, alone / 8.0);
}

TEST_F(PointPicture, PreviewAndPlainPointsHaveTheirColours)
{
    PointVisual::Build(0, -40, 0, 0);
    auto* set = new PointsVisual(world, {{0, 0, 0}, {40, 0, 0}});
    set->setColor({0.1f, 0.7f, 0.2f}, 1);

    const Picture picture = render({{0, -200, 0}, {0, 0, 0}, {0, 0, 1}});

    EXPECT_TRUE(isNear(pixelAt(picture, {-40, 0, 0}), {255, 215, 0}));
    EXPECT_TRUE(isNear(pixelAt(picture, {0, 0, 0}), {26, 179, 51}));
    EXPECT_TRUE(isNear(pixelAt(picture, {40, 0, 0}), {26, 179, 51}));
}

} // namespace
} // namespace vrk::visual
