// SPDX-License-Identifier: MIT
#include "dsp/vocafade_unit.h"

#include "dsp/constants.h"

#include <algorithm>
#include <cmath>

namespace vocafade {
namespace {

/// The largest sample that is taken for audio (+300 dB). A frame of such samples still has finite magnitudes
/// in single precision, so nothing behind the input needs to look for infinities.
constexpr float kLargestSample = 1e15f;

void TakeInput(const float* in, float level, int count, float* buffer) {
    for (int i = 0; i < count; ++i) {
        const float sample = in[i] * level;
        buffer[i] = std::fabs(sample) <= kLargestSample ? sample : 0.0f; // false for not-a-number, too
    }
}

void GiveOutput(const float* accumulator, float level, int count, float* out) {
    for (int i = 0; i < count; ++i) {
        out[i] = accumulator[i] * level;
    }
}

int BinaryLogarithm(int n) {
    int bits = 0;
    while ((1LL << bits) < n) {
        ++bits;
    }
    return bits;
}

} // namespace

void CVocafadeUnit::Channel::Init(int frameSize, int hop) {
    const auto n = static_cast<std::size_t>(frameSize);
    const std::size_t streamed = n + static_cast<std::size_t>(hop);
    forward.Init(frameSize, true, true);
    inverse.Init(frameSize, true, false);
    input.assign(streamed, 0.0f);
    spectrum.assign(2 * n, 0.0f);
    previousPhase.assign(n / 2, 0.0f);
    magnitude.assign(n / 2, 0.0f);
    trueFrequency.assign(n / 2, 0.0f);
    phaseSum.assign(n / 2, 0.0f);
    output.assign(streamed, 0.0f);
}

void CVocafadeUnit::Init(int frameSize, int sampleRate, int overlap, CCriticalSection* lock) {
    lock_ = lock;
    sampleRate_ = static_cast<float>(std::max(sampleRate, 1));
    overlap_ = overlap;
    frameSize_ = frameSize;
    frameBits_ = BinaryLogarithm(frameSize);
    over_ = false;
    removal_.balance = 1.0f;
    hop_ = frameSize / overlap;
    const float n = static_cast<float>(frameSize);
    vocoder_.bins = frameSize / 2;
    vocoder_.binWidth = sampleRate_ / n;
    vocoder_.expectedPhaseAdvance = static_cast<float>(hop_) * kTwoPi / n;
    vocoder_.overlap = static_cast<float>(overlap);

    left_.Init(frameSize, hop_);
    right_.Init(frameSize, hop_);
    readPosition_ = 0;
    writePosition_ = frameSize - hop_;
    silentLead_ = Latency();

    if (window_.size() == static_cast<std::size_t>(frameSize)) return;
    // A periodic Hann window: the division is by the frame size.
    window_.resize(static_cast<std::size_t>(frameSize));
    for (int i = 0; i < frameSize; ++i) {
        const double turn = i * static_cast<double>(kTwoPi) / frameSize;
        window_[static_cast<std::size_t>(i)] = static_cast<float>(0.5 - 0.5 * std::cos(turn));
    }
}

void CVocafadeUnit::Operate(const float* inL, const float* inR, int count, float* outL, float* outR,
                            int* produced) {
    *produced = count;
    int done = 0;
    while (done < count) {
        // Run up to the sample that completes the next frame. Both inputs are read before an output is
        // written, so the outputs may share the inputs' memory.
        const int run = std::min(count - done, frameSize_ - writePosition_);
        TakeInput(inL + done, inputLevel_, run, left_.input.data() + writePosition_);
        TakeInput(inR + done, inputLevel_, run, right_.input.data() + writePosition_);
        GiveOutput(left_.output.data() + readPosition_, outputLevel_, run, outL + done);
        GiveOutput(right_.output.data() + readPosition_, outputLevel_, run, outR + done);
        writePosition_ += run;
        readPosition_ += run;
        done += run;
        if (writePosition_ == frameSize_) ProcessFrame();
    }
}

void CVocafadeUnit::ProcessFrame() {
    kernels::WindowFrame(left_.input.data(), window_.data(), frameSize_, left_.spectrum.data());
    kernels::WindowFrame(right_.input.data(), window_.data(), frameSize_, right_.spectrum.data());
    left_.forward.ComplexFFT(left_.spectrum.data());
    right_.forward.ComplexFFT(right_.spectrum.data());
    GetTrueSpectra(left_.spectrum.data(), right_.spectrum.data());
    CreateShiftedVector();
    left_.inverse.ComplexFFT(left_.spectrum.data());
    right_.inverse.ComplexFFT(right_.spectrum.data());
    AddFrame(left_);
    AddFrame(right_);
    silentLead_ = std::max(silentLead_ - hop_, 0);
    ShiftBuffers(left_);
    ShiftBuffers(right_);
    writePosition_ -= hop_;
    readPosition_ -= hop_;
}

void CVocafadeUnit::GetTrueSpectra(const float* specL, const float* specR) {
    kernels::AnalyseChannel(vocoder_, specL, left_.previousPhase.data(), left_.magnitude.data(),
                            left_.trueFrequency.data());
    kernels::AnalyseChannel(vocoder_, specR, right_.previousPhase.data(), right_.magnitude.data(),
                            right_.trueFrequency.data());
}

void CVocafadeUnit::CreateShiftedVector() {
    // Only the lower half is synthesised; the real part of the inverse transform is all that is used of it.
    std::fill(left_.spectrum.begin(), left_.spectrum.end(), 0.0f);
    std::fill(right_.spectrum.begin(), right_.spectrum.end(), 0.0f);
    kernels::RemoveCentre(vocoder_, removal_, left_.magnitude.data(), right_.magnitude.data());
    kernels::ResynthesiseChannel(vocoder_, left_.magnitude.data(), left_.trueFrequency.data(),
                                 left_.phaseSum.data(), left_.spectrum.data());
    kernels::ResynthesiseChannel(vocoder_, right_.magnitude.data(), right_.trueFrequency.data(),
                                 right_.phaseSum.data(), right_.spectrum.data());
}

void CVocafadeUnit::AddFrame(Channel& channel) {
    // A modified frame spreads over its whole length, its first part included, which for the first frames
    // stands for time before the first output sample: nothing may sound there.
    kernels::OverlapAdd(channel.spectrum.data(), window_.data(), silentLead_, frameSize_, vocoder_.overlap,
                        channel.output.data());
}

void CVocafadeUnit::ShiftBuffers(Channel& channel) const {
    std::copy(channel.input.begin() + hop_, channel.input.end(), channel.input.begin());
    // The accumulator's last hop is always zero, so the vacated end comes in as silence.
    std::copy(channel.output.begin() + hop_, channel.output.end(), channel.output.begin());
}

void CVocafadeUnit::SetCancelFS(unsigned low, unsigned high) {
    removal_.lowHertz = low;
    removal_.highHertz = high;
}

void CVocafadeUnit::GetOverLevel(bool* over) {
    const CSingleLock hold(*lock_);
    *over = over_;
    over_ = false;
}

void CVocafadeUnit::SetOverFlag() {
    const CSingleLock hold(*lock_);
    over_ = true;
}

} // namespace vocafade
