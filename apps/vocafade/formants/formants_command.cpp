// SPDX-License-Identifier: MIT
#include "apps/vocafade/formants/formants_command.h"

#include "apps/vocafade/formants/formant_analysis.h"
#include "apps/vocafade/formants/formant_chart.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/subcommand_line.h"
#include "apps/vocafade/shared/target_check.h"
#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fmt/format.h>

namespace vocafade::command {
namespace {

void PrintTable(const FormantAnalysis& analysis, const std::string& name) {
    Print("{} at {:.3f} s ({:.0f} Hz, {} points, order {})\n", name, analysis.seconds, analysis.rate,
          analysis.points, analysis.order);
    if (analysis.peaks.empty()) {
        Print("The envelope has no peaks here.\n");
        return;
    }
    Print("  {:>4}  {:>8}  {:>7}  {:>8}  {:>8}\n", "peak", "Hz", "dB", "from Hz", "to Hz");
    for (std::size_t i = 0; i < analysis.peaks.size(); ++i) {
        const FormantPeak& peak = analysis.peaks[i];
        Print("  {:>4}  {:>8.0f}  {:>7.1f}  {:>8.0f}  {:>8.0f}\n", i + 1, peak.hz, peak.decibels, peak.fromHz,
              peak.toHz);
    }
}

void PrintBand(const FormantAnalysis& analysis) {
    if (!analysis.stereo) {
        Print("Left and right are the same here: nothing sets the middle apart.\n");
    } else if (!analysis.bandFromHz) {
        Print("The middle is nowhere clearly louder than the sides here.\n");
    } else {
        const double from = std::clamp(std::floor(*analysis.bandFromHz / 10.0) * 10.0, 20.0, 20000.0);
        const double to = std::clamp(std::ceil(*analysis.bandToHz / 10.0) * 10.0, 20.0, 20000.0);
        Print("The middle is louder than the sides from {0:.0f} to {1:.0f} Hz: try --lofreq {0:.0f} "
              "--hifreq {1:.0f}\n",
              from, to);
    }
}

} // namespace

int RunFormants(int argumentCount, char** arguments) {
    std::string file, plot;
    std::optional<double> seconds;
    std::optional<int> order;
    CLI::App app(
        "Shows the spectral envelope of a moment of a song with its peaks, to find the band in which\n"
        "to remove a voice.",
        "vocafade formants");
    app.add_option("FILE", file, "a sound file")->required();
    app.add_option("--at", seconds, "the moment, from the beginning (default: where the middle is loudest)")
        ->type_name("SECONDS");
    app.add_option("--order", order,
                   "how fine the envelope is: cepstral coefficients (default: 2 ms of them)")
        ->type_name("N");
    app.add_option("--plot", plot, "draw a picture too")->type_name("OUT.png");
    if (ParseSubcommand(app, argumentCount, arguments)) return kExitFine;

    if (!plot.empty()) CheckPictureTarget(plot, file);
    const FormantAnalysis analysis = AnalyzeFormants(file, seconds, order);
    const std::string name = Printable(std::filesystem::path(file).filename().string());
    PrintTable(analysis, name);
    PrintBand(analysis);
    if (!plot.empty()) DrawFormants(analysis, name, plot);
    return kExitFine;
}

} // namespace vocafade::command
