// SPDX-License-Identifier: MIT
//
// vocafade-demo: lets Vocafade take the voice out of a song, its own or the user's, and says what became of
// it.
#include "apps/demo/before_after.h"
#include "apps/demo/measure.h"
#include "apps/demo/run_program.h"
#include "apps/demo/song.h"
#include "apps/demo/stereo_file.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fmt/core.h>
#include <unistd.h>

namespace vocafade {
namespace {

namespace fs = std::filesystem;

struct Options {
    std::string song;
    std::string output;
    std::string folder = "demo-out";
    std::string vocafade;
};

/// Everything that one run reads and leaves behind.
struct Files {
    fs::path song;
    fs::path rendered;
    fs::path picture;
    std::optional<Stems> stems;
};

std::runtime_error CannotMake(const fs::path& folder, const std::error_code& error) {
    return std::runtime_error(folder.string() + ": cannot be made: " + error.message());
}

void MakeFolder(const fs::path& folder) {
    std::error_code error;
    if (!folder.empty() && !fs::is_directory(folder) && !fs::create_directories(folder, error) && error)
        throw CannotMake(folder, error);
}

/// Synthesises the song with its stems into the demonstration's folder.
Files MakeOwnSong(const fs::path& folder) {
    MakeFolder(folder / "stems");
    Files files{folder / "song.wav", folder / "song-without-voice.wav", folder / "before-after.png",
                Stems{(folder / "stems" / "voice.wav").string(), (folder / "stems" / "rest.wav").string()}};
    const Song song = MakeSong(44100);
    WriteWave(files.song.string(), song.mix, song.rate);
    WriteWave(files.stems->voice, song.voice, song.rate);
    WriteWave(files.stems->rest, song.rest, song.rate);
    return files;
}

/// Where the results for the user's song go: to the demonstration's folder, or to `output`, a file or a
/// folder.
Files PlanUsersSong(const Options& options) {
    const fs::path song = options.song;
    const fs::path name = song.stem().string() + "-without-voice" + song.extension().string();
    fs::path rendered = options.output;
    if (rendered.empty()) {
        rendered = fs::path(options.folder) / name;
    } else if (!rendered.has_filename() || fs::is_directory(rendered)) {
        rendered /= name;
    }
    MakeFolder(rendered.parent_path());
    fs::path picture = rendered;
    picture.replace_extension();
    picture += "-before-after.png";
    return {song, rendered, picture, std::nullopt};
}

/// Renders through the command that users have, with the band that is measured and everything else as it
/// comes. Returns the seconds that it took, reading and writing the files included.
double Render(const Options& options, const Files& files, const Band& band) {
    const fs::path command = options.vocafade.empty()
                                 ? fs::read_symlink("/proc/self/exe").parent_path() / "vocafade"
                                 : fs::path(options.vocafade);
    std::vector<std::string> arguments{command.string(),
                                       fs::absolute(files.song).string(),
                                       "-o",
                                       fs::absolute(files.rendered).string(),
                                       "--lofreq",
                                       fmt::format("{:g}", band.lowHz),
                                       "--hifreq",
                                       fmt::format("{:g}", band.highHz)};
    if (!isatty(STDERR_FILENO)) arguments.emplace_back("--quiet");
    const auto start = std::chrono::steady_clock::now();
    RunProgram(arguments);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

std::string Percent(double share) { return fmt::format("{:.0f} %", 100.0 * share); }

std::string BandName(const Band& band) {
    return fmt::format("between {:g} and {:g} Hz", band.lowHz, band.highHz);
}

void Report(const Files& files, const Band& band, const Measurement& result, double songSeconds,
            double renderSeconds) {
    const bool known = files.stems.has_value();
    if (result.hasVoice) {
        fmt::print("  {}  {:.1f} dB quieter {}{}\n",
                   known ? "The voice: " : "The middle:", result.voiceLossDb, BandName(band),
                   known ? "." : " (that is where the voice is, as a rule).");
        if (known && result.voiceLossOverallDb < result.voiceLossDb - 0.5)
            fmt::print("               With what lies outside this band: {:.1f} dB.\n",
                       result.voiceLossOverallDb);
    } else {
        fmt::print("  The middle:  nothing stands in the middle {}, so nothing was to be removed.\n",
                   BandName(band));
    }
    if (result.hasRest) {
        fmt::print("  The rest:    {} of its sound energy has stayed ({} inside the band, {} outside).\n",
                   Percent(result.restKept), Percent(result.restKeptInBand), Percent(result.restKeptOutside));
    }
    fmt::print("  The level:   {:+.1f} dB, which is counted out above; the Output control gives it back.\n",
               20.0 * std::log10(PassThroughGain()));
    fmt::print("  The speed:   {:.1f} s of music in {:.2f} s: {:.0f} times faster than real time.\n",
               songSeconds, renderSeconds, songSeconds / std::max(renderSeconds, 1e-6));
    fmt::print("\n  Before:      {}\n  After:       {}\n  Picture:     {}\n", files.song.string(),
               files.rendered.string(), files.picture.string());
    if (known)
        fmt::print("  Parts:       {}\n               {}\n", files.stems->voice, files.stems->rest);
    else
        fmt::print(
            "\n  A finished song does not say what is sung. What stands in the middle is counted as the\n"
            "  voice, everything else as the rest; trust your ears before these numbers.\n");
}

Captions MakeCaptions(const Files& files, const Band& band, const Measurement& result) {
    Captions captions;
    captions.before = files.song.filename().string();
    captions.after = files.rendered.filename().string();
    if (files.stems) {
        captions.title = "A song before and after Vocafade";
        captions.before =
            "the voice in the middle, guitar left, electric piano right, bass and drum below the band";
        captions.after =
            fmt::format("the voice is {:.0f} dB quieter {}; {} of the rest has stayed (levels matched)",
                        result.voiceLossDb, BandName(band), Percent(result.restKept));
    } else {
        captions.title = files.song.stem().string();
        if (result.hasVoice)
            captions.after =
                fmt::format("the middle is {:.0f} dB quieter {}; {} of the rest has stayed (levels matched)",
                            result.voiceLossDb, BandName(band), Percent(result.restKept));
    }
    return captions;
}

void Demonstrate(const Options& options) {
    const Band band;
    Files files;
    if (options.song.empty()) {
        fmt::print("Making a song ...\n");
        files = MakeOwnSong(options.folder);
    } else {
        const StereoReader probe(options.song); // a file that cannot work fails before a folder is made
        files = PlanUsersSong(options);
    }
    std::fflush(stdout);
    fmt::print("Taking the voice out of {} ...\n", files.song.string());
    std::fflush(stdout);
    const double renderSeconds = Render(options, files, band);
    fmt::print("Measuring and drawing ...\n\n");
    std::fflush(stdout);

    const std::string before = files.song.string();
    const std::string after = files.rendered.string();
    const Measurement result = Measure(before, after, band, PassThroughGain(), files.stems);
    DrawBeforeAfter(before, after, band, PassThroughGain(), MakeCaptions(files, band, result),
                    files.picture.string());
    const StereoReader song(before);
    Report(files, band, result, static_cast<double>(song.length()) / song.rate(), renderSeconds);
}

int Main(int argc, char** argv) {
    Options options;
    CLI::App app{
        "Takes the voice out of a song with Vocafade and says what became of it. Without SONG it makes "
        "one of its own.",
        "vocafade-demo"};
    app.add_option("SONG", options.song, "A stereo sound file");
    app.add_option("OUT", options.output, "The file or folder for the result");
    app.add_option("--folder", options.folder, "Where results go when OUT is not given")
        ->capture_default_str();
    app.add_option("--vocafade", options.vocafade, "The vocafade command, when not beside this program");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    Demonstrate(options);
    return 0;
}

} // namespace
} // namespace vocafade

int main(int argc, char** argv) {
    try {
        return vocafade::Main(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vocafade-demo: %s\n", error.what());
        return 1;
    }
}
