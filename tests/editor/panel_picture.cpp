// SPDX-License-Identifier: MIT
#include "tests/editor/panel_picture.h"

#include "ui/dc.h"
#include "ui/gdi.h"

#include <cmath>
#include <map>

namespace vocafade::test {
namespace {

void Load(CBitmap& bitmap, const std::string& path) {
    const std::string bytes = ReadFile(path);
    EXPECT_TRUE(bitmap.LoadPng(std::as_bytes(std::span(bytes)))) << path;
}

CBitmap& Bitmap(int number) {
    static std::map<int, CBitmap> bitmaps;
    CBitmap& bitmap = bitmaps[number];
    if (bitmap.IsNull())
        Load(bitmap, std::string(VOCAFADE_RESOURCES) + "/" + std::to_string(number) + ".png");
    return bitmap;
}

/// Draws `width` by `height` pixels from (sx, sy) of a bitmap.
void Put(CDC& panel, CBitmap& bitmap, int x, int y, int width, int height, int sx = 0, int sy = 0) {
    CDC source;
    source.CreateCompatibleDC(&panel);
    source.SelectObject(&bitmap);
    panel.BitBlt(x, y, width, height, &source, sx, sy, SRCCOPY);
}

/// Draws a whole bitmap, or the upper or lower one of two.
void Put(CDC& panel, int number, CPoint at, int parts = 1, int part = 0) {
    CBitmap& bitmap = Bitmap(number);
    const int height = bitmap.Height() / parts;
    Put(panel, bitmap, at.x, at.y, bitmap.Width(), height, 0, part * height);
}

void PutFader(CDC& panel, CPoint at, float value) {
    CDC fader;
    fader.CreateBitmapDC(16, 133);
    Put(fader, 3006, {0, 0});
    // The thumb's centre travels from row 121 up to row 12; a tenth of the range takes a quarter of the way.
    const double travel = std::log10(static_cast<double>(value) * 9.0 + 1.0);
    const int centre = static_cast<int>(std::lround(121.0 - 109.0 * travel));
    Put(fader, 3007, {1, centre - 12});
    panel.BitBlt(at.x, at.y, 16, 133, &fader, 0, 0, SRCCOPY);
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
    Picture picture{panel.size().cx, panel.size().cy, {}};
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::uint32_t c = panel.GetPixel(x, y);
            picture.pixels.push_back(GetRValue(c) << 16 | GetGValue(c) << 8 | GetBValue(c));
        }
    }
    return picture;
}

} // namespace

PanelState PanelState::Of(HostedEditor& editor) {
    PanelState state;
    for (std::int32_t i = 0; i < 6; ++i) {
        state.values[static_cast<std::size_t>(i)] = editor.Value(i);
        state.displays[static_cast<std::size_t>(i)] = editor.Display(i);
    }
    return state;
}

Picture ExpectedPanel(const PanelState& state) {
    CDC panel;
    panel.CreateBitmapDC(477, 214);
    Put(panel, 3005, {0, 0});
    for (const layout::PanelControl& control : layout::kControls) {
        const auto parameter = static_cast<std::size_t>(control.parameter);
        const CPoint at = control.rect.TopLeft();
        if (control.picture == resource::kFaderTrack) PutFader(panel, at, state.values[parameter]);
        if (!control.readout.IsRectEmpty()) PutReadout(panel, control.readout, state.displays[parameter]);
    }
    const std::array<int, 4> meterX{29, 38, 432, 441};
    for (std::size_t i = 0; i < meterX.size(); ++i) {
        const int lit = static_cast<int>(19.0f - 3.0f * state.meters[i]);
        Put(panel, Bitmap(3008), meterX[i], 45, 7, 133);
        Put(panel, Bitmap(3008), meterX[i], 45 + lit, 7, 133 - lit, 7, lit);
    }
    Put(panel, 3013, {270, 10});
    Put(panel, 3014, {216, 10}, 2, state.modified ? 1 : 0);
    Put(panel, 3004, {307, 147}, 61, static_cast<int>(std::floor(state.values[5] * 60.0f + 0.5f)));
    Put(panel, state.values[0] >= 0.5f ? 3003 : 3002, {24, 7}, 2);
    Put(panel, state.copyOpen ? 3011 : 3012, {64, 10}, 2);
    return Read(panel);
}

Picture PictureIn(const std::string& path, CSize size) {
    CBitmap bitmap;
    Load(bitmap, path);
    CDC drawn;
    drawn.CreateBitmapDC(size.cx, size.cy);
    Put(drawn, bitmap, 0, 0, size.cx, size.cy);
    return Read(drawn);
}

bool WritePng(const Picture& picture, const std::string& path) {
    CDC drawn;
    if (!drawn.CreateBitmapDC(picture.width, picture.height)) return false;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const std::uint32_t pixel = picture.at(x, y);
            drawn.FillSolidRect({x, y, x + 1, y + 1},
                                RGB(pixel >> 16 & 0xFF, pixel >> 8 & 0xFF, pixel & 0xFF));
        }
    }
    return drawn.SavePng(path.c_str());
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
            where.UnionRect(where, {x, y, x + 1, y + 1});
        }
    }
    if (different == 0) return ::testing::AssertionSuccess();
    const std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
    WritePng(shown, ::testing::TempDir() + name + "-shown.png");
    WritePng(expected, ::testing::TempDir() + name + "-expected.png");
    return ::testing::AssertionFailure()
           << different << " pixels differ within (" << where.left << ", " << where.top << ")-("
           << where.right << ", " << where.bottom << "); see " << ::testing::TempDir() << name << "-*.png";
}

::testing::AssertionResult ShowsItsEffect(HostedEditor& editor, bool modified) {
    PanelState state = PanelState::Of(editor);
    state.modified = modified;
    return SamePicture(editor.LookAtPanel(), ExpectedPanel(state));
}

} // namespace vocafade::test
