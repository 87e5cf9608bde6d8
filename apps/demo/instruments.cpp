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
    std::size_t note;
    double level;
};

/// Plays a pattern in every bar, and its first stroke for the whole of the last bar. `sound(chord, stroke)`
/// makes what is heard: a function from the seconds since the stroke to a sample.
template <std::size_t count, typename Sound>
void Play(StereoSound& mix, int rate, Place place, const Stroke (&pattern)[count], Sound sound) {
    constexpr double kAttack = 0.004, kRelease = 0.2; // seconds, so that nothing clicks
    for (std::size_t bar = 0; bar < kChords.size(); ++bar) {
        const bool last = bar + 1 == kChords.size();
        for (std::size_t i = 0; i < (last ? 1 : count); ++i) {
            const double beat = static_cast<double>(bar) * kBeatsPerBar + pattern[i].beat;
            const double seconds = (last ? kBeatsPerBar : pattern[i].beats) * kSecondsPerBeat + kRelease;
            auto note = sound(kChords[bar], pattern[i]);
            const auto start = static_cast<std::size_t>(beat * kSecondsPerBeat * rate);
            for (std::size_t at = start; at < mix.size(); ++at) {
                const double t = static_cast<double>(at - start) / rate;
                if (t >= seconds) break;
                const double shape = std::min({t / kAttack, (seconds - t) / kRelease, 1.0});
                const auto sample = static_cast<float>(pattern[i].level * shape * note(t));
                mix[at].left += sample * place.left;
                mix[at].right += sample * place.right;
            }
        }
    }
}

/// A plucked string: a delay line that loses its brightness as it rings (Karplus and Strong's method).
class PluckedString {
  public:
    PluckedString(double frequency, int rate, Noise& noise) {
        const double period = rate / frequency - 0.5; // the averaging below adds half a sample
        std::vector<double> finger(static_cast<std::size_t>(period) + 1);
        fraction_ = period - std::floor(period);
        OnePole soft(4200.0, rate);
        for (double& sample : finger)
            sample = soft.LowPass(noise.Next());
        // Plucked a fifth from the bridge: the overtones with a node there are missing.
        for (std::size_t i = 0; i < finger.size(); ++i)
            string_.push_back(finger[i] - finger[(i + finger.size() * 4 / 5) % finger.size()]);
    }
    double Next() {
        const std::size_t following = (at_ + 1) % string_.size();
        const double out = string_[at_] + (string_[following] - string_[at_]) * (1.0 - fraction_);
        string_[at_] = 0.9975 * 0.5 * (out + previous_);
        at_ = following;
        return previous_ = out;
    }

  private:
    std::vector<double> string_;
    double fraction_;
    double previous_ = 0.0;
    std::size_t at_ = 0;
};

} // namespace

void PlaySides(StereoSound& mix, int rate) {
    Noise noise(11);
    constexpr Stroke kGuitar[] = {{0.0, 3, 0, 0.30}, {0.5, 3, 2, 0.21}, {1.0, 3, 3, 0.24}, {1.5, 3, 1, 0.20},
                                  {2.0, 3, 2, 0.27}, {2.5, 3, 3, 0.21}, {3.0, 3, 1, 0.23}, {3.5, 3, 2, 0.20}};
    Play(mix, rate, {1.0f, 0.1f}, kGuitar, [&](const Chord& chord, const Stroke& stroke) {
        return [string = PluckedString(NoteFrequency(chord.notes[stroke.note]), rate, noise)](
                   double) mutable { return string.Next(); };
    });
    for (std::size_t note = 0; note < 4; ++note) {
        // An electric piano: two pairs of sines, one bending the other's phase.
        const Stroke piano[] = {{0.02, 1.4, note, 0.075}, {1.5, 0.4, note, 0.055}, {2.5, 1.4, note, 0.060}};
        Play(mix, rate, {0.12f, 1.0f}, piano, [](const Chord& chord, const Stroke& stroke) {
            return [turn = kTurn * NoteFrequency(chord.notes[stroke.note])](double t) {
                const double body = std::sin(turn * t + 1.3 * std::exp(-t * 2.2) * std::sin(turn * t));
                const double tine =
                    std::sin(2.0 * turn * t + 0.9 * std::exp(-t * 9.0) * std::sin(9.0 * turn * t));
                return body * std::exp(-t * 1.6) + 0.35 * tine * std::exp(-t * 3.5);
            };
        });
        // A pad: every other note on the other side, each of two voices a little out of tune.
        const Stroke pad[] = {{0.0, kBeatsPerBar, note, 0.020}};
        const Place side = note % 2 == 0 ? Place{1.0f, 0.0f} : Place{0.0f, 1.0f};
        for (const double detune : {-0.06, 0.05}) {
            Play(mix, rate, side, pad, [detune](const Chord& chord, const Stroke& stroke) {
                const double turn = kTurn * NoteFrequency(chord.notes[stroke.note] + detune);
                return [turn, detune](double t) {
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
    constexpr Stroke kBass[] = {
        {0.0, 1.4, 0, 0.26}, {1.5, 0.8, 0, 0.20}, {2.5, 0.8, 7, 0.20}, {3.5, 0.3, 0, 0.18}};
    Play(mix, rate, {1.0f, 1.0f}, kBass, [](const Chord& chord, const Stroke& stroke) {
        const double turn = kTurn * NoteFrequency(chord.bass + static_cast<int>(stroke.note));
        return [turn](double t) {
            return std::exp(-t * 0.9) * std::min(t / 0.012, 1.0) *
                   (std::sin(turn * t) + 0.5 * std::exp(-t * 3.0) * std::sin(2.0 * turn * t) +
                    0.2 * std::exp(-t * 6.0) * std::sin(3.0 * turn * t));
        };
    });
    constexpr Stroke kDrum[] = {{0.0, 0.4, 0, 0.38}, {1.5, 0.4, 0, 0.22}, {2.0, 0.4, 0, 0.38}};
    Play(mix, rate, {1.0f, 1.0f}, kDrum, [](const Chord&, const Stroke&) {
        return [](double t) { // the pitch falls from 120 to 48 Hz; the phase is its integral
            const double turns = 48.0 * t + 72.0 / 28.0 * (1.0 - std::exp(-t * 28.0));
            return std::sin(kTurn * turns) * std::exp(-t * 9.0) * std::min(t / 0.006, 1.0);
        };
    });
}

} // namespace vocafade
