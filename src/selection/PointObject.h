#pragma once

#include "selection/SelectableObject.h"

namespace vrk::visual {
class PointVisual;
}

namespace vrk::selection {

/// A single point, hit by a ray that passes within two units. Only rays find it.
class VRK_EXPORT PointObject final : public SelectableObject {
public:
    explicit PointObject(visual::PointVisual* visual);

    /// The distance is the depth along the ray. Where the point is, is read from the visual at once, not as of the latest
    /// update.
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    void update() override;
    /// Where the point is drawn, in the object's coordinates. They begin at the point, though the scale that the visual is
    /// drawn in moves it away from there.
    rob::Posd getDrawnPlace() const;

private:
    visual::PointVisual* point;
};

} // namespace vrk::selection
