// SPDX-License-Identifier: MIT
#include "ui/gdi.h"

#include "ui/platform/platform.h"
#include "ui/resources.h"

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

bool CKVBBitmap::LoadResourceBitmap(int id, void** /*handleSlot*/) {
    DeleteObject();
    const std::shared_ptr<const ResourceSource> source = GetResourceSource();
    if (source == nullptr) return false;
    const std::vector<std::byte> file = source->LoadFromFolder(id);
    if (!file.empty() && LoadPng(file)) return true;
    const std::span<const std::byte> embedded = source->LoadEmbedded(id);
    return !embedded.empty() && LoadPng(embedded);
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
