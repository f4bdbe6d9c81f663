#pragma once

#include "platform/common/Export.h"

class TopoDS_Shape;

namespace vrk::geometry {

/// Whether nothing but the outsides of the faces of this shape can be seen from where there is no material, so that what turns
/// its back to the eye need not be drawn: all faces have triangles and bound solids; at each edge two of them meet that run
/// along it in opposite ways; and the triangles of each solid enclose a volume that is on their inner side. Of a solid that is
/// inside out, and of one with a gap or a face that is turned, it is not so.
///
/// It takes time with the number of edges and triangles. Any thread, while nobody changes the shape.
VRK_EXPORT bool areSolidsClosed(const TopoDS_Shape& shape);

} // namespace vrk::geometry
