#include "visual/LineVisual.h"

#include "platform/sdf/SdfObject.h"
#include "support/SceneFixture.h"
#include "visual/Edges.h"

namespace vrk::visual {
namespace {

using test::uploaded;
using testing::ElementsAre;
using testing::StartsWith;

class LineVisualTest : public test::SceneFixture {};

TEST_F(LineVisualTest, LinesAreKeptInTheOrderOfCreation)
{
    auto* visual = new LineVisual(world);

    DynamicLines* first = visual->createDynamicLine(RenderOpType::Lines);
    DynamicLines* second = visual->createDynamicLine(RenderOpType::LineStrip);

    ASSERT_EQ(visual->getLines().size(), 2u);
    EXPECT_EQ(visual->getLines()[0].get(), first);
    EXPECT_EQ(visual->getLines()[1].get(), second);
    EXPECT_EQ(first->getParentSceneNode(), visual->getSceneNode());
    EXPECT_EQ(second->getRenderOpType(), RenderOpType::LineStrip);
}

TEST_F(LineVisualTest, NameFollowsTheConstructor)
{
    sdf::SdfNode node(sdf::ModelType::Part, 61, "lines");
    const auto* named = new LineVisual("Path", world);
    const auto* plain = new LineVisual(world);
    const auto* ofNode = new LineVisual(&node, world);

    EXPECT_EQ(named->getName(), "Path" + std::to_string(named->getId()));
    EXPECT_EQ(plain->getName(), "Visual_" + std::to_string(plain->getId()));
    EXPECT_EQ(ofNode->getName(), "lines_61");
    EXPECT_EQ(ofNode->getId(), 61u);
}

TEST_F(LineVisualTest, HiddenVisualKeepsItsBuffersUntilTheFirstUpdateAfterItIsShown)
{
    auto* visual = new LineVisual(world);
    DynamicLines* line = visual->createDynamicLine(RenderOpType::LineStrip);
    visual->setVisible(false, false);
    line->addPoint(1, 2, 3);
    line->addPoint(4, 5, 6);

    visual->update();
    EXPECT_TRUE(line->isDirty());
    EXPECT_EQ(line->getVertexBufferCapacity(), 0u);

    visual->setVisible(true, false);
    EXPECT_TRUE(line->isDirty()) << "showing alone uploads nothing";

    visual->update();
    EXPECT_THAT(uploaded(*line), ElementsAre(rob::Posf(1, 2, 3), rob::Posf(4, 5, 6)));
}

TEST_F(LineVisualTest, EditedLineIsCulledByWhereItReachesNow)
{
    auto* visual = new LineVisual(world);
    DynamicLines* line = visual->createDynamicLine(RenderOpType::LineStrip);
    line->addPoint(0, 0, 0);
    line->addPoint(1, 0, 0);
    visual->update();
    sceneManager->getRootSceneNode()->_update(true, false);

    line->setPoint(1, {500, 0, 0});
    visual->update();
    sceneManager->getRootSceneNode()->_update(true, false);

    EXPECT_EQ(visual->getSceneNode()->_getWorldAABB(), Ogre::AxisAlignedBox(0, 0, 0, 500, 0, 0));
}

TEST_F(LineVisualTest, PreviewCurveIsAStripInItsMaterial)
{
    std::vector<rob::Posf> points{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};

    LineVisual* visual = LineVisual::Build(world, &points);

    EXPECT_THAT(visual->getName(), StartsWith("previewedCurveVisual"));
    ASSERT_EQ(visual->getLines().size(), 1u);
    EXPECT_EQ(visual->getLines()[0]->getRenderOpType(), RenderOpType::LineStrip);
    EXPECT_EQ(uploaded(*visual->getLines()[0]), points);
    EXPECT_EQ(test::materialOf(*visual), "PreviewCurve");
    for (void (Visual::*state)() : {&Visual::setSelected, &Visual::setHighlighted, &Visual::resetAppearance}) {
        visual->showMaterial("PathLine");
        (visual->*state)();
        EXPECT_EQ(test::materialOf(*visual), "PreviewCurve");
    }
}

TEST_F(LineVisualTest, PreviewCurveOfOnePointDrawsNothing)
{
    std::vector<rob::Posf> points{{0, 0, 0}};

    const LineVisual* visual = LineVisual::Build(world, &points);

    EXPECT_EQ(visual->getLines()[0]->getVertexBufferCapacity(), 0u);
}

TEST_F(LineVisualTest, LinesLeaveTheirNodeWithTheVisual)
{
    auto* visual = new LineVisual(world);
    visual->createDynamicLine(RenderOpType::Lines);
    visual->createDynamicLine(RenderOpType::Lines);
    const std::string node = visual->getName();

    scene.deleteVisual(visual);

    EXPECT_FALSE(sceneManager->hasSceneNode(node));
}

} // namespace
} // namespace vrk::visual
