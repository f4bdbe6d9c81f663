#include "Display.h"

#include "Station.h"

#include "visual/SolidVisual.h"

#include <algorithm>
#include <array>

namespace vrkview {
namespace {

using vrk::visual::Scene;
using vrk::visual::SolidVisual;

constexpr std::array displays = {
    Display{"shaded", 5, Scene::DisplayMode::Shaded},
    Display{"shaded-edges", 6, Scene::DisplayMode::ShadedWithEdges},
    Display{"edges", 7, Scene::DisplayMode::Edges},
    Display{"wire", 8, Scene::DisplayMode::Wire},
};

template <typename Wanted, typename Field>
const Display* findBy(Field field, const Wanted& wanted)
{
    const auto found = std::ranges::find(displays, wanted, field);
    return found == displays.end() ? nullptr : &*found;
}

} // namespace

std::span<const Display> allDisplays()
{
    return displays;
}

const Display* findDisplay(std::string_view name)
{
    return findBy([](const Display& display) { return std::string_view(display.name); }, name);
}

const Display* findDisplay(int functionKey)
{
    return findBy(&Display::functionKey, functionKey);
}

std::string displayNames()
{
    std::string names;
    for (const Display& display : displays)
        names += (names.empty() ? "" : ", ") + std::string(display.name);
    return names;
}

void showAs(const Display& display, const std::vector<HiddenFace>& hidden)
{
    Scene& scene = *Scene::Get();
    scene.setDisplayMode(display.mode);
    if (display.mode == Scene::DisplayMode::Edges)
        return; // no face is shown
    for (const HiddenFace face : hidden)
        scene.addRenderTask(
            [face] { dynamic_cast<SolidVisual&>(*Scene::GetVisual(face.body)).setFaceVisible(face.face, false); }, 0);
}

} // namespace vrkview
