// SPDX-License-Identifier: MIT
#pragma once

#include "bench/engine_interface.h"

#include <algorithm>
#include <vector>

namespace vocafade::bench {

/// The stream around the frames, shared by the forms that the plug-in is compared with: samples go into a
/// sliding frame, a full frame is handed to `ProcessFrame`, what it added to the accumulators comes out.
class StreamingEngine : public Engine {
  public:
    void Process(const float* inL, const float* inR, int count, float* outL, float* outR) final {
        for (int done = 0; done < count;) {
            const int run = std::min(count - done, kFrameSize - write_);
            std::copy_n(inL + done, run, inputL_.data() + write_);
            std::copy_n(inR + done, run, inputR_.data() + write_);
            const int read = write_ - (kFrameSize - kHop);
            const float* doneL = accumulatorL_.data() + read;
            const float* doneR = accumulatorR_.data() + read;
            for (int i = 0; i < run; ++i) {
                outL[done + i] = doneL[i] * 1.7f;
                outR[done + i] = doneR[i] * 1.7f;
            }
            write_ += run;
            done += run;
            if (write_ == kFrameSize) {
                ProcessFrame(inputL_.data(), inputR_.data(), accumulatorL_.data(), accumulatorR_.data());
                for (auto* buffer : {&inputL_, &inputR_, &accumulatorL_, &accumulatorR_}) {
                    std::copy(buffer->begin() + kHop, buffer->end(), buffer->begin());
                }
                write_ -= kHop;
            }
        }
    }

  protected:
    virtual void ProcessFrame(const float* inputL, const float* inputR, float* accumulatorL,
                              float* accumulatorR) = 0;

  private:
    std::vector<float> inputL_ = std::vector<float>(kFrameSize + kHop);
    std::vector<float> inputR_ = std::vector<float>(kFrameSize + kHop);
    std::vector<float> accumulatorL_ = std::vector<float>(kFrameSize + kHop);
    std::vector<float> accumulatorR_ = std::vector<float>(kFrameSize + kHop);
    int write_ = kFrameSize - kHop;
};

/// The periodic Hann window of a frame.
std::vector<float> HannWindow();

} // namespace vocafade::bench
