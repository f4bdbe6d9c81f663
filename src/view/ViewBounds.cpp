#include "view/ViewBounds.h"

#include "scene/core/CameraSnapshot.h"
#include "view/FocusBox.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace vrk::visual {
namespace {

using rob::Posd;
using rob::Posed;
using rob::Posef;
using rob::Posf;
using rob::Vec3d;

constexpr double roomByRadius = 10;
constexpr double leastRadius = 1e-3; // what is smaller is a point, and tells no size
constexpr double radiusOfAPoint = 10;
const Box emptyScene(-100, -100, -100, 100, 100, 100);
constexpr double innerPart = 0.995; // of the picture: what is seen reaches a pixel or two into it

/// One side of a plane.
struct HalfSpace {
    Vec3d normal;
    double offset;
    double of(const Posd& place) const { return normal.dot(place) + offset; }
};

/// What of a convex polygon lies on the side of a plane.
std::vector<Posd> clipped(const std::vector<Posd>& polygon, const HalfSpace& side)
{
    std::vector<Posd> rest;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Posd& a = polygon[i];
        const Posd& b = polygon[(i + 1) % polygon.size()];
        const double atA = side.of(a), atB = side.of(b);
        if (atA >= 0)
            rest.push_back(a);
        if ((atA < 0) != (atB < 0))
            rest.push_back(Posd(a + (b - a) * (atA / (atA - atB))));
    }
    return rest;
}

/// The sides of what a camera sees, in its own frame.
std::array<HalfSpace, 6> sidesOf(const CameraSnapshot& lens)
{
    const double across = innerPart / static_cast<double>(lens.projection[0]);
    const double upwards = innerPart / static_cast<double>(lens.projection[5]);
    const double far =
        lens.farClip > lens.nearClip ? static_cast<double>(lens.farClip) : std::numeric_limits<float>::max();
    return {HalfSpace{{0, 0, -1}, -static_cast<double>(lens.nearClip)},
            HalfSpace{{0, 0, 1}, far},
            HalfSpace{{-1, 0, -across}, 0},
            HalfSpace{{1, 0, -across}, 0},
            HalfSpace{{0, -1, -upwards}, 0},
            HalfSpace{{0, 1, -upwards}, 0}};
}

/// The longest part along an axis.
double reach(const Vec3d& way)
{
    return std::max({std::abs(way.x), std::abs(way.y), std::abs(way.z)});
}

Posd heldWithin(const Posd& place, const Posd& middle, double half)
{
    const Vec3d way = place - middle;
    const double most = reach(way);
    return most <= half ? place : Posd(middle + way * (half / most));
}

} // namespace

ViewBounds::ViewBounds(const Box& shown)
    : box(shown.isValid() ? shown : emptyScene), middle(Posf(box.min + (box.max - box.min) * 0.5f)),
      radius(static_cast<double>((box.max - box.min).length()) / 2)
{
    if (!(radius >= leastRadius))
        radius = radiusOfAPoint;
    room = roomByRadius * radius;
}

ViewBounds ViewBounds::OfScene()
{
    return ViewBounds(BoxOfShown());
}

Posd ViewBounds::within(const Posd& place) const
{
    return heldWithin(place, middle, room);
}

bool ViewBounds::isInView(const CameraSnapshot& lens, const Posed& pose) const
{
    const Posd nearest = pose * Posd(0, 0, -static_cast<double>(lens.nearClip));
    if (box.isPointInside(static_cast<float>(nearest.x), static_cast<float>(nearest.y), static_cast<float>(nearest.z)))
        return true;
    const Posed toCamera = pose.inverse();
    std::array<Posd, 8> corners;
    for (unsigned i = 0; i < corners.size(); ++i)
        corners[i] = toCamera *
                     Posd(i & 1 ? box.max.x : box.min.x, i & 2 ? box.max.y : box.min.y, i & 4 ? box.max.z : box.min.z);
    constexpr unsigned faces[6][4] = {{0, 1, 3, 2}, {4, 5, 7, 6}, {0, 1, 5, 4},
                                      {2, 3, 7, 6}, {0, 2, 6, 4}, {1, 3, 7, 5}};
    const std::array<HalfSpace, 6> sides = sidesOf(lens);
    return std::ranges::any_of(faces, [&](const auto& face) {
        std::vector<Posd> polygon;
        for (const unsigned corner : face)
            polygon.push_back(corners[corner]);
        for (const HalfSpace& side : sides)
            polygon = clipped(polygon, side);
        return !polygon.empty();
    });
}

Posef ViewBounds::held(const CameraSnapshot& camera, const Posef& wanted) const
{
    const Posed now(camera.pose);
    const double half = std::max(room, reach(now.position - middle));
    const Posd place(wanted.position);
    const Posd allowed = heldWithin(place, middle, half);
    if (!allowed.isFinite())
        return camera.pose;
    const Posef next = allowed == place ? wanted : Posef(rob::Posf(allowed), wanted.orientation);
    const bool isLost = camera.hasPixels() && !isInView(camera, Posed(next)) && isInView(camera, now);
    return isLost ? camera.pose : next;
}

} // namespace vrk::visual
