// SPDX-License-Identifier: MIT
#include "ui/control.h"

#include "ui/theme.h"

namespace vocafade {

LRESULT Control::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_SETFOCUS && message != WM_KILLFOCUS)
        return CWnd::DefWindowProc(message, wParam, lParam);
    focused_ = message == WM_SETFOCUS;
    Invalidate();
    return 0;
}

CFont& Control::FontInUse() const {
    return GetFont() != nullptr ? *GetFont() : theme::UseControlFont(ownFont_);
}

} // namespace vocafade
