// SPDX-License-Identifier: MIT
#include "apps/demo/score.h"

#include <cmath>

namespace vocafade {

const std::vector<Chord>& Chords() {
    static const Chord kD{38, {62, 66, 69, 74}};
    static const Chord kAOverCSharp{37, {61, 64, 69, 73}};
    static const Chord kBm{35, {62, 66, 71, 74}};
    static const Chord kG{31, {62, 67, 71, 74}};
    static const Chord kEm{40, {64, 67, 71, 76}};
    static const Chord kA{33, {61, 64, 69, 76}};
    static const std::vector<Chord> kChords{kD, kD, kAOverCSharp, kBm, kG, kD, kEm, kG, kA, kD};
    return kChords;
}

const std::vector<Syllable>& Melody() {
    // The band takes the middle from 400 Hz up; the tune stays above it, so that all of the voice is inside.
    static const std::vector<Syllable> kMelody{
        // Leave the light on low,
        {4.0, 0.9, 74, "L IY V"},
        {5.0, 0.5, 73, "DH AX"},
        {5.5, 1.0, 74, "L AA IH T"},
        {6.5, 0.5, 76, "AO N"},
        {7.0, 3.2, 69, "L OH UH"},
        // hear the river flow,
        {11.0, 1.0, 71, "H IY R"},
        {12.0, 0.5, 73, "DH AX"},
        {12.5, 0.75, 74, "R IH"},
        {13.25, 0.75, 73, "V ER"},
        {14.0, 4.2, 71, "F L OH UH"},
        // all the words we know
        {19.0, 1.0, 76, "AO L"},
        {20.0, 0.5, 76, "DH AX"},
        {20.5, 1.0, 78, "W ER D Z"},
        {21.5, 0.5, 76, "W IY"},
        {22.0, 4.0, 74, "N OH UH"},
        // will be music, going home.
        {27.0, 0.5, 76, "W IH L"},
        {27.5, 0.5, 74, "B IY"},
        {28.0, 0.75, 76, "M Y UW"},
        {28.75, 0.75, 78, "Z IH K"},
        {29.5, 1.25, 74, "G OH UH"},
        {30.75, 0.5, 73, "IH NG"},
        {31.25, 4.5, 74, "H OH UH M"},
    };
    return kMelody;
}

double SongSeconds() { return static_cast<double>(Chords().size()) * kBeatsPerBar * kSecondsPerBeat + 1.5; }

double NoteFrequency(double note) { return 440.0 * std::exp2((note - 69.0) / 12.0); }

} // namespace vocafade
