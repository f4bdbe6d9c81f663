#include "selection/VisualSelection.h"

#include "platform/common/ParallelFor.h"
#include "selection/PointCloudObject.h"
#include "selection/ViewPixels.h"
#include "selection/region/LassoSelector.h"
#include "selection/region/SelectionVolume.h"
#include "visual/PointCloudVisual.h"

#include <algorithm>
#include <numeric>
#include <thread>

/// What a rectangle or a polygon of the view encloses.
namespace vrk::selection {
namespace {

/// The numbers of the points inside, ascending: every point is tested, by as many threads as there are cores.
std::vector<std::uint64_t> pointsInside(const visual::PointCloudVisual& cloud, const SelectionVolume& volume)
{
    const rob::PoseTemplate<float> pose = cloud.getWorldPose();
    const auto& points = cloud.getPoints();
    const unsigned reported = std::thread::hardware_concurrency();
    const std::size_t ranges = reported == 0 ? 4 : reported;
    const std::size_t chunk =
        points.size() / ranges; // none where there are fewer points: the last range takes them all
    std::vector<std::vector<unsigned>> inside(ranges);
    parallelFor(ranges, [&](std::size_t first, std::size_t last) {
        for (std::size_t k = first; k < last; ++k) {
            const std::size_t end = k + 1 == ranges ? points.size() : (k + 1) * chunk;
            for (std::size_t i = k * chunk; i < end; ++i)
                if (volume.holds(pose * points[i]))
                    inside[k].push_back(static_cast<unsigned>(i));
        }
    });
    std::vector<std::uint64_t> all;
    all.reserve(std::accumulate(inside.begin(), inside.end(), std::size_t{0},
                                [](std::size_t sum, const auto& range) { return sum + range.size(); }));
    for (const auto& range : inside)
        all.insert(all.end(), range.begin(), range.end());
    if (const auto& hidden = cloud.getHiddenPoints())
        std::erase_if(all, [&hidden](std::uint64_t number) { return hidden->contains(number); });
    return all;
}

} // namespace

std::vector<visual::Visual*> VisualSelection::boxSelect(float x1, float y1, float x2, float y2) const
{
    std::vector<visual::Visual*> selected;
    const auto camera = cameraWithPixels();
    if (dirty || !camera)
        return selected;
    const SelectionVolume volume = buildSelectionVolume(*camera, x1, y1, x2, y2);
    std::vector<BVHPrimitive*> candidates;
    containers[0].queryVolume(volume, candidates);
    for (const BVHPrimitive* candidate : candidates)
        if (volume.classifyBox(candidate->box) != VolumeClass::Outside)
            selected.push_back(static_cast<const SelectableObject*>(candidate)->visual);
    return selected;
}

PointsOfClouds VisualSelection::boxSelectPointCloud(float x1, float y1, float x2, float y2) const
{
    PointsOfClouds selected;
    const auto camera = cameraWithPixels();
    if (dirty || !camera)
        return selected;
    const SelectionVolume volume = buildSelectionVolume(*camera, x1, y1, x2, y2);
    for (const BVHPrimitive* primitive : containers[clouds].primitives) {
        const auto* object = static_cast<const SelectableObject*>(primitive);
        if (!object->enabled || volume.classifyBox(object->box) == VolumeClass::Outside)
            continue;
        auto points = pointsInside(static_cast<const visual::PointCloudVisual&>(*object->visual), volume);
        if (!points.empty())
            selected.emplace(object->visual->getId(), std::move(points));
    }
    return selected;
}

PointsOfClouds VisualSelection::lassoSelectPointCloud(const std::vector<rob::PosTemplate<float>>& polygon) const
{
    PointsOfClouds selected;
    const auto camera = cameraWithPixels();
    if (dirty || !camera)
        return selected;
    const LassoSelector lasso(polygon, *camera);
    // The boxes of objects lie in the world.
    for (const auto& [coverage, primitive] : lasso.selectPrimitives(containers[clouds].getRoot(), {})) {
        auto* cloud = static_cast<PointCloudObject*>(primitive);
        if (!cloud->enabled)
            continue;
        if (coverage != 0 || cloud->hidden) {
            lasso.selectPointCloud(cloud, selected);
            // Without a number the entry would stand for all points, those that are hidden among them.
            if (const unsigned id = cloud->visual->getId(); cloud->hidden && selected[id].empty())
                selected.erase(id);
            continue;
        }
        // A cloud that is wholly inside, and hides none of its points, has an entry without a number, which stands for all of its points: callers rely
        // on it, since a list of all of them would cost more than the question.
        std::vector<std::uint64_t>& points = selected[cloud->visual->getId()];
        points.reserve(static_cast<const visual::PointCloudVisual*>(cloud->visual)->getPoints().size());
        std::iota(points.begin(), points.end(), std::uint64_t{0});
    }
    return selected;
}

PointsOfClouds VisualSelection::convexSelectPointCloud(const std::vector<rob::PosTemplate<float>>& polygon) const
{
    return lassoSelectPointCloud(polygon);
}

} // namespace vrk::selection
