// SPDX-License-Identifier: MIT
// Drawing without any display, looked at pixel by pixel.

#include "ui/dc.h"
#include "ui/platform/platform.h"

#include <gtest/gtest.h>

namespace vocafade::test {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000U;
constexpr COLORREF kRed = RGB(255, 0, 0);
constexpr COLORREF kBlue = RGB(0, 0, 255);
constexpr COLORREF kWhite = RGB(255, 255, 255);

/// The smallest rectangle around everything that is not `ground`.
CRect InkBox(const CDC& dc, COLORREF ground) {
    CRect box;
    for (int y = 0; y < dc.size().cy; ++y)
        for (int x = 0; x < dc.size().cx; ++x)
            if ((dc.GetPixel(x, y) & 0xFFFFFF) != ground) box.UnionRect(box, {x, y, x + 1, y + 1});
    return box;
}

class Paper : public CDC {
  public:
    /// Whether both look the same; they have one size.
    bool operator==(const Paper& other) const {
        for (int y = 0; y < size().cy; ++y)
            for (int x = 0; x < size().cx; ++x)
                if (GetPixel(x, y) != other.GetPixel(x, y)) return false;
        return true;
    }
    Paper(int width, int height, COLORREF ground = kWhite) {
        CreateBitmapDC(width, height);
        FillSolidRect(clientRect(), ground);
    }
};

TEST(Drawing, ClipsToRegionsWithHoles) {
    Paper dc(10, 10);
    CRgn region(CRect(2, 2, 8, 8));
    region.Subtract({4, 4, 6, 6});
    dc.SelectClipRgn(&region);
    dc.FillSolidRect({0, 0, 10, 10}, kBlue);
    dc.SelectClipRgn(nullptr);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x) {
            const bool inside = CRect(2, 2, 8, 8).PtInRect({x, y}) && !CRect(4, 4, 6, 6).PtInRect({x, y});
            EXPECT_EQ(dc.GetPixel(x, y), kOpaque | (inside ? kBlue : kWhite)) << x << "," << y;
        }

    CRgn both(CRect(0, 0, 5, 5));
    both.Add({3, 3, 9, 9});
    int area = 0;
    for (const CRect& r : both.rects())
        area += r.Width() * r.Height();
    EXPECT_EQ(area, 25 + 36 - 4) << "what two share counts once";
    both.Intersect(CRect(3, 3, 5, 20));
    EXPECT_EQ(both.GetRgnBox(), CRect(3, 3, 5, 9));
    both.Subtract({0, 0, 9, 9});
    EXPECT_TRUE(both.IsEmpty());
}

TEST(Drawing, CopiesBitmapsWithTheirAlpha) {
    CBitmap image; // the left half red, the right one transparent
    ASSERT_TRUE(image.CreateBitmap(4, 2));
    const CRect left(0, 0, 2, 2);
    image.surface()->Fill({&left, 1}, 0xFF0000);
    int w = 0;
    int h = 0;
    int row = 0;
    GetBitmapSize0(image, &w, &h, &row);
    EXPECT_EQ(row, 16);

    Paper dc(8, 4, kBlue);
    CDC source;
    source.CreateCompatibleDC(&dc);
    EXPECT_EQ(source.SelectObject(&image), nullptr);
    EXPECT_TRUE(dc.BitBlt(1, 1, 4, 2, &source, 0, 0, SRCCOPY));
    EXPECT_EQ(dc.GetPixel(1, 1), kOpaque | kRed);
    EXPECT_EQ(dc.GetPixel(3, 1), kOpaque | kBlue) << "transparent pixels let the ground through";
    EXPECT_EQ(dc.GetPixel(0, 0), kOpaque | kBlue);
    // A part, and a part that reaches beyond the source: what is not there is not drawn.
    dc.FillSolidRect(dc.clientRect(), kBlue);
    dc.BitBlt(5, 0, 2, 1, &source, 1, 1, SRCCOPY);
    EXPECT_EQ(dc.GetPixel(5, 0), kOpaque | kRed);
    EXPECT_EQ(dc.GetPixel(6, 0), kOpaque | kBlue);
    dc.FillSolidRect(dc.clientRect(), kBlue);
    dc.BitBlt(0, 0, 6, 4, &source, -2, -1, SRCCOPY);
    EXPECT_EQ(InkBox(dc, kBlue), CRect(2, 1, 4, 3));
    EXPECT_EQ(source.SelectObject(static_cast<CBitmap*>(nullptr)), &image);
}

TEST(Drawing, CopiesFromAnotherContextAndFromItself) {
    Paper from(4, 4);
    from.FillSolidRect({0, 0, 2, 4}, kRed);
    Paper to(8, 4, kBlue);
    from.SetViewportOrg(1, 0); // the source's origin counts, too
    to.BitBlt(0, 0, 2, 2, &from, 0, 0, SRCCOPY);
    EXPECT_EQ(to.GetPixel(0, 0), kOpaque | kRed);
    EXPECT_EQ(to.GetPixel(1, 0), kOpaque | kWhite);
    // An overlapping move reads what was there before.
    Paper line(4, 1);
    for (int x = 0; x < 4; ++x)
        line.FillSolidRect({x, 0, x + 1, 1}, RGB(static_cast<unsigned>(x + 1), 0, 0));
    line.BitBlt(1, 0, 3, 1, &line, 0, 0, SRCCOPY);
    for (int x = 1; x < 4; ++x)
        EXPECT_EQ(line.GetPixel(x, 0), kOpaque | RGB(static_cast<unsigned>(x), 0, 0));
}

TEST(Drawing, StretchesWithoutBleedingInFromOutside) {
    Paper from(6, 2, kBlue);
    from.FillSolidRect({2, 0, 4, 2}, kRed);
    Paper to(20, 10);
    to.StretchBlt(0, 0, 20, 10, &from, 2, 0, 2, 2, SRCCOPY);
    for (const CPoint p : {CPoint(0, 0), CPoint(19, 9), CPoint(10, 5)})
        EXPECT_EQ(to.GetPixel(p.x, p.y), kOpaque | kRed) << p.x << "," << p.y;
    // Of a source cut at its edge, the destination gets its share.
    Paper half(20, 2);
    half.StretchBlt(0, 0, 20, 2, &from, 3, 0, 6, 2, SRCCOPY);
    EXPECT_EQ(half.GetPixel(1, 0), kOpaque | kRed);
    EXPECT_EQ(half.GetPixel(8, 0), kOpaque | kBlue);
    EXPECT_EQ(half.GetPixel(11, 0), kOpaque | kWhite);
}

TEST(Drawing, NothingToDrawWithOrOnDrawsNothing) {
    Paper dc(2, 2);
    CDC none;
    CBitmap empty;
    EXPECT_FALSE(empty.LoadPng({}));
    const std::byte junk[] = {std::byte{0x89}, std::byte{'P'}, std::byte{'N'}, std::byte{'G'}};
    EXPECT_FALSE(empty.LoadPng(junk));
    none.SelectObject(&empty);
    testing::internal::CaptureStderr();
    EXPECT_TRUE(dc.BitBlt(0, 0, 2, 2, &none, 0, 0, SRCCOPY));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "BitBlt null \x80r\x80n");
    EXPECT_TRUE(none.BitBlt(0, 0, 2, 2, &dc, 0, 0, SRCCOPY));
    EXPECT_TRUE(none.TextOut(0, 0, "text"));
    EXPECT_TRUE(dc.TextOut(0, 0, static_cast<const char*>(nullptr)));
    EXPECT_EQ(InkBox(dc, kWhite), CRect());
    EXPECT_EQ(empty.Width(), 0);
    EXPECT_FALSE(dc.CreateBitmapDC(0, 5));
    EXPECT_FALSE(dc.CreateBitmapDC(5, -1));
}

TEST(Drawing, TextStandsOnItsFontsBaseline) {
    CFont font;
    ASSERT_TRUE(font.CreatePointFont(40, "DejaVu Sans"));
    // Its file says: 2048 units an em, 1901 above the baseline, a bounding box from -948 to 2524.
    EXPECT_EQ(font.ascent(), static_cast<int>(40 * 1901 / 2048.0 - 2.0));
    EXPECT_EQ(font.height(), static_cast<int>(40 * (2524 + 948) / 2048.0));

    Paper dc(200, 80);
    EXPECT_EQ(dc.SelectObject(&font), nullptr);
    dc.TextOut(10, 5, "HHH");
    const CRect ink = InkBox(dc, kWhite);
    EXPECT_EQ(ink.bottom, 5 + font.ascent()) << "capitals stand on the baseline";
    EXPECT_NEAR(ink.Height(), 40 * 0.729, 1.5);
    const CSize extent = dc.GetTextExtent("HHH");
    EXPECT_GE(ink.left, 10);
    EXPECT_LE(ink.right, 10 + extent.cx);
    EXPECT_NEAR(extent.cx, 3 * 40 * 0.752, 3.0);
    EXPECT_EQ(dc.GetTextExtent("H").cy, dc.GetTextExtent("\xE6\xAD\x8C").cy) << "the line is the font's";
    EXPECT_EQ(dc.GetTextExtent("").cx, 0);

    // A size of 9 is 9 pixels, not tenths; the same text at the same place draws the same.
    CFont small;
    small.CreatePointFont(9, "DejaVu Sans");
    Paper a(60, 20);
    Paper b(60, 20);
    for (Paper* p : {&a, &b}) {
        p->SelectObject(&small);
        p->SetTextColor(RGB(72, 72, 72));
        p->TextOut(2, 2, "-12.5");
    }
    EXPECT_LT(InkBox(a, kWhite).Height(), 10);
    EXPECT_TRUE(a == b);
}

TEST(Drawing, TextHasAGroundOnlyWhenItIsAskedFor) {
    CDC dc;
    dc.CreateBitmapDC(60, 20);
    dc.FillSolidRect(dc.clientRect(), kBlue);
    dc.SetBkColor(kRed);
    dc.TextOut(4, 2, "  ");
    EXPECT_EQ(InkBox(dc, kBlue), CRect());
    dc.SetBkMode(OPAQUE);
    dc.TextOut(4, 2, "  ");
    EXPECT_EQ(InkBox(dc, kBlue), CRect({4, 2}, dc.GetTextExtent("  ")));
}

TEST(Drawing, FontsAreFoundByTheirPostScriptNameFirst) {
    const auto width = [](const char* name) {
        CFont font;
        font.CreatePointFont(40, name);
        CDC dc;
        dc.SelectObject(&font);
        return dc.GetTextExtent("Hamburgefonts").cx;
    };
    EXPECT_GT(width("DejaVuSans-Bold"), width("DejaVuSans"));
    EXPECT_EQ(width("DejaVuSerif"), width("DejaVu Serif"));
    EXPECT_NE(width("DejaVuSerif"), width("DejaVuSans"));
}

TEST(Drawing, ClippedTextKeepsItsBaselineAndItsRectangle) {
    CFont font;
    font.CreatePointFont(12, "DejaVu Sans");
    Paper whole(100, 30);
    Paper cut(100, 30);
    const CRect rect(14, 6, 40, 15);
    for (Paper* p : {&whole, &cut})
        p->SelectObject(&font);
    whole.TextOut(10, 4, "20000.0");
    cut.ExtTextOut(10, 4, ETO_CLIPPED, &rect, CString("20000.0"));
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 100; ++x)
            ASSERT_EQ(cut.GetPixel(x, y), rect.PtInRect({x, y}) ? whole.GetPixel(x, y) : kOpaque | kWhite)
                << x << "," << y;
    EXPECT_NE(InkBox(cut, kWhite), CRect());
    cut.SetBkColor(kBlue);
    cut.ExtTextOut(10, 4, ETO_CLIPPED | ETO_OPAQUE, &rect, "", 0);
    EXPECT_EQ(InkBox(cut, kWhite), rect);
}

TEST(Drawing, JapaneseNamesAndBrokenBytesDraw) {
    CFont font;
    font.CreatePointFont(24, "Osaka"); // missing on most systems
    const auto draw = [&font](const char* text) {
        auto paper = std::make_unique<Paper>(120, 40);
        paper->SelectObject(&font);
        paper->TextOut(4, 4, text);
        return paper;
    };
    const auto song = draw("\xE6\xAD\x8C");  // "song"
    const auto voice = draw("\xE5\xA3\xB0"); // "voice"
    EXPECT_FALSE(*song == *voice) << "two characters look the same: is there a Japanese font?";
    EXPECT_NEAR(InkBox(*song, kWhite).Width(), 24, 5);
    // A byte that is no UTF-8 shows as a sign, and does not take the rest with it.
    EXPECT_TRUE(*draw("a\xFF!") == *draw("a\xEF\xBF\xBD!"));
    EXPECT_NE(InkBox(*draw("\xE6\xAD"), kWhite), CRect());
}

} // namespace
} // namespace vocafade::test
