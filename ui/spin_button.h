// SPDX-License-Identifier: MIT
#pragma once

#include "ui/edit.h"

namespace vocafade {

/// Two small arrows that step the number in the field beside them (the buddy), held down again and again,
/// faster after a while. The number is the one that the buddy's `GetTextForSpin` tells at the press, so what
/// was typed counts. With UDS_ARROWKEYS the buddy's up and down keys, and the wheel over both, step too.
class CSpinButtonCtrl : public CWnd {
  public:
    using CWnd::Create;
    ~CSpinButtonCtrl() override;
    bool Create(UINT style, const CRect& rect, CWnd* parent, UINT id);
    void SetRange32(int lower, int upper);
    /// Sets the position, held in the range, without touching the buddy; gives back the one before.
    int SetPos(int position);
    /// Only base 10; gives back the base before.
    int SetBase(int base);
    CEdit* SetBuddy(CEdit* buddy);
    /// Moves by `steps` as a press of an arrow does.
    void Step(int steps);

    const char* ClassName() const override { return "CSpinButtonCtrl"; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    void Paint();
    void Press(CPoint point);
    void Release();

    CEdit* buddy_ = nullptr;
    int lower_ = 0;
    int upper_ = 100;
    int position_ = 0;
    int pressed_ = 0; ///< 1 the upper, -1 the lower arrow is held
    int ticks_ = 0;   ///< of the timer since the press
};

} // namespace vocafade
