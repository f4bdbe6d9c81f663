#pragma once

#include "platform/common/Export.h"

#include <memory>
#include <string>

class TopoDS_Shape;
namespace vrk::layout {
class Body;
class Part;
} // namespace vrk::layout

namespace vrk::station {

/// A part with one body of this shape, complete and not yet in the station: the short way for shapes that are made in memory.
/// @param color  a colour text such as "#4A6A8A".
/// @throws as `AddShape`
VRK_EXPORT std::shared_ptr<layout::Part> PartOf(const std::string& name, const TopoDS_Shape& shape,
                                                const std::string& color);

/// Appends a body of this shape to a part. It is meshed where it has no triangles (`meshShape`), and gets a URI of its own, by
/// which the view keeps its mesh. Bodies that are to share the mesh of one shape get one URI (`Body::setGeometry`) instead. Where the
/// part is in the station the body is by then, too: `Scene::SyncStation` shows it. Any thread; takes the model's lock.
/// @throws std::invalid_argument "<name>: a body needs a shape" for a null shape; what `geometry::ParseColorText` does for a colour.
VRK_EXPORT std::shared_ptr<layout::Body> AddShape(layout::Part& part, const std::string& name,
                                                  const TopoDS_Shape& shape, const std::string& color);

} // namespace vrk::station
