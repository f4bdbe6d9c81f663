#pragma once

#include "platform/common/Export.h"
#include "scene/math/Color.h"

#include <string>
#include <string_view>

namespace vrk::geometry {

/// The colour of a text such as "#ED1C24". The two characters at the positions 1, 3 and 5 are read as base-16 numbers
/// and divided by 255; the first character and what follows the seventh are not looked at.
/// @throws std::invalid_argument "invalid stoi argument" where a channel has no digit.
/// @throws std::out_of_range of std::string::substr where the text ends before a channel.
VRK_EXPORT rob::ColorTemplate<float> ParseColorText(std::string_view text);

/// "#RRGGBB" of a colour; channels outside 0 to 1 are held to that range.
VRK_EXPORT std::string ColorToText(const rob::ColorTemplate<float>& color);

} // namespace vrk::geometry
