// Mouse navigation and the highlight under the mouse, over a station of a thousand solids: what a step costs by itself,
// outside OGRE's rendering. Needs a display; xvfb-run gives it one.

#include "bench/support/Size.h"
#include "bench/support/Started.h"
#include "bench/support/Workloads.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Quaternion.hxx>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

using namespace vrk;
using Clock = std::chrono::steady_clock;

const unsigned solids = bench::sized(1000u, 20u);
constexpr unsigned width = 960;
constexpr unsigned height = 540;
const int steps = bench::sized(200, 4);

rob::Posed poseOf(const gp_Trsf& trsf)
{
    const gp_Quaternion q = trsf.GetRotation();
    const gp_XYZ& t = trsf.TranslationPart();
    return {rob::Posd(t.X(), t.Y(), t.Z()), rob::Orientd(q.W(), q.X(), q.Y(), q.Z())};
}

std::uint64_t trianglesOf(const TopoDS_Shape& shape)
{
    std::uint64_t count = 0;
    TopLoc_Location location;
    for (TopExp_Explorer face(shape, TopAbs_FACE); face.More(); face.Next())
        count +=
            static_cast<std::uint64_t>(BRep_Tool::Triangulation(TopoDS::Face(face.Current()), location)->NbTriangles());
    return count;
}

/// The solids in their places, loaded and ready to be picked, in a view of its own.
class World {
public:
    static World& Get()
    {
        static World world;
        return world;
    }

    visual::Scene& scene = bench::startedScene();
    visual::Camera& camera = *visual::Camera::Get();
    selection::VisualSelection& service = *selection::VisualSelection::Get();

    /// From outside, looking at the middle of the station.
    void resetView()
    {
        const rob::Dirf z = rob::normalized(rob::Vec3f(12000, 0, 2600));
        const rob::Dirf x(0, 1, 0);
        camera.setWorldPose({{22000, 10000, 3800}, rob::Rotationf::FromAxes(x, rob::Dirf(z.cross(x)), z)});
    }
    bool isWhole() const
    {
        return visual::Scene::GetWorldVisual()->getBodiesNum() == solids &&
               visual::Scene::GetWorldVisual()->getTrianglesNum() == triangles;
    }

private:
    World()
    {
        for (unsigned i = 0; i < solids; ++i) {
            const bench::PosedSolid solid = bench::makeSolid(i);
            BRepMesh_IncrementalMesh(solid.shape, 2.0, false, 0.45, false);
            triangles += trianglesOf(solid.shape);
            auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
            part->setPose(poseOf(solid.pose));
            const std::shared_ptr<layout::Body> body = part->addBody("body");
            body->setGeometry("solid" + std::to_string(i), "brep");
            body->setShape(solid.shape);
            layout::Layout::inst().addPart(part);
        }
        visual::Scene::LoadStation();
        scene.processMsgs();
        camera.setRenderTarget(target.renderTarget());
        resetView();
        service.update();
    }

    visual::OffscreenTarget target{width, height, 0};
    std::uint64_t triangles = 0; // of all shapes
};

/// Runs a gesture of 200 steps with a picture after every so many; the pictures are not timed, and a software driver takes
/// most of a second for one. Tells the time of all steps, and the longest one.
template <typename Step>
void runGesture(benchmark::State& state, int stepsPerPicture, const Step& step)
{
    World& world = World::Get();
    double longest = 0;
    for (auto _ : state) {
        world.resetView();
        if (!world.isWhole())
            throw std::logic_error("the station is not the one that is meant");
        double total = 0;
        for (int i = 0; i < steps; ++i) {
            const Clock::time_point begin = Clock::now();
            step(world, i);
            world.service.update();
            world.scene.processMsgs();
            const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
            total += seconds;
            longest = std::max(longest, seconds);
            if (i % stepsPerPicture == 0)
                Ogre::Root::getSingleton().renderOneFrame();
        }
        state.SetIterationTime(total);
    }
    state.counters["longest_step_us"] = longest * 1e6;
}

void orbit(benchmark::State& state)
{
    runGesture(state, 1, [](World& world, int step) {
        if (step == 0)
            world.camera.startRotating(480, 270);
        world.camera.rotateScene(8, step % 2 ? 1.0f : -1.0f);
    });
}

void pan(benchmark::State& state)
{
    runGesture(state, 20, [](World& world, int step) {
        const auto along = static_cast<float>(step);
        world.camera.translateScene(380 + along, 270, 1, 0);
    });
}

void zoom(benchmark::State& state)
{
    runGesture(state, 20, [](World& world, int step) { world.camera.zoom(480, 270, 0, step % 2 ? -1.0f : 1.0f); });
}

/// From the mouse's move to the posted highlight, without the work that is posted.
void hover(benchmark::State& state)
{
    World& world = World::Get();
    world.resetView();
    world.service.update();
    double longest = 0;
    unsigned hits = 0;
    float x = 0;
    for (auto _ : state) {
        x = std::fmod(x + 37, static_cast<float>(width));
        const float y = height * (0.5f + 0.3f * std::sin(x));
        const Clock::time_point begin = Clock::now();
        const selection::Result pick = world.service.select(x, y);
        if (pick.visual)
            world.scene.setVisualHighlighted(pick.visual);
        else
            world.scene.clearHighlightedVisual();
        const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
        state.SetIterationTime(seconds);
        longest = std::max(longest, seconds);
        hits += pick.hit ? 1 : 0;
        world.scene.processMsgs();
    }
    world.scene.clearHighlightedVisual();
    world.scene.processMsgs();
    state.counters["longest_us"] = longest * 1e6;
    state.counters["hit_share"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}

BENCHMARK(orbit)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(pan)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(zoom)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(hover)->UseManualTime()->Iterations(2000)->Unit(benchmark::kMicrosecond);

} // namespace
