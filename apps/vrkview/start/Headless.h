#pragma once

#include <memory>

namespace vrk::visual {
class OffscreenTarget;
}

namespace vrkview {

struct Options;
struct Station;

/// While it lives, the main camera stands where the first picture would be taken from, with a target of that size. Picks
/// from the command line are asked through it; nothing is drawn.
/// Render thread.
class PictureView {
public:
    explicit PictureView(const Options& options);
    ~PictureView();
    PictureView(const PictureView&) = delete;
    PictureView& operator=(const PictureView&) = delete;

private:
    std::unique_ptr<vrk::visual::OffscreenTarget> target;
};

// Both need a started library with the station built. Render thread.

/// Draws the station from each of the views and writes PNG files: one view under the name that was asked for, several
/// with the view's name before the ending.
/// @throws std::runtime_error naming the file that cannot be written.
void takePictures(const Options& options);

/// Writes the tree of the station to standard output.
void printList(const Station& station);

} // namespace vrkview
