#pragma once

#include "platform/layout/PointSet.h"
#include "selection/SelectableObject.h"

#include <memory>

namespace vrk::visual {
class PointCloudVisual;
}

namespace vrk::selection {

class CloudPoints;

/// A cloud, by groups of up to a thousand points that lie together. Only rays find it.
class VRK_EXPORT PointCloudObject final : public SelectableObject {
public:
    explicit PointCloudObject(visual::PointCloudVisual* visual);

    /// Fills the visual and the number of the point.
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    void intersectRayWithin(Result& result, const visual::Ray& ray, float limit) const override;
    void update() override { updateFromHierarchy(); }

    /// Null before the first update.
    const std::shared_ptr<const CloudPoints>& getPoints() const { return points; }

    /// What is hidden of the cloud is in the groups as well, but no query finds it; null where nothing is. It is as the
    /// visual had it when the service was last told.
    std::shared_ptr<const layout::PointSet> hidden;

private:
    void buildPrimitives() override;

    visual::PointCloudVisual* cloud;
    std::shared_ptr<const CloudPoints> points;
};

} // namespace vrk::selection
