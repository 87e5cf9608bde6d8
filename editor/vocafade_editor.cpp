// SPDX-License-Identifier: MIT
#include "editor/vocafade_editor.h"

#include "editor/resource_ids.h"
#include "editor/ui_window.h"
#include "effect/avocafade.h"
#include "ui/frame_wnd.h"

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
    background_.LoadResourceBitmap(resource::kBackground, &bitmapHandle_);
    owner->setEditor(this);
    rect_ = {0, 0, static_cast<std::int16_t>(background_.Height()),
             static_cast<std::int16_t>(background_.Width())};
    vocafade().SetListener(this);
    vocafade().SetMessageHook(
        [this](std::int32_t stringId, const std::string& path) { ShowMessage(stringId, path); });
}

CVocafadeEditor::~CVocafadeEditor() { CVocafadeEditor::close(); }

AVocafade& CVocafadeEditor::vocafade() { return static_cast<AVocafade&>(*effect); }

bool CVocafadeEditor::getRect(ERect** bounds) {
    *bounds = &rect_;
    return true;
}

bool CVocafadeEditor::open(void* ptr) {
    if (windows_ != nullptr) return true;
    const Busy working(*this);
    auto windows = std::make_unique<Windows>();
    if (!windows->hostFrame.AttachHost(ptr)) return false;
    windows->panel = std::make_unique<CUIWindow>();
    if (!windows->panel->MakeWindow(&windows->hostFrame, &background_, this)) return false;
    windows->panel->MoveWindow(0, 0, background_.Width(), background_.Height(), true);
    systemWindow = ptr;
    windows_ = std::move(windows);
    windowThread_.store(std::this_thread::get_id(), std::memory_order_relaxed);
    return true;
}

void CVocafadeEditor::close() {
    systemWindow = nullptr;
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
