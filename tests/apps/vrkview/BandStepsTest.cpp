#include "FakeInput.h"
#include "StepsFixture.h"
#include "canvas/Picked.h"
#include "docks/PropertyDock.h"
#include "edit/BandActions.h"
#include "edit/Bands.h"
#include "edit/EditActions.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "task/bands/VectorBandVisual.h"

#include <gmock/gmock.h>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using vrk::layout::Layout;
using vrk::task::EdgeMfgShape;
using vrk::visual::Scene;
using vrk::visual::VectorBandVisual;

/// Bands in the window.
class BandStepsTest : public StepsFixture {
protected:
    void SetUp() override
    {
        StepsFixture::SetUp();
        for (const auto& part : Layout::inst().parts)
            if (part->getName() == "Stone" || part->getName() == "Pallet")
                body = part->getBodies().front()->getId();
        ASSERT_NE(body, 0u);
    }
    static BandActions& bands() { return window().getBands(); }

    static void typeWithControl(const char* key)
    {
        const HeldKey control("Control_L");
        typeKey(key);
        settle();
    }
    /// The band that is selected, or 0.
    static unsigned selectedBand()
    {
        const auto& ids = state().getSelected();
        return ids.size() == 1 && isBand(ids.front()) ? ids.front() : 0;
    }

    unsigned body = 0;
};

TEST_F(BandStepsTest, BandOfASelectedEdgeIsMadeByItsKeyShownAndTakenBack)
{
    state().toggleEdge(body, 1);
    EXPECT_THAT(state().getSelectedEdges(), SizeIs(1));

    typeWithControl("b");

    const unsigned band = selectedBand();
    ASSERT_NE(band, 0u) << message();
    EXPECT_THAT(state().getSelectedEdges(), IsEmpty());
    ASSERT_TRUE(Scene::HasVisual(band));
    EXPECT_EQ(Scene::GetVisual(band)->getParent(), Scene::GetVisual(body));
    const int row = state().getTree().find(band);
    ASSERT_NE(row, StationTree::none);
    const StationTree& tree = state().getTree();
    EXPECT_EQ(tree.getRows()[static_cast<std::size_t>(tree.getRows()[static_cast<std::size_t>(row)].parent)].id, body);
    shoot("band");
    state().clear();
    typeWithControl("z");
    EXPECT_FALSE(isBand(band));
    EXPECT_FALSE(Scene::HasVisual(band));
    EXPECT_EQ(state().getTree().find(band), StationTree::none);
    history().redo();
    settle();
    EXPECT_TRUE(Scene::HasVisual(band));
}

TEST_F(BandStepsTest, PathOfTheSelectedBandJoinsTheProgram)
{
    state().toggleEdge(body, 1);
    bands().makeBandOfChain();
    settle();
    ASSERT_NE(selectedBand(), 0u) << message();
    std::size_t paths = 0;
    for (const auto& path : Layout::inst().tasks.front()->getOwnPaths())
        paths += path ? 1 : 0;

    typeWithControl("h");

    const auto& own = Layout::inst().tasks.front()->getOwnPaths();
    ASSERT_EQ(own.size(), paths + 1);
    EXPECT_GE(own.back()->moveInstructionCount(), 2u);
    typeWithControl("z");
    EXPECT_EQ(Layout::inst().tasks.front()->getOwnPaths().size(), paths);
}

TEST_F(BandStepsTest, EdgesThatMakeNoBandAreToldAndNothingChanges)
{
    const int steps = history().count();
    // Two edges of a box that have no corner in common: of its twelve each meets four, and is not one itself.
    const auto shape = std::dynamic_pointer_cast<vrk::layout::Body>(sdf::SdfManager::inst().share(body))->getShape();
    unsigned apart = 0;
    for (unsigned other = 2; other <= 12 && apart == 0; ++other)
        try {
            vrk::task::MakeSeam(1, "", shape, body, {1, other});
        } catch (const std::invalid_argument&) {
            apart = other;
        }
    ASSERT_NE(apart, 0u);
    state().toggleEdge(body, 1);
    state().toggleEdge(body, apart);

    bands().makeBand();
    settle();

    EXPECT_THAT(message(), HasSubstr("does not follow the others in one chain"));
    EXPECT_THAT(message(), HasSubstr("The station is as before."));
    EXPECT_EQ(history().count(), steps);
    EXPECT_THAT(state().getSelectedEdges(), SizeIs(2)) << "so that one can be taken out";
    window().getMessageBar().hide();
}

TEST_F(BandStepsTest, BandIsHiddenAndDeletedLikeOtherThings)
{
    state().toggleEdge(body, 1);
    bands().makeBand();
    settle();
    const unsigned band = selectedBand();
    ASSERT_NE(band, 0u);

    state().hideSelected();
    settle();
    EXPECT_FALSE(Scene::GetVisual(band)->isVisible());
    EXPECT_TRUE(Scene::GetVisual(body)->isVisible());
    state().showAll();
    settle();
    EXPECT_TRUE(Scene::GetVisual(band)->isVisible());
    state().selectVisuals({band});
    window().getEdits().removeSelected();
    settle();
    EXPECT_FALSE(Scene::HasVisual(band));
    history().undo();
    settle();
    EXPECT_TRUE(Scene::HasVisual(band));
}

TEST_F(BandStepsTest, EdgeIsSelectedByAltAndControlAndGoesWithTheNextSelection)
{
    const QPoint place = placeOf("Pallet");
    std::optional<Picked> found;
    QPoint near;
    for (int step = 0; step < 400 && !found; ++step) { // around the middle, until an edge is near
        near = place + QPoint(step % 20 * 4 - 40, step / 20 * 4 - 40);
        found = pickedAt(near, PickAim::Edge);
    }
    ASSERT_TRUE(found);
    const HeldKey alt("Alt_L");
    const auto click = [&near] {
        const HeldKey control("Control_L");
        clickAt(near);
    };

    click();

    ASSERT_THAT(state().getSelectedEdges(), SizeIs(1));
    EXPECT_EQ(state().getSelectedEdges()[0].first, found->candidate.visualId);
    EXPECT_EQ(state().getSelectedEdges()[0].second, found->edge());
    click();
    EXPECT_THAT(state().getSelectedEdges(), IsEmpty());
    click();
    state().clear();
    EXPECT_THAT(state().getSelectedEdges(), IsEmpty());
    EXPECT_FALSE(state().isAnySelected());
}

TEST_F(BandStepsTest, BandOfTheDemoStandsInTheTreeAndIsSelected)
{
    unsigned band = 0;
    for (const auto& shape : Layout::inst().tasks.front()->getMfgShapes())
        band = shape->getId();
    ASSERT_NE(band, 0u);
    ASSERT_TRUE(Scene::HasVisual(band));
    auto& visual = dynamic_cast<VectorBandVisual&>(*Scene::GetVisual(band));
    EXPECT_GT(visual.getBandVectors().size(), 10u);
    EXPECT_NE(state().getTree().find(band), StationTree::none);

    state().selectVisuals({band});
    settle();

    EXPECT_THAT(state().getSelected(), testing::ElementsAre(band));
    shoot("demo-band");
}

} // namespace
} // namespace vrkview::test
