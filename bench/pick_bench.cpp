// What a pick costs in a station of 1,000 solids and 1,374,428 triangles, and what the hierarchies behind it cost to make,
// beside Embree's instances, a CGAL AABB tree and Open CASCADE's binned builder. Needs a display; xvfb-run gives it one.

#include "bench/support/BinnedPeer.h"
#include "bench/support/CgalPeer.h"
#include "bench/support/Contest.h"
#include "bench/support/EmbreePeer.h"
#include "bench/support/PickWork.h"
#include "bench/support/Size.h"
#include "bench/support/Started.h"

#include "scene/math/Trsf.h"
#include "selection/SelectableObject.h"
#include "selection/VisualSelection.h"
#include "selection/pick/PickQuery.h"
#include "visual/SolidVisual.h"

#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

using namespace vrk;
using selection::VisualSelection;

constexpr unsigned noFace = ~0u;

const bench::PickStation& station()
{
    static const bench::PickStation made = bench::makePickStation(bench::sized(bench::pickStationSolids, 20u));
    return made;
}

/// The station as visuals that are registered for picks, in the order of its solids.
const std::vector<visual::SolidVisual*>& shownStation()
{
    static const std::vector<visual::SolidVisual*> shown = [] {
        bench::startedScene();
        std::vector<visual::SolidVisual*> made;
        for (const bench::PosedSolid& solid : station().solids) {
            auto* body = new visual::SolidVisual(solid.shape, visual::Scene::GetWorldVisual());
            body->setPose(rob::GP_Trsf2Posef(solid.pose));
            VisualSelection::Get()->addShape(solid.shape, body, true);
            made.push_back(body);
        }
        VisualSelection::Get()->update();
        return made;
    }();
    return shown;
}

/// Embree's hierarchy over the same triangles and in the same places: a scene for each solid, and its instance.
class EmbreeStation {
public:
    explicit EmbreeStation(unsigned threads) : top(threads)
    {
        for (std::size_t i = 0; i < station().solids.size(); ++i) {
            bench::EmbreeScene& local = locals.emplace_back(threads);
            local.addTriangles(station().triangles[i].vertices, station().triangles[i].indices);
            local.build();
            const gp_Trsf& pose = station().solids[i].pose;
            float columns[12];
            for (int c = 0; c < 4; ++c)
                for (int r = 0; r < 3; ++r)
                    columns[3 * c + r] = static_cast<float>(pose.Value(r + 1, c + 1));
            top.addInstance(local, columns);
        }
        top.build();
    }
    bench::EmbreeScene::Hit nearest(const visual::Ray& ray) const { return top.nearest(ray); }

private:
    std::vector<bench::EmbreeScene> locals;
    bench::EmbreeScene top;
};

/// All triangles in the coordinates of the world.
bench::CgalTree cgalStation()
{
    std::vector<rob::Posf> vertices;
    std::vector<unsigned> indices;
    for (std::size_t i = 0; i < station().solids.size(); ++i) {
        const auto first = static_cast<unsigned>(vertices.size());
        for (const rob::Posf& p : station().triangles[i].vertices)
            vertices.push_back(rob::toPosf(gp_Pnt(p.x, p.y, p.z).Transformed(station().solids[i].pose)));
        for (const unsigned index : station().triangles[i].indices)
            indices.push_back(first + index);
    }
    return {vertices, indices};
}

/// The picking service. It is there once the station is shown.
VisualSelection& startedService()
{
    shownStation();
    return *VisualSelection::Get();
}

std::size_t numberOf(const visual::Visual* solid)
{
    static const std::unordered_map<const visual::Visual*, std::size_t> numbers = [] {
        std::unordered_map<const visual::Visual*, std::size_t> made;
        for (std::size_t i = 0; i < shownStation().size(); ++i)
            made.emplace(shownStation()[i], i);
        return made;
    }();
    return numbers.at(solid);
}

unsigned faceOf(const selection::Result& result)
{
    if (!result.hit)
        return noFace;
    const std::size_t solid = numberOf(result.visual);
    return station().firstFace[solid] + shownStation()[solid]->getFaceIndex(TopoDS::Face(result.face)) - 1;
}

unsigned faceOf(const bench::EmbreeScene::Hit& hit)
{
    return hit.triangle == bench::EmbreeScene::none ? noFace : station().triangles[hit.instance].faces[hit.triangle];
}

/// How near the ray's line comes to the line of an edge of the triangle.
double distanceToAnEdge(const visual::Ray& ray, const bench::EmbreeScene::Hit& hit)
{
    const bench::PickStation::Triangles& solid = station().triangles[hit.instance];
    const auto corner = [&](std::size_t k) {
        const rob::Posf& p = solid.vertices[solid.indices[3 * std::size_t{hit.triangle} + k % 3]];
        const gp_Pnt placed = gp_Pnt(p.x, p.y, p.z).Transformed(station().solids[hit.instance].pose);
        return rob::Vec3d(placed.X(), placed.Y(), placed.Z());
    };
    double nearest = std::numeric_limits<double>::infinity();
    for (std::size_t k = 0; k < 3; ++k) {
        const rob::Vec3d across = rob::Vec3d(ray.direction).cross(corner(k + 1) - corner(k));
        nearest = std::min(nearest, std::abs((corner(k) - rob::Vec3d(ray.origin)).dot(across)) / across.length());
    }
    return nearest;
}

/// Embree's answers must be those of the workload, which were found by a loop over all triangles in double precision, and
/// ours must be Embree's: but where the ray passes an edge by less than the rounding at the size of the station, and may
/// be seen on either side of it. Returns how many rays do.
std::size_t checkAnswers(const VisualSelection& service, const EmbreeStation& embree,
                         const std::vector<visual::Ray>& rays)
{
    constexpr double rounding = 0.02;
    bench::Checksum sum;
    std::size_t hits = 0, besideAnEdge = 0;
    for (const visual::Ray& ray : rays) {
        const bench::EmbreeScene::Hit expected = embree.nearest(ray);
        const unsigned face = faceOf(expected);
        sum.add(face);
        hits += face != noFace ? 1 : 0;
        if (faceOf(service.select(ray)) == face)
            continue;
        ++besideAnEdge;
        if (face == noFace || distanceToAnEdge(ray, expected) > rounding)
            throw std::logic_error("the pick is another face than " + std::to_string(face));
    }
    if (!bench::isSmall() && (hits != 6751 || sum.value != 0xb7219d2de7867e98))
        throw std::logic_error("the workload is another one: " + std::to_string(hits) + " hits");
    return besideAnEdge;
}

void pickInStation(benchmark::State& state)
{
    const std::vector<visual::Ray> rays = bench::makePickRays();
    const VisualSelection& service = startedService();
    const EmbreeStation embree(2);
    const bench::CgalTree cgal = cgalStation();
    state.counters["other side of an edge"] = static_cast<double>(checkAnswers(service, embree, rays));

    bench::Contest contest;
    for (auto _ : state) {
        contest.timePicks("ours", rays.size(),
                          [&](std::size_t i) { benchmark::DoNotOptimize(service.select(rays[i])); });
        contest.timePicks("Embree", rays.size(),
                          [&](std::size_t i) { benchmark::DoNotOptimize(embree.nearest(rays[i])); });
        contest.timePicks("CGAL", rays.size(), [&](std::size_t i) { benchmark::DoNotOptimize(cgal.nearest(rays[i])); });
        state.SetIterationTime(contest.of("ours") * 1e-9);
    }
    contest.report(state, "ns", "Embree");
    contest.report(state, "ns p99", "Embree", 0.99);
}

selection::PickQuery queryOf(const bench::PickPixel& pixel)
{
    constexpr double near = 1, far = 100'000;
    const double height = 1 / std::tan(bench::pickFovY / 2);
    selection::PickQuery query;
    query.camera.width = 1920;
    query.camera.height = 1080;
    selection::PickCamera::Matrix& view = query.camera.view;
    const rob::Vec3d axes[3] = {pixel.right, pixel.up, -pixel.forward};
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column)
            view[4 * row + column] = axes[row][column];
        view[4 * row + 3] = -axes[row].dot(pixel.eye);
    }
    view[15] = 1;
    selection::PickCamera::Matrix& projection = query.camera.projection;
    projection[0] = height * 1080 / 1920;
    projection[5] = height;
    projection[10] = -(far + near) / (far - near);
    projection[11] = -2 * far * near / (far - near);
    projection[14] = -1;
    query.x = pixel.x;
    query.y = pixel.y;
    return query;
}

unsigned faceOf(const std::optional<selection::PickCandidate>& candidate)
{
    if (!candidate)
        return noFace;
    return station().firstFace[numberOf(candidate->visual)] + static_cast<unsigned>(candidate->subId) - 1;
}

/// The answers of a loop over all triangles in double precision, to the last one.
void checkAnswers(const VisualSelection& service, const std::vector<selection::PickQuery>& faces,
                  const std::vector<selection::PickQuery>& everything)
{
    bench::Checksum sum;
    for (std::size_t i = 0; i < faces.size(); ++i) {
        const unsigned face = faceOf(faces[i].askBest(service));
        sum.add(face);
        bool isAmong = face == noFace;
        for (const selection::PickCandidate& candidate : everything[i].askAll(service).candidates)
            isAmong = isAmong || (candidate.kind == selection::PickKind::Face && faceOf(candidate) == face);
        if (!isAmong)
            throw std::logic_error("the nearest face is not among all candidates");
    }
    if (!bench::isSmall() && sum.value != 0xb7219d2de7867e98)
        throw std::logic_error("the faces are others than those of a loop over all triangles");
}

/// The pick that explains itself beside the plain one: asked for the nearest face, and for all candidates of all kinds.
void queryInStation(benchmark::State& state)
{
    const std::vector<visual::Ray> rays = bench::makePickRays();
    const VisualSelection& service = startedService();
    std::vector<selection::PickQuery> everything, faces;
    for (const bench::PickPixel& pixel : bench::makePickPixels()) {
        everything.push_back(queryOf(pixel));
        faces.push_back(everything.back());
        faces.back().kinds = {selection::PickKind::Face};
    }
    checkAnswers(service, faces, everything);

    bench::Contest contest;
    for (auto _ : state) {
        contest.timePicks("select", rays.size(),
                          [&](std::size_t i) { benchmark::DoNotOptimize(service.select(rays[i])); });
        contest.timePicks("ours", rays.size(),
                          [&](std::size_t i) { benchmark::DoNotOptimize(faces[i].askBest(service)); });
        contest.timePicks("best of all kinds", rays.size(),
                          [&](std::size_t i) { benchmark::DoNotOptimize(everything[i].askBest(service)); });
        contest.timePicks("all candidates", rays.size(),
                          [&](std::size_t i) { benchmark::DoNotOptimize(everything[i].askAll(service)); });
        state.SetIterationTime(contest.of("all candidates") * 1e-9);
    }
    contest.report(state, "ns", "select");
    contest.report(state, "ns p99", "select", 0.99);
}

/// All local hierarchies, from shapes and triangles.
void buildStation(benchmark::State& state)
{
    bench::Contest contest, work;
    VisualSelection& service = startedService();
    for (auto _ : state) {
        for (visual::SolidVisual* body : shownStation())
            service.updateShapeFaces(body);
        double took = 0;
        work.add("ours", bench::workOf([&] { took = bench::millisecondsOf([&] { service.updateWorldBoxes(); }); }));
        service.update();
        contest.add("ours", took);
        for (const unsigned threads : {1u, 2u}) {
            const std::string name = threads == 1 ? "Embree, 1 thread" : "Embree";
            work.add(name, bench::workOf([&] {
                         contest.add(name,
                                     bench::millisecondsOf([&] { benchmark::DoNotOptimize(EmbreeStation(threads)); }));
                     }));
        }
        state.SetIterationTime(took / 1000);
    }
    contest.report(state, "ms", "Embree");
    work.report(state, "ms of all cores", "Embree");
}

void moveOneBody(benchmark::State& state)
{
    bench::Contest contest;
    visual::SolidVisual* body = shownStation().front();
    VisualSelection& service = startedService();
    std::vector<visual::Box> boxes;
    for (visual::SolidVisual* each : shownStation())
        boxes.push_back(service.getObject(each)->box);
    for (auto _ : state) {
        body->setPosition(body->getPosition());
        if (!service.isDirty())
            throw std::logic_error("nothing moved");
        const double took = bench::millisecondsOf([&] { service.update(); });
        contest.add("ours", 1000 * took);
        bench::BinnedBoxes binned(boxes);
        contest.add("OCCT", 1000 * bench::millisecondsOf([&] { bench::buildBinnedTree(binned); }));
        state.SetIterationTime(took / 1000);
    }
    contest.report(state, "us", "OCCT");
}

BENCHMARK(pickInStation)->Unit(benchmark::kNanosecond)->UseManualTime()->Iterations(5);
BENCHMARK(queryInStation)->Unit(benchmark::kNanosecond)->UseManualTime()->Iterations(5);
BENCHMARK(buildStation)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);
BENCHMARK(moveOneBody)->Unit(benchmark::kMicrosecond)->UseManualTime()->Iterations(200);

} // namespace
