#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

#include <TopoDS_Shape.hxx>

#include <optional>
#include <stdexcept>
#include <string>
#include <variant>

namespace vrk::measure {

/// What cannot be measured. The text says why, for the user, in one line.
class VRK_EXPORT MeasureError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~MeasureError() override;
};

/// A place in the world: a point, the origin of a frame, a corner of a mesh, a point of a scan.
struct MeasuredPoint {
    rob::Posd place;
    /// Of a mesh or a scan: the thing itself lies somewhere near it. What is measured is told to be between points then.
    bool isSample = false;
};

/// A vertex, an edge, a face, or a whole body; also a mesh, which is a shape whose faces have triangles and no surface.
///
/// The shape may have a location; it must not be changed while it is measured. It is never scaled.
struct MeasuredShape {
    TopoDS_Shape shape;
    rob::Posed pose; ///< of the shape's coordinates in the world; its orientation counts, not its length
    /// In the shape's coordinates. Where a value is the same all along, as between parallel faces, it is shown from here.
    std::optional<rob::Posd> picked;
};

using MeasuredThing = std::variant<MeasuredPoint, MeasuredShape>;

/// What kind of thing it is, with its size where it has one: "circle, diameter 40.00 mm", "line, length 12.00 mm", "plane",
/// "point at x 1.00, y 2.00, z 3.00".
/// @throws MeasureError for what cannot be measured at all.
VRK_EXPORT std::string describe(const MeasuredThing& thing);

} // namespace vrk::measure
