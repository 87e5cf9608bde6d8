// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>

struct xcb_connection_t;

namespace vocafade::validate {

/// A window of our own for an editor to open in.
class ParentWindow {
  public:
    /// Null when there is no display.
    static std::unique_ptr<ParentWindow> Make(std::uint16_t width, std::uint16_t height);
    ~ParentWindow();
    ParentWindow(const ParentWindow&) = delete;
    ParentWindow& operator=(const ParentWindow&) = delete;

    /// As `effEditOpen` takes it.
    void* handle() const;
    /// Handles what came from the display; answers how many windows stand inside this one.
    int Refresh();
    /// False once the display has thrown us out.
    bool isAlive() const;
    /// Moves the pointer over the editor and turns the wheel at (x, y), up or down. A click would be more,
    /// but it can open a dialog that waits for a person.
    void TurnWheel(std::int16_t x, std::int16_t y, bool up);

  private:
    ParentWindow(xcb_connection_t* connection, std::uint32_t window);
    void Send(std::uint32_t child, std::uint8_t type, std::uint8_t button, std::int16_t x, std::int16_t y);

    xcb_connection_t* connection_;
    std::uint32_t window_;
};

} // namespace vocafade::validate
