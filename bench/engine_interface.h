// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vocafade::bench {

/// The engine's fixed frame, hop and overlap, as every form of it in this folder uses them.
inline constexpr int kFrameSize = 2048;
inline constexpr int kOverlap = 6;
inline constexpr int kHop = kFrameSize / kOverlap;
inline constexpr int kBins = kFrameSize / 2;

/// The band and place that all forms remove: the effect's first program.
inline constexpr unsigned kLowHertz = 200;
inline constexpr unsigned kHighHertz = 8000;

/// One form of the engine under measurement: stereo in, stereo out, any block size.
class Engine {
  public:
    virtual ~Engine() = default;
    virtual void Process(const float* inL, const float* inR, int count, float* outL, float* outR) = 0;
};

/// A form that this build and this machine can run.
struct EngineForm {
    std::string name;
    std::function<std::unique_ptr<Engine>()> make;
};

/// All of them, the plain form first, the library form (if built) second, then the plug-in's own, one for
/// each instruction set.
std::vector<EngineForm> EngineForms();

} // namespace vocafade::bench
