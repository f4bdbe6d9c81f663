#pragma once

namespace vrkview {

// What the scene has besides the station: the grid on the floor and the frame at the origin. Render thread; what changes
// the view posts.

/// The grid is shown where the station is at least as long as one of its cells: a smaller one would be crossed by single
/// lines. Frames get a length that suits the station's size.
void suitSurroundings();

bool isGridShown();
void showGrid(bool shown);
/// Lays the grid across the next axis, from z over x and y back to z, and shows it.
void turnGrid();

/// Makes the cross of axes in the corner larger by this factor. At once.
void enlargeCross(float factor);

/// Makes the axes of all frames longer, for steps above 0, or shorter, and shows them.
void changeFrameSize(int steps);

} // namespace vrkview
