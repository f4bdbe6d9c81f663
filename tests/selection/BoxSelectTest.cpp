#include "selection/FlatViewFixture.h"

#include "scene/core/SceneCore.h"
#include "selection/ViewPixels.h"
#include "selection/geometry/BVHBuilder.h"
#include "selection/region/SelectionVolume.h"

#include <gmock/gmock.h>

#include <numeric>

namespace vrk::selection {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class BoxSelect : public FlatViewFixture {
protected:
    std::vector<visual::Visual*> select(float x1, float y1, float x2, float y2)
    {
        service.update();
        return service.boxSelect(x1, y1, x2, y2);
    }
    PointsOfClouds selectPoints(float x1, float y1, float x2, float y2)
    {
        service.update();
        return service.boxSelectPointCloud(x1, y1, x2, y2);
    }
};

TEST_F(BoxSelect, TakesEveryVisualWhoseBoxIsNotOutside)
{
    visual::Visual* inside = addBox(units(10), at(100, 100));
    visual::Visual* touched = addBox(units(40), at(150, 100));
    visual::Visual* behind = addBox(units(10), at(100, 100) + rob::Vec3f(0, 200, 0));
    addBox(units(10), at(300, 100));

    EXPECT_THAT(select(80, 80, 150, 120), UnorderedElementsAre(inside, touched, behind));
    EXPECT_THAT(select(10, 10, 20, 20), IsEmpty());
}

TEST_F(BoxSelect, GeometryIsNotLookedAt)
{
    // A wall along a diagonal: the corner of its box that is asked for is empty.
    visual::Visual* diagonal = addMesh({{at(50, 50), at(250, 250), at(249, 250)}});
    EXPECT_THAT(select(230, 60, 240, 70), ElementsAre(diagonal));
}

TEST_F(BoxSelect, RectangleMayBeGivenFromAnyCorner)
{
    addBox(units(10), at(100, 100));
    addBox(units(10), at(120, 110));
    addBox(units(10), at(140, 150));
    visual::PointCloudVisual* cloud = addCloud({at(90, 90), at(110, 110), at(200, 200)});

    const auto expected = select(80, 80, 130, 120);
    ASSERT_EQ(expected.size(), 2u);
    EXPECT_EQ(select(130, 120, 80, 80), expected);
    EXPECT_EQ(select(80, 120, 130, 80), expected);
    EXPECT_EQ(select(130, 80, 80, 120), expected);
    const PointsOfClouds points{{cloud->getId(), {0, 1}}};
    EXPECT_EQ(selectPoints(80, 80, 130, 120), points);
    EXPECT_EQ(selectPoints(130, 120, 80, 80), points);
    EXPECT_EQ(selectPoints(80, 120, 130, 80), points);
}

TEST_F(BoxSelect, HiddenPointsAreLeftOut)
{
    visual::PointCloudVisual* cloud = addCloud({at(90, 90), at(110, 110), at(115, 110), at(200, 200)});
    cloud->hidePoints(std::make_shared<const layout::PointSet>(std::vector<std::uint32_t>{1}));
    EXPECT_EQ(selectPoints(80, 80, 130, 120), (PointsOfClouds{{cloud->getId(), {0, 2}}}));

    cloud->hidePoints(std::make_shared<const layout::PointSet>(std::vector<std::uint32_t>{0, 1, 2}));
    EXPECT_THAT(selectPoints(80, 80, 130, 120), IsEmpty());
    cloud->hidePoints(nullptr);
    EXPECT_EQ(selectPoints(80, 80, 130, 120), (PointsOfClouds{{cloud->getId(), {0, 1, 2}}}));
}

TEST_F(BoxSelect, RightChildrenComeFirst)
{
    // Five objects make a hierarchy of two leaves, the two left ones and the three right ones by x.
    std::vector<visual::Visual*> row;
    for (int i = 0; i < 5; ++i)
        row.push_back(addBox(units(4), at(50 + 10 * i, 100)));
    const std::vector<visual::Visual*> found = select(0, 0, 400, 300);
    ASSERT_EQ(found.size(), 5u);
    const BVHNode* root = nullptr;
    {
        PrimitiveContainer same;
        for (visual::Visual* visual : row) {
            auto* copy = new BVHPrimitive;
            copy->box = object(visual).box;
            same.primitives.push_back(copy);
        }
        same.bvh = BVHBuilder(&same).build();
        root = same.getRoot();
        ASSERT_EQ(root->kind, BVHNode::Inner);
        const auto* inner = static_cast<const BVHInnerNode*>(root);
        std::vector<BVHPrimitive*> right;
        inner->right->collectPrimitives(right);
        EXPECT_EQ(object(found[0]).box.center, right[0]->box.center);
    }
}

TEST_F(BoxSelect, WhatIsDisabledOrACloudIsLeftOut)
{
    visual::SolidVisual* shown = addBox(units(10), at(100, 100));
    visual::SolidVisual* hidden = addBox(units(10), at(110, 100));
    addCloud({at(100, 100), at(110, 110)});
    service.disableObject(hidden);
    EXPECT_THAT(select(80, 80, 130, 120), ElementsAre(shown));
}

TEST_F(BoxSelect, DirtyServiceAnswersNothing)
{
    addBox(units(10), at(100, 100));
    addCloud({at(100, 100), at(110, 110)});
    ASSERT_TRUE(service.isDirty());
    EXPECT_THAT(service.boxSelect(0, 0, 400, 300), IsEmpty());
    EXPECT_THAT(service.boxSelectPointCloud(0, 0, 400, 300), IsEmpty());
}

TEST_F(BoxSelect, WithoutARenderTargetThereIsNothing)
{
    addBox(units(10), at(100, 100));
    addCloud({at(100, 100), at(110, 110)});
    service.update();
    visual::SceneCore::Get()->mainCamera.withdraw();
    EXPECT_THAT(service.boxSelect(0, 0, 400, 300), IsEmpty());
    EXPECT_THAT(service.boxSelectPointCloud(0, 0, 400, 300), IsEmpty());
}

TEST_F(BoxSelect, CloudWithoutAPointInsideHasNoEntry)
{
    // The box of the cloud meets the rectangle, none of its points does.
    addCloud({at(50, 50), at(250, 250)});
    EXPECT_THAT(selectPoints(100, 100, 200, 200), IsEmpty());
}

TEST_F(BoxSelect, PointsThatAreFoundAreSelectedAsTheyAre)
{
    visual::PointCloudVisual* cloud = addCloud({at(100, 100), at(300, 250), at(105, 105)});

    scene.selectPointCloud(selectPoints(50, 50, 200, 200));
    drain();

    EXPECT_THAT(cloud->getSelectedIndices(), ElementsAre(0, 2));
}

TEST_F(BoxSelect, CloudWhollyInsideHasAllNumbersAscending)
{
    std::vector<rob::Posf> points;
    for (int i = 0; i < 5000; ++i)
        points.push_back(at(100 + i * 37 % 100, 100 + i * 53 % 100));
    visual::PointCloudVisual* cloud = addCloud(points);
    std::vector<std::uint64_t> all(points.size());
    std::iota(all.begin(), all.end(), 0u);
    const PointsOfClouds found = selectPoints(50, 50, 250, 250);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found.at(cloud->getId()), all);
}

TEST_F(BoxSelect, FewerPointsThanThreadsAreAllTested)
{
    visual::PointCloudVisual* one = addCloud({at(100, 100)});
    EXPECT_EQ(selectPoints(90, 90, 110, 110), (PointsOfClouds{{one->getId(), {0}}}));
}

TEST_F(BoxSelect, DisabledCloudIsSkipped)
{
    visual::PointCloudVisual* cloud = addCloud({at(100, 100), at(105, 105)});
    service.disableObject(cloud);
    EXPECT_THAT(selectPoints(50, 50, 200, 200), IsEmpty());
}

TEST_F(BoxSelect, RectangleOfNoSizeIsWhatItsPlanesSay)
{
    addCloud({at(100, 100), at(200, 200)});
    service.update();
    const SelectionVolume volume = buildSelectionVolume(*cameraWithPixels(), 100, 100, 100, 100);
    std::vector<std::uint64_t> held;
    for (std::uint64_t i = 0; i < 2; ++i)
        if (volume.holds(i == 0 ? at(100, 100) : at(200, 200)))
            held.push_back(i);
    std::vector<std::uint64_t> found;
    for (const auto& [id, points] : service.boxSelectPointCloud(100, 100, 100, 100))
        found = points;
    EXPECT_EQ(found, held);
}

TEST_F(BoxSelect, PlanesPointOutwards)
{
    service.update();
    const SelectionVolume volume = buildSelectionVolume(*cameraWithPixels(), 100, 100, 200, 200);
    ASSERT_EQ(volume.getPlanes().size(), 4u);
    const rob::Posf middle = at(150, 150);
    for (const Ogre::Plane& plane : volume.getPlanes())
        EXPECT_EQ(SelectionVolume::classifyPoint(plane, middle), SelectionVolume::PlaneClass::Inside);
    const rob::Posf beyond[] = {at(150, 50), at(50, 150), at(150, 250), at(250, 150)}; // top, left, bottom, right
    for (unsigned i = 0; i < 4; ++i)
        EXPECT_EQ(SelectionVolume::classifyPoint(volume.getPlanes()[i], beyond[i]),
                  SelectionVolume::PlaneClass::Outside)
            << i;
}

TEST_F(BoxSelect, PlaceOnAPlaneIsNotOutside)
{
    const Ogre::Plane plane(Ogre::Vector3(1, 0, 0), 0.0f); // outside is above x = 0
    const SelectionVolume volume({plane});
    EXPECT_EQ(SelectionVolume::classifyPoint(plane, {0, 5, 5}), SelectionVolume::PlaneClass::Both);
    EXPECT_TRUE(volume.holds({0, 5, 5}));
    EXPECT_FALSE(volume.holds({0.001f, 5, 5}));
    EXPECT_EQ(volume.classifyBox({-2, 0, 0, -1, 1, 1}), VolumeClass::Inside);
    EXPECT_EQ(volume.classifyBox({-2, 0, 0, 1, 1, 1}), VolumeClass::Partial);
    EXPECT_EQ(volume.classifyBox({1, 0, 0, 2, 1, 1}), VolumeClass::Outside);
    EXPECT_EQ(volume.classifyBox(visual::Box()), VolumeClass::Outside);
}

TEST_F(BoxSelect, RectanglesThatAreNoneOrOutsideTheViewDoNoHarm)
{
    addBox(units(10), at(100, 100));
    addCloud({at(100, 100), at(110, 110)});
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_THAT(select(-500, -500, -400, -400), IsEmpty());
    EXPECT_EQ(select(-500, -500, 900, 900).size(), 1u);
    EXPECT_THAT(selectPoints(1000, 1000, 2000, 2000), IsEmpty());
    EXPECT_NO_THROW(select(nan, nan, nan, nan));
    EXPECT_NO_THROW(selectPoints(0, nan, 400, 300));
}

/// Random clouds in random poses, views and rectangles, against a loop in double precision.
TEST_F(BoxSelect, AgreesWithALoopOverAllPoints)
{
    std::mt19937 random(5);
    compareWithALoop(random, 900000, [&](int) {
        const double x1 = uniform(random, 0, 400), y1 = uniform(random, 0, 300), x2 = uniform(random, 0, 400),
                     y2 = uniform(random, 0, 300);
        return Question{[=, this] {
                            return selectPoints(static_cast<float>(x1), static_cast<float>(y1), static_cast<float>(x2),
                                                static_cast<float>(y2));
                        },
                        [=](const DoubleView::Pixel& p) { return insideRectangle(x1, y1, x2, y2, p); }};
    });
}

} // namespace
} // namespace vrk::selection
