// SPDX-License-Identifier: MIT
#include "apps/vocafade/older_formats/convert_command.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/parameters.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/subcommand_line.h"
#include "apps/vocafade/shared/target_check.h"
#include "apps/vocafade/shared/text.h"
#include "base/text_encoding.h"
#include "effect/program_list.h"
#include "persistence/default_bank.h"

#include <filesystem>
#include <fmt/format.h>
#include <span>

namespace vocafade::command {
namespace {

struct ConvertOptions {
    std::string list;
    std::string folder; ///< empty: that of the list
    std::string bank;
};

void RefuseUnlessImported(const ProgramListImport& import, const std::string& list) {
    using Outcome = ProgramListImport::Outcome;
    const std::string name = Printable(list);
    if (import.outcome == Outcome::noList) throw Failure(name + " cannot be read: " + SystemReason());
    if (import.outcome == Outcome::notAList) throw Failure(name + " is not a program list");
    if (import.outcome == Outcome::noPrograms) throw Failure(name + " lists no programs");
}

void Warn(const std::string& sentence) { PrintError(fmt::format("vocafade: {}\n", sentence)); }

/// A name of a list for the terminal.
std::string NameText(const std::string& shiftJis) {
    return Printable(CheckSJISAndToUFT8(shiftJis.c_str()).str());
}

/// What is wrong with a program file, and what becomes of the program.
std::string Trouble(const UnreadProgram& program) {
    const char* const instead =
        program.index == 0 ? "it gets the default values" : "it gets the values of the program before it";
    switch (program.content) {
    case ProgramFileContent::noFile:
        return fmt::format("cannot be read: {}; {}", SystemReason(program.error), instead);
    case ProgramFileContent::empty:
        return fmt::format("is empty; {}", instead);
    case ProgramFileContent::noHeader:
        return "does not begin as one; its first line is taken for the values";
    case ProgramFileContent::noBody:
        return "holds no values; it gets the default values";
    case ProgramFileContent::body:
        break;
    }
    return {};
}

/// What did not come over as it stood.
void ReportLosses(const ProgramListImport& import) {
    if (import.listed > import.imported)
        Warn(fmt::format("the list says {} programs; a bank holds {}", import.listed, kProgramCount));
    if (import.listEndedEarly)
        Warn("the list ends early: its last name stands for the programs that are missing");
    for (const std::string& name : import.cutNames)
        Warn(fmt::format("'{}' is cut to {} bytes", NameText(name), kProgramNameBytes));
    for (const UnreadProgram& program : import.unread)
        Warn(fmt::format("the program file of '{}' {}", NameText(program.name), Trouble(program)));
}

/// True when the bank lacks a program of the list or has values that are in none of its files.
bool IsIncomplete(const ProgramListImport& import) {
    return import.listed > import.imported || import.listEndedEarly || !import.unread.empty();
}

} // namespace

int RunConvert(int argumentCount, char** arguments) {
    ConvertOptions options;
    CLI::App app(
        "Turns a program list of the older text format, with its program files, into a bank (.fxb)\n"
        "that any VST host opens. Names stay as they are (Shift-JIS). A program whose file is missing\n"
        "gets the values of the one before it. Programs that are left out or whose values are not\n"
        "their own are told of, and the exit status is then 1.",
        "vocafade convert");
    app.add_option("LIST", options.list, "the program list, for example PROGRAM.LST")->required();
    app.add_option("-o,--out", options.bank, "the bank to write")->type_name("BANK.fxb")->required();
    app.add_option("--folder", options.folder, "where the program files are (default: beside the list)")
        ->type_name("DIR");
    if (ParseSubcommand(app, argumentCount, arguments)) return kExitFine;

    if (options.folder.empty()) options.folder = std::filesystem::path(options.list).parent_path().string();
    if (options.folder.empty()) options.folder = ".";
    CheckTarget(options.bank, {options.list});
    ProgramSet programs;
    const ProgramListImport import = ImportProgramList(programs, options.list, options.folder);
    RefuseUnlessImported(import, options.list);
    for (const std::string& file : import.files)
        CheckTarget(options.bank, {file});
    if (!WriteChunkBank(options.bank, kVocafadeId, kProgramCount, std::as_bytes(std::span(programs)),
                        BankSizeField::filledIn))
        throw Failure(fmt::format("{} cannot be written: {}", Printable(options.bank), SystemReason()));
    ReportLosses(import);
    Print("{}: {} program{}\n", Printable(options.bank), import.imported, import.imported == 1 ? "" : "s");
    return IsIncomplete(import) ? kExitFailed : kExitFine;
}

} // namespace vocafade::command
