// SPDX-License-Identifier: MIT
#include "apps/demo/instruments.h"

#include "apps/demo/score.h"
#include "apps/demo/sound.h"

#include <algorithm>

namespace vocafade {
namespace {

/// Where an instrument stands: the gain of each channel.
struct Place {
    float left, right;
};

/// One stroke of an instrument in a bar: when, how long, which note of the chord, how loud.
struct Stroke {
    double beat, beats;
    int note;
    double level;
    double FrequencyIn(const Chord& chord) const { return NoteFrequency(chord.notes[note]); }
};

/// Plays a pattern in every bar, and its first stroke for the whole of the last bar. `sound(chord, stroke)`
/// makes what is heard: a function from the seconds since the stroke to a sample.
template <std::size_t count, typename Sound>
void Play(StereoSound& mix, int rate, Place place, const Stroke (&pattern)[count], Sound sound) {
    constexpr double kAttack = 0.004, kRelease = 0.2; // seconds, so that nothing clicks
    double bar = 0.0;                                 // in beats
    for (const Chord& chord : kChords) {
        const bool last = &chord == std::end(kChords) - 1;
        for (const Stroke& stroke : pattern) {
            if (last && &stroke != pattern) break;
            const double seconds = (last ? kBeatsPerBar : stroke.beats) * kSecondsPerBeat + kRelease;
            const auto start = static_cast<std::size_t>((bar + stroke.beat) * kSecondsPerBeat * rate);
            auto note = sound(chord, stroke);
            for (std::size_t at = start; at < mix.size(); ++at) {
                const double t = static_cast<double>(at - start) / rate;
                if (t >= seconds) break;
                const double shape = std::min({t / kAttack, (seconds - t) / kRelease, 1.0});
                const auto sample = static_cast<float>(stroke.level * shape * note(t));
                mix[at].left += sample * place.left;
                mix[at].right += sample * place.right;
            }
        }
        bar += kBeatsPerBar;
    }
}

/// A plucked string: a delay line that loses its brightness as it rings (Karplus and Strong's method).
auto Pluck(double frequency, int rate, Noise& noise) {
    const double period = rate / frequency - 0.5; // the averaging below adds half a sample
    std::vector<double> finger(static_cast<std::size_t>(period) + 1);
    OnePole soft(4200.0, rate);
    for (double& sample : finger)
        sample = soft.LowPass(noise.Next());
    // Plucked a fifth from the bridge: the overtones with a node there are missing.
    std::vector<double> string;
    for (std::size_t i = 0; i < finger.size(); ++i)
        string.push_back(finger[i] - finger[(i + finger.size() * 4 / 5) % finger.size()]);
    return
        [string, at = std::size_t{0}, last = 0.0, whole = 1.0 - period + std::floor(period)](double) mutable {
            double& now = string[at];
            at = (at + 1) % string.size();
            const double out = now + (string[at] - now) * whole;
            now = 0.9975 * 0.5 * (out + last);
            return last = out;
        };
}

} // namespace

void PlaySides(StereoSound& mix, int rate) {
    Noise noise{11};
    constexpr Stroke kGuitar[] = {{0.0, 3, 0, 0.30}, {0.5, 3, 2, 0.21}, {1.0, 3, 3, 0.24}, {1.5, 3, 1, 0.20},
                                  {2.0, 3, 2, 0.27}, {2.5, 3, 3, 0.21}, {3.0, 3, 1, 0.23}, {3.5, 3, 2, 0.20}};
    Play(mix, rate, {1.0f, 0.1f}, kGuitar, [&](const Chord& chord, const Stroke& stroke) {
        return Pluck(stroke.FrequencyIn(chord), rate, noise);
    });
    for (int note = 0; note < 4; ++note) {
        // An electric piano: two pairs of sines, one bending the other's phase.
        Play(mix, rate, {0.12f, 1.0f},
             {{0.02, 1.4, note, 0.075}, {1.5, 0.4, note, 0.055}, {2.5, 1.4, note, 0.060}},
             [](const Chord& chord, const Stroke& stroke) {
                 return [turn = kTurn * stroke.FrequencyIn(chord)](double t) {
                     const double body = std::sin(turn * t + 1.3 * std::exp(-t * 2.2) * std::sin(turn * t));
                     const double tine =
                         std::sin(2.0 * turn * t + 0.9 * std::exp(-t * 9.0) * std::sin(9.0 * turn * t));
                     return body * std::exp(-t * 1.6) + 0.35 * tine * std::exp(-t * 3.5);
                 };
             });
        // A pad: every other note on the other side, each of two voices a little out of tune.
        const Place side = note % 2 == 0 ? Place{1.0f, 0.0f} : Place{0.0f, 1.0f};
        for (const double detune : {-0.06, 0.05}) {
            Play(mix, rate, side, {{0.0, kBeatsPerBar, note, 0.020}}, [=](const Chord& chord, const Stroke&) {
                return [turn = kTurn * NoteFrequency(chord.notes[note] + detune), detune](double t) {
                    double sum = 0.0;
                    for (int overtone = 1; overtone <= 6; ++overtone)
                        sum += std::sin(overtone * (turn * t + 40.0 * detune)) / (overtone * overtone);
                    return sum * std::min(t / 0.35, 1.0);
                };
            });
        }
    }
    OnePole bright(6000.0, rate);
    constexpr Stroke kShaker[] = {{0.0, 0.1, 0, 0.06}, {0.5, 0.1, 0, 0.06}, {1.0, 0.1, 0, 0.16},
                                  {1.5, 0.1, 0, 0.06}, {2.0, 0.1, 0, 0.06}, {2.5, 0.1, 0, 0.06},
                                  {3.0, 0.1, 0, 0.16}, {3.5, 0.1, 0, 0.06}};
    Play(mix, rate, {0.35f, 1.0f}, kShaker, [&](const Chord&, const Stroke& stroke) {
        return [&, fall = stroke.level > 0.1 ? 22.0 : 45.0](double t) {
            return bright.HighPass(noise.Next()) * std::exp(-t * fall) * std::min(t / 0.012, 1.0);
        };
    });
}

void PlayMiddle(StereoSound& mix, int rate) {
    // A bass; its "note" is how far above the chord's it plays.
    Play(mix, rate, {1.0f, 1.0f},
         {{0.0, 1.4, 0, 0.26}, {1.5, 0.8, 0, 0.20}, {2.5, 0.8, 7, 0.20}, {3.5, 0.3, 0, 0.18}},
         [](const Chord& chord, const Stroke& stroke) {
             return [turn = kTurn * NoteFrequency(chord.bass + stroke.note)](double t) {
                 return std::exp(-t * 0.9) * std::min(t / 0.012, 1.0) *
                        (std::sin(turn * t) + 0.5 * std::exp(-t * 3.0) * std::sin(2.0 * turn * t) +
                         0.2 * std::exp(-t * 6.0) * std::sin(3.0 * turn * t));
             };
         });
    // A drum, whose pitch falls from 120 to 48 Hz; the phase is its integral.
    Play(mix, rate, {1.0f, 1.0f}, {{0.0, 0.4, 0, 0.38}, {1.5, 0.4, 0, 0.22}, {2.0, 0.4, 0, 0.38}},
         [](const Chord&, const Stroke&) {
             return [](double t) {
                 const double turns = 48.0 * t + 72.0 / 28.0 * (1.0 - std::exp(-t * 28.0));
                 return std::sin(kTurn * turns) * std::exp(-t * 9.0) * std::min(t / 0.006, 1.0);
             };
         });
}

} // namespace vocafade
