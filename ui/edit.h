// SPDX-License-Identifier: MIT
#pragma once

#include "ui/control.h"

namespace vocafade {

class CSpinButtonCtrl;

/// A one-line entry field: caret, selection by keys and mouse, clipboard, scrolling. Text is UTF-8; positions
/// are counted in characters (code points).
///
/// Every change that the user types arrives as WM_KEYDOWN and WM_CHAR first (pasted text too, one WM_CHAR a
/// character), so that a derived class filters all of it in `OnChar`.
class CEdit : public Control {
  public:
    /// Leaves its spin button, if it has one, without a field.
    ~CEdit() override;

    using CWnd::Create;
    bool Create(UINT style, const CRect& rect, CWnd* parent, UINT id);

    /// Selects characters `first` to `last` (not included), -1 for the end; the caret goes to `last`.
    void SetSel(int first, int last);
    void GetSel(int& first, int& last) const;
    /// At most `count` characters can be typed; 0 for no limit. `SetWindowText` is not limited.
    void SetLimitText(int count);
    /// Names the spin button beside the field, for its arrow keys and the wheel; null: none.
    void SetSpin(CSpinButtonCtrl* spin) { spin_ = spin; }

    /// What a spin button beside this field shows and reads: its position as decimal text. A field that shows
    /// a number in another form converts here.
    virtual void SetTextForSpin(const char* integerText) { SetWindowText(integerText); }
    virtual CString GetTextForSpin() const { return text_; }
    /// The spin button beside this field has changed it.
    virtual void NotifySpinButton() {}

    const char* ClassName() const override { return "CEdit"; }
    bool WantsKeyboard() const override { return true; }
    HCURSOR CursorAt(CPoint) const override { return kCursorIBeam; }

  protected:
    LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void TextChanged() override;
    /// What typing `character` (UTF-8) enters; nothing when it is empty.
    virtual std::string TypedText(std::string character) const { return character; }
    /// Whether an input method may make text of the keys. (Of numbers it makes nothing better.)
    virtual bool WantsInputMethod() const { return false; }
    /// The text as it would be with `text` in the place of the selection.
    std::string TextWith(const std::string& text) const;

  private:
    void Paint();
    void KeyDown(UINT key);
    bool Shortcut(UINT key);
    void Char(UINT character, UINT flags);
    void Press(CPoint point);
    void SelectWord(CPoint point);
    void MoveCaret(int to, bool select);
    void Replace(const std::string& text);
    /// Takes the selection away, or else the character before (-1) or behind (1) the caret.
    void EraseOr(int direction);
    bool IsBlank(int character) const;
    int NextWord(int direction) const;
    int CharacterAt(int x) const;
    void ScrollToCaret();
    /// Where the caret is, while text is typed here.
    void TellInputMethod();
    void Copy();
    void Cut();
    void Paste();
    int Length() const;
    std::size_t ByteOf(int character) const;
    CRect Inside() const;
    /// The x of the text's left end.
    int TextLeft(const std::vector<int>& stops) const;
    std::vector<int> Stops() const;

    CSpinButtonCtrl* spin_ = nullptr;
    int anchor_ = 0;
    int caret_ = 0;
    int scroll_ = 0; ///< pixels that have left on the left side
    int limit_ = 0;
    bool selecting_ = false;
};

} // namespace vocafade
