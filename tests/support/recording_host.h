// SPDX-License-Identifier: MIT
#pragma once

#include "vst/aeffect.h"
#include "vst/opcodes.h"

#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace vocafade::test {

/// A host that notes what an effect asks of it. One at a time: its callback finds it through `active`.
class RecordingHost {
  public:
    struct Call {
        std::int32_t opcode;
        std::int32_t index;
        float opt;
        bool operator==(const Call&) const = default;
    };

    RecordingHost() { active = this; }
    ~RecordingHost() { active = nullptr; }
    RecordingHost(const RecordingHost&) = delete;
    RecordingHost& operator=(const RecordingHost&) = delete;

    /// The calls so far of an opcode.
    std::vector<Call> Calls(std::int32_t opcode) const {
        std::vector<Call> found = calls;
        std::erase_if(found, [opcode](const Call& call) { return call.opcode != opcode; });
        return found;
    }

    static VstIntPtr Callback(AEffect*, std::int32_t opcode, std::int32_t index, VstIntPtr value, void* ptr,
                              float opt) {
        if (active == nullptr) return opcode == audioMasterVersion ? 2400 : 0;
        active->calls.push_back({opcode, index, opt});
        if (active->listen) active->listen(opcode);
        if (opcode == audioMasterVersion) return active->version;
        if (opcode == audioMasterSizeWindow && active->resize)
            return active->resize(index, static_cast<int>(value)) ? 1 : 0;
        if (opcode == audioMasterGetDirectory) return reinterpret_cast<VstIntPtr>(active->directory.c_str());
        if (opcode == audioMasterGetProductString)
            std::memcpy(ptr, active->product.c_str(), active->product.size() + 1);
        return 0;
    }

    VstIntPtr version = 2400;
    std::string directory;
    std::string product;
    std::function<bool(int width, int height)> resize; ///< of the editor's window; null: not possible
    std::function<void(std::int32_t opcode)> listen;   ///< is told of every call
    std::vector<Call> calls;

  private:
    static inline RecordingHost* active = nullptr;
};

/// The same without notes, for tests with several threads.
inline VstIntPtr SilentHost(AEffect*, std::int32_t opcode, std::int32_t, VstIntPtr, void*, float) {
    return opcode == audioMasterVersion ? 2400 : 0;
}

} // namespace vocafade::test
