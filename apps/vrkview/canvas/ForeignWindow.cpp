#include "canvas/ForeignWindow.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>

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
    // Each client of the display has its own choice of events, so OGRE's stays as it is.
    const std::uint32_t events[] = {XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_LEAVE_WINDOW};
    xcb_change_window_attributes(connection(), static_cast<xcb_window_t>(handle), XCB_CW_EVENT_MASK, events);
    xcb_flush(connection());
    qGuiApp->installNativeEventFilter(this);
}

ForeignWindow::~ForeignWindow()
{
    qGuiApp->removeNativeEventFilter(this);
}

void ForeignWindow::resize(const QSize& size)
{
    const auto window = static_cast<xcb_window_t>(handle);
    const std::uint32_t sides[] = {static_cast<std::uint32_t>(size.width()), static_cast<std::uint32_t>(size.height())};
    xcb_configure_window(connection(), window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, sides);
    // OGRE asks on a connection of its own: an answer to any question says that the request above is done.
    std::free(xcb_get_geometry_reply(connection(), xcb_get_geometry(connection(), window), nullptr));
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
        if (leave.event == handle && leave.mode == XCB_NOTIFY_MODE_NORMAL) // no grab by a button or a menu
            left();
    }
    return false;
}

} // namespace vrkview
