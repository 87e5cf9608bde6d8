// SPDX-License-Identifier: MIT
#include "apps/vocafade/older_formats/settings_command.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/subcommand_line.h"
#include "apps/vocafade/shared/text.h"
#include "persistence/settings_store.h"

#include <fmt/format.h>
#include <optional>
#include <utility>
#include <vector>

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

/// What is stored for one user or all, on one machine or all.
struct StoredScope {
    std::string heading;
    SettingsDocument document;
};

/// All scopes, the nearest first.
std::vector<StoredScope> ReadScopes(const SettingsStore& store) {
    constexpr std::pair<SettingsScope, const char*> kScopes[] = {
        {SettingsScope::userAnyHost, "this user's, on every machine"},
        {SettingsScope::userThisHost, "this user's, on this machine"},
        {SettingsScope::anyUserThisHost, "everybody's, on this machine"},
        {SettingsScope::anyUserAnyHost, "everybody's, on every machine"}};
    std::vector<StoredScope> stored;
    for (const auto& [scope, name] : kScopes) {
        const std::string path = Printable(store.Path(scope));
        std::optional<SettingsDocument> document = store.Read(scope);
        if (!document) throw Failure(fmt::format("{} cannot be read: {}", path, SystemReason()));
        stored.push_back({fmt::format("# {}: {}\n", name, path), *std::move(document)});
    }
    return stored;
}

void ShowSection(const SettingsSection& section) {
    for (const std::string& name : section.Names())
        Print("{} = {}\n", Printable(name), Text(*section.Find(name)));
}

void ShowEverything(const std::vector<StoredScope>& scopes) {
    for (const auto& [heading, document] : scopes) {
        if (document.sections().empty() && document.roots().Names().empty()) continue;
        PrintText(heading);
        ShowSection(document.roots());
        for (const SettingsSection& section : document.sections()) {
            Print("[{}]\n", Printable(section.name()));
            ShowSection(section);
        }
    }
}

void Show(const SettingsOptions& options, const std::vector<StoredScope>& scopes) {
    if (!options.section) return ShowEverything(scopes);
    bool found = false;
    for (const auto& [heading, document] : scopes) {
        const SettingsSection* section = document.FindSection(*options.section);
        if (section == nullptr) continue;
        found = true;
        if (!options.entry) {
            PrintText(heading);
            ShowSection(*section);
            continue;
        }
        // The nearest section decides, also for what it does not have.
        const SettingsValue* value = section->Find(*options.entry);
        if (value == nullptr) throw Failure(fmt::format("there is no entry '{}'", Printable(*options.entry)));
        return PrintText(value->binary ? value->bytes : value->bytes + "\n");
    }
    if (!found) throw Failure(fmt::format("there is no section '{}'", Printable(*options.section)));
}

void Change(const SettingsOptions& options, const SettingsStore& store) {
    const bool stored = store.Change(SettingsScope::userAnyHost, [&](SettingsDocument& document) {
        if (options.remove) {
            document.RemoveSection(*options.section);
        } else {
            document.Section(*options.section).Set(*options.entry, {*options.value, false});
        }
    });
    if (!stored)
        throw Failure(fmt::format("{} cannot be written: {}",
                                  Printable(store.Path(SettingsScope::userAnyHost)), SystemReason()));
}

} // namespace

int RunSettings(int argumentCount, char** arguments) {
    SettingsOptions options;
    CLI::App app(
        "Shows what the settings store holds for a program (a plug-in's settings are its host's), this\n"
        "user's and everybody's, on every machine and on this one; of an entry the value that counts.\n"
        "Sets this user's entry when VALUE is given.",
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

    if (options.path && (options.section || options.remove))
        throw UsageError("--path needs --app and nothing else");

    const SettingsStore store(options.application);
    if (options.path) {
        Print("{}\n", store.Path(SettingsScope::userAnyHost));
    } else if (options.remove || options.value) {
        Change(options, store);
    } else {
        Show(options, ReadScopes(store));
    }
    return kExitFine;
}

} // namespace vocafade::command
