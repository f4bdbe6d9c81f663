#pragma once

#include "platform/common/Export.h"
#include "platform/task/EdgeMfgShape.h"

#include <span>
#include <vector>

namespace vrk::visual {

/// How long tool directions are drawn, and so how wide a band is: in model units.
inline constexpr double bandWidth = 25;

struct RibbonVertex {
    rob::Posd position;
    rob::Dird normal;
};

/// The ribbon along these points of a run, as a strip of triangles: for each point the place on its edge and the place one
/// band width along the tool direction, both with the normal across tangent and direction. Any thread.
/// @throws std::overflow_error "0-length vector cannot be normalized." where the tool direction lies along the edge, and as
///         `MfgVector` does; std::out_of_range "invalid vector subscript" for a point on an edge that is not there.
VRK_EXPORT std::vector<RibbonVertex> MakeRibbon(const task::EdgeMfgShape& shape,
                                                std::span<const task::EdgeMfgShape::PathPoint> points);

} // namespace vrk::visual
