// SPDX-License-Identifier: MIT
#include "apps/validate/shown_editor.h"

#include <windows.h>

namespace vocafade::validate {

void ShownEditor::HandleEvents() {
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

void ShownEditor::TurnWheel(double x, double y, bool up) {
    const std::vector<std::uint32_t> children = parent_->Children();
    if (children.empty()) return;
    const HWND window = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(children.front()));
    POINT place{static_cast<LONG>(x * width_), static_cast<LONG>(y * height_)};
    ::PostMessageW(window, WM_MOUSEMOVE, 0, MAKELPARAM(place.x, place.y));
    ::ClientToScreen(window, &place);
    ::PostMessageW(window, WM_MOUSEWHEEL, MAKEWPARAM(0, up ? WHEEL_DELTA : -WHEEL_DELTA),
                   MAKELPARAM(place.x, place.y));
}

} // namespace vocafade::validate
