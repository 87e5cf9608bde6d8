// SPDX-License-Identifier: MIT
#include "tests/support/x_user.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <xcb/xtest.h>

namespace vocafade::test {
namespace {

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T>
Reply<T> Own(T* reply) {
    return {reply, &std::free};
}

} // namespace

XUser::XUser() : connection_(::xcb_connect(nullptr, nullptr)) {
    if (::xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no X server");
    const xcb_setup_t* setup = ::xcb_get_setup(connection_);
    screen_ = ::xcb_setup_roots_iterator(setup).data;
    firstKey_ = setup->min_keycode;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto map = Own(::xcb_get_keyboard_mapping_reply(
        connection_, ::xcb_get_keyboard_mapping(connection_, setup->min_keycode, count), nullptr));
    if (map == nullptr) throw std::runtime_error("no keyboard");
    perKey_ = map->keysyms_per_keycode;
    const xcb_keysym_t* keysyms = ::xcb_get_keyboard_mapping_keysyms(map.get());
    keysyms_.assign(keysyms, keysyms + static_cast<std::ptrdiff_t>(count) * perKey_);
}

XUser::~XUser() { ::xcb_disconnect(connection_); }

xcb_window_t XUser::MakeWindow(int x, int y, int width, int height) {
    const xcb_window_t window = ::xcb_generate_id(connection_);
    const std::uint32_t values[] = {screen_->black_pixel, 1};
    ::xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen_->root,
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                        static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                        XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual,
                        XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    ::xcb_map_window(connection_, window);
    Sync();
    return window;
}

void XUser::DestroyWindow(xcb_window_t window) {
    ::xcb_destroy_window(connection_, window);
    Sync();
}

xcb_atom_t XUser::Atom(std::string_view name) {
    const auto reply = Own(::xcb_intern_atom_reply(
        connection_, ::xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply != nullptr ? reply->atom : 0;
}

void XUser::Show(xcb_window_t window) {
    ::xcb_map_window(connection_, window);
    Sync();
}

void XUser::Hide(xcb_window_t window) {
    ::xcb_unmap_window(connection_, window);
    Sync();
}

void XUser::AskToClose(xcb_window_t window) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = Atom("WM_PROTOCOLS");
    event.data.data32[0] = Atom("WM_DELETE_WINDOW");
    ::xcb_send_event(connection_, 0, window, 0, reinterpret_cast<const char*>(&event));
    Sync();
}

void XUser::PublishSettings(std::string_view bytes) {
    if (settingsWindow_ == 0) settingsWindow_ = MakeWindow(-10, -10, 1, 1);
    const xcb_atom_t property = Atom("_XSETTINGS_SETTINGS");
    ::xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, settingsWindow_, property, property, 8,
                          static_cast<std::uint32_t>(bytes.size()), bytes.data());
    ::xcb_set_selection_owner(connection_, settingsWindow_, Atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
    Sync();
}

void XUser::Forge(xcb_window_t window, const std::array<std::uint8_t, 32>& event, std::uint32_t mask) {
    ::xcb_send_event(connection_, 0, window, mask, reinterpret_cast<const char*>(event.data()));
}

std::vector<xcb_window_t> XUser::Children(xcb_window_t window) {
    const auto tree =
        Own(::xcb_query_tree_reply(connection_, ::xcb_query_tree(connection_, window), nullptr));
    if (tree == nullptr) return {};
    const xcb_window_t* first = ::xcb_query_tree_children(tree.get());
    return {first, first + ::xcb_query_tree_children_length(tree.get())};
}

std::vector<xcb_window_t> XUser::TopLevels() {
    std::vector<xcb_window_t> windows = Children(screen_->root);
    std::erase_if(windows, [this](xcb_window_t window) {
        const auto look = Own(::xcb_get_window_attributes_reply(
            connection_, ::xcb_get_window_attributes(connection_, window), nullptr));
        return look == nullptr || look->map_state != XCB_MAP_STATE_VIEWABLE;
    });
    return windows;
}

XUser::Bounds XUser::BoundsOf(xcb_window_t window) {
    const auto size =
        Own(::xcb_get_geometry_reply(connection_, ::xcb_get_geometry(connection_, window), nullptr));
    const auto place = Own(::xcb_translate_coordinates_reply(
        connection_, ::xcb_translate_coordinates(connection_, window, screen_->root, 0, 0), nullptr));
    if (size == nullptr || place == nullptr) return {};
    return {place->dst_x, place->dst_y, size->width, size->height};
}

xcb_window_t XUser::Focus() {
    const auto focus =
        Own(::xcb_get_input_focus_reply(connection_, ::xcb_get_input_focus(connection_), nullptr));
    return focus != nullptr ? focus->focus : 0;
}

void XUser::SetFocus(xcb_window_t window) {
    ::xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    Sync();
}

void XUser::Fake(std::uint8_t type, std::uint8_t detail, int x, int y) {
    ::xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, screen_->root,
                          static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
    Sync();
}

void XUser::MoveTo(int x, int y) { Fake(XCB_MOTION_NOTIFY, 0, x, y); }

void XUser::Press(int button) { Fake(XCB_BUTTON_PRESS, static_cast<std::uint8_t>(button)); }

void XUser::Release(int button) { Fake(XCB_BUTTON_RELEASE, static_cast<std::uint8_t>(button)); }

std::uint8_t XUser::KeyCodeOf(std::uint32_t keysym, bool* shifted) {
    for (const int level : {0, 1}) {
        for (std::size_t key = 0; key < keysyms_.size() / static_cast<std::size_t>(perKey_); ++key) {
            if (keysyms_[key * static_cast<std::size_t>(perKey_) + static_cast<std::size_t>(level)] != keysym)
                continue;
            *shifted = level == 1;
            return static_cast<std::uint8_t>(firstKey_ + static_cast<int>(key));
        }
    }
    throw std::runtime_error("the keyboard has no such key");
}

void XUser::KeyDown(std::uint32_t keysym) {
    bool shifted = false;
    Fake(XCB_KEY_PRESS, KeyCodeOf(keysym, &shifted));
}

void XUser::KeyUp(std::uint32_t keysym) {
    bool shifted = false;
    Fake(XCB_KEY_RELEASE, KeyCodeOf(keysym, &shifted));
}

void XUser::Key(std::uint32_t keysym) {
    bool shifted = false;
    KeyCodeOf(keysym, &shifted);
    if (shifted) KeyDown(kKeysymShift);
    KeyDown(keysym);
    KeyUp(keysym);
    if (shifted) KeyUp(kKeysymShift);
}

void XUser::Type(std::string_view text) {
    for (const char character : text) {
        Key(static_cast<unsigned char>(character));
    }
}

Picture XUser::Look(xcb_window_t window, int x, int y, int width, int height) {
    const auto image = Own(::xcb_get_image_reply(
        connection_,
        ::xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window, static_cast<std::int16_t>(x),
                        static_cast<std::int16_t>(y), static_cast<std::uint16_t>(width),
                        static_cast<std::uint16_t>(height), 0xFFFFFFFF),
        nullptr));
    if (image == nullptr) return {};
    Picture picture{width, height, {}};
    const auto* pixels = reinterpret_cast<const std::uint32_t*>(::xcb_get_image_data(image.get()));
    picture.pixels.assign(pixels, pixels + static_cast<std::ptrdiff_t>(width) * height);
    for (std::uint32_t& pixel : picture.pixels) {
        pixel &= 0xFFFFFF;
    }
    return picture;
}

void XUser::Sync() {
    Own(::xcb_get_input_focus_reply(connection_, ::xcb_get_input_focus(connection_), nullptr));
}

} // namespace vocafade::test
