#pragma once

#include "platform/layout/PointSet.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Sets of points as station files write them: "0-99,105". Not installed.
namespace vrk::station {

/// Ascending; neither overlapping nor touching each other.
std::string rangesText(const layout::PointSet& points);
/// First and last of each range; empty for any other text than that of a set.
std::optional<std::vector<std::pair<std::uint32_t, std::uint32_t>>> parseRanges(std::string_view text);

} // namespace vrk::station
