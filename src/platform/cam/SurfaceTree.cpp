#include "platform/cam/SurfaceTree.h"

#include "platform/cam/NearestOn.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <utility>

namespace vrk::cam {

using rob::Vec3d;

namespace {

/// Room for two bits after each of the lower 21.
std::uint64_t spread(std::uint64_t bits)
{
    bits = (bits | bits << 32) & 0x001F00000000FFFF;
    bits = (bits | bits << 16) & 0x001F0000FF0000FF;
    bits = (bits | bits << 8) & 0x100F00F00F00F00F;
    bits = (bits | bits << 4) & 0x10C30C30C30C30C3;
    return (bits | bits << 2) & 0x1249249249249249;
}

/// Where a place lies on a curve through all cells of a cube (Morton, 1966).
std::uint64_t onCurve(const Vec3d& place, const Vec3d& low, double perUnit)
{
    constexpr double last = (1 << 21) - 1;
    const auto cell = [&](double at, double from) {
        return spread(static_cast<std::uint64_t>(std::clamp((at - from) * perUnit, 0.0, last)));
    };
    return cell(place.x, low.x) | cell(place.y, low.y) << 1 | cell(place.z, low.z) << 2;
}

constexpr float farAway = std::numeric_limits<float>::infinity();

float below(double value)
{
    const auto rounded = static_cast<float>(value);
    return rounded > value ? std::nextafterf(rounded, -farAway) : rounded;
}

float above(double value)
{
    return -below(-value);
}

} // namespace

inline double SurfaceTree::Box::squaredDistance(const Vec3d& place) const
{
    const double x = std::max(std::max(low[0] - place.x, place.x - high[0]), 0.0);
    const double y = std::max(std::max(low[1] - place.y, place.y - high[1]), 0.0);
    const double z = std::max(std::max(low[2] - place.z, place.z - high[2]), 0.0);
    return x * x + y * y + z * z;
}

SurfaceTree::SurfaceTree(const TriangleSurface& surface)
{
    const auto count = static_cast<std::uint32_t>(surface.triangles.size());
    if (count == 0)
        return;
    const auto cornersOf = [&surface](std::uint32_t t) {
        const auto& triangle = surface.triangles[t];
        return Corners{Vec3d(surface.vertices[triangle[0]]), Vec3d(surface.vertices[triangle[1]]),
                       Vec3d(surface.vertices[triangle[2]])};
    };
    const auto middleOf = [](const Corners& of) { return (of.a + of.b + of.c) / 3.0; };
    Vec3d low = middleOf(cornersOf(0)), high = low;
    for (std::uint32_t t = 1; t < count; ++t) {
        const Vec3d middle = middleOf(cornersOf(t));
        low = {std::min(low.x, middle.x), std::min(low.y, middle.y), std::min(low.z, middle.z)};
        high = {std::max(high.x, middle.x), std::max(high.y, middle.y), std::max(high.z, middle.z)};
    }
    const double size = std::max({high.x - low.x, high.y - low.y, high.z - low.z});
    const double perUnit = size > 0 ? ((1 << 21) - 1) / size : 0;
    std::vector<std::pair<std::uint64_t, std::uint32_t>> along(count);
    for (std::uint32_t t = 0; t < count; ++t)
        along[t] = {onCurve(middleOf(cornersOf(t)), low, perUnit), t};
    std::ranges::sort(along);

    corners.resize(count);
    firstLeaf = std::bit_ceil((count + leafSize - 1) / leafSize);
    boxes.assign(2 * std::size_t{firstLeaf}, {{farAway, farAway, farAway}, {-farAway, -farAway, -farAway}});
    const auto grow = [](Box& box, const Vec3d& by) {
        for (unsigned axis = 0; axis < 3; ++axis) {
            box.low[axis] = std::min(box.low[axis], below(by[axis]));
            box.high[axis] = std::max(box.high[axis], above(by[axis]));
        }
    };
    for (std::uint32_t i = 0; i < count; ++i) {
        corners[i] = cornersOf(along[i].second);
        Box& box = boxes[firstLeaf + i / leafSize];
        grow(box, corners[i].a);
        grow(box, corners[i].b);
        grow(box, corners[i].c);
    }
    for (std::uint32_t k = firstLeaf - 1; k > 0; --k)
        for (unsigned axis = 0; axis < 3; ++axis) {
            boxes[k].low[axis] = std::min(boxes[2 * k].low[axis], boxes[2 * k + 1].low[axis]);
            boxes[k].high[axis] = std::max(boxes[2 * k].high[axis], boxes[2 * k + 1].high[axis]);
        }
}

/// The square of the distance to the nearest triangle, or `nearest` where that is less; not looked for further below `enough`.
double SurfaceTree::search(const Vec3d& place, double nearest, double enough) const
{
    struct Open {
        std::uint32_t box;
        double square;
    };
    std::array<Open, 64> open; // one for each level at most, of which there are as many as a count has bits
    std::size_t depth = 0;
    if (!corners.empty())
        open[depth++] = {1, boxes[1].squaredDistance(place)};
    while (depth > 0) {
        auto [box, least] = open[--depth];
        if (!(least < nearest))
            continue;
        while (box < firstLeaf) {
            const double left = boxes[2 * box].squaredDistance(place),
                         right = boxes[2 * box + 1].squaredDistance(place);
            const bool isLeftNearer = left <= right;
            if (const double further = std::max(left, right); further < nearest)
                open[depth++] = {2 * box + (isLeftNearer ? 1 : 0), further};
            box = 2 * box + (isLeftNearer ? 0 : 1);
            least = std::min(left, right);
            if (!(least < nearest))
                break;
        }
        if (!(least < nearest))
            continue;
        const std::size_t begin = std::size_t{box - firstLeaf} * leafSize,
                          end = std::min(begin + leafSize, corners.size());
        for (std::size_t i = begin; i < end; ++i) {
            const auto& [a, b, c] = corners[i];
            nearest = std::min(nearest, (nearestOn(a, b, c, place).place - place).squaredLength());
            if (nearest < enough)
                return nearest;
        }
    }
    return nearest;
}

} // namespace vrk::cam
