// SPDX-License-Identifier: MIT
#include "apps/demo/instruments.h"

#include "apps/demo/filters.h"
#include "apps/demo/noise.h"
#include "apps/demo/score.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vocafade {
namespace {

constexpr double kTurn = 2.0 * std::numbers::pi;

/// Where an instrument stands: the gain of each channel.
struct Place {
    float left;
    float right;
};

std::size_t SampleAt(double beat, int rate) {
    return static_cast<std::size_t>(std::max(beat, 0.0) * kSecondsPerBeat * rate);
}

/// Adds one note to the mix: `sound(seconds since its start)` for `seconds`.
template <typename Sound>
void AddNote(StereoSound& mix, int rate, double beat, double seconds, Place place, Sound sound) {
    const std::size_t start = SampleAt(beat, rate);
    const std::size_t end = std::min(mix.size(), start + static_cast<std::size_t>(seconds * rate));
    for (std::size_t i = start; i < end; ++i) {
        const auto sample = static_cast<float>(sound(static_cast<double>(i - start) / rate));
        mix[i].left += sample * place.left;
        mix[i].right += sample * place.right;
    }
}

/// Rises within `attack` seconds and goes out within the last `release` of `length`.
double Envelope(double t, double length, double attack, double release) {
    return std::clamp(t / attack, 0.0, 1.0) * std::clamp((length - t) / release, 0.0, 1.0);
}

void Pluck(StereoSound& mix, int rate, double beat, double frequency, float level, std::uint32_t seed) {
    const double period = rate / frequency - 0.5; // the averaging below adds half a sample
    const auto whole = static_cast<std::size_t>(period);
    const auto fraction = static_cast<float>(period - static_cast<double>(whole));
    std::vector<float> string(whole + 1);
    Noise noise(seed);
    OnePole finger(4200.0, rate);
    for (float& sample : string)
        sample = finger.LowPass(noise.Next());
    // Plucked a fifth from the bridge: the overtones with a node there are missing.
    const std::size_t pick = string.size() / 5;
    std::vector<float> plucked(string.size());
    for (std::size_t i = 0; i < string.size(); ++i)
        plucked[i] = string[i] - string[(i + string.size() - pick) % string.size()];
    string = plucked;

    const double seconds = 2.2;
    std::size_t at = 0;
    float previous = 0.0F;
    AddNote(mix, rate, beat, seconds, {level, 0.10F * level}, [&](double t) {
        const std::size_t following = (at + 1) % string.size();
        const float out = string[at] + (string[following] - string[at]) * (1.0F - fraction);
        string[at] = 0.9975F * (0.5F * out + 0.5F * previous);
        previous = out;
        at = following;
        return static_cast<double>(out) * Envelope(t, seconds, 0.002, 0.4);
    });
}

} // namespace

void PlayGuitar(StereoSound& mix, int rate) {
    constexpr int kPattern[] = {0, 2, 3, 1, 2, 3, 1, 2};
    constexpr float kAccent[] = {1.0F, 0.7F, 0.8F, 0.65F, 0.9F, 0.7F, 0.75F, 0.65F};
    const std::vector<Chord>& chords = Chords();
    for (std::size_t bar = 0; bar < chords.size(); ++bar) {
        const bool last = bar + 1 == chords.size();
        for (int eighth = 0; eighth < (last ? 4 : 8); ++eighth) {
            const double beat = static_cast<double>(bar) * kBeatsPerBar + 0.5 * eighth;
            const int note = chords[bar].notes[static_cast<std::size_t>(kPattern[eighth])];
            Pluck(mix, rate, beat, NoteFrequency(note), 0.30F * kAccent[eighth],
                  static_cast<std::uint32_t>(bar * 8 + static_cast<std::size_t>(eighth) + 1));
        }
    }
}

void PlayElectricPiano(StereoSound& mix, int rate) {
    const auto strike = [&](double beat, double beats, int note, double level) {
        const double frequency = NoteFrequency(note);
        const double seconds = beats * kSecondsPerBeat + 0.25;
        AddNote(mix, rate, beat, seconds, {0.12F, 1.0F}, [=](double t) {
            const double body =
                std::sin(kTurn * frequency * t + 1.3 * std::exp(-t * 2.2) * std::sin(kTurn * frequency * t));
            const double tine = std::sin(kTurn * frequency * 2.0 * t +
                                         0.9 * std::exp(-t * 9.0) * std::sin(kTurn * frequency * 9.0 * t));
            return level * (body * std::exp(-t * 1.6) + 0.35 * tine * std::exp(-t * 3.5)) *
                   Envelope(t, seconds, 0.003, 0.2);
        });
    };
    const std::vector<Chord>& chords = Chords();
    for (std::size_t bar = 0; bar < chords.size(); ++bar) {
        const double beat = static_cast<double>(bar) * kBeatsPerBar;
        const bool last = bar + 1 == chords.size();
        for (const int note : chords[bar].notes) {
            strike(beat + 0.02, last ? 4.0 : 1.4, note, 0.075);
            if (last) continue;
            strike(beat + 1.5, 0.4, note, 0.055);
            strike(beat + 2.5, 1.4, note + (note < 67 ? 12 : 0), 0.060);
        }
    }
}

void PlayPad(StereoSound& mix, int rate) {
    constexpr double kDetune[2][2] = {{-0.06, 0.05}, {0.08, -0.04}}; // semitones: a channel, a voice
    const std::vector<Chord>& chords = Chords();
    for (std::size_t bar = 0; bar < chords.size(); ++bar) {
        const double seconds = kBeatsPerBar * kSecondsPerBeat + 0.5;
        for (std::size_t which = 0; which < chords[bar].notes.size(); ++which) {
            const int note = chords[bar].notes[which];
            {
                const int channel = which % 2 == 0 ? 0 : 1; // every other note on the other side
                for (int voice = 0; voice < 2; ++voice) {
                    const double frequency = NoteFrequency(note + kDetune[channel][voice]);
                    const double start = 0.37 * note + 0.61 * voice + 0.29 * channel; // no common phase
                    const Place place{channel == 0 ? 1.0F : 0.0F, channel == 0 ? 0.0F : 1.0F};
                    AddNote(mix, rate, static_cast<double>(bar) * kBeatsPerBar, seconds, place,
                            [=](double t) {
                                double sum = 0.0;
                                for (int overtone = 1; overtone <= 6; ++overtone)
                                    sum += std::sin(kTurn * (overtone * frequency * t + start * overtone)) /
                                           (overtone * overtone);
                                return 0.020 * sum * Envelope(t, seconds, 0.35, 0.5);
                            });
                }
            }
        }
    }
}

void PlayShaker(StereoSound& mix, int rate) {
    Noise noise(11);
    OnePole bright(6000.0, rate);
    const int eighths = 2 * kBeatsPerBar * static_cast<int>(Chords().size() - 1);
    for (int eighth = 0; eighth < eighths; ++eighth) {
        const double beat = 0.5 * eighth;
        const bool backbeat = eighth % 4 == 2;
        const double level = backbeat ? 0.16 : 0.06;
        const double fall = backbeat ? 22.0 : 45.0;
        AddNote(mix, rate, beat, 0.2, {0.35F, 1.0F}, [&](double t) {
            return level * bright.HighPass(noise.Next()) * std::exp(-t * fall) *
                   Envelope(t, 0.2, 0.012, 0.02);
        });
    }
}

void PlayBass(StereoSound& mix, int rate) {
    const auto pluck = [&](double beat, double beats, double note, double level) {
        const double frequency = NoteFrequency(note);
        const double seconds = beats * kSecondsPerBeat;
        AddNote(mix, rate, beat, seconds, {1.0F, 1.0F}, [=](double t) {
            const double tone = std::sin(kTurn * frequency * t) +
                                0.5 * std::exp(-t * 3.0) * std::sin(kTurn * 2.0 * frequency * t) +
                                0.2 * std::exp(-t * 6.0) * std::sin(kTurn * 3.0 * frequency * t);
            return level * tone * std::exp(-t * 0.9) * Envelope(t, seconds, 0.012, 0.06);
        });
    };
    const std::vector<Chord>& chords = Chords();
    for (std::size_t bar = 0; bar < chords.size(); ++bar) {
        const double beat = static_cast<double>(bar) * kBeatsPerBar;
        const int note = chords[bar].bass;
        if (bar + 1 == chords.size()) {
            pluck(beat, 4.0, note, 0.26);
            continue;
        }
        pluck(beat, 1.45, note, 0.26);
        pluck(beat + 1.5, 0.9, note, 0.20);
        pluck(beat + 2.5, 0.95, note + 7, 0.20);
        pluck(beat + 3.5, 0.45, note, 0.18);
    }
}

void PlayDrum(StereoSound& mix, int rate) {
    const int bars = static_cast<int>(Chords().size() - 1);
    for (int bar = 0; bar < bars; ++bar) {
        for (const double beat : {0.0, 1.5, 2.0}) {
            const double level = beat == 1.5 ? 0.22 : 0.38;
            AddNote(mix, rate, bar * kBeatsPerBar + beat, 0.4, {1.0F, 1.0F}, [=](double t) {
                // The pitch falls from 120 to 48 Hz; the phase is its integral.
                const double phase = 48.0 * t + 72.0 / 28.0 * (1.0 - std::exp(-t * 28.0));
                return level * std::sin(kTurn * phase) * std::exp(-t * 9.0) * Envelope(t, 0.4, 0.006, 0.08);
            });
        }
    }
}

} // namespace vocafade
