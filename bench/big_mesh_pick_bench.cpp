// One mesh of 5,000,000 triangles: its hierarchy, the memory that it takes, and rays against it, beside Embree's and a
// CGAL AABB tree.

#include "bench/support/CgalPeer.h"
#include "bench/support/Contest.h"
#include "bench/support/EmbreePeer.h"
#include "bench/support/PickWork.h"
#include "bench/support/Size.h"
#include "bench/support/Workloads.h"

#include "mesh/Mesh.h"
#include "selection/SensitiveMesh.h"
#include "selection/geometry/Math.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <malloc.h>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

using namespace vrk;

const unsigned along = bench::sized(2500u, 100u);
const unsigned around = bench::sized(1000u, 50u);
const std::size_t triangleCount = std::size_t{2} * along * around; // 5,000,000 of the full work
constexpr unsigned threads = 2;

visual::Mesh& bigMesh()
{
    static visual::Mesh mesh = [] {
        bench::TorusMesh torus = bench::makeTorusMesh(along, around);
        visual::Mesh made("torus");
        made.vertices = std::move(torus.vertices);
        made.vertices.reserve(made.vertices.size() + 1); // Embree reads past the end
        made.indices = std::move(torus.indices);
        return made;
    }();
    return mesh;
}

std::unique_ptr<bench::EmbreeScene> embreeOfBigMesh()
{
    auto scene = std::make_unique<bench::EmbreeScene>(threads);
    scene->addTriangles(bigMesh().vertices, bigMesh().indices);
    scene->build();
    return scene;
}

std::unique_ptr<selection::SensitiveMesh> oursOfBigMesh()
{
    return std::make_unique<selection::SensitiveMesh>(&bigMesh(), nullptr, rob::Posef());
}

std::size_t heapBytes()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void buildBigMesh(benchmark::State& state)
{
    bigMesh().getBounds();
    bench::Contest contest, work;
    for (auto _ : state) {
        const std::size_t before = heapBytes();
        std::unique_ptr<selection::SensitiveMesh> ours;
        double took = 0;
        work.add("ours", bench::workOf([&] { took = bench::millisecondsOf([&] { ours = oursOfBigMesh(); }); }));
        contest.add("ours", took);
        state.counters["ours B/triangle"] =
            static_cast<double>(heapBytes() - before) / static_cast<double>(triangleCount);
        // The other hierarchy, for the first question that is not a pick.
        contest.add("ours, for other questions", bench::millisecondsOf([&] { ours->getRoot(); }));
        state.counters["ours with both hierarchies B/triangle"] =
            static_cast<double>(heapBytes() - before) / static_cast<double>(triangleCount);
        ours.reset();
        malloc_trim(0);

        std::unique_ptr<bench::EmbreeScene> embree;
        work.add("Embree", bench::workOf([&] {
                     contest.add("Embree", bench::millisecondsOf([&] { embree = embreeOfBigMesh(); }));
                 }));
        state.counters["Embree B/triangle"] =
            static_cast<double>(bench::EmbreeScene::bytesHeld(threads)) / static_cast<double>(triangleCount);
        state.SetIterationTime(took / 1000);
    }
    contest.report(state, "ms", "Embree");
    work.report(state, "ms of all cores", "Embree");
}

/// Embree's answers, which are known to be those of a loop over all triangles.
std::vector<bench::EmbreeScene::Hit> referenceHits(const bench::EmbreeScene& embree,
                                                   const std::vector<visual::Ray>& rays)
{
    std::vector<bench::EmbreeScene::Hit> hits;
    bench::Checksum sum;
    std::size_t hitCount = 0;
    for (const visual::Ray& ray : rays) {
        hits.push_back(embree.nearest(ray));
        sum.add(hits.back().triangle);
        hitCount += hits.back().triangle != bench::EmbreeScene::none ? 1 : 0;
    }
    if (bench::isSmall())
        return hits;
    if (hitCount != 8080 || sum.value != 0x2de4cfb54c46141c)
        throw std::logic_error("the workload is another one: " + std::to_string(hitCount) + " hits");
    return hits;
}

/// Our answers must be Embree's, but where a direction is within 0.001 of an axis plane: the test of a ray against a box
/// takes such a ray for one that keeps to the plane, and so it may pass a triangle by. Returns how many rays do.
std::size_t checkAnswers(const selection::SensitiveMesh& ours, const std::vector<visual::Ray>& rays,
                         const std::vector<bench::EmbreeScene::Hit>& reference)
{
    std::size_t count = 0;
    selection::Result result;
    for (std::size_t i = 0; i < rays.size(); ++i) {
        ours.intersectRay(result, rays[i]);
        const bool isHit = reference[i].triangle != bench::EmbreeScene::none;
        if (result.hit == isHit && (!isHit || std::abs(result.distance - reference[i].distance) < 0.01f))
            continue;
        ++count;
        const rob::Dirf& d = rays[i].direction;
        if (std::min({std::abs(d.x), std::abs(d.y), std::abs(d.z)}) >= selection::Math::epsilon)
            throw std::logic_error("the pick is another one than Embree's");
    }
    return count;
}

void pickInBigMesh(benchmark::State& state)
{
    const std::vector<visual::Ray> rays = bench::makeBigMeshRays();
    const auto embree = embreeOfBigMesh();
    const auto ours = oursOfBigMesh();
    const bench::CgalTree cgal(bigMesh().vertices, bigMesh().indices);
    const std::size_t passedBy = checkAnswers(*ours, rays, referenceHits(*embree, rays));

    bench::Contest contest;
    for (auto _ : state) {
        selection::Result result;
        contest.timePicks("ours", rays.size(), [&](std::size_t i) { ours->intersectRay(result, rays[i]); });
        contest.timePicks("Embree", rays.size(),
                          [&](std::size_t i) { benchmark::DoNotOptimize(embree->nearest(rays[i])); });
        contest.timePicks("CGAL", rays.size(), [&](std::size_t i) { benchmark::DoNotOptimize(cgal.nearest(rays[i])); });
        state.SetIterationTime(contest.of("ours") * 1e-9);
    }
    contest.report(state, "ns", "Embree");
    contest.report(state, "ns p99", "Embree", 0.99);
    state.counters["passed by"] = static_cast<double>(passedBy);
}

BENCHMARK(buildBigMesh)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);
BENCHMARK(pickInBigMesh)->Unit(benchmark::kNanosecond)->UseManualTime()->Iterations(3);

} // namespace
