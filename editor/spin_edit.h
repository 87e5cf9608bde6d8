// SPDX-License-Identifier: MIT
#pragma once

#include "editor/entry_wnd.h"

namespace vocafade {

/// An entry field for a whole number.
class CKVBSpinEdit : public CFormatEdit {
  public:
    CKVBSpinEdit() : CFormatEdit(0, 1.0) {}
    /// [main-thread] Makes the field as child `id` of `parent`.
    bool MakeWindow(CWnd* parent, const CRect& rect, UINT id, CFont* font, bool withSign);
    /// [main-thread] The value and the range that it is held in.
    void SetNewValue(int value, int minimum, int maximum);
    void SetRange(int minimum, int maximum);
    void SetValue(int value);
    const char* ClassName() const override { return "CKVBSpinEdit"; }

  protected:
    bool Accepts(UINT character, bool isArrow) const override;

  private:
    int minimum_ = 0;
    int maximum_ = 100;
};

/// The pop-up window for a whole number.
class CKVBSpinEditWnd : public CKVBEntryWnd {
  public:
    CKVBSpinEditWnd() : CKVBEntryWnd(std::make_unique<CKVBSpinEdit>()) {}
    const char* ClassName() const override { return "KVBSpinEditWnd"; }
};

} // namespace vocafade
