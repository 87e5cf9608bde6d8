// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-compose.h>
#include <xkbcommon/xkbcommon.h>

namespace vocafade::platform::x11 {

/// Turns the key numbers of X into the layer's key codes and into text, by the user's layout and compose
/// table.
class Keyboard {
  public:
    /// A key pressed: its code, and what it types.
    struct Stroke {
        unsigned key = 0;
        std::string text;       ///< UTF-8, no control characters; empty when nothing is typed (yet)
        bool composing = false; ///< the key only counts as a part of a sequence
    };

    Keyboard() = default;
    ~Keyboard();
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;

    /// Reads the keymap of the display's keyboard and the compose table of the user's locale. Without an XKB
    /// extension no key will mean anything.
    void Start(xcb_connection_t* connection);
    /// True when the event was about the keyboard itself.
    bool HandleEvent(const xcb_generic_event_t* event);
    /// `state`: the event's modifiers and group.
    Stroke Press(xcb_keycode_t code, std::uint16_t state);
    unsigned KeyCode(xcb_keycode_t code, std::uint16_t state);
    /// Forgets a sequence that was begun.
    void ResetCompose();

  private:
    void LoadKeymap();
    void LoadCompose();
    void UseState(std::uint16_t state);
    xkb_keysym_t LatinSym(xcb_keycode_t code, xkb_keysym_t sym) const;
    unsigned CodeOf(xcb_keycode_t code, xkb_keysym_t sym) const;

    xcb_connection_t* connection_ = nullptr;
    std::uint8_t eventBase_ = 0;
    std::int32_t device_ = -1;
    bool keymapStale_ = false;
    xkb_context* context_ = nullptr;
    xkb_keymap* keymap_ = nullptr;
    xkb_state* state_ = nullptr;
    xkb_compose_table* composeTable_ = nullptr;
    xkb_compose_state* compose_ = nullptr;
};

} // namespace vocafade::platform::x11
