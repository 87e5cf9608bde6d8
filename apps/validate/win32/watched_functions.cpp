// SPDX-License-Identifier: MIT
// Functions of the system, in whose place a plug-in finds ours.
#include "apps/validate/call_counter.h"
#include "host/shared_object.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>
#include <string_view>
#include <utility>
#include <vector>
#include <windows.h>

namespace vocafade::validate {
namespace {

/// A function that is counted: its name, what stands in its place, and the place of its own address.
struct Watched {
    std::string_view name;
    void* ours;
    void** real;
};

enum class Kind { allocation, free, sleep, fileCall };

/// A function's name as a template's argument.
template <std::size_t Size>
struct Name {
    constexpr Name(const char (&text)[Size]) { std::copy_n(text, Size, letters); }
    char letters[Size];
};

template <Name name, Kind kind, typename Type>
struct Counted;
template <Name name, Kind kind, typename Result, typename... Arguments>
struct Counted<name, kind, Result(Arguments...)> {
    static inline void* real = nullptr;
    static Result Call(Arguments... arguments) {
        if constexpr (kind == Kind::allocation) callCounter.NoteAllocation();
        if constexpr (kind == Kind::free) callCounter.NoteFree();
        if constexpr (kind == Kind::sleep) callCounter.NoteSleep(name.letters);
        if constexpr (kind == Kind::fileCall) callCounter.NoteFileCall(name.letters);
        return reinterpret_cast<Result (*)(Arguments...)>(real)(arguments...);
    }
    static constexpr std::string_view kName{name.letters};
};

/// `tryTake` answers 0 where the lock is not free.
template <Name name, typename Lock, auto* tryTake>
struct CountedLock {
    static inline void* real = nullptr;
    static void Call(Lock* lock) {
        const auto take = [&] { reinterpret_cast<void (*)(Lock*)>(real)(lock); };
        if (!callCounter.watching) return take();
        callCounter.CountLock([&] { return (*tryTake)(lock) != 0; }, take);
    }
    static constexpr std::string_view kName{name.letters};
};

template <typename Function>
Watched Entry() {
    return {Function::kName, reinterpret_cast<void*>(&Function::Call), &Function::real};
}

int TryCriticalSection(CRITICAL_SECTION* lock) { return ::TryEnterCriticalSection(lock); }
int TryExclusive(SRWLOCK* lock) { return ::TryAcquireSRWLockExclusive(lock); }
int TryShared(SRWLOCK* lock) { return ::TryAcquireSRWLockShared(lock); }

// Remarks for the compiler in the declarations, which a type does not carry.
#pragma GCC diagnostic ignored "-Wignored-attributes"
#define VOCAFADE_WATCH(kind, name) Entry<Counted<#name, Kind::kind, decltype(::name)>>()

const std::vector<Watched>& AllWatched() {
    static const std::vector<Watched> all = {
        VOCAFADE_WATCH(allocation, malloc),
        VOCAFADE_WATCH(allocation, calloc),
        VOCAFADE_WATCH(allocation, realloc),
        VOCAFADE_WATCH(allocation, _aligned_malloc),
        VOCAFADE_WATCH(allocation, HeapAlloc),
        VOCAFADE_WATCH(allocation, HeapReAlloc),
        VOCAFADE_WATCH(allocation, VirtualAlloc),
        VOCAFADE_WATCH(free, free),
        VOCAFADE_WATCH(free, _aligned_free),
        VOCAFADE_WATCH(free, HeapFree),
        VOCAFADE_WATCH(free, VirtualFree),
        VOCAFADE_WATCH(sleep, Sleep),
        VOCAFADE_WATCH(sleep, SleepEx),
        VOCAFADE_WATCH(sleep, SwitchToThread),
        VOCAFADE_WATCH(sleep, WaitForSingleObject),
        VOCAFADE_WATCH(sleep, WaitForSingleObjectEx),
        VOCAFADE_WATCH(sleep, WaitForMultipleObjects),
        VOCAFADE_WATCH(sleep, WaitForMultipleObjectsEx),
        VOCAFADE_WATCH(sleep, SleepConditionVariableCS),
        VOCAFADE_WATCH(sleep, SleepConditionVariableSRW),
        VOCAFADE_WATCH(fileCall, CreateFileA),
        VOCAFADE_WATCH(fileCall, CreateFileW),
        VOCAFADE_WATCH(fileCall, ReadFile),
        VOCAFADE_WATCH(fileCall, WriteFile),
        VOCAFADE_WATCH(fileCall, _read),
        VOCAFADE_WATCH(fileCall, _write),
        VOCAFADE_WATCH(fileCall, fopen),
        VOCAFADE_WATCH(fileCall, _wfopen),
        VOCAFADE_WATCH(fileCall, fread),
        VOCAFADE_WATCH(fileCall, fwrite),
        VOCAFADE_WATCH(fileCall, fputc),
        VOCAFADE_WATCH(fileCall, fputs),
        VOCAFADE_WATCH(fileCall, puts),
        Entry<CountedLock<"EnterCriticalSection", CRITICAL_SECTION, &TryCriticalSection>>(),
        Entry<CountedLock<"AcquireSRWLockExclusive", SRWLOCK, &TryExclusive>>(),
        Entry<CountedLock<"AcquireSRWLockShared", SRWLOCK, &TryShared>>(),
    };
    return all;
}

template <typename Record>
Record* At(HMODULE module, std::uint64_t offset) {
    return reinterpret_cast<Record*>(reinterpret_cast<std::byte*>(module) + offset);
}

/// Puts ours in the place of one imported function, if it is counted.
void Replace(std::string_view name, ULONGLONG& address) {
    const auto& all = AllWatched();
    const auto watched =
        std::find_if(all.begin(), all.end(), [&](const Watched& known) { return known.name == name; });
    if (watched == all.end()) return;
    void* const found = reinterpret_cast<void*>(address);
    // Two libraries may have one of that name; the second goes uncounted.
    if (found == watched->ours || (*watched->real != nullptr && *watched->real != found)) return;
    DWORD access = 0;
    if (::VirtualProtect(&address, sizeof address, PAGE_READWRITE, &access) == 0) return;
    *watched->real = found;
    address = reinterpret_cast<ULONGLONG>(watched->ours);
    ::VirtualProtect(&address, sizeof address, access, &access);
}

} // namespace

void AudioWatch::Prepare(const host::SharedObject& plugin) {
    const HMODULE module = ::GetModuleHandleW(plugin.file().c_str());
    if (module == nullptr) return;
    const auto& headers = *At<IMAGE_NT_HEADERS>(module, At<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
    const DWORD imports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    if (imports == 0) return;
    for (auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(module, imports); library->FirstThunk != 0; ++library) {
        if (library->OriginalFirstThunk == 0) continue; // it does not keep the names
        const auto* name = At<IMAGE_THUNK_DATA>(module, library->OriginalFirstThunk);
        auto* address = At<IMAGE_THUNK_DATA>(module, library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++address)
            if (!IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal))
                Replace(At<IMAGE_IMPORT_BY_NAME>(module, name->u1.AddressOfData)->Name, address->u1.Function);
    }
}

std::int64_t LiveBytes() {
    std::vector<HANDLE> heaps(::GetProcessHeaps(0, nullptr) + 8);
    heaps.resize(std::min<std::size_t>(heaps.size(),
                                       ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data())));
    std::int64_t bytes = 0;
    for (const HANDLE heap : heaps) {
        PROCESS_HEAP_ENTRY entry{};
        ::HeapLock(heap);
        while (::HeapWalk(heap, &entry) != 0)
            if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) bytes += entry.cbData;
        ::HeapUnlock(heap);
    }
    return bytes;
}

} // namespace vocafade::validate
