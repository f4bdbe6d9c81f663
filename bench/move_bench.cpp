// A drag by hand in the viewer, over a station of a thousand parts and an assembly of a thousand bodies: what a move of the
// mouse costs until the change is posted, and beside it the bare change of the model with its post. Needs a display;
// xvfb-run gives it one.

#include "bench/support/Size.h"
#include "bench/support/Workloads.h"

#include "canvas/DrawMode.h"
#include "canvas/MoveTool.h"
#include "canvas/ViewState.h"
#include "canvas/ViewWidget.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"
#include "files/Station.h"
#include "files/StationScene.h"
#include "start/StartUp.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "selection/pick/PickQuery.h"
#include "view/Camera.h"
#include "visual/Visual.h"

#include <Ogre.h>
#include <QApplication>

#include <BRepMesh_IncrementalMesh.hxx>
#include <gp_Quaternion.hxx>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace vrk;
using namespace vrkview;
using Clock = std::chrono::steady_clock;
using Handle = visual::DragHandle::HandleType;
using Kind = InputEvent::Kind;

const unsigned solids = bench::sized(1000u, 20u);
constexpr QSize viewSize(960, 540);
const int moves = bench::sized(1000, 10);
constexpr int reach = 60; // pixels to either side that the mouse goes

rob::Posed poseOf(const gp_Trsf& trsf)
{
    const gp_Quaternion q = trsf.GetRotation();
    const gp_XYZ& t = trsf.TranslationPart();
    return {rob::Posd(t.X(), t.Y(), t.Z()), rob::Orientd(q.W(), q.X(), q.Y(), q.Z())};
}

std::shared_ptr<layout::Part> makePart(const bench::PosedSolid& solid, const std::string& geometry)
{
    auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
    part->setPose(poseOf(solid.pose));
    const std::shared_ptr<layout::Body> body = part->addBody("body");
    body->setGeometry(geometry, "brep");
    body->setShape(solid.shape);
    return part;
}

/// The solids as parts of their own, and once more, above these, as members of one assembly.
Station thousandTwice()
{
    Station station;
    station.title = "Two thousand";
    auto assembly = std::make_shared<layout::Assembly>(sdf::SdfManager::inst().generateId(), "assembly");
    assembly->setPose(rob::Posed(rob::Posd(0, 0, 6000)));
    for (unsigned i = 0; i < solids; ++i) {
        const bench::PosedSolid solid = bench::makeSolid(i);
        BRepMesh_IncrementalMesh(solid.shape, 2.0, false, 0.45, false);
        station.parts.push_back(makePart(solid, "solid" + std::to_string(i)));
        assembly->addPart(makePart(solid, "member" + std::to_string(i)));
    }
    layout::StationContent& whole = station.whole.emplace();
    whole.assemblies = {assembly};
    whole.listMembers(*assembly);
    return station;
}

class World {
public:
    static World& Get()
    {
        static World world;
        return world;
    }

    unsigned getPart() const { return station.parts.front()->getId(); }
    unsigned getAssembly() const { return station.whole->assemblies.front()->getId(); }

    QApplication& application;
    const Station station = thousandTwice();
    ViewWidget& view;
    ViewState& state;
    MoveTool& mover;

    /// From outside, looking at a place.
    void lookAt(const rob::Posd& place)
    {
        const rob::Dirf z = rob::normalized(rob::Vec3f(12000, 0, 2600));
        const rob::Dirf x(0, 1, 0);
        const rob::Posf eye = rob::Posf(place) + rob::Vec3f(12000, 0, 2600);
        visual::Camera::Get()->setWorldPose({eye, rob::Rotationf::FromAxes(x, rob::Dirf(z.cross(x)), z)});
    }
    /// Device pixels.
    QPointF placeOnArrow() const
    {
        selection::VisualSelection::Get()->update();
        selection::PickQuery query;
        query.camera = selection::PickCamera::Main();
        for (query.y = 0; query.y < viewSize.height(); query.y += 3)
            for (query.x = 0; query.x < viewSize.width(); query.x += 3) {
                const auto found = query.askBest();
                if (found && visual::DragHandle::Get()->getHandleType(found->visual) == Handle::Y)
                    return {query.x, query.y};
            }
        throw std::logic_error("the handle is not to be seen");
    }

private:
    static QApplication& startApplication()
    {
        static int count = 1;
        static char name[] = "move_bench";
        static char* arguments[] = {name, nullptr};
        qputenv("QT_QPA_PLATFORM", "xcb");
        return *new QApplication(count, arguments); // never deleted: OGRE's window lives as long
    }
    ViewWidget& startView()
    {
        startLibrary();
        showStation(station);
        visual::Scene::Get()->processMsgs();
        showAs(*findDrawMode("shaded"), {});
        visual::Scene::Get()->processMsgs();
        auto* shown = new ViewWidget;
        shown->resize(viewSize);
        shown->show();
        while (!shown->isReady())
            QApplication::processEvents(QEventLoop::AllEvents, 20);
        return *shown;
    }
    World()
        : application(startApplication()), view(startView()), state(*new ViewState(*findDrawMode("shaded"), {})),
          mover(*new MoveTool(view, state))
    {
        if (visual::Scene::GetWorldVisual()->getBodiesNum() != 2 * solids)
            throw std::logic_error("the station is not the one that is meant");
        mover.setOn(true);
    }
};

/// What is selected is dragged to and fro along an arrow.
void drag(benchmark::State& state, unsigned thing)
{
    World& world = World::Get();
    const rob::Posed before = worldPoseOfThing(thing);
    world.state.selectVisuals({thing});
    world.lookAt(before.position);
    world.view.drain();
    Ogre::Root::getSingleton().renderOneFrame(); // which gives the handle its size
    world.view.drain();
    const QPointF arrow = world.placeOnArrow();
    if (!world.mover.take({Kind::Press, arrow, Qt::LeftButton, {}, {}}) || !world.mover.isDragging())
        throw std::logic_error("the arrow cannot be dragged");
    std::vector<double> times;
    for (auto _ : state) {
        times.clear();
        for (int i = 0; i < moves; ++i) {
            const QPointF place = arrow + QPointF(reach * std::sin(0.1 * i), 0);
            const Clock::time_point begin = Clock::now();
            world.mover.take({Kind::Move, place, Qt::NoButton, Qt::LeftButton, {}});
            times.push_back(std::chrono::duration<double>(Clock::now() - begin).count());
            world.view.drain();
        }
        std::ranges::sort(times);
        state.SetIterationTime(times[times.size() / 2]);
    }
    const rob::Posd model = worldPoseOfThing(thing).position;
    const rob::Posd seen(visual::Scene::GetVisual(thing)->getWorldPosition());
    if ((model - before.position).length() < 10 || (model - seen).length() > 0.01)
        throw std::logic_error("the thing has not followed the mouse");
    if (!world.mover.cancel() || worldPoseOfThing(thing) != before || world.state.getHistory().canUndo())
        throw std::logic_error("the drag has left something");
    world.mover.cancel(); // the choice of the arrow
    world.view.drain();
    state.counters["longest_us"] = times.back() * 1e6;
}

void dragPart(benchmark::State& state)
{
    drag(state, World::Get().getPart());
}

void dragAssembly(benchmark::State& state)
{
    drag(state, World::Get().getAssembly());
}

/// The change of the model and its post alone.
void bareMove(benchmark::State& state)
{
    World& world = World::Get();
    const unsigned part = world.getPart();
    const rob::Posed before = poseOfThing(part);
    std::vector<double> times;
    for (auto _ : state) {
        times.clear();
        for (int i = 0; i < moves; ++i) {
            const rob::Posed pose = before * rob::Posed(rob::Posd(0, i % 7 + 1, 0));
            const Clock::time_point begin = Clock::now();
            MoveThings(part, pose).apply();
            times.push_back(std::chrono::duration<double>(Clock::now() - begin).count());
            world.view.drain();
        }
        std::ranges::sort(times);
        state.SetIterationTime(times[times.size() / 2]);
    }
    MoveThings(part, before).apply();
    world.view.drain();
}

// Told is the median of the moves, which the longest stand beside.
BENCHMARK(dragPart)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(dragAssembly)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(bareMove)->UseManualTime()->Iterations(1)->Unit(benchmark::kMicrosecond);

} // namespace
