#include "MeasureShapes.h"

#include "support/ThrowsExactly.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepBuilderAPI_NurbsConvert.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepGProp.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <GProp_GProps.hxx>
#include <GeomAPI_PointsToBSpline.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Poly_Triangulation.hxx>
#include <TColgp_Array1OfPnt.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk::measure {
namespace {

using test::throwsExactly;

constexpr double pi = std::numbers::pi;

/// A block with one rounded edge: it has planes, a quarter of a cylinder, and arcs.
TopoDS_Shape roundedBlock()
{
    const TopoDS_Shape block = BRepPrimAPI_MakeBox(100, 60, 40).Shape();
    BRepFilletAPI_MakeFillet fillet(block);
    fillet.Add(10, TopoDS::Edge(pieceOf(block, TopAbs_EDGE, 5)));
    return fillet.Shape();
}

TEST(MeasureOne, CircleHasItsDiameterWithARingAndALegToItsMiddle)
{
    const MeasuredThing circle = circleEdge({10, 20, 30}, {0, 0, 1}, 20);

    const Measurement measured = measureOne(circle, usualFor(circle));

    EXPECT_EQ(measured.quantity, Quantity::Diameter);
    EXPECT_DOUBLE_EQ(measured.value, 40);
    ASSERT_EQ(measured.lines.size(), 2u);
    ASSERT_EQ(measured.lines[0].size(), 51u);
    for (const rob::Posd& each : measured.lines[0])
        EXPECT_NEAR((each - rob::Posd(10, 20, 30)).length(), 20, 1e-9);
    ASSERT_EQ(measured.lines[1].size(), 2u);
    EXPECT_NEAR((measured.lines[1][0] - rob::Posd(10, 20, 30)).length(), 0, 1e-9);
    EXPECT_NEAR((measured.lines[1][1] - measured.lines[0][25]).length(), 0, 1e-9);
    EXPECT_NEAR((measured.textPlace - rob::Posd(0, 20, 30)).length(), 0, 1e-9) << "half way along the leg";
}

TEST(MeasureOne, RingOfACylinderLiesWhereItWasPicked)
{
    const TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(5, 80).Shape();
    const MeasuredThing side =
        MeasuredShape{pieceOf(pin, TopAbs_FACE, 1), rob::Posed(rob::Posd(100, 0, 0)), rob::Posd(0, 5, 30)};

    const Measurement measured = measureOne(side, usualFor(side));

    EXPECT_EQ(measured.quantity, Quantity::Diameter);
    EXPECT_DOUBLE_EQ(measured.value, 10);
    for (const rob::Posd& each : measured.lines.at(0)) {
        EXPECT_NEAR(each.z, 30, 1e-9);
        EXPECT_NEAR(std::hypot(each.x - 100, each.y), 5, 1e-9);
    }
}

TEST(MeasureOne, EveryEdgeAndFaceHasTheKernelsLengthAndAreaAtAnyPose)
{
    std::mt19937 random(1);
    for (const TopoDS_Shape& shape : {roundedBlock(), BRepPrimAPI_MakeCone(30, 10, 50).Shape(),
                                      BRepPrimAPI_MakeTorus(50, 10).Shape(), BRepPrimAPI_MakeSphere(25).Shape()}) {
        TopTools_IndexedMapOfShape pieces;
        TopExp::MapShapes(shape, TopAbs_EDGE, pieces);
        TopExp::MapShapes(shape, TopAbs_FACE, pieces);
        for (int i = 1; i <= pieces.Size(); ++i) {
            const TopoDS_Shape& piece = pieces(i);
            const bool isEdge = piece.ShapeType() == TopAbs_EDGE;
            if (isEdge && BRep_Tool::Degenerated(TopoDS::Edge(piece)))
                continue;
            GProp_GProps properties;
            if (isEdge)
                BRepGProp::LinearProperties(piece, properties);
            else
                BRepGProp::SurfaceProperties(piece, properties, 1e-9);
            const MeasuredThing thing = MeasuredShape{piece, anyPose(random, 1e5), {}};
            const Measurement measured = measureOne(thing, isEdge ? Single::Length : Single::Area);
            EXPECT_NEAR(measured.value, properties.Mass(), 1e-6 * std::max(1.0, properties.Mass())) << "piece " << i;
            EXPECT_EQ(measured.quantity, isEdge ? Quantity::Length : Quantity::Area);
        }
    }
}

TEST(MeasureOne, AnalyticValuesHold)
{
    const TopoDS_Shape block = roundedBlock();
    double rounded = 0;
    for (TopExp_Explorer face(block, TopAbs_FACE); face.More(); face.Next())
        if (const MeasuredThing thing = MeasuredShape{face.Current(), {}, {}}; usualFor(thing) == Single::Diameter) {
            EXPECT_NEAR(measureOne(thing, Single::Diameter).value, 20, 1e-9);
            rounded = measureOne(thing, Single::Area).value;
        }
    EXPECT_GT(rounded, 0);
    const MeasuredThing sphere = MeasuredShape{BRepPrimAPI_MakeSphere(25).Shape(), {}, {}};
    EXPECT_NEAR(measureOne(sphere, Single::Area).value, 4 * pi * 625, 1e-6 * 4 * pi * 625);
    const MeasuredThing ball = MeasuredShape{pieceOf(std::get<MeasuredShape>(sphere).shape, TopAbs_FACE, 1), {}, {}};
    EXPECT_NEAR(measureOne(ball, usualFor(ball)).value, 50, 1e-9);
    const MeasuredThing half =
        MeasuredShape{BRepBuilderAPI_MakeEdge(circleAt({0, 0, 0}, {0, 0, 1}, 20), 0, pi).Edge(), {}, {}};
    EXPECT_NEAR(measureOne(half, Single::Length).value, 20 * pi, 1e-9);
}

TEST(MeasureOne, LengthOfASplineIsThatOfItsCurve)
{
    TColgp_Array1OfPnt points(1, 9);
    for (int i = 1; i <= 9; ++i)
        points(i) = gp_Pnt(10 * i, 30 * std::sin(i), 7 * (i % 3));
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(GeomAPI_PointsToBSpline(points).Curve());
    const BRepAdaptor_Curve curve(edge);

    const MeasuredThing thing = MeasuredShape{edge, {}, {}};

    EXPECT_EQ(usualFor(thing), Single::Length);
    const double exact = GCPnts_AbscissaPoint::Length(curve, 1e-10);
    EXPECT_NEAR(measureOne(thing, Single::Length).value, exact, 1e-6 * exact);
    double polygon = 0;
    constexpr int steps = 200000;
    const auto at = [&](int i) {
        return curve.Value(curve.FirstParameter() + i * (curve.LastParameter() - curve.FirstParameter()) / steps);
    };
    for (int i = 0; i < steps; ++i)
        polygon += at(i).Distance(at(i + 1));
    EXPECT_NEAR(polygon, exact, 1e-6 * exact) << "the kernel's own answer is the length";
}

TEST(MeasureOne, AreaOfASplineIsThatOfItsSurface)
{
    const TopoDS_Shape ball = BRepBuilderAPI_NurbsConvert(BRepPrimAPI_MakeSphere(25).Shape(), true).Shape();

    const MeasuredThing thing = MeasuredShape{ball, {}, {}};

    EXPECT_NEAR(measureOne(thing, Single::Area).value, 4 * pi * 625, 1e-6 * 4 * pi * 625);
}

TEST(MeasureOne, AreaOfAMeshIsThatOfItsTriangles)
{
    const MeasuredThing mesh = MeasuredShape{meshOf(BRepPrimAPI_MakeBox(10, 20, 30).Shape()), {}, {}};

    const Measurement measured = measureOne(mesh, usualFor(mesh));

    EXPECT_NEAR(measured.value, 2 * (200 + 300 + 600), 1e-6);
    EXPECT_EQ(measured.note, "of the triangles");
}

TEST(MeasureOne, PointHasItsPlace)
{
    const MeasuredThing vertex =
        MeasuredShape{BRepBuilderAPI_MakeVertex(gp_Pnt(1, 2, 3)).Vertex(), rob::Posed(rob::Posd(10, 0, 0)), {}};

    EXPECT_EQ(textOf(measureOne(vertex, usualFor(vertex))), "x 11.00, y 2.00, z 3.00");
    EXPECT_EQ(textOf(measureOne(pointAt(4, 5, 6), Single::Place)), "x 4.00, y 5.00, z 6.00");
}

TEST(MeasureOne, WhatHasNoSuchValueIsRefusedInOneLine)
{
    const auto asks = [](const MeasuredThing& thing, Single asked) { return [=] { measureOne(thing, asked); }; };
    const MeasuredThing edge = edgeFrom({0, 0, 0}, {1, 0, 0});
    EXPECT_THAT(
        asks(pointAt(0, 0, 0), Single::Diameter),
        throwsExactly<MeasureError>("Only a circular edge, a cylindrical and a spherical face have a diameter"));
    EXPECT_THAT(
        asks(edge, Single::Diameter),
        throwsExactly<MeasureError>("Only a circular edge, a cylindrical and a spherical face have a diameter"));
    EXPECT_THAT(asks(edge, Single::Area), throwsExactly<MeasureError>("What has no face has no area"));
    EXPECT_THAT(asks(edge, Single::Place), throwsExactly<MeasureError>("Only a point has a place"));
    EXPECT_THAT(asks(plateOn(gp_Ax3(), 0, 1), Single::Length),
                throwsExactly<MeasureError>("Only an edge has a length"));
    EXPECT_THAT(asks(MeasuredShape{}, Single::Area), throwsExactly<MeasureError>("There is no shape to measure"));
}

TEST(MeasureOne, EndlessAndDegeneratedThingsAreRefusedInOneLine)
{
    const MeasuredThing endlessEdge = MeasuredShape{BRepBuilderAPI_MakeEdge(gp_Lin(gp::OX())).Edge(), {}, {}};
    EXPECT_THAT([&] { measureOne(endlessEdge, Single::Length); },
                throwsExactly<MeasureError>("An edge without end has no length"));
    EXPECT_EQ(describe(endlessEdge), "line, endless");
    const MeasuredThing endlessFace = MeasuredShape{BRepBuilderAPI_MakeFace(gp_Pln()).Face(), {}, {}};
    EXPECT_THAT([&] { measureOne(endlessFace, Single::Area); },
                throwsExactly<MeasureError>("A face without border has no area"));
    const TopoDS_Shape sphere = BRepPrimAPI_MakeSphere(10).Shape();
    int degenerated = 0;
    for (TopExp_Explorer edge(sphere, TopAbs_EDGE); edge.More(); edge.Next())
        if (BRep_Tool::Degenerated(TopoDS::Edge(edge.Current()))) {
            ++degenerated;
            EXPECT_THAT(
                [&] {
                    usualFor(MeasuredShape{edge.Current(), {}, {}});
                },
                throwsExactly<MeasureError>("This edge has no curve to measure"));
        }
    EXPECT_GT(degenerated, 0);
}

TEST(DescribeMeasured, TellsTheKindAndTheSize)
{
    EXPECT_EQ(describe(circleEdge({0, 0, 0}, {0, 0, 1}, 20)), "circle, diameter 40.00 mm");
    EXPECT_EQ(describe(MeasuredShape{BRepBuilderAPI_MakeEdge(circleAt({0, 0, 0}, {0, 0, 1}, 20), 0, 1).Edge(), {}, {}}),
              "arc, diameter 40.00 mm");
    EXPECT_EQ(describe(edgeFrom({0, 0, 0}, {3, 4, 0})), "line, length 5.00 mm");
    EXPECT_EQ(describe(plateOn(gp_Ax3(), 0, 1)), "plane");
    EXPECT_EQ(describe(pointAt(1, 2, 3)), "point at x 1.00, y 2.00, z 3.00");
    const auto firstFace = [](const TopoDS_Shape& shape) {
        return describe(MeasuredShape{pieceOf(shape, TopAbs_FACE, 1), {}, {}});
    };
    EXPECT_EQ(firstFace(BRepPrimAPI_MakeCylinder(20, 50).Shape()), "cylinder, diameter 40.00 mm");
    EXPECT_EQ(firstFace(BRepPrimAPI_MakeSphere(20).Shape()), "sphere, diameter 40.00 mm");
    EXPECT_EQ(firstFace(BRepPrimAPI_MakeCone(30, 10, 20).Shape()), "cone, half angle 45.00°");
    EXPECT_EQ(firstFace(BRepPrimAPI_MakeTorus(50, 10).Shape()), "torus, diameters 100.00 mm and 20.00 mm");
    EXPECT_EQ(describe(MeasuredShape{BRepPrimAPI_MakeBox(1, 1, 1).Shape(), {}, {}}), "body");
    EXPECT_EQ(describe(MeasuredShape{meshOf(BRepPrimAPI_MakeBox(1, 1, 1).Shape()), {}, {}}), "mesh");
}

} // namespace
} // namespace vrk::measure
