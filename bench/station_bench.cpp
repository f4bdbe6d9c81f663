// Loading many parts of few shapes, and the poses of many links for each frame. Needs a display; xvfb-run gives it one.

#include "bench/support/Size.h"
#include "bench/support/Started.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>

#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace vrk;
using visual::Scene;

constexpr int distinctShapes = 20;

const TopoDS_Shape& shapeOf(int index)
{
    static const std::vector<TopoDS_Shape> shapes = [] {
        std::vector<TopoDS_Shape> made;
        for (int i = 0; i < distinctShapes; ++i) {
            made.push_back(BRepPrimAPI_MakeTorus(100 + 5 * i, 30).Shape());
            BRepMesh_IncrementalMesh(made.back(), 0.5, false, 0.2, false);
        }
        return made;
    }();
    return shapes[static_cast<std::size_t>(index % distinctShapes)];
}

void fillStation(int parts)
{
    for (int i = 0; i < parts; ++i) {
        auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
        const std::shared_ptr<layout::Body> body = part->addBody("body");
        body->setGeometry("torus" + std::to_string(i % distinctShapes), "brep");
        body->setShape(shapeOf(i));
        layout::Layout::inst().addPart(part);
    }
}

void emptyStation(Scene& scene)
{
    for (const auto& part : layout::Layout::inst().parts)
        scene.removeVisual(part->getId());
    scene.processMsgs();
    layout::Layout::inst().clear();
}

/// @param state  range 0: how many parts.
void loadParts(benchmark::State& state)
{
    Scene& scene = bench::startedScene();
    const auto parts = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        fillStation(parts);
        state.ResumeTiming();
        Scene::LoadStation();
        scene.processMsgs();
        state.PauseTiming();
        if (Scene::GetWorldVisual()->getBodiesNum() != static_cast<unsigned>(parts))
            throw std::logic_error("not every part was loaded");
        emptyStation(scene);
        state.ResumeTiming();
    }
}

/// @param state  range 0: how many parts; range 1: how many of them have another pose each time.
void syncStation(benchmark::State& state)
{
    Scene& scene = bench::startedScene();
    fillStation(static_cast<int>(state.range(0)));
    Scene::SyncStation();
    scene.processMsgs();
    double place = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const rob::Posed pose(rob::Posd(++place, 0, 0));
        for (int i = 0; i < state.range(1); ++i)
            layout::Layout::inst().parts[static_cast<std::size_t>(i)]->setPose(pose);
        state.ResumeTiming();
        Scene::SyncStation();
        scene.processMsgs();
    }
    const unsigned last = layout::Layout::inst().parts.front()->getId();
    if (state.range(1) > 0 && Scene::GetVisual(last)->getPosition().x != static_cast<float>(place))
        throw std::logic_error("the first part stands elsewhere");
    emptyStation(scene);
}

const unsigned links = bench::sized(1000u, 50u);

/// Visuals without bodies. They stand in no station: another run may load and clear that in between.
const std::vector<unsigned>& linkIds()
{
    static std::vector<std::shared_ptr<layout::Part>> nodes;
    static const std::vector<unsigned> ids = [] {
        Scene& scene = bench::startedScene();
        std::vector<unsigned> made;
        for (unsigned i = 0; i < links; ++i) {
            const unsigned id = sdf::SdfManager::GenerateTransientId();
            scene.addPart(nodes.emplace_back(std::make_shared<layout::Part>(id, "link")).get());
            made.push_back(id);
        }
        scene.processMsgs();
        return made;
    }();
    return ids;
}

rob::Posef poseOf(unsigned run)
{
    return rob::Posef(rob::Posf(static_cast<float>(run), 0, 0));
}

void postPoses(benchmark::State& state)
{
    Scene& scene = bench::startedScene();
    const std::vector<unsigned>& ids = linkIds();
    unsigned run = 0;
    for (auto _ : state) {
        const rob::Posef pose = poseOf(++run);
        for (const unsigned id : ids)
            scene.setVisualPose(id, pose);
        state.PauseTiming();
        scene.processMsgs();
        state.ResumeTiming();
    }
}

void drainPoses(benchmark::State& state)
{
    Scene& scene = bench::startedScene();
    const std::vector<unsigned>& ids = linkIds();
    unsigned run = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const rob::Posef pose = poseOf(++run);
        for (const unsigned id : ids)
            scene.setVisualPose(id, pose);
        state.ResumeTiming();
        scene.processMsgs();
    }
    if (!(Scene::GetVisual(ids.back())->getPosition() == poseOf(run).position))
        throw std::logic_error("the last link stands elsewhere");
}

void bareNodePositions(benchmark::State& state)
{
    std::vector<Ogre::SceneNode*> nodes;
    for (const unsigned id : linkIds())
        nodes.push_back(Scene::GetVisual(id)->getSceneNode());
    unsigned run = 0;
    for (auto _ : state) {
        ++run;
        for (Ogre::SceneNode* node : nodes) {
            node->setPosition(Ogre::Vector3(static_cast<float>(run), 0, 0));
            node->setOrientation(Ogre::Quaternion::IDENTITY);
        }
    }
}

BENCHMARK(loadParts)->Arg(20)->Arg(bench::sized(1000, 40))->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(syncStation)
    ->Args({bench::sized(20000, 40), 0})
    ->Args({bench::sized(20000, 40), bench::sized(100, 10)})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(postPoses)->Unit(benchmark::kMicrosecond);
BENCHMARK(drainPoses)->Unit(benchmark::kMicrosecond);
BENCHMARK(bareNodePositions)->Unit(benchmark::kMicrosecond);

} // namespace
