#include "selection/region/ObjectInView.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace vrk::selection {
namespace {

using Posd = rob::PosTemplate<double>;

/// The row of a matrix that is applied to columns.
Evenly rowOf(const RegionView::Matrix& m, unsigned row)
{
    return {m[4 * row], m[4 * row + 1], m[4 * row + 2], m[4 * row + 3]};
}

/// `outer` of what `inner` makes of a place.
Evenly after(const Evenly& outer, const std::array<Evenly, 3>& inner)
{
    Evenly sum = inner[0] * outer.a + inner[1] * outer.b + inner[2] * outer.c;
    sum.d += outer.d;
    return sum;
}

/// The coordinates in the parent of a place in a pose, scaled first.
std::array<Evenly, 3> coordinatesIn(const rob::PoseTemplate<double>& pose, const rob::Vec3Template<double>& scale)
{
    const auto rotated = [&pose](const rob::Vec3Template<double>& v) {
        return rob::Vec3Template<double>(pose.rotation() * rob::Posd(v));
    };
    const rob::Vec3Template<double> x = rotated({scale.x, 0, 0}), y = rotated({0, scale.y, 0}),
                                    z = rotated({0, 0, scale.z});
    const Posd& at = pose.position;
    return {Evenly{x.x, y.x, z.x, at.x}, Evenly{x.y, y.y, z.y, at.y}, Evenly{x.z, y.z, z.z, at.z}};
}

struct Range {
    double low, high;
};

/// Of an even number over a box, a little more than its rounding wider.
Range rangeOver(const Evenly& e, const Posd& middle, const rob::Vec3Template<double>& half)
{
    constexpr double rounding = 1e-14;
    const double at = e.at(middle);
    const double reach = std::abs(e.a) * half.x + std::abs(e.b) * half.y + std::abs(e.c) * half.z;
    const double doubt = rounding * (std::abs(e.a * middle.x) + std::abs(e.b * middle.y) + std::abs(e.c * middle.z) +
                                     std::abs(e.d) + reach);
    return {at - reach - doubt, at + reach + doubt};
}

} // namespace

ObjectInView::ObjectInView(const RegionView& from, const rob::PoseTemplate<double>& pose,
                           const rob::Vec3Template<double>& scale)
{
    const std::array<Evenly, 3> world = coordinatesIn(pose, scale);
    const std::array<Evenly, 3> seen{after(rowOf(from.view, 0), world), after(rowOf(from.view, 1), world),
                                     after(rowOf(from.view, 2), world)};
    const Evenly cubeX = after(rowOf(from.projection, 0), seen), cubeY = after(rowOf(from.projection, 1), seen);
    const Evenly cubeZ = after(rowOf(from.projection, 2), seen);
    w = after(rowOf(from.projection, 3), seen);
    x = (w + cubeX) * (from.width / 2);
    y = (w - cubeY) * (from.height / 2);
    depth = seen[2] * -1.0;
    nearPlane = cubeZ + w;
}

ObjectInView ObjectInView::ofPart(const rob::PoseTemplate<double>& pose) const
{
    const std::array<Evenly, 3> inObject = coordinatesIn(pose, {1, 1, 1});
    ObjectInView part = *this;
    for (Evenly* each : {&part.x, &part.y, &part.w, &part.depth, &part.nearPlane})
        *each = after(*each, inObject);
    return part;
}

RegionTest::RegionTest(const RegionQuery& query, const ScreenRegion& region, const ObjectInView& object)
    : region(&region), view(object), nearest(query.nearest), farthest(query.farthest)
{
    const ScreenRegion::Rectangle& bounds = region.getBounds();
    const Evenly one{0, 0, 0, 1};
    planes[0] = view.x - view.w * bounds.minX;
    planes[1] = view.w * bounds.maxX - view.x;
    planes[2] = view.y - view.w * bounds.minY;
    planes[3] = view.w * bounds.maxY - view.y;
    planes[4] = view.w;
    planes[5] = view.depth;
    planes[6] = view.depth - one * nearest;
    planes[7] = std::isinf(farthest) ? one : one * farthest - view.depth;
    for (unsigned i = 0; i < 4; ++i) {
        const auto take = [i](const Evenly& plane, Four* into) {
            into[0][i] = plane.a;
            into[1][i] = plane.b;
            into[2][i] = plane.c;
            into[3][i] = plane.d;
        };
        take(planes[i], sides);
        take(planes[4 + i], ends);
    }
}

RegionTest RegionTest::ofPart(const rob::PoseTemplate<double>& pose) const
{
    RegionQuery window;
    window.nearest = nearest;
    window.farthest = farthest;
    return {window, *region, view.ofPart(pose)};
}

RegionTest::Coverage RegionTest::classify(const Posd& low, const Posd& high) const
{
    const Posd middle((low.x + high.x) / 2, (low.y + high.y) / 2, (low.z + high.z) / 2);
    const rob::Vec3Template<double> half((high.x - low.x) / 2, (high.y - low.y) / 2, (high.z - low.z) / 2);
    bool isWithin = true, isBeforeEye = true;
    for (unsigned i = 0; i < 8; ++i) {
        const Range range = rangeOver(planes[i], middle, half);
        if (range.high < 0)
            return Coverage::Outside;
        isWithin = isWithin && range.low > 0;
        isBeforeEye = isBeforeEye && (i != 4 || range.low > 0);
    }
    if (region->isRectangle())
        return isWithin ? Coverage::Inside : Coverage::Partial;
    if (!isBeforeEye)
        return Coverage::Partial;

    constexpr double infinity = std::numeric_limits<double>::infinity();
    ScreenRegion::Rectangle shown{infinity, infinity, -infinity, -infinity};
    for (unsigned i = 0; i < 8; ++i) {
        const Posd corner((i & 1) != 0 ? high.x : low.x, (i & 2) != 0 ? high.y : low.y, (i & 4) != 0 ? high.z : low.z);
        const double w = view.w.at(corner);
        const double x = view.x.at(corner) / w, y = view.y.at(corner) / w;
        shown = {std::min(shown.minX, x), std::min(shown.minY, y), std::max(shown.maxX, x), std::max(shown.maxY, y)};
    }
    constexpr double doubt = 1e-7; // pixels; more than the rounding
    const Coverage coverage =
        region->classify({shown.minX - doubt, shown.minY - doubt, shown.maxX + doubt, shown.maxY + doubt});
    return coverage == Coverage::Inside && !isWithin ? Coverage::Partial : coverage;
}

bool RegionTest::holdsInRectangle(const Posd& place) const
{
    constexpr double justBelow = -std::numeric_limits<double>::denorm_min(); // so that above it means from 0 on
    const Four bySides = sides[0] * place.x + sides[1] * place.y + sides[2] * place.z + sides[3];
    const Four byEnds = ends[0] * place.x + ends[1] * place.y + ends[2] * place.z + ends[3];
    const auto held = (bySides > justBelow) & (byEnds > Four{0, 0, justBelow, justBelow});
    return (held[0] & held[1] & held[2] & held[3]) != 0;
}

bool RegionTest::holds(const Posd& p) const
{
    if (region->isRectangle())
        return holdsInRectangle(p);
    const double w = view.w.at(p);
    return isInWindow(w, view.depth.at(p)) && region->holds({view.x.at(p) / w, view.y.at(p) / w});
}

std::size_t RegionTest::select(std::span<const rob::PosTemplate<float>> places, std::span<const unsigned> numbers,
                               unsigned* out) const
{
    std::size_t count = 0;
    if (region->isRectangle()) {
        for (std::size_t i = 0; i < places.size(); ++i) {
            out[count] = numbers[i];
            count += holdsInRectangle(Posd(places[i])) ? 1 : 0;
        }
        return count;
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
        out[count] = numbers[i];
        count += holds(Posd(places[i])) ? 1 : 0;
    }
    return count;
}

bool RegionTest::touches(std::span<const Posd> corners) const
{
    // In the space of x, y, w and depth, all of which go evenly along an edge, also behind the eye.
    struct Corner {
        double x, y, w, depth;
    };
    std::vector<Corner> kept, next;
    double farthestCorner = 0;
    for (const Posd& p : corners) {
        kept.push_back({view.x.at(p), view.y.at(p), view.w.at(p), view.depth.at(p)});
        farthestCorner = std::max(farthestCorner, kept.back().depth);
    }
    const auto cut = [&](const auto& inside) {
        next.clear();
        for (std::size_t i = 0; i < kept.size(); ++i) {
            const Corner &from = kept[i], &end = kept[(i + 1) % kept.size()];
            const double a = inside(from), b = inside(end);
            if (a >= 0)
                next.push_back(from);
            if ((a > 0 && b < 0) || (a < 0 && b > 0)) {
                const double t = a / (a - b);
                next.push_back({from.x + (end.x - from.x) * t, from.y + (end.y - from.y) * t,
                                from.w + (end.w - from.w) * t, from.depth + (end.depth - from.depth) * t});
            }
        }
        kept.swap(next);
    };
    // Not quite to the eye, whose plane is shown nowhere.
    const double first = std::max(nearest, 1e-9 * farthestCorner);
    cut([first](const Corner& c) { return c.depth - first; });
    if (!std::isinf(farthest))
        cut([this](const Corner& c) { return farthest - c.depth; });
    std::vector<ScreenRegion::Place> shown;
    for (const Corner& c : kept)
        if (c.w > 0)
            shown.emplace_back(c.x / c.w, c.y / c.w);
    return !shown.empty() && region->touches(shown);
}

bool RegionTest::holdsAll(std::span<const Posd> corners) const
{
    std::array<ScreenRegion::Place, 3> shown;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Posd& p = corners[i];
        const double w = view.w.at(p);
        if (!isInWindow(w, view.depth.at(p)))
            return false;
        shown[i] = {view.x.at(p) / w, view.y.at(p) / w};
    }
    return region->holdsAll(std::span(shown).first(corners.size()));
}

} // namespace vrk::selection
