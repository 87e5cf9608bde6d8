// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace vocafade {

/// The lowest and the highest frequency of a spectrogram, in Hz.
struct FrequencyRange {
    double low;
    double high;
};

/// Loudness over time and frequency: `columns` steps of time from the beginning to the end, `rows` steps of
/// frequency, evenly spaced in octaves, the highest first.
struct Spectrogram {
    int columns = 0;
    int rows = 0;
    double seconds = 0.0;
    std::vector<float> decibels; ///< row after row; 0 dB is a full-scale sine in one channel

    float At(int column, int row) const {
        return decibels[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
                        static_cast<std::size_t>(column)];
    }
    float Loudest() const;
};

/// Reads the sound at `path` in constant memory. Throws std::runtime_error when it cannot be read.
Spectrogram MakeSpectrogram(const std::string& path, const FrequencyRange& range, int columns, int rows);

} // namespace vocafade
