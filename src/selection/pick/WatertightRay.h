#pragma once

#include "scene/math/Shapes.h"
#include "selection/SensitiveTriangleSet.h"
#include "selection/geometry/Float4.h"
#include "selection/pick/PickCamera.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>
#include <optional>

namespace vrk::selection {

/// A ray that is tested against the triangles of a set so that it leaks nowhere: Woop, Benthin, Wald, "Watertight
/// Ray/Triangle Intersection" (2013), in double precision.
///
/// The ray is sheared onto its main axis once; what is left for a triangle are three edge functions. An edge that two
/// triangles share has the same function in both, with opposite signs, and a function of zero belongs to both. Functions
/// within the rounding of zero count as zero: corners that are the same in two faces may differ in their last digits.
///
/// Four triangles are looked at together in single precision first, which lets pass all that double precision could hit.
class WatertightRay {
public:
    /// @param ray      in the coordinates of the set; its direction may be of any length.
    /// @param farthest  the largest coordinate of the set.
    WatertightRay(const PickRay& ray, double farthest) : origin(ray.origin)
    {
        const rob::Vec3d& d = ray.direction;
        const double x = std::abs(d.x), y = std::abs(d.y), z = std::abs(d.z);
        kz = x > y ? (x > z ? 0 : 2) : (y > z ? 1 : 2);
        kx = (kz + 1) % 3;
        ky = (kx + 1) % 3;
        sx = -d[kx] / d[kz];
        sy = -d[ky] / d[kz];
        sz = 1 / d[kz];
        const double largest = std::max({farthest, std::abs(origin.x), std::abs(origin.y), std::abs(origin.z)});
        blur = 1e-13 * largest;
        quickBlur = static_cast<float>(4e-6 * largest);
        for (unsigned axis = 0; axis < 3; ++axis)
            quickOrigin[axis] = static_cast<float>(origin[axis]);
        quickSx = static_cast<float>(sx);
        quickSy = static_cast<float>(sy);
    }

    /// The parameter of the ray where it meets the triangle, at the ray's origin or ahead.
    std::optional<double> meet(const rob::TriangleTemplate<double>& t) const
    {
        const rob::Vec3d a = t.a - origin, b = t.b - origin, c = t.c - origin;
        const double ax = a[kx] + a[kz] * sx, ay = a[ky] + a[kz] * sy;
        const double bx = b[kx] + b[kz] * sx, by = b[ky] + b[kz] * sy;
        const double cx = c[kx] + c[kz] * sx, cy = c[ky] + c[kz] * sy;
        // Each function is zero along one edge, and so it is the weight of the corner across.
        double u = cx * by - cy * bx, v = ax * cy - ay * cx, w = bx * ay - by * ax;
        const double zero =
            blur * std::max({std::abs(ax), std::abs(ay), std::abs(bx), std::abs(by), std::abs(cx), std::abs(cy)});
        const bool isOutside = (u < -zero || v < -zero || w < -zero) && (u > zero || v > zero || w > zero);
        if (isOutside || !(std::abs(u) + std::abs(v) + std::abs(w) > 0))
            return std::nullopt;
        // What rounding left on the wrong side weighs nothing, so that the hit lies within the triangle.
        if (u + v + w < 0) {
            u = -u;
            v = -v;
            w = -w;
        }
        u = std::max(u, 0.0);
        v = std::max(v, 0.0);
        w = std::max(w, 0.0);
        const double distance = (u * a[kz] + v * b[kz] + w * c[kz]) * sz / (u + v + w);
        return distance >= 0 ? std::optional(distance) : std::nullopt; // NaN too is none
    }

    /// A bit for each of four triangles that `meet` could hit.
    unsigned mayMeet(const rob::TriangleTemplate<float>* triangles) const
    {
        const auto at = [this, triangles](unsigned corner, unsigned axis) {
            return Float4{coordinate(triangles[0], corner, axis), coordinate(triangles[1], corner, axis),
                          coordinate(triangles[2], corner, axis), coordinate(triangles[3], corner, axis)} -
                   quickOrigin[axis];
        };
        const Float4 az = at(0, kz), bz = at(1, kz), cz = at(2, kz);
        const Float4 ax = at(0, kx) + az * quickSx, ay = at(0, ky) + az * quickSy;
        const Float4 bx = at(1, kx) + bz * quickSx, by = at(1, ky) + bz * quickSy;
        const Float4 cx = at(2, kx) + cz * quickSx, cy = at(2, ky) + cz * quickSy;
        const Float4 u = cx * by - cy * bx, v = ax * cy - ay * cx, w = bx * ay - by * ax;
        const Float4 size = largerOf(
            largerOf(largerOf(ax, -ax), largerOf(ay, -ay)),
            largerOf(largerOf(largerOf(bx, -bx), largerOf(by, -by)), largerOf(largerOf(cx, -cx), largerOf(cy, -cy))));
        const Float4 zero = size * quickBlur;
        const Int4 outside = ((u < -zero) | (v < -zero) | (w < -zero)) & ((u > zero) | (v > zero) | (w > zero));
        return ~bitsOf(outside) & 0xfu;
    }

private:
    static float coordinate(const rob::TriangleTemplate<float>& triangle, unsigned corner, unsigned axis)
    {
        const rob::PosTemplate<float>& p = corner == 0 ? triangle.a : corner == 1 ? triangle.b : triangle.c;
        return p[axis];
    }

    rob::Posd origin;
    unsigned kx, ky, kz;
    double sx, sy, sz;
    double blur;
    float quickOrigin[3];
    float quickSx, quickSy;
    float quickBlur;
};

/// Hands over each triangle of a set that a ray meets within `limit`: near ones first as far as the boxes tell, and all that
/// are as far as `limit`. The visitor lowers `limit` as it wants.
///
/// @param ray    in the coordinates of the set.
/// @param limit  a parameter of the ray.
/// @param visit  void(double distance, unsigned index).
template <typename Visit>
void walkTriangles(const SensitiveTriangleSet& set, const PickRay& ray, const double& limit, Visit&& visit)
{
    if (set.isEmpty())
        return;
    const double length = ray.direction.length();
    const visual::Ray narrow{rob::PosTemplate<float>(ray.origin), rob::DirTemplate<float>(ray.direction / length)};
    const visual::Box& bounds = set.getBounds();
    const WatertightRay exact(ray, std::max({std::abs(bounds.min.x), std::abs(bounds.min.y), std::abs(bounds.min.z),
                                             std::abs(bounds.max.x), std::abs(bounds.max.y), std::abs(bounds.max.z)}));
    const auto narrowed = [&] {
        constexpr double largest = std::numeric_limits<float>::max();
        return static_cast<float>(std::min(limit * length, largest)); // the tree's reach covers the rounding
    };
    const auto test = [&](unsigned index) {
        const std::optional<double> distance = exact.meet(set.getStoredTriangle(index));
        if (distance && *distance <= limit)
            visit(*distance, index);
    };
    float narrowLimit = narrowed();
    if (!set.getRayTree().serves(narrow)) { // coordinates beyond anything that is drawn
        walkRay(set.getRoot(), narrow, [&](const BVHPrimitive* primitive) {
            test(static_cast<const SensitiveIndexedTriangle*>(primitive)->index);
        });
        return;
    }
    rob::TriangleTemplate<float> corners[NearestHitTree::leafCapacity];
    set.getRayTree().walk(narrow, narrowLimit, [&](const unsigned* indices, unsigned count) {
        set.getTriangles(corners, indices, count);
        const unsigned ofLeaf = (1u << count) - 1;
        for (unsigned through = exact.mayMeet(corners) & ofLeaf; through != 0; through &= through - 1)
            test(indices[std::countr_zero(through)]);
        narrowLimit = narrowed();
    });
}

} // namespace vrk::selection
