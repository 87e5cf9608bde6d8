// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <memory>
#include <new>

namespace vocafade {

/// An array of floats that begins on a cache line, with memory that is kept as long as the size stays.
class AlignedFloats {
  public:
    /// Makes it `count` zeros. Allocates only when the size changes; every page is touched.
    void Assign(std::size_t count) {
        if (count != count_) {
            const std::size_t bytes = count * sizeof(float);
            data_.reset(static_cast<float*>(::operator new(bytes, kLine)));
            count_ = count;
        }
        for (std::size_t i = 0; i < count; ++i) {
            data_[i] = 0.0f;
        }
    }

    float* data() { return data_.get(); }
    const float* data() const { return data_.get(); }
    std::size_t size() const { return count_; }

  private:
    static constexpr std::align_val_t kLine{64};
    struct Free {
        void operator()(float* memory) const { ::operator delete(memory, kLine); }
    };

    std::unique_ptr<float[], Free> data_;
    std::size_t count_ = 0;
};

} // namespace vocafade
