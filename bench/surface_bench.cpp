// A surface of 200,000 triangles made coarser to a tenth, and covered anew by edges of the mean length, beside other
// programs' ways: the time, and how good what comes of it is. And the edges that a mesh is drawn with.

#include "bench/support/Contest.h"
#include "bench/support/Rng.h"
#include "bench/support/Size.h"
#include "bench/support/SurfacePeers.h"
#include "bench/support/Workloads.h"

#include "platform/cam/Remesh.h"
#include "platform/cam/Simplify.h"
#include "platform/cam/SurfaceTree.h"
#include "platform/geometry/MeshEdges.h"

#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <string>

namespace {

using namespace vrk;
using cam::TriangleSurface;
using rob::Vec3d;

TriangleSurface torusOf(unsigned along, unsigned around)
{
    const bench::TorusMesh torus = bench::makeTorusMesh(along, around);
    TriangleSurface result;
    for (const rob::Posf& p : torus.vertices)
        result.vertices.emplace_back(p.x, p.y, p.z);
    for (std::size_t i = 0; i < torus.indices.size(); i += 3)
        result.triangles.push_back({torus.indices[i], torus.indices[i + 1], torus.indices[i + 2]});
    return result;
}

const TriangleSurface& surface()
{
    static const TriangleSurface made = torusOf(bench::sized(500u, 50u), bench::sized(200u, 20u));
    return made;
}

std::array<Vec3d, 3> cornersOf(const TriangleSurface& of, const TriangleSurface::Triangle& t)
{
    return {Vec3d(of.vertices[t[0]]), Vec3d(of.vertices[t[1]]), Vec3d(of.vertices[t[2]])};
}

double meanEdge(const TriangleSurface& of)
{
    double sum = 0;
    for (const auto& t : of.triangles)
        for (const auto& [a, b] : {std::pair(t[0], t[1]), {t[1], t[2]}, {t[2], t[0]}})
            sum += (of.vertices[b] - of.vertices[a]).length();
    return sum / (3.0 * static_cast<double>(of.triangles.size()));
}

struct Distance {
    double rms = 0, largest = 0;
};

Distance distanceOf(const TriangleSurface& from, const TriangleSurface& to)
{
    const cam::SurfaceTree tree(to);
    std::vector<double> areas;
    double area = 0;
    for (const auto& t : from.triangles) {
        const auto [a, b, c] = cornersOf(from, t);
        areas.push_back(area += (b - a).cross(c - a).length());
    }
    const unsigned count = bench::sized(100000u, 1000u);
    bench::Rng rng(0xD157);
    Distance distance;
    for (unsigned i = 0; i < count; ++i) {
        const auto at = std::ranges::upper_bound(areas, rng.u01() * area) - areas.begin();
        const auto [a, b, c] = cornersOf(from, from.triangles[std::min<std::size_t>(at, areas.size() - 1)]);
        double u = rng.u01(), v = rng.u01();
        if (u + v > 1) {
            u = 1 - u;
            v = 1 - v;
        }
        const double square = tree.squaredDistance(a + (b - a) * u + (c - a) * v);
        distance.rms += square / count;
        distance.largest = std::max(distance.largest, square);
    }
    return {std::sqrt(distance.rms), std::sqrt(distance.largest)};
}

void report(benchmark::State& state, const std::string& name, const TriangleSurface& result)
{
    const Distance there = distanceOf(surface(), result), back = distanceOf(result, surface());
    double angles = 0, thin = 0;
    for (const auto& t : result.triangles) {
        const auto corners = cornersOf(result, t);
        double least = std::numbers::pi;
        for (unsigned i = 0; i < 3; ++i) {
            const Vec3d u = corners[(i + 1) % 3] - corners[i], v = corners[(i + 2) % 3] - corners[i];
            least = std::min(least, std::acos(std::clamp(u.dot(v) / (u.length() * v.length()), -1.0, 1.0)));
        }
        least *= 180 / std::numbers::pi;
        angles += least;
        thin += least < 20 ? 1 : 0;
    }
    const auto count = static_cast<double>(result.triangles.size());
    state.counters[name + " triangles"] = count;
    state.counters[name + " rms"] = std::max(there.rms, back.rms);
    state.counters[name + " largest"] = std::max(there.largest, back.largest);
    state.counters[name + " mean smallest angle"] = angles / count;
    state.counters[name + " % under 20 degrees"] = 100 * thin / count;
}

/// One sample of the time, in seconds, and what came of it.
void takeTurn(benchmark::State& state, bench::Contest& contest, const std::string& name, const bench::SurfaceWork& work)
{
    std::function<TriangleSurface()> result;
    contest.add(name, bench::millisecondsOf([&] { result = work(); }));
    report(state, name, result());
}

void decimate(benchmark::State& state)
{
    const std::size_t wanted = surface().triangles.size() / 10;
    bench::Contest contest;
    for (auto _ : state) {
        for (const auto& [name, sharp] : {std::pair("ours", 1.05), {"ours without sharp lines", std::numbers::pi}})
            takeTurn(state, contest, name, [wanted, sharp = sharp] {
                cam::SimplifyOptions options;
                options.triangles = wanted;
                options.sharp = sharp;
                return [result = cam::simplify(surface(), options).value()] { return result; };
            });
        if (!bench::isSmall() && state.counters["ours triangles"] != static_cast<double>(wanted))
            throw std::logic_error("another number of triangles than was wanted");
#ifdef VRK_BENCH_HAS_OPENMESH
        takeTurn(state, contest, "OpenMesh", bench::openMeshDecimate(surface(), wanted));
#endif
#ifdef VRK_BENCH_HAS_MESHOPTIMIZER
        takeTurn(state, contest, "meshoptimizer", bench::meshoptimizerDecimate(surface(), wanted));
#endif
#ifdef VRK_BENCH_HAS_VTK
        takeTurn(state, contest, "VTK", bench::vtkDecimate(surface(), wanted));
#endif
        state.SetIterationTime(contest.of("ours") / 1000);
    }
    contest.report(state, "ms", "ours");
}

void decimateWithin(benchmark::State& state)
{
    bench::Contest contest;
    const double tolerance = static_cast<double>(state.range(0)) * bench::sized(1.0, 10.0);
    for (auto _ : state) {
        takeTurn(state, contest, "ours", [tolerance] {
            cam::SimplifyOptions options;
            options.tolerance = tolerance;
            return [result = cam::simplify(surface(), options).value()] { return result; };
        });
        if (state.counters["ours largest"] > tolerance)
            throw std::logic_error("the tolerance is not held");
        state.SetIterationTime(contest.of("ours") / 1000);
    }
}

/// Five millions of triangles to a tenth. The peak is that of the process, with the surface.
void decimateMillions(benchmark::State& state)
{
    const TriangleSurface millions = torusOf(bench::sized(2500u, 50u), bench::sized(1000u, 20u));
    cam::SimplifyOptions options;
    options.triangles = millions.triangles.size() / 10;
    for (auto _ : state) {
        const double time = bench::millisecondsOf([&] {
            if (cam::simplify(millions, options).value().triangles.size() != options.triangles)
                throw std::logic_error("another number of triangles than was wanted");
        });
        state.SetIterationTime(time / 1000);
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    state.counters["peak MB"] = static_cast<double>(usage.ru_maxrss) / 1024;
}

void remesh(benchmark::State& state)
{
    const double length = meanEdge(surface());
    const auto iterations = static_cast<unsigned>(state.range(0));
    bench::Contest contest;
    for (auto _ : state) {
        takeTurn(state, contest, "ours", [length, iterations] {
            cam::RemeshOptions options;
            options.edgeLength = length;
            options.iterations = iterations;
            return [result = cam::remesh(surface(), options).value()] { return result; };
        });
        takeTurn(state, contest, "CGAL", bench::cgalRemesh(surface(), length, iterations));
        state.SetIterationTime(contest.of("ours") / 1000);
    }
    contest.report(state, "ms", "CGAL");
}

/// Stairs of a million triangles, each with three vertices of its own, as STL files have them.
TriangleSurface stairs()
{
    TriangleSurface soup;
    const unsigned across = bench::sized(1000u, 100u), along = bench::sized(500u, 20u);
    const auto at = [](unsigned i, unsigned j) { return rob::Posd(i, j, 20.0 * ((i + 1) / 50)); };
    for (unsigned i = 0; i < across; ++i)
        for (unsigned j = 0; j < along; ++j)
            for (const auto& [di, dj] : {std::pair(0u, 0u), {1u, 0u}, {1u, 1u}, {0u, 0u}, {1u, 1u}, {0u, 1u}})
                soup.vertices.push_back(at(i + di, j + dj));
    for (std::uint32_t i = 0; i < soup.vertices.size(); i += 3)
        soup.triangles.push_back({i, i + 1, i + 2});
    return soup;
}

/// The edges by which a mesh is drawn.
void meshEdges(benchmark::State& state)
{
    const TriangleSurface soup = stairs();
    std::vector<rob::Posf> points;
    std::vector<unsigned> indices;
    for (const rob::Posd& p : soup.vertices) {
        indices.push_back(static_cast<unsigned>(points.size()));
        points.emplace_back(static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z));
    }
    bench::Contest contest;
    for (auto _ : state) {
        geometry::MeshEdges edges;
        contest.add("ours", bench::millisecondsOf([&] { edges = geometry::edgesOfMesh(points, indices); }));
        const std::size_t lines = edges.points.size() / 2;
        state.counters["lines"] = static_cast<double>(lines);
#ifdef VRK_BENCH_HAS_VTK
        const auto work = bench::vtkFeatureEdgesOf(soup, 35);
        std::size_t theirs = 0;
        contest.add("VTK", bench::millisecondsOf([&] { theirs = work(); }));
        if (theirs != lines)
            throw std::logic_error("VTK finds other edges");
#endif
        state.SetIterationTime(contest.of("ours") / 1000);
    }
    contest.report(state, "ms", "ours");
}

BENCHMARK(meshEdges)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(bench::sized(3, 1));
BENCHMARK(decimate)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(bench::sized(3, 1));
BENCHMARK(decimateWithin)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);
BENCHMARK(decimateMillions)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);
BENCHMARK(remesh)->Arg(1)->Arg(3)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(bench::sized(3, 1));

} // namespace
