#pragma once

#include "support/Picture.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <limits>

namespace vrk::test {

/// A window as an application makes it, without any toolkit.
class PlainWindow {
public:
    PlainWindow(unsigned width, unsigned height, int left = 0, xcb_window_class_t kind = XCB_WINDOW_CLASS_INPUT_OUTPUT)
        : connection(xcb_connect(nullptr, nullptr)), id(xcb_generate_id(connection)), width(width), height(height)
    {
        const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
        const std::uint32_t past[] = {1}; // any window manager
        xcb_create_window(connection, XCB_COPY_FROM_PARENT, id, screen.root, static_cast<std::int16_t>(left), 0,
                          static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                          static_cast<std::uint16_t>(kind), screen.root_visual, XCB_CW_OVERRIDE_REDIRECT, past);
        sync();
    }
    ~PlainWindow() { xcb_disconnect(connection); }
    PlainWindow(const PlainWindow&) = delete;
    PlainWindow& operator=(const PlainWindow&) = delete;

    void show()
    {
        xcb_map_window(connection, id);
        sync();
    }
    /// What the display fills it with.
    void fill(const Pixel& color)
    {
        const auto byte = [](int part) { return static_cast<std::uint32_t>(part); };
        const std::uint32_t pixel[] = {byte(color.r) << 16 | byte(color.g) << 8 | byte(color.b)};
        xcb_change_window_attributes(connection, id, XCB_CW_BACK_PIXEL, pixel);
        sync();
    }
    void resize(unsigned newWidth, unsigned newHeight)
    {
        const std::uint32_t sides[] = {width = newWidth, height = newHeight};
        xcb_configure_window(connection, id, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, sides);
        sync();
    }
    void destroy()
    {
        xcb_destroy_window(connection, id);
        sync();
    }
    int childCount() const
    {
        xcb_query_tree_reply_t* answer = xcb_query_tree_reply(connection, xcb_query_tree(connection, id), nullptr);
        const int count = xcb_query_tree_children_length(answer);
        std::free(answer);
        return count;
    }
    /// What the screen shows of it.
    Picture onScreen() const
    {
        const auto request =
            xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, id, 0, 0, static_cast<std::uint16_t>(width),
                          static_cast<std::uint16_t>(height), std::numeric_limits<std::uint32_t>::max());
        xcb_get_image_reply_t* answer = xcb_get_image_reply(connection, request, nullptr);
        Picture picture{width, height, {}};
        const std::uint8_t* bytes = xcb_get_image_data(answer); // blue, green, red and nothing
        for (std::size_t i = 0; i < std::size_t{width} * height; ++i)
            picture.rgb.insert(picture.rgb.end(), {bytes[4 * i + 2], bytes[4 * i + 1], bytes[4 * i]});
        std::free(answer);
        return picture;
    }

private:
    void sync() const { std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr)); }

    xcb_connection_t* connection;

public:
    const xcb_window_t id;

private:
    unsigned width;
    unsigned height;
};

} // namespace vrk::test
