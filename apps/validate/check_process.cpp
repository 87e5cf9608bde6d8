// SPDX-License-Identifier: MIT
#include "apps/validate/check_process.h"

#include "apps/validate/guarded_memory.h"
#include "host/host_error.h"
#include "host/parent_window.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <exception>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <sstream>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace vocafade::validate {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

/// How the process ends when it could carry out its check, whatever it found.
constexpr int kDone = 0;
/// The plug-in cannot be loaded at all; the finding says why.
constexpr int kUnusable = 3;

constexpr int kMostPatience = 6;          // times: how long a check goes on at most, however much it tries
constexpr std::size_t kMostOutput = 6000; // bytes of the plug-in's own words that are kept
#ifdef VOCAFADE_SANITIZED
constexpr int kPatience = 20; // times: the sanitizers are slow
#else
constexpr int kPatience = 1;
constexpr rlim_t kMostMemory = rlim_t{8} << 30; // a damaged state must not take the machine down
#endif

[[noreturn]] void ThrowSystemError(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// Notes that this process and its children see.
class SharedNotes {
  public:
    SharedNotes() {
        constexpr int kAccess = PROT_READ | PROT_WRITE;
        constexpr int kKind = MAP_SHARED | MAP_ANONYMOUS;
        // cppcheck-suppress invalidFunctionArg ; no file is mapped, which -1 says
        void* memory = ::mmap(nullptr, sizeof(Notes), kAccess, kKind, -1, 0);
        if (memory == MAP_FAILED) ThrowSystemError("no shared memory");
        notes_ = new (memory) Notes;
    }
    ~SharedNotes() { ::munmap(notes_, sizeof(Notes)); }
    SharedNotes(const SharedNotes&) = delete;
    SharedNotes& operator=(const SharedNotes&) = delete;
    Notes* operator->() { return notes_; }
    Notes& operator*() { return *notes_; }

  private:
    Notes* notes_;
};

/// Why the check cannot be tried here, or empty.
std::string WhatIsMissing(const Check& check, Subject& subject) {
    if ((check.traits & (kNeedsState | kNeedsEditor)) == 0) return {};
    const Instance probe(subject.Object());
    if ((check.traits & kNeedsState) != 0 && !probe.has(effFlagsProgramChunks))
        return "it saves no state of its own form; its parameters are its state";
    if ((check.traits & kNeedsEditor) == 0) return {};
    if (!probe.has(effFlagsHasEditor)) return "it has no editor";
    return host::ParentWindow::Make(1, 1) ? "" : "there is no display";
}

int CarryOut(const Check& check, Subject& subject, Report& report) {
    try {
        report.Trying("loading it");
        [[maybe_unused]] const host::SharedObject& object = subject.Object();
#ifdef __SANITIZE_THREAD__
        // The sanitizer cannot bear that libraries whose locks it does not see are unloaded.
        ::dlopen(object.file().c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
#endif
    } catch (const host::HostError& error) {
        report.Fault("{}", error.what());
        return kUnusable;
    }
    try {
        const std::string missing = WhatIsMissing(check, subject);
        if (missing.empty()) {
            check.function(subject, report);
        } else {
            report.Tell(Kind::skipped, missing);
        }
        report.Trying("ending the process");
    } catch (const Hopeless& hopeless) {
        report.Fault("{}", hopeless.what());
    } catch (const std::exception& error) {
        report.Fault("threw an exception into its host: {}", error.what());
    } catch (...) {
        report.Fault("threw an exception into its host");
    }
    return kDone;
}

/// What the child does from its first moment to its last.
[[noreturn]] void LiveAsChild(const Check& check, Subject& subject, Notes& notes, int output) {
    ::setpgid(0, 0); // so that what the plug-in starts ends with it
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const rlimit noCore{0, 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
    ::dup2(output, STDOUT_FILENO);
    ::dup2(output, STDERR_FILENO);
#ifndef VOCAFADE_SANITIZED // the sanitizers take more memory, and tell more of a crash than we can
    const rlimit memory{kMostMemory, kMostMemory};
    ::setrlimit(RLIMIT_DATA, &memory);
    InstallCrashReport(notes);
#endif
    int status = kDone;
    {
        Report report(notes);
        status = CarryOut(check, subject, report);
    }
    subject.Unload();
    std::exit(status); // NOLINT(concurrency-mt-unsafe): as any process, with the plug-in's own exit functions
}

/// The process of one check, and what it writes.
class Child {
  public:
    Child(const Check& check, Subject& subject, Notes& notes) : notes_(notes) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) ThrowSystemError("no pipe");
        std::fflush(stdout); // or the child would write it again
        process_ = ::fork();
        if (process_ == 0) {
            ::close(ends[0]);
            LiveAsChild(check, subject, notes, ends[1]);
        }
        ::close(ends[1]);
        output_ = ends[0];
        if (process_ < 0) {
            ::close(output_);
            ThrowSystemError("no process");
        }
        ::setpgid(process_, process_);
    }
    ~Child() { ::close(output_); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    enum class Ending { itself, hung, endless };

    /// Waits until it ends, has tried nothing new for `patience` or goes on for much longer than that.
    Ending Wait(Clock::duration patience) {
        const auto end = Clock::now() + kMostPatience * patience;
        auto until = Clock::now() + patience;
        std::uint64_t attempts = 0;
        Ending ending = Ending::itself;
        while (::waitpid(process_, &status_, WNOHANG) == 0) {
            TakeOutput(20);
            if (attempts != notes_.attempts) until = Clock::now() + patience;
            attempts = notes_.attempts;
            if (Clock::now() < std::min(until, end)) continue;
            ending = Clock::now() < end ? Ending::hung : Ending::endless;
            ::kill(process_, SIGKILL);
        }
        ::kill(-process_, SIGKILL); // what it may have left behind
        TakeOutput(0);
        return ending;
    }
    int status() const { return status_; }
    /// The end of what it wrote.
    std::string output() const {
        return text_.size() > kMostOutput ? text_.substr(text_.size() - kMostOutput) : text_;
    }

  private:
    /// Takes what is there; waits at most `milliseconds` for the first of it.
    void TakeOutput(int milliseconds) {
        pollfd readable{output_, POLLIN, 0};
        for (; ::poll(&readable, 1, milliseconds) > 0; milliseconds = 0) {
            char bytes[4096];
            const ssize_t count = ::read(output_, bytes, sizeof bytes);
            if (count <= 0) { // closed: there is nothing to wait for any more
                ::usleep(static_cast<useconds_t>(milliseconds) * 1000);
                return;
            }
            text_.append(bytes, static_cast<std::size_t>(count));
            if (text_.size() > 4 * kMostOutput) text_.erase(0, text_.size() - kMostOutput);
        }
    }

    Notes& notes_;
    pid_t process_ = -1;
    int output_ = -1;
    int status_ = 0;
    std::string text_;
};

/// How a process ended that should not have, as a finding; the crash report, if there is one, becomes part of
/// it.
void AddEnding(Child::Ending ending, int status, const std::string& when, double patience, Outcome& outcome) {
    std::vector<Finding>& findings = outcome.findings;
    const auto fault = [&](const std::string& how) { findings.push_back({Kind::fault, how + when}); };
    if (ending == Child::Ending::endless) {
        findings.push_back({Kind::skipped, "it is so slow that the check was given up" + when});
    } else if (ending == Child::Ending::hung) {
        fault(fmt::format("hung for {:.0f} seconds", patience));
    } else if (WIFSIGNALED(status)) {
        std::string how = fmt::format("crashed (signal {})", WTERMSIG(status));
        if (!findings.empty() && findings.back().sentence.starts_with("crashed (")) {
            how = findings.back().sentence;
            findings.pop_back();
        }
        fault(how);
    } else if (WEXITSTATUS(status) == kUnusable) {
        outcome.unusable = true;
    } else if (WEXITSTATUS(status) != kDone) {
        fault(fmt::format("ended the process with {}", WEXITSTATUS(status)));
    }
}

} // namespace

bool Outcome::has(Kind kind) const {
    return std::any_of(findings.begin(), findings.end(), [&](const Finding& f) { return f.kind == kind; });
}

Outcome RunCheck(const Check& check, Subject& subject) {
    const auto begin = Clock::now();
    const seconds patience(check.seconds * kPatience);
    SharedNotes notes;
    Child child(check, subject, *notes);
    const Child::Ending ending = child.Wait(patience);
    Outcome outcome;
    std::istringstream lines{std::string(notes->text())};
    for (std::string line; std::getline(lines, line);)
        if (!line.empty()) outcome.findings.push_back({static_cast<Kind>(line[0]), line.substr(1)});
    const std::string trying = notes->trying.data();
    AddEnding(ending, child.status(), trying.empty() ? "" : " while " + trying,
              static_cast<double>(patience.count()), outcome);
    outcome.attempts = notes->attempts;
    outcome.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    outcome.output = child.output();
    if (ending == Child::Ending::itself && child.status() == 0 && !outcome.output.empty())
        outcome.findings.push_back({Kind::remark, "it writes to its host's output: " +
                                                      outcome.output.substr(0, outcome.output.find('\n'))});
    return outcome;
}

} // namespace vocafade::validate
