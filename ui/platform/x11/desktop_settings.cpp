// SPDX-License-Identifier: MIT
#include "ui/platform/x11/desktop_settings.h"

#include "ui/platform/x11/reply.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <span>
#include <string_view>

namespace vocafade::platform::x11 {
namespace {

constexpr std::uint32_t kMostSettings = 1 << 16;  ///< of the property, in 4-byte units
constexpr std::uint32_t kMostResources = 1 << 16; ///< the same
constexpr double kDotsPerInch = 96.0;             ///< at scale 1

Reply<xcb_get_property_reply_t> BytesOf(xcb_connection_t* c, xcb_window_t window, xcb_atom_t property,
                                        std::uint32_t most) {
    Reply<xcb_get_property_reply_t> answer(
        xcb_get_property_reply(c, xcb_get_property(c, 0, window, property, XCB_ATOM_ANY, 0, most), nullptr));
    return answer != nullptr && answer->format == 8 ? std::move(answer) : nullptr;
}

std::span<const std::uint8_t> View(const xcb_get_property_reply_t& answer) {
    return {static_cast<const std::uint8_t*>(xcb_get_property_value(&answer)),
            static_cast<std::size_t>(xcb_get_property_value_length(&answer))};
}

/// Walks the manager's list of named values: a byte order, a serial and a count, then for each a type (0
/// number, 1 text, 2 colour), a padded name, a serial and the value.
void ForEachNumber(std::span<const std::uint8_t> bytes,
                   const std::function<void(std::string_view name, std::int32_t value)>& tell) {
    if (bytes.size() < 12) return;
    const bool bigEndian = bytes[0] != 0;
    const auto number = [&](std::size_t at, int count) {
        std::uint32_t value = 0;
        for (int i = 0; i < count; ++i) {
            const std::size_t index = at + static_cast<std::size_t>(bigEndian ? i : count - 1 - i);
            value = (value << 8) | bytes[index];
        }
        return value;
    };
    const auto padded = [](std::size_t n) { return (n + 3) & ~std::size_t{3}; };
    std::size_t at = 12;
    for (std::uint32_t left = number(8, 4); left > 0 && at + 4 <= bytes.size(); --left) {
        const std::uint8_t type = bytes[at];
        const std::size_t nameLength = number(at + 2, 2);
        const std::size_t value = at + 4 + padded(nameLength) + 4;
        if (value + 4 > bytes.size()) return;
        const std::string_view name(static_cast<const char*>(static_cast<const void*>(&bytes[at + 4])),
                                    nameLength);
        if (type == 0) tell(name, static_cast<std::int32_t>(number(value, 4)));
        at = value + (type == 0 ? 4 : type == 1 ? 4 + padded(number(value, 4)) : 8);
    }
}

/// The number behind "Xft.dpi:" in the resources, a line for each; 0 when there is none.
double ResourceDotsPerInch(std::string_view resources) {
    constexpr std::string_view kName = "Xft.dpi:";
    for (std::size_t at = 0; at < resources.size();) {
        const std::size_t end = std::min(resources.find('\n', at), resources.size());
        std::string_view line = resources.substr(at, end - at);
        at = end + 1;
        if (!line.starts_with(kName)) continue;
        line.remove_prefix(kName.size());
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        double dots = 0;
        std::from_chars(line.data(), line.data() + line.size(), dots);
        return dots > 0 ? dots : 0;
    }
    return 0;
}

} // namespace

DesktopSettings ReadDesktopSettings(xcb_connection_t* connection, xcb_window_t owner,
                                    xcb_atom_t settingsProperty, xcb_window_t root) {
    DesktopSettings settings;
    const auto published = owner != XCB_NONE ? BytesOf(connection, owner, settingsProperty, kMostSettings)
                                             : Reply<xcb_get_property_reply_t>();
    if (published != nullptr) {
        ForEachNumber(View(*published), [&settings](std::string_view name, std::int32_t value) {
            if (value <= 0) return;
            if (name == "Net/DoubleClickTime") settings.doubleClickTime = static_cast<unsigned>(value);
            if (name == "Net/DoubleClickDistance") settings.doubleClickDistance = value;
            // Whole windows drawn larger, and text drawn larger still; the dots, in 1024ths, mostly have both.
            if (name == "Gdk/WindowScalingFactor") settings.scale = std::max(settings.scale, 1.0 * value);
            if (name == "Xft/DPI") settings.scale = std::max(settings.scale, value / 1024.0 / kDotsPerInch);
        });
    }
    if (settings.scale > 0) return settings;
    if (const auto resources = BytesOf(connection, root, XCB_ATOM_RESOURCE_MANAGER, kMostResources)) {
        const std::span<const std::uint8_t> bytes = View(*resources);
        const std::string_view text(static_cast<const char*>(static_cast<const void*>(bytes.data())),
                                    bytes.size());
        settings.scale = ResourceDotsPerInch(text) / kDotsPerInch;
    }
    return settings;
}

} // namespace vocafade::platform::x11
