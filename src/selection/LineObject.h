#pragma once

#include "selection/SelectableObject.h"

namespace vrk::selection {

/// Line sections, or the axes of a target's frame, as they are when the object is first brought up to date. Only rays find
/// them.
class VRK_EXPORT LineObject final : public SelectableObject {
public:
    /// A visual that is neither a line visual nor the frame of a target gives an object without parts.
    explicit LineObject(visual::Visual* visual);

    /// Fills the visual.
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    /// Of a target, by its axes.
    bool isOfFrame() const { return ofFrame; }
    visual::Box partsBox() const override;
    void update() override { updateFromHierarchy(); }
    bool mayBeHit(const visual::Ray& ray, const PickLimits& limits) const override;

private:
    void buildPrimitives() override;
    bool appendFrameAxes(); // false if the visual is not the frame of a target
    void appendSections();
    void buildSphere();
    void closestHitOfFew(Result& result, const visual::Ray& ray) const;
    bool isFew() const { return primitives.size() <= BVHLeaf::capacity; }

    // Around the lines without their tolerance, in the object's coordinates
    rob::PosTemplate<float> middle;
    float radius = 0;
    bool ofFrame = false;
};

} // namespace vrk::selection
