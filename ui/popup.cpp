// SPDX-License-Identifier: MIT
#include "ui/popup.h"

#include "ui/theme.h"
#include "ui/window_session.h"

#include <numeric>

namespace vocafade {
namespace {

constexpr int kBorder = 1;
constexpr int kTickWidth = 22;
constexpr int kItemPadding = 5; ///< above and below a line
constexpr int kMostColumns = 8;
constexpr int kScrollStep = 3; ///< items a notch of the wheel

} // namespace

int NextWithLetter(WPARAM wParam, LPARAM lParam, int from, int count,
                   const std::function<const CString*(int index)>& textOf) {
    if (wParam <= 0x20 || (HIWORD(static_cast<std::uintptr_t>(lParam)) & kCharArrow) != 0) return -1;
    const auto lower = [](WPARAM c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; };
    for (int i = 1; i <= count; ++i) {
        const int at = (std::max(0, from) + i) % count;
        const CString* text = textOf(at);
        if (text != nullptr && lower(static_cast<unsigned char>(text->GetAt(0))) == lower(wParam)) return at;
    }
    return -1;
}

PopupWnd::PopupWnd(CWnd& owner, std::vector<CMenu::Item> items, int current, Done done)
    : owner_(&owner), items_(std::move(items)), done_(std::move(done)), marked_(current) {}

bool PopupWnd::Open(CWnd& owner, CPoint place, int width, int height, std::vector<CMenu::Item> items,
                    int current, Done done) {
    WindowSession* session = owner.session();
    if (session == nullptr || items.empty() || !session->IsDisplayAlive() || !owner.IsWindowVisible())
        return false;
    CPoint offset;
    const TopLevel* top = owner.FindTopLevel(&offset);
    if (top == nullptr || top->native() == nullptr || top->native()->NativeId() == 0) return false;
    const CPoint at = top->native()->ScreenPosition() + offset + place;
    const CRect area = session->display()->WorkArea(at);

    auto popup = std::make_unique<PopupWnd>(owner, std::move(items), current, std::move(done));
    PopupWnd& window = *popup;
    const CSize size = window.Arrange(area, width);
    CRect bounds(at, size);
    // Upwards where there is no room below, and never over the edge of the screen.
    if (bounds.bottom > area.bottom && height > 0 && at.y - height - size.cy >= area.top)
        bounds.OffsetRect(0, -height - size.cy);
    bounds.MoveInside(area);

    session->OpenPopup(std::move(popup));
    if (!window.CreateNative(*session, bounds)) {
        session->ClosePopup();
        return false;
    }
    return true;
}

bool PopupWnd::CreateNative(WindowSession& session, const CRect& bounds) {
    const auto kind = platform::WindowKind::popup;
    if (!CreateIn(session, nullptr, &kind, owner_, WindowClass{}, "menu", WS_POPUP | WS_VISIBLE, bounds, 0))
        return false;
    if (marked_ >= 0) Reveal(marked_);
    return true;
}

CSize PopupWnd::Arrange(const CRect& area, int width) {
    CDC measure;
    measure.SelectObject(&FontInUse());
    const int height = measure.GetTextExtent("").cy + 2 * kItemPadding;
    marginWidth_ = 0;
    for (const CMenu::Item& item : items_)
        marginWidth_ = std::max(marginWidth_, measure.GetTextExtent(item.margin).cx);
    if (marginWidth_ > 0) marginWidth_ += kItemPadding;

    rows_ = std::clamp((area.Height() - 2 * kBorder) / height, 1, itemCount());
    std::vector<int> widths = ColumnWidths(measure);
    const int sum = std::accumulate(widths.begin(), widths.end(), 2 * kBorder);
    if (static_cast<int>(widths.size()) > kMostColumns || sum > area.Width()) {
        rows_ = itemCount();
        widths = ColumnWidths(measure);
    } else {
        rows_ = (itemCount() + static_cast<int>(widths.size()) - 1) / static_cast<int>(widths.size());
        widths = ColumnWidths(measure);
    }
    if (widths.size() == 1) widths[0] = std::max(widths[0], width - 2 * kBorder);

    places_.clear();
    int left = kBorder;
    int right = left;
    for (int i = 0; i < itemCount(); ++i) {
        const int across = widths[static_cast<std::size_t>(i / rows_)];
        places_.emplace_back(CPoint(left, kBorder + i % rows_ * height), CSize{across, height});
        right = left + across;
        if (i % rows_ == rows_ - 1) left = right;
    }
    contentHeight_ = rows_ * height;
    return {right + kBorder,
            std::min(contentHeight_, std::max(height, area.Height() - 2 * kBorder)) + 2 * kBorder};
}

std::vector<int> PopupWnd::ColumnWidths(const CDC& measure) const {
    std::vector<int> widths(static_cast<std::size_t>((itemCount() - 1) / rows_ + 1));
    for (int i = 0; i < itemCount(); ++i) {
        int& column = widths[static_cast<std::size_t>(i / rows_)];
        const int text = measure.GetTextExtent(items_[static_cast<std::size_t>(i)].text).cx;
        column = std::max(column, kTickWidth + marginWidth_ + text + 3 * kItemPadding);
    }
    return widths;
}

int PopupWnd::ItemAt(CPoint point) const {
    const CRect inside(kBorder, kBorder, bounds().Width() - kBorder, bounds().Height() - kBorder);
    if (!inside.PtInRect(point)) return -1;
    point.y += scroll_;
    for (int i = 0; i < itemCount(); ++i)
        if (places_[static_cast<std::size_t>(i)].PtInRect(point)) return i;
    return -1;
}

bool PopupWnd::CanChoose(int index) const {
    return index >= 0 && index < itemCount() &&
           (items_[static_cast<std::size_t>(index)].flags & (MF_GRAYED | MF_DISABLED)) == 0;
}

CRect PopupWnd::Shown(int index) const {
    CRect place = places_[static_cast<std::size_t>(index)];
    place.OffsetRect(0, -scroll_);
    return place;
}

void PopupWnd::Mark(int index) {
    if (index == marked_) return;
    for (const int changed : {marked_, index}) {
        if (changed < 0) continue;
        const CRect place = Shown(changed);
        InvalidateRect(&place);
    }
    marked_ = index;
}

void PopupWnd::Scroll(int pixels) {
    const int most = std::max(0, contentHeight_ - (bounds().Height() - 2 * kBorder));
    const int to = std::clamp(scroll_ + pixels, 0, most);
    if (to == scroll_) return;
    scroll_ = to;
    Invalidate();
}

void PopupWnd::Reveal(int index) {
    const CRect place = Shown(index);
    if (place.top < kBorder) Scroll(place.top - kBorder);
    if (place.bottom > bounds().Height() - kBorder) Scroll(place.bottom - bounds().Height() + kBorder);
}

void PopupWnd::Step(int direction) {
    int at = marked_ < 0 && direction < 0 ? itemCount() : marked_;
    for (int tries = 0; tries < itemCount(); ++tries) {
        at = (at + direction + itemCount()) % itemCount();
        if (!CanChoose(at)) continue;
        Mark(at);
        Reveal(at);
        return;
    }
}

void PopupWnd::Finish(int index) {
    if (session() == nullptr || session()->popup() != this) return;
    const Done done = std::move(done_);
    done_ = nullptr;
    const std::shared_ptr<WindowSession> keep = session()->weak_from_this().lock();
    keep->ClosePopup();
    if (done) done(index);
}

void PopupWnd::PaintItem(CDC& dc, int index) {
    const CMenu::Item& item = items_[static_cast<std::size_t>(index)];
    const CRect place = Shown(index);
    const bool chosen = index == marked_ && CanChoose(index);
    if (chosen) dc.FillSolidRect(place, theme::kMarked);
    const COLORREF color = chosen ? theme::kMarkedText : CanChoose(index) ? theme::kText : theme::kGrayText;
    if ((item.flags & MF_CHECKED) != 0)
        theme::DrawTick(dc, {place.left, place.top, place.left + kTickWidth, place.bottom}, color);
    const int text = place.left + kTickWidth + marginWidth_;
    theme::DrawLine(dc, {place.left + kTickWidth, place.top, text - kItemPadding, place.bottom}, item.margin,
                    theme::Align::right, chosen ? color : theme::kGrayText);
    theme::DrawLine(dc, {text, place.top, place.right - kItemPadding, place.bottom}, item.text,
                    theme::Align::left, color);
}

void PopupWnd::Paint() {
    CPaintDC dc(this);
    dc.SelectObject(&FontInUse());
    const CRect all = dc.clientRect();
    CRect inside = all;
    inside.DeflateRect(kBorder, kBorder);
    dc.FrameRect(all, theme::kEdge);
    dc.IntersectClipRect(inside);
    dc.FillSolidRect(inside, theme::kField);
    for (int i = 0; i < itemCount(); ++i) {
        CRect visible;
        if (visible.IntersectRect(Shown(i), dc.updateRect())) PaintItem(dc, i);
    }
}

LRESULT PopupWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const CPoint point = CPoint::FromMessage(lParam);
    switch (message) {
    case WM_PAINT:
        Paint();
        return 0;
    case WM_MOUSEMOVE: {
        if (point == lastPoint_) return 0; // scrolling moves items, not the pointer
        lastPoint_ = point;
        const int at = ItemAt(point);
        if (at >= 0) armed_ = true;
        Mark(CanChoose(at) ? at : -1);
        return 0;
    }
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
        if (!CRect({0, 0}, bounds().Size()).PtInRect(point)) {
            Finish(-1);
            return 0;
        }
        armed_ = true;
        Mark(CanChoose(ItemAt(point)) ? ItemAt(point) : -1);
        return 0;
    case WM_LBUTTONUP: {
        // The release of the press that opened the menu chooses only when the pointer was moved onto an item.
        const int at = ItemAt(point);
        if (armed_ && CanChoose(at)) Finish(at);
        return 0;
    }
    case WM_MOUSEWHEEL: {
        const int height = places_.empty() ? 0 : places_[0].Height();
        Scroll(static_cast<std::int16_t>(HIWORD(wParam)) > 0 ? -kScrollStep * height : kScrollStep * height);
        return 0;
    }
    case WM_KEYDOWN:
        switch (wParam) {
        case kKeyDown:
            Step(1);
            break;
        case kKeyUp:
            Step(-1);
            break;
        case kKeyHome:
            marked_ = -1;
            Invalidate();
            Step(1);
            break;
        case kKeyEnd:
            marked_ = 0;
            Invalidate();
            Step(-1);
            break;
        case kKeyLeft:
        case kKeyRight:
            StepColumn(wParam == kKeyRight ? 1 : -1);
            break;
        case kKeyReturn:
        case kKeyKeypadEnter:
            Finish(CanChoose(marked_) ? marked_ : -1);
            break;
        case kKeyEscape:
        case kKeyTab:
            Finish(-1);
            break;
        default:
            break;
        }
        return 0;
    case WM_CHAR: {
        const int found = NextWithLetter(wParam, lParam, marked_, itemCount(), [this](int i) {
            return CanChoose(i) ? &items_[static_cast<std::size_t>(i)].text : nullptr;
        });
        if (found < 0) return 0;
        Mark(found);
        Reveal(found);
        return 0;
    }
    default:
        return Control::DefWindowProc(message, wParam, lParam);
    }
}

void PopupWnd::StepColumn(int direction) {
    const int beside = marked_ + direction * rows_;
    if (marked_ >= 0 && CanChoose(beside)) Mark(beside);
}

} // namespace vocafade
