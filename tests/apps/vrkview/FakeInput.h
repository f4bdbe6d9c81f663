#pragma once

namespace vrkview::test {

// Input as if from the keyboard and the mouse of the present display: it goes the whole way through the display server.

/// @param name  as X11 calls the key, such as "5" or "F1".
void typeKey(const char* name);
/// Device pixels of the screen.
void moveMouse(int x, int y);
void clickLeft();

} // namespace vrkview::test
