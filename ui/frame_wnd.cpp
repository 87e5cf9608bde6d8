// SPDX-License-Identifier: MIT
#include "ui/frame_wnd.h"

#include "ui/desktop.h"
#include "ui/timer_thread.h"

namespace vocafade {

CFrameWnd::CFrameWnd() = default;

CFrameWnd::~CFrameWnd() { DetachHost(); }

bool CFrameWnd::AttachHost(void* nativeWindow) {
    DetachHost();
    CSize size;
    owned_ = Desktop::Open(reinterpret_cast<std::uintptr_t>(nativeWindow), *this, size);
    if (owned_ == nullptr) return false;
    desktop_ = owned_.get();
    style_ |= WS_VISIBLE;
    bounds_ = CRect({0, 0}, size);
    return true;
}

void CFrameWnd::DetachHost() {
    // The pump may be the caller's caller: it keeps the desktop until it is done.
    const std::shared_ptr<Desktop> desktop = std::move(owned_);
    owned_.reset();
    if (desktop == nullptr) return;
    timer_.reset();
    desktop->Close();
    children_.clear();
    desktop_ = nullptr;
}

bool CFrameWnd::DestroyWindow() {
    const bool was = IsAttached();
    DetachHost();
    return was;
}

void CFrameWnd::Idle() {
    const std::shared_ptr<Desktop> desktop = owned_;
    if (desktop != nullptr) desktop->Idle();
}

bool CFrameWnd::IsDisplayAlive() const { return owned_ != nullptr && owned_->IsDisplayAlive(); }

} // namespace vocafade
