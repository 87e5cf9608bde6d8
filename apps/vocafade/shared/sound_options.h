// SPDX-License-Identifier: MIT
#pragma once

#include "apps/vocafade/shared/parameters.h"
#include "host/bank_file.h"
#include "host/effect.h"

#include <CLI/App.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vocafade::command {

/// What the command line says of the sound, as typed.
struct SoundOptions {
    std::optional<double> loFreq;
    std::optional<double> hiFreq;
    std::optional<double> position;
    std::optional<double> inputLevel;
    std::optional<double> outputLevel;
    std::vector<std::string> set; ///< NAME=VALUE
    std::optional<int> program;   ///< from 1
    std::string bank;
    bool dry = false;
    std::string plugin;
};

/// Adds the options to `app`, those of the sound under "Sound".
void AddSoundOptions(CLI::App& app, SoundOptions& options);
void AddPluginOption(CLI::App& app, SoundOptions& options, const char* group);

/// The same, checked against the plug-in.
struct SoundSettings {
    std::optional<host::BankFile> bank;
    std::optional<std::int32_t> program; ///< from 0
    std::vector<Assignment> assignments; ///< on top of the program or the defaults
};

/// [main-thread] Throws `UsageError` for what the effect does not have, `host::HostError` for a bad bank.
SoundSettings ResolveSound(host::Effect& effect, const SoundOptions& options);

/// [main-thread] Brings an effect to the state that is asked for, after it has been configured and started: starting
/// resets parameters. Throws `Failure` or `host::HostError`.
void SetUp(host::Effect& effect, const SoundSettings& settings);

/// The effect's parameter counts as on by its whole-number part, as the engine's switch takes it.
bool IsOff(host::Effect& effect);

/// Samples by which what comes out lies behind what went in while the effect is on.
std::int64_t LatencyOf(host::Effect& effect);

} // namespace vocafade::command
