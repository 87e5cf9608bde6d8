// SPDX-License-Identifier: MIT
#include "ui/platform/x11/input_method.h"

#include "base/utf8.h"
#include "ui/platform/x11/reply.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <mutex>
#include <string_view>
#include <xcb-imdkit/encoding.h>
#include <xkbcommon/xkbcommon.h>

namespace vocafade::platform::x11 {
namespace {

/// How long a key may be on its way. Asked when all that has arrived is dealt with: a slow host is no slow server.
constexpr std::chrono::seconds kLongestForAKey{1};
/// How long the server may take to make a context: some steps, each of which the host's idle has to fetch.
constexpr std::chrono::seconds kLongestToConnect{3};

/// uim-xim (1.8.8) crashes when a client names no locale, and the library names none.
constexpr std::string_view kCrashing = "uim";

/// The messages that have a meaning here. The library takes any reply for the one that it waits for, and calls what
/// waits with the arguments of the other.
constexpr std::array<std::uint8_t, 11> kExpected{
    XCB_XIM_CONNECT_REPLY,       XCB_XIM_ERROR,         XCB_XIM_OPEN_REPLY,
    XCB_XIM_SET_EVENT_MASK,      XCB_XIM_SYNC,          XCB_XIM_ENCODING_NEGOTIATION_REPLY,
    XCB_XIM_CREATE_IC_REPLY,     XCB_XIM_FORWARD_EVENT, XCB_XIM_QUERY_EXTENSION_REPLY,
    XCB_XIM_SET_IC_VALUES_REPLY, XCB_XIM_COMMIT};

xcb_atom_t Atom(xcb_connection_t* c, std::string_view name, bool onlyIfKnown) {
    const auto size = static_cast<std::uint16_t>(name.size());
    const Reply<xcb_intern_atom_reply_t> answer(
        xcb_intern_atom_reply(c, xcb_intern_atom(c, onlyIfKnown ? 1 : 0, size, name.data()), nullptr));
    return answer != nullptr ? answer->atom : xcb_atom_t{XCB_NONE};
}

/// The name of the method that the user's desktop runs; empty for none.
std::string NameInEnvironment() {
    const char* value = std::getenv("XMODIFIERS"); // NOLINT(concurrency-mt-unsafe): read only
    if (value == nullptr) return {};
    constexpr std::string_view kIntroduction = "@im=";
    const std::string_view modifiers(value);
    const std::size_t at = modifiers.find(kIntroduction);
    if (at == std::string_view::npos) return {};
    const std::string_view name = modifiers.substr(at + kIntroduction.size());
    return std::string(name.substr(0, name.find('@')));
}

/// Whether a server of that name has entered itself on the display, and is there.
bool IsServed(xcb_connection_t* c, const std::string& name) {
    const xcb_atom_t server = Atom(c, "@server=" + name, true);
    const xcb_atom_t list = Atom(c, "XIM_SERVERS", true);
    if (server == XCB_NONE || list == XCB_NONE) return false;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(c)).data->root;
    constexpr std::uint32_t kMost = 1000;
    const Reply<xcb_get_property_reply_t> servers(
        xcb_get_property_reply(c, xcb_get_property(c, 0, root, list, XCB_ATOM_ATOM, 0, kMost), nullptr));
    if (servers == nullptr || servers->format != 32) return false;
    const auto* first = static_cast<const xcb_atom_t*>(xcb_get_property_value(servers.get()));
    if (std::find(first, first + servers->value_len, server) == first + servers->value_len) return false;
    const Reply<xcb_get_selection_owner_reply_t> owner(
        xcb_get_selection_owner_reply(c, xcb_get_selection_owner(c, server), nullptr));
    return owner != nullptr && owner->owner != XCB_NONE;
}

/// As if it were typed: valid, one line, no control characters.
std::string Typed(std::string_view text) {
    std::string typed;
    const std::string valid = ValidUtf8(text);
    for (std::string_view rest = valid; !rest.empty();) {
        const char32_t character = TakeCharacter(rest);
        if (character >= 0x20 && (character < 0x7F || character >= 0xA0)) typed += ToUtf8(character);
    }
    return typed;
}

} // namespace

std::unique_ptr<InputMethod> InputMethod::Open(xcb_connection_t* connection, int screenNumber,
                                               xcb_window_t window, Receiver receiver) {
    const std::string name = NameInEnvironment();
    if (name.empty() || name == kCrashing || !IsServed(connection, name)) return nullptr;
    std::unique_ptr<InputMethod> method(new InputMethod(connection, window, std::move(receiver)));
    method->Connect(screenNumber, name);
    return method;
}

InputMethod::InputMethod(xcb_connection_t* connection, xcb_window_t window, Receiver receiver)
    : connection_(connection), window_(window), receiver_(std::move(receiver)),
      connecting_(Atom(connection, "_XIM_XCONNECT", false)),
      protocol_(Atom(connection, "_XIM_PROTOCOL", false)) {}

// When the library has closed a connection by itself, closing it again would free things twice.
InputMethod::~InputMethod() {
    if (!gone_) xcb_xim_close(im_);
    xcb_xim_destroy(im_);
}

void InputMethod::Connect(int screenNumber, const std::string& name) {
    static std::once_flag once;
    std::call_once(once, xcb_compound_text_init);
    im_ = xcb_xim_create(connection_, screenNumber, ("@im=" + name).c_str());
    xcb_xim_im_callback callbacks{};
    callbacks.forward_event = [](xcb_xim_t*, xcb_xic_t, xcb_key_press_event_t* event, void* self) {
        static_cast<InputMethod*>(self)->Returned(*event);
    };
    callbacks.commit_string = [](xcb_xim_t*, xcb_xic_t, std::uint32_t, char* text, std::uint32_t length,
                                 std::uint32_t* keysyms, std::size_t count, void* self) {
        static_cast<InputMethod*>(self)->Committed(
            {text, length}, count > 0 ? std::optional<std::uint32_t>(*keysyms) : std::nullopt);
    };
    callbacks.set_event_mask = [](xcb_xim_t*, xcb_xic_t, std::uint32_t mask, std::uint32_t, void* self) {
        static_cast<InputMethod*>(self)->wantsReleases_ = (mask & XCB_EVENT_MASK_KEY_RELEASE) != 0;
    };
    callbacks.disconnected = [](xcb_xim_t*, void* self) { static_cast<InputMethod*>(self)->gone_ = true; };
    xcb_xim_set_im_callback(im_, &callbacks, this);
    const auto opened = [](xcb_xim_t*, void* self) { static_cast<InputMethod*>(self)->opened_ = true; };
    if (!xcb_xim_open(im_, opened, false, this)) failed_ = true;
}

void InputMethod::MoveCaret(CPoint place) {
    caret_ = {static_cast<std::int16_t>(std::clamp(place.x, -0x7FFF, 0x7FFF)),
              static_cast<std::int16_t>(std::clamp(place.y, -0x7FFF, 0x7FFF))};
    Send();
}

bool InputMethod::Take(const xcb_key_press_event_t& event) {
    const bool pressed = (event.response_type & 0x7F) == XCB_KEY_PRESS;
    if (event.event != window_ || (!pressed && !wantsReleases_)) return false;
    if (keys_.empty()) answered_ = Clock::now();
    keys_.push_back({event});
    Send();
    return true;
}

bool InputMethod::HasFailed() const {
    if (gone_ || failed_) return true;
    const Clock::time_point now = Clock::now();
    return (context_ == 0 && now - begun_ > kLongestToConnect) ||
           (!keys_.empty() && now - answered_ > kLongestForAKey);
}

std::deque<xcb_key_press_event_t> InputMethod::TakeKeys() {
    std::deque<xcb_key_press_event_t> owed;
    for (const Key& key : keys_)
        owed.push_back(key.event);
    keys_.clear();
    return owed;
}

bool InputMethod::Handle(xcb_generic_event_t* event) {
    if (gone_) return false;
    if ((event->response_type & 0x7F) == XCB_CLIENT_MESSAGE) {
        const auto& message =
            *static_cast<const xcb_client_message_event_t*>(static_cast<const void*>(event));
        if (message.type == connecting_ && inbox_ == 0) inbox_ = message.window;
        if (message.type == protocol_) {
            const std::uint8_t kind = message.window == inbox_ ? KindOf(message) : std::uint8_t{0};
            if (std::find(kExpected.begin(), kExpected.end(), kind) == kExpected.end()) return true;
            // The library ends the connection by itself then, and says so to nobody.
            if (kind == XCB_XIM_ERROR && !opened_) gone_ = true;
        }
    }
    const bool handled = xcb_xim_filter_event(im_, event);
    if (handled) Send();
    return handled;
}

std::uint8_t InputMethod::KindOf(const xcb_client_message_event_t& message) const {
    if (message.format != 32) return message.data.data8[0];
    // The library copies as many bytes as the message says, and any client can send one.
    const Reply<xcb_get_property_reply_t> there(xcb_get_property_reply(
        connection_,
        xcb_get_property(connection_, 0, message.window, message.data.data32[1], XCB_ATOM_ANY, 0, 1),
        nullptr));
    if (there == nullptr || there->format != 8 || there->value_len != 4 ||
        there->value_len + there->bytes_after != message.data.data32[0])
        return 0;
    return *static_cast<const std::uint8_t*>(xcb_get_property_value(there.get()));
}

void InputMethod::Returned(const xcb_key_press_event_t& event) {
    const auto type = event.response_type & 0x7F;
    if (type != XCB_KEY_PRESS && type != XCB_KEY_RELEASE) return;
    answered_ = Clock::now();
    xcb_key_press_event_t key = event;
    key.event = window_; // it may also be one that the method has thought of
    const auto mine = std::find_if(keys_.begin(), keys_.end(), [&](const Key& at) {
        return at.sent && at.event.detail == event.detail && (at.event.response_type & 0x7F) == type;
    });
    if (mine != keys_.end()) {
        key = mine->event;
        keys_.erase(keys_.begin(), mine + 1); // it has kept those before
    }
    receiver_.key(key);
}

void InputMethod::Committed(std::string_view text, std::optional<std::uint32_t> keysym) {
    answered_ = Clock::now();
    std::string typed;
    if (xcb_xim_get_encoding(im_) == XCB_XIM_UTF8_STRING) {
        typed = Typed(text);
    } else if (!text.empty()) {
        std::size_t length = 0;
        const Reply<char> utf8(xcb_compound_text_to_utf8(text.data(), text.size(), &length));
        if (utf8 != nullptr) typed = Typed({utf8.get(), length});
    }
    if (typed.empty() && keysym.has_value()) {
        std::array<char, 8> character{};
        if (xkb_keysym_to_utf8(*keysym, character.data(), character.size()) > 0)
            typed = Typed(character.data());
    }
    if (!typed.empty()) receiver_.text(std::move(typed));
}

void InputMethod::Send() {
    if (gone_ || failed_ || !opened_ || asked_) return;
    if (context_ == 0) {
        MakeContext();
        return;
    }
    if (!focused_) focused_ = xcb_xim_set_ic_focus(im_, context_);
    if (toldCaret_ != caret_) {
        TellCaret();
        return;
    }
    bool behindKeys = false;
    for (Key& key : keys_) {
        behindKeys |= !key.sent;
        if (!std::exchange(key.sent, true)) xcb_xim_forward_event(im_, context_, &key.event);
    }
    if (behindKeys) TellCaret();
}

void InputMethod::MakeContext() {
    asked_ = true;
    std::uint32_t style = (plain_ ? XCB_IM_PreeditNothing : XCB_IM_PreeditPosition) | XCB_IM_StatusNothing;
    xcb_point_t place{caret_.first, caret_.second};
    xcb_xim_nested_list there = xcb_xim_create_nested_list(im_, XCB_XIM_XNSpotLocation, &place, nullptr);
    const Reply<std::uint8_t> owner(there.data);
    const auto made = [](xcb_xim_t*, xcb_xic_t context, void* data) {
        auto& self = *static_cast<InputMethod*>(data);
        self.asked_ = false;
        self.context_ = context;
        if (context != 0) return;
        self.failed_ = self.plain_;
        self.plain_ = true;
    };
    const bool begun =
        plain_ || there.data == nullptr
            ? xcb_xim_create_ic(im_, made, this, XCB_XIM_XNInputStyle, &style, XCB_XIM_XNClientWindow,
                                &window_, XCB_XIM_XNFocusWindow, &window_, nullptr)
            : xcb_xim_create_ic(im_, made, this, XCB_XIM_XNInputStyle, &style, XCB_XIM_XNClientWindow,
                                &window_, XCB_XIM_XNFocusWindow, &window_, XCB_XIM_XNPreeditAttributes,
                                &there, nullptr);
    if (!begun) failed_ = true;
}

void InputMethod::TellCaret() {
    toldCaret_ = caret_;
    xcb_point_t place{caret_.first, caret_.second};
    xcb_xim_nested_list there = xcb_xim_create_nested_list(im_, XCB_XIM_XNSpotLocation, &place, nullptr);
    const Reply<std::uint8_t> owner(there.data);
    const auto told = [](xcb_xim_t*, xcb_xic_t, void* data) { static_cast<InputMethod*>(data)->CaretTold(); };
    asked_ = there.data != nullptr &&
             xcb_xim_set_ic_values(im_, context_, told, this, XCB_XIM_XNPreeditAttributes, &there, nullptr);
    failed_ = !asked_;
}

void InputMethod::CaretTold() {
    asked_ = false;
    answered_ = Clock::now();
    std::erase_if(keys_, [](const Key& key) { return key.sent; });
}

} // namespace vocafade::platform::x11
