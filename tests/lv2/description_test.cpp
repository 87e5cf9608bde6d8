// SPDX-License-Identifier: MIT
// What the Turtle files say, against the tables that the code has.
#include "effect/identity.h"
#include "effect/presets.h"
#include "effect/program.h"
#include "persistence/default_bank.h"
#include "tests/lv2/lv2_host.h"
#include "tests/support/run_command.h"

#include <cstring>
#include <gtest/gtest.h>
#include <lv2/port-props/port-props.h>
#include <lv2/presets/presets.h>
#include <lv2/units/units.h>

namespace vocafade::test {
namespace {

constexpr const char* kSymbols[] = {"in_l",  "in_r",   "out_l",  "out_r",    "enabled", "output",
                                    "input", "lofreq", "hifreq", "position", "latency"};

class Lv2Description : public ::testing::Test {
  protected:
    bool Has(const char* symbol, const std::string& property, const std::string& value) {
        const Lilv<LilvNode> name = bundle.Uri(property);
        const Lilv<LilvNode> wanted = bundle.Uri(value);
        LilvNodes* values = lilv_port_get_value(bundle.plugin(), bundle.Port(symbol), name.get());
        const bool found = lilv_nodes_contains(values, wanted.get());
        lilv_nodes_free(values);
        return found;
    }

    Lv2Bundle bundle;
};

TEST_F(Lv2Description, HasThePortsWithTheTablesFigures) {
    ASSERT_EQ(lilv_plugin_get_num_ports(bundle.plugin()), std::size(kSymbols));
    std::array<float, lv2::kPortCount> least{};
    std::array<float, lv2::kPortCount> most{};
    std::array<float, lv2::kPortCount> initial{};
    lilv_plugin_get_port_ranges_float(bundle.plugin(), least.data(), most.data(), initial.data());
    for (std::uint32_t i = 0; i < lv2::kPortCount; ++i) {
        const LilvPort* port = lilv_plugin_get_port_by_index(bundle.plugin(), i);
        EXPECT_STREQ(lilv_node_as_string(lilv_port_get_symbol(bundle.plugin(), port)), kSymbols[i]);
        const std::int32_t parameter = lv2::ParameterOf(i);
        if (parameter < 0) continue;
        const ShownRange range = ShownRangeOf(parameter);
        EXPECT_NEAR(least[i], range.minimum, 0.005) << kSymbols[i];
        EXPECT_GE(least[i], static_cast<float>(range.minimum)) << "what is offered must exist";
        EXPECT_EQ(most[i], static_cast<float>(range.maximum)) << kSymbols[i];
        EXPECT_EQ(initial[i], static_cast<float>(range.initial)) << kSymbols[i];
        const Lilv<LilvNode> name(lilv_port_get_name(bundle.plugin(), port));
        const ParameterRange& row = ParameterRow(parameter);
        EXPECT_STREQ(lilv_node_as_string(name.get()), row.name);
        EXPECT_EQ(Has(kSymbols[i], LV2_UNITS__unit, LV2_UNITS__db), row.unit == std::string_view("dB"))
            << kSymbols[i];
        EXPECT_EQ(Has(kSymbols[i], LV2_UNITS__unit, LV2_UNITS__hz), row.unit == std::string_view("Hz"))
            << kSymbols[i];
        EXPECT_EQ(Has(kSymbols[i], LV2_CORE__portProperty, LV2_PORT_PROPS__logarithmic),
                  row.taper == Taper::frequency);
        EXPECT_EQ(Has(kSymbols[i], LV2_CORE__portProperty, LV2_CORE__toggled), row.taper == Taper::step);
    }
    EXPECT_TRUE(Has("enabled", LV2_CORE__designation, LV2_CORE__enabled));
    EXPECT_TRUE(Has("latency", LV2_CORE__designation, LV2_CORE__latency));
    EXPECT_EQ(initial[lv2::kPortLatency], static_cast<float>(kVocafadeLatency));
    EXPECT_TRUE(lilv_plugin_has_latency(bundle.plugin()));
    EXPECT_EQ(lilv_plugin_get_latency_port_index(bundle.plugin()), lv2::kPortLatency);
}

TEST_F(Lv2Description, OffersEveryPresetInBothForms) {
    const Lilv<LilvNode> presetClass = bundle.Uri(LV2_PRESETS__Preset);
    LilvNodes* found = lilv_plugin_get_related(bundle.plugin(), presetClass.get());
    EXPECT_EQ(lilv_nodes_size(found), Presets().size());
    lilv_nodes_free(found);
    const ChunkBank bank = ReadChunkBank(VOCAFADE_PRESET_BANK, kVocafadeId, sizeof(ProgramSet));
    ASSERT_EQ(bank.content, BankContent::chunk);
    ProgramSet programs;
    ASSERT_EQ(bank.chunk.size(), sizeof programs);
    std::memcpy(programs.data(), bank.chunk.data(), sizeof programs);
    for (std::size_t p = 0; p < Presets().size(); ++p) {
        const Preset& preset = Presets()[p];
        const Lilv<LilvNode> uri = bundle.Uri(std::string(lv2::kPluginUri) + "#" + preset.symbol);
        lilv_world_load_resource(bundle.world(), uri.get());
        const Lilv<LilvState> state(lilv_state_new_from_world(bundle.world(), bundle.map(), uri.get()));
        ASSERT_NE(state, nullptr) << preset.name;
        EXPECT_STREQ(lilv_state_get_label(state.get()), preset.name);
        Lv2Plugin plugin(bundle);
        plugin.Control(kParameterOnOff) = 0.0f;
        plugin.Restore(*state);
        EXPECT_EQ(plugin.Control(kParameterOnOff), 0.0f) << "to choose a preset is not to switch";
        char name[kProgramNameBytes + 1];
        CopyName(programs[p], name);
        EXPECT_STREQ(name, preset.name) << "longer than a program's name?";
        for (std::int32_t i = 0; i < kParameterCount; ++i) {
            const float value = preset.values[static_cast<std::size_t>(i)];
            if (i != kParameterOnOff) {
                EXPECT_EQ(plugin.Control(i), value) << preset.name << " " << i;
            }
            EXPECT_EQ(LoadValue(programs[p], i), NormalizeWholeDisplayValue(i, value))
                << preset.name << " " << i;
        }
    }
}

TEST_F(Lv2Description, IsValid) {
    if (RunCommand("command -v sord_validate").status != 0) GTEST_SKIP() << "sordi is not installed";
    const Finished run = RunCommand("lv2_validate '" VOCAFADE_LV2 "'/*.ttl");
    EXPECT_EQ(run.status, 0) << run.output;
    EXPECT_NE(run.output.find("Found 0 errors"), std::string::npos) << run.output;
}

} // namespace
} // namespace vocafade::test
