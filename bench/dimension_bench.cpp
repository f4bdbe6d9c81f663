// A thousand dimensions: what a frame takes with them, drawn by the visual that has lines and texts in two batches, and by
// the prescribed list, which has a visual each and no texts; and a frame with none. The picture has 64 x 64 pixels, so that
// it is the processor's work for the batches that counts, and not the filling of pixels. Needs a display; xvfb-run gives it
// one.

#include "bench/support/Size.h"
#include "bench/support/Started.h"

#include "preview/annotation/DimensionsVisual.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"

#include <Ogre.h>

#include <fmt/format.h>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

using namespace vrk;
using visual::Scene;

const unsigned count = bench::sized(1000u, 20u);

rob::Posf fromOf(unsigned i)
{
    return {20.f * static_cast<float>(i % 40), 0, 30.f * static_cast<float>(i / 40)};
}

rob::Posf toOf(unsigned i)
{
    const rob::Posf from = fromOf(i);
    return {from.x + 15, from.y + 10, from.z + 20};
}

visual::DimensionDrawing drawingOf(unsigned i, double value)
{
    const rob::Posf from = fromOf(i), to = toOf(i);
    return {{{from, to}},
            {from, to},
            fmt::format("{:.2f} mm", value),
            {(from.x + to.x) / 2, (from.y + to.y) / 2, (from.z + to.z) / 2},
            visual::DimensionDrawing::Look::Plain};
}

/// A target of the camera, which sees all of them.
class Seen {
public:
    Seen() : scene(bench::startedScene()), target(64u, 64u, 0u)
    {
        visual::Camera::Get()->setRenderTarget(target.renderTarget());
        scene.setCameraPose({rob::Posf(400, -1800, 400), rob::Rotationf(0.70710678f, 0.70710678f, 0, 0)});
        scene.processMsgs();
    }
    ~Seen() { visual::Camera::Get()->setRenderTarget(Ogre::Root::getSingleton().getRenderTarget("ogrewindow")); }
    Seen(const Seen&) = delete;
    Seen& operator=(const Seen&) = delete;

    /// To the last pixel: what is only handed to the driver has not been paid for.
    void frame() const
    {
        Ogre::Root::getSingleton().renderOneFrame();
        benchmark::DoNotOptimize(target.read());
    }

    Scene& scene;

private:
    visual::OffscreenTarget target;
};

void frameWithNone(benchmark::State& state)
{
    const Seen seen;
    for (auto _ : state)
        seen.frame();
}

std::unique_ptr<visual::DimensionsVisual> makeDimensions()
{
    auto dimensions = std::make_unique<visual::DimensionsVisual>(Scene::GetWorldVisual());
    dimensions->setCount(count);
    for (unsigned i = 0; i < count; ++i)
        dimensions->set(i, drawingOf(i, 26.93));
    return dimensions;
}

void frameWithDimensions(benchmark::State& state)
{
    const Seen seen;
    const auto dimensions = makeDimensions();
    seen.frame();
    for (auto _ : state)
        seen.frame();
}

void frameWithDimensionsElsewhere(benchmark::State& state)
{
    const Seen seen;
    const auto dimensions = makeDimensions();
    seen.scene.setCameraPose({rob::Posf(400, -1800, 400), rob::Rotationf(0.70710678f, -0.70710678f, 0, 0)});
    seen.scene.processMsgs();
    seen.frame();
    for (auto _ : state)
        seen.frame();
}

void frameWithOneThatChanges(benchmark::State& state)
{
    const Seen seen;
    const auto dimensions = makeDimensions();
    seen.frame();
    unsigned run = 0;
    for (auto _ : state) {
        dimensions->set(count / 2, drawingOf(count / 2, 10 + ++run % 80));
        seen.frame();
    }
}

void frameWithAllThatChange(benchmark::State& state)
{
    const Seen seen;
    const auto dimensions = makeDimensions();
    seen.frame();
    unsigned run = 0;
    for (auto _ : state) {
        ++run;
        for (unsigned i = 0; i < count; ++i)
            dimensions->set(i, drawingOf(i, 10 + run % 80));
        seen.frame();
    }
}

void frameWithPrescribedOnes(benchmark::State& state)
{
    const Seen seen;
    for (unsigned i = 0; i < count; ++i)
        seen.scene.createDistanceVisual(rob::Posd(fromOf(i)), rob::Posd(toOf(i)));
    seen.scene.processMsgs();
    seen.frame();
    for (auto _ : state)
        seen.frame();
    seen.scene.removeDimensionVisual();
    seen.scene.processMsgs();
}

BENCHMARK(frameWithNone)->Unit(benchmark::kMillisecond);
BENCHMARK(frameWithDimensions)->Unit(benchmark::kMillisecond);
BENCHMARK(frameWithDimensionsElsewhere)->Unit(benchmark::kMillisecond);
BENCHMARK(frameWithOneThatChanges)->Unit(benchmark::kMillisecond);
BENCHMARK(frameWithAllThatChange)->Unit(benchmark::kMillisecond);
BENCHMARK(frameWithPrescribedOnes)->Unit(benchmark::kMillisecond);

} // namespace
