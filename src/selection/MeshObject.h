#pragma once

#include "selection/SelectableObject.h"

#include <memory>

namespace vrk::selection {

class MeshParts;

/// A mesh that can be drawn in another size than its own. The objects of one mesh have their part in common.
///
/// Where the scale is not 1, the distance of a hit is one in the mesh's own size and not a length in the world.
class VRK_EXPORT MeshObject final : public SelectableObject {
public:
    /// A visual that draws no mesh gives an object without parts.
    explicit MeshObject(visual::Visual* visual);
    ~MeshObject() override;

    void intersectLine(Result& result, const rob::LineTemplate<float>& line) const override;
    void intersectTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const override;
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    void forEachInBox(const visual::Box& box, std::function<void(unsigned)> callback) const override;
    bool isHitWithinBox() const override { return worldScale == rob::Vec3Template<float>(1, 1, 1); }
    void update() override;

    const rob::Vec3Template<float>& getScale() const { return worldScale; }

private:
    void buildPrimitives() override;
    /// From the world to the mesh.
    rob::PosTemplate<float> toMesh(const rob::PosTemplate<float>& p) const;
    rob::PosTemplate<float> toWorld(const rob::PosTemplate<float>& p) const;

    std::shared_ptr<const MeshParts> parts; // once they are made
};

/// Whether it is the paint on a body. The questions that stand beside the plain ones pass over it: it lies on the body, whose
/// face is what is meant there.
VRK_EXPORT bool isPaint(const SelectableObject& object);

} // namespace vrk::selection
