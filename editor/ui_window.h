// SPDX-License-Identifier: MIT
#pragma once

#include "editor/bitmap_knob.h"
#include "editor/bitmap_slider.h"
#include "editor/bitmap_switch.h"
#include "editor/entry_wnd.h"
#include "editor/panel_layout.h"
#include "effect/parameters.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace vocafade {

class AVocafade;
class CPresetSaveDlg;
class CVocafadeEditor;

/// The main panel: the background, read-outs, meters, buttons and controls, as large as its background
/// bitmap. It turns the mouse into parameter changes and shows what the effect holds. Everything here is
/// [main-thread].
class CUIWindow : public CWnd {
  public:
    CUIWindow();
    ~CUIWindow() override;

    /// Creates the panel inside `parent`. Both outlive it. False when it cannot be created.
    bool MakeWindow(CWnd* parent, CVocafadeEditor* editor);
    /// Moves the meters and shows what has changed on other threads. For every idle of the host.
    void idle();

    /// The effect has a new normalised value for a parameter; nothing before the first painting.
    void UpdateControl(std::int32_t index, float value);
    /// The program changed or was copied.
    void UpdateModify();
    /// Tells the user text `stringId` with `path` put into it.
    void ShowMessage(std::int32_t stringId, const std::string& path);

    /// A control was moved by the user to the normalised `value`.
    void ChangeControl(int controlId, float value);
    /// Opens the entry field over a read-out with `value` (times ten) in it.
    void ShowEdit(int value, int minimum, int maximum, bool withSign, int width, const CRect& rect,
                  int entryId);
    void HideEdit();

    int OnCreate();
    void OnPaint();
    void OnSize(UINT type, int width, int height);
    void OnDestroy();
    void OnLButtonDown(UINT flags, CPoint point);
    void OnLButtonDblClk(UINT flags, CPoint point);
    void OnMouseMove(UINT flags, CPoint point);
    void OnLButtonUp(UINT flags, CPoint point);
    LRESULT OnMButtonDown(WPARAM wParam, LPARAM lParam);
    LRESULT OnMouseWheel(WPARAM wParam, LPARAM lParam);
    LRESULT OnCaptureChanged(WPARAM wParam, LPARAM lParam);
    LRESULT OnInputValReturn(WPARAM wParam, LPARAM lParam);
    LRESULT OnEntryTabbed(WPARAM wParam, LPARAM direction);
    LRESULT OnShowMessage(WPARAM wParam, LPARAM lParam);
    LRESULT OnScaleChanged(WPARAM wParam, LPARAM lParam);
    void OnSelCopyPg(UINT id);

    const char* ClassName() const override { return "UIWindow"; }
    CString TooltipAt(CPoint point, CRect& about) override;

    DECLARE_MESSAGE_MAP()

  private:
    struct Bitmaps {
        CKVBBitmap background, spare, switchOff, switchOn, knobStrip, faderTrack, faderThumb, meter, clipOff,
            clipOn, copyOn, copyOff, save, modified;
        void Load();
    };
    /// What the picture on the screen says, to be compared with what the effect holds.
    struct Shown {
        std::array<float, kParameterCount> values{};   ///< normalised, of the controls
        std::array<float, kParameterCount> displays{}; ///< of the read-outs, in display units
        bool modified = false;
    };

    AVocafade& effect();

    // ui_window.cpp
    void MakeControls();
    BitmapControl* MakeSwitch(const layout::PanelControl& control);
    BitmapControl* MakeKnob(const layout::PanelControl& control);
    BitmapControl* MakeFader(CKVBBitmapSliderDC& fader, const layout::PanelControl& control);
    // ui_window_paint.cpp
    void DrawDisp(CDC* dc, int parameter);
    void DrawOutDisp(CDC* dc) { DrawDisp(dc, kParameterOutput); }
    void DrawInputDisp(CDC* dc) { DrawDisp(dc, kParameterInput); }
    void DrawLoFreqDisp(CDC* dc) { DrawDisp(dc, kParameterLoFreq); }
    void DrawHiFreqDisp(CDC* dc) { DrawDisp(dc, kParameterHiFreq); }
    void DrawBlanceDisp(CDC* dc) { DrawDisp(dc, kParameterPosition); }
    void DrawVU(CDC* dc);
    void DrawClip(CDC*) {} ///< there is no clip detection
    void DrawButtons(CDC* dc);
    void NoteShown(const CRect& painted);
    bool FollowMeters();
    void ShowForeignChanges();
    // ui_window_tips.cpp
    static bool AreTipsWanted();
    CString ControlTip(const layout::PanelControl& control);
    // ui_window_wheel.cpp
    /// The place in the layout of the control or read-out at `point`; the number of controls for none.
    std::size_t ControlAt(CPoint point) const;
    /// Does what a user does who moves the control to the normalised `value`.
    void MoveControl(std::size_t at, float value);
    // ui_window_mouse.cpp
    bool PressReadout(CPoint point);
    void PressControl(CPoint point);
    BitmapControl* TrackingControl() const;
    void OpenEntryFor(const layout::PanelControl& control);
    /// The place in the layout of the control whose entry field shows; the number of controls for none.
    std::size_t EntryControl() const;
    void OpenCopyMenu();
    void ShowCopyButton(bool open);
    void OpenSaveDialog();
    void SaveDialogEnded(int result);

    Bitmaps bitmaps_;
    CFont smallFont_;
    CFont largeFont_;
    CVocafadeEditor* editor_ = nullptr;
    CKVBFloatEditWnd entryWnd_;
    int activeEntry_ = -1;
    std::array<CKVBBitmapSliderDC, 4> faders_;
    CKVBNewBitmapTumamiDC positionKnob_;
    CKVBBitmapSwitch2DC onOffSwitch_;
    std::array<BitmapControl*, layout::kControls.size()> controls_{}; ///< the six, in the order of the layout
    CKVBBitmapSwitch2DC copyButton_;
    std::array<float, 4> vuDb_{};
    std::uint16_t lastVuCounter_ = 0xFFFF;
    bool painted_ = false;
    bool tipsWanted_ = AreTipsWanted();
    Shown shown_;
    std::unique_ptr<CPresetSaveDlg> saveDialog_;
    std::string pendingMessage_;
};

/// What every control of the panel reports to; `context` is the panel.
bool ControlCallback(int controlId, float value, void* context);

} // namespace vocafade
