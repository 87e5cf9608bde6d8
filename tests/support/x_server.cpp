// SPDX-License-Identifier: MIT
#include "tests/support/x_server.h"

#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vocafade::test {
namespace {

constexpr int kStartMilliseconds = 20000;
/// A display that no server takes by itself: they choose from 0 to 59535.
constexpr const char* kNoDisplay = ":60000";

/// Reads the display's number that the server writes once it is ready.
std::string ReadNumber(int from) {
    std::string number;
    for (;;) {
        pollfd ready{from, POLLIN, 0};
        char byte = 0;
        if (::poll(&ready, 1, kStartMilliseconds) != 1 || ::read(from, &byte, 1) != 1) return {};
        if (byte == '\n') return number;
        number += byte;
    }
}

} // namespace

XServer::XServer() {
    int ends[2];
    if (::pipe(ends) != 0) throw std::runtime_error("no pipe");
    process_ = ::fork();
    if (process_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::close(ends[0]);
        const std::string fd = std::to_string(ends[1]);
        ::execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1024x768x24", "-nolisten", "tcp",
                 "-noreset", "-ac", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(ends[1]);
    const std::string number = ReadNumber(ends[0]);
    ::close(ends[0]);
    if (number.empty()) {
        Kill();
        throw std::runtime_error("Xvfb does not start: is it installed?");
    }
    name_ = ":" + number;
    ::setenv("DISPLAY", name_.c_str(), 1); // NOLINT(concurrency-mt-unsafe)
}

XServer::~XServer() { Kill(); }

void XServer::Kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    process_ = -1;
    // The number is free again, and a test beside this one may have a server under it by the next call.
    ::setenv("DISPLAY", kNoDisplay, 1); // NOLINT(concurrency-mt-unsafe)
}

} // namespace vocafade::test
