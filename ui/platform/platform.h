// SPDX-License-Identifier: MIT
#pragma once

#include "ui/platform/scale.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What the window and drawing layer needs of a system. A system is one folder beside this header that
/// implements these classes and the functions at the end; the layer above includes nothing else of it.
///
/// Everything here is for one thread at a time; different displays may be used on different threads.
/// All text is UTF-8.
///
/// All places, sizes and lengths that cross this seam are logical pixels; the platform turns them into device
/// pixels and back by the rules of scale.h. A surface has the scale that it was made with, a display the one
/// that it was told (1 at first). Only `Surface::Pixels`, `Stride`, `DeviceWidth` and `DeviceHeight` are about
/// device pixels. At scale 1 both are the same.
namespace vocafade::platform {

/// A picture: rows from the top, one 32-bit number a device pixel (0xAARRGGBB, colours premultiplied with
/// alpha).
class Surface {
  public:
    virtual ~Surface() = default;
    /// Logical size.
    virtual int Width() const = 0;
    virtual int Height() const = 0;
    /// Device pixels for each logical one, above 0.
    virtual double Scale() const = 0;
    virtual int DeviceWidth() const = 0;
    virtual int DeviceHeight() const = 0;
    /// The device pixels, to be read or written until the next other call; `Stride` numbers lie from row to
    /// row.
    virtual std::uint32_t* Pixels() = 0;
    virtual int Stride() const = 0;
    /// To be called after writing to `Pixels`.
    virtual void PixelsChanged() = 0;

    /// Fills the rectangles with one opaque colour (0xRRGGBB).
    virtual void Fill(std::span<const CRect> where, std::uint32_t rgb) = 0;
    /// Draws `from` of `source` into `to`, blended with the source's alpha, within the rectangles `clip`.
    /// `from` lies inside the source; `source` is not this surface. Where the sizes are the same, a source of
    /// this surface's scale is copied pixel by pixel, and one of another scale is resampled at the exact
    /// places, so that two draws of parts give what one draw of both gives; where the sizes differ, bilinear.
    /// What the rounding of `to` needs beyond `from` repeats its edge.
    virtual void Draw(Surface& source, const CRect& from, const CRect& to, std::span<const CRect> clip) = 0;
    /// All device pixels.
    virtual bool WritePng(const char* path) = 0;
};

/// A font of one size, and what other fonts add to it where it lacks a character. Text is valid UTF-8, one
/// line. Lengths are logical pixels, whole device pixels where they come from characters as drawn.
class Font {
  public:
    virtual ~Font() = default;
    /// Height of the bounding box around all characters of the font.
    virtual double BoundingHeight() const = 0;
    /// Height above and depth below the baseline.
    virtual double Ascent() const = 0;
    virtual double Descent() const = 0;
    /// Advance width.
    virtual double Width(std::string_view text) = 0;
    /// The x of the caret before each character (code point) and behind the last.
    virtual std::vector<double> CaretStops(std::string_view text) = 0;
    /// Draws at the target's scale with the left end of the baseline at (x, baseline), rounded to a device
    /// pixel, within the rectangles `clip`. Sharpest where the target has the font's own scale.
    virtual void Draw(Surface& target, double x, double baseline, std::string_view text, std::uint32_t rgb,
                      std::span<const CRect> clip) = 0;
};

class Window;

enum class EventType {
    none,
    pressed,     ///< `point`, `button` (1 left, 2 middle, 3 right), `time`
    released,    ///< the same
    moved,       ///< `point`
    left,        ///< the pointer has left the window
    wheel,       ///< `point`, `value`: 120 a notch, upwards positive; touchpads send less at a time
    keyPressed,  ///< `key`, `text`; from an input method `text` alone, with `key` 0
    keyReleased, ///< `key`
    focusGained, ///< the window has the system's keyboard focus now
    focusLost,
    exposed,       ///< `area` must be presented again
    closeAsked,    ///< the user pressed the close button of the frame
    destroyed,     ///< the system destroyed the window (with the host's); it must not be used but for its end
    parentResized, ///< `area`: the host's window has this size now; `window` is null
    clipboard,     ///< `text`: what `RequestClipboard` asked for
    inputLost,     ///< a popup does not get all input any more
    scaleChanged,  ///< `DesktopScale` answers something else from now on; `window` is null
};

struct Event {
    EventType type = EventType::none;
    Window* window = nullptr;
    CPoint point;       ///< in the window
    CPoint screenPoint; ///< of a press
    CRect area;
    int button = 0;
    int value = 0;
    std::uint32_t time = 0; ///< milliseconds of the system's own clock
    unsigned key = 0;       ///< a `kKey...` code
    bool keyTyped = false;  ///< `text` was typed (and is no control character)
    std::string text;       ///< UTF-8
    bool shift = false;     ///< modifiers and the left button as they were when it happened
    bool control = false;
    bool alt = false;
    bool leftButton = false;
};

enum class WindowKind : int {
    embedded, ///< a child of the host's window
    dialog,   ///< a window with a frame of its own, above the host's
    popup,    ///< a menu: no frame, above all, takes all input while it and its owner are shown
    tooltip,  ///< no frame, above all; gets no focus and no input, clicks go to what lies below
};

struct WindowRequest {
    WindowKind kind = WindowKind::embedded;
    std::uintptr_t host = 0;  ///< the host's window: the parent, or what the dialog belongs to
    std::uintptr_t owner = 0; ///< of a popup or tooltip: `NativeId` of the window that it belongs to
    CRect bounds;             ///< in the parent, or on the screen
    std::string title;        ///< UTF-8
};

/// A native window.
class Window {
  public:
    virtual ~Window() = default;
    /// The system's number for it, for tests and logs; 0 when it is gone.
    virtual std::uintptr_t NativeId() const = 0;
    /// Moves it: in the parent, or on the screen.
    virtual void Move(CPoint place) = 0;
    virtual void Resize(CSize size) = 0;
    virtual void Show(bool show) = 0;
    /// Puts the rectangles of `picture` onto the screen.
    virtual void Present(Surface& picture, std::span<const CRect> where) = 0;
    /// Takes the keyboard from whoever has it, remembering who that was.
    virtual void TakeKeyboard() = 0;
    /// Gives the keyboard back, unless somebody else has got it in the meantime.
    virtual void GiveKeyboardBack() = 0;
    /// Text is typed into the window with its caret at `caret`: an input method may take the keys and show
    /// there what it makes of them. Null: no text is typed (any more); what was begun is dropped. Nothing
    /// happens on a platform without input methods.
    virtual void SetTextInput(const CRect* caret) = 0;
    /// Sets the pointer's look (`kCursorArrow` and the rest).
    virtual void SetCursor(unsigned cursor) = 0;
    /// Asks for the window to be the front one.
    virtual void Raise() = 0;
    /// Place of the window's top left on the screen.
    virtual CPoint ScreenPosition() = 0;
};

/// A connection to the system's windows, for one editor.
class Display {
  public:
    virtual ~Display() = default;
    /// False once the display has gone away: nothing happens any more, and nothing fails.
    virtual bool IsAlive() = 0;
    /// How large the desktop wants things drawn, 1 being as large as pixels are; 0 when it says nothing. As it
    /// is told, neither rounded nor limited.
    virtual double DesktopScale() = 0;
    /// From now on sizes, positions and events of this display and its windows are in logical pixels of
    /// `scale` (above 0). Windows keep their device size until their next `Move` and `Resize`.
    virtual void SetScale(double scale) = 0;
    /// Tells the size of the host's window; false when there is none of that number. From then on its changes
    /// arrive as events.
    virtual bool WatchHost(std::uintptr_t host, CSize& size) = 0;
    /// Null when it cannot be made. It must go before the display does.
    virtual std::unique_ptr<Window> MakeWindow(const WindowRequest& request) = 0;
    /// The next thing that has happened; false when there is nothing. Never waits.
    virtual bool NextEvent(Event& event) = 0;
    /// Sends what is pending.
    virtual void Flush() = 0;
    /// Asks the system, now: a release that it knows of has become an event when this returns false.
    virtual bool IsLeftButtonHeld() = 0;
    /// The part of the screen around `point` that menus may cover.
    virtual CRect WorkArea(CPoint point) = 0;
    /// Milliseconds and pixels within which two presses are a double one.
    virtual unsigned DoubleClickTime() const = 0;
    virtual int DoubleClickDistance() const = 0;
    /// UTF-8 text for other programs; what others offer arrives as an event.
    virtual void OfferClipboard(std::string text) = 0;
    virtual void RequestClipboard(Window& window) = 0;
};

/// A transparent picture; null when the size is not positive, a side has more than 16384 device pixels, or
/// there is no memory for it.
std::unique_ptr<Surface> MakeSurface(int width, int height, double scale = 1.0);
/// The picture in a PNG file, which was drawn at `scale` times its logical size. Null when the bytes are no
/// whole PNG file, or one with a side above 4096 logical pixels or more than 16 million pixels.
std::unique_ptr<Surface> DecodePng(std::span<const std::byte> file, double scale = 1.0);
/// The font that comes nearest to `name`, at `pixels` high, measured as it is drawn at `scale`.
std::shared_ptr<Font> OpenFont(std::string_view name, double pixels, double scale = 1.0);
/// The letter that `character` (one, valid UTF-8) is without its accents; the character itself if it has
/// none.
std::string BaseLetter(std::string_view character);
/// Connects to the display of this process; null when there is none.
std::unique_ptr<Display> OpenDisplay();

} // namespace vocafade::platform
