// SPDX-License-Identifier: MIT
#include "ui/wnd.h"

#include "ui/desktop.h"
#include "ui/frame_wnd.h"
#include "ui/timer_thread.h"

#include <cstring>
#include <utility>

namespace vocafade {

WindowClass AfxRegisterWndClass(UINT style, HCURSOR cursor, HBRUSH background) {
    return {style, cursor, background};
}

HCURSOR LoadCursor(int /*module*/, UINT id) { return id; }

HBRUSH GetStockObject(int number) {
    switch (number) {
    case WHITE_BRUSH:
        return {false, RGB(255, 255, 255)};
    case LTGRAY_BRUSH:
        return {false, RGB(192, 192, 192)};
    case GRAY_BRUSH:
        return {false, RGB(128, 128, 128)};
    case DKGRAY_BRUSH:
        return {false, RGB(64, 64, 64)};
    case BLACK_BRUSH:
        return {false, RGB(0, 0, 0)};
    default:
        return {};
    }
}

int GetSystemMetrics(int index) {
    switch (index) {
    case SM_CXVSCROLL:
    case SM_CXHSCROLL:
        return 15;
    case SM_CXBORDER:
        return 1;
    case SM_CXDOUBLECLK:
        return 5;
    case SM_CXEDGE:
    case SM_CYEDGE:
        return 2;
    default:
        return 0;
    }
}

COLORREF GetSysColor(int index) {
    // The faceplate's own: what shows is light with dark print, what one takes hold of is dark.
    switch (index) {
    case COLOR_WINDOW:
        return RGB(248, 248, 244);
    case COLOR_WINDOWTEXT:
    case COLOR_BTNTEXT:
        return RGB(52, 54, 58);
    case COLOR_HIGHLIGHT:
        return RGB(58, 60, 64);
    case COLOR_HIGHLIGHTTEXT:
        return RGB(241, 240, 236);
    case COLOR_HOTLIGHT:
        return RGB(190, 116, 0);
    case COLOR_3DFACE:
        return RGB(221, 220, 215);
    case COLOR_3DSHADOW:
        return RGB(139, 139, 136);
    case COLOR_GRAYTEXT:
        return RGB(126, 127, 129);
    default:
        return 0;
    }
}

short GetKeyState(int key) {
    const Desktop* desktop = Desktop::Current();
    return desktop != nullptr ? desktop->KeyState(key) : short{0};
}

CWnd::CWnd() : alive_(std::make_shared<bool>(true)) {}

CWnd::~CWnd() {
    CWnd::DestroyWindow();
    *alive_ = false;
}

// --- Life
// ------------------------------------------------------------------------------------------------------------

bool CWnd::Create(const WindowClass& windowClass, const char* name, UINT style, const CRect& rect,
                  CWnd* parent, UINT id) {
    if (parent == nullptr || parent->desktop_ == nullptr || parent->destroying_) return false;
    Desktop& desktop = *parent->desktop_;
    const bool inHost = parent == static_cast<CWnd*>(&desktop.frame());
    const auto embedded = platform::WindowKind::embedded;
    return CreateOn(desktop, parent, inHost ? &embedded : nullptr, nullptr, windowClass, name, style, rect,
                    id);
}

bool CWnd::CreateOn(Desktop& desktop, CWnd* parent, const platform::WindowKind* kind, CWnd* owner,
                    const WindowClass& windowClass, const char* name, UINT style, const CRect& rect,
                    UINT id) {
    if (desktop_ != nullptr || desktop.IsClosed()) return false;
    class_ = windowClass;
    text_ = name;
    style_ = style & ~WS_VISIBLE;
    id_ = id;
    bounds_ = rect;
    if (kind != nullptr) {
        if (!desktop.MakeNative(*this, *kind, owner, rect, name)) return false;
    }
    desktop_ = &desktop;
    parent_ = parent;
    if (parent != nullptr) parent->children_.push_back(this);
    const std::shared_ptr<bool> alive = alive_;
    const LRESULT answer = SendMessage(WM_CREATE);
    if (!*alive || desktop_ == nullptr) return false;
    if (answer == -1) {
        DestroyWindow();
        return false;
    }
    Invalidate();
    if ((style & WS_VISIBLE) != 0) ShowWindow(SW_SHOW);
    return *alive && desktop_ != nullptr;
}

bool CWnd::DestroyWindow() {
    if (desktop_ == nullptr || destroying_) return false;
    destroying_ = true;
    const std::shared_ptr<Desktop> desktop = desktop_->weak_from_this().lock();
    const std::shared_ptr<bool> alive = alive_;
    timer_.reset();
    // The keyboard goes back to the host before anything else is taken apart.
    CWnd* top = Desktop::RootOf(this);
    if (top != nullptr && top->root_->focus != nullptr) {
        for (const CWnd* at = top->root_->focus; at != nullptr; at = at->parent_)
            if (at == this) {
                desktop_->SetFocus(top, nullptr);
                break;
            }
    }
    if (!*alive) return true;
    SendMessage(WM_DESTROY);
    if (!*alive) return true;
    while (!children_.empty()) {
        CWnd* last = children_.back();
        if (!last->DestroyWindow() && !children_.empty() && children_.back() == last) children_.pop_back();
    }
    desktop_->Forget(*this);
    CWnd* parent = parent_;
    if (parent != nullptr) {
        std::erase(parent->children_, this);
        if ((style_ & WS_VISIBLE) != 0 && root_ == nullptr) parent->InvalidateRegion(bounds_);
    }
    root_.reset();
    update_.DeleteObject();
    late_.DeleteObject();
    painting_ = false;
    desktop_ = nullptr;
    parent_ = nullptr;
    destroying_ = false;
    return true;
}

// --- Place, size, showing
// --------------------------------------------------------------------------------------------

void CWnd::SetBounds(const CRect& bounds) {
    const CRect before = bounds_;
    if (before == bounds) return;
    bounds_ = bounds;
    if (desktop_ == nullptr) return;
    const bool resized = before.Size() != bounds.Size();
    const bool moved = before.TopLeft() != bounds.TopLeft();
    if (root_ != nullptr) {
        if (root_->window != nullptr && resized) root_->window->Resize(bounds.Size());
        if (root_->window != nullptr && moved) root_->window->Move(bounds.TopLeft());
        if (resized)
            root_->canvas = std::make_shared<Canvas>(
                platform::MakeSurface(std::max(1, bounds.Width()), std::max(1, bounds.Height())));
    } else if (parent_ != nullptr && (style_ & WS_VISIBLE) != 0) {
        parent_->InvalidateRegion(before);
    }
    // Its pixels are its parent's: at another place they have to be drawn again, with all that is inside.
    std::vector<CWnd*> all{this};
    for (std::size_t i = 0; i < all.size(); ++i) {
        all[i]->Invalidate();
        all.insert(all.end(), all[i]->children_.begin(), all[i]->children_.end());
    }
    const std::shared_ptr<bool> alive = alive_;
    if (resized) SendMessage(WM_SIZE, 0, CPoint(bounds.Width(), bounds.Height()).ToMessage());
    if (*alive && moved) SendMessage(WM_MOVE, 0, bounds.TopLeft().ToMessage());
}

bool CWnd::MoveWindow(int x, int y, int width, int height, bool repaint) {
    SetBounds(CRect({x, y}, {width, height}));
    if (repaint) Invalidate();
    return desktop_ != nullptr;
}

bool CWnd::SetWindowPos(const CWnd* /*after*/, int x, int y, int width, int height, UINT flags) {
    CRect bounds = bounds_;
    if ((flags & SWP_NOMOVE) == 0) bounds.OffsetRect(x - bounds.left, y - bounds.top);
    if ((flags & SWP_NOSIZE) == 0) bounds = CRect(bounds.TopLeft(), {width, height});
    if ((flags & SWP_NOZORDER) == 0 && parent_ != nullptr && root_ == nullptr) {
        std::erase(parent_->children_, this);
        parent_->children_.push_back(this);
        Invalidate();
    }
    const std::shared_ptr<bool> alive = alive_;
    SetBounds(bounds);
    if (*alive && (flags & SWP_SHOWWINDOW) != 0) ShowWindow(SW_SHOW);
    if (*alive && (flags & SWP_HIDEWINDOW) != 0) ShowWindow(SW_HIDE);
    return *alive && desktop_ != nullptr;
}

bool CWnd::ShowWindow(int show) {
    const bool before = (style_ & WS_VISIBLE) != 0;
    const bool now = show != SW_HIDE;
    if (desktop_ == nullptr || before == now) return before;
    const std::shared_ptr<bool> alive = alive_;
    SendMessage(WM_SHOWWINDOW, now ? 1 : 0);
    if (!*alive || desktop_ == nullptr) return before;
    if (now) {
        style_ |= WS_VISIBLE;
        if (root_ != nullptr && root_->window != nullptr) root_->window->Show(true);
        std::vector<CWnd*> all{this};
        for (std::size_t i = 0; i < all.size(); ++i) {
            all[i]->Invalidate();
            all.insert(all.end(), all[i]->children_.begin(), all[i]->children_.end());
        }
        return before;
    }
    style_ &= ~WS_VISIBLE;
    CWnd* top = Desktop::RootOf(this);
    if (top != nullptr) {
        for (const CWnd* at = top->root_->focus; at != nullptr; at = at->parent_)
            if (at == this) {
                desktop_->SetFocus(top, nullptr);
                break;
            }
    }
    if (!*alive || desktop_ == nullptr) return before;
    if (root_ != nullptr) {
        if (root_->window != nullptr) root_->window->Show(false);
    } else if (parent_ != nullptr) {
        parent_->InvalidateRegion(bounds_);
    }
    return before;
}

bool CWnd::IsWindowVisible() const {
    for (const CWnd* at = this; at != nullptr; at = at->parent_) {
        if (at->desktop_ == nullptr || (at->style_ & WS_VISIBLE) == 0) return false;
        if (at->root_ != nullptr) return true;
    }
    return false;
}

bool CWnd::EnableWindow(bool enable) {
    const bool wasDisabled = (style_ & WS_DISABLED) != 0;
    if (wasDisabled == !enable) return wasDisabled;
    style_ = enable ? style_ & ~WS_DISABLED : style_ | WS_DISABLED;
    if (!enable && GetFocus() == this) desktop_->SetFocus(Desktop::RootOf(this), nullptr);
    if (!enable && GetCapture() == this) ReleaseCapture();
    SendMessage(WM_ENABLE, enable ? 1 : 0);
    Invalidate();
    return wasDisabled;
}

bool CWnd::IsWindowEnabled() const { return (style_ & WS_DISABLED) == 0; }

CPoint CWnd::MapPoint(CPoint point, const CWnd* to) const {
    CPoint here;
    CPoint there;
    Desktop::RootOf(this, &here);
    Desktop::RootOf(to, &there);
    return point + here - there;
}

// --- Painting
// --------------------------------------------------------------------------------------------------------

void CWnd::Invalidate(bool erase) { InvalidateRect(nullptr, erase); }

void CWnd::InvalidateRect(const CRect* rect, bool /*erase*/) {
    if (desktop_ == nullptr) return;
    const CRect client({0, 0}, bounds_.Size());
    CRect area = client;
    if (rect != nullptr && !area.IntersectRect(*rect, client)) return;
    (painting_ ? late_ : update_).Add(area);
}

void CWnd::InvalidateRegion(const CRect& rect) { InvalidateRect(&rect); }

void CWnd::UpdateWindow() {
    if (desktop_ == nullptr) return;
    const std::shared_ptr<Desktop> desktop = desktop_->weak_from_this().lock();
    const Desktop::Scope scope(*desktop_);
    desktop_->Paint(*this);
    desktop->PresentSoon();
}

// --- Messages
// --------------------------------------------------------------------------------------------------------

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (desktop_ == nullptr) return 0;
    const std::shared_ptr<Desktop> desktop = desktop_->weak_from_this().lock();
    const Desktop::Scope scope(*desktop_);
    const std::shared_ptr<bool> alive = alive_;
    const MSG before = std::exchange(current_, {this, message, wParam, lParam});
    const LRESULT answer = WindowProc(message, wParam, lParam);
    if (*alive) current_ = before;
    return answer;
}

bool CWnd::PostMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (desktop_ == nullptr) return false;
    desktop_->Post(this, alive_, message, wParam, lParam);
    return true;
}

void CWnd::Defer(std::function<void()> action) {
    if (desktop_ != nullptr) desktop_->PostAction(alive_, std::move(action));
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (const MessageEntry* entry = FindEntry(message, wParam)) return entry->invoke(*this, wParam, lParam);
    return DefWindowProc(message, wParam, lParam);
}

LRESULT CWnd::Default() { return DefWindowProc(current_.message, current_.wParam, current_.lParam); }

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_ERASEBKGND:
        if (class_.background.isNull || wParam == 0) return 0;
        reinterpret_cast<CDC*>(wParam)->FillSolidRect(CRect({0, 0}, bounds_.Size()), class_.background.color);
        return 1;
    case WM_PAINT: {
        const CPaintDC validates(this);
        return 0;
    }
    case WM_CLOSE:
        DestroyWindow();
        return 0;
    case WM_MOUSEWHEEL:
        if (parent_ != nullptr && root_ == nullptr)
            return parent_->SendMessage(message, wParam,
                                        (CPoint::FromMessage(lParam) + bounds_.TopLeft()).ToMessage());
        return 0;
    case WM_SETFONT:
        font_ = reinterpret_cast<CFont*>(wParam);
        if (lParam != 0) Invalidate();
        return 0;
    default:
        return 0;
    }
}

bool CWnd::PreTranslateMessage(MSG* /*message*/) { return false; }

void CWnd::NotifyParent(UINT notification) {
    if (parent_ != nullptr)
        parent_->SendMessage(WM_COMMAND, MAKEWPARAM(id_, notification), reinterpret_cast<LPARAM>(this));
}

// --- Timer, capture, focus
// -------------------------------------------------------------------------------------------

UINT CWnd::SetTimer(UINT id, UINT elapse, void* /*callback*/) {
    if (desktop_ == nullptr) return 0;
    timer_ = std::make_unique<TimerThread>(elapse);
    desktop_->AddTimer(*this);
    return id;
}

bool CWnd::KillTimer(UINT /*id*/) {
    const bool ran = timer_ != nullptr;
    timer_.reset();
    return ran;
}

CWnd* CWnd::SetCapture() {
    if (desktop_ == nullptr) return nullptr;
    CWnd* before = desktop_->capture();
    desktop_->SetCapture(this);
    return before;
}

CWnd* CWnd::GetCapture() const { return desktop_ != nullptr ? desktop_->capture() : nullptr; }

void CWnd::ReleaseCapture() {
    if (desktop_ != nullptr) desktop_->SetCapture(nullptr);
}

CWnd* CWnd::SetFocus() {
    if (desktop_ == nullptr || destroying_) return nullptr;
    CWnd* top = Desktop::RootOf(this);
    if (top == nullptr) return nullptr;
    CWnd* before = top->root_->focus;
    desktop_->SetFocus(top, this);
    return before;
}

CWnd* CWnd::GetFocus() const {
    const CWnd* top = desktop_ != nullptr ? Desktop::RootOf(this) : nullptr;
    return top != nullptr ? top->root_->focus : nullptr;
}

HCURSOR CWnd::CursorAt(CPoint /*point*/) const { return class_.cursor; }

// --- Family and text
// -------------------------------------------------------------------------------------------------

CWnd* CWnd::GetDlgItem(int id) const {
    for (CWnd* child : children_) {
        if (child->GetDlgCtrlID() == id) return child;
        if (CWnd* below = child->GetDlgItem(id)) return below;
    }
    return nullptr;
}

void CWnd::SetDlgItemText(int id, const char* text) {
    if (CWnd* item = GetDlgItem(id)) item->SetWindowText(text);
}

int CWnd::GetDlgItemText(int id, CString& text) const {
    text.Empty();
    if (const CWnd* item = GetDlgItem(id)) item->GetWindowText(text);
    return text.GetLength();
}

void CWnd::ModifyStyle(UINT remove, UINT add) {
    // Showing and enabling have functions of their own that do what belongs to it.
    constexpr UINT kOwn = WS_VISIBLE | WS_DISABLED;
    style_ = (style_ & ~(remove & ~kOwn)) | (add & ~kOwn);
    Invalidate();
}

void CWnd::SetWindowText(const char* text) {
    const CString changed(text);
    if (changed == text_) return;
    text_ = changed;
    TextChanged();
}

void CWnd::GetWindowText(CString& text) const { text = text_; }

int CWnd::GetWindowText(char* buffer, int size) const {
    if (buffer == nullptr || size <= 0) return 0;
    const std::size_t count = std::min(static_cast<std::size_t>(size - 1), text_.str().size());
    std::memcpy(buffer, text_.str().data(), count);
    buffer[count] = '\0';
    return static_cast<int>(count);
}

void CWnd::SetFont(CFont* font, bool redraw) {
    font_ = font;
    SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(font), redraw ? 1 : 0);
}

} // namespace vocafade
