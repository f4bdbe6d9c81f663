#include "canvas/ForeignWindow.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

namespace vrkview {
namespace {

xcb_connection_t* connection()
{
    return qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
}

} // namespace

ForeignWindow::ForeignWindow(unsigned long handle, std::function<void()> exposed, std::function<void()> left)
    : handle(handle), exposed(std::move(exposed)), left(std::move(left))
{
    // Each client of the display has its own choice of events, so that of whoever made the window stays as it is.
    const std::uint32_t events[] = {XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_LEAVE_WINDOW};
    xcb_change_window_attributes(connection(), static_cast<xcb_window_t>(handle), XCB_CW_EVENT_MASK, events);
    xcb_flush(connection());
    qGuiApp->installNativeEventFilter(this);
}

ForeignWindow::~ForeignWindow()
{
    qGuiApp->removeNativeEventFilter(this);
}

bool ForeignWindow::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    constexpr std::uint8_t typeMask = 0x7f; // the other bit says that a client sent it
    const std::uint8_t type = event->response_type & typeMask;
    if (type == XCB_EXPOSE && reinterpret_cast<const xcb_expose_event_t*>(event)->window == handle)
        exposed();
    if (type == XCB_LEAVE_NOTIFY) {
        const auto& leave = *reinterpret_cast<const xcb_leave_notify_event_t*>(event);
        const bool isInside = leave.detail == XCB_NOTIFY_DETAIL_INFERIOR; // in a window that lies within this one
        if (leave.event == handle && leave.mode == XCB_NOTIFY_MODE_NORMAL && !isInside) // no grab by a button or a menu
            left();
    }
    return false;
}

} // namespace vrkview
