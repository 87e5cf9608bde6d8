// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>
#include <xcb/xcb.h>

namespace vocafade::test {

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

/// A user with a mouse, a keyboard and eyes, on the display that DISPLAY names. What he does has reached the
/// server when the call returns.
class XUser {
  public:
    XUser();
    ~XUser();
    XUser(const XUser&) = delete;
    XUser& operator=(const XUser&) = delete;

    /// A shown top-level window, such as a host makes for an editor, at a place of the screen.
    xcb_window_t MakeWindow(int x, int y, int width, int height);
    void DestroyWindow(xcb_window_t window);
    void Show(xcb_window_t window);
    void Hide(xcb_window_t window);
    /// What a window manager's close button does.
    void AskToClose(xcb_window_t window);
    /// What any client may send to another one's window: 32 bytes that claim to be an event. With a mask of 0
    /// it goes to who made the window, else to those who selected such events of it.
    void Forge(xcb_window_t window, const std::array<std::uint8_t, 32>& event, std::uint32_t mask = 0);
    /// Publishes these bytes as the desktop's settings, as a settings daemon does.
    void PublishSettings(std::string_view bytes);
    xcb_window_t Root() const { return screen_->root; }
    std::vector<xcb_window_t> Children(xcb_window_t window);
    /// Top-level windows that are shown, bottom to top.
    std::vector<xcb_window_t> TopLevels();
    struct Bounds {
        int x, y, width, height;
    };
    /// Place on the screen and size.
    Bounds BoundsOf(xcb_window_t window);
    /// The window that the keyboard goes to.
    xcb_window_t Focus();
    void SetFocus(xcb_window_t window);

    /// The pointer, in screen coordinates.
    void MoveTo(int x, int y);
    void Press(int button = 1);
    void Release(int button = 1);

    /// A key by its X keysym, pressed and released.
    void Key(std::uint32_t keysym);
    void KeyDown(std::uint32_t keysym);
    void KeyUp(std::uint32_t keysym);
    /// Characters of ASCII, one after the other.
    void Type(std::string_view text);

    Picture Look(xcb_window_t window, int x, int y, int width, int height);
    /// Waits until the server has handled all that was asked so far.
    void Sync();

    /// For what one test alone asks of the server.
    xcb_connection_t* connection() { return connection_; }

  private:
    void Fake(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0);
    std::uint8_t KeyCodeOf(std::uint32_t keysym, bool* shifted);

    xcb_atom_t Atom(std::string_view name);

    xcb_connection_t* connection_;
    xcb_window_t settingsWindow_ = 0;
    xcb_screen_t* screen_;
    std::vector<std::uint32_t> keysyms_;
    int firstKey_ = 0;
    int perKey_ = 1;
};

inline constexpr std::uint32_t kKeysymReturn = 0xFF0D;
inline constexpr std::uint32_t kKeysymEscape = 0xFF1B;
inline constexpr std::uint32_t kKeysymBackspace = 0xFF08;
inline constexpr std::uint32_t kKeysymTab = 0xFF09;
inline constexpr std::uint32_t kKeysymKeypadEnter = 0xFF8D;
inline constexpr std::uint32_t kKeysymDelete = 0xFFFF;
inline constexpr std::uint32_t kKeysymLeft = 0xFF51;
inline constexpr std::uint32_t kKeysymUp = 0xFF52;
inline constexpr std::uint32_t kKeysymDown = 0xFF54;
inline constexpr std::uint32_t kKeysymEnd = 0xFF57;
inline constexpr std::uint32_t kKeysymShift = 0xFFE1;
inline constexpr std::uint32_t kKeysymControl = 0xFFE3;

} // namespace vocafade::test
