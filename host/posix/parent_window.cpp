// SPDX-License-Identifier: MIT
#include "host/parent_window.h"

#include <chrono>
#include <cstdlib>
#include <thread>
#include <xcb/xcb.h>

namespace vocafade::host {
namespace {

/// A display whose last window has just gone may start anew and refuse for a moment.
xcb_connection_t* Connect() {
    if (std::getenv("DISPLAY") == nullptr) return nullptr; // NOLINT(concurrency-mt-unsafe): main thread only
    for (int attempt = 0; attempt < 10; ++attempt) {
        xcb_connection_t* connection = ::xcb_connect(nullptr, nullptr);
        if (::xcb_connection_has_error(connection) == 0) return connection;
        ::xcb_disconnect(connection);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return nullptr;
}

} // namespace

std::unique_ptr<ParentWindow> ParentWindow::Make(int width, int height, bool frame) {
    xcb_connection_t* connection = Connect();
    if (connection == nullptr) return nullptr;
    return std::unique_ptr<ParentWindow>(new ParentWindow(connection, width, height, frame));
}

ParentWindow::ParentWindow(xcb_connection_t* connection, int width, int height, bool frame)
    : connection_(connection), id_(::xcb_generate_id(connection)) {
    const xcb_screen_t* screen = ::xcb_setup_roots_iterator(::xcb_get_setup(connection)).data;
    root_ = screen->root;
    const std::uint32_t values[] = {screen->black_pixel, frame ? 0U : 1U, XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    ::xcb_create_window(connection, XCB_COPY_FROM_PARENT, id_, root_, 0, 0, static_cast<std::uint16_t>(width),
                        static_cast<std::uint16_t>(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                        screen->root_visual, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK,
                        values);
}

ParentWindow::~ParentWindow() { ::xcb_disconnect(connection_); } // which takes the window with it

void ParentWindow::Show() {
    ::xcb_map_window(connection_, id_);
    std::free(::xcb_get_input_focus_reply(connection_, ::xcb_get_input_focus(connection_), nullptr));
}

std::vector<std::uint32_t> ParentWindow::Children() {
    std::vector<std::uint32_t> children;
    xcb_query_tree_reply_t* tree =
        ::xcb_query_tree_reply(connection_, ::xcb_query_tree(connection_, id_), nullptr);
    if (tree != nullptr) {
        const xcb_window_t* first = ::xcb_query_tree_children(tree);
        children.assign(first, first + tree->children_len);
    }
    std::free(tree);
    return children;
}

bool ParentWindow::isAlive() const { return ::xcb_connection_has_error(connection_) == 0; }

} // namespace vocafade::host
