#include "Views.h"

#include "scene/Scene.h"
#include "view/Camera.h"

#include <algorithm>
#include <array>
#include <numbers>

namespace vrkview {
namespace {

using vrk::rob::Dirf;
using vrk::visual::Camera;
using vrk::visual::Scene;

constexpr float third = std::numbers::inv_sqrt3_v<float>;

// Upwards is z, the front faces -y, and x points to the right in the front view and in both views along z.
constexpr std::array views = {
    View{"iso", 0, {-third, third, -third}, {0, 0, 1}}, View{"front", 1, {0, 1, 0}, {0, 0, 1}},
    View{"back", 2, {0, -1, 0}, {0, 0, 1}},             View{"left", 3, {1, 0, 0}, {0, 0, 1}},
    View{"right", 4, {-1, 0, 0}, {0, 0, 1}},            View{"top", 5, {0, 0, -1}, {0, 1, 0}},
    View{"bottom", 6, {0, 0, 1}, {0, -1, 0}},
};

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

void lookAlong(const View& view)
{
    Scene& scene = *Scene::Get();
    scene.setCameraPose(scene.getViewPoseForDir(view.dir, view.up));
    scene.processMsgs();
}

void fitAll()
{
    Scene& scene = *Scene::Get();
    scene.setCameraPose(scene.getViewAllPose());
    scene.processMsgs();
}

} // namespace vrkview
