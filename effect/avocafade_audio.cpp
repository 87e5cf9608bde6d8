// SPDX-License-Identifier: MIT
#include "base/float_mode.h"
#include "dsp/kernels/level.h"
#include "effect/avocafade.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vocafade {
namespace {

/// Largest block that work arrays are kept for; a longer one is processed in parts.
constexpr std::int32_t kLargestPreparedBlock = 65536;

/// Factor that shows a level of `db` on a meter. A boost is not shown.
float MeterGain(float db) {
    const float gain = static_cast<float>(std::exp2(db / 6.0));
    return gain > 0.001f ? std::min(gain, 1.0f) : 0.001f; // not-a-number gives the lowest
}

float Peak(const float* samples, std::int32_t count, float gain) {
    return kernels::ChosenLevel().peak(samples, count, gain);
}

} // namespace

void AVocafade::open() {
    setProgram(0);
    CopyPrograms(initial_, programs_);
    LoadBank();
}

void AVocafade::setSampleRate(float rate) {
    if (!(rate >= 1.0f && rate < 4294967040.0f)) return; // no stream has such a rate
    AudioEffectX::setSampleRate(rate);
    tWAVEFORMATEX& format = mediaType_.format;
    format.wFormatTag = kWaveFormatIeeeFloat;
    format.nChannels = 2;
    format.nSamplesPerSec = static_cast<std::uint32_t>(rate);
    format.nAvgBytesPerSec = format.nSamplesPerSec * 8;
    format.nBlockAlign = 8;
    format.wBitsPerSample = 32;
    format.cbSize = 0;
    engine_.SetMediaType(&format);
}

void AVocafade::setBlockSize(std::int32_t samples) {
    if (samples < 1) return;
    AudioEffectX::setBlockSize(samples);
    mediaType_.blockSize = static_cast<std::uint32_t>(samples);
    PrepareBlocks(samples);
    engine_.SetMediaType(&mediaType_.format);
}

void AVocafade::PrepareBlocks(std::int32_t samples) {
    const auto count = static_cast<std::size_t>(std::min(samples, kLargestPreparedBlock));
    engine_.SetSampleSize(static_cast<unsigned>(count));
    for (std::vector<float>& buffer : doubleBuffers_) {
        if (count <= buffer.size()) continue;
        std::vector<float> larger(count);
        const CSingleLock hold(audioLock_); // only for the exchange; the old one is freed after it
        buffer.swap(larger);
    }
}

void AVocafade::resume() {
    engine_.set_Activate(true);
    SetOnOff(1.0f);
    TellListener(kParameterOnOff, 1.0f);
    AudioEffectX::resume();
}

void AVocafade::suspend() {
    engine_.set_Activate(false);
    SetOnOff(0.0f);
    engine_.SetMediaType(&mediaType_.format);
    TellListener(kParameterOnOff, 0.0f);
}

std::int32_t AVocafade::startProcess() {
    engine_.SetMediaType(&mediaType_.format);
    return 0;
}

void AVocafade::processReplacing(float** inputs, float** outputs, std::int32_t sampleFrames) {
    const AudioFloatMode mode;
    const std::int32_t count = std::max(sampleFrames, 0);
    MeasureAndCopy(inputs, outputs, count); // the editor can read the meters between the two
    ProcessAndMeasure(inputs, outputs, count);
}

void AVocafade::MeasureAndCopy(float** inputs, float** outputs, std::int32_t sampleFrames) {
    const CSingleLock hold(audioLock_);
    ++processCounter_;
    const float gain = MeterGain(inputDb_);
    meters_ = {};
    if (sampleFrames == 0) return; // a host may then pass no buffers at all
    meters_.inL = Peak(inputs[0], sampleFrames, gain);
    meters_.inR = Peak(inputs[1], sampleFrames, gain);
    const auto bytes = static_cast<std::size_t>(sampleFrames) * sizeof(float);
    std::memmove(outputs[0], inputs[0], bytes);
    std::memmove(outputs[1], inputs[1], bytes);
}

void AVocafade::ProcessAndMeasure(float** inputs, float** outputs, std::int32_t sampleFrames) {
    const CSingleLock hold(audioLock_);
    const float onOff = onOff_;
    if (onOff == 0.0f) {
        meters_.outL = meters_.inL;
        meters_.outR = meters_.inR;
        return;
    }
    if (sampleFrames == 0) return;
    int produced = 0;
    engine_.Transform(inputs, sampleFrames, outputs, &produced);
    const float gain = MeterGain(outputDb_);
    meters_.outL = Peak(outputs[0], sampleFrames, gain);
    meters_.outR = Peak(outputs[1], sampleFrames, gain);
}

void AVocafade::processDoubleReplacing(double** inputs, double** outputs, std::int32_t sampleFrames) {
    const CSingleLock hold(audioLock_); // the buffers stay ours; the lock is recursive
    ++processCounter_;                  // so it advances twice a block here
    meters_ = {};
    const auto capacity = static_cast<std::int32_t>(doubleBuffers_[0].size());
    for (std::int32_t done = 0; done < sampleFrames; done += capacity) {
        const std::int32_t count = std::min(capacity, sampleFrames - done);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            const double* in = inputs[channel] + done;
            std::transform(in, in + count, doubleBuffers_[channel].begin(),
                           [](double sample) { return static_cast<float>(sample); });
        }
        float* in[] = {doubleBuffers_[0].data(), doubleBuffers_[1].data()};
        float* out[] = {doubleBuffers_[2].data(), doubleBuffers_[3].data()};
        processReplacing(in, out, count);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            std::copy_n(out[channel], count, outputs[channel] + done);
        }
    }
}

void AVocafade::GetVU(float* inL, float* inR, float* outL, float* outR) {
    const CSingleLock hold(audioLock_);
    *inL = meters_.inL;
    *inR = meters_.inR;
    *outL = meters_.outL;
    *outR = meters_.outR;
}

} // namespace vocafade
