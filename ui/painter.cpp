// SPDX-License-Identifier: MIT
#include "ui/painter.h"

#include "ui/window_session.h"

namespace vocafade {

void Painter::PaintWithChildren(CWnd& window) {
    if ((window.GetStyle() & WS_VISIBLE) == 0) return;
    const std::weak_ptr<bool> life = window.LifeToken();
    window.PaintInvalid();
    for (std::size_t i = 0; !life.expired() && i < window.children().size(); ++i)
        PaintWithChildren(*window.children()[i]);
}

void Painter::PaintAll() {
    if (painting_ || !session_.IsDisplayAlive()) return;
    painting_ = true;
    for (std::size_t i = 0; i < session_.topLevels().size(); ++i) {
        const TopLevel& top = *session_.topLevels()[i];
        if (top.native() != nullptr && top.native()->NativeId() != 0) PaintWithChildren(top.window());
    }
    painting_ = false;
}

void Painter::PresentAll() {
    if (!session_.IsDisplayAlive()) return;
    for (TopLevel* top : session_.topLevels())
        top->Present();
    session_.display()->Flush();
}

void Painter::PresentOutsideIdle() {
    if (!session_.IsIdling() && !painting_ && !session_.IsClosed()) PresentAll();
}

} // namespace vocafade
