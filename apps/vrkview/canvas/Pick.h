#pragma once

#include "selection/geometry/Result.h"
#include "selection/pick/PickQuery.h"

#include <nlohmann/json_fwd.hpp>

#include <span>
#include <utility>

namespace vrkview {

struct Options;

/// What lies under a pixel of the main camera's view, and how long it took to find. A point of a cloud counts where there is
/// nothing else.
struct Pick {
    vrk::selection::Result result;
    double microseconds = 0;
};

// Render thread, with a started library and a camera that has a target.

/// Brings the picking service up to date first, which is not in the time.
Pick pickAt(float x, float y);
/// What was hit, by id, name and kind, with the face and the nearest edge of a solid, the edge of a curve, or the point of
/// a cloud: what there is.
nlohmann::ordered_json describe(const vrk::selection::Result& result);

/// A candidate by kind, id, name and type, with its number, place and distances, and the verdict in words.
nlohmann::ordered_json describe(const vrk::selection::PickCandidate& candidate);

/// Prints what lies under each of the pixels that were asked for, or all that a click there could mean, as JSON.
void printPicks(const Options& options);
/// Picks a grid of pixels and prints what was found and how fast; writes the picture of it, each object in a colour of its
/// own, if one was asked for.
/// @throws std::runtime_error naming the file that cannot be written.
void printPickGrid(const Options& options);

} // namespace vrkview
