#include "platform/broker/SignalBroker.h"
#include "platform/layout/Body.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/CurveVisual.h"
#include "visual/EdgeVisual.h"
#include "visual/Edges.h"
#include "visual/SolidVisual.h"

#include <TopLoc_Location.hxx>

#include <typeinfo>

namespace vrk::visual {
namespace {

using test::childrenOfType;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using testing::StrEq;
using testing::ThrowsMessage;

class SceneEdges : public test::SceneFixture {
protected:
    SceneEdges()
    {
        const TopoDS_Shape shape = test::meshedBox(10, 20, 30);
        body = test::addModelBody(shape, "edges");
        SolidVisual::Build(world, body.get(), shape);
        solid = static_cast<SolidVisual*>(Scene::GetVisual(body->getId()));
        id = body->getId();
    }
    EdgeVisual* generated()
    {
        drain();
        const std::vector<Visual*> found = childrenOfType(*solid, VisualType::GeneratedEdge);
        return found.size() == 1 ? static_cast<EdgeVisual*>(found.front()) : nullptr;
    }
    std::vector<Visual*> highlighted()
    {
        drain();
        return childrenOfType(*solid, VisualType::Edge);
    }
    int postsOf(const std::function<void()>& call)
    {
        int updates = 0;
        const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++updates; });
        call();
        return updates;
    }

    std::shared_ptr<layout::Body> body;
    SolidVisual* solid = nullptr;
    unsigned id = 0;
    const TopoDS_Edge edge = test::straightEdge({0, 0, 0}, {10, 0, 0});
    const TopoDS_Edge other = test::straightEdge({0, 0, 0}, {0, 10, 0});
};

TEST_F(SceneEdges, GeneratedEdgeIsRegisteredUnderItsOwnId)
{
    scene.addGeneratedEdge(id, edge);
    EXPECT_THAT(childrenOfType(*solid, VisualType::GeneratedEdge), IsEmpty()) << "it is posted";

    EdgeVisual* visual = generated();
    ASSERT_NE(visual, nullptr);
    EXPECT_EQ(Scene::GetVisual(visual->getId()), visual);
    EXPECT_EQ(visual->getName(), "genedge_" + std::to_string(visual->getId()));
    EXPECT_EQ(test::materialOf(*visual), "GeneratedEdge");
    visual->setHighlighted();
    EXPECT_EQ(test::materialOf(*visual), "BodyCurveHighlighted");
    visual->setSelected();
    EXPECT_EQ(test::materialOf(*visual), "BodyCurveSelected");
}

TEST_F(SceneEdges, GeneratedEdgeWithoutPolygonIsNotMade)
{
    scene.addGeneratedEdge(id, BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(1, 0, 0)).Edge());

    EXPECT_EQ(generated(), nullptr);
}

TEST_F(SceneEdges, GeneratedEdgeOfAnUnknownVisualFailsOnTheRenderThread)
{
    scene.addGeneratedEdge(4711, edge);

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq("invalid unordered_map<K, T> key")));
}

TEST_F(SceneEdges, RemovedGeneratedEdgeLeavesTheRegistry)
{
    scene.addGeneratedEdge(id, edge);
    const unsigned edgeId = generated()->getId();

    scene.removeGeneratedEdge(id, other);
    EXPECT_NE(generated(), nullptr) << "another edge";

    scene.removeGeneratedEdge(id, edge);
    EXPECT_EQ(generated(), nullptr);
    EXPECT_FALSE(Scene::HasVisual(edgeId));
}

TEST_F(SceneEdges, EdgeIsFoundByShapeLocationAndOrientationTogether)
{
    gp_Trsf shift;
    shift.SetTranslation(gp_Vec(1, 0, 0));
    scene.addGeneratedEdge(id, edge);

    scene.removeGeneratedEdge(id, TopoDS::Edge(edge.Reversed()));
    scene.removeGeneratedEdge(id, TopoDS::Edge(edge.Moved(TopLoc_Location(shift))));
    scene.removeGeneratedEdge(id, test::straightEdge({0, 0, 0}, {10, 0, 0}));

    EXPECT_NE(generated(), nullptr);
}

TEST_F(SceneEdges, ArrowComesToAGeneratedEdgeAndGoes)
{
    scene.addGeneratedEdge(id, edge);

    scene.addEdgeArrow(id, edge, true);
    EXPECT_NE(generated()->getArrow(), nullptr);

    scene.clearEdgeArrow(id, edge);
    EXPECT_EQ(generated()->getArrow(), nullptr);
}

TEST_F(SceneEdges, ArrowOnAnEdgeThatWasNotGeneratedDoesNothing)
{
    scene.addGeneratedEdge(id, edge);

    scene.addEdgeArrow(id, other, true);
    scene.clearEdgeArrow(id, other);

    EXPECT_EQ(generated()->getArrow(), nullptr);
}

TEST_F(SceneEdges, ArrowComesToACurveAndGoes)
{
    const TopoDS_Wire wire = test::wireOfThree({0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 1});
    const auto curveBody = test::addModelBody(wire, "curve");
    CurveVisual::Build(world, curveBody.get(), wire);
    const Visual& curve = *Scene::GetVisual(curveBody->getId());
    auto* last = static_cast<EdgeVisual*>(test::childrenOf(curve).back());

    scene.addCurveArrow(curveBody->getId(), true);
    drain();
    EXPECT_NE(last->getArrow(), nullptr);

    scene.clearCurveArrow(curveBody->getId());
    drain();
    EXPECT_EQ(last->getArrow(), nullptr);
}

TEST_F(SceneEdges, CurveArrowOnSomethingElseIsPassedOver)
{
    bool isReached = false;
    scene.addCurveArrow(id, true);
    scene.clearCurveArrow(id);
    scene.addRenderTask([&] { isReached = true; }, 0);

    EXPECT_NO_THROW(drain());

    EXPECT_TRUE(isReached);
    EXPECT_TRUE(childrenOfType(*solid, VisualType::Mesh).empty());
}

TEST_F(SceneEdges, CurveArrowOnAnUnknownVisualFailsOnTheRenderThread)
{
    scene.addCurveArrow(987654, true);

    EXPECT_THROW(drain(), std::out_of_range);
}

TEST_F(SceneEdges, HighlightWhoseEndWentWithAFailedBatchGoesWithTheNextClearing)
{
    scene.highlightEdge(solid, edge);
    ASSERT_EQ(highlighted().size(), 1u);
    scene.addRenderTask([] { throw std::runtime_error("broken"); }, 0);
    scene.clearHighlightedEdge();
    EXPECT_THROW(drain(), std::runtime_error);

    scene.clearHighlightedEdge();

    EXPECT_TRUE(highlighted().empty());
}

TEST_F(SceneEdges, SelectedGeneratedEdgeIsTheOnlySelection)
{
    scene.addGeneratedEdge(id, edge);
    EdgeVisual* visual = generated();
    scene.setVisualSelected(id);
    scene.selectBaseFace(id, 1);

    scene.selectGeneratedEdge(id, edge);
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), ElementsAre(visual->getId()));
    EXPECT_FALSE(scene.faceIsSelected(solid, 1));
    EXPECT_EQ(test::materialOf(*visual), "BodyCurveSelected");
}

TEST_F(SceneEdges, SelectingAGeneratedEdgeEndsTheHighlights)
{
    scene.addGeneratedEdge(id, edge);
    drain();
    const auto highlights = {std::function<void()>([this] { scene.highlightFace(solid, 1); }),
                             std::function<void()>([this] { scene.highlightEdge(solid, other); }),
                             std::function<void()>([this] { scene.setVisualHighlighted(solid); })};

    for (const std::function<void()>& highlight : highlights) {
        highlight();
        scene.selectGeneratedEdge(id, edge);
        EXPECT_EQ(postsOf([this] { scene.clearHighlightedVisual(); }), 0);
        drain();
    }
}

TEST_F(SceneEdges, EdgeThatIsOnlyHighlightedIsNotAGeneratedOne)
{
    scene.highlightEdge(solid, edge);
    drain();

    scene.addEdgeArrow(id, edge, true);
    scene.selectGeneratedEdge(id, edge);
    drain();
    EXPECT_THAT(scene.getSelectedVisuals(), IsEmpty());

    scene.highlightEdge(solid, edge);
    scene.addEdgeArrow(id, edge, true);
    scene.removeGeneratedEdge(id, edge);
    const std::vector<Visual*> drawn = highlighted();
    ASSERT_THAT(drawn, SizeIs(1));
    EXPECT_EQ(static_cast<EdgeVisual*>(drawn.front())->getArrow(), nullptr);
}

TEST_F(SceneEdges, SelectingAnEdgeThatWasNotGeneratedOnlyClears)
{
    scene.setVisualSelected(id);

    scene.selectGeneratedEdge(id, edge);
    drain();

    EXPECT_THAT(scene.getSelectedVisuals(), IsEmpty());
}

TEST_F(SceneEdges, HighlightedEdgeIsDrawnUnderItsVisual)
{
    scene.highlightEdge(solid, edge);
    EXPECT_THAT(childrenOfType(*solid, VisualType::Edge), IsEmpty()) << "it is posted";

    const std::vector<Visual*> drawn = highlighted();
    ASSERT_THAT(drawn, SizeIs(1));
    EXPECT_THAT(drawn.front()->getName(), StartsWith("highlighted_edge"));
    EXPECT_EQ(test::materialOf(*drawn.front()), "BodyCurveHighlighted");
    EXPECT_FALSE(Scene::HasVisual(drawn.front()->getId()));
    drawn.front()->setSelected();
    EXPECT_EQ(test::materialOf(*drawn.front()), "BodyCurveSelected");
    drawn.front()->setHighlighted();
    EXPECT_EQ(test::materialOf(*drawn.front()), "BodyCurveHighlighted");
}

TEST_F(SceneEdges, HighlightMovesWithTheSameEdgeToAnotherVisual)
{
    auto* owner = new Visual(world);
    scene.highlightEdge(solid, edge);

    scene.highlightEdge(owner, edge);

    EXPECT_THAT(highlighted(), IsEmpty());
    EXPECT_THAT(childrenOfType(*owner, VisualType::Edge), SizeIs(1));
    scene.clearHighlightedEdge();
    drain();
    EXPECT_THAT(childrenOfType(*owner, VisualType::Edge), IsEmpty());
}

TEST_F(SceneEdges, EdgeTurnedRoundIsAnotherToHighlight)
{
    const TopoDS_Edge turned = TopoDS::Edge(edge.Reversed());
    scene.highlightEdge(solid, edge);

    scene.highlightEdge(solid, turned);

    ASSERT_THAT(highlighted(), SizeIs(1));
    EXPECT_TRUE(static_cast<EdgeVisual*>(highlighted().front())->getEdge().IsEqual(turned));
}

TEST_F(SceneEdges, HighlightMovesFromEdgeToEdge)
{
    scene.highlightEdge(solid, edge);

    scene.highlightEdge(solid, other);

    ASSERT_THAT(highlighted(), SizeIs(1));
    EXPECT_TRUE(static_cast<EdgeVisual*>(highlighted().front())->getEdge().IsEqual(other));
}

TEST_F(SceneEdges, HighlightingTheSameEdgeAgainPostsNothing)
{
    scene.highlightEdge(solid, edge);

    EXPECT_EQ(postsOf([this] { scene.highlightEdge(solid, edge); }), 0);

    EXPECT_THAT(highlighted(), SizeIs(1));
}

TEST_F(SceneEdges, ClearedHighlightIsGone)
{
    scene.highlightEdge(solid, edge);
    drain();

    scene.clearHighlightedEdge();

    EXPECT_THAT(highlighted(), IsEmpty());
    EXPECT_EQ(postsOf([this] { scene.clearHighlightedEdge(); }), 0) << "nothing is recorded any more";
    scene.highlightEdge(solid, edge);
    EXPECT_THAT(highlighted(), SizeIs(1));
}

TEST_F(SceneEdges, HighlightThatIsClearedBeforeItIsDrawnLeavesNothing)
{
    scene.highlightEdge(solid, edge);
    scene.clearHighlightedEdge();

    EXPECT_THAT(highlighted(), IsEmpty());
}

TEST_F(SceneEdges, HighlightedEdgeWithoutPolygonIsRecordedButNotDrawn)
{
    const TopoDS_Edge bare = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(1, 0, 0)).Edge();

    scene.highlightEdge(solid, bare);
    EXPECT_THAT(highlighted(), IsEmpty());
    EXPECT_EQ(postsOf([&] { scene.highlightEdge(solid, bare); }), 0);

    scene.clearHighlightedEdge();
    EXPECT_NO_THROW(drain());
}

TEST_F(SceneEdges, HighlightedFaceOrVisualEndsTheHighlightOfTheEdge)
{
    scene.highlightEdge(solid, edge);
    scene.highlightFace(solid, 1);
    EXPECT_THAT(highlighted(), IsEmpty());

    scene.highlightEdge(solid, edge);
    scene.setVisualHighlighted(solid);
    EXPECT_THAT(highlighted(), IsEmpty());

    scene.highlightEdge(solid, edge);
    scene.selectSideFace(id, 2);
    EXPECT_THAT(highlighted(), IsEmpty());

    scene.highlightEdge(solid, edge);
    scene.clearSelectedFace(id, 2);
    EXPECT_THAT(highlighted(), IsEmpty());
}

TEST_F(SceneEdges, DyingVisualLeavesTheRecord)
{
    scene.highlightEdge(solid, edge);
    drain();

    scene.deleteVisual(solid);

    EXPECT_EQ(postsOf([this] { scene.clearHighlightedEdge(); }), 0);
    EXPECT_NO_THROW(drain());
}

TEST_F(SceneEdges, DyingHighlightIsNotDeletedTwice)
{
    scene.highlightEdge(solid, edge);
    scene.deleteVisual(highlighted().front());

    scene.clearHighlightedEdge();

    EXPECT_NO_THROW(drain());
}

} // namespace
} // namespace vrk::visual
