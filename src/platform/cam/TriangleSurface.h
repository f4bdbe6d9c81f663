#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

#include <array>
#include <cstdint>
#include <vector>

namespace vrk::cam {

/// Triangles over vertices that they share. Model units.
struct TriangleSurface {
    using Triangle = std::array<std::uint32_t, 3>;

    std::vector<rob::Posd> vertices;
    std::vector<Triangle> triangles;
};

/// The same surface where equal vertices are one: what a triangle soup, as STL files are, has to become before triangles
/// have neighbours. Triangles without area, with coordinates that are not finite or beyond 1e30, and those that are there already are left
/// out, and so are vertices of none. The order of what stays is kept.
/// @throws std::out_of_range  for a triangle of a vertex that there is not.
VRK_EXPORT TriangleSurface weld(const TriangleSurface& soup);

} // namespace vrk::cam
