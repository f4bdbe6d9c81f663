#pragma once

#include "scene/math/Pose.h"
#include "selection/geometry/Box.h"

#include <span>
#include <string>
#include <string_view>

namespace vrkview {

/// A standard direction of view.
struct View {
    const char* name;
    int key;                          // the digit that chooses it in the window
    vrk::rob::DirTemplate<float> dir; // unit length
    vrk::rob::DirTemplate<float> up;
};

std::span<const View> allViews();
/// Null for an unknown name.
const View* findView(std::string_view name);
/// Null for a digit without a view.
const View* findView(int key);
/// All names, joined by commas.
std::string viewNames();

// All need the camera of a started library that has a render target. Render thread.

/// Where everything is in view along the direction of `view`.
vrk::rob::Posef poseAlong(const View& view);
/// Where everything is in view, the direction kept.
vrk::rob::Posef poseForAll();
/// Where this box, with some room around it, fills the picture, the direction kept.
vrk::rob::Posef poseForBox(const vrk::visual::Box& box);
/// Posts the move to `poseAlong`.
void lookAlong(const View& view);
/// The view that the station was left with; where it has none, that of everything, the direction kept.
vrk::rob::Posef poseAsLeft();
/// Posts the move to the view that the station was left with; where it has none, to the first of the directions.
void lookAsLeft();

} // namespace vrkview
