// SPDX-License-Identifier: MIT
#include "tests/support/open_effect.h"
#include "tests/support/temp_folder.h"

#include <cstring>
#include <limits>

namespace vocafade::test {
namespace {

class Programs : public WithSettings {
  protected:
    Programs() { effect.open(); }

    std::string Name(std::int32_t index) {
        char text[64] = "untouched";
        return effect.getProgramNameIndexed(0, index, text) ? text : "none";
    }

    void Rename(const std::string& name) { effect.setProgramName(std::string(name).data()); }

    void SelectAndSet(std::int32_t program, std::int32_t parameter, float value) {
        effect.setProgram(program);
        effect.setParameter(parameter, value);
    }

    std::vector<char> Chunk(bool isPreset) {
        void* data = nullptr;
        const std::int32_t size = effect.getChunk(&data, isPreset);
        const char* bytes = static_cast<const char*>(data);
        return {bytes, bytes + size};
    }

    static void SetChunk(AVocafade& to, std::vector<char> bytes, bool isPreset) {
        EXPECT_EQ(to.setChunk(bytes.data(), static_cast<std::int32_t>(bytes.size()), isPreset), 0);
    }

    RecordingHost host;
    AVocafade effect{RecordingHost::Callback};
};

TEST_F(Programs, KeepNamesOfTwentyThreeBytes) {
    effect.setProgram(3);
    Rename("123456789012345678901234567890");
    EXPECT_EQ(Name(3), "12345678901234567890123");
    EXPECT_EQ(Name(-1), Name(3)) << "a negative index asks for the current one";
    effect.setProgramName(nullptr);
    char text[24];
    effect.getProgramName(text);
    EXPECT_EQ(Name(3), text);

    std::vector<char> chunk = Chunk(true);
    std::fill_n(chunk.begin() + 24, 24, 'x'); // a name without its end
    SetChunk(effect, chunk, true);
    EXPECT_EQ(Name(3), std::string(23, 'x'));
}

TEST_F(Programs, ApplyTheirValuesWhenSelected) {
    SelectAndSet(5, 3, 0.5f);
    effect.setParameter(5, 0.0f);
    effect.setProgram(6);
    EXPECT_EQ(effect.getParameter(3), DefaultNormalizedValue(3));
    effect.setProgram(5);
    char text[64];
    effect.getParameterDisplay(3, text);
    EXPECT_STREQ(text, "10010.0");
    effect.getParameterDisplay(5, text);
    EXPECT_STREQ(text, "0.0");
    for (const std::int32_t bad : {-1, 64, std::numeric_limits<std::int32_t>::min(), 1 << 30}) {
        effect.setProgram(bad);
        EXPECT_EQ(effect.getProgram(), 5);
        effect.CopyPgFrom(bad);
    }
    EXPECT_EQ(effect.getParameter(3), 0.5f);
}

TEST_F(Programs, TravelAsABankChunkWithTheCurrentNumber) {
    SelectAndSet(5, 4, 0.125f);
    Rename("Fünf");
    const std::vector<char> chunk = Chunk(false);
    ASSERT_EQ(chunk.size(), 3328U);
    std::int32_t current = 0;
    std::memcpy(&current, chunk.data() + 48, 4);
    EXPECT_EQ(current, 5);

    OpenEffect other;
    SetChunk(other, chunk, false);
    EXPECT_EQ(other.getProgram(), 5);
    EXPECT_EQ(other.getParameter(4), 0.125f);
    EXPECT_EQ(other.ProgramName(5), "Fünf");
    EXPECT_TRUE(other.IsProgramChanged()) << "what was loaded is not what was stored";
    const std::vector<char> one = Chunk(true);
    ASSERT_EQ(one.size(), 52U);
    other.setProgram(9);
    SetChunk(other, one, true);
    EXPECT_EQ(other.getProgram(), 9);
    EXPECT_EQ(other.Program(9).values[4], 0.125f);
    EXPECT_EQ(other.Program(8).values[4], DefaultNormalizedValue(4));
}

TEST_F(Programs, TakeDamagedChunksSafely) {
    effect.setProgram(7);
    const std::vector<char> large(10000, 0); // more than there is room for, and program 0 in its record
    SetChunk(effect, large, false);
    EXPECT_EQ(effect.getProgram(), 0);
    EXPECT_EQ(effect.getParameter(4), 0.0f);
    SetChunk(effect, large, true);

    effect.setProgram(7);
    std::vector<char> bank = Chunk(false);
    const std::int32_t wild = 1000;
    std::memcpy(bank.data() + 48, &wild, 4);
    SetChunk(effect, bank, false);
    EXPECT_EQ(effect.getProgram(), 7) << "a number that is no program changes nothing";

    effect.setProgram(3);
    SetChunk(effect, std::vector<char>(20, 0), false); // ends within the first record
    EXPECT_EQ(effect.getProgram(), 3);

    SetChunk(effect, std::vector<char>(3328, '\xFF'), false); // every value is NaN
    EXPECT_EQ(Name(3).size(), 23U);
}

TEST_F(Programs, ReturnToTheirStoredAndFactoryStates) {
    SelectAndSet(4, 2, 0.5f);
    EXPECT_TRUE(effect.IsProgramChanged());
    Rename("renamed");
    host.calls.clear();
    effect.ProgramToInitial();
    EXPECT_FALSE(effect.IsProgramChanged());
    EXPECT_EQ(Name(4), "Empty");
    EXPECT_EQ(effect.getParameter(2), DefaultNormalizedValue(2));
    EXPECT_EQ(host.Calls(audioMasterUpdateDisplay).size(), 1U);

    effect.setParameter(2, 0.5f);
    effect.ProgramToFactory();
    EXPECT_EQ(effect.getParameter(2), DefaultNormalizedValue(2));

    for (const std::int32_t i : {0, 30, 63})
        SelectAndSet(i, 3, 0.9f);
    effect.ProgramToAllInitial();
    for (std::int32_t i = 0; i < kProgramCount; ++i) {
        effect.setProgram(i);
        EXPECT_FALSE(effect.IsProgramChanged()) << i;
    }
    EXPECT_EQ(host.Calls(audioMasterUpdateDisplay).size(), 3U);

    SelectAndSet(1, 5, 1.0f);
    effect.setProgram(2);
    effect.CopyPgFrom(1);
    EXPECT_EQ(effect.getParameter(5), 1.0f);
    EXPECT_TRUE(effect.IsProgramChanged());
}

} // namespace
} // namespace vocafade::test
