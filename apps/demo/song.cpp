// SPDX-License-Identifier: MIT
#include "apps/demo/song.h"

#include "apps/demo/sound.h"

#include <algorithm>

namespace vocafade {
namespace {

/// Adds a room that loses 60 dB in `seconds`: eight delay lines that feed each other (a feedback delay
/// network with a Householder matrix), every other one the left channel's and the right channel's.
void AddRoom(StereoSound& sound, int rate, double seconds, double level) {
    struct Line {
        std::vector<double> samples;
        double gain;
        OnePole damping;
    };
    std::vector<Line> lines;
    for (const double delay : {0.0297, 0.0353, 0.0371, 0.0411, 0.0437, 0.0473, 0.0531, 0.0571})
        lines.push_back({std::vector<double>(static_cast<std::size_t>(delay * rate)),
                         std::pow(10.0, -3.0 * delay / seconds), OnePole(4500.0, rate)});
    for (std::size_t now = 0; now < sound.size(); ++now) {
        double out[8];
        double sum = 0.0;
        for (std::size_t i = 0; i < 8; ++i) {
            Line& line = lines[i];
            sum += out[i] = line.gain * line.damping.LowPass(line.samples[now % line.samples.size()]);
        }
        StereoSample& sample = sound[now];
        for (std::size_t i = 0; i < 8; ++i)
            lines[i].samples[now % lines[i].samples.size()] =
                out[i] - 0.25 * sum + (i % 2 == 0 ? sample.left : sample.right);
        sample.left += static_cast<float>(level * (out[0] + out[2] - out[4] - out[6]));
        sample.right += static_cast<float>(level * (out[1] + out[3] - out[5] - out[7]));
    }
}

} // namespace

Song MakeSong(int rate) {
    Song song{{}, Sing(rate), {}, rate};
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
    const float gain = 0.7f / peak;
    for (StereoSound* part : {&song.mix, &song.voice, &song.rest})
        for (StereoSample& sample : *part)
            sample = {sample.left * gain, sample.right * gain};
    return song;
}

} // namespace vocafade
