#pragma once

#include <TopoDS_Edge.hxx>

namespace vrk::visual {

class Visual;

/// What the scene knows of the one edge that is highlighted.
struct HighlightedEdge {
    // Read and written where the scene's operations are called
    Visual* visual = nullptr; ///< whose edge it is; null for none
    TopoDS_Edge edge;
    // Render thread
    Visual* drawn = nullptr; ///< null where the edge has no polygon
};

} // namespace vrk::visual
