#pragma once

#include "selection/geometry/Math.h"
#include "selection/geometry/Result.h"

namespace vrk::selection {

/// The steps of Math that are not part of its interface.
class MathSteps {
public:
    using Pos = rob::PosTemplate<float>;
    using Pos2 = rob::Vec2Template<float>;
    using Interval = Math::Interval;

    static float distanceOfPointToSurface(const Pos& p, const Pos& a, const rob::Vec3Template<float>& n)
    {
        return Math::distanceOfPointToSurface(p, a, n);
    }
    static bool edge2Edge2D(const Pos2& a, const Pos2& b, const Pos2& c, const Pos2& d)
    {
        return Math::edge2Edge2D(a, b, c, d);
    }
    static bool edge2TrianEdges(const Pos2& a, const Pos2& b, const Pos2& t0, const Pos2& t1, const Pos2& t2)
    {
        return Math::edge2TrianEdges(a, b, t0, t1, t2);
    }
    static Result edgeToEdge2D(const Pos2& p0, const Pos2& p1, const Pos2& q0, const Pos2& q1)
    {
        return Math::edgeToEdge2D(p0, p1, q0, q1);
    }
    static bool pointInTriangle2D(const Pos2& p, const Pos2& a, const Pos2& b, const Pos2& c)
    {
        return Math::pointInTriangle2D(p, a, b, c);
    }
    static bool pointInTriangle3D(const Pos& p, const Pos& a, const Pos& b, const Pos& c)
    {
        return Math::pointInTriangle3D(p, a, b, c);
    }
    static Interval computeTrianIntervals(const float (&p)[3], const float (&d)[3])
    {
        return Math::computeTrianIntervals(p, d);
    }
};

} // namespace vrk::selection
