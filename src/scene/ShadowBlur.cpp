#include "scene/ShadowBlur.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vrk::visual {
namespace {

struct Layer {
    float below;    // what it is the shadow of, as a part of the reach
    float softness; // standard deviation, likewise
    float darkness;
};

constexpr std::array layers{Layer{0.02f, 0.006f, 0.22f}, Layer{0.06f, 0.015f, 0.22f}, Layer{0.15f, 0.032f, 0.22f},
                            Layer{0.40f, 0.060f, 0.20f}, Layer{1.00f, 0.100f, 0.15f}};

/// The mean over 2 * radius + 1 values of a row of `count`, `stride` apart; beyond the ends there is 0.
void meanAlong(const float* from, float* to, int count, int stride, int radius)
{
    const auto at = [&](int i) { return i >= 0 && i < count ? from[static_cast<std::ptrdiff_t>(i) * stride] : 0.0f; };
    const float part = 1.0f / static_cast<float>(2 * radius + 1);
    float sum = 0;
    for (int i = -radius; i < radius; ++i)
        sum += at(i);
    for (int i = 0; i < count; ++i) {
        sum += at(i + radius);
        to[static_cast<std::ptrdiff_t>(i) * stride] = std::max(sum * part, 0.0f); // sums of parts may end below nothing
        sum -= at(i - radius);
    }
}

void blur(std::vector<float>& values, int width, int height, double sigma)
{
    // Three means of this width have the variance of the normal distribution.
    const int radius = static_cast<int>(std::lround((std::sqrt(4 * sigma * sigma + 1) - 1) / 2));
    if (radius == 0)
        return;
    std::vector<float> other(values.size());
    for (int pass = 0; pass < 3; ++pass) {
        for (int y = 0; y < height; ++y)
            meanAlong(&values[static_cast<std::size_t>(y) * width], &other[static_cast<std::size_t>(y) * width], width,
                      1, radius);
        for (int x = 0; x < width; ++x)
            meanAlong(&other[x], &values[x], height, width, radius);
    }
}

} // namespace

std::vector<std::uint8_t> softShadow(const HeightMap& map)
{
    std::vector<float> light(map.heights.size(), 1.0f), covered(map.heights.size());
    for (const Layer& layer : layers) {
        const auto limit = static_cast<float>(std::min(layer.below * map.reach / map.span, 1.0));
        std::ranges::transform(map.heights, covered.begin(), [limit](float h) { return h < limit ? 1.0f : 0.0f; });
        blur(covered, static_cast<int>(map.width), static_cast<int>(map.height),
             layer.softness * map.reach / map.texel);
        std::ranges::transform(light, covered, light.begin(),
                               [&layer](float l, float c) { return l * (1 - layer.darkness * c); });
    }
    std::vector<std::uint8_t> shadow(light.size());
    std::ranges::transform(light, shadow.begin(),
                           [](float l) { return static_cast<std::uint8_t>(std::lround(255 * (1 - l))); });
    return shadow;
}

} // namespace vrk::visual
