#include "platform/process/SprayGun.h"
#include "platform/process/ThicknessColors.h"

#include <cmath>
#include <limits>
#include <numbers>

namespace vrk::process {
namespace {

using rob::Vec3d;

const Vec3d down(0, 0, -1);
const Vec3d up(0, 0, 1);

/// What comes down a second within a disc across the axis, by rings.
double flowThrough(const SprayGun& gun, double distance, double part = 1)
{
    const double radius = part * distance * std::tan(gun.halfAngle);
    constexpr int rings = 2000;
    double sum = 0;
    for (int i = 0; i < rings; ++i) {
        const double r = radius * (i + 0.5) / rings;
        sum += gun.rateAt({r, 0, -distance}, down, up) * 2 * std::numbers::pi * r * radius / rings;
    }
    return sum;
}

TEST(SprayGun, AllItsFlowComesDownOnAPlateWhateverDistanceAndProfile)
{
    for (const double profile : {1.0, 1.5, 2.0, 4.0})
        for (const double distance : {50.0, 200.0}) {
            SprayGun gun;
            gun.profile = profile;
            EXPECT_NEAR(flowThrough(gun, distance), gun.flow, 2e-3 * gun.flow) << profile << ", " << distance;
        }
}

TEST(SprayGun, HigherProfileBringsMoreToTheMiddle)
{
    SprayGun even, bell;
    even.profile = 1;
    bell.profile = 4;

    EXPECT_NEAR(flowThrough(even, 100, 0.5), 0.25 * even.flow, 2e-3 * even.flow);
    EXPECT_NEAR(flowThrough(bell, 100, 0.5), (1 - std::pow(0.75, 4)) * bell.flow, 2e-3 * bell.flow);
    EXPECT_DOUBLE_EQ(bell.rateAt({0, 0, -100}, down, up), 4 * even.rateAt({0, 0, -100}, down, up));
}

TEST(SprayGun, TwiceTheDistanceGivesAQuarter)
{
    const SprayGun gun;

    EXPECT_DOUBLE_EQ(gun.rateAt({0, 0, -200}, down, up), gun.rateAt({0, 0, -100}, down, up) / 4);
}

TEST(SprayGun, TurnedSurfaceTakesTheCosine)
{
    const SprayGun gun;
    const double straight = gun.rateAt({0, 0, -100}, down, up);

    EXPECT_NEAR(gun.rateAt({0, 0, -100}, down, {std::sin(1.0), 0, std::cos(1.0)}), straight * std::cos(1.0), 1e-12);
    EXPECT_EQ(gun.rateAt({0, 0, -100}, down, {1, 0, 0}), 0);
    EXPECT_EQ(gun.rateAt({0, 0, -100}, down, down), 0) << "it turns away";
}

TEST(SprayGun, NothingComesOutsideOfTheConeBehindTheNozzleOrBeyondTheReach)
{
    const SprayGun gun; // 0.26 radians, 500 of reach
    const double border = 100 * std::tan(gun.halfAngle);

    EXPECT_GT(gun.rateAt({0.999 * border, 0, -100}, down, up), 0);
    EXPECT_EQ(gun.rateAt({1.001 * border, 0, -100}, down, up), 0);
    EXPECT_EQ(gun.rateAt({0, 0, 100}, down, down), 0);
    EXPECT_EQ(gun.rateAt({0, 0, 0}, down, up), 0);
    EXPECT_GT(gun.rateAt({0, 0, -499}, down, up), 0);
    EXPECT_EQ(gun.rateAt({0, 0, -501}, down, up), 0);
}

TEST(SprayGun, WhatMakesNoGunIsRefused)
{
    const auto isRefused = [](auto change) {
        SprayGun gun;
        change(gun);
        try {
            gun.check();
        } catch (const std::invalid_argument&) {
            return true;
        }
        return false;
    };
    const double none = std::nan(""), endless = std::numeric_limits<double>::infinity();
    EXPECT_NO_THROW(SprayGun().check());
    for (const double bad : {0.0, -0.1, 1.6, none})
        EXPECT_TRUE(isRefused([bad](SprayGun& gun) { gun.halfAngle = bad; })) << bad;
    for (const double bad : {-1.0, none, endless})
        EXPECT_TRUE(isRefused([bad](SprayGun& gun) { gun.flow = bad; })) << bad;
    for (const double bad : {0.9, none, endless})
        EXPECT_TRUE(isRefused([bad](SprayGun& gun) { gun.profile = bad; })) << bad;
    for (const double bad : {0.0, -5.0, none, endless})
        EXPECT_TRUE(isRefused([bad](SprayGun& gun) { gun.reach = bad; })) << bad;
}

TEST(SprayWay, LeadsStraightFromPlaceToPlaceAndTurnsEvenly)
{
    const SprayWay way({{{0, 0, 0}, {0, 0, -2}}, {{10, 0, 0}, {0, 0, -1}}, {{10, 30, 0}, {1, 0, 0}}}, 5);

    EXPECT_EQ(way.length(), 40);
    EXPECT_EQ(way.seconds(), 8);
    EXPECT_EQ(way.at(4).nozzle, rob::Posd(4, 0, 0));
    EXPECT_NEAR(way.at(4).axis.z, -1, 1e-12);
    EXPECT_EQ(way.at(20).nozzle, rob::Posd(10, 10, 0));
    EXPECT_NEAR(way.at(20).axis.x, std::sin(std::numbers::pi / 6), 1e-12) << "a third of the turn";
    EXPECT_NEAR(way.at(20).axis.length(), 1, 1e-12);
    EXPECT_EQ(way.at(-1).nozzle, rob::Posd(0, 0, 0));
    EXPECT_EQ(way.at(99).nozzle, rob::Posd(10, 30, 0));
    EXPECT_NEAR(way.at(99).axis.x, 1, 1e-12);
}

TEST(SprayWay, OppositeAxesKeepTheFirstUntilTheEnd)
{
    const SprayWay way({{{0, 0, 0}, {0, 0, -1}}, {{10, 0, 0}, {0, 0, 1}}}, 1);

    EXPECT_NEAR(way.at(5).axis.z, -1, 1e-9);
    EXPECT_NEAR(way.at(10).axis.z, 1, 1e-9);
}

TEST(SprayWay, PlacesThatCoincideAreOneOnTheWay)
{
    const SprayWay way({{{0, 0, 0}, {0, 0, -1}}, {{0, 0, 0}, {0, 0, -1}}, {{4, 0, 0}, {0, 0, -1}}}, 1);

    EXPECT_EQ(way.length(), 4);
    EXPECT_EQ(way.at(2).nozzle, rob::Posd(2, 0, 0));
    EXPECT_TRUE(way.at(0).axis.isFinite());
}

TEST(SprayWay, WhatMakesNoWayIsRefused)
{
    const SprayPlace place{{0, 0, 0}, {0, 0, -1}};
    EXPECT_THROW(SprayWay({}, 1), std::invalid_argument);
    EXPECT_THROW(SprayWay({place}, 0), std::invalid_argument);
    EXPECT_THROW(SprayWay({place}, std::nan("")), std::invalid_argument);
    EXPECT_THROW(SprayWay({{{0, std::nan(""), 0}, {0, 0, 1}}}, 1), std::invalid_argument);
    EXPECT_THROW(SprayWay({{{0, 0, 0}, {0, 0, 0}}}, 1), std::overflow_error);
    EXPECT_EQ(SprayWay({place}, 1).length(), 0);
}

TEST(ThicknessColors, CoverageIsToldByTheTolerance)
{
    const ThicknessTarget target{0.1, 0.2};

    EXPECT_EQ(coverageOf(0, target), Coverage::Bare);
    EXPECT_EQ(coverageOf(std::nan(""), target), Coverage::Bare);
    EXPECT_EQ(coverageOf(0.079, target), Coverage::BelowTarget);
    EXPECT_EQ(coverageOf(0.081, target), Coverage::OnTarget);
    EXPECT_EQ(coverageOf(0.119, target), Coverage::OnTarget);
    EXPECT_EQ(coverageOf(0.121, target), Coverage::AboveTarget);
}

/// Of a colour of a screen: CIE 1976 L*, a*, b*, under D65.
std::array<double, 3> labOf(const rob::Colorf& color)
{
    const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
    const double r = linear(color.r), g = linear(color.g), b = linear(color.b);
    const auto f = [](double t) { return t > 216.0 / 24389 ? std::cbrt(t) : (24389.0 / 27 * t + 16) / 116; };
    const double x = f((0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.9505);
    const double y = f(0.2126 * r + 0.7152 * g + 0.0722 * b);
    const double z = f((0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.089);
    return {116 * y - 16, 500 * (x - y), 200 * (y - z)};
}

TEST(ThicknessColors, ScaleGrowsBrighterInEvenSteps)
{
    constexpr int steps = 20;
    double least = 1000, most = 0;
    for (int i = 0; i < steps; ++i) {
        const double from = labOf(scaleColor(static_cast<double>(i) / steps))[0];
        const double to = labOf(scaleColor(static_cast<double>(i + 1) / steps))[0];
        least = std::min(least, to - from);
        most = std::max(most, to - from);
    }
    EXPECT_GT(least, 2.0) << "of lightness, from 0 to 100";
    EXPECT_LT(most, 6.0);
}

TEST(ThicknessColors, OutsideOfTheScaleIsTheColourOfItsEnd)
{
    EXPECT_EQ(scaleColor(-1), scaleColor(0));
    EXPECT_EQ(scaleColor(7), scaleColor(1));
    EXPECT_EQ(scaleColor(std::nan("")), scaleColor(0));
}

} // namespace
} // namespace vrk::process
