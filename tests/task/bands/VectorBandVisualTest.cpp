#include "task/bands/VectorBandVisual.h"

#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "task/bands/BandShapes.h"
#include "task/bands/Ribbon.h"
#include "visual/CurveVisual.h"
#include "visual/MeshVisual.h"

#include <TopoDS.hxx>

namespace vrk::visual {
namespace {

using task::EdgeMfgShape;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StrEq;
using testing::ThrowsMessage;

const Ogre::Vector4 normalColor(88 / 255.0f, 252 / 255.0f, 253 / 255.0f, 0.5f);
const Ogre::Vector4 vectorSelected(227 / 255.0f, 144 / 255.0f, 206 / 255.0f, 1);
const Ogre::Vector4 vectorPlain(1, 1, 1, 1);

/// What lies in the vertex buffer of a section.
std::vector<std::pair<rob::Posf, rob::Dirf>> verticesOf(Ogre::ManualObject::ManualObjectSection& section)
{
    const Ogre::VertexData& data = *section.getRenderOperation()->vertexData;
    const Ogre::HardwareVertexBufferSharedPtr& buffer = data.vertexBufferBinding->getBuffer(0);
    EXPECT_EQ(buffer->getVertexSize(), 6 * sizeof(float));
    const Ogre::HardwareBufferLockGuard lock(buffer, Ogre::HardwareBuffer::HBL_READ_ONLY);
    const auto* at = static_cast<const float*>(lock.pData);
    std::vector<std::pair<rob::Posf, rob::Dirf>> vertices;
    for (std::size_t i = 0; i < data.vertexCount; ++i, at += 6)
        vertices.push_back({{at[0], at[1], at[2]}, {at[3], at[4], at[5]}});
    return vertices;
}

class VectorBandVisualTest : public test::SceneFixture {
protected:
    VectorBandVisual* addBand(Visual* parent = nullptr)
    {
        return new VectorBandVisual(shape.getId(), parent ? parent : world, shape);
    }
    static const std::vector<Ogre::ManualObject::ManualObjectSection*>& sectionsOf(const Ogre::ManualObject& drawing)
    {
        return drawing.getSections();
    }
    static Ogre::Vector4 colorOf(const Ogre::ManualObject& drawing)
    {
        return sectionsOf(drawing)[0]->getCustomParameter(0);
    }
    static Ogre::Vector4 colorOf(const BandVectorVisual& vector)
    {
        return vector.getLines().front()->getCustomParameter(0);
    }
    static std::vector<BandVectorVisual*> vectorsUnder(const Visual& band)
    {
        std::vector<BandVectorVisual*> found;
        for (Visual* child : band.getChildren())
            if (auto* vector = dynamic_cast<BandVectorVisual*>(child))
                found.push_back(vector);
        return found;
    }
    static std::size_t curvesUnder(const Visual& band)
    {
        return static_cast<std::size_t>(std::ranges::count_if(
            test::childrenOf(band), [](Visual* child) { return dynamic_cast<CurveVisual*>(child) != nullptr; }));
    }
    static std::size_t arrowsUnder(const Visual& parent)
    {
        return test::childrenOfType(parent, VisualType::Mesh).size();
    }
    std::size_t manualObjects() const
    {
        return sceneManager->getMovableObjects(Ogre::ManualObjectFactory::FACTORY_TYPE_NAME).size();
    }

    const std::unique_ptr<task::EdgeMfgShape> seam = test::seamShape();
    task::EdgeMfgShape& shape = *seam;
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
};

TEST_F(VectorBandVisualTest, RibbonIsAStripThroughThePointsOfTheRun)
{
    const VectorBandVisual* band = addBand();

    EXPECT_EQ(band->getId(), 900u);
    EXPECT_EQ(band->getBand()->getParentSceneNode(), band->getSceneNode());
    ASSERT_THAT(sectionsOf(*band->getBand()), SizeIs(1));
    Ogre::ManualObject::ManualObjectSection& section = *sectionsOf(*band->getBand())[0];
    EXPECT_EQ(section.getMaterialName(), "VectorBand");
    EXPECT_EQ(section.getMaterialGroup(), Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    EXPECT_EQ(section.getRenderOperation()->operationType, Ogre::RenderOperation::OT_TRIANGLE_STRIP);
    EXPECT_FALSE(section.getRenderOperation()->useIndexes);
    // Worked out by hand for the straight edge: from the first vector on, to the second, half way over.
    const auto vertices = verticesOf(section);
    const double lean = 25 * std::sqrt(0.5);
    ASSERT_GE(vertices.size(), 8u);
    const std::vector<std::pair<rob::Posd, rob::Posd>> straight{{{0, 0, 0}, {0, 0, 25}},
                                                                {{20, 0, 0}, {20, 0, 25}},
                                                                {{80, 0, 0}, {80, lean, lean}},
                                                                {{100, 0, 0}, {100, lean, lean}}};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR((rob::Posd(vertices[2 * i].first) - straight[i].first).length(), 0, 1e-5) << i;
        EXPECT_NEAR((rob::Posd(vertices[2 * i + 1].first) - straight[i].second).length(), 0, 1e-5) << i;
    }
    EXPECT_NEAR(vertices[0].second.y, -1, 1e-6);
    EXPECT_NEAR(vertices[6].second.z, std::sqrt(0.5), 1e-6);
    // All of it is the ribbon, narrowed.
    const std::vector<RibbonVertex> told = MakeRibbon(shape, shape.getPathPointsForRender());
    ASSERT_EQ(vertices.size(), told.size());
    for (std::size_t i = 0; i < told.size(); ++i) {
        EXPECT_EQ(vertices[i].first, rob::Posf(told[i].position)) << i;
        EXPECT_EQ(vertices[i].second, rob::Dirf(told[i].normal)) << i;
    }
}

TEST_F(VectorBandVisualTest, VectorsInUseEdgesAndArrowComeWithIt)
{
    shape.setStart({0, 50});

    VectorBandVisual* band = addBand();

    const std::vector<BandVectorVisual*>& vectors = band->getBandVectors();
    ASSERT_THAT(vectors, SizeIs(2)) << "the one before the start is not in use";
    EXPECT_EQ(vectors[0]->getPathPoint(), (EdgeMfgShape::PathPoint{0, 80}));
    EXPECT_EQ(vectors[1]->getPathPoint(), (EdgeMfgShape::PathPoint{1, 0.5}));
    for (BandVectorVisual* vector : vectors) {
        EXPECT_EQ(vector->getParent(), band);
        EXPECT_TRUE(picking.hasVisual(vector));
    }
    EXPECT_EQ(curvesUnder(*band), 2u);
    ASSERT_NE(band->getArrow(), nullptr);
    EXPECT_EQ(band->getArrow()->getParent(), world) << "beside the band, not under it";
    EXPECT_EQ(band->getArrow()->getPosition(), rob::Posf(50, 0, 0));
    EXPECT_NEAR((band->getArrow()->getPose().rotation() * rob::Dirf(0, 0, 1)).x, 1, 1e-6);
    EXPECT_EQ(colorOf(*band->getBand()), normalColor);
}

TEST_F(VectorBandVisualTest, EdgeGivenTwiceKeepsTheVectorsOfBothWays)
{
    // As the seam of a cylinder in its wire: there and back.
    EdgeMfgShape both(902, "seam");
    const TopoDS_Edge there = test::straightEdge({0, 0, 0}, {100, 0, 0});
    both.addEdge({there, {{30, {0, 0, 1}}}, 0, 0});
    both.addEdge({TopoDS::Edge(there.Reversed()), {{60, {0, 1, 0}}}, 0, 0});

    const VectorBandVisual band(902, world, both);

    ASSERT_THAT(band.getBandVectors(), SizeIs(2));
    EXPECT_EQ(band.getBandVectors()[0]->getPathPoint(), (EdgeMfgShape::PathPoint{0, 30}));
    EXPECT_EQ(band.getBandVectors()[1]->getPathPoint(), (EdgeMfgShape::PathPoint{1, 60}));
    const_cast<VectorBandVisual&>(band).clearChildren();
}

struct LookCase {
    const char* name;
    void (VectorBandVisual::*set)();
    Ogre::Vector4 color;
};
class BandLooks : public VectorBandVisualTest, public testing::WithParamInterface<LookCase> {};

TEST_P(BandLooks, AreTheParameterOfTheRibbonUntilItIsReset)
{
    VectorBandVisual* band = addBand();
    const std::vector<BandVectorVisual*> vectors = band->getBandVectors();

    (band->*GetParam().set)();

    EXPECT_EQ(colorOf(*band->getBand()), GetParam().color);
    EXPECT_EQ(sectionsOf(*band->getBand())[0]->getMaterialName(), "VectorBand");
    EXPECT_EQ(band->getBandVectors(), vectors) << "they stay as they are";
    for (const BandVectorVisual* vector : vectors)
        EXPECT_EQ(colorOf(*vector), vectorPlain);
    band->resetAppearance();
    EXPECT_EQ(colorOf(*band->getBand()), normalColor);
}

INSTANTIATE_TEST_SUITE_P(
    Table, BandLooks,
    testing::Values(
        LookCase{"Highlighted", &VectorBandVisual::setHighlighted, {252 / 255.0f, 255 / 255.0f, 54 / 255.0f, 0.1f}},
        LookCase{"Selected", &VectorBandVisual::setSelected, {252 / 255.0f, 255 / 255.0f, 54 / 255.0f, 0.5f}},
        LookCase{"RegionReorderCandidate",
                 &VectorBandVisual::setRegionReorderCandidate,
                 {40 / 255.0f, 130 / 255.0f, 255 / 255.0f, 0.55f}},
        LookCase{"RegionReorderSelected",
                 &VectorBandVisual::setRegionReorderSelected,
                 {255 / 255.0f, 136 / 255.0f, 0 / 255.0f, 0.7f}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(VectorBandVisualTest, VectorIsFoundByItsEdgeAndItsParameterWithinAMillionth)
{
    const VectorBandVisual* band = addBand();

    EXPECT_EQ(band->findBandVector({0, 80}), band->getBandVectors()[1]);
    EXPECT_EQ(band->findBandVector({0, 80 + 0.9e-6}), band->getBandVectors()[1]);
    EXPECT_EQ(band->findBandVector({0, 80 - 0.9e-6}), band->getBandVectors()[1]);
    EXPECT_EQ(band->findBandVector({0, 80 + 1.1e-6}), nullptr);
    EXPECT_EQ(band->findBandVector({1, 80}), nullptr);
}

TEST_F(VectorBandVisualTest, SelectedVectorIsTheOneThatIsThere)
{
    VectorBandVisual* band = addBand();
    const std::size_t children = test::childrenOf(*band).size();

    band->selectVector(shape, {0, 20 + 5e-7});

    EXPECT_EQ(band->getSelectedVector(), band->getBandVectors()[0]);
    EXPECT_EQ(colorOf(*band->getBandVectors()[0]), vectorSelected);
    EXPECT_EQ(test::childrenOf(*band).size(), children) << "no other is made";
    EXPECT_EQ(band->getExtraSelectedVector(), nullptr);

    band->selectVector(shape, {0, 80});

    EXPECT_EQ(colorOf(*band->getBandVectors()[0]), vectorPlain);
    EXPECT_EQ(colorOf(*band->getBandVectors()[1]), vectorSelected);
}

TEST_F(VectorBandVisualTest, VectorBetweenTwoIsMadeForAsLongAsItIsSelected)
{
    VectorBandVisual* band = addBand();

    band->selectVector(shape, {0, 50});

    BandVectorVisual* extra = band->getExtraSelectedVector();
    ASSERT_NE(extra, nullptr);
    EXPECT_EQ(band->getSelectedVector(), nullptr);
    EXPECT_EQ(extra->getParent(), band);
    EXPECT_EQ(colorOf(*extra), vectorSelected);
    EXPECT_FALSE(picking.hasVisual(extra));
    EXPECT_THAT(vectorsUnder(*band), SizeIs(4));
    // Half way between z and the one that leans over by 45 degrees.
    const auto points = test::uploaded(*extra->getLines()[0]);
    EXPECT_NEAR(points[1].y, 25 * std::sin(std::numbers::pi / 8), 1e-4);
    EXPECT_NEAR(points[1].z, 25 * std::cos(std::numbers::pi / 8), 1e-4);

    band->selectVector(shape, {0, 60});
    EXPECT_THAT(vectorsUnder(*band), SizeIs(4)) << "the first is gone";

    band->selectVector(shape, {0, 80});
    EXPECT_EQ(band->getExtraSelectedVector(), nullptr);
    EXPECT_THAT(vectorsUnder(*band), SizeIs(3));
}

TEST_F(VectorBandVisualTest, ClearedSelectionLeavesAllPlain)
{
    VectorBandVisual* band = addBand();
    band->clearSelectedVector(); // with nothing selected it does nothing
    band->selectVector(shape, {0, 80});

    band->clearSelectedVector();

    EXPECT_EQ(band->getSelectedVector(), nullptr);
    EXPECT_EQ(colorOf(*band->getBandVectors()[1]), vectorPlain);
    band->selectVector(shape, {0, 50});
    band->clearSelectedVector();
    EXPECT_EQ(band->getExtraSelectedVector(), nullptr);
    EXPECT_THAT(vectorsUnder(*band), SizeIs(3));
}

TEST_F(VectorBandVisualTest, SelectingOnAnEdgeThatIsNotThereFailsWithNothingSelected)
{
    VectorBandVisual* band = addBand();
    band->selectVector(shape, {0, 80});

    EXPECT_THAT(
        [&] {
            band->selectVector(shape, {7, 0});
        },
        ThrowsMessage<std::out_of_range>(StrEq("invalid vector subscript")));

    EXPECT_EQ(band->getSelectedVector(), nullptr);
    EXPECT_EQ(colorOf(*band->getBandVectors()[1]), vectorPlain);
    EXPECT_THAT(vectorsUnder(*band), SizeIs(3));
}

TEST_F(VectorBandVisualTest, PreviewIsOneHighlightedVectorAtATime)
{
    VectorBandVisual* band = addBand();
    band->clearPreviewVector();

    band->previewVector(shape, {0, 80});
    band->previewVector(shape, {1, 1});

    ASSERT_NE(band->getPreviewVector(), nullptr);
    EXPECT_EQ(band->getPreviewVector()->getParent(), band);
    EXPECT_EQ(band->getPreviewVector()->getParameter(), 1);
    EXPECT_EQ(colorOf(*band->getPreviewVector()), Ogre::Vector4(0, 0, 1, 1));
    EXPECT_FALSE(picking.hasVisual(band->getPreviewVector()));
    EXPECT_THAT(vectorsUnder(*band), SizeIs(4));
    band->clearPreviewVector();
    EXPECT_EQ(band->getPreviewVector(), nullptr);
    EXPECT_THAT(vectorsUnder(*band), SizeIs(3));
}

TEST_F(VectorBandVisualTest, RangeSelectedTwiceLeavesOneSection)
{
    VectorBandVisual* band = addBand();
    EXPECT_EQ(band->getSelectedBand(), nullptr);

    band->selectRange(shape, {0, 10}, {0, 90});
    band->updateSelectedBand(shape, {0, 30}, {1, 0.5});

    ASSERT_NE(band->getSelectedBand(), nullptr);
    const Ogre::ManualObject& range = *band->getSelectedBand();
    ASSERT_THAT(sectionsOf(range), SizeIs(1));
    EXPECT_EQ(range.getParentSceneNode(), band->getSceneNode());
    EXPECT_EQ(sectionsOf(range)[0]->getMaterialName(), "SelectedBand");
    EXPECT_EQ(sectionsOf(range)[0]->getRenderOperation()->operationType, Ogre::RenderOperation::OT_TRIANGLE_STRIP);
    EXPECT_EQ(colorOf(range), Ogre::Vector4(252 / 255.0f, 100 / 255.0f, 54 / 255.0f, 0.5f));
    const auto vertices = verticesOf(*sectionsOf(range)[0]);
    const auto told = MakeRibbon(shape, shape.getPathPointsForRender({0, 30}, {1, 0.5}));
    ASSERT_EQ(vertices.size(), told.size());
    EXPECT_EQ(vertices.front().first, rob::Posf(30, 0, 0));
    EXPECT_EQ(vertices.back().first, rob::Posf(told.back().position));
    EXPECT_THAT(sectionsOf(*band->getBand()), SizeIs(1));
    EXPECT_EQ(colorOf(*band->getBand()), normalColor);
}

TEST_F(VectorBandVisualTest, ClearedRangeDrawsNothing)
{
    VectorBandVisual* band = addBand();
    band->clearSelectedRange(); // before any selection it does nothing
    EXPECT_EQ(band->getSelectedBand(), nullptr);
    band->selectRange(shape, {0, 10}, {0, 90});

    band->clearSelectedRange();

    EXPECT_THAT(sectionsOf(*band->getSelectedBand()), IsEmpty());
    band->selectRange(shape, {0, 10}, {0, 90});
    EXPECT_THAT(sectionsOf(*band->getSelectedBand()), SizeIs(1));
}

TEST_F(VectorBandVisualTest, RangeOnAHiddenBandStaysHidden)
{
    VectorBandVisual* band = addBand();
    band->setVisible(false, true);

    band->selectRange(shape, {0, 10}, {0, 90});
    EXPECT_FALSE(band->getSelectedBand()->getVisible());

    band->setVisible(true, true);
    EXPECT_TRUE(band->getSelectedBand()->getVisible());
}

TEST_F(VectorBandVisualTest, SelectionPreviewAndRangeEndTogetherAndTheLookGoesBack)
{
    VectorBandVisual* band = addBand();
    band->setSelected();
    band->selectVector(shape, {0, 50});
    band->previewVector(shape, {0, 70});
    band->selectRange(shape, {0, 10}, {0, 90});
    EXPECT_EQ(band->getExtraSelectedVector()->getParameter(), 50) << "they do not end each other";
    EXPECT_EQ(band->getPreviewVector()->getParameter(), 70);

    static_cast<Visual*>(band)->clearHighlightOrSelect();

    EXPECT_EQ(colorOf(*band->getBand()), normalColor);
    EXPECT_EQ(band->getExtraSelectedVector(), nullptr);
    EXPECT_EQ(band->getPreviewVector(), nullptr);
    EXPECT_THAT(sectionsOf(*band->getSelectedBand()), IsEmpty());
    EXPECT_THAT(vectorsUnder(*band), SizeIs(3));
}

TEST_F(VectorBandVisualTest, ChangedShapeIsDrawnAnewOverTheEdgesThatWereThere)
{
    VectorBandVisual* band = addBand();
    band->setSelected();
    band->selectVector(shape, {0, 80});
    band->previewVector(shape, {0, 70});
    band->selectRange(shape, {0, 10}, {0, 90});
    shape.setStart({0, 40});

    band->updateBand(shape);

    ASSERT_THAT(sectionsOf(*band->getBand()), SizeIs(1));
    EXPECT_EQ(verticesOf(*sectionsOf(*band->getBand())[0]).front().first, rob::Posf(40, 0, 0));
    EXPECT_EQ(colorOf(*band->getBand()), normalColor);
    EXPECT_THAT(band->getBandVectors(), SizeIs(2));
    EXPECT_THAT(vectorsUnder(*band), SizeIs(2));
    EXPECT_EQ(band->getSelectedVector(), nullptr);
    EXPECT_EQ(band->getPreviewVector(), nullptr);
    EXPECT_THAT(sectionsOf(*band->getSelectedBand()), IsEmpty());
    EXPECT_EQ(arrowsUnder(*world), 1u) << "the old arrow is gone";
    EXPECT_EQ(band->getArrow()->getPosition(), rob::Posf(40, 0, 0));
    EXPECT_EQ(curvesUnder(*band), 4u) << "the old edges stay until the band ends";
}

TEST_F(VectorBandVisualTest, ExtraVectorIsDeletedByAnUpdate)
{
    VectorBandVisual* band = addBand();
    band->selectVector(shape, {0, 50});

    band->updateBand(shape);

    EXPECT_EQ(band->getExtraSelectedVector(), nullptr);
    EXPECT_THAT(vectorsUnder(*band), SizeIs(3));
}

TEST_F(VectorBandVisualTest, ShapeWithoutPointsIsAnEmptyRibbon)
{
    VectorBandVisual* band = addBand();
    const EdgeMfgShape empty(900, "seam");

    band->updateBand(empty);

    EXPECT_THAT(sectionsOf(*band->getBand()), IsEmpty());
    EXPECT_THAT(band->getBandVectors(), IsEmpty());
    EXPECT_EQ(band->getArrow(), nullptr);
    EXPECT_EQ(empty.getStart(), (EdgeMfgShape::PathPoint{0, 0}));
    band->setSelected(); // no section to colour
    band->updateBand(shape);
    EXPECT_THAT(sectionsOf(*band->getBand()), SizeIs(1));
    EXPECT_NE(band->getArrow(), nullptr);
}

TEST_F(VectorBandVisualTest, RunOfOnePointHasAnArrowAndNoTriangle)
{
    shape.setEnd({0, 30});
    shape.setStart({0, 30});

    const VectorBandVisual* band = addBand();

    ASSERT_THAT(sectionsOf(*band->getBand()), SizeIs(1));
    EXPECT_THAT(verticesOf(*sectionsOf(*band->getBand())[0]), SizeIs(2));
    EXPECT_THAT(band->getBandVectors(), IsEmpty());
    EXPECT_EQ(band->getArrow()->getPosition(), rob::Posf(30, 0, 0));
}

TEST_F(VectorBandVisualTest, ToolDirectionAlongTheEdgeIsRefusedAndLeavesNothing)
{
    const auto children = test::childrenOf(*world);
    const std::size_t objects = manualObjects();
    const std::size_t pickable = picking.registeredVisuals().size();

    EXPECT_THAT(
        [&] {
            new VectorBandVisual(903, world, *test::straightShape({{20, {0, 0, 1}}, {80, {1, 0, 0}}}));
        },
        ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));

    EXPECT_EQ(test::childrenOf(*world), children);
    EXPECT_EQ(manualObjects(), objects);
    EXPECT_EQ(picking.registeredVisuals().size(), pickable);
}

TEST_F(VectorBandVisualTest, UpdateThatIsRefusedCanBeFollowedByOneThatIsNot)
{
    VectorBandVisual* band = addBand();

    EXPECT_THAT(
        [&] {
            band->updateBand(*test::straightShape({{80, {1, 0, 0}}}));
        },
        ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
    EXPECT_THAT(sectionsOf(*band->getBand()), IsEmpty());
    band->updateBand(shape);

    EXPECT_THAT(sectionsOf(*band->getBand()), SizeIs(1));
    EXPECT_THAT(band->getBandVectors(), SizeIs(3));
}

TEST_F(VectorBandVisualTest, RangeThatIsRefusedLeavesNoneAndCanBeFollowedByAnother)
{
    VectorBandVisual* band = addBand();
    band->selectRange(shape, {0, 10}, {0, 90});

    EXPECT_THROW(band->selectRange(shape, {0, 10}, {5, 0}), std::out_of_range);
    EXPECT_THAT(sectionsOf(*band->getSelectedBand()), IsEmpty());
    band->selectRange(shape, {0, 10}, {0, 90});

    EXPECT_THAT(sectionsOf(*band->getSelectedBand()), SizeIs(1));
}

TEST_F(VectorBandVisualTest, HiddenBandHidesItsArrowAndIsNotPicked)
{
    VectorBandVisual* band = addBand();
    BandVectorVisual* vector = band->getBandVectors()[0];

    band->setVisible(false, true);

    EXPECT_FALSE(band->getArrow()->isVisible());
    EXPECT_FALSE(vector->isVisible());
    EXPECT_FALSE(picking.isEnabled(vector));
    band->setVisible(true, true);
    EXPECT_TRUE(band->getArrow()->isVisible());
    EXPECT_TRUE(vector->isVisible());
    EXPECT_TRUE(picking.isEnabled(vector));
}

// Ends. The arrow hangs beside the band, and either may die first.

TEST_F(VectorBandVisualTest, ArrowDrawingsAndVectorsEndWithTheBand)
{
    const std::size_t objects = manualObjects();
    const std::size_t pickable = picking.registeredVisuals().size();
    auto* parent = new Visual(world);
    VectorBandVisual* band = addBand(parent);
    band->selectRange(shape, {0, 10}, {0, 90});
    band->selectVector(shape, {0, 50});
    band->previewVector(shape, {0, 60});
    EXPECT_EQ(arrowsUnder(*parent), 1u);

    scene.deleteVisual(band);

    EXPECT_THAT(test::childrenOf(*parent), IsEmpty());
    EXPECT_EQ(manualObjects(), objects);
    EXPECT_EQ(picking.registeredVisuals().size(), pickable);
}

TEST_F(VectorBandVisualTest, BandAndArrowEndWithTheirParentInAnyOrder)
{
    // OGRE puts the last child in the place of one that goes: with an own child before and after, either comes first.
    for (const int before : {0, 1}) {
        auto* parent = new Visual(world);
        for (int i = 0; i < before; ++i)
            new Visual(parent);
        addBand(parent);
        addBand(parent);

        scene.deleteVisual(parent);
    }
    EXPECT_EQ(arrowsUnder(*world), 0u);
}

TEST_F(VectorBandVisualTest, ArrowThatDiedFirstIsNotDeletedAgain)
{
    VectorBandVisual* band = addBand();
    scene.deleteVisual(band->getArrow());
    EXPECT_EQ(band->getArrow(), nullptr);
    // Likely at the same address.
    const MeshVisual* other = MeshVisual::BuildArrow(world, {0, 0, 0}, {1, 0, 0});

    scene.deleteVisual(band);

    EXPECT_THAT(test::childrenOfType(*world, VisualType::Mesh), ElementsAre(other));
}

TEST_F(VectorBandVisualTest, VectorThatDiedByItselfIsForgotten)
{
    VectorBandVisual* band = addBand();
    BandVectorVisual* first = band->getBandVectors()[0];
    band->selectVector(shape, {0, 20});
    ASSERT_EQ(band->getSelectedVector(), first);
    band->previewVector(shape, {0, 60});

    scene.deleteVisual(first);
    scene.deleteVisual(band->getPreviewVector());

    EXPECT_EQ(band->getSelectedVector(), nullptr);
    EXPECT_EQ(band->getPreviewVector(), nullptr);
    EXPECT_EQ(band->findBandVector({0, 20}), nullptr);
    EXPECT_THAT(band->getBandVectors(), SizeIs(2));
    band->clearHighlightOrSelect();
    band->updateBand(shape);
    EXPECT_THAT(band->getBandVectors(), SizeIs(3));
}

} // namespace
} // namespace vrk::visual
