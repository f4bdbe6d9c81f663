#include "mesh/ProceduralMeshes.h"

#include "support/ThrowsExactly.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRep_Tool.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

namespace vrk::visual {
namespace {

using rob::Posf;
using rob::Rotationf;
using rob::Vec3f;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr float pi = std::numbers::pi_v<float>;
const char* const zeroLengthText = "0-length vector cannot be normalized.";

void expectNear(const Posf& a, const Posf& b, float tolerance = 1e-4f)
{
    EXPECT_NEAR(a.x, b.x, tolerance);
    EXPECT_NEAR(a.y, b.y, tolerance);
    EXPECT_NEAR(a.z, b.z, tolerance);
}

void expectBounds(Mesh& mesh, const Posf& min, const Posf& max, float tolerance)
{
    expectNear(mesh.getBounds().min, min, tolerance);
    expectNear(mesh.getBounds().max, max, tolerance);
}

/// One normal for each vertex, unit length, no colours, and no index past the vertices.
void expectWellFormed(const Mesh& mesh)
{
    ASSERT_EQ(mesh.normals.size(), mesh.vertices.size());
    for (const Vec3f& normal : mesh.normals)
        ASSERT_NEAR(normal.length(), 1, 1e-5f);
    EXPECT_THAT(mesh.colors, IsEmpty());
    EXPECT_EQ(mesh.indices.size() % 3, 0u);
    for (const unsigned index : mesh.indices)
        ASSERT_LT(index, mesh.vertices.size());
}

/// Of the triangles that have an area, the share whose winding agrees with the normals of their corners.
double shareWoundOutwards(const Mesh& mesh)
{
    unsigned agreeing = 0;
    unsigned all = 0;
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3) {
        const unsigned a = mesh.indices[i], b = mesh.indices[i + 1], c = mesh.indices[i + 2];
        const Vec3f normal = (mesh.vertices[b] - mesh.vertices[a]).cross(mesh.vertices[c] - mesh.vertices[a]);
        if (normal.length() < 1e-3f)
            continue;
        ++all;
        agreeing += normal.dot(mesh.normals[a] + mesh.normals[b] + mesh.normals[c]) > 0;
    }
    return static_cast<double>(agreeing) / all;
}

struct GridCase {
    int stacks;
    int slices;
};
class CylinderGrid : public testing::TestWithParam<GridCase> {};

} // namespace

TEST_P(CylinderGrid, HasASideAndTwoCaps)
{
    const auto [stacks, slices] = GetParam();

    const auto mesh = makeCylinder("c", 2, 10, stacks, slices);

    const int side = (stacks + 1) * (slices + 1);
    EXPECT_EQ(mesh->vertices.size(), static_cast<std::size_t>(side + 2 * (slices + 2)));
    EXPECT_EQ(mesh->indices.size(), static_cast<std::size_t>(6 * stacks * (slices + 1) + 2 * 3 * slices));
    expectWellFormed(*mesh);
}

INSTANTIATE_TEST_SUITE_P(Table, CylinderGrid, testing::Values(GridCase{1, 16}, GridCase{4, 3}, GridCase{2, 1}),
                         [](const auto& info) {
                             return std::to_string(info.param.stacks) + "By" + std::to_string(info.param.slices);
                         });

TEST(Cylinder, TopCapStandsAtHalfTheHeight)
{
    const auto mesh = makeCylinder("c", 2, 10, 1, 16);

    expectBounds(*mesh, {-2, -2, 0}, {2, 2, 10}, 1e-5f);
    const std::size_t top = 2 * 17;
    for (std::size_t i = top; i < top + 18; ++i) {
        EXPECT_EQ(mesh->vertices[i].z, 5);
        EXPECT_EQ(mesh->normals[i], Vec3f(0, 0, 1));
    }
    EXPECT_EQ(mesh->vertices[top + 17], Posf(0, 0, 5)); // the centre stands behind its ring
    const std::size_t bottom = top + 18;
    for (std::size_t i = bottom; i < bottom + 18; ++i) {
        EXPECT_EQ(mesh->vertices[i].z, 0);
        EXPECT_EQ(mesh->normals[i], Vec3f(0, 0, -1));
    }
    EXPECT_EQ(mesh->vertices[bottom + 17], Posf(0, 0, 0));
}

TEST(Cylinder, RingsStartOnTheYAxisAndEndWhereTheyStart)
{
    const auto mesh = makeCylinder("c", 2, 10, 1, 4);

    expectNear(mesh->vertices[0], {0, 2, 0});
    expectNear(mesh->vertices[1], {2, 0, 0});
    expectNear(mesh->vertices[4], mesh->vertices[0]);
    expectNear(mesh->vertices[5], {0, 2, 10});
    expectNear(Posf(mesh->normals[1]), {1, 0, 0});
}

TEST(Cylinder, CapsAreFansAroundTheirCentre)
{
    const auto mesh = makeCylinder("c", 2, 10, 1, 3);

    const std::size_t side = 6 * 4;
    ASSERT_EQ(mesh->indices.size(), side + 18);
    const std::vector<unsigned> caps(mesh->indices.begin() + side, mesh->indices.end());
    EXPECT_THAT(caps, ElementsAre(12, 9, 8, 12, 10, 9, 12, 11, 10, 17, 13, 14, 17, 14, 15, 17, 15, 16));
}

TEST(Cylinder, NoRadiusIsRefused)
{
    EXPECT_THAT([] { makeCylinder("c", 0, 10, 1, 16); }, test::throwsExactly<std::overflow_error>(zeroLengthText));
}

TEST(RingScheme, RunsOverAllColumnsAndKeepsTheSeamTriangles)
{
    const auto mesh = makeTorusSector("t", pi / 2, 10, 1, 3, 3); // 4 rings of 4

    ASSERT_EQ(mesh->indices.size(), 3u * 4 * 6);
    const std::vector<unsigned> first(mesh->indices.begin(), mesh->indices.begin() + 12);
    EXPECT_THAT(first, ElementsAre(4, 0, 3, 4, 1, 0, 5, 1, 4, 5, 2, 1));
    const std::vector<unsigned> last(mesh->indices.end() - 6, mesh->indices.end());
    EXPECT_THAT(last, ElementsAre(15, 11, 14, 15, 12, 11));
}

TEST(Sphere, HasItsPolesOnTheYAxis)
{
    const auto mesh = makeSphere("s", 25, 16, 16);

    EXPECT_EQ(mesh->vertices.size(), 17u * 17);
    EXPECT_EQ(mesh->indices.size(), 16u * 17 * 6);
    expectWellFormed(*mesh);
    expectBounds(*mesh, {-25, -25, -25}, {25, 25, 25}, 1e-3f);
    expectNear(mesh->vertices.front(), {0, 25, 0});
    expectNear(mesh->vertices.back(), {0, -25, 0});
    expectNear(mesh->vertices[8 * 17], {0, 0, 25});
    expectNear(mesh->vertices[8 * 17 + 4], {25, 0, 0});
    for (std::size_t i = 0; i < mesh->vertices.size(); ++i)
        expectNear(Posf(mesh->normals[i] * 25.0f), mesh->vertices[i], 1e-3f);
}

TEST(Sphere, NoRadiusIsRefused)
{
    EXPECT_THAT([] { makeSphere("s", 0, 16, 16); }, test::throwsExactly<std::overflow_error>(zeroLengthText));
}

TEST(TorusSector, StartsOnTheXAxisAndSweepsTowardsY)
{
    const auto mesh = makeTorusSector("t", pi / 2, 150, 3, 32, 16);

    EXPECT_EQ(mesh->vertices.size(), 33u * 17);
    EXPECT_EQ(mesh->indices.size(), 32u * 17 * 6);
    expectWellFormed(*mesh);
    expectNear(mesh->vertices.front(), {153, 0, 0});
    expectNear(mesh->vertices[4], {150, 0, 3});
    expectNear(mesh->vertices[32 * 17], {0, 153, 0}, 1e-3f);
    expectBounds(*mesh, {0, 0, -3}, {153, 153, 3}, 1e-3f);
}

TEST(TorusSector, FewerThanThreeStacksOrSlicesCountAsThree)
{
    const auto mesh = makeTorusSector("t", pi, 10, 1, 0, -5);

    EXPECT_EQ(mesh->vertices.size(), 16u);
    EXPECT_EQ(mesh->indices.size(), 3u * 4 * 6);
    expectWellFormed(*mesh);
}

TEST(TorusSector, TubeOfNoRadiusIsRefused)
{
    EXPECT_THAT([] { makeTorusSector("t", pi, 10, 0, 8, 8); },
                test::throwsExactly<std::overflow_error>(zeroLengthText));
}

TEST(Torus, IsTheSectorOfAFullTurn)
{
    const auto torus = makeTorus("t", 10, 2, 12, 8);
    const auto sector = makeTorusSector("s", 2 * pi, 10, 2, 12, 8);

    EXPECT_EQ(torus->vertices, sector->vertices);
    EXPECT_EQ(torus->indices, sector->indices);
    expectBounds(*torus, {-12, -12, -2}, {12, 12, 2}, 1e-3f);
}

TEST(Cone, StandsOnTheOriginAlongZ)
{
    const auto mesh = makeCone("cone", 20, 200);

    EXPECT_EQ(mesh->name, "cone");
    expectWellFormed(*mesh);
    // The circle has chords, 0.25 inside at most.
    expectBounds(*mesh, {-20, -20, 0}, {20, 20, 200}, 0.5f);
    EXPECT_EQ(shareWoundOutwards(*mesh), 1.0);
    // All its vertices lie on the base or on the line from the rim to the tip.
    for (const Posf& p : mesh->vertices)
        EXPECT_TRUE(std::abs(p.z) < 1e-3f || std::abs(std::hypot(p.x, p.y) - 20 * (1 - p.z / 200)) < 1e-2f);
}

TEST(Cone, LargerOneHasMoreFacets)
{
    EXPECT_GT(makeCone("a", 200, 200)->indices.size(), makeCone("b", 1, 3)->indices.size());
}

namespace {

/// How many triangles Open CASCADE makes of a cone.
std::size_t trianglesOfACone(double radius, double height, double deflection, double degrees)
{
    const TopoDS_Shape cone = BRepPrimAPI_MakeCone(radius, 0, height).Shape();
    const BRepMesh_IncrementalMesh mesher(cone, deflection, false, degrees * std::numbers::pi / 180, false);
    std::size_t count = 0;
    TopLoc_Location location;
    for (TopExp_Explorer face(cone, TopAbs_FACE); face.More(); face.Next())
        count +=
            static_cast<std::size_t>(BRep_Tool::Triangulation(TopoDS::Face(face.Current()), location)->NbTriangles());
    return count;
}

} // namespace

TEST(Cone, IsMeshedToAQuarterUnitAnd20DegreesWhateverItsSize)
{
    for (const auto& [radius, height] : {std::pair{1.0f, 3.0f}, {20.0f, 200.0f}, {300.0f, 200.0f}})
        EXPECT_EQ(makeCone("cone", radius, height)->indices.size() / 3, trianglesOfACone(radius, height, 0.25, 20))
            << radius;
    // The angle rules the small one, the distance the large one.
    EXPECT_NE(trianglesOfACone(1, 3, 0.25, 20), trianglesOfACone(1, 3, 0.25, 12));
    EXPECT_NE(trianglesOfACone(300, 200, 0.25, 20), trianglesOfACone(300, 200, 0.2, 20));
}

TEST(FlatMesh, EachTriangleHasVerticesOfItsOwnAndAnUnscaledNormal)
{
    const std::vector<Posf> points{{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {2, 2, 0}};

    const auto mesh = makeFlatMesh("flat", points, {0, 1, 2, 2, 1, 3});

    EXPECT_THAT(mesh->vertices, ElementsAre(points[0], points[1], points[2], points[2], points[1], points[3]));
    EXPECT_THAT(mesh->normals, testing::Each(Vec3f(0, 0, 4)));
    EXPECT_THAT(mesh->indices, ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_THAT(mesh->colors, IsEmpty());
}

TEST(FlatMesh, NoIndicesGiveAnEmptyMesh)
{
    const auto mesh = makeFlatMesh("flat", {{0, 0, 0}}, {});

    EXPECT_THAT(mesh->vertices, IsEmpty());
    EXPECT_THAT(mesh->indices, IsEmpty());
}

TEST(FlatMesh, IndexPastThePointsIsRefused)
{
    EXPECT_THAT(
        [] {
            makeFlatMesh("flat", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 3});
        },
        test::throwsExactly<std::out_of_range>("invalid vector subscript"));
}

TEST(FlatMesh, TriangleWithoutAllItsIndicesIsRefused)
{
    EXPECT_THAT(
        [] {
            makeFlatMesh("flat", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 2, 0});
        },
        test::throwsExactly<std::out_of_range>("invalid vector subscript"));
}

namespace {

Mesh triangle(float offset)
{
    Mesh mesh("triangle");
    mesh.vertices = {{offset, 0.1f, 0.3f}, {offset + 1, 0, 0}, {offset, 1, 0}};
    mesh.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    mesh.colors = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    mesh.indices = {0, 1, 2};
    return mesh;
}

} // namespace

TEST(Append, IdentityPoseCopiesCoordinatesBitForBit)
{
    Mesh target = triangle(1e7f);
    const Mesh source = triangle(0.123456789f);

    append(target, source, {});

    EXPECT_TRUE(std::equal(source.vertices.begin(), source.vertices.end(), target.vertices.begin() + 3));
    EXPECT_TRUE(std::equal(source.normals.begin(), source.normals.end(), target.normals.begin() + 3));
    EXPECT_TRUE(std::equal(source.colors.begin(), source.colors.end(), target.colors.begin() + 3));
    EXPECT_THAT(target.indices, ElementsAre(0, 1, 2, 3, 4, 5));
}

TEST(Append, PoseNextToIdentityCountsAsNone)
{
    Mesh target("target");
    const Mesh source = triangle(5);

    append(target, source, {Posf(0.009f, 0, 0), Rotationf(1, 0.0009f, 0, 0)});

    EXPECT_EQ(target.vertices, source.vertices);
}

struct SmallTurnCase {
    const char* name;
    Rotationf rotation;
};
class AppendSmallTurn : public testing::TestWithParam<SmallTurnCase> {};

TEST_P(AppendSmallTurn, OfMoreThanAThousandthTurns)
{
    Mesh target("target");
    const Mesh source = triangle(500);

    append(target, source, {Posf(), GetParam().rotation});

    EXPECT_NE(target.vertices, source.vertices);
}

INSTANTIATE_TEST_SUITE_P(Table, AppendSmallTurn,
                         testing::Values(SmallTurnCase{"X", {1, 0.0011f, 0, 0}}, SmallTurnCase{"Y", {1, 0, 0.0011f, 0}},
                                         SmallTurnCase{"Z", {1, 0, 0, -0.0011f}},
                                         SmallTurnCase{"TurnedRoundW", {-1, 0, 0.0005f, 0}}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Append, PoseMovesTheNewVerticesAndTurnsTheirNormals)
{
    Mesh target = triangle(5);
    const std::vector<Posf> before = target.vertices;

    append(target, triangle(0), {Posf(10, 20, 30), Rotationf(pi / 2, rob::Dirf(0, 1, 0))});

    EXPECT_TRUE(std::equal(before.begin(), before.end(), target.vertices.begin()));
    EXPECT_EQ(target.normals[2], Vec3f(0, 0, 1));
    expectNear(target.vertices[4], {10, 20, 29}); // +x goes to -z
    expectNear(target.vertices[5], {10, 21, 30});
    expectNear(Posf(target.normals[4]), {1, 0, 0}); // +z goes to +x
}

TEST(Append, TranslationOfAHundredthMoves)
{
    Mesh target("target");

    append(target, triangle(0), rob::Posef(Posf(0.01f, 0, 0)));

    EXPECT_EQ(target.vertices[1].x, 1.01f);
}

TEST(MeshBounds, AreThoseOfTheVerticesWhenFirstAskedFor)
{
    Mesh mesh = triangle(0);
    EXPECT_EQ(mesh.getBounds().max.x, 1);

    mesh.vertices.push_back({100, 100, 100});

    EXPECT_EQ(mesh.getBounds().max.x, 1);
}

TEST(MeshBounds, OfNoVerticesAreTheDefaultBox)
{
    Mesh mesh("empty");

    EXPECT_FALSE(mesh.getBounds().isValid());
    EXPECT_EQ(mesh.getBounds().min, Box().min);
    EXPECT_EQ(mesh.getBounds().max, Box().max);
}

} // namespace vrk::visual
