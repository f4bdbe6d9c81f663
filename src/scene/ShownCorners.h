#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"
#include "selection/geometry/Box.h"

#include <vector>

namespace vrk::visual {

// What is seen of the station, for fitting it into a view. Render thread, after the start; the places are in the world.

/// Points whose convex hull encloses what is shown: the eight corners of each world box of a body, curve or point, of each
/// cloud its points, at most some 100,000 of them, and the places that the moves of programs go to. Grid and frames are left
/// out. If everything lies in one point, the corners of a cube of two model units around it.
VRK_EXPORT std::vector<rob::PosTemplate<float>> ShownCorners();
/// The box around these points; not valid where nothing is shown.
VRK_EXPORT Box BoxOfShown();
/// The box around the solids and meshes that are shown; not valid where there are none.
VRK_EXPORT Box BoxOfShownBodies();

} // namespace vrk::visual
