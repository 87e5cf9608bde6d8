// SPDX-License-Identifier: MIT
#include "tests/dsp/plain_model.h"

#include <algorithm>

namespace vocafade::test {
namespace {

constexpr int kFrame = 2048;
constexpr int kOverlap = 6;
constexpr int kModelHop = kFrame / kOverlap;
constexpr int kBins = kFrame / 2;
constexpr double kTurn = 2.0 * std::numbers::pi;

double Window(int i) { return 0.5 - 0.5 * std::cos(kTurn * i / kFrame); }

struct Voice {
    std::vector<double> phase = std::vector<double>(kBins);
    std::vector<double> phaseSum = std::vector<double>(kBins);
    std::vector<double> magnitude = std::vector<double>(kBins);
    std::vector<double> advance = std::vector<double>(kBins); ///< radians from this frame to the next

    void Analyse(const Samples& signal, int start) {
        std::vector<Complex> frame(kFrame);
        for (int i = 0; i < kFrame; ++i) {
            const int at = start + i; // what lies before the signal is silence
            frame[static_cast<std::size_t>(i)] =
                at >= 0 ? signal[static_cast<std::size_t>(at)] * Window(i) : 0.0;
        }
        const std::vector<Complex> spectrum = PlainTransform(frame, -1.0);
        for (std::size_t k = 0; k < kBins; ++k) {
            magnitude[k] = std::abs(spectrum[k]);
            const double angle = std::arg(spectrum[k]);
            const double expected = kTurn * static_cast<double>(k) * kModelHop / kFrame;
            const double deviation = std::remainder(angle - phase[k] - expected, kTurn);
            phase[k] = angle;
            // The frequency deviation is scaled by the overlap factor both ways, so it is the advance itself.
            advance[k] = expected + deviation;
        }
    }

    void Synthesise(int start, std::vector<double>& output) {
        std::vector<Complex> spectrum(kFrame);
        for (std::size_t k = 0; k < kBins; ++k) {
            phaseSum[k] = std::remainder(phaseSum[k] + advance[k], kTurn);
            phaseSum[k] += std::remainder(phase[k] - phaseSum[k], kTurn) / 16.0;
            spectrum[k] = magnitude[k] * std::polar(1.0, phaseSum[k]);
        }
        const std::vector<Complex> frame = PlainTransform(spectrum, 1.0);
        // The first hop of each frame comes too late to be heard; the rest is delayed by the latency.
        for (int i = kModelHop; i < kFrame; ++i) {
            const int at = start + i + kFrame - kModelHop;
            if (at < kFrame - kModelHop || at >= static_cast<int>(output.size())) continue;
            output[static_cast<std::size_t>(at)] +=
                frame[static_cast<std::size_t>(i)].real() / kFrame * 4.0 * Window(i) / kOverlap * 1.7;
        }
    }
};

} // namespace

// Recursive decimation in time.
std::vector<Complex> PlainTransform(const std::vector<Complex>& x, double sign) {
    const std::size_t half = x.size() / 2;
    if (half == 0) return x;
    std::vector<Complex> places[2]; // the even ones, the odd ones
    for (std::size_t i = 0; i < x.size(); ++i)
        places[i % 2].push_back(x[i]);
    const std::vector<Complex> even = PlainTransform(places[0], sign);
    const std::vector<Complex> odd = PlainTransform(places[1], sign);
    std::vector<Complex> result(x.size());
    for (std::size_t k = 0; k < half; ++k) {
        const double turn = sign * kTurn * static_cast<double>(k) / static_cast<double>(x.size());
        const Complex t = std::polar(1.0, turn) * odd[k];
        result[k] = even[k] + t;
        result[k + half] = even[k] - t;
    }
    return result;
}

StereoSamples PlainModel(const StereoSamples& input, const ModelSettings& settings) {
    const int count = static_cast<int>(input.left.size());
    const double balance = settings.position == 64 ? 1.0 : (127.0 - settings.position) / settings.position;
    Voice left;
    Voice right;
    std::vector<double> outL(input.left.size());
    std::vector<double> outR(input.left.size());
    for (int end = kModelHop; end <= count; end += kModelHop) {
        const int start = end - kFrame;
        left.Analyse(input.left, start);
        right.Analyse(input.right, start);
        for (std::size_t k = 0; k < kBins; ++k) {
            const double hertz = std::floor(static_cast<double>(k + 1) * 44100.0 / kFrame);
            if (hertz < settings.low || hertz > settings.high) continue;
            const double a = left.magnitude[k] * (balance > 1.0 ? 1.0 / balance : 1.0);
            const double c = right.magnitude[k] * std::min(balance, 1.0);
            left.magnitude[k] = a - c;
            right.magnitude[k] = c - a;
        }
        left.Synthesise(start, outL);
        right.Synthesise(start, outR);
    }
    return {Samples(outL.begin(), outL.end()), Samples(outR.begin(), outR.end())};
}

} // namespace vocafade::test
