// SPDX-License-Identifier: MIT
// Several hosts at once, each with the effect, save into the one bank while others open it.
#include "base/file.h"
#include "tests/support/open_effect.h"
#include "tests/support/processes.h"
#include "tests/support/temp_folder.h"

#include <chrono>
#include <cstring>
#include <thread>

namespace vocafade::test {
namespace {

using TwoWriters = WithSettings;

constexpr int kSaveCount = 150;

/// What one process does: its saves mark all they write with its own number.
bool SaveAgainAndAgain(int writer) {
    OpenEffect effect;
    for (int i = 0; i < kSaveCount; ++i) {
        effect.setProgram(writer);
        effect.setParameter(4, static_cast<float>(i) / kSaveCount);
        effect.SaveProgram(writer,
                           ("writer " + std::to_string(writer) + " save " + std::to_string(i)).c_str());
    }
    return effect.messages == 0;
}
const Aside kSaves("saves", SaveAgainAndAgain);

TEST_F(TwoWriters, LeaveAWholeBankAndNoScraps) {
    OpenEffect().SaveProgram(60, "first"); // so that readers find one from the start
    std::vector<std::unique_ptr<Aside::Process>> running;
    running.reserve(3);
    for (int writer = 0; writer < 3; ++writer)
        running.push_back(std::make_unique<Aside::Process>(kSaves, writer));
    int reads = 0;
    while (!running.empty()) {
        CFile file; // which waits where the system lets nobody open a file that is being replaced
        ASSERT_TRUE(file.Open(BankPath().c_str(), CFile::modeRead));
        std::string bytes(4000, '\0');
        bytes.resize(file.Read(bytes.data(), bytes.size()));
        ASSERT_EQ(NameInBank(bytes, 60), "first");
        // The program that a writer saved last belongs together: its number, its name, its values.
        const auto current = static_cast<unsigned char>(bytes[160 + 48]);
        if (current < 3) {
            const std::string name = NameInBank(bytes, current);
            ASSERT_EQ(name.substr(0, 8), "writer " + std::to_string(current));
            float value = 0.0f;
            std::memcpy(&value, bytes.data() + 160 + current * 52 + 16, sizeof value);
            ASSERT_EQ(value, static_cast<float>(std::stoi(name.substr(name.rfind(' ')))) / kSaveCount);
        }
        ++reads;
        std::erase_if(running, [](const auto& writer) { return writer->HasEnded(); });
    }
    EXPECT_GT(reads, 10);
    EXPECT_EQ(NamesIn(settings / "config").size(), 1U);
}

TEST_F(TwoWriters, KilledAtAnyMomentLeaveAWholeBank) {
    OpenEffect().SaveProgram(60, "first");
    for (int round = 0; round < 8; ++round) {
        Aside::Process writer(kSaves, round % 3);
        std::this_thread::sleep_for(std::chrono::milliseconds(20 + 31 * round));
        writer.Kill();
        ASSERT_EQ(NameInBank(ReadFile(BankPath()), 60), "first");
    }
}

} // namespace
} // namespace vocafade::test
