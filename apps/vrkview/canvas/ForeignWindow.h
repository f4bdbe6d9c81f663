#pragma once

#include <QAbstractNativeEventFilter>
#include <QSize>

#include <functional>

namespace vrkview {

/// Does for a native window that lies inside one of Qt's, as OGRE's does, what neither Qt nor OGRE does for it.
///
/// It covers Qt's own window, so Qt hears neither that it must be drawn again nor that the mouse has left it. OGRE does not
/// resize a window that has a parent: it expects whoever made the parent to do so.
///
/// Thread: the application's. X11 only, as the view is.
class ForeignWindow : public QAbstractNativeEventFilter {
public:
    /// @param exposed  called when a part of the window has to be drawn again.
    /// @param left     called when the mouse has left the window.
    ForeignWindow(unsigned long handle, std::function<void()> exposed, std::function<void()> left);
    ~ForeignWindow() override;

    /// @param size  device pixels. The X server has applied it when this returns, so that OGRE, which has a connection of
    ///              its own, reads the new size.
    void resize(const QSize& size);
    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    unsigned long handle;
    std::function<void()> exposed;
    std::function<void()> left;
};

} // namespace vrkview
