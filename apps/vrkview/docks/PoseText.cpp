#include "docks/PoseText.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vrkview {
namespace {

constexpr double degrees = 180 / std::numbers::pi;
constexpr double upright = 1 - 1e-10; // sine of the turn about y from where on the other two are one

} // namespace

std::array<double, 3> anglesOf(const vrk::rob::Rotationd& rotation)
{
    using vrk::rob::Dird;
    const Dird x = rotation * Dird(1, 0, 0), y = rotation * Dird(0, 1, 0), z = rotation * Dird(0, 0, 1);
    const double sine = std::clamp(z.x, -1.0, 1.0);
    const double aboutY = std::asin(sine) * degrees;
    if (std::abs(sine) > upright)
        return {std::atan2(y.z, y.y) * degrees, aboutY, 0};
    return {std::atan2(-z.y, z.z) * degrees, aboutY, std::atan2(-y.x, x.x) * degrees};
}

} // namespace vrkview
