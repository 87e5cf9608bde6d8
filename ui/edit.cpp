// SPDX-License-Identifier: MIT
#include "ui/edit.h"

#include "ui/desktop.h"
#include "ui/spin_button.h"
#include "ui/theme.h"

namespace vocafade {
namespace {

constexpr int kMargin = 2; ///< between border and text

bool StartsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

std::string Utf8Of(UINT c) {
    std::string text;
    const auto put = [&text](UINT byte) { text += static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
    return text;
}

} // namespace

CEdit::~CEdit() {
    if (spin_ != nullptr) spin_->SetBuddy(nullptr);
}

bool CEdit::Create(UINT style, const CRect& rect, CWnd* parent, UINT id) {
    return CWnd::Create({CS_DBLCLKS, kCursorIBeam, {}}, "", style, rect, parent, id);
}

int CEdit::Length() const {
    const std::string& text = text_.str();
    return static_cast<int>(std::count_if(text.begin(), text.end(), StartsCharacter));
}

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

void CEdit::SetReadOnly(bool readOnly) {
    if (readOnly) {
        ModifyStyle(0, ES_READONLY);
    } else {
        ModifyStyle(ES_READONLY, 0);
    }
}

void CEdit::Replace(const std::string& text) {
    int first = 0;
    int last = 0;
    GetSel(first, last);
    std::string changed = text_.str();
    const std::size_t from = ByteOf(first);
    changed.replace(from, ByteOf(last) - from, text);
    const auto added = static_cast<int>(std::count_if(text.begin(), text.end(), StartsCharacter));
    text_ = changed;
    anchor_ = caret_ = first + added;
    ScrollToCaret();
    Invalidate();
    NotifyParent(EN_CHANGE);
}

void CEdit::ReplaceSel(const char* text) { Replace(platform::ValidUtf8(text != nullptr ? text : "")); }

void CEdit::TextChanged() {
    text_ = platform::ValidUtf8(text_.str());
    const int length = Length();
    anchor_ = std::min(anchor_, length);
    caret_ = std::min(caret_, length);
    ScrollToCaret();
    Invalidate();
}

// --- Where things are
// ------------------------------------------------------------------------------------------------

CFont& CEdit::FontInUse() const {
    return GetFont() != nullptr ? *GetFont() : theme::UseControlFont(defaultFont_);
}

std::vector<int> CEdit::Stops() const { return FontInUse().native().CaretStops(text_.str()); }

CRect CEdit::Inside() const {
    CRect inside({0, 0}, bounds().Size());
    inside.DeflateRect(1 + kMargin, 1);
    return inside;
}

int CEdit::TextLeft(const std::vector<int>& stops) const {
    const CRect inside = Inside();
    const int free = inside.Width() - stops.back() - 1; // the caret takes the last pixel
    if (free > 0 && (GetStyle() & ES_RIGHT) != 0) return inside.left + free;
    if (free > 0 && (GetStyle() & ES_CENTER) != 0) return inside.left + free / 2;
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
// ------------------------------------------------------------------------------------------------------------

void CEdit::MoveCaret(int to, bool select) {
    caret_ = std::clamp(to, 0, Length());
    if (!select) anchor_ = caret_;
    ScrollToCaret();
    Invalidate();
}

int CEdit::NextWord(int direction) const {
    const std::string& text = text_.str();
    const int length = Length();
    const auto blank = [&](int i) { return text[ByteOf(i)] == ' '; };
    int at = caret_;
    if (direction < 0) {
        while (at > 0 && blank(at - 1))
            --at;
        while (at > 0 && !blank(at - 1))
            --at;
    } else {
        while (at < length && !blank(at))
            ++at;
        while (at < length && blank(at))
            ++at;
    }
    return at;
}

/// Takes the selection away, or else the character before (-1) or behind (1) the caret.
void CEdit::EraseOr(int direction) {
    if ((GetStyle() & ES_READONLY) != 0) return;
    if (anchor_ == caret_) anchor_ = std::clamp(caret_ + direction, 0, Length());
    if (anchor_ != caret_) Replace("");
}

void CEdit::CopySelection() {
    int first = 0;
    int last = 0;
    GetSel(first, last);
    if (first == last || desktop() == nullptr || desktop()->display() == nullptr) return;
    desktop()->display()->OfferClipboard(text_.str().substr(ByteOf(first), ByteOf(last) - ByteOf(first)));
}

bool CEdit::Shortcut(UINT key) {
    switch (key) {
    case kKeyCharacter + 'A':
        SetSel(0, -1);
        return true;
    case kKeyCharacter + 'C':
        SendMessage(WM_COPY);
        return true;
    case kKeyCharacter + 'X':
        SendMessage(WM_CUT);
        return true;
    case kKeyCharacter + 'V':
        SendMessage(WM_PASTE);
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
    case kKeyUp:
    case kKeyDown:
        if (spin_ != nullptr && (spin_->GetStyle() & UDS_ARROWKEYS) != 0) spin_->Step(key == kKeyUp ? 1 : -1);
        break;
    default:
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
    if (character < 0x20 || character == 0x7F || (GetStyle() & ES_READONLY) != 0) return;
    const std::string typed = TypedText(Utf8Of(character));
    int first = 0;
    int last = 0;
    GetSel(first, last);
    if (typed.empty() || (limit_ > 0 && Length() - (last - first) >= limit_)) return;
    Replace(typed);
}

// --- Mouse and messages
// ----------------------------------------------------------------------------------------------

void CEdit::Press(CPoint point) {
    SetFocus();
    SetCapture();
    selecting_ = true;
    MoveCaret(CharacterAt(point.x), GetKeyState(VK_SHIFT) < 0);
}

void CEdit::SelectWord(CPoint point) {
    const std::string& text = text_.str();
    const int length = Length();
    const auto blank = [&](int i) { return text[ByteOf(i)] == ' '; };
    int first = std::min(CharacterAt(point.x), std::max(0, length - 1));
    int last = first;
    while (first > 0 && !blank(first - 1))
        --first;
    while (last < length && !blank(last))
        ++last;
    SetSel(first, last);
}

LRESULT CEdit::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const CPoint point = CPoint::FromMessage(lParam);
    switch (message) {
    case WM_PAINT:
        Paint();
        return 0;
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS;
    case WM_SETFOCUS:
        focused_ = true;
        Invalidate();
        NotifyParent(EN_SETFOCUS);
        return 0;
    case WM_KILLFOCUS:
        focused_ = false;
        Invalidate();
        NotifyParent(EN_KILLFOCUS);
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
        if (spin_ != nullptr) spin_->Step(static_cast<std::int16_t>(HIWORD(wParam)) > 0 ? 1 : -1);
        return 0;
    case WM_COPY:
        CopySelection();
        return 0;
    case WM_CUT:
        CopySelection();
        if (anchor_ != caret_) EraseOr(0);
        return 0;
    case WM_CLEAR:
        if (anchor_ != caret_) EraseOr(0);
        return 0;
    case WM_PASTE:
        if ((GetStyle() & ES_READONLY) == 0 && desktop() != nullptr && desktop()->display() != nullptr)
            if (platform::Window* native = Desktop::NativeOf(*Desktop::RootOf(this)))
                desktop()->display()->RequestClipboard(*native);
        return 0;
    default:
        return CWnd::DefWindowProc(message, wParam, lParam);
    }
}

void CEdit::Paint() {
    CPaintDC dc(this);
    dc.SelectObject(&FontInUse());
    const bool enabled = IsWindowEnabled();
    theme::DrawField(dc, dc.clientRect(), GetSysColor(enabled ? COLOR_WINDOW : COLOR_3DFACE), focused_);
    const CRect inside = Inside();
    const std::vector<int> stops = Stops();
    const int left = TextLeft(stops);
    const int top = theme::CenteredTop(dc, inside);
    dc.IntersectClipRect(inside);
    dc.SetTextColor(GetSysColor(enabled ? COLOR_WINDOWTEXT : COLOR_GRAYTEXT));
    dc.TextOut(left, top, text_);
    int first = 0;
    int last = 0;
    GetSel(first, last);
    const auto stop = [&](int i) {
        return left + stops[static_cast<std::size_t>(std::min<int>(i, static_cast<int>(stops.size()) - 1))];
    };
    const int height = std::min(inside.Height(), dc.GetTextExtent("").cy + 2);
    const CRect line({inside.left, inside.top + (inside.Height() - height) / 2}, {inside.Width(), height});
    if (first != last && focused_) {
        const CRect chosen(stop(first), line.top, stop(last), line.bottom);
        dc.FillSolidRect(chosen, GetSysColor(COLOR_HIGHLIGHT));
        dc.SetTextColor(GetSysColor(COLOR_HIGHLIGHTTEXT));
        dc.ExtTextOut(left, top, ETO_CLIPPED, &chosen, text_);
    } else if (focused_) {
        dc.FillSolidRect({stop(caret_), line.top, stop(caret_) + 1, line.bottom},
                         GetSysColor(COLOR_WINDOWTEXT));
    }
}

} // namespace vocafade
