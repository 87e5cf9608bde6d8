// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

struct xcb_connection_t;

namespace vocafade::host {

/// A top-level window for an editor to open in, hidden until `Show`. Everything is [main-thread].
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
    /// As `effEditOpen` takes it. On Linux plug-ins expect the window's number in the pointer's place.
    void* handle() const { return reinterpret_cast<void*>(static_cast<std::uintptr_t>(id_)); }
    /// The numbers of the windows inside this one, bottom to top. (On Windows too a handle is one of 32 bits.)
    std::vector<std::uint32_t> Children();
    /// False once the display has gone away or thrown us out.
    bool isAlive() const;

#if defined(_WIN32)
  private:
    explicit ParentWindow(std::uint32_t id) : id_(id) {}
#else
    std::uint32_t id() const { return id_; }
    xcb_connection_t* connection() const { return connection_; }
    std::uint32_t root() const { return root_; }

  private:
    ParentWindow(xcb_connection_t* connection, int width, int height, bool frame);

    xcb_connection_t* connection_;
    std::uint32_t root_;
#endif
    std::uint32_t id_;
};

} // namespace vocafade::host
