#include "ExposeWatch.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

namespace vrkview {

ExposeWatch::ExposeWatch(unsigned long window, std::function<void()> exposed)
    : window(window), exposed(std::move(exposed))
{
    // Each client of the display has its own choice of events, so OGRE's stays as it is.
    const std::uint32_t events[] = {XCB_EVENT_MASK_EXPOSURE};
    xcb_connection_t* connection = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    xcb_change_window_attributes(connection, static_cast<xcb_window_t>(window), XCB_CW_EVENT_MASK, events);
    xcb_flush(connection);
    qGuiApp->installNativeEventFilter(this);
}

ExposeWatch::~ExposeWatch()
{
    qGuiApp->removeNativeEventFilter(this);
}

bool ExposeWatch::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    constexpr std::uint8_t typeMask = 0x7f; // the other bit says that a client sent it
    if ((event->response_type & typeMask) == XCB_EXPOSE &&
        reinterpret_cast<const xcb_expose_event_t*>(event)->window == window)
        exposed();
    return false;
}

} // namespace vrkview
