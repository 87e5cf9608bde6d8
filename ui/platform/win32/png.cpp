// SPDX-License-Identifier: MIT
// PNG files, read and written by the system's imaging component.
#include "base/path.h"
#include "ui/platform/scale.h"
#include "ui/platform/win32/surface.h"

#include <wincodec.h>

namespace vocafade::platform {
namespace win32 {
namespace {

/// Longest side of a picture that is decoded, in logical pixels, and most pixels: far more than any artwork
/// has, and at most 64 MB.
constexpr double kLongestSide = 4096;
constexpr std::uint64_t kMostPixels = 4096 * 4096;

/// The system's component model on this thread, to the end of the scope; the host may have it already.
class Components {
  public:
    Components() : mine_(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) {}
    ~Components() {
        if (mine_) ::CoUninitialize();
    }
    Components(const Components&) = delete;
    Components& operator=(const Components&) = delete;

  private:
    bool mine_;
};

/// Holds one reference to an interface of the system's, which the last call filled in.
template <class Interface>
class Held {
  public:
    Held() = default;
    ~Held() {
        if (it_ != nullptr) it_->Release();
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    Interface** operator&() { return &it_; }
    Interface* operator->() const { return it_; }
    Interface* get() const { return it_; }

  private:
    Interface* it_ = nullptr;
};

bool MakeFactory(Held<IWICImagingFactory>& factory) {
    return SUCCEEDED(::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                        IID_IWICImagingFactory, reinterpret_cast<void**>(&factory)));
}

std::uint32_t NumberAt(std::span<const std::byte> file, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + 4; ++i)
        value = value << 8 | std::to_integer<std::uint32_t>(file[i]);
    return value;
}

/// The size that the file declares at its beginning; none for what has no believable one, or does not reach to its
/// last chunk. Nothing is allocated before.
CSize BelievableSize(std::span<const std::byte> file, double scale) {
    constexpr std::size_t kSignature = 8;
    constexpr std::size_t kAround = 12; // a chunk's length, name and checksum
    constexpr std::uint32_t kEnd = 0x49454E44;
    if (file.size() < 2 * kSignature + kAround) return {};
    const std::uint32_t width = NumberAt(file, 16);
    const std::uint32_t height = NumberAt(file, 20);
    const double longest = kLongestSide * scale;
    if (width == 0 || width > longest || height == 0 || height > longest ||
        std::uint64_t{width} * height > kMostPixels)
        return {};
    std::size_t at = kSignature;
    while (file.size() - at >= kAround && NumberAt(file, at) <= file.size() - at - kAround) {
        if (NumberAt(file, at + 4) == kEnd) return {static_cast<int>(width), static_cast<int>(height)};
        at += kAround + NumberAt(file, at);
    }
    return {};
}

bool Decode(std::span<const std::byte> file, DibSurface& picture) {
    Held<IWICImagingFactory> factory;
    Held<IWICStream> stream;
    Held<IWICBitmapDecoder> decoder;
    Held<IWICBitmapFrameDecode> frame;
    Held<IWICFormatConverter> converter;
    auto* bytes = reinterpret_cast<BYTE*>(const_cast<std::byte*>(file.data())); // only read
    UINT width = 0;
    UINT height = 0;
    const auto stride = static_cast<UINT>(picture.Stride()) * 4;
    return MakeFactory(factory) && SUCCEEDED(factory->CreateStream(&stream)) &&
           SUCCEEDED(stream->InitializeFromMemory(bytes, static_cast<DWORD>(file.size()))) &&
           SUCCEEDED(factory->CreateDecoderFromStream(stream.get(), nullptr, WICDecodeMetadataCacheOnDemand,
                                                      &decoder)) &&
           SUCCEEDED(decoder->GetFrame(0, &frame)) && SUCCEEDED(frame->GetSize(&width, &height)) &&
           static_cast<int>(width) == picture.DeviceWidth() &&
           static_cast<int>(height) == picture.DeviceHeight() &&
           SUCCEEDED(factory->CreateFormatConverter(&converter)) &&
           SUCCEEDED(converter->Initialize(frame.get(), GUID_WICPixelFormat32bppPBGRA,
                                           WICBitmapDitherTypeNone, nullptr, 0.0,
                                           WICBitmapPaletteTypeCustom)) &&
           SUCCEEDED(converter->CopyPixels(nullptr, stride, stride * height,
                                           reinterpret_cast<BYTE*>(picture.Pixels())));
}

} // namespace

bool DibSurface::WritePng(const char* path) {
    const Components components;
    Held<IWICImagingFactory> factory;
    Held<IWICBitmap> bitmap;
    Held<IWICStream> stream;
    Held<IWICBitmapEncoder> encoder;
    Held<IWICBitmapFrameEncode> frame;
    const auto width = static_cast<UINT>(device_.cx);
    const auto height = static_cast<UINT>(device_.cy);
    WICPixelFormatGUID format = GUID_WICPixelFormat32bppBGRA;
    return MakeFactory(factory) &&
           SUCCEEDED(factory->CreateBitmapFromMemory(width, height, GUID_WICPixelFormat32bppPBGRA, width * 4,
                                                     width * height * 4, reinterpret_cast<BYTE*>(Pixels()),
                                                     &bitmap)) &&
           SUCCEEDED(factory->CreateStream(&stream)) &&
           SUCCEEDED(stream->InitializeFromFilename(PathOf(path).c_str(), GENERIC_WRITE)) &&
           SUCCEEDED(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, &encoder)) &&
           SUCCEEDED(encoder->Initialize(stream.get(), WICBitmapEncoderNoCache)) &&
           SUCCEEDED(encoder->CreateNewFrame(&frame, nullptr)) && SUCCEEDED(frame->Initialize(nullptr)) &&
           SUCCEEDED(frame->SetSize(width, height)) && SUCCEEDED(frame->SetPixelFormat(&format)) &&
           SUCCEEDED(frame->WriteSource(bitmap.get(), nullptr)) && SUCCEEDED(frame->Commit()) &&
           SUCCEEDED(encoder->Commit());
}

} // namespace win32

std::unique_ptr<Surface> DecodePng(std::span<const std::byte> file, double scale) {
    const CSize device = win32::BelievableSize(file, scale);
    if (device.cx == 0) return nullptr;
    const win32::Components components;
    const CSize size = ToLogicalSize(device, scale);
    std::unique_ptr<win32::DibSurface> picture =
        win32::DibSurface::Make({std::max(1, size.cx), std::max(1, size.cy)}, device, scale);
    if (picture == nullptr || !win32::Decode(file, *picture)) return nullptr;
    return picture;
}

} // namespace vocafade::platform
