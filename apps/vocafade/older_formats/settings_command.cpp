// SPDX-License-Identifier: MIT
#include "apps/vocafade/older_formats/settings_command.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/subcommand_line.h"
#include "apps/vocafade/shared/text.h"
#include "persistence/profile.h"
#include "persistence/settings_store.h"

#include <fmt/format.h>
#include <optional>

namespace vocafade::command {
namespace {

struct SettingsOptions {
    std::string application;
    std::optional<std::string> section, entry, value;
    bool remove = false;
    bool path = false;
};

std::string Text(const SettingsValue& value) {
    return value.binary ? fmt::format("({} bytes)", value.bytes.size()) : Printable(value.bytes);
}

void ShowSection(const SettingsSection& section) {
    for (const std::string& name : section.Names())
        Print("{} = {}\n", Printable(name), Text(*section.Find(name)));
}

int Show(const SettingsOptions& options, const SettingsDocument& document) {
    if (!options.section) {
        ShowSection(document.roots());
        for (const SettingsSection& section : document.sections()) {
            Print("[{}]\n", Printable(section.name()));
            ShowSection(section);
        }
        return kExitFine;
    }
    const SettingsSection* section = document.FindSection(*options.section);
    if (section == nullptr)
        throw Failure(fmt::format("there is no section '{}'", Printable(*options.section)));
    if (!options.entry) {
        ShowSection(*section);
        return kExitFine;
    }
    const SettingsValue* value = section->Find(*options.entry);
    if (value == nullptr) throw Failure(fmt::format("there is no entry '{}'", Printable(*options.entry)));
    WriteWhole("", value->binary ? value->bytes : value->bytes + "\n");
    return kExitFine;
}

} // namespace

int RunSettings(int argumentCount, char** arguments) {
    SettingsOptions options;
    CLI::App app(
        "Shows what the settings store holds for a program (a plug-in's settings are its host's), or\n"
        "sets an entry when VALUE is given.",
        "vocafade settings");
    app.add_option("SECTION", options.section, "show only this section");
    app.add_option("ENTRY", options.entry, "show only this entry");
    app.add_option("VALUE", options.value, "store this text as the entry");
    app.add_option("--app", options.application, "the program whose settings are meant")
        ->type_name("NAME")
        ->required();
    app.add_flag("--remove", options.remove, "remove the section");
    app.add_flag("--path", options.path, "show only in which file the user's settings are");
    if (ParseSubcommand(app, argumentCount, arguments)) return kExitFine;
    if (options.application.empty()) throw UsageError("--app needs a name");
    if (options.remove && (!options.section || options.entry))
        throw UsageError("--remove needs a section and nothing else");

    const SettingsStore store(options.application);
    if (options.path) {
        Print("{}\n", store.Path(SettingsScope::userAnyHost));
        return kExitFine;
    }
    const char* name = options.application.c_str();
    const bool change = options.remove || options.value;
    if (options.remove) WritePrivateProfileString(options.section->c_str(), nullptr, nullptr, name);
    if (options.value)
        WritePrivateProfileString(options.section->c_str(), options.entry->c_str(), options.value->c_str(),
                                  name);
    const SettingsDocument document = store.Read(SettingsScope::userAnyHost);
    if (!change) return Show(options, document);
    const SettingsSection* section = document.FindSection(*options.section);
    const SettingsValue* value =
        section != nullptr && options.entry ? section->Find(*options.entry) : nullptr;
    const bool stored =
        options.remove ? section == nullptr : value != nullptr && value->bytes == *options.value;
    if (!stored) throw Failure(store.Path(SettingsScope::userAnyHost) + " cannot be written");
    return kExitFine;
}

} // namespace vocafade::command
