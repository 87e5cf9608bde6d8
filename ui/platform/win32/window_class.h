// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace vocafade::platform::win32 {

/// This library, or the program that it is linked into.
HINSTANCE ThisModule();

/// The class of all windows of this library, as `CreateWindowExW` takes it; null when it cannot be registered. It is
/// made for the first window and goes when the library is unloaded. Its name is no other module's, since two editions of
/// the plug-in can be in one process.
const wchar_t* OurClass();

/// Whether a window of this process is one of ours.
bool IsOurWindow(HWND window);

} // namespace vocafade::platform::win32
