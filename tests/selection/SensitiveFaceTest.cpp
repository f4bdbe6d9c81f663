#include "selection/SensitiveFace.h"

#include "geometry/Geometry.h"

#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRep_Builder.hxx>
#include <Standard_TypeMismatch.hxx>
#include <TopExp_Explorer.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <gmock/gmock.h>
#include <gp_Pln.hxx>
#include <gtest/gtest.h>

#include <cmath>

namespace vrk::selection {
namespace {

using rob::Posf;
using rob::Trianglef;
using testing::ElementsAre;

/// A face with these triangles, whatever its surface.
TopoDS_Face faceOf(const std::vector<gp_Pnt>& nodes, const std::vector<Poly_Triangle>& triangles)
{
    TColgp_Array1OfPnt nodeArray(1, static_cast<int>(nodes.size()));
    for (std::size_t i = 0; i < nodes.size(); ++i)
        nodeArray(static_cast<int>(i) + 1) = nodes[i];
    Poly_Array1OfTriangle triangleArray(1, static_cast<int>(triangles.size()));
    for (std::size_t i = 0; i < triangles.size(); ++i)
        triangleArray(static_cast<int>(i) + 1) = triangles[i];
    const TopoDS_Face face = BRepBuilderAPI_MakeFace(gp_Pln(), 0, 10, 0, 10).Face();
    BRep_Builder().UpdateFace(face, new Poly_Triangulation(nodeArray, triangleArray));
    return face;
}

/// The square from (0, 0, 0) to (10, 10, 0), in two triangles.
TopoDS_Face square()
{
    return faceOf({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}}, {Poly_Triangle(1, 2, 3), Poly_Triangle(1, 3, 4)});
}

TopoDS_Shape movedTo(const TopoDS_Shape& shape, const gp_Vec& by)
{
    gp_Trsf trsf;
    trsf.SetTranslation(by);
    return shape.Moved(TopLoc_Location(trsf));
}

std::vector<unsigned> indicesOf(const SensitiveFace& face)
{
    std::vector<unsigned> indices;
    for (const BVHPrimitive* primitive : face.primitives)
        indices.push_back(static_cast<const SensitiveIndexedTriangle*>(primitive)->index);
    return indices;
}

Result hitOf(const SensitiveFace& face, const Ray& ray)
{
    Result result;
    face.intersectRay(result, ray);
    return result;
}

TEST(SensitiveFace, TrianglesAreNumberedFromOneWithBoxesAUnitWider)
{
    const SensitiveFace face(square(), 7);

    EXPECT_EQ(face.getFaceIndex(), 7u);
    EXPECT_THAT(indicesOf(face), ElementsAre(1, 2));
    for (const BVHPrimitive* triangle : face.primitives) {
        EXPECT_EQ(triangle->box.min, Posf(-1, -1, -1));
        EXPECT_EQ(triangle->box.max, Posf(11, 11, 1));
        EXPECT_FALSE(triangle->box.centerDirty);
    }
    EXPECT_EQ(face.box.min, Posf(-1, -1, -1));
    EXPECT_EQ(face.box.max, Posf(11, 11, 1));
    EXPECT_FALSE(face.hasPose);
}

TEST(SensitiveFace, CornersComeFromTheLastToTheFirst)
{
    const SensitiveFace face(square(), 1);
    Trianglef corners;

    face.getTriangle(corners, static_cast<const SensitiveIndexedTriangle&>(*face.primitives[0]));

    EXPECT_EQ(corners.a, Posf(10, 10, 0));
    EXPECT_EQ(corners.b, Posf(10, 0, 0));
    EXPECT_EQ(corners.c, Posf(0, 0, 0));
}

TEST(SensitiveFace, WithoutTriangulationItHasNoTrianglesAndAnEmptyBox)
{
    const SensitiveFace face(BRepBuilderAPI_MakeFace(gp_Pln(), 0, 10, 0, 10).Face(), 1);
    Result result;
    result.hit = true;

    EXPECT_TRUE(face.primitives.empty());
    EXPECT_FALSE(face.box.isValid());
    EXPECT_FALSE(hitOf(face, Ray({2, 3, 5}, {0, 0, -1})).hit);
    face.intersectLine(result, {{2, 3, 5}, {2, 3, -5}});
    EXPECT_FALSE(result.hit);
    result.hit = true;
    face.intersectTriangle(result, {{2, 3, 5}, {2, 3, -5}, {3, 3, -5}});
    EXPECT_FALSE(result.hit);
    EXPECT_TRUE(result.face.IsNull());
}

TEST(SensitiveFace, ShapeThatIsNoFaceIsRefused)
{
    EXPECT_THROW(SensitiveFace(BRepPrimAPI_MakeBox(1, 1, 1).Shape(), 1), Standard_TypeMismatch);
}

TEST(SensitiveFace, OnlyTheTriangleThatIsNotFiniteIsMissing)
{
    const double noNumber = std::nan("");
    const SensitiveFace face(
        faceOf({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}, {0, noNumber, 0}, {1e300, 0, 0}},
               {Poly_Triangle(1, 2, 5), Poly_Triangle(1, 2, 3), Poly_Triangle(1, 6, 3), Poly_Triangle(1, 3, 4)}),
        1);

    EXPECT_THAT(indicesOf(face), ElementsAre(2, 4)); // 1e300 is no finite float
    EXPECT_TRUE(hitOf(face, Ray({8, 2, 5}, {0, 0, -1})).hit);
    EXPECT_TRUE(hitOf(face, Ray({2, 8, 5}, {0, 0, -1})).hit);
}

TEST(SensitiveFace, FaceOfNoFiniteTriangleHasAnEmptyBox)
{
    const double noNumber = std::nan("");
    const SensitiveFace face(faceOf({{0, 0, noNumber}, {10, 0, 0}, {10, 10, 0}}, {Poly_Triangle(1, 2, 3)}), 1);

    EXPECT_TRUE(face.primitives.empty());
    EXPECT_FALSE(face.box.isValid());
    EXPECT_FALSE(hitOf(face, Ray({8, 2, 5}, {0, 0, -1})).hit);
}

TEST(SensitiveFace, SinglePrecisionNodesAreReadToo)
{
    const Handle(Poly_Triangulation) triangulation = new Poly_Triangulation();
    triangulation->SetDoublePrecision(false);
    triangulation->ResizeNodes(3, false);
    triangulation->ResizeTriangles(1, false);
    triangulation->SetNode(1, {0, 0, 0});
    triangulation->SetNode(2, {10, 0, 0});
    triangulation->SetNode(3, {0, 10, 0});
    triangulation->SetTriangle(1, Poly_Triangle(1, 2, 3));
    const TopoDS_Face shape = BRepBuilderAPI_MakeFace(gp_Pln(), 0, 10, 0, 10).Face();
    BRep_Builder().UpdateFace(shape, triangulation);

    EXPECT_FLOAT_EQ(hitOf(SensitiveFace(shape, 1), Ray({2, 3, 5}, {0, 0, -1})).distance, 5);
}

TEST(SensitiveFace, HitTellsTheFaceWithItsLocationAndOrientation)
{
    const TopoDS_Shape shape = movedTo(square(), {100, 0, 0}).Reversed();

    const Result result = hitOf(SensitiveFace(shape, 1), Ray({102, 3, 5}, {0, 0, -1}));

    ASSERT_TRUE(result.hit);
    EXPECT_TRUE(result.face.IsEqual(shape));
    EXPECT_FLOAT_EQ(result.distance, 5);
    EXPECT_NEAR((result.position - Posf(102, 3, 0)).length(), 0, 1e-4);
    EXPECT_EQ(result.localPosition, result.position);
}

TEST(SensitiveFace, MissTellsTheFaceAllTheSame)
{
    const TopoDS_Shape shape = square();
    const SensitiveFace face(shape, 1);
    Result byLine, byTriangle;

    const Result byRay = hitOf(face, Ray({50, 3, 5}, {0, 0, -1}));
    face.intersectLine(byLine, {{50, 3, 5}, {50, 3, -5}});
    face.intersectTriangle(byTriangle, {{50, 3, 5}, {50, 3, -5}, {51, 3, 5}});

    for (const Result& result : {byRay, byLine, byTriangle}) {
        EXPECT_FALSE(result.hit);
        EXPECT_TRUE(result.face.IsEqual(shape));
    }
}

TEST(SensitiveFace, LocationIsThePoseOfItsTriangles)
{
    gp_Trsf turn;
    turn.SetRotation(gp_Ax1({0, 0, 0}, {1, 0, 0}), 1.5707963267948966); // the square stands up in xz
    const TopoDS_Shape shape = square().Moved(TopLoc_Location(turn));
    const SensitiveFace face(shape, 1);

    EXPECT_TRUE(face.hasPose);
    EXPECT_NEAR((face.box.min - Posf(-1, -1, -1)).length(), 0, 1e-5);
    EXPECT_NEAR((face.box.max - Posf(11, 1, 11)).length(), 0, 1e-5);
    const Result ray = hitOf(face, Ray({2, -5, 3}, {0, 1, 0}));
    EXPECT_NEAR((ray.position - Posf(2, 0, 3)).length(), 0, 1e-4);
    Result result;
    face.intersectLine(result, {{2, -1, 3}, {2, 3, 3}});
    EXPECT_TRUE(result.hit);
    EXPECT_NEAR(result.distance, 0.25, 1e-5);
    EXPECT_TRUE(result.face.IsEqual(shape));
    face.intersectTriangle(result, {{2, -1, 3}, {2, 3, 3}, {3, 3, 3}});
    EXPECT_TRUE(result.hit);
    EXPECT_TRUE(result.face.IsEqual(shape));
}

TEST(SensitiveFace, NearestInShapeIsTheRayQuery)
{
    const SensitiveFace face(movedTo(square(), {100, 0, 0}), 1);
    SensitiveFace::RayHit hit;

    ASSERT_TRUE(face.nearestInShape(hit, Ray({102, 3, 5}, {0, 0, -1}), 6));

    const Result result = hitOf(face, Ray({102, 3, 5}, {0, 0, -1}));
    EXPECT_EQ(hit.distance, result.distance);
    EXPECT_EQ(hit.point, result.position);
    EXPECT_FALSE(face.nearestInShape(hit, Ray({102, 3, 5}, {0, 0, -1}), 5));
}

TEST(SensitiveFace, LineOfNoLengthIsRefused)
{
    const SensitiveFace face(square(), 1);
    Result result;

    EXPECT_THAT(
        [&] {
            face.intersectLine(result, {{1, 1, 0}, {1, 1, 0}});
        },
        testing::ThrowsMessage<std::overflow_error>(testing::StrEq("0-length vector cannot be normalized.")));
}

} // namespace
} // namespace vrk::selection
