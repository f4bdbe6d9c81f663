#include "platform/measure/Measure.h"

#include "MeasureShapes.h"

#include "support/ThrowsExactly.h"

#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepBuilderAPI_NurbsConvert.hxx>
#include <BRepExtrema_DistShapeShape.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace vrk::measure {
namespace {

using test::throwsExactly;
using testing::HasSubstr;

constexpr double degrees = 180 / std::numbers::pi;

void expectWay(const Measurement& measured, double x, double y, double z)
{
    ASSERT_TRUE(measured.way);
    EXPECT_NEAR(measured.way->x, x, 1e-9);
    EXPECT_NEAR(measured.way->y, y, 1e-9);
    EXPECT_NEAR(measured.way->z, z, 1e-9);
}

rob::Posd endOf(const Measurement& measured)
{
    return measured.lines.at(0).back();
}

TEST(MeasureBetween, PointsHaveTheirDistanceAndItsParts)
{
    const Measurement measured = measureBetween(pointAt(10, 20, 30), pointAt(70, 100, 30));

    EXPECT_DOUBLE_EQ(measured.value, 100);
    expectWay(measured, 60, 80, 0);
    EXPECT_EQ(textOf(measured), "100.00 mm (x 60.00, y 80.00, z 0.00)");
    EXPECT_NEAR((measured.textPlace - rob::Posd(40, 60, 30)).length(), 0, 1e-9);
}

TEST(MeasureBetween, PointsOfScansAndMeshesAreToldToBeBetweenPoints)
{
    const MeasuredThing sample = MeasuredPoint{{1, 0, 0}, true};

    EXPECT_EQ(measureBetween(sample, pointAt(0, 0, 0)).note, "between points");
    EXPECT_EQ(measureBetween(pointAt(0, 0, 0), pointAt(1, 0, 0)).note, "");
    EXPECT_THAT(measureBetween(plateOn(gp_Ax3(), -5, 5), sample).note, HasSubstr("between points"));
}

TEST(MeasureBetween, EqualPointsAreAtNoDistance)
{
    EXPECT_EQ(textOf(measureBetween(pointAt(1, 2, 3), pointAt(1, 2, 3))), "0.00 mm (x 0.00, y 0.00, z 0.00)");
}

TEST(MeasureBetween, PointAndEdgeMeetAtTheFootOnTheEndlessLine)
{
    const MeasuredThing edge = edgeFrom({0, 0, 0}, {10, 0, 0});

    const Measurement beside = measureBetween(pointAt(4, 3, 4), edge), beyond = measureBetween(pointAt(16, 3, 4), edge);

    EXPECT_DOUBLE_EQ(beside.value, 5);
    expectWay(beside, 0, -3, -4);
    EXPECT_EQ(beside.lines.size(), 1u);
    EXPECT_EQ(beside.note, "");
    EXPECT_DOUBLE_EQ(beyond.value, 5);
    EXPECT_EQ(beyond.note, "beyond the end of the edge");
    ASSERT_EQ(beyond.lines.size(), 2u) << "the edge is drawn on to the foot";
    EXPECT_NEAR((beyond.lines[1][0] - rob::Posd(16, 0, 0)).length(), 0, 1e-9);
    EXPECT_NEAR((beyond.lines[1][1] - rob::Posd(10, 0, 0)).length(), 0, 1e-9);
}

TEST(MeasureBetween, StraightSplineIsALine)
{
    const TopoDS_Edge straight = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(10, 0, 0));
    const MeasuredThing spline =
        MeasuredShape{pieceOf(BRepBuilderAPI_NurbsConvert(straight, true).Shape(), TopAbs_EDGE, 1), {}, {}};

    const Measurement measured = measureBetween(pointAt(16, 3, 4), spline);

    EXPECT_NEAR(measured.value, 5, 1e-9);
    EXPECT_EQ(measured.note, "beyond the end of the edge");
}

TEST(MeasureBetween, PlaneSplineIsAPlane)
{
    const TopoDS_Shape plate = std::get<MeasuredShape>(plateOn(gp_Ax3(), -5, 5)).shape;
    const MeasuredThing spline =
        MeasuredShape{pieceOf(BRepBuilderAPI_NurbsConvert(plate, true).Shape(), TopAbs_FACE, 1), {}, {}};

    EXPECT_EQ(describe(spline), "plane");
    EXPECT_NEAR(measureBetween(spline, pointAt(100, 0, 7)).value, 7, 1e-9);
}

TEST(MeasureBetween, PointAndCurveMeetAtTheNearestPlaceOfTheCurve)
{
    const Measurement measured = measureBetween(pointAt(50, 0, 0), circleEdge({0, 0, 0}, {0, 0, 1}, 20));

    EXPECT_NEAR(measured.value, 30, 1e-9);
    EXPECT_EQ(measured.note, "nearest places");
    EXPECT_NEAR((endOf(measured) - rob::Posd(20, 0, 0)).length(), 0, 1e-9);
}

TEST(MeasureBetween, PointAndPlaneMeetAtTheFoot)
{
    const MeasuredThing plate = plateOn(gp_Ax3(), -5, 5);

    const Measurement above = measureBetween(pointAt(1, 2, 7), plate), aside = measureBetween(plate, pointAt(20, 0, 7));

    EXPECT_DOUBLE_EQ(above.value, 7);
    expectWay(above, 0, 0, -7);
    EXPECT_EQ(above.lines.size(), 1u);
    EXPECT_DOUBLE_EQ(aside.value, 7);
    expectWay(aside, 0, 0, 7);
    EXPECT_EQ(aside.lines.size(), 2u);
    EXPECT_EQ(aside.note, "beyond the border of the face");
}

TEST(MeasureBetween, ParallelEdgesHaveADistanceThatIsShownWhereTheFirstWasPicked)
{
    MeasuredThing first = edgeFrom({0, 0, 0}, {10, 0, 0});
    std::get<MeasuredShape>(first).picked = rob::Posd(2, 0, 0);

    const Measurement measured = measureBetween(first, edgeFrom({5, 3, 4}, {-15, 3, 4}));

    EXPECT_NEAR(measured.value, 5, 1e-12);
    EXPECT_EQ(measured.note, "parallel lines");
    EXPECT_NEAR((measured.lines[0][0] - rob::Posd(2, 0, 0)).length(), 0, 1e-9);
    EXPECT_NEAR((measured.lines[0][1] - rob::Posd(2, 3, 4)).length(), 0, 1e-9);
}

TEST(MeasureBetween, EdgesOnOneLineAreAtNoDistance)
{
    EXPECT_NEAR(measureBetween(edgeFrom({0, 0, 0}, {10, 0, 0}), edgeFrom({20, 0, 0}, {30, 0, 0})).value, 0, 1e-12);
}

TEST(MeasureBetween, EdgesThatMeetHaveTheAngleOfTheirCorner)
{
    const double turn = 130 / degrees;
    const MeasuredThing first = edgeFrom({0, 0, 0}, {10, 0, 0});
    const MeasuredThing second = edgeFrom({20 * std::cos(turn), 20 * std::sin(turn), 0}, {0, 0, 0});

    const Measurement measured = measureBetween(first, second);

    EXPECT_EQ(measured.quantity, Quantity::Angle);
    EXPECT_NEAR(measured.value, 130, 1e-9);
    EXPECT_FALSE(measured.way);
    ASSERT_EQ(measured.lines.size(), 3u) << "two legs and an arc";
    EXPECT_EQ(measured.lines[2].size(), 21u);
    for (const rob::Posd& each : measured.lines[2])
        EXPECT_NEAR(rob::Vec3d(each).length(), 5, 1e-9) << "as long as the shorter leg";
    EXPECT_NEAR((measured.lines[2].front() - rob::Posd(5, 0, 0)).length(), 0, 1e-9);
    EXPECT_NEAR((measured.textPlace - rob::Posd(5 * std::cos(turn / 2), 5 * std::sin(turn / 2), 0)).length(), 0, 1e-9);
}

TEST(MeasureBetween, EdgesThatCrossHaveTheAcuteAngle)
{
    const Measurement measured = measureBetween(edgeFrom({-10, 0, 0}, {10, 0, 0}), edgeFrom({-5, 5, 0}, {5, -5, 0}));

    EXPECT_EQ(measured.quantity, Quantity::Angle);
    EXPECT_NEAR(measured.value, 45, 1e-9);
}

TEST(MeasureBetween, EdgesThatPassEachOtherHaveShortestDistanceAndAngle)
{
    const Measurement measured = measureBetween(edgeFrom({-10, 0, 0}, {10, 0, 0}), edgeFrom({0, -5, 7}, {0, 5, 7}));

    EXPECT_NEAR(measured.value, 7, 1e-12);
    ASSERT_TRUE(measured.angle);
    EXPECT_NEAR(*measured.angle, 90, 1e-9);
    expectWay(measured, 0, 0, 7);
    EXPECT_EQ(textOf(measured), "7.00 mm (x 0.00, y 0.00, z 7.00), 90.00°, shortest distance of the lines");
}

TEST(MeasureBetween, ParallelPlanesHaveADistance)
{
    const MeasuredThing lower = plateOn(gp_Ax3(), -5, 5);
    const MeasuredThing upper = plateOn(gp_Ax3({100, 0, 25}, {0, 0, -1}), -5, 5);

    const Measurement measured = measureBetween(lower, upper);

    EXPECT_NEAR(measured.value, 25, 1e-12);
    EXPECT_EQ(measured.note, "parallel planes");
    EXPECT_EQ(measured.lines.size(), 2u) << "one leg, and one on to the face that lies aside";
}

TEST(MeasureBetween, PlanesThatMeetHaveTheAngleOfTheirCorner)
{
    // An obtuse wedge: two faces of a prism at 120 degrees.
    BRepBuilderAPI_MakePolygon outline;
    for (const gp_Pnt& corner : {gp_Pnt(0, 0, 0), gp_Pnt(40, 0, 0), gp_Pnt(-10, 10 * std::sqrt(3), 0)})
        outline.Add(corner);
    outline.Close();
    const TopoDS_Shape wedge =
        BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(outline.Wire()).Face(), gp_Vec(0, 0, 30)).Shape();
    std::vector<double> angles;
    for (int i = 1; i <= 3; ++i)
        for (int k = i + 1; k <= 3; ++k) {
            const Measurement measured = measureBetween(MeasuredShape{pieceOf(wedge, TopAbs_FACE, i), {}, {}},
                                                        MeasuredShape{pieceOf(wedge, TopAbs_FACE, k), {}, {}});
            EXPECT_EQ(measured.quantity, Quantity::Angle);
            angles.push_back(measured.value);
        }

    EXPECT_NEAR(*std::ranges::max_element(angles), 120, 1e-9);
    EXPECT_NEAR(angles[0] + angles[1] + angles[2], 180, 1e-9) << "the corners of a triangle";
}

TEST(MeasureBetween, PlanesThatCrossHaveTheAcuteAngle)
{
    const double turn = 150 / degrees;

    const Measurement measured = measureBetween(plateOn(gp_Ax3(), -5, 5),
                                                plateOn(gp_Ax3({0, 0, 0}, {0, std::sin(turn), std::cos(turn)}), -5, 5));

    EXPECT_NEAR(measured.value, 30, 1e-9);
}

TEST(MeasureBetween, EdgeAndPlaneHaveDistanceOrAngle)
{
    const MeasuredThing plate = plateOn(gp_Ax3(), -50, 50);

    const Measurement parallel = measureBetween(edgeFrom({0, 0, 12}, {10, 0, 12}), plate);
    const Measurement sloping = measureBetween(plate, edgeFrom({0, 0, 0}, {10, 0, 10 * std::sqrt(3)}));
    const Measurement upright = measureBetween(plate, edgeFrom({3, 3, 1}, {3, 3, 9}));

    EXPECT_NEAR(parallel.value, 12, 1e-12);
    EXPECT_EQ(parallel.quantity, Quantity::Distance);
    EXPECT_EQ(sloping.quantity, Quantity::Angle);
    EXPECT_NEAR(sloping.value, 60, 1e-9);
    EXPECT_NEAR(upright.value, 90, 1e-9);
}

TEST(MeasureBetween, CylindersCountAsTheirAxes)
{
    const TopoDS_Shape pin = pieceOf(BRepPrimAPI_MakeCylinder(5, 80).Shape(), TopAbs_FACE, 1);
    const auto pinAt = [&pin](const rob::Posed& pose) -> MeasuredThing { return MeasuredShape{pin, pose, {}}; };
    const rob::Rotationd lying(std::numbers::pi / 2, rob::Dird(0, 1, 0));

    const Measurement parallel = measureBetween(pinAt({}), pinAt(rob::Posed(rob::Posd(30, 40, 0))));
    const Measurement crossed = measureBetween(pinAt({}), pinAt({rob::Posd(-40, 25, 40), lying}));

    EXPECT_NEAR(parallel.value, 50, 1e-9);
    EXPECT_EQ(parallel.note, "between parallel axes");
    EXPECT_NEAR(crossed.value, 25, 1e-9);
    EXPECT_NEAR(crossed.angle.value(), 90, 1e-9);
    EXPECT_NEAR(measureBetween(pointAt(13, 0, 5), pinAt({})).value, 13, 1e-9);
    EXPECT_EQ(measureBetween(pointAt(13, 0, 5), pinAt({})).note, "to the axis");
}

TEST(MeasureBetween, CirclesCountAsTheirCentres)
{
    const Measurement measured =
        measureBetween(circleEdge({0, 0, 0}, {0, 0, 1}, 20), circleEdge({30, 40, 0}, {0, 0, 1}, 5));

    EXPECT_NEAR(measured.value, 50, 1e-12);
    EXPECT_EQ(measured.note, "between the centres");
}

TEST(MeasureBetween, OtherFacesHaveTheirMinimumDistance)
{
    const MeasuredThing plate = plateOn(gp_Ax3(), -100, 100);
    const MeasuredThing rim = circleEdge({0, 0, 40}, {1, 0, 1}, 20);

    const Measurement measured = measureBetween(plate, rim);

    EXPECT_NEAR(measured.value, 40 - 20 / std::sqrt(2.0), 1e-9);
    EXPECT_EQ(measured.note, "nearest places");
    EXPECT_GT(measured.way->z, 0) << "from the first thing to the second";
}

TEST(MeasureBetween, EndlessPlanesAndLinesAreMeasuredAsWell)
{
    const MeasuredThing plane = MeasuredShape{BRepBuilderAPI_MakeFace(gp_Pln()).Face(), {}, {}};
    const MeasuredThing line = MeasuredShape{BRepBuilderAPI_MakeEdge(gp_Lin(gp::OX())).Edge(), {}, {}};

    EXPECT_NEAR(measureBetween(plane, pointAt(5, 5, 9)).value, 9, 1e-9);
    EXPECT_NEAR(measureBetween(line, pointAt(5, 0, 9)).value, 9, 1e-9);
    EXPECT_NEAR(measureBetween(line, plateOn(gp_Ax3({0, 0, 9}, {0, 0, 1}), 0, 5)).value, 9, 1e-9);
    EXPECT_NEAR(measureBetween(plane, plateOn(gp_Ax3({0, 0, 9}, {1, 0, 0}), 0, 5)).value, 90, 1e-9);
}

// Properties

std::vector<MeasuredThing> allKinds()
{
    const TopoDS_Shape pin = BRepPrimAPI_MakeCylinder(gp_Ax2({0, 90, 20}, {1, 1, 2}), 5, 80).Shape();
    return {pointAt(3, 7, -20),
            edgeFrom({0, 0, 0}, {10, 20, 30}),
            edgeFrom({50, -10, 0}, {60, 10, 30}),
            edgeFrom({-40, 5, 5}, {-30, 25, 35}),
            plateOn(gp_Ax3({10, 10, -70}, {0, 0, 1}), -5, 5),
            plateOn(gp_Ax3({10, 30, 70}, {1, 2, 3}), -5, 5),
            circleEdge({-90, 40, 0}, {0, 1, 1}, 20),
            circleEdge({90, 40, 0}, {3, 1, 1}, 10),
            MeasuredShape{pieceOf(pin, TopAbs_FACE, 1), {}, {}}};
}

TEST(MeasureBetween, ValueIsTheSameFromEitherSideAndTheWayIsTurnedRound)
{
    const std::vector<MeasuredThing> all = allKinds();
    for (std::size_t i = 0; i < all.size(); ++i)
        for (std::size_t k = 0; k < all.size(); ++k) {
            SCOPED_TRACE(testing::Message() << i << " and " << k);
            const Measurement there = measureBetween(all[i], all[k]), back = measureBetween(all[k], all[i]);
            EXPECT_NEAR(there.value, back.value, 1e-9);
            EXPECT_EQ(there.quantity, back.quantity);
            EXPECT_EQ(there.note, back.note);
            ASSERT_EQ(there.way.has_value(), back.way.has_value());
            // Between parallels, any place will do.
            if (there.way && !there.note.starts_with("parallel")) {
                EXPECT_NEAR((*there.way + *back.way).length(), 0, 1e-9);
            }
        }
}

TEST(MeasureBetween, OneMotionOfBothChangesNothingAndTurnsWhatIsShown)
{
    const std::vector<MeasuredThing> all = allKinds();
    for (unsigned seed = 0; seed < 40; ++seed) {
        std::mt19937 random(seed);
        const rob::Posed motion = anyPose(random, seed % 2 == 0 ? 1e3 : 1e6);
        // What is left of the digits of a coordinate.
        const double least = seed % 2 == 0 ? 1e-8 : 1e-6;
        for (std::size_t i = 0; i < all.size(); ++i)
            for (std::size_t k = i; k < all.size(); ++k) {
                SCOPED_TRACE(testing::Message() << "seed " << seed << ": " << i << " and " << k);
                const Measurement here = measureBetween(all[i], all[k]);
                const Measurement there = measureBetween(moved(all[i], motion), moved(all[k], motion));
                EXPECT_NEAR(here.value, there.value, least);
                ASSERT_EQ(here.lines.size(), there.lines.size());
                for (std::size_t line = 0; line < here.lines.size(); ++line)
                    for (std::size_t point = 0; point < here.lines[line].size(); ++point)
                        EXPECT_NEAR((motion * here.lines[line][point] - there.lines[line][point]).length(), 0, 1e-4);
            }
    }
}

TEST(MeasureBetween, DistancesAreTheKernelsUnderAnyPoseAndLocation)
{
    // Pieces that are large enough that their nearest places are those of the endless line and plane.
    std::mt19937 random(7);
    std::uniform_real_distribution<double> near(-20, 20);
    const TopoDS_Shape edge = BRepBuilderAPI_MakeEdge(gp_Pnt(-1e3, 0, 0), gp_Pnt(1e3, 0, 0));
    const TopoDS_Shape plate = BRepBuilderAPI_MakeFace(gp_Pln(), -1e3, 1e3, -1e3, 1e3);
    for (int round = 0; round < 50; ++round) {
        const rob::Posed pose = anyPose(random, 1e5), location = anyPose(random, 1e3);
        const gp_Trsf world = trsfOf(pose) * trsfOf(location);
        gp_Pnt point(near(random), near(random), near(random));
        point.Transform(world);
        for (const TopoDS_Shape& shape : {edge, plate}) {
            SCOPED_TRACE(testing::Message() << "round " << round << ", kind " << shape.ShapeType());
            BRepExtrema_DistShapeShape kernel(BRepBuilderAPI_MakeVertex(point).Vertex(),
                                              shape.Moved(TopLoc_Location(world)));
            const MeasuredThing placed = MeasuredShape{shape.Moved(TopLoc_Location(trsfOf(location))), pose, {}};
            EXPECT_NEAR(measureBetween(placed, pointAt(point.X(), point.Y(), point.Z())).value, kernel.Value(), 1e-6);
        }
    }
}

TEST(MeasureBetween, AnglesAreTheKernelsUnderAnyPose)
{
    std::mt19937 random(11);
    for (int round = 0; round < 50; ++round) {
        const rob::Posed first = anyPose(random, 1e5), second = anyPose(random, 1e5);
        const gp_Dir n = gp::DZ().Transformed(trsfOf(first)), m = gp::DZ().Transformed(trsfOf(second));
        MeasuredThing a = plateOn(gp_Ax3(), -1e9, 1e9), b = a;
        const double kernel = gp_Lin(gp_Pnt(), n).Angle(gp_Lin(gp_Pnt(), m));
        const Measurement measured = measureBetween(moved(a, first), moved(b, second));
        EXPECT_EQ(measured.quantity, Quantity::Angle);
        EXPECT_NEAR(measured.value, std::min(kernel, std::numbers::pi - kernel) * degrees, 1e-6);
    }
}

} // namespace
} // namespace vrk::measure
