// SPDX-License-Identifier: MIT
#include "apps/validate/parent_window.h"

#include <chrono>
#include <cstdlib>
#include <thread>
#include <xcb/xcb.h>

namespace vocafade::validate {
namespace {

/// A display whose last window has just gone may start anew and refuse for a moment.
xcb_connection_t* Connect() {
    if (std::getenv("DISPLAY") == nullptr) return nullptr; // NOLINT(concurrency-mt-unsafe): one thread so far
    for (int attempt = 0; attempt < 10; ++attempt) {
        xcb_connection_t* connection = ::xcb_connect(nullptr, nullptr);
        if (::xcb_connection_has_error(connection) == 0) return connection;
        ::xcb_disconnect(connection);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return nullptr;
}

} // namespace

std::unique_ptr<ParentWindow> ParentWindow::Make(std::uint16_t width, std::uint16_t height) {
    xcb_connection_t* connection = Connect();
    if (connection == nullptr) return nullptr;
    const xcb_screen_t* screen = ::xcb_setup_roots_iterator(::xcb_get_setup(connection)).data;
    const std::uint32_t window = ::xcb_generate_id(connection);
    ::xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, width, height, 0,
                        XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    ::xcb_map_window(connection, window);
    // The answer to a question proves that the display has the window before another connection uses it.
    std::free(::xcb_get_input_focus_reply(connection, ::xcb_get_input_focus(connection), nullptr));
    return std::unique_ptr<ParentWindow>(new ParentWindow(connection, window));
}

ParentWindow::ParentWindow(xcb_connection_t* connection, std::uint32_t window)
    : connection_(connection), window_(window) {}

ParentWindow::~ParentWindow() {
    ::xcb_destroy_window(connection_, window_);
    ::xcb_disconnect(connection_);
}

void* ParentWindow::handle() const { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(window_)); }

int ParentWindow::Refresh() {
    while (xcb_generic_event_t* event = ::xcb_poll_for_event(connection_))
        std::free(event);
    xcb_query_tree_reply_t* tree =
        ::xcb_query_tree_reply(connection_, ::xcb_query_tree(connection_, window_), nullptr);
    const int children = tree != nullptr ? tree->children_len : 0;
    std::free(tree);
    return children;
}

bool ParentWindow::isAlive() const { return ::xcb_connection_has_error(connection_) == 0; }

void ParentWindow::Send(std::uint32_t child, std::uint8_t type, std::uint8_t button, std::int16_t x,
                        std::int16_t y) {
    xcb_button_press_event_t event{}; // motion has the same form
    event.response_type = type;
    event.detail = button;
    event.root = ::xcb_setup_roots_iterator(::xcb_get_setup(connection_)).data->root;
    event.event = child;
    event.event_x = x;
    event.event_y = y;
    event.root_x = x;
    event.root_y = y;
    event.same_screen = 1;
    ::xcb_send_event(connection_, 0, child, 0, reinterpret_cast<const char*>(&event));
}

void ParentWindow::TurnWheel(std::int16_t x, std::int16_t y, bool up) {
    constexpr std::uint8_t kWheelUp = 4;
    constexpr std::uint8_t kWheelDown = 5;
    const std::uint8_t button = up ? kWheelUp : kWheelDown;
    xcb_query_tree_reply_t* tree =
        ::xcb_query_tree_reply(connection_, ::xcb_query_tree(connection_, window_), nullptr);
    if (tree == nullptr) return;
    if (tree->children_len > 0) {
        const xcb_window_t child = ::xcb_query_tree_children(tree)[0];
        Send(child, XCB_MOTION_NOTIFY, 0, x, y);
        Send(child, XCB_BUTTON_PRESS, button, x, y);
        Send(child, XCB_BUTTON_RELEASE, button, x, y);
    }
    std::free(tree);
    ::xcb_flush(connection_);
}

} // namespace vocafade::validate
