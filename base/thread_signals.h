// SPDX-License-Identifier: MIT
#pragma once

#if !defined(_WIN32)
#include <csignal>
#endif

namespace vocafade {

/// [any-thread] Keeps all signals from this thread, and from threads that it starts, to the end of its scope: the
/// host's signals are for the host's threads. Windows has none.
class WithoutSignals {
  public:
#if defined(_WIN32)
    WithoutSignals() {}
    ~WithoutSignals() {}
#else
    WithoutSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~WithoutSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_;

  public:
#endif
    WithoutSignals(const WithoutSignals&) = delete;
    WithoutSignals& operator=(const WithoutSignals&) = delete;
};

} // namespace vocafade
