// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/interruption.h"

#include "apps/vocafade/shared/failures.h"

#include <atomic>
#include <csignal>

namespace vocafade::command {
namespace {

std::atomic<int> caughtSignal{0};
static_assert(std::atomic<int>::is_always_lock_free);

void Remember(int number) { caughtSignal = number; }

} // namespace

void WatchForInterruption() {
    struct sigaction action {};
    action.sa_handler = Remember;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction old {};
        ::sigaction(number, nullptr, &old);
        if (old.sa_handler != SIG_IGN) ::sigaction(number, &action, nullptr); // nohup stays nohup
    }
    ::signal(SIGXFSZ, SIG_IGN); // a file-size limit is then an ordinary write error
}

void ThrowIfInterrupted() {
    if (caughtSignal != 0) throw Interrupted();
}

void DieOfSignal() {
    const int number = caughtSignal;
    if (number == 0) return;
    ::signal(number, SIG_DFL);
    ::raise(number);
}

} // namespace vocafade::command
