#pragma once

#include "selection/SelectableObject.h"

namespace vrk::selection {

/// Line sections, as they are when the object is first brought up to date. Only rays find them.
class VRK_EXPORT LineObject final : public SelectableObject {
public:
    /// A visual that is no line visual gives an object without parts.
    explicit LineObject(visual::Visual* visual);

    /// Fills the visual.
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    void update() override { updateFromHierarchy(); }

private:
    void buildPrimitives() override;
};

} // namespace vrk::selection
