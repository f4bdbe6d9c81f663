#include "scene/math/Shapes.h"
#include "Near.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vrk::rob {
namespace {

using testing::StrEq;
using testing::ThrowsMessage;

const Posef quarterAboutZ(Posf(1, 0, 0), Rotationf(float(quarterTurn), Dirf(0, 0, 1)));

TEST(Line, HasDirectionAndLength)
{
    const Linef line(Posf(1, 1, 1), Posf(1, 1, 4));

    EXPECT_EQ(line.getDirection(), Dirf(0, 0, 1));
    EXPECT_EQ(line.getLength(), 3);
}

TEST(Line, DefaultHasNoLengthAndItsDirectionIsRefused)
{
    EXPECT_EQ(Linef().getLength(), 0);
    EXPECT_THAT([] { Linef().getDirection(); },
                ThrowsMessage<std::overflow_error>(StrEq("0-length vector cannot be normalized.")));
}

TEST(Line, PoseMovesBothEnds)
{
    const Linef moved = Linef(Posf(0, 0, 0), Posf(2, 0, 0)).transformed(quarterAboutZ);

    EXPECT_TRUE(isNear(moved.start, Posf(1, 0, 0)));
    EXPECT_TRUE(isNear(moved.end, Posf(1, 2, 0)));
}

TEST(Triangle, PoseMovesAllCorners)
{
    const Trianglef moved = Trianglef(Posf(0, 0, 0), Posf(1, 0, 0), Posf(0, 1, 5)).transformed(quarterAboutZ);

    EXPECT_TRUE(isNear(moved.a, Posf(1, 0, 0)));
    EXPECT_TRUE(isNear(moved.b, Posf(1, 1, 0)));
    EXPECT_TRUE(isNear(moved.c, Posf(0, 0, 5)));
}

TEST(TPCircle, ParameterRunsOverTheArcThroughTheThreePoints)
{
    const TPCircle circle(Posf(5, 0, 1), Posf(0, 5, 1), Posf(-5, 0, 1));

    EXPECT_TRUE(isNear(circle.getPoint(0), Posd(5, 0, 1)));
    EXPECT_TRUE(isNear(circle.getPoint(0.5), Posd(0, 5, 1)));
    EXPECT_TRUE(isNear(circle.getPoint(1), Posd(-5, 0, 1)));
    EXPECT_TRUE(isNear(circle.getCenter(), Posd(0, 0, 1)));
    EXPECT_NEAR(circle.getLength(), 5 * halfTurn, 1e-6);
}

TEST(TPCircle, TangentPointsTheWayOfTravel)
{
    const TPCircle circle(Posf(5, 0, 1), Posf(0, 5, 1), Posf(-5, 0, 1));

    EXPECT_TRUE(isNear(circle.getTangent(0), Dird(0, 1, 0)));
    EXPECT_TRUE(isNear(circle.getTangent(0.5), Dird(-1, 0, 0)));
    EXPECT_NEAR(circle.getTangent(0.3).length(), 1, 1e-12);
}

TEST(TPCircle, ArcOfMoreThanHalfACirclePassesTheMiddlePoint)
{
    const TPCircle circle(Posf(1, 0, 0), Posf(-1, 0, 0), Posf(0, -1, 0));

    EXPECT_NEAR(circle.getLength(), 1.5 * halfTurn, 1e-6);
    EXPECT_TRUE(isNear(circle.getPoint(2.0 / 3), Posd(-1, 0, 0)));
    EXPECT_TRUE(isNear(circle.getPoint(1), Posd(0, -1, 0)));
}

TEST(TPCircle, CentreAndLengthOfACircleInSpaceAreThoseOfTheTriangle)
{
    // Corners of the triangle that the unit vectors make: its centre is the third of their sum, each side sees 120 degrees.
    const TPCircle circle(Posf(6, 0, 0), Posf(0, 6, 0), Posf(0, 0, 6));

    EXPECT_TRUE(isNear(circle.getCenter(), Posd(2, 2, 2)));
    EXPECT_NEAR(circle.getLength(), std::sqrt(24.0) * 4 * halfTurn / 3, 1e-6);
    EXPECT_TRUE(isNear(circle.getPoint(0.5), Posd(0, 6, 0)));
    // Unequal sides: 3, 4, 5, so the hypotenuse is the diameter.
    const TPCircle right(Posf(3, 0, 7), Posf(0, 0, 7), Posf(0, 4, 7));
    EXPECT_TRUE(isNear(right.getCenter(), Posd(1.5, 2, 7)));
    EXPECT_NEAR(right.getLength(), 2.5 * halfTurn, 1e-6);
}

TEST(TPCircle, ReversedPointsRunTheSameArcBackwards)
{
    const Posf a(3, 0, 0), b(0, 3, 0), c(0, 0, 3);
    const TPCircle forwards(a, b, c);
    const TPCircle backwards(c, b, a);

    EXPECT_NEAR(forwards.getLength(), backwards.getLength(), 1e-6);
    for (double t : {0.0, 0.2, 0.7, 1.0})
        EXPECT_TRUE(isNear(forwards.getPoint(t), backwards.getPoint(1 - t), 1e-5)) << t;
}

TEST(TPCircle, FullTurnStartsAndEndsAtTheFirstPoint)
{
    const TPCircle circle = TPCircle::FullTurn(Posf(2, 0, 0), Posf(0, 2, 0), Posf(-2, 0, 0));

    EXPECT_NEAR(circle.getLength(), 2 * 2 * halfTurn, 1e-6);
    EXPECT_TRUE(isNear(circle.getPoint(0), Posd(2, 0, 0)));
    EXPECT_TRUE(isNear(circle.getPoint(0.25), Posd(0, 2, 0)));
    EXPECT_TRUE(isNear(circle.getPoint(1), Posd(2, 0, 0)));
}

TEST(TPCircle, PointsOnOneLineGiveAnArcOfNoLengthAtTheFirst)
{
    const Posf a(1, 2, 3);
    for (const TPCircle& circle : {TPCircle(a, Posf(2, 2, 3), Posf(3, 2, 3)), TPCircle(a, a, a),
                                   TPCircle::FullTurn(a, Posf(2, 2, 3), Posf(3, 2, 3))}) {
        EXPECT_EQ(circle.getLength(), 0);
        EXPECT_TRUE(isNear(circle.getPoint(0.7), Posd(1, 2, 3)));
        EXPECT_TRUE(isNear(circle.getCenter(), Posd(1, 2, 3)));
        EXPECT_NEAR(circle.getTangent(0.7).length(), 1, 1e-12);
    }
}

} // namespace
} // namespace vrk::rob
