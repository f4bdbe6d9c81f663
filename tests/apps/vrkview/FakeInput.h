#pragma once

class QPoint;
class QWidget;

namespace vrkview::test {

// Input as if from the keyboard and the mouse of the present display: it goes the whole way through the display server.

/// @param name  as X11 calls the key, such as "5" or "F1".
void typeKey(const char* name);
/// Holds a key down until this ends.
class HeldKey {
public:
    explicit HeldKey(const char* name);
    ~HeldKey();
    HeldKey(const HeldKey&) = delete;
    HeldKey& operator=(const HeldKey&) = delete;

private:
    unsigned code;
};
/// To a place on a widget, in logical pixels from its top left corner; `aside` device pixels to the right of it.
void moveMouse(const QWidget& over, const QPoint& place, int aside = 0);
void clickLeft();
/// X11's numbers: 1 left, 2 middle, 3 right, 4 and 5 a notch of the wheel away from the user and back.
void pressButton(unsigned button);
void releaseButton(unsigned button);

} // namespace vrkview::test
