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

void NativeDisplay::fillWindow(std::uintptr_t handle, std::uint32_t color)
{
    const std::uint32_t values[] = {color, XCB_GRAVITY_NORTH_WEST};
    xcb_change_window_attributes(connection, static_cast<xcb_window_t>(handle), XCB_CW_BACK_PIXEL | XCB_CW_BIT_GRAVITY,
                                 values);
    xcb_flush(connection);
}

void NativeDisplay::clearWindow(std::uintptr_t handle)
{
    xcb_clear_area(connection, 0, static_cast<xcb_window_t>(handle), 0, 0, 0, 0); // sides of 0 reach to its border
    xcb_flush(connection);
}

void NativeDisplay::leaveWindow(std::uintptr_t handle)
{
    const std::uint32_t none[] = {XCB_BACK_PIXMAP_NONE};
    xcb_change_window_attributes(connection, static_cast<xcb_window_t>(handle), XCB_CW_BACK_PIXMAP, none);
    xcb_flush(connection);
}

/// By a window within it that the display fills with nothing: what is drawn to a window does not show through those in it.
void NativeDisplay::coverWindow(std::uintptr_t handle, unsigned width, unsigned height)
{
    cover = xcb_generate_id(connection);
    const std::uint32_t none[] = {XCB_BACK_PIXMAP_NONE};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, cover, static_cast<xcb_window_t>(handle), 0, 0,
                      static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXMAP, none);
    std::free(xcb_request_check(connection, xcb_map_window_checked(connection, cover)));
}

void NativeDisplay::uncoverWindow()
{
    destroyWindow(cover);
    cover = 0;
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
