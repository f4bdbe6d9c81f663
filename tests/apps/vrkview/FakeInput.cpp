#include "FakeInput.h"

#include <QWidget>

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

namespace vrkview::test {
namespace {

Display* display()
{
    static Display* const opened = XOpenDisplay(nullptr); // as long as the process
    return opened;
}

} // namespace

void typeKey(const char* name)
{
    const KeyCode code = XKeysymToKeycode(display(), XStringToKeysym(name));
    XTestFakeKeyEvent(display(), code, True, CurrentTime);
    XTestFakeKeyEvent(display(), code, False, CurrentTime);
    XSync(display(), False);
}

HeldKey::HeldKey(const char* name) : code(XKeysymToKeycode(display(), XStringToKeysym(name)))
{
    XTestFakeKeyEvent(display(), code, True, CurrentTime);
    XSync(display(), False);
}

HeldKey::~HeldKey()
{
    XTestFakeKeyEvent(display(), code, False, CurrentTime);
    XSync(display(), False);
}

void moveMouse(const QWidget& over, const QPoint& place, int aside)
{
    const QPointF device = QPointF(over.mapToGlobal(place)) * over.devicePixelRatioF();
    XTestFakeMotionEvent(display(), 0, qRound(device.x()) + aside, qRound(device.y()), CurrentTime);
    XSync(display(), False);
}

void clickLeft()
{
    pressButton(1);
    releaseButton(1);
}

void pressButton(unsigned button)
{
    XTestFakeButtonEvent(display(), button, True, CurrentTime);
    XSync(display(), False);
}

void releaseButton(unsigned button)
{
    XTestFakeButtonEvent(display(), button, False, CurrentTime);
    XSync(display(), False);
}

} // namespace vrkview::test
