// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>
#include <xcb/xcb.h>

namespace vocafade::test {

/// An X server of the test's own, with the environment pointing to it, and a client on it that plays the host
/// and the user. There is no window manager.
class VirtualDisplay {
  public:
    /// Starts the server; `IsRunning` tells whether that worked.
    VirtualDisplay();
    /// Ends it.
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    bool IsRunning() const { return connection_ != nullptr; }
    /// Ends the server as a crash would.
    void Kill();

    /// @name The host
    /// @{
    xcb_window_t MakeHostWindow(int x, int y, int width, int height, bool show = true,
                                xcb_window_t parent = 0);
    void Map(xcb_window_t window, bool map = true);
    void Resize(xcb_window_t window, int width, int height);
    void Reparent(xcb_window_t window, xcb_window_t parent, int x, int y);
    void Destroy(xcb_window_t window);
    void Focus(xcb_window_t window);
    xcb_window_t Focused();
    /// Windows below `window`, bottom first; below the root without one.
    std::vector<xcb_window_t> Children(xcb_window_t window = 0);
    bool IsViewable(xcb_window_t window);
    /// Bounds as x, y, width, height on the screen.
    struct Place {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
    };
    Place PlaceOf(xcb_window_t window);
    /// What the screen shows at that place, 0xRRGGBB.
    std::uint32_t Pixel(int x, int y);
    /// Key presses that reached the host's windows since the last call.
    int TakeHostKeys();
    /// Clients that the server has, this one included.
    int Clients();
    /// @}

    /// @name The user
    /// @{
    void MoveTo(int x, int y);
    void Button(int button, bool press);
    void Click(int x, int y, int button = 1);
    void Key(xcb_keysym_t sym, bool press);
    void Tap(xcb_keysym_t sym);
    /// Puts the symbols onto spare keys, as a layout that has them would.
    void AddKeys(const std::vector<xcb_keysym_t>& syms);
    /// Waits until the server has done all of this.
    void Sync();
    /// @}

    xcb_connection_t* connection() { return connection_; }
    xcb_window_t root() const { return root_; }

  private:
    xcb_keycode_t KeycodeOf(xcb_keysym_t sym);
    void Fake(std::uint8_t type, std::uint8_t detail, int x, int y);

    pid_t server_ = -1;
    xcb_connection_t* connection_ = nullptr;
    xcb_window_t root_ = 0;
};

/// Calls `step` every millisecond or so until `done` says so; false after `milliseconds`.
bool WaitFor(const std::function<void()>& step, const std::function<bool()>& done, int milliseconds = 3000);

} // namespace vocafade::test
