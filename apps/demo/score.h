// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

namespace vocafade {

constexpr double kBeatsPerMinute = 92.0;
constexpr double kSecondsPerBeat = 60.0 / kBeatsPerMinute;
constexpr int kBeatsPerBar = 4;

/// One bar's harmony, as MIDI note numbers (69 is the A of 440 Hz).
struct Chord {
    int bass;
    std::array<int, 4> notes;
};

/// A sung syllable: when, how long and how high, and what is pronounced, as phoneme names parted by spaces
/// (see singer.cpp); the vowel takes the time that the consonants leave.
struct Syllable {
    double beat;
    double beats;
    int note;
    std::string_view phonemes;
};

/// The song: one bar of introduction, four lines of two bars, one bar to end.
const std::vector<Chord>& Chords();
/// The melody with its words, in order of time.
const std::vector<Syllable>& Melody();
/// Seconds from the first beat to the last sound's fading.
double SongSeconds();
/// The frequency of a MIDI note number, in Hz; fractions are parts of a semitone.
double NoteFrequency(double note);

} // namespace vocafade
