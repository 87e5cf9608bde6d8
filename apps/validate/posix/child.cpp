// SPDX-License-Identifier: MIT
#include "apps/validate/child.h"

#include "apps/validate/carry_out.h"
#include "apps/validate/guard_pages.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace vocafade::validate {
namespace {

[[noreturn]] void ThrowSystemError(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// Notes that this process and its children see.
Notes* MakeSharedNotes() {
    constexpr int kAccess = PROT_READ | PROT_WRITE;
    constexpr int kKind = MAP_SHARED | MAP_ANONYMOUS;
    // cppcheck-suppress invalidFunctionArg ; no file is mapped, which -1 says
    void* memory = ::mmap(nullptr, sizeof(Notes), kAccess, kKind, -1, 0);
    if (memory == MAP_FAILED) ThrowSystemError("no shared memory");
    return new (memory) Notes;
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
    const int status = CarryOut(check, subject, notes);
    std::exit(status); // NOLINT(concurrency-mt-unsafe): as any process, with the plug-in's own exit functions
}

} // namespace

struct Child::Process {
    Process() = default;
    ~Process() { ::munmap(notes, sizeof(Notes)); }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// Takes what is there; waits at most `milliseconds` for the first of it.
    void TakeOutput(int milliseconds) {
        pollfd readable{output, POLLIN, 0};
        for (; ::poll(&readable, 1, milliseconds) > 0; milliseconds = 0) {
            char bytes[4096];
            const ssize_t count = ::read(output, bytes, sizeof bytes);
            if (count <= 0) { // closed: there is nothing to wait for any more
                ::usleep(static_cast<useconds_t>(milliseconds) * 1000);
                return;
            }
            text.Add(bytes, static_cast<std::size_t>(count));
        }
    }

    Notes* notes = MakeSharedNotes();
    pid_t id = -1;
    int output = -1;
    int status = 0;
    Tail text;
};

Child::Child(const Check& check, Subject& subject) : process_(std::make_unique<Process>()) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) ThrowSystemError("no pipe");
    std::fflush(stdout); // or the child would write it again
    process_->id = ::fork();
    if (process_->id == 0) {
        ::close(ends[0]);
        LiveAsChild(check, subject, *process_->notes, ends[1]);
    }
    ::close(ends[1]);
    process_->output = ends[0];
    if (process_->id < 0) {
        ::close(ends[0]);
        ThrowSystemError("no process");
    }
    ::setpgid(process_->id, process_->id);
}

Child::~Child() { ::close(process_->output); }

const Notes& Child::notes() const { return *process_->notes; }

bool Child::HasEnded() {
    if (::waitpid(process_->id, &process_->status, WNOHANG) == 0) {
        process_->TakeOutput(20);
        return false;
    }
    ::kill(-process_->id, SIGKILL); // what it may have left behind
    process_->TakeOutput(0);
    return true;
}

void Child::Kill() { ::kill(process_->id, SIGKILL); }

std::string Child::Crash() const {
    const int status = process_->status;
    return WIFSIGNALED(status) ? fmt::format("crashed (signal {})", WTERMSIG(status)) : "";
}

int Child::Status() const { return WEXITSTATUS(process_->status); }

std::string Child::Output() const { return process_->text.text(); }

} // namespace vocafade::validate
