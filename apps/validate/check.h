// SPDX-License-Identifier: MIT
#pragma once

#include "apps/validate/raw_effect.h"
#include "apps/validate/report.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

namespace vocafade::validate {

/// The plug-in under examination, and how it is to be examined.
class Subject {
  public:
    Subject(std::filesystem::path path, std::uint32_t seed, bool doublePrecision)
        : path_(std::move(path)), seed_(seed), doublePrecision_(doublePrecision) {}

    /// The shared object, loaded at the first call. Throws `host::HostError`.
    const host::SharedObject& Object() {
        if (!object_) object_.emplace(path_);
        return *object_;
    }
    /// Lets go of it, for checks that load it themselves.
    void Unload() { object_.reset(); }
    const std::filesystem::path& path() const { return path_; }
    /// What everything random in a check starts from.
    std::uint32_t seed() const { return seed_; }
    /// Whether the user asks for double precision.
    bool doublePrecision() const { return doublePrecision_; }
    /// True when the double-precision entry is to be called: the effect promises it, or the user asks for it.
    bool CallsDoubles(const AEffect& effect) const {
        return effect.processDoubleReplacing != nullptr &&
               (doublePrecision_ || (effect.flags & effFlagsCanDoubleReplacing) != 0);
    }

  private:
    std::filesystem::path path_;
    std::uint32_t seed_;
    bool doublePrecision_;
    std::optional<host::SharedObject> object_;
};

/// What a check needs, and what it is good for.
enum Traits : unsigned {
    kPlain = 0,
    kNeedsState = 1,     ///< a plug-in that saves a state of its own form
    kNeedsEditor = 2,    ///< a plug-in with an editor, and a display
    kNotSanitized = 4,   ///< it measures what the sanitizers change
    kSeveralThreads = 8, ///< it has something for the thread sanitizer to find; others have not
};

/// One thing to examine, in a process of its own. A check is added by one definition, right behind its
/// function and in the same file:
///
///     const Check kInPlace{"in-place", 6, 30, kPlain, "inputs and outputs in the same memory", InPlace};
struct Check {
    using Function = void (*)(Subject& subject, Report& report);

    Check(std::string_view name, int level, int seconds, unsigned traits, std::string_view summary,
          Function function) noexcept;

    const std::string_view name;
    const int level;   ///< 1 to 10: the level of strictness that begins to ask for it
    const int seconds; ///< without anything new, after which the plug-in is taken to hang
    const unsigned traits;
    const std::string_view summary;
    const Function function;
    const Check* const next; ///< defined before it
};

/// All checks, by level and name.
std::vector<const Check*> Checks();

} // namespace vocafade::validate
