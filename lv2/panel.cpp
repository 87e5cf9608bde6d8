// SPDX-License-Identifier: MIT
#include "lv2/panel.h"

#include "editor/vocafade_editor.h"

#include <cstring>
#include <lv2/atom/atom.h>
#include <lv2/instance-access/instance-access.h>
#include <lv2/urid/urid.h>

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

float ScaleAmong(const LV2_Options_Option* options, const LV2_URID_Map* map) {
    if (options == nullptr || map == nullptr) return 0.0f;
    const LV2_URID key = map->map(map->handle, LV2_UI__scaleFactor);
    const LV2_URID type = map->map(map->handle, LV2_ATOM__Float);
    float scale = 0.0f;
    for (; options->key != 0; ++options)
        if (options->key == key && options->type == type && options->size == sizeof scale &&
            options->value != nullptr)
            std::memcpy(&scale, options->value, sizeof scale);
    return scale;
}

std::unique_ptr<Panel> Panel::Open(LV2UI_Write_Function write, LV2UI_Controller controller,
                                   LV2UI_Widget* widget, const LV2_Feature* const* features) {
    Instance* instance = Instance::Find(DataOf(features, LV2_INSTANCE_ACCESS_URI));
    void* parent = DataOf(features, LV2_UI__parent);
    if (instance == nullptr || parent == nullptr || write == nullptr || widget == nullptr) return nullptr;
    if (instance->portWriter() != nullptr) return nullptr;
    // Where this returns without it, it closes what is open by then.
    std::unique_ptr<Panel> panel(new Panel(*instance, write, controller, features));
    instance->FollowSound(); // the first picture shows what is heard
    CVocafadeEditor& editor = EditorOf(*instance);
    const auto* options = static_cast<const LV2_Options_Option*>(DataOf(features, LV2_OPTIONS__options));
    editor.setContentScale(ScaleAmong(options, panel->map()));
    if (!editor.open(parent) || editor.NativeWindow() == 0) return nullptr;
    *widget = reinterpret_cast<LV2UI_Widget>(editor.NativeWindow());
    const auto* resize = static_cast<const LV2UI_Resize*>(DataOf(features, LV2_UI__resize));
    const auto resizeHost = [resize](CSize size) {
        return resize != nullptr && resize->ui_resize(resize->handle, size.cx, size.cy) == 0;
    };
    editor.SetResizeHost(resizeHost);
    ERect* size = nullptr;
    editor.getRect(&size);
    resizeHost({size->right, size->bottom});
    return panel;
}

Panel::Panel(Instance& instance, LV2UI_Write_Function write, LV2UI_Controller controller,
             const LV2_Feature* const* features)
    : instance_(instance), write_(write), controller_(controller),
      touch_(static_cast<const LV2UI_Touch*>(DataOf(features, LV2_UI__touch))),
      map_(static_cast<const LV2_URID_Map*>(DataOf(features, LV2_URID__map))) {
    instance_.SetPortWriter(this);
}

Panel::~Panel() {
    LetGo();
    if (!IsOfLivingInstance()) return;
    EditorOf(instance_).SetResizeHost(nullptr);
    EditorOf(instance_).close();
    instance_.SetPortWriter(nullptr);
}

void Panel::PortEvent(std::uint32_t port, float value) {
    if (IsOfLivingInstance()) instance_.FollowPort(ParameterOf(port), value);
}

void Panel::Idle() {
    if (!IsOfLivingInstance()) return;
    Instance& instance = instance_;
    instance.ExchangeState();
    instance.FollowSound();
    CVocafadeEditor& editor = EditorOf(instance);
    editor.idle();
    if (!IsPanelOf(&instance, this)) return; // the host has closed it from inside a call of its own
    if (!editor.IsHeld()) LetGo();
}

void Panel::SetScale(float scale) {
    if (IsOfLivingInstance()) EditorOf(instance_).setContentScale(scale);
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
