// SPDX-License-Identifier: MIT
#include "base/win32/wide_text.h"
#include "ui/key_codes.h"
#include "ui/platform/scale.h"
#include "ui/platform/win32/display.h"
#include "ui/platform/win32/window_class.h"

#include <imm.h>
#include <utility>
#include <windowsx.h>

namespace vocafade::platform::win32 {
namespace {

// Newer than Windows 7.
constexpr UINT kDpiChangedAfterParent = 0x02E3;
constexpr UINT kDpiChanged = 0x02E0;

/// How often a popup looks for its owner by itself, in milliseconds: a host that has hidden it may not idle any more.
constexpr UINT kPopupPeriod = 100;

/// The window that a dialog or popup belongs to: what has a frame, on the way up.
HWND TopLevelOf(HWND window) { return window != nullptr ? ::GetAncestor(window, GA_ROOT) : nullptr; }

/// The input method's state of a window, to the end of the scope.
class InputContext {
  public:
    explicit InputContext(HWND window) : window_(window), context_(::ImmGetContext(window)) {}
    ~InputContext() {
        if (context_ != nullptr) ::ImmReleaseContext(window_, context_);
    }
    InputContext(const InputContext&) = delete;
    InputContext& operator=(const InputContext&) = delete;
    operator HIMC() const { return context_; }

  private:
    HWND window_;
    HIMC context_;
};

} // namespace

// --- Life

NativeWindow::NativeWindow(WinDisplay& display, const WindowRequest& request)
    : display_(display), kind_(request.kind), host_(reinterpret_cast<HWND>(request.host)),
      owner_(reinterpret_cast<HWND>(request.owner)) {
    switch (kind_) {
    case WindowKind::embedded:
        style_ = WS_CHILD | WS_CLIPSIBLINGS;
        break;
    case WindowKind::dialog:
        style_ = WS_POPUP | WS_CAPTION | WS_SYSMENU;
        moreStyle_ = WS_EX_DLGMODALFRAME;
        break;
    case WindowKind::popup:
        style_ = WS_POPUP;
        moreStyle_ = WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE | WS_EX_TOPMOST;
        break;
    case WindowKind::tooltip:
        style_ = WS_POPUP;
        // Both of these let clicks through to other programs' windows too.
        moreStyle_ = WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE | WS_EX_TOPMOST | WS_EX_LAYERED | WS_EX_TRANSPARENT;
        break;
    }
    const bool embedded = kind_ == WindowKind::embedded;
    const HWND parent = embedded ? host_ : TopLevelOf(owner_ != nullptr ? owner_ : host_);
    CRect b = ToDevice(request.bounds, display_.scale());
    b = CRect(b.TopLeft(), {std::max(1, b.Width()), std::max(1, b.Height())});
    const CRect outer = WithFrame(b);
    ::CreateWindowExW(moreStyle_, OurClass(), vocafade::win32::Wide(request.title).c_str(), style_,
                      outer.left, outer.top, outer.Width(), outer.Height(), parent, nullptr, ThisModule(),
                      this);
    if (id_ == nullptr) return;
    if (kind_ == WindowKind::tooltip) ::SetLayeredWindowAttributes(id_, 0, 255, LWA_ALPHA);
    ::ImmAssociateContextEx(id_, nullptr, 0); // no text is typed yet
    display_.Know(*this);
}

NativeWindow::~NativeWindow() {
    if (id_ != nullptr && ::GetCurrentThreadId() == thread_) {
        if (wantsKeyboard_) NativeWindow::GiveKeyboardBack();
        EndPopup();
        const HWND window = std::exchange(id_, nullptr);
        ::SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        ::DestroyWindow(window);
    } else if (id_ != nullptr) {
        // Only the thread that made a window can destroy it. From here on the system alone handles its messages, and
        // the one that closes it is the last.
        hook_.reset();
        ::SetWindowLongPtrW(id_, GWLP_USERDATA, 0);
        ::SetWindowLongPtrW(id_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&::DefWindowProcW));
        ::ShowWindowAsync(id_, SW_HIDE);
        ::PostMessageW(id_, WM_CLOSE, 0, 0);
    }
    display_.Forget(*this);
}

CRect NativeWindow::WithFrame(const CRect& client) const {
    RECT r{client.left, client.top, client.right, client.bottom};
    if (kind_ == WindowKind::dialog) ::AdjustWindowRectEx(&r, style_, FALSE, moreStyle_);
    return {static_cast<int>(r.left), static_cast<int>(r.top), static_cast<int>(r.right),
            static_cast<int>(r.bottom)};
}

void NativeWindow::Move(CPoint place) {
    if (id_ == nullptr) return;
    const CRect outer = WithFrame({ToDevice(place, display_.scale()), {1, 1}});
    ::SetWindowPos(id_, nullptr, outer.left, outer.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void NativeWindow::Resize(CSize size) {
    if (id_ == nullptr) return;
    const CSize device = ToDevice(size, display_.scale());
    const CRect outer = WithFrame({{0, 0}, {std::max(1, device.cx), std::max(1, device.cy)}});
    ::SetWindowPos(id_, nullptr, 0, 0, outer.Width(), outer.Height(),
                   SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void NativeWindow::Show(bool show) {
    if (id_ == nullptr) return;
    if (!show) {
        GiveKeyboardBack();
        EndPopup();
        ::ShowWindow(id_, SW_HIDE);
        return;
    }
    ::ShowWindow(id_, kind_ == WindowKind::dialog ? SW_SHOW : SW_SHOWNA);
    if (wantsKeyboard_) TakeKeyboard();
    if (isPopup()) StartPopup();
}

// --- Input of a popup

void NativeWindow::StartPopup() {
    ::SetCapture(id_);
    if (hook_ == nullptr) hook_ = std::make_unique<KeyHook>(id_, true);
    ::SetTimer(id_, 1, kPopupPeriod, nullptr);
    if (IsLeftAlone()) LoseInput();
}

void NativeWindow::EndPopup() {
    if (!isPopup()) return;
    hook_.reset();
    ::KillTimer(id_, 1);
    if (::GetCapture() == id_) ::ReleaseCapture();
}

bool NativeWindow::IsLeftAlone() const {
    return isPopup() && hook_ != nullptr && (::IsWindowVisible(owner_) == 0 || ::GetCapture() != id_);
}

void NativeWindow::LookAround() {
    if (IsLeftAlone()) LoseInput();
    if (waitsForKeyboard_ && ::IsWindowVisible(id_) != 0) TakeKeyboard();
}

void NativeWindow::LoseInput() {
    if (!isPopup() || hook_ == nullptr) return;
    EndPopup();
    Push(EventType::inputLost);
}

// --- Keyboard and pointer

void NativeWindow::TakeKeyboard() {
    if (id_ == nullptr) return;
    const HWND focus = ::GetFocus();
    if (focus != id_) focusBefore_ = focus;
    wantsKeyboard_ = true;
    if (hook_ == nullptr) hook_ = std::make_unique<KeyHook>(id_, false);
    waitsForKeyboard_ = ::IsWindowVisible(id_) == 0;
    if (!waitsForKeyboard_) ::SetFocus(id_);
}

void NativeWindow::GiveKeyboardBack() {
    if (!wantsKeyboard_) return;
    wantsKeyboard_ = waitsForKeyboard_ = false;
    hook_.reset();
    const HWND before = std::exchange(focusBefore_, nullptr);
    if (id_ == nullptr || ::GetFocus() != id_) return; // the user is somewhere else by now
    // Where whoever had it has gone, the host's window is the next best.
    ::SetFocus(::IsWindow(before) != 0 && ::IsWindowVisible(before) != 0 ? before : host_);
}

void NativeWindow::SetTextInput(const CRect* caret) {
    if (id_ == nullptr) return;
    if (caret == nullptr) {
        if (caret_) {
            const InputContext context(id_);
            if (context != nullptr) ::ImmNotifyIME(context, NI_COMPOSITIONSTR, CPS_CANCEL, 0);
        }
        caret_.reset();
        ::ImmAssociateContextEx(id_, nullptr, 0);
        return;
    }
    if (!caret_) ::ImmAssociateContextEx(id_, nullptr, IACE_DEFAULT);
    caret_ = ToDevice(*caret, display_.scale());
    PlaceInputMethod();
}

void NativeWindow::PlaceInputMethod() {
    const InputContext context(id_);
    if (context == nullptr || !caret_) return;
    COMPOSITIONFORM composition{};
    composition.dwStyle = CFS_POINT;
    composition.ptCurrentPos = {caret_->left, caret_->top};
    ::ImmSetCompositionWindow(context, &composition);
    CANDIDATEFORM candidates{};
    candidates.dwStyle = CFS_EXCLUDE;
    candidates.ptCurrentPos = {caret_->left, caret_->bottom};
    candidates.rcArea = {caret_->left, caret_->top, caret_->right, caret_->bottom};
    ::ImmSetCandidateWindow(context, &candidates);
}

void NativeWindow::SetCursor(unsigned cursor) {
    if (cursor == cursor_) return;
    cursor_ = cursor;
    // The pointer is over the window: that is when its look is set.
    if (id_ != nullptr)
        ::SendMessageW(id_, WM_SETCURSOR, reinterpret_cast<WPARAM>(id_), MAKELPARAM(HTCLIENT, 0));
}

void NativeWindow::Raise() {
    if (id_ != nullptr) ::SetForegroundWindow(id_);
}

CPoint NativeWindow::ScreenPosition() {
    POINT place{0, 0};
    if (id_ == nullptr || ::ClientToScreen(id_, &place) == 0) return {};
    return ToLogical(CPoint(static_cast<int>(place.x), static_cast<int>(place.y)), display_.scale());
}

// --- Drawing

void NativeWindow::Present(Surface& picture, std::span<const CRect> where) {
    if (id_ == nullptr) return;
    auto& image = static_cast<DibSurface&>(picture);
    const CSize device{image.DeviceWidth(), image.DeviceHeight()};
    const CRect all({0, 0}, {image.Width(), image.Height()});
    if (shown_ == nullptr || shown_->DeviceWidth() != device.cx || shown_->DeviceHeight() != device.cy) {
        shown_ = DibSurface::Make(all.Size(), device, image.Scale());
        where = {&all, 1};
    }
    if (shown_ == nullptr) return;
    const BitmapDc from(image);
    const BitmapDc copy(*shown_);
    const HDC window = ::GetDC(id_);
    for (const CRect& logical : where) {
        const CRect r = image.OnDevice(logical);
        ::BitBlt(copy, r.left, r.top, r.Width(), r.Height(), from, r.left, r.top, SRCCOPY);
        ::BitBlt(window, r.left, r.top, r.Width(), r.Height(), copy, r.left, r.top, SRCCOPY);
    }
    ::ReleaseDC(id_, window);
}

void NativeWindow::Repaint() {
    PAINTSTRUCT paint{};
    const HDC window = ::BeginPaint(id_, &paint);
    if (shown_ != nullptr) {
        const BitmapDc copy(*shown_);
        const RECT& r = paint.rcPaint;
        ::BitBlt(window, r.left, r.top, r.right - r.left, r.bottom - r.top, copy, r.left, r.top, SRCCOPY);
    }
    ::EndPaint(id_, &paint);
}

// --- Messages

LRESULT CALLBACK NativeWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* made = static_cast<NativeWindow*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        made->id_ = window;
        ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made));
    }
    auto* self = reinterpret_cast<NativeWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    const std::optional<LRESULT> answer =
        self != nullptr ? self->Handle(message, wParam, lParam) : std::optional<LRESULT>();
    return answer ? *answer : ::DefWindowProcW(window, message, wParam, lParam);
}

std::optional<LRESULT> NativeWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_DESTROY:
        // The host's window goes, and ours with it.
        EndPopup();
        hook_.reset();
        ::SetWindowLongPtrW(id_, GWLP_USERDATA, 0);
        id_ = nullptr;
        Push(EventType::destroyed);
        return std::nullopt;
    case WM_PAINT:
        Repaint();
        return 0;
    case WM_ERASEBKGND:
        return 1; // the picture covers everything
    case WM_SETCURSOR:
        if (LOWORD(lParam) != HTCLIENT) return std::nullopt;
        ::SetCursor(::LoadCursorW(nullptr, cursor_ == kCursorIBeam ? IDC_IBEAM : IDC_ARROW));
        return TRUE;
    case WM_MOUSEACTIVATE:
        if (kind_ == WindowKind::popup || kind_ == WindowKind::tooltip) return MA_NOACTIVATE;
        return std::nullopt;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
    case WM_MBUTTONDOWN:
    case WM_MBUTTONUP:
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
        HandleButton(message, wParam, lParam);
        return 0;
    case WM_MOUSEMOVE:
        HandleMove({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
        return 0;
    case WM_MOUSELEAVE:
        watchesLeave_ = false;
        Push(EventType::left);
        return 0;
    case WM_TIMER:
        LookAround();
        return 0;
    case WM_MOUSEWHEEL:
        HandleWheel(wParam, lParam);
        return 0;
    case WM_KEYDOWN:
    case WM_KEYUP:
    case WM_CHAR:
    case WM_DEADCHAR:
        return HandleKey(message, wParam, lParam);
    case WM_IME_STARTCOMPOSITION:
        PlaceInputMethod();
        return std::nullopt;
    case WM_IME_COMPOSITION:
        return HandleComposition(lParam);
    case WM_GETDLGCODE:
        // To hosts that treat their windows as dialogs: Tab, Return and the arrows are ours.
        return wantsKeyboard_ || kind_ == WindowKind::dialog
                   ? DLGC_WANTALLKEYS | DLGC_WANTARROWS | DLGC_WANTCHARS
                   : 0;
    case WM_SETFOCUS:
        if (kind_ == WindowKind::dialog && hook_ == nullptr) hook_ = std::make_unique<KeyHook>(id_, false);
        Push(EventType::focusGained);
        return 0;
    case WM_KILLFOCUS:
        if (kind_ == WindowKind::dialog) hook_.reset();
        firstHalf_ = 0;
        Push(EventType::focusLost);
        return 0;
    case WM_CLOSE:
        Push(EventType::closeAsked);
        return 0;
    case WM_CAPTURECHANGED:
        if (reinterpret_cast<HWND>(lParam) != id_) LoseInput();
        return 0;
    case WM_CANCELMODE:
        LoseInput();
        return std::nullopt;
    case WM_ACTIVATEAPP:
        if (wParam == 0) LoseInput(); // another program comes forward
        return std::nullopt;
    case kDpiChanged:
    case kDpiChangedAfterParent:
        return 0; // the display looks for itself
    default:
        return std::nullopt;
    }
}

void NativeWindow::HandleButton(UINT message, WPARAM wParam, LPARAM lParam) {
    const bool pressed = message == WM_LBUTTONDOWN || message == WM_MBUTTONDOWN || message == WM_RBUTTONDOWN;
    Event event = EventNow(pressed ? EventType::pressed : EventType::released, this);
    event.button = message == WM_LBUTTONDOWN || message == WM_LBUTTONUP   ? 1
                   : message == WM_MBUTTONDOWN || message == WM_MBUTTONUP ? 2
                                                                          : 3;
    POINT place{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    event.point = ToLogical(CPoint(static_cast<int>(place.x), static_cast<int>(place.y)), display_.scale());
    ::ClientToScreen(id_, &place);
    event.screenPoint =
        ToLogical(CPoint(static_cast<int>(place.x), static_cast<int>(place.y)), display_.scale());
    event.leftButton = (wParam & MK_LBUTTON) != 0;
    display_.ready().push_back(event);
    if (isPopup()) return; // it holds the mouse all the time
    if (pressed) {
        ::SetCapture(id_);
    } else if ((wParam & (MK_LBUTTON | MK_MBUTTON | MK_RBUTTON)) == 0 && ::GetCapture() == id_) {
        ::ReleaseCapture();
    }
}

void NativeWindow::HandleMove(CPoint inClient) {
    if (!watchesLeave_) {
        TRACKMOUSEEVENT wanted{};
        wanted.cbSize = sizeof wanted;
        wanted.dwFlags = TME_LEAVE;
        wanted.hwndTrack = id_;
        watchesLeave_ = ::TrackMouseEvent(&wanted) != 0;
    }
    Event event = EventNow(EventType::moved, this);
    event.point = ToLogical(inClient, display_.scale());
    // Of a row of motions only the last matters.
    std::deque<Event>& ready = display_.ready();
    if (!ready.empty() && ready.back().type == EventType::moved && ready.back().window == this &&
        ready.back().leftButton == event.leftButton)
        ready.pop_back();
    ready.push_back(event);
}

void NativeWindow::HandleWheel(WPARAM wParam, LPARAM lParam) {
    Event event = EventNow(EventType::wheel, this);
    POINT place{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}; // on the screen
    ::ScreenToClient(id_, &place);
    event.point = ToLogical(CPoint(static_cast<int>(place.x), static_cast<int>(place.y)), display_.scale());
    event.value = GET_WHEEL_DELTA_WPARAM(wParam);
    display_.ready().push_back(event);
}

std::optional<LRESULT> NativeWindow::HandleKey(UINT message, WPARAM wParam, LPARAM lParam) {
    if (kind_ == WindowKind::embedded && !wantsKeyboard_) {
        // A key pressed while the pointer is over the panel belongs to the host, wherever it put its focus.
        ::PostMessageW(::GetParent(id_), message, wParam, lParam);
        return 0;
    }
    if (message == WM_CHAR) HandleCharacter(static_cast<wchar_t>(wParam));
    if (message == WM_KEYDOWN && wParam == VK_PROCESSKEY) return std::nullopt; // an input method has it
    if (message == WM_KEYDOWN || message == WM_KEYUP) {
        Event event = EventNow(message == WM_KEYDOWN ? EventType::keyPressed : EventType::keyReleased, this);
        event.key = KeyCode(wParam, lParam);
        display_.ready().push_back(event);
    }
    return 0;
}

void NativeWindow::HandleCharacter(wchar_t unit) {
    if (unit >= 0xD800 && unit < 0xDC00) {
        firstHalf_ = unit;
        return;
    }
    const wchar_t units[] = {firstHalf_, unit};
    const bool whole = firstHalf_ != 0 && unit >= 0xDC00 && unit < 0xE000;
    firstHalf_ = 0;
    if (unit < 0x20 || unit == 0x7F) return; // the key says that already
    // The character follows the key that typed it, as a rule at once.
    std::deque<Event>& ready = display_.ready();
    const bool follows =
        !ready.empty() && ready.back().type == EventType::keyPressed && ready.back().window == this;
    if (!follows) {
        ready.push_back(EventNow(EventType::keyPressed, this));
        ready.back().key = kKeyUnknown;
    }
    Event& event = ready.back();
    event.text += vocafade::win32::Narrow({whole ? units : units + 1, whole ? 2U : 1U});
    event.keyTyped = true;
    // Both together are how AltGr is told.
    if (event.control && event.alt) event.control = event.alt = false;
}

std::optional<LRESULT> NativeWindow::HandleComposition(LPARAM parts) {
    if ((parts & GCS_RESULTSTR) == 0) return std::nullopt;
    const InputContext context(id_);
    const LONG bytes = ::ImmGetCompositionStringW(context, GCS_RESULTSTR, nullptr, 0);
    if (bytes <= 0) return std::nullopt;
    std::wstring text(static_cast<std::size_t>(bytes) / sizeof(wchar_t), L'\0');
    ::ImmGetCompositionStringW(context, GCS_RESULTSTR, text.data(), static_cast<DWORD>(bytes));
    Event event = EventNow(EventType::keyPressed, this);
    event.text = vocafade::win32::Narrow(text);
    event.keyTyped = true;
    display_.ready().push_back(event);
    // The system would send the same text once more, as characters; the rest is its own.
    return ::DefWindowProcW(id_, WM_IME_COMPOSITION, 0, parts & ~static_cast<LPARAM>(GCS_RESULTSTR));
}

} // namespace vocafade::platform::win32
