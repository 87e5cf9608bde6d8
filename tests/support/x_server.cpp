// SPDX-License-Identifier: MIT
#include "tests/support/x_server.h"

#include "tests/support/environment.h"
#include "tests/support/run_command.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vocafade::test {
namespace {

/// A display that no server takes by itself: they choose from 0 to 59535.
constexpr const char* kNoDisplay = ":60000";

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
    std::array<char, 16> number{};
    std::FILE* ready = ::fdopen(ends[0], "r"); // it writes its display's number once it is, or ends
    const bool starts = std::fgets(number.data(), number.size(), ready) != nullptr;
    std::fclose(ready);
    if (!starts) {
        Kill();
        throw std::runtime_error("Xvfb does not start");
    }
    name_ = ":" + std::to_string(std::atoi(number.data()));
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
