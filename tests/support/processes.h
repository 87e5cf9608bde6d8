// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>
#if !defined(_WIN32)
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace vocafade::test {

/// Work that a test gives to processes of their own, which have its environment. A global of the test program, since
/// where processes cannot be copied the program is started once more to do it.
class Aside {
  public:
    /// `work` gets the process's number and answers whether all went well.
    using Work = std::function<bool(int number)>;

    /// A process that does the work; killed at the end of the scope.
    class Process {
      public:
        Process(const Aside& aside, int number);
        ~Process() { Kill(); }
        Process(const Process&) = delete;
        Process& operator=(const Process&) = delete;

        /// Whether it has ended, its work not well done being a fault of the test. Waits for it on demand.
        bool HasEnded(bool wait = false);
        void Kill();

      private:
#if defined(_WIN32)
        void* process_ = nullptr;
#else
        pid_t process_ = 0;
#endif
    };

    /// Runs `work(0)` to `work(count - 1)`, each in a process of its own, at once and to their ends.
    void Run(int count) const {
        std::vector<std::unique_ptr<Process>> all;
        all.reserve(static_cast<std::size_t>(count));
        for (int number = 0; number < count; ++number)
            all.push_back(std::make_unique<Process>(*this, number));
        for (const auto& process : all)
            process->HasEnded(true);
    }

#if defined(_WIN32)
    Aside(const char* name, Work work);

  private:
    std::string name_;
#else
    Aside(const char* /*name*/, Work work) : work_(std::move(work)) {}

  private:
    Work work_;
#endif
};

#if !defined(_WIN32)
inline Aside::Process::Process(const Aside& aside, int number) : process_(::fork()) {
    if (process_ == 0) ::_exit(aside.work_(number) ? 0 : 1);
}

inline bool Aside::Process::HasEnded(bool wait) {
    if (process_ <= 0) return true;
    int status = 1;
    if (::waitpid(process_, &status, wait ? 0 : WNOHANG) == 0) return false;
    EXPECT_EQ(status, 0);
    process_ = 0;
    return true;
}

inline void Aside::Process::Kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    process_ = 0;
}

/// The same for work of one test alone.
inline void InProcesses(int count, const Aside::Work& work) { Aside("", work).Run(count); }
#endif

} // namespace vocafade::test
