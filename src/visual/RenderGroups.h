#pragma once

#include <cstdint>

/// The render queue groups of what is drawn, in drawing order.
namespace vrk::visual::renderGroup {

inline constexpr std::uint8_t normal = 50;
inline constexpr std::uint8_t selected = 51; ///< selected bodies, which get an outline
inline constexpr std::uint8_t lines = 60;    ///< lines, points, target instances, path arrows
inline constexpr std::uint8_t trace = 70;    ///< the trace of a tool centre point
inline constexpr std::uint8_t texts = 75;    ///< that face the viewer, over the bodies
inline constexpr std::uint8_t handles = 80;  ///< handles and previewed edges, over everything else

} // namespace vrk::visual::renderGroup
