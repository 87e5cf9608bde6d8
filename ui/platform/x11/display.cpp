// SPDX-License-Identifier: MIT
#include "ui/platform/x11/display.h"

#include "ui/platform/x11/sigpipe_guard.h"
#include "ui/winuser.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <xcb/randr.h>

namespace vocafade::platform {
namespace x11 {
namespace {

/// What the server makes of finer turns of a wheel, too: it adds them up.
constexpr int kNotch = 120;
/// Of the standard cursor font.
constexpr std::uint16_t kGlyphText = 152;
/// Longest clipboard text that is taken, in 4-byte units; one line of a name needs far less.
constexpr std::uint32_t kMostClipboard = 1 << 6;

const xcb_screen_t* ScreenOf(const xcb_setup_t* setup, int number) {
    xcb_screen_iterator_t it = xcb_setup_roots_iterator(setup);
    for (; it.rem > 1 && number > 0; --number)
        xcb_screen_next(&it);
    return it.data;
}

void SetText(xcb_connection_t* c, xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
             const std::string& text) {
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

/// The event as what its number says that it is.
template <class T>
const T& As(const xcb_generic_event_t* event) {
    return *static_cast<const T*>(static_cast<const void*>(event));
}

template <class Container>
void SetNumbers(xcb_connection_t* c, xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                const Container& numbers) {
    xcb_change_property(c, XCB_PROP_MODE_REPLACE, window, property, type, 32,
                        static_cast<std::uint32_t>(numbers.size()), numbers.data());
}

/// The window that a window manager put a frame around, on the way up from `window`; that is what a dialog is
/// transient for.
xcb_window_t TopLevelOf(xcb_connection_t* c, xcb_window_t window, xcb_window_t root, xcb_atom_t wmState) {
    xcb_window_t topMost = window;
    for (xcb_window_t at = window; at != 0 && at != root;) {
        const auto state = xcb_get_property(c, 0, at, wmState, XCB_ATOM_ANY, 0, 0);
        const auto tree = xcb_query_tree(c, at);
        const Reply<xcb_get_property_reply_t> stateAnswer(xcb_get_property_reply(c, state, nullptr));
        const Reply<xcb_query_tree_reply_t> treeAnswer(xcb_query_tree_reply(c, tree, nullptr));
        if (stateAnswer != nullptr && stateAnswer->type != XCB_NONE) return at;
        if (treeAnswer == nullptr) break;
        topMost = at;
        at = treeAnswer->parent;
    }
    return topMost;
}

} // namespace

std::unique_ptr<XDisplay> XDisplay::Open() {
    const SigpipeGuard guard;
    int screenNumber = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &screenNumber);
    // An object in the error state is given even then, and must be given back.
    std::unique_ptr<XDisplay> display(new XDisplay(connection, screenNumber));
    return display->Prepare() ? std::move(display) : nullptr;
}

XDisplay::XDisplay(xcb_connection_t* connection, int screenNumber)
    : connection_(connection), screenNumber_(screenNumber) {}

XDisplay::~XDisplay() {
    const SigpipeGuard guard;
    inputMethod_.reset();
    if (ownsColormap_) xcb_free_colormap(connection_, colormap_);
    if (textCursor_ != XCB_NONE) xcb_free_cursor(connection_, textCursor_);
    if (graphics_ != 0) xcb_free_gc(connection_, graphics_);
    if (helper_ != 0) xcb_destroy_window(connection_, helper_);
    xcb_flush(connection_);
    xcb_disconnect(connection_);
}

bool XDisplay::Prepare() {
    if (!IsAlive()) return false;
    screen_ = const_cast<xcb_screen_t*>(ScreenOf(xcb_get_setup(connection_), screenNumber_));
    if (screen_ == nullptr || !ChooseVisual()) return false;
    InternAtoms();
    const auto check =
        xcb_get_property(connection_, 0, screen_->root, atoms_.netSupportingWmCheck, XCB_ATOM_WINDOW, 0, 1);
    const Reply<xcb_get_property_reply_t> manager(xcb_get_property_reply(connection_, check, nullptr));
    hasWindowManager_ = manager != nullptr && manager->type == XCB_ATOM_WINDOW;

    const xcb_query_extension_reply_t* randr = xcb_get_extension_data(connection_, &xcb_randr_id);
    if (randr != nullptr && randr->present != 0) {
        const Reply<xcb_randr_query_version_reply_t> version(
            xcb_randr_query_version_reply(connection_, xcb_randr_query_version(connection_, 1, 5), nullptr));
        hasRandr_ = version != nullptr && (version->major_version > 1 || version->minor_version >= 5);
    }
    FollowDesktopSettings();
    ready_.clear(); // the first answer is no change
    keyboard_.Start(connection_);

    helper_ = xcb_generate_id(connection_);
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, helper_, screen_->root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    return IsAlive();
}

void XDisplay::InternAtoms() {
    const std::string screenSettings = "_XSETTINGS_S" + std::to_string(screenNumber_);
    const std::array<std::pair<const char*, xcb_atom_t*>, 19> names{{
        {"WM_PROTOCOLS", &atoms_.wmProtocols},
        {"WM_DELETE_WINDOW", &atoms_.wmDeleteWindow},
        {"WM_STATE", &atoms_.wmState},
        {"_NET_WM_NAME", &atoms_.netWmName},
        {"_NET_WM_WINDOW_TYPE", &atoms_.netWmWindowType},
        {"_NET_WM_WINDOW_TYPE_DIALOG", &atoms_.netWmWindowTypeDialog},
        {"_NET_WM_WINDOW_TYPE_POPUP_MENU", &atoms_.netWmWindowTypePopupMenu},
        {"_NET_WM_WINDOW_TYPE_TOOLTIP", &atoms_.netWmWindowTypeTooltip},
        {"_NET_WM_USER_TIME", &atoms_.netWmUserTime},
        {"_NET_ACTIVE_WINDOW", &atoms_.netActiveWindow},
        {"_NET_SUPPORTING_WM_CHECK", &atoms_.netSupportingWmCheck},
        {"UTF8_STRING", &atoms_.utf8String},
        {"CLIPBOARD", &atoms_.clipboard},
        {"TARGETS", &atoms_.targets},
        {"VOCAFADE_SELECTION", &atoms_.selectionProperty},
        {"_XEMBED_INFO", &atoms_.xembedInfo},
        {screenSettings.c_str(), &atoms_.xsettingsOwner},
        {"_XSETTINGS_SETTINGS", &atoms_.xsettingsSettings},
        {"MANAGER", &atoms_.manager},
    }};
    std::array<xcb_intern_atom_cookie_t, names.size()> asked{};
    for (std::size_t i = 0; i < names.size(); ++i)
        asked[i] = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(std::strlen(names[i].first)),
                                   names[i].first);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const Reply<xcb_intern_atom_reply_t> answer(xcb_intern_atom_reply(connection_, asked[i], nullptr));
        *names[i].second = answer != nullptr ? answer->atom : static_cast<xcb_atom_t>(XCB_NONE);
    }
}

bool XDisplay::ChooseVisual() {
    const xcb_setup_t* setup = xcb_get_setup(connection_);
    // The root's own visual if it has true colours, else the first that has.
    const xcb_visualtype_t* chosen = nullptr;
    for (xcb_depth_iterator_t depth = xcb_screen_allowed_depths_iterator(screen_); depth.rem > 0;
         xcb_depth_next(&depth)) {
        for (xcb_visualtype_iterator_t it = xcb_depth_visuals_iterator(depth.data); it.rem > 0;
             xcb_visualtype_next(&it)) {
            if (it.data->_class != XCB_VISUAL_CLASS_TRUE_COLOR) continue;
            if (chosen == nullptr || it.data->visual_id == screen_->root_visual) {
                chosen = it.data;
                format_.depth = depth.data->depth;
            }
        }
    }
    if (chosen == nullptr) return false;
    visual_ = chosen->visual_id;
    format_.red = chosen->red_mask;
    format_.green = chosen->green_mask;
    format_.blue = chosen->blue_mask;
    format_.mostSignificantFirst = setup->image_byte_order == XCB_IMAGE_ORDER_MSB_FIRST;
    for (xcb_format_iterator_t it = xcb_setup_pixmap_formats_iterator(setup); it.rem > 0;
         xcb_format_next(&it)) {
        if (it.data->depth != format_.depth) continue;
        format_.bitsPerPixel = it.data->bits_per_pixel;
        format_.scanlinePad = it.data->scanline_pad;
    }
    if (format_.bitsPerPixel < 8) return false;
    format_.direct = format_.bitsPerPixel == 32 && format_.red == 0xFF0000 && format_.green == 0xFF00 &&
                     format_.blue == 0xFF &&
                     format_.mostSignificantFirst == (std::endian::native == std::endian::big);
    colormap_ = screen_->default_colormap;
    if (visual_ != screen_->root_visual) {
        colormap_ = xcb_generate_id(connection_);
        ownsColormap_ = true;
        xcb_create_colormap(connection_, XCB_COLORMAP_ALLOC_NONE, colormap_, screen_->root, visual_);
    }
    return true;
}

void XDisplay::FollowDesktopSettings() {
    // Whoever takes the settings over says so to the root window, where the resources stand, too.
    const std::uint32_t onRoot = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, screen_->root, XCB_CW_EVENT_MASK, &onRoot);
    const Reply<xcb_get_selection_owner_reply_t> owner(xcb_get_selection_owner_reply(
        connection_, xcb_get_selection_owner(connection_, atoms_.xsettingsOwner), nullptr));
    settingsOwner_ = owner != nullptr ? owner->owner : xcb_window_t{XCB_NONE};
    if (settingsOwner_ != XCB_NONE) {
        const std::uint32_t onOwner = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection_, settingsOwner_, XCB_CW_EVENT_MASK, &onOwner);
    }
    ReadSettings();
}

void XDisplay::ReadSettings() {
    const double before = desktop_.scale;
    desktop_ = ReadDesktopSettings(connection_, settingsOwner_, atoms_.xsettingsSettings, screen_->root);
    if (desktop_.scale != before) ready_.push_back(Basic(EventType::scaleChanged, nullptr, 0, lastTime_));
}

bool XDisplay::WatchHost(std::uintptr_t host, CSize& size) {
    const SigpipeGuard guard;
    const auto id = static_cast<xcb_window_t>(host);
    if (id == 0) return false;
    const Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, id), nullptr));
    if (geometry == nullptr) return false;
    size = ToLogicalSize({geometry->width, geometry->height}, scale_);
    host_ = id;
    const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_, id, XCB_CW_EVENT_MASK, &mask);
    return true;
}

std::unique_ptr<Window> XDisplay::MakeWindow(const WindowRequest& request) {
    if (!IsAlive()) return nullptr;
    const SigpipeGuard guard;
    const xcb_window_t id = xcb_generate_id(connection_);
    const bool embedded = request.kind == WindowKind::embedded;
    const xcb_window_t parent = embedded ? static_cast<xcb_window_t>(request.host) : screen_->root;
    const CRect b = ToDevice(request.bounds, scale_);
    const bool framed = embedded || request.kind == WindowKind::dialog;
    const std::array<std::uint32_t, 4> values{0, framed ? 0U : 1U, 0, colormap_};
    // No background: the server would paint it before every picture of ours, and it would flicker.
    xcb_create_window(
        connection_, format_.depth, id, parent, static_cast<std::int16_t>(b.left),
        static_cast<std::int16_t>(b.top), static_cast<std::uint16_t>(std::max(1, b.Width())),
        static_cast<std::uint16_t>(std::max(1, b.Height())), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, visual_,
        XCB_CW_BORDER_PIXEL | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK | XCB_CW_COLORMAP, values.data());
    if (graphics_ == 0) {
        graphics_ = xcb_generate_id(connection_);
        const std::uint32_t noExposures = 0;
        xcb_create_gc(connection_, graphics_, id, XCB_GC_GRAPHICS_EXPOSURES, &noExposures);
    }
    if (embedded) {
        // For hosts that embed by the XEmbed rules: version 0, to be mapped.
        SetNumbers(connection_, id, atoms_.xembedInfo, atoms_.xembedInfo, std::array<std::uint32_t, 2>{0, 1});
    } else {
        const xcb_window_t topLevel =
            TopLevelOf(connection_, static_cast<xcb_window_t>(request.host), screen_->root, atoms_.wmState);
        SetNumbers(connection_, id, XCB_ATOM_WM_TRANSIENT_FOR, XCB_ATOM_WINDOW,
                   std::array<std::uint32_t, 1>{topLevel});
        SetNumbers(connection_, id, atoms_.netWmWindowType, XCB_ATOM_ATOM,
                   std::array<std::uint32_t, 1>{TypeOf(request.kind)});
        SetText(connection_, id, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, request.title);
        SetText(connection_, id, atoms_.netWmName, atoms_.utf8String, request.title);
        SetText(connection_, id, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, std::string("vocafade\0Vocafade\0", 18));
    }
    if (request.kind == WindowKind::dialog) {
        SetNumbers(connection_, id, atoms_.wmProtocols, XCB_ATOM_ATOM,
                   std::array<std::uint32_t, 1>{atoms_.wmDeleteWindow});
        // Hints: the window takes input (1).
        SetNumbers(connection_, id, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, std::array<std::uint32_t, 9>{1, 1});
        SetNumbers(connection_, id, atoms_.netWmUserTime, XCB_ATOM_CARDINAL,
                   std::array<std::uint32_t, 1>{lastTime_});
    }
    return std::make_unique<NativeWindow>(*this, id, request);
}

xcb_atom_t XDisplay::TypeOf(WindowKind kind) const {
    if (kind == WindowKind::popup) return atoms_.netWmWindowTypePopupMenu;
    return kind == WindowKind::tooltip ? atoms_.netWmWindowTypeTooltip : atoms_.netWmWindowTypeDialog;
}

xcb_cursor_t XDisplay::CursorFor(unsigned cursor) {
    if (cursor != kCursorIBeam) return XCB_NONE; // the parent's, and so the theme's arrow
    if (textCursor_ != XCB_NONE) return textCursor_;
    constexpr std::string_view kFont = "cursor";
    const xcb_font_t font = xcb_generate_id(connection_);
    xcb_open_font(connection_, font, kFont.size(), kFont.data());
    textCursor_ = xcb_generate_id(connection_);
    xcb_create_glyph_cursor(connection_, textCursor_, font, font, kGlyphText, kGlyphText + 1, 0, 0, 0, 0xFFFF,
                            0xFFFF, 0xFFFF);
    xcb_close_font(connection_, font);
    return textCursor_;
}

CRect XDisplay::WorkArea(CPoint point) {
    const CRect area = MonitorAt(ToDevice(point, scale_));
    // Only logical pixels that are wholly on it.
    const auto first = [this](int edge) { return static_cast<int>(std::ceil(edge / scale_)); };
    const auto end = [this](int edge) { return static_cast<int>(std::floor(edge / scale_)); };
    return {first(area.left), first(area.top), end(area.right), end(area.bottom)};
}

CRect XDisplay::MonitorAt(CPoint point) {
    const CRect all(0, 0, screen_->width_in_pixels, screen_->height_in_pixels);
    if (!hasRandr_ || !IsAlive()) return all;
    const SigpipeGuard guard;
    const Reply<xcb_randr_get_monitors_reply_t> monitors(xcb_randr_get_monitors_reply(
        connection_, xcb_randr_get_monitors(connection_, screen_->root, 1), nullptr));
    if (monitors == nullptr) return all;
    for (xcb_randr_monitor_info_iterator_t it = xcb_randr_get_monitors_monitors_iterator(monitors.get());
         it.rem > 0; xcb_randr_monitor_info_next(&it)) {
        const CRect area({it.data->x, it.data->y}, {it.data->width, it.data->height});
        if (area.PtInRect(point)) return area;
    }
    return all;
}

void XDisplay::Flush() {
    const SigpipeGuard guard;
    xcb_flush(connection_);
}

bool XDisplay::IsLeftButtonHeld() {
    const SigpipeGuard guard;
    const Reply<xcb_query_pointer_reply_t> pointer(
        xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, screen_->root), nullptr));
    return pointer != nullptr && (pointer->mask & XCB_BUTTON_MASK_1) != 0;
}

void XDisplay::SetScale(double scale) {
    scale_ = scale;
    const SigpipeGuard guard;
    if (inputMethod_ != nullptr) inputMethod_->MoveCaret(ToDevice(caret_, scale_));
}

void XDisplay::BeginTyping(NativeWindow& window, CPoint caret) {
    if (typedInto_ != &window) {
        DropInputMethod();
        typedInto_ = &window;
        inputMethod_ =
            InputMethod::Open(connection_, screenNumber_, static_cast<xcb_window_t>(window.NativeId()),
                              {[this](const xcb_key_press_event_t& key) { TranslateKey(key); },
                               [this](std::string text) {
                                   Event out = Basic(EventType::keyPressed, typedInto_, 0, lastTime_);
                                   out.text = std::move(text);
                                   out.keyTyped = true;
                                   ready_.push_back(std::move(out));
                               }});
    }
    caret_ = caret;
    if (inputMethod_ != nullptr) inputMethod_->MoveCaret(ToDevice(caret_, scale_));
}

void XDisplay::EndTyping(const NativeWindow& window) {
    if (typedInto_ != &window) return;
    typedInto_ = nullptr;
    DropInputMethod();
}

void XDisplay::DropInputMethod() {
    const std::unique_ptr<InputMethod> method = std::move(inputMethod_);
    if (method == nullptr) return;
    for (const xcb_key_press_event_t& key : method->TakeKeys())
        TranslateKey(key);
}

void XDisplay::Forget(const NativeWindow& window) {
    EndTyping(window);
    std::erase_if(windows_, [&window](const auto& known) { return known.second == &window; });
    std::erase_if(ready_, [&window](const Event& event) { return event.window == &window; });
}

void XDisplay::InputLost(NativeWindow& popup) {
    ready_.push_back(Basic(EventType::inputLost, &popup, 0, lastTime_));
}

NativeWindow* XDisplay::Find(xcb_window_t id) const {
    const auto found = windows_.find(id);
    return found != windows_.end() ? found->second : nullptr;
}

bool XDisplay::NextEvent(Event& event) {
    const SigpipeGuard guard;
    if (grabWanted_ != 0) {
        // Somebody held the mouse when the menu opened, mostly for the click that opened it.
        NativeWindow* popup = Find(grabWanted_);
        if (popup == nullptr || popup->Grab()) grabWanted_ = 0;
    }
    while (ready_.empty()) {
        const Reply<xcb_generic_event_t> next =
            ahead_ != nullptr ? std::move(ahead_)
                              : Reply<xcb_generic_event_t>(xcb_poll_for_event(connection_));
        if (next == nullptr) {
            if (inputMethod_ == nullptr || !inputMethod_->HasFailed()) return false;
            DropInputMethod();
            continue;
        }
        if ((next->response_type & 0x7F) == XCB_MOTION_NOTIFY) {
            // Of a row of motions only the last matters; a slow host gets dozens for each of its idles.
            ahead_.reset(xcb_poll_for_event(connection_));
            const auto& motion =
                *static_cast<const xcb_motion_notify_event_t*>(static_cast<const void*>(next.get()));
            const auto* following =
                static_cast<const xcb_motion_notify_event_t*>(static_cast<const void*>(ahead_.get()));
            if (following != nullptr && (following->response_type & 0x7F) == XCB_MOTION_NOTIFY &&
                following->event == motion.event && following->state == motion.state)
                continue;
        }
        Translate(next.get());
    }
    event = std::move(ready_.front());
    ready_.pop_front();
    return true;
}

Event XDisplay::Basic(EventType type, NativeWindow* window, std::uint16_t state, std::uint32_t time) const {
    Event event;
    event.type = type;
    event.window = window;
    event.time = time;
    event.shift = (state & XCB_MOD_MASK_SHIFT) != 0;
    event.control = (state & XCB_MOD_MASK_CONTROL) != 0;
    event.alt = (state & XCB_MOD_MASK_1) != 0;
    event.leftButton = (state & XCB_BUTTON_MASK_1) != 0;
    return event;
}

void XDisplay::Translate(xcb_generic_event_t* event) {
    if (keyboard_.HandleEvent(event)) return;
    if (inputMethod_ != nullptr && inputMethod_->Handle(event)) return;
    // Other clients can send anything; what has become of a window is the server's to say.
    const bool forged = (event->response_type & 0x80) != 0;
    switch (event->response_type & 0x7F) {
    case XCB_EXPOSE: {
        const auto& e = As<xcb_expose_event_t>(event);
        const CRect area({e.x, e.y}, {e.width, e.height});
        NativeWindow* window = Find(e.window);
        if (window == nullptr || window->IsPictureUnderWay(area, event->full_sequence)) break;
        Event out = Basic(EventType::exposed, window, 0, lastTime_);
        out.area = ToLogicalAround(area, scale_);
        ready_.push_back(out);
        break;
    }
    case XCB_MAP_NOTIFY: {
        const auto& e = As<xcb_map_notify_event_t>(event);
        NativeWindow* window = e.event == e.window ? Find(e.window) : nullptr;
        if (window == nullptr || forged) break;
        window->Mapped();
        break;
    }
    case XCB_DESTROY_NOTIFY: {
        const auto& e = As<xcb_destroy_notify_event_t>(event);
        NativeWindow* window = Find(e.window);
        if (e.window == settingsOwner_ && !forged) FollowDesktopSettings();
        if (window == nullptr || forged) break;
        windows_.erase(e.window);
        window->Gone();
        ready_.push_back(Basic(EventType::destroyed, window, 0, lastTime_));
        break;
    }
    case XCB_CONFIGURE_NOTIFY: {
        const auto& e = As<xcb_configure_notify_event_t>(event);
        if (e.window != host_ || e.event != host_) break;
        Event out;
        out.type = EventType::parentResized;
        out.area = CRect({0, 0}, ToLogicalSize({e.width, e.height}, scale_));
        ready_.push_back(out);
        break;
    }
    case XCB_BUTTON_PRESS:
        TranslateButton(As<xcb_button_press_event_t>(event), true);
        break;
    case XCB_BUTTON_RELEASE:
        TranslateButton(As<xcb_button_press_event_t>(event), false);
        break;
    case XCB_MOTION_NOTIFY: {
        const auto& e = As<xcb_motion_notify_event_t>(event);
        lastTime_ = e.time;
        NativeWindow* window = Find(e.event);
        if (window == nullptr) break;
        Event out = Basic(EventType::moved, window, e.state, e.time);
        out.point = ToLogical(window->PointOf({e.event_x, e.event_y}, {e.root_x, e.root_y}), scale_);
        ready_.push_back(out);
        break;
    }
    case XCB_LEAVE_NOTIFY: {
        const auto& e = As<xcb_leave_notify_event_t>(event);
        if (NativeWindow* window = Find(e.event); window != nullptr && e.detail != XCB_NOTIFY_DETAIL_INFERIOR)
            ready_.push_back(Basic(EventType::left, window, e.state, e.time));
        break;
    }
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE:
        if (inputMethod_ == nullptr || !inputMethod_->Take(As<xcb_key_press_event_t>(event)))
            TranslateKey(As<xcb_key_press_event_t>(event));
        break;
    case XCB_FOCUS_IN:
        TranslateFocus(As<xcb_focus_in_event_t>(event), true);
        break;
    case XCB_FOCUS_OUT:
        TranslateFocus(As<xcb_focus_in_event_t>(event), false);
        break;
    case XCB_CLIENT_MESSAGE: {
        const auto& e = As<xcb_client_message_event_t>(event);
        if (e.type == atoms_.manager && e.data.data32[1] == atoms_.xsettingsOwner) FollowDesktopSettings();
        if (e.type == atoms_.wmProtocols && e.data.data32[0] == atoms_.wmDeleteWindow &&
            Find(e.window) != nullptr)
            ready_.push_back(Basic(EventType::closeAsked, Find(e.window), 0, lastTime_));
        break;
    }
    case XCB_PROPERTY_NOTIFY: {
        const auto& e = As<xcb_property_notify_event_t>(event);
        if ((e.window == settingsOwner_ && e.atom == atoms_.xsettingsSettings) ||
            (e.window == screen_->root && e.atom == XCB_ATOM_RESOURCE_MANAGER))
            ReadSettings();
        break;
    }
    case XCB_SELECTION_REQUEST:
        AnswerSelection(As<xcb_selection_request_event_t>(event));
        break;
    case XCB_SELECTION_CLEAR:
        offering_ = false;
        offered_.clear();
        break;
    case XCB_SELECTION_NOTIFY:
        ReceiveSelection(As<xcb_selection_notify_event_t>(event));
        break;
    default:
        break; // errors too: what failed was about something that the host took away
    }
}

void XDisplay::TranslateButton(const xcb_button_press_event_t& e, bool pressed) {
    lastTime_ = e.time;
    NativeWindow* window = Find(e.event);
    if (window == nullptr) return;
    // Buttons 4 and 5 are the wheel, 6 and 7 the sideways one.
    const bool wheel = e.detail == 4 || e.detail == 5;
    if ((wheel && !pressed) || e.detail > 5) return;
    Event out = Basic(wheel     ? EventType::wheel
                      : pressed ? EventType::pressed
                                : EventType::released,
                      window, e.state, e.time);
    const CPoint onScreen(e.root_x, e.root_y);
    out.screenPoint = ToLogical(onScreen, scale_);
    out.point = ToLogical(window->PointOf({e.event_x, e.event_y}, onScreen), scale_);
    out.button = e.detail;
    out.value = e.detail == 4 ? kNotch : -kNotch;
    if (e.detail == 1) out.leftButton = pressed;
    ready_.push_back(out);
}

void XDisplay::TranslateKey(const xcb_key_press_event_t& e) {
    lastTime_ = e.time;
    const bool pressed = (e.response_type & 0x7F) == XCB_KEY_PRESS;
    NativeWindow* window = Find(e.event);
    if (window == nullptr) return;
    Event out = Basic(pressed ? EventType::keyPressed : EventType::keyReleased, window, e.state, e.time);
    if (pressed) {
        Keyboard::Stroke stroke = keyboard_.Press(e.detail, e.state);
        if (stroke.composing) return;
        out.key = stroke.key;
        out.text = std::move(stroke.text);
        out.keyTyped = !out.text.empty();
    } else {
        out.key = keyboard_.KeyCode(e.detail, e.state);
    }
    ready_.push_back(out);
}

void XDisplay::TranslateFocus(const xcb_focus_in_event_t& e, bool gained) {
    if (NativeWindow* popup = Find(e.event); popup != nullptr && popup->IsHolder(e.event)) {
        if (!gained && e.mode == XCB_NOTIFY_MODE_UNGRAB) InputLost(*popup);
        return;
    }
    // A grab is no change of focus, and the other details are about windows around this one.
    if (e.mode == XCB_NOTIFY_MODE_GRAB || e.mode == XCB_NOTIFY_MODE_UNGRAB) return;
    if (e.detail != XCB_NOTIFY_DETAIL_ANCESTOR && e.detail != XCB_NOTIFY_DETAIL_INFERIOR &&
        e.detail != XCB_NOTIFY_DETAIL_NONLINEAR)
        return;
    NativeWindow* window = Find(e.event);
    if (window == nullptr) return;
    keyboard_.ResetCompose();
    ready_.push_back(Basic(gained ? EventType::focusGained : EventType::focusLost, window, 0, lastTime_));
}

void XDisplay::OfferClipboard(std::string text) {
    const SigpipeGuard guard;
    offered_ = std::move(text);
    offering_ = true;
    xcb_set_selection_owner(connection_, helper_, atoms_.clipboard, lastTime_);
}

void XDisplay::RequestClipboard(Window& window) {
    const SigpipeGuard guard;
    pasteInto_ = static_cast<xcb_window_t>(window.NativeId());
    if (offering_) {
        Event out = Basic(EventType::clipboard, Find(pasteInto_), 0, lastTime_);
        out.text = offered_;
        if (out.window != nullptr) ready_.push_back(out);
        return;
    }
    xcb_convert_selection(connection_, helper_, atoms_.clipboard, atoms_.utf8String, atoms_.selectionProperty,
                          lastTime_);
}

void XDisplay::AnswerSelection(const xcb_selection_request_event_t& request) {
    xcb_selection_notify_event_t answer{};
    answer.response_type = XCB_SELECTION_NOTIFY;
    answer.time = request.time;
    answer.requestor = request.requestor;
    answer.selection = request.selection;
    answer.target = request.target;
    const xcb_atom_t property = request.property != XCB_NONE ? request.property : request.target;
    if (offering_ && request.target == atoms_.targets) {
        SetNumbers(connection_, request.requestor, property, XCB_ATOM_ATOM,
                   std::array<std::uint32_t, 2>{atoms_.targets, atoms_.utf8String});
        answer.property = property;
    } else if (offering_ && request.target == atoms_.utf8String) {
        SetText(connection_, request.requestor, property, atoms_.utf8String, offered_);
        answer.property = property;
    }
    xcb_send_event(connection_, 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                   static_cast<const char*>(static_cast<const void*>(&answer)));
}

void XDisplay::ReceiveSelection(const xcb_selection_notify_event_t& event) {
    if (event.property == XCB_NONE) return;
    const Reply<xcb_get_property_reply_t> value(
        xcb_get_property_reply(connection_,
                               xcb_get_property(connection_, 1, helper_, atoms_.selectionProperty,
                                                atoms_.utf8String, 0, kMostClipboard),
                               nullptr));
    NativeWindow* window = Find(pasteInto_);
    if (value == nullptr || value->format != 8 || window == nullptr) return;
    Event out = Basic(EventType::clipboard, window, 0, lastTime_);
    out.text.assign(static_cast<const char*>(xcb_get_property_value(value.get())),
                    static_cast<std::size_t>(xcb_get_property_value_length(value.get())));
    ready_.push_back(out);
}

} // namespace x11

std::unique_ptr<Display> OpenDisplay() { return x11::XDisplay::Open(); }

} // namespace vocafade::platform
