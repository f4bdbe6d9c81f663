#include "selection/geometry/NearestHitTree.h"

#include "selection/geometry/NearestHitBuilder.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace vrk::selection {
namespace {

/// A hit misses its triangle by less than 1e-6 of the largest number that takes part: a corner as the origin of the ray sees
/// it. The triangles bring their share of the room for it, and the ray brings that of its origin.
constexpr float room = 8e-6f;

constexpr float shortDirection = 1e-3f;
constexpr float longDirection = 1e3f;

// Added to a triangle's number, it makes the bits those of an ordinary float: sums with others are slow for no processor.
constexpr unsigned numberBits = 0x40000000u;

float largestOf(const rob::Vec3Template<float>& v)
{
    return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
}

} // namespace

NearestHitTree::Reference::Reference(const rob::TriangleTemplate<float>& triangle, unsigned number) : Reference()
{
    if (!triangle.a.isFinite() || !triangle.b.isFinite() || !triangle.c.isFinite())
        return;
    const float margin = room * std::max({largestOf(rob::Vec3Template<float>(triangle.a)),
                                          largestOf(rob::Vec3Template<float>(triangle.b)),
                                          largestOf(rob::Vec3Template<float>(triangle.c))});
    const rob::PosTemplate<float>&a = triangle.a, &b = triangle.b, &c = triangle.c;
    lower = Float4{std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y}), std::min({a.z, b.z, c.z}), 0} - margin;
    upper = Float4{std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y}), std::max({a.z, b.z, c.z}), 0} + margin;
    lower[3] = std::bit_cast<float>(number + numberBits);
}

unsigned NearestHitTree::Reference::getNumber() const
{
    return std::bit_cast<unsigned>(static_cast<float>(lower[3])) - numberBits;
}

void NearestHitTree::build(std::size_t count,
                           const std::function<void(std::size_t begin, std::size_t end, Reference* out)>& fill)
{
    *this = NearestHitTree();
    NearestHitBuilder(*this).build(count, fill);
}

bool NearestHitTree::serves(const visual::Ray& ray) const
{
    const float direction = largestOf(rob::Vec3Template<float>(ray.direction));
    return farthestCoordinate < largeCoordinate && largestOf(rob::Vec3Template<float>(ray.origin)) < largeCoordinate &&
           direction > shortDirection && direction < longDirection;
}

NearestHitTree::FourBoxTest::FourBoxTest(const visual::Ray& ray)
{
    const rob::Vec3Template<float> from(ray.origin), d(ray.direction);
    const float margin = room * largestOf(from);
    // Along an axis to which the ray is square it goes so little that it leaves the room nowhere.
    const float least = 1e-12f * largestOf(d);
    for (unsigned axis = 0; axis < 3; ++axis) {
        const bool isUp = d[axis] > 0;
        const float along = std::abs(d[axis]) < least ? (isUp ? least : -least) : d[axis];
        nearOrigin[axis] = isUp ? from[axis] + margin : from[axis] - margin;
        farOrigin[axis] = isUp ? from[axis] - margin : from[axis] + margin;
        reciprocal[axis] = 1.0f / along;
        nearRow[axis] = isUp ? axis : axis + 3;
        farRow[axis] = isUp ? axis + 3 : axis;
    }
}

} // namespace vrk::selection
