#pragma once

#include "selection/SelectableObject.h"

#include <vector>

namespace vrk::visual {
class PointCloudVisual;
}

namespace vrk::selection {

/// A cloud, by groups of up to a thousand points that lie together. Only rays find it.
class VRK_EXPORT PointCloudObject final : public SelectableObject {
public:
    explicit PointCloudObject(visual::PointCloudVisual* visual);

    /// Fills the visual and the number of the point.
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    void intersectRayWithin(Result& result, const visual::Ray& ray, float limit) const override;
    void update() override { updateFromHierarchy(); }

private:
    struct Corners {
        rob::PosTemplate<float> min;
        rob::PosTemplate<float> max;
    };

    void buildPrimitives() override;
    void splitPoints(std::vector<unsigned>&& indices, const Corners& box);

    visual::PointCloudVisual* cloud;
};

} // namespace vrk::selection
