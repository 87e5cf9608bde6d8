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
    std::optional<SettingsDocument> document;
    std::string problem; ///< why there is no document
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
        StoredScope& added =
            stored.emplace_back(StoredScope{fmt::format("# {}: {}\n", name, path), store.Read(scope), {}});
        if (!added.document) added.problem = fmt::format("{} cannot be read: {}", path, SystemReason());
    }
    return stored;
}

void ShowSection(const SettingsSection& section) {
    for (const std::string& name : section.Names())
        Print("{} = {}\n", Printable(name), Text(*section.Find(name)));
}

/// Shows what is in `section`, or everything when that is null; false when there is nothing.
bool ShowDocument(const std::string& heading, const SettingsDocument& document, const std::string* section) {
    if (section != nullptr) {
        const SettingsSection* found = document.FindSection(*section);
        if (found == nullptr) return false;
        PrintText(heading);
        ShowSection(*found);
        return true;
    }
    if (document.sections().empty() && document.roots().Names().empty()) return false;
    PrintText(heading);
    ShowSection(document.roots());
    for (const SettingsSection& each : document.sections()) {
        Print("[{}]\n", Printable(each.name()));
        ShowSection(each);
    }
    return true;
}

[[noreturn]] void ThrowNoSection(const std::string& section) {
    throw Failure(fmt::format("there is no section '{}'", Printable(section)));
}

/// The value that counts: that of the nearest scope which has the section, also for what it does not have.
/// A scope that cannot be read may be that one, so no farther one answers in its place.
void ShowEntry(const std::string& section, const std::string& entry, const std::vector<StoredScope>& scopes) {
    for (const StoredScope& scope : scopes) {
        if (!scope.document) throw Failure(scope.problem);
        const SettingsSection* found = scope.document->FindSection(section);
        if (found == nullptr) continue;
        const SettingsValue* value = found->Find(entry);
        if (value == nullptr) throw Failure(fmt::format("there is no entry '{}'", Printable(entry)));
        return PrintText(value->binary ? value->bytes : value->bytes + "\n");
    }
    ThrowNoSection(section);
}

/// Shows what can be read, and says what cannot.
int ShowScopes(const std::optional<std::string>& section, const std::vector<StoredScope>& scopes) {
    bool found = false, complete = true;
    for (const StoredScope& scope : scopes) {
        if (scope.document) {
            found |= ShowDocument(scope.heading, *scope.document, section ? &*section : nullptr);
        } else {
            PrintError(fmt::format("vocafade: {}\n", scope.problem));
            complete = false;
        }
    }
    if (section && !found && complete) ThrowNoSection(*section);
    return complete ? kExitFine : kExitFailed;
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
    } else if (options.entry) {
        ShowEntry(*options.section, *options.entry, ReadScopes(store));
    } else {
        return ShowScopes(options.section, ReadScopes(store));
    }
    return kExitFine;
}

} // namespace vocafade::command
