#include "selection/RegionShapesOracle.h"
#include "selection/pick/PickFixture.h"

#include <BRepPrimAPI_MakeCylinder.hxx>

#include <gmock/gmock.h>

#include <map>
#include <numbers>
#include <tuple>

/// Regions over bodies, faces and edges, against measures of every triangle and section.
namespace vrk::selection {
namespace {

using Cover = RegionQuery::Cover;
using Sight = RegionQuery::Sight;
using Name = std::tuple<visual::Visual*, unsigned>; // and the face or the edge; 0 for a body
using Names = std::set<Name>;

constexpr double infinite = std::numeric_limits<double>::infinity();

class RegionShapesOracle : public SelectionFixture {
protected:
    rob::Posf place(std::mt19937& random, double reach)
    {
        const auto number = [&] { return static_cast<float>(uniform(random, -reach, reach)); };
        const float x = number(), y = number(), z = number();
        return {x, y, z};
    }
    rob::Posef pose(std::mt19937& random, double reach)
    {
        const rob::Posf at = place(random, reach), turns = place(random, 3);
        return {at, rob::Rotationf(turns.x, turns.y, turns.z)};
    }
    /// Bodies and curves in random poses, half of them under a parent that is turned and scaled.
    void fill(std::mt19937& random)
    {
        static unsigned parentId = 930000;
        auto* parent = new visual::Visual(++parentId, "Parent", world);
        parent->setPose(pose(random, 100));
        const double scale = uniform(random, 0.5, 2);
        parent->setScale(scale, scale * uniform(random, 0.7, 1.4), scale);
        const auto settle = [&](visual::Visual* visual, int i) {
            if (i % 2 == 0)
                parent->attachVisual(visual);
            visual->setPose(pose(random, 250));
        };
        for (int i = 0; i < 6; ++i) {
            TopoDS_Shape shape = i % 3 != 0 ? test::meshedBox(uniform(random, 20, 90), 60, uniform(random, 5, 40))
                                            : test::meshed(BRepPrimAPI_MakeCylinder(25, 70).Shape());
            if (i % 3 == 1) { // which has the place of its faces in the shape itself
                gp_Trsf move;
                move.SetRotation(gp_Ax1(gp_Pnt(10, 0, 0), gp_Dir(1, 1, 0)), uniform(random, 0, 3));
                shape = shape.Moved(TopLoc_Location(move));
            }
            visual::SolidVisual* solid = addSolid(shape);
            settle(solid, i);
            if (i == 2)
                solid->setFaceVisible(3, false);
        }
        visual::MeshVisual* mesh = addMesh(wall(60));
        mesh->setScale(0.5, 2, 1);
        settle(mesh, static_cast<int>(random() % 2));
        for (int i = 0; i < 4; ++i) {
            const rob::Posf from = place(random, 80), to = place(random, 80);
            settle(addCurve(gp_Pnt(from.x, from.y, from.z), gp_Pnt(to.x, to.y, to.z)), i);
        }
        service.update();
    }
    void forgetAll()
    {
        for (visual::Visual* visual : entered())
            service.removeObject(visual);
    }
    /// Wide, narrow or without perspective; from within the things as well, so that some lie behind the eye.
    static RegionView anyView(std::mt19937& random)
    {
        PickView from;
        const rob::Vec3d away(uniform(random, -1, 1), uniform(random, -1, 1), uniform(random, -1, 1));
        from.eye = rob::Posd(away * (uniform(random, 50, 900) / away.length()));
        const double x = uniform(random, -150, 150), y = uniform(random, -150, 150), z = uniform(random, -150, 150);
        from.target = {x, y, z};
        const unsigned kind = random() % 4;
        from.angle = kind == 0 ? 2.0 : kind == 1 ? 0.5 : std::numbers::pi / 3;
        from.parallelHeight = kind == 3 ? uniform(random, 200, 900) : 0;
        const PickCamera camera = from.camera();
        RegionView view;
        view.view = camera.view;
        view.projection = camera.projection;
        view.width = camera.width;
        view.height = camera.height;
        return view;
    }
    /// A rectangle, corners anywhere, or the jags of a star, of up to `reach` pixels about the middle.
    static RegionQuery anyRegion(std::mt19937& random, double reach)
    {
        const auto x = [&] { return 200 + uniform(random, -1.2, 1.2) * reach; };
        const auto y = [&] { return 150 + uniform(random, -0.9, 0.9) * reach; };
        RegionQuery query;
        const auto kind = random() % 3;
        if (kind == 0) {
            const double x1 = x(), y1 = y(), x2 = x(), y2 = y();
            query = RegionQuery::Rectangle(x1, y1, x2, y2);
        } else {
            const auto count = 3 + random() % 10;
            for (unsigned i = 0; i < count; ++i) {
                const double angle = 2 * std::numbers::pi * i / static_cast<double>(count);
                const double far = uniform(random, 0.2, 1.2) * reach;
                const double px = x(), py = y();
                query.corners.push_back(kind == 1 ? Corner(px, py)
                                                  : Corner(200 + far * std::cos(angle), 150 + far * std::sin(angle)));
            }
        }
        if (random() % 4 == 0) {
            query.nearest = uniform(random, 0, 400);
            query.farthest = query.nearest + uniform(random, 0, 500);
        }
        query.kinds = {.bodies = true, .faces = true, .edges = true};
        return query;
    }
    static Names namesOf(const std::vector<RegionAnswer::Whole>& bodies)
    {
        Names names;
        for (const auto& body : bodies)
            names.emplace(body.visual, 0);
        return names;
    }
    static Names namesOf(const std::vector<RegionAnswer::Part>& parts)
    {
        Names names;
        for (const auto& part : parts)
            names.emplace(part.visual, part.part);
        return names;
    }

    /// What was expected and answered of how many things.
    struct Tally {
        std::map<bool, int> told;
        int unsure = 0;

        void expect(const Names& found, const Name& name, const Amount& amount, Cover cover)
        {
            if (!amount.isClear()) {
                ++unsure;
                return;
            }
            const bool isIn = cover == Cover::Touching ? amount.inside > 0 : amount.outside == 0;
            ASSERT_EQ(found.contains(name), isIn)
                << std::get<0>(name)->getName() << ", " << std::get<1>(name) << ": " << amount.inside << " inside, "
                << amount.outside << " outside, " << (cover == Cover::Touching ? "touching" : "wholly inside");
            ++told[isIn];
        }
        void expectMany(int least, const char* what) const
        {
            for (const bool isIn : {false, true})
                EXPECT_GT(told.contains(isIn) ? told.at(isIn) : 0, least) << what << " " << isIn;
            EXPECT_LT(unsure * 50, told.at(false) + told.at(true)) << what;
        }
    };
};

TEST_F(RegionShapesOracle, WhatIsTouchedAndWhatIsWhollyInsideIsThatOfMeasuresOfEveryTriangleAndSection)
{
    std::map<Cover, Tally> bodies, faces, edges;
    for (unsigned seed = 0; seed < 12; ++seed) {
        std::mt19937 random(seed);
        fill(random);
        const auto triangles = drawnTriangles(service, entered());
        const auto sections = drawnSections(service, entered());
        for (int round = 0; round < 25; ++round) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", round " << round);
            const RegionView view = anyView(random);
            RegionQuery query = anyRegion(random, round % 2 == 0 ? 230 : 90);
            const RegionMeasure measure(query, view);
            std::map<Name, Amount> ofBodies, ofFaces, ofEdges;
            for (const DrawnTriangle& t : triangles) {
                const Amount amount = measure.ofTriangle(t.corners);
                ofBodies[{t.visual, 0}].add(amount);
                if (t.face > 0)
                    ofFaces[{t.visual, t.face}].add(amount);
            }
            for (const DrawnSection& s : sections)
                ofEdges[{s.visual, s.edge}].add(measure.ofSegment(s.from, s.to));
            for (const Cover cover : {Cover::Touching, Cover::WhollyInside}) {
                query.cover = cover;
                const RegionAnswer found = service.askRegion(query, view);
                for (const auto& [name, amount] : ofBodies)
                    bodies[cover].expect(namesOf(found.bodies), name, amount, cover);
                for (const auto& [name, amount] : ofFaces)
                    faces[cover].expect(namesOf(found.faces), name, amount, cover);
                for (const auto& [name, amount] : ofEdges)
                    edges[cover].expect(namesOf(found.edges), name, amount, cover);
                if (HasFatalFailure())
                    return;
            }
        }
        forgetAll();
    }
    for (const Cover cover : {Cover::Touching, Cover::WhollyInside}) {
        bodies[cover].expectMany(100, "bodies");
        faces[cover].expectMany(500, "faces");
        edges[cover].expectMany(1000, "edges");
    }
}

/// What a ray through a pixel meets first of all triangles.
class FirstMet {
public:
    struct Met {
        double depth = infinite;
        Names sure, maybe; // a body and its face; several at a common border
    };

    FirstMet(const std::vector<DrawnTriangle>& triangles, const RegionView& view) : triangles(triangles), seen(view)
    {
        camera.view = view.view;
        camera.projection = view.projection;
        camera.width = static_cast<unsigned>(view.width);
        camera.height = static_cast<unsigned>(view.height);
    }

    Met through(double x, double y) const
    {
        constexpr double border = 1e-6, tie = 1e-4; // of a triangle's sides; units
        const PickRay ray = camera.rayThrough(x, y);
        std::vector<std::pair<double, const DrawnTriangle*>> hits;
        std::set<const DrawnTriangle*> onBorder;
        double nearest = infinite;
        for (const DrawnTriangle& t : triangles) {
            const rob::Vec3d ab = t.corners[1] - t.corners[0], ac = t.corners[2] - t.corners[0];
            const rob::Vec3d p = ray.direction.cross(ac);
            const double area = ab.dot(p);
            if (area == 0)
                continue;
            const rob::Vec3d from = ray.origin - t.corners[0], q = from.cross(ab);
            const double u = from.dot(p) / area, v = ray.direction.dot(q) / area, at = ac.dot(q) / area;
            const double inside = std::min({u, v, 1 - u - v});
            if (inside < -border || at < -border)
                continue;
            hits.emplace_back(at, &t);
            if (inside < border || at < border)
                onBorder.insert(&t);
            else
                nearest = std::min(nearest, at);
        }
        Met met;
        for (const auto& [at, t] : hits)
            if (at < nearest + tie) {
                const bool isSure = at == nearest && !onBorder.contains(t);
                (isSure ? met.sure : met.maybe).emplace(t->visual, t->face);
                met.depth = std::min(met.depth, seen.depthOf(ray.at(at)));
            }
        if (!met.maybe.empty()) { // the nearest may be none
            met.maybe.insert(met.sure.begin(), met.sure.end());
            met.sure.clear();
        }
        return met;
    }

private:
    const std::vector<DrawnTriangle>& triangles;
    PickCamera camera;
    DoubleView seen;
};

/// The pixels that rays go through: from the first of the region on, in equal steps.
struct Samples {
    double left, top, step;
    int columns, rows;

    Samples(const RegionQuery& query, const RegionView& view)
    {
        double minX = view.width, minY = view.height, maxX = 0, maxY = 0;
        for (const Corner& c : query.corners) {
            minX = std::min(minX, c.x);
            minY = std::min(minY, c.y);
            maxX = std::max(maxX, c.x);
            maxY = std::max(maxY, c.y);
        }
        minX = std::max(minX, 0.0);
        minY = std::max(minY, 0.0);
        maxX = std::min(maxX, view.width);
        maxY = std::min(maxY, view.height);
        const bool isSmall = maxX - minX <= 64 && maxY - minY <= 64;
        step = query.sight == Sight::Seen && !isSmall ? 4 : 1;
        left = std::floor(minX) + 0.5;
        top = std::floor(minY) + 0.5;
        columns = std::max(0, static_cast<int>(std::floor((maxX - left) / step)) + 1);
        rows = std::max(0, static_cast<int>(std::floor((maxY - top) / step)) + 1);
    }
};

TEST_F(RegionShapesOracle, WhatIsSeenIsWhatRaysThroughThePixelsMeetFirst)
{
    std::map<Sight, int> seenParts, hiddenParts;
    for (unsigned seed = 100; seed < 112; ++seed) {
        std::mt19937 random(seed);
        fill(random);
        const auto triangles = drawnTriangles(service, entered());
        for (int round = 0; round < 8; ++round) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", round " << round);
            const RegionView view = anyView(random);
            RegionQuery query = anyRegion(random, round % 2 == 0 ? 230 : 70);
            query.sight = round % 4 < 3 ? Sight::Seen : Sight::SeenExactly;
            const RegionMeasure measure(query, view);
            const FirstMet first(triangles, view);
            const Samples samples(query, view);
            Names sureFaces, maybeFaces, sureBodies, maybeBodies;
            for (int row = 0; row < samples.rows; ++row)
                for (int column = 0; column < samples.columns; ++column) {
                    const double x = samples.left + samples.step * column, y = samples.top + samples.step * row;
                    if (!measure.holds(x, y))
                        continue;
                    const FirstMet::Met met = first.through(x, y);
                    if (met.depth < query.nearest || met.depth > query.farthest)
                        continue;
                    for (const auto& [visual, face] : met.sure) {
                        sureFaces.emplace(visual, face);
                        sureBodies.emplace(visual, 0);
                    }
                    for (const auto& [visual, face] : met.maybe) {
                        maybeFaces.emplace(visual, face);
                        maybeBodies.emplace(visual, 0);
                    }
                }
            RegionQuery through = query;
            through.sight = Sight::Through;
            through.cover = Cover::WhollyInside;
            const RegionAnswer wholly = service.askRegion(through, view);
            const RegionAnswer found = service.askRegion(query, view);
            query.cover = Cover::WhollyInside;
            const RegionAnswer foundWholly = service.askRegion(query, view);
            const auto compare = [&](const Names& names, const Names& whole, const Names& both, const Names& sure,
                                     const Names& maybe) {
                for (const Name& name : sure)
                    if (std::get<0>(name)->getType() != VisualType::Mesh || std::get<1>(name) == 0) {
                        EXPECT_TRUE(names.contains(name)) << std::get<0>(name)->getName() << ", " << std::get<1>(name);
                    }
                for (const Name& name : names)
                    EXPECT_TRUE(sure.contains(name) || maybe.contains(name))
                        << std::get<0>(name)->getName() << ", " << std::get<1>(name);
                Names expected;
                std::ranges::set_intersection(names, whole, std::inserter(expected, expected.end()));
                EXPECT_EQ(both, expected);
                seenParts[query.sight] += static_cast<int>(names.size());
            };
            std::erase_if(sureFaces, [](const Name& name) { return std::get<1>(name) == 0; }); // of meshes
            compare(namesOf(found.faces), namesOf(wholly.faces), namesOf(foundWholly.faces), sureFaces, maybeFaces);
            compare(namesOf(found.bodies), namesOf(wholly.bodies), namesOf(foundWholly.bodies), sureBodies,
                    maybeBodies);
            through.cover = Cover::Touching;
            hiddenParts[query.sight] +=
                static_cast<int>(service.askRegion(through, view).faces.size() - found.faces.size());
        }
        forgetAll();
    }
    for (const Sight sight : {Sight::Seen, Sight::SeenExactly}) {
        EXPECT_GT(seenParts[sight], 20);
        EXPECT_GT(hiddenParts[sight], 20);
    }
}

/// Edges and points hide nothing, and are hidden where bodies lie before them.
TEST_F(RegionShapesOracle, EdgesAndPointsAreHiddenWhereRaysMeetABodyBeforeThem)
{
    int seenEdges = 0, hiddenEdges = 0, seenPoints = 0, hiddenPoints = 0;
    for (unsigned seed = 200; seed < 206; ++seed) {
        std::mt19937 random(seed);
        fill(random);
        std::vector<rob::Posf> points;
        for (int i = 0; i < 300; ++i)
            points.push_back(place(random, 350));
        visual::PointCloudVisual* cloud = addCloud(points);
        cloud->setPose(pose(random, 50));
        service.update();
        const auto triangles = drawnTriangles(service, entered());
        const auto sections = drawnSections(service, entered());
        for (int round = 0; round < 6; ++round) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", round " << round);
            const RegionView view = anyView(random);
            RegionQuery query = anyRegion(random, 200);
            query.kinds.points = true;
            query.sight = Sight::Seen;
            query.nearest = 0;
            query.farthest = infinite;
            const RegionMeasure measure(query, view);
            const DoubleView& seen = measure.getSeen();
            const FirstMet first(triangles, view);
            const Samples samples(query, view);
            if (samples.columns < 1 || samples.rows < 1)
                continue;
            std::map<std::pair<int, int>, double> depths;
            const auto depthAt = [&](int column, int row) {
                column = std::clamp(column, 0, samples.columns - 1);
                row = std::clamp(row, 0, samples.rows - 1);
                const auto [entry, isNew] = depths.emplace(std::pair(column, row), 0);
                if (isNew)
                    entry->second =
                        first.through(samples.left + samples.step * column, samples.top + samples.step * row).depth;
                return entry->second;
            };
            /// How far a place lies behind what is met before it, beyond twice the distance of two samples; below 0 it is
            /// not hidden.
            const auto behind = [&](const rob::Posd& p, double depth) {
                const double w = seen.pixelOf(p).w;
                const double unitsPerPixel = w / (std::abs(view.projection[0]) * view.width / 2);
                return seen.depthOf(p) - depth - 2 * samples.step * unitsPerPixel;
            };
            const RegionAnswer found = service.askRegion(query, view);

            std::map<Name, std::pair<double, double>> runs; // the longest that is seen, and all of it
            for (const DrawnSection& s : sections) {
                auto& [longest, all] = runs[{s.visual, s.edge}];
                double run = 0;
                constexpr int pieces = 400;
                for (int i = 0; i < pieces; ++i) {
                    const auto at = [&](double part) { return s.from + (s.to - s.from) * (part / pieces); };
                    const rob::Posd p = at(i + 0.5);
                    const DoubleView::Pixel pixel = seen.pixelOf(p);
                    if (!(pixel.w > 0 && seen.depthOf(p) > 0 && measure.holds(pixel.x, pixel.y)))
                        continue;
                    const double depth = depthAt(static_cast<int>((pixel.x - samples.left) / samples.step + 0.5),
                                                 static_cast<int>((pixel.y - samples.top) / samples.step + 0.5));
                    const DoubleView::Pixel from = seen.pixelOf(at(i)), to = seen.pixelOf(at(i + 1));
                    run = behind(p, depth) <= 1e-6 ? run + std::hypot(to.x - from.x, to.y - from.y) : 0;
                    longest = std::max(longest, run);
                    all += behind(p, depth) <= 1e-6 ? 1 : 0;
                }
            }
            const Names edges = namesOf(found.edges);
            for (const auto& [name, run] : runs) {
                const bool isFound = edges.contains(name);
                if (run.second == 0) {
                    EXPECT_FALSE(isFound) << std::get<0>(name)->getName() << ", " << std::get<1>(name);
                    ++hiddenEdges;
                } else if (run.first > 5 * samples.step) {
                    EXPECT_TRUE(isFound) << std::get<0>(name)->getName() << ", " << std::get<1>(name);
                    ++seenEdges;
                }
            }
            const DrawnPlace place(*cloud);
            std::set<std::uint32_t> numbers;
            if (!found.clouds.empty())
                numbers.insert(found.clouds[0].points.begin(), found.clouds[0].points.end());
            for (std::uint32_t i = 0; i < points.size(); ++i) {
                const rob::Posd p = place(rob::Posd(points[i]));
                const DoubleView::Pixel pixel = seen.pixelOf(p);
                if (!(pixel.w > 0 && seen.depthOf(p) > 0 && measure.holds(pixel.x, pixel.y)))
                    continue;
                const double x = std::max(0.0, (pixel.x - samples.left) / samples.step);
                const double y = std::max(0.0, (pixel.y - samples.top) / samples.step);
                double least = infinite; // of the four around it
                for (const int dx : {0, 1})
                    for (const int dy : {0, 1})
                        least = std::min(least, behind(p, depthAt(static_cast<int>(x) + dx, static_cast<int>(y) + dy)));
                if (std::abs(least) < 1e-3)
                    continue;
                EXPECT_EQ(numbers.contains(i), least < 0) << "point " << i << ", behind by " << least;
                (least < 0 ? seenPoints : hiddenPoints) += 1;
            }
        }
        forgetAll();
    }
    EXPECT_GT(seenEdges, 100);
    EXPECT_GT(hiddenEdges, 50);
    EXPECT_GT(seenPoints, 500);
    EXPECT_GT(hiddenPoints, 50);
}

} // namespace
} // namespace vrk::selection
