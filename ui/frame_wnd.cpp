// SPDX-License-Identifier: MIT
#include "ui/frame_wnd.h"

#include "ui/window_session.h"

#include <utility>

namespace vocafade {

CFrameWnd::CFrameWnd() = default;

CFrameWnd::~CFrameWnd() { DetachHost(); }

bool CFrameWnd::AttachHost(void* nativeWindow, double scale) {
    DetachHost();
    CSize size;
    owned_ = WindowSession::Open(reinterpret_cast<std::uintptr_t>(nativeWindow), *this, scale, size);
    if (owned_ == nullptr) return false;
    Attach(owned_.get(), CRect({0, 0}, size));
    return true;
}

void CFrameWnd::DetachHost() {
    // The pump may be the caller's caller: it keeps the session until it is done.
    const std::shared_ptr<WindowSession> session = std::exchange(owned_, nullptr);
    if (session == nullptr) return;
    session->Close();
    Attach(nullptr, bounds());
}

void CFrameWnd::SetScale(double scale) {
    const std::shared_ptr<WindowSession> session = owned_;
    if (session != nullptr) session->SetScale(scale);
}

double CFrameWnd::DesktopScale() const {
    if (owned_ != nullptr) return owned_->display() != nullptr ? owned_->display()->DesktopScale() : 0.0;
    const std::unique_ptr<platform::Display> display = platform::OpenDisplay();
    return display != nullptr ? display->DesktopScale() : 0.0;
}

bool CFrameWnd::DestroyWindow() {
    const bool was = IsAttached();
    DetachHost();
    return was;
}

void CFrameWnd::Idle() {
    const std::shared_ptr<WindowSession> session = owned_;
    if (session != nullptr) session->Idle();
}

bool CFrameWnd::IsDisplayAlive() const { return owned_ != nullptr && owned_->IsDisplayAlive(); }

} // namespace vocafade
