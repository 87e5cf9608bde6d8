// SPDX-License-Identifier: MIT
#include "tests/support/x_server.h"

#include "tests/support/environment.h"
#include "tests/support/run_command.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vocafade::test {
namespace {

/// On a machine that does much else, under sanitizers: a quiet one takes a tenth of a second.
constexpr int kStartMilliseconds = 60000;
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

bool XServer::IsInstalled() { return RunCommand("command -v Xvfb").status == 0; }

void NeedsXServer::SetUp() {
    if (!XServer::IsInstalled()) GTEST_SKIP() << "Xvfb is not installed";
}

XServer::XServer() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    const std::string fd = std::to_string(ends[1]);
    const std::string screen = std::to_string(kWidth) + "x" + std::to_string(kHeight) + "x24";
    process_ = ::fork();
    if (process_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::close(ends[0]);
        ::dup2(::open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);
        ::execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", screen.c_str(), "-nolisten", "tcp",
                 "-noreset", "-ac", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(ends[1]);
    const std::string number = ReadNumber(ends[0]);
    ::close(ends[0]);
    if (number.empty()) {
        Kill();
        throw std::runtime_error("Xvfb does not start");
    }
    name_ = ":" + number;
    SetVariable("DISPLAY", name_);
}

// It is asked to end, so that it takes its lock away: two servers that start at once and find one that was
// left behind can both come to hold its number.
XServer::~XServer() { End(SIGTERM); }

void XServer::Kill() { End(SIGKILL); }

void XServer::End(int signal) {
    if (process_ <= 0) return;
    ::kill(process_, signal);
    ::waitpid(process_, nullptr, 0);
    process_ = -1;
    // The number is free again, and a test beside this one may have a server under it by the next call.
    SetVariable("DISPLAY", kNoDisplay);
}

} // namespace vocafade::test
