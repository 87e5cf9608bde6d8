// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>

namespace vocafade::validate {

/// Memory with a page on either side that nobody may touch. What is asked for stands at the very end (what
/// comes behind it is caught to the byte) or at the very beginning. A touch of a guard page ends the process;
/// `InstallCrashReport` then says whose page it was.
class GuardedMemory {
  public:
    enum class Against { end, begin };

    /// `what` names it in a finding. Throws `std::bad_alloc`.
    GuardedMemory(std::size_t bytes, Against against, std::string what);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    void* data() const { return data_; }
    template <typename T>
    T* as() const {
        return static_cast<T*>(data_);
    }

  private:
    char* mapped_;
    std::size_t mappedBytes_;
    void* data_;
    std::size_t slot_;
};

} // namespace vocafade::validate
