// SPDX-License-Identifier: MIT
//
// Writes the presets in the forms that hosts take, while the project is built:
//
//   write_presets MANIFEST FOLDER BANK    FOLDER/manifest.ttl, which is MANIFEST and the list of presets,
//                                         FOLDER/presets.ttl, and a bank file for VST hosts
#include "effect/identity.h"
#include "effect/presets.h"
#include "effect/program.h"
#include "lv2/ports.h"
#include "persistence/default_bank.h"

#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace vocafade::lv2 {
namespace {

/// The ports' symbols in the parameters' order.
constexpr const char* kSymbols[kParameterCount] = {"enabled", "output", "input",
                                                   "lofreq",  "hifreq", "position"};

std::string UriOf(const Preset& preset) { return std::string("<") + kPluginUri + "#" + preset.symbol + ">"; }

void Write(const std::string& path, const std::string& text) {
    std::ofstream file(path);
    file << text;
    file.close();
    if (!file) throw std::runtime_error(path + " cannot be written");
}

std::string Listing() {
    std::ostringstream text;
    for (const Preset& preset : Presets()) {
        text << "\n"
             << UriOf(preset) << "\n\ta pset:Preset ;\n\tlv2:appliesTo <" << kPluginUri
             << "> ;\n\trdfs:label \"" << preset.name << "\" ;\n\trdfs:seeAlso <presets.ttl> .\n";
    }
    return text.str();
}

std::string Values() {
    std::ostringstream text;
    text.setf(std::ios::showpoint);
    text << "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n@prefix pset: "
            "<http://lv2plug.in/ns/ext/presets#> .\n"
            "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n";
    for (const Preset& preset : Presets()) {
        text << "\n"
             << UriOf(preset) << "\n\ta pset:Preset ;\n\tlv2:appliesTo <" << kPluginUri
             << "> ;\n\trdfs:label \"" << preset.name << "\" ;\n\tlv2:port ";
        // Not whether the effect is on: to choose a preset is not to switch.
        for (std::size_t i = kParameterOutput; i < kParameterCount; ++i) {
            text << (i > kParameterOutput ? " , " : "") << "[\n\t\tlv2:symbol \"" << kSymbols[i]
                 << "\" ;\n\t\tpset:value " << preset.values[i] << "\n\t]";
        }
        text << " .\n";
    }
    return text.str();
}

void WriteBank(const std::string& path) {
    ProgramSet programs;
    for (std::size_t p = 0; p < Presets().size(); ++p) {
        const Preset& preset = Presets()[p];
        SetName(programs[p], preset.name);
        for (std::int32_t i = 0; i < kParameterCount; ++i)
            StoreValue(programs[p], i, NormalisedOf(i, preset.values[static_cast<std::size_t>(i)]));
    }
    if (!WriteChunkBank(path, kVocafadeId, kProgramCount, std::as_bytes(std::span(programs)),
                        BankSizeField::filledIn))
        throw std::runtime_error(path + " cannot be written");
}

void Run(const std::string& manifest, const std::string& folder, const std::string& bank) {
    std::ifstream file(manifest);
    std::ostringstream text;
    if (!(text << file.rdbuf())) throw std::runtime_error(manifest + " cannot be read");
    Write(folder + "/manifest.ttl", text.str() + Listing());
    Write(folder + "/presets.ttl", Values());
    WriteBank(bank);
}

} // namespace
} // namespace vocafade::lv2

int main(int count, char** arguments) try {
    if (count != 4) throw std::runtime_error("usage: write_presets MANIFEST FOLDER BANK");
    vocafade::lv2::Run(arguments[1], arguments[2], arguments[3]);
    return 0;
} catch (const std::exception& error) {
    std::cerr << "write_presets: " << error.what() << "\n";
    return 1;
}
