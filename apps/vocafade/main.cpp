// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/render_command.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/subcommands.h"

#include <exception>
#include <string>
#include <system_error>

namespace {

using namespace vocafade::command;

/// The subcommand that the command line begins with; null when songs are to be rendered.
const Subcommand* FindSubcommand(int argumentCount, char** arguments) {
    if (argumentCount > 1)
        for (const Subcommand& subcommand : Subcommands())
            if (subcommand.name == arguments[1]) return &subcommand;
    return nullptr;
}

int Complain(const std::string& sentence, ExitCode code) {
    PrintError("vocafade: " + sentence + "\n");
    return code;
}

int RunAndTell(int argumentCount, char** arguments) {
    const Subcommand* subcommand = FindSubcommand(argumentCount, arguments);
    try {
        return subcommand != nullptr ? subcommand->run(argumentCount - 1, arguments + 1)
                                     : RunRender(argumentCount, arguments);
    } catch (const UsageError& error) {
        const int code = Complain(error.what(), kExitUsage);
        PrintError(fmt::format("Try 'vocafade {}--help'.\n",
                               subcommand != nullptr ? std::string(subcommand->name) + " " : ""));
        return code;
    } catch (const Interrupted&) {
        DieOfSignal();
        return kExitFailed;
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::broken_pipe) return kExitFailed; // the reader of a pipe has gone
        return Complain(error.what(), kExitFailed);
    } catch (const std::exception& error) {
        return Complain(error.what(), kExitFailed);
    }
}

} // namespace

int main(int argumentCount, char** arguments) {
    PrepareStreams();
    const int code = RunAndTell(argumentCount, arguments);
    const int error = FinishOutput();
    if (error == 0) return code;
    const int unwritten =
        Complain("the output cannot be written: " + std::generic_category().message(error), kExitFailed);
    return code == kExitFine ? unwritten : code;
}
