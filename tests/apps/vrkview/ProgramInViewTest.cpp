#include "FakeInput.h"
#include "MouseFixture.h"
#include "canvas/Picked.h"
#include "canvas/ProgramParts.h"
#include "docks/ProgramDock.h"
#include "docks/ProgramModel.h"
#include "docks/ProgramView.h"
#include "edit/ModelPlaces.h"

#include "platform/layout/Layout.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "scene/ShownCorners.h"
#include "selection/geometry/Result.h"
#include "view/Camera.h"
#include "visual/Visual.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

namespace vrkview::test {
namespace {

using namespace vrk::task;
using testing::ElementsAre;
using vrk::VisualType;
using vrk::visual::Camera;
using vrk::visual::Scene;
using vrk::visual::Visual;

// A target's axes begin where lines meet: which of them lies on top there goes by the order of their making, which a switch
// changes. That is some pixels; the smallest thing that is switched here covers more.
constexpr double touchingShare = 0.00003;

/// The demo's weld path from near by.
class ProgramInViewTest : public MouseFixture {
protected:
    void SetUp() override
    {
        MouseFixture::SetUp();
        start = camera();
        emit window().getProgramDock().focusRequested(welding().getId());
        ASSERT_TRUE(waitFor([] { return !window().getFlight().isFlying(); }));
        settle();
    }
    void TearDown() override
    {
        for (const ProgramPartName& each : allProgramParts()) {
            draw(each.part, each.part != ProgramPart::ZAxesOnly);
            window().getSettings().setDrawn(each.part, isDrawn(each.part));
        }
        Scene::Get()->setCameraPose(start);
        settle();
        MouseFixture::TearDown();
    }
    static const Path& welding() { return *vrk::layout::Layout::inst().tasks.front()->getOwnPaths().front(); }
    static const MoveInst& move(std::size_t index) { return *welding().getMoveInstructions()[index]; }
    /// Where the view shows the target of a move, in logical pixels.
    static QPoint targetOnScreen(const MoveInst& move)
    {
        const DataItem& item = *move.getTargetItem();
        return onScreen((worldPoseOfThing(item.getOwnerId()) * item.getPose()).position).toPoint();
    }
    static int countBelow(const Visual& visual, VisualType type)
    {
        int count = visual.getType() == type ? 1 : 0;
        for (const Visual* child : visual.getChildren())
            count += countBelow(*child, type);
        return count;
    }
    static int count(VisualType type) { return countBelow(*Scene::GetWorldVisual(), type); }

    vrk::rob::Posef start; // of the camera
};

TEST_F(ProgramInViewTest, EveryMoveStandsInTheScene)
{
    shoot("program_in_view");

    for (const MoveInst* each : welding().getMoveInstructions())
        EXPECT_TRUE(Scene::HasVisual(each->getId())) << each->getName();
    EXPECT_EQ(count(VisualType::MoveInstruction), 10);
    EXPECT_EQ(count(VisualType::Robtarget), 9); // with the via point
    EXPECT_EQ(count(VisualType::JointTarget), 2);
}

TEST_F(ProgramInViewTest, FitHoldsWhereTheMovesGoWhateverIsDrawnOfThem)
{
    const auto inWorld = [](const DataItem& item) {
        return vrk::rob::Posf((worldPoseOfThing(item.getOwnerId()) * item.getPose()).position);
    };
    std::vector<vrk::rob::Posf> places;
    for (const MoveInst* each : welding().getMoveInstructions()) {
        places.push_back(inWorld(*each->getTargetItem()));
        if (each->getCircleItem())
            places.push_back(inWorld(*each->getCircleItem()));
    }
    ASSERT_EQ(places.size(), 11u);

    for (const bool areTargets : {true, false}) {
        draw(ProgramPart::Targets, areTargets);
        settle();
        const std::vector<vrk::rob::Posf> corners = vrk::visual::ShownCorners();
        for (const vrk::rob::Posf& place : places)
            EXPECT_TRUE(std::ranges::any_of(corners, [&](const auto& p) { return (p - place).length() < 0.01f; }))
                << place.x << ' ' << place.y << ' ' << place.z << ", targets: " << areTargets;
    }
}

TEST_F(ProgramInViewTest, ClickOnATargetSelectsItsMoveAndMarksItsRow)
{
    const MoveInst& above = move(1);

    clickAt(targetOnScreen(above));
    settle();

    EXPECT_THAT(state().getSelected(), ElementsAre(above.getId()));
    EXPECT_THAT(Scene::Get()->getSelectedVisuals(), ElementsAre(above.getId()));
    const QModelIndexList marked = window().getProgramDock().getTreeView().selectionModel()->selectedRows();
    ASSERT_EQ(marked.size(), 1);
    EXPECT_EQ(marked[0].data(ProgramModel::IdRole).toUInt(), above.getId());
    shoot("program_move_selected");
}

TEST_F(ProgramInViewTest, TargetUnderTheMouseIsNamedWithItsProgram)
{
    const std::optional<Picked> found = pickedAt(targetOnScreen(move(1)));

    ASSERT_TRUE(found);
    EXPECT_EQ(found->text, "Welding › weldBracket › Joint to above");
}

TEST_F(ProgramInViewTest, SelectedRowLooksSelectedInTheView)
{
    // Once selected, things are outlined: the frame is drawn in two steps from then on, and its edges are other ones.
    state().selectVisuals({move(1).getId()});
    settle();
    state().clear();
    settle();
    const QImage before = seen();

    state().selectVisuals({welding().getId()});
    settle();
    const QImage ofPath = seen();
    EXPECT_NE(ofPath, before);
    state().selectVisuals({vrk::layout::Layout::inst().tasks.front()->getId()});
    settle();

    // The program, whose visuals are its paths, and not the robot that runs it.
    EXPECT_THAT(state().getSelected(), ElementsAre(vrk::layout::Layout::inst().tasks.front()->getId()));
    EXPECT_EQ(seen(), ofPath);
    state().clear();
    settle();
    EXPECT_LT(differingShare(seen(), before), touchingShare);
}

TEST_F(ProgramInViewTest, DoubleClickOnATargetFliesToIt)
{
    const MoveInst& above = move(1);
    const vrk::rob::Posef before = camera();

    emit window().getProgramDock().focusRequested(above.getId());
    ASSERT_TRUE(waitFor([] { return !window().getFlight().isFlying(); }));
    settle();

    EXPECT_NE(camera().position, before.position);
    const QPoint middle = view().rect().center(), there = targetOnScreen(above);
    EXPECT_LT(std::abs(there.x() - middle.x()), view().width() / 4);
    EXPECT_LT(std::abs(there.y() - middle.y()), view().height() / 4);
    shoot("program_focus");
}

struct SwitchCase {
    const char* name;
    const char* key;
    ProgramPart part;
};
class ProgramSwitches : public ProgramInViewTest, public testing::WithParamInterface<SwitchCase> {};

TEST_P(ProgramSwitches, ChangesThePictureIsKeptAndBringsBackTheSameAsBefore)
{
    const auto [name, key, part] = GetParam();
    const bool atFirst = isDrawn(part);
    const QImage before = seen();
    const int targets = count(VisualType::Robtarget);

    const QImage other = after(key);
    EXPECT_GT(differingShare(other, before), touchingShare);
    EXPECT_EQ(isDrawn(part), !atFirst);
    EXPECT_EQ(window().getSettings().isDrawn(part), !atFirst);
    shoot(name);

    // Arrows, too, go again where lines go, and not from one frame to another.
    EXPECT_LT(differingShare(after(key), before), touchingShare);
    EXPECT_EQ(isDrawn(part), atFirst);
    draw(part, atFirst); // as it is: nothing is there twice
    settle();
    EXPECT_EQ(count(VisualType::Robtarget), targets);
    EXPECT_LT(differingShare(seen(), before), touchingShare);
}

TEST_P(ProgramSwitches, WhatIsSelectedStillLooksSo)
{
    state().selectVisuals({welding().getId()});
    settle();
    const QImage before = seen();
    after(GetParam().key);

    EXPECT_LT(differingShare(after(GetParam().key), before), touchingShare);
}

INSTANTIATE_TEST_SUITE_P(Table, ProgramSwitches,
                         testing::Values(SwitchCase{"Targets", "t", ProgramPart::Targets},
                                         SwitchCase{"Arrows", "a", ProgramPart::Arrows},
                                         SwitchCase{"Lines", "l", ProgramPart::Lines},
                                         SwitchCase{"ZAxesOnly", "z", ProgramPart::ZAxesOnly}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vrkview::test
