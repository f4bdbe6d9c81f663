#pragma once

#include "selection/SelectableObject.h"

#include <TopoDS_Shape.hxx>

namespace vrk::visual {
class CurveVisual;
}

namespace vrk::selection {

/// A curve of the station, by its edges. Only rays find it.
class VRK_EXPORT CurveObject final : public SelectableObject {
public:
    CurveObject(const TopoDS_Shape& shape, visual::CurveVisual* visual);

    /// Fills the edge, the shape, the pose and the visual.
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    void update() override { updateFromHierarchy(); }
    const TopoDS_Shape& getShape() const { return shape; }

private:
    void buildPrimitives() override;

    TopoDS_Shape shape;
};

} // namespace vrk::selection
