#pragma once

#include <algorithm>

namespace vrk::cam {

/// How far a mesh may move where nobody says: a thousandth of its greatest extent, from 0.02 to 1 model units.
constexpr double usualTolerance(double extent)
{
    return std::min(std::max(0.02, extent * 0.001), 1.0);
}

/// What has fewer triangles is as simple as it is wanted.
constexpr unsigned fewestToSimplify = 64;

} // namespace vrk::cam
