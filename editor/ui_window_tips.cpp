// SPDX-License-Identifier: MIT
// What the panel tells a user whose pointer rests on it.
#include "base/text_encoding.h"
#include "editor/entry_number.h"
#include "editor/resource_ids.h"
#include "editor/ui_window.h"
#include "effect/avocafade.h"
#include "persistence/profile.h"
#include "ui/resources.h"

namespace vocafade {
namespace {

/// More places than the read-out has: the value in full.
constexpr int kDecimals = 2;

CString Filled(int id, const std::string& value) {
    constexpr std::string_view kMark = "%s";
    std::string text = LoadString(id).str();
    const std::size_t mark = text.find(kMark);
    return mark != std::string::npos ? CString(text.replace(mark, kMark.size(), value)) : CString(text);
}

} // namespace

bool CUIWindow::AreTipsWanted() {
    return GetPrivateProfileInt(layout::kSettingsSection, layout::kTipsSetting, 1,
                                layout::kSettingsApplication) != 0;
}

CString CUIWindow::ControlTip(const layout::PanelControl& control) {
    const float normalised = effect().getParameter(control.parameter);
    if (control.parameter == kParameterOnOff)
        return LoadString(normalised >= 0.5f ? resource::kTipOn : resource::kTipOff);
    const double shown = NormalizeValToInternalVal(control.parameter, normalised);
    std::string value = FormatEntryNumber(shown, kDecimals);
    if (value == "-0.00") value = "0.00";
    return Filled(resource::kFirstControlTip + control.parameter, value);
}

CString CUIWindow::TooltipAt(CPoint point, CRect& about) {
    if (!tipsWanted_) return {};
    const std::size_t at = ControlAt(point);
    if (at < layout::kControls.size()) {
        const layout::PanelControl& control = layout::kControls[at];
        about = control.rect.PtInRect(point) ? control.rect : control.readout;
        return ControlTip(control);
    }
    for (const CRect& key : {layout::kCopyRect, layout::kModifyRect, layout::kSaveRect})
        if (key.PtInRect(point)) about = key;
    if (about == layout::kCopyRect) return LoadString(resource::kTipCopy);
    if (about == layout::kModifyRect)
        return LoadString(effect().IsProgramChanged() ? resource::kTipModified : resource::kTipUnmodified);
    if (about != layout::kSaveRect) return {};
    const std::int32_t program = effect().getProgram();
    const CString name = CheckSJISAndToUFT8(effect().ProgramName(program));
    return Filled(resource::kTipSave, std::to_string(program + 1) + " " + name.str());
}

} // namespace vocafade
