// SPDX-License-Identifier: MIT
#include "apps/validate/guard_pages.h"

#include <csignal>
#include <windows.h>

namespace vocafade::validate {
namespace {

/// Of the stack, kept for the report of a plug-in that ran out of it.
constexpr ULONG kStackReserve = 65536;
constexpr DWORD kCppException = 0xE06D7363;    // of other compilers
constexpr DWORD kGccCppException = 0x20474343; // of ours
constexpr DWORD kAborted = 0xC0000409;         // as other C libraries end then

Notes* crashNotes = nullptr;

const char* NameOf(DWORD exception) {
    switch (exception) {
    case EXCEPTION_ACCESS_VIOLATION:
        return "access violation, invalid memory";
    case EXCEPTION_STACK_OVERFLOW:
        return "stack overflow";
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_FLT_DIVIDE_BY_ZERO:
    case EXCEPTION_FLT_INVALID_OPERATION:
        return "arithmetic";
    case EXCEPTION_ILLEGAL_INSTRUCTION:
        return "invalid instruction";
    case kCppException:
    case kGccCppException:
        return "C++ exception that nobody caught";
    default:
        return "an exception";
    }
}

LONG WINAPI OnFatalException(EXCEPTION_POINTERS* pointers) {
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    const bool isAccess = record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters > 1;
    AddCrash(*crashNotes, NameOf(record.ExceptionCode), isAccess ? record.ExceptionInformation[1] : 0);
    ::TerminateProcess(::GetCurrentProcess(), record.ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

void OnAbort(int) {
    AddCrash(*crashNotes, "aborted by itself", 0);
    ::TerminateProcess(::GetCurrentProcess(), kAborted);
}

} // namespace

std::size_t PageBytes() {
    static const std::size_t bytes = [] {
        SYSTEM_INFO system{};
        ::GetSystemInfo(&system);
        return std::size_t{system.dwPageSize};
    }();
    return bytes;
}

char* MapBetweenGuards(std::size_t bytes) {
    auto* memory = static_cast<char*>(::VirtualAlloc(nullptr, bytes, MEM_RESERVE, PAGE_NOACCESS));
    if (memory == nullptr) return nullptr;
    if (::VirtualAlloc(memory + PageBytes(), bytes - 2 * PageBytes(), MEM_COMMIT, PAGE_READWRITE) != nullptr)
        return memory;
    Unmap(memory, bytes);
    return nullptr;
}

void Unmap(char* memory, std::size_t /*bytes*/) { ::VirtualFree(memory, 0, MEM_RELEASE); }

void InstallCrashReport(Notes& notes) {
    crashNotes = &notes;
    ULONG reserve = kStackReserve;
    ::SetThreadStackGuarantee(&reserve);
    ::SetUnhandledExceptionFilter(&OnFatalException);
    std::signal(SIGABRT, &OnAbort);
}

} // namespace vocafade::validate
