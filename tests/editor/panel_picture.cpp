// SPDX-License-Identifier: MIT
#include "tests/editor/panel_picture.h"

#include "ui/dc.h"
#include "ui/gdi.h"

#include <cmath>
#include <fstream>
#include <map>

namespace vocafade::test {
namespace {

CBitmap& Bitmap(int number) {
    static std::map<int, CBitmap> bitmaps;
    CBitmap& bitmap = bitmaps[number];
    if (bitmap.IsNull()) {
        const std::string bytes =
            ReadFile(std::string(VOCAFADE_RESOURCES) + "/" + std::to_string(number) + ".png");
        EXPECT_TRUE(bitmap.LoadPng(std::as_bytes(std::span(bytes)))) << number;
    }
    return bitmap;
}

/// Draws `width` by `height` pixels from (sx, sy) of a bitmap.
void Put(CDC& panel, int number, int x, int y, int width, int height, int sx = 0, int sy = 0) {
    CDC source;
    source.CreateCompatibleDC(&panel);
    source.SelectObject(&Bitmap(number));
    panel.BitBlt(x, y, width, height, &source, sx, sy, SRCCOPY);
}

void PutFader(CDC& panel, int x, float value) {
    CDC fader;
    fader.CreateBitmapDC(16, 133);
    Put(fader, 3006, 0, 0, 16, 133);
    // The thumb's centre travels from row 121 up to row 12; a tenth of the range takes a quarter of the way.
    const double travel = std::log10(static_cast<double>(value) * 9.0 + 1.0);
    const int centre = static_cast<int>(std::lround(121.0 - 109.0 * travel));
    Put(fader, 3007, 1, centre - 12, 14, 25);
    panel.BitBlt(x, 45, 16, 133, &fader, 0, 0, SRCCOPY);
}

void PutReadout(CDC& panel, const CRect& box, const std::string& text) {
    static CFont font;
    font.CreatePointFont(9, "Osaka");
    panel.SelectObject(&font);
    panel.SetTextColor(0x484848);
    const CSize size = panel.GetTextExtent(text.c_str());
    panel.ExtTextOut(box.left + (box.Width() - size.cx) / 2, box.top + (box.Height() - size.cy) / 2 + 3,
                     ETO_CLIPPED, &box, CString(text));
}

Picture Read(const CDC& panel) {
    Picture picture{477, 214, {}};
    for (int y = 0; y < 214; ++y) {
        for (int x = 0; x < 477; ++x) {
            const std::uint32_t c = panel.GetPixel(x, y);
            picture.pixels.push_back(GetRValue(c) << 16 | GetGValue(c) << 8 | GetBValue(c));
        }
    }
    return picture;
}

void Save(const Picture& picture, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << picture.width << ' ' << picture.height << "\n255\n";
    for (const std::uint32_t pixel : picture.pixels) {
        file.put(static_cast<char>(pixel >> 16)).put(static_cast<char>(pixel >> 8));
        file.put(static_cast<char>(pixel));
    }
}

} // namespace

PanelState PanelState::Of(HostedEditor& editor) {
    PanelState state;
    for (std::int32_t i = 0; i < 6; ++i) {
        state.values[static_cast<std::size_t>(i)] = editor.Value(i);
        state.displays[static_cast<std::size_t>(i)] = editor.Display(i);
    }
    state.on = editor.Value(0) >= 0.5f;
    return state;
}

Picture ExpectedPanel(const PanelState& state) {
    CDC panel;
    panel.CreateBitmapDC(477, 214);
    Put(panel, 3005, 0, 0, 477, 214);
    PutReadout(panel, {414, 184, 448, 200}, state.displays[1]);
    PutReadout(panel, {14, 184, 48, 200}, state.displays[2]);
    PutReadout(panel, {125, 184, 174, 200}, state.displays[3]);
    PutReadout(panel, {213, 184, 262, 200}, state.displays[4]);
    PutReadout(panel, {300, 184, 349, 200}, state.displays[5]);
    const std::array<int, 4> meterX{29, 38, 432, 441};
    for (std::size_t i = 0; i < meterX.size(); ++i) {
        const int lit = static_cast<int>(19.0f - 3.0f * state.meters[i]);
        Put(panel, 3008, meterX[i], 45, 7, 133);
        Put(panel, 3008, meterX[i], 45 + lit, 7, 133 - lit, 7, lit);
    }
    Put(panel, 3013, 270, 10, 43, 16);
    Put(panel, 3014, 216, 10, 43, 16, 0, state.modified ? 16 : 0);
    PutFader(panel, 48, state.values[2]);
    PutFader(panel, 413, state.values[1]);
    PutFader(panel, 141, state.values[3]);
    PutFader(panel, 229, state.values[4]);
    Put(panel, 3004, 307, 147, 34, 34, 0, 34 * static_cast<int>(std::floor(state.values[5] * 60.0f + 0.5f)));
    Put(panel, state.on ? 3003 : 3002, 24, 7, 25, 21);
    Put(panel, state.copyOpen ? 3011 : 3012, 64, 10, 27, 19);
    return Read(panel);
}

::testing::AssertionResult SamePicture(const Picture& shown, const Picture& expected, const CRect& rect) {
    if (shown.pixels.size() != expected.pixels.size()) {
        return ::testing::AssertionFailure() << "nothing to be seen";
    }
    int different = 0;
    CRect where;
    for (int y = rect.top; y < rect.bottom; ++y) {
        for (int x = rect.left; x < rect.right; ++x) {
            if (shown.at(x, y) == expected.at(x, y)) continue;
            ++different;
            const CRect so_far = where;
            where.UnionRect(so_far, {x, y, x + 1, y + 1});
        }
    }
    if (different == 0) return ::testing::AssertionSuccess();
    const std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
    Save(shown, ::testing::TempDir() + name + "-shown.ppm");
    Save(expected, ::testing::TempDir() + name + "-expected.ppm");
    return ::testing::AssertionFailure()
           << different << " pixels differ within (" << where.left << ", " << where.top << ")-("
           << where.right << ", " << where.bottom << "); see " << ::testing::TempDir() << name << "-*.ppm";
}

::testing::AssertionResult ShowsItsEffect(HostedEditor& editor, bool modified) {
    PanelState state = PanelState::Of(editor);
    state.modified = modified;
    return SamePicture(editor.LookAtPanel(), ExpectedPanel(state));
}

} // namespace vocafade::test
