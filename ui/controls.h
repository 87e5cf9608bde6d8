// SPDX-License-Identifier: MIT
#pragma once

#include "ui/wnd.h"

#include <vector>

namespace vocafade {

/// A push button or check box. Notifies with BN_CLICKED.
class CButton : public CWnd {
  public:
    using CWnd::Create;
    bool Create(const char* caption, UINT style, const CRect& rect, CWnd* parent, UINT id);
    void SetCheck(int state);
    int GetCheck() const { return checked_ ? 1 : 0; }
    const char* ClassName() const override { return "CButton"; }
    bool WantsKeyboard() const override { return true; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void TextChanged() override { Invalidate(); }

  private:
    void Paint();
    friend class CDialog;
    void Click();
    std::unique_ptr<CFont> ownFont_;
    bool held_ = false; ///< the mouse was pressed on it
    bool pressed_ = false;
    bool checked_ = false;
    bool focused_ = false;
};

/// A line, or several, of text that does nothing.
class CStatic : public CWnd {
  public:
    using CWnd::Create;
    bool Create(const char* text, UINT style, const CRect& rect, CWnd* parent, UINT id = 0xFFFF);
    const char* ClassName() const override { return "CStatic"; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void TextChanged() override { Invalidate(); }

  private:
    std::unique_ptr<CFont> ownFont_;
};

/// A drop-down list. Notifies with CBN_SELCHANGE when the user chooses, CBN_DROPDOWN and CBN_CLOSEUP.
class CComboBox : public CWnd {
  public:
    using CWnd::Create;
    bool Create(UINT style, const CRect& rect, CWnd* parent, UINT id);
    /// Adds at the end; the index of the new entry. UTF-8.
    int AddString(const char* text);
    void ResetContent();
    int GetCount() const { return static_cast<int>(entries_.size()); }
    /// Chooses an entry without notifying, -1 for none; -1 when there is no such entry.
    int SetCurSel(int index);
    int GetCurSel() const { return selected_; }
    /// The text of an entry; its number of bytes, -1 when there is none.
    int GetLBText(int index, CString& text) const;
    void ShowDropDown(bool show);
    bool GetDroppedState() const { return dropped_; }
    const char* ClassName() const override { return "CComboBox"; }
    bool WantsKeyboard() const override { return true; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    void Paint();
    void Choose(int index);
    void Step(int direction);
    void JumpTo(UINT character);
    std::unique_ptr<CFont> ownFont_;
    std::vector<CString> entries_;
    int selected_ = -1;
    bool dropped_ = false;
    bool focused_ = false;
};

} // namespace vocafade
