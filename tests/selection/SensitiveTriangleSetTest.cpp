#include "selection/SensitiveTriangleSet.h"

#include "PlainTriangles.h"
#include "geometry/Geometry.h"

#include "mesh/Mesh.h"
#include "selection/SensitiveMesh.h"
#include "selection/geometry/BVHBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace vrk::selection {
namespace {

using rob::Posf;
using rob::Trianglef;
using testing::StrEq;
using testing::ThrowsMessage;

/// Triangles of their own, numbered from 0.
class Soup : public SensitiveTriangleSet {
public:
    explicit Soup(std::vector<Trianglef> soup) : soup(std::move(soup))
    {
        SensitiveIndexedTriangle* next = makeTriangles(this->soup.size());
        for (unsigned i = 0; i < this->soup.size(); ++i, ++next) {
            next->index = i;
            for (const Posf& corner : {this->soup[i].a, this->soup[i].b, this->soup[i].c})
                next->box.addPoint(corner);
            next->box.expand();
            next->box.updateCenter();
        }
        buildHierarchy();
    }
    void getTriangle(Trianglef& triangle, const SensitiveIndexedTriangle& primitive) const override
    {
        const Trianglef& stored = soup[primitive.index];
        triangle = {stored.c, stored.b, stored.a};
    }
    void move(const rob::Posef& to)
    {
        hasPose = true;
        takePose(to);
    }

private:
    std::vector<Trianglef> soup;
};

Result rayHit(const SensitiveTriangleSet& set, const Ray& ray)
{
    Result result;
    set.nearestOfRay(result, ray);
    return result;
}

const Trianglef floorTriangle{{0, 0, 0}, {10, 0, 0}, {0, 10, 0}};

Ray downAt(float x, float y, float z = 5)
{
    return {{x, y, z}, {0, 0, -1}};
}

TEST(SensitiveIndexedTriangle, AnswersNothingByItself)
{
    SensitiveIndexedTriangle triangle;
    triangle.box = around(0, 0, 0);
    Result result;
    result.hit = true;

    triangle.intersectRay(result, downAt(0, 0));
    EXPECT_FALSE(result.hit);
    triangle.intersectLine(result, {{0, 0, 5}, {0, 0, -5}});
    EXPECT_FALSE(result.hit);
    triangle.intersectTriangle(result, floorTriangle);
    EXPECT_FALSE(result.hit);
    EXPECT_EQ(triangle.reserved, 0u);
}

TEST(SensitiveTriangleSet, EmptySetAnswersNothing)
{
    const Soup soup({});
    Result result;

    EXPECT_FALSE(rayHit(soup, downAt(1, 1)).hit);
    soup.nearestOfLine(result, {{1, 1, 5}, {1, 1, -5}});
    EXPECT_FALSE(result.hit);
    soup.anyOfTriangle(result, floorTriangle);
    EXPECT_FALSE(result.hit);
}

TEST(SensitiveTriangleSet, RayHitsFromBothSides)
{
    const Soup soup({floorTriangle});

    const Result above = rayHit(soup, downAt(2, 3));
    const Result below = rayHit(soup, Ray({2, 3, -4}, {0, 0, 1}));

    ASSERT_TRUE(above.hit && below.hit);
    EXPECT_FLOAT_EQ(above.distance, 5);
    EXPECT_FLOAT_EQ(below.distance, 4);
    EXPECT_NEAR((above.position - Posf(2, 3, 0)).length(), 0, 1e-5);
    EXPECT_EQ(above.localPosition, above.position);
}

TEST(SensitiveTriangleSet, WhatLiesBehindTheOriginIsMissed)
{
    const Soup soup({floorTriangle});

    EXPECT_FALSE(rayHit(soup, downAt(2, 3, -0.5f)).hit); // within the box of the triangle
    EXPECT_FALSE(rayHit(soup, downAt(2, 3, 0)).hit);     // on it: the distance must be positive
}

TEST(SensitiveTriangleSet, RayThroughASharedEdgeMissesBoth)
{
    const Soup square({{{0, 0, 0}, {10, 0, 0}, {10, 10, 0}}, {{0, 0, 0}, {10, 10, 0}, {0, 10, 0}}});

    EXPECT_FALSE(rayHit(square, downAt(4, 4)).hit);
    EXPECT_TRUE(rayHit(square, downAt(4, 4.001f)).hit);
    EXPECT_TRUE(rayHit(square, downAt(4.001f, 4)).hit);
}

TEST(SensitiveTriangleSet, EachAxisCanBeTheMainOne)
{
    const Soup soup({{{-5, -5, 10}, {5, -5, 10}, {0, 7, 10}},
                     {{-5, 10, -5}, {5, 10, -5}, {0, 10, 7}},
                     {{10, -5, -5}, {10, 5, -5}, {10, 0, 7}},
                     {{-5, -5, -10}, {5, -5, -10}, {0, 7, -10}}});
    for (const rob::Dirf& d : {rob::Dirf{0, 0, 1}, {0, 1, 0}, {1, 0, 0}, {0, 0, -1}}) {
        const Result result = rayHit(soup, Ray({0, 0, 0}, d));

        EXPECT_TRUE(result.hit);
        EXPECT_FLOAT_EQ(result.distance, 10);
    }
}

TEST(SensitiveTriangleSet, FirstOfEquallyNearTrianglesStays)
{
    const Soup soup({floorTriangle, floorTriangle});
    SensitiveTriangleSet::RayHit hit;

    EXPECT_TRUE(soup.nearestOfRay(hit, downAt(1, 1), 5.5f));
    EXPECT_FALSE(soup.nearestOfRay(hit, downAt(1, 1), hit.distance)); // not nearer: strictly
}

TEST(SensitiveTriangleSet, LimitThatIsNotBeatenLeavesTheHitAlone)
{
    const Soup soup({floorTriangle});
    SensitiveTriangleSet::RayHit hit{77, {1, 2, 3}};

    EXPECT_FALSE(soup.nearestOfRay(hit, downAt(1, 1), 5.0f));

    EXPECT_EQ(hit.distance, 77);
    EXPECT_EQ(hit.point, Posf(1, 2, 3));
}

TEST(SensitiveTriangleSet, AnswersAreMappedThroughThePoseAndQueriesAreNot)
{
    Soup soup({floorTriangle});
    soup.move(rob::Posef(Posf(100, 0, 0)));

    const Result ray = rayHit(soup, downAt(2, 3));
    Result line;
    soup.nearestOfLine(line, {{2, 3, 5}, {2, 3, -5}});

    EXPECT_NEAR((ray.position - Posf(102, 3, 0)).length(), 0, 1e-4);
    EXPECT_EQ(ray.localPosition, ray.position);
    EXPECT_NEAR((line.position - Posf(102, 3, 0)).length(), 0, 1e-4);
    EXPECT_NEAR((line.localPosition - Posf(2, 3, 0)).length(), 0, 1e-4);
}

TEST(SensitiveTriangleSet, LineFindsTheHitNearestItsStartAsAFraction)
{
    const Soup soup({{{0, 0, -2}, {10, 0, -2}, {0, 10, -2}}, floorTriangle});
    Result result;

    soup.nearestOfLine(result, {{1, 1, 8}, {1, 1, -8}});
    ASSERT_TRUE(result.hit);
    EXPECT_FLOAT_EQ(result.distance, 0.5f);
    soup.nearestOfLine(result, {{1, 1, -8}, {1, 1, 8}});
    EXPECT_FLOAT_EQ(result.distance, 0.375f);
    soup.nearestOfLine(result, {{1, 1, 8}, {1, 1, 0.5f}});
    EXPECT_FALSE(result.hit);
}

TEST(SensitiveTriangleSet, LineOfNoLengthIsRefused)
{
    const Soup soup({floorTriangle});
    Result result;

    EXPECT_THAT(
        [&] {
            soup.nearestOfLine(result, {{1, 1, 0}, {1, 1, 0}});
        },
        ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
}

TEST(SensitiveTriangleSet, TriangleQuerySaysOnlyWhetherItIsTouched)
{
    const Soup soup({{{0, 0, 50}, {10, 0, 50}, {0, 10, 50}}, floorTriangle});
    Result result;

    soup.anyOfTriangle(result, {{1, 1, -3}, {2, 1, 3}, {1, 2, 3}});
    EXPECT_TRUE(result.hit);
    EXPECT_EQ(result.position, Posf());
    EXPECT_EQ(result.distance, Result().distance);
    soup.anyOfTriangle(result, {{1, 1, 3}, {2, 1, 3}, {1, 2, 4}});
    EXPECT_FALSE(result.hit);
}

TEST(SensitiveTriangleSet, DegenerateTrianglesAreNeverHit)
{
    const Soup soup({{{3, 3, 0}, {3, 3, 0}, {3, 3, 0}}, {{0, 0, 0}, {5, 5, 0}, {10, 10, 0}}});
    Result result;

    EXPECT_FALSE(rayHit(soup, downAt(3, 3)).hit);
    EXPECT_FALSE(rayHit(soup, downAt(3, 3.0001f)).hit);
    soup.nearestOfLine(result, {{3, 3, 5}, {3, 3, -5}});
    EXPECT_FALSE(result.hit);
}

TEST(SensitiveTriangleSet, RayOfNoDirectionHitsNothing)
{
    const Soup soup({floorTriangle});

    EXPECT_FALSE(rayHit(soup, Ray({1, 1, 0.5f}, {0, 0, 0})).hit);
    EXPECT_FALSE(rayHit(soup, Ray({1, 1, 5}, {0, 0, nan})).hit);
    EXPECT_FALSE(rayHit(soup, Ray({nan, 1, 5}, {0, 0, -1})).hit);
}

/// As many as are not taken into the container's hierarchy before somebody asks, most of them twice.
std::vector<Trianglef> manyTriangles()
{
    Dice dice(3, 500);
    std::vector<Trianglef> triangles;
    while (triangles.size() < 20'000) {
        const Posf at = dice.point();
        triangles.push_back({at, at + rob::Vec3f(dice.number(5, 30), 0, 3), at + rob::Vec3f(0, dice.number(5, 30), 2)});
        if (triangles.size() % 3 != 0)
            triangles.push_back(triangles.back());
    }
    return triangles;
}

TEST(SensitiveTriangleSet, SmallSetHasTheContainersHierarchyFromTheBeginning)
{
    const Soup soup({floorTriangle});

    ASSERT_NE(soup.bvh.root, nullptr);
    EXPECT_EQ(soup.bvh.root, soup.getRoot());
}

TEST(SensitiveTriangleSet, LargeSetHasTheContainersHierarchyFromTheFirstQuestionThatNeedsIt)
{
    const Soup soup(manyTriangles());
    PrimitiveContainer plain;
    for (const BVHPrimitive* triangle : soup.primitives) {
        auto* same = new SensitiveIndexedTriangle;
        same->box = triangle->box;
        same->index = static_cast<const SensitiveIndexedTriangle*>(triangle)->index;
        plain.primitives.push_back(same);
    }
    plain.bvh = BVHBuilder(&plain).build();
    const auto indicesOf = [](const PrimitiveContainer& container) {
        std::vector<BVHPrimitive*> found;
        container.queryBox(Box(-50, -50, -50, 50, 50, 50), found);
        std::vector<unsigned> indices;
        for (const BVHPrimitive* triangle : found)
            indices.push_back(static_cast<const SensitiveIndexedTriangle*>(triangle)->index);
        return indices;
    };
    EXPECT_EQ(soup.bvh.root, nullptr);
    EXPECT_FALSE(soup.isEmpty());
    EXPECT_EQ(soup.getBounds().min, plain.bvh.root->box.min);
    EXPECT_EQ(soup.getBounds().max, plain.bvh.root->box.max);
    EXPECT_EQ(soup.getBounds().center, plain.bvh.root->box.center);

    std::vector<std::vector<unsigned>> answers(4);
    std::vector<std::thread> threads;
    for (std::vector<unsigned>& answer : answers)
        threads.emplace_back([&] { answer = indicesOf(soup); });
    for (std::thread& thread : threads)
        thread.join();

    const std::vector<unsigned> expected = indicesOf(plain);
    EXPECT_FALSE(expected.empty());
    for (const std::vector<unsigned>& answer : answers)
        EXPECT_EQ(answer, expected);
    EXPECT_NE(soup.bvh.root, nullptr);
}

TEST(SensitiveTriangleSet, RayThroughALargeSetFindsTheFirstOfTheContainersOrder)
{
    const std::vector<Trianglef> triangles = manyTriangles();
    const Soup soup(triangles);
    Dice dice(4, 1500);
    unsigned hits = 0;
    for (unsigned i = 0; i < 200; ++i) {
        SCOPED_TRACE(testing::Message() << "ray " << i);
        const Trianglef& aim = triangles[dice.below(static_cast<unsigned>(triangles.size()))];
        const Posf from = dice.point();
        const rob::Vec3f middle = (rob::Vec3f(aim.a) + rob::Vec3f(aim.b) + rob::Vec3f(aim.c)) / 3;
        const Ray ray(from, rob::normalized(Posf(middle) - from));
        const Result found = rayHit(soup, ray); // asked before the order is known

        std::vector<BVHPrimitive*> candidates;
        soup.queryRay(ray, candidates);
        const std::optional<PlainHit> expected = nearestByLoop(soup, ray, candidates);
        ASSERT_EQ(found.hit, expected.has_value());
        if (!expected)
            continue;
        ++hits;
        EXPECT_EQ(found.distance, expected->distance);
        EXPECT_EQ(found.position, expected->point);
    }
    EXPECT_GT(hits, 150u);
}

struct SoupCase {
    const char* name;
    float reach, size; // of the scene, and of a triangle in it
    Posf about;
};
class PrunedWalk : public testing::TestWithParam<SoupCase> {};

TEST_P(PrunedWalk, FindsBitForBitWhatALoopOverAllCandidatesDoes)
{
    const SoupCase& c = GetParam();
    unsigned hits = 0;
    for (unsigned seed = 0; seed < 25; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Dice dice(seed, c.reach);
        std::vector<Trianglef> triangles;
        const unsigned n = 1 + dice.below(seed % 5 == 0 ? 3000 : 300);
        for (unsigned i = 0; i < n; ++i) {
            const Posf at = c.about + rob::Vec3f(dice.point());
            const auto near = [&] {
                return at + rob::Vec3f(dice.number(-c.size, c.size), dice.number(-c.size, c.size),
                                       dice.number(-c.size, c.size));
            };
            const Posf a = near(), b = near();
            triangles.push_back({a, b, near()});
        }
        const Soup soup(triangles);
        for (unsigned i = 0; i < 100; ++i) {
            SCOPED_TRACE(testing::Message() << "ray " << i);
            const Posf from = c.about + rob::Vec3f(dice.point()) * dice.number(0, 5);
            // Half of them at a corner, to meet something in sparse scenes too.
            const Trianglef& aim = triangles[dice.below(n)];
            const rob::Vec3f to = i % 2 ? rob::Vec3f(dice.point())
                                        : Posf((rob::Vec3f(aim.a) + rob::Vec3f(aim.b) + rob::Vec3f(aim.c)) / 3) - from;
            const Ray ray(from, rob::normalized(to));
            std::vector<BVHPrimitive*> candidates;
            soup.queryRay(ray, candidates);

            const std::optional<PlainHit> expected = nearestByLoop(soup, ray, candidates);
            const Result found = rayHit(soup, ray);

            ASSERT_EQ(found.hit, expected.has_value());
            if (!expected)
                continue;
            ++hits;
            ASSERT_EQ(found.distance, expected->distance);
            ASSERT_EQ(found.position, expected->point);
        }
    }
    EXPECT_GT(hits, 500u);
}

INSTANTIATE_TEST_SUITE_P(Scenes, PrunedWalk,
                         testing::Values(SoupCase{"Ordinary", 100, 20, {}}, SoupCase{"Dense", 20, 20, {}},
                                         SoupCase{"Tiny", 0.01f, 0.005f, {}},
                                         SoupCase{"TinyFar", 0.1f, 0.1f, {1e5f, -1e5f, 1e5f}},
                                         SoupCase{"Far", 1000, 100, {1e5f, 1e5f, -1e5f}},
                                         SoupCase{"Huge", 1e5f, 2e4f, {}},
                                         SoupCase{"FarAndSmall", 50, 1, {-1e5f, 0, 0}}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vrk::selection
