#include "selection/geometry/NearestHitTree.h"

#include "Geometry.h"
#include "selection/PlainTriangles.h"

#include "mesh/Mesh.h"
#include "selection/SensitiveMesh.h"
#include "selection/geometry/BVHBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <optional>

namespace vrk::selection {
namespace {

using rob::Posf;
using rob::Vec3f;
using testing::Contains;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

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

class NearestHitTreeAnswers : public testing::TestWithParam<Place> {};

TEST_P(NearestHitTreeAnswers, AreThoseOfAllCandidatesInTheirOrder)
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

INSTANTIATE_TEST_SUITE_P(Table, NearestHitTreeAnswers,
                         testing::Values(Place{"Small", 5, 1, 0, 20}, Place{"FineAndFar", 30, 0.5f, 10000, 30000},
                                         Place{"Large", 2000, 500, 0, 5000},
                                         Place{"TinyFarAway", 0.1f, 0.01f, 1000, 100},
                                         Place{"CoordinatesThatHideAUnit", 1000, 50, 3e7f, 1e6f},
                                         Place{"JustBelowTheLargestWithRoom", 100, 30, 24000, 500}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(NearestHitTree, FirstOfTheOrderWinsAmongEquallyNearTriangles)
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

TEST(NearestHitTree, HitAtTheLimitIsNotNearer)
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

TEST(NearestHitTree, RayThatIsNoNumberMeetsNothing)
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

std::vector<unsigned> shown(const NearestHitTree& tree, const Ray& ray, float limit)
{
    std::vector<unsigned> numbers;
    tree.walk(ray, limit,
              [&](const unsigned* first, unsigned count) { numbers.insert(numbers.end(), first, first + count); });
    return numbers;
}

NearestHitTree treeOf(const std::vector<rob::Trianglef>& triangles)
{
    NearestHitTree tree;
    tree.build(triangles.size(), [&](std::size_t begin, std::size_t end, NearestHitTree::Reference* out) {
        for (; begin < end; ++begin)
            *out++ = NearestHitTree::Reference(triangles[begin], static_cast<unsigned>(begin));
    });
    return tree;
}

rob::Trianglef uprightAt(float x, float size = 1)
{
    return {{x, -size, -size}, {x, size, -size}, {x, 0, size}};
}

TEST(NearestHitTree, EmptyOneShowsNothing)
{
    const NearestHitTree tree = treeOf({});

    EXPECT_TRUE(tree.empty());
    EXPECT_THAT(shown(tree, {{0, 0, 0}, {0, 0, 1}}, largest), IsEmpty());
}

TEST(NearestHitTree, ShowsNearLeavesFirstAndNoneBeyondTheLimit)
{
    std::vector<rob::Trianglef> triangles;
    for (int i = 0; i < 16; ++i)
        triangles.push_back(uprightAt(1000.0f * static_cast<float>(i)));
    const NearestHitTree tree = treeOf(triangles);

    EXPECT_FALSE(tree.empty());
    const std::vector<unsigned> all = shown(tree, {{-10, 0, 0}, {1, 0, 0}}, largest);
    EXPECT_THAT(all, UnorderedElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
    EXPECT_LT(all.front(), 4u);
    EXPECT_GT(all.back(), 11u);
    EXPECT_THAT(shown(tree, {{-10, 50, 0}, {1, 0, 0}}, largest), IsEmpty());
    const std::vector<unsigned> near = shown(tree, {{-10, 0, 0}, {1, 0, 0}}, 500);
    EXPECT_THAT(near, Contains(0u));
    EXPECT_LE(near.size(), 4u);
}

TEST(NearestHitTree, TrianglesThatNoRayMeetsAreLeftOut)
{
    constexpr float infinite = std::numeric_limits<float>::infinity();
    std::vector<rob::Trianglef> triangles(6, uprightAt(5));
    triangles[1].b.y = nan;
    triangles[4].a.z = infinite;

    const NearestHitTree tree = treeOf(triangles);

    EXPECT_THAT(shown(tree, {{0, 0, 0}, {1, 0, 0}}, largest), UnorderedElementsAre(0, 2, 3, 5));
    EXPECT_TRUE(treeOf({triangles[1], triangles[4]}).empty());
}

TEST(NearestHitTree, ServesNeitherPlacesNorDirectionsThatCannotBeReckonedWith)
{
    const NearestHitTree tree = treeOf({uprightAt(5)});
    const NearestHitTree vast = treeOf({uprightAt(5), uprightAt(1e30f)});

    EXPECT_TRUE(tree.serves({{0, 0, 0}, {1, 0, 0}}));
    EXPECT_FALSE(tree.serves({{0, 1e20f, 0}, {1, 0, 0}}));
    EXPECT_FALSE(tree.serves({{0, 0, 0}, {1e-10f, 0, 0}}));
    EXPECT_FALSE(tree.serves({{0, 0, 0}, {1e10f, 0, 0}}));
    EXPECT_FALSE(vast.serves({{0, 0, 0}, {1, 0, 0}}));
}

TEST(NearestHitTree, ManyTrianglesInOnePlaceAreNoChain)
{
    // Each distance is a sixteenth of the last one, and most lie in one place.
    std::vector<rob::Trianglef> triangles(5000, uprightAt(0));
    for (float x = 1e14f; x > 1e-20f; x /= 16)
        triangles.push_back(uprightAt(x));
    const NearestHitTree tree = treeOf(triangles);

    std::vector<unsigned> all = shown(tree, {{-10, 0, 0}, {1, 0, 0}}, largest);
    std::sort(all.begin(), all.end());
    std::vector<unsigned> expected(triangles.size());
    std::iota(expected.begin(), expected.end(), 0u);
    EXPECT_EQ(all, expected);
}

TEST(NearestHitTree, LargeOneShowsEachTriangleOnceAndTheSameEachTime)
{
    // As many as are built on several cores.
    Dice dice(11, 1000);
    std::vector<rob::Trianglef> triangles;
    for (unsigned i = 0; i < 100'000; ++i)
        triangles.push_back(uprightAt(dice.number(0, 1000), dice.number(1, 5)));
    const Ray ray({-10, 0, 0}, {1, 0, 0});

    const std::vector<unsigned> all = shown(treeOf(triangles), ray, largest);
    const std::vector<unsigned> again = shown(treeOf(triangles), ray, largest);

    EXPECT_EQ(again, all);
    std::vector<unsigned> sorted = all;
    std::sort(sorted.begin(), sorted.end());
    std::vector<unsigned> expected(triangles.size());
    std::iota(expected.begin(), expected.end(), 0u);
    EXPECT_EQ(sorted, expected);
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
