// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/noise_player.h"

#include <cmath>
#include <limits>

namespace vocafade::validate {
namespace {

constexpr int kOneSecond = 94; // blocks at 48 kHz

void Parameters(Subject& subject, Report& report) {
    RawEffect effect(subject.Object());
    effect.Start(48000.0, kBlock);
    for (std::int32_t i = 0; i < effect->numParams; ++i) {
        const float preset = effect.parameter(i);
        if (!(preset >= 0.0f && preset <= 1.0f))
            report.Fault("parameter {} is {}, outside 0 to 1", i, preset);
        if (effect.Text(effGetParamName, i).empty()) report.Remark("parameter {} has no name", i);
    }
    for (const std::int32_t i : effect.Settable()) {
        const float preset = effect.parameter(i);
        for (int step = 0; step <= 32; ++step) {
            const float value = static_cast<float>(step) / 32.0f;
            report.Trying("setting parameter {} to {}", i, value);
            effect.setParameter(i, value);
            const float now = effect.parameter(i);
            if (!(now >= 0.0f && now <= 1.0f)) report.Fault("parameter {} set to {} reads {}", i, value, now);
        }
        for (const float end : {0.0f, 1.0f}) {
            effect.setParameter(i, end);
            if (std::fabs(effect.parameter(i) - end) > 0.01f)
                report.Fault("parameter {} cannot be set to {}: it reads {}", i, end, effect.parameter(i));
        }
        effect.setParameter(i, preset);
    }
    report.Trying("playing with every parameter back where it was");
    PlayFinite(effect, report, "after its parameters were moved and put back", kOneSecond);
    std::mt19937 random(subject.seed());
    std::uniform_real_distribution<float> value(0.0f, 1.0f);
    for (int round = 0; round < 20; ++round) {
        report.Trying("playing at random parameters, round {}", round);
        for (const std::int32_t i : effect.Settable())
            effect.setParameter(i, value(random));
        PlayFinite(effect, report, "at random parameters", kOneSecond);
    }
    effect.Off();
}
const Check kParameters{"parameters", 2, 30, kPlain, "every value of every parameter can be set and read",
                        Parameters};

void ParameterExtremes(Subject& subject, Report& report) {
    RawEffect effect(subject.Object());
    effect.Start(48000.0, kBlock);
    NoisePlayer<float> player(effect, kBlock, subject.seed());
    using Limits = std::numeric_limits<float>;
    for (const float value : {-1.0f, -1e-30f, 1.0000001f, 2.0f, 1e10f, -1e38f, Limits::infinity(),
                              -Limits::infinity(), Limits::quiet_NaN(), Limits::denorm_min()}) {
        for (const std::int32_t i : effect.Settable()) {
            report.Trying("setting parameter {} to {}", i, value);
            const float before = effect.parameter(i);
            effect.setParameter(i, value);
            effect.Text(effGetParamDisplay, i);
            player.Play(kOneSecond);
            // Hosts keep to the range, so a bad sound meanwhile is only worth a remark; one that stays is a
            // fault.
            if (!player.isFinite())
                report.Remark("with a parameter out of range its output is NaN or infinite");
            effect.setParameter(i, before);
        }
        report.Trying("setting every parameter to {}", value);
        for (const std::int32_t i : effect.Settable())
            effect.setParameter(i, value);
        player.Play(kOneSecond);
    }
    report.Trying("playing after every parameter came back into its range");
    for (const std::int32_t i : effect.Settable())
        effect.setParameter(i, 0.5f);
    effect.Off(); // which is how a user would get rid of what is still ringing
    effect.On();
    PlayFinite(effect, report, "after its parameters came back into their ranges", 10 * kOneSecond);
    for (const std::int32_t index :
         {-1, effect->numParams, effect->numParams + 1000, std::numeric_limits<std::int32_t>::max(),
          std::numeric_limits<std::int32_t>::min()}) {
        report.Trying("setting and reading parameter {}, which it does not have", index);
        effect.setParameter(index, 0.5f);
        effect.parameter(index);
        for (const std::int32_t opcode : {effGetParamName, effGetParamLabel, effGetParamDisplay})
            effect.Text(opcode, index);
    }
    effect.Off();
}
const Check kParameterExtremes{
    "parameter-extremes",
    9,
    60,
    kPlain,
    "NaN, infinity and what is out of range as parameters, and parameters that it does not have",
    ParameterExtremes};

} // namespace
} // namespace vocafade::validate
