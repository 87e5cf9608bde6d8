// SPDX-License-Identifier: MIT
#include "ui/edit.h"

#include "base/utf8.h"
#include "ui/spin_button.h"
#include "ui/theme.h"
#include "ui/window_session.h"

#include <cmath>

namespace vocafade {
namespace {

constexpr int kMargin = 2; ///< between border and text

} // namespace

CEdit::~CEdit() {
    if (spin_ != nullptr) spin_->SetBuddy(nullptr);
}

bool CEdit::Create(UINT style, const CRect& rect, CWnd* parent, UINT id) {
    return CWnd::Create({CS_DBLCLKS, kCursorIBeam, {}}, "", style, rect, parent, id);
}

int CEdit::Length() const { return static_cast<int>(CountCharacters(text_.str())); }

std::size_t CEdit::ByteOf(int character) const {
    const std::string& text = text_.str();
    std::size_t at = 0;
    for (; at < text.size(); ++at)
        if (StartsCharacter(text[at]) && character-- == 0) break;
    return at;
}

void CEdit::SetSel(int first, int last) {
    const int length = Length();
    if (last < 0 || last > length) last = length;
    anchor_ = std::clamp(first, 0, length);
    caret_ = last;
    ScrollToCaret();
    Invalidate();
}

void CEdit::GetSel(int& first, int& last) const {
    first = std::min(anchor_, caret_);
    last = std::max(anchor_, caret_);
}

void CEdit::SetLimitText(int count) { limit_ = std::max(0, count); }

std::string CEdit::TextWith(const std::string& text) const {
    int first = 0;
    int last = 0;
    GetSel(first, last);
    std::string changed = text_.str();
    const std::size_t from = ByteOf(first);
    return changed.replace(from, ByteOf(last) - from, text);
}

void CEdit::Replace(const std::string& text) {
    const int first = std::min(anchor_, caret_);
    text_ = TextWith(text);
    anchor_ = caret_ = first + static_cast<int>(CountCharacters(text));
    ScrollToCaret();
    Invalidate();
}

void CEdit::TextChanged() {
    text_ = ValidUtf8(text_.str());
    const int length = Length();
    anchor_ = std::min(anchor_, length);
    caret_ = std::min(caret_, length);
    ScrollToCaret();
    Invalidate();
}

// --- Where things are

std::vector<int> CEdit::Stops() const {
    std::vector<int> whole;
    for (const double stop : FontInUse().native(DrawingScale()).CaretStops(text_.str()))
        whole.push_back(static_cast<int>(std::lround(stop)));
    return whole;
}

CRect CEdit::Inside() const {
    CRect inside({0, 0}, bounds().Size());
    inside.DeflateRect(1 + kMargin, 1);
    return inside;
}

int CEdit::TextLeft(const std::vector<int>& stops) const {
    const CRect inside = Inside();
    const int free = inside.Width() - stops.back() - 1; // the caret takes the last pixel
    if (free > 0 && (GetStyle() & ES_RIGHT) != 0) return inside.left + free;
    return inside.left - scroll_;
}

void CEdit::ScrollToCaret() {
    if (!IsWindow()) return;
    const std::vector<int> stops = Stops();
    const int room = Inside().Width() - 1;
    const int at = stops[static_cast<std::size_t>(std::clamp(caret_, 0, static_cast<int>(stops.size()) - 1))];
    if (at - scroll_ > room) scroll_ = at - room;
    if (at - scroll_ < 0) scroll_ = at;
    scroll_ = std::clamp(scroll_, 0, std::max(0, stops.back() - room));
    TellInputMethod();
}

void CEdit::TellInputMethod() {
    CPoint offset;
    const TopLevel* top = WantsInputMethod() ? FindTopLevel(&offset) : nullptr;
    if (top == nullptr || top->native() == nullptr) return;
    if (!focused()) {
        top->native()->SetTextInput(nullptr);
        return;
    }
    const std::vector<int> stops = Stops();
    const int at = stops[static_cast<std::size_t>(std::clamp(caret_, 0, static_cast<int>(stops.size()) - 1))];
    CRect caret({TextLeft(stops) + at, 0}, {1, bounds().Height()});
    caret.OffsetRect(offset);
    top->native()->SetTextInput(&caret);
}

int CEdit::CharacterAt(int x) const {
    const std::vector<int> stops = Stops();
    const int at = x - TextLeft(stops);
    int nearest = 0;
    for (int i = 1; i < static_cast<int>(stops.size()); ++i)
        if (std::abs(stops[static_cast<std::size_t>(i)] - at) <
            std::abs(stops[static_cast<std::size_t>(nearest)] - at))
            nearest = i;
    return nearest;
}

// --- Keys

void CEdit::MoveCaret(int to, bool select) {
    caret_ = std::clamp(to, 0, Length());
    if (!select) anchor_ = caret_;
    ScrollToCaret();
    Invalidate();
}

bool CEdit::IsBlank(int character) const { return text_.str()[ByteOf(character)] == ' '; }

int CEdit::NextWord(int direction) const {
    const int length = Length();
    int at = caret_;
    if (direction < 0) {
        while (at > 0 && IsBlank(at - 1))
            --at;
        while (at > 0 && !IsBlank(at - 1))
            --at;
    } else {
        while (at < length && !IsBlank(at))
            ++at;
        while (at < length && IsBlank(at))
            ++at;
    }
    return at;
}

void CEdit::EraseOr(int direction) {
    if (anchor_ == caret_) anchor_ = std::clamp(caret_ + direction, 0, Length());
    if (anchor_ != caret_) Replace("");
}

void CEdit::Copy() {
    int first = 0;
    int last = 0;
    GetSel(first, last);
    if (first == last || session() == nullptr || session()->display() == nullptr) return;
    session()->display()->OfferClipboard(text_.str().substr(ByteOf(first), ByteOf(last) - ByteOf(first)));
}

void CEdit::Cut() {
    Copy();
    EraseOr(0);
}

void CEdit::Paste() {
    const TopLevel* top = FindTopLevel();
    if (top != nullptr && top->native() != nullptr && session()->display() != nullptr)
        session()->display()->RequestClipboard(*top->native());
}

bool CEdit::Shortcut(UINT key) {
    switch (key) {
    case kKeyCharacter + 'A':
        SetSel(0, -1);
        return true;
    case kKeyCharacter + 'C':
        Copy();
        return true;
    case kKeyCharacter + 'X':
        Cut();
        return true;
    case kKeyCharacter + 'V':
        Paste();
        return true;
    case kKeyLeft:
        MoveCaret(NextWord(-1), GetKeyState(VK_SHIFT) < 0);
        return true;
    case kKeyRight:
        MoveCaret(NextWord(1), GetKeyState(VK_SHIFT) < 0);
        return true;
    default:
        return false;
    }
}

void CEdit::KeyDown(UINT key) {
    const bool select = GetKeyState(VK_SHIFT) < 0;
    if (GetKeyState(VK_CONTROL) < 0 && Shortcut(key)) return;
    switch (key) {
    case kKeyHome:
        MoveCaret(0, select);
        break;
    case kKeyEnd:
        MoveCaret(Length(), select);
        break;
    case kKeyDelete:
        EraseOr(1);
        break;
    default:
        if (spin_ != nullptr) spin_->KeyDown(key);
        break;
    }
}

void CEdit::Char(UINT character, UINT flags) {
    if ((flags & kCharArrow) != 0) {
        if (GetKeyState(VK_CONTROL) < 0) return; // went a word already
        const bool select = GetKeyState(VK_SHIFT) < 0;
        int first = 0;
        int last = 0;
        GetSel(first, last);
        const bool left = character == 37;
        if (first != last && !select) {
            MoveCaret(left ? first : last, false);
        } else {
            MoveCaret(caret_ + (left ? -1 : 1), select);
        }
        return;
    }
    if (character == 8) {
        EraseOr(-1);
        return;
    }
    if (character < 0x20 || character == 0x7F) return;
    const std::string typed = TypedText(ToUtf8(character));
    int first = 0;
    int last = 0;
    GetSel(first, last);
    if (typed.empty() || (limit_ > 0 && Length() - (last - first) >= limit_)) return;
    Replace(typed);
}

// --- Mouse and messages

void CEdit::Press(CPoint point) {
    SetFocus();
    SetCapture();
    selecting_ = true;
    MoveCaret(CharacterAt(point.x), GetKeyState(VK_SHIFT) < 0);
}

void CEdit::SelectWord(CPoint point) {
    const int length = Length();
    int first = std::min(CharacterAt(point.x), std::max(0, length - 1));
    int last = first;
    while (first > 0 && !IsBlank(first - 1))
        --first;
    while (last < length && !IsBlank(last))
        ++last;
    SetSel(first, last);
}

LRESULT CEdit::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const CPoint point = CPoint::FromMessage(lParam);
    switch (message) {
    case WM_PAINT:
        Paint();
        return 0;
    case WM_KEYDOWN:
        KeyDown(static_cast<UINT>(wParam));
        return 0;
    case WM_CHAR:
        Char(static_cast<UINT>(wParam), HIWORD(static_cast<std::uintptr_t>(lParam)));
        return 0;
    case WM_LBUTTONDOWN:
        Press(point);
        return 0;
    case WM_LBUTTONDBLCLK:
        SetFocus();
        SelectWord(point);
        return 0;
    case WM_MOUSEMOVE:
        if (selecting_) MoveCaret(CharacterAt(point.x), true);
        return 0;
    case WM_LBUTTONUP:
        if (selecting_) ReleaseCapture();
        selecting_ = false;
        return 0;
    case WM_CAPTURECHANGED:
        selecting_ = false;
        return 0;
    case WM_MOUSEWHEEL:
        if (spin_ == nullptr) return Control::DefWindowProc(message, wParam, lParam);
        spin_->Turn(static_cast<std::int16_t>(HIWORD(wParam)) / WHEEL_DELTA);
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS: {
        const LRESULT answer = Control::DefWindowProc(message, wParam, lParam);
        TellInputMethod();
        return answer;
    }
    case WM_KEYUP:
        if (spin_ != nullptr) spin_->KeyUp();
        return 0;
    default:
        return Control::DefWindowProc(message, wParam, lParam);
    }
}

void CEdit::Paint() {
    CPaintDC dc(this);
    dc.SelectObject(&FontInUse());
    theme::DrawField(dc, dc.clientRect(), theme::kField, focused());
    const CRect inside = Inside();
    const std::vector<int> stops = Stops();
    const int left = TextLeft(stops);
    const int top = theme::CenteredTop(dc, inside);
    dc.IntersectClipRect(inside);
    dc.SetTextColor(theme::kText);
    dc.TextOut(left, top, text_);
    int first = 0;
    int last = 0;
    GetSel(first, last);
    const auto stop = [&](int i) {
        return left + stops[static_cast<std::size_t>(std::min<int>(i, static_cast<int>(stops.size()) - 1))];
    };
    const int height = std::min(inside.Height(), dc.GetTextExtent("").cy + 2);
    const CRect line({inside.left, inside.top + (inside.Height() - height) / 2}, {inside.Width(), height});
    if (first != last && focused()) {
        const CRect chosen(stop(first), line.top, stop(last), line.bottom);
        dc.FillSolidRect(chosen, theme::kMarked);
        dc.SetTextColor(theme::kMarkedText);
        dc.ExtTextOut(left, top, ETO_CLIPPED, &chosen, text_);
    } else if (focused()) {
        dc.FillSolidRect({stop(caret_), line.top, stop(caret_) + 1, line.bottom}, theme::kText);
    }
}

} // namespace vocafade
