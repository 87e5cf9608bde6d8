// SPDX-License-Identifier: MIT
#include "tests/lv2/panel_host.h"

#include <dlfcn.h>
#include <lv2/atom/atom.h>
#include <lv2/instance-access/instance-access.h>
#include <stdexcept>

namespace vocafade::test {
namespace {

const LV2UI_Descriptor* Descriptor() {
    void* library = ::dlopen(VOCAFADE_LV2 "/vocafade.so", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) throw std::runtime_error("the plug-in cannot be loaded");
    const auto entry = reinterpret_cast<LV2UI_DescriptorFunction>(::dlsym(library, "lv2ui_descriptor"));
    // cppcheck-suppress resourceLeak ; never unloaded: sanitizers want the names of what leaked
    return entry(0);
}

} // namespace

PanelHost::PanelHost(XUser& someUser, Lv2Plugin& somePlugin)
    : PanelHost(someUser, somePlugin, Offer{somePlugin.handle()}) {}

PanelHost::PanelHost(XUser& someUser, Lv2Plugin& somePlugin, Offer offer, xcb_window_t someParent)
    : PanelMouse(someUser, kX, kY), plugin(somePlugin), parent(someParent), descriptor_(Descriptor()) {
    ownsParent_ = parent == 0;
    if (ownsParent_) parent = user.MakeWindow(kX, kY, 477, 214);
    touch_ = {this, [](LV2UI_Feature_Handle handle, std::uint32_t port, bool held) {
                  static_cast<PanelHost*>(handle)->touches.emplace_back(port, held);
              }};
    resize_ = {this, [](LV2UI_Feature_Handle handle, int width, int height) {
                   static_cast<PanelHost*>(handle)->size = {width, height};
                   return 0;
               }};
    const LV2_Feature access{LV2_INSTANCE_ACCESS_URI, offer.instance};
    const LV2_Feature window{LV2_UI__parent, reinterpret_cast<void*>(static_cast<std::uintptr_t>(parent))};
    const LV2_Feature touching{LV2_UI__touch, &touch_};
    const LV2_Feature resizing{LV2_UI__resize, &resize_};
    const std::array<LV2_Options_Option, 2> options = Options(offer.scale);
    const LV2_Feature mapping{LV2_URID__map, plugin.bundle().map()};
    const LV2_Feature stating{LV2_OPTIONS__options, const_cast<LV2_Options_Option*>(options.data())};
    std::vector<const LV2_Feature*> features;
    if (offer.instance != nullptr) features.push_back(&access);
    if (offer.parent) features.push_back(&window);
    if (offer.touchAndResize) features.insert(features.end(), {&touching, &resizing});
    if (offer.scale > 0.0f) features.insert(features.end(), {&mapping, &stating});
    features.push_back(nullptr);
    const auto write = [](LV2UI_Controller controller, std::uint32_t port, std::uint32_t bytes,
                          std::uint32_t protocol, const void* buffer) {
        auto* self = static_cast<PanelHost*>(controller);
        if (bytes != sizeof(float) || protocol != 0) throw std::runtime_error("no plain number was written");
        self->writes.emplace_back(port, *static_cast<const float*>(buffer));
        if (self->fickle) self->Close();
        if (!self->deaf) self->plugin.controls[port] = *static_cast<const float*>(buffer);
    };
    LV2UI_Widget shown = nullptr;
    panel_ = descriptor_->instantiate(descriptor_, lv2::kPluginUri, VOCAFADE_LV2 "/", write, this, &shown,
                                      features.data());
    widget = static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(shown));
}

std::array<LV2_Options_Option, 2> PanelHost::Options(const float& scale) {
    Lv2Bundle& bundle = plugin.bundle();
    return {{{LV2_OPTIONS_INSTANCE, 0, bundle.Number(LV2_UI__scaleFactor), sizeof scale,
              bundle.Number(LV2_ATOM__Float), &scale},
             {}}};
}

std::uint32_t PanelHost::SetScale(float scale) {
    const std::array<LV2_Options_Option, 2> options = Options(scale);
    return static_cast<const LV2_Options_Interface*>(descriptor_->extension_data(LV2_OPTIONS__interface))
        ->set(panel_, options.data());
}

PanelHost::~PanelHost() {
    Close();
    if (ownsParent_) user.DestroyWindow(parent);
}

void PanelHost::Close() {
    if (panel_ != nullptr) descriptor_->cleanup(panel_);
    panel_ = nullptr;
}

void PanelHost::Idle() {
    if (IsOpen())
        static_cast<const LV2UI_Idle_Interface*>(descriptor_->extension_data(LV2_UI__idleInterface))
            ->idle(panel_);
}

void PanelHost::Tell(std::int32_t parameter, float value) {
    descriptor_->port_event(panel_, lv2::PortOf(parameter), sizeof value, 0, &value);
}

} // namespace vocafade::test
