#pragma once

class TopoDS_Edge;

namespace vrkview {

/// An edge of a solid that is in the scene, by its number from 1 in the solid's shape; null where there is none. Reads the
/// whole shape. Render thread.
TopoDS_Edge edgeOfBody(unsigned body, unsigned edge);

} // namespace vrkview
