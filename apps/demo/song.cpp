// SPDX-License-Identifier: MIT
#include "apps/demo/song.h"

#include "apps/demo/instruments.h"
#include "apps/demo/sound.h"

#include <algorithm>
#include <array>

namespace vocafade {
namespace {

/// Adds a room that loses 60 dB in `seconds`: eight delay lines that feed each other (a feedback delay
/// network with a Householder matrix), every other one the left channel's and the right channel's.
void AddRoom(StereoSound& sound, int rate, double seconds, double level) {
    struct Line {
        std::vector<double> samples;
        double gain;
        OnePole damping;
        std::size_t at = 0;
    };
    std::vector<Line> lines;
    for (const double delay : {0.0297, 0.0353, 0.0371, 0.0411, 0.0437, 0.0473, 0.0531, 0.0571})
        lines.push_back({std::vector<double>(static_cast<std::size_t>(delay * rate)),
                         std::pow(10.0, -3.0 * delay / seconds), OnePole(4500.0, rate)});
    for (StereoSample& sample : sound) {
        std::array<double, 8> out{};
        double sum = 0.0;
        for (std::size_t i = 0; i < lines.size(); ++i)
            sum += out[i] = lines[i].damping.LowPass(lines[i].samples[lines[i].at]) * lines[i].gain;
        for (std::size_t i = 0; i < lines.size(); ++i) {
            Line& line = lines[i];
            line.samples[line.at] = out[i] - 0.25 * sum + (i % 2 == 0 ? sample.left : sample.right);
            line.at = (line.at + 1) % line.samples.size();
        }
        sample.left += static_cast<float>(level * (out[0] + out[2] - out[4] - out[6]));
        sample.right += static_cast<float>(level * (out[1] + out[3] - out[5] - out[7]));
    }
}

} // namespace

Song MakeSong(int rate) {
    constexpr float kPeak = 0.7f;
    Song song;
    song.rate = rate;
    for (const float sample : Sing(rate))
        song.voice.push_back({sample, sample});
    AddRoom(song.voice, rate, 1.1, 0.10);
    for (StereoSample& sample : song.voice)
        sample.right = sample.left;

    song.rest.resize(song.voice.size());
    PlaySides(song.rest, rate);
    AddRoom(song.rest, rate, 1.3, 0.08);
    PlayMiddle(song.rest, rate); // below the band and dry: its room would not stay in the middle

    float peak = 0.0f;
    for (std::size_t i = 0; i < song.voice.size(); ++i) {
        song.mix.push_back(
            {song.voice[i].left + song.rest[i].left, song.voice[i].right + song.rest[i].right});
        peak = std::max({peak, std::abs(song.mix[i].left), std::abs(song.mix[i].right)});
    }
    for (StereoSound* part : {&song.mix, &song.voice, &song.rest})
        for (StereoSample& sample : *part)
            sample = {sample.left * kPeak / peak, sample.right * kPeak / peak};
    return song;
}

} // namespace vocafade
