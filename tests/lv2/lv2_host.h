// SPDX-License-Identifier: MIT
#pragma once

#include "effect/parameters.h"
#include "lv2/ports.h"
#include "tests/support/signals.h"

#include <array>
#include <lilv/lilv.h>
#include <lv2/urid/urid.h>
#include <memory>
#include <string>
#include <vector>

namespace vocafade::test {

struct LilvDeleter {
    void operator()(LilvWorld* world) const { lilv_world_free(world); }
    void operator()(LilvNode* node) const { lilv_node_free(node); }
    void operator()(LilvInstance* instance) const { lilv_instance_free(instance); }
    void operator()(LilvState* state) const { lilv_state_free(state); }
};
template <typename Type>
using Lilv = std::unique_ptr<Type, LilvDeleter>;

/// The built bundle, read as hosts read it.
class Lv2Bundle {
  public:
    Lv2Bundle();

    LilvWorld* world() const { return world_.get(); }
    const LilvPlugin* plugin() const { return plugin_; }
    Lilv<LilvNode> Uri(const std::string& uri) const {
        return Lilv<LilvNode>(lilv_new_uri(world(), uri.c_str()));
    }
    const LilvPort* Port(const char* symbol) const;
    LV2_URID Number(const char* uri) { return map_.map(map_.handle, uri); }
    LV2_URID_Map* map() { return &map_; }
    LV2_URID_Unmap* unmap() { return &unmap_; }

  private:
    Lilv<LilvWorld> world_;
    const LilvPlugin* plugin_ = nullptr;
    std::vector<std::string> uris_; ///< the first one's number is 1
    LV2_URID_Map map_;
    LV2_URID_Unmap unmap_;
};

/// What a host without any features hands over.
inline constexpr const LV2_Feature* kNoFeatures[] = {nullptr};

/// One plug-in of a small host's, activated, with its ports at their defaults.
class Lv2Plugin {
  public:
    explicit Lv2Plugin(Lv2Bundle& bundle, double rate = 44100.0);
    ~Lv2Plugin() { lilv_instance_deactivate(instance_.get()); }

    /// As hosts do it to begin anew.
    void Restart();
    /// Runs the whole sound through it, in blocks of these sizes in turn.
    StereoSamples Run(const StereoSamples& sound, const std::vector<std::size_t>& blocks = {512});
    void RunBlock(float* const* in, float* const* out, std::int32_t count);
    float& Control(std::int32_t parameter) { return controls[lv2::PortOf(parameter)]; }

    /// Where the audio thread may be reading the ports, without them.
    Lilv<LilvState> Save(bool withPorts = true);
    void Restore(const LilvState& state);

    LV2_Handle handle() const { return lilv_instance_get_handle(instance_.get()); }
    Lv2Bundle& bundle() { return bundle_; }
    /// What a plug-in without a world around it offers.
    const LV2_Descriptor& descriptor() const { return *lilv_instance_get_descriptor(instance_.get()); }

    std::array<float, lv2::kPortCount> controls{};

  private:
    float& PortValue(const char* symbol) {
        return controls[lilv_port_get_index(bundle_.plugin(), bundle_.Port(symbol))];
    }

    Lv2Bundle& bundle_;
    Lilv<LilvInstance> instance_;
};

/// Half a second of noise in both channels, part of it in the middle.
StereoSamples Song(std::size_t count = 22050, unsigned seed = 1);

/// What the plain effect makes of a sound with these values, as displays show them.
StereoSamples Expected(const StereoSamples& sound, const std::array<float, kParameterCount>& values,
                       double rate = 44100.0);

} // namespace vocafade::test
