#pragma once

#include "preview/VisualList.h"

namespace vrk::visual {

/// What is shown for a while and belongs to no station. Records of the scene. Thread: render thread.

/// Edges and curves.
struct PreviewCurves : VisualList {
    using VisualList::VisualList;
};

/// Solids of single faces.
struct PreviewFaces : VisualList {
    using VisualList::VisualList;
};

/// Sets of points, and targets.
struct PreviewedPoints : VisualList {
    using VisualList::VisualList;
};

struct Polylines : VisualList {
    using VisualList::VisualList;
};

struct DimensionVisuals : VisualList {
    using VisualList::VisualList;
};

} // namespace vrk::visual
