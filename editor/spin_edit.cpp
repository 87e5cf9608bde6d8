// SPDX-License-Identifier: MIT
#include "editor/spin_edit.h"

#include <algorithm>

namespace vocafade {

bool CKVBSpinEdit::MakeWindow(CWnd* parent, const CRect& rect, UINT id, CFont* font, bool withSign) {
    if (!Create(WS_CHILD | WS_VISIBLE | WS_TABSTOP | ES_RIGHT, rect, parent, id)) return false;
    SetSingnFlag(withSign);
    SetFont(font);
    return true;
}

void CKVBSpinEdit::SetRange(int minimum, int maximum) {
    minimum_ = minimum;
    maximum_ = std::max(minimum, maximum);
    SetInputMinMax(minimum_, maximum_);
}

void CKVBSpinEdit::SetValue(int value) {
    CString text;
    text.Format("%d", std::clamp(value, minimum_, maximum_));
    SetWindowText(text);
}

void CKVBSpinEdit::SetNewValue(int value, int minimum, int maximum) {
    SetRange(minimum, maximum);
    SetValue(value);
}

bool CKVBSpinEdit::Accepts(UINT character, bool isArrow) const {
    return character != '.' && CFormatEdit::Accepts(character, isArrow);
}

} // namespace vocafade
