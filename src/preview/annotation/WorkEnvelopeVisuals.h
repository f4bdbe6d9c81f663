#pragma once

#include "visual/LineVisual.h"

#include <memory>
#include <span>

namespace vrk::visual {

class ManualDrawing;

/// How far an arm reaches, as a curve in one plane.
///
/// Owner: the parent visual. Thread: render thread. Units: model units, in the frame of the parent.
class VRK_EXPORT WorkEnvelope2DVisual : public LineVisual {
public:
    WorkEnvelope2DVisual(const std::string& name, Visual* parent);

    /// The curve as one strip; it is not closed.
    void setCurve(std::span<const rob::PosTemplate<double>> points);
    const DynamicLines& getLine() const { return *line; }

private:
    DynamicLines* line; // owned by the lines of the base
};

/// How far an arm reaches: the surface that a curve sweeps as it turns about z. Hidden at first.
///
/// Owner: the parent visual. Thread: render thread. Units: model units, in the frame of the parent; angles are radians.
class VRK_EXPORT WorkEnvelope3DVisual : public Visual {
public:
    static constexpr int steps = 50; ///< so that the curve stands there once more than that, whatever the angle

    WorkEnvelope3DVisual(const std::string& name, Visual* parent);
    ~WorkEnvelope3DVisual() override;

    /// The curve turned from one angle to the other, in place of what was there. Fewer than two points have no surface.
    /// @param normals  one for each point.
    void setSurface(std::span<const rob::PosTemplate<double>> points, std::span<const rob::DirTemplate<double>> normals,
                    double from, double to);

private:
    std::unique_ptr<ManualDrawing> surface;
};

} // namespace vrk::visual
