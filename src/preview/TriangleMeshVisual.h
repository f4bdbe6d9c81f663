#pragma once

#include "visual/LineVisual.h"

namespace vrk::visual {

/// A mesh that is offered, as the segments of its triangles. It goes with its parent.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT TriangleMeshVisual : public LineVisual {
public:
    explicit TriangleMeshVisual(Visual* parent);
};

} // namespace vrk::visual
