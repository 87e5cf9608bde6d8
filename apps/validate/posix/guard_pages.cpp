// SPDX-License-Identifier: MIT
#include "apps/validate/guard_pages.h"

#include <array>
#include <csignal>
#include <sys/mman.h>
#include <unistd.h>

namespace vocafade::validate {
namespace {

Notes* crashNotes = nullptr;

const char* NameOf(int signal) {
    switch (signal) {
    case SIGSEGV:
        return "SIGSEGV, invalid memory";
    case SIGBUS:
        return "SIGBUS, unreachable memory";
    case SIGFPE:
        return "SIGFPE, arithmetic";
    case SIGILL:
        return "SIGILL, invalid instruction";
    case SIGABRT:
        return "SIGABRT, aborted by itself";
    default:
        return "a signal";
    }
}

extern "C" void OnFatalSignal(int signal, siginfo_t* info, void*) {
    AddCrash(*crashNotes, NameOf(signal),
             signal == SIGSEGV ? reinterpret_cast<std::uintptr_t>(info->si_addr) : 0);
    ::raise(signal); // now with the default action
}

} // namespace

std::size_t PageBytes() {
    static const auto bytes = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return bytes;
}

char* MapBetweenGuards(std::size_t bytes) {
    // cppcheck-suppress invalidFunctionArg ; no file is mapped, which -1 says
    void* mapped = ::mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) return nullptr;
    auto* memory = static_cast<char*>(mapped);
    if (::mprotect(memory + PageBytes(), bytes - 2 * PageBytes(), PROT_READ | PROT_WRITE) == 0) return memory;
    Unmap(memory, bytes);
    return nullptr;
}

void Unmap(char* memory, std::size_t bytes) { ::munmap(memory, bytes); }

void InstallCrashReport(Notes& notes) {
    crashNotes = &notes;
    static std::array<char, 65536> stack; // a handler's own, for a plug-in that ran out of stack
    stack_t alternate{};
    alternate.ss_sp = stack.data();
    alternate.ss_size = stack.size();
    ::sigaltstack(&alternate, nullptr);
    struct sigaction action {};
    action.sa_sigaction = OnFatalSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        ::sigaction(signal, &action, nullptr);
}

} // namespace vocafade::validate
