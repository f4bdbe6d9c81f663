#include "ProgramFixture.h"

#include "visual/VisualMark.h"
#include "visual/VisualStateManager.h"

#include <OgreMaterial.h>

#include <typeinfo>

/// The visuals of paths, moves, lines and arrows: what they are made of, and what they do when they are asked themselves.
namespace vrk::visual {
namespace {

using Ogre::Vector3;
using rob::Posd;
using rob::Posf;
using test::at;
using test::highlightedLook;
using test::looksOf;
using test::normalLook;
using test::scalesOf;
using test::selectedLook;
using test::targetOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class PathVisuals : public test::WithProgram<test::SceneFixture> {};

TEST_F(PathVisuals, PathHasItsNameTypeAndIdAndHangsOnTheWorld)
{
    show();

    const PathVisual* path = pathVisual();
    EXPECT_EQ(path->getName(), "Path_" + std::to_string(program.path->getId()));
    EXPECT_EQ(path->getType(), VisualType::Path);
    EXPECT_EQ(path->getId(), program.path->getId());
    EXPECT_EQ(path->getParent(), world);
    EXPECT_EQ(path->getPath(), program.path.get());
}

TEST_F(PathVisuals, MoveHasItsNameTypeAndIdAndHangsOnItsWorkObjectWithItsTarget)
{
    const task::MoveInst* move = program.linear(Posd(1, 2, 3));
    show();

    const MoveInstructionVisual* visual = visualOf(move);
    EXPECT_EQ(visual->getName(), "INSTRUCTION_" + std::to_string(move->getId()));
    EXPECT_EQ(visual->getType(), VisualType::MoveInstruction);
    EXPECT_EQ(visual->getId(), move->getId());
    EXPECT_EQ(visual->getParent(), frameVisual());
    EXPECT_EQ(visual->getMove(), move);
    EXPECT_EQ(visual->getTarget(), Scene::GetVisual(move->getTargetItemId()));
    EXPECT_EQ(visual->getTarget()->getType(), VisualType::Robtarget);
    EXPECT_EQ(visual->getTarget()->getParent(), visual);
    EXPECT_EQ(visual->getTarget()->getPosition(), Posf(1, 2, 3));
    EXPECT_EQ(visual->getCircle(), nullptr);
    EXPECT_EQ(visual->getArrow(), nullptr);
}

TEST_F(PathVisuals, CircularMoveShowsItsViaPointAsWell)
{
    const task::MoveInst* move = program.circular(Posd(10, 10, 0), Posd(20, 0, 0));
    show();

    const MoveInstructionVisual* visual = visualOf(move);
    ASSERT_NE(visual->getCircle(), nullptr);
    EXPECT_EQ(visual->getCircle(), Scene::GetVisual(move->getCircleItemId()));
    EXPECT_EQ(visual->getCircle()->getPosition(), Posf(10, 10, 0));
    EXPECT_EQ(visual->getTarget()->getPosition(), Posf(20, 0, 0));
}

TEST_F(PathVisuals, PostureIsShownAsAJointTarget)
{
    const task::MoveInst* move = program.posture(Posd(1, 2, 3));
    show();

    const InstanceFrameVisual* target = visualOf(move)->getTarget();
    EXPECT_EQ(target->getType(), VisualType::JointTarget);
    EXPECT_EQ(target, Scene::GetVisual(move->getTargetItemId()));
    EXPECT_EQ(target->getPosition(), Posf(1, 2, 3));
}

TEST_F(PathVisuals, MoveWhoseViaPointIsMissingFailsAndLeavesNothing)
{
    const task::MoveInst* move = program.circular(Posd(10, 10, 0), Posd(20, 0, 0));
    sdf::SdfManager::inst().remove(move->getCircleItemId());

    EXPECT_THROW(show(), std::bad_cast);

    EXPECT_FALSE(Scene::HasVisual(move->getId()));
    EXPECT_FALSE(Scene::HasVisual(move->getTargetItemId()));
    EXPECT_FALSE(sceneManager->hasSceneNode("INSTRUCTION_" + std::to_string(move->getId())));
    EXPECT_FALSE(sceneManager->hasSceneNode("ROBTARGET_" + std::to_string(move->getTargetItemId())));
}

TEST_F(PathVisuals, SolidMovesShareOneStrip)
{
    program.linear(Posd(0, 0, 0));
    program.linear(Posd(100, 0, 0));
    program.linear(Posd(100, 50, 0));
    show();

    ASSERT_THAT(lines(), SizeIs(1));
    const PathLineVisual* line = lines().front();
    EXPECT_TRUE(line->getName().starts_with("PathLine_0"));
    EXPECT_EQ(line->getParent(), frameVisual());
    EXPECT_FALSE(line->isDashed());
    EXPECT_EQ(line->getLine()->getRenderOpType(), RenderOpType::LineStrip);
    EXPECT_THAT(pointsOf(line), ElementsAre(Posf(0, 0, 0), Posf(100, 0, 0), Posf(100, 50, 0)));
    EXPECT_FALSE(line->getLine()->isDirty());
    EXPECT_EQ(materialOf(line), "PathLine");
}

TEST_F(PathVisuals, PathOfOneMoveHasNoLines)
{
    program.linear(Posd(0, 0, 0));
    show();

    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(PathVisuals, MovesAtOnePointDrawNothingAndTheStripGoesOn)
{
    program.linear(Posd(0, 0, 0));
    program.linear(Posd(100, 0, 0));
    program.linear(Posd(100.0005, 0, 0));
    program.linear(Posd(100, 50, 0));
    show();

    ASSERT_THAT(lines(), SizeIs(1));
    EXPECT_THAT(pointsOf(lines().front()), ElementsAre(Posf(0, 0, 0), Posf(100, 0, 0), Posf(100, 50, 0)));
}

TEST_F(PathVisuals, MovesAtOnePointAloneHaveALineWithoutPoints)
{
    program.linear(Posd(5, 0, 0));
    program.linear(Posd(5, 0, 0));
    show();

    ASSERT_THAT(lines(), SizeIs(1));
    EXPECT_EQ(lines().front()->getLine(), nullptr);
}

TEST_F(PathVisuals, CircularMoveGoesOnFromTheStripWithoutDoublingTheJoint)
{
    program.linear(Posd(0, -100, 0));
    program.linear(Posd(0, 0, 0));
    program.circular(Posd(10, 10, 0), Posd(20, 0, 0));
    show();

    ASSERT_THAT(lines(), SizeIs(1));
    const std::vector<Posf>& points = pointsOf(lines().front());
    ASSERT_THAT(points, SizeIs(22));
    EXPECT_EQ(points[1], Posf(0, 0, 0));
    EXPECT_NEAR((points[2] - points[1]).length(), 1.57f, 0.01f);
    EXPECT_NEAR((points[11] - Posf(10, 10, 0)).length(), 0, 1e-4f);
    EXPECT_NEAR((points[21] - Posf(20, 0, 0)).length(), 0, 1e-4f);
}

TEST_F(PathVisuals, CircularMoveWhoseViaPointLiesOnTheChordIsStraightWithAStraightArrow)
{
    program.linear(Posd(0, 0, 0));
    const task::MoveInst* move = program.circular(Posd(30, 0, 0), Posd(100, 0, 0));
    show();

    EXPECT_THAT(pointsOf(lines().front()), ElementsAre(Posf(0, 0, 0), Posf(100, 0, 0)));
    EXPECT_EQ(visualOf(move)->getArrow()->getPosition(), Posf(50, 0, 0));
    EXPECT_FLOAT_EQ(arrowScale(visualOf(move)), 0.5f);
}

TEST_F(PathVisuals, ChangeBetweenDashedAndSolidStartsANewLine)
{
    program.linear(Posd(0, 0, 0));
    program.linear(Posd(100, 0, 0));
    program.dashed(Posd(200, 0, 0));
    program.dashed(Posd(300, 0, 0));
    program.linear(Posd(400, 0, 0));
    show();

    ASSERT_THAT(lines(), SizeIs(3));
    EXPECT_TRUE(lines()[1]->isDashed());
    EXPECT_EQ(lines()[1]->getLine()->getRenderOpType(), RenderOpType::Lines);
    EXPECT_THAT(pointsOf(lines()[1]), SizeIs(20));
    EXPECT_THAT(pointsOf(lines()[0]), ElementsAre(Posf(0, 0, 0), Posf(100, 0, 0)));
    EXPECT_THAT(pointsOf(lines()[2]), ElementsAre(Posf(300, 0, 0), Posf(400, 0, 0)));
}

TEST_F(PathVisuals, PostureSplitsTheLineAndHasNoArrow)
{
    program.linear(Posd(0, 0, 0));
    program.linear(Posd(100, 0, 0));
    const task::MoveInst* posture = program.posture(Posd(500, 0, 0));
    const task::MoveInst* next = program.linear(Posd(200, 0, 0));
    program.linear(Posd(300, 0, 0));
    show();

    ASSERT_THAT(lines(), SizeIs(2));
    EXPECT_THAT(pointsOf(lines()[0]), ElementsAre(Posf(0, 0, 0), Posf(100, 0, 0)));
    EXPECT_THAT(pointsOf(lines()[1]), ElementsAre(Posf(200, 0, 0), Posf(300, 0, 0)));
    EXPECT_EQ(visualOf(posture)->getArrow(), nullptr);
    EXPECT_EQ(visualOf(next)->getArrow(), nullptr);
}

TEST_F(PathVisuals, LinesAndMovesFollowTheirWorkObjects)
{
    const auto other = program.addFrame(at(0, 0, 500));
    program.linear(Posd(0, 0, 0));
    program.linear(Posd(100, 0, 0));
    const task::MoveInst* first = program.linearIn(other, Posd(0, 0, 0));
    program.linearIn(other, Posd(100, 0, 0));
    show();

    ASSERT_THAT(lines(), SizeIs(2));
    EXPECT_EQ(lines()[0]->getParent(), frameVisual());
    EXPECT_EQ(lines()[1]->getParent(), Scene::GetVisual(other->getId()));
    EXPECT_EQ(visualOf(first)->getParent(), Scene::GetVisual(other->getId()));
    EXPECT_EQ(visualOf(first)->getArrow(), nullptr) << "between two work objects nothing is drawn";
    EXPECT_EQ(visualOf(first)->getTarget()->getWorldPosition(), Posf(0, 0, 500));
}

TEST_F(PathVisuals, InstructionsThatDrawNothingDoNotSplitTheLine)
{
    program.linear(Posd(0, 0, 0));
    const task::Instruction* call = program.call();
    const task::MoveInst* move = program.linear(Posd(100, 0, 0));
    show();

    EXPECT_THAT(lines(), SizeIs(1));
    EXPECT_NE(visualOf(move)->getArrow(), nullptr);
    EXPECT_FALSE(Scene::HasVisual(call->getId()));
}

TEST_F(PathVisuals, ArrowStandsInTheMiddleOfItsSegmentAlongIt)
{
    program.linear(Posd(0, 0, 0));
    const task::MoveInst* move = program.linear(Posd(0, 100, 0));
    show();

    const PathArrowVisual* arrow = visualOf(move)->getArrow();
    ASSERT_NE(arrow, nullptr);
    EXPECT_EQ(arrow->getParent(), visualOf(move));
    EXPECT_EQ(arrow->getPosition(), Posf(0, 50, 0));
    const rob::Dirf direction = arrow->getPose().rotation() * rob::Dirf(0, 0, 1);
    EXPECT_NEAR(direction.y, 1, 1e-6);
    EXPECT_THAT(looksOf(*arrow), ElementsAre("InstanceArrow"));
    EXPECT_EQ(test::instancesOf(*arrow).front()->_getOwner()->getRenderQueueGroup(), 60);
    EXPECT_FALSE(Scene::HasVisual(arrow->getId()));
}

TEST_F(PathVisuals, SegmentShorterThanOneHasNoArrowAndALongOneAWholeOne)
{
    program.linear(Posd(0, 0, 0));
    const task::MoveInst* brief = program.linear(Posd(0.9, 0, 0));
    const task::MoveInst* half = program.linear(Posd(100.9, 0, 0));
    const task::MoveInst* whole = program.linear(Posd(400, 0, 0));
    show();

    EXPECT_EQ(visualOf(brief)->getArrow(), nullptr);
    EXPECT_FLOAT_EQ(arrowScale(visualOf(half)), 0.5f);
    EXPECT_FLOAT_EQ(arrowScale(visualOf(whole)), 1);
}

TEST_F(PathVisuals, ArrowThatTakesOverTheInstanceOfAnotherIsWholeAndSeen)
{
    auto* small = new PathArrowVisual(world, nullptr, {{}, {0, 0, 1}, 0.1});
    small->setVisible(false, false);
    const Ogre::InstancedEntity* instance = test::instancesOf(*small).front();
    scene.deleteVisual(small);

    const auto* next = new PathArrowVisual(world, nullptr, {{}, {0, 0, 1}, 1});

    ASSERT_EQ(test::instancesOf(*next).front(), instance) << "OGRE gives it out again";
    EXPECT_THAT(scalesOf(*next), ElementsAre(Vector3(1, 1, 1)));
    EXPECT_THAT(looksOf(*next), ElementsAre("InstanceArrow"));
}

TEST_F(PathVisuals, ArrowOutsideTheTreeIsNotDrawn)
{
    PathArrowVisual arrow(world, nullptr, {{}, {0, 0, 1}, 1});

    arrow.detach();
    EXPECT_THAT(looksOf(arrow), IsEmpty());
    world->attachVisual(&arrow);
    EXPECT_THAT(looksOf(arrow), ElementsAre("InstanceArrow"));
    arrow.setVisible(false, true);
    EXPECT_THAT(looksOf(arrow), IsEmpty());
}

class LooksOfPaths : public PathVisuals {
protected:
    LooksOfPaths()
    {
        program.linear(Posd(0, 0, 0));
        program.call();
        move = program.circular(Posd(100, 100, 0), Posd(200, 0, 0));
        show();
    }
    std::vector<std::string> looks() const
    {
        const MoveInstructionVisual* visual = visualOf(move);
        std::vector<std::string> names = looksOf(*visual->getTarget());
        for (const std::string& name : looksOf(*visual->getCircle()))
            names.push_back(name);
        return names;
    }
    task::MoveInst* move;
};

TEST_F(LooksOfPaths, MoveForwardsItsLookToItsTargets)
{
    MoveInstructionVisual* visual = visualOf(move);

    visual->setSelected();
    EXPECT_THAT(looks(), ElementsAre(selectedLook, selectedLook));
    visual->setHighlighted();
    EXPECT_THAT(looks(), ElementsAre(highlightedLook, highlightedLook));
    visual->clearHighlightOrSelect();
    EXPECT_THAT(looks(), ElementsAre(normalLook, normalLook));
    visual->setSelected();
    visual->resetAppearance();
    EXPECT_THAT(looks(), ElementsAre(normalLook, normalLook));
    EXPECT_THAT(looksOf(*visual->getArrow()), ElementsAre("InstanceArrow")) << "it has one look";
}

TEST_F(LooksOfPaths, PathForwardsItsLookToItsMovesAndLines)
{
    PathVisual* path = pathVisual();

    path->setSelected();
    EXPECT_THAT(looks(), ElementsAre(selectedLook, selectedLook));
    EXPECT_EQ(materialOf(lines().front()), "PathLineSelected");
    path->setHighlighted();
    EXPECT_THAT(looks(), ElementsAre(highlightedLook, highlightedLook));
    EXPECT_EQ(materialOf(lines().front()), "PathLineHighlighted");
    path->clearHighlightOrSelect();
    EXPECT_THAT(looks(), ElementsAre(normalLook, normalLook));
    EXPECT_EQ(materialOf(lines().front()), "PathLine");
    path->setSelected();
    path->resetAppearance();
    EXPECT_THAT(looks(), ElementsAre(normalLook, normalLook));
    EXPECT_EQ(materialOf(lines().front()), "PathLine");
}

TEST_F(LooksOfPaths, HiddenMoveHidesItsPartsAndTakesItsTargetsOutOfPicking)
{
    MoveInstructionVisual* visual = visualOf(move);

    visual->setVisible(false, false);
    EXPECT_FALSE(visual->isVisible());
    EXPECT_THAT(looks(), IsEmpty());
    EXPECT_THAT(looksOf(*visual->getArrow()), IsEmpty());
    EXPECT_FALSE(picking.isEnabled(visual->getTarget()));
    EXPECT_FALSE(picking.isEnabled(visual->getCircle()));

    visual->setVisible(true, false);
    EXPECT_THAT(looks(), ElementsAre(normalLook, normalLook));
    EXPECT_THAT(looksOf(*visual->getArrow()), ElementsAre("InstanceArrow"));
    EXPECT_TRUE(picking.isEnabled(visual->getTarget()));
    EXPECT_TRUE(picking.isEnabled(visual->getCircle()));
}

TEST_F(LooksOfPaths, HiddenPathHidesItsMovesAndLines)
{
    pathVisual()->setVisible(false, false);
    EXPECT_FALSE(pathVisual()->isVisible());
    EXPECT_FALSE(visualOf(move)->isVisible());
    EXPECT_THAT(looks(), IsEmpty());
    EXPECT_FALSE(lines().front()->isVisible());

    pathVisual()->setVisible(true, true);
    EXPECT_THAT(looks(), ElementsAre(normalLook, normalLook));
    EXPECT_TRUE(lines().front()->isVisible());
}

TEST_F(LooksOfPaths, LookOfAPathOneOfWhoseMovesHasNoVisualFails)
{
    scene.deleteVisual(visualOf(move));

    const auto isFailure = testing::ThrowsMessage<std::out_of_range>("invalid unordered_map<K, T> key");
    EXPECT_THAT([&] { pathVisual()->setSelected(); }, isFailure);
    EXPECT_THAT([&] { pathVisual()->setHighlighted(); }, isFailure);
    EXPECT_THAT([&] { pathVisual()->resetAppearance(); }, isFailure);
    EXPECT_THAT([&] { pathVisual()->clearHighlightOrSelect(); }, isFailure);
    EXPECT_THAT([&] { pathVisual()->setVisible(false, false); }, isFailure);
}

TEST_F(LooksOfPaths, WhatIsMadeAnewUnderAHiddenPathIsHidden)
{
    pathVisual()->setVisible(false, false);

    visualOf(move)->updateFrom(move);
    pathVisual()->buildLines();
    settings.drawTargetVisual = false;
    visualOf(move)->buildTargets();
    settings.drawTargetVisual = true;
    visualOf(move)->buildTargets();

    EXPECT_THAT(looks(), IsEmpty());
    EXPECT_FALSE(picking.isEnabled(visualOf(move)->getTarget()));
    EXPECT_THAT(looksOf(*visualOf(move)->getArrow()), IsEmpty());
    EXPECT_FALSE(lines().front()->isVisible());
    EXPECT_FALSE(lines().front()->getLine()->isDirty()) << "a hidden line is brought up to date as well";
}

TEST_F(LooksOfPaths, WhatIsMadeAnewUnderASelectedPathLooksSo)
{
    pathVisual()->setSelected();

    pathVisual()->buildLines();
    settings.drawTargetVisual = false;
    visualOf(move)->buildTargets();
    settings.drawTargetVisual = true;
    visualOf(move)->buildTargets();

    EXPECT_THAT(looks(), ElementsAre(selectedLook, selectedLook));
    EXPECT_EQ(materialOf(lines().front()), "PathLineSelected");
    pathVisual()->resetAppearance();
    EXPECT_THAT(looks(), ElementsAre(normalLook, normalLook));
    EXPECT_EQ(materialOf(lines().front()), "PathLine");
}

TEST_F(LooksOfPaths, EndOfAPathsLookLeavesMovesAndTargetsTheirOwn)
{
    const task::MoveInst* first = program.path->getMoveInstructions().front();
    scene.setVisualsSelected({first->getId(), move->getCircleItemId()});
    scene.setVisualHighlighted(pathVisual());
    scene.clearHighlightedVisual();
    drain();

    EXPECT_THAT(looksOf(*visualOf(first)->getTarget()), ElementsAre(selectedLook));
    EXPECT_THAT(looks(), ElementsAre(normalLook, selectedLook));
}

TEST_F(LooksOfPaths, EndOfTheLookOfAMoveOrATargetLeavesThatOfTheirPath)
{
    scene.setVisualSelected(program.path->getId());
    for (const unsigned part : {move->getTargetItemId(), move->getCircleItemId(), move->getId()}) {
        SCOPED_TRACE(part);
        scene.setVisualHighlighted(part);
        drain();
        scene.clearHighlightedVisual();
        drain();
        EXPECT_THAT(looks(), ElementsAre(selectedLook, selectedLook));
    }

    scene.setVisualHighlighted(move->getTargetItemId());
    scene.clearSelections();
    scene.clearHighlightedVisual();
    drain();
    EXPECT_THAT(looks(), ElementsAre(normalLook, normalLook));
}

TEST_F(LooksOfPaths, EndOfTheLookOfATargetLeavesThatOfItsMove)
{
    scene.setVisualHighlighted(move->getId());
    {
        const SelectedVisual mark(visualOf(move)->getTarget());
        drain();
        EXPECT_THAT(looks(), ElementsAre(selectedLook, highlightedLook));
    }
    drain();

    EXPECT_THAT(looks(), ElementsAre(highlightedLook, highlightedLook));
}

TEST_F(LooksOfPaths, PathBelowOneOfItsOwnMovesIsShownOnce)
{
    scene.reparentVisual(program.path->getId(), move->getId());
    scene.setVisualSelected(program.path->getId());
    drain();
    EXPECT_THAT(looks(), ElementsAre(selectedLook, selectedLook));

    scene.clearSelections();
    drain();
    EXPECT_THAT(looks(), ElementsAre(normalLook, normalLook));
}

TEST_F(LooksOfPaths, PartRemovedByItsOwnIdIsForgotten)
{
    scene.deleteVisual(visualOf(move)->getTarget());
    scene.deleteVisual(visualOf(move)->getCircle());
    scene.deleteVisual(visualOf(move)->getArrow());
    scene.deleteVisual(lines().front());

    EXPECT_EQ(visualOf(move)->getTarget(), nullptr);
    EXPECT_EQ(visualOf(move)->getCircle(), nullptr);
    EXPECT_EQ(visualOf(move)->getArrow(), nullptr);
    EXPECT_THAT(lines(), IsEmpty());
    visualOf(move)->setSelected();
    visualOf(move)->setVisible(false, false);
    pathVisual()->setHighlighted();
    visualOf(move)->updateFrom(move);
    EXPECT_NE(visualOf(move)->getArrow(), nullptr);
}

TEST_F(LooksOfPaths, PartThatHangsElsewhereOutlivesItsMoveAndItsPath)
{
    InstanceFrameVisual* target = visualOf(move)->getTarget();
    PathArrowVisual* arrow = visualOf(move)->getArrow();
    world->attachVisual(target);
    world->attachVisual(arrow);

    scene.deleteVisual(visualOf(move));

    EXPECT_EQ(target->getParent(), world);
    EXPECT_THAT(looksOf(*target), ElementsAre(normalLook));
    scene.deleteVisual(target);
    scene.deleteVisual(arrow);
}

TEST_F(LooksOfPaths, WorkObjectThatGoesTakesItsMovesAndLinesAlong)
{
    PathVisual* path = pathVisual();

    scene.deleteVisual(frameVisual());

    EXPECT_THAT(path->getLines(), IsEmpty());
    EXPECT_FALSE(Scene::HasVisual(move->getId()));
    EXPECT_FALSE(Scene::HasVisual(move->getTargetItemId()));
    scene.deleteVisual(path);
}

TEST_F(LooksOfPaths, PathThatGoesTakesItsLinesAlongAndLeavesItsMoves)
{
    const std::size_t before = childrenOf(frameVisual()).size();

    scene.deleteVisual(pathVisual());

    EXPECT_EQ(childrenOf(frameVisual()).size(), before - 1);
    EXPECT_TRUE(Scene::HasVisual(move->getId()));
}

TEST_F(LooksOfPaths, MoveThatGoesTakesItsPartsAlong)
{
    const std::size_t registered = picking.registeredVisuals().size();

    scene.deleteVisual(visualOf(move));

    EXPECT_FALSE(Scene::HasVisual(move->getTargetItemId()));
    EXPECT_FALSE(Scene::HasVisual(move->getCircleItemId()));
    EXPECT_EQ(picking.registeredVisuals().size(), registered - 2);
}

} // namespace
} // namespace vrk::visual
