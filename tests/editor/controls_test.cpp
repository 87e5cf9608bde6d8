// SPDX-License-Identifier: MIT
// The arithmetic of the controls and entry fields; no display is needed.
#include "editor/bitmap_knob.h"
#include "editor/bitmap_slider.h"
#include "editor/bitmap_switch.h"
#include "editor/entry_number.h"
#include "editor/format_edit.h"
#include "editor/preset_save_dlg.h"
#include "editor/spin_edit.h"
#include "ui/dc.h"
#include "ui/platform/platform.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

namespace vocafade::test {
namespace {

/// Notes what a control reports.
struct Reports {
    std::vector<float> values;
    int id = 0;
    static bool Callback(int id, float value, void* context) {
        auto& reports = *static_cast<Reports*>(context);
        reports.id = id;
        reports.values.push_back(value);
        return true;
    }
};

class Fader : public ::testing::Test {
  protected:
    Fader() {
        track.CreateBitmap(16, 133);
        thumb.CreateBitmap(14, 25);
    }
    void Make(bool vertical = true, bool logTaper = true, bool inverted = false, bool twoPosition = false) {
        const CPoint start = vertical ? CPoint(1, 121) : CPoint(10, 2);
        const CPoint end = vertical ? CPoint(1, 12) : CPoint(110, 2);
        fader.Make({48, 45, 64, 178}, {}, nullptr, &track, nullptr, &thumb, 0.0f, 1.0f,
                   inverted ? end : start, inverted ? start : end, 106, vertical ? 1 : 0, logTaper, inverted,
                   false, twoPosition, &Reports::Callback, &reports);
    }
    float At(int y) const { return fader.ValueAt({50, 45 + y}); }

    CKVBBitmap track;
    CKVBBitmap thumb;
    Reports reports;
    CKVBBitmapSliderDC fader;
};

TEST_F(Fader, ReportsChangesOnly) {
    Make();
    EXPECT_TRUE(fader.PtInSwitch({48, 45}));
    EXPECT_FALSE(fader.PtInSwitch({64, 45})); // the right edge is outside
    EXPECT_TRUE(fader.SetValueByPoint({50, 45}));
    EXPECT_FALSE(fader.SetValueByPoint({50, 46}));
    EXPECT_EQ(reports.values, std::vector<float>{1.0f});
    EXPECT_EQ(reports.id, 106);
    fader.SetValue(0.5f, nullptr, false);
    fader.SetValue(7.0f, nullptr, true);
    fader.SetValue(2.0f, nullptr, true); // the same, after clamping
    EXPECT_EQ(reports.values, (std::vector<float>{1.0f, 1.0f}));
    fader.SetValue(NAN, nullptr, true);
    EXPECT_EQ(fader.GetValue(), 1.0f);
    fader.Enable(false);
    EXPECT_FALSE(fader.SetValueByPoint({50, 178}));
    EXPECT_FALSE(fader.PtInSwitch({50, 50}));
}

TEST_F(Fader, OtherKindsOfTravel) {
    Make(true, false);
    EXPECT_EQ(At(121), 0.0f);
    EXPECT_FLOAT_EQ(At(66), 55.0f / 109.0f);
    fader.SetValue(0.5f, nullptr, false);
    EXPECT_EQ(fader.ThumbPlace().y, 54); // 121 - 54.5 - 12.5
    Make(true, true, true);              // upside down: the minimum is above
    EXPECT_EQ(At(0), 0.0f);
    EXPECT_EQ(At(130), 1.0f);
    EXPECT_NEAR(At(66), 0.2403, 0.01);
    Make(false); // horizontal is linear whatever the taper
    EXPECT_EQ(fader.ValueAt({48 + 5, 50}), 0.0f);
    EXPECT_FLOAT_EQ(fader.ValueAt({48 + 35, 50}), 0.25f);
    EXPECT_EQ(fader.ValueAt({48 + 111, 50}), 1.0f);
    Make(true, false, false, true);
    EXPECT_EQ(At(67), 0.0f);
    EXPECT_EQ(At(66), 1.0f);
}

class Knob : public ::testing::Test {
  protected:
    Knob() { Make(false); }
    void Make(bool logTaper) {
        knob.Make({307, 147, 341, 181}, {}, nullptr, nullptr, 0.0f, 1.0f, 111, 61, 30.0f, 330.0f, 8, logTaper,
                  &Reports::Callback, &reports);
    }
    /// Turns towards a place relative to the centre.
    float Towards(int dx, int dy) {
        knob.SetValue(CPoint(324 + dx, 164 + dy));
        return knob.GetValue();
    }
    Reports reports;
    CKVBNewBitmapTumamiDC knob;
};

TEST_F(Knob, DoesNotSwingThroughTheGapAtTheBottom) {
    EXPECT_EQ(Towards(-1, 20), 0.0f);
    EXPECT_EQ(Towards(1, 20), 0.0f);  // right of the bottom, yet it stays at the left end
    EXPECT_EQ(Towards(20, 5), 0.0f);  // however far
    EXPECT_EQ(Towards(0, -20), 0.0f); // the line above the centre belongs to neither side
    EXPECT_GT(Towards(-20, -20), 0.0f);
    EXPECT_GT(Towards(20, -5), 0.5f);
    EXPECT_EQ(Towards(1, 20), 1.0f);
    EXPECT_EQ(Towards(-20, 5), 1.0f);
    EXPECT_EQ(Towards(0, 0), 1.0f); // the centre itself says nothing
    // A new drag may begin anywhere.
    EXPECT_TRUE(knob.PtInTumami({310, 170}));
    knob.OnLButtonUp({324, 184}, nullptr);
    EXPECT_NEAR(Towards(-20, 0), 0.2, 1e-6);
}

TEST_F(Knob, TakesValuesWithoutWordWhenTheyStay) {
    knob.SetValue(0.25f, nullptr, true);
    knob.SetValue(0.25f, nullptr, true);
    knob.SetValue(NAN, nullptr, true);
    EXPECT_EQ(reports.values, std::vector<float>{0.25f});
    EXPECT_EQ(knob.Angle(), 105.0);
    knob.SetValue(9.0f, nullptr, false);
    EXPECT_EQ(knob.Frame(), 60);
    Make(true);
    EXPECT_NEAR(Towards(0, -20), 0.2403, 1e-4); // half way round on the decade taper
    EXPECT_EQ(knob.Frame(), 30);
}

TEST(Switch, TogglesLatchesAndKeepsQuietWhenDisabled) {
    Reports reports;
    CKVBBitmapSwitch2DC button;
    const auto make = [&](bool latching) {
        button.Make({24, 7, 49, 28}, nullptr, nullptr, nullptr, 108, {}, latching, nullptr,
                    &Reports::Callback, &reports);
    };
    make(false);
    button.SetValue(1, true);
    button.SetValue(1, true);
    button.SetValue(0, false);
    EXPECT_EQ(reports.values, std::vector<float>{1.0f});
    button.Enable(false);
    button.SetValue(1, true);
    EXPECT_FALSE(button.GetValue());
    make(true);
    button.SetValue(1, true);
    button.SetValue(0, true);
    button.LButtonDown(nullptr);
    EXPECT_TRUE(button.GetValue());
    EXPECT_FALSE(button.IsDown());
}

TEST(Switch, DrawsItsHalvesAndThroughItsMask) {
    const auto fill = [](CBitmap& bitmap, std::uint32_t above, std::uint32_t below) {
        bitmap.CreateBitmap(2, 4);
        const CRect halves[] = {{0, 0, 2, 2}, {0, 2, 2, 4}};
        bitmap.surface()->Fill({&halves[0], 1}, above);
        bitmap.surface()->Fill({&halves[1], 1}, below);
    };
    CKVBBitmap off;
    CKVBBitmap on;
    CKVBBitmap mask;
    fill(off, 0x111111, 0x222222);
    fill(on, 0x333333, 0x444444);
    fill(mask, 0x000000, 0xFFFFFF); // shows the released half, hides the pressed one
    CKVBBitmapSwitch2DC button;
    CDC screen;
    screen.CreateBitmapDC(4, 4);
    const auto shown = [&] {
        screen.FillSolidRect({0, 0, 4, 4}, 0x777777);
        button.DrawSwitch(&screen);
        EXPECT_EQ(screen.GetPixel(0, 0) & 0xFFFFFF, 0x777777U);
        return screen.GetPixel(1, 1) & 0xFFFFFF;
    };
    for (CKVBBitmap* through : {static_cast<CKVBBitmap*>(nullptr), &mask}) {
        button.Make({1, 1, 3, 3}, nullptr, &off, &on, 1, {}, false, through, nullptr, nullptr);
        EXPECT_EQ(shown(), 0x111111U);
        button.SetValue(1, true); // without a callback
        EXPECT_EQ(shown(), 0x333333U);
        button.LButtonDown(nullptr);
        EXPECT_EQ(shown(), through != nullptr ? 0x777777U : 0x444444U);
    }
    button.Enable(false);
    EXPECT_EQ(shown(), 0x777777U);
}

TEST(EntryNumbers, ReadAndWrite) {
    EXPECT_EQ(ParseEntryNumber("12.5"), 12.5);
    EXPECT_EQ(ParseEntryNumber(" +3"), 3.0);
    EXPECT_EQ(ParseEntryNumber("-.5x"), -0.5);
    EXPECT_EQ(ParseEntryNumber(""), 0.0);
    EXPECT_EQ(ParseEntryNumber("-"), 0.0);
    EXPECT_EQ(ParseEntryNumber(".."), 0.0);
    EXPECT_EQ(ParseEntryNumber("nan"), 0.0);
    EXPECT_EQ(ParseEntryNumber(std::string(400, '9')), 1.7976931348623157e308);
    EXPECT_EQ(ParseEntryNumber("-1" + std::string(400, '0')), -1.7976931348623157e308);
    EXPECT_EQ(ParseEntryNumber("0." + std::string(400, '0') + "1"), 0.0);
    EXPECT_EQ(FormatEntryNumber(12.25, 1), "12.2");
    EXPECT_EQ(FormatEntryNumber(1.7976931348623157e308, 1).size(), 311U);
    EXPECT_EQ(TruncateEntryNumber(-30.4), -30);
    EXPECT_EQ(TruncateEntryNumber(1e300), 2147483647);
}

TEST(EntryFields, TellTheirNumberInIntegerForm) {
    CNormalFloatEdit field;
    const auto integer = [&field](const char* shown) {
        static_cast<CEdit&>(field).SetWindowText(shown);
        CString text;
        field.GetWindowText(text);
        return std::string(text);
    };
    EXPECT_EQ(integer("12.5"), "125");
    EXPECT_EQ(integer("-3.04"), "-30");
    EXPECT_EQ(integer("1.29"), "12");
    EXPECT_EQ(integer(""), "0");
    EXPECT_EQ(integer("99999999999"), "2147483647");
    for (int tenths = -600; tenths <= 200000; tenths += 7) {
        CString text;
        text.Format("%d", tenths);
        field.SetWindowText(text);
        CString back;
        field.GetWindowText(back);
        ASSERT_EQ(back, text);
    }
    char small[3];
    field.SetWindowText("12345");
    EXPECT_EQ(field.GetWindowText(small, sizeof small), 2);
    EXPECT_STREQ(small, "12");
    field.SetFloatPoint(2);
    field.SetWindowText("12345");
    CString shown;
    static_cast<CEdit&>(field).GetWindowText(shown);
    EXPECT_EQ(shown, "123.45");
    CMiliSecondEdit time;
    time.SetWindowText("1500");
    static_cast<CEdit&>(time).GetWindowText(shown);
    EXPECT_EQ(shown, "1.500");
    CKVBSpinEdit number;
    number.SetNewValue(500, 0, 127);
    number.GetWindowText(shown);
    EXPECT_EQ(shown, "127");
}

TEST(ProgramNames, AreCutWithoutHalfACharacter) {
    EXPECT_EQ(CutProgramName("123456789012345678901234567890"), "12345678901234567890123");
    EXPECT_EQ(CutProgramName(""), "");
    const std::string ascii(22, 'a');
    EXPECT_EQ(CutProgramName(CString(ascii + "\x82\xA0")), CString(ascii)); // half would fit
    const std::string fits = ascii.substr(1) + "\x83\x83"; // its second half looks like a first
    EXPECT_EQ(CutProgramName(CString(fits)), CString(fits));
    EXPECT_EQ(CutProgramName(CString(fits + "b")), CString(fits));
}

} // namespace
} // namespace vocafade::test
