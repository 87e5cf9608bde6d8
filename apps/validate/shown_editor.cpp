// SPDX-License-Identifier: MIT
#include "apps/validate/shown_editor.h"

#include "apps/validate/report.h"

#include <chrono>
#include <cstdlib>
#include <thread>
#include <xcb/xcb.h>

namespace vocafade::validate {

ShownEditor::ShownEditor(Instance& effect) : effect_(effect) {
    ERect* rect = nullptr;
    effect.Ask(effEditGetRect, 0, 0, static_cast<void*>(&rect));
    hadSize_ = rect != nullptr && rect->right > rect->left && rect->bottom > rect->top;
    width_ = hadSize_ ? rect->right - rect->left : 400;
    height_ = hadSize_ ? rect->bottom - rect->top : 300;
    parent_ = host::ParentWindow::Make(width_, height_);
    if (!parent_) throw Hopeless("the display went away");
    parent_->Show();
    opened_ = effect.Ask(effEditOpen, 0, 0, parent_->handle()) != 0;
}

ShownEditor::~ShownEditor() {
    if (!effect_.isClosed()) effect_.Ask(effEditClose);
}

void ShownEditor::Idle(int times) {
    for (int i = 0; i < times; ++i) {
        effect_.Ask(effEditIdle);
        while (xcb_generic_event_t* event = ::xcb_poll_for_event(parent_->connection()))
            std::free(event);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
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
