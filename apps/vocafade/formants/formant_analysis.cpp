// SPDX-License-Identifier: MIT
#include "apps/vocafade/formants/formant_analysis.h"

#include "apps/vocafade/shared/audio_input.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/text.h"
#include "dsp/fft.h"
#include "dsp/formant_analyzer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fmt/format.h>
#include <numbers>

namespace vocafade::command {
namespace {

constexpr int kHighestRate = 768000;       // twice what any studio uses; memory grows with it
constexpr std::int64_t kPortion = 1 << 18; // samples of all channels read at once, about
constexpr double kFrameSeconds = 0.08;     // two periods of the lowest voice in a window's core
constexpr double kLifterSeconds = 0.002;   // parts formants 500 Hz apart; shorter than most pitch periods
constexpr int kFrames = 3;                 // overlapping by half, whose powers are averaged
constexpr float kFloor = 1e-7f;            // -140 dB; the analyser takes a zero for a one
constexpr double kLowestHz = 50.0;
constexpr double kHighestHz = 16000.0;
constexpr double kLeastProminence = 2.0; // dB above the higher of the two valleys
constexpr double kPeakRange = 60.0;      // dB below the highest peak
constexpr int kMostRounds = 100;
constexpr float kCloseEnough = 1.122f;  // 1 dB
constexpr double kLowestBandHz = 100.0; // below, basses and drums are in the middle too
constexpr double kSmallGap = 0.5;       // octave
constexpr double kBandRange = 50.0;     // dB below the highest peak
constexpr double kMiddleAbove = 3.0;    // dB

/// The first two channels as middle and side.
struct MiddleSide {
    std::vector<float> middle, side;
};

class Song {
  public:
    explicit Song(const std::string& path) {
        try {
            sound_ = OpenSound(path, info_);
        } catch (const Failure& failure) {
            throw Failure(Printable(path) + ": " + failure.what());
        }
        if (info_.samplerate > kHighestRate)
            throw Failure(
                fmt::format("{} is damaged: it claims a rate of {} Hz; formants are found up to {} Hz",
                            Printable(path), info_.samplerate, kHighestRate));
        if (info_.samplerate <= 0 || info_.channels <= 0 || info_.frames <= 0)
            throw Failure(Printable(path) + " holds no sound");
    }
    double rate() const { return info_.samplerate; }
    std::int64_t frames() const { return info_.frames; }

    /// `count` frames from `start`, silence outside the song.
    MiddleSide Read(std::int64_t start, std::int64_t count) {
        MiddleSide result{std::vector<float>(static_cast<std::size_t>(count)),
                          std::vector<float>(static_cast<std::size_t>(count))};
        const std::int64_t first = std::clamp<std::int64_t>(start, 0, info_.frames);
        const std::int64_t wanted = std::clamp<std::int64_t>(start + count - first, 0, info_.frames - first);
        if (wanted == 0 || sf_seek(sound_.get(), first, SEEK_SET) < 0) return result;
        const std::int64_t portion = std::max<std::int64_t>(1, kPortion / info_.channels);
        buffer_.resize(static_cast<std::size_t>(portion * info_.channels));
        for (std::int64_t done = 0; done < wanted;) {
            const std::int64_t got =
                sf_readf_float(sound_.get(), buffer_.data(), std::min(portion, wanted - done));
            if (got <= 0) break;
            Split(got, result, static_cast<std::size_t>(first - start + done));
            done += got;
        }
        return result;
    }

  private:
    /// Puts the middle and side of `count` frames that were read into `result` from `at` on.
    void Split(std::int64_t count, MiddleSide& result, std::size_t at) const {
        for (std::int64_t i = 0; i < count; ++i, ++at) {
            const float* frame = buffer_.data() + i * info_.channels;
            const float left = std::isfinite(frame[0]) ? frame[0] : 0.0f;
            const float other = info_.channels > 1 ? frame[1] : frame[0];
            const float right = std::isfinite(other) ? other : 0.0f;
            result.middle[at] = 0.5f * (left + right);
            result.side[at] = 0.5f * (left - right);
        }
    }

    SF_INFO info_{};
    SoundFile sound_;
    std::vector<float> buffer_;
};

/// Passes what voices live on, 200 Hz to 4 kHz, with the gentlest of slopes.
class VoiceBand {
  public:
    explicit VoiceBand(double rate) : low_(Coefficient(200.0, rate)), high_(Coefficient(4000.0, rate)) {}
    double Pass(double sample) {
        below_ += low_ * (sample - below_);
        passed_ += high_ * (sample - below_ - passed_);
        return passed_;
    }

  private:
    static double Coefficient(double hz, double rate) {
        return 1.0 - std::exp(-2.0 * std::numbers::pi * hz / rate);
    }
    double low_, high_;
    double below_ = 0.0, passed_ = 0.0;
};

/// The middle of the stretch of `length` frames in which the middle channel has the most energy where voices
/// are.
std::int64_t LoudestPlace(Song& song, std::int64_t length) {
    constexpr std::int64_t blocks = 64; // read at once
    VoiceBand band(song.rate());
    double most = -1.0;
    std::int64_t place = 0;
    for (std::int64_t start = 0; start < song.frames(); start += length * blocks) {
        const std::int64_t count = std::min(length * blocks, song.frames() - start);
        const MiddleSide block = song.Read(start, count);
        for (std::int64_t at = 0; at < count; at += length) {
            double energy = 0.0;
            for (std::int64_t i = at; i < std::min(at + length, count); ++i) {
                const double sample = band.Pass(block.middle[static_cast<std::size_t>(i)]);
                energy += sample * sample;
            }
            if (energy > most) {
                most = energy;
                place = start + at + length / 2;
            }
        }
    }
    return std::min(place, song.frames() - 1);
}

/// Magnitudes of all `points` bins, averaged over the frames in `samples`; a full-scale sine gives 1.
std::vector<float> Spectrum(const std::vector<float>& samples, int points) {
    const auto n = static_cast<std::size_t>(points);
    CFFT transform;
    transform.Init(points, true, true);
    std::vector<float> frame(2 * n), power(n), magnitudes(n);
    for (std::size_t start = 0; start + n <= samples.size(); start += n / 2) {
        for (std::size_t i = 0; i < n; ++i) {
            const double window =
                0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(i) / points);
            frame[2 * i] = static_cast<float>(window * samples[start + i]);
            frame[2 * i + 1] = 0.0f;
        }
        transform.ComplexFFT(frame.data());
        for (std::size_t k = 0; k < n; ++k) {
            power[k] += frame[2 * k] * frame[2 * k] + frame[2 * k + 1] * frame[2 * k + 1];
        }
    }
    for (std::size_t k = 0; k < n; ++k) {
        // A Hann window passes half of a sine, and each of its two bins has half of that.
        magnitudes[k] = std::max(std::sqrt(power[k] / kFrames) * 4.0f / static_cast<float>(points), kFloor);
    }
    return magnitudes;
}

std::vector<float> Decibels(const std::vector<float>& magnitudes) {
    std::vector<float> levels(magnitudes.size() / 2 + 1);
    for (std::size_t k = 0; k < levels.size(); ++k) {
        levels[k] = 20.0f * std::log10(std::max(magnitudes[k], kFloor));
    }
    return levels;
}

/// The envelope that rests on the harmonics. A smoothed logarithm runs through the middle between harmonics
/// and gaps; smoothing the larger of spectrum and envelope again and again lifts it to the harmonics' tops.
std::vector<float> Envelope(const std::vector<float>& magnitudes, int order) {
    CFormantAnalyzer analyzer;
    std::vector<float> raised = magnitudes, envelope(magnitudes.size());
    for (int round = 0; round < kMostRounds; ++round) {
        analyzer.Init(static_cast<int>(magnitudes.size())); // nothing of the round before
        analyzer.GetFormant(raised.data(), envelope.data(), order);
        float above = 1.0f; // the largest ratio of spectrum to envelope
        for (std::size_t k = 0; k < magnitudes.size(); ++k) {
            above = std::max(above, magnitudes[k] / envelope[k]);
            raised[k] = std::max(magnitudes[k], envelope[k]);
        }
        if (above < kCloseEnough) break;
    }
    return Decibels(envelope);
}

/// The index of the lowest point on the way from `peak` in steps of `step` before the curve rises above the
/// peak or ends.
std::size_t Valley(const std::vector<float>& curve, std::size_t peak, int step, std::size_t first,
                   std::size_t last) {
    std::size_t lowest = peak;
    for (std::size_t k = peak; k >= first && k <= last; k += static_cast<std::size_t>(step)) {
        if (curve[k] > curve[peak]) break;
        if (curve[k] < curve[lowest]) lowest = k;
        if (k == 0) break;
    }
    return lowest;
}

/// The next minimum from `peak` in steps of `step`.
std::size_t Foot(const std::vector<float>& curve, std::size_t peak, int step, std::size_t first,
                 std::size_t last) {
    std::size_t k = peak;
    while (k > first && k < last && curve[k + static_cast<std::size_t>(step)] <= curve[k]) {
        k += static_cast<std::size_t>(step);
    }
    return k;
}

void FindPeaks(FormantAnalysis& analysis) {
    const std::vector<float>& curve = analysis.middleEnvelope;
    const auto index = [&](double hz) {
        return std::clamp<std::size_t>(
            static_cast<std::size_t>(std::lround(hz * analysis.points / analysis.rate)), 1, curve.size() - 2);
    };
    const std::size_t first = index(kLowestHz), last = index(kHighestHz);
    for (std::size_t k = first; k <= last; ++k) {
        const double before = curve[k - 1], at = curve[k], after = curve[k + 1];
        if (at <= before || at <= after) continue;
        const double valley =
            std::max(curve[Valley(curve, k, -1, first, last)], curve[Valley(curve, k, 1, first, last)]);
        if (at - valley < kLeastProminence) continue;
        // The top of the parabola through the three points.
        const double shift = 0.5 * (before - after) / (before - 2.0 * at + after);
        analysis.peaks.push_back({(static_cast<double>(k) + shift) * analysis.rate / analysis.points,
                                  at - 0.25 * (before - after) * shift,
                                  analysis.Hz(Foot(curve, k, -1, first, last)),
                                  analysis.Hz(Foot(curve, k, 1, first, last))});
    }
    double highest = -1000.0;
    for (const FormantPeak& peak : analysis.peaks)
        highest = std::max(highest, peak.decibels);
    std::erase_if(analysis.peaks,
                  [highest](const FormantPeak& peak) { return peak.decibels < highest - kPeakRange; });
}

void FindBand(FormantAnalysis& analysis) {
    if (!analysis.stereo) return;
    struct Stretch {
        double from, to;
        double octaves() const { return std::log2(to / from); }
    };
    double highest = -1000.0;
    for (const FormantPeak& peak : analysis.peaks)
        highest = std::max(highest, peak.decibels);
    std::vector<Stretch> stretches;
    for (std::size_t k = 1; k + 1 < analysis.middleEnvelope.size(); ++k) {
        const double hz = analysis.Hz(k);
        if (hz < kLowestBandHz || hz > kHighestHz || analysis.middleEnvelope[k] < highest - kBandRange ||
            analysis.middleEnvelope[k] - analysis.sideEnvelope[k] < kMiddleAbove) {
            continue;
        }
        const double end = analysis.Hz(k + 1);
        if (!stretches.empty() && std::log2(hz / stretches.back().to) < kSmallGap) {
            stretches.back().to = end;
        } else {
            stretches.push_back({hz, end});
        }
    }
    std::erase_if(stretches, [&](const Stretch& stretch) {
        return std::none_of(analysis.peaks.begin(), analysis.peaks.end(), [&](const FormantPeak& peak) {
            return peak.hz >= stretch.from && peak.hz <= stretch.to;
        });
    });
    const auto widest =
        std::max_element(stretches.begin(), stretches.end(),
                         [](const Stretch& a, const Stretch& b) { return a.octaves() < b.octaves(); });
    if (widest == stretches.end()) return;
    analysis.bandFromHz = widest->from;
    analysis.bandToHz = widest->to;
}

std::int64_t ChoosePlace(Song& song, std::optional<double> seconds, std::int64_t length) {
    if (!seconds) return LoudestPlace(song, length);
    const double end = static_cast<double>(song.frames()) / song.rate();
    if (!(*seconds >= 0.0)) throw UsageError("--at cannot be before the beginning of the song");
    if (*seconds >= end)
        throw Failure(
            fmt::format("--at {:g} is behind the end: the song is {:.3f} seconds long", *seconds, end));
    return static_cast<std::int64_t>(*seconds * song.rate());
}

} // namespace

FormantAnalysis AnalyzeFormants(const std::string& path, std::optional<double> seconds,
                                std::optional<int> order) {
    Song song(path);
    FormantAnalysis analysis;
    analysis.rate = song.rate();
    analysis.points =
        static_cast<int>(std::bit_ceil(static_cast<unsigned>(std::max(song.rate() * kFrameSeconds, 64.0))));
    if (order && (*order < 1 || *order > analysis.points / 2))
        throw UsageError(fmt::format("--order {} is out of range: it goes from 1 to {} here", *order,
                                     analysis.points / 2));
    analysis.order = order.value_or(std::max(4, static_cast<int>(std::lround(song.rate() * kLifterSeconds))));

    const std::int64_t length = std::int64_t{analysis.points} * (kFrames + 1) / 2;
    const std::int64_t place = ChoosePlace(song, seconds, length);
    analysis.seconds = static_cast<double>(place) / song.rate();
    const MiddleSide sound = song.Read(place - length / 2, length);
    analysis.stereo =
        std::any_of(sound.side.begin(), sound.side.end(), [](float sample) { return sample != 0.0f; });

    const std::vector<float> middle = Spectrum(sound.middle, analysis.points);
    analysis.middle = Decibels(middle);
    analysis.middleEnvelope = Envelope(middle, analysis.order);
    if (analysis.stereo)
        analysis.sideEnvelope = Envelope(Spectrum(sound.side, analysis.points), analysis.order);
    FindPeaks(analysis);
    FindBand(analysis);
    return analysis;
}

} // namespace vocafade::command
