// SPDX-License-Identifier: MIT
#include "ui/window_session.h"

namespace vocafade {

double DrawingScale() {
    const WindowSession* session = WindowSession::Current();
    return session != nullptr ? session->scale() : 1.0;
}

void CDC::AttachWindow(CWnd* window, const CRgn* within) {
    ofWindow_ = true;
    if (window == nullptr || window->session() == nullptr) return;
    size_ = window->bounds().Size();
    CPoint offset;
    const TopLevel* top = window->FindTopLevel(&offset);
    if (top == nullptr) return;
    store_ = top->store();
    base_ = offset;
    visible_ = window->VisiblePart();
    if (within != nullptr) {
        CRgn part = *within;
        part.OffsetRgn(offset);
        visible_.Intersect(part);
    }
}

CClientDC::CClientDC(CWnd* window) {
    AttachWindow(window, nullptr);
    if (window != nullptr && window->session() != nullptr) session_ = window->session()->weak_from_this();
}

CClientDC::~CClientDC() {
    if (const std::shared_ptr<WindowSession> session = session_.lock())
        session->painter().PresentOutsideIdle();
}

CPaintDC::CPaintDC(CWnd* window) {
    if (window == nullptr) return;
    CRgn invalid;
    const bool sent = !window->BeginPaint(invalid);
    update_ = invalid.GetRgnBox();
    AttachWindow(window, &invalid);
    if (sent && window->session() != nullptr) sent_ = window->session()->weak_from_this();
}

CPaintDC::~CPaintDC() {
    if (const std::shared_ptr<WindowSession> session = sent_.lock()) session->painter().PresentOutsideIdle();
}

} // namespace vocafade
