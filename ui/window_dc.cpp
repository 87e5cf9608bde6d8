// SPDX-License-Identifier: MIT
#include "ui/desktop.h"

namespace vocafade {

void CDC::AttachWindow(CWnd* window, const CRgn* within) {
    ofWindow_ = true;
    if (window == nullptr || window->desktop() == nullptr) return;
    size_ = window->bounds().Size();
    CPoint offset;
    const CWnd* top = Desktop::RootOf(window, &offset);
    if (top == nullptr) return;
    canvas_ = top->root_->canvas;
    base_ = offset;
    visible_ = Desktop::VisiblePart(*window);
    if (within != nullptr) {
        CRgn part = *within;
        part.OffsetRgn(offset.x, offset.y);
        visible_.CombineRgn(visible_, part, RGN_AND);
    }
}

CClientDC::CClientDC(CWnd* window) {
    AttachWindow(window, nullptr);
    if (window != nullptr && window->desktop() != nullptr) desktop_ = window->desktop()->weak_from_this();
}

CClientDC::~CClientDC() {
    if (const std::shared_ptr<Desktop> desktop = desktop_.lock()) desktop->PresentSoon();
}

CPaintDC::CPaintDC(CWnd* window) {
    if (window == nullptr) return;
    if (window->painting_) {
        update_ = window->update_.GetRgnBox();
        AttachWindow(window, &window->update_);
    } else {
        // Somebody sent WM_PAINT: all is drawn, and nothing is left to be done at the idle.
        update_ = CRect({0, 0}, window->bounds_.Size());
        window->update_.DeleteObject();
        AttachWindow(window, nullptr);
        if (window->desktop() != nullptr) sent_ = window->desktop()->weak_from_this();
    }
}

CPaintDC::~CPaintDC() {
    if (const std::shared_ptr<Desktop> desktop = sent_.lock()) desktop->PresentSoon();
}

} // namespace vocafade
