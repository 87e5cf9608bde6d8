// SPDX-License-Identifier: MIT
#pragma once

#include <csignal>
#include <ctime>

namespace vocafade::platform::x11 {

/// Writing to a display that has gone away raises SIGPIPE, which ends a process that does not care for it.
/// The host's signal handling is the host's, so the signal is only held back on this thread while we may
/// write, and taken away again if it was ours.
class SigpipeGuard {
  public:
    SigpipeGuard() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t pending;
        sigpending(&pending);
        wasPending_ = sigismember(&pending, SIGPIPE) == 1;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~SigpipeGuard() {
        if (!wasPending_) {
            const timespec now{};
            while (sigtimedwait(&pipe_, nullptr, &now) > 0) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    SigpipeGuard(const SigpipeGuard&) = delete;
    SigpipeGuard& operator=(const SigpipeGuard&) = delete;

  private:
    sigset_t pipe_;
    sigset_t before_;
    bool wasPending_ = false;
};

} // namespace vocafade::platform::x11
