// SPDX-License-Identifier: MIT
#include "editor/ui_window.h"
#include "effect/avocafade.h"
#include "vst/opcodes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>

namespace vocafade {
namespace {

constexpr COLORREF kReadoutText = RGB(72, 72, 72);
/// Optical correction: digits have no descenders.
constexpr int kReadoutDrop = 3;

constexpr float kMeterCeilingDb = 6.0f;
/// How far a meter falls at each idle without new audio.
constexpr float kMeterFallDb = 0.25f;

/// Peak level as the meters show it: 6 dB a doubling, held within their scale.
float MeterDb(float level) {
    const double db = 6.0 * (std::log(static_cast<double>(level)) / std::numbers::ln2);
    if (!(db > layout::kMeterFloorDb)) return layout::kMeterFloorDb; // silence is minus infinity
    return static_cast<float>(std::min(db, static_cast<double>(kMeterCeilingDb)));
}

bool SameBits(float a, float b) { return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b); }

bool Covers(const CRect& outer, const CRect& inner) {
    return outer.left <= inner.left && outer.top <= inner.top && outer.right >= inner.right &&
           outer.bottom >= inner.bottom;
}

} // namespace

void CUIWindow::OnPaint() {
    painted_ = true;
    CPaintDC dc(this);
    CRect client;
    GetClientRect(&client);

    CDC source;
    source.CreateCompatibleDC(&dc);
    CDC picture;
    picture.CreateBitmapDC(client.Width(), client.Height());
    source.SelectObject(&bitmaps_.background);
    picture.BitBlt(0, 0, bitmaps_.background.Width(), bitmaps_.background.Height(), &source, 0, 0, SRCCOPY);

    picture.InitDrawing();
    picture.SetBkMode(TRANSPARENT);
    picture.SetTextColor(kReadoutText);
    CFont* font = picture.SelectObject(&smallFont_);
    DrawOutDisp(&picture);
    DrawInputDisp(&picture);
    DrawLoFreqDisp(&picture);
    DrawHiFreqDisp(&picture);
    DrawBlanceDisp(&picture);
    DrawVU(&picture);
    DrawClip(&picture);
    picture.ExitDrawing();
    DrawButtons(&picture);
    picture.SelectObject(font);

    dc.BitBlt(0, 0, client.Width(), client.Height(), &picture, 0, 0, SRCCOPY);
    for (BitmapControl* control : controls_)
        control->Draw(&dc);
    copyButton_.Draw(&dc);
    NoteShown(dc.updateRect());
}

void CUIWindow::DrawButtons(CDC* dc) {
    CDC source;
    source.CreateCompatibleDC(dc);
    source.SelectObject(&bitmaps_.save);
    dc->BitBlt(layout::kSaveRect.left, layout::kSaveRect.top, layout::kSaveRect.Width(),
               layout::kSaveRect.Height(), &source, 0, 0, SRCCOPY);
    source.SelectObject(&bitmaps_.modified);
    const int row = effect().IsProgramChanged() ? bitmaps_.modified.Height() / 2 : 0;
    dc->BitBlt(layout::kModifyRect.left, layout::kModifyRect.top, layout::kModifyRect.Width(),
               layout::kModifyRect.Height(), &source, 0, row, SRCCOPY);
}

void CUIWindow::DrawDisp(CDC* dc, int parameter) {
    const CRect& rect = layout::ControlOf(parameter).readout;
    char shown[kVstMaxParamStrLen * 8] = "";
    effect().getParameterDisplay(parameter, shown);
    const CString text(shown);
    const CSize size = dc->GetTextExtent(text);
    const int x = rect.left + (rect.Width() - size.cx) / 2;
    const int y = rect.top + (rect.Height() - size.cy) / 2 + kReadoutDrop;
    dc->ExtTextOut(x, y, ETO_CLIPPED, &rect, text);
}

void CUIWindow::DrawVU(CDC* dc) {
    const int width = bitmaps_.meter.Width() / 2;
    const int height = bitmaps_.meter.Height();
    CDC source;
    source.CreateCompatibleDC(dc);
    source.SelectObject(&bitmaps_.meter);
    for (std::size_t i = 0; i < vuDb_.size(); ++i) {
        const int x = layout::kMeterX[i];
        const int y = static_cast<int>(vuDb_[i] * layout::kMeterRowsPerDb + layout::kMeterZeroRow);
        dc->BitBlt(x, layout::kMeterY, width, height, &source, 0, 0, SRCCOPY);
        dc->BitBlt(x, layout::kMeterY + y, width, height - y, &source, width, y, SRCCOPY);
    }
}

void CUIWindow::idle() {
    ShowForeignChanges();
    if (FollowMeters()) {
        CClientDC dc(this);
        DrawVU(&dc);
    }
}

bool CUIWindow::FollowMeters() {
    const std::array<float, 4> before = vuDb_;
    const std::uint16_t counter = effect().GetProcessCounter();
    if (counter != lastVuCounter_) {
        lastVuCounter_ = counter;
        std::array<float, 4> levels{};
        effect().GetVU(&levels[0], &levels[1], &levels[2], &levels[3]);
        std::transform(levels.begin(), levels.end(), vuDb_.begin(), MeterDb);
    } else {
        for (float& db : vuDb_) {
            db = std::max(db - kMeterFallDb, layout::kMeterFloorDb);
        }
    }
    return vuDb_ != before;
}

void CUIWindow::NoteShown(const CRect& painted) {
    for (const layout::PanelControl& control : layout::kControls)
        if (Covers(painted, control.readout))
            shown_.displays[static_cast<std::size_t>(control.parameter)] =
                effect().getParameterDisplayVal(control.parameter);
    if (Covers(painted, layout::kModifyRect)) shown_.modified = effect().IsProgramChanged();
}

void CUIWindow::ShowForeignChanges() {
    if (!painted_) return;
    for (const layout::PanelControl& control : layout::kControls) {
        const auto at = static_cast<std::size_t>(control.parameter);
        const float value = effect().getParameter(control.parameter);
        if (!SameBits(value, shown_.values[at])) UpdateControl(control.parameter, value);
        if (!SameBits(effect().getParameterDisplayVal(control.parameter), shown_.displays[at]))
            InvalidateRect(&control.readout);
    }
    if (effect().IsProgramChanged() != shown_.modified) UpdateModify();
}

} // namespace vocafade
