#include "platform/measure/Measurement.h"

#include <gtest/gtest.h>

namespace vrk::measure {
namespace {

TEST(MeasurementText, DistanceTellsItsPartsAndItsNote)
{
    Measurement measured;
    measured.value = 100.031;
    measured.way = rob::Vec3d(60, 80.024, -0.001);
    measured.note = "nearest places";

    EXPECT_EQ(labelOf(measured), "100.03 mm");
    EXPECT_EQ(textOf(measured), "100.03 mm (x 60.00, y 80.02, z 0.00), nearest places");
}

TEST(MeasurementText, AngleIsInDegreesAndStandsBehindADistance)
{
    Measurement angle;
    angle.quantity = Quantity::Angle;
    angle.value = 44.999;
    Measurement distance;
    distance.value = 12;
    distance.angle = 30;

    EXPECT_EQ(labelOf(angle), "45.00°");
    EXPECT_EQ(textOf(angle), "45.00°");
    EXPECT_EQ(labelOf(distance), "12.00 mm");
    EXPECT_EQ(textOf(distance), "12.00 mm, 30.00°");
}

TEST(MeasurementText, OneThingTellsWhatItsNumberIs)
{
    Measurement measured;
    measured.value = 40;
    measured.quantity = Quantity::Diameter;
    EXPECT_EQ(labelOf(measured), "Ø 40.00 mm");
    EXPECT_EQ(textOf(measured), "diameter 40.00 mm, radius 20.00 mm");
    measured.quantity = Quantity::Length;
    EXPECT_EQ(labelOf(measured), "40.00 mm");
    EXPECT_EQ(textOf(measured), "length 40.00 mm");
    measured.quantity = Quantity::Area;
    EXPECT_EQ(labelOf(measured), "40.00 mm²");
    EXPECT_EQ(textOf(measured), "area 40.00 mm²");
    measured.quantity = Quantity::Place;
    measured.textPlace = {1, -2.5, 0};
    EXPECT_EQ(textOf(measured), "x 1.00, y -2.50, z 0.00");
}

TEST(MeasurementText, ZeroHasNoSign)
{
    EXPECT_EQ(fixedText(-0.0049), "0.00");
    EXPECT_EQ(fixedText(-0.0051), "-0.01");
}

} // namespace
} // namespace vrk::measure
