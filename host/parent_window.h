// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

struct xcb_connection_t;

namespace vocafade::host {

/// A top-level X11 window for an editor to open in, hidden until `Show`. Everything is [main-thread].
class ParentWindow {
  public:
    /// Without `frame` the window manager leaves it alone: no title bar, above everything. Null when there is
    /// no display.
    static std::unique_ptr<ParentWindow> Make(int width, int height, bool frame = true);
    ~ParentWindow();
    ParentWindow(const ParentWindow&) = delete;
    ParentWindow& operator=(const ParentWindow&) = delete;

    /// Returns when the display has the window, so that another connection can use it.
    void Show();
    /// As `effEditOpen` takes it: plug-ins expect the window's number in the pointer's place.
    void* handle() const { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(id_)); }
    std::uint32_t id() const { return id_; }
    xcb_connection_t* connection() const { return connection_; }
    std::uint32_t root() const { return root_; }
    /// The windows inside this one, bottom to top.
    std::vector<std::uint32_t> Children();
    /// False once the display has gone away or thrown us out.
    bool isAlive() const;

  private:
    ParentWindow(xcb_connection_t* connection, int width, int height, bool frame);

    xcb_connection_t* connection_;
    std::uint32_t root_;
    std::uint32_t id_;
};

} // namespace vocafade::host
