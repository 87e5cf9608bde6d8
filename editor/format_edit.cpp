// SPDX-License-Identifier: MIT
#include "editor/format_edit.h"

#include "editor/entry_number.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vocafade {
namespace {

/// Longest text that is read out of a field, and longest that is read while somebody types.
constexpr std::size_t kLongestResult = 64;
constexpr std::size_t kLongestTyped = 318;

constexpr UINT kCharBackspace = 8;
constexpr UINT kCharTab = 9;
constexpr UINT kCharReturn = 13;
constexpr UINT kCharEscape = 27;
constexpr UINT kCharLeft = 37;
constexpr UINT kCharRight = 39;

} // namespace

// clang-format off
BEGIN_MESSAGE_MAP(CFormatEdit, CEdit)
ON_WM_KEYDOWN()
ON_WM_CHAR()
ON_WM_KILLFOCUS()
END_MESSAGE_MAP()
// clang-format on

void CFormatEdit::SetFormat(int decimals, double scale) {
    decimals_ = decimals;
    scale_ = scale;
}

void CFormatEdit::SetInputMinMax(double minimum, double maximum) {
    if (maximum > minimum) inputRange_ = {minimum, maximum};
}

double CFormatEdit::atof_and_limitchk(const char* text) const {
    const double value = ParseEntryNumber(text);
    return inputRange_ ? std::clamp(value, inputRange_->first, inputRange_->second) : value;
}

void CFormatEdit::SetWindowText(const char* integerText) {
    const std::string shown = FormatEntryNumber(ParseEntryNumber(integerText) / scale_, decimals_);
    if (text_ == shown.c_str()) return;
    CEdit::SetWindowText(shown.c_str());
}

CString CFormatEdit::IntegerForm(std::size_t longest) const {
    const CString typed = text_.Left(static_cast<int>(longest));
    CString integer;
    integer.Format("%d", TruncateEntryNumber(atof_and_limitchk(typed) * scale_));
    return integer;
}

int CFormatEdit::GetWindowText(char* buffer, int length) const {
    if (buffer == nullptr || length < 1) return 0;
    const CString integer = IntegerForm(kLongestResult).Left(length - 1);
    std::memcpy(buffer, static_cast<const char*>(integer), static_cast<std::size_t>(integer.GetLength()) + 1);
    return integer.GetLength();
}

void CFormatEdit::GetWindowText(CString& text) const { text = IntegerForm(kLongestResult); }

CString CFormatEdit::GetTextForSpin() const { return IntegerForm(kLongestResult); }

void CFormatEdit::NotifySpinButton() { OnNotifyChar(); }

void CFormatEdit::TellParent(UINT message, LPARAM lParam) {
    if (GetParent() != nullptr)
        GetParent()->SendMessage(message, static_cast<WPARAM>(GetDlgCtrlID()), lParam);
}

void CFormatEdit::ProcRet() { TellParent(kEntryConfirmed); }

void CFormatEdit::ProcEsc() { TellParent(kEntryCancelled); }

void CFormatEdit::OnKeyDown(UINT key, UINT repeats, UINT flags) {
    if (key == kKeyReturn || key == kKeyKeypadEnter) {
        ProcRet();
    } else if (key == kKeyEscape) {
        ProcEsc();
    } else if (key == kKeyTab) {
        TellParent(kEntryTabbed, GetKeyState(VK_SHIFT) < 0 ? -1 : 1);
    } else {
        CEdit::OnKeyDown(key, repeats, flags);
    }
}

void CFormatEdit::OnKillFocus(CWnd* to) {
    CEdit::OnKillFocus(to);
    FixInputText();
}

bool CFormatEdit::Accepts(UINT character, bool isArrow) const {
    if (character >= '0' && character <= '9') return true;
    if (character == kCharLeft || character == kCharRight) return isArrow;
    if (character == '-') return signFlag_;
    return character == '.' || character == kCharBackspace;
}

void CFormatEdit::OnChar(UINT character, UINT repeats, UINT flags) {
    if (character == kCharTab || character == kCharReturn || character == kCharEscape) return;
    const UINT meant = (flags & kCharKeypadDecimal) != 0 ? UINT{'.'} : character;
    if (Accepts(meant, (flags & kCharArrow) != 0)) {
        CEdit::OnChar(character, repeats, flags);
    } else {
        int first = 0;
        int last = 0;
        GetSel(first, last);
        const bool beforePoint = static_cast<std::size_t>(first) <= text_.str().find('.');
        FixInputText();
        const std::size_t point = text_.str().find('.');
        if (meant == ',' && beforePoint && point != std::string::npos)
            SetSel(static_cast<int>(point) + 1, -1);
    }
    OnNotifyChar();
}

void CFormatEdit::OnNotifyChar() {
    acceptedText_ = IntegerForm(kLongestTyped);
    if (GetParent() != nullptr) {
        GetParent()->SendMessage(WM_COMMAND, MAKEWPARAM(static_cast<unsigned>(GetDlgCtrlID()), 0),
                                 reinterpret_cast<LPARAM>(this));
    }
}

void CFormatEdit::FixInputText() {
    const CString typed = text_.Left(static_cast<int>(kLongestTyped));
    const std::string canonical = FormatEntryNumber(atof_and_limitchk(typed), decimals_);
    if (!(text_ == canonical.c_str())) CEdit::SetWindowText(canonical.c_str());
}

void CNormalFloatEdit::SetFloatPoint(int places) {
    places = std::clamp(places, 0, 9);
    SetFormat(places, std::pow(10.0, places));
}

void CFloatEdit::SetLimitInputText(int characters) {
    longest_ = std::max(characters, 0);
    SetLimitText(longest_);
}

void CFloatEdit::FixInputText() {
    CFormatEdit::FixInputText();
    if (longest_ > 0 && text_.GetLength() > longest_) CEdit::SetWindowText(text_.Left(longest_));
}

bool CFloatEdit2::Accepts(UINT character, bool isArrow) const {
    if (!CFloatEdit::Accepts(character, isArrow)) return false;
    int first = 0;
    int last = 0;
    GetSel(first, last);
    if (character == '-') return first == 0;
    if (character != '.') return true;
    const std::size_t point = text_.str().find('.');
    const bool replaced =
        point != std::string::npos && static_cast<int>(point) >= first && static_cast<int>(point) < last;
    return point == std::string::npos || replaced;
}

} // namespace vocafade
