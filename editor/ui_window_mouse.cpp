// SPDX-License-Identifier: MIT
#include "base/text_encoding.h"
#include "editor/preset_save_dlg.h"
#include "editor/ui_window.h"
#include "editor/vocafade_editor.h"
#include "effect/avocafade.h"
#include "ui/menu.h"

#include <algorithm>

namespace vocafade {
namespace {

/// A program cannot be copied onto itself.
constexpr UINT kCurrentProgramFlags = MF_CHECKED | MF_DISABLED | MF_GRAYED;

} // namespace

void CUIWindow::OnLButtonDown(UINT, CPoint point) {
    HideEdit(); // a press elsewhere gives the entry up
    if (!PressReadout(point)) PressControl(point);
}

void CUIWindow::OnLButtonDblClk(UINT flags, CPoint point) { OnLButtonDown(flags, point); }

bool CUIWindow::PressReadout(CPoint point) {
    for (const layout::PanelControl& control : layout::kControls) {
        if (!control.readout.PtInRect(point)) continue;
        OpenEntryFor(control);
        return true;
    }
    return false;
}

void CUIWindow::OpenEntryFor(const layout::PanelControl& control) {
    float minimum = 0.0f;
    float maximum = 0.0f;
    GetParamMinMax(control.parameter, &minimum, &maximum);
    const layout::Entry& entry = control.entry;
    const auto factor = static_cast<float>(entry.spinFactor);
    const float shown = effect().getParameterDisplayVal(control.parameter);
    ShowEdit(TruncateToInt(shown * 10.0f), TruncateToInt(minimum * factor), TruncateToInt(maximum * factor),
             entry.withSign, entry.width, control.readout, entry.id);
    entryWnd_.SetSteps(entry.step, entry.growth);
}

void CUIWindow::PressControl(CPoint point) {
    for (BitmapControl* control : controls_) {
        if (!control->Press(point)) continue;
        CClientDC dc(this);
        control->Draw(&dc);
        return;
    }
    if (copyButton_.PtInSwitch(point)) OpenCopyMenu();
}

void CUIWindow::OpenCopyMenu() {
    ShowCopyButton(true);
    CMenu menu;
    menu.CreatePopupMenu();
    for (std::int32_t i = 0; i < kProgramCount; ++i) {
        const UINT flags = i == effect().getProgram() ? kCurrentProgramFlags : MF_STRING;
        menu.AppendMenu(flags, layout::kFirstCopyCommand + static_cast<UINT>(i),
                        CheckSJISAndToUFT8(effect().ProgramName(i)), std::to_string(i + 1).c_str());
    }
    const bool shown = menu.TrackPopupMenu(TPM_RIGHTBUTTON, layout::kCopyMenuPlace.x,
                                           layout::kCopyMenuPlace.y, this, [this] { ShowCopyButton(false); });
    if (!shown) ShowCopyButton(false);
}

void CUIWindow::ShowCopyButton(bool open) {
    copyButton_.SetValue(open ? 1 : 0, false);
    CClientDC dc(this);
    copyButton_.DrawSwitch(&dc);
}

BitmapControl* CUIWindow::TrackingControl() const {
    const auto* found = std::find_if(controls_.begin(), controls_.end(),
                                     [](const BitmapControl* control) { return control->IsTracking(); });
    return found != controls_.end() ? *found : nullptr;
}

void CUIWindow::OnMouseMove(UINT flags, CPoint point) {
    CWnd::OnMouseMove(flags, point);
    CClientDC dc(this);
    if (BitmapControl* control = TrackingControl()) control->OnMouseMove(point, &dc);
}

void CUIWindow::OnLButtonUp(UINT, CPoint point) {
    CClientDC dc(this);
    if (BitmapControl* control = TrackingControl()) {
        control->OnLButtonUp(point, &dc);
    } else if (layout::kSaveRect.PtInRect(point)) {
        OpenSaveDialog();
    } else if (layout::kModifyRect.PtInRect(point)) {
        effect().ProgramToInitial();
    }
}

LRESULT CUIWindow::OnCaptureChanged(WPARAM, LPARAM) {
    if (BitmapControl* control = TrackingControl()) control->CancelTracking();
    return 0;
}

void CUIWindow::OpenSaveDialog() {
    if (saveDialog_ != nullptr) return;
    saveDialog_ = std::make_unique<CPresetSaveDlg>(nullptr, &effect());
    if (!saveDialog_->DoModal([this](int result) { SaveDialogEnded(result); })) saveDialog_.reset();
}

void CUIWindow::SaveDialogEnded(int result) {
    const std::unique_ptr<CPresetSaveDlg> dialog = std::move(saveDialog_);
    if (result == IDOK) effect().SaveProgram(dialog->slot(), dialog->name());
}

} // namespace vocafade
