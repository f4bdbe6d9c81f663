#include "platform/geometry/ColorText.h"

#include "platform/common/Checks.h"

#include <fmt/format.h>

#include <cmath>

namespace vrk::geometry {
namespace {

int byteOf(float channel)
{
    if (!(channel > 0)) // a NaN as well
        return 0;
    return channel >= 1 ? 255 : static_cast<int>(std::lround(channel * 255));
}

} // namespace

rob::ColorTemplate<float> ParseColorText(std::string_view text)
{
    const auto channel = [text](std::size_t position) {
        return static_cast<float>(common::hexByte(text, position) / 255.0);
    };
    const float red = channel(1); // read in this order, so that the first faulty channel is the one that fails
    const float green = channel(3);
    return {red, green, channel(5)};
}

std::string ColorToText(const rob::ColorTemplate<float>& color)
{
    return fmt::format("#{:02X}{:02X}{:02X}", byteOf(color.r), byteOf(color.g), byteOf(color.b));
}

} // namespace vrk::geometry
