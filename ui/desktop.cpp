// SPDX-License-Identifier: MIT
#include "ui/desktop.h"

#include "ui/dialog.h"
#include "ui/frame_wnd.h"
#include "ui/popup.h"
#include "ui/timer_thread.h"

#include <algorithm>
#include <utility>

namespace vocafade {
namespace {

/// The desktop whose message this thread is handling. A plain pointer: nothing has to be destroyed for it
/// when the library is unloaded while the thread goes on.
thread_local Desktop* currentDesktop = nullptr;

struct OpenDesktops {
    std::mutex lock;
    std::vector<std::pair<std::thread::id, Desktop*>> all;
};

OpenDesktops& TheOpenDesktops() {
    static OpenDesktops desktops;
    return desktops;
}

bool IsOrIsAbove(const CWnd& window, const CWnd* other) {
    for (; other != nullptr; other = other->GetParent())
        if (other == &window) return true;
    return false;
}

/// The code point at the start of `text` (valid UTF-8), which is taken off; 0 when there is none.
UINT TakeCodePoint(std::string_view& text) {
    if (text.empty()) return 0;
    const auto first = static_cast<unsigned char>(text[0]);
    const int length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    UINT value = length == 1 ? first : first & (0xFFU >> (length + 1));
    for (int i = 1; i < length && static_cast<std::size_t>(i) < text.size(); ++i)
        value = (value << 6) | (static_cast<unsigned char>(text[static_cast<std::size_t>(i)]) & 0x3FU);
    text.remove_prefix(std::min<std::size_t>(text.size(), static_cast<std::size_t>(length)));
    return value;
}

/// What a key that types nothing sends as WM_CHAR; 0 for nothing.
UINT CharacterOf(UINT key, UINT& flags) {
    flags = 0;
    switch (key) {
    case kKeyBackspace:
        return 8;
    case kKeyTab:
        return 9;
    case kKeyReturn:
    case kKeyKeypadEnter:
        return 13;
    case kKeyEscape:
        return 27;
    case kKeyLeft:
        flags = kCharArrow;
        return 37;
    case kKeyRight:
        flags = kCharArrow;
        return 39;
    default:
        return 0;
    }
}

} // namespace

Desktop::Scope::Scope(Desktop& desktop) : before_(currentDesktop) { currentDesktop = &desktop; }
Desktop::Scope::~Scope() { currentDesktop = before_; }

std::shared_ptr<Desktop> Desktop::Open(std::uintptr_t host, CFrameWnd& frame, CSize& size) {
    std::unique_ptr<platform::Display> display = platform::OpenDisplay();
    if (display == nullptr || !display->WatchHost(host, size)) return nullptr;
    return std::shared_ptr<Desktop>(new Desktop(std::move(display), frame, host));
}

Desktop::Desktop(std::unique_ptr<platform::Display> display, CFrameWnd& frame, std::uintptr_t host)
    : display_(std::move(display)), frame_(frame), host_(host), thread_(std::this_thread::get_id()) {
    OpenDesktops& open = TheOpenDesktops();
    const std::scoped_lock lock(open.lock);
    open.all.emplace_back(thread_, this);
}

Desktop::~Desktop() { Close(); }

Desktop* Desktop::Current() {
    if (currentDesktop != nullptr && !currentDesktop->closed_) return currentDesktop;
    OpenDesktops& open = TheOpenDesktops();
    const std::scoped_lock lock(open.lock);
    for (auto it = open.all.rbegin(); it != open.all.rend(); ++it)
        if (it->first == std::this_thread::get_id()) return it->second;
    return nullptr;
}

void Desktop::Close() {
    if (closed_) return;
    closed_ = true;
    {
        OpenDesktops& open = TheOpenDesktops();
        const std::scoped_lock lock(open.lock);
        std::erase_if(open.all, [this](const auto& entry) { return entry.second == this; });
    }
    popup_.reset();
    while (!modal_.empty())
        modal_.back()->Abandon();
    while (!tops_.empty()) {
        CWnd* top = tops_.back();
        if (top->DestroyWindow()) continue;
        // It is being destroyed already, and somewhere below that the editor was closed.
        top->root_->window.reset();
        std::erase(tops_, top);
    }
    adopted_.clear();
    buried_.clear();
    {
        const std::scoped_lock lock(queueLock_);
        queue_.clear();
        creations_.clear();
    }
    display_.reset();
    if (currentDesktop == this) currentDesktop = nullptr;
}

// --- Windows
// ---------------------------------------------------------------------------------------------------------

bool Desktop::MakeNative(CWnd& window, platform::WindowKind kind, CWnd* owner, const CRect& bounds,
                         const char* title) {
    if (closed_) return false;
    auto root = std::make_unique<NativeRoot>();
    platform::WindowRequest request{kind, host_, 0, bounds, title != nullptr ? title : ""};
    if (const CWnd* top = RootOf(owner); top != nullptr && top->root_->window != nullptr)
        request.owner = top->root_->window->NativeId();
    root->window = display_->MakeWindow(request);
    if (root->window == nullptr && kind != platform::WindowKind::embedded) return false;
    root->kind = kind;
    root->owner = owner;
    std::unique_ptr<platform::Surface> surface =
        platform::MakeSurface(std::max(1, bounds.Width()), std::max(1, bounds.Height()));
    if (surface == nullptr) return false;
    root->canvas = std::make_shared<Canvas>(std::move(surface));
    window.root_ = std::move(root);
    tops_.push_back(&window);
    return true;
}

void Desktop::Forget(CWnd& window) {
    if (capture_ == &window) {
        capture_ = nullptr;
        pressOpen_ = false;
    }
    if (lastPress_ && lastPress_->top == &window) lastPress_->top = nullptr;
    std::erase(timers_, &window);
    std::erase(tops_, &window);
    for (CWnd* top : tops_)
        if (top->root_->focus == &window) SetFocus(top, nullptr);
    {
        const std::scoped_lock lock(queueLock_);
        std::erase_if(queue_, [&](const Posted& p) { return p.target == &window; });
    }
    CloseOwnedBy(window);
}

void Desktop::CloseOwnedBy(const CWnd& window) {
    if (popup_ != nullptr && IsOrIsAbove(window, popup_->owner())) ClosePopup();
    for (std::size_t i = modal_.size(); i-- > 0;) {
        if (i >= modal_.size()) continue;
        if (modal_[i]->owner_ != nullptr && IsOrIsAbove(window, modal_[i]->owner_)) modal_[i]->Abandon();
    }
}

CWnd* Desktop::RootOf(const CWnd* window, CPoint* offset) {
    CPoint at;
    for (; window != nullptr && window->root_ == nullptr; window = window->parent_)
        at = at + window->bounds_.TopLeft();
    if (offset != nullptr) *offset = at;
    return const_cast<CWnd*>(window);
}

CRgn Desktop::VisiblePart(const CWnd& window) {
    CRgn part(CRect({0, 0}, window.bounds_.Size()));
    for (const CWnd* child : window.children_)
        if ((child->style_ & WS_VISIBLE) != 0) part.Subtract(child->bounds_);
    const CWnd* at = &window;
    for (;; at = at->parent_) {
        if ((at->style_ & WS_VISIBLE) == 0) return {};
        if (at->root_ != nullptr) return part;
        const CWnd* parent = at->parent_;
        if (parent == nullptr) return {};
        part.OffsetRgn(at->bounds_.left, at->bounds_.top);
        part.Intersect(CRect({0, 0}, parent->bounds_.Size()));
        const auto self = std::find(parent->children_.begin(), parent->children_.end(), at);
        for (auto above = self; above != parent->children_.end(); ++above)
            if (*above != at && ((*above)->style_ & WS_VISIBLE) != 0) part.Subtract((*above)->bounds_);
    }
}

CWnd* Desktop::TopOf(const platform::Window* window) const {
    for (CWnd* top : tops_)
        if (top->root_->window.get() == window) return top;
    return nullptr;
}

CWnd* Desktop::MainWindow() const {
    for (CWnd* top : tops_)
        if (top->root_->kind == platform::WindowKind::embedded) return top;
    return nullptr;
}

void Desktop::AddTimer(CWnd& window) {
    if (std::find(timers_.begin(), timers_.end(), &window) == timers_.end()) timers_.push_back(&window);
}

short Desktop::KeyState(int key) const {
    bool down = false;
    switch (key) {
    case VK_SHIFT:
        down = shift_;
        break;
    case VK_CONTROL:
        down = control_;
        break;
    case VK_MENU:
        down = alt_;
        break;
    case VK_LBUTTON:
        down = leftButton_;
        break;
    default:
        break;
    }
    return down ? static_cast<short>(-32768) : short{0};
}

// --- Focus
// -----------------------------------------------------------------------------------------------------------

void Desktop::SetFocus(CWnd* top, CWnd* window) {
    if (top == nullptr || top->root_ == nullptr) return;
    NativeRoot& root = *top->root_;
    const bool embedded = root.kind == platform::WindowKind::embedded;
    if (window != nullptr && embedded && window->WantsKeyboard() && root.window != nullptr)
        root.window->TakeKeyboard();
    CWnd* before = root.focus;
    if (before == window) {
        TellFocus(*top, window != nullptr, nullptr);
        return;
    }
    const std::shared_ptr<bool> topAlive = top->alive_;
    const std::weak_ptr<bool> windowAlive = window != nullptr ? window->alive_ : nullptr;
    TellFocus(*top, false, window);
    if (!*topAlive || top->root_ == nullptr) return;
    top->root_->focus = window != nullptr && !windowAlive.expired() && *windowAlive.lock() ? window : nullptr;
    TellFocus(*top, true, before);
    if (!*topAlive || top->root_ == nullptr) return;
    CWnd* now = top->root_->focus;
    if (embedded && (now == nullptr || !now->WantsKeyboard()) && top->root_->window != nullptr)
        top->root_->window->GiveKeyboardBack();
}

void Desktop::TellFocus(CWnd& top, bool gained, CWnd* other) {
    NativeRoot& root = *top.root_;
    if (root.focusTold == gained) return;
    root.focusTold = gained && root.focus != nullptr;
    if (root.focus != nullptr)
        root.focus->SendMessage(gained ? WM_SETFOCUS : WM_KILLFOCUS, reinterpret_cast<WPARAM>(other));
}

void Desktop::HandleFocus(CWnd& top, bool gained) { TellFocus(top, gained, nullptr); }

// --- Painting
// --------------------------------------------------------------------------------------------------------

void Desktop::Paint(CWnd& window) {
    if (painting_ || window.update_.IsEmpty()) return;
    if (VisiblePart(window).IsEmpty()) {
        window.update_.DeleteObject();
        return;
    }
    const std::shared_ptr<bool> alive = window.alive_;
    painting_ = true;
    window.painting_ = true;
    {
        CPaintDC ground(&window);
        window.SendMessage(WM_ERASEBKGND, reinterpret_cast<WPARAM>(static_cast<CDC*>(&ground)));
    }
    if (*alive) window.SendMessage(WM_PAINT);
    painting_ = false;
    if (!*alive) return;
    window.painting_ = false;
    window.update_ = std::exchange(window.late_, CRgn());
}

void Desktop::PaintTree(CWnd& window) {
    if ((window.style_ & WS_VISIBLE) == 0) return;
    const std::shared_ptr<bool> alive = window.alive_;
    Paint(window);
    for (std::size_t i = 0; *alive && i < window.children_.size(); ++i)
        PaintTree(*window.children_[i]);
}

void Desktop::PaintAll() {
    if (painting_ || !IsDisplayAlive()) return;
    for (std::size_t i = 0; i < tops_.size(); ++i)
        if (tops_[i]->root_->window != nullptr && tops_[i]->root_->window->NativeId() != 0)
            PaintTree(*tops_[i]);
}

void Desktop::PresentAll() {
    if (!IsDisplayAlive()) return;
    for (CWnd* top : tops_) {
        Canvas& canvas = *top->root_->canvas;
        if (canvas.damage.IsEmpty()) continue;
        if (top->root_->window != nullptr && canvas.surface != nullptr)
            top->root_->window->Present(*canvas.surface, canvas.damage.rects());
        canvas.damage.DeleteObject();
    }
    display_->Flush();
}

void Desktop::PresentSoon() {
    if (depth_ == 0 && !painting_ && !closed_) PresentAll();
}

// --- The pump
// --------------------------------------------------------------------------------------------------------

void Desktop::Idle() {
    if (closed_) return;
    const std::shared_ptr<Desktop> keep = shared_from_this();
    const Scope scope(*this);
    ++depth_;
    platform::Event event;
    while (!closed_ && display_->NextEvent(event))
        Handle(event);
    if (!closed_) CheckHeldButton();
    if (!closed_) RunTimers();
    if (!closed_) RunQueue();
    if (!closed_) PaintAll();
    if (!closed_) PresentAll();
    --depth_;
    if (depth_ == 0) buried_.clear();
}

void Desktop::RunTimers() {
    for (std::size_t i = 0; i < timers_.size() && !closed_; ++i) {
        CWnd* window = timers_[i];
        if (window->timer_ != nullptr && window->timer_->TakeTick()) window->SendMessage(WM_TIMER);
    }
}

void Desktop::RunQueue() {
    // What is posted meanwhile waits for the next idle, or a message that posts itself would hold the host
    // up.
    std::vector<Posted> now;
    {
        const std::scoped_lock lock(queueLock_);
        now.swap(queue_);
    }
    for (Posted& posted : now) {
        if (closed_) return;
        const std::shared_ptr<bool> alive = posted.alive.lock();
        if (posted.target == nullptr && posted.message == WM_DEFERRED_CREATE) {
            std::vector<Posted> creations;
            {
                const std::scoped_lock lock(queueLock_);
                creations.swap(creations_);
            }
            for (const Posted& creation : creations) {
                const std::shared_ptr<bool> wanted = creation.alive.lock();
                if (!closed_ && wanted != nullptr && *wanted) creation.action();
            }
            continue;
        }
        if (alive == nullptr || !*alive) continue;
        if (posted.action) {
            posted.action();
        } else if (posted.target != nullptr) {
            posted.target->SendMessage(posted.message, posted.wParam, posted.lParam);
        }
    }
}

void Desktop::Post(CWnd* target, std::weak_ptr<bool> alive, UINT message, WPARAM wParam, LPARAM lParam) {
    const std::scoped_lock lock(queueLock_);
    queue_.push_back({target, std::move(alive), message, wParam, lParam, {}});
}

void Desktop::PostAction(std::weak_ptr<bool> alive, std::function<void()> action) {
    const std::scoped_lock lock(queueLock_);
    queue_.push_back({nullptr, std::move(alive), 0, 0, 0, std::move(action)});
}

void Desktop::DeferCreate(std::weak_ptr<bool> alive, std::function<void()> create) {
    {
        const std::scoped_lock lock(queueLock_);
        creations_.push_back({nullptr, std::move(alive), 0, 0, 0, std::move(create)});
    }
    Post(nullptr, {}, WM_DEFERRED_CREATE, 0, 0);
}

// --- What the display tells
// ------------------------------------------------------------------------------------------

void Desktop::Handle(const platform::Event& event) {
    using platform::EventType;
    if (event.type == EventType::parentResized) {
        frame_.SetBounds(event.area);
        return;
    }
    // A button that is pressed again, or is not held while the mouse moves, was released unseen.
    if (event.type == EventType::pressed ? event.button == 1
                                         : event.type == EventType::moved && !event.leftButton)
        LoseRelease();
    CWnd* top = TopOf(event.window);
    if (top == nullptr || closed_) return;
    switch (event.type) {
    case EventType::pressed:
    case EventType::released:
    case EventType::moved:
    case EventType::wheel:
    case EventType::keyPressed:
    case EventType::keyReleased:
        shift_ = event.shift;
        control_ = event.control;
        alt_ = event.alt;
        leftButton_ = event.leftButton;
        break;
    default:
        break;
    }
    switch (event.type) {
    case EventType::pressed:
        HandlePress(*top, event);
        break;
    case EventType::released:
    case EventType::moved:
    case EventType::wheel:
        HandleMouse(*top, event);
        break;
    case EventType::keyPressed:
    case EventType::keyReleased:
        HandleKey(*top, event);
        break;
    case EventType::focusGained:
        HandleFocus(*top, true);
        break;
    case EventType::focusLost:
        HandleFocus(*top, false);
        break;
    case EventType::exposed: {
        // The picture is still there: nobody has to draw it again.
        CRect area;
        if (area.IntersectRect(event.area, {0, 0, top->bounds_.Width(), top->bounds_.Height()}))
            top->root_->canvas->damage.Add(area);
        break;
    }
    case EventType::closeAsked:
        // The panel inside the host's window is closed by the host alone.
        if (!IsBlocked(*top) && top->root_->kind != platform::WindowKind::embedded)
            top->SendMessage(WM_CLOSE);
        break;
    case EventType::destroyed:
        HandleDestroyed(*top);
        break;
    case EventType::inputLost:
        // Put off: if the reason is the owner's end, that comes next and takes the popup with it.
        if (popup_.get() == top) popup_->Defer([popup = popup_.get()] { popup->Cancel(); });
        break;
    case EventType::clipboard:
        if (CWnd* focus = top->root_->focus) {
            std::string valid = platform::ValidUtf8(event.text);
            std::string_view text = valid;
            const std::shared_ptr<bool> alive = focus->alive_;
            while (!text.empty() && *alive) {
                const UINT character = TakeCodePoint(text);
                if (character == '\r' || character == '\n') break; // one line
                if (character >= 0x20) focus->SendMessage(WM_CHAR, character, 1);
            }
        }
        break;
    default:
        break;
    }
}

bool Desktop::IsBlocked(const CWnd& top) const {
    if (popup_ != nullptr && popup_.get() != &top) return true;
    if (modal_.empty() || popup_.get() == &top) return false;
    return static_cast<const CWnd*>(modal_.back()) != &top;
}

void Desktop::SendKey(CWnd& top, UINT message, WPARAM wParam, LPARAM lParam) {
    CWnd* target = top.root_->focus != nullptr ? top.root_->focus : &top;
    MSG msg{target, message, wParam, lParam};
    const std::shared_ptr<bool> alive = target->alive_;
    for (CWnd* at = target; at != nullptr; at = at->parent_) {
        if (at->PreTranslateMessage(&msg)) return;
        if (!*alive || target->desktop_ == nullptr) return;
    }
    target->SendMessage(message, wParam, lParam);
}

void Desktop::HandleKey(CWnd& top, const platform::Event& event) {
    if (IsBlocked(top)) return;
    if (event.type == platform::EventType::keyReleased) {
        SendKey(top, WM_KEYUP, event.key, 1);
        return;
    }
    const std::shared_ptr<bool> alive = top.alive_;
    CWnd* focus = top.root_->focus;
    // The character goes where the key went, not to what the key has opened.
    const auto same = [&] { return !closed_ && *alive && top.root_ != nullptr && top.root_->focus == focus; };
    SendKey(top, WM_KEYDOWN, event.key, 1);
    if (event.keyTyped) {
        const LPARAM flags = event.key == kKeyKeypadDecimal ? kCharKeypadDecimal : 0;
        for (std::string_view text = event.text; !text.empty() && same();)
            SendKey(top, WM_CHAR, TakeCodePoint(text), 1 | (flags << 16));
    } else if (same()) {
        UINT flags = 0;
        const UINT character = CharacterOf(event.key, flags);
        if (character != 0) SendKey(top, WM_CHAR, character, 1 | (static_cast<LPARAM>(flags) << 16));
    }
}

void Desktop::HandleDestroyed(CWnd& top) {
    CloseOwnedBy(top);
    if (capture_ != nullptr && RootOf(capture_) == &top) SetCapture(nullptr);
    TellFocus(top, false, nullptr);
    if (popup_.get() == &top) ClosePopup();
    for (CDialog* dialog : modal_) {
        if (dialog != &top) continue;
        dialog->EndDialog(IDCANCEL);
        break;
    }
}

// --- Menus and dialogs
// -----------------------------------------------------------------------------------------------

void Desktop::OpenPopup(std::unique_ptr<PopupWnd> popup) {
    if (popup_ != nullptr) popup_->Cancel();
    popup_ = std::move(popup);
}

void Desktop::ClosePopup() {
    if (popup_ == nullptr) return;
    std::unique_ptr<PopupWnd> gone = std::move(popup_);
    if (capture_ == nullptr) pressOpen_ = false;
    gone->DestroyWindow();
    Bury(std::move(gone));
}

void Desktop::RemoveModal(CDialog& dialog) {
    // A drag that somebody has captured goes on; any other press that is held now was for what goes away.
    if (std::erase(modal_, &dialog) != 0 && capture_ == nullptr) pressOpen_ = false;
}

void Desktop::Bury(std::unique_ptr<CWnd> object) {
    if (depth_ > 0) buried_.push_back(std::move(object));
}

void Desktop::Adopt(std::unique_ptr<CDialog> dialog) { adopted_.push_back(std::move(dialog)); }

void Desktop::Disown(CDialog& dialog) {
    const auto found = std::find_if(adopted_.begin(), adopted_.end(),
                                    [&](const std::unique_ptr<CDialog>& d) { return d.get() == &dialog; });
    if (found == adopted_.end()) return;
    Bury(std::move(*found));
    adopted_.erase(found);
}

} // namespace vocafade
