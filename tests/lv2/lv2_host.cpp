// SPDX-License-Identifier: MIT
#include "tests/lv2/lv2_host.h"

#include "effect/avocafade.h"

#include <cmath>
#include <stdexcept>

namespace vocafade::test {

Lv2Bundle::Lv2Bundle() : world_(lilv_world_new()) {
    map_ = {this, [](LV2_URID_Map_Handle handle, const char* uri) {
                auto& numbers = static_cast<Lv2Bundle*>(handle)->numbers_;
                return numbers.try_emplace(uri, static_cast<LV2_URID>(numbers.size() + 1)).first->second;
            }};
    unmap_ = {this, [](LV2_URID_Unmap_Handle handle, LV2_URID number) -> const char* {
                  for (const auto& [uri, known] : static_cast<Lv2Bundle*>(handle)->numbers_) {
                      if (known == number) return uri.c_str();
                  }
                  return nullptr;
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
    Activate();
}

void Lv2Plugin::Activate() {
    lilv_instance_activate(instance_.get());
    active_ = true;
}

void Lv2Plugin::Deactivate() {
    if (active_) lilv_instance_deactivate(instance_.get());
    active_ = false;
}

void Lv2Plugin::RunBlock(std::uint32_t count, float* inL, float* inR, float* outL, float* outR) {
    float* audio[] = {inL, inR, outL, outR};
    for (std::uint32_t port = 0; port < 4; ++port)
        lilv_instance_connect_port(instance_.get(), port, audio[port]);
    lilv_instance_run(instance_.get(), count);
}

StereoSamples Lv2Plugin::Run(const StereoSamples& sound, const std::vector<std::uint32_t>& blocks) {
    StereoSamples in = sound;
    StereoSamples out{Samples(sound.left.size()), Samples(sound.left.size())};
    std::size_t done = 0;
    for (std::size_t turn = 0; done < sound.left.size(); ++turn) {
        const std::uint32_t count =
            std::min(blocks[turn % blocks.size()], static_cast<std::uint32_t>(sound.left.size() - done));
        RunBlock(count, &in.left[done], &in.right[done], &out.left[done], &out.right[done]);
        done += count;
    }
    return out;
}

Lilv<LilvState> Lv2Plugin::Save() {
    const auto value = [](const char* symbol, void* data, std::uint32_t* size,
                          std::uint32_t* type) -> const void* {
        auto* self = static_cast<Lv2Plugin*>(data);
        const LilvPort* port = self->bundle_.Port(symbol);
        *size = sizeof(float);
        *type = self->bundle_.map()->map(self->bundle_.map()->handle, "http://lv2plug.in/ns/ext/atom#Float");
        return &self->controls[lilv_port_get_index(self->bundle_.plugin(), port)];
    };
    return Lilv<LilvState>(lilv_state_new_from_instance(bundle_.plugin(), instance_.get(), bundle_.map(),
                                                        nullptr, nullptr, nullptr, nullptr, value, this, 0,
                                                        nullptr));
}

Lilv<LilvState> Lv2Plugin::SaveProgramsAlone() {
    return Lilv<LilvState>(lilv_state_new_from_instance(bundle_.plugin(), instance_.get(), bundle_.map(),
                                                        nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                                        0, nullptr));
}

void Lv2Plugin::Restore(const LilvState& state) {
    const auto set = [](const char* symbol, void* data, const void* value, std::uint32_t, std::uint32_t) {
        auto* self = static_cast<Lv2Plugin*>(data);
        const LilvPort* port = self->bundle_.Port(symbol);
        self->controls[lilv_port_get_index(self->bundle_.plugin(), port)] = *static_cast<const float*>(value);
    };
    lilv_state_restore(&state, instance_.get(), set, this, 0, nullptr);
}

StereoSamples Song(std::size_t count, unsigned seed) {
    StereoSamples song{Noise(count, seed, 0.3f), Noise(count, seed + 1, 0.3f)};
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
    StereoSamples in = sound;
    StereoSamples out{Samples(sound.left.size()), Samples(sound.left.size())};
    float* inputs[] = {in.left.data(), in.right.data()};
    float* outputs[] = {out.left.data(), out.right.data()};
    effect.processReplacing(inputs, outputs, static_cast<std::int32_t>(sound.left.size()));
    return out;
}

} // namespace vocafade::test
