// SPDX-License-Identifier: MIT
#include "ui/top_level.h"

#include "ui/wnd.h"

#include <algorithm>

namespace vocafade {

TopLevel::TopLevel(CWnd& window, platform::WindowKind kind, CWnd* owner,
                   std::unique_ptr<platform::Window> native, std::unique_ptr<platform::Surface> surface)
    : window_(window), kind_(kind), owner_(owner), scale_(surface->Scale()), native_(std::move(native)),
      store_(std::make_shared<BackingStore>(std::move(surface))) {}

void TopLevel::SetScale(double scale) {
    scale_ = scale;
    const CRect& bounds = window_.bounds();
    store_ = MakeStore(bounds.Size());
    if (native_ == nullptr) return;
    native_->Resize(bounds.Size());
    native_->Move(bounds.TopLeft());
}

std::shared_ptr<BackingStore> TopLevel::MakeStore(CSize size) const {
    return std::make_shared<BackingStore>(
        platform::MakeSurface(std::max(1, size.cx), std::max(1, size.cy), scale_));
}

void TopLevel::SetBounds(const CRect& before, const CRect& now) {
    if (before.Size() != now.Size()) {
        store_ = MakeStore(now.Size());
        if (native_ != nullptr) native_->Resize(now.Size());
    }
    if (native_ != nullptr && before.TopLeft() != now.TopLeft()) native_->Move(now.TopLeft());
}

void TopLevel::Expose(const CRect& area) {
    // The picture is still there: nobody has to draw it again.
    CRect inside;
    if (inside.IntersectRect(area, {{0, 0}, window_.bounds().Size()})) store_->damage.Add(inside);
}

void TopLevel::Present() {
    if (store_->damage.IsEmpty()) return;
    if (native_ != nullptr && store_->surface != nullptr)
        native_->Present(*store_->surface, store_->damage.rects());
    store_->damage.DeleteObject();
}

void TopLevel::Close() {
    closed_ = true;
    focus_ = nullptr;
    native_.reset();
}

void TopLevel::SetFocus(CWnd* window) {
    const std::shared_ptr<TopLevel> keep = shared_from_this();
    if (window != nullptr && isEmbedded() && window->WantsKeyboard() && native_ != nullptr)
        native_->TakeKeyboard();
    CWnd* before = focus_;
    if (before == window) {
        TellFocus(window != nullptr);
        return;
    }
    const std::weak_ptr<bool> life = window != nullptr ? window->LifeToken() : std::weak_ptr<bool>();
    TellFocus(false, window);
    if (closed_) return;
    focus_ = life.expired() ? nullptr : window;
    TellFocus(true, before);
    if (closed_ || !isEmbedded() || native_ == nullptr) return;
    if (focus_ == nullptr || !focus_->WantsKeyboard()) native_->GiveKeyboardBack();
}

void TopLevel::TellFocus(bool gained, CWnd* other) {
    if (focusTold_ == gained) return;
    focusTold_ = gained && focus_ != nullptr;
    if (focus_ != nullptr)
        focus_->SendMessage(gained ? WM_SETFOCUS : WM_KILLFOCUS, reinterpret_cast<WPARAM>(other));
}

} // namespace vocafade
