// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

namespace vocafade::platform::x11 {

/// What the desktop says about how programs are to behave.
struct DesktopSettings {
    unsigned doubleClickTime = 400; ///< milliseconds
    int doubleClickDistance = 5;    ///< pixels
    double scale = 0;               ///< 1: 96 dots an inch; 0: the desktop says nothing
};

/// Reads them from `owner`'s property, the settings manager of the screen (0: there is none), and what that
/// does not tell from the resources of `root`. Values that make no sense count as not told.
DesktopSettings ReadDesktopSettings(xcb_connection_t* connection, xcb_window_t owner,
                                    xcb_atom_t settingsProperty, xcb_window_t root);

} // namespace vocafade::platform::x11
