#pragma once

#include "scene/math/Vec.h"

#include <cstddef>
#include <vector>

/// Not installed.
namespace vrk::geometry {

/// A border of a mesh: an edge of one triangle.
struct BorderEdge {
    unsigned from, to; ///< points, the lesser number first
    rob::Vec3f normal; ///< of the triangle
    bool isForward;    ///< whether the triangle runs from `from` to `to`
};

/// A border that lies along others.
struct BorderSeam {
    std::size_t border;           ///< the long one
    std::vector<std::size_t> row; ///< the others, from the one end of it to the other
};

/// The borders whose ends are joined by a row of others that lie on them: one triangle was put beside several there, without a
/// vertex where these meet. No border lies in two rows.
///
/// @param tolerance  how far off the long one a vertex may lie.
std::vector<BorderSeam> seamsOf(const std::vector<BorderEdge>& borders, const std::vector<rob::Posf>& points,
                                double tolerance);

} // namespace vrk::geometry
