#pragma once

#include "visual/LineVisual.h"

namespace vrk::visual {

class MeshVisual;

/// Curves that are offered, as strips, perhaps with an arrow.
///
/// Owner: the scene's list of previewed curves. Thread: render thread.
class VRK_EXPORT PreviewCurve : public LineVisual {
public:
    PreviewCurve(const std::string& name, Visual* parent);

    /// One more strip. It shows after the next `update`.
    void addStrip(const std::vector<rob::PosTemplate<float>>& points);
    /// An arrow at a point, both in the frame of this visual.
    /// @throws std::overflow_error "0-length vector cannot be normalized." for a direction without length; there is no arrow
    ///         then.
    void addArrow(const rob::PosTemplate<float>& point, const rob::Vec3Template<float>& direction);
    /// Null without one.
    MeshVisual* getArrow() const { return arrow; }
    void setIdentifier(unsigned newId) { id = newId; }

private:
    MeshVisual* arrow = nullptr;
};

} // namespace vrk::visual
