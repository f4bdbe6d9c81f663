#pragma once

#include "platform/common/Export.h"
#include "scene/core/CameraSnapshot.h"
#include "scene/math/Pose.h"
#include "selection/geometry/BVHNode.h"

#include <cstdint>
#include <unordered_map>
#include <utility>
#include <vector>

namespace vrk::selection {

class PointCloudObject;

using PointsOfClouds = std::unordered_map<unsigned, std::vector<std::uint64_t>>; // as in VisualSelection.h

enum class LassoCoverage : unsigned { Outside = 0, Inside = 1, Partial = 2 };

/// What lies within a free polygon of the view, which may be concave and cross itself: inside is where a ray to the right
/// crosses its edges an odd number of times (the crossing number of M. Shimrat, "Algorithm 112: Position of point relative
/// to polygon", CACM 5, 1962).
///
/// There is no near end: a place behind the camera is projected as it falls.
///
/// Thread: any, as a value; what it is asked about must not change meanwhile.
class VRK_EXPORT LassoSelector {
public:
    /// The class of a part with the part: 0 for one that is wholly inside, 1 for one that is partly.
    using Found = std::pair<std::uint32_t, BVHPrimitive*>;

    /// @param polygon  pixels, counted from the view's top left corner; z is not read.
    /// @param camera   as the view is now. It must have pixels.
    LassoSelector(const std::vector<rob::PosTemplate<float>>& polygon, const visual::CameraSnapshot& camera);

    /// Adds the points of one cloud under the id of its visual, group by group as the hierarchy is walked, which is not the
    /// order of their numbers. The entry is made even if no point falls inside. The groups are shared out to all cores.
    void selectPointCloud(PointCloudObject* cloud, PointsOfClouds& result) const;
    /// The primitives of a hierarchy whose boxes, moved by `pose`, are not outside.
    std::vector<Found> selectPrimitives(const BVHNode* root, const rob::PoseTemplate<float>& pose) const;
    /// By the rectangle around the box's corners as the camera sees them.
    LassoCoverage classifyBox(const visual::Box& box, const rob::PoseTemplate<float>& pose) const;

    /// A place in the world in normalised device coordinates: -1 to 1 across the view, y upwards.
    rob::Vec2Template<float> project(const rob::PosTemplate<float>& place) const;
    /// Never of a polygon of less than three points. @param p  in normalised device coordinates.
    bool isInsidePolygon(const rob::Vec2Template<float>& p) const;

private:
    struct Rectangle {
        float minX, minY, maxX, maxY;
    };

    bool crossesRectangle(const Rectangle& rectangle) const;

    std::vector<rob::Vec2Template<float>> polygon; // in normalised device coordinates
    visual::CameraSnapshot::Matrix worldToCube;
};

} // namespace vrk::selection

namespace vrk::visual {
using selection::LassoCoverage;
using selection::LassoSelector;
} // namespace vrk::visual
