// SPDX-License-Identifier: MIT
#include "ui/platform/x11/display.h"
#include "ui/platform/x11/sigpipe_guard.h"
#include "ui/winuser.h"

#include <array>
#include <bit>
#include <cstring>
#include <xcb/shape.h>

namespace vocafade::platform::x11 {
namespace {

/// Bytes of a PutImage request before its pixels.
constexpr std::uint32_t kPutImageHeader = 32;

/// What the server answered to a grab; also "not viewable" when there is no such window.
template <class T>
std::uint8_t StatusOf(const T* answer) {
    return answer != nullptr ? answer->status : std::uint8_t{XCB_GRAB_STATUS_NOT_VIEWABLE};
}

/// A colour component of 8 bits, put where the visual wants it.
std::uint32_t Spread(unsigned component, std::uint32_t mask) {
    if (mask == 0) return 0;
    const int bits = std::popcount(mask);
    const int shift = std::countr_zero(mask);
    const std::uint64_t scaled = bits >= 8 ? std::uint64_t{component} << (bits - 8) : component >> (8 - bits);
    return static_cast<std::uint32_t>(scaled << shift) & mask;
}

/// A part of the picture in the server's format, rows padded as it wants them.
std::vector<std::uint8_t> Pack(Surface& picture, const CRect& part, const PixelFormat& format) {
    const int bytes = format.bitsPerPixel / 8;
    const int pad = format.scanlinePad / 8;
    const int row = (part.Width() * bytes + pad - 1) / pad * pad;
    std::vector<std::uint8_t> data(static_cast<std::size_t>(row) * static_cast<std::size_t>(part.Height()));
    const std::uint32_t* pixels = picture.Pixels();
    for (int y = 0; y < part.Height(); ++y) {
        const std::uint32_t* in =
            pixels + static_cast<std::ptrdiff_t>(part.top + y) * picture.Stride() + part.left;
        std::uint8_t* out = data.data() + static_cast<std::ptrdiff_t>(y) * row;
        if (format.direct) {
            std::memcpy(out, in, static_cast<std::size_t>(part.Width()) * 4);
            continue;
        }
        for (int x = 0; x < part.Width(); ++x) {
            const std::uint32_t v = Spread((in[x] >> 16) & 0xFF, format.red) |
                                    Spread((in[x] >> 8) & 0xFF, format.green) |
                                    Spread(in[x] & 0xFF, format.blue);
            for (int b = 0; b < bytes; ++b) {
                const int shift = 8 * (format.mostSignificantFirst ? bytes - 1 - b : b);
                *out++ = static_cast<std::uint8_t>(v >> shift);
            }
        }
    }
    return data;
}

} // namespace

NativeWindow::NativeWindow(XDisplay& display, xcb_window_t id, const WindowRequest& request)
    : display_(display), id_(id), kind_(request.kind), host_(static_cast<xcb_window_t>(request.host)),
      place_(ToDevice(request.bounds.TopLeft(), display.scale())) {
    display_.Know(id_, *this);
    if (kind_ == WindowKind::popup) MakeHolder(static_cast<xcb_window_t>(request.owner));
    if (kind_ == WindowKind::dialog) FixSize(ToDevice(request.bounds, display.scale()).Size());
    if (kind_ == WindowKind::tooltip) LetInputThrough();
}

void NativeWindow::LetInputThrough() {
    xcb_connection_t* c = display_.connection();
    const xcb_query_extension_reply_t* shape = xcb_get_extension_data(c, &xcb_shape_id);
    if (shape == nullptr || shape->present == 0) return;
    xcb_shape_rectangles(c, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED, id_, 0, 0, 0,
                         nullptr);
}

void NativeWindow::MakeHolder(xcb_window_t owner) {
    // The server ends a grab whose window leaves the screen. So a host that hides the editor, and perhaps
    // does not idle it from then on, cannot leave the desktop without mouse and keyboard, which a grab of the
    // popup's own window would. One pixel, outside of the owner: it takes up no place in it.
    xcb_connection_t* c = display_.connection();
    holder_ = xcb_generate_id(c);
    const std::uint32_t mask = XCB_EVENT_MASK_FOCUS_CHANGE; // tells of the end of the keyboard's grab
    xcb_create_window(c, 0, holder_, owner, -1, -1, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &mask);
    xcb_map_window(c, holder_);
    display_.Know(holder_, *this);
}

NativeWindow::~NativeWindow() {
    const SigpipeGuard guard;
    if (wantsKeyboard_) NativeWindow::GiveKeyboardBack();
    display_.Forget(*this);
    if (holder_ != 0) xcb_destroy_window(display_.connection(), holder_); // and with it the grabs
    if (id_ != 0) xcb_destroy_window(display_.connection(), id_);
    xcb_flush(display_.connection());
}

void NativeWindow::SelectEvents() {
    std::uint32_t mask = XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    if (kind_ != WindowKind::tooltip)
        mask |= XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION |
                XCB_EVENT_MASK_LEAVE_WINDOW | XCB_EVENT_MASK_FOCUS_CHANGE;
    // A key pressed while the pointer is over the panel belongs to the host, unless we took the keyboard.
    if (kind_ == WindowKind::dialog || kind_ == WindowKind::popup || wantsKeyboard_)
        mask |= XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;
    xcb_change_window_attributes(display_.connection(), id_, XCB_CW_EVENT_MASK, &mask);
}

void NativeWindow::Move(CPoint place) {
    if (id_ == 0) return;
    const SigpipeGuard guard;
    place_ = ToDevice(place, display_.scale());
    const std::array<std::uint32_t, 2> values{static_cast<std::uint32_t>(place_.x),
                                              static_cast<std::uint32_t>(place_.y)};
    xcb_configure_window(display_.connection(), id_, XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y,
                         values.data());
}

void NativeWindow::Resize(CSize logical) {
    if (id_ == 0) return;
    const SigpipeGuard guard;
    const CSize size = ToDevice(logical, display_.scale());
    if (kind_ == WindowKind::dialog) FixSize(size);
    const std::array<std::uint32_t, 2> values{static_cast<std::uint32_t>(std::max(1, size.cx)),
                                              static_cast<std::uint32_t>(std::max(1, size.cy))};
    xcb_configure_window(display_.connection(), id_, XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT,
                         values.data());
}

void NativeWindow::FixSize(CSize size) {
    // Size hints: a place that the program chose (4), and a smallest (16) and a largest (32) size, the same.
    const auto w = static_cast<std::uint32_t>(size.cx);
    const auto h = static_cast<std::uint32_t>(size.cy);
    const std::array<std::uint32_t, 18> hints{4 | 16 | 32,
                                              static_cast<std::uint32_t>(place_.x),
                                              static_cast<std::uint32_t>(place_.y),
                                              w,
                                              h,
                                              w,
                                              h,
                                              w,
                                              h};
    xcb_change_property(display_.connection(), XCB_PROP_MODE_REPLACE, id_, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(), hints.data());
}

void NativeWindow::Show(bool show) {
    if (id_ == 0) return;
    const SigpipeGuard guard;
    xcb_connection_t* c = display_.connection();
    if (!show) {
        GiveKeyboardBack();
        xcb_unmap_window(c, id_);
        return;
    }
    SelectEvents();
    xcb_map_window(c, id_);
    if (kind_ == WindowKind::popup && !Grab()) display_.RetryGrab(id_);
}

bool NativeWindow::Grab() {
    if (id_ == 0) return true;
    xcb_connection_t* c = display_.connection();
    constexpr std::uint16_t kPointer =
        XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE | XCB_EVENT_MASK_POINTER_MOTION;
    const auto pointer = xcb_grab_pointer(c, 0, holder_, kPointer, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC,
                                          XCB_NONE, XCB_NONE, XCB_CURRENT_TIME);
    const auto keys =
        xcb_grab_keyboard(c, 0, holder_, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    const Reply<xcb_grab_pointer_reply_t> pointerAnswer(xcb_grab_pointer_reply(c, pointer, nullptr));
    const Reply<xcb_grab_keyboard_reply_t> keysAnswer(xcb_grab_keyboard_reply(c, keys, nullptr));
    const std::uint8_t gotPointer = StatusOf(pointerAnswer.get());
    const std::uint8_t gotKeys = StatusOf(keysAnswer.get());
    if (gotPointer == XCB_GRAB_STATUS_NOT_VIEWABLE || gotKeys == XCB_GRAB_STATUS_NOT_VIEWABLE) {
        display_.InputLost(*this); // the owner is not on the screen
        return true;
    }
    return gotPointer == XCB_GRAB_STATUS_SUCCESS && gotKeys == XCB_GRAB_STATUS_SUCCESS;
}

void NativeWindow::Mapped() {
    // A window manager gives a new dialog the keyboard by itself; without one somebody has to.
    if (wantsKeyboard_ || (kind_ == WindowKind::dialog && !display_.HasWindowManager())) TakeKeyboard();
}

void NativeWindow::TakeKeyboard() {
    if (id_ == 0) return;
    const SigpipeGuard guard;
    xcb_connection_t* c = display_.connection();
    const Reply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    if (focus != nullptr && focus->focus != id_) {
        focusBefore_ = focus->focus;
        focusRevert_ = focus->revert_to;
        rememberedFocus_ = true;
    }
    if (!wantsKeyboard_) {
        wantsKeyboard_ = true;
        SelectEvents();
        display_.keyboard().ResetCompose();
    }
    FocusSelf();
}

void NativeWindow::FocusSelf() {
    // Fails without harm while the window is not on the screen; `Mapped` tries again.
    // At once: a request that waits for the next idle could undo what the user does in between.
    xcb_set_input_focus(display_.connection(), XCB_INPUT_FOCUS_PARENT, id_, XCB_CURRENT_TIME);
    xcb_flush(display_.connection());
}

void NativeWindow::GiveKeyboardBack() {
    if (!wantsKeyboard_) return;
    wantsKeyboard_ = false;
    if (id_ == 0) return;
    const SigpipeGuard guard;
    xcb_connection_t* c = display_.connection();
    SelectEvents();
    const Reply<xcb_get_input_focus_reply_t> focus(
        xcb_get_input_focus_reply(c, xcb_get_input_focus(c), nullptr));
    if (focus == nullptr || focus->focus != id_) return; // the user is somewhere else by now
    xcb_generic_error_t* error = nullptr;
    if (rememberedFocus_) {
        error = xcb_request_check(
            c, xcb_set_input_focus_checked(c, focusRevert_, focusBefore_, XCB_CURRENT_TIME));
        rememberedFocus_ = false;
        if (error == nullptr) return;
    }
    // Whoever had it has gone: the host's window is the next best.
    std::free(error);
    xcb_set_input_focus(c, XCB_INPUT_FOCUS_POINTER_ROOT,
                        host_ != 0 ? host_ : xcb_window_t{XCB_INPUT_FOCUS_POINTER_ROOT}, XCB_CURRENT_TIME);
    xcb_flush(c);
}

void NativeWindow::SetTextInput(const CRect* caret) {
    if (id_ == 0) return;
    const SigpipeGuard guard;
    if (caret != nullptr) {
        display_.BeginTyping(*this, {caret->left, caret->bottom});
    } else {
        display_.EndTyping(*this);
    }
}

void NativeWindow::SetCursor(unsigned cursor) {
    if (id_ == 0 || cursor == cursor_) return;
    const SigpipeGuard guard;
    cursor_ = cursor;
    const std::uint32_t value = display_.CursorFor(cursor);
    xcb_change_window_attributes(display_.connection(), id_, XCB_CW_CURSOR, &value);
}

void NativeWindow::Raise() {
    if (id_ == 0) return;
    const SigpipeGuard guard;
    xcb_connection_t* c = display_.connection();
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(c, id_, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = id_;
    message.type = display_.atoms().netActiveWindow;
    message.data.data32[0] = 1; // an application asks
    message.data.data32[1] = display_.lastTime();
    xcb_send_event(c, 0, display_.screen().root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   static_cast<const char*>(static_cast<const void*>(&message)));
}

CPoint NativeWindow::ScreenPosition() {
    if (id_ == 0) return {};
    const SigpipeGuard guard;
    xcb_connection_t* c = display_.connection();
    const Reply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
        c, xcb_translate_coordinates(c, id_, display_.screen().root, 0, 0), nullptr));
    return place != nullptr ? ToLogical({place->dst_x, place->dst_y}, display_.scale()) : CPoint();
}

void NativeWindow::Present(Surface& picture, std::span<const CRect> where) {
    if (id_ == 0) return;
    const SigpipeGuard guard;
    xcb_connection_t* c = display_.connection();
    const PixelFormat& format = display_.format();
    const std::uint64_t most = std::uint64_t{xcb_get_maximum_request_length(c)} * 4 - kPutImageHeader;
    const CRect all(0, 0, picture.DeviceWidth(), picture.DeviceHeight());
    for (const CRect& r : where) {
        CRect part;
        if (!part.IntersectRect(ToDevice(r, picture.Scale()), all)) continue;
        const auto rowBytes = static_cast<std::uint64_t>(part.Width()) * format.bitsPerPixel / 8 + 4;
        const int rows = static_cast<int>(std::clamp<std::uint64_t>(most / rowBytes, 1, 65535));
        for (int top = part.top; top < part.bottom; top += rows) {
            const CRect band(part.left, top, part.right, std::min(part.bottom, top + rows));
            const std::vector<std::uint8_t> data = Pack(picture, band, format);
            const xcb_void_cookie_t sent = xcb_put_image(
                c, XCB_IMAGE_FORMAT_Z_PIXMAP, id_, display_.graphics(),
                static_cast<std::uint16_t>(band.Width()), static_cast<std::uint16_t>(band.Height()),
                static_cast<std::int16_t>(band.left), static_cast<std::int16_t>(band.top), 0, format.depth,
                static_cast<std::uint32_t>(data.size()), data.data());
            if (part != all || top != part.top) continue;
            pictured_ = all;
            picturedBy_ = sent.sequence;
        }
    }
}

} // namespace vocafade::platform::x11
