// SPDX-License-Identifier: MIT
#include "apps/validate/shown_editor.h"

#include <cstdlib>
#include <xcb/xcb.h>

namespace vocafade::validate {

void ShownEditor::HandleEvents() {
    while (xcb_generic_event_t* event = ::xcb_poll_for_event(parent_->connection()))
        std::free(event);
}

void ShownEditor::TurnWheel(double x, double y, bool up) {
    const std::vector<std::uint32_t> children = parent_->Children();
    if (children.empty()) return;
    xcb_button_press_event_t event{}; // motion has the same form
    event.root = parent_->root();
    event.event = children.front();
    event.event_x = event.root_x = static_cast<std::int16_t>(x * width_);
    event.event_y = event.root_y = static_cast<std::int16_t>(y * height_);
    event.same_screen = 1;
    for (const std::uint8_t type : {XCB_MOTION_NOTIFY, XCB_BUTTON_PRESS, XCB_BUTTON_RELEASE}) {
        event.response_type = type;
        event.detail = type == XCB_MOTION_NOTIFY ? 0 : up ? 4 : 5;
        ::xcb_send_event(parent_->connection(), 0, event.event, 0, reinterpret_cast<const char*>(&event));
    }
    ::xcb_flush(parent_->connection());
}

} // namespace vocafade::validate
