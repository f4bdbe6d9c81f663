#pragma once

#include "platform/layout/Layout.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"

#include <cmath>
#include <memory>
#include <numbers>
#include <random>
#include <utility>
#include <vector>

namespace vrk::test {

/// A cloud of the station.
inline std::shared_ptr<layout::PointCloud> addModelCloud(layout::PointCloud::Points points,
                                                         layout::PointCloud::Normals normals = {},
                                                         layout::PointCloud::Colors colors = {})
{
    auto cloud = std::make_shared<layout::PointCloud>(sdf::SdfManager::inst().generateId(), "scan", std::move(points),
                                                      std::move(normals), std::move(colors));
    layout::Layout::inst().addPointCloud(cloud);
    return cloud;
}

struct Scan {
    layout::PointCloud::Points points;
    layout::PointCloud::Normals normals;
};

/// What a scanner sees of a ball of radius 100 on a floor of 400 x 400 about the origin: `count` points, the first half of
/// them on the floor.
inline Scan scanOfBallOnFloor(std::size_t count)
{
    Scan scan;
    std::mt19937 random(11);
    const auto uniform = [&random](double from, double to) {
        return from + (to - from) * (static_cast<double>(random()) / 4294967296.0);
    };
    while (scan.points.size() < count / 2) {
        scan.points.emplace_back(static_cast<float>(uniform(-200, 200)), static_cast<float>(uniform(-200, 200)), 0.0f);
        scan.normals.emplace_back(0.0f, 0.0f, 1.0f);
    }
    while (scan.points.size() < count) {
        const double z = uniform(-1, 1);
        const double turn = uniform(0, 2 * std::numbers::pi);
        const double around = std::sqrt(1 - z * z);
        const rob::Vec3f out(static_cast<float>(around * std::cos(turn)), static_cast<float>(around * std::sin(turn)),
                             static_cast<float>(z));
        scan.points.emplace_back(100 * out.x, 100 * out.y, 100 + 100 * out.z);
        scan.normals.push_back(out);
    }
    return scan;
}

} // namespace vrk::test
