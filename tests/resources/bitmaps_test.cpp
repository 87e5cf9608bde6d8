// SPDX-License-Identifier: MIT
// The bitmaps against the panel's fixed rectangles: sizes, seams, and scales that tell the truth.
#include "editor/panel_layout.h"
#include "tests/support/temp_folder.h"
#include "ui/dc.h"

#include <cmath>

namespace vocafade::test {
namespace {

/// A bitmap resource.
struct Bitmap : CDC {
    explicit Bitmap(int number) {
        const std::string file =
            ReadFile(std::string(VOCAFADE_RESOURCES) + "/" + std::to_string(number) + ".png");
        CBitmap bitmap;
        EXPECT_TRUE(bitmap.LoadPng(std::as_bytes(std::span(file)))) << number;
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
    for (const layout::Control& control : layout::kControls) {
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

} // namespace
} // namespace vocafade::test
