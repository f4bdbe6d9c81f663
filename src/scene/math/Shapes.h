#pragma once

#include "scene/math/Pose.h"

#include <array>

namespace vrk::rob {

/// A segment from start to end.
template <typename T>
struct LineTemplate {
    PosTemplate<T> start;
    PosTemplate<T> end;

    constexpr LineTemplate() = default;
    constexpr LineTemplate(const PosTemplate<T>& start, const PosTemplate<T>& end) : start(start), end(end) {}

    constexpr LineTemplate transformed(const PoseTemplate<T>& pose) const { return {pose * start, pose * end}; }
    /// From start to end, unit length.
    /// @throws std::overflow_error "0-length vector cannot be normalized."
    DirTemplate<T> getDirection() const { return normalized(end - start); }
    T getLength() const { return (end - start).length(); }
};

template <typename T>
struct TriangleTemplate {
    PosTemplate<T> a;
    PosTemplate<T> b;
    PosTemplate<T> c;

    constexpr TriangleTemplate() = default;
    constexpr TriangleTemplate(const PosTemplate<T>& a, const PosTemplate<T>& b, const PosTemplate<T>& c)
        : a(a), b(b), c(c)
    {
    }

    constexpr TriangleTemplate transformed(const PoseTemplate<T>& pose) const { return {pose * a, pose * b, pose * c}; }
};

/// An arc of a circle, run through by a parameter from 0 to 1.
///
/// The sweep is what was asked for at construction: the arc through three points in their order, or a full turn.
class TPCircle {
public:
    /// The arc from `first` over `second` to `third`. Points on one line give an arc of no length at `first`.
    TPCircle(const PosTemplate<float>& first, const PosTemplate<float>& second, const PosTemplate<float>& third)
        : center(first)
    {
        const PosTemplate<double> a(first), b(second), c(third);
        const Vec3Template<double> u = b - a, v = c - a, n = u.cross(v);
        const double nn = n.squaredLength();
        if (nn <= zeroLength * zeroLength)
            return;
        // Circumcentre of a triangle, seen from its first corner: (|u|^2 v x n + |v|^2 n x u) / (2 |n|^2).
        const Vec3Template<double> toCenter =
            (v.cross(n) * u.squaredLength() + n.cross(u) * v.squaredLength()) / (2 * nn);
        center = a + toCenter;
        radius = toCenter.length();
        xAxis = DirTemplate<double>((a - center) / radius);
        const DirTemplate<double> zAxis = normalized(n);
        yAxis = DirTemplate<double>(zAxis.cross(xAxis));
        // The three points turn about n counter-clockwise, so the third lies between 0 and a full turn.
        sweep = angleOf(c);
    }

    /// The whole circle through the three points, starting and ending at `first`.
    static TPCircle FullTurn(const PosTemplate<float>& first, const PosTemplate<float>& second,
                             const PosTemplate<float>& third)
    {
        TPCircle circle(first, second, third);
        if (circle.radius > 0)
            circle.sweep = 2 * pi;
        return circle;
    }

    /// The point at parameter `t`, 0 at the start of the sweep and 1 at its end.
    Vec3Template<double> getPoint(double t) const
    {
        const double angle = t * sweep;
        return Vec3Template<double>(center) + xAxis * (radius * std::cos(angle)) + yAxis * (radius * std::sin(angle));
    }
    /// The direction of travel at `t`, unit length.
    DirTemplate<double> getTangent(double t) const
    {
        const double angle = t * sweep;
        return DirTemplate<double>(xAxis * -std::sin(angle) + yAxis * std::cos(angle));
    }
    /// The length of the stored sweep.
    double getLength() const { return radius * sweep; }
    PosTemplate<double> getCenter() const { return center; }

private:
    static constexpr double pi = 3.14159265358979323846;

    double angleOf(const PosTemplate<double>& p) const
    {
        const double angle = std::atan2((p - center).dot(yAxis), (p - center).dot(xAxis));
        return angle < 0 ? angle + 2 * pi : angle;
    }

    PosTemplate<double> center;
    DirTemplate<double> xAxis{1, 0, 0}; // from the centre to the start
    DirTemplate<double> yAxis{0, 1, 0};
    double radius = 0;
    double sweep = 0; // radians
};

using Linef = LineTemplate<float>;
using Trianglef = TriangleTemplate<float>;

} // namespace vrk::rob
