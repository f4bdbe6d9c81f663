#include "visual/CurveVisual.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/EdgeVisual.h"
#include "visual/Edges.h"
#include "visual/LineVisual.h"

#include <Standard_TypeMismatch.hxx>
#include <TopLoc_Location.hxx>

#include <limits>

namespace vrk::visual {
namespace {

using test::childrenOf;
using test::uploaded;
using testing::ElementsAre;
using testing::StartsWith;
using testing::StrEq;

class CurveVisualTest : public test::SceneFixture {
protected:
    selection::VisualSelection& picking = *selection::VisualSelection::Get();

    CurveVisual* build(const TopoDS_Shape& shape, bool detectable = true)
    {
        const auto body = test::addModelBody(shape, "curve-uri");
        static_cast<layout::Part*>(sdf::SdfManager::inst().find(body->getParentId()))->setDetectable(detectable);
        CurveVisual::Build(world, body.get(), shape);
        return static_cast<CurveVisual*>(Scene::GetVisual(body->getId()));
    }
    std::vector<EdgeVisual*> edgesOf(const Visual& curve)
    {
        std::vector<EdgeVisual*> edges;
        for (Visual* child : childrenOf(curve))
            edges.push_back(dynamic_cast<EdgeVisual*>(child));
        return edges;
    }
};

const EdgeMaterials materials{"BodyCurve", "BodyCurveHighlighted", "BodyCurveSelected"};
const float nan = std::numeric_limits<float>::quiet_NaN();
const float infinity = std::numeric_limits<float>::infinity();

TopoDS_Wire wire()
{
    return test::wireOfThree({0, 0, 0}, {10, 0, 0}, {10, 20, 0}, {10, 20, 30});
}

/// Runs `call` and gives the text of the mismatch that it fails with.
template <typename Call>
std::string mismatchOf(const Call& call)
{
    try {
        call();
    } catch (const Standard_TypeMismatch& failure) {
        return failure.GetMessageString();
    }
    return "no failure";
}

TEST_F(CurveVisualTest, WireHasAChildForEachEdgeInItsOrder)
{
    const TopoDS_Wire shape = wire();

    const CurveVisual* curve = build(shape);

    const std::vector<EdgeVisual*> edges = edgesOf(*curve);
    ASSERT_EQ(edges.size(), 3u);
    EXPECT_THAT(uploaded(edges[0]->getLines()), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(10, 0, 0)));
    EXPECT_THAT(uploaded(edges[1]->getLines()), ElementsAre(rob::Posf(10, 0, 0), rob::Posf(10, 20, 0)));
    EXPECT_THAT(uploaded(edges[2]->getLines()), ElementsAre(rob::Posf(10, 20, 0), rob::Posf(10, 20, 30)));
    for (const EdgeVisual* edge : edges) {
        EXPECT_EQ(edge->getType(), VisualType::Edge);
        EXPECT_EQ(edge->getName(), "curve-uri" + std::to_string(edge->getId()));
        EXPECT_EQ(edge->getLines().getRenderOpType(), RenderOpType::LineStrip);
        EXPECT_FALSE(Scene::HasVisual(edge->getId()));
    }
    EXPECT_EQ(curve->getType(), VisualType::Curve);
    EXPECT_TRUE(curve->getShape().IsEqual(shape));
}

TEST_F(CurveVisualTest, CurveCanBePickedAndItsPartSaysWhetherItIsDetected)
{
    EXPECT_TRUE(picking.isDetectable(build(wire(), true)));
    EXPECT_FALSE(picking.isDetectable(build(wire(), false)));
}

TEST_F(CurveVisualTest, EdgeIsACurveOfOne)
{
    CurveVisual* curve = build(test::straightEdge({0, 0, 0}, {1, 0, 0}));

    EXPECT_EQ(childrenOf(*curve).size(), 1u);
    EXPECT_TRUE(picking.hasVisual(curve));
}

TEST_F(CurveVisualTest, ShapeThatIsNoWireFails)
{
    const TopoDS_Shape box = test::meshedBox(1, 1, 1);
    const auto body = test::addModelBody(box, "no-wire");

    EXPECT_THAT(mismatchOf([&] { CurveVisual::Build(world, body.get(), box); }), StrEq("TopoDS::Wire"));
    EXPECT_TRUE(Scene::HasVisual(body->getId())) << "it was made before";
    EXPECT_FALSE(picking.hasVisual(Scene::GetVisual(body->getId())));
}

TEST_F(CurveVisualTest, NoShapeAtAllIsACurveWithoutEdges)
{
    const CurveVisual* curve = build(TopoDS_Shape());

    EXPECT_TRUE(childrenOf(*curve).empty());
}

TEST_F(CurveVisualTest, BareEdgeIsNamedAfterItsParentAndNotRegistered)
{
    auto* parent = new Visual("Owner", world);

    CurveVisual::Build(parent, test::straightEdge({0, 0, 0}, {1, 0, 0}));

    Visual* curve = childrenOf(*parent).at(0);
    EXPECT_EQ(curve->getName(), parent->getName() + "_curve_" + std::to_string(curve->getId()));
    EXPECT_THAT(childrenOf(*curve).at(0)->getName(), StartsWith(curve->getName()));
    EXPECT_FALSE(Scene::HasVisual(curve->getId()));
    EXPECT_TRUE(picking.hasVisual(curve));
    EXPECT_FALSE(picking.isDetectable(curve));
}

TEST_F(CurveVisualTest, BareShapeThatIsNoEdgeFails)
{
    EXPECT_THAT(mismatchOf([this] { CurveVisual::Build(world, wire()); }), StrEq("TopoDS::Edge"));
}

TEST_F(CurveVisualTest, EdgeWithoutPolygonIsNotDrawn)
{
    const TopoDS_Edge bare = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(1, 0, 0)).Edge();

    EXPECT_EQ(EdgeVisual::Build(world, "edge", bare, materials, EdgeOrigin::Curve), std::nullopt);
    EXPECT_EQ(EdgeVisual::Build(world, "edge", TopoDS_Edge(), materials, EdgeOrigin::Curve), std::nullopt);
    CurveVisual* curve = build(bare);
    EXPECT_TRUE(childrenOf(*curve).empty());
    EXPECT_TRUE(picking.hasVisual(curve));
    EXPECT_NO_THROW(curve->addArrow(true)) << "there is nothing to put it on";
}

TEST_F(CurveVisualTest, PolygonNodesThatAreNotFiniteAreSkipped)
{
    const TopoDS_Edge edge = test::withPolygon(
        BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(3, 0, 0)).Edge(),
        {{0, 0, 0}, {nan, 0, 0}, {1, 0, 0}, {1, infinity, 0}, {2, 0, -infinity}, {2, 1e300, 0}, {3, 0, 0}});

    const EdgeVisual* visual = EdgeVisual::Build(world, "edge", edge, materials, EdgeOrigin::Curve).value();

    EXPECT_THAT(uploaded(visual->getLines()), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(1, 0, 0), rob::Posf(3, 0, 0)));
}

TEST_F(CurveVisualTest, PolygonOfNoFiniteNodesStaysWithoutABuffer)
{
    const TopoDS_Edge edge = test::withPolygon(BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(3, 0, 0)).Edge(),
                                               {{nan, 0, 0}, {nan, nan, 0}, {infinity, 0, 0}});

    const EdgeVisual* visual = EdgeVisual::Build(world, "edge", edge, materials, EdgeOrigin::Curve).value();

    EXPECT_TRUE(visual->getLines().getPoints().empty());
    EXPECT_EQ(visual->getLines().getVertexBufferCapacity(), 0u);
}

TEST_F(CurveVisualTest, LocationOfTheEdgeIsThePoseOfItsVisual)
{
    gp_Trsf shift;
    shift.SetTranslation(gp_Vec(1, 2, 3));
    const TopoDS_Shape moved = test::straightEdge({0, 0, 0}, {1, 0, 0}).Moved(TopLoc_Location(shift));

    const EdgeVisual* visual =
        EdgeVisual::Build(world, "edge", TopoDS::Edge(moved), materials, EdgeOrigin::Curve).value();

    EXPECT_EQ(visual->getPosition(), rob::Posf(1, 2, 3));
    EXPECT_THAT(uploaded(visual->getLines()), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(1, 0, 0)));
}

TEST_F(CurveVisualTest, LooksReachEveryEdge)
{
    CurveVisual* curve = build(wire());
    const auto looks = [&] {
        std::vector<std::string> names;
        for (const EdgeVisual* edge : edgesOf(*curve))
            names.push_back(test::materialOf(*edge));
        return names;
    };

    EXPECT_THAT(looks(), testing::Each("BodyCurve"));
    curve->setSelected();
    EXPECT_THAT(looks(), testing::Each("BodyCurveSelected"));
    curve->setHighlighted();
    EXPECT_THAT(looks(), testing::Each("BodyCurveHighlighted"));
    curve->clearHighlightOrSelect();
    EXPECT_THAT(looks(), testing::Each("BodyCurve"));
}

TEST_F(CurveVisualTest, LooksReachNothingButTheEdges)
{
    CurveVisual* curve = build(wire());
    std::vector<rob::Posf> points{{0, 0, 0}, {1, 0, 0}};
    auto* other = LineVisual::Build(curve, &points);
    other->setMaterial("PreviewCurve", "PathLineSelected", "PathLineHighlighted");

    curve->setSelected();
    EXPECT_EQ(test::materialOf(*other), "PreviewCurve");
    curve->setHighlighted();
    EXPECT_EQ(test::materialOf(*other), "PreviewCurve");
    other->setSelected();
    curve->resetAppearance();
    EXPECT_EQ(test::materialOf(*other), "PathLineSelected");
}

TEST_F(CurveVisualTest, ForwardArrowIsOnTheLastEdgeAndBackwardArrowOnTheFirst)
{
    CurveVisual* curve = build(wire());
    const std::vector<EdgeVisual*> edges = edgesOf(*curve);
    ASSERT_EQ(edges.size(), 3u);
    EXPECT_FALSE(curve->isArrowForward());

    curve->addArrow(true);
    EXPECT_TRUE(curve->isArrowForward());
    EXPECT_NE(edges[2]->getArrow(), nullptr);
    EXPECT_EQ(edges[0]->getArrow(), nullptr);

    curve->addArrow(false);
    EXPECT_FALSE(curve->isArrowForward());
    EXPECT_NE(edges[0]->getArrow(), nullptr);
    EXPECT_EQ(edges[1]->getArrow(), nullptr);

    curve->clearArrow();
    for (const EdgeVisual* edge : edges) {
        EXPECT_EQ(edge->getArrow(), nullptr);
        EXPECT_TRUE(childrenOf(*edge).empty());
    }
}

TEST_F(CurveVisualTest, ClearingWithoutAnArrowDoesNothing)
{
    CurveVisual* curve = build(wire());

    curve->clearArrow();

    EXPECT_EQ(childrenOf(*curve).size(), 3u);
}

TEST_F(CurveVisualTest, EdgesThatWereDeletedGetNoArrow)
{
    CurveVisual* curve = build(wire());
    const std::vector<EdgeVisual*> edges = edgesOf(*curve);
    ASSERT_EQ(edges.size(), 3u);
    scene.deleteVisual(edges[2]);

    curve->addArrow(true);
    EXPECT_NE(edges[1]->getArrow(), nullptr) << "the last that is left";

    curve->clearChildren();
    curve->clearArrow();
    curve->addArrow(false);
    EXPECT_TRUE(childrenOf(*curve).empty());
}

TEST_F(CurveVisualTest, ArrowIsNotPutOnAnEdgeThatIsOnlyHighlighted)
{
    CurveVisual* curve = build(wire());
    const std::vector<EdgeVisual*> edges = edgesOf(*curve);
    ASSERT_EQ(edges.size(), 3u);
    scene.highlightEdge(curve, edges[1]->getEdge());
    drain();
    ASSERT_EQ(childrenOf(*curve).size(), 4u);

    curve->addArrow(true);
    scene.clearHighlightedEdge();
    drain();

    EXPECT_NE(edges[2]->getArrow(), nullptr);
    EXPECT_EQ(edgesOf(*curve), edges) << "and the order is as it was";
}

TEST_F(CurveVisualTest, CurvesOfOneEdgeShareTheirPointsAlsoBeyondTheFirst)
{
    const TopoDS_Edge edge = test::straightEdge({0, 0, 0}, {1, 0, 0});
    EdgeVisual* first = EdgeVisual::Build(world, "edge", edge, materials, EdgeOrigin::Curve).value();
    EdgeVisual* second = EdgeVisual::Build(world, "edge", edge, materials, EdgeOrigin::Curve).value();
    EXPECT_EQ(&test::vertexDataOf(first->getLines()), &test::vertexDataOf(second->getLines()));

    Visual::Delete(first);

    EXPECT_THAT(uploaded(second->getLines()), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(1, 0, 0)));
}

} // namespace
} // namespace vrk::visual
