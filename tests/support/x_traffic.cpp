// SPDX-License-Identifier: MIT
#include "tests/support/x_traffic.h"

#include <dlfcn.h>
#include <poll.h>
#include <sys/uio.h>

namespace {

thread_local vocafade::test::XTraffic traffic;

template <typename Function>
Function* TheNext(Function* /*ours*/, const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

} // namespace

vocafade::test::XTraffic vocafade::test::XTraffic::Now() { return traffic; }

extern "C" {
__attribute__((visibility("default"))) ssize_t writev(int file, const iovec* parts, int count) {
    static const auto next = TheNext(&writev, "writev");
    const ssize_t sent = next(file, parts, count);
    if (sent > 0) traffic.bytesSent += sent;
    return sent;
}

__attribute__((visibility("default"))) int poll(pollfd* files, nfds_t count, int milliseconds) {
    static const auto next = TheNext(&poll, "poll");
    if (milliseconds != 0) ++traffic.waits;
    return next(files, count, milliseconds);
}
}
