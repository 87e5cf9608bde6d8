// SPDX-License-Identifier: MIT
// The demonstration's song: one bar of introduction, four lines of two bars, one bar to end.
#pragma once

#include <cmath>
#include <iterator>
#include <string_view>

namespace vocafade {

constexpr double kSecondsPerBeat = 60.0 / 92.0;
constexpr int kBeatsPerBar = 4;

/// One bar's harmony, as MIDI note numbers (69 is the A of 440 Hz).
struct Chord {
    int bass;
    int notes[4];
};

constexpr Chord kD{38, {62, 66, 69, 74}}, kAOverCSharp{37, {61, 64, 69, 73}}, kBm{35, {62, 66, 71, 74}},
    kG{31, {62, 67, 71, 74}}, kEm{40, {64, 67, 71, 76}}, kA{33, {61, 64, 69, 76}};
inline constexpr Chord kChords[] = {kD, kD, kAOverCSharp, kBm, kG, kD, kEm, kG, kA, kD};

/// A sung syllable: when, how long and how high, and what is pronounced, as phoneme names parted by spaces
/// (see singer.cpp). One of them is a vowel; it begins on the beat and takes the time that the others leave.
struct Syllable {
    double beat, beats;
    int note;
    std::string_view phonemes;
};

/// "Low moon on my lawn, in a lonely room, when you're all alone we all roam in morning rain." The band takes
/// the middle from 400 Hz up; the tune stays above it, so that all of the voice is inside.
inline constexpr Syllable kMelody[] = {
    {4.0, 0.9, 74, "L OH U"},    {5.0, 0.5, 73, "M UW N"},   {5.5, 1.0, 74, "AO N"},
    {6.5, 0.5, 76, "M AA I"},    {7.0, 3.2, 69, "L AO N"},   {11.0, 1.0, 71, "IH N"},
    {12.0, 0.5, 73, "AX"},       {12.5, 0.75, 74, "L OH N"}, {13.25, 0.75, 73, "L IY"},
    {14.0, 4.2, 71, "R UW M"},   {19.0, 1.0, 76, "W EH N"},  {20.0, 0.5, 76, "Y ER"},
    {20.5, 1.0, 78, "AO L"},     {21.5, 0.5, 76, "AX"},      {22.0, 4.0, 74, "L OH U N"},
    {27.0, 0.5, 76, "W IY"},     {27.5, 0.5, 74, "AO L"},    {28.0, 0.75, 76, "R OH U M"},
    {28.75, 0.75, 78, "IH N"},   {29.5, 1.25, 74, "M AO R"}, {30.75, 0.5, 73, "N IH NG"},
    {31.25, 4.5, 74, "R EH I N"}};

/// Seconds from the first beat to the last sound's fading.
constexpr double kSongSeconds = std::size(kChords) * kBeatsPerBar * kSecondsPerBeat + 1.5;

/// The frequency of a MIDI note number, in Hz; fractions are parts of a semitone.
inline double NoteFrequency(double note) { return 440.0 * std::exp2((note - 69.0) / 12.0); }

} // namespace vocafade
