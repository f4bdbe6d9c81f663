#pragma once

#include "visual/FrameVisual.h"

namespace sdf {
class SdfObject;
}

namespace vrk::visual {

/// The frame of a tool's working point.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT TcpVisual : public FrameVisual {
public:
    /// Made, registered and placed at the pose of the tool data; it can be picked.
    static void Build(Visual* parent, const sdf::SdfObject& toolData);

private:
    TcpVisual(Visual* parent, unsigned id);
};

} // namespace vrk::visual
