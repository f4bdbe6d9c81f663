#pragma once

#include "platform/layout/PointSet.h"
#include "selection/geometry/BVHPrimitive.h"

#include <memory>
#include <span>
#include <vector>

namespace vrk::visual {
class PointCloudVisual;
}

namespace vrk::selection {

class CloudPoints;

/// Some points of a cloud that lie together, hit by a ray that passes within three units.
///
/// The cloud is not owned and must outlive it.
/// Units: the cloud's own coordinates. Thread: as any primitive.
class VRK_EXPORT SensitivePoints : public BVHPrimitive {
public:
    /// @param indices  numbers of points in the cloud.
    SensitivePoints(visual::PointCloudVisual* visual, std::vector<unsigned>&& indices);
    /// A group of the points of `visual`. @param group  the index of its node.
    SensitivePoints(visual::PointCloudVisual* visual, const std::shared_ptr<const CloudPoints>& points,
                    std::size_t group);

    /// Of the points within reach the one nearest to the origin of the ray, not the one nearest to the ray. Fills the
    /// visual and the point's number.
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    /// As intersectRay, for a caller that has a hit at the distance `limit` already: unless there is a nearer one, it
    /// leaves `result` as it is and returns false.
    /// @param hidden  points that it passes by; null for none.
    bool nearestWithin(Result& result, const visual::Ray& ray, float limit,
                       const layout::PointSet* hidden = nullptr) const;

    std::span<const unsigned> getIndices() const { return indices; }

private:
    void settleBox();

    // What the two below are stretches of
    std::shared_ptr<const CloudPoints> shared;
    std::vector<unsigned> ownIndices;
    std::vector<rob::PosTemplate<float>> ownPlaces;

    std::span<const unsigned> indices;
    std::span<const rob::PosTemplate<float>> places; // of each index
    visual::PointCloudVisual* visual;
};

} // namespace vrk::selection
