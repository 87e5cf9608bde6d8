// SPDX-License-Identifier: MIT
#include "lv2/instance.h"
#include "lv2/panel.h"

#include <cmath>
#include <cstring>
#include <lv2/core/lv2.h>

// Hosts are written in C: no exception may reach them. Only running out of memory throws here.

namespace vocafade::lv2 {
namespace {

Instance& Of(LV2_Handle handle) { return *static_cast<Instance*>(handle); }

LV2_Handle Instantiate(const LV2_Descriptor*, double rate, const char* bundle,
                       const LV2_Feature* const* features) try {
    if (!(rate >= 1.0) || !std::isfinite(rate)) return nullptr;
    const LV2_URID_Map* map = nullptr;
    for (; features != nullptr && *features != nullptr; ++features) {
        if (std::strcmp((*features)->URI, LV2_URID__map) == 0)
            map = static_cast<const LV2_URID_Map*>((*features)->data);
    }
    return new Instance(rate, bundle, map);
} catch (...) {
    return nullptr;
}

LV2_State_Status Save(LV2_Handle handle, LV2_State_Store_Function store, LV2_State_Handle state,
                      std::uint32_t, const LV2_Feature* const*) {
    return Of(handle).Save(store, state);
}

LV2_State_Status Restore(LV2_Handle handle, LV2_State_Retrieve_Function retrieve, LV2_State_Handle state,
                         std::uint32_t, const LV2_Feature* const*) try {
    return Of(handle).Restore(retrieve, state);
} catch (...) {
    return LV2_STATE_ERR_UNKNOWN;
}

const void* PluginExtension(const char* uri) {
    static const LV2_State_Interface state = {Save, Restore};
    return std::strcmp(uri, LV2_STATE__interface) == 0 ? &state : nullptr;
}

const LV2_Descriptor kPlugin = {
    .URI = kPluginUri,
    .instantiate = Instantiate,
    .connect_port = [](LV2_Handle handle, std::uint32_t port,
                       void* data) { Of(handle).sound().Connect(port, data); },
    .activate = [](LV2_Handle handle) { Of(handle).sound().Activate(); },
    .run = [](LV2_Handle handle, std::uint32_t count) { Of(handle).sound().Run(count); },
    .deactivate = nullptr,
    .cleanup = [](LV2_Handle handle) { delete static_cast<Instance*>(handle); },
    .extension_data = PluginExtension,
};

Panel& PanelOf(LV2UI_Handle handle) { return *static_cast<Panel*>(handle); }

LV2UI_Handle OpenPanel(const LV2UI_Descriptor*, const char* plugin, const char*, LV2UI_Write_Function write,
                       LV2UI_Controller controller, LV2UI_Widget* widget,
                       const LV2_Feature* const* features) try {
    if (std::strcmp(plugin, kPluginUri) != 0) return nullptr;
    return Panel::Open(write, controller, widget, features).release();
} catch (...) {
    return nullptr;
}

void PortEvent(LV2UI_Handle handle, std::uint32_t port, std::uint32_t size, std::uint32_t format,
               const void* buffer) {
    float value = 0.0f;
    if (format != 0 || size != sizeof value) return; // no plain number
    std::memcpy(&value, buffer, sizeof value);
    PanelOf(handle).PortEvent(port, value);
}

int Idle(LV2UI_Handle handle) {
    PanelOf(handle).Idle();
    return 0;
}

std::uint32_t GetPanelOptions(LV2_Handle, LV2_Options_Option*) { return LV2_OPTIONS_ERR_BAD_KEY; }

std::uint32_t SetPanelOptions(LV2_Handle handle, const LV2_Options_Option* options) {
    Panel& panel = PanelOf(handle);
    const float scale = ScaleAmong(options, panel.map());
    if (scale == 0.0f) return LV2_OPTIONS_ERR_BAD_KEY;
    panel.SetScale(scale);
    return LV2_OPTIONS_SUCCESS;
}

const void* PanelExtension(const char* uri) {
    static const LV2UI_Idle_Interface idle = {Idle};
    static const LV2_Options_Interface options = {GetPanelOptions, SetPanelOptions};
    if (std::strcmp(uri, LV2_OPTIONS__interface) == 0) return &options;
    return std::strcmp(uri, LV2_UI__idleInterface) == 0 ? &idle : nullptr;
}

const LV2UI_Descriptor kPanel = {
    .URI = kUiUri,
    .instantiate = OpenPanel,
    .cleanup = [](LV2UI_Handle handle) { delete static_cast<Panel*>(handle); },
    .port_event = PortEvent,
    .extension_data = PanelExtension,
};

} // namespace
} // namespace vocafade::lv2

/// [any-thread] The plug-in's descriptor, number 0; null for every other number.
LV2_SYMBOL_EXPORT const LV2_Descriptor* lv2_descriptor(std::uint32_t index) {
    return index == 0 ? &vocafade::lv2::kPlugin : nullptr;
}

/// [any-thread] The editor's descriptor, number 0; null for every other number.
LV2_SYMBOL_EXPORT const LV2UI_Descriptor* lv2ui_descriptor(std::uint32_t index) {
    return index == 0 ? &vocafade::lv2::kPanel : nullptr;
}
