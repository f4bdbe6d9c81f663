#pragma once

#include "platform/common/Export.h"
#include "scene/math/Shapes.h"

#include <stdexcept>
#include <utility>

namespace vrk::selection {

struct Result;

/// Thrown where a surface normal is asked of something that has none.
class VRK_EXPORT SurfaceNormalNotAvailable : public std::logic_error {
public:
    SurfaceNormalNotAvailable();
    ~SurfaceNormalNotAvailable() override;
};

/// Tests between points, lines and triangles, in single precision.
///
/// Thread: any; nothing is kept between calls.
/// Units: the caller's. `epsilon` is compared as it stands, also with areas and volumes.
///
/// Whatever normalises a vector throws std::overflow_error "0-length vector cannot be normalized." for one of length
/// 1e-7 or less.
class VRK_EXPORT Math {
public:
    using Pos = rob::PosTemplate<float>;
    using Dir = rob::DirTemplate<float>;
    using Line = rob::LineTemplate<float>;
    using Triangle = rob::TriangleTemplate<float>;

    static constexpr float epsilon = 0.001f;

    static constexpr bool isZero(float v) { return epsilon > v && v > -epsilon; }
    static constexpr bool isEqual(float a, float b)
    {
        const float difference = a - b;
        return epsilon > (difference < 0 ? -difference : difference);
    }
    /// Puts the smaller one first.
    static constexpr void sort(float& a, float& b)
    {
        if (a > b)
            std::swap(a, b);
    }

    /// From `p` to the endless line through `a` and `b`, which must differ.
    static float DistancePointLine(const Pos& p, const Pos& a, const Pos& b);
    /// From `p` to the endless line through `o` along `dir`, of any length but 0.
    static float DistancePointLine(const Pos& p, const Pos& o, const Dir& dir);
    static float DistancePointPlane(const Pos& p, const Pos& a, const Pos& b, const Pos& c);
    /// Positive on the side from which a, b, c turn counter-clockwise. The three must span a plane.
    static float SignedDistancePointPlane(const Pos& p, const Pos& a, const Pos& b, const Pos& c);
    /// Whether `p` lies on the side that `n` points to; the plane itself does not.
    static bool PointOutsideOfPlane(const Pos& p, const Pos& o, const Dir& n);
    /// Whether `p` lies above the plane of a, b, c, seen from `a` by more than an angle of about 0.001, and how far.
    /// (false, 0) where not, and where the three span no area or `p` is at `a`.
    static std::pair<bool, float> PointOutsideOfPlane(const Pos& p, const Pos& a, const Pos& b, const Pos& c);

    /// A common point of the two triangles. (0, 0, 0) where none is found, which a caller cannot tell from the origin.
    static Pos GetIntersectionPoint(const Pos& a0, const Pos& a1, const Pos& a2, const Pos& b0, const Pos& b1,
                                    const Pos& b2);
    /// Where the line meets the triangle, both sides and the border included. Fills hit, distance as the fraction of
    /// the line, and both positions.
    ///
    /// The test for parallel takes the edges as they are, so very small triangles count as parallel to every line. Of a
    /// line in the plane, its start and its crossings with the border are looked at. A triangle of no area is missed.
    static Result Intersect(const Line& line, const Triangle& triangle);
    /// Whether the two have a point in common.
    /// @throws std::logic_error "Two triangles are on the same plane" where rounding makes the distances contradict
    ///         each other.
    static bool Intersect(const Triangle& a, const Triangle& b);

private:
    friend class MathSteps; // the tests look at single steps

    using Pos2 = rob::Vec2Template<float>;
    using Vec = rob::Vec3Template<float>;

    /// The line of both planes, cut by one triangle, with the divisions put off.
    struct Interval {
        float a, b, c, x0, x1;
    };

    static float distanceOfPointToSurface(const Pos& p, const Pos& a, const Vec& n);
    static bool edge2Edge2D(const Pos2& a, const Pos2& b, const Pos2& c, const Pos2& d);
    static bool edge2TrianEdges(const Pos2& a, const Pos2& b, const Pos2& t0, const Pos2& t1, const Pos2& t2);
    static Result edgeToEdge2D(const Pos2& p0, const Pos2& p1, const Pos2& q0, const Pos2& q1);
    static Result lineToTriangle2D(const Line& line, const Triangle& triangle);
    static bool pointInTriangle2D(const Pos2& p, const Pos2& a, const Pos2& b, const Pos2& c);
    static bool pointInTriangle3D(const Pos& p, const Pos& a, const Pos& b, const Pos& c);
    static bool trian2Trian2D(const Vec& n, const Triangle& a, const Triangle& b);
    static Interval computeTrianIntervals(const float (&p)[3], const float (&d)[3]);
};

} // namespace vrk::selection
