// SPDX-License-Identifier: MIT
#include "lv2/panel.h"

#include "editor/vocafade_editor.h"

#include <cstring>
#include <lv2/instance-access/instance-access.h>

namespace vocafade::lv2 {
namespace {

void* DataOf(const LV2_Feature* const* features, const char* uri) {
    for (; features != nullptr && *features != nullptr; ++features) {
        if (std::strcmp((*features)->URI, uri) == 0) return (*features)->data;
    }
    return nullptr;
}

CVocafadeEditor& EditorOf(Instance& instance) {
    return static_cast<CVocafadeEditor&>(*instance.shown().getEditor());
}

} // namespace

std::unique_ptr<Panel> Panel::Open(LV2UI_Write_Function write, LV2UI_Controller controller,
                                   LV2UI_Widget* widget, const LV2_Feature* const* features) {
    Instance* instance = Instance::Find(DataOf(features, LV2_INSTANCE_ACCESS_URI));
    void* parent = DataOf(features, LV2_UI__parent);
    if (instance == nullptr || parent == nullptr || write == nullptr || widget == nullptr) return nullptr;
    if (instance->portWriter() != nullptr) return nullptr;
    instance->FollowSound(); // the first picture shows what is heard
    CVocafadeEditor& editor = EditorOf(*instance);
    if (!editor.open(parent)) return nullptr;
    *widget = reinterpret_cast<LV2UI_Widget>(editor.NativeWindow());
    if (*widget == nullptr) {
        editor.close();
        return nullptr;
    }
    if (const auto* resize = static_cast<const LV2UI_Resize*>(DataOf(features, LV2_UI__resize))) {
        ERect* size = nullptr;
        editor.getRect(&size);
        resize->ui_resize(resize->handle, size->right, size->bottom);
    }
    const auto* touch = static_cast<const LV2UI_Touch*>(DataOf(features, LV2_UI__touch));
    return std::unique_ptr<Panel>(new Panel(*instance, write, controller, touch));
}

Panel::Panel(Instance& instance, LV2UI_Write_Function write, LV2UI_Controller controller,
             const LV2UI_Touch* touch)
    : instance_(instance), write_(write), controller_(controller), touch_(touch) {
    instance_.SetPortWriter(this);
}

Panel::~Panel() {
    LetGo();
    if (!IsOfLivingInstance()) return;
    instance_.SetPortWriter(nullptr);
    EditorOf(instance_).close();
}

void Panel::PortEvent(std::uint32_t port, float value) {
    if (IsOfLivingInstance()) instance_.FollowPort(ParameterOf(port), value);
}

void Panel::Idle() {
    if (!IsOfLivingInstance()) return;
    instance_.FollowSound();
    CVocafadeEditor& editor = EditorOf(instance_);
    editor.idle();
    if (!editor.IsHeld()) LetGo();
}

void Panel::WritePort(std::int32_t parameter, float value) {
    write_(controller_, PortOf(parameter), sizeof value, 0, &value);
}

void Panel::TouchPort(std::int32_t parameter, bool held) {
    bool& touched = touched_[static_cast<std::size_t>(parameter)];
    if (touched == held) return;
    touched = held;
    if (touch_ != nullptr) touch_->touch(touch_->handle, PortOf(parameter), held);
}

void Panel::LetGo() {
    for (std::int32_t i = 0; i < kParameterCount; ++i)
        Panel::TouchPort(i, false);
}

} // namespace vocafade::lv2
