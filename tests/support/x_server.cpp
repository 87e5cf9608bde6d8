// SPDX-License-Identifier: MIT
#include "tests/support/x_server.h"

#include "tests/support/environment.h"
#include "tests/support/run_command.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <utility>

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
    // The shell becomes the server, which prints its display's number once it is ready.
    const std::string command = "echo $$; exec setpriv --pdeathsig KILL Xvfb -displayfd 1 -screen 0 " +
                                std::to_string(kWidth) + "x" + std::to_string(kHeight) +
                                "x24 -nolisten tcp -noreset -ac 2>/dev/null";
    output_ = ::popen(command.c_str(), "r");
    if (output_ == nullptr) throw std::runtime_error("no shell");
    const auto readNumber = [this] {
        std::array<char, 16> line{};
        const bool isOne = std::fgets(line.data(), static_cast<int>(line.size()), output_) != nullptr;
        return isOne ? static_cast<int>(std::strtol(line.data(), nullptr, 10)) : -1;
    };
    process_ = readNumber();
    const int number = readNumber();
    if (number < 0) {
        Kill();
        throw std::runtime_error("Xvfb does not start");
    }
    name_ = ":" + std::to_string(number);
    SetVariable("DISPLAY", name_);
}

// It is asked to end, so that it takes its lock away: two servers that start at once and find one that was
// left behind can both come to hold its number.
XServer::~XServer() { End(SIGTERM); }

void XServer::Kill() { End(SIGKILL); }

void XServer::End(int signal) {
    if (output_ == nullptr) return;
    if (process_ > 0) ::kill(process_, signal);
    ::pclose(std::exchange(output_, nullptr)); // once it has ended
    // The number is free again, and a test beside this one may have a server under it by the next call.
    SetVariable("DISPLAY", kNoDisplay);
}

} // namespace vocafade::test
