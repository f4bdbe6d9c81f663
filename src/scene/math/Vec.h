#pragma once

#include <cmath>
#include <stdexcept>

namespace vrk::rob {

/// A vector of this length or less has no direction.
inline constexpr double zeroLength = 1e-7;

/// A pair, mostly of screen or surface parameters.
template <typename T>
struct Vec2Template {
    T x{};
    T y{};

    constexpr Vec2Template() = default;
    constexpr Vec2Template(T x, T y) : x(x), y(y) {}

    constexpr bool operator==(const Vec2Template&) const = default;
    constexpr Vec2Template operator+(const Vec2Template& o) const { return {x + o.x, y + o.y}; }
    constexpr Vec2Template operator-(const Vec2Template& o) const { return {x - o.x, y - o.y}; }
    constexpr Vec2Template operator*(T s) const { return {x * s, y * s}; }
    constexpr T dot(const Vec2Template& o) const { return x * o.x + y * o.y; }
    T length() const { return std::sqrt(dot(*this)); }
};

/// What the three kinds of triple share: `Self<T>` has the fields x, y and z in this order and no others.
///
/// A point, a direction and a free vector differ in what may be done with them, so each is a type of its own; a
/// difference or a cross product is always a free vector.
template <template <typename> class Self, typename T>
struct TripleOperations;

template <typename T>
struct Vec3Template;

template <template <typename> class Self, typename T>
struct TripleOperations {
    template <template <typename> class Other>
    constexpr T dot(const Other<T>& o) const
    {
        return self().x * o.x + self().y * o.y + self().z * o.z;
    }
    template <template <typename> class Other>
    constexpr Vec3Template<T> cross(const Other<T>& o) const;
    T length() const { return std::sqrt(dot(self())); }
    constexpr T squaredLength() const { return dot(self()); }
    bool isFinite() const { return std::isfinite(self().x) && std::isfinite(self().y) && std::isfinite(self().z); }

    constexpr T operator[](unsigned axis) const { return axis == 0 ? self().x : axis == 1 ? self().y : self().z; }
    constexpr Self<T> operator-() const { return {-self().x, -self().y, -self().z}; }

private:
    constexpr const Self<T>& self() const { return static_cast<const Self<T>&>(*this); }
};

/// A free vector.
template <typename T>
struct Vec3Template : TripleOperations<Vec3Template, T> {
    T x{};
    T y{};
    T z{};

    using TripleOperations<Vec3Template, T>::operator-;

    constexpr Vec3Template() = default;
    constexpr Vec3Template(T x, T y, T z) : x(x), y(y), z(z) {}
    /// Any other triple as a free vector, converted component by component.
    template <typename Triple>
    requires requires(const Triple& t) { t.x, t.y, t.z; }
    constexpr explicit Vec3Template(const Triple& t)
        : x(static_cast<T>(t.x)), y(static_cast<T>(t.y)), z(static_cast<T>(t.z))
    {
    }

    constexpr bool operator==(const Vec3Template& o) const { return x == o.x && y == o.y && z == o.z; }
    constexpr Vec3Template operator+(const Vec3Template& o) const { return {x + o.x, y + o.y, z + o.z}; }
    constexpr Vec3Template operator-(const Vec3Template& o) const { return {x - o.x, y - o.y, z - o.z}; }
    constexpr Vec3Template operator*(T s) const { return {x * s, y * s, z * s}; }
    constexpr Vec3Template operator/(T s) const { return {x / s, y / s, z / s}; }
    constexpr Vec3Template& operator+=(const Vec3Template& o) { return *this = *this + o; }
    constexpr Vec3Template& operator-=(const Vec3Template& o) { return *this = *this - o; }
};

/// A direction. Its producers keep it at unit length; the type does not enforce it.
template <typename T>
struct DirTemplate : TripleOperations<DirTemplate, T> {
    T x{};
    T y{};
    T z{};

    using TripleOperations<DirTemplate, T>::operator-;

    constexpr DirTemplate() = default;
    constexpr DirTemplate(T x, T y, T z) : x(x), y(y), z(z) {}
    template <typename Triple>
    requires requires(const Triple& t) { t.x, t.y, t.z; }
    constexpr explicit DirTemplate(const Triple& t)
        : x(static_cast<T>(t.x)), y(static_cast<T>(t.y)), z(static_cast<T>(t.z))
    {
    }

    constexpr bool operator==(const DirTemplate& o) const { return x == o.x && y == o.y && z == o.z; }
    constexpr Vec3Template<T> operator+(const DirTemplate& o) const { return {x + o.x, y + o.y, z + o.z}; }
    constexpr Vec3Template<T> operator-(const DirTemplate& o) const { return {x - o.x, y - o.y, z - o.z}; }
    constexpr Vec3Template<T> operator*(T s) const { return {x * s, y * s, z * s}; }
};

/// A point.
template <typename T>
struct PosTemplate : TripleOperations<PosTemplate, T> {
    T x{};
    T y{};
    T z{};

    using TripleOperations<PosTemplate, T>::operator-;

    constexpr PosTemplate() = default;
    constexpr PosTemplate(T x, T y, T z) : x(x), y(y), z(z) {}
    template <typename Triple>
    requires requires(const Triple& t) { t.x, t.y, t.z; }
    constexpr explicit PosTemplate(const Triple& t)
        : x(static_cast<T>(t.x)), y(static_cast<T>(t.y)), z(static_cast<T>(t.z))
    {
    }

    constexpr bool operator==(const PosTemplate& o) const { return x == o.x && y == o.y && z == o.z; }
    constexpr PosTemplate operator+(const PosTemplate& o) const { return {x + o.x, y + o.y, z + o.z}; }
    constexpr PosTemplate operator+(const Vec3Template<T>& o) const { return {x + o.x, y + o.y, z + o.z}; }
    constexpr PosTemplate operator-(const Vec3Template<T>& o) const { return {x - o.x, y - o.y, z - o.z}; }
    constexpr Vec3Template<T> operator-(const PosTemplate& o) const { return {x - o.x, y - o.y, z - o.z}; }
    constexpr PosTemplate operator*(T s) const { return {x * s, y * s, z * s}; }
};

template <template <typename> class Self, typename T>
template <template <typename> class Other>
constexpr Vec3Template<T> TripleOperations<Self, T>::cross(const Other<T>& o) const
{
    const Self<T>& a = self();
    return {a.y * o.z - a.z * o.y, a.z * o.x - a.x * o.z, a.x * o.y - a.y * o.x};
}

/// The direction of `v`, a vector, point or direction of any length.
/// @throws std::overflow_error "0-length vector cannot be normalized." if its length is 1e-7 or less.
template <template <typename> class Triple, typename T>
DirTemplate<T> normalized(const Triple<T>& v)
{
    const T length = v.length();
    if (length <= static_cast<T>(zeroLength))
        throw std::overflow_error("0-length vector cannot be normalized.");
    return {v.x / length, v.y / length, v.z / length};
}

using Vec2f = Vec2Template<float>;
using Vec3f = Vec3Template<float>;
using Vec3d = Vec3Template<double>;
using Dirf = DirTemplate<float>;
using Dird = DirTemplate<double>;
using Posf = PosTemplate<float>;
using Posd = PosTemplate<double>;

static_assert(sizeof(Posf) == 3 * sizeof(float) && sizeof(Dirf) == 3 * sizeof(float));

} // namespace vrk::rob
