// SPDX-License-Identifier: MIT
#pragma once

#include "ui/gdi.h"

#include <memory>

namespace vocafade {

class CWnd;
class WindowSession;
struct BackingStore;

/// A drawing context. Coordinates are logical pixels, x to the right, y downwards, with the context's origin
/// added. Every operation is [main-thread], on the window's thread; off-screen contexts need no display.
///
/// Operations without something to draw on, or without a source, draw nothing and report success.
class CDC {
  public:
    CDC();
    virtual ~CDC();
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;

    /// [main-thread] Gives the context a transparent image of its own of that size to draw into. False when
    /// the size is not positive or too large (more than 16384 either way).
    bool CreateBitmapDC(int width, int height);
    /// [main-thread] Takes the size of `ref` (none: 0 by 0); select a bitmap next to use it as a source.
    bool CreateCompatibleDC(CDC* ref);
    /// [main-thread] A context to measure text with, whatever `driver` says ("DISPLAY").
    bool CreateDC(const char* driver);
    void DeleteDC();

    /// Makes `bitmap` the source of transfers from this context and gives back the one before. Null selects
    /// none, and stands for "none" in the answer.
    CBitmap* SelectObject(CBitmap* bitmap);
    /// Makes `font` the one that text is measured and drawn in and gives back the one before (null: the
    /// default, "Helvetica" at 12 points). The font must outlive its selection.
    CFont* SelectObject(CFont* font);
    /// Limits drawing to `region` (in coordinates without the origin), null: no limit. The region is copied.
    int SelectClipRgn(const CRgn* region);
    int IntersectClipRect(const CRect& rect);

    /// Limits drawing to `rect`, too, for as long as it lives.
    class Within {
      public:
        Within(CDC& dc, const CRect& rect) : dc_(dc), clipped_(dc.clipped_), clip_(dc.clip_) {
            dc.IntersectClipRect(rect);
        }
        ~Within() { dc_.SelectClipRgn(clipped_ ? &clip_ : nullptr); }
        Within(const Within&) = delete;
        Within& operator=(const Within&) = delete;

      private:
        CDC& dc_;
        bool clipped_;
        CRgn clip_;
    };

    COLORREF SetTextColor(COLORREF color);
    COLORREF SetBkColor(COLORREF color);
    /// TRANSPARENT (at first) or OPAQUE: whether text fills its ground with the background colour.
    int SetBkMode(int mode);
    /// Sets what is added to every coordinate and gives back what was.
    CPoint SetViewportOrg(int x, int y);

    /// Client size in pixels of what is drawn on.
    CSize size() const { return size_; }
    CRect clientRect() const { return {0, 0, size_.cx, size_.cy}; }

    /// Copies w by h pixels from (sx, sy) of `src` to (x, y). The source is the bitmap selected into `src`,
    /// else what `src` draws on. SRCCOPY (and any operation but the next two) blends with the source's alpha;
    /// SRCINVERT and SRCAND combine the colour bits of source and destination and leave the destination's
    /// alpha. What lies outside the source leaves the destination as it is. `src` may be this context (taken
    /// as it was before).
    bool BitBlt(int x, int y, int w, int h, CDC* src, int sx, int sy, UINT rop);
    /// The same, with sw by sh source pixels drawn into w by h, bilinear. Sizes of 0 or less draw nothing.
    bool StretchBlt(int x, int y, int w, int h, CDC* src, int sx, int sy, int sw, int sh, UINT rop);

    void FillSolidRect(const CRect& rect, COLORREF color);
    /// Fills device pixels, `fine` of them counted from where `origin` lies: for small signs that are drawn
    /// finer at larger scales.
    void FillFine(CPoint origin, const CRect& fine, COLORREF color);
    /// A one-pixel frame just inside `rect`.
    void FrameRect(const CRect& rect, COLORREF color);

    /// UTF-8 text with its top left at (x, y): the baseline lies the font's ascent below y. Bytes that are no
    /// UTF-8 show as replacement signs. A null text draws nothing. `count` bytes, -1 for up to the NUL.
    bool TextOut(int x, int y, const char* text, int count = -1);
    bool TextOut(int x, int y, const CString& text) { return TextOut(x, y, text, text.GetLength()); }
    /// As `TextOut`, with ETO_CLIPPED clipped to `rect` and with ETO_OPAQUE on `rect` filled with the
    /// background colour. `spacing` is not used.
    bool ExtTextOut(int x, int y, UINT options, const CRect* rect, const char* text, int count,
                    const int* spacing = nullptr);
    bool ExtTextOut(int x, int y, UINT options, const CRect* rect, const CString& text,
                    const int* spacing = nullptr) {
        return ExtTextOut(x, y, options, rect, text, text.GetLength(), spacing);
    }
    /// Advance width and line height of `text` in the selected font, in pixels. The height is the font's and
    /// does not change with the text.
    CSize GetTextExtent(const char* text, int count = -1) const;
    CSize GetTextExtent(const CString& text) const { return GetTextExtent(text, text.GetLength()); }

    /// Make and delete the clip region around a drawing sequence while a bitmap is selected.
    void InitDrawing();
    void ExitDrawing();

    /// The colour (red in the low byte) and, in the highest byte, the alpha of a pixel; 0 outside. For tests
    /// and for reading pictures back.
    std::uint32_t GetPixel(int x, int y) const;
    /// Writes what is drawn on as a PNG file; false when that cannot be done.
    bool SavePng(const char* path) const;

    /// The pixels behind this context; null when there are none.
    platform::Surface* surface() const;
    /// Device pixels for each logical one.
    double Scale() const;

  protected:
    /// Draws on `window`'s part of its top-level window, without what lies above it; nothing when there is
    /// none.
    void AttachWindow(CWnd* window, const CRgn* within);

  private:
    /// The part of `rect` (in surface coordinates) that may be drawn on.
    CRgn Clipped(const CRect& rect) const;
    CRect ToSurface(const CRect& rect) const;
    bool Transfer(const CRect& to, CDC* src, CRect from, UINT rop);
    platform::Surface* SourcePixels() const;
    CFont& FontInUse() const;

    std::shared_ptr<BackingStore>
        store_; ///< outlives the window when it goes away while this context is in use
    bool ofWindow_ = false;
    CPoint base_; ///< the window's place in its top-level window
    CSize size_;
    CPoint origin_;
    CRgn visible_; ///< of a window, in surface coordinates
    bool clipped_ = false;
    CRgn clip_; ///< in client coordinates
    COLORREF textColor_ = 0;
    COLORREF bkColor_ = 0xFFFFFF;
    int bkMode_ = TRANSPARENT;
    CFont* font_ = nullptr;
    mutable std::unique_ptr<CFont> defaultFont_;
    CBitmap* bitmap_ = nullptr;
};

/// A context on a window, outside of WM_PAINT. What is drawn shows when the context goes, or, inside of an
/// idle, at its end.
class CClientDC : public CDC {
  public:
    /// [main-thread] A null or destroyed window gives a context that draws nothing.
    explicit CClientDC(CWnd* window);
    ~CClientDC() override;

  private:
    std::weak_ptr<WindowSession> session_;
};

/// A context for drawing inside `OnPaint`: limited to the window's update rectangle when WM_PAINT comes from
/// an invalidation, to the client rectangle when somebody sent it with `SendMessage`. What is drawn shows at
/// the end of the idle, or, outside of one, when the context goes.
class CPaintDC : public CDC {
  public:
    /// [main-thread] Begins painting.
    explicit CPaintDC(CWnd* window);
    ~CPaintDC() override;
    /// The rectangle to be painted, in client coordinates.
    const CRect& updateRect() const { return update_; }

  private:
    CRect update_;
    std::weak_ptr<WindowSession> sent_; ///< to be asked to present, when WM_PAINT was sent
};

} // namespace vocafade
