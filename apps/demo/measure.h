// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace vocafade {

/// The band in which the effect takes away the middle, in Hz, both ends included.
struct Band {
    double lowHz = 400.0;
    double highHz = 9000.0;
};

/// The parts that a song was mixed from, aligned with it to the sample.
struct Stems {
    std::string voice;
    std::string rest;
};

/// What a rendering has done to a song.
///
/// Both sounds are cut into frames of about 93 ms, half overlapping; each frequency of each frame is a cell,
/// and a cell's energy is that of both channels together. Every cell of the rendering is first divided by the
/// effect's own pass-through gain, so that "unchanged" reads 0 dB and 100 %.
///
/// Voice and rest are told apart cell by cell:
///  - with the stems, a cell is the voice's where the voice is at least 20 dB above the rest, and the rest's
///    the other way round; cells where both sound are nobody's. The 20 dB are there because what is left in a
///    voice cell may be the rest that shone through; a deeper cut than the stems differ by could not be seen.
///  - without them nobody can know what is sung. A cell is then the middle's where the difference of the
///    channels is at least 10 dB below their sum (only inside the band: below it the middle is bass and
///    drum), and everything else is the rest's.
struct Measurement {
    /// How far the voice's (the middle's) cells inside the band have fallen, in dB; positive is quieter.
    double voiceLossDb = 0.0;
    /// The same over all frequencies, with what the band leaves alone. Without stems: equal to `voiceLossDb`.
    double voiceLossOverallDb = 0.0;
    /// The share of the rest's energy that is still there, 0 to 1. A cell counts for at most what it had, so
    /// that what grew in one place does not hide what is missing in another.
    double restKept = 0.0;
    /// The same for the cells inside the band alone, and for those outside.
    double restKeptInBand = 0.0;
    double restKeptOutside = 0.0;
    /// True when the voice (the middle), or the rest, had any cell at all.
    bool hasVoice = false;
    bool hasRest = false;
};

/// The amplitude by which the effect passes on what it does not remove, at its factory levels: about 0.634,
/// or -4.0 dB. Two factors make it up:
///  - the engine's, 1.269: frames of 2048 samples under a Hann window, twice, a hop of a sixth, five frames
///    of six reaching the output, half of the spectrum put together again, times 4 / 6 and 1.7; averaged over
///    a hop;
///  - the Output level's: the engine is given it as its place between the least gain (0.001) and the greatest
///    (2.0), which for 0 dB, a gain of 1, is 0.49975.
double PassThroughGain();

/// Compares a song with its rendering. Files of different length are compared as far as both go. Throws
/// std::runtime_error when a file cannot be read or their rates differ.
Measurement Measure(const std::string& before, const std::string& after, const Band& band, double gain,
                    const std::optional<Stems>& stems);

} // namespace vocafade
