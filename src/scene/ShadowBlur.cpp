#include "scene/ShadowBlur.h"

#include "platform/common/ParallelFor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

namespace vrk::visual {
namespace {

struct Layer {
    float below;    // what it is the shadow of, as a part of the reach
    float softness; // standard deviation, likewise
    float darkness;
};

constexpr std::array layers{Layer{0.02f, 0.006f, 0.22f}, Layer{0.06f, 0.015f, 0.22f}, Layer{0.15f, 0.032f, 0.22f},
                            Layer{0.40f, 0.060f, 0.20f}, Layer{1.00f, 0.100f, 0.15f}};

/// The mean over 2 * radius + 1 rows, of each of the `width` columns for itself; beyond the first and the last of `height`
/// rows there is 0. All columns of a row go together, which is what a processor does at once.
void meanOfRows(const std::vector<float>& from, std::vector<float>& to, int width, int height, int radius)
{
    const float part = 1.0f / static_cast<float>(2 * radius + 1);
    std::vector<float> sums(static_cast<std::size_t>(width));
    const auto rowOf = [&](auto& values, int y) { return &values[static_cast<std::size_t>(y) * width]; };
    const auto add = [&](int y) {
        if (y < height)
            std::transform(sums.begin(), sums.end(), rowOf(from, y), sums.begin(), std::plus<float>());
    };
    for (int y = 0; y < radius; ++y)
        add(y);
    for (int y = 0; y < height; ++y) {
        add(y + radius);
        // Sums of parts may end below nothing.
        std::ranges::transform(sums, rowOf(to, y), [part](float sum) { return std::max(sum * part, 0.0f); });
        if (y >= radius)
            std::transform(sums.begin(), sums.end(), rowOf(from, y - radius), sums.begin(), std::minus<float>());
    }
}

/// Rows become columns. In blocks, which stay in the cache.
void turnOver(const std::vector<float>& from, std::vector<float>& to, int width, int height)
{
    constexpr int block = 16;
    for (int top = 0; top < height; top += block)
        for (int left = 0; left < width; left += block)
            for (int y = top; y < std::min(top + block, height); ++y)
                for (int x = left; x < std::min(left + block, width); ++x)
                    to[static_cast<std::size_t>(x) * height + y] = from[static_cast<std::size_t>(y) * width + x];
}

void blur(std::vector<float>& values, int width, int height, double sigma)
{
    // Three means of this width have the variance of the normal distribution.
    const int radius = static_cast<int>(std::lround((std::sqrt(4 * sigma * sigma + 1) - 1) / 2));
    if (radius == 0)
        return;
    std::vector<float> other(values.size());
    const auto thrice = [&](int across, int down) { // from the other one, and into `values`
        meanOfRows(other, values, across, down, radius);
        meanOfRows(values, other, across, down, radius);
        meanOfRows(other, values, across, down, radius);
    };
    turnOver(values, other, width, height);
    thrice(height, width);
    turnOver(values, other, height, width);
    thrice(width, height);
}

/// How much of the sky over each place is covered by what the layer is the shadow of.
std::vector<float> coverBy(const Layer& layer, const HeightMap& map)
{
    const auto limit = static_cast<float>(std::min(layer.below * map.reach / map.span, 1.0));
    std::vector<float> covered(map.heights.size());
    std::ranges::transform(map.heights, covered.begin(), [limit](float h) { return h < limit ? 1.0f : 0.0f; });
    blur(covered, static_cast<int>(map.width), static_cast<int>(map.height), layer.softness * map.reach / map.texel);
    return covered;
}

} // namespace

std::vector<std::uint8_t> softShadow(const HeightMap& map)
{
    std::array<std::vector<float>, layers.size()> covers;
    parallelFor(layers.size(), [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i)
            covers[i] = coverBy(layers[i], map);
    });
    std::vector<float> light(map.heights.size(), 1.0f);
    for (std::size_t i = 0; i < layers.size(); ++i)
        std::ranges::transform(light, covers[i], light.begin(),
                               [i](float l, float c) { return l * (1 - layers[i].darkness * c); });
    std::vector<std::uint8_t> shadow(light.size());
    std::ranges::transform(light, shadow.begin(),
                           [](float l) { return static_cast<std::uint8_t>(std::lround(255 * (1 - l))); });
    return shadow;
}

} // namespace vrk::visual
