// SPDX-License-Identifier: MIT
#include "apps/demo/spectrogram.h"

#include "apps/demo/spectrum_stream.h"

#include <algorithm>
#include <cmath>

namespace vocafade {
namespace {

constexpr double kSilence = 1e-12;

/// The power between two edges given as fractional bin numbers: the largest inside, or, where no bin lies
/// inside, what lies between the neighbours. (The largest, not the sum: a tone then keeps its level at every
/// height of the picture.)
double PowerBetween(const std::vector<double>& power, double from, double to) {
    const double last = static_cast<double>(power.size()) - 1.0;
    from = std::clamp(from, 0.0, last);
    to = std::clamp(to, from, last);
    const double first = std::ceil(from);
    if (first <= to) {
        const auto begin = power.begin() + static_cast<std::ptrdiff_t>(first);
        return *std::max_element(begin, power.begin() + static_cast<std::ptrdiff_t>(std::floor(to)) + 1);
    }
    const auto below = static_cast<std::size_t>(from);
    const double share = 0.5 * (from + to) - static_cast<double>(below);
    const double low = std::log(std::max(power[below], kSilence));
    const double high = std::log(std::max(power[std::min(below + 1, power.size() - 1)], kSilence));
    return std::exp(low + (high - low) * share);
}

} // namespace

float Spectrogram::Loudest() const {
    return decibels.empty() ? 0.0f : *std::max_element(decibels.begin(), decibels.end());
}

Spectrogram MakeSpectrogram(const std::string& path, const FrequencyRange& range, int columns, int rows) {
    const StereoReader file(path);
    const int size = FrameSizeFor(file.rate());
    const auto perColumn = static_cast<double>(file.length()) / columns;
    const int hop = std::clamp(static_cast<int>(perColumn / 2.0), size / 16, size);

    SpectrumStream stream(path, size, hop);
    StereoSpectrum spectrum;
    std::vector<double> power(static_cast<std::size_t>(stream.bins()));
    std::vector<double> sums(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows));
    std::vector<int> counts(static_cast<std::size_t>(columns));
    for (std::int64_t frame = 0; stream.Next(spectrum); ++frame) {
        for (std::size_t bin = 0; bin < power.size(); ++bin)
            power[bin] = 0.5 * (static_cast<double>(std::norm(spectrum.left[bin])) +
                                static_cast<double>(std::norm(spectrum.right[bin])));
        const double middle = static_cast<double>(frame * hop) + 0.5 * size;
        const int column = std::clamp(static_cast<int>(middle / perColumn), 0, columns - 1);
        ++counts[static_cast<std::size_t>(column)];
        for (int row = 0; row < rows; ++row) {
            const auto frequency = [&](double edge) {
                return range.high * std::pow(range.low / range.high, edge / rows);
            };
            const double perHz = static_cast<double>(size) / file.rate();
            sums[static_cast<std::size_t>(row) * static_cast<std::size_t>(columns) +
                 static_cast<std::size_t>(column)] +=
                PowerBetween(power, frequency(row + 1) * perHz, frequency(row) * perHz);
        }
    }

    Spectrogram result;
    result.columns = columns;
    result.rows = rows;
    result.seconds = static_cast<double>(file.length()) / file.rate();
    result.decibels.resize(sums.size());
    int source = 0; // columns that no frame's middle fell into show their neighbour
    while (source + 1 < columns && counts[static_cast<std::size_t>(source)] == 0)
        ++source;
    for (int column = 0; column < columns; ++column) {
        if (counts[static_cast<std::size_t>(column)] > 0) source = column;
        const int count = std::max(counts[static_cast<std::size_t>(source)], 1);
        for (int row = 0; row < rows; ++row) {
            const std::size_t line = static_cast<std::size_t>(row) * static_cast<std::size_t>(columns);
            const double mean = sums[line + static_cast<std::size_t>(source)] / count;
            result.decibels[line + static_cast<std::size_t>(column)] =
                static_cast<float>(10.0 * std::log10(std::max(mean, kSilence)));
        }
    }
    return result;
}

} // namespace vocafade
