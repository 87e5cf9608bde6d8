// SPDX-License-Identifier: MIT
#pragma once

#include "editor/format_edit.h"
#include "ui/spin_button.h"

#include <memory>

namespace vocafade {

/// A small window over a read-out, with an entry field and a spin button, in which a number is typed and
/// confirmed with Return or given up with Escape. It tells its owner with `kEntryConfirmed` or
/// `kEntryCancelled` and hides; with `kEntryTabbed` it leaves the rest to the owner. Every operation is
/// [main-thread].
class CKVBEntryWnd : public CWnd {
  public:
    static constexpr UINT kSpinId = 18000;
    static constexpr UINT kEditId = 18001;

    /// Makes the window, hidden, as a child of `parent` at the place of `attributes` (null: the origin), for
    /// numbers of up to `width` + 1 characters in `font`, which outlives it. `notifyWnd` hears how an entry
    /// ends.
    bool MakeWindow(CWnd* parent, CWnd* notifyWnd, const char* windowName, const CWindowAttr* attributes,
                    int width, CFont* font, bool withSign);
    /// Shows `value`, in integer form, in a range that the spin button keeps to.
    void SetNewValue(int value, int minimum, int maximum);
    void SetSingnFlag(bool withSign);
    /// How far the arrows, keys and wheel step, in integer form, and how many times that while they are held.
    void SetSteps(int step, int growth) { spin_.SetSteps(step, growth); }
    /// Makes room for `width` + 1 characters.
    void ChangeSize(int width, bool withSign);
    /// Puts the window over `frame` of the parent, all of which it covers.
    void Cover(const CRect& frame);

    /// The entry field.
    CFormatEdit& edit() { return *edit_; }

    int OnCreate();
    void OnPaint();
    LRESULT OnReturn(WPARAM wParam, LPARAM lParam);
    LRESULT OnEscape(WPARAM wParam, LPARAM lParam);
    LRESULT OnTab(WPARAM wParam, LPARAM direction);

    DECLARE_MESSAGE_MAP()

  protected:
    explicit CKVBEntryWnd(std::unique_ptr<CFormatEdit> field);
    ~CKVBEntryWnd() override;

  private:
    void ComputeSize();
    void PlaceParts();

    std::unique_ptr<CFormatEdit> edit_; ///< outlives the spin button, whose buddy it is
    CSpinButtonCtrl spin_;
    int width_ = 0;
    int height_ = 0;
    int charWidth_ = 0;
    int charHeight_ = 0;
    int spinWidth_ = 0;
    CWnd* notifyWnd_ = nullptr;
    int maxChars_ = 0;
    bool signed_ = false;
    CFont* font_ = nullptr;
};

/// The pop-up window of the panel's read-outs: one decimal place, so values travel times ten.
class CKVBFloatEditWnd : public CKVBEntryWnd {
  public:
    CKVBFloatEditWnd() : CKVBEntryWnd(std::make_unique<CNormalFloatEdit>()) {}
    const char* ClassName() const override { return "KVBFloatEditWnd"; }
};

} // namespace vocafade
