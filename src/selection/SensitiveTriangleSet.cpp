#include "selection/SensitiveTriangleSet.h"

#include "selection/geometry/BVHBuilder.h"
#include "selection/geometry/BVHWalk.h"
#include "selection/geometry/Math.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <mutex>
#include <type_traits>
#include <utility>

namespace vrk::selection {
namespace {

/// The watertight test of a ray against triangles: Woop, Benthin, Wald, "Watertight Ray/Triangle Intersection" (2013). The
/// ray is sheared onto its main axis once; what is left for a triangle are three edge functions.
///
/// An edge function that is exactly zero is a miss here. So a ray through an edge that two triangles share may miss both.
class ShearedRay {
public:
    using Triangle = rob::TriangleTemplate<float>;
    explicit ShearedRay(const visual::Ray& ray)
        : origin{ray.origin.x, ray.origin.y, ray.origin.z}, kz(mainAxis(ray.direction))
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
    bool meets(const Triangle& corners, float limit, SensitiveTriangleSet::RayHit& hit) const
    {
        const auto [u, v, w, az, bz, cz] =
            edges<float>([&corners](unsigned corner, unsigned axis) { return coordinate(corners, corner, axis); });
        if (!((u > 0 && v > 0 && w > 0) || (u < 0 && v < 0 && w < 0)))
            return false;
        // Each function is zero along one edge, and so it is the weight of the corner across.
        const float det = u + v + w;
        const float ofA = u / det, ofC = v / det, ofB = w / det;
        const float t = ofB * bz * sz + ofA * az * sz + ofC * cz * sz;
        if (!(t > 0 && t <= limit))
            return false;
        hit.distance = t;
        hit.point = corners.b * ofB + corners.c * ofA + corners.a * ofC;
        return true;
    }

    /// Which of four triangles have the ray's line inside, by the numbers that `meets` has: a bit for each.
    unsigned goesThrough(const Triangle* triangles) const
    {
        const auto [u, v, w, az, bz, cz] = edges<Float4>([triangles](unsigned corner, unsigned axis) {
            return Float4{coordinate(triangles[0], corner, axis), coordinate(triangles[1], corner, axis),
                          coordinate(triangles[2], corner, axis), coordinate(triangles[3], corner, axis)};
        });
        return bitsOf(((u > 0) & (v > 0) & (w > 0)) | ((u < 0) & (v < 0) & (w < 0)));
    }

private:
    /// The edge functions, and the corners along the main axis as the origin of the ray sees them.
    template <typename Number>
    struct Edges {
        Number u, v, w, az, bz, cz;
    };

    /// @param at  Number(unsigned corner, unsigned axis), with the corners from the last to the first.
    template <typename Number, typename At>
    Edges<Number> edges(const At& at) const
    {
        constexpr unsigned a = 2, b = 1, c = 0;
        const Number az = at(a, kz) - origin[kz], bz = at(b, kz) - origin[kz], cz = at(c, kz) - origin[kz];
        const Number ax = (at(a, kx) - origin[kx]) + az * sx, ay = (at(a, ky) - origin[ky]) + az * sy;
        const Number bx = (at(b, kx) - origin[kx]) + bz * sx, by = (at(b, ky) - origin[ky]) + bz * sy;
        const Number cx = (at(c, kx) - origin[kx]) + cz * sx, cy = (at(c, ky) - origin[ky]) + cz * sy;
        return {cy * bx - cx * by, by * ax - bx * ay, cx * ay - cy * ax, az, bz, cz};
    }

    static float coordinate(const Triangle& triangle, unsigned corner, unsigned axis)
    {
        static_assert(sizeof(Triangle) == 9 * sizeof(float) && std::is_standard_layout_v<Triangle>);
        float value;
        std::memcpy(&value, reinterpret_cast<const char*>(&triangle) + (3 * corner + axis) * sizeof value,
                    sizeof value);
        return value;
    }

    static unsigned mainAxis(const rob::DirTemplate<float>& d)
    {
        const float x = std::abs(d.x), y = std::abs(d.y), z = std::abs(d.z);
        if (x > y)
            return x > z ? 0 : 2;
        return y > z ? 1 : 2;
    }

    float origin[3];
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
    constexpr std::size_t largeSet = 16384;
    bounds = Box();
    std::mutex merging;
    forRays.build(primitives.size(), [&](std::size_t begin, std::size_t end, NearestHitTree::Reference* out) {
        const Box ofThese = takeReferences(begin, end, out);
        const std::lock_guard lock(merging);
        bounds.addBox(ofThese);
    });
    if (primitives.size() < largeSet)
        bvh = BVHBuilder(this).build();
    else
        buildWhenAsked();
}

/// Returns the box of the boxes.
visual::Box SensitiveTriangleSet::takeReferences(std::size_t begin, std::size_t end,
                                                 NearestHitTree::Reference* out) const
{
    constexpr unsigned together = 64;
    rob::TriangleTemplate<float> corners[together];
    unsigned indices[together];
    Box all;
    while (begin < end) {
        const auto count = static_cast<unsigned>(std::min<std::size_t>(together, end - begin));
        for (unsigned i = 0; i < count; ++i)
            indices[i] = asTriangle(primitives[begin + i]).index;
        getTriangles(corners, indices, count);
        for (unsigned i = 0; i < count; ++i, ++begin, ++out) {
            const BVHPrimitive& primitive = *primitives[begin];
            *out = NearestHitTree::Reference();
            if (!primitive.enabled || !primitive.box.isValid()) // as the container's hierarchy decides it
                continue;
            *out = NearestHitTree::Reference(corners[i], indices[i]);
            all.addBox(primitive.box);
        }
    }
    return all;
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

void SensitiveTriangleSet::readTriangles(std::size_t begin, unsigned count, rob::TriangleTemplate<float>* out) const
{
    unsigned indices[64];
    for (unsigned i = 0; i < count; ++i)
        indices[i] = asTriangle(primitives[begin + i]).index;
    getTriangles(out, indices, count);
}

rob::TriangleTemplate<double> SensitiveTriangleSet::getStoredTriangle(unsigned index) const
{
    rob::TriangleTemplate<float> triangle;
    getTriangles(&triangle, &index, 1);
    return {rob::PosTemplate<double>(triangle.a), rob::PosTemplate<double>(triangle.b),
            rob::PosTemplate<double>(triangle.c)};
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
    walkLine(getRoot(), line, [&](const BVHPrimitive* primitive) {
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
    walkTriangle(getRoot(), triangle, [&](const BVHPrimitive* primitive) {
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
/// tested again, in the order of the container's hierarchy.
bool SensitiveTriangleSet::nearestOfRay(RayHit& hit, const visual::Ray& ray, float limit) const
{
    if (!ray.origin.isFinite() || !ray.direction.isFinite()) // it meets nothing
        return false;
    if (!forRays.serves(ray))
        return nearestInOrder(hit, ray, limit);
    const ShearedRay sheared(ray);
    const RayBoxTest boxTest(ray);
    const float before = limit;
    bool isTied = false;
    // A leaf with fewer leaves behind what was there before, which is tested with the others and not looked at.
    rob::TriangleTemplate<float> triangles[NearestHitTree::leafCapacity];
    RayHit found;
    forRays.walk(ray, limit, [&](const unsigned* indices, unsigned count) {
        getTriangles(triangles, indices, count);
        const unsigned ofLeaf = (1u << count) - 1;
        for (unsigned through = sheared.goesThrough(triangles) & ofLeaf; through != 0; through &= through - 1) {
            const auto i = static_cast<unsigned>(std::countr_zero(through));
            // No triangle is hit whose own box is missed: by a ray that counts as parallel to an axis, or where the unit
            // that the box is larger is less than the rounding.
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
    walkRayWithin(getRoot(), ray, limit, [&](const BVHPrimitive* primitive) {
        getTriangle(triangle, asTriangle(primitive));
        if (!sheared.meets(triangle, limit, found) || found.distance == limit)
            return;
        hit = found;
        limit = found.distance;
    });
    return limit < before;
}

} // namespace vrk::selection
