#include "CloudVisualFixture.h"

#include "selection/geometry/Result.h"

#include <limits>

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Numbers = std::vector<std::uint32_t>;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();

std::shared_ptr<const layout::PointSet> setOf(const Numbers& numbers)
{
    return std::make_shared<const layout::PointSet>(numbers);
}

/// Marked and hidden points of a cloud, which need no new vertices.
class PointSubsets : public CloudVisualFixture {
protected:
    /// What the section draws, by its indices where it has any.
    static Points seenOf(Section& section)
    {
        const Points vertices = drawnBy(section);
        const Ogre::RenderOperation& operation = *section.getRenderOperation();
        if (!operation.useIndexes)
            return vertices;
        Points seen;
        const Ogre::IndexData& data = *operation.indexData;
        if (data.indexCount == 0)
            return seen;
        const Ogre::HardwareBufferLockGuard lock(data.indexBuffer, Ogre::HardwareBuffer::HBL_READ_ONLY);
        for (std::size_t i = 0; i < data.indexCount; ++i)
            seen.push_back(vertices.at(static_cast<const std::uint32_t*>(lock.pData)[i]));
        return seen;
    }
    static Points seenOf(const Visual& cloud, std::size_t section)
    {
        const auto& sections = objectOf(cloud).getSections();
        return section < sections.size() ? seenOf(*sections[section]) : Points();
    }
    static const void* vertexBufferOf(const Visual& cloud, std::size_t section)
    {
        return objectOf(cloud)
            .getSections()
            .at(section)
            ->getRenderOperation()
            ->vertexData->vertexBufferBinding->getBuffer(0)
            .get();
    }
    /// The point that a ray down through this one meets.
    static int pickedAt(const rob::Posf& point)
    {
        service().update();
        return service().selectPointInCloud(Ray({point.x, point.y, 1000}, {0, 0, -1})).pointIndex;
    }
};

TEST_F(PointSubsets, MarkedPointsAreDrawnOnceMoreOverTheSameVertices)
{
    for (const bool withNormals : {false, true}) {
        PointCloudVisual* cloud = build(fivePoints, withNormals ? fiveNormals : layout::PointCloud::Normals());
        const void* const buffer = vertexBufferOf(*cloud, 0);

        cloud->markPoints({0, 3});

        EXPECT_THAT(seenOf(*cloud, 0), ElementsAreArray(fivePoints));
        EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(fivePoints[0], fivePoints[3]));
        EXPECT_EQ(vertexBufferOf(*cloud, 0), buffer);
        EXPECT_EQ(vertexBufferOf(*cloud, 1), buffer);
        EXPECT_THAT(materialsOf(*cloud), withNormals ? ElementsAre("PointCloudPhong", "PointCloudPhongSelected")
                                                     : ElementsAre("PointCloud", "PointCloudSelected"));
        const Section& section = *objectOf(*cloud).getSections()[1];
        EXPECT_EQ(section.getCustomParameter(0), Ogre::Vector4(1, 1, 0, 1));
        EXPECT_EQ(section.getCustomParameter(3), objectOf(*cloud).getSections()[0]->getCustomParameter(3));
        EXPECT_THAT(cloud->getMarkedPoints(), ElementsAre(0, 3));
        EXPECT_EQ(cloud->getBoundingBox().max, rob::Posf(4, 4, 10));
    }
}

TEST_F(PointSubsets, OtherMarksReplaceTheFirst)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->markPoints({0, 3});

    cloud->markPoints({1, 2, 4});
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(fivePoints[1], fivePoints[2], fivePoints[4]));

    cloud->markPoints({});
    EXPECT_THAT(seenOf(*cloud, 1), IsEmpty());
    EXPECT_THAT(seenOf(*cloud, 0), ElementsAreArray(fivePoints));
}

TEST_F(PointSubsets, MarksPastTheEndAreDropped)
{
    PointCloudVisual* cloud = build(fivePoints);

    cloud->markPoints({4, 5, 4'000'000'000});

    EXPECT_THAT(cloud->getMarkedPoints(), ElementsAre(4));
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(fivePoints[4]));
}

TEST_F(PointSubsets, PointsWithoutAVertexShiftNothing)
{
    const Points points{{nan, 0, 0}, {1, 2, 3}, {0, nan, 0}, {4, 5, 6}, {0, 0, nan}, {7, 8, 9}};
    PointCloudVisual* cloud = build(points);

    cloud->markPoints({0, 1, 4, 5});
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(points[1], points[5]));

    cloud->hidePoints(setOf({2, 3}));
    EXPECT_THAT(seenOf(*cloud, 0), ElementsAre(points[1], points[5]));
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(points[1], points[5]));
}

TEST_F(PointSubsets, ManyPointsWithGapsAreDrawnByTheirOwnVertices)
{
    std::mt19937 random(8);
    Points points;
    for (unsigned i = 0; i < 1000; ++i)
        points.emplace_back(random() % 7 == 0 ? nan : static_cast<float>(i), 0.0f, 0.0f);
    PointCloudVisual* cloud = build(points);
    Numbers marked, hidden;
    for (unsigned i = 0; i < 1000; ++i) {
        if (random() % 3 == 0)
            marked.push_back(i);
        if (random() % 5 == 0)
            hidden.push_back(i);
    }

    cloud->markPoints(marked);
    cloud->hidePoints(setOf(hidden));

    Points shown, shownMarked;
    for (unsigned i = 0; i < 1000; ++i) {
        if (!points[i].isFinite() || std::ranges::binary_search(hidden, i))
            continue;
        shown.push_back(points[i]);
        if (std::ranges::binary_search(marked, i))
            shownMarked.push_back(points[i]);
    }
    EXPECT_EQ(seenOf(*cloud, 0), shown);
    EXPECT_EQ(seenOf(*cloud, 1), shownMarked);
}

TEST_F(PointSubsets, HiddenPointsAreNotDrawnAndComeBack)
{
    PointCloudVisual* cloud = build(fivePoints);
    const void* const buffer = vertexBufferOf(*cloud, 0);

    cloud->hidePoints(setOf({3, 4}));

    EXPECT_THAT(seenOf(*cloud, 0), ElementsAre(fivePoints[0], fivePoints[1], fivePoints[2]));
    EXPECT_EQ(vertexBufferOf(*cloud, 0), buffer);
    EXPECT_EQ(cloud->getBoundingBox().max, rob::Posf(2, 0, 5)) << "what is drawn";
    EXPECT_EQ(cloud->getBoxOfAllPoints().max, rob::Posf(4, 4, 10));
    EXPECT_EQ(objectOf(*cloud).getSections()[0]->getCustomParameter(2), Ogre::Vector4(4, 4, 10, 1))
        << "colours stay as they are";
    cloud->hidePoints(nullptr);
    EXPECT_THAT(seenOf(*cloud, 0), ElementsAreArray(fivePoints));
    EXPECT_EQ(cloud->getBoundingBox().max, rob::Posf(4, 4, 10));
    EXPECT_EQ(cloud->getHiddenPoints(), nullptr);
}

TEST_F(PointSubsets, CloudMayBeHiddenToTheLastPoint)
{
    PointCloudVisual* cloud = build(fivePoints);

    cloud->hidePoints(setOf({0, 1, 2, 3, 4}));

    EXPECT_THAT(seenOf(*cloud, 0), IsEmpty());
    EXPECT_FALSE(cloud->getBoundingBox().isValid());
    EXPECT_EQ(pickedAt(fivePoints[0]), -1);
    scene.processMsgs();
    cloud->hidePoints(setOf({}));
    EXPECT_EQ(pickedAt(fivePoints[4]), 4);
}

TEST_F(PointSubsets, MarkedPointThatIsHiddenIsNotDrawn)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->markPoints({0, 3});

    cloud->hidePoints(setOf({3}));
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(fivePoints[0]));

    cloud->hidePoints(nullptr);
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(fivePoints[0], fivePoints[3]));
}

TEST_F(PointSubsets, HiddenPointIsNotPickedAndTheHierarchyStays)
{
    PointCloudVisual* cloud = build({{0, 0, 0}, {0, 0, 50}, {100, 0, 0}});
    service().setDetectable(cloud, true);
    EXPECT_EQ(pickedAt({0, 0, 0}), 1);
    const selection::SelectableObject* const object = service().getObject(cloud);

    cloud->hidePoints(setOf({1}));

    EXPECT_TRUE(service().isDirty());
    EXPECT_EQ(pickedAt({0, 0, 0}), 0) << "what lies behind it";
    EXPECT_EQ(service().getObject(cloud), object);
    EXPECT_TRUE(service().isDetectable(cloud));
    cloud->hidePoints(nullptr);
    EXPECT_EQ(pickedAt({0, 0, 0}), 1);
}

TEST_F(PointSubsets, BothStayThroughAChangeOfTheLook)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->markPoints({0, 2});
    cloud->hidePoints(setOf({0, 1}));

    cloud->clearHighlightOrSelect();

    EXPECT_THAT(seenOf(*cloud, 0), ElementsAre(fivePoints[2], fivePoints[3], fivePoints[4]));
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(fivePoints[2]));
    EXPECT_EQ(pickedAt(fivePoints[0]), 2) << "its neighbour";
}

TEST_F(PointSubsets, SelectionEndsTheMarksAndMarksTheSelection)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->markPoints({0, 2});

    cloud->setSelectedIndices({1});
    EXPECT_THAT(cloud->getMarkedPoints(), IsEmpty());
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(fivePoints[1]));

    cloud->markPoints({4});
    EXPECT_THAT(cloud->getSelectedIndices(), IsEmpty());
    EXPECT_THAT(seenOf(*cloud, 0), ElementsAreArray(fivePoints));
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(fivePoints[4]));
}

TEST_F(PointSubsets, HiddenPointsStayHiddenWhileOthersAreSelected)
{
    PointCloudVisual* cloud = build(fivePoints);
    cloud->hidePoints(setOf({0, 1}));

    cloud->setSelectedIndices({1, 2});
    EXPECT_THAT(seenOf(*cloud, 0), ElementsAre(fivePoints[3], fivePoints[4]));
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(fivePoints[2]));

    cloud->hidePoints(setOf({3}));
    EXPECT_THAT(seenOf(*cloud, 0), ElementsAre(fivePoints[0], fivePoints[4]));
    EXPECT_THAT(seenOf(*cloud, 1), ElementsAre(fivePoints[1], fivePoints[2]));
}

TEST_F(PointSubsets, CloudOfTheStationBringsItsHiddenPoints)
{
    const auto node = test::addModelCloud(fivePoints);
    node->setHiddenPoints(layout::PointSet(Numbers{0, 4}));

    const auto* cloud = static_cast<PointCloudVisual*>(PointCloudVisual::Build(world, node.get()));

    EXPECT_THAT(seenOf(*cloud, 0), ElementsAre(fivePoints[1], fivePoints[2], fivePoints[3]));
    EXPECT_EQ(pickedAt(fivePoints[4]), 2) << "its neighbour";
}

TEST_F(PointSubsets, OtherPointsOfTheStationsCloudAreTakenOver)
{
    const auto node = test::addModelCloud(fivePoints);
    auto* cloud = static_cast<PointCloudVisual*>(PointCloudVisual::Build(world, node.get()));
    cloud->markPoints({1, 2});
    layout::PointCloud::Content other;
    other.points = {{10, 0, 0}, {20, 0, 0}, {30, 0, 0}};
    other.normals.assign(3, rob::Vec3f(0, 0, 1));
    other.hidden = setOf({2});

    node->exchange(other);
    cloud->takeOtherPoints(node->getHiddenPoints());

    EXPECT_EQ(other.points, fivePoints);
    EXPECT_EQ(other.hidden, nullptr);
    EXPECT_THAT(seenOf(*cloud, 0), ElementsAre(rob::Posf(10, 0, 0), rob::Posf(20, 0, 0)));
    EXPECT_THAT(seenOf(*cloud, 1), IsEmpty());
    EXPECT_TRUE(cloud->hasNormals());
    EXPECT_EQ(pickedAt({20, 0, 0}), 1);
    EXPECT_EQ(pickedAt({30, 0, 0}), -1);
    EXPECT_EQ(pickedAt(fivePoints[4]), -1);
}

TEST_F(PointSubsets, EmptyCloudTakesBothWithoutHarm)
{
    PointCloudVisual* cloud = build({});

    cloud->markPoints({0});
    cloud->hidePoints(setOf({0}));
    cloud->hidePoints(nullptr);

    EXPECT_THAT(objectOf(*cloud).getSections(), IsEmpty());
    EXPECT_FALSE(service().hasVisual(cloud));
}

} // namespace
} // namespace vrk::visual
