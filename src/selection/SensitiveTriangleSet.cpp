#include "selection/SensitiveTriangleSet.h"

#include "selection/geometry/BVHBuilder.h"
#include "selection/geometry/BVHWalk.h"
#include "selection/geometry/Math.h"

#include <cmath>
#include <utility>

namespace vrk::selection {
namespace {

/// The watertight test of a ray against triangles: Woop, Benthin, Wald, "Watertight Ray/Triangle Intersection" (2013). The
/// ray is sheared onto its main axis once; what is left for a triangle are three edge functions.
///
/// An edge function that is exactly zero is a miss here. So a ray through an edge that two triangles share may miss both.
class ShearedRay {
public:
    explicit ShearedRay(const visual::Ray& ray) : origin(ray.origin), kz(mainAxis(ray.direction))
    {
        const rob::Vec3Template<float> d(ray.direction);
        kx = (kz + 1) % 3;
        ky = (kx + 1) % 3;
        sx = -d[kx] / d[kz];
        sy = -d[ky] / d[kz];
        sz = 1.0f / d[kz];
    }

    /// @param corners  as `getTriangle` gives them.
    /// @param limit    what a hit must not be farther than.
    bool meets(const rob::TriangleTemplate<float>& corners, float limit, SensitiveTriangleSet::RayHit& hit) const
    {
        const rob::Vec3Template<float> a = corners.c - origin, b = corners.b - origin, c = corners.a - origin;
        const float ax = a[kx] + a[kz] * sx, ay = a[ky] + a[kz] * sy;
        const float bx = b[kx] + b[kz] * sx, by = b[ky] + b[kz] * sy;
        const float cx = c[kx] + c[kz] * sx, cy = c[ky] + c[kz] * sy;
        const float u = cy * bx - cx * by;
        const float v = by * ax - bx * ay;
        const float w = cx * ay - cy * ax;
        if (!((u > 0 && v > 0 && w > 0) || (u < 0 && v < 0 && w < 0)))
            return false;
        // Each function is zero along one edge, and so it is the weight of the corner across.
        const float det = u + v + w;
        const float ofA = u / det, ofC = v / det, ofB = w / det;
        const float t = ofB * b[kz] * sz + ofA * a[kz] * sz + ofC * c[kz] * sz;
        if (!(t > 0 && t <= limit))
            return false;
        hit.distance = t;
        hit.point = corners.b * ofB + corners.c * ofA + corners.a * ofC;
        return true;
    }

private:
    static unsigned mainAxis(const rob::DirTemplate<float>& d)
    {
        const float x = std::abs(d.x), y = std::abs(d.y), z = std::abs(d.z);
        if (x > y)
            return x > z ? 0 : 2;
        return y > z ? 1 : 2;
    }

    rob::PosTemplate<float> origin;
    unsigned kx, ky, kz;
    float sx, sy, sz;
};

/// The box that a triangle has in its set.
visual::Box boxOf(const rob::TriangleTemplate<float>& triangle)
{
    visual::Box box;
    for (const rob::PosTemplate<float>& corner : {triangle.a, triangle.b, triangle.c})
        box.addPoint(corner);
    box.expand();
    return box;
}

const SensitiveIndexedTriangle& asTriangle(const BVHPrimitive* primitive)
{
    return *static_cast<const SensitiveIndexedTriangle*>(primitive);
}

} // namespace

SensitiveTriangleSet::~SensitiveTriangleSet()
{
    primitives.clear();
}

SensitiveIndexedTriangle* SensitiveTriangleSet::makeTriangles(std::size_t count)
{
    triangles = std::make_unique<SensitiveIndexedTriangle[]>(count);
    primitives.resize(count);
    for (std::size_t i = 0; i < count; ++i)
        primitives[i] = &triangles[i];
    return triangles.get();
}

void SensitiveTriangleSet::keepFirst(std::size_t count)
{
    primitives.resize(count);
}

void SensitiveTriangleSet::buildHierarchy()
{
    bvh = BVHBuilder(this).build();
    forRays.build(bvh.root, [](const BVHPrimitive* primitive) { return asTriangle(primitive).index; });
}

void SensitiveTriangleSet::getTriangles(rob::TriangleTemplate<float>* triangles, const unsigned* indices,
                                        unsigned count) const
{
    SensitiveIndexedTriangle triangle;
    for (unsigned i = 0; i < count; ++i) {
        triangle.index = indices[i];
        getTriangle(triangles[i], triangle);
    }
}

void SensitiveTriangleSet::takePose(const rob::PoseTemplate<float>& newPose)
{
    pose = newPose;
    inversePose = newPose.inverse();
}

void SensitiveTriangleSet::nearestOfLine(Result& result, const rob::LineTemplate<float>& line) const
{
    result = Result();
    rob::TriangleTemplate<float> triangle;
    walkLine(bvh.root, line, [&](const BVHPrimitive* primitive) {
        getTriangle(triangle, asTriangle(primitive));
        std::swap(triangle.a, triangle.c); // back to the order in which they are stored
        const Result found = Math::Intersect(line, triangle);
        if (!found.hit || !(found.distance < result.distance))
            return;
        result.hit = true;
        result.distance = found.distance;
        result.position = pose * found.position;
        result.localPosition = found.position;
    });
}

void SensitiveTriangleSet::anyOfTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const
{
    result = Result();
    rob::TriangleTemplate<float> mine;
    walkTriangle(bvh.root, triangle, [&](const BVHPrimitive* primitive) {
        getTriangle(mine, asTriangle(primitive));
        result.hit = Math::Intersect(triangle, mine);
        return !result.hit;
    });
}

void SensitiveTriangleSet::nearestOfRay(Result& result, const visual::Ray& ray) const
{
    result = Result();
    RayHit hit;
    if (!nearestOfRay(hit, ray, result.distance))
        return;
    result.hit = true;
    result.distance = hit.distance;
    result.localPosition = pose * hit.point;
    result.position = result.localPosition;
}

/// The answer does not depend on the order in which the triangles are tested, but among equally near ones: these are
/// tested again, in the order of the hierarchy.
bool SensitiveTriangleSet::nearestOfRay(RayHit& hit, const visual::Ray& ray, float limit) const
{
    const ShearedRay sheared(ray);
    const RayBoxTest boxTest(ray);
    const float before = limit;
    bool isTied = false;
    rob::TriangleTemplate<float> triangles[BVHLeaf::capacity];
    RayHit found;
    forRays.walk(ray, limit, [&](const unsigned* indices, unsigned count) {
        getTriangles(triangles, indices, count);
        for (unsigned i = 0; i < count; ++i) {
            // No triangle is hit whose own box is missed, as it can be where a unit is less than the rounding.
            if (!sheared.meets(triangles[i], limit, found) || !boxTest(boxOf(triangles[i])))
                continue;
            isTied = found.distance == limit;
            if (!isTied) {
                hit = found;
                limit = found.distance;
            }
        }
    });
    if (!(limit < before))
        return false;
    return !isTied || nearestInOrder(hit, ray, before);
}

bool SensitiveTriangleSet::nearestInOrder(RayHit& hit, const visual::Ray& ray, float limit) const
{
    const ShearedRay sheared(ray);
    const float before = limit;
    rob::TriangleTemplate<float> triangle;
    RayHit found;
    walkRayWithin(bvh.root, ray, limit, [&](const BVHPrimitive* primitive) {
        getTriangle(triangle, asTriangle(primitive));
        if (!sheared.meets(triangle, limit, found) || found.distance == limit)
            return;
        hit = found;
        limit = found.distance;
    });
    return limit < before;
}

} // namespace vrk::selection
