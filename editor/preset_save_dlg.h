// SPDX-License-Identifier: MIT
#pragma once

#include "base/cstring.h"
#include "editor/name_edit.h"
#include "ui/controls.h"
#include "ui/dialog.h"

namespace vocafade {

class AVocafade;

/// Asks into which of the 64 programs the current settings go, and under which name. Every operation is
/// [main-thread].
class CPresetSaveDlg : public CDialog {
  public:
    /// `effect`, whose programs are listed, outlives the dialog.
    CPresetSaveDlg(CWnd* parent, AVocafade* effect);

    /// After IDOK: the chosen program, 0 to 63.
    int slot() const { return slot_; }
    /// After IDOK: the name in Shift-JIS, at most 23 bytes.
    const CString& name() const { return name_; }

    void OnSelPGMCombo();
    const char* ClassName() const override { return "CPresetSaveDlg"; }

    DECLARE_MESSAGE_MAP()

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void DoDataExchange(CDataExchange* exchange) override;
    /// In the name's line up and down go to the other slots.
    bool PreTranslateMessage(MSG* message) override;

  private:
    void ShowNameOf(int slot);
    CString DisplayName(int slot) const;

    CComboBox programList_;
    CNameEdit nameField_;
    int slot_ = 0;
    CString name_;
    AVocafade* effect_;
};

/// [any-thread] `shiftJis` cut to the 23 bytes that a program's name can have, without half a character at
/// its end.
CString CutProgramName(const CString& shiftJis);

} // namespace vocafade
