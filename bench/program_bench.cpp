// A robot program of 100,000 moves on screen, against the same picture made by hand with OGRE alone; what one changed target
// costs; picking among its targets; and a million targets. Needs a display; xvfb-run gives it one.

#include "bench/support/Contest.h"
#include "bench/support/Size.h"
#include "bench/support/Started.h"
#include "tests/support/ProcessorTime.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/core/SceneCore.h"
#include "selection/geometry/Ray.h"
#include "task/MoveInstructionVisual.h"
#include "task/PathVisual.h"
#include "task/RobtargetVisual.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "visual/VisualCast.h"

#include <Ogre.h>
#include <OgreInstanceManager.h>
#include <OgreInstancedEntity.h>

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace vrk;
using visual::Scene;

constexpr unsigned pathCount = 10;
const unsigned movesOfPath = bench::sized(10'000u, 1'000u);
const unsigned million = bench::sized(1'000'000u, 10'000u);

void check(bool isRight, const std::string& what)
{
    if (!isRight)
        throw std::logic_error(what);
}

double heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

/// Place and direction of a target; the x axis is as near to (1, 0, 0) as the direction allows.
rob::Posed targetPose(unsigned j)
{
    const unsigned row = j / 100, column = row % 2 == 0 ? j % 100 : 99 - j % 100;
    const double a = 0.13 * column, b = 0.11 * row;
    const rob::Dird z =
        rob::normalized(rob::Vec3d(5.2 * std::cos(a) * std::cos(b) / 10, -4.4 * std::sin(a) * std::sin(b) / 10, -1));
    const rob::Vec3d ahead(1, 0, 0);
    const rob::Dird x = rob::normalized(ahead - z * ahead.dot(rob::Vec3d(z)));
    const rob::Dird y(z.cross(x));
    return {rob::Posd(10.0 * column, 10.0 * row, 40 * std::sin(a) * std::cos(b)), rob::Rotationd::FromAxes(x, y, z)};
}

struct Program {
    std::shared_ptr<task::Task> task;
    unsigned targets = 0, vias = 0, postures = 0;
};

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

std::shared_ptr<task::DataItem> addTarget(Program& program, const rob::Posed& pose, unsigned owner)
{
    auto item = std::make_shared<task::RobTargetDataItem>(newId(), "p");
    item->setPose(pose);
    item->setOwnerId(owner);
    program.task->addDataItem(item);
    return item;
}

std::shared_ptr<task::MoveInst> makeMove(Program& program, unsigned j, const std::shared_ptr<task::WObjDataItem>& frame)
{
    std::shared_ptr<task::MoveInst> move;
    if (j % 1000 == 999) {
        auto posture = std::make_shared<task::JointTargetDataItem>(newId(), "home");
        posture->jointValues.assign(6, 0.001 * j);
        program.task->addDataItem(posture);
        ++program.postures;
        move = std::make_shared<task::MoveInst>(newId(), "MoveAbsJ", task::Motion::Joint, posture);
    } else {
        const bool isCircular = j % 50 == 25;
        const auto target = addTarget(program, targetPose(j), frame->getId());
        ++program.targets;
        move = std::make_shared<task::MoveInst>(newId(), "Move",
                                                isCircular ? task::Motion::Circular : task::Motion::Linear, target);
        if (isCircular) {
            const rob::Posd before = targetPose(j - 1).position, here = target->getPose().position;
            const rob::Posd via = before + (here - before) * 0.5 + rob::Vec3d(0, 0, 3);
            move->setCircleItem(addTarget(program, {via, target->getPose().rotation()}, frame->getId()));
            ++program.vias;
        }
    }
    move->setWObjItem(frame);
    return move;
}

/// A program of so many paths, each in a work object of its own, which stands in the station.
Program makeProgram(unsigned paths, unsigned moves)
{
    Program program{std::make_shared<task::Task>(newId(), "program")};
    for (unsigned p = 0; p < paths; ++p) {
        auto frame = std::make_shared<task::WObjDataItem>(newId(), "wobj");
        frame->setPose({rob::Posd(2500.0 * p, 0, 500), rob::Rotationd(0.2 * p, rob::Dird(0, 0, 1))});
        program.task->addDataItem(frame);
        auto path = std::make_shared<task::Path>(newId(), "path");
        for (unsigned j = 0; j < moves; ++j)
            path->addInstruction(makeMove(program, j, frame));
        program.task->addPath(path);
    }
    layout::Layout::inst().addTask(program.task);
    return program;
}

void switchEverythingOn()
{
    visual::SceneSettings& settings = visual::SceneCore::Get()->settings;
    settings.targetFrameSize = settings.jointTargetFrameSize = 10;
    settings.wobjFrameSize = 80;
    settings.drawSegVisual = settings.drawPathArrow = settings.drawTargetVisual = true;
}

/// The whole is looked at from above.
class View {
public:
    View() : target(400, 300, 0)
    {
        visual::Camera::Get()->setRenderTarget(target.renderTarget());
        visual::Camera::Get()->setWorldPose({{11500, 500, 30000}, rob::Rotationf()});
    }
    ~View() { visual::Camera::Get()->setRenderTarget(Ogre::Root::getSingleton().getRenderTarget("ogrewindow")); }
    void draw() { Ogre::Root::getSingleton().renderOneFrame(); }
    std::size_t batches() const { return target.renderTarget()->getStatistics().batchCount; }

private:
    visual::OffscreenTarget target;
};

/// A window of the usual size, which is not drawn: how far from a line a pick may pass goes by its pixels.
class PickView {
public:
    PickView() : target(1920, 1080, 0) { visual::Camera::Get()->setRenderTarget(target.renderTarget()); }
    ~PickView() { visual::Camera::Get()->setRenderTarget(Ogre::Root::getSingleton().getRenderTarget("ogrewindow")); }

private:
    visual::OffscreenTarget target;
};

void removeProgram(Scene& scene, const Program& program)
{
    for (const auto& path : program.task->getOwnPaths())
        scene.removePathVisual(path->getId());
    for (const auto& item : program.task->getDataItems())
        if (item->asType(sdf::ModelType::WObjData))
            scene.removeVisual(item->getId());
    scene.processMsgs();
}

/// What the visuals of a program hold, counted in the scene.
struct Shown {
    unsigned targets = 0, postures = 0, arrows = 0;
};

Shown countShown()
{
    Shown shown;
    for (const auto& [id, each] : visual::SceneCore::Get()->visuals.all()) {
        shown.targets += each->getType() == VisualType::Robtarget ? 1 : 0;
        shown.postures += each->getType() == VisualType::JointTarget ? 1 : 0;
        const auto* move = visual::visualCast<visual::MoveInstructionVisual>(each, VisualType::MoveInstruction);
        shown.arrows += move && move->getArrow() ? 1 : 0;
    }
    return shown;
}

void checkShown(const Program& program)
{
    const Shown shown = countShown();
    const unsigned moves = pathCount * movesOfPath;
    if (!bench::isSmall())
        check(program.targets == 99'900 && program.vias == 2'000 && program.postures == 100 && shown.arrows == 99'800,
              "the workload is another one");
    check(shown.targets == program.targets + program.vias, "not every target is shown");
    check(shown.postures == program.postures, "not every posture is shown");
    check(shown.arrows == moves - 2 * program.postures, "other arrows are shown"); // neither to a posture nor from one
}

/// The picture of a program by OGRE alone: the same instances and lines.
class BarePicture {
public:
    /// @param hasNodes  for each move its node, and one below it for each target and arrow; else instances stand by themselves.
    BarePicture(const Program& program, bool hasNodes) : manager(*Scene::GetSceneManager()), hasNodes(hasNodes)
    {
        frames = manager.createInstanceManager("BareFrames", "VRK_FrameMesh",
                                               Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME,
                                               Ogre::InstanceManager::HWInstancingBasic, 5000, Ogre::IM_USEALL, 0);
        arrows = manager.createInstanceManager("BareArrows", "path_arrow_head",
                                               Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME,
                                               Ogre::InstanceManager::HWInstancingBasic, 500, Ogre::IM_USEALL, 0);
        root = manager.getRootSceneNode()->createChildSceneNode();
        for (const auto& path : program.task->getOwnPaths())
            addPath(*path);
    }
    ~BarePicture()
    {
        root->removeAndDestroyAllChildren();
        manager.destroySceneNode(root);
        for (Ogre::ManualObject* line : lines)
            manager.destroyManualObject(line);
        manager.destroyInstanceManager(frames);
        manager.destroyInstanceManager(arrows);
    }

private:
    static Ogre::Vector3 position(const task::DataItem& item)
    {
        const rob::Posf p(item.getPose().position);
        return {p.x, p.y, p.z};
    }
    static Ogre::Quaternion orientation(const task::DataItem& item)
    {
        const rob::Posef pose(item.getPose());
        return {pose.orientation.w, pose.orientation.x, pose.orientation.y, pose.orientation.z};
    }
    void add(Ogre::InstanceManager& instances, const char* material, Ogre::SceneNode* under, const Ogre::Vector3& at,
             const Ogre::Quaternion& turn, float scale)
    {
        Ogre::InstancedEntity* made = instances.createInstancedEntity(material);
        made->setScale(Ogre::Vector3(scale), false);
        if (hasNodes) {
            under->createChildSceneNode(at, turn)->attachObject(made);
            return;
        }
        made->setOrientation(turn, false);
        made->setPosition(at, true);
    }
    void addPath(const task::Path& path)
    {
        const std::vector<task::MoveInst*>& moves = path.getMoveInstructions();
        const rob::Posef frame(moves.front()->getWObjItem()->getPose());
        Ogre::SceneNode* under = root->createChildSceneNode(
            Ogre::Vector3(frame.position.x, frame.position.y, frame.position.z),
            Ogre::Quaternion(frame.orientation.w, frame.orientation.x, frame.orientation.y, frame.orientation.z));
        Ogre::ManualObject* line = lines.emplace_back(manager.createManualObject());
        line->begin("PathLine", Ogre::RenderOperation::OT_LINE_LIST);
        const task::MoveInst* previous = nullptr;
        for (const task::MoveInst* move : moves) {
            Ogre::SceneNode* node = hasNodes ? under->createChildSceneNode() : nullptr;
            const Ogre::Vector3 at = position(*move->getTargetItem());
            add(*frames, move->isRobTargetInst() ? "InstanceRobTarget" : "InstanceFrame", node, at,
                orientation(*move->getTargetItem()), 10);
            if (move->getCircleItem())
                add(*frames, "InstanceRobTarget", node, position(*move->getCircleItem()),
                    orientation(*move->getCircleItem()), 10);
            if (previous && previous->isRobTargetInst() && move->isRobTargetInst()) {
                const Ogre::Vector3 from = position(*previous->getTargetItem());
                line->position(from);
                line->position(at);
                const float length = (at - from).length();
                add(*arrows, "InstanceArrow", node, (from + at) * 0.5f,
                    Ogre::Vector3(Ogre::Vector3::UNIT_Z).getRotationTo((at - from).normalisedCopy()), length / 200);
            }
            previous = move;
        }
        line->end();
        under->attachObject(line);
    }

    Ogre::SceneManager& manager;
    bool hasNodes;
    Ogre::InstanceManager* frames;
    Ogre::InstanceManager* arrows;
    Ogre::SceneNode* root;
    std::vector<Ogre::ManualObject*> lines;
};

/// From the model to the first frame, and further frames.
struct Cost {
    double load = 0;  // seconds
    double heap = 0;  // bytes
    double frame = 0; // seconds
    double batches = 0;
};

template <typename Make>
Cost costOf(View& view, const Make& make)
{
    Cost cost;
    const double before = heapBytes();
    cost.load = test::threadSecondsOf([&] {
        make();
        view.draw();
    });
    cost.heap = heapBytes() - before;
    std::vector<double> frames;
    for (int i = 0; i < 5; ++i)
        frames.push_back(test::threadSecondsOf([&] { view.draw(); }));
    cost.frame = bench::quantile(frames, 0.5);
    cost.batches = static_cast<double>(view.batches());
    return cost;
}

void loadProgram(benchmark::State& state)
{
    Scene& scene = bench::startedScene();
    switchEverythingOn();
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
    View view;
    const Program program = makeProgram(pathCount, movesOfPath);
    const double moves = pathCount * movesOfPath;
    view.draw();
    for (auto _ : state) {
        double built = 0, builtFirst = 0;
        Cost ours, withNodes, without;
        // Each picture stands twice, and the second time is told: what the driver and malloc keep of a picture that is gone
        // would else be a gift to whoever comes later.
        for (const bool isFirst : {true, false}) {
            ours = costOf(view, [&] {
                scene.addTask(program.task->getId());
                built = test::threadSecondsOf([&] { scene.processMsgs(); });
                picking.update();
            });
            if (isFirst)
                builtFirst = built;
            checkShown(program);
            removeProgram(scene, program);
            scene.cleanupInstanceBatches();
            scene.processMsgs();
            picking.update();
            std::unique_ptr<BarePicture> picture;
            withNodes = costOf(view, [&] { picture = std::make_unique<BarePicture>(program, true); });
            picture.reset();
            without = costOf(view, [&] { picture = std::make_unique<BarePicture>(program, false); });
            picture.reset();
        }
        state.SetIterationTime(ours.load);
        state.counters["visuals s"] = built;
        state.counters["visuals s, first"] = builtFirst;
        state.counters["bytes a move"] = ours.heap / moves;
        state.counters["bytes a move, nodes"] = withNodes.heap / moves;
        state.counters["bytes a move, no nodes"] = without.heap / moves;
        state.counters["nodes s"] = withNodes.load;
        state.counters["no nodes s"] = without.load;
        state.counters["ours/nodes"] = ours.load / withNodes.load;
        state.counters["visuals/nodes"] = built / withNodes.load;
        state.counters["frame ms"] = 1e3 * ours.frame;
        state.counters["frame ms, nodes"] = 1e3 * withNodes.frame;
        state.counters["frame ms, no nodes"] = 1e3 * without.frame;
        state.counters["frame ours/nodes"] = ours.frame / withNodes.frame;
        state.counters["batches"] = ours.batches;
        state.counters["batches, nodes"] = withNodes.batches;
    }
    layout::Layout::inst().clear();
}

/// @param state  range 0: the moves of the path.
void updateMoves(benchmark::State& state, bool isWholePath)
{
    Scene& scene = bench::startedScene();
    switchEverythingOn();
    const Program program = makeProgram(1, static_cast<unsigned>(state.range(0)));
    scene.buildTask(program.task->getId());
    const task::Path& path = *program.task->getOwnPaths().front();
    const task::MoveInst& move = *path.getMoveInstructions()[path.moveInstructionCount() / 2];
    rob::Posed pose = move.getTargetItem()->getPose();
    for (auto _ : state) {
        pose.position.z += 1;
        move.getTargetItem()->setPose(pose);
        state.SetIterationTime(test::threadSecondsOf([&] {
            if (isWholePath)
                scene.updatePath(path.getId());
            else
                scene.updateInstruction(move.getId());
            scene.processMsgs();
        }));
    }
    const auto* visual = dynamic_cast<visual::MoveInstructionVisual*>(Scene::GetVisual(move.getId()));
    check(visual->getTarget()->getPosition() == rob::Posf(pose.position), "the target stands elsewhere");
    removeProgram(scene, program);
    layout::Layout::inst().clear();
}

void pickTargets(benchmark::State& state)
{
    Scene& scene = bench::startedScene();
    switchEverythingOn();
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
    const Program program = makeProgram(pathCount, movesOfPath);
    scene.buildTask(program.task->getId());
    const PickView view;
    // Near enough to tell targets apart: from 200 above each of those that are asked for.
    std::vector<visual::Visual*> targets;
    for (const auto& path : program.task->getOwnPaths())
        for (std::size_t j = 0; j < path->moveInstructionCount(); j += 10)
            targets.push_back(Scene::GetVisual(path->getMoveInstructions()[j]->getTargetItemId()));
    bench::Contest contest;
    for (auto _ : state) {
        visual::Visual* moved = targets[targets.size() / 2];
        picking.update();
        std::vector<double> updates;
        for (int i = 0; i < 5; ++i) {
            moved->setPosition(moved->getPosition() + rob::Posf(0, 0, 1));
            updates.push_back(test::threadSecondsOf([&] { picking.update(); }));
        }
        state.counters["update ms"] = 1e3 * bench::quantile(updates, 0.5);
        std::size_t hits = 0;
        const auto pick = [&](std::size_t i) {
            const rob::Posf at = targets[i]->getWorldPosition();
            visual::Camera::Get()->setWorldPosition(at + rob::Posf(0, 0, 200));
            return visual::Ray(at + rob::Posf(0, 0, 200), rob::Dirf(0, 0, -1));
        };
        for (std::size_t i = 0; i < targets.size(); ++i) {
            const visual::Ray ray = pick(i);
            bool isHit = false;
            contest.add("ours", 1e6 * bench::millisecondsOf([&] { isHit = picking.select(ray).hit; }));
            hits += isHit ? 1 : 0;
        }
        check(hits == targets.size(), "not every ray at a target hits one");
        state.SetIterationTime(contest.of("ours") * 1e-9);
    }
    state.counters["pick p99 us"] = contest.of("ours", 0.99) / 1000;
    removeProgram(scene, program);
    layout::Layout::inst().clear();
}

void millionTargets(benchmark::State& state)
{
    Scene& scene = bench::startedScene();
    switchEverythingOn();
    std::vector<unsigned> ids;
    for (unsigned i = 0; i < million; ++i) {
        auto item = std::make_shared<task::RobTargetDataItem>(newId(), "p");
        item->setPose(targetPose(i % 10'000));
        ids.push_back(item->getId());
        sdf::SdfManager::inst().add(item);
    }
    for (auto _ : state) {
        auto* group = new visual::Visual(Scene::GetWorldVisual());
        const double built = test::threadSecondsOf([&] {
            for (const unsigned id : ids)
                visual::RobtargetVisual::Build(group, id);
        });
        check(group->getSceneNode()->numChildren() == static_cast<unsigned short>(million),
              "not every target is there");
        const double removed = test::threadSecondsOf([&] {
            for (const unsigned id : ids)
                scene.removeVisual(id);
            scene.processMsgs();
        });
        check(group->getSceneNode()->numChildren() == 0, "not every target is gone");
        scene.deleteVisual(group);
        scene.cleanupInstanceBatches();
        scene.processMsgs();
        state.counters["built s"] = built;
        state.counters["removed s"] = removed;
        state.SetIterationTime(built + removed);
    }
    sdf::SdfManager::inst().clear();
}

BENCHMARK(loadProgram)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(updateMoves, instruction, false)
    ->Arg(100)
    ->Arg(bench::sized(10'000, 1'000))
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(20);
BENCHMARK_CAPTURE(updateMoves, path, true)
    ->Arg(100)
    ->Arg(bench::sized(10'000, 1'000))
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(5);
BENCHMARK(pickTargets)->Unit(benchmark::kMicrosecond)->UseManualTime()->Iterations(1);
BENCHMARK(millionTargets)->Unit(benchmark::kSecond)->UseManualTime()->Iterations(1);

} // namespace
