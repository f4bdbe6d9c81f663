#pragma once

#include "selection/geometry/BVHPrimitive.h"
#include "selection/geometry/PrimitiveContainer.h"

#include <TopoDS_Shape.hxx>

namespace vrk::visual {
class EdgeVisual;
}

namespace vrk::selection {

/// An edge of a curve, by the strip that is drawn of it.
///
/// Units: those of the curve. The pose of the edge's visual maps the strip to them.
/// Thread: as SensitiveLine.
class VRK_EXPORT SensitiveEdge : public BVHPrimitive, public PrimitiveContainer {
public:
    /// Points of the strip that lie on the one before are left out.
    SensitiveEdge(visual::EdgeVisual* visual, const TopoDS_Shape& edge);

    /// Fills the edge as well. Both positions are in the coordinates of the curve.
    void intersectRay(Result& result, const visual::Ray& ray) const override;

    const TopoDS_Shape& getEdge() const { return edge; }
    /// From the strip to the curve.
    const rob::PoseTemplate<float>& getPose() const { return pose; }

private:
    TopoDS_Shape edge;
    bool hasPose = false;
    rob::PoseTemplate<float> pose;
    rob::PoseTemplate<float> inversePose;
};

} // namespace vrk::selection
