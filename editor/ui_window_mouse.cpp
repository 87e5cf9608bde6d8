// SPDX-License-Identifier: MIT
#include "base/text_encoding.h"
#include "editor/preset_save_dlg.h"
#include "editor/ui_window.h"
#include "editor/vocafade_editor.h"
#include "effect/avocafade.h"
#include "ui/menu.h"

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
    for (const layout::Readout& readout : layout::kReadouts) {
        if (!readout.rect.PtInRect(point)) continue;
        OpenEntryFor(readout);
        return true;
    }
    return false;
}

void CUIWindow::OpenEntryFor(const layout::Readout& readout) {
    float minimum = 0.0f;
    float maximum = 0.0f;
    GetParamMinMax(readout.parameter, &minimum, &maximum);
    const auto factor = static_cast<float>(readout.spinFactor);
    const float shown = effect().getParameterDisplayVal(readout.parameter);
    ShowEdit(TruncateToInt(shown * 10.0f), TruncateToInt(minimum * factor), TruncateToInt(maximum * factor),
             readout.withSign, readout.width, readout.rect, readout.entryId);
}

bool CUIWindow::PressControl(CPoint point) {
    const auto pressFader = [&](CKVBBitmapSliderDC& fader) {
        if (!fader.PtInSwitch(point)) return false;
        fader.SetValueByPoint(point);
        CClientDC dc(this);
        fader.DrawSlider(&dc);
        return true;
    };
    if (pressFader(loFreqFader_) || pressFader(hiFreqFader_)) return true;
    if (positionKnob_.PtInTumami(point)) {
        positionKnob_.SetValue(point);
        CClientDC dc(this);
        positionKnob_.Draw(&dc);
        return true;
    }
    if (pressFader(inputFader_) || pressFader(outputFader_)) return true;
    if (onOffSwitch_.PtInSwitch(point)) {
        ToggleOnOff();
        return true;
    }
    if (copyButton_.PtInSwitch(point)) {
        OpenCopyMenu();
        return true;
    }
    return false;
}

void CUIWindow::ToggleOnOff() {
    onOffSwitch_.SetValue(onOffSwitch_.GetValue() ? 0 : 1, true);
    CClientDC dc(this);
    onOffSwitch_.DrawSwitch(&dc);
}

void CUIWindow::OpenCopyMenu() {
    copyButton_.SetValue(1, false);
    CClientDC dc(this);
    copyButton_.DrawSwitch(&dc);
    CMenu menu;
    menu.CreatePopupMenu();
    for (std::int32_t i = 0; i < kProgramCount; ++i) {
        const UINT flags = i == effect().getProgram() ? kCurrentProgramFlags : MF_STRING;
        menu.AppendMenu(flags, layout::kFirstCopyCommand + static_cast<UINT>(i),
                        CheckSJISAndToUFT8(effect().ProgramName(i)));
    }
    const bool shown = menu.TrackPopupMenu(TPM_RIGHTBUTTON, layout::kCopyMenuPlace.x,
                                           layout::kCopyMenuPlace.y, this, [this] { CloseCopyMenu(); });
    if (!shown) CloseCopyMenu();
}

void CUIWindow::CloseCopyMenu() {
    copyButton_.SetValue(0, false);
    CClientDC dc(this);
    copyButton_.DrawSwitch(&dc);
}

void CUIWindow::OnMouseMove(UINT flags, CPoint point) {
    CWnd::OnMouseMove(flags, point);
    CClientDC dc(this);
    if (loFreqFader_.IsTracking()) {
        loFreqFader_.OnMouseMove(point, &dc);
    } else if (hiFreqFader_.IsTracking()) {
        hiFreqFader_.OnMouseMove(point, &dc);
    } else if (positionKnob_.IsTracking()) {
        positionKnob_.OnMouseMove(point, &dc);
    } else if (inputFader_.IsTracking()) {
        inputFader_.OnMouseMove(point, &dc);
    } else if (outputFader_.IsTracking()) {
        outputFader_.OnMouseMove(point, &dc);
    }
}

void CUIWindow::OnLButtonUp(UINT, CPoint point) {
    CClientDC dc(this);
    if (loFreqFader_.IsTracking()) {
        loFreqFader_.OnLButtonUp(point, &dc);
    } else if (hiFreqFader_.IsTracking()) {
        hiFreqFader_.OnLButtonUp(point, &dc);
    } else if (positionKnob_.IsTracking()) {
        positionKnob_.OnLButtonUp(point, &dc);
    } else if (inputFader_.IsTracking()) {
        inputFader_.OnLButtonUp(point, &dc);
    } else if (outputFader_.IsTracking()) {
        outputFader_.OnLButtonUp(point, &dc);
    } else if (layout::kSaveRect.PtInRect(point)) {
        OpenSaveDialog();
    } else if (layout::kModifyRect.PtInRect(point)) {
        effect().ProgramToInitial();
    }
}

LRESULT CUIWindow::OnCaptureChanged(WPARAM, LPARAM) {
    for (CKVBBitmapSliderDC* fader : {&loFreqFader_, &hiFreqFader_, &inputFader_, &outputFader_}) {
        fader->CancelTracking();
    }
    positionKnob_.CancelTracking();
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
