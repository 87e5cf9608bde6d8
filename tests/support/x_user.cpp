// SPDX-License-Identifier: MIT
#include "tests/support/x_user.h"

#include "tests/support/run_command.h"
#include "tests/support/wait_for.h"

#include <X11/keysym.h>
#include <array>
#include <cstdlib>
#include <future>
#include <memory>
#include <stdexcept>
#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

namespace vocafade::test {
namespace {

template <typename T>
std::unique_ptr<T, decltype(&std::free)> Own(T* reply) {
    return {reply, &std::free};
}

} // namespace

std::string NumberSetting(std::string_view name, std::uint32_t value) {
    // A byte order, a serial, a count; then a type, a padded name with its length, a serial and a value.
    std::string bytes("\0\0\0\0\0\0\0\0\1\0\0\0\0\0", 14);
    bytes += static_cast<char>(name.size());
    bytes += '\0';
    bytes += name;
    bytes.append((4 - name.size() % 4) % 4 + 4, '\0');
    for (int bit = 0; bit < 32; bit += 8)
        bytes += static_cast<char>(value >> bit);
    return bytes;
}

std::string DoubleClickSettings(std::uint32_t milliseconds) {
    return NumberSetting("Net/DoubleClickTime", milliseconds);
}

XUser::XUser() : connection_(::xcb_connect(nullptr, nullptr)) {
    if (::xcb_connection_has_error(connection_) != 0) {
        ::xcb_disconnect(connection_);
        throw std::runtime_error("no X server");
    }
    screen_ = ::xcb_setup_roots_iterator(::xcb_get_setup(connection_)).data;
}

XUser::~XUser() { ::xcb_disconnect(connection_); }

xcb_window_t XUser::Root() const { return screen_->root; }

xcb_window_t XUser::MakeWindow(int x, int y, int width, int height, bool show, xcb_window_t parent) {
    const xcb_window_t window = ::xcb_generate_id(connection_);
    const std::array<std::uint32_t, 2> values{screen_->black_pixel, XCB_EVENT_MASK_KEY_PRESS |
                                                                        XCB_EVENT_MASK_BUTTON_PRESS |
                                                                        XCB_EVENT_MASK_FOCUS_CHANGE};
    ::xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, parent != 0 ? parent : Root(),
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                        static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                        XCB_WINDOW_CLASS_INPUT_OUTPUT, screen_->root_visual,
                        XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
    if (show) ::xcb_map_window(connection_, window);
    Sync();
    return window;
}

void XUser::DestroyWindow(xcb_window_t window) {
    ::xcb_destroy_window(connection_, window);
    Sync();
}

void XUser::Show(xcb_window_t window) {
    ::xcb_map_window(connection_, window);
    Sync();
}

void XUser::Hide(xcb_window_t window) {
    ::xcb_unmap_window(connection_, window);
    Sync();
}

void XUser::Resize(xcb_window_t window, int width, int height) {
    const std::array<std::uint32_t, 2> size{static_cast<std::uint32_t>(width),
                                            static_cast<std::uint32_t>(height)};
    ::xcb_configure_window(connection_, window, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                           size.data());
    Sync();
}

void XUser::Reparent(xcb_window_t window, xcb_window_t parent, int x, int y) {
    ::xcb_reparent_window(connection_, window, parent, static_cast<std::int16_t>(x),
                          static_cast<std::int16_t>(y));
    Sync();
}

xcb_atom_t XUser::Atom(std::string_view name) {
    const auto reply = Own(::xcb_intern_atom_reply(
        connection_, ::xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply != nullptr ? reply->atom : 0;
}

void XUser::AskToClose(xcb_window_t window) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = Atom("WM_PROTOCOLS");
    event.data.data32[0] = Atom("WM_DELETE_WINDOW");
    Forge(window, event);
    Sync();
}

void XUser::PublishSettings(std::string_view bytes) {
    if (settingsWindow_ == 0) settingsWindow_ = MakeWindow(-10, -10, 1, 1, false);
    const xcb_atom_t property = Atom("_XSETTINGS_SETTINGS");
    ::xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, settingsWindow_, property, property, 8,
                          static_cast<std::uint32_t>(bytes.size()), bytes.data());
    ::xcb_set_selection_owner(connection_, settingsWindow_, Atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
    Sync();
}

int XUser::TakeHostKeys() {
    Sync();
    int keys = 0;
    while (const auto event = Own(::xcb_poll_for_event(connection_)))
        if ((event->response_type & 0x7F) == XCB_KEY_PRESS) ++keys;
    return keys;
}

std::vector<xcb_window_t> XUser::Children(xcb_window_t window) {
    Sync();
    const auto tree =
        Own(::xcb_query_tree_reply(connection_, ::xcb_query_tree(connection_, window), nullptr));
    if (tree == nullptr) return {};
    const xcb_window_t* first = ::xcb_query_tree_children(tree.get());
    return {first, first + ::xcb_query_tree_children_length(tree.get())};
}

std::vector<xcb_window_t> XUser::TopLevels() {
    std::vector<xcb_window_t> windows = Children(Root());
    std::erase_if(windows, [this](xcb_window_t window) { return !IsViewable(window); });
    return windows;
}

bool XUser::IsViewable(xcb_window_t window) {
    Sync();
    const auto look = Own(::xcb_get_window_attributes_reply(
        connection_, ::xcb_get_window_attributes(connection_, window), nullptr));
    return look != nullptr && look->map_state == XCB_MAP_STATE_VIEWABLE;
}

XUser::Bounds XUser::BoundsOf(xcb_window_t window) {
    Sync();
    const auto size =
        Own(::xcb_get_geometry_reply(connection_, ::xcb_get_geometry(connection_, window), nullptr));
    const auto place = Own(::xcb_translate_coordinates_reply(
        connection_, ::xcb_translate_coordinates(connection_, window, Root(), 0, 0), nullptr));
    if (size == nullptr || place == nullptr) return {};
    return {place->dst_x, place->dst_y, size->width, size->height};
}

xcb_window_t XUser::Focus() {
    Sync();
    const auto focus =
        Own(::xcb_get_input_focus_reply(connection_, ::xcb_get_input_focus(connection_), nullptr));
    return focus != nullptr ? focus->focus : 0;
}

void XUser::SetFocus(xcb_window_t window) {
    ::xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    Sync();
}

void XUser::Fake(std::uint8_t type, std::uint8_t detail, int x, int y) {
    ::xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, Root(), static_cast<std::int16_t>(x),
                          static_cast<std::int16_t>(y), 0);
    Sync();
}

void XUser::MoveTo(int x, int y) { Fake(XCB_MOTION_NOTIFY, 0, x, y); }

void XUser::Press(int button) { Fake(XCB_BUTTON_PRESS, static_cast<std::uint8_t>(button)); }

void XUser::Release(int button) { Fake(XCB_BUTTON_RELEASE, static_cast<std::uint8_t>(button)); }

bool XUser::MouseIsFree() {
    const auto grab = Own(::xcb_grab_pointer_reply(
        connection_,
        ::xcb_grab_pointer(connection_, 0, Root(), 0, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE,
                           XCB_NONE, XCB_CURRENT_TIME),
        nullptr));
    ::xcb_ungrab_pointer(connection_, XCB_CURRENT_TIME);
    return grab != nullptr && grab->status == XCB_GRAB_STATUS_SUCCESS;
}

XUser::Place XUser::Find(xcb_keysym_t keysym) {
    const std::unique_ptr<xcb_key_symbols_t, decltype(&::xcb_key_symbols_free)> symbols(
        ::xcb_key_symbols_alloc(connection_), &::xcb_key_symbols_free);
    const auto keys = Own(::xcb_key_symbols_get_keycode(symbols.get(), keysym));
    for (const int level : {0, 1})
        for (const xcb_keycode_t* key = keys.get(); key != nullptr && *key != XCB_NO_SYMBOL; ++key)
            if (::xcb_key_symbols_get_keysym(symbols.get(), *key, level) == keysym) return {*key, level == 1};
    throw std::runtime_error("the keyboard has no such key");
}

void XUser::KeyDown(xcb_keysym_t keysym) { Fake(XCB_KEY_PRESS, Find(keysym).code); }

void XUser::KeyUp(xcb_keysym_t keysym) { Fake(XCB_KEY_RELEASE, Find(keysym).code); }

void XUser::Key(xcb_keysym_t keysym) {
    const Place place = Find(keysym);
    if (place.shifted) KeyDown(XK_Shift_L);
    Fake(XCB_KEY_PRESS, place.code);
    Fake(XCB_KEY_RELEASE, place.code);
    if (place.shifted) KeyUp(XK_Shift_L);
}

void XUser::Hold(xcb_window_t window, xcb_keysym_t keysym, int times) {
    xcb_key_press_event_t down{};
    down.response_type = XCB_KEY_PRESS;
    down.detail = Find(keysym).code;
    down.event = window;
    for (int i = 0; i < times; ++i)
        Forge(window, down);
}

void XUser::AddKeys(const std::vector<xcb_keysym_t>& keysyms) {
    // The highest key numbers are free in every layout.
    xcb_keycode_t code = ::xcb_get_setup(connection_)->max_keycode;
    for (const xcb_keysym_t keysym : keysyms) {
        const std::array<xcb_keysym_t, 2> both{keysym, keysym};
        ::xcb_change_keyboard_mapping(connection_, 1, code--, both.size(), both.data());
    }
    Sync();
}

void XUser::TakeGermanKeyboard() {
    if (std::system("setxkbmap de") != 0) // NOLINT(concurrency-mt-unsafe): only it starts processes
        throw std::runtime_error("setxkbmap fails");
    Sync();
}

std::string XUser::TakeClipboard(const std::function<void()>& idle) {
    auto text = std::async(std::launch::async, [] {
        return RunCommand("timeout 30 xclip -o -selection clipboard -target UTF8_STRING").output;
    });
    WaitFor(idle, [&] { return text.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
    return text.get();
}

void XUser::OfferClipboard(const std::string& text) { OfferClipboardBytes(text); }

void XUser::OfferClipboardBytes(std::string_view bytes) {
    const auto owner = [this] {
        const auto reply = Own(::xcb_get_selection_owner_reply(
            connection_, ::xcb_get_selection_owner(connection_, Atom("CLIPBOARD")), nullptr));
        return reply != nullptr ? reply->owner : 0;
    };
    const xcb_window_t before = owner();
    std::FILE* program = ::popen("xclip -selection clipboard -target UTF8_STRING >/dev/null 2>&1", "w");
    if (program == nullptr) throw std::runtime_error("no xclip");
    std::fwrite(bytes.data(), 1, bytes.size(), program);
    if (ClosePipe(program) != 0) throw std::runtime_error("xclip fails");
    WaitFor([] {}, [&] { return owner() != before; }); // it goes on in the background
}

Picture XUser::Look(xcb_window_t window, int x, int y, int width, int height) {
    Sync();
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
    // The server answers whoever is ready in any order, and sends what it has to say to others before it
    // looks for the next requests: a second question is answered after all that came before the first.
    for (int i = 0; i < 2; ++i)
        Own(::xcb_get_input_focus_reply(connection_, ::xcb_get_input_focus(connection_), nullptr));
}

} // namespace vocafade::test
