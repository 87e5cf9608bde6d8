// SPDX-License-Identifier: MIT
// Banks that were not written by this effect on this machine: the other byte order, and bytes at random.
#include "tests/faults/open_effect.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace vocafade::test {
namespace {

class ForeignBank : public WithSettings {
  protected:
    std::string GoodBank() {
        OpenEffect().SaveProgram(5, "five");
        return ReadFile(BankPath());
    }

    /// Opens an effect on these bytes and lets it play at every program: it must neither crash nor give NaN,
    /// and its texts must end.
    void OpenAndPlay(const std::string& bytes) {
        WriteFile(BankPath(), bytes);
        OpenEffect effect;
        effect.setBlockSize(4096);
        EXPECT_GE(effect.getProgram(), 0);
        EXPECT_LT(effect.getProgram(), 64);
        const Samples left = Noise(4096, 1);
        Samples outL(4096);
        Samples outR(4096);
        for (std::int32_t program = 0; program < 64; ++program) {
            effect.setProgram(program);
            for (std::int32_t i = 0; i < kParameterCount; ++i) {
                char text[64] = {};
                effect.getParameterDisplay(i, text);
                EXPECT_LT(std::strlen(text), 24U);
            }
            char name[kVstMaxProgNameLen] = {};
            effect.getProgramName(name);
            EXPECT_LT(::strnlen(name, sizeof name), sizeof name);
            if (program % 8 != 0) continue;
            effect.setParameter(0, 1.0f);
            float* in[] = {const_cast<float*>(left.data()), const_cast<float*>(left.data())};
            float* out[] = {outL.data(), outR.data()};
            effect.processReplacing(in, out, 4096);
            EXPECT_TRUE(std::all_of(outL.begin(), outL.end(), [](float s) { return std::isfinite(s); }));
        }
    }
};

TEST_F(ForeignBank, OfTheOtherByteOrderIsSafe) {
    std::string bytes = GoodBank();
    for (std::size_t record = 160; record + 52 <= bytes.size(); record += 52)
        for (const std::size_t field : {0, 4, 8, 12, 16, 20, 48})
            std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(record + field),
                         bytes.begin() + static_cast<std::ptrdiff_t>(record + field + 4));
    OpenAndPlay(bytes);
    EXPECT_EQ(OpenEffect().NameAt(5), "five") << "names have no byte order";
}

TEST_F(ForeignBank, OfRandomRecordsIsSafe) {
    const std::string good = GoodBank();
    std::mt19937 random(7);
    for (int round = 0; round < 50; ++round) {
        std::string bytes = good;
        for (std::size_t i = 160; i < bytes.size(); ++i)
            if (round % 2 == 0 || random() % 16 == 0) bytes[i] = static_cast<char>(random() % 256);
        if (round % 5 == 0) std::fill(bytes.begin() + 160, bytes.end(), '\xff'); // NaN everywhere
        OpenAndPlay(bytes);
    }
}

} // namespace
} // namespace vocafade::test
