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
constexpr int kKnobFrames = 61;
constexpr float kKnobAngleMin = 30.0f;
constexpr float kKnobAngleMax = 330.0f;
constexpr int kKnobSpare = 8;
/// A tick that nothing listens to, kept for those who watch the editor's timers.
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
ON_MESSAGE(kEntryConfirmed, OnInputValReturn)
ON_MESSAGE(kEntryTabbed, OnEntryTabbed)
ON_COMMAND_RANGE(layout::kFirstCopyCommand, layout::kLastCopyCommand, OnSelCopyPg)
ON_MESSAGE(WM_CAPTURECHANGED, OnCaptureChanged)
ON_MESSAGE(kShowMessage, OnShowMessage)
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

bool CUIWindow::MakeWindow(CWnd* parent, CKVBBitmap* background, CVocafadeEditor* editor) {
    background_ = background;
    editor_ = editor;
    smallFont_.CreatePointFont(kReadoutPoints, kFontName);
    largeFont_.CreatePointFont(kEntryPoints, kFontName);
    const WindowClass windowClass =
        AfxRegisterWndClass(CS_DBLCLKS, LoadCursor(0, kCursorArrow), GetStockObject(NULL_BRUSH));
    return Create(windowClass, "UIWindow", WS_CHILD | WS_VISIBLE,
                  {0, 0, background->Width(), background->Height()}, parent, 0);
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

void CUIWindow::MakeFader(CKVBBitmapSliderDC& fader, int id, int parameter, const CRect& rect,
                          const CRect& readout) {
    const int trackHeight = bitmaps_.faderTrack.Height();
    const int halfThumb = bitmaps_.faderThumb.Height() / 2;
    fader.Make(rect, readout, this, &bitmaps_.faderTrack, nullptr, &bitmaps_.faderThumb, 0.0f, 1.0f,
               {1, trackHeight - halfThumb}, {1, halfThumb}, static_cast<unsigned>(id), 1, true, false, false,
               false, &ControlCallback, this);
    fader.SetValue(effect().getParameter(parameter), nullptr, false);
}

void CUIWindow::MakeControls() {
    using namespace layout;
    MakeFader(inputFader_, kInputFader, kParameterInput, kInputFaderRect, kInputReadout);
    MakeFader(outputFader_, kOutputFader, kParameterOutput, kOutputFaderRect, kOutputReadout);
    MakeFader(loFreqFader_, kLoFreqFader, kParameterLoFreq, kLoFreqFaderRect, kLoFreqReadout);
    MakeFader(hiFreqFader_, kHiFreqFader, kParameterHiFreq, kHiFreqFaderRect, kHiFreqReadout);
    positionKnob_.Make(kKnobRect, kPositionReadout, this, &bitmaps_.knobStrip, 0.0f, 1.0f, kPositionKnob,
                       kKnobFrames, kKnobAngleMin, kKnobAngleMax, kKnobSpare, false, &ControlCallback, this);
    positionKnob_.SetValue(effect().getParameter(kParameterPosition), nullptr, false);
    onOffSwitch_.Make(kOnOffRect, this, &bitmaps_.switchOff, &bitmaps_.switchOn, kOnOffSwitch, {}, false,
                      nullptr, &ControlCallback, this);
    onOffSwitch_.SetValue(TruncateToInt(effect().getParameter(kParameterOnOff)) != 0 ? 1 : 0, false);
    copyButton_.Make(kCopyRect, this, &bitmaps_.copyOff, &bitmaps_.copyOn, kCopyButton, {}, false, nullptr,
                     &ControlCallback, this);
    for (std::int32_t i = 0; i < kParameterCount; ++i) {
        shown_.values[static_cast<std::size_t>(i)] = effect().getParameter(i);
    }
}

void CUIWindow::OnSize(UINT type, int width, int height) {
    CWnd::OnSize(type, width, height);
    Invalidate();
}

void CUIWindow::OnDestroy() { CWnd::OnDestroy(); }

void CUIWindow::ChangeControl(int controlId, float value) {
    const auto change = [&](std::int32_t parameter) {
        shown_.values[static_cast<std::size_t>(parameter)] = value;
        effect().setParameterFormUI(parameter, value);
    };
    switch (controlId) {
    case layout::kInputFader:
        change(kParameterInput);
        break;
    case layout::kOutputFader:
        change(kParameterOutput);
        break;
    case layout::kLoFreqFader:
        change(kParameterLoFreq);
        break;
    case layout::kHiFreqFader:
        change(kParameterHiFreq);
        break;
    case layout::kPositionKnob:
        change(kParameterPosition);
        break;
    case layout::kOnOffSwitch:
        change(kParameterOnOff);
        if (GetKeyState(VK_SHIFT) < 0) {
            effect().ProgramToFactory();
        } else if (GetKeyState(VK_CONTROL) < 0) {
            effect().ProgramToAllFactory();
        }
        break;
    default:
        break;
    }
    InvalidateRect(&layout::kModifyRect);
}

void CUIWindow::UpdateControl(std::int32_t index, float value) {
    if (!painted_) return;
    if (index >= 0 && index < kParameterCount) shown_.values[static_cast<std::size_t>(index)] = value;
    CClientDC dc(this);
    const auto moveFader = [&](CKVBBitmapSliderDC& fader) {
        fader.SetValue(value, nullptr, false);
        fader.DrawSlider(&dc);
    };
    switch (index) {
    case kParameterOnOff:
        onOffSwitch_.SetValue(static_cast<int>(NormalizeValToDWValue(kParameterOnOff, value)), false);
        onOffSwitch_.DrawSwitch(&dc);
        break;
    case kParameterOutput:
        moveFader(outputFader_);
        break;
    case kParameterInput:
        moveFader(inputFader_);
        break;
    case kParameterLoFreq:
        moveFader(loFreqFader_);
        break;
    case kParameterHiFreq:
        moveFader(hiFreqFader_);
        break;
    case kParameterPosition:
        positionKnob_.SetValue(value, nullptr, false);
        positionKnob_.Draw(&dc);
        break;
    default:
        break;
    }
    InvalidateRect(&layout::kModifyRect);
}

void CUIWindow::UpdateModify() { InvalidateRect(&layout::kModifyRect); }

void CUIWindow::ShowEdit(int value, int minimum, int maximum, bool withSign, int width, const CRect& rect,
                         int entryId) {
    entryWnd_.SetNewValue(value, minimum, maximum);
    entryWnd_.SetSingnFlag(withSign);
    entryWnd_.ChangeSize(width, withSign);
    entryWnd_.SetWindowPos(nullptr, rect.left + 1, rect.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
    entryWnd_.edit().SetSel(0, -1);
    entryWnd_.ShowWindow(SW_SHOW);
    entryWnd_.edit().SetFocus();
    activeEntry_ = entryId;
}

void CUIWindow::HideEdit() {
    activeEntry_ = -1;
    if (entryWnd_.IsWindowVisible()) entryWnd_.ShowWindow(SW_HIDE);
}

layout::Readouts::const_iterator CUIWindow::EntryReadout() const {
    return std::find_if(layout::kReadouts.begin(), layout::kReadouts.end(),
                        [this](const layout::Readout& readout) { return readout.entryId == activeEntry_; });
}

LRESULT CUIWindow::OnInputValReturn(WPARAM, LPARAM) {
    constexpr int kLongestText = 50;
    char text[kLongestText + 1] = "";
    const int length = entryWnd_.edit().GetWindowText(text, sizeof text);
    int entered = 0;
    std::from_chars(text, text + length, entered);
    // Half a hundredth away from zero, so that the display's last place is the one that was typed.
    float value = static_cast<float>(entered / 10.0 + (entered >= 0 ? 0.005 : -0.005));
    const auto readout = EntryReadout();
    if (readout != layout::kReadouts.end()) {
        float minimum = 0.0f;
        float maximum = 0.0f;
        GetParamMinMax(readout->parameter, &minimum, &maximum);
        const auto factor = static_cast<float>(readout->clampFactor);
        value = std::clamp(value, minimum * factor, maximum * factor);
        effect().setParameterFromDiaplay(readout->parameter, value);
    }
    activeEntry_ = -1;
    InvalidateRect(&layout::kModifyRect);
    Invalidate();
    SendMessage(WM_PAINT);
    return 0;
}

LRESULT CUIWindow::OnEntryTabbed(WPARAM, LPARAM direction) {
    const auto from = EntryReadout();
    if (from == layout::kReadouts.end()) return 0;
    SendMessage(kEntryConfirmed);
    const auto count = static_cast<std::ptrdiff_t>(layout::kReadouts.size());
    const std::ptrdiff_t to = (from - layout::kReadouts.begin() + direction + count) % count;
    OpenEntryFor(layout::kReadouts[static_cast<std::size_t>(to)]);
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

LRESULT CUIWindow::OnShowMessage(WPARAM, LPARAM) {
    AfxMessageBox(pendingMessage_.c_str(), MB_OK);
    return 0;
}

} // namespace vocafade
