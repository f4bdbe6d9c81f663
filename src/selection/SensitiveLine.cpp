#include "selection/SensitiveLine.h"

#include "selection/ViewPixels.h"

#include <algorithm>
#include <cmath>

namespace vrk::selection {
namespace {

using Vec = rob::Vec3Template<float>;

constexpr float farAway = 10000.0f; // the distance for which boxes have room
constexpr float tiny = 1e-6f;

/// Five pixels at a distance from the camera, in units.
float toleranceAt(float distance)
{
    const std::optional<float> pixel = worldUnitsPerPixel(distance);
    return pixel ? *pixel * linePixels : lineWithoutView;
}

Vec unitOr(const Vec& v, const Vec& otherwise)
{
    const float length = v.length();
    return length > tiny ? v / length : otherwise;
}

/// Where a section and a ray come closest: `s` from 0 to 1 along the section, `t` along the ray, not before its origin.
struct Closest {
    float s;
    float t;
};

/// After Ericson, Real-Time Collision Detection (2005), 5.1.9, with one of the two without an end.
Closest closestPoints(const Vec& section, const Vec& e, const Vec& toOrigin)
{
    const float a = e.dot(e), b = e.dot(section), c = section.dot(section);
    const float p = toOrigin.dot(e), f = toOrigin.dot(section);
    const float det = c * a - b * b;
    const auto atOrigin = [f, c] { return std::clamp(f / c, 0.0f, 1.0f); };
    if (det < tiny) {
        // Parallel. The point on the ray is the nearest one only beside the start: such a line is seen end on, as a dot,
        // and gives way to what lies around it.
        const float s = atOrigin();
        return {s, a >= tiny ? std::max(0.0f, (s * b + p) / a) : 0.0f};
    }
    const float t = (f * b - p * c) / det;
    const float s = (f * a - p * b) / det;
    if (t < 0)
        return {atOrigin(), 0};
    if (s < 0)
        return {0, std::max(0.0f, -p / a)};
    if (s > 1)
        return {1, std::max(0.0f, (b - p) / a)};
    return {s, t};
}

} // namespace

SensitiveLine::SensitiveLine(const rob::PosTemplate<float>& start, const rob::PosTemplate<float>& end)
    : start(start), end(end)
{
    const Vec along = unitOr(end - start, {1, 0, 0});
    const Vec aside = std::abs(along.x) < 0.9f ? Vec(1, 0, 0) : Vec(0, 1, 0);
    const Vec w = unitOr(along.cross(aside), {0, 1, 0});
    const Vec v = along.cross(w);
    const float r = toleranceAt(farAway);
    for (const float i : {-r, r})
        for (const float j : {-r, r}) {
            box.addPoint(start + w * i + v * j);
            box.addPoint(end + w * i + v * j);
        }
    box.updateCenter();
}

void SensitiveLine::intersectRay(Result& result, const visual::Ray& ray) const
{
    result = Result();
    const Vec section = end - start;
    const Vec direction(ray.direction);
    const auto [s, t] = closestPoints(section, direction, ray.origin - start);
    const rob::PosTemplate<float> onLine = start + section * s;
    const rob::PosTemplate<float> onRay = ray.origin + direction * t;
    const float tolerance = toleranceAt((onLine - ray.origin).length());
    if (!(tolerance * tolerance > (onLine - onRay).squaredLength()))
        return;
    result.hit = true;
    result.distance = static_cast<float>(t - tolerance * 0.5);
    result.position = onLine;
    const float toStart = (onLine - start).length(), toEnd = (onLine - end).length();
    const float whole = toStart + toEnd;
    result.localPosition = start;
    if (whole > tiny)
        result.localPosition = rob::PosTemplate<float>(Vec(start) * (toEnd / whole) + Vec(end) * (toStart / whole));
}

} // namespace vrk::selection
