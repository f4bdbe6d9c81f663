#include "selection/geometry/WideTree.h"

#include "Geometry.h"
#include "selection/PlainTriangles.h"

#include "mesh/Mesh.h"
#include "selection/SensitiveMesh.h"
#include "selection/geometry/BVHBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <optional>

namespace vrk::selection {
namespace {

using rob::Posf;
using rob::Vec3f;
using testing::IsEmpty;

/// Every candidate of the query is tested, in its order.
std::optional<PlainHit> nearestOfCandidates(const SensitiveMesh& mesh, const Ray& ray)
{
    std::vector<BVHPrimitive*> candidates;
    mesh.queryRay(ray, candidates);
    return nearestByLoop(mesh, ray, candidates);
}

/// Triangles side by side and far apart, thin ones and points, some of them twice and some with a corner that is no number.
visual::Mesh makeSoup(Dice& dice, float size, float far)
{
    visual::Mesh mesh("soup");
    const unsigned count = 1 + dice.below(600);
    const Vec3f offset(dice.number(-far, far), dice.number(-far, far), dice.number(-far, far));
    for (unsigned i = 0; i < count; ++i) {
        const Posf a = dice.point() + offset;
        const auto near = [&](float reach) {
            return a + Vec3f(dice.number(-reach, reach), dice.number(-reach, reach), dice.number(-reach, reach));
        };
        Posf b = near(size), c = near(size);
        if (dice.below(10) == 0)
            c = a + (b - a) * dice.number(-1, 2); // thin
        if (dice.below(10) == 0)
            c.z = b.z = a.z;
        if (dice.below(50) == 0)
            c.x = nan;
        const unsigned times = dice.below(8) == 0 ? 2 : 1;
        for (unsigned k = 0; k < times; ++k)
            for (const Posf& corner : {k == 0 ? a : c, b, k == 0 ? c : a})
                mesh.vertices.push_back(corner);
    }
    mesh.indices.resize(mesh.vertices.size());
    std::iota(mesh.indices.begin(), mesh.indices.end(), 0u);
    return mesh;
}

/// At a random triangle, from near or far, and often along an axis or nearly so.
Ray rayAt(Dice& dice, const visual::Mesh& mesh, float distance)
{
    const std::size_t first = 3 * static_cast<std::size_t>(dice.below(static_cast<unsigned>(mesh.indices.size() / 3)));
    const float s = dice.number(0, 1), t = dice.number(0, 1 - s);
    const Posf target = mesh.vertices[first] + (mesh.vertices[first + 1] - mesh.vertices[first]) * s +
                        (mesh.vertices[first + 2] - mesh.vertices[first]) * t;
    Vec3f d(dice.number(-1, 1), dice.number(-1, 1), dice.number(-1, 1));
    switch (dice.below(4)) {
    case 0:
        d.x *= 0.001f;
        break;
    case 1:
        d.x = d.y = 0;
        break;
    default:
        break;
    }
    const rob::Dirf direction = rob::normalized(d);
    return {target - direction * dice.number(0, distance), direction};
}

struct Place {
    const char* name;
    float reach, size, far,
        distance; // of the soup and its triangles, from the origin, and of the rays from their targets
};

class WideTreeAnswers : public testing::TestWithParam<Place> {};

TEST_P(WideTreeAnswers, AreThoseOfAllCandidatesInTheirOrder)
{
    const Place& place = GetParam();
    unsigned hits = 0, misses = 0;
    for (unsigned seed = 0; seed < 100; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed, place.reach);
        visual::Mesh mesh = makeSoup(dice, place.size, place.far);
        const SensitiveMesh set(&mesh, nullptr, rob::Posef());
        for (unsigned i = 0; i < 40; ++i) {
            const Ray ray = rayAt(dice, mesh, place.distance);
            const std::optional<PlainHit> expected = nearestOfCandidates(set, ray);
            SensitiveTriangleSet::RayHit found{};

            ASSERT_EQ(set.nearestOfRay(found, ray, largest), expected.has_value());

            ++(expected ? hits : misses);
            if (!expected)
                continue;
            EXPECT_EQ(found.distance, expected->distance);
            EXPECT_EQ(found.point, expected->point);
        }
    }
    EXPECT_GT(hits, 500u);
    EXPECT_GT(misses, 50u);
}

INSTANTIATE_TEST_SUITE_P(Table, WideTreeAnswers,
                         testing::Values(Place{"Small", 5, 1, 0, 20}, Place{"FineAndFar", 30, 0.5f, 10000, 30000},
                                         Place{"Large", 2000, 500, 0, 5000},
                                         Place{"CoordinatesThatHideAUnit", 1000, 50, 3e7f, 1e6f},
                                         Place{"JustBelowTheLargestWithRoom", 100, 30, 24000, 500}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(WideTree, FirstOfTheOrderWinsAmongEquallyNearTriangles)
{
    // One plane, so every triangle is as near as the others, and each has its own rounding of the point.
    Dice dice(7, 20);
    visual::Mesh mesh("plane");
    for (unsigned i = 0; i < 300; ++i) {
        const Posf p = dice.point();
        for (const Posf& corner : {Posf(p.x - 30, p.y - 31, 0), Posf(p.x + 33, p.y - 29, 0), Posf(p.x, p.y + 37, 0)})
            mesh.vertices.push_back(corner);
    }
    mesh.indices.resize(mesh.vertices.size());
    std::iota(mesh.indices.begin(), mesh.indices.end(), 0u);
    const SensitiveMesh set(&mesh, nullptr, rob::Posef());

    for (const float z : {100.0f, -100.0f}) {
        for (unsigned i = 0; i < 100; ++i) {
            const Ray ray({dice.number(-5, 5), dice.number(-5, 5), z}, {0, 0, z > 0 ? -1.0f : 1.0f});
            const std::optional<PlainHit> expected = nearestOfCandidates(set, ray);
            SensitiveTriangleSet::RayHit found{};

            ASSERT_TRUE(set.nearestOfRay(found, ray, largest));

            ASSERT_TRUE(expected);
            EXPECT_EQ(found.distance, expected->distance);
            EXPECT_EQ(found.point, expected->point);
        }
    }
}

TEST(WideTree, HitAtTheLimitIsNotNearer)
{
    visual::Mesh mesh("triangle");
    mesh.vertices = {{-5, -5, 0}, {5, -5, 0}, {0, 5, 0}};
    mesh.indices = {0, 1, 2};
    const SensitiveMesh set(&mesh, nullptr, rob::Posef());
    const Ray ray({0, 0, 8}, {0, 0, -1});
    SensitiveTriangleSet::RayHit hit{-1, {}};

    EXPECT_FALSE(set.nearestOfRay(hit, ray, 8));
    EXPECT_EQ(hit.distance, -1);
    EXPECT_TRUE(set.nearestOfRay(hit, ray, 8.001f));
    EXPECT_EQ(hit.distance, 8);
}

TEST(WideTree, RayThatIsNoNumberMeetsNothing)
{
    visual::Mesh mesh("fan");
    for (unsigned i = 0; i < 20; ++i) {
        mesh.indices.insert(mesh.indices.end(), {3 * i, 3 * i + 1, 3 * i + 2});
        for (const Posf& corner : {Posf(100.0f * i, 0, 0), Posf(100.0f * i + 10, 0, 0), Posf(100.0f * i, 10, 0)})
            mesh.vertices.push_back(corner);
    }
    const SensitiveMesh set(&mesh, nullptr, rob::Posef());
    Result result;

    for (const Ray& ray : {Ray({0, 0, 5}, {nan, nan, nan}), Ray({nan, nan, nan}, {0, 0, -1}), Ray({1, 1, 5}, {0, 0, 0}),
                           Ray({1, 1, 5}, {nan, 0, -1})}) {
        set.intersectRay(result, ray);
        EXPECT_FALSE(result.hit);
    }
}

std::vector<unsigned> shown(const WideTree& tree, const Ray& ray, float limit)
{
    std::vector<unsigned> numbers;
    tree.walk(ray, limit,
              [&](const unsigned* first, unsigned count) { numbers.insert(numbers.end(), first, first + count); });
    return numbers;
}

unsigned numberOf(const BVHPrimitive* primitive)
{
    return static_cast<const FakePrimitive*>(primitive)->number;
}

TEST(WideTree, EmptyOneShowsNothing)
{
    WideTree tree;
    EXPECT_TRUE(tree.empty());
    tree.build(nullptr, numberOf);

    EXPECT_TRUE(tree.empty());
    EXPECT_THAT(shown(tree, {{0, 0, 0}, {0, 0, 1}}, largest), IsEmpty());
}

TEST(WideTree, ShowsNearLeavesFirstAndNoneBeyondTheLimit)
{
    PrimitiveContainer container;
    for (int i = 0; i < 8; ++i)
        add(container, around(1000.0f * i, 0, 0));
    container.bvh = BVHBuilder(&container).build();
    WideTree tree;
    tree.build(container.bvh.root, numberOf);

    EXPECT_FALSE(tree.empty());
    std::vector<unsigned> all = shown(tree, {{-10, 0, 0}, {1, 0, 0}}, largest);
    EXPECT_EQ(all.size(), 8u);
    EXPECT_EQ(all.front(), 0u);
    EXPECT_THAT(shown(tree, {{-10, 50, 0}, {1, 0, 0}}, largest), IsEmpty());
    const std::vector<unsigned> near = shown(tree, {{-10, 0, 0}, {1, 0, 0}}, 500);
    EXPECT_GE(near.size(), 1u);
    EXPECT_LE(near.size(), 4u);
}

TEST(WalkRayWithin, VisitsTheCandidatesOfTheQueryWhileNoHitIsFound)
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed, 500);
        PrimitiveContainer container;
        for (unsigned i = 0; i < 200; ++i)
            add(container, dice.box(50));
        container.bvh = BVHBuilder(&container).build();
        const Ray ray = dice.ray();
        std::vector<BVHPrimitive*> candidates, visited;
        container.queryRay(ray, candidates);

        walkRayWithin(container.bvh.root, ray, largest, [&](BVHPrimitive* primitive) { visited.push_back(primitive); });

        EXPECT_EQ(numbersOf(visited), numbersOf(candidates));
    }
}

TEST(LargePages, PiecesOfEverySizeAreAlignedAndOurs)
{
    for (const std::size_t count : {std::size_t{1}, std::size_t{1000}, LargePages<double>::pageSize}) {
        std::vector<double, LargePages<double>> numbers(count, 1.5);
        numbers.push_back(2.5);

        EXPECT_EQ(std::accumulate(numbers.begin(), numbers.end(), 0.0), 1.5 * static_cast<double>(count) + 2.5);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(numbers.data()) % alignof(double), 0u);
    }
}

} // namespace
} // namespace vrk::selection
