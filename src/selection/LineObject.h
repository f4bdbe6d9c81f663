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
    void update() override { updateFromHierarchy(); }

private:
    void buildPrimitives() override;
    bool appendFrameAxes(); // false if the visual is not the frame of a target

    bool ofFrame = false;
};

} // namespace vrk::selection
