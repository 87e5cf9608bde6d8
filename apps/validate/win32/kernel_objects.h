// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <windows.h>
// It needs the types of the one above.
#include <tlhelp32.h>

namespace vocafade::validate {

/// Handles that this process has of the kernel's, and on Windows (Wine does not know) of windows and drawing. The
/// kernel's are asked for one by one, because Wine does not count them.
inline int CountHandles() {
    constexpr int kGap = 1024; // behind so many numbers that are no handle there are no more
    int count = 0;
    int missing = 0;
    for (std::uintptr_t number = 4; missing < kGap; number += 4) {
        DWORD flags = 0;
        const bool isOne = ::GetHandleInformation(reinterpret_cast<HANDLE>(number), &flags) != 0;
        count += isOne ? 1 : 0;
        missing = isOne ? 0 : missing + 1;
    }
    const HANDLE process = ::GetCurrentProcess();
    return count + static_cast<int>(::GetGuiResources(process, GR_GDIOBJECTS) +
                                    ::GetGuiResources(process, GR_USEROBJECTS));
}

/// Threads of this process.
inline int CountThreads() {
    const HANDLE all = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = ::Thread32First(all, &entry); more != 0; more = ::Thread32Next(all, &entry))
        if (entry.th32OwnerProcessID == ::GetCurrentProcessId()) ++count;
    ::CloseHandle(all);
    return count;
}

} // namespace vocafade::validate
