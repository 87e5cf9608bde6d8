// SPDX-License-Identifier: MIT
#include "base/path.h"
#include "base/utf8.h"
#include "base/win32/wide_text.h"
#include "ui/platform/scale.h"
#include "ui/platform/win32/surface.h"

#include <cmath>
#include <cstring>

namespace vocafade::platform {
namespace win32 {
namespace {

using vocafade::win32::Narrow;
using vocafade::win32::Wide;

/// A drawing context of no window, to measure with.
class MeasuringDc {
  public:
    MeasuringDc() : dc_(::CreateCompatibleDC(nullptr)) {}
    ~MeasuringDc() { ::DeleteDC(dc_); } // also what is selected goes back
    MeasuringDc(const MeasuringDc&) = delete;
    MeasuringDc& operator=(const MeasuringDc&) = delete;
    operator HDC() const { return dc_; }

  private:
    HDC dc_;
};

std::wstring WithoutBlanks(std::wstring text) {
    std::erase(text, L' ');
    return text;
}

/// A name that is looked for among the installed fonts.
struct Search {
    std::wstring wanted; ///< without blanks
    std::wstring family; ///< what was found
};

int CALLBACK CompareFamily(const LOGFONTW* font, const TEXTMETRICW*, DWORD, LPARAM search) {
    auto& s = *reinterpret_cast<Search*>(search);
    if (::lstrcmpiW(WithoutBlanks(font->lfFaceName).c_str(), s.wanted.c_str()) == 0)
        s.family = font->lfFaceName;
    return s.family.empty() ? 1 : 0;
}

/// The family of that name, blanks aside; empty when none is installed.
std::wstring FamilyOf(const std::wstring& name) {
    Search search{WithoutBlanks(name), {}};
    LOGFONTW every{};
    every.lfCharSet = DEFAULT_CHARSET;
    ::EnumFontFamiliesExW(MeasuringDc(), &every, &CompareFamily, reinterpret_cast<LPARAM>(&search), 0);
    return search.family;
}

/// The font whose PostScript name that is ("DejaVuSans-Bold": the family without blanks, and the style), else the
/// family of that name, else the font that the system writes its messages in.
LOGFONTW Describe(const std::wstring& name) {
    LOGFONTW font{};
    font.lfCharSet = DEFAULT_CHARSET;
    font.lfWeight = FW_NORMAL;
    const std::size_t dash = name.find(L'-');
    const std::wstring style = dash != std::wstring::npos ? name.substr(dash + 1) : std::wstring();
    std::wstring family = FamilyOf(name.substr(0, dash));
    if (style.find(L"Bold") != std::wstring::npos) font.lfWeight = FW_BOLD;
    if (style.find(L"Italic") != std::wstring::npos || style.find(L"Oblique") != std::wstring::npos)
        font.lfItalic = TRUE;
    if (family.empty()) {
        NONCLIENTMETRICSW metrics{};
        metrics.cbSize = sizeof metrics;
        if (::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0) != 0)
            family = metrics.lfMessageFont.lfFaceName;
    }
    family.copy(font.lfFaceName, LF_FACESIZE - 1);
    return font;
}

/// One font at one size, and those that stand in for what it lacks.
class SizedFont {
  public:
    SizedFont(const LOGFONTW& description, double pixels) : description_(description) {
        description_.lfHeight = -std::max(1, static_cast<int>(std::lround(pixels)));
        description_.lfQuality = ANTIALIASED_QUALITY; // grey: the ground that text is drawn on is not known
        fonts_.push_back(::CreateFontIndirectW(&description_));
    }
    ~SizedFont() {
        for (const HFONT font : fonts_)
            ::DeleteObject(font);
    }
    SizedFont(const SizedFont&) = delete;
    SizedFont& operator=(const SizedFont&) = delete;

    HFONT main() const { return fonts_[0]; }

    struct Run {
        std::wstring text;
        HFONT font;
    };
    /// The text in pieces, each with a font that has it.
    std::vector<Run> Split(HDC dc, const std::wstring& text) {
        std::vector<Run> runs;
        for (std::size_t i = 0; i < text.size(); ++i) {
            const bool pair = text[i] >= 0xD800 && text[i] < 0xDC00 && i + 1 < text.size();
            const HFONT font = pair ? fonts_[0] : FontWith(dc, text[i]);
            if (runs.empty() || runs.back().font != font) runs.push_back({{}, font});
            runs.back().text += text[i];
            if (pair) runs.back().text += text[++i];
        }
        return runs;
    }

  private:
    static bool Has(HDC dc, HFONT font, wchar_t character) {
        WORD glyph = 0;
        ::SelectObject(dc, font);
        return ::GetGlyphIndicesW(dc, &character, 1, &glyph, GGI_MARK_NONEXISTING_GLYPHS) == 1 &&
               glyph != 0xFFFF;
    }

    HFONT FontWith(HDC dc, wchar_t character) {
        // The system names a font for each of the scripts; Japanese first, for names of older programs.
        static constexpr BYTE kScripts[] = {SHIFTJIS_CHARSET,   GB2312_CHARSET, HANGUL_CHARSET, GREEK_CHARSET,
                                            RUSSIAN_CHARSET,    HEBREW_CHARSET, ARABIC_CHARSET, THAI_CHARSET,
                                            EASTEUROPE_CHARSET, SYMBOL_CHARSET};
        for (std::size_t i = 0; i <= std::size(kScripts); ++i) {
            if (i == fonts_.size()) {
                LOGFONTW other = description_;
                other.lfCharSet = kScripts[i - 1];
                other.lfFaceName[0] = 0;
                fonts_.push_back(::CreateFontIndirectW(&other));
            }
            if (Has(dc, fonts_[i], character)) return fonts_[i];
        }
        return fonts_[0];
    }

    LOGFONTW description_;
    std::vector<HFONT> fonts_; ///< the first is the font itself
};

class GdiFont : public Font {
  public:
    GdiFont(std::string_view name, double pixels, double scale)
        : description_(Describe(Wide(name))), pixels_(pixels), scale_(scale) {
        Measure();
    }

    double BoundingHeight() const override { return boundingHeight_; }
    double Ascent() const override { return ascent_; }
    double Descent() const override { return descent_; }

    double Width(std::string_view text) override {
        SetText(text);
        return stops_.back() / scale_;
    }

    std::vector<double> CaretStops(std::string_view text) override {
        SetText(text);
        std::vector<double> stops;
        for (const int stop : stops_)
            stops.push_back(stop / scale_);
        return stops;
    }

    void Draw(Surface& target, double x, double baseline, std::string_view text, std::uint32_t rgb,
              std::span<const CRect> clip) override {
        auto& surface = static_cast<DibSurface&>(target);
        const double scale = surface.Scale();
        const auto edge = [scale](double place) { return static_cast<int>(std::floor(place * scale + 0.5)); };
        const MeasuringDc dc;
        SizedFont& font = At(scale);
        const std::vector<SizedFont::Run> runs = font.Split(dc, Wide(text));
        int width = 0;
        int above = 0;
        int below = 0;
        std::vector<int> starts;
        for (const SizedFont::Run& run : runs) {
            starts.push_back(width);
            SIZE extent{};
            TEXTMETRICW metrics{};
            ::SelectObject(dc, run.font);
            ::GetTextMetricsW(dc, &metrics);
            ::GetTextExtentPoint32W(dc, run.text.data(), static_cast<int>(run.text.size()), &extent);
            width += static_cast<int>(extent.cx);
            above = std::max(above, static_cast<int>(metrics.tmAscent));
            below = std::max(below, static_cast<int>(metrics.tmDescent));
        }
        ::SelectObject(dc, ::GetStockObject(SYSTEM_FONT));
        // What leans out of its own width on either side.
        const int margin = above + below;
        const CSize size{width + 2 * margin, above + below};
        const std::unique_ptr<DibSurface> ink = width > 0 ? DibSurface::Make(size, size, 1.0) : nullptr;
        if (ink == nullptr) return;
        Write(*ink, runs, starts, margin, above);
        Blend(surface, *ink, {edge(x) - margin, edge(baseline) - above}, rgb, clip);
    }

  private:
    SizedFont& At(double scale) {
        for (const auto& [known, font] : sizes_)
            if (known == scale) return *font;
        return *sizes_.emplace_back(scale, std::make_unique<SizedFont>(description_, pixels_ * scale)).second;
    }

    /// White on black: how bright a pixel is then says how much of it the text covers.
    static void Write(const DibSurface& ink, const std::vector<SizedFont::Run>& runs,
                      const std::vector<int>& starts, int margin, int above) {
        const BitmapDc dc(ink);
        ::SetTextColor(dc, 0xFFFFFF);
        ::SetBkMode(dc, TRANSPARENT);
        ::SetTextAlign(dc, TA_BASELINE | TA_LEFT);
        for (std::size_t i = 0; i < runs.size(); ++i) {
            ::SelectObject(dc, runs[i].font);
            ::TextOutW(dc, margin + starts[i], above, runs[i].text.data(),
                       static_cast<int>(runs[i].text.size()));
        }
        ::SelectObject(dc, ::GetStockObject(SYSTEM_FONT));
    }

    static void Blend(DibSurface& surface, DibSurface& ink, CPoint place, std::uint32_t rgb,
                      std::span<const CRect> clip) {
        const std::uint32_t* covered = ink.Pixels();
        std::uint32_t* pixels = surface.Pixels();
        const CRect box(place, {ink.Width(), ink.Height()});
        for (const CRect& logical : clip) {
            CRect r;
            if (!r.IntersectRect(surface.OnDevice(logical), box)) continue;
            for (int y = r.top; y < r.bottom; ++y) {
                const std::uint32_t* row = covered + static_cast<std::ptrdiff_t>(y - place.y) * ink.Stride();
                std::uint32_t* drawn = pixels + static_cast<std::ptrdiff_t>(y) * surface.Stride();
                for (int x = r.left; x < r.right; ++x) {
                    const std::uint32_t share = row[x - place.x] >> 8 & 0xFF;
                    if (share == 0) continue;
                    std::uint32_t colour = share << 24;
                    for (int shift = 0; shift < 24; shift += 8)
                        colour |= Share(rgb >> shift & 0xFF, share) << shift;
                    drawn[x] = Over(colour, drawn[x]);
                }
            }
        }
    }

    /// Measuring text costs far more than comparing it, and a text is mostly measured and then drawn.
    void SetText(std::string_view text) {
        if (text == text_ && !stops_.empty()) return;
        text_ = text;
        stops_.assign(1, 0);
        const MeasuringDc dc;
        int start = 0;
        for (const SizedFont::Run& run : At(scale_).Split(dc, Wide(text))) {
            ::SelectObject(dc, run.font);
            const int length = static_cast<int>(run.text.size());
            std::vector<int> ends(run.text.size());
            SIZE extent{};
            ::GetTextExtentExPointW(dc, run.text.data(), length, 0, nullptr, ends.data(), &extent);
            for (std::size_t i = 0; i < run.text.size(); ++i)
                if (i + 1 == run.text.size() || run.text[i + 1] < 0xDC00 || run.text[i + 1] > 0xDFFF)
                    stops_.push_back(start + ends[i]);
            start += static_cast<int>(extent.cx);
        }
        ::SelectObject(dc, ::GetStockObject(SYSTEM_FONT));
    }

    /// The font's own figures, not the hinted ones, so that the baseline does not depend on the rasteriser.
    void Measure() {
        ascent_ = pixels_ * 0.8;
        descent_ = pixels_ * 0.2;
        boundingHeight_ = pixels_;
        const MeasuringDc dc;
        ::SelectObject(dc, At(scale_).main());
        const auto table = [&dc](const char(&name)[5]) {
            std::uint32_t tag = 0;
            std::memcpy(&tag, name, sizeof tag);
            std::vector<unsigned char> bytes(54);
            const DWORD read = ::GetFontData(dc, tag, 0, bytes.data(), static_cast<DWORD>(bytes.size()));
            bytes.resize(read == GDI_ERROR ? 0 : read);
            return bytes;
        };
        // Big-endian numbers of 16 bits: in the font header the units of an em at 18, yMin and yMax at 38 and 42; in the
        // horizontal header ascender and descender at 4 and 6.
        const std::vector<unsigned char> head = table("head");
        const std::vector<unsigned char> across = table("hhea");
        ::SelectObject(dc, ::GetStockObject(SYSTEM_FONT));
        if (head.size() < 44 || across.size() < 8) return;
        const auto at = [](const std::vector<unsigned char>& bytes, std::size_t i) {
            return static_cast<std::int16_t>(bytes[i] << 8 | bytes[i + 1]);
        };
        const double unit = pixels_ / std::max<int>(1, at(head, 18));
        ascent_ = at(across, 4) * unit;
        descent_ = -at(across, 6) * unit;
        boundingHeight_ = (at(head, 42) - at(head, 38)) * unit;
    }

    LOGFONTW description_;
    double pixels_;
    double scale_;
    std::vector<std::pair<double, std::unique_ptr<SizedFont>>> sizes_;
    std::string text_;
    std::vector<int> stops_; ///< device pixels
    double ascent_ = 0;
    double descent_ = 0;
    double boundingHeight_ = 0;
};

} // namespace
} // namespace win32

std::shared_ptr<Font> OpenFont(std::string_view name, double pixels, double scale) {
    return std::make_shared<win32::GdiFont>(name, pixels, scale);
}

std::string BaseLetter(std::string_view character) {
    const std::wstring whole = vocafade::win32::Wide(character);
    wchar_t parts[16];
    const int count = ::FoldStringW(MAP_COMPOSITE, whole.data(), static_cast<int>(whole.size()), parts, 16);
    if (count == 0) return std::string(character);
    const bool pair = count > 1 && parts[0] >= 0xD800 && parts[0] < 0xDC00;
    return vocafade::win32::Narrow({parts, pair ? 2U : 1U});
}

} // namespace vocafade::platform
