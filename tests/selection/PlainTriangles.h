#pragma once

#include "selection/SensitiveTriangleSet.h"

#include <cmath>
#include <optional>
#include <vector>

/// The ray test of triangles in plain steps and in a plain loop, to compare with.
namespace vrk::selection {

/// What is computed for one triangle: it is hit where the three edge functions have one sign and `t` is positive.
struct EdgeFunctions {
    float u, v, w;
    float t;
    rob::Posf point;

    bool isInside() const { return (u > 0 && v > 0 && w > 0) || (u < 0 && v < 0 && w < 0); }
    /// Whether the ray goes exactly through the border, which counts as a miss.
    bool isOnBorder() const
    {
        return (u == 0 || v == 0 || w == 0) && ((u >= 0 && v >= 0 && w >= 0) || (u <= 0 && v <= 0 && w <= 0));
    }
};

/// @param corners  from the last to the first, as `getTriangle` gives them.
inline EdgeFunctions edgeFunctions(const Ray& ray, const rob::Trianglef& corners)
{
    const rob::Vec3f d(ray.direction);
    const float x = std::abs(d.x), y = std::abs(d.y), z = std::abs(d.z);
    unsigned kz = 0;
    if (x > y)
        kz = x > z ? 0 : 2;
    else
        kz = y > z ? 1 : 2;
    const unsigned kx = (kz + 1) % 3, ky = (kx + 1) % 3;
    const float sx = -d[kx] / d[kz], sy = -d[ky] / d[kz], sz = 1.0f / d[kz];
    const rob::Vec3f a = corners.c - ray.origin, b = corners.b - ray.origin, c = corners.a - ray.origin;
    const float ax = a[kx] + a[kz] * sx, ay = a[ky] + a[kz] * sy;
    const float bx = b[kx] + b[kz] * sx, by = b[ky] + b[kz] * sy;
    const float cx = c[kx] + c[kz] * sx, cy = c[ky] + c[kz] * sy;
    EdgeFunctions f;
    f.u = cy * bx - cx * by;
    f.v = by * ax - bx * ay;
    f.w = cx * ay - cy * ax;
    const float det = f.u + f.v + f.w;
    const float ofA = f.u / det, ofC = f.v / det, ofB = f.w / det;
    f.t = ofB * b[kz] * sz + ofA * a[kz] * sz + ofC * c[kz] * sz;
    f.point = corners.b * ofB + corners.c * ofA + corners.a * ofC;
    return f;
}

struct PlainHit {
    unsigned triangle;
    float distance;
    rob::Posf point;
};

/// The nearest hit among `primitives`, the first of equally near ones: every one is tested.
inline std::optional<PlainHit> nearestByLoop(const SensitiveTriangleSet& set, const Ray& ray,
                                             const std::vector<BVHPrimitive*>& primitives)
{
    std::optional<PlainHit> best;
    for (const BVHPrimitive* primitive : primitives) {
        const auto& triangle = static_cast<const SensitiveIndexedTriangle&>(*primitive);
        rob::Trianglef corners;
        set.getTriangle(corners, triangle);
        const EdgeFunctions f = edgeFunctions(ray, corners);
        if (f.isInside() && f.t > 0 && f.t < (best ? best->distance : Result().distance))
            best = PlainHit{triangle.index, f.t, f.point};
    }
    return best;
}

} // namespace vrk::selection
