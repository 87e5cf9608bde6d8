// SPDX-License-Identifier: MIT
#include "apps/validate/process_state.h"

#include "apps/validate/audio_watch.h"
#include "apps/validate/win32/kernel_objects.h"

#include <algorithm>
#include <iterator>
#include <vector>
#include <windows.h>
// Behind it. The newer version of what follows is a part of the kernel's library.
#define PSAPI_VERSION 2
#include <psapi.h>

namespace vocafade::validate {
namespace {

/// Parts of the address space that are taken.
int Mappings() {
    MEMORY_BASIC_INFORMATION part{};
    int count = 0;
    for (const char* at = nullptr; ::VirtualQuery(at, &part, sizeof part) != 0; at += part.RegionSize)
        if (part.State != MEM_FREE) ++count;
    return count;
}

/// The system does not tell, so all free ones are taken and given back; fewer are free the more are taken.
int TakenThreadKeys() {
    std::vector<DWORD> keys;
    for (DWORD key = ::TlsAlloc(); key != TLS_OUT_OF_INDEXES; key = ::TlsAlloc())
        keys.push_back(key);
    for (const DWORD key : keys)
        ::TlsFree(key);
    std::vector<DWORD> withCallback;
    for (DWORD key = ::FlsAlloc(nullptr); key != FLS_OUT_OF_INDEXES; key = ::FlsAlloc(nullptr))
        withCallback.push_back(key);
    for (const DWORD key : withCallback)
        ::FlsFree(key);
    constexpr int kMost = 8192; // above what there is of both
    return kMost - static_cast<int>(keys.size() + withCallback.size());
}

} // namespace

const char* const kHandles = "handles, windows and drawing objects";

const int kHandlesOfSystem = 8;
const Allowance kLostByLoading{2048, 4};

ProcessState LookAtProcess() {
    ProcessState state;
    state.heapBytes = LiveBytes();
    PROCESS_MEMORY_COUNTERS memory{};
    ::GetProcessMemoryInfo(::GetCurrentProcess(), &memory, sizeof memory);
    state.residentBytes = static_cast<std::int64_t>(memory.WorkingSetSize);
    state.threads = CountThreads();
    state.handles = CountHandles();
    state.mappings = Mappings();
    state.threadKeys = TakenThreadKeys();
    return state;
}

bool IsMapped(const std::filesystem::path& file) { return ::GetModuleHandleW(file.c_str()) != nullptr; }

void KeepSystemLibraries() {
    wchar_t folder[MAX_PATH] = L"";
    const UINT length = ::GetSystemDirectoryW(folder, MAX_PATH);
    const HANDLE all = ::CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
    MODULEENTRY32W entry{};
    entry.dwSize = sizeof entry;
    HMODULE kept = nullptr;
    for (BOOL more = ::Module32FirstW(all, &entry); more != 0; more = ::Module32NextW(all, &entry))
        if (::_wcsnicmp(entry.szExePath, folder, length) == 0)
            ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN, entry.szModule, &kept);
    ::CloseHandle(all);
}

bool HasGraphicsDriver() {
    constexpr const wchar_t* kDrivers[] = {L"opengl32.dll", L"vulkan-1.dll", L"d3d9.dll", L"d3d11.dll",
                                           L"d2d1.dll"};
    return std::any_of(std::begin(kDrivers), std::end(kDrivers),
                       [](const wchar_t* driver) { return ::GetModuleHandleW(driver) != nullptr; });
}

} // namespace vocafade::validate
