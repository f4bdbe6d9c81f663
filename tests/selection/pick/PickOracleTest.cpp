#include "../SelectionOracle.h"
#include "PickFixture.h"

#include "selection/CurveObject.h"
#include "selection/LineObject.h"

#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRep_Tool.hxx>
#include <Poly_PolygonOnTriangulation.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

#include <map>
#include <random>
#include <tuple>

/// Against loops over everything.
namespace vrk::selection {
namespace {

using rob::Posd;
using rob::Posf;
using Name = std::tuple<PickKind, const visual::Visual*, std::int64_t>;

/// The least distance in pixels of places along a section that are beyond the near plane.
double leastPixels(const PickQuery& query, const Posd& a, const Posd& b)
{
    const int steps = a == b ? 0 : 400;
    double least = oracle::infinite;
    for (int i = 0; i <= steps; ++i) {
        const SeenAt seen = seenAt(query.camera, i == 0 ? a : a + (b - a) * (static_cast<double>(i) / steps));
        if (seen.beyondNear >= 0)
            least = std::min(least, std::hypot(seen.x - query.x, seen.y - query.y));
    }
    return least;
}

/// Where the things are, and how large a millimetre is.
struct PickWorld {
    const char* name;
    double unit;
    double away; // millimetres from the origin, along each axis
};

class PickOracleTest : public PickFixture, public testing::WithParamInterface<PickWorld> {
protected:
    static double units(double millimetres) { return millimetres * GetParam().unit; }
    static Posf local(std::mt19937& random)
    {
        std::uniform_real_distribution<double> at(-250, 250);
        const double x = at(random), y = at(random), z = at(random);
        return Posf(Posd(units(x), units(y), units(z)));
    }
    static Posf place(std::mt19937& random)
    {
        const double away = units(GetParam().away);
        return Posf(Posd(local(random)) + rob::Vec3d(away, away, away));
    }
    rob::Posef pose(std::mt19937& random)
    {
        std::uniform_real_distribution<float> turn(-3, 3);
        return {place(random), rob::Rotationf(turn(random), turn(random), turn(random))};
    }
    void fill(std::mt19937& random)
    {
        for (int i = 0; i < 10; ++i) {
            visual::SolidVisual* solid =
                addSolid(i % 2 == 0 ? test::meshedBox(units(60 + i), units(90), units(40))
                                    : test::meshed(BRepPrimAPI_MakeCylinder(units(30 + i), units(80)).Shape()));
            solid->setPose(pose(random));
        }
        visual::MeshVisual* mesh = addMesh(wall(static_cast<float>(units(150))));
        mesh->setPose(pose(random));
        mesh->setScale(0.5, 2, 1);
        for (int i = 0; i < 6; ++i)
            addLine({place(random), place(random), place(random)});
        for (int i = 0; i < 4; ++i) {
            const Posf from = place(random), to = place(random);
            addCurve(gp_Pnt(from.x, from.y, from.z), gp_Pnt(to.x, to.y, to.z));
        }
        for (int i = 0; i < 5; ++i)
            addPoint(place(random));
        layout::PointCloud::Points points;
        for (int i = 0; i < 3000; ++i)
            points.push_back(local(random));
        addCloud(points)->setPose(pose(random));
        service.update();
    }
    PickQuery anyQuery(std::mt19937& random)
    {
        std::uniform_real_distribution<double> share(0, 1), direction(-1, 1);
        PickView view;
        const rob::Vec3d away(direction(random), direction(random), direction(random));
        const double all = units(GetParam().away);
        view.eye = Posd(all, all, all) + away * (units(100 + 800 * share(random)) / away.length());
        view.target = Posd(place(random));
        view.near = units(1);
        view.far = units(1e6);
        view.parallelHeight = share(random) < 0.25 ? units(500) : 0;
        PickQuery query;
        query.camera = view.camera();
        query.x = 400 * share(random);
        query.y = 300 * share(random);
        query.radius = 1 + 15 * share(random);
        query.pointsPerCloud = 1'000'000;
        return query;
    }

    using Least = std::map<Name, double>;

    static void note(Least& least, const Name& name, double pixels)
    {
        const auto [entry, isNew] = least.emplace(name, pixels);
        if (!isNew)
            entry->second = std::min(entry->second, pixels);
    }
    /// Of every point-like and line-like thing how near it is in pixels, whatever the radius.
    Least everything(const PickQuery& query)
    {
        Least least;
        for (visual::Visual* visual : entered()) {
            const SelectableObject& object = *service.getObject(visual);
            const oracle::Frame world(object.worldPose);
            const auto out = [&world](const Posd& p) { return Posd(world.out(rob::Vec3d(p))); };
            switch (object.kind) {
            case SelectableObject::ObjectKind::Shape:
                noteBorders(least, query, static_cast<const visual::SolidVisual&>(*visual), out);
                break;
            case SelectableObject::ObjectKind::Curve:
                for (const BVHPrimitive* edge : object.primitives)
                    for (const BVHPrimitive* part : dynamic_cast<const SensitiveEdge&>(*edge).primitives) {
                        const auto& line = dynamic_cast<const SensitiveLine&>(*part);
                        note(least, {PickKind::Curve, visual, 1},
                             leastPixels(query, out(Posd(line.getStart())), out(Posd(line.getEnd()))));
                    }
                break;
            case SelectableObject::ObjectKind::Line:
                for (const BVHPrimitive* part : object.primitives) {
                    const auto& line = dynamic_cast<const SensitiveLine&>(*part);
                    note(least, {PickKind::Line, visual, 0},
                         leastPixels(query, out(Posd(line.getStart())), out(Posd(line.getEnd()))));
                }
                break;
            case SelectableObject::ObjectKind::Point: {
                const Posd p(static_cast<const visual::PointVisual&>(*visual).getPntPos());
                note(least, {PickKind::Point, visual, -1}, leastPixels(query, p, p));
                break;
            }
            case SelectableObject::ObjectKind::PointCloud: {
                const auto& points = static_cast<const visual::PointCloudVisual&>(*visual).getPoints();
                for (std::size_t i = 0; i < points.size(); ++i) {
                    const Posd p = out(Posd(points[i]));
                    const SeenAt seen = seenAt(query.camera, p);
                    if (seen.beyondNear >= 0)
                        note(least, {PickKind::CloudPoint, visual, static_cast<std::int64_t>(i)},
                             std::hypot(seen.x - query.x, seen.y - query.y));
                }
                break;
            }
            default:
                break;
            }
        }
        return least;
    }
    template <typename Out>
    static void noteBorders(Least& least, const PickQuery& query, const visual::SolidVisual& solid, const Out& out)
    {
        TopTools_IndexedMapOfShape edges, vertices;
        TopExp::MapShapes(solid.getShape(), TopAbs_EDGE, edges);
        TopExp::MapShapes(solid.getShape(), TopAbs_VERTEX, vertices);
        for (int i = 1; i <= vertices.Size(); ++i) {
            const gp_Pnt p = BRep_Tool::Pnt(TopoDS::Vertex(vertices(i)));
            const Posd at = out({p.X(), p.Y(), p.Z()});
            note(least, {PickKind::Vertex, &solid, i}, leastPixels(query, at, at));
        }
        for (TopExp_Explorer face(solid.getShape(), TopAbs_FACE); face.More(); face.Next()) {
            TopLoc_Location location;
            const auto triangles = BRep_Tool::Triangulation(TopoDS::Face(face.Current()), location);
            for (TopExp_Explorer edge(face.Current(), TopAbs_EDGE); edge.More(); edge.Next()) {
                const auto nodes = BRep_Tool::PolygonOnTriangulation(TopoDS::Edge(edge.Current()), triangles, location);
                for (int i = 1; i < nodes->NbNodes(); ++i) {
                    const gp_Pnt p = triangles->Node(nodes->Nodes()(i)), q = triangles->Node(nodes->Nodes()(i + 1));
                    note(least, {PickKind::Edge, &solid, edges.FindIndex(edge.Current())},
                         leastPixels(query, out({p.X(), p.Y(), p.Z()}), out({q.X(), q.Y(), q.Z()})));
                }
            }
        }
    }
};

TEST_P(PickOracleTest, FacesAndTrianglesAreThoseOfALoopOverAllTriangles)
{
    std::size_t hits = 0;
    for (unsigned seed = 0; seed < 6; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        fill(random);
        for (int k = 0; k < 100; ++k) {
            PickQuery query = anyQuery(random);
            const PickRay ray = query.camera.rayThrough(query.x, query.y);
            std::map<Name, double> sure, maybe;
            for (visual::Visual* visual : entered()) {
                const SelectableObject& object = *service.getObject(visual);
                if (object.kind != SelectableObject::ObjectKind::Shape &&
                    object.kind != SelectableObject::ObjectKind::Mesh)
                    continue;
                std::int64_t number = 0;
                oracle::forTriangles(object, [&](const rob::Vec3d(&corners)[3], const SensitiveFace* face) {
                    double t = 0;
                    const oracle::Meeting meeting =
                        oracle::meet({rob::Vec3d(ray.origin), ray.direction}, corners, t, units(oracle::blur));
                    const Name name(face ? PickKind::Face : PickKind::MeshTriangle, visual,
                                    face ? std::int64_t{face->getFaceIndex()} : number);
                    ++number;
                    if (meeting == oracle::Meeting::No || t < -units(oracle::blur))
                        return;
                    auto& into = meeting == oracle::Meeting::Yes && t > units(oracle::blur) ? sure : maybe;
                    const auto [entry, isNew] = into.emplace(name, t);
                    if (!isNew)
                        entry->second = std::min(entry->second, t);
                });
            }
            std::map<Name, double> found;
            for (const PickCandidate& c : query.askAll(service).candidates)
                if (c.kind == PickKind::Face || c.kind == PickKind::MeshTriangle)
                    found.emplace(Name(c.kind, c.visual, c.subId), c.distance);
            for (const auto& [name, distance] : sure) {
                ASSERT_TRUE(found.contains(name));
                if (!maybe.contains(name)) {
                    EXPECT_NEAR(found.at(name), distance, units(0.001));
                }
            }
            for (const auto& [name, distance] : found)
                EXPECT_TRUE(sure.contains(name) || maybe.contains(name));
            hits += sure.size();
        }
        for (visual::Visual* visual : entered())
            service.removeObject(visual);
    }
    EXPECT_GT(hits, 100u);
}

TEST_P(PickOracleTest, WhatLiesWithinTheRadiusIsThatOfALoopOverEverything)
{
    // The loop takes the quaternions of poses as they are: rotations in single precision are not quite of unit length.
    constexpr double ofPoses = 1e-3;
    std::map<PickKind, std::size_t> checked;
    for (unsigned seed = 20; seed < 24; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        fill(random);
        for (int k = 0; k < 40; ++k) {
            const PickQuery query = anyQuery(random);
            std::map<Name, const PickCandidate*> found;
            const PickAnswer answer = query.askAll(service);
            for (const PickCandidate& c : answer.candidates) {
                // A line visual is told once, by its nearest section.
                const std::int64_t number = c.kind == PickKind::Line ? 0 : c.subId;
                found.emplace(Name(c.kind, c.visual, number), &c);
            }
            for (const auto& [name, pixels] : everything(query)) {
                // The loop looks at some places of a section only, so what it has is a little too large.
                const bool isExact = std::get<0>(name) == PickKind::Vertex || std::get<0>(name) == PickKind::Point ||
                                     std::get<0>(name) == PickKind::CloudPoint;
                const double slack = isExact ? ofPoses : 3;
                if (pixels < query.radius - ofPoses) {
                    ASSERT_TRUE(found.contains(name)) << nameOf(std::get<0>(name)) << " at " << pixels;
                    EXPECT_LE(found.at(name)->pixels, pixels + ofPoses);
                    EXPECT_GE(found.at(name)->pixels, pixels - slack);
                    const SeenAt seen = seenAt(query.camera, found.at(name)->place);
                    EXPECT_NEAR(std::hypot(seen.x - query.x, seen.y - query.y), found.at(name)->pixels, 1e-6);
                    ++checked[std::get<0>(name)];
                } else if (pixels > query.radius + slack) {
                    EXPECT_FALSE(found.contains(name)) << nameOf(std::get<0>(name)) << " at " << pixels;
                }
            }
        }
        for (visual::Visual* visual : entered())
            service.removeObject(visual);
    }
    for (const PickKind kind : {PickKind::Vertex, PickKind::Edge, PickKind::Line, PickKind::CloudPoint})
        EXPECT_GT(checked[kind], 0u) << nameOf(kind);
}

TEST_P(PickOracleTest, WhatHidesACandidateIsWhatALoopOverAllTrianglesMeetsOnTheWay)
{
    std::size_t behind = 0, seen = 0;
    for (unsigned seed = 40; seed < 43; ++seed) {
        std::mt19937 random(seed);
        fill(random);
        for (int k = 0; k < 60; ++k) {
            const PickQuery query = anyQuery(random);
            for (const PickCandidate& c : query.askAll(service).candidates) {
                if (c.kind != PickKind::Vertex && c.kind != PickKind::Edge && c.kind != PickKind::Point)
                    continue;
                const SeenAt at = seenAt(query.camera, c.place);
                const PickRay ray = query.camera.rayThrough(at.x, at.y);
                const double distance = (c.place - ray.origin).dot(ray.direction);
                double nearest = oracle::infinite;
                for (visual::Visual* visual : entered()) {
                    const SelectableObject& object = *service.getObject(visual);
                    if (object.kind != SelectableObject::ObjectKind::Shape &&
                        object.kind != SelectableObject::ObjectKind::Mesh)
                        continue;
                    oracle::forTriangles(object, [&](const rob::Vec3d(&corners)[3], const SensitiveFace*) {
                        double t = 0;
                        if (oracle::meet({rob::Vec3d(ray.origin), ray.direction}, corners, t, units(oracle::blur)) ==
                                oracle::Meeting::Yes &&
                            t > 0)
                            nearest = std::min(nearest, t);
                    });
                }
                // Half of the radius in the world, at most 16 pixels of 1.2 units each.
                if (nearest < distance - units(20)) {
                    EXPECT_EQ(c.verdict, PickVerdict::Behind);
                    ++behind;
                } else if (c.verdict == PickVerdict::Possible || c.verdict == PickVerdict::Chosen) {
                    ++seen;
                }
            }
        }
        for (visual::Visual* visual : entered())
            service.removeObject(visual);
    }
    EXPECT_GT(behind, 20u);
    EXPECT_GT(seen, 20u);
}

TEST_P(PickOracleTest, BestIsTheOneThatAllWouldHaveChosen)
{
    for (unsigned seed = 60; seed < 64; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        fill(random);
        std::size_t chosen = 0;
        for (int k = 0; k < 200; ++k) {
            PickQuery query = anyQuery(random);
            std::uniform_int_distribution<int> number(0, 3);
            query.pointsPerCloud = 32;
            query.seesThroughSurfaces = number(random) == 0;
            for (unsigned i = 0; i < pickKindCount; ++i) {
                query.priorities[i] = number(random);
                if (number(random) == 0)
                    query.kinds.remove(static_cast<PickKind>(i));
            }
            if (number(random) == 0)
                query.kinds = {PickKind::Face, PickKind::Body, PickKind::MeshTriangle};
            if (number(random) == 0)
                query.filter = [](const PickCandidate& c) { return c.visualId % 3 == 0 ? "every third" : ""; };

            const PickAnswer answer = query.askAll(service);
            const auto best = query.askBest(service);

            ASSERT_EQ(best.has_value(), answer.chosen() != nullptr) << k;
            if (!best)
                continue;
            ++chosen;
            EXPECT_EQ(toJson(PickAnswer{{*best}}), toJson(PickAnswer{{*answer.chosen()}})) << k;
        }
        EXPECT_GT(chosen, 20u);
        for (visual::Visual* visual : entered())
            service.removeObject(visual);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, PickOracleTest,
                         testing::Values(PickWorld{"InMillimetres", 1, 0},
                                         PickWorld{"TwoHundredMetresAway", 1, 115'000},
                                         PickWorld{"InMetres", 0.001, 0}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vrk::selection
