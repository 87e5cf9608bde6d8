// SPDX-License-Identifier: MIT
#include "tests/lv2/lv2_host.h"

#include "effect/avocafade.h"

#include <lv2/atom/atom.h>
#include <stdexcept>

namespace vocafade::test {

Lv2Bundle::Lv2Bundle() : world_(lilv_world_new()) {
    map_ = {&uris_, [](LV2_URID_Map_Handle handle, const char* uri) {
                auto& uris = *static_cast<std::vector<std::string>*>(handle);
                const auto found = std::find(uris.begin(), uris.end(), uri);
                const auto number = static_cast<LV2_URID>(found - uris.begin() + 1);
                if (found == uris.end()) uris.emplace_back(uri);
                return number;
            }};
    unmap_ = {&uris_, [](LV2_URID_Unmap_Handle handle, LV2_URID number) {
                  return static_cast<std::vector<std::string>*>(handle)->at(number - 1).c_str();
              }};
    const Lilv<LilvNode> folder(lilv_new_file_uri(world(), nullptr, VOCAFADE_LV2 "/"));
    lilv_world_load_bundle(world(), folder.get());
    plugin_ = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world()), Uri(lv2::kPluginUri).get());
    if (plugin_ == nullptr) throw std::runtime_error("no plug-in in " VOCAFADE_LV2);
}

const LilvPort* Lv2Bundle::Port(const char* symbol) const {
    const Lilv<LilvNode> name(lilv_new_string(world(), symbol));
    return lilv_plugin_get_port_by_symbol(plugin_, name.get());
}

Lv2Plugin::Lv2Plugin(Lv2Bundle& bundle, double rate) : bundle_(bundle) {
    const LV2_Feature map{LV2_URID__map, bundle.map()};
    const LV2_Feature* features[] = {&map, nullptr};
    instance_.reset(lilv_plugin_instantiate(bundle.plugin(), rate, features));
    if (instance_ == nullptr) throw std::runtime_error("no instance");
    lilv_plugin_get_port_ranges_float(bundle.plugin(), nullptr, nullptr, controls.data());
    for (std::uint32_t port = lv2::kPortFirstParameter; port < lv2::kPortCount; ++port)
        lilv_instance_connect_port(instance_.get(), port, &controls[port]);
    controls[lv2::kPortLatency] = 0.0f;
    lilv_instance_activate(instance_.get());
}

void Lv2Plugin::Restart() {
    lilv_instance_deactivate(instance_.get());
    lilv_instance_activate(instance_.get());
}

void Lv2Plugin::RunBlock(float* const* in, float* const* out, std::int32_t count) {
    float* audio[] = {in[0], in[1], out[0], out[1]};
    for (std::uint32_t port = 0; port < 4; ++port)
        lilv_instance_connect_port(instance_.get(), port, audio[port]);
    lilv_instance_run(instance_.get(), static_cast<std::uint32_t>(count));
}

StereoSamples Lv2Plugin::Run(const StereoSamples& sound, const std::vector<std::size_t>& blocks) {
    return InBlocks(sound, blocks,
                    [this](float** in, float** out, std::int32_t count) { RunBlock(in, out, count); });
}

Lilv<LilvState> Lv2Plugin::Save(bool withPorts) {
    const LilvGetPortValueFunc value = [](const char* symbol, void* data, std::uint32_t* size,
                                          std::uint32_t* type) -> const void* {
        auto* self = static_cast<Lv2Plugin*>(data);
        *size = sizeof(float);
        *type = self->bundle_.Number(LV2_ATOM__Float);
        return &self->PortValue(symbol);
    };
    return Lilv<LilvState>(lilv_state_new_from_instance(bundle_.plugin(), instance_.get(), bundle_.map(),
                                                        nullptr, nullptr, nullptr, nullptr,
                                                        withPorts ? value : nullptr, this, 0, nullptr));
}

void Lv2Plugin::Restore(const LilvState& state) {
    const auto set = [](const char* symbol, void* data, const void* value, std::uint32_t, std::uint32_t) {
        static_cast<Lv2Plugin*>(data)->PortValue(symbol) = *static_cast<const float*>(value);
    };
    lilv_state_restore(&state, instance_.get(), set, this, 0, nullptr);
}

StereoSamples Song(std::size_t count, unsigned seed) {
    StereoSamples song = StereoNoise(count, seed, 0.3f);
    const Samples middle = Noise(count, seed + 2, 0.3f);
    for (std::size_t i = 0; i < count; ++i) {
        song.left[i] += middle[i];
        song.right[i] += middle[i];
    }
    return song;
}

StereoSamples Expected(const StereoSamples& sound, const std::array<float, kParameterCount>& values,
                       double rate) {
    AVocafade effect(nullptr);
    effect.setSampleRate(static_cast<float>(rate));
    for (std::int32_t i = 0; i < kParameterCount; ++i)
        effect.setParameter(i, NormalizeWholeDisplayValue(i, values[static_cast<std::size_t>(i)]));
    return InBlocks(sound, {sound.left.size()}, [&effect](float** in, float** out, std::int32_t count) {
        effect.processReplacing(in, out, count);
    });
}

} // namespace vocafade::test
