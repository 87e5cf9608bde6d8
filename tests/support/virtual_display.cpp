// SPDX-License-Identifier: MIT
#include "tests/support/virtual_display.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <xcb/res.h>
#include <xcb/xtest.h>

namespace vocafade::test {
namespace {

struct Free {
    void operator()(void* p) const { std::free(p); }
};
template <class T>
std::unique_ptr<T, Free> Own(T* reply) {
    return std::unique_ptr<T, Free>(reply);
}

} // namespace

VirtualDisplay::VirtualDisplay() {
    std::array<int, 2> pipes{};
    if (::pipe(pipes.data()) != 0) return;
    server_ = ::fork();
    if (server_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int null = ::open("/dev/null", O_WRONLY);
        ::dup2(null, STDERR_FILENO);
        ::close(pipes[0]);
        const std::string fd = std::to_string(pipes[1]);
        ::execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
                 "-noreset", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(pipes[1]);
    std::string number;
    for (char c = 0; ::read(pipes[0], &c, 1) == 1 && c != '\n';)
        number += c;
    ::close(pipes[0]);
    if (number.empty()) return;
    ::setenv("DISPLAY", (":" + number).c_str(), 1);
    ::setenv("LC_ALL", "en_US.UTF-8", 1);
    connection_ = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection_) != 0) {
        xcb_disconnect(connection_);
        connection_ = nullptr;
        return;
    }
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    Focus(root_);
    MoveTo(1, 1);
}

VirtualDisplay::~VirtualDisplay() {
    if (connection_ != nullptr) xcb_disconnect(connection_);
    if (server_ > 0) {
        ::kill(server_, SIGTERM);
        ::waitpid(server_, nullptr, 0);
    }
}

void VirtualDisplay::Kill() {
    xcb_disconnect(connection_);
    connection_ = nullptr;
    ::kill(server_, SIGKILL);
    ::waitpid(server_, nullptr, 0);
    server_ = -1;
    // The number is free again, and a test beside this one may have a server under it by the next call. No
    // server takes a number above 59535 by itself.
    ::setenv("DISPLAY", ":60000", 1);
}

xcb_window_t VirtualDisplay::MakeHostWindow(int x, int y, int width, int height, bool show,
                                            xcb_window_t parent) {
    const xcb_window_t id = xcb_generate_id(connection_);
    const std::array<std::uint32_t, 2> values{
        0x404040, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_FOCUS_CHANGE};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, id, parent != 0 ? parent : root_,
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                      static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
    if (show) xcb_map_window(connection_, id);
    Sync();
    return id;
}

void VirtualDisplay::Map(xcb_window_t window, bool map) {
    if (map) {
        xcb_map_window(connection_, window);
    } else {
        xcb_unmap_window(connection_, window);
    }
    Sync();
}

void VirtualDisplay::Resize(xcb_window_t window, int width, int height) {
    const std::array<std::uint32_t, 2> size{static_cast<std::uint32_t>(width),
                                            static_cast<std::uint32_t>(height)};
    xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         size.data());
    Sync();
}

void VirtualDisplay::Reparent(xcb_window_t window, xcb_window_t parent, int x, int y) {
    xcb_reparent_window(connection_, window, parent, static_cast<std::int16_t>(x),
                        static_cast<std::int16_t>(y));
    Sync();
}

void VirtualDisplay::Destroy(xcb_window_t window) {
    xcb_destroy_window(connection_, window);
    Sync();
}

void VirtualDisplay::Focus(xcb_window_t window) {
    xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    Sync();
}

xcb_window_t VirtualDisplay::Focused() {
    const auto reply = Own(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    return reply ? reply->focus : 0;
}

std::vector<xcb_window_t> VirtualDisplay::Children(xcb_window_t window) {
    const auto tree = Own(xcb_query_tree_reply(
        connection_, xcb_query_tree(connection_, window != 0 ? window : root_), nullptr));
    if (tree == nullptr) return {};
    const xcb_window_t* first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

bool VirtualDisplay::IsViewable(xcb_window_t window) {
    const auto reply = Own(xcb_get_window_attributes_reply(
        connection_, xcb_get_window_attributes(connection_, window), nullptr));
    return reply != nullptr && reply->map_state == XCB_MAP_STATE_VIEWABLE;
}

VirtualDisplay::Place VirtualDisplay::PlaceOf(xcb_window_t window) {
    const auto size =
        Own(xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, window), nullptr));
    const auto at = Own(xcb_translate_coordinates_reply(
        connection_, xcb_translate_coordinates(connection_, window, root_, 0, 0), nullptr));
    if (size == nullptr || at == nullptr) return {};
    return {at->dst_x, at->dst_y, size->width, size->height};
}

std::uint32_t VirtualDisplay::Pixel(int x, int y) {
    const auto image = Own(xcb_get_image_reply(connection_,
                                               xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root_,
                                                             static_cast<std::int16_t>(x),
                                                             static_cast<std::int16_t>(y), 1, 1, ~0U),
                                               nullptr));
    std::uint32_t pixel = 0xFFFFFFFFU;
    if (image != nullptr && xcb_get_image_data_length(image.get()) >= 4)
        std::memcpy(&pixel, xcb_get_image_data(image.get()), sizeof pixel);
    return pixel & 0xFFFFFF;
}

int VirtualDisplay::TakeHostKeys() {
    Sync();
    int keys = 0;
    while (const auto event = Own(xcb_poll_for_event(connection_)))
        if ((event->response_type & 0x7F) == XCB_KEY_PRESS) ++keys;
    return keys;
}

int VirtualDisplay::Clients() {
    const auto reply =
        Own(xcb_res_query_clients_reply(connection_, xcb_res_query_clients(connection_), nullptr));
    return reply ? xcb_res_query_clients_clients_length(reply.get()) : -1;
}

void VirtualDisplay::Fake(std::uint8_t type, std::uint8_t detail, int x, int y) {
    xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_, static_cast<std::int16_t>(x),
                        static_cast<std::int16_t>(y), 0);
    Sync();
}

void VirtualDisplay::MoveTo(int x, int y) { Fake(XCB_MOTION_NOTIFY, 0, x, y); }

void VirtualDisplay::Button(int button, bool press) {
    Fake(press ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, static_cast<std::uint8_t>(button), 0, 0);
}

void VirtualDisplay::Click(int x, int y, int button) {
    MoveTo(x, y);
    Button(button, true);
    Button(button, false);
}

xcb_keycode_t VirtualDisplay::KeycodeOf(xcb_keysym_t sym) {
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    const auto map = Own(xcb_get_keyboard_mapping_reply(
        connection_,
        xcb_get_keyboard_mapping(connection_, setup->min_keycode,
                                 static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1)),
        nullptr));
    if (map == nullptr) return 0;
    const xcb_keysym_t* syms = xcb_get_keyboard_mapping_keysyms(map.get());
    const int each = map->keysyms_per_keycode;
    const int count = setup->max_keycode - setup->min_keycode + 1;
    for (int i = 0; i < count; ++i)
        if (syms[i * each] == sym) return static_cast<xcb_keycode_t>(setup->min_keycode + i);
    return 0;
}

void VirtualDisplay::Key(xcb_keysym_t sym, bool press) {
    Fake(press ? XCB_KEY_PRESS : XCB_KEY_RELEASE, KeycodeOf(sym), 0, 0);
}

void VirtualDisplay::Tap(xcb_keysym_t sym) {
    Key(sym, true);
    Key(sym, false);
}

void VirtualDisplay::AddKeys(const std::vector<xcb_keysym_t>& syms) {
    // The highest key numbers are free in every layout.
    int code = xcb_get_setup(connection_)->max_keycode;
    for (const xcb_keysym_t sym : syms) {
        const std::array<xcb_keysym_t, 2> both{sym, sym};
        xcb_change_keyboard_mapping(connection_, 1, static_cast<xcb_keycode_t>(code--), both.size(),
                                    both.data());
    }
    Sync();
}

void VirtualDisplay::Sync() {
    Own(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

bool WaitFor(const std::function<void()>& step, const std::function<bool()>& done, int milliseconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        step();
        if (done()) return true;
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

} // namespace vocafade::test
