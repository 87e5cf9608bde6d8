// SPDX-License-Identifier: MIT
#include "tests/support/processes.h"

#include <cstdlib>
#include <stdexcept>
#include <utility>
#include <windows.h>

namespace vocafade::test {
namespace {

constexpr char kVariable[] = "VOCAFADE_ASIDE";

/// What the program does first when it was started for this.
class Begin : public testing::Environment {
  public:
    Begin(std::string name, Aside::Work work) : name_(std::move(name)), work_(std::move(work)) {}
    void SetUp() override {
        const char* asked = std::getenv(kVariable);
        if (asked == nullptr || name_ != std::string(asked).substr(0, name_.size())) return;
        ::ExitProcess(work_(std::atoi(asked + name_.size())) ? 0 : 1);
    }

  private:
    std::string name_;
    Aside::Work work_;
};

} // namespace

Aside::Aside(const char* name, Work work) : name_(name) {
    testing::AddGlobalTestEnvironment(new Begin(name_, std::move(work)));
}

Aside::Process::Process(const Aside& aside, int number) {
    wchar_t program[MAX_PATH];
    ::GetModuleFileNameW(nullptr, program, MAX_PATH);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION made{};
    ::SetEnvironmentVariableA(kVariable, (aside.name_ + std::to_string(number)).c_str());
    const BOOL started =
        ::CreateProcessW(program, nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &made);
    ::SetEnvironmentVariableA(kVariable, nullptr);
    if (started == 0) throw std::runtime_error("no process");
    ::CloseHandle(made.hThread);
    process_ = made.hProcess;
}

bool Aside::Process::HasEnded(bool wait) {
    if (process_ == nullptr) return true;
    if (::WaitForSingleObject(process_, wait ? INFINITE : 0) != WAIT_OBJECT_0) return false;
    DWORD status = 1;
    ::GetExitCodeProcess(process_, &status);
    EXPECT_EQ(status, 0U);
    ::CloseHandle(std::exchange(process_, nullptr));
    return true;
}

void Aside::Process::Kill() {
    if (process_ == nullptr) return;
    ::TerminateProcess(process_, 9);
    ::WaitForSingleObject(process_, INFINITE);
    ::CloseHandle(std::exchange(process_, nullptr));
}

} // namespace vocafade::test
