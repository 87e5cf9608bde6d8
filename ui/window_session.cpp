// SPDX-License-Identifier: MIT
#include "ui/window_session.h"

#include "ui/dialog.h"
#include "ui/frame_wnd.h"
#include "ui/popup.h"

#include <algorithm>
#include <mutex>
#include <thread>
#include <utility>

namespace vocafade {
namespace {

/// The session whose message this thread is handling. A plain pointer: nothing has to be destroyed for it
/// when the library is unloaded while the thread goes on.
thread_local WindowSession* currentSession = nullptr;

struct OpenSessions {
    std::mutex lock;
    std::vector<std::pair<std::thread::id, WindowSession*>> all;
};

OpenSessions& TheOpenSessions() {
    static OpenSessions sessions;
    return sessions;
}

} // namespace

// --- Life

WindowSession::Scope::Scope(WindowSession& session) : before_(currentSession) { currentSession = &session; }
WindowSession::Scope::~Scope() { currentSession = before_; }

std::shared_ptr<WindowSession> WindowSession::Open(std::uintptr_t host, CFrameWnd& frame, double scale,
                                                   CSize& size) {
    std::unique_ptr<platform::Display> display = platform::OpenDisplay();
    if (display == nullptr) return nullptr;
    display->SetScale(scale);
    if (!display->WatchHost(host, size)) return nullptr;
    return std::shared_ptr<WindowSession>(new WindowSession(std::move(display), frame, host, scale));
}

WindowSession::WindowSession(std::unique_ptr<platform::Display> display, CFrameWnd& frame,
                             std::uintptr_t host, double scale)
    : display_(std::move(display)), frame_(frame), host_(host), scale_(scale) {
    OpenSessions& open = TheOpenSessions();
    const std::scoped_lock lock(open.lock);
    open.all.emplace_back(std::this_thread::get_id(), this);
}

WindowSession::~WindowSession() { Close(); } // NOLINT(bugprone-exception-escape): lack of memory in a handler

WindowSession* WindowSession::Current() {
    if (currentSession != nullptr && !currentSession->closed_) return currentSession;
    OpenSessions& open = TheOpenSessions();
    const std::scoped_lock lock(open.lock);
    for (auto it = open.all.rbegin(); it != open.all.rend(); ++it)
        if (it->first == std::this_thread::get_id()) return it->second;
    return nullptr;
}

void WindowSession::Close() {
    if (closed_) return;
    closed_ = true;
    {
        OpenSessions& open = TheOpenSessions();
        const std::scoped_lock lock(open.lock);
        std::erase_if(open.all, [this](const auto& entry) { return entry.second == this; });
    }
    tooltips_.Cancel();
    popup_.reset();
    while (!modal_.empty())
        modal_.back()->Abandon();
    while (!topLevels_.empty()) {
        TopLevel* top = topLevels_.back();
        if (top->window().DestroyWindow()) continue;
        // It is being destroyed already, and somewhere below that the editor was closed.
        top->Close();
        std::erase(topLevels_, top);
    }
    adopted_.clear();
    buried_.clear();
    queue_.Clear();
    display_.reset();
    if (currentSession == this) currentSession = nullptr;
}

void WindowSession::SetScale(double scale) {
    if (closed_ || scale == scale_) return;
    const std::shared_ptr<WindowSession> keep = shared_from_this();
    tooltips_.Cancel();
    if (popup_ != nullptr) popup_->Cancel();
    if (closed_) return;
    scale_ = scale;
    display_->SetScale(scale);
    CSize size;
    if (display_->WatchHost(host_, size)) frame_.SetBounds({{0, 0}, size});
    for (std::size_t i = 0; i < topLevels_.size(); ++i) {
        const std::shared_ptr<TopLevel> top = topLevels_[i]->shared_from_this();
        top->SetScale(scale);
        top->window().SendMessage(WM_SCALECHANGED);
        if (!top->isClosed()) top->window().InvalidateWithChildren();
        if (closed_) return;
    }
}

// --- Windows

std::shared_ptr<TopLevel> WindowSession::MakeTopLevel(CWnd& window, platform::WindowKind kind, CWnd* owner,
                                                      const CRect& bounds, const char* title) {
    if (closed_) return nullptr;
    platform::WindowRequest request{kind, host_, 0, bounds, title != nullptr ? title : ""};
    const TopLevel* above = owner != nullptr ? owner->FindTopLevel() : nullptr;
    if (above != nullptr && above->native() != nullptr) request.owner = above->native()->NativeId();
    std::unique_ptr<platform::Window> native = display_->MakeWindow(request);
    if (native == nullptr && kind != platform::WindowKind::embedded) return nullptr;
    std::unique_ptr<platform::Surface> surface =
        platform::MakeSurface(std::max(1, bounds.Width()), std::max(1, bounds.Height()), scale_);
    if (surface == nullptr) return nullptr;
    auto top = std::make_shared<TopLevel>(window, kind, owner, std::move(native), std::move(surface));
    topLevels_.push_back(top.get());
    return top;
}

TopLevel* WindowSession::MainWindow() const {
    const auto found = std::find_if(topLevels_.begin(), topLevels_.end(),
                                    [](const TopLevel* top) { return top->isEmbedded(); });
    return found != topLevels_.end() ? *found : nullptr;
}

TopLevel* WindowSession::TopLevelOf(const platform::Window* native) const {
    const auto found = std::find_if(topLevels_.begin(), topLevels_.end(),
                                    [native](const TopLevel* top) { return top->native() == native; });
    return found != topLevels_.end() ? *found : nullptr;
}

void WindowSession::AddTimer(CWnd& window) {
    if (std::find(timers_.begin(), timers_.end(), &window) == timers_.end()) timers_.push_back(&window);
}

void WindowSession::Forget(CWnd& window) {
    mouse_.Forget(window);
    std::erase(timers_, &window);
    std::erase_if(topLevels_, [&window](const TopLevel* top) { return &top->window() == &window; });
    for (TopLevel* top : topLevels_)
        if (top->focus() == &window) top->SetFocus(nullptr);
    queue_.Forget(window);
    CloseOwnedBy(window);
}

void WindowSession::CloseOwnedBy(const CWnd& window) {
    tooltips_.Forget(window);
    if (popup_ != nullptr && window.IsOrHolds(popup_->owner())) ClosePopup();
    for (std::size_t i = modal_.size(); i-- > 0;)
        if (i < modal_.size() && window.IsOrHolds(modal_[i]->owner())) modal_[i]->Abandon();
}

// --- The pump

void WindowSession::Idle() {
    if (closed_) return;
    const std::shared_ptr<WindowSession> keep = shared_from_this();
    const Scope scope(*this);
    ++idles_;
    HandleEvents();
    if (!closed_) mouse_.CheckHeldButton();
    if (!closed_) tooltips_.Idle();
    SendTimerTicks();
    queue_.Run([this] { return closed_; });
    if (!closed_) painter_.PaintAll();
    if (!closed_) painter_.PresentAll();
    if (--idles_ == 0) buried_.clear();
}

void WindowSession::HandleEvents() {
    platform::Event event;
    while (!closed_ && display_->NextEvent(event))
        Handle(event);
}

void WindowSession::SendTimerTicks() {
    for (std::size_t i = 0; i < timers_.size() && !closed_; ++i)
        timers_[i]->SendTimerTick();
}

void WindowSession::Handle(const platform::Event& event) {
    using platform::EventType;
    if (event.type == EventType::parentResized) {
        frame_.SetBounds(event.area);
        return;
    }
    tooltips_.Handle(event);
    mouse_.LookForLostRelease(event);
    TopLevel* found = !closed_ && event.window != nullptr ? TopLevelOf(event.window) : nullptr;
    if (found == nullptr) return;
    TopLevel& top = *found;
    switch (event.type) {
    case EventType::pressed:
        keys_.NoteModifiers(event);
        mouse_.Press(top, event);
        break;
    case EventType::released:
    case EventType::moved:
    case EventType::wheel:
        keys_.NoteModifiers(event);
        mouse_.Handle(top, event);
        break;
    case EventType::keyPressed:
    case EventType::keyReleased:
        keys_.NoteModifiers(event);
        if (!IsBlocked(top)) KeyInput::Handle(top, event);
        break;
    case EventType::clipboard:
        KeyInput::Paste(top, event.text);
        break;
    case EventType::focusGained:
        top.TellFocus(true);
        break;
    case EventType::focusLost:
        top.TellFocus(false);
        break;
    case EventType::exposed:
        top.Expose(event.area);
        break;
    case EventType::closeAsked:
        // The panel inside the host's window is closed by the host alone.
        if (!IsBlocked(top) && !top.isEmbedded()) top.window().SendMessage(WM_CLOSE);
        break;
    case EventType::destroyed:
        HandleDestroyed(top);
        break;
    case EventType::inputLost:
        // Put off: if the reason is the owner's end, that comes next and takes the popup with it.
        if (IsPopup(top)) popup_->Defer([popup = popup_.get()] { popup->Cancel(); });
        break;
    default:
        break;
    }
}

void WindowSession::HandleDestroyed(TopLevel& top) {
    const std::shared_ptr<TopLevel> keep = top.shared_from_this();
    CloseOwnedBy(top.window());
    if (mouse_.capture() != nullptr && mouse_.capture()->FindTopLevel() == &top) mouse_.SetCapture(nullptr);
    top.TellFocus(false);
    if (IsPopup(top)) ClosePopup();
    for (CDialog* dialog : modal_) {
        if (dialog != &top.window()) continue;
        dialog->EndDialog(IDCANCEL);
        break;
    }
}

// --- Menus and dialogs

bool WindowSession::IsPopup(const TopLevel& top) const { return popup_.get() == &top.window(); }

bool WindowSession::IsBlocked(const TopLevel& top) const {
    if (popup_ != nullptr) return !IsPopup(top);
    return !modal_.empty() && modal_.back() != &top.window();
}

void WindowSession::RaiseDialog() {
    const TopLevel* top = popup_ == nullptr && !modal_.empty() ? modal_.back()->ownTopLevel() : nullptr;
    if (top != nullptr && top->native() != nullptr) top->native()->Raise();
}

void WindowSession::OpenPopup(std::unique_ptr<PopupWnd> popup) {
    if (popup_ != nullptr) popup_->Cancel();
    popup_ = std::move(popup);
}

void WindowSession::ClosePopup() {
    if (popup_ == nullptr) return;
    std::unique_ptr<PopupWnd> gone = std::move(popup_);
    mouse_.DropPress();
    gone->DestroyWindow();
    Bury(std::move(gone));
}

void WindowSession::RemoveModal(CDialog& dialog) {
    if (std::erase(modal_, &dialog) != 0) mouse_.DropPress();
}

void WindowSession::Adopt(std::unique_ptr<CDialog> dialog) { adopted_.push_back(std::move(dialog)); }

void WindowSession::Disown(CDialog& dialog) {
    const auto found = std::find_if(adopted_.begin(), adopted_.end(),
                                    [&](const std::unique_ptr<CDialog>& d) { return d.get() == &dialog; });
    if (found == adopted_.end()) return;
    Bury(std::move(*found));
    adopted_.erase(found);
}

void WindowSession::Bury(std::unique_ptr<CWnd> object) {
    if (IsIdling()) buried_.push_back(std::move(object));
}

} // namespace vocafade
