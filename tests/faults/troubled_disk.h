// SPDX-License-Identifier: MIT
#pragma once

#include <functional>

namespace vocafade::test {

/// While one lives, every file call of the thread that made it asks it first. Only one at a time per thread.
class TroubledDisk {
  public:
    /// `atCall` hears the call's name, may take its time, and answers whether the disk is there: without it
    /// the call fails with EIO.
    explicit TroubledDisk(std::function<bool(const char* call)> atCall);
    ~TroubledDisk();
    TroubledDisk(const TroubledDisk&) = delete;
    TroubledDisk& operator=(const TroubledDisk&) = delete;

  private:
    std::function<bool(const char* call)> atCall_;
};

} // namespace vocafade::test
