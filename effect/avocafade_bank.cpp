// SPDX-License-Identifier: MIT
#include "base/file.h"
#include "base/path.h"
#include "effect/avocafade.h"
#include "persistence/default_bank.h"
#include "persistence/settings_folder.h"

#include <cstring>
#include <span>

namespace vocafade {
namespace {

/// Longest folder that is taken from a host, without its terminator.
constexpr std::size_t kLongestFolder = 2047;

/// The bytes of a bank's chunk to use: all that it declares or, where the file ends before that, the records
/// that it holds whole.
std::size_t UsableBytes(const ChunkBank& bank) {
    return bank.complete ? bank.chunk.size()
                         : bank.chunk.size() - bank.chunk.size() % sizeof(AVocafadeProgram);
}

} // namespace

std::uint32_t AVocafade::getDWordFile(CFile* file) { return vocafade::getDWordFile(file); }

std::uint16_t AVocafade::getWordFile(CFile* file) { return vocafade::getWordFile(file); }

std::string AVocafade::FolderOfPlugin() {
    const auto* answer = static_cast<const char*>(getDirectory());
    if (answer == nullptr) return {};
    std::string folder = TextOfHostsPath({answer, ::strnlen(answer, kLongestFolder)});
    if (folder.size() < 2 || folder.back() == '/') return folder;
    // A slash in the first place is not looked at, and a text without any is kept whole.
    const std::size_t slash = folder.rfind('/');
    if (slash != std::string::npos && slash > 0) folder.resize(slash + 1);
    return folder;
}

void AVocafade::LoadBank() {
    std::string path = SettingsFolder() + kDefaultBankName;
    if (!CFileFind().FindFile(path.c_str())) {
        pluginFolder_ = FolderOfPlugin();
        path = pluginFolder_ + kDefaultBankName;
    }
    ChunkBank bank = ReadChunkBank(path, kVocafadeId, sizeof(ProgramSet));
    switch (bank.content) {
    case BankContent::unreadable:
    case BankContent::notABank:
    case BankContent::foreign:
        return; // the built-in programs stay
    case BankContent::chunk:
        setChunk(bank.chunk.data(), static_cast<std::int32_t>(UsableBytes(bank)), false);
        break;
    case BankContent::otherKind:
        break;
    }
    CopyPrograms(initial_, programs_);
    SetFactoryProgram();
}

void AVocafade::SetFactoryProgram() {
    getDirectory(); // asked again, and not used
    // Empty when the user's own bank was found, which leads to the current folder; see docs/compatibility.md.
    const ChunkBank bank = ReadChunkBank(pluginFolder_ + kDefaultBankName, kVocafadeId, sizeof(ProgramSet));
    if (bank.content != BankContent::chunk || bank.chunk.empty()) return;
    ProgramSet programs;
    CopyPrograms(programs, factory_);
    std::memcpy(programs.data(), bank.chunk.data(), UsableBytes(bank));
    CopyPrograms(factory_, programs);
}

void AVocafade::SaveProgram(std::int32_t index, const CString& name) {
    if (!IsProgram(index)) return;
    const auto slot = static_cast<std::size_t>(index);
    const auto edited = static_cast<std::size_t>(curProgram.load());
    CopyProgram(programs_[slot], programs_[edited]);
    SetName(programs_[slot], name);
    CopyProgram(initial_[slot], programs_[slot]);
    // The slot that was being edited returns to its stored state; the edited settings live on in the new one.
    CopyProgram(programs_[edited], initial_[edited]);
    setProgram(index);
    programs_[0].currentProgram = curProgram;

    ProgramSet chunk;
    CopyPrograms(chunk, programs_);
    const std::string path = SettingsFolder() + kDefaultBankName;
    const bool saved = WriteChunkBank(path, kVocafadeId, kProgramCount, std::as_bytes(std::span(chunk)));
    if (!saved && messageHook_) messageHook_(kSaveFailedString, path);
    updateDisplay();
}

} // namespace vocafade
