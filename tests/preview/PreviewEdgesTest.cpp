#include "PreviewFixture.h"

#include "preview/PreviewCurve.h"
#include "support/ThrowsExactly.h"
#include "visual/EdgeVisual.h"
#include "visual/MeshVisual.h"
#include "visual/RenderGroups.h"

#include <BRep_Builder.hxx>
#include <TopoDS.hxx>

/// Edges and curves that are previewed: one list.
namespace vrk::visual {
namespace {

using test::childrenOf;
using test::throwsExactly;
using test::uploaded;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const rob::Posef pose(rob::Posf(1, 2, 3), rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f));

TopoDS_Edge edgeWithoutPolygon()
{
    return BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(1, 0, 0)).Edge();
}

/// Four points, of whose three edges those with a false here have no polygon.
TopoDS_Wire wireWith(bool first, bool second, bool third)
{
    const std::vector<gp_Pnt> points{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {10, 10, 10}};
    const bool drawn[] = {first, second, third};
    std::vector<TopoDS_Vertex> corners;
    for (const gp_Pnt& point : points)
        corners.push_back(BRepBuilderAPI_MakeVertex(point).Vertex());
    BRepBuilderAPI_MakeWire wire;
    for (std::size_t i = 0; i < 3; ++i) {
        const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(corners[i], corners[i + 1]).Edge();
        wire.Add(drawn[i] ? test::withPolygon(edge, {points[i], points[i + 1]}) : edge);
    }
    return wire.Wire();
}

class PreviewEdges : public test::WithPreviews<test::SceneFixture> {
protected:
    ~PreviewEdges() override
    {
        scene.removePreviewCurves();
        drain();
    }
    static const std::vector<Visual*>& list() { return listed<PreviewCurves>(); }
    static EdgeVisual& edgeAt(std::size_t i) { return dynamic_cast<EdgeVisual&>(*list().at(i)); }
    static PreviewCurve& curveAt(std::size_t i) { return dynamic_cast<PreviewCurve&>(*list().at(i)); }
    static std::string nameOf(const std::string& prefix, const Visual& visual)
    {
        return prefix + std::to_string(visual.getId());
    }
    static std::vector<bool> arrows()
    {
        std::vector<bool> has;
        for (std::size_t i = 0; i < list().size(); ++i)
            has.push_back(edgeAt(i).getArrow() != nullptr);
        return has;
    }
    static geometry::PointList* newList(const geometry::PointList& list) { return new geometry::PointList(list); }
    /// What is drawn of the only strip of a curve.
    static std::vector<rob::Posf> pointsOf(const PreviewCurve& curve) { return uploaded(*curve.getLines().at(0)); }
    void expectFailure(const std::string& text = "invalid unordered_map<K, T> key")
    {
        EXPECT_THAT([this] { drain(); }, throwsExactly<std::out_of_range>(text));
    }

    const TopoDS_Edge edge = test::straightEdge({0, 0, 0}, {10, 0, 0});
    const TopoDS_Edge other = test::straightEdge({0, 0, 0}, {0, 10, 0});
};

TEST_F(PreviewEdges, EdgeHasItsNameMaterialsGroupAndPose)
{
    scene.previewEdge(edge, pose);
    EXPECT_THAT(list(), IsEmpty()) << "it is posted";
    drain();

    ASSERT_THAT(list(), SizeIs(1));
    EdgeVisual& visual = edgeAt(0);
    EXPECT_EQ(visual.getName(), nameOf("_previewed_edge_", visual));
    EXPECT_GE(visual.getId(), 0x80000000u) << "a transient id";
    EXPECT_EQ(visual.getType(), VisualType::Edge);
    EXPECT_EQ(visual.getParent(), world);
    EXPECT_EQ(visual.getPose(), pose);
    EXPECT_EQ(visual.getLines().getRenderQueueGroup(), 80);
    EXPECT_THAT(uploaded(visual.getLines()), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(10, 0, 0)));
    EXPECT_FALSE(Scene::HasVisual(visual.getId()));
    for (const auto show : {&Visual::resetAppearance, &Visual::setSelected, &Visual::setHighlighted}) {
        (visual.*show)();
        EXPECT_EQ(test::materialOf(visual), "PreviewCurve");
    }
}

TEST_F(PreviewEdges, PreviewingAnEdgeTwiceGivesTwoPreviews)
{
    scene.previewEdge(edge, {});
    scene.previewEdge(edge, {});
    drain();

    EXPECT_THAT(list(), SizeIs(2));
}

TEST_F(PreviewEdges, EdgesReplaceAllPreviewsOfTheList)
{
    const SolidVisual* box = addBox();
    std::vector<TopoDS_Wire> wires{wireWith(true, true, true)};
    scene.previewCurves(&wires, {});
    scene.previewEdge(edge, {});
    scene.addPreviewCurves(box->getId(), newList({{{0, 0, 0}, {1, 1, 1}}}));
    drain();
    ASSERT_THAT(list(), SizeIs(5));
    const std::size_t before = addedToWorld().size();

    std::vector<TopoDS_Edge> edges{edge, other};
    scene.previewEdges(&edges, pose);
    drain();

    ASSERT_THAT(list(), SizeIs(2));
    EXPECT_EQ(addedToWorld().size(), before - 3) << "the old ones are gone from the scene too";
    EXPECT_EQ(edgeAt(0).getName(), nameOf("_previewed_edge_", edgeAt(0)));
    EXPECT_TRUE(edgeAt(0).getEdge().IsEqual(edge));
    EXPECT_TRUE(edgeAt(1).getEdge().IsEqual(other));
    EXPECT_EQ(edgeAt(1).getPose(), pose);
    EXPECT_EQ(edgeAt(1).getLines().getRenderQueueGroup(), 80);
}

TEST_F(PreviewEdges, EdgesWithoutPolygonAndNullOnesAreNotDrawn)
{
    std::vector<TopoDS_Edge> edges{edgeWithoutPolygon(), TopoDS_Edge(), edge};
    scene.previewEdges(&edges, {});
    scene.previewEdge(edgeWithoutPolygon(), {});
    scene.previewEdge({}, {});
    drain();

    ASSERT_THAT(list(), SizeIs(1));
    EXPECT_TRUE(edgeAt(0).getEdge().IsEqual(edge));
    EXPECT_THAT(addedToWorld(), SizeIs(1));
}

TEST_F(PreviewEdges, PoseStandsInForTheLocationOfAnEdge)
{
    gp_Trsf shift;
    shift.SetTranslation({100, 0, 0});

    scene.previewEdge(TopoDS::Edge(edge.Moved(TopLoc_Location(shift))), pose);
    drain();

    EXPECT_EQ(edgeAt(0).getPose(), pose);
}

TEST_F(PreviewEdges, WireReplacesTheListByItsEdgesInOrderWithoutArrows)
{
    scene.previewEdge(edge, {});
    scene.previewWire(wireWith(true, true, true), pose);
    drain();

    ASSERT_THAT(list(), SizeIs(3));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(edgeAt(i).getName(), nameOf("previewed_edge_" + std::to_string(i), edgeAt(i)));
        EXPECT_EQ(edgeAt(i).getPose(), pose);
        EXPECT_EQ(edgeAt(i).getLines().getRenderQueueGroup(), 80);
    }
    EXPECT_THAT(uploaded(edgeAt(1).getLines()), ElementsAre(rob::Posf(10, 0, 0), rob::Posf(10, 10, 0)));
    EXPECT_THAT(arrows(), ElementsAre(false, false, false));
}

TEST_F(PreviewEdges, NullWireClearsTheListAndAddsNothing)
{
    scene.previewEdge(edge, {});
    scene.previewWire({}, {});
    drain();

    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(PreviewEdges, CurvesWithEmptyWiresClearTheListAndAddNothing)
{
    TopoDS_Wire empty;
    BRep_Builder().MakeWire(empty);
    std::vector<TopoDS_Wire> wires{empty, TopoDS_Wire()};
    scene.previewEdge(edge, {});
    scene.previewCurves(&wires, {});
    drain();

    EXPECT_THAT(list(), IsEmpty());
    EXPECT_THAT(addedToWorld(), IsEmpty());
}

TEST_F(PreviewEdges, RunningNumberOfCurvesCountsEveryEdgeOfAllWires)
{
    std::vector<TopoDS_Wire> wires{wireWith(false, true, false), wireWith(false, false, true)};
    scene.previewCurves(&wires, pose);
    drain();

    ASSERT_THAT(list(), SizeIs(2));
    EXPECT_EQ(edgeAt(0).getName(), nameOf("previewed_edge_1", edgeAt(0)));
    EXPECT_EQ(edgeAt(1).getName(), nameOf("previewed_edge_5", edgeAt(1)));
}

TEST_F(PreviewEdges, ArrowOfCurvesFallsOnTheFirstEdgeOfEachWireThatIsDrawn)
{
    std::vector<TopoDS_Wire> wires{wireWith(true, true, true), wireWith(false, true, true),
                                   wireWith(false, false, false)};
    scene.previewCurves(&wires, {});
    drain();

    EXPECT_THAT(arrows(), ElementsAre(true, false, false, true, false));
}

TEST_F(PreviewEdges, ArrowOfCurvesStandsOnTheEdgeWhereItIsDrawn)
{
    gp_Trsf shift;
    shift.SetTranslation({100, 0, 0});
    const TopoDS_Wire wire = wireWith(true, true, true);
    std::vector<TopoDS_Wire> wires{wire, TopoDS::Wire(wire.Moved(TopLoc_Location(shift)))};
    scene.previewCurves(&wires, pose);
    drain();

    for (const std::size_t i : {0u, 3u}) {
        const MeshVisual* arrow = edgeAt(i).getArrow();
        EXPECT_LT((arrow->getPosition() - rob::Posf()).length(), 1e-4f);
        const rob::Dirf along = arrow->getWorldRotation() * rob::Dirf(0, 0, 1);
        EXPECT_LT((along - pose * rob::Dirf(1, 0, 0)).length(), 1e-5f);
    }
}

TEST_F(PreviewEdges, CurvesOfPointsStandWhereTheVisualStands)
{
    SolidVisual* box = addBox(pose);
    scene.addPreviewCurves(box->getId(), newList({{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}, {{5, 0, 0}, {6, 0, 0}}}));
    EXPECT_THAT(list(), IsEmpty()) << "it is posted";
    drain();

    ASSERT_THAT(list(), SizeIs(2));
    for (unsigned n = 0; n < 2; ++n) {
        const PreviewCurve& curve = curveAt(n);
        EXPECT_EQ(curve.getName(),
                  nameOf("previewed_curve_" + std::to_string(box->getId()) + "_" + std::to_string(n), curve));
        EXPECT_EQ(curve.getType(), VisualType::PreviewCurve);
        EXPECT_EQ(curve.getParent(), world);
        EXPECT_EQ(curve.getPose(), pose);
        EXPECT_EQ(curve.getArrow(), nullptr);
        EXPECT_EQ(test::materialOf(curve), "PreviewCurve");
        EXPECT_EQ(curve.getLines().at(0)->getRenderQueueGroup(), 60);
    }
    EXPECT_THAT(pointsOf(curveAt(0)), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(1, 0, 0), rob::Posf(1, 1, 0)));
}

TEST_F(PreviewEdges, CurvesOfPointsAreAddedToTheList)
{
    scene.previewEdge(edge, {});
    scene.addPreviewCurves(addBox()->getId(), newList({{{0, 0, 0}, {1, 0, 0}}}));
    drain();

    EXPECT_THAT(list(), SizeIs(2));
}

TEST_F(PreviewEdges, CurvesOfOnePointAndOfNoneAreListedAndDrawNothing)
{
    scene.addPreviewCurves(addBox()->getId(), newList({{{1, 2, 3}}, {}}));
    drain();

    ASSERT_THAT(list(), SizeIs(2));
    for (std::size_t i = 0; i < 2; ++i)
        EXPECT_TRUE(curveAt(i).getLines().at(0)->isDirty()) << "nothing was uploaded";
}

TEST_F(PreviewEdges, CurvesOfPointsOnNoVisualFailOnTheRenderThread)
{
    for (const unsigned id : {0u, 4711u}) {
        scene.addPreviewCurves(id, newList({{{0, 0, 0}, {1, 0, 0}}}));
        expectFailure();
    }
    scene.addPreviewCurvesWithDirection(4711, newList({{{0, 0, 0}, {1, 0, 0}}}), {1, 0, 0});
    expectFailure();

    EXPECT_THAT(list(), IsEmpty());
}

TEST_F(PreviewEdges, DirectedCurvesAreOneVisualNamedAfterTheScene)
{
    SolidVisual* box = addBox(pose);
    scene.addPreviewCurvesWithDirection(box->getId(), newList({{{0, 0, 0}, {1, 0, 0}}, {{2, 0, 0}, {3, 0, 0}}}),
                                        {0, 5, 0});
    drain();

    ASSERT_THAT(list(), SizeIs(1));
    const PreviewCurve& curve = curveAt(0);
    EXPECT_EQ(curve.getName(), nameOf(Scene::GetName(), curve));
    EXPECT_EQ(curve.getParent(), world);
    EXPECT_EQ(curve.getPose(), pose);
    EXPECT_THAT(curve.getLines(), SizeIs(2));
    EXPECT_THAT(uploaded(*curve.getLines().at(1)), ElementsAre(rob::Posf(2, 0, 0), rob::Posf(3, 0, 0)));
    EXPECT_EQ(test::materialOf(curve), "PreviewCurve");
}

TEST_F(PreviewEdges, ArrowOfDirectedCurvesLiesAtTheFirstPointAsTheirPoseMapsIt)
{
    SceneCore::Get()->settings.arrowSizeLevel = 4;
    scene.addPreviewCurvesWithDirection(addBox(pose)->getId(), newList({{{7, 0, 0}, {8, 0, 0}}}), {0, 5, 0});
    drain();

    const MeshVisual* arrow = curveAt(0).getArrow();
    ASSERT_NE(arrow, nullptr);
    EXPECT_EQ(arrow->getParent(), &curveAt(0));
    EXPECT_EQ(arrow->getPosition(), pose * rob::Posf(7, 0, 0));
    EXPECT_LT((arrow->getPose() * rob::Dirf(0, 0, 1) - rob::Dirf(0, 1, 0)).length(), 1e-6f);
    EXPECT_FLOAT_EQ(arrow->getSceneNode()->getScale().x, 0.8f);
}

TEST_F(PreviewEdges, DirectedCurvesOfIdZeroLieInTheWorld)
{
    scene.addPreviewCurvesWithDirection(0, newList({{{7, 0, 0}, {8, 0, 0}}}), {0, 1, 0});
    drain();

    EXPECT_EQ(curveAt(0).getPose(), rob::Posef());
    EXPECT_EQ(curveAt(0).getArrow()->getPosition(), rob::Posf(7, 0, 0));
}

TEST_F(PreviewEdges, DirectedCurvesCarryTheFurtherIdAndAreRemovedByIt)
{
    scene.addPreviewCurvesWithDirection(0, newList({{{0, 0, 0}, {8, 0, 0}}}), {0, 1, 0}, 77);
    scene.addPreviewCurvesWithDirection(0, newList({{{1, 0, 0}, {8, 0, 0}}}), {0, 1, 0}, 77);
    drain();
    ASSERT_THAT(list(), SizeIs(2));
    EXPECT_EQ(curveAt(0).getId(), 77u);
    EXPECT_FALSE(Scene::HasVisual(77));

    scene.removePreviewCurve(77);
    drain();

    ASSERT_THAT(list(), SizeIs(1)) << "the first of that id, and no other";
    EXPECT_EQ(pointsOf(curveAt(0)).front(), rob::Posf(1, 0, 0));
}

TEST_F(PreviewEdges, DirectedCurvesWithoutDirectionFailAndHaveNoArrow)
{
    scene.addPreviewCurvesWithDirection(0, newList({{{0, 0, 0}, {8, 0, 0}}}), {0, 0, 1e-7f});

    EXPECT_THAT([this] { drain(); }, throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));

    ASSERT_THAT(list(), SizeIs(1)) << "so that it can be removed";
    EXPECT_EQ(curveAt(0).getArrow(), nullptr);
}

TEST_F(PreviewEdges, DirectedCurvesWithoutAPointHaveNoArrowAndTheLogSaysSo)
{
    scene.addPreviewCurvesWithDirection(0, newList({}), {0, 1, 0});
    scene.addPreviewCurvesWithDirection(0, newList({{}, {{0, 0, 0}, {1, 0, 0}}}), {0, 1, 0});
    drain();

    ASSERT_THAT(list(), SizeIs(2));
    EXPECT_EQ(curveAt(1).getArrow(), nullptr);
    EXPECT_THAT(lines, ElementsAre("a previewed curve has no arrow: it has no point",
                                   "a previewed curve has no arrow: it has no point"));
}

TEST_F(PreviewEdges, RemovalByAnUnknownIdDoesNothing)
{
    scene.previewEdge(edge, {});
    drain();

    scene.removePreviewCurve(4711);
    drain();

    EXPECT_THAT(list(), SizeIs(1));
}

TEST_F(PreviewEdges, RemovalClosesTheGap)
{
    std::vector<TopoDS_Edge> edges{edge, other, edge};
    scene.previewEdges(&edges, {});
    drain();

    scene.removePreviewCurve(edgeAt(1).getId());
    drain();

    ASSERT_THAT(list(), SizeIs(2));
    EXPECT_TRUE(edgeAt(0).getEdge().IsEqual(edge));
    EXPECT_TRUE(edgeAt(1).getEdge().IsEqual(edge));
    EXPECT_THAT(addedToWorld(), SizeIs(2));
}

TEST_F(PreviewEdges, RemovalOfAllLeavesNothing)
{
    std::vector<TopoDS_Wire> wires{wireWith(true, true, true)};
    scene.previewCurves(&wires, {});
    scene.addPreviewCurvesWithDirection(0, newList({{{0, 0, 0}, {8, 0, 0}}}), {0, 1, 0});
    scene.removePreviewCurves();
    drain();

    EXPECT_THAT(list(), IsEmpty());
    EXPECT_THAT(addedToWorld(), IsEmpty());
}

TEST_F(PreviewEdges, OneThatIsDeletedAsAVisualLeavesTheList)
{
    std::vector<TopoDS_Edge> edges{edge, other};
    scene.previewEdges(&edges, {});
    drain();

    scene.deleteVisual(list().front());

    ASSERT_THAT(list(), SizeIs(1));
    EXPECT_TRUE(edgeAt(0).getEdge().IsEqual(other));
}

TEST_F(PreviewEdges, ArrowSizeLevelFiveIsTheSizeOfTheMesh)
{
    std::vector<TopoDS_Wire> wires{wireWith(true, true, true)};
    scene.previewCurves(&wires, {});
    scene.addPreviewCurvesWithDirection(0, newList({{{0, 0, 0}, {8, 0, 0}}}), {0, 1, 0});
    drain();
    EXPECT_FLOAT_EQ(curveAt(3).getArrow()->getSceneNode()->getScale().y, 0.2f) << "of level 1";

    scene.setArrowSizeLevel(5);
    EXPECT_EQ(SceneCore::Get()->settings.arrowSizeLevel, 1) << "it is posted";
    drain();

    EXPECT_EQ(SceneCore::Get()->settings.arrowSizeLevel, 5);
    EXPECT_EQ(curveAt(3).getArrow()->getSceneNode()->getScale(), Ogre::Vector3(1));
    EXPECT_EQ(edgeAt(0).getArrow()->getSceneNode()->getScale(), Ogre::Vector3(1));

    scene.setArrowSizeLevel(8);
    drain();
    EXPECT_EQ(edgeAt(0).getArrow()->getSceneNode()->getScale(), Ogre::Vector3(1.6f));
}

TEST_F(PreviewEdges, ArrowSizeLevelReachesNothingElse)
{
    SolidVisual* box = addBox();
    MeshVisual* arrow = MeshVisual::BuildArrow(box, {}, {0, 0, 1});
    scene.previewEdge(edge, {});
    drain();
    auto* marker = new Visual("marker", list().front());

    scene.setArrowSizeLevel(10);
    drain();

    EXPECT_EQ(arrow->getSceneNode()->getScale(), Ogre::Vector3(1)) << "on a body";
    EXPECT_EQ(marker->getSceneNode()->getScale(), Ogre::Vector3(1)) << "no arrow";
}

} // namespace
} // namespace vrk::visual
