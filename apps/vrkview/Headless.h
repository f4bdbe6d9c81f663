#pragma once

namespace vrkview {

struct Options;
struct Station;

// Both need a started library with the station built. Render thread.

/// Draws the station from each of the views and writes PNG files: one view under the name that was asked for, several
/// with the view's name before the ending.
/// @throws std::runtime_error naming the file that cannot be written.
void takePictures(const Options& options);

/// Writes the tree of the station to standard output.
void printList(const Station& station);

} // namespace vrkview
