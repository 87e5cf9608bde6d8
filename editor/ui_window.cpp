// SPDX-License-Identifier: MIT
#include "editor/ui_window.h"

#include "editor/preset_save_dlg.h"
#include "editor/resource_ids.h"
#include "editor/vocafade_editor.h"
#include "effect/avocafade.h"
#include "ui/message_box.h"

#include <algorithm>
#include <charconv>

namespace vocafade {
namespace {

constexpr char kFontName[] = "Osaka";
constexpr int kReadoutPoints = 9;
constexpr int kEntryPoints = 12;
constexpr int kDefaultEntryWidth = 6;
constexpr int kKnobSpare = 8;
/// Ticks that no handler takes.
constexpr UINT kTimerId = 1024;
constexpr UINT kTimerMilliseconds = 75;
constexpr UINT kShowMessage = WM_USER + 100;

} // namespace

// clang-format off
BEGIN_MESSAGE_MAP(CUIWindow, CWnd)
ON_WM_CREATE()
ON_WM_PAINT()
ON_WM_SIZE()
ON_WM_DESTROY()
ON_WM_LBUTTONDOWN()
ON_WM_LBUTTONDBLCLK()
ON_WM_MOUSEMOVE()
ON_WM_LBUTTONUP()
ON_MESSAGE(WM_MBUTTONDOWN, OnMButtonDown)
ON_MESSAGE(WM_MOUSEWHEEL, OnMouseWheel)
ON_MESSAGE(kEntryConfirmed, OnInputValReturn)
ON_MESSAGE(kEntryTabbed, OnEntryTabbed)
ON_COMMAND_RANGE(layout::kFirstCopyCommand, layout::kLastCopyCommand, OnSelCopyPg)
ON_MESSAGE(WM_CAPTURECHANGED, OnCaptureChanged)
ON_MESSAGE(kShowMessage, OnShowMessage)
ON_MESSAGE(WM_SCALECHANGED, OnScaleChanged)
END_MESSAGE_MAP()
// clang-format on

bool ControlCallback(int controlId, float value, void* context) {
    static_cast<CUIWindow*>(context)->ChangeControl(controlId, value);
    return true;
}

CUIWindow::CUIWindow() = default;

CUIWindow::~CUIWindow() { DestroyWindow(); }

AVocafade& CUIWindow::effect() { return static_cast<AVocafade&>(*editor_->getEffect()); }

void CUIWindow::Bitmaps::Load() {
    background.LoadResourceBitmap(resource::kBackground);
    knobStrip.LoadResourceBitmap(resource::kKnobStrip);
    switchOff.LoadResourceBitmap(resource::kSwitchOff);
    switchOn.LoadResourceBitmap(resource::kSwitchOn);
    spare.LoadResourceBitmap(resource::kSpare);
    faderTrack.LoadResourceBitmap(resource::kFaderTrack);
    faderThumb.LoadResourceBitmap(resource::kFaderThumb);
    meter.LoadResourceBitmap(resource::kMeter);
    clipOn.LoadResourceBitmap(resource::kClipOn);
    clipOff.LoadResourceBitmap(resource::kClipOff);
    copyOff.LoadResourceBitmap(resource::kCopyOff);
    copyOn.LoadResourceBitmap(resource::kCopyOn);
    save.LoadResourceBitmap(resource::kSave);
    modified.LoadResourceBitmap(resource::kModified);
}

bool CUIWindow::MakeWindow(CWnd* parent, CVocafadeEditor* editor) {
    editor_ = editor;
    smallFont_.CreatePointFont(kReadoutPoints, kFontName);
    largeFont_.CreatePointFont(kEntryPoints, kFontName);
    const WindowClass windowClass =
        AfxRegisterWndClass(CS_DBLCLKS, LoadCursor(0, kCursorArrow), GetStockObject(NULL_BRUSH));
    return Create(windowClass, "UIWindow", WS_CHILD | WS_VISIBLE, {{0, 0}, editor->size()}, parent, 0);
}

int CUIWindow::OnCreate() {
    if (CWnd::OnCreate() == -1) return -1;
    bitmaps_.Load();
    MakeControls();
    vuDb_.fill(layout::kMeterFloorDb);
    entryWnd_.MakeWindow(this, this, "", nullptr, kDefaultEntryWidth, &largeFont_, true);
    entryWnd_.ShowWindow(SW_HIDE);
    activeEntry_ = -1;
    lastVuCounter_ = 0xFFFF; // so that the first idle reads the meters
    SetTimer(kTimerId, kTimerMilliseconds, nullptr);
    return 0;
}

BitmapControl* CUIWindow::MakeSwitch(const layout::PanelControl& control) {
    onOffSwitch_.Make(control.rect, this, &bitmaps_.switchOff, &bitmaps_.switchOn,
                      static_cast<unsigned>(control.id), {}, false, nullptr, &ControlCallback, this);
    onOffSwitch_.SetValue(TruncateToInt(effect().getParameter(control.parameter)) != 0 ? 1 : 0, false);
    return &onOffSwitch_;
}

BitmapControl* CUIWindow::MakeKnob(const layout::PanelControl& control) {
    positionKnob_.Make(control.rect, control.readout, this, &bitmaps_.knobStrip, 0.0f, 1.0f,
                       static_cast<unsigned>(control.id), layout::kKnobFrames, layout::kKnobAngleMin,
                       layout::kKnobAngleMax, kKnobSpare, control.decadeTaper, &ControlCallback, this);
    positionKnob_.Show(effect().getParameter(control.parameter));
    return &positionKnob_;
}

BitmapControl* CUIWindow::MakeFader(CKVBBitmapSliderDC& fader, const layout::PanelControl& control) {
    const int trackHeight = bitmaps_.faderTrack.Height();
    const int halfThumb = bitmaps_.faderThumb.Height() / 2;
    fader.Make(control.rect, control.readout, this, &bitmaps_.faderTrack, nullptr, &bitmaps_.faderThumb, 0.0f,
               1.0f, {1, trackHeight - halfThumb}, {1, halfThumb}, static_cast<unsigned>(control.id), 1,
               control.decadeTaper, false, false, false, &ControlCallback, this);
    fader.Show(effect().getParameter(control.parameter));
    return &fader;
}

void CUIWindow::MakeControls() {
    std::size_t faders = 0;
    for (std::size_t i = 0; i < controls_.size(); ++i) {
        const layout::PanelControl& control = layout::kControls[i];
        controls_[i] = control.picture == resource::kSwitchOff   ? MakeSwitch(control)
                       : control.picture == resource::kKnobStrip ? MakeKnob(control)
                                                                 : MakeFader(faders_[faders++], control);
    }
    copyButton_.Make(layout::kCopyRect, this, &bitmaps_.copyOff, &bitmaps_.copyOn, layout::kCopyButton, {},
                     false, nullptr, &ControlCallback, this);
    for (std::int32_t i = 0; i < kParameterCount; ++i)
        shown_.values[static_cast<std::size_t>(i)] = effect().getParameter(i);
}

void CUIWindow::OnSize(UINT type, int width, int height) {
    CWnd::OnSize(type, width, height);
    Invalidate();
}

void CUIWindow::OnDestroy() { CWnd::OnDestroy(); }

void CUIWindow::ChangeControl(int controlId, float value) {
    const std::size_t at = layout::IndexOf(&layout::PanelControl::id, controlId);
    if (at < layout::kControls.size()) {
        const int parameter = layout::kControls[at].parameter;
        shown_.values[static_cast<std::size_t>(parameter)] = value;
        effect().setParameterFormUI(parameter, value);
    }
    if (controlId == layout::kOnOffSwitch) {
        if (GetKeyState(VK_SHIFT) < 0) {
            effect().ProgramToFactory();
        } else if (GetKeyState(VK_CONTROL) < 0) {
            effect().ProgramToAllFactory();
        }
    }
    InvalidateRect(&layout::kModifyRect);
}

void CUIWindow::UpdateControl(std::int32_t index, float value) {
    if (!painted_) return;
    const std::size_t at = layout::IndexOf(&layout::PanelControl::parameter, index);
    if (at < layout::kControls.size()) {
        shown_.values[static_cast<std::size_t>(index)] = value;
        CClientDC dc(this);
        controls_[at]->Show(index == kParameterOnOff ? NormalizeValToDWValue(index, value) : value);
        controls_[at]->Draw(&dc);
    }
    InvalidateRect(&layout::kModifyRect);
}

void CUIWindow::UpdateModify() { InvalidateRect(&layout::kModifyRect); }

void CUIWindow::ShowEdit(int value, int minimum, int maximum, bool withSign, int width, const CRect& rect,
                         int entryId) {
    entryWnd_.SetNewValue(value, minimum, maximum);
    entryWnd_.SetSingnFlag(withSign);
    entryWnd_.ChangeSize(width, withSign);
    CRect frame = rect;
    frame.InflateRect(layout::kReadoutFrame, layout::kReadoutFrame);
    ++frame.bottom; // which catches the light
    entryWnd_.Cover(frame);
    entryWnd_.edit().SetSel(0, -1);
    entryWnd_.ShowWindow(SW_SHOW);
    entryWnd_.edit().SetFocus();
    activeEntry_ = entryId;
}

void CUIWindow::HideEdit() {
    activeEntry_ = -1;
    if (entryWnd_.IsWindowVisible()) entryWnd_.ShowWindow(SW_HIDE);
}

std::size_t CUIWindow::EntryControl() const {
    std::size_t at = 0;
    while (at < layout::kControls.size() &&
           (activeEntry_ < 0 || layout::kControls[at].entry.id != activeEntry_))
        ++at;
    return at;
}

LRESULT CUIWindow::OnInputValReturn(WPARAM, LPARAM) {
    constexpr int kLongestText = 50;
    char text[kLongestText + 1] = "";
    const int length = entryWnd_.edit().GetWindowText(text, sizeof text);
    int entered = 0;
    std::from_chars(text, text + length, entered);
    // Half a hundredth away from zero, so that the display's last place is the one that was typed.
    float value = static_cast<float>(entered / 10.0 + (entered >= 0 ? 0.005 : -0.005));
    const std::size_t at = EntryControl();
    if (at < layout::kControls.size()) {
        const layout::PanelControl& control = layout::kControls[at];
        float minimum = 0.0f;
        float maximum = 0.0f;
        GetParamMinMax(control.parameter, &minimum, &maximum);
        const auto factor = static_cast<float>(control.entry.clampFactor);
        value = std::clamp(value, minimum * factor, maximum * factor);
        effect().setParameterFromDiaplay(control.parameter, value);
    }
    activeEntry_ = -1;
    InvalidateRect(&layout::kModifyRect);
    Invalidate();
    SendMessage(WM_PAINT);
    return 0;
}

LRESULT CUIWindow::OnEntryTabbed(WPARAM, LPARAM direction) {
    std::size_t at = EntryControl();
    if (at == layout::kControls.size()) return 0;
    SendMessage(kEntryConfirmed);
    do {
        at = (at + layout::kControls.size() + static_cast<std::size_t>(direction)) % layout::kControls.size();
    } while (layout::kControls[at].entry.id < 0);
    OpenEntryFor(layout::kControls[at]);
    return 0;
}

void CUIWindow::OnSelCopyPg(UINT id) {
    effect().CopyPgFrom(static_cast<std::int32_t>(id - layout::kFirstCopyCommand));
    InvalidateRect(&layout::kModifyRect);
}

void CUIWindow::ShowMessage(std::int32_t stringId, const std::string& path) {
    constexpr std::string_view kPathMark = "%s";
    pendingMessage_ = LoadString(stringId).str();
    const std::size_t mark = pendingMessage_.find(kPathMark);
    if (mark != std::string::npos) pendingMessage_.replace(mark, kPathMark.size(), path);
    // The box belongs to the window whose message is being handled, so it has to be this one's.
    PostMessage(kShowMessage);
}

LRESULT CUIWindow::OnScaleChanged(WPARAM, LPARAM) {
    bitmaps_.Load();
    return 0;
}

LRESULT CUIWindow::OnShowMessage(WPARAM, LPARAM) {
    AfxMessageBox(pendingMessage_.c_str(), MB_OK);
    return 0;
}

} // namespace vocafade
