// SPDX-License-Identifier: MIT
#include "apps/demo/song.h"

#include "apps/demo/instruments.h"
#include "apps/demo/reverb.h"
#include "apps/demo/score.h"
#include "apps/demo/singer.h"

#include <algorithm>
#include <cmath>

namespace vocafade {
namespace {

float Peak(const StereoSound& sound) {
    float peak = 0.0F;
    for (const StereoSample& sample : sound)
        peak = std::max({peak, std::abs(sample.left), std::abs(sample.right)});
    return peak;
}

void Scale(StereoSound& sound, float gain) {
    for (StereoSample& sample : sound)
        sample = {sample.left * gain, sample.right * gain};
}

} // namespace

Song MakeSong(int rate) {
    constexpr float kVoiceLevel = 1.35F;
    constexpr float kPeak = 0.7F;

    std::vector<float> sung = Sing(rate);
    AddMonoRoom(sung, rate, 1.1, 0.10F);

    Song song;
    song.rate = rate;
    song.rest.resize(sung.size());
    PlayGuitar(song.rest, rate);
    PlayElectricPiano(song.rest, rate);
    PlayPad(song.rest, rate);
    PlayShaker(song.rest, rate);
    AddRoom(song.rest, rate, 1.3, 0.08F);
    PlayBass(song.rest, rate); // below the band and dry: its room would not stay in the middle
    PlayDrum(song.rest, rate);

    song.voice.resize(sung.size());
    song.mix.resize(sung.size());
    for (std::size_t i = 0; i < sung.size(); ++i) {
        const float voice = sung[i] * kVoiceLevel;
        song.voice[i] = {voice, voice};
        song.mix[i] = {voice + song.rest[i].left, voice + song.rest[i].right};
    }
    const float gain = kPeak / Peak(song.mix);
    for (StereoSound* part : {&song.mix, &song.voice, &song.rest})
        Scale(*part, gain);
    return song;
}

} // namespace vocafade
