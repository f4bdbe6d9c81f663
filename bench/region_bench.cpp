// What a rectangle and a lasso of 200 corners hold of a cloud of ten million points, and a rectangle of a thousand solids:
// the region query and the prescribed operations of the picking service against plain loops on two threads, which test each
// point, and against a loop that asks the whole polygon for each. Needs a display; xvfb-run gives it one.

#include "bench/support/Contest.h"
#include "bench/support/PickWork.h"
#ifdef VRK_BENCH_HAS_PCL
#include "bench/support/PclPeer.h"
#endif
#include "bench/support/Rng.h"
#include "bench/support/Size.h"
#include "bench/support/Started.h"

#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "scene/math/Trsf.h"
#include "selection/region/RegionQuery.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "visual/PointCloudVisual.h"
#include "visual/SolidVisual.h"

#include <Ogre.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <malloc.h>
#include <numbers>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using namespace vrk;
using Numbers = std::vector<std::uint32_t>;
using Corner = rob::Vec2Template<double>;
using Vec = rob::Vec3Template<double>;

const std::size_t pointCount = bench::sized(10'000'000, 100'000);
constexpr double width = 1920, height = 1080;

/// Floor, walls, balls and air.
layout::PointCloud::Points makePoints()
{
    layout::PointCloud::Points points(pointCount);
    for (std::size_t i = 0; i < pointCount; ++i) {
        bench::Rng r(0xC10D000000000000u + i);
        const auto at = [](double x, double y, double z) {
            return rob::Posf(static_cast<float>(x), static_cast<float>(y), static_cast<float>(z));
        };
        const double k = r.u01();
        if (k < 0.30) {
            const double x = r.uni(0, 20000), y = r.uni(0, 20000), z = r.uni(-5, 5);
            points[i] = at(x, y, z);
        } else if (k < 0.50) {
            const auto wall = r.below(4);
            const double a = r.uni(0, 20000), z = r.uni(0, 3000), d = r.uni(-5, 5);
            points[i] = wall == 0   ? at(a, d, z)
                        : wall == 1 ? at(a, 20000 + d, z)
                        : wall == 2 ? at(d, a, z)
                                    : at(20000 + d, a, z);
        } else if (k < 0.90) {
            bench::Rng b(0xBA110000u + r.below(200));
            const double cx = b.uni(500, 19500), cy = b.uni(500, 19500), cz = b.uni(300, 2700), size = b.uni(100, 800);
            const double u = r.uni(-1, 1), ph = r.uni(0, 2 * std::numbers::pi), s = std::sqrt(1 - u * u);
            points[i] = at(cx + size * s * std::cos(ph), cy + size * s * std::sin(ph), cz + size * u);
        } else {
            const double x = r.uni(0, 20000), y = r.uni(0, 20000), z = r.uni(0, 3000);
            points[i] = at(x, y, z);
        }
    }
    return points;
}

const std::vector<Corner>& lassoCorners()
{
    static const std::vector<Corner> corners = [] {
        std::vector<Corner> made;
        bench::Rng r(0x1A550);
        for (int k = 0; k < 200; ++k) {
            const double a = 2 * std::numbers::pi * k / 200;
            const double q = 1 + 0.35 * std::sin(7 * a) + r.uni(-0.12, 0.12);
            made.emplace_back(960 + 400 * q * std::cos(a), 540 + 225 * q * std::sin(a));
        }
        return made;
    }();
    return corners;
}

/// 45 degrees vertically, from 10 to 100,000.
selection::RegionView viewFrom(const Vec& eye, const Vec& centre)
{
    const auto unit = [](const Vec& v) { return v * (1 / v.length()); };
    const Vec f = unit(centre - eye), s = unit(f.cross(Vec(0, 0, 1))), u = s.cross(f);
    const double t = 1 / std::tan(std::numbers::pi / 8), near = 10, far = 100000;
    selection::RegionView view;
    view.view = {s.x, s.y, s.z, -s.dot(eye), u.x, u.y, u.z, -u.dot(eye), -f.x, -f.y, -f.z, f.dot(eye), 0, 0, 0, 1};
    view.projection = {t * height / width,
                       0,
                       0,
                       0,
                       0,
                       t,
                       0,
                       0,
                       0,
                       0,
                       -(far + near) / (far - near),
                       -2 * far * near / (far - near),
                       0,
                       0,
                       -1,
                       0};
    view.width = width;
    view.height = height;
    return view;
}

selection::RegionView cloudView()
{
    return viewFrom({10000, -6000, 7000}, {10000, 10000, 500});
}

/// The main camera in the same place, for what knows no other view.
void placeMainCamera()
{
    visual::Camera& camera = *visual::Camera::Get();
    camera.setClipDist(10, 100000);
    camera.setHFOV(static_cast<float>(2 * std::atan(std::tan(std::numbers::pi / 8) * width / height)));
    camera.updateFOV();
    const rob::Posf eye(10000, -6000, 7000), centre(10000, 10000, 500);
    const rob::Dirf z = rob::normalized(eye - centre), x = rob::normalized(rob::Vec3f(0, 0, 1).cross(z));
    camera.setWorldPose({eye, rob::Rotationf::FromAxes(x, rob::Dirf(z.cross(x)), z)});
}

std::uint64_t sumOf(const Numbers& numbers)
{
    std::uint64_t sum = 0;
    for (const std::uint32_t i : numbers)
        sum += i * 0x9E3779B97F4A7C15u;
    return sum;
}

void checkAnswer(const Numbers& numbers, std::size_t count, std::uint64_t sum, const char* who)
{
    if (!std::ranges::is_sorted(numbers))
        throw std::logic_error(std::string(who) + ": the numbers do not ascend");
    if (bench::isSmall() ? numbers.empty() : numbers.size() != count || sumOf(numbers) != sum)
        throw std::logic_error(std::string(who) + ": not the points that are inside");
}

struct Shown {
    double x, y, depth; // x and y in pixels
};

/// The four numbers that a place in the world comes to, by one matrix.
struct Projection {
    double m[3][4]; // pixels times w, and w, which is the depth

    Projection()
    {
        const selection::RegionView v = cloudView();
        for (unsigned c = 0; c < 4; ++c) {
            const double w = -v.view[8 + c];
            m[0][c] = (v.projection[0] * v.view[c] + w) * width / 2;
            m[1][c] = (w - v.projection[5] * v.view[4 + c]) * height / 2;
            m[2][c] = w;
        }
    }
    Shown operator()(const rob::Posf& p) const
    {
        const auto row = [&](unsigned i) { return m[i][0] * p.x + m[i][1] * p.y + m[i][2] * p.z + m[i][3]; };
        const double w = row(2);
        return {row(0) / w, row(1) / w, w};
    }
};

/// Every point is tested by two threads; the numbers are appended without a branch.
template <typename Test>
Numbers loopOnTwoThreads(const layout::PointCloud::Points& points, const Test& test)
{
    Numbers found[2];
    const auto half = [&](unsigned which) {
        const std::size_t begin = which * points.size() / 2, end = (which + 1) * points.size() / 2;
        Numbers& mine = found[which];
        mine.resize(end - begin);
        std::size_t count = 0;
        for (std::size_t i = begin; i < end; ++i) {
            mine[count] = static_cast<std::uint32_t>(i);
            count += test(points[i]) ? 1 : 0;
        }
        mine.resize(count);
    };
    std::thread other(half, 1);
    half(0);
    other.join();
    found[0].insert(found[0].end(), found[1].begin(), found[1].end());
    return std::move(found[0]);
}

/// The rectangle as six planes.
Numbers boxByLoop(const layout::PointCloud::Points& points)
{
    const Projection project;
    double planes[6][4];
    for (unsigned c = 0; c < 4; ++c) {
        planes[0][c] = project.m[0][c] - 600 * project.m[2][c];
        planes[1][c] = 1320 * project.m[2][c] - project.m[0][c];
        planes[2][c] = project.m[1][c] - 337.5 * project.m[2][c];
        planes[3][c] = 742.5 * project.m[2][c] - project.m[1][c];
        planes[4][c] = project.m[2][c] - (c == 3 ? 10 : 0);
        planes[5][c] = (c == 3 ? 100000 : 0) - project.m[2][c];
    }
    return loopOnTwoThreads(points, [&planes](const rob::Posf& p) {
        bool isInside = true;
        for (const auto& e : planes)
            isInside &= e[0] * p.x + e[1] * p.y + e[2] * p.z + e[3] >= 0;
        return isInside;
    });
}

bool isInLasso(double x, double y)
{
    const std::vector<Corner>& corners = lassoCorners();
    bool isInside = false;
    const Corner* last = &corners.back();
    for (const Corner& c : corners) {
        if ((c.y > y) != (last->y > y) && (last->x - c.x) * (y - c.y) / (last->y - c.y) + c.x > x)
            isInside = !isInside;
        last = &c;
    }
    return isInside;
}

Numbers lassoByLoop(const layout::PointCloud::Points& points)
{
    const Projection project;
    return loopOnTwoThreads(points, [&project](const rob::Posf& p) {
        const Shown s = project(p);
        return s.depth >= 10 && s.depth <= 100000 && isInLasso(s.x, s.y);
    });
}

/// The polygon drawn into the pixels first: only in a pixel that an edge passes, a place is asked for by itself.
Numbers lassoByRaster(const layout::PointCloud::Points& points)
{
    constexpr int columns = static_cast<int>(width), rows = static_cast<int>(height);
    enum : std::uint8_t { Outside, Inside, Mixed };
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(columns * rows));
    const auto pixel = [&pixels](int column, int row) -> std::uint8_t& {
        return pixels[static_cast<std::size_t>(row * columns + column)];
    };
    const std::vector<Corner>& corners = lassoCorners();
    for (int row = 0; row < rows; ++row) {
        std::vector<double> crossings;
        for (std::size_t i = 0; i < corners.size(); ++i) {
            const Corner &a = corners[i], &b = corners[(i + 1) % corners.size()];
            const double low = std::max(std::min(a.y, b.y), row - 1e-6),
                         high = std::min(std::max(a.y, b.y), row + 1 + 1e-6);
            const double middle = row + 0.5;
            const auto xAt = [&](double y) { return a.y == b.y ? a.x : a.x + (b.x - a.x) * (y - a.y) / (b.y - a.y); };
            if ((a.y > middle) != (b.y > middle))
                crossings.push_back(xAt(middle));
            if (low > high)
                continue;
            const auto [from, to] = std::minmax({xAt(low), xAt(high)});
            for (int column = std::max(0, static_cast<int>(from - 1e-6));
                 column <= std::min(columns - 1, static_cast<int>(to + 1e-6)); ++column)
                pixel(column, row) = Mixed;
        }
        std::ranges::sort(crossings);
        for (std::size_t i = 0; i + 1 < crossings.size(); i += 2)
            for (int column = std::max(0, static_cast<int>(std::ceil(crossings[i] - 0.5)));
                 column <= std::min(columns - 1, static_cast<int>(crossings[i + 1] - 0.5)); ++column)
                if (pixel(column, row) != Mixed)
                    pixel(column, row) = Inside;
    }
    const Projection project;
    return loopOnTwoThreads(points, [&](const rob::Posf& p) {
        const Shown s = project(p);
        if (!(s.depth >= 10 && s.depth <= 100000 && s.x >= 0 && s.x < width && s.y >= 0 && s.y < height))
            return false;
        const std::uint8_t state = pixel(static_cast<int>(s.x), static_cast<int>(s.y));
        return state == Mixed ? isInLasso(s.x, s.y) : state == Inside;
    });
}

selection::RegionQuery forPoints(selection::RegionQuery query)
{
    query.kinds = {.bodies = false, .frames = false, .points = true, .curves = false, .singlePoints = false};
    query.nearest = 10;
    query.farthest = 100000;
    return query;
}

/// The cloud, entered and up to date, with what that took.
struct CloudWork {
    layout::PointCloud node;
    std::optional<visual::OffscreenTarget> target; // as large as the view that is asked about
    visual::PointCloudVisual* visual;
    double updateMilliseconds, indexBytes;

    CloudWork() : node(sdf::SdfManager::GenerateTransientId(), "cloud", makePoints())
    {
        bench::startedScene();
        target.emplace(static_cast<unsigned>(width), static_cast<unsigned>(height), 0u);
        visual::Camera::Get()->setRenderTarget(target->renderTarget());
        placeMainCamera();
        auto& service = *selection::VisualSelection::Get();
        visual = new visual::PointCloudVisual(visual::Scene::GetWorldVisual(), &node);
        const auto heap = [] {
            const struct mallinfo2 info = mallinfo2();
            return static_cast<double>(info.uordblks + info.hblkhd);
        };
        const double before = heap();
        updateMilliseconds = bench::millisecondsOf([&] { service.update(); });
        indexBytes = heap() - before;
    }
    ~CloudWork()
    {
        visual::Visual::Delete(visual);
        visual::Camera::Get()->setRenderTarget(Ogre::Root::getSingleton().getRenderTarget("ogrewindow"));
    }
};

using Ways = std::vector<std::pair<std::string, std::function<Numbers()>>>;

/// Ways of finding the same points take turns.
void contest(benchmark::State& state, const CloudWork& work, const Ways& ways, std::size_t count, std::uint64_t sum,
             const std::string& reference)
{
    bench::Contest contest;
    for (const auto& [name, find] : ways)
        checkAnswer(find(), count, sum, name.c_str());
    for (auto _ : state)
        for (const auto& [name, find] : ways)
            contest.add(name, bench::millisecondsOf([&find = find] { benchmark::DoNotOptimize(find()); }));
    contest.report(state, "ms", reference);
    state.counters["update ms"] = work.updateMilliseconds;
    state.counters["index B/point"] = work.indexBytes / static_cast<double>(pointCount);
}

/// In single precision, so without the checksum.
void checkCount(std::size_t found, const char* who)
{
    if (!bench::isSmall() && (found < 2900000 || found > 3000000))
        throw std::logic_error(std::string(who) + ": not the points that are inside: " + std::to_string(found));
}

/// Once.
void timePrescribed(benchmark::State& state, const std::string& name,
                    const std::function<selection::PointsOfClouds()>& select)
{
    std::size_t found = 0;
    state.counters[name + " ms"] = bench::millisecondsOf([&] {
        for (const auto& [id, numbers] : select())
            found += numbers.size();
    });
    checkCount(found, name.c_str());
}

#ifdef VRK_BENCH_HAS_PCL

void boxByPcl(benchmark::State& state, const layout::PointCloud::Points& points)
{
    const bench::PclCloud cloud(points);
    const rob::Posf eye(10000, -6000, 7000), centre(10000, 10000, 500);
    const rob::Dirf forward = rob::normalized(centre - eye),
                    right = rob::normalized(forward.cross(rob::Vec3f(0, 0, 1)));
    const double unit = std::tan(std::numbers::pi / 8) / (height / 2); // of a pixel, at a distance of 1
    const auto angle = [unit](double pixels) { return 2 * std::atan(unit * pixels / 2) * 180 / std::numbers::pi; };
    const bench::PclCloud::Frustum frustum{
        eye, forward, rob::Dirf(right.cross(forward)), right, angle(1320 - 600), angle(742.5 - 337.5), 10, 100000};
    state.counters["PCL ms"] =
        bench::millisecondsOf([&] { checkCount(cloud.inFrustum(frustum).size(), "FrustumCulling"); });
}

void lassoByPcl(benchmark::State& state, const layout::PointCloud::Points& points)
{
    const bench::PclCloud cloud(points);
    const Projection project;
    const auto pixelOf = [&project](const rob::Posf& p) -> std::optional<Corner> {
        const Shown s = project(p);
        return s.depth >= 10 && s.depth <= 100000 ? std::optional(Corner(s.x, s.y)) : std::nullopt;
    };
    state.counters["PCL ms"] =
        bench::millisecondsOf([&] { checkCount(cloud.inPolygon(lassoCorners(), pixelOf).size(), "CropHull"); });
}

#endif

void boxOfCloud(benchmark::State& state)
{
    const CloudWork work;
    const auto& points = work.node.getPoints();
    const auto& service = *selection::VisualSelection::Get();
    const selection::RegionView view = cloudView();
    Ways ways{{"ours",
               [&] {
                   return std::move(
                       service.askRegion(forPoints(selection::RegionQuery::Rectangle(600, 337.5, 1320, 742.5)), view)
                           .clouds.at(0)
                           .points);
               }},
              {"loop", [&] { return boxByLoop(points); }}};
    contest(state, work, ways, 2959709, 0xf5178a0fd621b137u, "loop");
#ifdef VRK_BENCH_HAS_PCL
    boxByPcl(state, points);
#endif
    timePrescribed(state, "boxSelectPointCloud",
                   [&] { return service.boxSelectPointCloud(600, 337.5f, 1320, 742.5f); });
}

void lassoOfCloud(benchmark::State& state)
{
    const CloudWork work;
    const auto& points = work.node.getPoints();
    const auto& service = *selection::VisualSelection::Get();
    const selection::RegionView view = cloudView();
    Ways ways{{"ours",
               [&] {
                   return std::move(service.askRegion(forPoints(selection::RegionQuery::Polygon(lassoCorners())), view)
                                        .clouds.at(0)
                                        .points);
               }},
              {"raster", [&] { return lassoByRaster(points); }},
              {"loop", [&] { return lassoByLoop(points); }}};
    contest(state, work, ways, 2926663, 0xa4d82f5c20986aefu, "raster");
#ifdef VRK_BENCH_HAS_PCL
    lassoByPcl(state, points);
#endif
    std::vector<rob::Posf> polygon;
    for (const Corner& c : lassoCorners())
        polygon.emplace_back(static_cast<float>(c.x), static_cast<float>(c.y), 0.0f);
    timePrescribed(state, "lassoSelectPointCloud", [&] { return service.lassoSelectPointCloud(polygon); });
}

/// A thousand solids that fill the view: a rectangle over all, through everything and only what is seen.
void rectangleOverSolids(benchmark::State& state)
{
    bench::startedScene();
    const bench::PickStation station = bench::makePickStation(bench::sized(bench::pickStationSolids, 20u));
    auto& service = *selection::VisualSelection::Get();
    std::vector<visual::Visual*> solids;
    for (const bench::PosedSolid& solid : station.solids) {
        auto* visual = visual::SolidVisual::Build(visual::Scene::GetWorldVisual(), solid.shape, "Body");
        visual->setPose(rob::GP_Trsf2Posef(solid.pose));
        service.addShape(solid.shape, visual, true);
        solids.push_back(visual);
    }
    service.update();
    const selection::RegionView view = viewFrom({22000, 10000, 3800}, {10000, 10000, 1200});
    const selection::RegionView fromAbove = viewFrom({9999, 10000, 60000}, {10000, 10000, 0});
    using Sight = selection::RegionQuery::Sight;
    const auto ask = [&](Sight sight, const selection::RegionView& from) {
        selection::RegionQuery query = selection::RegionQuery::Rectangle(0, 0, width, height);
        query.sight = sight;
        return service.askRegion(query, from).bodies.size();
    };
    if (ask(Sight::Through, fromAbove) != solids.size())
        throw std::logic_error("the rectangle does not hold all solids");
    const auto edgesOver = [&] {
        selection::RegionQuery query = selection::RegionQuery::Rectangle(0, 0, width, height);
        query.kinds = {.bodies = false, .edges = true, .frames = false};
        if (service.askRegion(query, view).edges.empty())
            throw std::logic_error("the rectangle holds no edges");
    };
    const double firstEdges = bench::millisecondsOf(edgesOver); // gathers them
    bench::Contest contest;
    for (auto _ : state) {
        contest.add("edges", bench::millisecondsOf(edgesOver));
        contest.add("over all", bench::millisecondsOf([&] { ask(Sight::Through, fromAbove); }));
        contest.add("through", bench::millisecondsOf([&] { ask(Sight::Through, view); }));
        contest.add("seen", bench::millisecondsOf([&] { ask(Sight::Seen, view); }));
        contest.add("seen exactly", bench::millisecondsOf([&] { ask(Sight::SeenExactly, view); }));
    }
    state.counters["first edges ms"] = firstEdges;
    for (const char* name : {"over all", "through", "edges", "seen", "seen exactly"})
        state.counters[std::string(name) + " ms"] = contest.of(name);
    state.counters["bodies seen"] = static_cast<double>(ask(Sight::Seen, view));
    state.counters["bodies seen exactly"] = static_cast<double>(ask(Sight::SeenExactly, view));
    for (visual::Visual* solid : solids)
        visual::Visual::Delete(solid);
}

BENCHMARK(boxOfCloud)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(lassoOfCloud)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(rectangleOverSolids)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
