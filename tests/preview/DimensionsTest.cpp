#include "PreviewFixture.h"

#include "preview/annotation/DimensionVisual.h"
#include "scene/math/Shapes.h"
#include "support/ThrowsExactly.h"

#include <cmath>
#include <numbers>

/// Distances, angles and circles that are drawn.
namespace vrk::visual {
namespace {

using test::throwsExactly;
using test::uploaded;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double quarter = std::numbers::pi / 2;

class Dimensions : public test::WithPreviews<test::SceneFixture> {
protected:
    ~Dimensions() override
    {
        scene.removeDimensionVisual();
        drain();
    }
    std::vector<DimensionVisual*> dimensions()
    {
        drain();
        return kindsOn<DimensionVisual>(*world);
    }
    static std::vector<rob::Posf> pointsOf(const DimensionVisual& dimension, std::size_t line)
    {
        return uploaded(*dimension.getLines().at(line));
    }
    static Ogre::RenderOperation::OperationType kindOf(const DynamicLines& line)
    {
        Ogre::RenderOperation operation;
        const_cast<DynamicLines&>(line).getRenderOperation(operation); // OGRE's own is not const
        return operation.operationType;
    }
    static void expectNear(const rob::Posf& actual, const rob::Posf& expected)
    {
        EXPECT_LT((actual - expected).length(), 1e-4f) << actual.x << " " << actual.y << " " << actual.z << " is not "
                                                       << expected.x << " " << expected.y << " " << expected.z;
    }
};

TEST_F(Dimensions, DistanceIsOneLeg)
{
    scene.createDistanceVisual({1, 2, 3}, {4, 5, 6});
    EXPECT_THAT(kindsOn<DimensionVisual>(*world), IsEmpty()) << "it is posted";

    ASSERT_THAT(dimensions(), SizeIs(1));
    const DimensionVisual& dimension = *dimensions().front();
    EXPECT_EQ(dimension.getName(), "dimension" + std::to_string(dimension.getId()));
    EXPECT_EQ(dimension.getParent(), world);
    EXPECT_FALSE(Scene::HasVisual(dimension.getId()));
    ASSERT_THAT(dimension.getLines(), SizeIs(1));
    EXPECT_EQ(kindOf(*dimension.getLines()[0]), Ogre::RenderOperation::OT_LINE_LIST);
    EXPECT_EQ(dimension.getLines()[0]->getMaterial()->getName(), "FrameLine");
    EXPECT_THAT(pointsOf(dimension, 0), ElementsAre(rob::Posf(1, 2, 3), rob::Posf(4, 5, 6)));
}

TEST_F(Dimensions, DistanceOfNothingIsALegWithoutLength)
{
    scene.createDistanceVisual({1, 2, 3}, {1, 2, 3});

    EXPECT_THAT(dimensions(), SizeIs(1));
}

TEST_F(Dimensions, AngleIsTwoLegsAndAnArcFromTheShorterOne)
{
    scene.createAngleVisual({10, 0, 0}, {10, 30, 0}, {30, 0, 0}, quarter);

    ASSERT_THAT(dimensions(), SizeIs(1));
    const DimensionVisual& dimension = *dimensions().front();
    ASSERT_THAT(dimension.getLines(), SizeIs(3));
    EXPECT_THAT(pointsOf(dimension, 0), ElementsAre(rob::Posf(10, 0, 0), rob::Posf(10, 30, 0)));
    EXPECT_THAT(pointsOf(dimension, 1), ElementsAre(rob::Posf(10, 0, 0), rob::Posf(30, 0, 0)));
    EXPECT_EQ(kindOf(*dimension.getLines()[2]), Ogre::RenderOperation::OT_LINE_STRIP);
    EXPECT_EQ(dimension.getLines()[2]->getMaterial()->getName(), "FrameLine");
    const std::vector<rob::Posf> arc = pointsOf(dimension, 2);
    ASSERT_THAT(arc, SizeIs(21));
    expectNear(arc.front(), {30, 0, 0});
    expectNear(arc.back(), {10, 20, 0});
    expectNear(arc[10], {10 + 20 * std::sqrt(0.5f), 20 * std::sqrt(0.5f), 0});
}

TEST_F(Dimensions, ArcBetweenEqualLegsStartsAtTheFirst)
{
    scene.createAngleVisual({0, 0, 0}, {0, 20, 0}, {20, 0, 0}, quarter);

    const std::vector<rob::Posf> arc = pointsOf(*dimensions().at(0), 2);
    expectNear(arc.front(), {0, 20, 0});
    expectNear(arc.back(), {20, 0, 0});
}

TEST_F(Dimensions, NegativeAngleSweepsTheOtherWay)
{
    scene.createAngleVisual({0, 0, 0}, {20, 0, 0}, {0, 30, 0}, -quarter);

    const std::vector<rob::Posf> arc = pointsOf(*dimensions().at(0), 2);
    expectNear(arc.front(), {20, 0, 0});
    expectNear(arc.back(), {0, -20, 0});
}

TEST_F(Dimensions, ArcTurnsThroughTheAngleThatIsGivenWhateverTheLegsAre)
{
    scene.createAngleVisual({0, 0, 0}, {20, 0, 0}, {30, 30, 0}, 2 * quarter);

    expectNear(pointsOf(*dimensions().at(0), 2).back(), {-20, 0, 0});
}

TEST_F(Dimensions, AngleOfZeroHasNoArc)
{
    scene.createAngleVisual({0, 0, 0}, {20, 0, 0}, {0, 30, 0}, 0.0);
    scene.createAngleVisual({0, 0, 0}, {20, 0, 0}, {30, 0, 0}, 0.0);

    ASSERT_THAT(dimensions(), SizeIs(2));
    EXPECT_THAT(dimensions()[0]->getLines(), SizeIs(2));
    EXPECT_THAT(dimensions()[1]->getLines(), SizeIs(2)) << "also between legs on one line";
}

TEST_F(Dimensions, ArcBetweenLegsOnOneLineFailsAndDrawsNothing)
{
    for (const rob::Posd& c : {rob::Posd(30, 0, 0), rob::Posd(-30, 0, 0), rob::Posd(0, 0, 0)}) {
        scene.createAngleVisual({0, 0, 0}, {20, 0, 0}, c, 1.0);

        EXPECT_THAT([this] { drain(); }, throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));
        EXPECT_THAT(dimensions(), IsEmpty());
    }
}

TEST_F(Dimensions, DiameterIsOneRingAndOneRadius)
{
    scene.createDiameterVisual(rob::TPCircle::FullTurn({15, 0, 5}, {5, 10, 5}, {-5, 0, 5}));

    ASSERT_THAT(dimensions(), SizeIs(1));
    const DimensionVisual& dimension = *dimensions().front();
    ASSERT_THAT(dimension.getLines(), SizeIs(2));
    EXPECT_EQ(kindOf(*dimension.getLines()[0]), Ogre::RenderOperation::OT_LINE_STRIP);
    const std::vector<rob::Posf> ring = pointsOf(dimension, 0);
    ASSERT_THAT(ring, SizeIs(51));
    expectNear(ring.front(), {15, 0, 5});
    expectNear(ring[25], {-5, 0, 5});
    expectNear(ring.back(), {15, 0, 5});
    for (const rob::Posf& point : ring)
        EXPECT_NEAR((point - rob::Posf(5, 0, 5)).length(), 10, 1e-4);
    const std::vector<rob::Posf> radius = pointsOf(dimension, 1);
    expectNear(radius.at(0), {5, 0, 5});
    expectNear(radius.at(1), {-5, 0, 5});
}

TEST_F(Dimensions, RingOfAnArcIsTheArc)
{
    scene.createDiameterVisual(rob::TPCircle({10, 0, 0}, {0, 10, 0}, {-10, 0, 0}));

    const std::vector<rob::Posf> ring = pointsOf(*dimensions().at(0), 0);
    expectNear(ring.front(), {10, 0, 0});
    expectNear(ring.back(), {-10, 0, 0});
}

TEST_F(Dimensions, RemovalEndsAllOfThem)
{
    scene.createDistanceVisual({1, 2, 3}, {4, 5, 6});
    scene.createAngleVisual({0, 0, 0}, {20, 0, 0}, {0, 30, 0}, 1.0);
    scene.createDiameterVisual(rob::TPCircle({10, 0, 0}, {0, 10, 0}, {-10, 0, 0}));
    ASSERT_THAT(dimensions(), SizeIs(3));

    scene.removeDimensionVisual();
    EXPECT_THAT(kindsOn<DimensionVisual>(*world), SizeIs(3)) << "it is posted";

    EXPECT_THAT(dimensions(), IsEmpty());
}

TEST_F(Dimensions, OneThatIsDeletedAsAVisualIsForgotten)
{
    scene.createDistanceVisual({1, 2, 3}, {4, 5, 6});
    scene.createDistanceVisual({1, 2, 3}, {4, 5, 6});
    scene.deleteVisual(dimensions().front());

    scene.removeDimensionVisual();

    EXPECT_THAT(dimensions(), IsEmpty());
}

} // namespace
} // namespace vrk::visual
