#pragma once

#include "visual/DynamicLines.h"
#include "visual/Visual.h"

#include <vector>

namespace vrk::visual {

/// A strip through points, perhaps with an arrow at its start.
///
/// Owner: the scene's list of polylines. Thread: render thread. Units: model units, in the frame of the parent.
class VRK_EXPORT PolylineVisual : public Visual {
public:
    PolylineVisual(unsigned id, Visual* parent);

    /// Of a new transient id. Fewer than two points draw nothing, and then there is no arrow either, of which the log tells.
    /// @param arrow  whether one stands at the first point, directed to the second.
    /// @throws std::overflow_error "0-length vector cannot be normalized." for an arrow where the first two points are equal;
    ///         the polyline stays under its parent.
    static PolylineVisual* Build(Visual* parent, const std::vector<rob::PosTemplate<float>>& points, bool arrow);

    const DynamicLines& getLine() const { return line; }

    void update() override;

private:
    DynamicLines line{RenderOpType::LineStrip};
};

} // namespace vrk::visual
