// SPDX-License-Identifier: MIT
#include "apps/demo/reverb.h"

#include "apps/demo/filters.h"

#include <array>
#include <cmath>

namespace vocafade {
namespace {

constexpr std::size_t kLines = 8;
constexpr std::array<double, kLines> kDelays{0.0297, 0.0353, 0.0371, 0.0411, 0.0437, 0.0473, 0.0531, 0.0571};

class Room {
  public:
    Room(int rate, double seconds) {
        for (std::size_t i = 0; i < kLines; ++i) {
            lines_[i].resize(static_cast<std::size_t>(kDelays[i] * rate));
            gains_[i] = static_cast<float>(std::pow(10.0, -3.0 * kDelays[i] / seconds));
            damping_.emplace_back(4500.0, rate);
        }
    }

    StereoSample Run(StereoSample in) {
        std::array<float, kLines> out{};
        for (std::size_t i = 0; i < kLines; ++i)
            out[i] = damping_[i].LowPass(lines_[i][at_[i]]) * gains_[i];
        const StereoSample result{out[0] + out[2] - out[4] - out[6], out[1] + out[3] - out[5] - out[7]};
        for (std::size_t half = 1; half < kLines; half *= 2) { // Hadamard: sums and differences, three times
            for (std::size_t i = 0; i < kLines; ++i) {
                if (i & half) continue;
                const float a = out[i];
                const float b = out[i + half];
                out[i] = a + b;
                out[i + half] = a - b;
            }
        }
        const float scale = 1.0F / std::sqrt(static_cast<float>(kLines));
        for (std::size_t i = 0; i < kLines; ++i) {
            lines_[i][at_[i]] = out[i] * scale + (i % 2 == 0 ? in.left : in.right);
            at_[i] = (at_[i] + 1) % lines_[i].size();
        }
        return result;
    }

  private:
    std::array<std::vector<float>, kLines> lines_;
    std::array<std::size_t, kLines> at_{};
    std::array<float, kLines> gains_{};
    std::vector<OnePole> damping_;
};

} // namespace

void AddRoom(StereoSound& sound, int rate, double seconds, float level) {
    Room room(rate, seconds);
    for (StereoSample& sample : sound) {
        const StereoSample wet = room.Run(sample);
        sample.left += wet.left * level;
        sample.right += wet.right * level;
    }
}

void AddMonoRoom(std::vector<float>& sound, int rate, double seconds, float level) {
    Room room(rate, seconds);
    for (float& sample : sound)
        sample += room.Run({sample, sample}).left * level;
}

} // namespace vocafade
