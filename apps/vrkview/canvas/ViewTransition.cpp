#include "canvas/ViewTransition.h"

#include <algorithm>
#include <cmath>

namespace vrkview {
namespace {

using vrk::rob::Posef;
using vrk::rob::Posf;
using vrk::rob::Rotationf;

constexpr float nearlySame = 0.9995f; // cosine of half the angle; a chord is as good as the arc there

Posf lookedAt(const Posef& camera, float distance)
{
    return camera * Posf(0, 0, -distance);
}

} // namespace

ViewTransition::ViewTransition(const Posef& from, float distanceFrom, const Posef& to, float distanceTo)
    : from(from), to(to), distanceFrom(distanceFrom), distanceTo(distanceTo)
{
}

Posef ViewTransition::at(float time) const
{
    if (time >= 1)
        return to;
    const float part = eased(time);
    const Rotationf rotation = slerp(from.rotation(), to.rotation(), part);
    const float distance = distanceFrom * std::pow(distanceTo / distanceFrom, part);
    const Posf start = lookedAt(from, distanceFrom);
    const Posf target = start + (lookedAt(to, distanceTo) - start) * part;
    return {target + rotation * Posf(0, 0, distance), rotation};
}

float eased(float time)
{
    const float t = std::clamp(time, 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

Rotationf slerp(const Rotationf& a, const Rotationf& b, float time)
{
    float cosine = a.w * b.w + a.x * b.x + a.y * b.y + a.z * b.z;
    const float sign = cosine < 0 ? -1.0f : 1.0f; // a quaternion and its opposite turn alike
    cosine *= sign;
    float partOfA = 1 - time;
    float partOfB = time;
    if (cosine < nearlySame) {
        const float angle = std::acos(cosine);
        partOfA = std::sin(partOfA * angle) / std::sin(angle);
        partOfB = std::sin(partOfB * angle) / std::sin(angle);
    }
    partOfB *= sign;
    return Rotationf(partOfA * a.w + partOfB * b.w, partOfA * a.x + partOfB * b.x, partOfA * a.y + partOfB * b.y,
                     partOfA * a.z + partOfB * b.z)
        .normalized();
}

} // namespace vrkview
