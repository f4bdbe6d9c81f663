// A cloud of 10 million points, without and with normals: the visual's building against a bare manual object that is
// given the same points, and against the memcpy of the vertex buffer; and a picture of them. Needs a display; xvfb-run
// gives it one.

#include "bench/support/Rng.h"
#include "bench/support/Size.h"
#include "bench/support/Started.h"

#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "selection/VisualSelection.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "view/RenderFrame.h"
#include "visual/PointCloudVisual.h"

#include <Ogre.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace {

using namespace vrk;

const std::size_t pointCount = bench::sized(10'000'000, 10'000);

/// Random in a room of 20 x 20 x 3 thousand units.
const layout::PointCloud::Points& roomPoints()
{
    static const layout::PointCloud::Points points = [] {
        bench::Rng random(5);
        const auto upTo = [&random](double limit) { return static_cast<float>(random.uni(0, limit)); };
        layout::PointCloud::Points made(pointCount);
        for (rob::Posf& point : made)
            point = {upTo(20000), upTo(20000), upTo(3000)};
        return made;
    }();
    return points;
}

layout::PointCloud makeCloud(bool withNormals)
{
    layout::PointCloud::Normals normals(withNormals ? pointCount : 0, rob::Vec3f(0, 0, 1));
    return {sdf::SdfManager::GenerateTransientId(), "cloud", roomPoints(), std::move(normals)};
}

std::size_t floatsOf(bool withNormals)
{
    return pointCount * (withNormals ? 6 : 3);
}

/// @param state  range 0: whether there are normals.
void buildCloudVisual(benchmark::State& state)
{
    bench::startedScene();
    layout::PointCloud node = makeCloud(state.range(0) != 0);
    auto* cloud = new visual::PointCloudVisual(visual::Scene::GetWorldVisual(), &node);
    for (auto _ : state)
        cloud->updateRenderPrimitive();
    const auto& sections =
        dynamic_cast<Ogre::ManualObject&>(*cloud->getSceneNode()->getAttachedObject(0)).getSections();
    if (sections.size() != 1 || sections[0]->getRenderOperation()->vertexData->vertexCount != pointCount)
        throw std::logic_error("the points are not one draw call");
    visual::Visual::Delete(cloud);
}

/// What any use of OGRE's manual object costs.
void buildManualObject(benchmark::State& state)
{
    bench::startedScene();
    const bool withNormals = state.range(0) != 0;
    const layout::PointCloud::Points& points = roomPoints();
    Ogre::SceneManager& manager = *visual::Scene::GetSceneManager();
    Ogre::ManualObject* object = manager.createManualObject("bare");
    for (auto _ : state) {
        object->clear();
        object->estimateVertexCount(points.size());
        object->begin("PointCloud", Ogre::RenderOperation::OT_POINT_LIST);
        for (const rob::Posf& point : points) {
            object->position(point.x, point.y, point.z);
            if (withNormals)
                object->normal(0, 0, 1);
        }
        object->end();
    }
    manager.destroyManualObject(object);
}

/// The least that a building can cost: what the driver is handed, copied once, into memory that was touched before.
void copyVertexBuffer(benchmark::State& state)
{
    const std::vector<float> source(floatsOf(state.range(0) != 0), 1.0f);
    std::vector<float> target(source.size());
    for (auto _ : state) {
        std::memcpy(target.data(), source.data(), source.size() * sizeof(float));
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * source.size() * sizeof(float)));
}

/// The same through OGRE: a fresh hardware buffer, written once.
void uploadVertexBuffer(benchmark::State& state)
{
    bench::startedScene();
    const std::size_t vertexSize = state.range(0) != 0 ? 24 : 12;
    const std::vector<float> source(floatsOf(state.range(0) != 0), 1.0f);
    for (auto _ : state) {
        const auto buffer = Ogre::HardwareBufferManager::getSingleton().createVertexBuffer(
            vertexSize, pointCount, Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
        buffer->writeData(0, source.size() * sizeof(float), source.data());
    }
}

/// A third of the points is selected: two sections, and a look-up for each point.
void selectThirdOfCloud(benchmark::State& state)
{
    bench::startedScene();
    layout::PointCloud node = makeCloud(state.range(0) != 0);
    auto* cloud = new visual::PointCloudVisual(visual::Scene::GetWorldVisual(), &node);
    std::vector<std::uint64_t> third;
    for (std::uint64_t i = 0; i < pointCount; i += 3)
        third.push_back(i);
    for (auto _ : state) {
        cloud->setSelectedIndices(third);
        state.PauseTiming();
        cloud->resetAppearance();
        state.ResumeTiming();
    }
    visual::Visual::Delete(cloud);
}

std::vector<std::uint32_t> thirdOfCloud()
{
    std::vector<std::uint32_t> third;
    for (std::uint32_t i = 0; i < pointCount; i += 3)
        third.push_back(i);
    return third;
}

/// The same third, marked: over the vertices that are there.
void markThirdOfCloud(benchmark::State& state)
{
    bench::startedScene();
    layout::PointCloud node = makeCloud(state.range(0) != 0);
    auto* cloud = new visual::PointCloudVisual(visual::Scene::GetWorldVisual(), &node);
    const std::vector<std::uint32_t> third = thirdOfCloud();
    for (auto _ : state)
        cloud->markPoints(third);
    if (cloud->getMarkedPoints().size() != third.size())
        throw std::logic_error("not all are marked");
    visual::Visual::Delete(cloud);
}

/// The same third, hidden, until the picking service answers again.
void hideThirdOfCloud(benchmark::State& state)
{
    bench::startedScene();
    selection::VisualSelection& service = *selection::VisualSelection::Get();
    layout::PointCloud node = makeCloud(state.range(0) != 0);
    auto* cloud = new visual::PointCloudVisual(visual::Scene::GetWorldVisual(), &node);
    service.update();
    const std::vector<std::uint32_t> third = thirdOfCloud();
    for (auto _ : state) {
        cloud->hidePoints(std::make_shared<const layout::PointSet>(third));
        service.update();
    }
    visual::Visual::Delete(cloud);
}

/// A picture of all of it, with the samples that the viewer takes; on software Mesa the processor is the graphics card, too.
/// @param state  range 0: whether there are normals.
void drawCloud(benchmark::State& state)
{
    visual::Scene& scene = bench::startedScene();
    const visual::OffscreenTarget target(1920, 1080, 4);
    visual::Camera::Get()->setRenderTarget(target.renderTarget());
    visual::Camera::Get()->setClipDist(10, 200000);
    layout::PointCloud node = makeCloud(state.range(0) != 0);
    auto* cloud = new visual::PointCloudVisual(visual::Scene::GetWorldVisual(), &node);
    scene.setCameraPose({rob::Posf(10000, 10000, 36000), rob::Rotationf(1, 0, 0, 0)}); // from above
    scene.processMsgs();
    visual::renderFrame();
    const std::vector<std::uint8_t> pixels = target.read();
    if (std::ranges::count(pixels, pixels.front()) > static_cast<std::ptrdiff_t>(pixels.size() * 9 / 10))
        throw std::logic_error("the cloud is not in the picture");
    for (auto _ : state) {
        visual::renderFrame();
        benchmark::DoNotOptimize(target.read());
    }
    visual::Visual::Delete(cloud);
}

BENCHMARK(copyVertexBuffer)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(uploadVertexBuffer)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(buildManualObject)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(buildCloudVisual)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(selectThirdOfCloud)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(markThirdOfCloud)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(hideThirdOfCloud)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(drawCloud)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

} // namespace
