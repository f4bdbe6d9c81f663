#include "view/NativeDisplay.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <stdexcept>

namespace vrk::visual {
namespace {

struct Free {
    void operator()(void* answer) const { std::free(answer); }
};

} // namespace

NativeDisplay::NativeDisplay() : connection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(connection) == 0)
        return;
    xcb_disconnect(connection);
    throw std::runtime_error("No X11 display answers.");
}

NativeDisplay::~NativeDisplay()
{
    xcb_disconnect(connection);
}

bool NativeDisplay::hasWindow(std::uintptr_t handle) const
{
    if (handle == 0 || handle > std::numeric_limits<xcb_window_t>::max())
        return false;
    const auto request = xcb_get_window_attributes(connection, static_cast<xcb_window_t>(handle));
    xcb_generic_error_t* error = nullptr;
    const std::unique_ptr<xcb_get_window_attributes_reply_t, Free> answer(
        xcb_get_window_attributes_reply(connection, request, &error));
    std::free(error);
    return answer && answer->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

void NativeDisplay::resizeWindow(std::uintptr_t handle, unsigned width, unsigned height)
{
    const std::uint32_t sides[] = {width, height};
    const auto request = xcb_configure_window_checked(connection, static_cast<xcb_window_t>(handle),
                                                      XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, sides);
    std::free(xcb_request_check(connection, request)); // which waits for the display
}

void NativeDisplay::destroyWindow(std::uintptr_t handle)
{
    const auto request = xcb_destroy_window_checked(connection, static_cast<xcb_window_t>(handle));
    std::free(xcb_request_check(connection, request));
}

} // namespace vrk::visual
