#pragma once

#include "selection/region/ObjectInView.h"

namespace vrk::selection {

class SeenMap;
class SelectableObject;

/// Appends what a region holds of one object that is no cloud: the body, its faces and edges, or the frame.
///
/// Thread: any, for several objects at once; the object must stay as it is.
/// @param seen  null where what is hidden counts too.
void askObject(const SelectableObject& object, const RegionQuery& query, const RegionView& view,
               const ScreenRegion& region, const SeenMap* seen, RegionAnswer& answer);

} // namespace vrk::selection
