// SPDX-License-Identifier: MIT
// Any bytes as the bank file that the effect loads when a host opens it.
#include "effect/avocafade.h"
#include "fuzz/support.h"
#include "persistence/default_bank.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_folder.h"

#include <cstring>

using namespace vocafade;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const test::TempFolder folder;
    test::SetVariable(test::kConfigurationVariable, folder.path());
    const std::string path = folder / kDefaultBankName;
    test::WriteFile(path, fuzz::Text(data, size));
    const ChunkBank bank = ReadChunkBank(path, kVocafadeId, sizeof(ProgramSet));
    fuzz::Require(bank.chunk.size() <= sizeof(ProgramSet), "the chunk is bounded");
    fuzz::Require(bank.content == BankContent::chunk || bank.chunk.empty(), "only a bank gives a chunk");

    AVocafade effect(test::SilentHost);
    effect.open();
    effect.ProgramToFactory();
    effect.ProgramToInitial();
    for (std::int32_t program = 0; program < kProgramCount; ++program) {
        char name[64];
        fuzz::Require(effect.getProgramNameIndexed(0, program, name), "every program has a name");
        fuzz::Require(std::strlen(name) < sizeof(AVocafadeProgram::name), "names end in their field");
    }
    return 0;
}
