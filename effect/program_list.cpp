// SPDX-License-Identifier: MIT
#include "effect/program_list.h"

#include "base/decimal.h"
#include "persistence/text_streams.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace vocafade {
namespace {

/// The lines of a list. At its end the last one stays.
class ListReader {
  public:
    explicit ListReader(const std::string& path) { stream_.open(path.c_str()); }
    bool failed() const { return stream_.fail(); }
    const char* line() const { return line_.data(); }
    bool Next() {
        if (stream_.eof()) return false;
        line_.fill(0);
        stream_.getline(line_.data(), kLineLimit);
        return true;
    }

  private:
    Myifstream stream_;
    std::array<char, kLineLimit + 1> line_{};
};

float FixedPoint(const char* field) { return static_cast<float>(ParseDecimal(field) * 1.52587890625e-5); }

} // namespace

void ApplyProgramBody(AVocafadeProgram& program, const char* body) {
    std::array<char, kFieldLimit + 1> field{};
    int position = 0;
    for (int index = 0; position >= 0; ++index) {
        position = StrTerminateTab(body, position, field.data());
        if (field[0] == 0 || field[0] == ' ') continue;
        const float value = FixedPoint(field.data());
        if (index == 1) StoreValue(program, kParameterLoFreq, ValToNormalizeValue(kParameterLoFreq, value));
        if (index == 2) {
            StoreValue(program, kParameterHiFreq, ValToNormalizeValue(kParameterHiFreq, value / 100.0f));
        }
        if (index == 3) {
            StoreValue(program, kParameterPosition, ValToNormalizeValue(kParameterPosition, value / 100.0f));
        }
    }
}

ProgramListImport ImportProgramList(ProgramSet& programs, const std::string& listPath,
                                    const std::string& folder) {
    ProgramListImport import;
    ListReader list(listPath);
    if (list.failed()) return import;
    list.Next();
    import.outcome = ProgramListImport::Outcome::notAList;
    if (std::strncmp(list.line(), kProgramListHeader, sizeof kProgramListHeader - 1) != 0) return import;
    import.outcome = ProgramListImport::Outcome::noPrograms;
    if (!list.Next()) return import;
    import.listed = ParseDecimal(list.line());
    if (import.listed < 1) return import;

    import.outcome = ProgramListImport::Outcome::imported;
    import.imported = std::min(import.listed, kProgramCount);
    std::array<char, kBodyLimit + 1> body{}; // one for all programs
    for (int i = 0; i < import.imported; ++i) {
        if (!list.Next()) import.listEndedEarly = true;
        const std::string name = list.line();
        AVocafadeProgram& program = programs[static_cast<std::size_t>(i)];
        SetName(program, name.c_str());
        if (name.size() > kProgramNameBytes) import.cutNames.push_back(name);
        const std::string path = ProgramFilePath(folder, name);
        import.files.push_back(path);
        const ProgramFileContent content = LoadPGMFileBody(path.c_str(), body.data());
        if (content != ProgramFileContent::body) import.unread.push_back({i, name, content, errno});
        ApplyProgramBody(program, body.data());
    }
    return import;
}

} // namespace vocafade
