// SPDX-License-Identifier: MIT
#include "ui/wnd.h"

#include "ui/frame_wnd.h"
#include "ui/timer_thread.h"
#include "ui/window_session.h"

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
    default:
        return {};
    }
}

int GetSystemMetrics(int index) {
    switch (index) {
    case SM_CXHSCROLL:
        return 15;
    case SM_CXEDGE:
        return 2;
    default:
        return 0;
    }
}

short GetKeyState(int key) {
    const WindowSession* session = WindowSession::Current();
    return session != nullptr ? session->keys().State(key) : short{0};
}

CWnd::CWnd() : life_(std::make_shared<bool>(true)) {}

CWnd::~CWnd() { CWnd::DestroyWindow(); } // NOLINT(bugprone-exception-escape): lack of memory in a handler

// --- Life

bool CWnd::Create(const WindowClass& windowClass, const char* name, UINT style, const CRect& rect,
                  CWnd* parent, UINT id) {
    if (parent == nullptr || parent->session_ == nullptr || parent->destroying_) return false;
    WindowSession& session = *parent->session_;
    const bool inHost = parent == &session.frame();
    const auto embedded = platform::WindowKind::embedded;
    return CreateIn(session, parent, inHost ? &embedded : nullptr, nullptr, windowClass, name, style, rect,
                    id);
}

bool CWnd::CreateIn(WindowSession& session, CWnd* parent, const platform::WindowKind* kind, CWnd* owner,
                    const WindowClass& windowClass, const char* name, UINT style, const CRect& rect,
                    UINT id) {
    if (session_ != nullptr || session.IsClosed()) return false;
    class_ = windowClass;
    text_ = name;
    style_ = style & ~WS_VISIBLE;
    id_ = id;
    bounds_ = rect;
    if (kind != nullptr) {
        topLevel_ = session.MakeTopLevel(*this, *kind, owner, rect, name);
        if (topLevel_ == nullptr) return false;
    }
    session_ = &session;
    parent_ = parent;
    if (parent != nullptr) parent->children_.push_back(this);
    const std::weak_ptr<bool> life = life_;
    const LRESULT answer = SendMessage(WM_CREATE);
    if (life.expired() || session_ == nullptr) return false;
    if (answer == -1) {
        DestroyWindow();
        return false;
    }
    Invalidate();
    if ((style & WS_VISIBLE) != 0) ShowWindow(SW_SHOW);
    return !life.expired() && session_ != nullptr;
}

void CWnd::Attach(WindowSession* session, const CRect& bounds) {
    session_ = session;
    bounds_ = bounds;
    style_ |= WS_VISIBLE;
    timer_.reset();
    if (session == nullptr) children_.clear();
}

bool CWnd::DestroyWindow() {
    if (session_ == nullptr || destroying_) return false;
    destroying_ = true;
    const std::shared_ptr<WindowSession> session = session_->weak_from_this().lock();
    const std::weak_ptr<bool> life = life_;
    timer_.reset();
    // The keyboard goes back to the host before anything else is taken apart.
    TakeFocusAway();
    if (life.expired()) return true;
    SendMessage(WM_DESTROY);
    if (life.expired()) return true;
    while (!children_.empty()) {
        CWnd* last = children_.back();
        if (!last->DestroyWindow() && !children_.empty() && children_.back() == last) children_.pop_back();
    }
    session_->Forget(*this);
    if (parent_ != nullptr) {
        std::erase(parent_->children_, this);
        if ((style_ & WS_VISIBLE) != 0 && topLevel_ == nullptr) parent_->InvalidateRect(&bounds_);
    }
    if (topLevel_ != nullptr) topLevel_->Close();
    topLevel_.reset();
    update_.DeleteObject();
    late_.DeleteObject();
    painting_ = false;
    session_ = nullptr;
    parent_ = nullptr;
    destroying_ = false;
    return true;
}

// --- Place, size, showing

void CWnd::SetBounds(const CRect& bounds) {
    const CRect before = std::exchange(bounds_, bounds);
    if (before == bounds || session_ == nullptr) return;
    if (topLevel_ != nullptr) {
        topLevel_->SetBounds(before, bounds);
    } else if (parent_ != nullptr && (style_ & WS_VISIBLE) != 0) {
        parent_->InvalidateRect(&before);
    }
    // Its pixels are its parent's: at another place they have to be drawn again, with all that is inside.
    InvalidateWithChildren();
    const std::weak_ptr<bool> life = life_;
    if (before.Size() != bounds.Size())
        SendMessage(WM_SIZE, 0, CPoint(bounds.Width(), bounds.Height()).ToMessage());
    if (!life.expired() && before.TopLeft() != bounds.TopLeft())
        SendMessage(WM_MOVE, 0, bounds.TopLeft().ToMessage());
}

bool CWnd::MoveWindow(int x, int y, int width, int height, bool repaint) {
    SetBounds(CRect({x, y}, {width, height}));
    if (repaint) Invalidate();
    return session_ != nullptr;
}

bool CWnd::SetWindowPos(const CWnd* /*after*/, int x, int y, int width, int height, UINT flags) {
    CRect bounds = bounds_;
    if ((flags & SWP_NOMOVE) == 0) bounds.OffsetRect(x - bounds.left, y - bounds.top);
    if ((flags & SWP_NOSIZE) == 0) bounds = CRect(bounds.TopLeft(), {width, height});
    if ((flags & SWP_NOZORDER) == 0 && parent_ != nullptr && topLevel_ == nullptr) {
        std::erase(parent_->children_, this);
        parent_->children_.push_back(this);
        Invalidate();
    }
    const std::weak_ptr<bool> life = life_;
    SetBounds(bounds);
    return !life.expired() && session_ != nullptr;
}

bool CWnd::ShowWindow(int show) {
    const bool before = (style_ & WS_VISIBLE) != 0;
    const bool now = show != SW_HIDE;
    if (session_ == nullptr || before == now) return before;
    const std::weak_ptr<bool> life = life_;
    SendMessage(WM_SHOWWINDOW, now ? 1 : 0);
    if (life.expired() || session_ == nullptr) return before;
    style_ = now ? style_ | WS_VISIBLE : style_ & ~WS_VISIBLE;
    if (now) {
        InvalidateWithChildren();
    } else {
        TakeFocusAway();
        if (life.expired() || session_ == nullptr) return before;
        if (topLevel_ == nullptr && parent_ != nullptr) parent_->InvalidateRect(&bounds_);
    }
    if (topLevel_ != nullptr && topLevel_->native() != nullptr) topLevel_->native()->Show(now);
    return before;
}

bool CWnd::IsWindowVisible() const {
    for (const CWnd* at = this; at != nullptr; at = at->parent_) {
        if (at->session_ == nullptr || (at->style_ & WS_VISIBLE) == 0) return false;
        if (at->topLevel_ != nullptr) return true;
    }
    return false;
}

bool CWnd::IsOrHolds(const CWnd* other) const {
    while (other != nullptr && other != this)
        other = other->parent_;
    return other != nullptr;
}

TopLevel* CWnd::FindTopLevel(CPoint* offset) const {
    const CWnd* at = this;
    CPoint place;
    for (; at != nullptr && at->topLevel_ == nullptr; at = at->parent_)
        place = place + at->bounds_.TopLeft();
    if (offset != nullptr) *offset = place;
    return at != nullptr ? at->topLevel_.get() : nullptr;
}

std::uintptr_t CWnd::NativeId() const {
    const TopLevel* top = FindTopLevel();
    if (top == nullptr || top->native() == nullptr) return 0;
    top->native()->ScreenPosition(); // the system answers this after all that was asked before
    return top->native()->NativeId();
}

CWnd* CWnd::WindowAt(CPoint point) {
    if (!CRect({0, 0}, bounds_.Size()).PtInRect(point)) return nullptr;
    for (auto it = children_.rbegin(); it != children_.rend(); ++it) {
        CWnd& child = **it;
        if ((child.style_ & (WS_VISIBLE | WS_DISABLED)) == WS_VISIBLE && child.bounds_.PtInRect(point))
            return child.WindowAt(point - child.bounds_.TopLeft());
    }
    return this;
}

CRgn CWnd::VisiblePart() const {
    CRgn part(CRect({0, 0}, bounds_.Size()));
    for (const CWnd* child : children_)
        if ((child->style_ & WS_VISIBLE) != 0) part.Subtract(child->bounds_);
    for (const CWnd* at = this;; at = at->parent_) {
        if ((at->style_ & WS_VISIBLE) == 0) return {};
        if (at->topLevel_ != nullptr) return part;
        const CWnd* parent = at->parent_;
        if (parent == nullptr) return {};
        part.OffsetRgn(at->bounds_.TopLeft());
        part.Intersect(CRect({0, 0}, parent->bounds_.Size()));
        const auto self = std::find(parent->children_.begin(), parent->children_.end(), at);
        for (auto above = self; above != parent->children_.end(); ++above)
            if (*above != at && ((*above)->style_ & WS_VISIBLE) != 0) part.Subtract((*above)->bounds_);
    }
}

// --- Painting

void CWnd::Invalidate(bool erase) { InvalidateRect(nullptr, erase); }

void CWnd::InvalidateRect(const CRect* rect, bool /*erase*/) {
    if (session_ == nullptr) return;
    const CRect client({0, 0}, bounds_.Size());
    CRect area = client;
    if (rect != nullptr && !area.IntersectRect(*rect, client)) return;
    (painting_ ? late_ : update_).Add(area);
}

void CWnd::InvalidateWithChildren() {
    Invalidate();
    for (CWnd* child : children_)
        child->InvalidateWithChildren();
}

void CWnd::PaintInvalid() {
    if (update_.IsEmpty()) return;
    if (VisiblePart().IsEmpty()) {
        update_.DeleteObject();
        return;
    }
    const std::weak_ptr<bool> life = life_;
    painting_ = true;
    {
        CPaintDC ground(this);
        SendMessage(WM_ERASEBKGND, reinterpret_cast<WPARAM>(static_cast<CDC*>(&ground)));
    }
    if (!life.expired()) SendMessage(WM_PAINT);
    if (life.expired()) return;
    painting_ = false;
    update_ = std::exchange(late_, CRgn());
}

bool CWnd::BeginPaint(CRgn& invalid) {
    invalid = painting_ ? update_ : CRgn(CRect({0, 0}, bounds_.Size()));
    if (!painting_) update_.DeleteObject();
    return painting_;
}

// --- Messages

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (session_ == nullptr) return 0;
    const std::shared_ptr<WindowSession> keep = session_->weak_from_this().lock();
    const WindowSession::Scope scope(*session_);
    const std::weak_ptr<bool> life = life_;
    const MSG before = std::exchange(current_, {this, message, wParam, lParam});
    const LRESULT answer = WindowProc(message, wParam, lParam);
    if (!life.expired()) current_ = before;
    return answer;
}

bool CWnd::PostMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    if (session_ == nullptr) return false;
    session_->queue().Post(this, life_, message, wParam, lParam);
    return true;
}

void CWnd::Defer(std::function<void()> action) {
    if (session_ != nullptr) session_->queue().Post(life_, std::move(action));
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
        if (parent_ != nullptr && topLevel_ == nullptr)
            return parent_->SendMessage(message, wParam,
                                        (CPoint::FromMessage(lParam) + bounds_.TopLeft()).ToMessage());
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

UINT CWnd::SetTimer(UINT id, UINT elapse, void* /*callback*/) {
    if (session_ == nullptr) return 0;
    timer_ = std::make_unique<TimerThread>(elapse);
    session_->AddTimer(*this);
    return id;
}

bool CWnd::KillTimer(UINT /*id*/) {
    const bool ran = timer_ != nullptr;
    timer_.reset();
    return ran;
}

void CWnd::SendTimerTick() {
    if (timer_ != nullptr && timer_->TakeTick()) SendMessage(WM_TIMER);
}

CWnd* CWnd::SetCapture() {
    CWnd* before = GetCapture();
    if (session_ != nullptr) session_->mouse().SetCapture(this);
    return before;
}

CWnd* CWnd::GetCapture() const { return session_ != nullptr ? session_->mouse().capture() : nullptr; }

void CWnd::ReleaseCapture() {
    if (session_ != nullptr) session_->mouse().SetCapture(nullptr);
}

CWnd* CWnd::SetFocus() {
    TopLevel* top = destroying_ ? nullptr : FindTopLevel();
    if (top == nullptr) return nullptr;
    CWnd* before = top->focus();
    top->SetFocus(this);
    return before;
}

CWnd* CWnd::GetFocus() const {
    const TopLevel* top = FindTopLevel();
    return top != nullptr ? top->focus() : nullptr;
}

void CWnd::TakeFocusAway() {
    TopLevel* top = FindTopLevel();
    if (top != nullptr && IsOrHolds(top->focus())) top->SetFocus(nullptr);
}

HCURSOR CWnd::CursorAt(CPoint /*point*/) const { return class_.cursor; }

// --- Family and text

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
    if (redraw) Invalidate();
}

} // namespace vocafade
