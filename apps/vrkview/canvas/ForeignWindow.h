#pragma once

#include <QAbstractNativeEventFilter>

#include <functional>

namespace vrkview {

/// Hears for a native window that lies inside one of Qt's what the display tells of it. It covers Qt's own window, so Qt
/// hears neither that it must be drawn again nor that the mouse has left it.
///
/// Thread: the application's. X11 only, as the view is.
class ForeignWindow : public QAbstractNativeEventFilter {
public:
    /// @param exposed  called when a part of the window has to be drawn again.
    /// @param left     called when the mouse has left the window.
    ForeignWindow(unsigned long handle, std::function<void()> exposed, std::function<void()> left);
    ~ForeignWindow() override;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    unsigned long handle;
    std::function<void()> exposed;
    std::function<void()> left;
};

} // namespace vrkview
