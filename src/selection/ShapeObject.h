#pragma once

#include "selection/SelectableObject.h"

#include <TopoDS_Shape.hxx>

#include <memory>

namespace vrk::visual {
class SolidVisual;
}

namespace vrk::selection {

class ShapeBorders;
class ShapeParts;

/// A solid, by those of its faces that are shown and have triangles. Solids of one shape that show all of them have their
/// parts in common.
class VRK_EXPORT ShapeObject final : public SelectableObject {
public:
    ShapeObject(const TopoDS_Shape& shape, visual::SolidVisual* visual);
    ~ShapeObject() override;

    void intersectLine(Result& result, const rob::LineTemplate<float>& line) const override;
    void intersectTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const override;
    /// Fills the face, the shape, the pose and the visual.
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    void intersectRayWithin(Result& result, const visual::Ray& ray, float limit) const override;
    bool isHitWithinBox() const override { return true; }
    void update() override { updateFromHierarchy(); }
    /// The name of the visual.
    std::string getDescription() const override;
    const TopoDS_Shape& getShape() const { return shape; }
    /// The edges and vertices of the faces that are shown. They are gathered by the first who asks, on any thread, once
    /// the parts are made.
    const ShapeBorders& getBorders() const;

private:
    void buildPrimitives() override;
    bool canBuildOnAnyThread() override;

    visual::SolidVisual* solid;
    TopoDS_Shape shape;
    std::shared_ptr<const ShapeParts> parts; // once they are made
};

} // namespace vrk::selection
