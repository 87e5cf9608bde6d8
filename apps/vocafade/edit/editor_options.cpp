// SPDX-License-Identifier: MIT
#include "apps/vocafade/edit/editor_options.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/parameters.h"

#include <fmt/format.h>

namespace vocafade::command {

void AddEditorOptions(CLI::App& app, EditorOptions& options) {
    app.add_option("--program", options.program, "show the saved program N, counted from 1")->type_name("N");
    app.add_option("--set", options.set,
                   "any parameter by its name, in the unit that it shows; may be repeated")
        ->type_name("NAME=VALUE")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--plugin", options.plugin, "the plug-in to use: Vocafade.so or a bundle folder")
        ->type_name("FILE");
}

void PrepareEffect(host::Effect& effect, const EditorOptions& options) {
    if (options.program) {
        const int programs = effect.numPrograms();
        if (*options.program < 1 || *options.program > programs)
            throw UsageError(fmt::format("--program {} is out of range: it goes from 1 to {}",
                                         *options.program, programs));
        effect.setProgram(*options.program - 1);
    }
    std::vector<Assignment> assignments;
    for (const std::string& text : options.set)
        assignments.push_back(ParseAssignment(effect, text));
    Apply(effect, assignments);
}

} // namespace vocafade::command
