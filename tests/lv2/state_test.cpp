// SPDX-License-Identifier: MIT
#include "effect/program.h"
#include "tests/lv2/panel_host.h"
#include "tests/support/temp_folder.h"
#include "tests/support/x_server.h"

#include <cstring>
#include <limits>
#include <lv2/atom/atom.h>
#include <lv2/state/state.h>

namespace vocafade::test {
namespace {

/// What a host keeps of a plug-in without a world around it.
struct Kept {
    std::vector<char> bytes;
    std::uint32_t type = 0;
    std::uint32_t flags = 0;
    bool missing = false;
};

class Lv2State : public WithSettings {
  protected:
    const LV2_State_Interface& StateOf(const Lv2Plugin& plugin) {
        return *static_cast<const LV2_State_Interface*>(
            plugin.descriptor().extension_data(LV2_STATE__interface));
    }

    Kept Save(const Lv2Plugin& plugin) {
        Kept kept;
        const auto store = [](LV2_State_Handle handle, std::uint32_t, const void* value, std::size_t size,
                              std::uint32_t type, std::uint32_t flags) {
            const char* bytes = static_cast<const char*>(value);
            *static_cast<Kept*>(handle) = {{bytes, bytes + size}, type, flags};
            return LV2_STATE_SUCCESS;
        };
        EXPECT_EQ(StateOf(plugin).save(plugin.handle(), store, &kept, 0, kNoFeatures), LV2_STATE_SUCCESS);
        return kept;
    }

    LV2_State_Status Restore(const Lv2Plugin& plugin, Kept kept) {
        const auto retrieve = [](LV2_State_Handle handle, std::uint32_t, std::size_t* size,
                                 std::uint32_t* type, std::uint32_t* flags) -> const void* {
            const Kept& known = *static_cast<Kept*>(handle);
            *size = known.bytes.size();
            *type = known.type;
            *flags = known.flags;
            return known.missing ? nullptr : known.bytes.data();
        };
        return StateOf(plugin).restore(plugin.handle(), retrieve, &kept, 0, kNoFeatures);
    }

    ProgramSet Programs(const Lv2Plugin& plugin) {
        const Kept kept = Save(plugin);
        ProgramSet programs;
        EXPECT_EQ(kept.bytes.size(), sizeof programs);
        std::memcpy(programs.data(), kept.bytes.data(), std::min(kept.bytes.size(), sizeof programs));
        return programs;
    }

    /// Restores what the plug-in keeps, with these programs in it.
    LV2_State_Status Restore(const Lv2Plugin& plugin, const ProgramSet& programs) {
        Kept kept = Save(plugin);
        std::memcpy(kept.bytes.data(), programs.data(), sizeof programs);
        return Restore(plugin, std::move(kept));
    }

    Lv2Bundle bundle;
};

TEST_F(Lv2State, ComesBackEqualInAnotherInstanceAndFromText) {
    Lv2Plugin first(bundle);
    EXPECT_EQ(Save(first).flags, LV2_STATE_IS_POD | LV2_STATE_IS_PORTABLE);
    ProgramSet programs = Programs(first);
    SetName(programs[7], "Choir");
    StoreValue(programs[7], kParameterLoFreq, 0.25f);
    ASSERT_EQ(Restore(first, programs), LV2_STATE_SUCCESS);
    first.Control(kParameterPosition) = 40.0f;
    first.Run(Song(1024));

    const Lilv<LilvState> state = first.Save();
    char* text = lilv_state_to_string(bundle.world(), bundle.map(), bundle.unmap(), state.get(),
                                      "urn:test:state", nullptr);
    const Lilv<LilvState> read(lilv_state_new_from_string(bundle.world(), bundle.map(), text));
    lilv_free(text);
    ASSERT_NE(read, nullptr);
    Lv2Plugin second(bundle);
    second.Restore(*read);
    EXPECT_EQ(second.Control(kParameterPosition), 40.0f);
    second.Run(Song(1024));
    EXPECT_EQ(Programs(second), Programs(first));
    EXPECT_TRUE(lilv_state_equals(second.Save().get(), state.get()));
    EXPECT_EQ(second.Run(Song()), first.Run(Song()));
}

TEST_F(Lv2State, ThePortsWinOverTheChunksCurrentProgram) {
    Lv2Plugin plugin(bundle);
    ProgramSet programs = Programs(plugin);
    programs[0].currentProgram = 3;
    SetName(programs[3], "Third");
    StoreValue(programs[3], kParameterHiFreq, 0.125f);
    plugin.Control(kParameterHiFreq) = 5000.0f;
    plugin.Run(Song(512));
    ASSERT_EQ(Restore(plugin, programs), LV2_STATE_SUCCESS);
    plugin.Run(Song(512));
    const ProgramSet now = Programs(plugin);
    EXPECT_EQ(now[0].currentProgram, 3);
    EXPECT_EQ(LoadValue(now[3], kParameterHiFreq), NormalizeWholeDisplayValue(kParameterHiFreq, 5000.0f));
    EXPECT_EQ(LoadValue(now[3], kParameterLoFreq), NormalizeWholeDisplayValue(kParameterLoFreq, 400.0f));
    plugin.Restart();
    EXPECT_EQ(plugin.Run(Song()), Expected(Song(), {1, 0, 0, 400, 5000, 64})) << "it sounds as the ports say";
}

TEST_F(Lv2State, ComesBackOnAnotherThreadWhileTheEditorIsOpen) {
    const XServer server;
    XUser user;
    Lv2Plugin plugin(bundle);
    ProgramSet programs = Programs(plugin);
    SetName(programs[7], "Choir");
    PanelHost panel(user, plugin);
    std::thread([&] {
        EXPECT_EQ(Restore(plugin, programs), LV2_STATE_SUCCESS);
        EXPECT_EQ(Programs(plugin), programs);
    }).join();
    panel.Idle();
    EXPECT_EQ(Programs(plugin), programs);
}

TEST_F(Lv2State, RefusesWhatIsNoStateOfIts) {
    Lv2Plugin plugin(bundle);
    const Kept kept = Save(plugin);
    for (const std::size_t size : {100, 1 << 20}) {
        Kept other = kept;
        other.bytes.resize(size);
        EXPECT_NE(Restore(plugin, other), LV2_STATE_SUCCESS) << size;
    }
    Kept text = kept;
    text.type = bundle.Number(LV2_ATOM__String);
    EXPECT_EQ(Restore(plugin, text), LV2_STATE_ERR_BAD_TYPE);
    Kept missing = kept;
    missing.missing = true;
    EXPECT_EQ(Restore(plugin, missing), LV2_STATE_SUCCESS) << "a preset of ports alone";
    EXPECT_EQ(Save(plugin).bytes, kept.bytes);
    ProgramSet wild = Programs(plugin); // values that no fader gives are kept, and harm nobody
    wild[0].currentProgram = 1 << 30;
    StoreValue(wild[1], kParameterLoFreq, std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(Restore(plugin, wild), LV2_STATE_SUCCESS);
    plugin.Run(Song(512));
}

TEST_F(Lv2State, NeedsNumbersForItsNames) {
    const Lv2Plugin with(bundle);
    const LV2_Handle handle =
        with.descriptor().instantiate(&with.descriptor(), 44100.0, VOCAFADE_LV2 "/", kNoFeatures);
    ASSERT_NE(handle, nullptr) << "it plays without";
    EXPECT_EQ(StateOf(with).save(handle, nullptr, nullptr, 0, kNoFeatures), LV2_STATE_ERR_NO_FEATURE);
    with.descriptor().cleanup(handle);
}

} // namespace
} // namespace vocafade::test
