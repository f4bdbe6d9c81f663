#include "bench/support/PclPeer.h"

#include <pcl/filters/crop_hull.h>
#include <pcl/filters/frustum_culling.h>
#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <limits>

namespace vrk::bench {
namespace {

using Points = pcl::PointCloud<pcl::PointXYZ>;

PclCloud::Numbers kept(pcl::FilterIndices<pcl::PointXYZ>& filter)
{
    pcl::Indices indices;
    filter.filter(indices);
    return {indices.begin(), indices.end()};
}

} // namespace

struct PclCloud::Cloud {
    Points::Ptr points{new Points};
};

PclCloud::PclCloud(std::span<const rob::Posf> points) : cloud(std::make_unique<Cloud>())
{
    cloud->points->reserve(points.size());
    for (const rob::Posf& p : points)
        cloud->points->emplace_back(p.x, p.y, p.z);
}

PclCloud::~PclCloud() = default;

PclCloud::Numbers PclCloud::inFrustum(const Frustum& frustum) const
{
    pcl::FrustumCulling<pcl::PointXYZ> filter;
    filter.setInputCloud(cloud->points);
    filter.setHorizontalFOV(static_cast<float>(frustum.horizontal));
    filter.setVerticalFOV(static_cast<float>(frustum.vertical));
    filter.setNearPlaneDistance(static_cast<float>(frustum.nearest));
    filter.setFarPlaneDistance(static_cast<float>(frustum.farthest));
    Eigen::Matrix4f pose = Eigen::Matrix4f::Identity(); // forward, up, right, as this filter has it
    const rob::Dirf* const axes[3] = {&frustum.forward, &frustum.up, &frustum.right};
    for (int column = 0; column < 3; ++column)
        pose.block<3, 1>(0, column) = Eigen::Vector3f(axes[column]->x, axes[column]->y, axes[column]->z);
    pose.block<3, 1>(0, 3) = Eigen::Vector3f(frustum.eye.x, frustum.eye.y, frustum.eye.z);
    filter.setCameraPose(pose);
    return kept(filter);
}

PclCloud::Numbers
PclCloud::inPolygon(std::span<const rob::Vec2Template<double>> corners,
                    const std::function<std::optional<rob::Vec2Template<double>>(const rob::Posf&)>& pixelOf) const
{
    const Points::Ptr shown(new Points), hull(new Points);
    shown->reserve(cloud->points->size());
    constexpr float beyond = std::numeric_limits<float>::max();
    for (const pcl::PointXYZ& p : *cloud->points) {
        const auto pixel = pixelOf({p.x, p.y, p.z});
        shown->emplace_back(pixel ? static_cast<float>(pixel->x) : beyond,
                            pixel ? static_cast<float>(pixel->y) : beyond, 0.0f);
    }
    std::vector<pcl::Vertices> polygon(1);
    for (const auto& c : corners) {
        polygon[0].vertices.push_back(static_cast<pcl::index_t>(hull->size()));
        hull->emplace_back(static_cast<float>(c.x), static_cast<float>(c.y), 0.0f);
    }
    pcl::CropHull<pcl::PointXYZ> filter;
    filter.setInputCloud(shown);
    filter.setHullCloud(hull);
    filter.setHullIndices(polygon);
    filter.setDim(2);
    return kept(filter);
}

} // namespace vrk::bench
