#include "ProgramFixture.h"

#include "platform/broker/SignalBroker.h"
#include "platform/smart/StationLogic.h"
#include "support/ThrowsExactly.h"
#include "view/Camera.h"

#include <cmath>

/// What the scene does to robot programs: which of it at the call and which on the render thread, and how it fails.
namespace vrk::visual {
namespace {

using rob::Posd;
using rob::Posf;
using test::at;
using test::highlightedLook;
using test::looksOf;
using test::normalLook;
using test::selectedLook;
using test::targetOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const auto failsUnknown = test::throwsExactly<std::out_of_range>("invalid unordered_map<K, T> key");

class SceneTasks : public test::WithProgram<test::SceneFixture> {
protected:
    /// Three moves along x, of 100 each.
    void addThree()
    {
        for (int i = 0; i < 3; ++i)
            moves.push_back(program.linear(Posd(100.0 * i, 0, 0)));
    }
    void showFrames()
    {
        scene.addWObj(program.frame.get());
        drain();
    }
    std::size_t arrowsOf(const task::MoveInst* move) const
    {
        std::size_t count = 0;
        for (Visual* child : childrenOf(visualOf(move)))
            count += dynamic_cast<PathArrowVisual*>(child) ? 1 : 0;
        return count;
    }
    std::size_t targetsOf(const task::MoveInst* move) const
    {
        return childrenOf(visualOf(move)).size() - arrowsOf(move);
    }

    std::vector<task::MoveInst*> moves;
};

TEST_F(SceneTasks, TaskIsAddedByAPost)
{
    addThree();

    scene.addTask(program.task->getId());
    EXPECT_FALSE(Scene::HasVisual(program.path->getId()));
    drain();

    EXPECT_TRUE(Scene::HasVisual(program.frame->getId()));
    EXPECT_THAT(lines(), SizeIs(1));
    EXPECT_EQ(arrowsOf(moves[0]), 0u);
    EXPECT_EQ(arrowsOf(moves[1]), 1u);
    EXPECT_EQ(arrowsOf(moves[2]), 1u);
}

TEST_F(SceneTasks, IdThatIsNoTaskBuildsNothing)
{
    scene.addTask(program.path->getId());
    scene.addTask(4711);
    drain();

    EXPECT_FALSE(Scene::HasVisual(program.path->getId()));
}

TEST_F(SceneTasks, PathsOfATaskAreBuiltInTheirOrder)
{
    addThree();
    program.path = program.addPath();
    const task::MoveInst* other = program.linear(Posd(0, 0, 50));

    show();

    EXPECT_THAT(pathVisual()->getLines(), IsEmpty());
    EXPECT_EQ(visualOf(other)->getArrow(), nullptr) << "its path begins with it";
    EXPECT_EQ(Scene::GetVisual(program.task->getPaths().front())->getType(), VisualType::Path);
}

TEST_F(SceneTasks, WorkObjectsHangOnTheirOwnerAndMovesOnThem)
{
    const auto carrier = std::make_shared<sdf::SdfNode>(sdf::ModelType::Frame, program.newId(), "table");
    carrier->setPose(at(0, 0, 300));
    program.entered(carrier);
    scene.addFrame(carrier.get());
    drain();
    program.frame->setOwnerId(carrier->getId());
    addThree();

    show();

    EXPECT_EQ(frameVisual()->getParent()->getId(), carrier->getId());
    EXPECT_EQ(visualOf(moves[1])->getTarget()->getWorldPosition(), Posf(100, 0, 300));
}

TEST_F(SceneTasks, ToolDataOfAnOwnerWithoutVisualFails)
{
    auto tool = std::make_shared<task::ToolDataItem>(program.newId(), "gun");
    tool->setOwnerId(4711);
    program.task->addDataItem(tool);
    program.entered(tool);

    scene.addTask(program.task->getId());

    EXPECT_THAT([&] { drain(); }, failsUnknown);
}

TEST_F(SceneTasks, PostureWithoutWorkObjectHangsOnWhoOwnsTheProgram)
{
    const auto owner = std::make_shared<sdf::SdfNode>(sdf::ModelType::Frame, program.newId(), "robot");
    program.entered(owner);
    scene.addFrame(owner.get());
    drain();
    program.task->setOwnerId(owner->getId());
    task::MoveInst* posture = program.posture(Posd(1, 2, 3));
    posture->setWObjItem(nullptr);
    task::MoveInst* place = program.linear(Posd(1, 2, 3));
    place->setWObjItem(nullptr);

    show();
    EXPECT_EQ(visualOf(posture)->getParent()->getId(), owner->getId());
    EXPECT_EQ(visualOf(place)->getParent(), world);

    scene.deleteVisual(visualOf(posture));
    scene.deleteVisual(visualOf(place));
    scene.deleteVisual(pathVisual());
    scene.addPath(program.path.get());
    drain();
    EXPECT_EQ(visualOf(posture)->getParent()->getId(), owner->getId());
    EXPECT_EQ(visualOf(place)->getParent(), world);
}

TEST_F(SceneTasks, PathIsAddedByAPostForItAndOneForEachMove)
{
    addThree();
    showFrames();
    int posts = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++posts; });

    scene.addPath(program.path.get());
    EXPECT_EQ(posts, 4);
    EXPECT_FALSE(Scene::HasVisual(program.path->getId()));
    drain();

    EXPECT_THAT(lines(), SizeIs(1));
    EXPECT_EQ(arrowsOf(moves[0]), 0u);
    EXPECT_EQ(arrowsOf(moves[2]), 1u);
}

TEST_F(SceneTasks, AddedPathLooksForItsWorkObjectsAtTheCall)
{
    addThree();

    EXPECT_THAT([&] { scene.addPath(program.path.get()); }, failsUnknown);
    drain();

    EXPECT_FALSE(Scene::HasVisual(program.path->getId()));
}

TEST_F(SceneTasks, AddedPathPassesOverMovesWhoseWorkObjectGoesBeforeIt)
{
    addThree();
    showFrames();
    scene.removeVisual(program.frame->getId());
    scene.addPath(program.path.get());

    EXPECT_THAT([&] { drain(); }, failsUnknown) << "its lines hang nowhere";
    EXPECT_FALSE(Scene::HasVisual(program.path->getId()));
    EXPECT_FALSE(Scene::HasVisual(moves[0]->getId()));
}

TEST_F(SceneTasks, BuiltMoveHasNoArrowAndLeavesTheLinesAlone)
{
    addThree();
    show();
    task::MoveInst* move = program.linear(Posd(300, 0, 0));

    scene.buildMoveInstruction(move);
    EXPECT_FALSE(Scene::HasVisual(move->getId()));
    drain();
    EXPECT_EQ(visualOf(move)->getParent(), frameVisual());
    EXPECT_EQ(arrowsOf(move), 0u);
    EXPECT_THAT(pointsOf(lines().front()), SizeIs(3));

    scene.updatePath(program.path->getId());
    drain();
    EXPECT_EQ(arrowsOf(move), 1u);
    EXPECT_THAT(pointsOf(lines().front()), SizeIs(4));
}

TEST_F(SceneTasks, BuiltPostureHangsOnTheOwnerOfItsTask)
{
    const auto owner = std::make_shared<sdf::SdfNode>(sdf::ModelType::Frame, program.newId(), "robot");
    program.entered(owner);
    scene.addFrame(owner.get());
    program.task->setOwnerId(owner->getId());
    task::MoveInst* posture = program.posture(Posd(1, 2, 3)); // which has a work object

    scene.buildMoveInstruction(posture);
    drain();
    EXPECT_EQ(visualOf(posture)->getParent()->getId(), owner->getId());

    for (const unsigned station : {0u, smartcomp::StationLogic::inst()->getId()}) {
        scene.removeVisual(posture->getId());
        program.task->setOwnerId(station);
        scene.buildMoveInstruction(posture);
        drain();
        EXPECT_EQ(visualOf(posture)->getParent(), world);
    }
}

TEST_F(SceneTasks, BuiltMoveReadsItsParentAtTheCallAndLooksForItInTheTask)
{
    task::MoveInst* move = program.linear(Posd(0, 0, 0));
    const auto other = program.addFrame(at(0, 0, 0));

    scene.buildMoveInstruction(move);
    move->setWObjItem(other);

    EXPECT_THAT([&] { drain(); }, failsUnknown);
    move->setWObjItem(program.frame);
    scene.buildMoveInstruction(move);
    move->setWObjItem(other);
    scene.addRenderTask([] {}, 0);
    EXPECT_THAT([&] { drain(); }, failsUnknown) << "it has no visual either";
    move->setWObjItem(program.frame);
    showFrames();
    scene.buildMoveInstruction(move);
    move->setWObjItem(other);
    drain();
    EXPECT_EQ(visualOf(move)->getParent(), frameVisual());
}

TEST_F(SceneTasks, BuiltMovesHaveArrowsAndTheLinesOfTheLastOnesPath)
{
    addThree();
    show();
    task::MoveInst* fourth = program.linear(Posd(300, 0, 0));
    task::MoveInst* fifth = program.linear(Posd(400, 0, 0));
    const unsigned frame = program.frame->getId();

    scene.buildMoveInstructions({{moves[2], fourth, frame}, {nullptr, fifth, 0}});
    EXPECT_FALSE(Scene::HasVisual(fourth->getId()));
    drain();

    EXPECT_EQ(arrowsOf(fourth), 1u);
    EXPECT_EQ(arrowsOf(fifth), 0u) << "it was given no move before";
    EXPECT_EQ(visualOf(fifth)->getParent(), world);
    EXPECT_THAT(pointsOf(lines().front()), SizeIs(5));
}

TEST_F(SceneTasks, BuiltMovesOfNoPathAndNoMovesAtAllLeaveTheLinesAlone)
{
    addThree();
    show();
    const auto loose = program.entered(std::make_shared<task::MoveInst>(program.newId(), "move", task::Motion::Linear,
                                                                        program.addTarget(at(1, 1, 1))));
    const PathLineVisual* line = lines().front();

    scene.buildMoveInstructions({});
    scene.buildMoveInstructions({{nullptr, loose.get(), program.frame->getId()}});
    drain();

    EXPECT_TRUE(Scene::HasVisual(loose->getId()));
    EXPECT_EQ(lines().front(), line);
}

TEST_F(SceneTasks, BuiltMovesUnderAnUnknownParentFail)
{
    task::MoveInst* move = program.linear(Posd(0, 0, 0));

    scene.buildMoveInstructions({{nullptr, move, 4711}});

    EXPECT_THAT([&] { drain(); }, failsUnknown);
}

TEST_F(SceneTasks, UpdatedPathMovesItsTargetsAndMakesItsArrowsAndLinesAnew)
{
    addThree();
    show();
    const InstanceFrameVisual* target = visualOf(moves[1])->getTarget();
    targetOf(moves[1]).setPose(at(100, 80, 0));

    scene.updatePath(program.path->getId());
    EXPECT_EQ(target->getPosition(), Posf(100, 0, 0));
    drain();

    EXPECT_EQ(visualOf(moves[1])->getTarget(), target);
    EXPECT_EQ(target->getPosition(), Posf(100, 80, 0));
    EXPECT_EQ(pointsOf(lines().front())[1], Posf(100, 80, 0));
    EXPECT_EQ(visualOf(moves[1])->getArrow()->getPosition(), Posf(50, 40, 0));
    EXPECT_EQ(visualOf(moves[2])->getArrow()->getPosition(), Posf(150, 40, 0));
    EXPECT_EQ(arrowsOf(moves[1]), 1u);
}

TEST_F(SceneTasks, UpdatedPathMovesViaPoints)
{
    program.linear(Posd(0, 0, 0));
    task::MoveInst* move = program.circular(Posd(100, 100, 0), Posd(200, 0, 0));
    show();
    move->getCircleItem()->setPose(at(100, -100, 0));

    scene.updatePath(program.path->getId());
    drain();

    EXPECT_EQ(visualOf(move)->getCircle()->getPosition(), Posf(100, -100, 0));
    EXPECT_NEAR(visualOf(move)->getArrow()->getPosition().y, -100, 1e-3);
}

TEST_F(SceneTasks, PathWithoutMovesIgnoresAnUpdateAndKeepsItsOldLines)
{
    addThree();
    show();
    const PathLineVisual* line = lines().front();
    for (const task::MoveInst* move : moves)
        program.path->removeInstruction(move->getId());

    scene.updatePath(program.path->getId());
    scene.updatePath(4711);
    drain();

    EXPECT_THAT(lines(), ElementsAre(line));
}

TEST_F(SceneTasks, UpdatePassesOverMovesWithoutVisualAndIdsOfAnotherClass)
{
    addThree();
    show();
    scene.deleteVisual(visualOf(moves[0]));
    scene.deleteVisual(visualOf(moves[1]));
    auto* impostor = new Visual(moves[1]->getId(), world);
    SceneCore::Get()->visuals.enter(impostor);
    targetOf(moves[2]).setPose(at(100, 80, 0));

    scene.updatePath(program.path->getId());
    drain();

    EXPECT_EQ(visualOf(moves[2])->getTarget()->getPosition(), Posf(100, 80, 0));
    EXPECT_THAT(pointsOf(lines().front()), SizeIs(3));
}

TEST_F(SceneTasks, UpdateOfAPathWithoutVisualUpdatesItsMoves)
{
    addThree();
    show();
    scene.deleteVisual(pathVisual());
    targetOf(moves[2]).setPose(at(100, 80, 0));

    scene.updatePath(program.path->getId());
    drain();

    EXPECT_EQ(visualOf(moves[2])->getTarget()->getPosition(), Posf(100, 80, 0));
}

TEST_F(SceneTasks, PathsAreUpdatedInOneTask)
{
    addThree();
    program.path = program.addPath();
    const task::MoveInst* other = program.linear(Posd(0, 0, 50));
    show();
    targetOf(moves[0]).setPose(at(0, 1, 0));
    targetOf(other).setPose(at(0, 2, 0));
    int posts = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++posts; });

    scene.updatePaths(program.task->getPaths());
    EXPECT_EQ(posts, 1);
    drain();

    EXPECT_EQ(visualOf(moves[0])->getTarget()->getPosition(), Posf(0, 1, 0));
    EXPECT_EQ(visualOf(other)->getTarget()->getPosition(), Posf(0, 2, 0));
}

TEST_F(SceneTasks, UpdatedInstructionMovesItselfAndMakesItsArrowAndAllLinesAnew)
{
    addThree();
    show();
    const PathArrowVisual* nextArrow = visualOf(moves[2])->getArrow();
    targetOf(moves[1]).setPose(at(100, 80, 0));

    scene.updateInstruction(moves[1]->getId());
    EXPECT_EQ(visualOf(moves[1])->getTarget()->getPosition(), Posf(100, 0, 0));
    drain();

    EXPECT_EQ(visualOf(moves[1])->getTarget()->getPosition(), Posf(100, 80, 0));
    EXPECT_EQ(visualOf(moves[1])->getArrow()->getPosition(), Posf(50, 40, 0));
    EXPECT_EQ(visualOf(moves[2])->getArrow(), nextArrow) << "that of the next move waits for its own update";
    EXPECT_EQ(nextArrow->getPosition(), Posf(150, 0, 0));
    EXPECT_EQ(pointsOf(lines().front())[1], Posf(100, 80, 0));
}

TEST_F(SceneTasks, UpdatedInstructionLosesItsArrowWhereNothingIsDrawnAnyMore)
{
    addThree();
    show();
    moves[1]->setTargetItem(program.addPosture(at(100, 0, 0)));

    scene.doUpdateInstruction(moves[1]->getId());

    EXPECT_EQ(arrowsOf(moves[1]), 0u);
    EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(SceneTasks, UpdatedInstructionWithoutVisualFails)
{
    addThree();
    show();
    scene.deleteVisual(visualOf(moves[1]));

    scene.updateInstruction(moves[1]->getId());
    EXPECT_THAT([&] { drain(); }, testing::ThrowsMessage<std::bad_optional_access>("Bad optional access"));
    EXPECT_THROW(scene.doUpdateInstruction(program.path->getId()), std::bad_optional_access)
        << "a visual of another class";
}

TEST_F(SceneTasks, MoveIsHungElsewhereAndKeepsItsPlaceThere)
{
    addThree();
    const auto other = program.addFrame(at(0, 0, 500));
    show();
    MoveInstructionVisual* visual = visualOf(moves[1]);

    scene.upadateInstructionParent(moves[1]->getId(), other->getId());
    EXPECT_EQ(visual->getParent(), frameVisual());
    drain();
    EXPECT_EQ(visual->getParent(), Scene::GetVisual(other->getId()));
    EXPECT_EQ(visual->getTarget()->getWorldPosition(), Posf(100, 0, 500));

    scene.upadateInstructionParent(moves[1]->getId(), 0);
    drain();
    EXPECT_EQ(visual->getParent(), world);
    scene.upadateInstructionParent(moves[1]->getId(), 4711);
    EXPECT_THAT([&] { drain(); }, failsUnknown);
    scene.upadateInstructionParent(4711, 0);
    EXPECT_THAT([&] { drain(); }, failsUnknown);
}

TEST_F(SceneTasks, RemovedPathGoesWithItsMovesAsTheyWereAtTheCall)
{
    addThree();
    program.call();
    show();
    const std::size_t before = childrenOf(frameVisual()).size();

    scene.removePathVisual(program.path->getId());
    program.path->removeInstruction(moves[2]->getId());
    EXPECT_TRUE(Scene::HasVisual(moves[0]->getId()));
    drain();

    for (const task::MoveInst* move : moves)
        EXPECT_FALSE(Scene::HasVisual(move->getId()) || Scene::HasVisual(move->getTargetItemId()));
    EXPECT_FALSE(Scene::HasVisual(program.path->getId()));
    EXPECT_EQ(childrenOf(frameVisual()).size(), before - 4) << "three moves and a line";
}

TEST_F(SceneTasks, RemovalOfAnUnknownPathIsPassedOverAndOfOneWithoutVisualFails)
{
    scene.removePathVisual(4711);
    drain();

    scene.removePathVisual(program.path->getId());
    EXPECT_THAT([&] { drain(); }, failsUnknown);
}

TEST_F(SceneTasks, ArrowsGoAndComeWithTheirSwitch)
{
    addThree();
    show();

    scene.setDrawPathArrow(false);
    EXPECT_FALSE(settings.drawPathArrow);
    EXPECT_EQ(arrowsOf(moves[1]), 1u);
    drain();
    EXPECT_EQ(arrowsOf(moves[1]), 0u);
    EXPECT_EQ(visualOf(moves[1])->getArrow(), nullptr);
    scene.updatePath(program.path->getId());
    drain();
    EXPECT_EQ(arrowsOf(moves[1]), 0u);

    scene.setDrawPathArrow(true);
    drain();
    EXPECT_EQ(arrowsOf(moves[0]), 0u);
    EXPECT_EQ(arrowsOf(moves[1]), 1u);
    EXPECT_EQ(arrowsOf(moves[2]), 1u);
}

TEST_F(SceneTasks, ArrowsThatAreSwitchedOnTwiceStandBesideTheOldOnes)
{
    addThree();
    show();

    scene.setDrawPathArrow(true);
    drain();
    EXPECT_EQ(arrowsOf(moves[1]), 2u);

    scene.setDrawPathArrow(false);
    drain();
    EXPECT_EQ(arrowsOf(moves[1]), 1u) << "the old one is nobody's";
    scene.deleteVisual(visualOf(moves[1]));
}

TEST_F(SceneTasks, ArrowsThatAreSwitchedOnGoFromEachMoveToTheNextWhateverTheyAre)
{
    program.linear(Posd(0, 0, 0));
    const task::MoveInst* posture = program.posture(Posd(100, 0, 0));
    const task::MoveInst* elsewhere = program.linearIn(program.addFrame(at(0, 0, 9)), Posd(200, 0, 0));
    show();
    EXPECT_EQ(arrowsOf(posture) + arrowsOf(elsewhere), 0u);

    scene.setDrawPathArrow(true);
    drain();

    EXPECT_EQ(arrowsOf(posture), 1u);
    EXPECT_EQ(arrowsOf(elsewhere), 1u);
}

TEST_F(SceneTasks, SwitchOfArrowsPassesOverMovesWithoutVisual)
{
    addThree();
    settings.drawPathArrow = false;
    show();
    scene.deleteVisual(visualOf(moves[1]));

    scene.setDrawPathArrow(true);
    drain();

    EXPECT_EQ(visualOf(moves[2])->getArrow()->getPosition(), Posf(100, 0, 0)) << "from the first to the third";
}

TEST_F(SceneTasks, LinesGoAndComeWithTheirSwitch)
{
    addThree();
    show();

    scene.setDrawSegVisual(false);
    EXPECT_FALSE(settings.drawSegVisual);
    EXPECT_THAT(lines(), SizeIs(1));
    drain();
    EXPECT_THAT(lines(), IsEmpty());

    scene.setDrawSegVisual(true);
    drain();
    EXPECT_THAT(lines(), SizeIs(1));
}

TEST_F(SceneTasks, SwitchOfLinesReadsTheRegistryAtTheCall)
{
    addThree();
    int posts = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++posts; });
    scene.setDrawSegVisual(false);
    EXPECT_EQ(posts, 0) << "no path is there";
    settings.drawSegVisual = true;
    show();

    scene.setDrawSegVisual(false);
    EXPECT_EQ(posts, 1);
}

TEST_F(SceneTasks, TargetsGoAndComeWithTheirSwitch)
{
    addThree();
    moves.push_back(program.circular(Posd(250, 50, 0), Posd(300, 0, 0)));
    moves.push_back(program.posture(Posd(9, 9, 9)));
    show();

    scene.setDrawTargetVisual(false);
    EXPECT_FALSE(settings.drawTargetVisual);
    EXPECT_EQ(targetsOf(moves[3]), 2u);
    drain();
    for (const task::MoveInst* move : moves) {
        EXPECT_EQ(targetsOf(move), 0u);
        EXPECT_EQ(visualOf(move)->getTarget(), nullptr);
        EXPECT_FALSE(Scene::HasVisual(move->getTargetItemId()));
    }
    EXPECT_EQ(visualOf(moves[3])->getCircle(), nullptr);
    scene.updatePath(program.path->getId());
    drain();

    scene.setDrawTargetVisual(true);
    drain();
    EXPECT_EQ(targetsOf(moves[0]), 1u);
    EXPECT_EQ(targetsOf(moves[3]), 2u);
    EXPECT_EQ(visualOf(moves[4])->getTarget()->getType(), VisualType::JointTarget);
}

TEST_F(SceneTasks, MoveThatHangsOnItsOwnTargetGoesWithItAndTheOthersStay)
{
    addThree();
    moves.push_back(program.circular(Posd(250, 50, 0), Posd(300, 0, 0)));
    show();
    for (const std::size_t i : {1u, 3u}) {
        const unsigned target = visualOf(moves[i])->getTarget()->getId();
        scene.reparentVisual(target, 0); // else it hangs on the move
        scene.reparentVisual(moves[i]->getId(), target);
    }
    drain();
    ASSERT_EQ(visualOf(moves[3])->getParent(), visualOf(moves[3])->getTarget());

    scene.setDrawTargetVisual(false);
    drain();

    EXPECT_FALSE(Scene::HasVisual(moves[1]->getId()));
    EXPECT_FALSE(Scene::HasVisual(moves[3]->getId()));
    EXPECT_EQ(visualOf(moves[0])->getTarget(), nullptr);
    EXPECT_EQ(visualOf(moves[2])->getTarget(), nullptr);
}

TEST_F(SceneTasks, TargetsThatAreSwitchedOnTwiceStandBesideTheOldOnes)
{
    addThree();
    moves.push_back(program.circular(Posd(250, 50, 0), Posd(300, 0, 0)));
    show();
    const InstanceFrameVisual* first = visualOf(moves[3])->getTarget();

    scene.setDrawTargetVisual(true);
    drain();

    EXPECT_EQ(targetsOf(moves[0]), 2u);
    EXPECT_EQ(targetsOf(moves[3]), 4u);
    EXPECT_NE(visualOf(moves[3])->getTarget(), first);
    EXPECT_EQ(Scene::GetVisual(moves[3]->getTargetItemId()), visualOf(moves[3])->getTarget());
    scene.deleteVisual(visualOf(moves[3]));
}

TEST_F(SceneTasks, ProgramBuiltWithEverythingSwitchedOffHasMovesAlone)
{
    settings.drawTargetVisual = settings.drawPathArrow = settings.drawSegVisual = false;
    addThree();

    show();

    EXPECT_THAT(lines(), IsEmpty());
    EXPECT_THAT(childrenOf(visualOf(moves[1])), IsEmpty());
}

TEST_F(SceneTasks, ZAxesAloneWhileTargetsAreOffIsOnlyStored)
{
    addThree();
    show();
    scene.setDrawTargetVisual(false);
    drain();
    int posts = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++posts; });

    scene.setDrawTargetZAxisOnly(true);

    EXPECT_TRUE(settings.drawTargetZAxisOnly);
    EXPECT_EQ(posts, 0);
}

TEST_F(SceneTasks, TargetsAndArrowsThatAppearAskForOneMoreFrame)
{
    addThree();
    int told = 0;
    const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++told; });
    show();
    drain();
    EXPECT_EQ(told, 1) << "no post, and one for the new targets";

    scene.setDrawPathArrow(false);
    drain();
    EXPECT_EQ(told, 2) << "the post alone";
    scene.setDrawPathArrow(true);
    drain();
    EXPECT_EQ(told, 4);
    scene.setDrawTargetVisual(false);
    drain();
    EXPECT_EQ(told, 5);
    scene.setDrawTargetVisual(true);
    drain();
    EXPECT_EQ(told, 7);
}

TEST_F(SceneTasks, SelectionOfATaskReachesItsMovesAndLines)
{
    addThree();
    show();

    scene.setVisualSelected(program.task->getId());
    drain();
    EXPECT_THAT(looksOf(*visualOf(moves[1])->getTarget()), ElementsAre(selectedLook));
    EXPECT_EQ(materialOf(lines().front()), "PathLineSelected");
    EXPECT_TRUE(scene.isSelected(pathVisual()));

    scene.clearSelectedVisuals();
    drain();
    EXPECT_THAT(looksOf(*visualOf(moves[1])->getTarget()), ElementsAre(normalLook));
    EXPECT_EQ(materialOf(lines().front()), "PathLine");
}

TEST_F(SceneTasks, SelectionOfAnOperationReachesThePathsAndMovesThatItNames)
{
    addThree();
    program.path = program.addPath();
    const task::MoveInst* other = program.linear(Posd(0, 0, 50));
    show();
    const auto operation = std::make_shared<task::Operation>(program.newId(), "weld");
    operation->addMember(moves[1]->getId());
    operation->addMember(program.path->getId());
    program.entered(operation);

    scene.setVisualSelected(operation->getId());
    drain();

    EXPECT_THAT(looksOf(*visualOf(moves[0])->getTarget()), ElementsAre(normalLook));
    EXPECT_THAT(looksOf(*visualOf(moves[1])->getTarget()), ElementsAre(selectedLook));
    EXPECT_THAT(looksOf(*visualOf(other)->getTarget()), ElementsAre(selectedLook));
}

TEST_F(SceneTasks, HighlightOfAMoveAndOfAPathReachTheirTargets)
{
    addThree();
    show();

    scene.setVisualHighlighted(moves[1]->getId());
    drain();
    EXPECT_THAT(looksOf(*visualOf(moves[1])->getTarget()), ElementsAre(highlightedLook));
    scene.setVisualHighlighted(program.path->getId());
    drain();
    EXPECT_THAT(looksOf(*visualOf(moves[0])->getTarget()), ElementsAre(highlightedLook));
    EXPECT_EQ(materialOf(lines().front()), "PathLineHighlighted");
    scene.clearHighlightedVisual();
    drain();
    EXPECT_THAT(looksOf(*visualOf(moves[1])->getTarget()), ElementsAre(normalLook));
}

TEST_F(SceneTasks, PathHiddenByItsIdIsOutOfPicking)
{
    addThree();
    show();

    scene.setVisualVisible(program.path->getId(), false);
    drain();
    EXPECT_FALSE(picking.isEnabled(visualOf(moves[1])->getTarget()));
    EXPECT_THAT(looksOf(*visualOf(moves[1])->getTarget()), IsEmpty());
    EXPECT_FALSE(lines().front()->isVisible());

    scene.setVisualVisible(program.path->getId(), true);
    drain();
    EXPECT_TRUE(picking.isEnabled(visualOf(moves[1])->getTarget()));
}

TEST_F(SceneTasks, TargetOfAMoveIsPickedAndItsLineIsNot)
{
    program.linear(Posd(0, 0, 0));
    const task::MoveInst* move = program.linear(Posd(20000, 0, 0));
    show();
    picking.update();

    const selection::Result target = picking.select(Ray({20000, 20, 500}, {0, 0, -1}));
    const selection::Result line = picking.select(Ray({10000, 0, 500}, {0, 0, -1}));

    EXPECT_TRUE(target.hit);
    EXPECT_EQ(target.visual, visualOf(move)->getTarget());
    EXPECT_FALSE(line.hit);
}

TEST_F(SceneTasks, WorkObjectThatMovesCarriesTheProgram)
{
    addThree();
    show();
    program.frame->setPose(at(0, 0, 70));

    scene.updateWObj(program.frame->getId());
    drain();

    EXPECT_EQ(visualOf(moves[1])->getTarget()->getWorldPosition(), Posf(100, 0, 70));
    EXPECT_EQ(lines().front()->getWorldPosition(), Posf(0, 0, 70));
}

class FocusOnMoves : public test::WithProgram<test::RenderTest> {
protected:
    /// Where the camera goes for a box of 50 with its corner at `corner`.
    static Posf expectedPosition(const Posf& corner)
    {
        const Camera& camera = *Camera::Get();
        const float radius = std::sqrt(3.0f) * 25;
        const float distance = radius / std::sin(camera.getVFOV() * 0.25f);
        const rob::Dirf dir = camera.getWorldRotation() * rob::Dirf(0, 0, -1);
        return corner + rob::Vec3f(25, 25, 25) - dir * distance;
    }
};

TEST_F(FocusOnMoves, MoveIsSeenAsABoxOfTheTargetsSizeAtItsTarget)
{
    program.frame->setPose(at(0, 0, 400));
    const task::MoveInst* move = program.linear(Posd(100, 20, 3));
    const task::MoveInst* posture = program.posture(Posd(-100, 0, 0));
    show();

    for (const bool areTargetsDrawn : {true, false}) {
        scene.setDrawTargetVisual(areTargetsDrawn);
        drain();
        const rob::Posef pose = scene.getVisualFocusPose(move->getId());
        EXPECT_NEAR((pose.position - expectedPosition({100, 20, 403})).length(), 0, 1e-2f) << areTargetsDrawn;
        EXPECT_EQ(pose.rotation(), Camera::Get()->getWorldRotation());
        EXPECT_NEAR((scene.getVisualFocusPose(posture->getId()).position - expectedPosition({-100, 0, 400})).length(),
                    0, 1e-2f);
    }
}

TEST_F(FocusOnMoves, FollowsTheSizeOfTargets)
{
    const task::MoveInst* move = program.linear(Posd(0, 0, 0));
    show();
    const Posf before = scene.getVisualFocusPose(move->getId()).position;

    scene.setFrameSize(500, VisualType::Robtarget);
    drain();

    EXPECT_GT((scene.getVisualFocusPose(move->getId()).position - Posf(250, 250, 250)).length(),
              5 * (before - Posf(25, 25, 25)).length());
}

} // namespace
} // namespace vrk::visual
