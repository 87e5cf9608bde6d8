// SPDX-License-Identifier: MIT
#pragma once

#include "ui/platform/platform.h"
#include "ui/winuser.h"

namespace vocafade {

class TopLevel;

/// How keys and pasted text become messages to the window that has the focus, and which modifiers are held.
class KeyInput {
  public:
    /// A key pressed or released.
    static void Handle(TopLevel& top, const platform::Event& event);
    /// Text from the clipboard: each character of its first line as if it were typed.
    static void Paste(TopLevel& top, const std::string& text);
    /// Modifiers and the left button as of that event.
    void NoteModifiers(const platform::Event& event);
    /// Negative while `key` (VK_SHIFT and the rest) is held.
    short State(int key) const;

  private:
    bool shift_ = false;
    bool control_ = false;
    bool alt_ = false;
    bool leftButton_ = false;
};

} // namespace vocafade
