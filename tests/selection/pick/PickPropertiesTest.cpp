#include "PickFixture.h"

#include "selection/SensitiveFace.h"

#include <BRepBuilderAPI_Transform.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>

#include <algorithm>
#include <numbers>
#include <random>

/// What a pick promises whatever the scene.
namespace vrk::selection {
namespace {

using rob::Posd;
using rob::Posf;
using rob::Trianglef;

class PickPropertiesTest : public PickFixture {
protected:
    static PickQuery surfacesAt(const PickView& view, const Posd& place)
    {
        PickQuery query = queryAt(view, place);
        query.kinds = {PickKind::Face, PickKind::MeshTriangle};
        return query;
    }
    /// How many of these places, which lie on a surface, a ray towards them passes by.
    std::size_t leaksAt(const std::vector<Posd>& places, std::mt19937& random)
    {
        service.update();
        std::uniform_real_distribution<double> unit(-1, 1);
        std::size_t leaks = 0;
        PickView view;
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (i % 100 == 0) { // another eye, outside
                rob::Vec3d away(unit(random), unit(random), unit(random));
                view.eye = Posd(away * (700 / away.length()));
                view.target = Posd(unit(random) * 10, unit(random) * 10, unit(random) * 10);
            }
            const PickQuery query = surfacesAt(view, places[i]);
            const auto hit = query.askBest(service);
            const double distance = (places[i] - query.camera.rayThrough(query.x, query.y).origin).length();
            leaks += hit && hit->distance <= distance + 1e-6 ? 0 : 1;
        }
        return leaks;
    }
};

/// A bumpy closed surface of triangles that share their corners.
std::vector<Trianglef> bumpyBall(unsigned around, unsigned high)
{
    const auto corner = [&](unsigned i, unsigned j) {
        const double a = 2 * std::numbers::pi * (i % around) / around, b = std::numbers::pi * j / high;
        const double r = j == 0 || j == high ? 100 : 100 + 7 * std::sin(5 * a) * std::sin(3 * b);
        return j == 0      ? Posf(0, 0, 100)
               : j == high ? Posf(0, 0, -100)
                           : Posf(Posd(r * std::sin(b) * std::cos(a), r * std::sin(b) * std::sin(a), r * std::cos(b)));
    };
    std::vector<Trianglef> triangles;
    for (unsigned i = 0; i < around; ++i)
        for (unsigned j = 0; j < high; ++j) {
            triangles.push_back({corner(i, j), corner(i, j + 1), corner(i + 1, j + 1)});
            triangles.push_back({corner(i, j), corner(i + 1, j + 1), corner(i + 1, j)});
        }
    return triangles;
}

TEST_F(PickPropertiesTest, NoRayLeaksThroughEdgesAndVerticesOfAMesh)
{
    const std::vector<Trianglef> triangles = bumpyBall(40, 20);
    addMesh(triangles);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> part(0, 1);
    std::vector<Posd> places;
    while (places.size() < 110'000)
        for (const Trianglef& t : triangles) {
            places.emplace_back(t.a);
            for (const auto& [from, to] : {std::pair(t.a, t.b), std::pair(t.b, t.c), std::pair(t.c, t.a)})
                places.push_back(Posd(from) + (Posd(to) - Posd(from)) * part(random));
        }

    EXPECT_EQ(leaksAt(places, random), 0u);
}

TEST_F(PickPropertiesTest, NoRayLeaksThroughTheBordersOfTheFacesOfASolid)
{
    visual::SolidVisual* solid = addSolid(test::meshed(BRepPrimAPI_MakeTorus(100, 40).Shape()));
    addBox(60, {0, 0, 0});
    service.update();
    // Where the edges of its triangles lie, to the last digit.
    std::mt19937 random(11);
    std::uniform_real_distribution<double> part(0, 1);
    std::vector<Posd> places;
    for (const BVHPrimitive* face : object(solid).primitives) {
        const auto& set = static_cast<const SensitiveFace&>(*face);
        for (const BVHPrimitive* triangle : set.primitives) {
            const auto t = set.getStoredTriangle(static_cast<const SensitiveIndexedTriangle&>(*triangle).index);
            places.push_back(t.a);
            for (const auto& [from, to] : {std::pair(t.a, t.b), std::pair(t.b, t.c), std::pair(t.c, t.a)})
                places.push_back(from + (to - from) * part(random));
        }
    }
    ASSERT_GT(places.size(), 500u);

    EXPECT_EQ(leaksAt(places, random), 0u);
}

TEST_F(PickPropertiesTest, RayAlongAnAxisExactlyThroughVerticesAndEdgesHits)
{
    // A field of squares with a corner at every whole number, each cut in two.
    std::vector<Trianglef> field;
    for (int x = -10; x < 10; ++x)
        for (int z = -10; z < 10; ++z) {
            const auto at = [](int i, int k) {
                return Posf(static_cast<float>(i), static_cast<float>((i * i + 3 * k) % 5), static_cast<float>(k));
            };
            field.push_back({at(x, z), at(x + 1, z), at(x + 1, z + 1)});
            field.push_back({at(x, z), at(x + 1, z + 1), at(x, z + 1)});
        }
    addMesh(field);
    service.update();
    PickView view;
    view.parallelHeight = 300; // a unit is a pixel
    for (double x = -9; x <= 9; x += 0.5)
        for (double z = -9; z <= 9; z += 0.5) {
            PickQuery query = surfacesAt(view, {x, 0, z});
            query.x = 200 + x;
            query.y = 150 - z;
            const PickRay ray = query.camera.rayThrough(query.x, query.y);
            ASSERT_EQ(ray.direction.x, 0);
            ASSERT_EQ(ray.direction.z, 0);
            EXPECT_TRUE(query.askBest(service).has_value()) << x << ", " << z;
        }
}

TEST_F(PickPropertiesTest, RayAlongAnAxisMeetsNothingThatItPassesByAndAllThatItTouches)
{
    PickView view;
    view.parallelHeight = 300;
    addBox(100, {0, 0, 0});
    for (const double x : {49.999, 50.0, 50.001}) {
        PickQuery query = surfacesAt(view, {x, -50, 0});
        service.update();
        EXPECT_EQ(query.askBest(service).has_value(), x <= 50.0000001) << x;
    }
}

TEST_F(PickPropertiesTest, RayThatIsAlmostSquareToAnAxisFindsWhatItReaches)
{
    // 0.0008 sideways for each unit: after 200 m it is 160 mm aside.
    visual::SolidVisual* far = addBox(100, {160, 200'000, 0});
    PickView view;
    view.eye = {0, 0, 0};
    view.target = {0, 1, 0};

    PickQuery query = surfacesAt(view, {160, 199'950, 0});
    service.update();
    ASSERT_TRUE(query.askBest(service).has_value());
    EXPECT_EQ(query.askBest(service)->visual, far);
}

TEST_F(PickPropertiesTest, DistancesAreThoseOfTheWorldWhateverTheScale)
{
    const PickView view;
    for (const rob::Vec3d& scale :
         {rob::Vec3d(1, 1, 1), rob::Vec3d(1000, 1000, 1000), rob::Vec3d(0.001, 0.001, 0.001), rob::Vec3d(2, 0.5, 30)}) {
        // A wall that lies at y = -20 once it is drawn in its scale.
        visual::MeshVisual* mesh = makeMesh(wall(static_cast<float>(100 / scale.x), static_cast<float>(-20 / scale.y)));
        mesh->setScale(scale.x, scale.y, scale.z);
        service.addMeshVisual(mesh, true, false);
        service.update();
        const Posd place(0.01, -20, 0.005);

        const auto found = surfacesAt(view, place).askBest(service);

        ASSERT_TRUE(found.has_value()) << scale.x;
        expectNear(found->place, place, 1e-4);
        EXPECT_NEAR(found->distance, 979, 1e-4); // from the near plane, a unit before the eye
        visual::Visual::Delete(mesh);
    }
}

TEST_F(PickPropertiesTest, NearestOfMeshesInDifferentSizesIsChosen)
{
    visual::MeshVisual* far = makeMesh(wall(0.1f, 0.3f)); // drawn at 300, told at 0.3 in its own size
    far->setScale(1000, 1000, 1000);
    service.addMeshVisual(far, true, false);
    visual::MeshVisual* near = addMesh(wall(100, 0));

    EXPECT_EQ(best(surfacesAt(PickView(), {10, 0, 5}))->visual, near);
}

struct Far {
    const char* name;
    double distance;
};
class PickTolerance : public PickPropertiesTest, public testing::WithParamInterface<Far> {
protected:
    /// A view from this distance.
    PickView view() const
    {
        PickView made;
        made.eye = {0, -GetParam().distance, 0};
        made.near = GetParam().distance * 1e-3;
        made.far = GetParam().distance * 10;
        return made;
    }
    void expectWithin(PickKind kind, const Posd& place)
    {
        service.update();
        for (const double pixels : {0.0, 3.0, 4.9}) {
            PickQuery query = queryBeside(view(), place, pixels);
            query.kinds = {kind};
            const auto found = query.askBest(service);
            ASSERT_TRUE(found.has_value()) << nameOf(kind) << " at " << pixels;
            EXPECT_NEAR(found->pixels, pixels, 0.01);
        }
        PickQuery query = queryBeside(view(), place, 5.1);
        query.kinds = {kind};
        EXPECT_FALSE(query.askBest(service).has_value()) << nameOf(kind);
    }
};

TEST_P(PickTolerance, OfAPointIsInPixels)
{
    addPoint({0, 0, 0});
    expectWithin(PickKind::Point, {0, 0, 0});
}

TEST_P(PickTolerance, OfALineIsInPixels)
{
    const auto half = static_cast<float>(GetParam().distance / 10);
    addLine({{0, 0, -half}, {0, 0, half}});
    expectWithin(PickKind::Line, {0, 0, 0});
}

TEST_P(PickTolerance, OfACloudIsInPixels)
{
    const auto high = static_cast<float>(GetParam().distance / 10);
    addCloud({{0, 0, 0}, {0, 0, high}});
    expectWithin(PickKind::CloudPoint, {0, 0, 0});
}

TEST_P(PickTolerance, OfAnEdgeAndAVertexOfASolidIsInPixels)
{
    const double size = GetParam().distance / 10;
    addSolid(test::meshedBox(size, size, size), Posf(Posd(-size, 0, -size / 2)));
    expectWithin(PickKind::Edge, {0, 0, 0});
    expectWithin(PickKind::Vertex, {0, 0, size / 2});
}

INSTANTIATE_TEST_SUITE_P(Table, PickTolerance,
                         testing::Values(Far{"Hair", 0.05}, Far{"AMetreInMetres", 1}, Far{"AMetre", 1000},
                                         Far{"TwoHundredMetres", 200'000}, Far{"AKilometre", 1'000'000}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(PickPropertiesTest, NothingBehindTheEyeOrBeforeTheNearPlaneIsFound)
{
    PickView view;
    view.eye = {0, 0, 0};
    view.target = {0, 1, 0};
    view.near = 10;
    addPoint({0, -100, 0});
    addPoint({0, 5, 0});
    addLine({{-5, -100, 0}, {5, -100, 0}});
    addCurve({-5, -50, 0}, {5, -50, 0});
    addCloud({{0, -100, 0}, {0, 5, 0}});
    addBox(20, {0, -100, 0});
    addMesh(wall(3, 5));

    service.update();
    PickQuery query = queryAt(view, {0, 100, 0});
    query.radius = 100;
    EXPECT_THAT(query.askAll(service).candidates, testing::IsEmpty());
    // A line through the near plane is found by its part that is seen.
    visual::LineVisual* through = addLine({{0, -1000, -1}, {0, 1000, 0}});
    service.update();
    const auto found = query.askBest(service);
    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->visual, through);
    EXPECT_GE(found->distance, -1e-9);
}

TEST_F(PickPropertiesTest, TwoHundredMetresFromTheOriginPlacesAreThoseOfTheModel)
{
    // Steps of single precision are 0.0156 there.
    const Posd corner(200'000.0037, 150'000.0021, 30'000.0013);
    gp_Trsf move;
    move.SetTranslation(gp_Vec(corner.x, corner.y, corner.z));
    TopoDS_Shape box = BRepBuilderAPI_Transform(BRepPrimAPI_MakeBox(10, 10, 10).Shape(), move, true).Shape();
    addSolid(test::meshed(box));
    PickView view;
    view.eye = corner + rob::Vec3d(5.003, -80.007, 6.001);
    view.target = corner + rob::Vec3d(5, 5, 5);
    const Posd onFace = corner + rob::Vec3d(4.0001, 0, 6.0002);

    const auto face = best(surfacesAt(view, onFace));
    ASSERT_TRUE(face.has_value());
    expectNear(face->place, onFace, 1e-7);
    PickQuery vertex = queryAt(view, corner);
    ASSERT_EQ(best(vertex)->kind, PickKind::Vertex);
    expectNear(best(vertex)->place, corner, 1e-9);
    EXPECT_NEAR(best(vertex)->pixels, 0, 1e-6);
}

TEST_F(PickPropertiesTest, StationInMetresAnswersAsTheSameInMillimetres)
{
    const auto answers = [this](double unit) {
        std::vector<visual::Visual*> made;
        const auto f = [unit](double v) { return static_cast<float>(v * unit); };
        std::vector<Trianglef> plate = wall(f(300), f(400));
        made.push_back(addMesh(plate));
        for (int i = 0; i < 12; ++i)
            made.push_back(addSolid(test::meshedBox(80 * unit, 60 * unit, 40 * unit),
                                    {f(100 * (i % 4) - 200), f(110 * (i / 4)), f(20 * (i % 3) - 50)}));
        made.push_back(addLine({{f(-200), f(-20), f(10)}, {f(200), f(-20), f(30)}}));
        made.push_back(addCloud({{f(0), f(-30), f(3)}, {f(30), f(-30), f(-20)}}));
        made.push_back(addPoint({f(-60), f(-40), f(0)}));
        service.update();
        PickView view;
        view.eye = {10 * unit, -900 * unit, 300 * unit};
        view.near = unit;
        view.far = 1e5 * unit;
        std::vector<std::vector<std::pair<std::string, double>>> all;
        for (int x = 3; x < 400; x += 13)
            for (int y = 5; y < 300; y += 17) {
                PickQuery query;
                query.camera = view.camera();
                query.x = x + 0.25;
                query.y = y + 0.25;
                std::vector<std::pair<std::string, double>>& lines = all.emplace_back();
                for (const PickCandidate& c : query.askAll(service).candidates) {
                    const auto which = std::ranges::find(made, c.visual) - made.begin();
                    lines.emplace_back(std::string(nameOf(c.kind)) + " " + std::to_string(c.subId) + " of " +
                                           std::to_string(which) + " " + std::to_string(static_cast<int>(c.verdict)),
                                       c.distance / unit);
                }
            }
        for (visual::Visual* visual : made) {
            service.removeCompoundObject(visual);
            visual::Visual::Delete(visual);
        }
        return all;
    };

    const auto millimetres = answers(1), metres = answers(0.001);

    ASSERT_EQ(millimetres.size(), metres.size());
    std::size_t candidates = 0;
    for (std::size_t i = 0; i < metres.size(); ++i) {
        ASSERT_EQ(millimetres[i].size(), metres[i].size()) << i;
        for (std::size_t k = 0; k < metres[i].size(); ++k) {
            EXPECT_EQ(millimetres[i][k].first, metres[i][k].first) << i;
            EXPECT_NEAR(millimetres[i][k].second, metres[i][k].second, 0.01) << i;
        }
        candidates += metres[i].size();
    }
    EXPECT_GT(candidates, 300u);
}

} // namespace
} // namespace vrk::selection
