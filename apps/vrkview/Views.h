#pragma once

#include "scene/math/Vec.h"

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

// Each posts a move of the camera of a started library that has a render target. Render thread.

/// The view that the station was left with; where it has none, everything from the first of the directions.
void lookAsLeft();

/// Everything in view along the direction of `view`.
void lookAlong(const View& view);
/// Everything in view, the direction kept.
void fitAll();

} // namespace vrkview
