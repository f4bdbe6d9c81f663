#include "task/bands/BandVectorVisual.h"

#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "task/bands/BandShapes.h"

namespace vrk::visual {
namespace {

using testing::ElementsAre;
using testing::SizeIs;
using testing::StrEq;
using testing::ThrowsMessage;

class BandVectorVisualTest : public test::SceneFixture {
protected:
    Ogre::Vector4 colorOf(const BandVectorVisual& vector) const
    {
        return vector.getLines().front()->getCustomParameter(0);
    }

    const TopoDS_Edge edge = test::straightEdge({0, 0, 0}, {100, 0, 0});
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
};

TEST_F(BandVectorVisualTest, IsALineOfABandWidthFromTheEdgeAlongTheToolDirection)
{
    const auto* vector = new BandVectorVisual(world, edge, {30, {0, 6, 8}});

    EXPECT_EQ(vector->getType(), VisualType::Curve);
    EXPECT_EQ(vector->getName(), "Visual_" + std::to_string(vector->getId()));
    ASSERT_THAT(vector->getLines(), SizeIs(1));
    EXPECT_EQ(vector->getLines()[0]->getRenderOpType(), RenderOpType::Lines);
    EXPECT_THAT(test::uploaded(*vector->getLines()[0]), ElementsAre(rob::Posf(30, 0, 0), rob::Posf(30, 15, 20)));
    EXPECT_EQ(vector->getParameter(), 30);
    EXPECT_TRUE(vector->getEdge().IsEqual(edge));
}

TEST_F(BandVectorVisualTest, LooseOneHasNoPlaceAndCannotBePicked)
{
    auto* vector = new BandVectorVisual(world, edge, {30, {0, 0, 1}});

    EXPECT_EQ(vector->getPathPoint(), std::nullopt);
    EXPECT_FALSE(picking.hasVisual(vector));
}

TEST_F(BandVectorVisualTest, OneWithAPlaceIsPickedUntilItEnds)
{
    auto* deleted = new BandVectorVisual(world, edge, {30, {0, 0, 1}}, {2, 30});
    auto* dead = new BandVectorVisual(world, edge, {60, {0, 0, 1}}, {2, 60});
    EXPECT_EQ(deleted->getPathPoint(), (BandVectorVisual::PathPoint{2, 30}));
    EXPECT_TRUE(picking.hasVisual(deleted));
    EXPECT_TRUE(picking.hasVisual(dead));
    picking.update();
    EXPECT_EQ(picking.select({{30, -100, 10}, {0, 1, 0}}).visual, deleted);

    scene.deleteVisual(deleted);
    delete dead;

    EXPECT_FALSE(picking.hasVisual(deleted));
    EXPECT_FALSE(picking.hasVisual(dead));
    picking.update();
    EXPECT_FALSE(picking.select({{30, -100, 10}, {0, 1, 0}}).hit);
}

TEST_F(BandVectorVisualTest, ColoursAreParametersBesideTheMaterials)
{
    auto* vector = new BandVectorVisual(world, edge, {30, {0, 0, 1}});
    EXPECT_EQ(colorOf(*vector), Ogre::Vector4(1, 1, 1, 1));
    EXPECT_EQ(test::materialOf(*vector), "BandVector");

    vector->setSelected();
    EXPECT_EQ(colorOf(*vector), Ogre::Vector4(227 / 255.0f, 144 / 255.0f, 206 / 255.0f, 1));
    EXPECT_EQ(test::materialOf(*vector), "BandVectorSelect");

    vector->setHighlighted();
    EXPECT_EQ(colorOf(*vector), Ogre::Vector4(0, 0, 1, 1));
    EXPECT_EQ(test::materialOf(*vector), "BandVectorHighlight");

    vector->clearHighlightOrSelect();
    EXPECT_EQ(colorOf(*vector), Ogre::Vector4(1, 1, 1, 1));
    EXPECT_EQ(test::materialOf(*vector), "BandVector");
}

TEST_F(BandVectorVisualTest, WithoutADirectionItIsNotMade)
{
    const auto children = test::childrenOf(*world);

    EXPECT_THAT(
        [&] {
            new BandVectorVisual(world, edge, {30, {0, 0, 0}}, {0, 30});
        },
        ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));

    EXPECT_EQ(test::childrenOf(*world), children);
}

} // namespace
} // namespace vrk::visual
