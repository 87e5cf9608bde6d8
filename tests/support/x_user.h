// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>
#if !defined(_WIN32)
#include <xcb/xcb.h>
#endif

namespace vocafade::test {

#if defined(_WIN32) // windows are the system's own there; keys stay those of the X server that shows them
using xcb_window_t = std::uint32_t;
using xcb_keysym_t = std::uint32_t;
#endif

/// What a part of the screen looks like.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels; ///< 0xRRGGBB, row by row

    std::uint32_t at(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    bool operator==(const Picture&) const = default;
};

/// A desktop's settings that hold one number.
std::string NumberSetting(std::string_view name, std::uint32_t value);
/// The same: the longest time in milliseconds between the presses of a double click.
std::string DoubleClickSettings(std::uint32_t milliseconds);

/// A user with a mouse, a keyboard and eyes, on the display that DISPLAY names, and the host whose windows he
/// works in. What he does has reached the server when the call returns, and what he sees is what all other
/// clients have asked for before the call.
class XUser {
  public:
    /// Throws `std::runtime_error` without a server.
    XUser();
    ~XUser();
    XUser(const XUser&) = delete;
    XUser& operator=(const XUser&) = delete;

    /// @name The host
    /// @{
    /// A window such as a host makes for an editor, top-level without a parent, at a place of the screen.
    xcb_window_t MakeWindow(int x, int y, int width, int height, bool show = true, xcb_window_t parent = 0);
    void DestroyWindow(xcb_window_t window);
    void Show(xcb_window_t window);
    void Hide(xcb_window_t window);
    void Resize(xcb_window_t window, int width, int height);
    void Reparent(xcb_window_t window, xcb_window_t parent, int x, int y);
    /// Publishes these bytes as the desktop's settings, as a settings daemon does; an editor reads them when
    /// it opens.
    void PublishSettings(std::string_view bytes);
    /// Key presses that reached the host's windows since the last call.
    int TakeHostKeys();
    /// @}

    /// @name The screen
    /// @{
    xcb_window_t Root() const;
    /// Windows below `window`, bottom to top.
    std::vector<xcb_window_t> Children(xcb_window_t window);
    /// Top-level windows that are shown, bottom to top.
    std::vector<xcb_window_t> TopLevels();
    struct Bounds {
        int x, y, width, height;
        bool operator==(const Bounds&) const = default;
    };
    /// Place on the screen and size.
    Bounds BoundsOf(xcb_window_t window);
    /// The window that the keyboard goes to.
    xcb_window_t Focus();
    void SetFocus(xcb_window_t window);
    Picture Look(xcb_window_t window, int x, int y, int width, int height);
    /// What the screen shows at that place, 0xRRGGBB; no colour when there is none.
    std::uint32_t Pixel(int x, int y) {
        const Picture point = Look(Root(), x, y, 1, 1);
        return point.pixels.empty() ? 0xFF000000 : point.at(0, 0);
    }
    /// @}

    /// The pointer, in screen coordinates.
    void MoveTo(int x, int y);
    void Press(int button = 1);
    void Release(int button = 1);
    void Click(int x, int y) {
        MoveTo(x, y);
        Press();
        Release();
    }

    /// Whether another program can have the mouse.
    bool MouseIsFree();

    /// A key by its X keysym, pressed and released, with Shift where the layout wants it.
    void Key(xcb_keysym_t keysym);
    void KeyDown(xcb_keysym_t keysym);
    void KeyUp(xcb_keysym_t keysym);
    /// Sends the window what a key sends that is held down: presses, `times` of them.
    void Hold(xcb_window_t window, xcb_keysym_t keysym, int times);
    void Keys(std::initializer_list<xcb_keysym_t> keysyms) {
        for (const xcb_keysym_t keysym : keysyms)
            Key(keysym);
    }
    /// Keys while another one is held.
    void Chord(xcb_keysym_t held, std::initializer_list<xcb_keysym_t> keysyms) {
        KeyDown(held);
        Keys(keysyms);
        KeyUp(held);
    }
    /// Characters of ASCII, one after the other; \r, \t, \b and \033 are Return, Tab, Backspace and Escape.
    void Type(std::string_view text) {
        for (const char character : text)
            Key(static_cast<xcb_keysym_t>(character < ' ' ? 0xFF00 | character : character));
    }
    /// Puts the symbols onto spare keys, as a layout that has them would.
    void AddKeys(const std::vector<xcb_keysym_t>& keysyms);
    /// Changes the keyboard to one with AltGr and dead keys.
    void TakeGermanKeyboard();

    /// What other programs get from the clipboard; `idle` lets the owner answer them.
    std::string TakeClipboard(const std::function<void()>& idle);
    /// Another program offers a text in UTF-8, or what claims to be one in the system's own form.
    void OfferClipboard(const std::string& text);
    void OfferClipboardBytes(std::string_view bytes);

    /// Waits until the server has handled all that any client has sent so far, and has sent the answers.
    void Sync();

#if !defined(_WIN32)
    /// What a window manager's close button does.
    void AskToClose(xcb_window_t window);
    /// What any client may send to another one's window: 32 bytes that claim to be an event. With a mask of 0
    /// it goes to who made the window, else to those who selected such events of it.
    template <typename Event>
    void Forge(xcb_window_t window, const Event& event, std::uint32_t mask = 0) {
        std::array<char, 32> bytes{};
        static_assert(sizeof event <= sizeof bytes);
        std::memcpy(bytes.data(), &event, sizeof event);
        ::xcb_send_event(connection_, 0, window, mask, bytes.data());
    }
    bool IsViewable(xcb_window_t window);
    /// For what one test alone asks of the server.
    xcb_connection_t* connection() { return connection_; }
    xcb_atom_t Atom(std::string_view name);

  private:
    struct Place {
        xcb_keycode_t code;
        bool shifted;
    };

    void Fake(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0);
    Place Find(xcb_keysym_t keysym);

    xcb_connection_t* connection_ = nullptr;
    xcb_window_t settingsWindow_ = 0;
    xcb_screen_t* screen_ = nullptr;
#endif
};

} // namespace vocafade::test
