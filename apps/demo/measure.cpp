// SPDX-License-Identifier: MIT
#include "apps/demo/measure.h"

#include "apps/demo/spectrum_stream.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace vocafade {
namespace {

constexpr double kStemDominance = 100.0;  // 20 dB in energy
constexpr double kMiddleDominance = 10.0; // 10 dB in energy

enum class Owner { voice, rest, nobody };

double Energy(const StereoSpectrum& spectrum, std::size_t bin) {
    return static_cast<double>(std::norm(spectrum.left[bin])) + std::norm(spectrum.right[bin]);
}

Owner OwnerByStems(double voice, double rest) {
    if (voice > 0.0 && voice >= kStemDominance * rest) return Owner::voice;
    if (rest > 0.0 && rest >= kStemDominance * voice) return Owner::rest;
    return Owner::nobody;
}

Owner OwnerByPlace(const StereoSpectrum& song, std::size_t bin, bool inBand) {
    const double sum = std::norm(song.left[bin] + song.right[bin]);
    const double difference = std::norm(song.left[bin] - song.right[bin]);
    return inBand && sum > 0.0 && sum >= kMiddleDominance * difference ? Owner::voice : Owner::rest;
}

/// Energies of a set of cells.
struct Sums {
    double before = 0.0;
    double after = 0.0;
    double kept = 0.0; ///< per cell the smaller of both

    void Add(double cellBefore, double cellAfter) {
        before += cellBefore;
        after += cellAfter;
        kept += std::min(cellBefore, cellAfter);
    }
    Sums operator+(const Sums& other) const {
        return {before + other.before, after + other.after, kept + other.kept};
    }
    double LossDb() const {
        constexpr double kSilence = 1e-12; // nothing falls by more than 120 dB: 24 bits hold no more
        return before > 0.0 ? -10.0 * std::log10(std::max(after / before, kSilence)) : 0.0;
    }
    double Kept() const { return before > 0.0 ? kept / before : 0.0; }
};

void RequireSameRate(const SpectrumStream& a, const SpectrumStream& b) {
    if (a.reader().rate() != b.reader().rate())
        throw std::runtime_error("sounds of different sample rates cannot be compared");
}

} // namespace

double PassThroughGain() {
    constexpr int kSize = 2048;
    constexpr int kHop = kSize / 6;
    double sum = 0.0;
    for (int i = kHop; i < kSize; ++i) { // the first hop of every frame never reaches the output
        const double window = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * i / kSize);
        sum += window * window;
    }
    const double engine = sum / kHop * 0.5 * (4.0 / 6.0) * 1.7;
    const double outputLevel = (1.0 - 0.001) / (2.0 - 0.001);
    return engine * outputLevel;
}

Measurement Measure(const std::string& before, const std::string& after, const Band& band, double gain,
                    const std::optional<Stems>& stems) {
    const int size = FrameSizeFor(StereoReader(before).rate());
    SpectrumStream song(before, size, size / 2);
    SpectrumStream rendering(after, size, size / 2);
    RequireSameRate(song, rendering);
    std::unique_ptr<SpectrumStream> voiceStem;
    std::unique_ptr<SpectrumStream> restStem;
    if (stems) {
        voiceStem = std::make_unique<SpectrumStream>(stems->voice, size, size / 2);
        restStem = std::make_unique<SpectrumStream>(stems->rest, size, size / 2);
        RequireSameRate(song, *voiceStem);
        RequireSameRate(song, *restStem);
    }

    Sums voice[2]; // outside the band, inside it
    Sums rest[2];
    StereoSpectrum songCell;
    StereoSpectrum renderedCell;
    StereoSpectrum voiceCell;
    StereoSpectrum restCell;
    const double power = 1.0 / (gain * gain);
    while (song.Next(songCell) && rendering.Next(renderedCell)) {
        if (stems && !(voiceStem->Next(voiceCell) && restStem->Next(restCell))) break;
        for (std::size_t bin = 0; bin < songCell.left.size(); ++bin) {
            const double frequency = song.Frequency(static_cast<int>(bin));
            const bool inBand = band.lowHz <= frequency && frequency <= band.highHz;
            const Owner owner = stems ? OwnerByStems(Energy(voiceCell, bin), Energy(restCell, bin))
                                      : OwnerByPlace(songCell, bin, inBand);
            if (owner == Owner::nobody) continue;
            Sums& sums = (owner == Owner::voice ? voice : rest)[inBand ? 1 : 0];
            sums.Add(Energy(songCell, bin), Energy(renderedCell, bin) * power);
        }
    }

    Measurement result;
    result.voiceLossDb = voice[1].LossDb();
    result.voiceLossOverallDb = (voice[0] + voice[1]).LossDb();
    result.restKept = (rest[0] + rest[1]).Kept();
    result.restKeptInBand = rest[1].Kept();
    result.restKeptOutside = rest[0].Kept();
    result.hasVoice = voice[1].before > 0.0;
    result.hasRest = rest[0].before + rest[1].before > 0.0;
    return result;
}

} // namespace vocafade
