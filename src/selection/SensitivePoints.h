#pragma once

#include "selection/geometry/BVHPrimitive.h"

#include <vector>

namespace vrk::visual {
class PointCloudVisual;
}

namespace vrk::selection {

/// Some points of a cloud that lie together, hit by a ray that passes within three units.
///
/// The cloud is not owned and must outlive it.
/// Units: the cloud's own coordinates. Thread: as any primitive.
class VRK_EXPORT SensitivePoints : public BVHPrimitive {
public:
    /// @param indices  numbers of points in the cloud.
    SensitivePoints(visual::PointCloudVisual* visual, std::vector<unsigned>&& indices);

    /// Of the points within reach the one nearest to the origin of the ray, not the one nearest to the ray. Fills the
    /// visual and the point's number.
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    /// As intersectRay, for a caller that has a hit at the distance `limit` already: unless there is a nearer one, it
    /// leaves `result` as it is and returns false.
    bool nearestWithin(Result& result, const visual::Ray& ray, float limit) const;

    const std::vector<unsigned>& getIndices() const { return indices; }

private:
    std::vector<unsigned> indices;
    visual::PointCloudVisual* visual;
};

} // namespace vrk::selection
