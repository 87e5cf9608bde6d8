// SPDX-License-Identifier: MIT
// Any bytes as a settings file: what is understood survives being written and read again.
#include "fuzz/support.h"
#include "persistence/settings_document.h"

using namespace vocafade;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes = fuzz::Text(data, size);
    const std::string escaped = PercentEncode(bytes, "-_.");
    fuzz::Require(PercentDecode(escaped) == bytes, "escapes are undone");
    fuzz::Require(escaped.find_first_of("/\n=[]") == std::string::npos, "names lead nowhere");

    const SettingsDocument document(bytes);
    const std::string text = document.Text();
    SettingsDocument again(text);
    fuzz::Require(again.Text() == text, "a written file stays the same");
    fuzz::Require(again.sections().size() == document.sections().size(), "sections are kept");
    for (const SettingsSection& section : document.sections()) {
        const SettingsSection* found = again.FindSection(section.name());
        fuzz::Require(found != nullptr && found->Names() == section.Names(), "names are kept");
        for (const std::string& name : section.Names()) {
            const SettingsValue* value = found->Find(name);
            fuzz::Require(value != nullptr && value->bytes == section.Find(name)->bytes &&
                              value->binary == section.Find(name)->binary,
                          "values are kept");
        }
    }
    again.Section("S").Set("name", {bytes, (size & 1) != 0});
    const SettingsDocument third(again.Text());
    fuzz::Require(third.FindSection("S")->Find("name")->bytes == bytes, "any value comes back");
    return 0;
}
