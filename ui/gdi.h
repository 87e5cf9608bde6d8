// SPDX-License-Identifier: MIT
#pragma once

#include "base/cstring.h"
#include "ui/region.h"
#include "ui/winuser.h"

#include <cstddef>
#include <memory>
#include <span>

namespace vocafade {

class CDC;
namespace platform {
class Surface;
class Font;
} // namespace platform

/// [main-thread] The scale of images and fonts that are made, in device pixels for each logical one: that of
/// the window whose message is being handled, else of the editor opened last on this thread; 1 without one.
double DrawingScale();

/// An image that can be selected into a `CDC` as the source of a transfer.
class CBitmap {
  public:
    CBitmap();
    virtual ~CBitmap();
    CBitmap(const CBitmap&) = delete;
    CBitmap& operator=(const CBitmap&) = delete;

    /// [main-thread] Decodes a PNG file's bytes, a picture drawn at `scale` times its size. False, with an
    /// empty bitmap, when they are no PNG.
    bool LoadPng(std::span<const std::byte> file, double scale = 1.0);
    /// [main-thread] Makes a transparent image of that size, at the scale of the windows.
    bool CreateBitmap(int width, int height);
    void DeleteObject();
    bool IsNull() const { return surface_ == nullptr; }
    /// Size in logical pixels, 0 without an image.
    int Width() const;
    int Height() const;
    /// The image's pixels for the drawing layer; null without an image.
    platform::Surface* surface() const { return surface_.get(); }

  private:
    std::unique_ptr<platform::Surface> surface_;
};

/// Width, height and bytes of a row (width times 4) of an image; zeros without one.
void GetBitmapSize0(const CBitmap& image, int* width, int* height, int* rowBytes);

/// A bitmap out of the plug-in's resources.
class CKVBBitmap : public CBitmap {
  public:
    /// [main-thread] Loads resource number `id` ("3005.png") from the source set with `SetResourceSource`, in
    /// the size that is nearest to the scale of the windows and not smaller, if there is one. A picture of
    /// the resource folder that is missing, no PNG, or the same as the embedded one, gives way to that and
    /// its larger sizes; one of the user's own comes in the sizes that the folder has. False, with an empty
    /// bitmap (0 by 0, draws nothing), when there is none. `handleSlot` is not used.
    bool LoadResourceBitmap(int id, void** handleSlot = nullptr);
};

/// A font by name and size.
class CFont {
  public:
    CFont();
    virtual ~CFont();
    CFont(const CFont&) = delete;
    CFont& operator=(const CFont&) = delete;

    /// [main-thread] The font called `name` at `size` points, one point being one pixel (not tenths of a
    /// point). Where the system has no font of that name it chooses the one that comes nearest; characters
    /// that a font lacks come from others. Always true. `dc` is not needed.
    bool CreatePointFont(int size, const char* name, CDC* dc = nullptr);
    void DeleteObject();
    const CString& name() const { return name_; }
    /// Bounding-box height of the font in pixels, truncated.
    int height() const;
    /// Height of the text above the baseline less 2, in pixels, truncated: `CDC::TextOut` at y puts the
    /// baseline at y plus this.
    int ascent() const;
    /// What the drawing layer draws with at `scale`, opened when it is first asked for; "Helvetica" at 12
    /// points before `CreatePointFont`.
    platform::Font& native(double scale) const;

  private:
    CString name_;
    int size_ = 0;
    mutable std::shared_ptr<platform::Font> font_; ///< for `fontScale_`
    mutable double fontScale_ = 0;
};

} // namespace vocafade
