// SPDX-License-Identifier: MIT
#include "base/float_mode.h"
#include "dsp/peak.h"
#include "effect/avocafade.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vocafade {
namespace {

/// Factor that shows a level of `db` on a meter. A boost is not shown.
float MeterGain(float db) {
    const float gain = static_cast<float>(std::exp2(db / 6.0));
    return gain > 0.001f ? std::min(gain, 1.0f) : 0.001f; // NaN gives the lowest
}

} // namespace

void AVocafade::open() {
    setProgram(0);
    CopyPrograms(initial_, programs_);
    LoadBank();
}

void AVocafade::setSampleRate(float rate) {
    if (rate >= 1.0f && rate < 4294967040.0f) { // else no stream has such a rate: the last one stays
        AudioEffectX::setSampleRate(rate);
        mediaType_.format.nSamplesPerSec = static_cast<std::uint32_t>(rate);
        mediaType_.format.nAvgBytesPerSec = mediaType_.format.nSamplesPerSec * 8;
    }
    engine_.SetMediaType(&mediaType_.format);
}

void AVocafade::setBlockSize(std::int32_t samples) {
    if (samples >= 1) {
        AudioEffectX::setBlockSize(samples);
        mediaType_.blockSize = static_cast<std::uint32_t>(samples);
    }
    engine_.SetMediaType(&mediaType_.format);
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
    const auto bytes = static_cast<std::size_t>(count) * sizeof(float);
    {
        const CSingleLock hold(audioLock_);
        StartBlock();
        if (count > 0) { // a host may pass no buffers at all otherwise
            MeasureInput(inputs, count);
            std::memmove(outputs[0], inputs[0], bytes);
            std::memmove(outputs[1], inputs[1], bytes);
        }
    } // the editor can read the meters between the two
    const CSingleLock hold(audioLock_);
    if (!IsOn()) {
        ShowInputAsOutput();
    } else if (count > 0) {
        ProcessAndMeasure(inputs, count, outputs);
    }
}

void AVocafade::processDoubleReplacing(double** inputs, double** outputs, std::int32_t sampleFrames) {
    const AudioFloatMode mode;
    ++processCounter_; // and once more below; see docs/compatibility.md
    // The block is converted in parts that the stack has room for, so no length needs to be known before.
    constexpr std::int32_t kPart = 512;
    float left[kPart];
    float right[kPart];
    float* part[] = {left, right};
    const auto convert = [&](std::int32_t done) {
        const std::int32_t count = std::min(kPart, sampleFrames - done);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            const double* in = inputs[channel] + done;
            std::transform(in, in + count, part[channel],
                           [](double sample) { return static_cast<float>(sample); });
        }
        return count;
    };
    {
        const CSingleLock hold(audioLock_);
        StartBlock();
        for (std::int32_t done = 0; done < sampleFrames; done += kPart) {
            MeasureInput(part, convert(done));
        }
    }
    const CSingleLock hold(audioLock_);
    const bool on = IsOn();
    if (!on) ShowInputAsOutput();
    for (std::int32_t done = 0; done < sampleFrames; done += kPart) {
        const std::int32_t count = convert(done);
        if (on) ProcessAndMeasure(part, count, part);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            std::copy_n(part[channel], count, outputs[channel] + done);
        }
    }
}

void AVocafade::StartBlock() {
    ++processCounter_;
    meters_ = {};
}

void AVocafade::MeasureInput(const float* const* inputs, std::int32_t sampleFrames) {
    const float gain = MeterGain(inputDb_);
    meters_.inL = std::max(meters_.inL, Peak(inputs[0], sampleFrames, gain));
    meters_.inR = std::max(meters_.inR, Peak(inputs[1], sampleFrames, gain));
}

void AVocafade::ShowInputAsOutput() {
    meters_.outL = meters_.inL;
    meters_.outR = meters_.inR;
}

void AVocafade::ProcessAndMeasure(float** inputs, std::int32_t sampleFrames, float** outputs) {
    int produced = 0;
    engine_.Transform(inputs, sampleFrames, outputs, &produced);
    const float gain = MeterGain(outputDb_);
    meters_.outL = std::max(meters_.outL, Peak(outputs[0], sampleFrames, gain));
    meters_.outR = std::max(meters_.outR, Peak(outputs[1], sampleFrames, gain));
}

void AVocafade::GetVU(float* inL, float* inR, float* outL, float* outR) {
    const CSingleLock hold(audioLock_);
    *inL = meters_.inL;
    *inR = meters_.inR;
    *outL = meters_.outL;
    *outR = meters_.outR;
}

void AVocafade::ShowVU(float inL, float inR, float outL, float outR) {
    const CSingleLock hold(audioLock_);
    StartBlock();
    meters_ = {inL, inR, outL, outR};
}

} // namespace vocafade
