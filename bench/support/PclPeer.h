#pragma once

#include "scene/math/Pose.h"
#include "scene/math/Vec.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace vrk::bench {

/// PCL's filters over the points of a cloud, in single precision as they are. They keep to one thread.
class PclCloud {
public:
    using Numbers = std::vector<std::uint32_t>;

    explicit PclCloud(std::span<const rob::Posf> points);
    ~PclCloud();

    struct Frustum {
        rob::Posf eye;
        rob::Dirf forward, up, right;
        double horizontal, vertical; // degrees, from side to side
        double nearest, farthest;
    };
    /// What `pcl::FrustumCulling` keeps.
    Numbers inFrustum(const Frustum& frustum) const;
    /// What `pcl::CropHull` keeps of the pixels of the points.
    /// @param pixelOf  none for a point that is not shown.
    Numbers inPolygon(std::span<const rob::Vec2Template<double>> corners,
                      const std::function<std::optional<rob::Vec2Template<double>>(const rob::Posf&)>& pixelOf) const;

private:
    struct Cloud;
    std::unique_ptr<Cloud> cloud;
};

} // namespace vrk::bench
