#include "canvas/DrawMode.h"

#include "canvas/Visibility.h"
#include "files/Station.h"

#include "visual/SolidVisual.h"

#include <algorithm>
#include <array>

namespace vrkview {
namespace {

using vrk::visual::LineLook;
using vrk::visual::Scene;
using vrk::visual::SolidVisual;

constexpr std::array modes = {
    DrawMode{"shaded", 5, Scene::DisplayMode::Shaded},
    DrawMode{"shaded-edges", 6, Scene::DisplayMode::ShadedWithEdges},
    DrawMode{"edges", 7, Scene::DisplayMode::Edges},
    DrawMode{"wire", 8, Scene::DisplayMode::Wire},
    DrawMode{"lines", 9, Scene::DisplayMode::ShadedWithEdges, LineLook::Visible},
    DrawMode{"lines-dashed", 10, Scene::DisplayMode::ShadedWithEdges, LineLook::WithHidden},
};

template <typename Wanted, typename Field>
const DrawMode* findBy(Field field, const Wanted& wanted)
{
    const auto found = std::ranges::find(modes, wanted, field);
    return found == modes.end() ? nullptr : &*found;
}

} // namespace

std::span<const DrawMode> allDrawModes()
{
    return modes;
}

const DrawMode* findDrawMode(std::string_view name)
{
    return findBy([](const DrawMode& mode) { return std::string_view(mode.name); }, name);
}

const DrawMode* findDrawMode(int functionKey)
{
    return findBy(&DrawMode::functionKey, functionKey);
}

std::string drawModeNames()
{
    std::string names;
    for (const DrawMode& mode : modes)
        names += (names.empty() ? "" : ", ") + std::string(mode.name);
    return names;
}

void showAs(const DrawMode& mode, const std::vector<HiddenFace>& hidden)
{
    Scene& scene = *Scene::Get();
    scene.setDisplayMode(mode.sceneMode);
    scene.addRenderTask([lines = mode.lines] { vrk::visual::SetLineLook(lines); }, 0);
    // The mode shows whole bodies, of hidden things as well.
    hideWhatModelHides();
    if (mode.sceneMode == Scene::DisplayMode::Edges)
        return; // no face is shown
    for (const HiddenFace face : hidden)
        scene.addRenderTask(
            [face] {
                if (Scene::HasVisual(face.body)) // the body may be out of the station for the time being
                    dynamic_cast<SolidVisual&>(*Scene::GetVisual(face.body)).setFaceVisible(face.face, false);
            },
            0);
}

} // namespace vrkview
