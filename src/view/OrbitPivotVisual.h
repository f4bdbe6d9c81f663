#pragma once

#include "visual/FrameVisual.h"

#include <memory>

namespace vrk::visual {

class ScreenScale;

/// The mark of a pivot: a small frame that keeps about the same size in the picture of the main camera.
///
/// It is neither registered nor selectable, and the operations that set the size of frames do not reach it.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT OrbitPivotVisual : public FrameVisual {
public:
    /// How long its axes are for each unit of the camera's distance.
    static const float ScreenRatio;

    explicit OrbitPivotVisual(Visual* parent);
    ~OrbitPivotVisual() override;

    /// Scales the axes by the distance of the main camera, to 1 unit at least. Done ahead of each picture; a hidden one
    /// keeps its scale.
    void updateScale();

private:
    void fitTo(float distance);

    std::unique_ptr<ScreenScale> screenScale;
};

} // namespace vrk::visual
