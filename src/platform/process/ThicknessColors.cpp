#include "platform/process/ThicknessColors.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vrk::process {
namespace {

// Even steps of the scale; the program that draws it (thickness.frag) has the same.
constexpr std::array<rob::Colorf, 11> anchors{{{0.267f, 0.005f, 0.329f},
                                               {0.283f, 0.141f, 0.458f},
                                               {0.254f, 0.265f, 0.530f},
                                               {0.207f, 0.372f, 0.553f},
                                               {0.164f, 0.471f, 0.558f},
                                               {0.128f, 0.567f, 0.551f},
                                               {0.135f, 0.659f, 0.518f},
                                               {0.267f, 0.749f, 0.441f},
                                               {0.478f, 0.821f, 0.318f},
                                               {0.741f, 0.873f, 0.150f},
                                               {0.993f, 0.906f, 0.144f}}};

} // namespace

Coverage coverageOf(double thickness, const ThicknessTarget& target)
{
    if (!(thickness > 0))
        return Coverage::Bare;
    if (thickness < target.low())
        return Coverage::BelowTarget;
    return thickness > target.high() ? Coverage::AboveTarget : Coverage::OnTarget;
}

rob::Colorf scaleColor(double part)
{
    const double at = (part > 0 ? std::min(part, 1.0) : 0.0) * (anchors.size() - 1); // also for what is no number
    const auto step = std::min(static_cast<std::size_t>(at), anchors.size() - 2);
    const auto rest = static_cast<float>(at - static_cast<double>(step));
    const rob::Colorf &a = anchors[step], &b = anchors[step + 1];
    const auto between = [rest](float from, float to) { return from + rest * (to - from); };
    return {between(a.r, b.r), between(a.g, b.g), between(a.b, b.b)};
}

} // namespace vrk::process
