#include "selection/pick/PickKind.h"

#include <algorithm>
#include <array>

namespace vrk::selection {
namespace {

constexpr std::array<std::string_view, pickKindCount> names = {
    "vertex", "edge", "face", "body", "mesh triangle", "curve", "line", "point", "cloud point", "frame", "target"};

} // namespace

std::string_view nameOf(PickKind kind)
{
    return names[static_cast<unsigned>(kind)];
}

std::optional<PickKind> findPickKind(std::string_view name)
{
    const auto found = std::ranges::find(names, name);
    if (found == names.end())
        return std::nullopt;
    return static_cast<PickKind>(found - names.begin());
}

} // namespace vrk::selection
