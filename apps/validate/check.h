// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/instance.h"
#include "apps/validate/report.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace vocafade::validate {

/// The plug-in under examination, and how it is to be examined.
class Subject {
  public:
    Subject(std::filesystem::path path, std::uint32_t seed, bool twofold)
        : path_(std::move(path)), seed_(seed), twofold_(twofold) {}

    /// The shared object, loaded at the first call. Throws `host::HostError`.
    const host::SharedObject& Object();
    /// Lets go of it, for checks that load it themselves.
    void Unload() { object_.reset(); }
    const std::filesystem::path& path() const { return path_; }
    /// What everything random in a check starts from.
    std::uint32_t seed() const { return seed_; }
    /// True when the double-precision entry is to be called: the effect promises it, or the user asks for it.
    bool CallsDoubles(const AEffect& effect) const;

  private:
    std::filesystem::path path_;
    std::uint32_t seed_;
    bool twofold_;
    std::optional<host::SharedObject> object_;
};

/// One thing to examine, in a process of its own.
struct Check {
    std::string_view name;
    int level;   ///< 1 to 10: the level of strictness that begins to ask for it
    int seconds; ///< without anything new, after which the plug-in is taken to hang
    std::string_view summary;
    void (*run)(Subject& subject, Report& report);
};

/// All checks, by level.
std::span<const Check> Checks();

// A file each, by what they look at; `Checks` lists them.
void CheckDescriptor(Subject&, Report&); // checks_description.cpp
void CheckTexts(Subject&, Report&);
void CheckSound(Subject&, Report&); // checks_format.cpp
void CheckRates(Subject&, Report&);
void CheckBlocks(Subject&, Report&);
void CheckParameters(Subject&, Report&); // checks_parameters.cpp
void CheckParameterExtremes(Subject&, Report&);
void CheckPrograms(Subject&, Report&); // checks_state.cpp
void CheckStateRoundTrip(Subject&, Report&);
void CheckDamagedState(Subject&, Report&);
void CheckLifeCycles(Subject&, Report&); // checks_life.cpp
void CheckOddLifeCycles(Subject&, Report&);
void CheckManyInstances(Subject&, Report&);
void CheckInPlace(Subject&, Report&); // checks_buffers.cpp
void CheckMisaligned(Subject&, Report&);
void CheckGuardPages(Subject&, Report&);
void CheckHostileSamples(Subject&, Report&); // checks_samples.cpp
void CheckDenormals(Subject&, Report&);
void CheckThreads(Subject&, Report&); // checks_threads.cpp
void CheckCallsWhileAudio(Subject&, Report&);
void CheckEditor(Subject&, Report&); // checks_editor.cpp
void CheckEditorWhileAudio(Subject&, Report&);
void CheckAudioThread(Subject&, Report&); // checks_realtime.cpp
void CheckTiming(Subject&, Report&);
void CheckOpcodes(Subject&, Report&); // checks_opcodes.cpp
void CheckLoading(Subject&, Report&); // checks_process.cpp
void CheckFork(Subject&, Report&);
void CheckManners(Subject&, Report&);
void CheckRandomSession(Subject&, Report&); // checks_session.cpp

} // namespace vocafade::validate
