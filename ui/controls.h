// SPDX-License-Identifier: MIT
#pragma once

#include "ui/control.h"

#include <vector>

namespace vocafade {

/// A push button. Notifies with BN_CLICKED.
class CButton : public Control {
  public:
    using CWnd::Create;
    bool Create(const char* caption, UINT style, const CRect& rect, CWnd* parent, UINT id);
    /// What a click does.
    void Click() { NotifyParent(BN_CLICKED); }
    const char* ClassName() const override { return "CButton"; }
    bool WantsKeyboard() const override { return true; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void TextChanged() override { Invalidate(); }

  private:
    void Paint();
    bool held_ = false; ///< the mouse was pressed on it
    bool pressed_ = false;
};

/// A line, or several, of text that does nothing.
class CStatic : public Control {
  public:
    using CWnd::Create;
    bool Create(const char* text, UINT style, const CRect& rect, CWnd* parent, UINT id = 0xFFFF);
    const char* ClassName() const override { return "CStatic"; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void TextChanged() override { Invalidate(); }
};

/// A drop-down list. Notifies with CBN_SELCHANGE when the user chooses.
class CComboBox : public Control {
  public:
    using CWnd::Create;
    bool Create(UINT style, const CRect& rect, CWnd* parent, UINT id);
    /// Adds at the end; the index of the new entry. UTF-8.
    int AddString(const char* text);
    int GetCount() const { return static_cast<int>(entries_.size()); }
    /// Chooses an entry without notifying, -1 for none; -1 when there is no such entry.
    int SetCurSel(int index);
    int GetCurSel() const { return selected_; }
    void ShowDropDown();
    bool GetDroppedState() const { return dropped_; }
    const char* ClassName() const override { return "CComboBox"; }
    bool WantsKeyboard() const override { return true; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    void Paint();
    void Choose(int index);
    void Step(int direction);
    std::vector<CString> entries_;
    int selected_ = -1;
    bool dropped_ = false;
};

} // namespace vocafade
