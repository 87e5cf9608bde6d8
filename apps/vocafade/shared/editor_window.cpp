// SPDX-License-Identifier: MIT
#include "apps/vocafade/shared/editor_window.h"

#include "apps/vocafade/shared/failures.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <xcb/xcb.h>

namespace vocafade::command {
namespace {

template <typename T>
struct Freed {
    void operator()(T* reply) const { std::free(reply); }
};
template <typename T>
std::unique_ptr<T, Freed<T>> Own(T* reply) {
    return std::unique_ptr<T, Freed<T>>(reply);
}

/// The fields of WM_NORMAL_HINTS that fix a window's size (inter-client conventions).
constexpr std::uint32_t kHintMinimum = 1U << 4;
constexpr std::uint32_t kHintMaximum = 1U << 5;
constexpr std::size_t kHintFields = 18;

// Numbers of the key symbols.
constexpr std::uint32_t kPageUp = 0xFF55;
constexpr std::uint32_t kPageDown = 0xFF56;
constexpr std::uint32_t kKeypadPageUp = 0xFF9A;
constexpr std::uint32_t kKeypadPageDown = 0xFF9B;

} // namespace

EditorWindow::EditorWindow(host::Effect& effect, const std::string& title, Kind kind) : effect_(effect) {
    const std::optional<ERect> rect = effect.editorRect();
    if (!rect) throw Failure("this plug-in has no editor");
    width_ = rect->right - rect->left;
    height_ = rect->bottom - rect->top;
    if (width_ <= 0 || height_ <= 0) throw Failure("the editor has no size: its bitmaps are missing");
    window_ = host::ParentWindow::Make(width_, height_, kind == Kind::managed);
    if (!window_)
        throw Failure("no display: the editor needs an X server. Set DISPLAY, or run under xvfb-run");
    Describe(title);
    window_->Show();
    if (!effect_.OpenEditor(window_->handle()))
        throw Failure("the plug-in cannot open its editor on this display");
}

EditorWindow::~EditorWindow() { effect_.CloseEditor(); }

std::uint32_t EditorWindow::Atom(const char* name) {
    const auto reply = Own(::xcb_intern_atom_reply(
        window_->connection(),
        ::xcb_intern_atom(window_->connection(), 0, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr));
    return reply != nullptr ? reply->atom : 0U;
}

void EditorWindow::SetText(const char* property, const char* type, const std::string& text) {
    ::xcb_change_property(window_->connection(), XCB_PROP_MODE_REPLACE, window_->id(), Atom(property),
                          Atom(type), 8, static_cast<std::uint32_t>(text.size()), text.data());
}

void EditorWindow::FixSize() {
    std::array<std::uint32_t, kHintFields> hints{};
    hints[0] = kHintMinimum | kHintMaximum;
    hints[5] = hints[7] = static_cast<std::uint32_t>(width_);
    hints[6] = hints[8] = static_cast<std::uint32_t>(height_);
    ::xcb_change_property(window_->connection(), XCB_PROP_MODE_REPLACE, window_->id(),
                          XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, kHintFields, hints.data());
}

bool EditorWindow::HasDisplay() {
    const char* display = std::getenv("DISPLAY"); // NOLINT(concurrency-mt-unsafe): nothing here changes it
    return display != nullptr && *display != '\0';
}

void EditorWindow::SetTitle(const std::string& title) {
    SetText("_NET_WM_NAME", "UTF8_STRING", title);
    SetText("WM_NAME", "STRING", title);
    ::xcb_flush(window_->connection());
}

void EditorWindow::Describe(const std::string& title) {
    SetTitle(title);
    SetText("WM_CLASS", "STRING", std::string("vocafade\0Vocafade\0", 18));
    FixSize();
    const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_KEY_PRESS;
    ::xcb_change_window_attributes(window_->connection(), window_->id(), XCB_CW_EVENT_MASK, &events);
    protocols_ = Atom("WM_PROTOCOLS");
    deleteWindow_ = Atom("WM_DELETE_WINDOW");
    ::xcb_change_property(window_->connection(), XCB_PROP_MODE_REPLACE, window_->id(), protocols_,
                          XCB_ATOM_ATOM, 32, 1, &deleteWindow_);
}

void EditorWindow::Resize(int width, int height) {
    width_ = width;
    height_ = height;
    FixSize();
    const std::array<std::uint32_t, 2> size{static_cast<std::uint32_t>(width),
                                            static_cast<std::uint32_t>(height)};
    ::xcb_configure_window(window_->connection(), window_->id(),
                           XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size.data());
    ::xcb_flush(window_->connection());
}

std::uint32_t EditorWindow::SymbolOf(std::uint8_t keyCode) {
    const auto mapping = Own(::xcb_get_keyboard_mapping_reply(
        window_->connection(), ::xcb_get_keyboard_mapping(window_->connection(), keyCode, 1), nullptr));
    if (mapping == nullptr || ::xcb_get_keyboard_mapping_keysyms_length(mapping.get()) < 1) return 0;
    return ::xcb_get_keyboard_mapping_keysyms(mapping.get())[0];
}

bool EditorWindow::HandleEvents() {
    while (const auto event = Own(::xcb_poll_for_event(window_->connection()))) {
        const int type = event->response_type & 0x7F;
        if (type == XCB_DESTROY_NOTIFY) return false;
        if (type == XCB_KEY_PRESS) {
            const std::uint32_t symbol =
                SymbolOf(reinterpret_cast<const xcb_key_press_event_t*>(event.get())->detail);
            if (symbol == kPageUp || symbol == kKeypadPageUp) --pages_;
            if (symbol == kPageDown || symbol == kKeypadPageDown) ++pages_;
        }
        if (type != XCB_CLIENT_MESSAGE) continue;
        const auto* message = reinterpret_cast<const xcb_client_message_event_t*>(event.get());
        if (message->type == protocols_ && message->data.data32[0] == deleteWindow_) return false;
    }
    return window_->isAlive();
}

bool EditorWindow::Run(int milliseconds) {
    effect_.IdleEditor();
    pollfd readable{::xcb_get_file_descriptor(window_->connection()), POLLIN, 0};
    ::poll(&readable, 1, milliseconds);
    return HandleEvents();
}

Image EditorWindow::Photograph() {
    const auto image = Own(::xcb_get_image_reply(
        window_->connection(),
        ::xcb_get_image(window_->connection(), XCB_IMAGE_FORMAT_Z_PIXMAP, window_->id(), 0, 0,
                        static_cast<std::uint16_t>(width_), static_cast<std::uint16_t>(height_), ~0U),
        nullptr));
    const auto pixels = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
    if (image == nullptr || image->depth < 24 ||
        static_cast<std::size_t>(::xcb_get_image_data_length(image.get())) < pixels * 4)
        throw Failure("the window cannot be read: the display must show true colours");
    const auto* shown = reinterpret_cast<const std::uint32_t*>(::xcb_get_image_data(image.get()));
    return {width_, height_, {shown, shown + pixels}};
}

} // namespace vocafade::command
