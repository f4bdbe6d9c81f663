// A frame of many bodies of few shapes, with their edges, and of one body of many faces: what it costs, beside Open CASCADE's
// own viewer, which draws the same from the same places in turn. Needs a display; xvfb-run gives it one.
// VRK_BENCH_PARTS names STEP and BREP files, with colons between them, each of which is drawn as one body as well.

#include "bench/support/Contest.h"
#include "bench/support/Peak.h"
#include "bench/support/Size.h"
#include "bench/support/Started.h"

#ifdef VRK_BENCH_HAS_AIS
#include "bench/support/AisPeer.h"
#endif

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "view/RenderFrame.h"
#include "visual/Visual.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBndLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <Bnd_Box.hxx>
#include <STEPControl_Reader.hxx>
#include <TopTools_ListOfShape.hxx>
#include <gp_Ax2.hxx>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <numbers>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace vrk;
using visual::Scene;

constexpr int distinctShapes = 20;
constexpr double cell = 260; // model units from one body to the next
constexpr double verticalAngle = 27 * std::numbers::pi / 180;
constexpr double step = 0.02; // radians that the camera goes on about the middle
const int frames = bench::sized(20, 2);

struct Thing {
    TopoDS_Shape shape;
    std::string name;
    gp_Vec place;
};
using Things = std::vector<Thing>;

TopoDS_Shape meshed(const TopoDS_Shape& shape)
{
    BRepMesh_IncrementalMesh(shape, 0.5, false, 0.35, false);
    return shape;
}

TopoDS_Shape cut(const TopoDS_Shape& from, const TopTools_ListOfShape& tools)
{
    BRepAlgoAPI_Cut operation;
    TopTools_ListOfShape arguments;
    arguments.Append(from);
    operation.SetArguments(arguments);
    operation.SetTools(tools);
    operation.Build();
    return meshed(operation.Shape());
}

/// A box with a hole through it.
const TopoDS_Shape& shapeOf(int index)
{
    static const std::vector<TopoDS_Shape> shapes = [] {
        std::vector<TopoDS_Shape> made;
        for (int i = 0; i < distinctShapes; ++i) {
            TopTools_ListOfShape hole;
            hole.Append(BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(50, 40, -10), gp::DZ()), 20 + 0.5 * i, 200).Shape());
            made.push_back(cut(BRepPrimAPI_MakeBox(100 + 5 * i, 80, 60 + 2 * i).Shape(), hole));
        }
        return made;
    }();
    return shapes[static_cast<std::size_t>(index % distinctShapes)];
}

Things manyBodies(int count)
{
    const int side = static_cast<int>(std::ceil(std::sqrt(count)));
    Things things;
    for (int k = 0; k < count; ++k)
        things.push_back({shapeOf(k), "frames-" + std::to_string(k % distinctShapes),
                          gp_Vec(cell * (k % side), cell * static_cast<double>(k / side), 0)});
    return things;
}

/// A plate with many holes, each of them of two radii: some 660 faces.
Things onePlate()
{
    const int across = bench::sized(18, 3);
    TopTools_ListOfShape holes;
    for (int i = 0; i < across; ++i)
        for (int j = 0; j < across; ++j) {
            const gp_Pnt at(60.0 * i, 60.0 * j, 0);
            holes.Append(BRepPrimAPI_MakeCylinder(gp_Ax2(at.Translated({0, 0, -10}), gp::DZ()), 15, 60).Shape());
            if ((i + j) % 2 == 0)
                holes.Append(BRepPrimAPI_MakeCylinder(gp_Ax2(at.Translated({0, 0, 20}), gp::DZ()), 22, 60).Shape());
        }
    const double length = 60.0 * across;
    return {{cut(BRepPrimAPI_MakeBox(gp_Pnt(-30, -30, 0), length, length, 40).Shape(), holes), "frames-plate", {}}};
}

/// The shape of a file, with triangles as the viewer gives them.
Things partOf(const std::filesystem::path& file)
{
    TopoDS_Shape shape;
    if (file.extension() == ".brep") {
        BRepTools::Read(shape, file.c_str(), BRep_Builder());
    } else {
        STEPControl_Reader reader;
        if (reader.ReadFile(file.c_str()) != IFSelect_RetDone)
            throw std::runtime_error("cannot read " + file.string());
        reader.TransferRoots();
        shape = reader.OneShape();
    }
    Bnd_Box box;
    BRepBndLib::Add(shape, box);
    const double size = box.CornerMin().Distance(box.CornerMax());
    BRepMesh_IncrementalMesh(shape, std::min(size / 2000, 1.0), false, 0.2, false);
    return {{shape, "frames-" + file.string(), {}}};
}

/// Where the camera stands, and what it looks at.
struct Orbit {
    explicit Orbit(const Things& things)
    {
        Bnd_Box box;
        for (const Thing& thing : things) {
            box.Add(gp_Pnt(thing.place.XYZ()));
            if (things.size() == 1)
                BRepBndLib::Add(thing.shape, box);
        }
        const gp_Pnt low = box.CornerMin(), high = box.CornerMax();
        middle = gp_Pnt((low.X() + high.X()) / 2, (low.Y() + high.Y()) / 2,
                        things.size() == 1 ? (low.Z() + high.Z()) / 2 : 40);
        distance = 1.15 * low.Distance(high) / 2 / std::sin(verticalAngle / 2);
    }
    gp_Pnt eye(int frame) const
    {
        const double angle = 0.5 + step * frame;
        return middle.Translated(gp_Vec(gp_Dir(std::cos(angle), -std::sin(angle), 0.7)) * distance);
    }

    gp_Pnt middle;
    double distance;
};

rob::Posef poseOf(const gp_Pnt& eye, const gp_Pnt& target)
{
    const gp_Dir back(gp_Vec(target, eye));
    const gp_Dir right = gp::DZ().Crossed(back);
    const gp_Dir up = back.Crossed(right);
    const auto axis = [](const gp_Dir& d) { return rob::normalized(rob::Vec3f(rob::Vec3d(d.X(), d.Y(), d.Z()))); };
    return {rob::Posf(rob::Posd(eye.X(), eye.Y(), eye.Z())),
            rob::Rotationf::FromAxes(axis(right), axis(up), axis(back))};
}

/// The station and its scene, for as long as this lives.
class Ours {
public:
    Ours(const Things& things, unsigned width, unsigned height, unsigned samples)
        : scene(bench::startedScene()), target(width, height, samples)
    {
        for (const Thing& thing : things) {
            auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
            part->setPose(rob::Posed(rob::Posd(thing.place.X(), thing.place.Y(), thing.place.Z())));
            const auto body = part->addBody("body");
            body->setGeometry(thing.name, "brep");
            body->setShape(thing.shape);
            layout::Layout::inst().addPart(part);
        }
        Scene::LoadStation();
        scene.processMsgs();
        if (Scene::GetWorldVisual()->getBodiesNum() != things.size())
            throw std::logic_error("not every part was loaded");
        scene.setGridVisible(false); // the others have none
        visual::Camera& camera = *visual::Camera::Get();
        camera.setRenderTarget(target.renderTarget());
        camera.setHFOV(static_cast<float>(2 * std::atan(std::tan(verticalAngle / 2) * width / height)));
    }
    ~Ours()
    {
        visual::Camera::Get()->setRenderTarget(nullptr);
        for (const auto& part : layout::Layout::inst().parts)
            scene.removeVisual(part->getId());
        scene.processMsgs();
        layout::Layout::inst().clear();
    }
    Ours(const Ours&) = delete;
    Ours& operator=(const Ours&) = delete;

    /// As if somebody dragged it.
    void moveOneBody(double by)
    {
        const auto& part = layout::Layout::inst().parts.front();
        scene.setVisualPose(part->getId(), rob::Posef(rob::Posf(rob::Posd(0, 0, by))));
    }
    std::vector<std::uint8_t> draw(const gp_Pnt& eye, const gp_Pnt& middle, double distance)
    {
        visual::Camera& camera = *visual::Camera::Get();
        camera.setWorldPose(poseOf(eye, middle));
        camera.setClipDist(static_cast<float>(distance / 100), static_cast<float>(distance * 3));
        scene.processMsgs();
        visual::renderFrame();
        return target.read();
    }

private:
    Scene& scene;
    visual::OffscreenTarget target;
};

/// The share of pixels that are not as the one in the upper left corner: the bodies.
double shownShare(const std::vector<std::uint8_t>& pixels)
{
    std::size_t shown = 0;
    for (std::size_t i = 0; i + 2 < pixels.size(); i += 3)
        shown += pixels[i] != pixels[0] || pixels[i + 1] != pixels[1] || pixels[i + 2] != pixels[2] ? 1 : 0;
    return 3 * static_cast<double>(shown) / static_cast<double>(pixels.size());
}

void expectBodies(const char* whose, const std::vector<std::uint8_t>& pixels)
{
    if (const double share = shownShare(pixels); share < 0.02 || share > 0.98)
        throw std::logic_error(std::string("the picture of ") + whose + " shows the bodies on " +
                               std::to_string(share) + " of its pixels");
}

/// What the process holds more than it did then, in millions of bytes.
double moreMemory(std::size_t before)
{
    return (static_cast<double>(bench::statusBytes("VmRSS")) - static_cast<double>(before)) / 1e6;
}

/// Frames of both in turn, with the camera a step on each time, and what each held more in memory after its first.
void drawFrames(benchmark::State& state, const std::function<Things()>& make, unsigned width, unsigned height,
                unsigned samples)
{
    bench::startedScene();
    const Things things = make();
    const Orbit orbit(things);
    for (auto _ : state) {
        bench::Contest wall, work;
        const auto race = [&](const std::string& name, const auto& draw) {
            double busy = 0;
            wall.add(name, bench::millisecondsOf([&] { busy = bench::workOf(draw); }));
            work.add(name, busy);
        };
        std::size_t before = bench::statusBytes("VmRSS");
        Ours ours(things, width, height, samples);
        expectBodies("ours", ours.draw(orbit.eye(0), orbit.middle, orbit.distance));
        state.counters["ours MB"] = moreMemory(before);
#ifdef VRK_BENCH_HAS_AIS
        before = bench::statusBytes("VmRSS");
        std::vector<std::pair<TopoDS_Shape, gp_Vec>> placed;
        for (const Thing& thing : things)
            placed.emplace_back(thing.shape, thing.place);
        bench::AisPeer peer(placed, static_cast<int>(width), static_cast<int>(height), static_cast<int>(samples));
        expectBodies("AIS", peer.draw(orbit.eye(0), orbit.middle, verticalAngle));
        state.counters["AIS MB"] = moreMemory(before);
#endif
        for (int frame = 1; frame <= frames; ++frame) {
            race("ours", [&] { ours.draw(orbit.eye(frame), orbit.middle, orbit.distance); });
#ifdef VRK_BENCH_HAS_AIS
            race("AIS", [&] { peer.draw(orbit.eye(frame), orbit.middle, verticalAngle); });
#endif
        }
#ifdef VRK_BENCH_HAS_AIS
        wall.report(state, "wall ms", "AIS");
        work.report(state, "CPU ms", "AIS");
#else
        state.counters["ours wall ms"] = wall.of("ours");
        state.counters["ours CPU ms"] = work.of("ours");
#endif
    }
}

/// A frame in which one body has moved, beside one in which nothing has.
void oneMoved64(benchmark::State& state)
{
    bench::startedScene();
    const Things things = manyBodies(static_cast<int>(state.range(0)));
    const Orbit orbit(things);
    for (auto _ : state) {
        Ours ours(things, 64, 64, 0);
        const auto draw = [&] { ours.draw(orbit.eye(0), orbit.middle, orbit.distance); };
        draw();
        bench::Contest work;
        for (int frame = 1; frame <= 3 * frames; ++frame) {
            work.add("still", bench::workOf(draw));
            ours.moveOneBody(frame);
            work.add("ours", bench::workOf(draw));
        }
        work.report(state, "CPU ms", "still");
    }
}

void bodies64(benchmark::State& state)
{
    drawFrames(
        state, [&] { return manyBodies(static_cast<int>(state.range(0))); }, 64, 64, 0);
}

void bodies1600(benchmark::State& state)
{
    drawFrames(
        state, [&] { return manyBodies(static_cast<int>(state.range(0))); }, bench::sized(1600u, 160u),
        bench::sized(1000u, 100u), 4);
}

void plate1600(benchmark::State& state)
{
    drawFrames(state, onePlate, bench::sized(1600u, 160u), bench::sized(1000u, 100u), 4);
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Iterations(1)->Unit(benchmark::kMillisecond);
    if (bench::isSmall()) {
        benchmark->Arg(40);
        return;
    }
    for (const int count : {1'000, 5'000, 20'000})
        benchmark->Arg(count);
}

BENCHMARK(bodies64)->Apply(sizes);
BENCHMARK(bodies1600)->Apply(sizes);
BENCHMARK(oneMoved64)->Apply(sizes);
BENCHMARK(plate1600)->Iterations(1)->Unit(benchmark::kMillisecond);

[[maybe_unused]] const bool hasParts = [] {
    const char* named = std::getenv("VRK_BENCH_PARTS");
    std::istringstream files(named ? named : "");
    for (std::string file; std::getline(files, file, ':');)
        benchmark::RegisterBenchmark(("part1600/" + std::filesystem::path(file).filename().string()).c_str(),
                                     [file](benchmark::State& state) {
                                         drawFrames(
                                             state, [&file] { return partOf(file); }, 1600, 1000, 4);
                                     })
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    return named != nullptr;
}();

} // namespace
