#include "canvas/Views.h"

#include "platform/layout/Layout.h"
#include "scene/Scene.h"
#include "scene/ShownCorners.h"
#include "view/Camera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace vrkview {
namespace {

using vrk::rob::Posef;
using vrk::rob::Posf;
using vrk::visual::Camera;
using vrk::visual::Scene;

constexpr float third = std::numbers::inv_sqrt3_v<float>;

// Upwards is z, the front faces -y, and x points to the right in the front view and in both views along z.
constexpr std::array views = {
    View{"iso", 0, {-third, third, -third}, {0, 0, 1}},
    View{"front", 1, {0, 1, 0}, {0, 0, 1}},
    View{"back", 2, {0, -1, 0}, {0, 0, 1}},
    View{"left", 3, {1, 0, 0}, {0, 0, 1}},
    View{"right", 4, {-1, 0, 0}, {0, 0, 1}},
    View{"top", 5, {0, 0, -1}, {0, 1, 0}},
    View{"bottom", 6, {0, 0, 1}, {0, -1, 0}},
};

constexpr float leastAround = 10, partAround = 0.1f; // room around a box: model units, and part of its size
constexpr float filled = 0.92f;                      // of the picture's width or height

/// The narrowest wedge of a given slope that holds some points, seen across it.
class Wedge {
public:
    explicit Wedge(float slope) : slope(slope) {}

    void add(float across, float depth)
    {
        right = std::max(right, across - slope * depth);
        left = std::max(left, -across - slope * depth);
    }
    float apexDepth() const { return -(right + left) / (2 * slope); }
    float apexAcross() const { return (right - left) / 2; }

private:
    float slope;
    float right = std::numeric_limits<float>::lowest();
    float left = std::numeric_limits<float>::lowest();
};

/// Where these places fill the picture, turned as `fit`; with none, `fit` itself.
Posef fitted(const std::vector<Posf>& corners, const Posef& fit)
{
    if (corners.empty())
        return fit;

    const float vertical = std::tan(Camera::Get()->getVFOV() / 2) * filled;
    Wedge horizontal(vertical * Camera::Get()->getAspectRatio());
    Wedge upright(vertical);
    const Posef toCamera = fit.inverse();
    for (const Posf& corner : corners) {
        const Posf seen = toCamera * corner; // the camera looks along its negative z axis
        horizontal.add(seen.x, -seen.z);
        upright.add(seen.y, -seen.z);
    }
    const float depth = std::min(horizontal.apexDepth(), upright.apexDepth());
    return {fit * Posf(horizontal.apexAcross(), upright.apexAcross(), -depth), fit.rotation()};
}

/// The scene's own fit leaves room for the ball around everything; seen from where it puts the camera, this one draws
/// nearer and to the middle until the boxes of the bodies fill the picture.
Posef closer(const Posef& fit)
{
    return fitted(vrk::visual::ShownCorners(), fit);
}

template <typename Wanted, typename Field>
const View* findBy(Field field, const Wanted& wanted)
{
    const auto found = std::ranges::find(views, wanted, field);
    return found == views.end() ? nullptr : &*found;
}

} // namespace

std::span<const View> allViews()
{
    return views;
}

const View* findView(std::string_view name)
{
    return findBy([](const View& view) { return std::string_view(view.name); }, name);
}

const View* findView(int key)
{
    return findBy(&View::key, key);
}

std::string viewNames()
{
    std::string names;
    for (const View& view : views)
        names += (names.empty() ? "" : ", ") + std::string(view.name);
    return names;
}

void lookAsLeft()
{
    const vrk::rob::Posed& left = vrk::layout::Layout::inst().lastViewPointPose;
    if (left == vrk::rob::Posed())
        lookAlong(views.front());
    else
        Scene::Get()->setCameraPose(Posef(left));
}

Posef poseAlong(const View& view)
{
    return closer(Scene::Get()->getViewPoseForDir(view.dir, view.up));
}

Posef poseForAll()
{
    return closer(Scene::Get()->getViewAllPose());
}

Posef poseAsLeft()
{
    const vrk::rob::Posed& left = vrk::layout::Layout::inst().lastViewPointPose;
    return left == vrk::rob::Posed() ? poseForAll() : Posef(left);
}

Posef poseForBox(const vrk::visual::Box& box)
{
    const float around = std::max(leastAround, partAround * (box.max - box.min).length());
    std::vector<Posf> corners;
    for (unsigned i = 0; i < 8; ++i)
        corners.emplace_back(i & 1 ? box.max.x + around : box.min.x - around,
                             i & 2 ? box.max.y + around : box.min.y - around,
                             i & 4 ? box.max.z + around : box.min.z - around);
    return fitted(corners, Camera::Get()->getWorldPose());
}

void lookAlong(const View& view)
{
    Scene::Get()->setCameraPose(poseAlong(view));
}

} // namespace vrkview
