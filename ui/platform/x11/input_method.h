// SPDX-License-Identifier: MIT
#pragma once

#include "ui/geometry.h"

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <xcb-imdkit/imclient.h>
#include <xcb/xcb.h>

namespace vocafade::platform::x11 {

/// The desktop's input method while text is typed into one window: a client of its server, by the X Input
/// Method protocol, on our own connection. Nothing here waits for that server. Keys go to it, and come back,
/// or text does, as events. Where it is dead or silent for too long, `HasFailed` says so, and `TakeKeys` has
/// what it still owes.
///
/// [main-thread] all of it, within a `SigpipeGuard`.
class InputMethod {
  public:
    /// What becomes of the keys; called from `Handle` alone, and not to end the method.
    struct Receiver {
        /// A key that is the window's after all.
        std::function<void(const xcb_key_press_event_t& event)> key;
        /// Text that was made of keys: UTF-8, no control characters, not empty.
        std::function<void(std::string text)> text;
    };

    /// Null when XMODIFIERS names no method, which asks the display nothing, and when nobody serves it.
    static std::unique_ptr<InputMethod> Open(xcb_connection_t* connection, int screenNumber,
                                             xcb_window_t window, Receiver receiver);
    ~InputMethod();
    InputMethod(const InputMethod&) = delete;
    InputMethod& operator=(const InputMethod&) = delete;

    /// Where the text goes, in the window's device pixels: what is being composed is shown there.
    void MoveCaret(CPoint place);
    /// Takes a key pressed or released, if it is the window's and for the method to see. Later `Receiver` gets
    /// it back, or what became of it, or nothing.
    bool Take(const xcb_key_press_event_t& event);
    /// True when the event was about the method, and is done with.
    bool Handle(xcb_generic_event_t* event);
    /// Whether the server has gone, or owes an answer for longer than people wait for a key. To be asked when
    /// no event is left. It is of no use any more then.
    bool HasFailed() const;
    /// The keys that were never answered, in order.
    std::deque<xcb_key_press_event_t> TakeKeys();

  private:
    using Clock = std::chrono::steady_clock;
    struct Key {
        xcb_key_press_event_t event;
        bool sent = false;
    };

    InputMethod(xcb_connection_t* connection, xcb_window_t window, Receiver receiver);
    void Connect(int screenNumber, const std::string& name);
    /// Sends what can be sent. The library forgets to send what waits behind an unanswered request, so there
    /// is never more than one.
    void Send();
    void MakeContext();
    /// Also asked behind keys: a server says nothing of a key that it keeps, but handles all in order.
    void TellCaret();
    void CaretTold();
    /// Which message of the protocol it is; 0 when it is not there as it says.
    std::uint8_t KindOf(const xcb_client_message_event_t& message) const;
    void Returned(const xcb_key_press_event_t& event);
    void Committed(std::string_view text, std::optional<std::uint32_t> keysym);

    xcb_connection_t* connection_;
    xcb_window_t window_;
    Receiver receiver_;
    xcb_atom_t connecting_;  ///< the type of the message that answers a connection
    xcb_atom_t protocol_;    ///< that of all others
    xcb_window_t inbox_ = 0; ///< the library's window, to which they are sent
    xcb_xim_t* im_ = nullptr;
    Clock::time_point begun_ = Clock::now();
    Clock::time_point answered_; ///< the last time, or when the oldest key was taken
    bool opened_ = false;        ///< contexts can be made
    bool asked_ = false;         ///< a request is not answered yet
    bool plain_ = false;         ///< the server shows what is composed wherever it likes
    bool failed_ = false;
    bool gone_ = false; ///< the library has closed the connection
    bool focused_ = false;
    bool wantsReleases_ = false;
    xcb_xic_t context_ = 0;
    std::pair<std::int16_t, std::int16_t> caret_;
    std::optional<std::pair<std::int16_t, std::int16_t>>
        toldCaret_; ///< many servers look at it only when told apart
    std::deque<Key> keys_;
};

} // namespace vocafade::platform::x11
