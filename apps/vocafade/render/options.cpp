// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/options.h"

#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/text.h"
#include "apps/vocafade/subcommands.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <fmt/format.h>

namespace vocafade::command {
namespace {

constexpr const char* kDescription =
    "Takes the lead voice out of stereo songs with the Vocafade plug-in.\n"
    "\n"
    "  vocafade song.wav                    writes song-vocafade.wav beside it\n"
    "  vocafade song.mp3 -o karaoke.flac    writes FLAC\n"
    "  vocafade *.flac -o karaoke/          renders an album, several songs at once\n"
    "  vocafade -r music -o karaoke         renders a whole collection, folder by folder\n";

constexpr const char* kClosing =
    "Without --program and --bank every parameter starts at its default, whatever the user's saved programs "
    "hold;\n"
    "the other parameter options come on top. Levels are in the plug-in's own dB, 6 a doubling.\n"
    "Existing outputs are replaced, once the new file is whole. Exit status: 0 all done, 1 some file failed, "
    "2 the\n"
    "command line makes no sense. See also: man vocafade.\n";

std::string SubcommandHelp() {
    if (Subcommands().empty()) return {};
    std::string text = "Subcommands (vocafade NAME --help; a song of such a name is given as ./NAME):\n";
    for (const Subcommand& subcommand : Subcommands())
        text += fmt::format("  {:<28}{}\n", subcommand.name, subcommand.summary);
    return text + "\n";
}

void AddFileOptions(CLI::App& app, RenderOptions& options) {
    app.add_option("INPUT", options.inputs, "stereo sound files: WAV, AIFF, FLAC, Ogg, Opus, MP3 and others");
    app.add_option("-o,--out", options.output,
                   "file to write, in the format of its ending; or folder (ends in /, or several inputs)")
        ->type_name("OUT")
        ->group("Files");
    app.add_option("--format", options.format, "ending of the files to write, for example flac")
        ->type_name("ENDING")
        ->group("Files");
    app.add_flag("-n,--no-clobber", options.keepExisting, "leave files that exist as they are")
        ->group("Files");
    app.add_flag("-r,--recursive", options.recursive,
                 "inputs are folders: render all songs in them into the same folders below OUT")
        ->group("Files");
    app.add_flag("--copy-others", options.copyOthers, "with --recursive: copy files that are no songs")
        ->group("Files");
    app.add_option("--log", options.log, "add a line of JSON for each song to FILE")
        ->type_name("FILE")
        ->group("Files");
    app.add_option("-j,--jobs", options.jobs, "songs to render at once (default: as many as processors)")
        ->type_name("N")
        ->group("Files");
}

void AddProcessingOptions(CLI::App& app, RenderOptions& options) {
    app.add_option("--block", options.block, fmt::format("samples a call, 1 to {} (default 512)", kMostBlock))
        ->type_name("N")
        ->group("Processing");
    app.add_flag("--double", options.doublePrecision, "hand the samples over in double precision")
        ->group("Processing");
    app.add_flag(
           "--keep-latency", options.keepLatency,
           fmt::format("keep the {} samples of delay in front (the file grows by as many)", kVocafadeLatency))
        ->group("Processing");
    AddPluginOption(app, options, "Processing");
}

void AddReportOptions(CLI::App& app, RenderOptions& options) {
    app.add_flag("--list-programs", options.listPrograms, "show the programs and end")->group("Information");
    app.add_flag("--list-parameters", options.listParameters, "show the parameters and end")
        ->group("Information");
    app.add_flag("-q,--quiet", options.quiet, "say nothing but errors")->group("Information");
    app.set_help_flag("-h,--help", "show this help and end")->group("Information");
    app.set_version_flag("--version", "vocafade " VOCAFADE_VERSION, "show the version and end")
        ->group("Information");
}

/// The first argument that nothing understood, with the option that it was perhaps meant to be.
[[noreturn]] void RefuseUnknown(const CLI::App& app, const std::string& argument) {
    const std::string typed = argument.substr(0, argument.find('='));
    std::vector<std::string> known;
    for (const CLI::Option* option : app.get_options())
        for (const std::string& name : option->get_lnames())
            known.push_back("--" + name);
    throw UsageError(fmt::format("there is no option '{}'.{}", Printable(typed), DidYouMean(typed, known)));
}

void CheckRanges(const RenderOptions& options) {
    const auto check = [](bool inside, const char* what, std::int64_t value, std::int64_t least,
                          std::int64_t most) {
        if (inside) return;
        throw UsageError(
            fmt::format("{} {} is out of range: it goes from {} to {}", what, value, least, most));
    };
    check(options.block >= 1 && options.block <= kMostBlock, "--block", options.block, 1, kMostBlock);
    check(options.jobs >= 0 && options.jobs <= kMostJobs, "--jobs", options.jobs, 0, kMostJobs);
    if (options.inputs.empty() && !options.listPrograms && !options.listParameters)
        throw UsageError("no input: name at least one sound file");
    if (options.copyOthers && !options.recursive) throw UsageError("--copy-others goes with --recursive");
    for (const std::string& input : options.inputs)
        if (input.empty()) throw UsageError("an input has an empty name");
}

} // namespace

ParsedOptions ParseRenderOptions(int argumentCount, char** arguments) {
    ParsedOptions parsed;
    RenderOptions& options = parsed.options;
    CLI::App app(kDescription, "vocafade");
    app.allow_extras();
    app.get_formatter()->column_width(30);
    AddFileOptions(app, options);
    AddSoundOptions(app, options);
    AddProcessingOptions(app, options);
    AddReportOptions(app, options);
    app.footer("\n" + SubcommandHelp() + kClosing);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::CallForHelp&) {
        parsed.answer = app.help();
        return parsed;
    } catch (const CLI::CallForVersion& version) {
        parsed.answer = std::string(version.what()) + "\n";
        return parsed;
    } catch (const CLI::ConversionError& error) {
        throw UsageError(std::string("a number is wanted. ") + Printable(error.what()));
    } catch (const CLI::ParseError& error) {
        throw UsageError(Printable(error.what()));
    }
    const std::vector<std::string> unknown = app.remaining();
    if (!unknown.empty()) RefuseUnknown(app, unknown.front());
    CheckRanges(options);
    return parsed;
}

} // namespace vocafade::command
