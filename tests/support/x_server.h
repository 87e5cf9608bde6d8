// SPDX-License-Identifier: MIT
#pragma once

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>

namespace vocafade::test {

/// A virtual X server of a test's own, without a window manager, up while this lives and named in DISPLAY. It
/// ends with the test's process, however that ends.
class XServer {
  public:
    /// Starts Xvfb with one screen of `kWidth` by `kHeight` and waits until it answers. Throws
    /// `std::runtime_error`.
    XServer();
    ~XServer();
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    /// Whether there is an Xvfb to start.
    static bool IsInstalled();

    static constexpr int kWidth = 1920;
    static constexpr int kHeight = 1024;

    /// ":7", for instance.
    const std::string& name() const { return name_; }
    /// Ends the server at once, as a crash of it would.
    void Kill();

  private:
    void End(int signal);

    std::FILE* output_ = nullptr;
    pid_t process_ = 0;
    std::string name_;
};

/// Skips all tests of a program where there is no X server to start: for `testing::AddGlobalTestEnvironment`.
class NeedsXServer : public testing::Environment {
  public:
    void SetUp() override;
};

} // namespace vocafade::test
