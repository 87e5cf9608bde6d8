// SPDX-License-Identifier: MIT
#include "dsp/vocafade_unit.h"

#include "dsp/constants.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace vocafade {
namespace {

/// The largest sample that is taken for audio (+300 dB). A frame of such samples still has finite magnitudes
/// in single precision, so nothing behind the input needs to look for infinities.
constexpr float kLargestSample = 1e15f;

void TakeInput(const float* in, float level, int count, float* buffer) {
    for (int i = 0; i < count; ++i) {
        const float sample = in[i] * level;
        buffer[i] = std::fabs(sample) <= kLargestSample ? sample : 0.0f; // false for NaN, too
    }
}

void GiveOutput(const float* accumulator, float level, int count, float* out) {
    for (int i = 0; i < count; ++i) {
        out[i] = accumulator[i] * level;
    }
}

/// The first bin below `bins` that `beyond` holds for, or `bins`; it holds for all bins after that one, too.
template <typename Predicate>
int FirstBin(int bins, Predicate beyond) {
    int below = 0;
    int above = bins;
    while (below < above) {
        const int middle = (below + above) / 2;
        if (beyond(middle)) {
            above = middle;
        } else {
            below = middle + 1;
        }
    }
    return below;
}

} // namespace

void CVocafadeUnit::Channel::Init(int frameSize) {
    const auto n = static_cast<std::size_t>(frameSize);
    const std::size_t bins = n / 2 + kernels::kPadding;
    input.Assign(n + kernels::kPadding);
    spectrumRe.Assign(bins);
    spectrumIm.Assign(bins);
    phase.Assign(bins);
    magnitude.Assign(bins);
    trueFrequency.Assign(bins);
    phaseSum.Assign(bins);
    output.Assign(n + kernels::kPadding);
}

void CVocafadeUnit::Init(int frameSize, int sampleRate, int overlap, CCriticalSection* lock) {
    const bool fits = frameSize >= 2 && frameSize <= CFFT::kMostPoints;
    if (!fits || !std::has_single_bit(static_cast<unsigned>(frameSize))) frameSize = 0;
    lock_ = lock;
    sampleRate = std::max(sampleRate, 1);
    overlap = std::max(overlap, 1);
    frameSize_ = frameSize;
    over_ = false;
    balance_ = 1.0f;
    hop_ = std::min(std::max(frameSize / overlap, 1), frameSize);
    silentLead_ = Latency();
    if (frameSize == 0) return;

    const float n = static_cast<float>(frameSize);
    vocoder_.bins = frameSize / 2;
    vocoder_.binWidth = static_cast<float>(sampleRate) / n;
    vocoder_.expectedPhaseAdvance = static_cast<float>(hop_) * kTwoPi / n;
    vocoder_.overlap = static_cast<float>(overlap);

    const auto size = static_cast<std::size_t>(frameSize);
    const bool sameWindow = window_.size() == size + kernels::kPadding;
    transform_.Init(frameSize);
    left_.Init(frameSize);
    right_.Init(frameSize);
    frame_.Assign(size + kernels::kPadding);
    readPosition_ = 0;
    writePosition_ = frameSize - hop_;
    if (sameWindow) return;
    // A periodic Hann window: the division is by the frame size.
    window_.Assign(size + kernels::kPadding);
    for (int i = 0; i < frameSize; ++i) {
        const double turn = i * static_cast<double>(kTwoPi) / frameSize;
        window_.data()[i] = static_cast<float>(0.5 - 0.5 * std::cos(turn));
    }
}

void CVocafadeUnit::Operate(const float* inL, const float* inR, int count, float* outL, float* outR,
                            int* produced) {
    *produced = count;
    if (frameSize_ == 0 && count > 0) {
        std::fill_n(outL, count, 0.0f);
        std::fill_n(outR, count, 0.0f);
        return;
    }
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
    GetTrueSpectra();
    CreateShiftedVector();
    AddFrame(left_);
    AddFrame(right_);
    silentLead_ = std::max(silentLead_ - hop_, 0);
    // What the next frame shares with this one moves to its start. (The accumulators have moved already.)
    const std::size_t kept = static_cast<std::size_t>(frameSize_ - hop_) * sizeof(float);
    std::memmove(left_.input.data(), left_.input.data() + hop_, kept);
    std::memmove(right_.input.data(), right_.input.data() + hop_, kept);
    writePosition_ -= hop_;
    readPosition_ -= hop_;
}

void CVocafadeUnit::GetTrueSpectra() {
    for (Channel* c : {&left_, &right_}) {
        transform_.Forward(kernels_, c->input.data(), window_.data(), c->spectrumRe.data(),
                           c->spectrumIm.data());
        kernels_.analyse(vocoder_, c->spectrumRe.data(), c->spectrumIm.data(), c->phase.data(),
                         c->magnitude.data(), c->trueFrequency.data());
    }
}

void CVocafadeUnit::CreateShiftedVector() {
    kernels_.remove(RemovalOfBand(), vocoder_.bins, left_.magnitude.data(), right_.magnitude.data());
    for (Channel* c : {&left_, &right_}) {
        kernels_.resynthesise(vocoder_, c->magnitude.data(), c->trueFrequency.data(), c->phase.data(),
                              c->phaseSum.data(), c->spectrumRe.data(), c->spectrumIm.data());
    }
}

void CVocafadeUnit::AddFrame(Channel& channel) {
    transform_.Inverse(kernels_, channel.spectrumRe.data(), channel.spectrumIm.data(), frame_.data());
    // A modified frame spreads over its whole length, its first part included, which for the first frames
    // stands for time before the first output sample: nothing may sound there.
    kernels_.overlapAdd(frame_.data(), window_.data(), hop_, silentLead_, frameSize_, vocoder_.overlap,
                        channel.output.data());
}

kernels::Removal CVocafadeUnit::RemovalOfBand() const {
    // A bin is judged by the frequency of its upper neighbour, in whole Hz. Two searches of ten steps a hop
    // cost less than keeping their outcome in step with the rate, the limits and the balance would.
    const auto hertz = [this](int k) {
        return static_cast<std::uint32_t>(static_cast<float>(k + 1) * vocoder_.binWidth);
    };
    const int bins = vocoder_.bins;
    kernels::Removal removal{1.0f, 1.0f, 0, 0};
    removal.firstBin = FirstBin(bins, [&](int k) { return hertz(k) >= lowHertz_; });
    removal.lastBin = FirstBin(bins, [&](int k) { return hertz(k) > highHertz_; }) - 1;
    if (balance_ > 1.0f) {
        removal.scaleLeft = 1.0f / balance_;
    } else {
        removal.scaleRight = balance_;
    }
    return removal;
}

void CVocafadeUnit::SetCancelFS(unsigned low, unsigned high) {
    lowHertz_ = low;
    highHertz_ = high;
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
