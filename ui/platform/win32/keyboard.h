// SPDX-License-Identifier: MIT
#pragma once

#include "ui/platform/platform.h"

#include <windows.h>

namespace vocafade::platform::win32 {

/// The layer's code of a key, by the arguments of its message.
unsigned KeyCode(WPARAM key, LPARAM flags);

/// An event with the modifiers and the left button as they were when the message came that is being handled.
Event EventNow(EventType type, Window* window);

/// While it lives, this thread's keyboard messages reach one of its windows before the host's message loop sees them:
/// hosts look there for their shortcuts, and would play or stop for a blank in a name.
class KeyHook {
  public:
    /// `window` gets its own keyboard messages; a popup gets those of all windows of the thread, and the wheel.
    KeyHook(HWND window, bool popup);
    ~KeyHook();
    KeyHook(const KeyHook&) = delete;
    KeyHook& operator=(const KeyHook&) = delete;

  private:
    HHOOK hook_;
    HWND popup_;
};

} // namespace vocafade::platform::win32
