// SPDX-License-Identifier: MIT
#pragma once

#include "ui/edit.h"

namespace vocafade {

/// Two small arrows that step the number in the field beside them (the buddy), held down again and again,
/// farther after a while. The number is the one that the buddy's `GetTextForSpin` tells at the press, so what
/// was typed counts. With UDS_ARROWKEYS the buddy's keys, and the wheel over both, step too: up and down as
/// the arrows do, page up and page down ten steps. Shift makes every step 1.
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
    /// A step is `step` (at least 1), held down at most `growth` times that: 1, then 10, then 100.
    void SetSteps(int step, int growth);
    /// Moves by that many steps.
    void Turn(int steps);
    /// A key of the buddy's went down; one that does so again without coming up is being held. False when it
    /// is none that steps.
    bool KeyDown(UINT key);
    void KeyUp() { keyRepeats_ = 0; }

    const char* ClassName() const override { return "CSpinButtonCtrl"; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    void Paint();
    void Press(CPoint point);
    void Release();
    void Move(int by);
    /// How many steps one counts for that has been repeated so often.
    int Grown(int repeats) const;

    CEdit* buddy_ = nullptr;
    int lower_ = 0;
    int upper_ = 100;
    int position_ = 0;
    int pressed_ = 0; ///< 1 the upper, -1 the lower arrow is held
    int ticks_ = 0;   ///< of the timer since the press
    int step_ = 1;
    int growth_ = 10;
    UINT key_ = 0;
    int keyRepeats_ = 0; ///< of `key_`, without a release
};

} // namespace vocafade
