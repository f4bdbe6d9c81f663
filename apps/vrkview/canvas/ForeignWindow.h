#pragma once

#include <QAbstractNativeEventFilter>
#include <QSize>

#include <functional>

namespace vrkview {

/// A native window that another package made inside one of Qt's, as OGRE does: what neither of the two does with it.
///
/// Qt does not see when such a window has to be drawn again or when the mouse leaves it, since it covers Qt's own; and OGRE leaves the size of a
/// window that lies in another one to who made that.
///
/// Thread: the application's. X11 only, as the view is.
class ForeignWindow : public QAbstractNativeEventFilter {
public:
    /// @param exposed  called when a part of the window has to be drawn again.
    /// @param left     called when the mouse has left the window.
    ForeignWindow(unsigned long handle, std::function<void()> exposed, std::function<void()> left);
    ~ForeignWindow() override;

    /// Device pixels. It has that size for every client of the display when this returns.
    void resize(const QSize& size);
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    unsigned long handle;
    std::function<void()> exposed;
    std::function<void()> left;
};

} // namespace vrkview
