// SPDX-License-Identifier: MIT
#include "apps/vocafade/failures.h"
#include "apps/vocafade/interruption.h"
#include "apps/vocafade/render_command.h"
#include "apps/vocafade/subcommands.h"
#include "apps/vocafade/text.h"

#include <cstdio>
#include <exception>
#include <fmt/format.h>

namespace {

using namespace vocafade::command;

int Run(int argumentCount, char** arguments) {
    if (argumentCount > 1)
        for (const Subcommand& subcommand : Subcommands())
            if (subcommand.name == arguments[1]) return subcommand.run(argumentCount - 1, arguments + 1);
    return RunRender(argumentCount, arguments);
}

int Complain(const char* sentence, ExitCode code) {
    fmt::print(stderr, "vocafade: {}\n", sentence);
    return code;
}

} // namespace

int main(int argumentCount, char** arguments) {
    try {
        return Run(argumentCount, arguments);
    } catch (const UsageError& error) {
        const int code = Complain(error.what(), kExitUsage);
        fmt::print(stderr, "Try 'vocafade --help'.\n");
        return code;
    } catch (const Interrupted&) {
        DieOfSignal();
        return kExitFailed;
    } catch (const std::exception& error) {
        return Complain(error.what(), kExitFailed);
    }
}
