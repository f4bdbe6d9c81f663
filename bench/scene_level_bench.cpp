// The hierarchy over the objects of a scene, made anew for each of 20 frames in which all 50,000 of them have moved,
// against Embree's and Open CASCADE's.

#include "bench/support/BinnedPeer.h"
#include "bench/support/Contest.h"
#include "bench/support/EmbreePeer.h"
#include "bench/support/Rng.h"
#include "bench/support/Size.h"

#include "selection/geometry/BVHBuilder.h"
#include "selection/geometry/PrimitiveContainer.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace vrk;

const unsigned boxCount = bench::sized(50'000u, 1'000u);
const unsigned frames = bench::sized(20u, 2u);

std::vector<visual::Box> boxesOfFrame(unsigned frame)
{
    std::vector<visual::Box> boxes;
    boxes.reserve(boxCount);
    for (unsigned i = 0; i < boxCount; ++i) {
        bench::Rng r(0xB0C5000000 + i);
        double center[3], half[3];
        for (unsigned axis = 0; axis < 3; ++axis)
            center[axis] = r.uni(0, axis < 2 ? 20000 : 3000);
        for (double& h : half)
            h = r.uni(20, 200);
        for (double& c : center)
            c += frame * r.uni(-50, 50);
        boxes.emplace_back(static_cast<float>(center[0] - half[0]), static_cast<float>(center[1] - half[1]),
                           static_cast<float>(center[2] - half[2]), static_cast<float>(center[0] + half[0]),
                           static_cast<float>(center[1] + half[1]), static_cast<float>(center[2] + half[2]));
    }
    return boxes;
}

/// Objects of nothing but a box.
void place(selection::PrimitiveContainer& container, const std::vector<visual::Box>& boxes)
{
    while (container.primitives.size() < boxes.size())
        container.primitives.push_back(new selection::BVHPrimitive);
    for (std::size_t i = 0; i < boxes.size(); ++i)
        container.primitives[i]->box = boxes[i];
}

struct CountingRay {
    rob::Vec3d origin, direction;

    visual::Ray narrowed() const { return {rob::Posf(origin), rob::Dirf(direction)}; }
};

std::vector<CountingRay> countingRays()
{
    bench::Rng r(0x5EED0007);
    std::vector<CountingRay> rays;
    for (unsigned i = 0; i < 1000; ++i) {
        const double fromX = r.uni(0, 20000), fromY = r.uni(0, 20000), toX = r.uni(0, 20000), toY = r.uni(0, 20000);
        rays.push_back(
            {{fromX, fromY, 8000}, rob::Vec3d(rob::normalized(rob::Vec3d(toX - fromX, toY - fromY, -8000)))});
    }
    return rays;
}

/// @param room  by how much the box is larger on each side.
bool meets(const visual::Box& box, const CountingRay& ray, double room)
{
    double from = 0, to = std::numeric_limits<double>::infinity();
    for (unsigned axis = 0; axis < 3; ++axis) {
        const double a = (rob::Vec3d(box.min)[axis] - room - ray.origin[axis]) / ray.direction[axis];
        const double b = (rob::Vec3d(box.max)[axis] + room - ray.origin[axis]) / ray.direction[axis];
        from = std::max(from, std::min(a, b));
        to = std::min(to, std::max(a, b));
    }
    return from <= to;
}

/// Against a loop in double precision. A ray in single precision, at 20,000 units from the origin, may take a box that it
/// touches for one that it passes, and the other way round. Returns how many more are met than by the loop.
double checkAnswers(const selection::PrimitiveContainer& container, const std::vector<visual::Box>& boxes)
{
    constexpr double rounding = 0.01;
    std::size_t expected = 0, surely = 0, perhaps = 0;
    std::vector<selection::BVHPrimitive*> ours;
    for (const CountingRay& ray : countingRays()) {
        for (const visual::Box& box : boxes) {
            if (!meets(box, ray, rounding))
                continue;
            ++perhaps;
            expected += meets(box, ray, 0) ? 1 : 0;
            surely += meets(box, ray, -rounding) ? 1 : 0;
        }
        container.queryRay(ray.narrowed(), ours);
    }
    if (!bench::isSmall() && expected != 15'780)
        throw std::logic_error("the workload is another one: " + std::to_string(expected) + " boxes met");
    if (ours.size() < surely || ours.size() > perhaps)
        throw std::logic_error("the hierarchy meets other boxes than a loop does");
    return static_cast<double>(ours.size()) - static_cast<double>(expected);
}

void rebuildSceneLevel(benchmark::State& state)
{
    bench::Contest contest;
    for (auto _ : state) {
        double ours = 0;
        selection::PrimitiveContainer container;
        for (unsigned frame = 0; frame < frames; ++frame) {
            const std::vector<visual::Box> boxes = boxesOfFrame(frame);
            place(container, boxes);
            const double took =
                bench::millisecondsOf([&] { container.bvh = selection::BVHBuilder(&container).build(); });
            ours += took;
            contest.add("ours", took);

            bench::BinnedBoxes binned(boxes);
            contest.add("OCCT", bench::millisecondsOf([&] { bench::buildBinnedTree(binned); }));
            for (const unsigned threads : {1u, 2u}) {
                bench::EmbreeScene embree(threads);
                embree.addBoxes(boxes);
                contest.add(threads == 1 ? "Embree" : "Embree, 2 threads",
                            bench::millisecondsOf([&] { embree.build(); }));
            }
        }
        state.counters["more boxes met than by a loop"] = checkAnswers(container, boxesOfFrame(frames - 1));
        state.SetIterationTime(ours / 1000 / frames);
    }
    contest.report(state, "ms", "Embree");
}

BENCHMARK(rebuildSceneLevel)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);

} // namespace
