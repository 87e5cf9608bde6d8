// SPDX-License-Identifier: MIT
#include "dsp/vocafade_manager.h"

#include <algorithm>
#include <limits>

namespace vocafade {

CVocafadeManager::CVocafadeManager() {
    unit_.SetActive(true);
    unit_.SetInputLevel(1.0f);
    unit_.SetOutputLevel(1.0f);
}

bool CVocafadeManager::set_Activate(bool on) {
    const CSingleLock hold(lock_);
    active_ = on;
    unit_.SetActive(on);
    return true;
}

bool CVocafadeManager::set_InputLevel(float level) {
    const CSingleLock hold(lock_);
    inputLevel_ = level;
    unit_.SetInputLevel(level);
    return true;
}

bool CVocafadeManager::set_OutputLevel(float level) {
    const CSingleLock hold(lock_);
    outputLevel_ = level;
    unit_.SetOutputLevel(level);
    return true;
}

bool CVocafadeManager::set_VocafadeHiFS(unsigned hertz) {
    const CSingleLock hold(lock_);
    highHertz_ = hertz;
    unit_.SetCancelFS(lowHertz_, highHertz_);
    return true;
}

bool CVocafadeManager::set_VocafadeLoFS(unsigned hertz) {
    const CSingleLock hold(lock_);
    lowHertz_ = hertz;
    unit_.SetCancelFS(lowHertz_, highHertz_);
    return true;
}

bool CVocafadeManager::set_LRate(int position) {
    const CSingleLock hold(lock_);
    position = std::max(position, 1);
    lrRate_ = static_cast<float>(position);
    // The formula would give 63/64 in the middle, which is not the centre.
    unit_.SetLRBalance(position == 64 ? 1.0f : (127.0f - lrRate_) / lrRate_);
    return true;
}

bool CVocafadeManager::SetMediaType(const tWAVEFORMATEX* format) {
    const CSingleLock hold(lock_);
    mediaType_ = *format;
    return CreateFilter(format->nChannels, static_cast<int>(std::min<std::uint32_t>(
                                               format->nSamplesPerSec, std::numeric_limits<int>::max())));
}

bool CVocafadeManager::CreateFilter(int channels, int sampleRate) {
    channels_ = channels;
    sampleRate_ = static_cast<std::uint32_t>(sampleRate);
    unit_.Init(kFrameSize, sampleRate, kOverlap, &lock_);
    return true;
}

bool CVocafadeManager::Transform(float** in, int count, float** out, int* produced) {
    *produced = count;
    if (count < 1) return true;
    const CSingleLock hold(lock_);
    if (active_) unit_.Operate(in[0], in[1], count, out[0], out[1], produced);
    return true;
}

} // namespace vocafade
