// SPDX-License-Identifier: MIT
// The bitmaps against the panel's fixed rectangles: sizes, seams, and scales that tell the truth.
#include "editor/panel_layout.h"
#include "plugin/plugin_resources.h"
#include "ui/dc.h"
#include "ui/platform/platform.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace vocafade::test {
namespace {

void Load(CBitmap& bitmap, int number, int times = 1) {
    PluginResources::Register();
    EXPECT_TRUE(bitmap.LoadPng(GetResourceSource()->LoadEmbedded(number, times), times)) << number;
}

/// A bitmap resource.
struct Bitmap : CDC {
    explicit Bitmap(int number) {
        CBitmap bitmap;
        Load(bitmap, number);
        CreateBitmapDC(bitmap.Width(), bitmap.Height());
        CDC source;
        source.SelectObject(&bitmap);
        BitBlt(0, 0, bitmap.Width(), bitmap.Height(), &source, 0, 0, SRCCOPY);
    }
    int Light(int x, int y) const {
        const COLORREF color = GetPixel(x, y);
        return GetRValue(color) + GetGValue(color) + GetBValue(color);
    }
};

/// Row of the panel on which a fader's index line stands for a normalised value.
int FaderRow(double normalised, int thumbHeight) {
    const int start = layout::ControlOf(kParameterInput).rect.Height() - thumbHeight / 2;
    const int end = thumbHeight / 2;
    return layout::ControlOf(kParameterInput).rect.top +
           static_cast<int>(std::floor(start + (end - start) * std::log10(normalised * 9.0 + 1.0) + 0.5));
}

TEST(Bitmaps, JoinThePlateWithoutASeam) {
    const Bitmap plate(3005);
    const Bitmap track(3006);
    for (const layout::PanelControl& control : layout::kControls) {
        if (control.picture != resource::kFaderTrack) continue;
        for (int y = 0; y < track.size().cy; ++y)
            for (int x = 0; x < track.size().cx; ++x)
                ASSERT_EQ(track.GetPixel(x, y), plate.GetPixel(control.rect.left + x, control.rect.top + y))
                    << x << ", " << y;
    }
    const Bitmap knob(3004);
    const CRect& place = layout::ControlOf(kParameterPosition).rect;
    for (int frame = 0; frame < 61; ++frame) {
        for (int i = 0; i < 34; ++i) {
            for (const CPoint edge : {CPoint(i, 0), CPoint(i, 33), CPoint(0, i), CPoint(33, i)})
                ASSERT_EQ(knob.GetPixel(edge.x, frame * 34 + edge.y),
                          plate.GetPixel(place.left + edge.x, place.top + edge.y))
                    << frame << ": " << i;
        }
    }
}

TEST(Bitmaps, EveryKnobFramePointsAtItsAngle) {
    const Bitmap knob(3004);
    for (int frame = 0; frame < 61; ++frame) {
        double x = 0;
        double y = 0;
        for (int row = 0; row < 34; ++row) {
            for (int column = 0; column < 34; ++column) {
                const double dx = column + 0.5 - 17;
                const double dy = row + 0.5 - 17;
                if (std::hypot(dx, dy) < 13 && knob.Light(column, frame * 34 + row) > 450) {
                    x += dx;
                    y += dy;
                }
            }
        }
        ASSERT_GT(std::hypot(x, y), 50) << "no pointer in frame " << frame;
        const double angle = std::fmod(std::atan2(-x, y) * 180.0 / M_PI + 360.0, 360.0);
        EXPECT_NEAR(angle, 30.0 + 5.0 * frame, 2.5) << "frame " << frame;
    }
}

TEST(Bitmaps, ScalesMeetTheFadersIndexLine) {
    const Bitmap plate(3005);
    const Bitmap thumb(3007);
    const int thumbHeight = thumb.size().cy;
    // A graduation is darker than the plate three rows above and below it, at the end next to the fader.
    const auto expectMark = [&](int x, int row, const std::string& name) {
        const int mark = plate.Light(x, row);
        EXPECT_LT(mark, plate.Light(x, row - 1) - 100) << name;
        EXPECT_LT(mark, plate.Light(x, row + 1) - 100) << name;
    };
    for (const int decibels : {6, 3, 0, -3, -6, -12, -18, -24}) {
        const double gain = std::exp2(decibels / 6.0);
        expectMark(409, FaderRow((gain - 0.001) / 1.999, thumbHeight), "Output " + std::to_string(decibels));
        if (decibels <= 0) {
            expectMark(67, FaderRow((gain - 0.001) / 0.999, thumbHeight),
                       "Input " + std::to_string(decibels));
        }
    }
    for (const int hertz : {20, 500, 1000, 2000, 3000, 5000, 7000, 10000, 15000, 20000}) {
        const int row = FaderRow((hertz - 20.0) / 19980.0, thumbHeight);
        expectMark(161, row, "LoFreq " + std::to_string(hertz));
        expectMark(225, row, "HiFreq " + std::to_string(hertz));
    }
    for (int decibels = 6; decibels >= -36; decibels -= 6) {
        expectMark(24, layout::kMeterY + 19 - 3 * decibels, "input meter " + std::to_string(decibels));
        expectMark(452, layout::kMeterY + 19 - 3 * decibels, "output meter " + std::to_string(decibels));
    }
    EXPECT_GT(thumb.Light(7, thumbHeight / 2), 650) << "the index line is the thumb's middle row";
}

/// What is drawn of a bitmap at a scale, in the size that the editor takes for it.
void DrawAt(platform::Surface& target, int number, const CRect& to, CPoint from = {}) {
    const int times = std::clamp(static_cast<int>(std::ceil(target.Scale())), 1, 3);
    CBitmap bitmap;
    Load(bitmap, number, times);
    target.Draw(*bitmap.surface(), {from, to.Size()}, to, {&to, 1});
}

double Luminance(std::uint32_t pixel) {
    const auto linear = [&](int shift) {
        const double v = (pixel >> shift & 0xFF) / 255.0;
        return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(16) + 0.7152 * linear(8) + 0.0722 * linear(0);
}

/// The contrast of the strokes in `where` to their ground: of its strongest fiftieth to its middle.
double Contrast(platform::Surface& picture, const CRect& where) {
    const CRect r = platform::ToDevice(where, picture.Scale());
    std::vector<double> light;
    for (int y = r.top; y < r.bottom; ++y)
        for (int x = r.left; x < r.right; ++x)
            light.push_back(Luminance(picture.Pixels()[y * picture.Stride() + x]));
    std::sort(light.begin(), light.end());
    const double ground = light[light.size() / 2] + 0.05;
    const std::size_t few = light.size() / 50;
    return std::max(ground / (light[few] + 0.05), (light[light.size() - 1 - few] + 0.05) / ground);
}

TEST(Bitmaps, LetteringHoldsItsContrastAtEveryScale) {
    std::vector<std::pair<std::string, CRect>> words{
        {"INPUT", {31, 32, 62, 40}},      {"LOW", {137, 32, 160, 40}},    {"HIGH", {225, 32, 249, 40}},
        {"POSITION", {302, 32, 348, 40}}, {"OUTPUT", {410, 32, 451, 40}}, {"Hz", {187, 188, 200, 196}},
        {"dB", {51, 188, 63, 196}},       {"ON", {9, 14, 22, 22}},        {"COPY FROM", {94, 14, 142, 22}},
        {"EDITED", {219, 14, 249, 22}},   {"SAVE", {277, 14, 307, 22}},   {"C", {320, 130, 329, 138}}};
    for (int decibels = 6; decibels >= -36; decibels -= 6) { // beside the meters
        const int row = layout::kMeterY + 19 - 3 * decibels;
        words.push_back({"input " + std::to_string(decibels), {9, row - 4, 21, row + 4}});
        words.push_back({"output " + std::to_string(decibels), {456, row - 4, 468, row + 4}});
    }
    for (const int hertz : {20, 500, 1000, 2000, 3000, 5000, 7000, 10000, 15000, 20000}) {
        const int row = FaderRow((hertz - 20.0) / 19980.0, Bitmap(3007).size().cy);
        words.push_back({std::to_string(hertz) + " Hz", {182, row - 4, 205, row + 4}});
    }
    for (int quarters = 4; quarters <= 16; ++quarters) {
        const double scale = quarters / 4.0;
        for (const bool edited : {false, true}) {
            const auto panel = platform::MakeSurface(477, 214, scale);
            DrawAt(*panel, 3005, {0, 0, 477, 214});
            DrawAt(*panel, 3013, layout::kSaveRect);
            DrawAt(*panel, 3014, layout::kModifyRect, {0, edited ? 16 : 0});
            for (const auto& [word, where] : words)
                EXPECT_GE(Contrast(*panel, where), 4.5) << word << " at " << scale;
        }
    }
}

} // namespace
} // namespace vocafade::test
