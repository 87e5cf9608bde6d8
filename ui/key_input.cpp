// SPDX-License-Identifier: MIT
#include "ui/key_input.h"

#include "base/utf8.h"
#include "ui/top_level.h"
#include "ui/wnd.h"

namespace vocafade {
namespace {

/// What a key that types nothing sends as WM_CHAR; 0 for nothing.
UINT CharacterOf(UINT key) {
    switch (key) {
    case kKeyBackspace:
        return 8;
    case kKeyTab:
        return 9;
    case kKeyReturn:
    case kKeyKeypadEnter:
        return 13;
    case kKeyEscape:
        return 27;
    case kKeyLeft:
        return 37;
    case kKeyRight:
        return 39;
    default:
        return 0;
    }
}

/// The second argument of a key message: one repetition, and the flags of `OnChar`.
LPARAM WithFlags(UINT flags) { return 1 | (static_cast<LPARAM>(flags) << 16); }

void Send(TopLevel& top, UINT message, UINT key, UINT flags = 0) {
    CWnd* target = top.focus() != nullptr ? top.focus() : &top.window();
    MSG msg{target, message, key, WithFlags(flags)};
    const std::weak_ptr<bool> life = target->LifeToken();
    for (CWnd* at = target; at != nullptr; at = at->GetParent()) {
        if (at->PreTranslateMessage(&msg)) return;
        if (life.expired() || !target->IsWindow()) return;
    }
    target->SendMessage(message, key, msg.lParam);
}

} // namespace

void KeyInput::NoteModifiers(const platform::Event& event) {
    shift_ = event.shift;
    control_ = event.control;
    alt_ = event.alt;
    leftButton_ = event.leftButton;
}

short KeyInput::State(int key) const {
    const bool down = key == VK_SHIFT     ? shift_
                      : key == VK_CONTROL ? control_
                      : key == VK_MENU    ? alt_
                                          : key == VK_LBUTTON && leftButton_;
    return down ? static_cast<short>(-32768) : short{0};
}

void KeyInput::Handle(TopLevel& top, const platform::Event& event) {
    if (event.type == platform::EventType::keyReleased) {
        Send(top, WM_KEYUP, event.key);
        return;
    }
    // The character goes where the key went, not to what the key has opened.
    const std::shared_ptr<TopLevel> keep = top.shared_from_this();
    CWnd* focus = top.focus();
    const auto same = [&] { return !top.isClosed() && top.focus() == focus; };
    Send(top, WM_KEYDOWN, event.key);
    if (event.keyTyped) {
        const UINT flags = event.key == kKeyKeypadDecimal ? kCharKeypadDecimal : 0;
        for (std::string_view text = event.text; !text.empty() && same();)
            Send(top, WM_CHAR, TakeCharacter(text), flags);
    } else if (const UINT character = CharacterOf(event.key); character != 0 && same()) {
        const bool arrow = event.key == kKeyLeft || event.key == kKeyRight;
        Send(top, WM_CHAR, character, arrow ? kCharArrow : 0);
    }
}

void KeyInput::Paste(TopLevel& top, const std::string& text) {
    CWnd* focus = top.focus();
    if (focus == nullptr) return;
    const std::weak_ptr<bool> life = focus->LifeToken();
    const std::string valid = ValidUtf8(text);
    for (std::string_view rest = valid; !rest.empty();) {
        const UINT character = TakeCharacter(rest);
        if (character == '\r' || character == '\n') return; // one line
        if (character >= 0x20) focus->SendMessage(WM_CHAR, character, WithFlags(0));
        if (life.expired()) return;
    }
}

} // namespace vocafade
