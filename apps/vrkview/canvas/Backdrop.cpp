#include "canvas/Backdrop.h"

#include "scene/ViewLook.h"

#include <charconv>

namespace vrkview {
namespace {

using vrk::rob::Colorf;

std::optional<Colorf> readColor(std::string_view text)
{
    unsigned value = 0;
    if (text.size() != 7 || text.front() != '#')
        return std::nullopt;
    const auto [stop, error] = std::from_chars(text.data() + 1, text.data() + text.size(), value, 16);
    if (error != std::errc() || stop != text.data() + text.size())
        return std::nullopt;
    const auto part = [value](unsigned shift) { return static_cast<float>((value >> shift) & 0xff) / 255; };
    return Colorf(part(16), part(8), part(0));
}

} // namespace

Backdrop usualBackdrop()
{
    return {{0.30f, 0.34f, 0.39f}, {0.59f, 0.63f, 0.68f}};
}

std::optional<Backdrop> readBackdrop(std::string_view text)
{
    const std::size_t comma = text.find(',');
    const std::optional<Colorf> top = readColor(text.substr(0, comma));
    const std::optional<Colorf> bottom = comma == std::string_view::npos ? top : readColor(text.substr(comma + 1));
    if (!top || !bottom)
        return std::nullopt;
    return Backdrop{*top, *bottom};
}

void showBackdrop(const std::optional<Backdrop>& backdrop)
{
    if (backdrop)
        vrk::visual::SetBackground(backdrop->top, backdrop->bottom);
    else
        vrk::visual::ResetBackground();
}

} // namespace vrkview
