// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <sys/types.h>

namespace vocafade::test {

/// A virtual X server of a test's own, up while this lives and named in DISPLAY. It ends with the test's
/// process, however that ends.
class XServer {
  public:
    /// Starts Xvfb with one screen of 1024 by 768 and waits until it answers. Throws `std::runtime_error`.
    XServer();
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    /// ":7", for instance.
    const std::string& name() const { return name_; }
    /// Ends the server at once, as a crash of it would.
    void Kill();

  private:
    pid_t process_ = -1;
    std::string name_;
};

} // namespace vocafade::test
