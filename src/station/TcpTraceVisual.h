#pragma once

#include "scene/math/Color.h"
#include "visual/Visual.h"

#include <memory>
#include <vector>

namespace vrk::visual {

class ManualDrawing;

/// The line that a tool's working point draws during a simulation. The application makes it and feeds it.
///
/// Owner: the parent visual. Thread: render thread. Each new point rebuilds the strip.
class VRK_EXPORT TcpTraceVisual : public Visual {
public:
    explicit TcpTraceVisual(Visual* parent);
    ~TcpTraceVisual() override;

    /// A point in the frame of the visual. The line shows from the second point on.
    void addColorPoint(const rob::PosTemplate<double>& position, const rob::ColorTemplate<float>& color);
    void clear();
    void update() override;

private:
    struct Point {
        rob::PosTemplate<double> position;
        rob::ColorTemplate<float> color;
    };

    std::unique_ptr<ManualDrawing> trace;
    std::vector<Point> points;
};

} // namespace vrk::visual
