// SPDX-License-Identifier: MIT
#include "apps/validate/shown_editor.h"

#include "apps/validate/report.h"

#include <chrono>
#include <thread>

namespace vocafade::validate {

ShownEditor::ShownEditor(RawEffect& effect) : effect_(effect) {
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
        HandleEvents();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

} // namespace vocafade::validate
