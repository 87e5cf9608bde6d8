// SPDX-License-Identifier: MIT
#include "dsp/vocafade_manager.h"

#include <algorithm>
#include <limits>

namespace vocafade {

bool CVocafadeManager::set_Activate(bool on) {
    const CSingleLock hold(lock_);
    active_ = on;
    return true;
}

bool CVocafadeManager::set_InputLevel(float level) {
    const CSingleLock hold(lock_);
    unit_.SetInputLevel(level);
    return true;
}

bool CVocafadeManager::set_OutputLevel(float level) {
    const CSingleLock hold(lock_);
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
    const float rate = static_cast<float>(std::max(position, 1));
    // The formula would give 63/64 in the middle, which is not the centre.
    unit_.SetLRBalance(position == 64 ? 1.0f : (127.0f - rate) / rate);
    return true;
}

bool CVocafadeManager::SetMediaType(const tWAVEFORMATEX* format) {
    const CSingleLock hold(lock_);
    constexpr std::uint32_t most = std::numeric_limits<int>::max();
    unit_.Init(kFrameSize, static_cast<int>(std::min(format->nSamplesPerSec, most)), kOverlap, &lock_);
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
