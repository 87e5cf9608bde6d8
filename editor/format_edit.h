// SPDX-License-Identifier: MIT
#pragma once

#include "ui/edit.h"

#include <optional>
#include <utility>

namespace vocafade {

/// Sent by an entry field to its window (with the field's id) and by that window to whoever it serves: the
/// number is confirmed, or given up.
inline constexpr UINT kEntryConfirmed = 0x0A01;
inline constexpr UINT kEntryCancelled = 0x0A00;
/// The same for the Tab key: the number is confirmed, and the user goes on to the next field (lParam 1) or to
/// the one before (-1).
inline constexpr UINT kEntryTabbed = 0x0A02;

/// An entry field for a number. Outside it speaks in whole numbers ("integer form"), the shown number times
/// its scale; inside stands the number with its decimal places. Every operation is [main-thread].
class CFormatEdit : public CEdit {
  public:
    /// `decimals` places are shown; the integer form is the number times `scale`.
    CFormatEdit(int decimals, double scale) : decimals_(decimals), scale_(scale) {}

    /// Shows `integerText` ("125" as 12.5 at a scale of 10). A field that shows it already is left alone.
    void SetWindowText(const char* integerText);
    /// The text in integer form, cut and not rounded, at most `length` - 1 bytes and a NUL; the number of
    /// bytes. An empty field gives "0".
    int GetWindowText(char* buffer, int length) const;
    void GetWindowText(CString& text) const;

    /// Whether a minus sign can be typed.
    void SetSingnFlag(bool allowed) { signFlag_ = allowed; }
    /// Limits what is typed, in shown units; ignored unless `maximum` is above `minimum`.
    void SetInputMinMax(double minimum, double maximum);
    /// The integer form of the text that was accepted last.
    const CString& acceptedText() const { return acceptedText_; }

    /// Confirms or cancels, as Return and Escape do.
    void ProcRet();
    void ProcEsc();

    /// Filters what is typed: what makes up numbers is inserted, Return, Escape and Tab are left to
    /// `OnKeyDown`, and anything else rewrites the text in its canonical form instead. A comma does that,
    /// too, and selects the decimals, so that the next digit is the first of them.
    void OnChar(UINT character, UINT repeats, UINT flags);
    /// Return and Enter confirm, Escape cancels, Tab goes on.
    void OnKeyDown(UINT key, UINT repeats, UINT flags);
    /// Leaves the text behind in its canonical form.
    void OnKillFocus(CWnd* to);

    void SetTextForSpin(const char* integerText) override { SetWindowText(integerText); }
    CString GetTextForSpin() const override;
    void NotifySpinButton() override;

    DECLARE_MESSAGE_MAP()

  protected:
    void SetFormat(int decimals, double scale);
    /// True for characters that may be typed. `isArrow`: 37 or 39 is a key, not "%" or "'".
    virtual bool Accepts(UINT character, bool isArrow) const;
    /// Takes over the text after something was typed, and tells the parent.
    void OnNotifyChar();
    /// Rewrites the text in its canonical form.
    virtual void FixInputText();
    /// The comma of the keypad's decimal key, the only one that is let through, enters a point.
    std::string TypedText(std::string character) const override { return character == "," ? "." : character; }
    /// The number in `text`, held in what can be entered.
    double atof_and_limitchk(const char* text) const;

  private:
    CString IntegerForm(std::size_t longest) const;
    void TellParent(UINT message, LPARAM lParam = 0);

    int decimals_;
    double scale_;
    bool signFlag_ = false;
    std::optional<std::pair<double, double>> inputRange_;
    CString acceptedText_;
};

/// One decimal place to begin with; the field of the panel's read-outs.
class CNormalFloatEdit : public CFormatEdit {
  public:
    CNormalFloatEdit() : CFormatEdit(1, 10.0) {}
    /// Shows `places` decimal places, at most 9, with a scale of 10 to that power.
    void SetFloatPoint(int places);
    const char* ClassName() const override { return "CNormalFloatEdit"; }
};

/// Two decimal places, cut to a number of characters.
class CFloatEdit : public CFormatEdit {
  public:
    CFloatEdit() : CFormatEdit(2, 100.0) {}
    /// Keeps at most `characters` of the canonical form, 0 for all.
    void SetLimitInputText(int characters);
    const char* ClassName() const override { return "CFloatEdit"; }

  protected:
    void FixInputText() override;

  private:
    int longest_ = 0;
};

/// As `CFloatEdit`, and refuses a second decimal point or a sign behind the first place.
class CFloatEdit2 : public CFloatEdit {
  public:
    const char* ClassName() const override { return "CFloatEdit2"; }

  protected:
    bool Accepts(UINT character, bool isArrow) const override;
};

/// A size in points, to the half point.
class CPointEdit : public CFormatEdit {
  public:
    CPointEdit() : CFormatEdit(1, 2.0) {}
    const char* ClassName() const override { return "CPointEdit"; }
};

/// A time shown in seconds and told in milliseconds.
class CMiliSecondEdit : public CFormatEdit {
  public:
    CMiliSecondEdit() : CFormatEdit(3, 1000.0) {}
    const char* ClassName() const override { return "CMiliSecondEdit"; }
};

} // namespace vocafade
