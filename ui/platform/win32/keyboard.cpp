// SPDX-License-Identifier: MIT
#include "ui/platform/win32/keyboard.h"

#include "ui/key_codes.h"
#include "ui/platform/win32/window_class.h"

namespace vocafade::platform::win32 {
namespace {

/// The popup that takes this thread's input. A plain number: nothing has to be destroyed for it when the library is
/// unloaded while the thread goes on.
thread_local HWND popupOfThread = nullptr;

bool IsDown(int key) { return ::GetKeyState(key) < 0; }

/// Messages that were translated already, by us, come round once more as characters.
bool IsKey(UINT message) {
    return message == WM_KEYDOWN || message == WM_KEYUP || message == WM_CHAR || message == WM_DEADCHAR;
}

LRESULT CALLBACK TakeKeys(int code, WPARAM removed, LPARAM parameter) {
    MSG& message = *reinterpret_cast<MSG*>(parameter);
    if (code == HC_ACTION && removed == PM_REMOVE) {
        const bool key = IsKey(message.message);
        const bool toPopup = popupOfThread != nullptr && (key || message.message == WM_MOUSEWHEEL);
        if (toPopup) message.hwnd = popupOfThread;
        if (toPopup || (key && IsOurWindow(message.hwnd) && ::GetFocus() == message.hwnd)) {
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
            message.message = WM_NULL;
            message.wParam = 0;
            message.lParam = 0;
        }
    }
    return ::CallNextHookEx(nullptr, code, removed, parameter);
}

} // namespace

KeyHook::KeyHook(HWND window, bool popup)
    : hook_(::SetWindowsHookExW(WH_GETMESSAGE, &TakeKeys, nullptr, ::GetCurrentThreadId())),
      popup_(popup ? window : nullptr) {
    if (popup) popupOfThread = window;
}

KeyHook::~KeyHook() {
    if (popup_ != nullptr && popupOfThread == popup_) popupOfThread = nullptr;
    if (hook_ != nullptr) ::UnhookWindowsHookEx(hook_);
}

unsigned KeyCode(WPARAM key, LPARAM flags) {
    const bool extended = (HIWORD(flags) & KF_EXTENDED) != 0;
    switch (key) {
    case VK_RETURN:
        return extended ? kKeyKeypadEnter : kKeyReturn;
    case VK_ESCAPE:
        return kKeyEscape;
    case VK_TAB:
        return kKeyTab;
    case VK_BACK:
        return kKeyBackspace;
    case VK_DELETE:
        return kKeyDelete;
    case VK_HOME:
        return kKeyHome;
    case VK_END:
        return kKeyEnd;
    case VK_PRIOR:
        return kKeyPageUp;
    case VK_NEXT:
        return kKeyPageDown;
    case VK_LEFT:
        return kKeyLeft;
    case VK_RIGHT:
        return kKeyRight;
    case VK_UP:
        return kKeyUp;
    case VK_DOWN:
        return kKeyDown;
    case VK_DECIMAL:
        return kKeyKeypadDecimal;
    default:
        break;
    }
    if ((key >= 'A' && key <= 'Z') || (key >= '0' && key <= '9'))
        return kKeyCharacter + static_cast<unsigned>(key);
    // The sign that the layout has on the key; its highest bit marks dead keys.
    const UINT sign = ::MapVirtualKeyW(static_cast<UINT>(key), MAPVK_VK_TO_CHAR) & 0x7FFF;
    return sign >= 0x20 && sign <= 0x7E ? kKeyCharacter + sign : kKeyUnknown;
}

Event EventNow(EventType type, Window* window) {
    Event event;
    event.type = type;
    event.window = window;
    event.time = static_cast<std::uint32_t>(::GetMessageTime());
    event.shift = IsDown(VK_SHIFT);
    event.control = IsDown(VK_CONTROL);
    event.alt = IsDown(VK_MENU);
    event.leftButton = IsDown(VK_LBUTTON);
    return event;
}

} // namespace vocafade::platform::win32
