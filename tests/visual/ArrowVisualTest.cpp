#include "visual/ArrowVisual.h"

#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/EdgeVisual.h"
#include "visual/Edges.h"
#include "visual/RenderGroups.h"

#include <Geom_BezierCurve.hxx>
#include <TopLoc_Location.hxx>

namespace vrk::visual {
namespace {

using testing::StartsWith;
using testing::StrEq;
using testing::ThrowsMessage;

class ArrowVisualTest : public test::SceneFixture {};

const EdgeMaterials materials{"BodyCurve", "BodyCurveHighlighted", "BodyCurveSelected"};

EdgeVisual* buildEdge(Visual* parent, const TopoDS_Edge& edge)
{
    return EdgeVisual::Build(parent, "edge", edge, materials, EdgeOrigin::Curve).value();
}

void expectArrow(const Visual* arrow, const rob::Posf& position, const rob::Dirf& direction)
{
    const rob::Posef pose = arrow->getWorldPose();
    EXPECT_LT((pose.position - position).length(), 1e-4f);
    EXPECT_GT((pose.rotation() * rob::Dirf(0, 0, 1)).dot(direction), 0.99999f);
}

Ogre::Vector4 colorOf(const MeshVisual& visual)
{
    return visual.getEntity()->getSubEntity(0)->getCustomParameter(0);
}

/// A curve whose first two poles are one: it starts without a direction.
TopoDS_Edge edgeWithoutTangent()
{
    TColgp_Array1OfPnt poles(1, 3);
    poles(1) = poles(2) = gp_Pnt(0, 0, 0);
    poles(3) = gp_Pnt(10, 0, 0);
    const Handle(Geom_BezierCurve) curve = new Geom_BezierCurve(poles);
    return test::withPolygon(BRepBuilderAPI_MakeEdge(curve).Edge(), {{0, 0, 0}, {10, 0, 0}});
}

TEST_F(ArrowVisualTest, ArrowStandsAtItsPointAndPointsAlongTheDirection)
{
    MeshVisual* arrow = MeshVisual::BuildArrow(world, {1, 2, 3}, {0, -1, 0});

    expectArrow(arrow, {1, 2, 3}, {0, -1, 0});
    EXPECT_EQ(arrow->getType(), VisualType::Mesh);
    EXPECT_THAT(arrow->getName(), StartsWith("mfg_arrow"));
    EXPECT_EQ(arrow->getMeshName(), "mfg_arrow");
    EXPECT_EQ(arrow->getEntity()->getRenderQueueGroup(), renderGroup::lines);
    EXPECT_EQ(colorOf(*arrow), Ogre::Vector4(1, 0xA7 / 255.0f, 0x25 / 255.0f, 1));
    for (const auto look : {&Visual::setSelected, &Visual::resetAppearance, &Visual::setHighlighted}) {
        (arrow->*look)();
        EXPECT_EQ(arrow->getEntity()->getSubEntity(0)->getMaterialName(), "Axis");
    }
    EXPECT_FALSE(Scene::HasVisual(arrow->getId()));
    EXPECT_FALSE(selection::VisualSelection::Get()->hasVisual(arrow));
}

TEST_F(ArrowVisualTest, ArrowAgainstZIsTurnedRound)
{
    expectArrow(MeshVisual::BuildArrow(world, {0, 0, 0}, {0, 0, -1}), {0, 0, 0}, {0, 0, -1});
}

TEST_F(ArrowVisualTest, ArrowMayHaveItsOwnColour)
{
    const ArrowVisual* arrow = ArrowVisual::Build(world, {0, 0, 0}, {1, 0, 0}, "#3366CC");

    EXPECT_EQ(colorOf(*arrow), Ogre::Vector4(0.2f, 0.4f, 0.8f, 1));
    expectArrow(arrow, {0, 0, 0}, {1, 0, 0});
}

TEST_F(ArrowVisualTest, ColourTextThatIsNoneFails)
{
    EXPECT_THAT(
        [this] {
            ArrowVisual::Build(world, {0, 0, 0}, {1, 0, 0}, "#zzzzzz");
        },
        ThrowsMessage<std::invalid_argument>(StrEq("invalid stoi argument")));
}

struct PlaceCase {
    const char* name;
    bool forward;
    bool reversed;
    bool atEnd;
};
class ArrowPlaceOnEdge : public ArrowVisualTest, public testing::WithParamInterface<PlaceCase> {};

TEST_P(ArrowPlaceOnEdge, PointsIntoTheEdge)
{
    TopoDS_Edge edge = test::straightEdge({10, 0, 0}, {40, 0, 0});
    if (GetParam().reversed)
        edge.Reverse();
    const rob::Posf position = GetParam().atEnd ? rob::Posf(40, 0, 0) : rob::Posf(10, 0, 0);
    const rob::Dirf direction = GetParam().atEnd ? rob::Dirf(-1, 0, 0) : rob::Dirf(1, 0, 0);

    expectArrow(ArrowVisual::Build(world, edge, GetParam().forward), position, direction);

    EdgeVisual* visual = buildEdge(world, edge);
    visual->addArrow(GetParam().forward);
    expectArrow(visual->getArrow(), position, direction);
}

INSTANTIATE_TEST_SUITE_P(Table, ArrowPlaceOnEdge,
                         testing::Values(PlaceCase{"Forward", true, false, true},
                                         PlaceCase{"Backward", false, false, false},
                                         PlaceCase{"ForwardOnReversed", true, true, false},
                                         PlaceCase{"BackwardOnReversed", false, true, true}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(ArrowVisualTest, EdgeWithoutOrientationHasItsTwoArrowsApart)
{
    TopoDS_Edge edge = test::straightEdge({10, 0, 0}, {40, 0, 0});
    edge.Orientation(TopAbs_INTERNAL);

    expectArrow(ArrowVisual::Build(world, edge, true), {40, 0, 0}, {-1, 0, 0});
    EdgeVisual* visual = buildEdge(world, edge);
    visual->addArrow(true);
    expectArrow(visual->getArrow(), {10, 0, 0}, {1, 0, 0});
}

TEST_F(ArrowVisualTest, ArrowStandsOnTheEdgeWhereItsLocationPutsIt)
{
    gp_Trsf turn;
    turn.SetRotation(gp::OZ(), M_PI / 2);
    turn.SetTranslationPart(gp_Vec(0, 0, 100));
    const TopoDS_Edge edge = TopoDS::Edge(test::straightEdge({10, 0, 0}, {40, 0, 0}).Moved(TopLoc_Location(turn)));

    EdgeVisual* visual = buildEdge(world, edge);
    visual->addArrow(true);

    expectArrow(visual->getArrow(), {0, 40, 100}, {0, -1, 0});
    expectArrow(ArrowVisual::Build(world, edge, true), {0, 40, 100}, {0, -1, 0});
}

TEST_F(ArrowVisualTest, EdgeWithoutTangentHasNoArrow)
{
    const TopoDS_Edge edge = edgeWithoutTangent();
    EdgeVisual* visual = buildEdge(world, edge);
    const auto zeroLength = ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized."));

    EXPECT_THAT([&] { visual->addArrow(false); }, zeroLength);
    EXPECT_THAT([&] { ArrowVisual::Build(world, edge, false); }, zeroLength);
    EXPECT_EQ(visual->getArrow(), nullptr);
    EXPECT_TRUE(test::childrenOf(*visual).empty());
    EXPECT_NO_THROW(visual->addArrow(true)) << "its end has one";
}

TEST_F(ArrowVisualTest, SecondArrowLeavesTheFirst)
{
    EdgeVisual* visual = buildEdge(world, test::straightEdge({10, 0, 0}, {40, 0, 0}));

    visual->addArrow(true);
    const MeshVisual* first = visual->getArrow();
    visual->addArrow(false);

    EXPECT_NE(visual->getArrow(), first);
    EXPECT_EQ(test::childrenOf(*visual).size(), 2u);
    visual->clearArrow();
    EXPECT_EQ(visual->getArrow(), nullptr);
    EXPECT_EQ(test::childrenOf(*visual), std::vector<Visual*>{const_cast<MeshVisual*>(first)});
}

TEST_F(ArrowVisualTest, ArrowThatWasDeletedIsNotClearedAgain)
{
    EdgeVisual* visual = buildEdge(world, test::straightEdge({10, 0, 0}, {40, 0, 0}));
    visual->addArrow(true);
    visual->addArrow(false);
    scene.deleteVisual(visual->getArrow());

    visual->clearArrow();

    EXPECT_EQ(visual->getArrow(), nullptr);
    EXPECT_EQ(test::childrenOf(*visual).size(), 1u) << "the one before stays";
}

} // namespace
} // namespace vrk::visual
