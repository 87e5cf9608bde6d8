// SPDX-License-Identifier: MIT
#include "editor/preset_save_dlg.h"

#include "base/text_encoding.h"
#include "editor/resource_ids.h"
#include "effect/avocafade.h"

namespace vocafade {

// clang-format off
BEGIN_MESSAGE_MAP(CPresetSaveDlg, CDialog)
ON_CBN_SELCHANGE(resource::kSaveDialogPrograms, OnSelPGMCombo)
END_MESSAGE_MAP()
// clang-format on

CString CutProgramName(const CString& shiftJis) {
    constexpr int kLongest = static_cast<int>(kProgramNameBytes);
    if (shiftJis.GetLength() <= kLongest) return shiftJis;
    // The last byte that fits may be the first half of a character: it has to be found from the front, since
    // a second half can look like a first one.
    int whole = 0;
    while (whole < kLongest) {
        const int size = IsDBCSLeadByte(static_cast<unsigned char>(shiftJis.GetAt(whole))) ? 2 : 1;
        if (whole + size > kLongest) break;
        whole += size;
    }
    return shiftJis.Left(whole);
}

CPresetSaveDlg::CPresetSaveDlg(CWnd* parent, AVocafade* effect)
    : CDialog(static_cast<UINT>(resource::kSaveDialog), parent), effect_(effect) {}

void CPresetSaveDlg::DoDataExchange(CDataExchange* exchange) {
    CDialog::DoDataExchange(exchange);
    DDX_Control(exchange, resource::kSaveDialogPrograms, programList_);
    DDX_Control(exchange, resource::kSaveDialogName, nameField_);
}

CString CPresetSaveDlg::DisplayName(int slot) const { return CheckSJISAndToUFT8(effect_->ProgramName(slot)); }

void CPresetSaveDlg::ShowNameOf(int slot) {
    SetDlgItemText(resource::kSaveDialogName, DisplayName(slot));
    nameField_.SetSel(0, -1);
}

bool CPresetSaveDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    for (int slot = 0; slot < kProgramCount; ++slot) {
        CString entry;
        entry.Format("%d:%s", slot + 1, static_cast<const char*>(DisplayName(slot)));
        programList_.AddString(entry);
    }
    programList_.SetCurSel(effect_->getProgram());
    ShowNameOf(effect_->getProgram());
    nameField_.SetFocus(); // mostly the name is what is new
    return false;
}

bool CPresetSaveDlg::PreTranslateMessage(MSG* message) {
    const WPARAM key = message->wParam;
    const bool toSlots = key == kKeyUp || key == kKeyDown || key == kKeyPageUp || key == kKeyPageDown;
    if (message->message != WM_KEYDOWN || message->target != &nameField_ || !toSlots)
        return CDialog::PreTranslateMessage(message);
    programList_.SendMessage(WM_KEYDOWN, key, message->lParam);
    return true;
}

void CPresetSaveDlg::OnSelPGMCombo() {
    if (programList_.GetCurSel() >= 0) ShowNameOf(programList_.GetCurSel());
}

void CPresetSaveDlg::OnOK() {
    slot_ = programList_.GetCurSel();
    CString typed;
    GetDlgItemText(resource::kSaveDialogName, typed);
    // A name that was left as it is keeps its bytes, even those that could not be shown.
    if (typed == DisplayName(slot_)) {
        name_ = effect_->ProgramName(slot_);
    } else {
        name_ = CutProgramName(UTF8ToSJSINS(typed));
    }
    CDialog::OnOK();
}

} // namespace vocafade
