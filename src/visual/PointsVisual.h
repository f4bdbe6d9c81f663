#pragma once

#include "scene/math/Color.h"
#include "visual/Visual.h"

#include <memory>
#include <vector>

namespace vrk::visual {

class ManualDrawing;

/// A fixed set of points, drawn after the bodies as round marks of a few pixels. No point draws nothing.
///
/// Owner: the parent visual. Thread: render thread. Units: model units, in the frame of the visual's own node.
class VRK_EXPORT PointsVisual : public Visual {
public:
    PointsVisual(Visual* parent, const std::vector<rob::PosTemplate<float>>& points);
    ~PointsVisual() override;

    void setColor(const rob::ColorTemplate<float>& color, float alpha);

private:
    std::unique_ptr<ManualDrawing> drawing;
};

} // namespace vrk::visual
