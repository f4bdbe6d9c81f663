#include "canvas/Visibility.h"

#include "FakeInput.h"
#include "MouseFixture.h"
#include "canvas/Surroundings.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "visual/DynamicLines.h"
#include "visual/FrameVisual.h"
#include "visual/VisualStateManager.h"

#include <gmock/gmock.h>

#include <Ogre.h>

#include <algorithm>

namespace vrkview::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vrk::VisualType;
using vrk::layout::Layout;
using vrk::selection::VisualSelection;
using vrk::visual::FrameVisual;
using vrk::visual::Scene;
using vrk::visual::Visual;
using vrk::visual::VisualStateLayer;

class VisibilityTest : public MouseFixture {
protected:
    void TearDown() override
    {
        showFrames(true);
        MouseFixture::TearDown();
    }

    static void hide(const std::string& name) { state().setVisible({thing(name)}, false); }
    static void show(const std::string& name) { state().setVisible({thing(name)}, true); }
    static bool isHidden(const std::string& name) { return state().isHidden(thing(name)); }

    /// The bodies below a thing; what hangs on it counts as well.
    static std::vector<Visual*> bodiesOf(Visual& top)
    {
        std::vector<Visual*> bodies;
        if (top.getType() == VisualType::Solid || top.getType() == VisualType::Mesh)
            bodies.push_back(&top);
        for (Visual* child : top.getChildren())
            for (Visual* body : bodiesOf(*child))
                bodies.push_back(body);
        return bodies;
    }
    static bool isAnyDrawn(const std::string& name)
    {
        return std::ranges::any_of(bodiesOf(*Scene::GetVisual(thing(name))), &Visual::isVisible);
    }
    static bool isAnyPicked(const std::string& name)
    {
        return std::ranges::any_of(bodiesOf(*Scene::GetVisual(thing(name))), isPicked);
    }
    /// The arrows of curves, and the frames of robots' controllers, never are.
    static bool isPicked(Visual* visual)
    {
        return VisualSelection::Get()->hasVisual(visual) && VisualSelection::Get()->isEnabled(visual);
    }
    static FrameVisual& taskFrame()
    {
        const unsigned id = Layout::inst().manipulators.front()->getControllerTaskFrame()->getId();
        return dynamic_cast<FrameVisual&>(*Scene::GetVisual(id));
    }
    /// How long the frame's x axis is drawn.
    static float drawnLength(const FrameVisual& frame)
    {
        return frame.getLines().front()->getBoundingBox().getMaximum().x;
    }
    static const Visual* baseFrameOf(const std::string& name)
    {
        for (const Visual* child : Scene::GetVisual(thing(name))->getChildren())
            if (child->getName().starts_with("Base Frame"))
                return child;
        return nullptr;
    }
};

TEST_F(VisibilityTest, HiddenCarrierTakesAlongWhatItCarriesAndBringsItBack)
{
    const QImage before = seen();
    hide("Positioner");
    settle();

    for (const char* name : {"Positioner", "Fixture", "Workpiece"}) {
        EXPECT_TRUE(isHidden(name)) << name;
        EXPECT_FALSE(isAnyDrawn(name)) << name;
        EXPECT_FALSE(isAnyPicked(name)) << name;
    }
    EXPECT_THAT(Layout::inst().visibilities, testing::AllOf(testing::Contains(thing("Positioner")),
                                                            testing::Not(testing::Contains(thing("Fixture")))));
    shoot("carrier-hidden");

    show("Positioner");
    settle();

    for (const char* name : {"Positioner", "Fixture", "Workpiece"}) {
        EXPECT_EQ(state().shownOf(thing(name)), ViewState::Shown::Whole) << name;
        EXPECT_TRUE(isAnyDrawn(name)) << name;
        EXPECT_TRUE(isAnyPicked(name)) << name;
    }
    EXPECT_EQ(seen(), before);
}

TEST_F(VisibilityTest, WhatIsHiddenItselfStaysSoWhenItsCarrierComesBack)
{
    hide("Workpiece");
    hide("Positioner");

    show("Positioner");
    settle();

    EXPECT_TRUE(isAnyDrawn("Fixture"));
    EXPECT_TRUE(isHidden("Workpiece"));
    EXPECT_FALSE(Scene::GetVisual(thing("Workpiece"))->isVisible());
    EXPECT_FALSE(isAnyPicked("Workpiece"));
}

TEST_F(VisibilityTest, WhatIsCarriedCanBeShownAlone)
{
    hide("Positioner");

    show("Workpiece");
    settle();

    EXPECT_EQ(state().shownOf(thing("Workpiece")), ViewState::Shown::Whole);
    EXPECT_TRUE(isAnyDrawn("Workpiece"));
    EXPECT_TRUE(isAnyPicked("Workpiece"));
    EXPECT_EQ(state().shownOf(thing("Fixture")), ViewState::Shown::Partly);
    EXPECT_FALSE(std::ranges::any_of(Scene::GetVisual(thing("Fixture"))->getChildren(), [](const Visual* child) {
        return child->getType() == VisualType::Solid && child->isVisible();
    }));
    shoot("carried-alone");
}

TEST_F(VisibilityTest, SeveralCarriedThingsCanBeShownTogether)
{
    hide("Positioner");

    state().setVisible({thing("Fixture"), thing("Workpiece")}, true);
    settle();

    for (const char* name : {"Fixture", "Workpiece"}) {
        EXPECT_EQ(state().shownOf(thing(name)), ViewState::Shown::Whole) << name;
        EXPECT_TRUE(isAnyPicked(name)) << name;
    }
    EXPECT_EQ(state().shownOf(thing("Positioner")), ViewState::Shown::Partly);
}

TEST_F(VisibilityTest, CarriedThingsStayHiddenInEveryDisplayMode)
{
    hide("Positioner");

    for (const char* key : {"F5", "F7", "F8", "F6"}) {
        after(key);
        EXPECT_FALSE(isAnyDrawn("Workpiece")) << key;
        EXPECT_FALSE(isAnyPicked("Workpiece")) << key;
    }
}

TEST_F(VisibilityTest, MechanismThatIsShownAgainKeepsItsBaseFrameForTheSelection)
{
    const QImage before = seen();
    hide("Positioner");

    show("Positioner");
    settle();

    ASSERT_NE(baseFrameOf("Positioner"), nullptr);
    EXPECT_FALSE(baseFrameOf("Positioner")->isVisible());
    EXPECT_EQ(seen(), before);
    state().selectVisuals({thing("Positioner")});
    settle();
    EXPECT_TRUE(baseFrameOf("Positioner")->isVisible());
}

TEST_F(VisibilityTest, MechanismThatIsShownAgainLeavesTheLooksOfItsMembers)
{
    Visual* body = bodiesOf(*Scene::GetVisual(thing("Positioner"))).front();
    Scene::Get()->setCollision(body->getId(), true);
    settle();
    const QImage before = seen();

    hide("Positioner");
    show("Positioner");
    settle();

    EXPECT_EQ(seen(), before);
    Scene::Get()->clearAllCollisionContacts();
}

TEST_F(VisibilityTest, FrameThatGrewWhileItWasHiddenHasItsLengthWhenItIsShown)
{
    const unsigned id = taskFrame().getId();
    const float before = drawnLength(taskFrame());
    state().setVisible({id}, false);

    changeFrameSize(4); // beyond any length that another test gave it: the box of lines only grows
    settle();
    EXPECT_FALSE(taskFrame().isVisible());
    EXPECT_FALSE(isPicked(&taskFrame()));
    state().setVisible({id}, true);
    settle();

    EXPECT_TRUE(taskFrame().isVisible());
    EXPECT_TRUE(Scene::HasVisual(id));
    EXPECT_GT(drawnLength(taskFrame()), 1.4f * before);
    changeFrameSize(-4);
}

TEST_F(VisibilityTest, FramesThatAreNotDrawnAreNotPicked)
{
    std::vector<Visual*> frames;
    for (Visual* visual : VisualSelection::Get()->registeredVisuals())
        if (visual->getType() == VisualType::Frame)
            frames.push_back(visual);
    ASSERT_THAT(frames, testing::Not(IsEmpty()));

    showFrames(false);
    settle();
    for (Visual* frame : frames) {
        EXPECT_FALSE(frame->isVisible()) << frame->getName();
        EXPECT_FALSE(VisualSelection::Get()->isEnabled(frame)) << frame->getName();
    }

    hide("Welding torch"); // and what it has frames on comes back without them
    show("Welding torch");
    settle();
    for (Visual* frame : frames)
        EXPECT_FALSE(frame->isVisible()) << frame->getName();

    showFrames(true);
    settle();
    for (Visual* frame : frames) {
        EXPECT_TRUE(frame->isVisible()) << frame->getName();
        EXPECT_TRUE(VisualSelection::Get()->isEnabled(frame)) << frame->getName();
    }
}

TEST_F(VisibilityTest, WhatIsHiddenIsNotSelected)
{
    hide("Fixture");

    state().selectVisuals({thing("Fixture"), thing("Welding torch")});
    settle();

    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Welding torch")));
    EXPECT_THAT(Scene::Get()->getSelectedVisuals(), ElementsAre(thing("Welding torch")));
}

TEST_F(VisibilityTest, WhatGetsHiddenIsNoLongerSelected)
{
    const unsigned body = bodiesOf(*Scene::GetVisual(thing("Workpiece"))).front()->getId();
    state().selectVisuals({thing("Workpiece"), thing("Welding torch")});
    state().toggleFace(body, 1, ViewState::FaceUse::Base);
    ASSERT_TRUE(state().isFaceSelected(body, 1));

    hide("Positioner"); // with what it carries
    settle();

    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Welding torch")));
    EXPECT_THAT(Scene::Get()->getSelectedVisuals(), ElementsAre(thing("Welding torch")));
    EXPECT_FALSE(state().isFaceSelected(body, 1));
    state().toggleFace(body, 1, ViewState::FaceUse::Base);
    EXPECT_FALSE(state().isFaceSelected(body, 1));
}

TEST_F(VisibilityTest, WhatGetsHiddenUnderTheMouseIsNoLongerHighlighted)
{
    moveTo(placeOf("Fixture"));
    Visual* fixture = Scene::GetVisual(thing("Fixture"));
    ASSERT_TRUE(waitFor([&] { return Scene::GetStateManager()->hasLayer(fixture, VisualStateLayer::Highlighted); }));

    hide("Fixture");
    settle();

    EXPECT_FALSE(Scene::GetStateManager()->hasLayer(fixture, VisualStateLayer::Highlighted));
}

TEST_F(VisibilityTest, OwnersAreSelectedAheadOfTheirMembers)
{
    const StationTree& tree = state().getTree();
    const StationTree::Row& fence = tree.getRows()[static_cast<std::size_t>(tree.find(thing("Fence")))];
    const unsigned member = tree.getRows()[static_cast<std::size_t>(fence.children.front())].id;

    state().selectVisuals({member, fence.id});
    settle();

    EXPECT_THAT(Scene::Get()->getSelectedVisuals(), ElementsAre(fence.id, member));
    EXPECT_THAT(state().getSelected(),
                ElementsAre(member, fence.id)); // in the user's order, for what asks for the last
}

} // namespace
} // namespace vrkview::test
