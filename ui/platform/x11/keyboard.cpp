// SPDX-License-Identifier: MIT
#include "ui/platform/x11/keyboard.h"

#include "ui/winuser.h"

#include <array>
#include <cstdlib>
#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

// The header names a field with a word that C++ keeps for itself.
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define explicit isExplicit
#include <xcb/xkb.h>
#undef explicit
#if defined(__clang__)
#pragma clang diagnostic pop
#endif

namespace vocafade::platform::x11 {

Keyboard::~Keyboard() {
    xkb_compose_state_unref(compose_);
    xkb_compose_table_unref(composeTable_);
    xkb_state_unref(state_);
    xkb_keymap_unref(keymap_);
    xkb_context_unref(context_);
}

void Keyboard::Start(xcb_connection_t* connection) {
    connection_ = connection;
    context_ = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    if (context_ == nullptr) return;
    xkb_context_set_log_level(context_, XKB_LOG_LEVEL_CRITICAL);
    if (xkb_x11_setup_xkb_extension(connection, XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                                    XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &eventBase_,
                                    nullptr) == 0)
        return;
    device_ = xkb_x11_get_core_keyboard_device_id(connection);
    if (device_ < 0) return;

    constexpr std::uint16_t kEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
    constexpr std::uint16_t kMapParts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                                        XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_VIRTUAL_MODS |
                                        XCB_XKB_MAP_PART_VIRTUAL_MOD_MAP;
    const xcb_xkb_select_events_details_t details{};
    xcb_xkb_select_events_aux(connection, static_cast<xcb_xkb_device_spec_t>(device_), kEvents, 0, kEvents,
                              kMapParts, kMapParts, &details);
    // A held key repeats as presses, without releases in between that did not happen.
    xcb_discard_reply(connection,
                      xcb_xkb_per_client_flags(connection, XCB_XKB_ID_USE_CORE_KBD,
                                               XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT,
                                               XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT, 0, 0, 0)
                          .sequence);
    LoadKeymap();
    LoadCompose();
}

void Keyboard::LoadKeymap() {
    keymapStale_ = false;
    xkb_keymap* keymap =
        xkb_x11_keymap_new_from_device(context_, connection_, device_, XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (keymap == nullptr) return; // the one before is better than none
    xkb_state_unref(state_);
    xkb_keymap_unref(keymap_);
    keymap_ = keymap;
    state_ = xkb_x11_state_new_from_device(keymap_, connection_, device_);
}

void Keyboard::LoadCompose() {
    // The locale is what the environment says. The process's own is the host's affair and may not be set.
    const char* locale = nullptr;
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        locale = std::getenv(name); // NOLINT(concurrency-mt-unsafe): read only
        if (locale != nullptr && *locale != '\0') break;
    }
    if (locale == nullptr || *locale == '\0') locale = "C";
    for (const char* candidate : {locale, "en_US.UTF-8"}) {
        composeTable_ = xkb_compose_table_new_from_locale(context_, candidate, XKB_COMPOSE_COMPILE_NO_FLAGS);
        if (composeTable_ != nullptr) break;
    }
    if (composeTable_ != nullptr) compose_ = xkb_compose_state_new(composeTable_, XKB_COMPOSE_STATE_NO_FLAGS);
}

bool Keyboard::HandleEvent(const xcb_generic_event_t* event) {
    if (eventBase_ == 0 || (event->response_type & 0x7F) != eventBase_) return false;
    // Changing a layout sends a whole row of these; the keymap is read again when the next key needs it.
    keymapStale_ = true;
    return true;
}

void Keyboard::UseState(std::uint16_t state) {
    if (keymapStale_) LoadKeymap();
    if (state_ == nullptr) return;
    xkb_state_update_mask(state_, state & 0xFFU, 0, 0, 0, 0, (state >> 13) & 3U);
}

void Keyboard::ResetCompose() {
    if (compose_ != nullptr) xkb_compose_state_reset(compose_);
}

xkb_keysym_t Keyboard::LatinSym(xcb_keycode_t code, xkb_keysym_t sym) const {
    // Ctrl+C is the key that says C on any of the user's layouts, also while another one is on.
    if (sym <= 0x7E) return sym;
    const xkb_layout_index_t layouts = xkb_keymap_num_layouts_for_key(keymap_, code);
    for (xkb_layout_index_t layout = 0; layout < layouts; ++layout) {
        const xkb_keysym_t* syms = nullptr;
        const int count = xkb_keymap_key_get_syms_by_level(keymap_, code, layout, 0, &syms);
        if (count > 0 && syms[0] >= 0x20 && syms[0] <= 0x7E) return syms[0];
    }
    return sym;
}

unsigned Keyboard::CodeOf(xcb_keycode_t code, xkb_keysym_t sym) const {
    switch (sym) {
    case XKB_KEY_Return:
        return kKeyReturn;
    case XKB_KEY_KP_Enter:
        return kKeyKeypadEnter;
    case XKB_KEY_Escape:
        return kKeyEscape;
    case XKB_KEY_Tab:
    case XKB_KEY_ISO_Left_Tab:
    case XKB_KEY_KP_Tab:
        return kKeyTab;
    case XKB_KEY_BackSpace:
        return kKeyBackspace;
    case XKB_KEY_Delete:
    case XKB_KEY_KP_Delete:
        return kKeyDelete;
    case XKB_KEY_Home:
    case XKB_KEY_KP_Home:
        return kKeyHome;
    case XKB_KEY_End:
    case XKB_KEY_KP_End:
        return kKeyEnd;
    case XKB_KEY_Page_Up:
    case XKB_KEY_KP_Page_Up:
        return kKeyPageUp;
    case XKB_KEY_Page_Down:
    case XKB_KEY_KP_Page_Down:
        return kKeyPageDown;
    case XKB_KEY_Left:
    case XKB_KEY_KP_Left:
        return kKeyLeft;
    case XKB_KEY_Right:
    case XKB_KEY_KP_Right:
        return kKeyRight;
    case XKB_KEY_Up:
    case XKB_KEY_KP_Up:
        return kKeyUp;
    case XKB_KEY_Down:
    case XKB_KEY_KP_Down:
        return kKeyDown;
    case XKB_KEY_KP_Decimal:
    case XKB_KEY_KP_Separator:
        return kKeyKeypadDecimal;
    default:
        break;
    }
    xkb_keysym_t latin = LatinSym(code, sym);
    if (latin >= 'a' && latin <= 'z') latin -= 'a' - 'A';
    if (latin >= 0x20 && latin <= 0x7E) return kKeyCharacter + latin;
    return kKeyUnknown;
}

unsigned Keyboard::KeyCode(xcb_keycode_t code, std::uint16_t state) {
    UseState(state);
    return state_ == nullptr ? kKeyUnknown : CodeOf(code, xkb_state_key_get_one_sym(state_, code));
}

Keyboard::Stroke Keyboard::Press(xcb_keycode_t code, std::uint16_t state) {
    UseState(state);
    Stroke stroke;
    if (state_ == nullptr) {
        stroke.key = kKeyUnknown;
        return stroke;
    }
    const xkb_keysym_t sym = xkb_state_key_get_one_sym(state_, code);
    stroke.key = CodeOf(code, sym);

    if (compose_ != nullptr && xkb_compose_state_feed(compose_, sym) == XKB_COMPOSE_FEED_ACCEPTED) {
        switch (xkb_compose_state_get_status(compose_)) {
        case XKB_COMPOSE_COMPOSING:
            stroke.composing = true;
            return stroke;
        case XKB_COMPOSE_CANCELLED:
            xkb_compose_state_reset(compose_);
            stroke.composing = true;
            return stroke;
        case XKB_COMPOSE_COMPOSED: {
            std::array<char, 64> text{};
            xkb_compose_state_get_utf8(compose_, text.data(), text.size());
            xkb_compose_state_reset(compose_);
            stroke.text = text.data();
            stroke.key = kKeyUnknown;
            return stroke;
        }
        default:
            break;
        }
    }
    constexpr std::uint16_t kShortcut = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;
    if ((state & kShortcut) != 0) return stroke;
    std::array<char, 64> text{};
    xkb_state_key_get_utf8(state_, code, text.data(), text.size());
    const auto first = static_cast<unsigned char>(text[0]);
    if (first >= 0x20 && first != 0x7F) stroke.text = text.data();
    return stroke;
}

} // namespace vocafade::platform::x11
