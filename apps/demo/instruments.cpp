// SPDX-License-Identifier: MIT
#include "apps/demo/song.h"
#include "apps/demo/sound.h"

#include <algorithm>
#include <span>

namespace vocafade {
namespace {

/// Each bar's harmony as MIDI note numbers, the bass and then the chord: D D A/C# Bm G D Em G A D. One bar of
/// introduction, four lines of two bars, one bar to end.
constexpr int kBars[][5] = {{38, 62, 66, 69, 74}, {38, 62, 66, 69, 74}, {37, 61, 64, 69, 73},
                            {35, 62, 66, 71, 74}, {31, 62, 67, 71, 74}, {38, 62, 66, 69, 74},
                            {40, 64, 67, 71, 76}, {31, 62, 67, 71, 74}, {33, 61, 64, 69, 76},
                            {38, 62, 66, 69, 74}};

/// A stroke of an instrument in every bar: when, how long, which notes of the chord (0 is its bass), how loud,
/// and how many semitones above those notes.
struct Stroke {
    double beat, beats;
    std::string_view notes;
    double level;
    double above = 0.0;
};

constexpr Stroke kGuitar[] = {{0.0, 3, "1", 0.30}, {0.5, 3, "3", 0.21}, {1.0, 3, "4", 0.24},
                              {1.5, 3, "2", 0.20}, {2.0, 3, "3", 0.27}, {2.5, 3, "4", 0.21},
                              {3.0, 3, "2", 0.23}, {3.5, 3, "3", 0.20}};
constexpr Stroke kPiano[] = {
    {0.02, 1.4, "1234", 0.075}, {1.5, 0.4, "1234", 0.055}, {2.5, 1.4, "1234", 0.060}};
// Each note of the pad has two voices, a little out of tune.
constexpr Stroke kPadLeft[] = {{0.0, 4, "13", 0.020, -0.06}, {0.0, 4, "13", 0.020, 0.05}};
constexpr Stroke kPadRight[] = {{0.0, 4, "24", 0.020, -0.06}, {0.0, 4, "24", 0.020, 0.05}};
constexpr Stroke kShaker[] = {{0.0, 0.1, "0", 0.06}, {0.5, 0.1, "0", 0.06}, {1.0, 0.1, "0", 0.16},
                              {1.5, 0.1, "0", 0.06}, {2.0, 0.1, "0", 0.06}, {2.5, 0.1, "0", 0.06},
                              {3.0, 0.1, "0", 0.16}, {3.5, 0.1, "0", 0.06}};
constexpr Stroke kBass[] = {
    {0.0, 1.4, "0", 0.26}, {1.5, 0.8, "0", 0.20}, {2.5, 0.8, "0", 0.20, 7.0}, {3.5, 0.3, "0", 0.18}};
constexpr Stroke kDrum[] = {{0.0, 0.4, "0", 0.38}, {1.5, 0.4, "0", 0.22}, {2.0, 0.4, "0", 0.38}};

/// Plays every bar's strokes; of the last bar those of the first beat only, for the whole bar. `place` is the
/// gain of each channel; a note begins in `attack` seconds and fades by exp(-fall t). `sound` gives a sample
/// by its note's frequency in Hz and the seconds t since the stroke.
template <typename Sound>
void Play(StereoSound& mix, int rate, std::span<const Stroke> strokes, StereoSample place, double attack,
          double fall, Sound sound) {
    constexpr double kBar = 4.0, kRelease = 0.2; // beats; seconds in which a note ends
    for (double start = 0.0; const auto& chord : kBars) {
        const bool last = &chord == std::end(kBars) - 1;
        for (const Stroke& stroke : strokes) {
            if (last && stroke.beat > 0.1) continue;
            const double length = (last ? kBar : stroke.beats) * kSecondsPerBeat + kRelease;
            const auto first = static_cast<std::size_t>((start + stroke.beat) * kSecondsPerBeat * rate);
            for (const char note : stroke.notes) {
                const double hz = NoteFrequency(chord[note - '0'] + stroke.above);
                for (std::size_t at = first; at < mix.size(); ++at) {
                    const double t = static_cast<double>(at - first) / rate;
                    if (t >= length) break;
                    const double shape = std::min({t / attack, (length - t) / kRelease, 1.0});
                    const double level = stroke.level * shape * std::exp(-fall * t);
                    const auto sample = static_cast<float>(level * sound(hz, t));
                    mix[at].left += sample * place.left;
                    mix[at].right += sample * place.right;
                }
            }
        }
        start += kBar;
    }
}

} // namespace

void PlaySides(StereoSound& mix, int rate) {
    // A plucked string: a delay line that loses its brightness as it rings (Karplus and Strong's method).
    std::vector<double> string;
    double between = 0.0, last = 0.0;
    std::size_t now = 0;
    Play(mix, rate, kGuitar, {1.0f, 0.1f}, 0.004, 0.0, [&](double hz, double t) {
        if (t == 0.0) {
            const double period = rate / hz - 0.5; // the averaging below adds half a sample
            between = 1.0 - period + std::floor(period);
            // Plucked a fifth from the bridge: the overtones with a node there are missing.
            string.assign(static_cast<std::size_t>(period) + 1, 0.0);
            std::fill_n(string.begin(), rate / 9000, 1.4);
            std::fill_n(&string[string.size() / 5], rate / 9000, -1.4);
            now = 0;
            last = 0.0;
        }
        const std::size_t next = (now + 1) % string.size();
        const double out = string[now] + (string[next] - string[now]) * between;
        string[now] = 0.9975 * 0.5 * (out + last);
        now = next;
        return last = out;
    });
    // An electric piano: two pairs of sines, one bending the other's phase.
    Play(mix, rate, kPiano, {0.12f, 1.0f}, 0.004, 1.6, [](double hz, double t) {
        const double turn = kTurn * hz * t;
        const double tine = std::sin(2.0 * turn + 0.9 * std::exp(-9.0 * t) * std::sin(9.0 * turn));
        return std::sin(turn + 1.3 * std::exp(-2.2 * t) * std::sin(turn)) + 0.35 * std::exp(-1.9 * t) * tine;
    });
    const auto pad = [](double hz, double t) {
        double sum = 0.0;
        for (int overtone = 1; overtone <= 6; ++overtone)
            sum += std::sin(overtone * kTurn * hz * t) / (overtone * overtone);
        return sum;
    };
    Play(mix, rate, kPadLeft, {1.0f, 0.0f}, 0.35, 0.0, pad);
    Play(mix, rate, kPadRight, {0.0f, 1.0f}, 0.35, 0.0, pad);
    std::minstd_rand random;
    OnePole bright(6000.0, rate);
    Play(mix, rate, kShaker, {0.35f, 1.0f}, 0.012, 30.0,
         [&](double, double) { return bright.HighPass(Noise(random)); });
}

void PlayMiddle(StereoSound& mix, int rate) {
    Play(mix, rate, kBass, {1.0f, 1.0f}, 0.012, 0.9, [](double hz, double t) {
        const double turn = kTurn * hz * t;
        return std::sin(turn) + 0.5 * std::exp(-3.0 * t) * std::sin(2.0 * turn) +
               0.2 * std::exp(-6.0 * t) * std::sin(3.0 * turn);
    });
    // The drum's pitch falls from 120 to 48 Hz; the phase is its integral.
    Play(mix, rate, kDrum, {1.0f, 1.0f}, 0.006, 9.0, [](double, double t) {
        return std::sin(kTurn * (48.0 * t + 72.0 / 28.0 * (1.0 - std::exp(-28.0 * t))));
    });
}

} // namespace vocafade
