#pragma once

namespace vrkview {

/// Whether DISPLAY names a display that answers.
bool displayAnswers();

/// Starts the library once, on the present display. Its own window is never seen nor drawn to: what is shown
/// or read is drawn elsewhere.
/// @throws std::runtime_error with the cause, as `vrk::visual::TryInit` tells it.
void startLibrary();

/// Clip distances and a lens that suit the size of what the scene holds now: what is nearer than a hundredth of its
/// radius, or farther than a hundred times it, is not drawn. Render thread.
void suitCameraToScene();

} // namespace vrkview
