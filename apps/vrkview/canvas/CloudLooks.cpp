#include "canvas/CloudLooks.h"

#include "platform/layout/Layout.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "visual/PointCloudVisual.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <shared_mutex>
#include <vector>

namespace vrkview {
namespace {

using vrk::visual::PointCloudVisual;
using vrk::visual::Scene;

bool byHeight = false; // of the one scene

std::vector<PointCloudVisual*> cloudVisuals()
{
    std::vector<PointCloudVisual*> found;
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const auto& cloud : vrk::layout::Layout::inst().pointclouds)
        if (Scene::HasVisual(cloud->getId()))
            if (auto* visual = dynamic_cast<PointCloudVisual*>(Scene::GetVisual(cloud->getId())))
                found.push_back(visual);
    return found;
}

} // namespace

bool areCloudsShownByHeight()
{
    return byHeight;
}

void showCloudsByHeight(bool wanted)
{
    byHeight = wanted;
    followCloudLooks();
}

void followCloudLooks()
{
    Scene::Get()->addRenderTask(
        [] {
            for (PointCloudVisual* visual : cloudVisuals())
                visual->showHeights(byHeight);
        },
        0);
}

ShownHeights shownHeights()
{
    ShownHeights shown;
    for (const PointCloudVisual* visual : cloudVisuals()) {
        if (!visual->isVisible() || !visual->areHeightsShown() || visual->getPoints().empty())
            continue;
        ++shown.clouds;
        const vrk::rob::PoseTemplate<float> pose = visual->getWorldPose();
        const vrk::rob::Vec3f up = pose.rotation() * vrk::rob::Vec3f(0, 0, 1);
        const vrk::visual::Box& box = visual->getBoxOfAllPoints();
        if (box.isValid())
            shown.largest = std::max(shown.largest, static_cast<double>((box.max - box.min).length()));
        shown.range.reset();
        if (shown.clouds == 1 && up.z > 0.99999f && box.isValid())
            shown.range = {static_cast<double>(box.min.z) + pose.position.z,
                           static_cast<double>(box.max.z) + pose.position.z};
    }
    return shown;
}

vrk::rob::ColorTemplate<double> heightColor(double height)
{
    // The scale "viridis" (CC0) as a polynomial, between the same two of its places as in the shader.
    constexpr std::array<std::array<double, 3>, 7> factors{{{0.277727, 0.005407, 0.334100},
                                                            {0.105093, 1.404614, 1.384590},
                                                            {-0.330862, 0.214848, 0.095095},
                                                            {-4.634230, -5.799101, -19.332441},
                                                            {6.228270, 14.179933, 56.690553},
                                                            {4.776385, -13.745145, -65.353033},
                                                            {-5.435456, 4.645853, 26.312435}}};
    const double t = std::lerp(0.08, 0.82, height);
    std::array<double, 3> color{};
    for (auto factor = factors.rbegin(); factor != factors.rend(); ++factor)
        for (std::size_t i = 0; i < 3; ++i)
            color[i] = color[i] * t + (*factor)[i];
    return {std::clamp(color[0], 0.0, 1.0), std::clamp(color[1], 0.0, 1.0), std::clamp(color[2], 0.0, 1.0)};
}

} // namespace vrkview
