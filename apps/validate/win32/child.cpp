// SPDX-License-Identifier: MIT
#include "apps/validate/child.h"

#include "apps/validate/carry_out.h"
#include "apps/validate/guard_pages.h"
#include "base/path.h"
#include "base/win32/wide_text.h"

#include <cstdio>
#include <new>
#include <system_error>
#include <windows.h>

namespace vocafade::validate {

struct CloseHandleOf {
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseHandleOf>;

namespace {

/// A process that ends with more than this was ended by an exception of that number.
constexpr DWORD kFirstException = 0xC0000000;
constexpr DWORD kPeriod = 20; // milliseconds

/// Throws for the system's last error unless `well`.
void Need(bool well, const char* what) {
    if (!well) throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), what);
}

Notes* View(HANDLE mapping) {
    return static_cast<Notes*>(::MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Notes)));
}

std::wstring ThisProgram() {
    std::wstring file(32768, L'\0');
    file.resize(::GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size())));
    return file;
}

/// What it starts ends with it, and it does not take all memory. Null where that is not to be had: before Windows 8
/// there is none inside another one.
Handle JobFor(HANDLE process) {
    Handle job(::CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags =
        JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_PROCESS_MEMORY;
    limits.ProcessMemoryLimit = kMostMemory;
    ::SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof limits);
    if (::AssignProcessToJobObject(job.get(), process) == 0) job.reset();
    return job;
}

} // namespace

struct Child::Process {
    ~Process() {
        if (notes != nullptr) ::UnmapViewOfFile(notes);
    }
    void TakeOutput() {
        DWORD there = 0;
        while (::PeekNamedPipe(output.get(), nullptr, 0, nullptr, &there, nullptr) != 0 && there > 0) {
            char bytes[4096];
            if (::ReadFile(output.get(), bytes, sizeof bytes, &there, nullptr) == 0) return;
            text.Add(bytes, there);
        }
    }

    Handle mapping;
    Notes* notes = nullptr;
    Handle output;
    Handle process;
    Handle job;
    DWORD status = 0;
    Tail text;
};

Child::Child(const Check& check, Subject& subject) : process_(std::make_unique<Process>()) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    process_->mapping.reset(::CreateFileMappingW(INVALID_HANDLE_VALUE, &inherited, PAGE_READWRITE, 0,
                                                 static_cast<DWORD>(sizeof(Notes)), nullptr));
    void* const memory = process_->mapping ? View(process_->mapping.get()) : nullptr;
    Need(memory != nullptr, "no shared memory");
    process_->notes = new (memory) Notes;
    HANDLE ends[2];
    Need(::CreatePipe(&ends[0], &ends[1], &inherited, 0) != 0, "no pipe");
    process_->output.reset(ends[0]);
    const Handle itsOutput(ends[1]);
    ::SetHandleInformation(ends[0], HANDLE_FLAG_INHERIT, 0);

    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = itsOutput.get();
    const std::wstring program = ThisProgram();
    // No name has a quotation mark in it, and none of these ends in a backslash.
    std::wstring line = win32::Wide(
        fmt::format("\"{}\" --carry-out {} --only {} --seed {}{} \"{}\"", win32::Narrow(program),
                    reinterpret_cast<std::uintptr_t>(process_->mapping.get()), check.name, subject.seed(),
                    subject.doublePrecision() ? " --double" : "", TextOf(subject.path())));
    std::fflush(stdout);
    PROCESS_INFORMATION made{};
    Need(::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                          nullptr, &start, &made) != 0,
         "no process");
    process_->process.reset(made.hProcess);
    const Handle thread(made.hThread);
    process_->job = JobFor(made.hProcess);
    ::ResumeThread(thread.get());
}

Child::~Child() = default; // the job's end is that of all in it

const Notes& Child::notes() const { return *process_->notes; }

bool Child::HasEnded() {
    const bool ended = ::WaitForSingleObject(process_->process.get(), kPeriod) == WAIT_OBJECT_0;
    process_->TakeOutput();
    if (ended) ::GetExitCodeProcess(process_->process.get(), &process_->status);
    return ended;
}

void Child::Kill() { ::TerminateProcess(process_->process.get(), 1); }

std::string Child::Crash() const {
    return process_->status >= kFirstException ? fmt::format("crashed (exception {:#x})", process_->status)
                                               : "";
}

int Child::Status() const { return static_cast<int>(process_->status); }

std::string Child::Output() const { return process_->text.text(); }

int LiveAsChild(const Check& check, Subject& subject, std::uintptr_t notes) {
    Notes* const shared = View(reinterpret_cast<HANDLE>(notes));
    Need(shared != nullptr, "no notes");
    ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX); // nobody is there to close a box
    InstallCrashReport(*shared);
    return CarryOut(check, subject, *shared);
}

} // namespace vocafade::validate
