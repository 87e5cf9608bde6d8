// SPDX-License-Identifier: MIT
#include "ui/popup.h"

#include "ui/desktop.h"
#include "ui/theme.h"

namespace vocafade {
namespace {

constexpr int kBorder = 1;
constexpr int kTickWidth = 22;
constexpr int kItemPadding = 5; ///< above and below a line
constexpr int kSeparatorHeight = 7;
constexpr int kMostColumns = 8;
constexpr int kScrollStep = 3; ///< items a notch of the wheel

} // namespace

PopupWnd::PopupWnd(CWnd& owner, std::vector<CMenu::Item> items, int current, Done done)
    : owner_(&owner), items_(std::move(items)), done_(std::move(done)), marked_(current) {
    theme::UseControlFont(font_);
}

bool PopupWnd::Open(CWnd& owner, CPoint place, int width, int height, std::vector<CMenu::Item> items,
                    int current, Done done) {
    Desktop* desktop = owner.desktop();
    if (desktop == nullptr || items.empty() || !desktop->IsDisplayAlive() || !owner.IsWindowVisible())
        return false;
    CPoint offset;
    CWnd* top = Desktop::RootOf(&owner, &offset);
    if (top == nullptr) return false;
    platform::Window* native = Desktop::NativeOf(*top);
    if (native == nullptr || native->NativeId() == 0) return false;
    const CPoint at = native->ScreenPosition() + offset + place;
    const CRect area = desktop->display()->WorkArea(at);

    auto popup = std::make_unique<PopupWnd>(owner, std::move(items), current, std::move(done));
    PopupWnd& window = *popup;
    const CSize size = window.Arrange(area, width);
    CRect bounds(at, size);
    // Upwards where there is no room below, and never over the edge of the screen.
    if (bounds.bottom > area.bottom && height > 0 && at.y - height - size.cy >= area.top)
        bounds.OffsetRect(0, -height - size.cy);
    bounds.OffsetRect(std::min(0, area.right - bounds.right), std::min(0, area.bottom - bounds.bottom));
    bounds.OffsetRect(std::max(0, area.left - bounds.left), std::max(0, area.top - bounds.top));

    desktop->OpenPopup(std::move(popup));
    if (!window.CreateNative(*desktop, bounds)) {
        desktop->ClosePopup();
        return false;
    }
    return true;
}

void PopupWnd::CloseFor(CWnd& owner) {
    PopupWnd* open = owner.desktop() != nullptr ? owner.desktop()->popup() : nullptr;
    if (open != nullptr && open->owner_ == &owner) open->Cancel();
}

bool PopupWnd::CreateNative(Desktop& desktop, const CRect& bounds) {
    const auto kind = platform::WindowKind::popup;
    if (!CreateOn(desktop, nullptr, &kind, owner_, WindowClass{}, "menu", WS_POPUP | WS_VISIBLE, bounds, 0))
        return false;
    if (marked_ >= 0) Reveal(marked_);
    return true;
}

CSize PopupWnd::Arrange(const CRect& area, int width) {
    CDC measure;
    measure.SelectObject(font_.get());
    const int lineHeight = measure.GetTextExtent("").cy + 2 * kItemPadding;
    int itemWidth = 0;
    int total = 0;
    for (const CMenu::Item& item : items_) {
        itemWidth = std::max(itemWidth, measure.GetTextExtent(item.text).cx);
        total += (item.flags & MF_SEPARATOR) != 0 ? kSeparatorHeight : lineHeight;
    }
    itemWidth = std::max(itemWidth + kTickWidth + 3 * kItemPadding, width - 2 * kBorder);

    const int room = std::max(lineHeight, area.Height() - 2 * kBorder);
    int columns = (total + room - 1) / room;
    if (columns > kMostColumns || columns * itemWidth + 2 * kBorder > area.Width()) columns = 1;
    const int columnHeight = columns == 1 ? total : (total + columns - 1) / columns;

    places_.clear();
    int column = 0;
    int y = 0;
    int lowest = 0;
    for (const CMenu::Item& item : items_) {
        const int height = (item.flags & MF_SEPARATOR) != 0 ? kSeparatorHeight : lineHeight;
        if (y >= columnHeight && column + 1 < columns) {
            ++column;
            y = 0;
        }
        places_.emplace_back(CPoint(kBorder + column * itemWidth, kBorder + y), CSize{itemWidth, height});
        y += height;
        lowest = std::max(lowest, y);
    }
    contentHeight_ = lowest;
    return {(column + 1) * itemWidth + 2 * kBorder, std::min(lowest, room) + 2 * kBorder};
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
           (items_[static_cast<std::size_t>(index)].flags & (MF_GRAYED | MF_DISABLED | MF_SEPARATOR)) == 0;
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

void PopupWnd::JumpTo(UINT character) {
    const auto lower = [](UINT c) { return c >= 'A' && c <= 'Z' ? c + 32 : c; };
    for (int i = 1; i <= itemCount(); ++i) {
        const int at = (std::max(0, marked_) + i) % itemCount();
        const CString& text = items_[static_cast<std::size_t>(at)].text;
        if (CanChoose(at) && lower(static_cast<unsigned char>(text.GetAt(0))) == lower(character)) {
            Mark(at);
            Reveal(at);
            return;
        }
    }
}

void PopupWnd::Finish(int index) {
    Desktop* home = desktop();
    if (home == nullptr || home->popup() != this) return;
    const Done done = std::move(done_);
    done_ = nullptr;
    const std::shared_ptr<Desktop> keep = home->weak_from_this().lock();
    home->ClosePopup();
    if (done) done(index);
}

void PopupWnd::PaintItem(CDC& dc, int index) {
    const CMenu::Item& item = items_[static_cast<std::size_t>(index)];
    const CRect place = Shown(index);
    if ((item.flags & MF_SEPARATOR) != 0) {
        const int y = place.CenterPoint().y;
        dc.FillSolidRect({place.left + kItemPadding, y, place.right - kItemPadding, y + 1},
                         GetSysColor(COLOR_3DSHADOW));
        return;
    }
    const bool chosen = index == marked_ && CanChoose(index);
    if (chosen) dc.FillSolidRect(place, GetSysColor(COLOR_HIGHLIGHT));
    const COLORREF color = GetSysColor(chosen             ? COLOR_HIGHLIGHTTEXT
                                       : CanChoose(index) ? COLOR_WINDOWTEXT
                                                          : COLOR_GRAYTEXT);
    if ((item.flags & MF_CHECKED) != 0)
        theme::DrawTick(dc, {place.left, place.top, place.left + kTickWidth, place.bottom}, color);
    theme::DrawLine(dc, {place.left + kTickWidth, place.top, place.right - kItemPadding, place.bottom},
                    item.text, theme::Align::left, color);
}

void PopupWnd::Paint() {
    CPaintDC dc(this);
    dc.SelectObject(font_.get());
    const CRect all = dc.clientRect();
    CRect inside = all;
    inside.DeflateRect(kBorder, kBorder);
    dc.FrameRect(all, GetSysColor(COLOR_3DSHADOW));
    dc.IntersectClipRect(inside);
    dc.FillSolidRect(inside, GetSysColor(COLOR_WINDOW));
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
    case WM_CHAR:
        if (wParam > 0x20 && (HIWORD(static_cast<std::uintptr_t>(lParam)) & kCharArrow) == 0)
            JumpTo(static_cast<UINT>(wParam));
        return 0;
    default:
        return CWnd::DefWindowProc(message, wParam, lParam);
    }
}

void PopupWnd::StepColumn(int direction) {
    if (marked_ < 0) return;
    const CRect& from = places_[static_cast<std::size_t>(marked_)];
    const CPoint beside(from.CenterPoint().x + direction * from.Width(), from.CenterPoint().y);
    for (int i = 0; i < itemCount(); ++i)
        if (places_[static_cast<std::size_t>(i)].PtInRect(beside) && CanChoose(i)) {
            Mark(i);
            return;
        }
}

} // namespace vocafade
