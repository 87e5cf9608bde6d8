// SPDX-License-Identifier: MIT
#include "editor/vocafade_editor.h"

#include "vst/audio_effect.h"

namespace vocafade {
namespace {

constexpr std::int16_t kPanelWidth = 477;
constexpr std::int16_t kPanelHeight = 214;

} // namespace

CVocafadeEditor::CVocafadeEditor(AudioEffect* owner)
    : AEffEditor(owner), rect_{0, 0, kPanelHeight, kPanelWidth} {
    owner->setEditor(this);
}

CVocafadeEditor::~CVocafadeEditor() = default;

bool CVocafadeEditor::getRect(ERect** bounds) {
    *bounds = &rect_;
    return true;
}

bool CVocafadeEditor::open(void* ptr) {
    if (systemWindow == nullptr) systemWindow = ptr;
    return true;
}

void CVocafadeEditor::close() { systemWindow = nullptr; }

AEffEditor* MakeVocafadeEditor(AudioEffect* owner) { return new CVocafadeEditor(owner); }

} // namespace vocafade
