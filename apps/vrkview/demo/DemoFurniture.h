#pragma once

#include "scene/math/Pose.h"

#include <filesystem>
#include <memory>

namespace vrk::layout {
class Assembly;
class Part;
} // namespace vrk::layout

/// What stands around the arm. Each thing stands on z = 0.
namespace vrkview::demo {

/// The steel stand under the arm, of this height.
std::shared_ptr<vrk::layout::Part> makePedestal(double height);
/// A controller's cabinet with a signal lamp on it; its door faces -y.
std::shared_ptr<vrk::layout::Part> makeCabinet(const vrk::rob::Posed& pose);
/// A measuring bench with a stone top, `benchHeight` above the floor.
std::shared_ptr<vrk::layout::Part> makeBench(const vrk::rob::Posed& pose);
constexpr double benchHeight = 560;
/// A wooden pallet, `palletHeight` high.
std::shared_ptr<vrk::layout::Part> makePallet(const vrk::rob::Posed& pose);
constexpr double palletHeight = 144;
/// Two sides of a fence, behind the cell and to its left: posts, and panels that are one STL file.
/// @throws std::runtime_error  if that file cannot be written.
std::shared_ptr<vrk::layout::Assembly> makeFence();

} // namespace vrkview::demo
