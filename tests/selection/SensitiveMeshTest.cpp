#include "selection/SensitiveMesh.h"

#include "PlainTriangles.h"
#include "geometry/Geometry.h"

#include "mesh/Mesh.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>

namespace vrk::selection {
namespace {

using rob::Posf;
using rob::Trianglef;
using testing::ElementsAre;
using testing::IsEmpty;

/// Only the address is kept, and nothing is read from it.
visual::Visual* const someVisual = reinterpret_cast<visual::Visual*>(0x40);

visual::Mesh meshOf(const std::vector<Trianglef>& triangles)
{
    visual::Mesh mesh("mesh");
    for (const Trianglef& t : triangles)
        for (const Posf& corner : {t.a, t.b, t.c}) {
            mesh.indices.push_back(static_cast<unsigned>(mesh.vertices.size()));
            mesh.vertices.push_back(corner);
        }
    return mesh;
}

/// Triangles in a row along x, 20 apart, facing z.
std::vector<Trianglef> row(unsigned count)
{
    std::vector<Trianglef> triangles;
    for (unsigned i = 0; i < count; ++i) {
        const float x = 20.0f * static_cast<float>(i);
        triangles.push_back({{x, 0, 0}, {x + 10, 0, 0}, {x, 10, 0}});
    }
    return triangles;
}

std::vector<unsigned> inBox(const SensitiveMesh& mesh, const Box& box)
{
    std::mutex mutex;
    std::vector<unsigned> found;
    mesh.forEachInBox(box, [&](unsigned triangle) {
        const std::lock_guard lock(mutex);
        found.push_back(triangle);
    });
    std::sort(found.begin(), found.end());
    return found;
}

TEST(SensitiveMesh, BoxIsThatOfTheMeshAndOfATriangleAUnitWider)
{
    visual::Mesh mesh = meshOf(row(3));

    const SensitiveMesh sensitive(&mesh, someVisual, rob::Posef(Posf(100, 0, 0)));

    EXPECT_EQ(sensitive.box.min, Posf(100, 0, 0));
    EXPECT_EQ(sensitive.box.max, Posf(150, 10, 0));
    EXPECT_FALSE(sensitive.hasPose);
    ASSERT_EQ(sensitive.primitives.size(), 3u);
    for (unsigned i = 0; i < 3; ++i) {
        const auto& triangle = static_cast<const SensitiveIndexedTriangle&>(*sensitive.primitives[i]);
        EXPECT_EQ(triangle.index, i);
        EXPECT_EQ(triangle.box.min, Posf(20.0f * static_cast<float>(i) - 1, -1, -1));
        EXPECT_EQ(triangle.box.max, Posf(20.0f * static_cast<float>(i) + 11, 11, 1));
        EXPECT_FALSE(triangle.box.centerDirty);
    }
}

TEST(SensitiveMesh, CornersComeFromTheLastToTheFirst)
{
    visual::Mesh mesh = meshOf(row(2));
    const SensitiveMesh sensitive(&mesh, someVisual, {});
    Trianglef corners;

    sensitive.getTriangle(corners, static_cast<const SensitiveIndexedTriangle&>(*sensitive.primitives[1]));

    EXPECT_EQ(corners.a, Posf(20, 10, 0));
    EXPECT_EQ(corners.b, Posf(30, 0, 0));
    EXPECT_EQ(corners.c, Posf(20, 0, 0));
}

TEST(SensitiveMesh, RayHitTellsTheVisualAndNoFace)
{
    visual::Mesh mesh = meshOf(row(3));
    const SensitiveMesh sensitive(&mesh, someVisual, {});
    Result result;

    sensitive.intersectRay(result, Ray({22, 2, 7}, {0, 0, -1}));

    ASSERT_TRUE(result.hit);
    EXPECT_FLOAT_EQ(result.distance, 7);
    EXPECT_EQ(result.visual, someVisual);
    EXPECT_TRUE(result.face.IsNull());
    EXPECT_NEAR((result.position - Posf(22, 2, 0)).length(), 0, 1e-5);
}

TEST(SensitiveMesh, LineHitTellsNoVisual)
{
    visual::Mesh mesh = meshOf(row(3));
    const SensitiveMesh sensitive(&mesh, someVisual, {});
    Result result;

    sensitive.intersectLine(result, {{22, 2, 6}, {22, 2, -2}});

    ASSERT_TRUE(result.hit);
    EXPECT_FLOAT_EQ(result.distance, 0.75f);
    EXPECT_EQ(result.visual, nullptr);
}

TEST(SensitiveMesh, QueriesAreMovedByTheInversePose)
{
    visual::Mesh mesh = meshOf(row(1));
    const SensitiveMesh sensitive(&mesh, someVisual, rob::Posef(Posf(0, 0, 100)));
    Result result;

    sensitive.intersectTriangle(result, {{1, 1, 99}, {2, 1, 101}, {1, 2, 101}});
    EXPECT_TRUE(result.hit);
    sensitive.intersectTriangle(result, {{1, 1, -1}, {2, 1, 1}, {1, 2, 1}});
    EXPECT_FALSE(result.hit);
    sensitive.intersectRay(result, Ray({2, 2, 110}, {0, 0, -1}));
    EXPECT_FLOAT_EQ(result.distance, 10);
    EXPECT_THAT(inBox(sensitive, Box(0, 0, 99, 5, 5, 101)), ElementsAre(0));
    EXPECT_THAT(inBox(sensitive, Box(0, 0, -2, 5, 5, 2)), IsEmpty());
}

TEST(SensitiveMesh, PositionGoesThroughThePoseTwice)
{
    visual::Mesh mesh = meshOf(row(1));
    SensitiveMesh sensitive(&mesh, someVisual, rob::Posef(Posf(0, 0, 100)));
    Result result;

    sensitive.intersectRay(result, Ray({2, 2, 110}, {0, 0, -1}));

    EXPECT_FLOAT_EQ(result.position.z, 200);
    sensitive.intersectLine(result, {{2, 2, 110}, {2, 2, 90}});
    EXPECT_FLOAT_EQ(result.position.z, 200);
    EXPECT_FLOAT_EQ(result.distance, 0.5f);
}

TEST(SensitiveMesh, EachTriangleWhoseBoxMeetsTheBoxIsCalledBackOnce)
{
    visual::Mesh mesh = meshOf(row(500));
    const SensitiveMesh sensitive(&mesh, someVisual, {});

    EXPECT_THAT(inBox(sensitive, Box(21, 0, 0, 22, 1, 1)), ElementsAre(1));
    EXPECT_THAT(inBox(sensitive, Box(11, 0, 0, 39, 1, 1)), ElementsAre(0, 1, 2)); // boxes are a unit wider
    EXPECT_THAT(inBox(sensitive, Box(0, 0, 50, 1, 1, 60)), IsEmpty());
    std::vector<unsigned> all(500);
    for (unsigned i = 0; i < 500; ++i)
        all[i] = i;
    EXPECT_EQ(inBox(sensitive, Box(-1e6f, -1, -1, 1e6f, 1, 1)), all);
}

TEST(SensitiveMesh, OneCallbackServesAllTriangles)
{
    visual::Mesh mesh = meshOf(row(500));
    const SensitiveMesh sensitive(&mesh, someVisual, {});
    const CopiedCallback counted;
    const std::function<void(unsigned)> callback = counted;
    const int before = counted.copies();

    sensitive.forEachInBox(Box(-1e6f, -1, -1, 1e6f, 1, 1), callback);

    EXPECT_EQ(counted.calls(), 500);
    EXPECT_EQ(counted.copies(), before + 1) << "that of the argument";
}

TEST(SensitiveMesh, EmptyMeshHasNoBoxAndAnswersNothing)
{
    visual::Mesh mesh("empty");
    const SensitiveMesh sensitive(&mesh, someVisual, rob::Posef(Posf(1, 2, 3)));
    Result result;

    EXPECT_FALSE(sensitive.box.isValid());
    sensitive.intersectRay(result, Ray({0, 0, 1}, {0, 0, -1}));
    EXPECT_FALSE(result.hit);
    EXPECT_THAT(inBox(sensitive, Box(-9, -9, -9, 9, 9, 9)), IsEmpty());
}

TEST(SensitiveMesh, IndicesThatAreNoWholeTriangleAreLeftOut)
{
    visual::Mesh mesh = meshOf(row(2));
    mesh.indices.pop_back();

    EXPECT_EQ(SensitiveMesh(&mesh, someVisual, {}).primitives.size(), 1u);
}

TEST(SensitiveMesh, TrianglesWithCoordinatesThatAreNotFiniteStayAndAreNeverHit)
{
    std::vector<Trianglef> triangles = row(40);
    triangles[3].a.z = nan;
    triangles[5] = {{nan, nan, nan}, {nan, nan, nan}, {nan, nan, nan}};
    triangles[7].b.x = std::numeric_limits<float>::infinity();
    triangles[9].c.y = -std::numeric_limits<float>::infinity();
    visual::Mesh mesh = meshOf(triangles);

    const SensitiveMesh sensitive(&mesh, someVisual, {});

    EXPECT_EQ(sensitive.primitives.size(), 40u);
    for (unsigned i = 0; i < 40; ++i) {
        Result result;
        sensitive.intersectRay(result, Ray({20.0f * static_cast<float>(i) + 2, 2, 7}, {0, 0, -1}));
        EXPECT_EQ(result.hit, i != 3 && i != 5 && i != 7 && i != 9) << "triangle " << i;
    }
}

TEST(SensitiveMesh, LargeMeshTakenInOnAllCoresAnswersAsTheLoopDoes)
{
    Dice dice(3, 2000);
    std::vector<Trianglef> triangles;
    for (unsigned i = 0; i < 12000; ++i) {
        const Posf at = dice.point();
        const auto near = [&] {
            return at + rob::Vec3f(dice.number(-60, 60), dice.number(-60, 60), dice.number(-60, 60));
        };
        const Posf a = near(), b = near();
        triangles.push_back({a, b, near()});
    }
    visual::Mesh mesh = meshOf(triangles);
    const SensitiveMesh sensitive(&mesh, someVisual, {});
    unsigned hits = 0;
    for (unsigned i = 0; i < 40; ++i) {
        const Posf from = dice.point();
        const Ray ray(from, rob::normalized(triangles[dice.below(12000)].a - from));
        if (std::min({std::abs(ray.direction.x), std::abs(ray.direction.y), std::abs(ray.direction.z)}) < 0.001f)
            continue; // such a one counts as parallel where boxes are tested
        Result found;
        sensitive.intersectRay(found, ray);
        // Over all triangles, with no hierarchy.
        const std::optional<PlainHit> expected = nearestByLoop(sensitive, ray, sensitive.primitives);

        ASSERT_EQ(found.hit, expected.has_value()) << "ray " << i;
        if (!expected)
            continue;
        ++hits;
        EXPECT_EQ(found.distance, expected->distance) << "ray " << i;
        EXPECT_EQ(found.position, expected->point);
    }
    EXPECT_GT(hits, 15u);
}

} // namespace
} // namespace vrk::selection
