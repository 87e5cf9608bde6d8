// SPDX-License-Identifier: MIT
// Any bytes as a program list and as the program file of its first name; the two are parted by a NUL and an
// FF.
#include "effect/program_list.h"
#include "fuzz/support.h"
#include "persistence/program_file.h"
#include "persistence/text_streams.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

using namespace vocafade;

namespace {

void CheckStreams(std::string_view text, const std::string& path) {
    std::vector<char> token(text.size() + 1);
    Myistrstream tokens(text.data(), static_cast<int>(text.size()));
    for (std::size_t i = 0; i <= text.size() && tokens.rdstate() == 0; ++i)
        tokens >> token.data();
    fuzz::Require(tokens.rdstate() == Myistrstream::kUsedUp, "tokens come to an end");

    Myifstream stream;
    stream.open(path.c_str());
    std::array<char, 33> line{};
    std::size_t lines = 0;
    while (!stream.eof()) {
        stream.getline(line.data(), 32);
        fuzz::Require(++lines <= text.size(), "lines come to an end");
    }
}

void CheckFields(const std::string& body) {
    std::vector<char> field(body.size() + 1);
    int position = 0;
    std::size_t total = 0;
    while (position >= 0) {
        position = StrTerminateTab(body.c_str(), position, field.data());
        total += std::strlen(field.data()) + 1;
        fuzz::Require(total <= body.size() + 1, "fields do not overlap");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const test::TempFolder folder;
    const std::string text = fuzz::Text(data, size);
    const std::size_t end = std::min(text.find(std::string("\0\xFF", 2)), size);
    const std::string list = text.substr(0, end), file = text.substr(std::min(end + 2, size));
    test::WriteFile(folder / "list", list);
    test::WriteFile(folder / "Hall.PGM", file);
    CheckStreams(list, folder / "list");
    CheckFields(file.substr(0, kBodyLimit));

    ProgramSet programs;
    const ProgramListImport import = ImportProgramList(programs, folder / "list", folder.path());
    fuzz::Require(import.imported <= kProgramCount, "no more programs than there are records");
    for (const AVocafadeProgram& program : programs) {
        fuzz::Require(::strnlen(program.name, sizeof program.name) < sizeof program.name, "names end");
        fuzz::Require(program.values[kParameterOnOff] == 1.0f, "ON/OFF is not touched");
        fuzz::Require(program.currentProgram == 0, "nothing is written behind the name");
        for (const ParameterIndex index : {kParameterLoFreq, kParameterHiFreq})
            fuzz::Require(program.values[index] >= 0.0f && program.values[index] <= 1.0f,
                          "frequencies are clamped");
    }
    return 0;
}
