#pragma once

#include "scene/math/Vec.h"

#include <algorithm>
#include <cmath>

namespace vrk::rob {

/// A unit quaternion in interface order: w first. Identity by default.
template <typename T>
struct OrientTemplate {
    T w{1};
    T x{};
    T y{};
    T z{};

    constexpr OrientTemplate() = default;
    constexpr OrientTemplate(T w, T x, T y, T z) : w(w), x(x), y(y), z(z) {}
    template <typename U>
    constexpr explicit OrientTemplate(const OrientTemplate<U>& o)
        : w(static_cast<T>(o.w)), x(static_cast<T>(o.x)), y(static_cast<T>(o.y)), z(static_cast<T>(o.z))
    {
    }
    constexpr bool operator==(const OrientTemplate&) const = default;
};

/// A rotation as a unit quaternion. Stored as x, y, z, w; its constructor takes w first. Angles are radians.
template <typename T>
struct RotationTemplate {
    T x{};
    T y{};
    T z{};
    T w{1};

    /// Identity.
    constexpr RotationTemplate() = default;
    constexpr RotationTemplate(T w, T x, T y, T z) : x(x), y(y), z(z), w(w) {}
    constexpr explicit RotationTemplate(const OrientTemplate<T>& o) : x(o.x), y(o.y), z(o.z), w(o.w) {}
    /// Turns about the fixed axes z, then y, then x: the product Rx(a) * Ry(b) * Rz(c).
    RotationTemplate(T a, T b, T c)
        : RotationTemplate(RotationTemplate(a, DirTemplate<T>(1, 0, 0)) * RotationTemplate(b, DirTemplate<T>(0, 1, 0)) *
                           RotationTemplate(c, DirTemplate<T>(0, 0, 1)))
    {
    }
    /// A turn by `angle` about `axis`, which must have unit length.
    RotationTemplate(T angle, const DirTemplate<T>& axis)
    {
        const T s = std::sin(angle / 2);
        x = axis.x * s;
        y = axis.y * s;
        z = axis.z * s;
        w = std::cos(angle / 2);
    }
    RotationTemplate(T angle, const Vec3Template<T>& axis) : RotationTemplate(angle, DirTemplate<T>(axis)) {}

    /// The shortest rotation that takes `from` to `to`, both of unit length but for rounding. Exactly opposite directions
    /// turn half a circle about an axis at right angles to them.
    static RotationTemplate From2Dirs(const DirTemplate<T>& from, const DirTemplate<T>& to)
    {
        // In doubles: of directions that are almost opposite, the axis is what is left of numbers that cancel.
        const Vec3Template<double> a = atUnitLength(from);
        const Vec3Template<double> b = atUnitLength(to);
        const double cosine = a.dot(b);
        if (cosine >= 0) {
            const Vec3Template<double> axis = a.cross(b);
            return fromDoubles(1 + cosine, axis);
        }
        // What keeps the two from being opposite. Its subtraction loses nothing, and its cross product with `a` is that
        // of `b`, without the rounding of two long vectors that lie on one line.
        const Vec3Template<double> gap = a + b;
        const Vec3Template<double> axis = a.cross(gap);
        const double sine = axis.length();
        if (sine < noAxis)
            return fromDoubles(0, anyNormal(a));
        const double halfCosine = gap.length() / 2;
        return fromDoubles(halfCosine, axis * (std::sqrt(1 - halfCosine * halfCosine) / sine));
    }

    /// The rotation whose local axes are the three given ones, which must be orthonormal and right-handed.
    static RotationTemplate FromAxes(const DirTemplate<T>& ax, const DirTemplate<T>& ay, const DirTemplate<T>& az)
    {
        // The largest of the four components is found first, so that nothing is divided by a small number: Shepperd,
        // "Quaternion from Rotation Matrix" (1978).
        const T trace = ax.x + ay.y + az.z;
        if (trace > 0) {
            const T s = std::sqrt(trace + 1) * 2;
            return {s / 4, (ay.z - az.y) / s, (az.x - ax.z) / s, (ax.y - ay.x) / s};
        }
        if (ax.x > ay.y && ax.x > az.z) {
            const T s = std::sqrt(1 + ax.x - ay.y - az.z) * 2;
            return {(ay.z - az.y) / s, s / 4, (ay.x + ax.y) / s, (az.x + ax.z) / s};
        }
        if (ay.y > az.z) {
            const T s = std::sqrt(1 + ay.y - ax.x - az.z) * 2;
            return {(az.x - ax.z) / s, (ay.x + ax.y) / s, s / 4, (az.y + ay.z) / s};
        }
        const T s = std::sqrt(1 + az.z - ax.x - ay.y) * 2;
        return {(ax.y - ay.x) / s, (az.x + ax.z) / s, (az.y + ay.z) / s, s / 4};
    }

    constexpr RotationTemplate inverse() const { return {w, -x, -y, -z}; }
    constexpr OrientTemplate<T> orient() const { return {w, x, y, z}; }

    RotationTemplate normalized() const
    {
        const T n = std::sqrt(x * x + y * y + z * z + w * w);
        return {w / n, x / n, y / n, z / n};
    }

    /// This rotation after `o`.
    constexpr RotationTemplate operator*(const RotationTemplate& o) const
    {
        return {w * o.w - x * o.x - y * o.y - z * o.z, w * o.x + x * o.w + y * o.z - z * o.y,
                w * o.y + y * o.w + z * o.x - x * o.z, w * o.z + z * o.w + x * o.y - y * o.x};
    }
    constexpr PosTemplate<T> operator*(const PosTemplate<T>& p) const { return rotated(p); }
    constexpr DirTemplate<T> operator*(const DirTemplate<T>& d) const { return rotated(d); }
    constexpr Vec3Template<T> operator*(const Vec3Template<T>& v) const { return rotated(v); }
    constexpr DirTemplate<T> rotateDir(const DirTemplate<T>& d) const { return rotated(d); }

    /// Whether both turn alike: within 1e-6 on each component, the sign of the quaternion aside.
    bool isApprox(const RotationTemplate& o) const
    {
        const auto far = [](T a, T b) { return std::abs(a - b) > T(1e-6); };
        const bool same = !(far(x, o.x) || far(y, o.y) || far(z, o.z) || far(w, o.w));
        const bool opposite = !(far(x, -o.x) || far(y, -o.y) || far(z, -o.z) || far(w, -o.w));
        return same || opposite;
    }
    constexpr bool operator==(const RotationTemplate&) const = default;

private:
    static constexpr double noAxis = 1e-15; ///< a sine below this is rounding, and tells no axis

    static Vec3Template<double> atUnitLength(const DirTemplate<T>& direction)
    {
        const Vec3Template<double> v(direction);
        const double length = v.length();
        return length > 0 ? v / length : v;
    }
    static DirTemplate<double> anyNormal(const Vec3Template<double>& unit)
    {
        // No unit vector has both x and y near 1.
        const Vec3Template<double> helper =
            std::abs(unit.x) < 0.6 ? Vec3Template<double>(1, 0, 0) : Vec3Template<double>(0, 1, 0);
        return rob::normalized(unit.cross(helper));
    }
    /// The rotation of a quaternion of any length.
    template <template <typename> class Triple>
    static RotationTemplate fromDoubles(double w, const Triple<double>& v)
    {
        const double n = std::sqrt(w * w + v.squaredLength());
        return {static_cast<T>(w / n), static_cast<T>(v.x / n), static_cast<T>(v.y / n), static_cast<T>(v.z / n)};
    }

    template <template <typename> class Triple>
    constexpr Triple<T> rotated(const Triple<T>& v) const
    {
        const Vec3Template<T> q(x, y, z);
        const Vec3Template<T> t = q.cross(v) * T(2);
        const Vec3Template<T> u = q.cross(t);
        return {v.x + w * t.x + u.x, v.y + w * t.y + u.y, v.z + w * t.z + u.z};
    }
};

using Orientf = OrientTemplate<float>;
using Orientd = OrientTemplate<double>;
using Rotationf = RotationTemplate<float>;
using Rotationd = RotationTemplate<double>;

} // namespace vrk::rob
