#pragma once

#include "scene/math/Vec.h"

#include <vector>

namespace vrk::geometry {

/// Curves as lists of points, one list for each.
using PointList = std::vector<std::vector<rob::PosTemplate<float>>>;

} // namespace vrk::geometry
