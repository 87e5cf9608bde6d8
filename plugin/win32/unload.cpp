// SPDX-License-Identifier: MIT
// What the thread library that is linked in takes for itself and does not give back: a number for each thread's own
// storage, of which a process has 1088. It asks for it through the pointer below, which the system's import library would
// define otherwise.
#include <windows.h>

namespace {

DWORD taken[8];
unsigned takenCount = 0;

/// Called while the thread library is being set up: nothing here may need it.
DWORD WINAPI TakeNumber() {
    using Function = DWORD(WINAPI*)();
    const auto take = reinterpret_cast<Function>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "TlsAlloc")));
    const DWORD number = take();
    if (takenCount < 8) taken[takenCount++] = number;
    return number;
}

/// The last of all that runs when the host lets go of the library.
__attribute__((destructor(101))) void GiveBackNumbers() {
    while (takenCount > 0)
        ::TlsFree(taken[--takenCount]);
}

} // namespace

extern "C" DWORD(WINAPI* const __imp_TlsAlloc)() = &TakeNumber; // NOLINT(bugprone-reserved-identifier)
