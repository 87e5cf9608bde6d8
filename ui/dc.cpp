// SPDX-License-Identifier: MIT
#include "ui/dc.h"

#include "base/utf8.h"
#include "ui/backing_store.h"
#include "ui/platform/platform.h"

#include <cmath>
#include <cstdio>
#include <utility>

namespace vocafade {
namespace {

/// From the order of `COLORREF` (red lowest) to that of pixels (blue lowest).
std::uint32_t ToPixel(COLORREF c) { return (GetRValue(c) << 16) | (GetGValue(c) << 8) | GetBValue(c); }

std::string_view View(const char* text, int count) {
    return count < 0 ? std::string_view(text) : std::string_view(text, static_cast<std::size_t>(count));
}

/// Combines the colour bits of source and destination, device pixel by device pixel; both have one scale.
void Combine(platform::Surface& target, CPoint to, platform::Surface& source, CPoint from, const CRgn& clip,
             UINT rop) {
    const double scale = target.Scale();
    const CPoint shift = platform::ToDevice(from, scale) - platform::ToDevice(to, scale);
    CRect all(0, 0, source.DeviceWidth(), source.DeviceHeight());
    all.OffsetRect(-shift.x, -shift.y);
    const CRect& bounds = {0, 0, target.DeviceWidth(), target.DeviceHeight()};
    const std::uint32_t* in = source.Pixels();
    std::uint32_t* out = target.Pixels();
    for (const CRect& logical : clip.rects()) {
        CRect r;
        if (!r.IntersectRect(platform::ToDevice(logical, scale), all) || !r.IntersectRect(r, bounds))
            continue;
        for (int y = r.top; y < r.bottom; ++y) {
            const std::uint32_t* s =
                in + static_cast<std::ptrdiff_t>(y + shift.y) * source.Stride() + r.left + shift.x;
            std::uint32_t* d = out + static_cast<std::ptrdiff_t>(y) * target.Stride() + r.left;
            for (int x = 0; x < r.Width(); ++x) {
                const std::uint32_t mask = 0x00FFFFFF;
                d[x] = rop == SRCINVERT ? d[x] ^ (s[x] & mask) : d[x] & (s[x] | ~mask);
            }
        }
    }
    target.PixelsChanged();
}

} // namespace

CDC::CDC() = default;
CDC::~CDC() = default;

bool CDC::CreateBitmapDC(int width, int height) {
    DeleteDC();
    std::unique_ptr<platform::Surface> surface = platform::MakeSurface(width, height, DrawingScale());
    if (surface == nullptr) return false;
    store_ = std::make_shared<BackingStore>(std::move(surface));
    size_ = {width, height};
    return true;
}

bool CDC::CreateCompatibleDC(CDC* ref) {
    DeleteDC();
    size_ = ref != nullptr ? ref->size_ : CSize{};
    return true;
}

bool CDC::CreateDC(const char* /*driver*/) {
    DeleteDC();
    return true;
}

void CDC::DeleteDC() {
    store_.reset();
    ofWindow_ = false;
    base_ = {};
    size_ = {};
    origin_ = {};
    visible_.DeleteObject();
    clipped_ = false;
    bitmap_ = nullptr;
}

CBitmap* CDC::SelectObject(CBitmap* bitmap) { return std::exchange(bitmap_, bitmap); }
CFont* CDC::SelectObject(CFont* font) { return std::exchange(font_, font); }

int CDC::SelectClipRgn(const CRgn* region) {
    clipped_ = region != nullptr;
    if (clipped_) clip_ = *region;
    return 1;
}

int CDC::IntersectClipRect(const CRect& rect) {
    if (clipped_) {
        clip_.Intersect(rect);
    } else {
        clip_ = CRgn(rect);
        clipped_ = true;
    }
    return 1;
}

COLORREF CDC::SetTextColor(COLORREF color) { return std::exchange(textColor_, color); }
COLORREF CDC::SetBkColor(COLORREF color) { return std::exchange(bkColor_, color); }
int CDC::SetBkMode(int mode) { return std::exchange(bkMode_, mode); }
CPoint CDC::SetViewportOrg(int x, int y) { return std::exchange(origin_, CPoint(x, y)); }

CRect CDC::ToSurface(const CRect& rect) const {
    CRect r = rect;
    r.OffsetRect(base_ + origin_);
    return r;
}

CRgn CDC::Clipped(const CRect& rect) const {
    CRgn region;
    CRect inside;
    const platform::Surface* target = surface();
    if (target == nullptr || !inside.IntersectRect(rect, {0, 0, target->Width(), target->Height()}))
        return region;
    region.Add(inside);
    if (ofWindow_) region.Intersect(visible_);
    if (clipped_) {
        CRgn clip = clip_;
        clip.OffsetRgn(base_);
        region.Intersect(clip);
    }
    return region;
}

platform::Surface* CDC::surface() const { return store_ != nullptr ? store_->surface.get() : nullptr; }

double CDC::Scale() const { return surface() != nullptr ? surface()->Scale() : DrawingScale(); }

platform::Surface* CDC::SourcePixels() const { return bitmap_ != nullptr ? bitmap_->surface() : surface(); }

bool CDC::BitBlt(int x, int y, int w, int h, CDC* src, int sx, int sy, UINT rop) {
    return Transfer(ToSurface({x, y, x + w, y + h}), src, {sx, sy, sx + w, sy + h}, rop);
}

bool CDC::StretchBlt(int x, int y, int w, int h, CDC* src, int sx, int sy, int sw, int sh, UINT rop) {
    return Transfer(ToSurface({x, y, x + w, y + h}), src, {sx, sy, sx + sw, sy + sh}, rop);
}

bool CDC::Transfer(const CRect& to, CDC* src, CRect from, UINT rop) {
    platform::Surface* target = surface();
    if (target == nullptr) return true;
    platform::Surface* source = src != nullptr ? src->SourcePixels() : nullptr;
    if (source == nullptr) {
        // The bytes behind the text are on purpose no line end.
        std::fputs("BitBlt null \x80r\x80n", stderr);
        return true;
    }
    if (to.IsRectEmpty() || from.IsRectEmpty()) return true;
    from.OffsetRect(src->origin_);
    if (src->bitmap_ == nullptr) from.OffsetRect(src->base_);

    CRect inside;
    const CRect all(0, 0, source->Width(), source->Height());
    if (!inside.IntersectRect(from, all)) return true;
    CRect place = to;
    if (inside != from) {
        // Only what the source has: cut the destination to the same share.
        const auto scaleX = [&](int v) {
            return to.left + static_cast<int>(std::int64_t{v - from.left} * to.Width() / from.Width());
        };
        const auto scaleY = [&](int v) {
            return to.top + static_cast<int>(std::int64_t{v - from.top} * to.Height() / from.Height());
        };
        place = {scaleX(inside.left), scaleY(inside.top), scaleX(inside.right), scaleY(inside.bottom)};
    }
    const CRgn clip = Clipped(place);
    if (clip.IsEmpty()) return true;

    std::unique_ptr<platform::Surface> copy;
    const bool combines = rop == SRCINVERT || rop == SRCAND;
    const bool resized = inside.Size() != place.Size() || source->Scale() != target->Scale();
    if (source == target || (combines && resized)) {
        // Through a copy: what is read must be as it was before, and bits are combined one to one.
        const CSize size = combines ? place.Size() : inside.Size();
        const CRect whole(0, 0, size.cx, size.cy);
        copy = platform::MakeSurface(size.cx, size.cy, combines ? target->Scale() : source->Scale());
        if (copy == nullptr) return true;
        copy->Draw(*source, inside, whole, {&whole, 1});
        source = copy.get();
        inside = whole;
    }
    if (combines) {
        Combine(*target, place.TopLeft(), *source, inside.TopLeft(), clip, rop);
    } else {
        target->Draw(*source, inside, place, clip.rects());
    }
    store_->Changed(clip);
    return true;
}

void CDC::FillSolidRect(const CRect& rect, COLORREF color) {
    const CRgn clip = Clipped(ToSurface(rect));
    if (clip.IsEmpty()) return;
    surface()->Fill(clip.rects(), ToPixel(color));
    store_->Changed(clip);
}

void CDC::FillFine(CPoint origin, const CRect& fine, COLORREF color) {
    platform::Surface* target = surface();
    if (target == nullptr) return;
    CRect wanted = fine;
    wanted.OffsetRect(platform::ToDevice(origin + base_ + origin_, Scale()));
    const CRgn clip = Clipped(platform::ToLogicalAround(wanted, Scale()));
    if (clip.IsEmpty()) return;
    const CRect all(0, 0, target->DeviceWidth(), target->DeviceHeight());
    std::uint32_t* pixels = target->Pixels();
    for (const CRect& logical : clip.rects()) {
        CRect r;
        if (!r.IntersectRect(platform::ToDevice(logical, Scale()), wanted) || !r.IntersectRect(r, all))
            continue;
        for (int y = r.top; y < r.bottom; ++y)
            std::fill_n(pixels + static_cast<std::ptrdiff_t>(y) * target->Stride() + r.left, r.Width(),
                        0xFF000000U | ToPixel(color));
    }
    target->PixelsChanged();
    store_->Changed(clip);
}

void CDC::FrameRect(const CRect& rect, COLORREF color) {
    if (rect.IsRectEmpty()) return;
    FillSolidRect({rect.left, rect.top, rect.right, rect.top + 1}, color);
    FillSolidRect({rect.left, rect.bottom - 1, rect.right, rect.bottom}, color);
    FillSolidRect({rect.left, rect.top + 1, rect.left + 1, rect.bottom - 1}, color);
    FillSolidRect({rect.right - 1, rect.top + 1, rect.right, rect.bottom - 1}, color);
}

CFont& CDC::FontInUse() const {
    if (font_ != nullptr) return *font_;
    if (defaultFont_ == nullptr) defaultFont_ = std::make_unique<CFont>();
    return *defaultFont_;
}

bool CDC::TextOut(int x, int y, const char* text, int count) {
    return ExtTextOut(x, y, 0, nullptr, text, count);
}

bool CDC::ExtTextOut(int x, int y, UINT options, const CRect* rect, const char* text, int count,
                     const int* /*spacing*/) {
    if (rect != nullptr && (options & ETO_OPAQUE) != 0) FillSolidRect(*rect, bkColor_);
    if (text == nullptr || surface() == nullptr) return true;
    const std::string valid = ValidUtf8(View(text, count));
    if (valid.empty()) return true;
    CFont& font = FontInUse();
    const CSize extent = GetTextExtent(valid.data(), static_cast<int>(valid.size()));
    if (bkMode_ == OPAQUE && (options & ETO_OPAQUE) == 0) {
        CRect ground({x, y}, extent);
        if (rect == nullptr || (options & ETO_CLIPPED) == 0 || ground.IntersectRect(ground, *rect))
            FillSolidRect(ground, bkColor_);
    }
    // Slanted letters, accents and other fonts' characters reach beyond their advance and the line.
    CRect around({x, y}, extent);
    around.InflateRect(extent.cy, extent.cy);
    if (rect != nullptr && (options & ETO_CLIPPED) != 0 && !around.IntersectRect(around, *rect)) return true;
    const CRgn clip = Clipped(ToSurface(around));
    if (clip.IsEmpty()) return true;
    const CPoint place = CPoint(x, y) + base_ + origin_;
    font.native(Scale()).Draw(*surface(), place.x, place.y + font.ascent(), valid, ToPixel(textColor_),
                              clip.rects());
    store_->Changed(clip);
    return true;
}

CSize CDC::GetTextExtent(const char* text, int count) const {
    platform::Font& font = FontInUse().native(Scale());
    const int height = static_cast<int>(std::lround(font.Ascent() + font.Descent()));
    if (text == nullptr) return {0, height};
    const std::string valid = ValidUtf8(View(text, count));
    return {valid.empty() ? 0 : static_cast<int>(std::ceil(font.Width(valid))), height};
}

void CDC::InitDrawing() {
    if (bitmap_ != nullptr) SelectClipRgn(nullptr);
}

void CDC::ExitDrawing() {
    if (bitmap_ != nullptr) SelectClipRgn(nullptr);
}

std::uint32_t CDC::GetPixel(int x, int y) const {
    platform::Surface* target = surface();
    const CPoint p = CPoint(x, y) + base_ + origin_;
    if (target == nullptr || p.x < 0 || p.y < 0 || p.x >= target->Width() || p.y >= target->Height())
        return 0;
    const CPoint at = platform::ToDevice(p, target->Scale());
    const std::uint32_t v = target->Pixels()[static_cast<std::ptrdiff_t>(at.y) * target->Stride() + at.x];
    return (v & 0xFF000000U) | RGB((v >> 16) & 0xFF, (v >> 8) & 0xFF, v & 0xFF);
}

bool CDC::SavePng(const char* path) const { return surface() != nullptr && surface()->WritePng(path); }

} // namespace vocafade
