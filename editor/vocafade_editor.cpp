// SPDX-License-Identifier: MIT
#include "editor/vocafade_editor.h"

#include "editor/resource_ids.h"
#include "editor/ui_window.h"
#include "effect/avocafade.h"
#include "ui/frame_wnd.h"
#include "ui/gdi.h"
#include "ui/platform/scale.h"

#include <limits>

namespace vocafade {

/// What lives from `open` to `close`.
struct CVocafadeEditor::Windows {
    ~Windows() {
        if (panel != nullptr) panel->DestroyWindow();
        panel.reset();
        hostFrame.DetachHost();
    }
    CFrameWnd hostFrame; ///< around the host's window
    std::unique_ptr<CUIWindow> panel;
};

/// Work that may call the host, which may close the editor meanwhile.
class CVocafadeEditor::Busy {
  public:
    explicit Busy(CVocafadeEditor& editor) : editor_(editor) { ++editor_.busy_; }
    ~Busy() {
        if (--editor_.busy_ == 0) editor_.retired_.clear();
    }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

  private:
    CVocafadeEditor& editor_;
};

CVocafadeEditor::CVocafadeEditor(AudioEffect* owner) : AEffEditor(owner) {
    CKVBBitmap background; // for its size; the panel has its own, of the scale that it is drawn at
    background.LoadResourceBitmap(resource::kBackground);
    size_ = {background.Width(), background.Height()};
    owner->setEditor(this);
    resizeHost_ = [this](CSize size) { return vocafade().sizeWindow(size.cx, size.cy); };
    vocafade().SetListener(this);
    vocafade().SetMessageHook(
        [this](std::int32_t stringId, const std::string& path) { ShowMessage(stringId, path); });
}

CVocafadeEditor::~CVocafadeEditor() { CVocafadeEditor::close(); }

AVocafade& CVocafadeEditor::vocafade() { return static_cast<AVocafade&>(*effect); }

double CVocafadeEditor::WantedScale() const {
    return wantedScale_.Wanted([this] {
        return windows_ != nullptr ? windows_->hostFrame.DesktopScale() : CFrameWnd().DesktopScale();
    });
}

void CVocafadeEditor::TellSizeAt(double scale) {
    scale_ = scale;
    const CSize size = platform::ToDevice(size_, scale);
    constexpr int kMost = std::numeric_limits<std::int16_t>::max();
    rect_ = {0, 0, static_cast<std::int16_t>(std::min(size.cy, kMost)),
             static_cast<std::int16_t>(std::min(size.cx, kMost))};
}

bool CVocafadeEditor::getRect(ERect** bounds) {
    if (windows_ == nullptr) TellSizeAt(WantedScale());
    *bounds = &rect_;
    return true;
}

bool CVocafadeEditor::open(void* ptr) {
    if (windows_ != nullptr) return true;
    const Busy working(*this);
    auto windows = std::make_unique<Windows>();
    if (!windows->hostFrame.AttachHost(ptr)) return false;
    // What the host was told a moment ago holds: it has made its window by that.
    if (scale_ == 0) TellSizeAt(wantedScale_.Wanted([&] { return windows->hostFrame.DesktopScale(); }));
    windows->hostFrame.SetScale(scale_);
    windows->panel = std::make_unique<CUIWindow>();
    if (!windows->panel->MakeWindow(&windows->hostFrame, this)) return false;
    windows->panel->MoveWindow(0, 0, size_.cx, size_.cy, true);
    refused_ = 0;
    systemWindow = ptr;
    windows_ = std::move(windows);
    windowThread_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    return true;
}

void CVocafadeEditor::close() {
    systemWindow = nullptr;
    scale_ = 0;
    windowThread_.store(std::thread::id(), std::memory_order_relaxed);
    if (windows_ == nullptr) return;
    retired_.push_back(std::move(windows_));
    if (busy_ == 0) retired_.clear();
}

void CVocafadeEditor::idle() {
    const Busy working(*this);
    // Before the events, so that what the panel finds changed is painted in the same idle.
    if (windows_ != nullptr) windows_->panel->idle();
    if (windows_ != nullptr) windows_->hostFrame.Idle();
    FollowScale();
}

bool CVocafadeEditor::setContentScale(float scale) {
    wantedScale_.SetHost(scale);
    return true;
}

void CVocafadeEditor::FollowScale() {
    if (windows_ == nullptr) return;
    const double wanted = WantedScale();
    if (wanted == scale_) refused_ = 0;
    if (wanted == scale_ || wanted == refused_) return;
    const double before = scale_;
    TellSizeAt(wanted); // the host may ask for it meanwhile
    const bool resized = resizeHost_ && resizeHost_(platform::ToDevice(size_, wanted));
    if (windows_ == nullptr) return; // the host has closed the editor over it
    if (resized) {
        windows_->hostFrame.SetScale(wanted);
    } else {
        TellSizeAt(before);
        refused_ = wanted;
    }
}

std::uintptr_t CVocafadeEditor::NativeWindow() {
    return windows_ != nullptr ? windows_->panel->NativeId() : 0;
}

bool CVocafadeEditor::IsHeld() const {
    return windows_ != nullptr && windows_->panel->GetCapture() != nullptr;
}

void CVocafadeEditor::draw(ERect*) {
    const Busy working(*this);
    if (windows_ != nullptr) windows_->panel->SendMessage(WM_PAINT);
}

CUIWindow* CVocafadeEditor::PanelOfThisThread() {
    if (windowThread_.load(std::memory_order_relaxed) != std::this_thread::get_id()) return nullptr;
    return windows_ != nullptr ? windows_->panel.get() : nullptr;
}

void CVocafadeEditor::UpdateControl(std::int32_t index, float value) {
    if (CUIWindow* panel = PanelOfThisThread()) panel->UpdateControl(index, value);
}

void CVocafadeEditor::UpdateModify() {
    if (CUIWindow* panel = PanelOfThisThread()) panel->UpdateModify();
}

void CVocafadeEditor::ShowMessage(std::int32_t stringId, const std::string& path) {
    if (windows_ != nullptr) windows_->panel->ShowMessage(stringId, path);
}

AEffEditor* MakeVocafadeEditor(AudioEffect* owner) { return new CVocafadeEditor(owner); }

} // namespace vocafade
