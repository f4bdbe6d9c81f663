#pragma once

#include "scene/Scene.h"
#include "scene/ViewLook.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vrkview {

struct HiddenFace;

/// What is drawn of the bodies, by the name that the command line knows it by.
struct DrawMode {
    const char* name;
    int functionKey; // of the key that chooses it in the window, counted from F1
    vrk::visual::Scene::DisplayMode sceneMode;
    vrk::visual::LineLook lines = vrk::visual::LineLook::None;
};

std::span<const DrawMode> allDrawModes();
/// Null for an unknown name.
const DrawMode* findDrawMode(std::string_view name);
/// Null for a function key without a mode.
const DrawMode* findDrawMode(int functionKey);
/// All names, joined by commas.
std::string drawModeNames();

/// Posts the change. Bodies that are shown again have all their faces: those in `hidden` are hidden once more.
void showAs(const DrawMode& mode, const std::vector<HiddenFace>& hidden);

} // namespace vrkview
