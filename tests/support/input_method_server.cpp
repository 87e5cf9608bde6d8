// SPDX-License-Identifier: MIT
#include "tests/support/input_method_server.h"

#include "tests/support/environment.h"
#include "tests/support/wait_for.h"

#include <X11/keysym.h>
#include <new>
#include <string>
#include <sys/mman.h>
#include <xcb-imdkit/encoding.h>
#include <xcb-imdkit/imdkit.h>
#include <xcb/xcb_keysyms.h>

namespace vocafade::test {
namespace {

constexpr const char* kName = "vocafade-test";
// What 'u' and 'e' mean; the other letters mean nothing.
constexpr const char* kSong = "\xE6\xAD\x8C"; // in Japanese
constexpr const char* kOddities =
    "\xC3\xA9\xF0\x9F\x8E\xB5\r\x1B\b"; // e with an accent, a note, and what no key may be

/// What the server's process and the test's both see.
struct Seen {
    std::atomic<bool> ready{false};
    std::atomic<int> presses{0};
    std::atomic<int> x{0};
    std::atomic<int> y{0};
};
Seen& seen() {
    static Seen* const shared =
        // cppcheck-suppress invalidFunctionArg // no file stands behind it
        new (::mmap(nullptr, sizeof(Seen), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Seen;
    return *shared;
}

struct Server {
    xcb_connection_t* connection = nullptr;
    xcb_im_t* method = nullptr;
    InputMethodServer::Manner manner{};
    bool silent = false;
    std::string composed;

    xcb_keysym_t SymbolOf(xcb_keycode_t code) const {
        xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(connection);
        const xcb_keysym_t symbol = xcb_key_symbols_get_keysym(symbols, code, 0);
        xcb_key_symbols_free(symbols);
        return symbol;
    }
    void Commit(xcb_im_input_context_t* context) {
        std::string text;
        for (const char letter : composed)
            text += letter == 'u' ? kSong : letter == 'e' ? kOddities : "";
        composed.clear();
        std::size_t length = 0;
        char* compound = xcb_utf8_to_compound_text(text.data(), text.size(), &length);
        xcb_im_commit_string(method, context, XCB_XIM_LOOKUP_CHARS, compound,
                             static_cast<std::uint32_t>(length), 0);
        std::free(compound);
    }
    void Key(xcb_im_input_context_t* context, xcb_key_press_event_t* event) {
        const bool pressed = (event->response_type & 0x7F) == XCB_KEY_PRESS;
        const xcb_keysym_t symbol = SymbolOf(event->detail);
        if (pressed && symbol >= XK_a && symbol <= XK_z) {
            composed += static_cast<char>(symbol);
        } else if (pressed && symbol == XK_Return && !composed.empty()) {
            Commit(context);
        } else if (pressed && symbol == XK_Escape && !composed.empty()) {
            composed.clear();
        } else {
            xcb_im_forward_event(method, context, event);
        }
        if (pressed) ++seen().presses;
    }
    static void Told(xcb_im_t*, xcb_im_client_t*, xcb_im_input_context_t* context,
                     const xcb_im_packet_header_fr_t* header, void*, void* argument, void* data) {
        auto& server = *static_cast<Server*>(data);
        if (header->major_opcode == XCB_XIM_FORWARD_EVENT)
            server.Key(context, static_cast<xcb_key_press_event_t*>(argument));
        if (header->major_opcode == XCB_XIM_SET_IC_FOCUS)
            server.silent = server.manner == InputMethodServer::Manner::fallsSilent;
        if (header->major_opcode == XCB_XIM_SET_IC_VALUES) {
            const xcb_point_t place = xcb_im_input_context_get_preedit_attr(context)->spot_location;
            seen().x = place.x;
            seen().y = place.y;
        }
    }
};

/// The server's process.
bool Serve(int manner) {
    xcb_compound_text_init();
    Server server;
    server.manner = static_cast<InputMethodServer::Manner>(manner);
    server.connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(server.connection) != 0) return false;
    const xcb_window_t window = xcb_generate_id(server.connection);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(server.connection)).data;
    xcb_create_window(server.connection, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual, 0, nullptr);
    std::uint32_t style = XCB_IM_PreeditPosition | XCB_IM_StatusNothing;
    const xcb_im_styles_t styles{1, &style};
    std::string compound = "COMPOUND_TEXT";
    char* encoding = compound.data();
    const xcb_im_encodings_t encodings{1, &encoding};
    server.method = xcb_im_create(server.connection, 0, window, kName, XCB_IM_ALL_LOCALES, &styles, nullptr,
                                  nullptr, &encodings, XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE,
                                  Server::Told, &server);
    if (!xcb_im_open_im(server.method)) return false;
    server.silent = server.manner == InputMethodServer::Manner::isSilent;
    xcb_flush(server.connection);
    seen().ready = true;
    while (xcb_generic_event_t* event = xcb_wait_for_event(server.connection)) {
        if (!server.silent) xcb_im_filter_event(server.method, event);
        xcb_flush(server.connection);
        std::free(event);
    }
    return true;
}

const Aside server("InputMethodServer", Serve);

} // namespace

InputMethodServer::InputMethodServer(Manner manner)
    : process_((seen().ready = false, seen().presses = 0, server), static_cast<int>(manner)) {
    EXPECT_TRUE(WaitFor([] {}, [] { return seen().ready.load(); }));
    SetVariable("XMODIFIERS", std::string("@im=") + kName);
}

InputMethodServer::~InputMethodServer() { UnsetVariable("XMODIFIERS"); }

int InputMethodServer::presses() const { return seen().presses; }
int InputMethodServer::caretX() const { return seen().x; }
int InputMethodServer::caretY() const { return seen().y; }

} // namespace vocafade::test
