// SPDX-License-Identifier: MIT
// What the wheel and the middle button do to a control.
#include "editor/ui_window.h"
#include "effect/avocafade.h"

#include <cmath>

namespace vocafade {
namespace {

// A notch is a step that one hears.
constexpr double kNotchDb = 0.5;
constexpr double kNotchesPerOctave = 36.0;
constexpr double kNotchPlaces = 1.0;
/// With Shift a notch is that part of it.
constexpr double kFine = 0.1;
/// Steps end on whole thousandths, so that steps there and back meet.
constexpr double kGrid = 1000.0;

/// The normalised value that lies `notches` above `normalised`.
float Stepped(int parameter, float normalised, double notches) {
    double shown = NormalizeValToInternalVal(parameter, normalised);
    switch (ParameterRow(parameter).taper) {
    case Taper::gain:
        shown += notches * kNotchDb;
        break;
    case Taper::frequency:
        shown *= std::exp2(notches / kNotchesPerOctave);
        break;
    default:
        shown += notches * kNotchPlaces;
        break;
    }
    const auto rounded = static_cast<float>(std::round(shown * kGrid) / kGrid);
    return ParameterRow(parameter).taper == Taper::gain ? NormalizeDisplayValue(parameter, rounded)
                                                        : NormalizeWholeDisplayValue(parameter, rounded);
}

} // namespace

std::size_t CUIWindow::ControlAt(CPoint point) const {
    std::size_t at = 0;
    while (at < layout::kControls.size() && !layout::kControls[at].rect.PtInRect(point) &&
           !layout::kControls[at].readout.PtInRect(point))
        ++at;
    return at;
}

void CUIWindow::MoveControl(std::size_t at, float value) {
    HideEdit(); // it would show what was
    CClientDC dc(this);
    controls_[at]->Change(value, &dc);
}

LRESULT CUIWindow::OnMouseWheel(WPARAM wParam, LPARAM lParam) {
    const std::size_t at = ControlAt(CPoint::FromMessage(lParam));
    if (TrackingControl() != nullptr || at == layout::kControls.size()) return 0;
    const int parameter = layout::kControls[at].parameter;
    if (ParameterRow(parameter).taper == Taper::step) return 0;
    const int notches = static_cast<std::int16_t>(HIWORD(wParam)) / WHEEL_DELTA; // whole ones are sent
    const double share = GetKeyState(VK_SHIFT) < 0 ? kFine : 1.0;
    MoveControl(at, Stepped(parameter, effect().getParameter(parameter), notches * share));
    return 0;
}

LRESULT CUIWindow::OnMButtonDown(WPARAM, LPARAM lParam) {
    const std::size_t at = ControlAt(CPoint::FromMessage(lParam));
    if (TrackingControl() == nullptr && at < layout::kControls.size())
        MoveControl(at, DefaultNormalizedValue(layout::kControls[at].parameter));
    return 0;
}

} // namespace vocafade
