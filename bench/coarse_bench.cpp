// A step of an orbit around many bodies in a window, as coarse as it may be drawn. Needs a display of 1600 x 1000 pixels;
// xvfb-run gives it one.

#include "bench/support/Contest.h"
#include "bench/support/Size.h"
#include "bench/support/Started.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "scene/ViewLook.h"
#include "view/Camera.h"
#include "view/RenderFrame.h"
#include "view/WindowTarget.h"
#include "visual/Visual.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <gp_Ax2.hxx>

#include <benchmark/benchmark.h>
#include <xcb/xcb.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using namespace vrk;
using visual::Coarseness;
using visual::Scene;

constexpr float cell = 260;   // model units from one body to the next
constexpr float step = 0.02f; // radians that the camera goes on about the middle
const int frames = bench::sized(12, 2);
const unsigned width = bench::sized(1600u, 160u);
const unsigned height = bench::sized(1000u, 100u);

constexpr std::array levels = {std::pair{"whole", Coarseness::Whole}, std::pair{"no edges", Coarseness::NoEdges},
                               std::pair{"fewer samples", Coarseness::FewerSamples},
                               std::pair{"fewer bodies", Coarseness::FewerBodies}};

/// Boxes with a hole, of 20 shapes, on a square.
class Hall {
public:
    explicit Hall(int count) : scene(bench::startedScene()), side(static_cast<int>(std::ceil(std::sqrt(count))))
    {
        for (int i = 0; i < count; ++i) {
            auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
            part->setPose(rob::Posed(
                rob::Posd(rob::Posf(cell * static_cast<float>(i % side), cell * static_cast<float>(i / side), 0))));
            const auto body = part->addBody("body");
            body->setGeometry("coarse-" + std::to_string(i % 20), "brep");
            body->setShape(shapeOf(i % 20));
            layout::Layout::inst().addPart(part);
        }
        Scene::LoadStation();
        scene.processMsgs();
        if (Scene::GetWorldVisual()->getBodiesNum() != static_cast<unsigned>(count))
            throw std::logic_error("not every part was loaded");
        scene.setGridVisible(false);
    }
    ~Hall()
    {
        for (const auto& part : layout::Layout::inst().parts)
            scene.removeVisual(part->getId());
        scene.processMsgs();
        layout::Layout::inst().clear();
    }
    Hall(const Hall&) = delete;
    Hall& operator=(const Hall&) = delete;

    /// @param share  of the hall's length, between the camera and the middle.
    void lookFrom(float share, int frame)
    {
        const float length = cell * static_cast<float>(side);
        const float angle = 0.5f + step * static_cast<float>(frame);
        const rob::Dirf back = rob::normalized(rob::Vec3f(std::cos(angle), -std::sin(angle), 0.7f));
        const rob::Dirf right = rob::normalized(rob::Vec3f(0, 0, 1).cross(back));
        const rob::Posf eye = rob::Posf(length / 2, length / 2, 40) + back * (share * length);
        visual::Camera& camera = *visual::Camera::Get();
        camera.setHFOV(0.75f);
        camera.setClipDist(length / 1000, length * 5);
        camera.setWorldPose({eye, rob::Rotationf::FromAxes(right, rob::Dirf(back.cross(right)), back)});
        scene.processMsgs();
    }

private:
    static const TopoDS_Shape& shapeOf(int index)
    {
        static std::array<TopoDS_Shape, 20> shapes;
        TopoDS_Shape& shape = shapes[static_cast<std::size_t>(index)];
        if (shape.IsNull()) {
            shape = BRepAlgoAPI_Cut(
                        BRepPrimAPI_MakeBox(100 + 5 * index, 80, 60 + 2 * index).Shape(),
                        BRepPrimAPI_MakeCylinder(gp_Ax2(gp_Pnt(50, 40, -10), gp::DZ()), 20 + 0.5 * index, 200).Shape())
                        .Shape();
            BRepMesh_IncrementalMesh(shape, 0.5, false, 0.35, false);
        }
        return shape;
    }

    Scene& scene;
    int side;
};

/// A window as an application makes it.
class Window {
public:
    Window() : connection(xcb_connect(nullptr, nullptr)), id(xcb_generate_id(connection))
    {
        const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, id, screen.root, 0, 0, static_cast<std::uint16_t>(width),
                          static_cast<std::uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen.root_visual, 0,
                          nullptr);
        xcb_map_window(connection, id);
        std::free(
            xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr)); // it is there by then
    }
    ~Window() { xcb_disconnect(connection); }
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

private:
    xcb_connection_t* connection;

public:
    const xcb_window_t id;
};

/// Steps of all levels in turn.
void orbit(benchmark::State& state, float share)
{
    bench::startedScene();
    Hall hall(static_cast<int>(state.range(0)));
    const Window window;
    visual::WindowTarget target(window.id, width, height, 4);
    visual::Camera::Get()->setRenderTarget(target.renderTarget());
    for (auto _ : state) {
        bench::Contest wall, work;
        for (int frame = 0; frame <= frames; ++frame)
            for (const auto& [name, level] : levels) {
                double busy = 0;
                const double took = bench::millisecondsOf([&, level = level] {
                    busy = bench::workOf([&] {
                        visual::SetCoarseness(level);
                        hall.lookFrom(share, frame);
                        visual::renderFrame();
                    });
                });
                if (frame == 0) // it makes what others find made
                    continue;
                wall.add(name, took);
                work.add(name, busy);
            }
        for (const auto& [name, level] : levels) {
            state.counters[std::string(name) + " wall ms"] = wall.of(name);
            state.counters[std::string(name) + " CPU ms"] = work.of(name);
        }
    }
    visual::SetCoarseness(Coarseness::Whole);
    visual::Camera::Get()->setRenderTarget(nullptr);
}

void fromAfar(benchmark::State& state)
{
    orbit(state, 1.4f);
}

/// From above the edge of the hall: what is near has edges.
void fromNear(benchmark::State& state)
{
    orbit(state, 0.2f);
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Iterations(1)->Unit(benchmark::kMillisecond);
    if (bench::isSmall()) {
        benchmark->Arg(40);
        return;
    }
    for (const int count : {5'000, 20'000})
        benchmark->Arg(count);
}

BENCHMARK(fromAfar)->Apply(sizes);
BENCHMARK(fromNear)->Apply(sizes);

} // namespace
