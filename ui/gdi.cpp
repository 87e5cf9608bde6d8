// SPDX-License-Identifier: MIT
#include "ui/gdi.h"

#include "ui/platform/platform.h"
#include "ui/resources.h"

#include <algorithm>
#include <cmath>

namespace vocafade {

CBitmap::CBitmap() = default;
CBitmap::~CBitmap() = default;

bool CBitmap::LoadPng(std::span<const std::byte> file, double scale) {
    surface_ = platform::DecodePng(file, scale);
    return surface_ != nullptr;
}

bool CBitmap::CreateBitmap(int width, int height) {
    surface_ = platform::MakeSurface(width, height, DrawingScale());
    return surface_ != nullptr;
}

void CBitmap::DeleteObject() { surface_.reset(); }
int CBitmap::Width() const { return surface_ ? surface_->Width() : 0; }
int CBitmap::Height() const { return surface_ ? surface_->Height() : 0; }

void GetBitmapSize0(const CBitmap& image, int* width, int* height, int* rowBytes) {
    if (width != nullptr) *width = image.Width();
    if (height != nullptr) *height = image.Height();
    if (rowBytes != nullptr) *rowBytes = image.Width() * 4;
}

namespace {

/// Artwork is drawn up to this many times its size.
constexpr int kLargestDrawn = 3;

/// Tries the sizes from the one that serves `scale` upwards, then the smaller ones.
template <class Load>
bool LoadNearest(double scale, Load load) {
    const int wanted = std::clamp(static_cast<int>(std::ceil(scale)), 1, kLargestDrawn);
    for (int times = wanted; times <= kLargestDrawn; ++times)
        if (load(times)) return true;
    for (int times = wanted - 1; times >= 1; --times)
        if (load(times)) return true;
    return false;
}

} // namespace

bool CKVBBitmap::LoadResourceBitmap(int id, void** /*handleSlot*/) {
    DeleteObject();
    const std::shared_ptr<const ResourceSource> source = GetResourceSource();
    if (source == nullptr) return false;
    const double scale = DrawingScale();
    const std::vector<std::byte> single = source->LoadFromFolder(id, 1);
    const bool replaced = !single.empty() && !std::ranges::equal(single, source->LoadEmbedded(id, 1));
    if (replaced && LoadNearest(scale, [&](int times) {
            const std::vector<std::byte> file = source->LoadFromFolder(id, times);
            return !file.empty() && LoadPng(file, times);
        }))
        return true;
    return LoadNearest(scale, [&](int times) {
        const std::span<const std::byte> file = source->LoadEmbedded(id, times);
        return !file.empty() && LoadPng(file, times);
    });
}

CFont::CFont() = default;
CFont::~CFont() = default;

bool CFont::CreatePointFont(int size, const char* name, CDC* /*dc*/) {
    // The system's choice stands in for a name that it does not know; standard output is the host's.
    name_ = name;
    size_ = std::clamp(size, 1, 1000);
    font_.reset();
    return true;
}

void CFont::DeleteObject() {
    font_.reset();
    name_.Empty();
    size_ = 0;
}

platform::Font& CFont::native(double scale) const {
    if (font_ == nullptr || fontScale_ != scale) {
        font_ = size_ > 0 ? platform::OpenFont(name_.str(), size_, scale)
                          : platform::OpenFont("Helvetica", 12.0, scale);
        fontScale_ = scale;
    }
    return *font_;
}

int CFont::height() const { return static_cast<int>(native(DrawingScale()).BoundingHeight()); }
int CFont::ascent() const { return static_cast<int>(native(DrawingScale()).Ascent() - 2.0); }

} // namespace vocafade
