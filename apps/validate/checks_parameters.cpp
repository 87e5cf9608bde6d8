// SPDX-License-Identifier: MIT
#include "apps/validate/channels.h"
#include "apps/validate/check.h"

#include <cmath>
#include <limits>

namespace vocafade::validate {
namespace {

constexpr std::int32_t kBlock = 512;
constexpr double kRate = 48000.0;

/// A second of noise; true when numbers come out.
bool PlaysFinite(Instance& effect, std::uint32_t seed) {
    Channels<float> in(effect->numInputs, kBlock);
    Channels<float> out(effect->numOutputs, kBlock);
    std::mt19937 random(seed);
    in.FillWithNoise(random, 0.5F);
    for (int i = 0; i < 94; ++i)
        effect.Process(in.pointers(), out.pointers(), kBlock);
    return out.AreFinite(kBlock);
}

void PlayFinite(Instance& effect, std::uint32_t seed, Report& report, const char* situation) {
    if (!PlaysFinite(effect, seed)) report.Fault("{}: its output is no number", situation);
}

} // namespace

void CheckParameters(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(kRate, kBlock);
    for (std::int32_t i = 0; i < effect->numParams; ++i) {
        const float preset = effect.parameter(i);
        if (!(preset >= 0.0F && preset <= 1.0F))
            report.Fault("parameter {} stands at {}, outside 0 to 1", i, preset);
        if (effect.Text(effGetParamName, i).empty()) report.Remark("parameter {} has no name", i);
        if (!effect.IsSettable(i)) continue;
        for (int step = 0; step <= 32; ++step) {
            const float value = static_cast<float>(step) / 32.0F;
            report.Trying("setting parameter {} to {}", i, value);
            effect.setParameter(i, value);
            const float now = effect.parameter(i);
            if (!(now >= 0.0F && now <= 1.0F)) report.Fault("parameter {} set to {} reads {}", i, value, now);
        }
        for (const float end : {0.0F, 1.0F}) {
            effect.setParameter(i, end);
            if (std::fabs(effect.parameter(i) - end) > 0.01F)
                report.Fault("parameter {} cannot be set to {}: it reads {}", i, end, effect.parameter(i));
        }
        effect.setParameter(i, preset);
    }
    report.Trying("playing with every parameter back where it was");
    PlayFinite(effect, subject.seed(), report, "after its parameters were moved and put back");
    std::mt19937 random(subject.seed());
    std::uniform_real_distribution<float> value(0.0F, 1.0F);
    for (int round = 0; round < 20; ++round) {
        report.Trying("playing at random parameters, round {}", round);
        for (std::int32_t i = 0; i < effect->numParams; ++i)
            if (effect.IsSettable(i)) effect.setParameter(i, value(random));
        PlayFinite(effect, subject.seed(), report, "at random parameters");
    }
    effect.Off();
}

void CheckParameterExtremes(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(kRate, kBlock);
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const float value :
         {-1.0F, -1e-30F, 1.0000001F, 2.0F, 1e10F, -1e38F, kInfinity, -kInfinity,
          std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::denorm_min()}) {
        for (std::int32_t i = 0; i < effect->numParams; ++i) {
            if (!effect.IsSettable(i)) continue;
            report.Trying("setting parameter {} to {}", i, value);
            const float before = effect.parameter(i);
            effect.setParameter(i, value);
            effect.Text(effGetParamDisplay, i);
            const bool finite = PlaysFinite(effect, subject.seed());
            // Hosts keep to the range, so a poor sound meanwhile is only worth a remark; one that stays is
            // not.
            if (!finite) report.Remark("with a parameter beyond its range its output is no number");
            effect.setParameter(i, before);
        }
        report.Trying("setting every parameter to {}", value);
        for (std::int32_t i = 0; i < effect->numParams; ++i)
            if (effect.IsSettable(i)) effect.setParameter(i, value);
        PlaysFinite(effect, subject.seed());
    }
    report.Trying("playing after every parameter came back from beyond its range");
    for (std::int32_t i = 0; i < effect->numParams; ++i)
        if (effect.IsSettable(i)) effect.setParameter(i, 0.5F);
    effect.Off(); // which is how a user would get rid of what is still ringing
    effect.On();
    for (int i = 0; i < 10; ++i)
        PlaysFinite(effect, subject.seed());
    PlayFinite(effect, subject.seed(), report, "after its parameters came back from beyond their ranges");
    for (const std::int32_t index :
         {-1, effect->numParams, effect->numParams + 1000, std::numeric_limits<std::int32_t>::max(),
          std::numeric_limits<std::int32_t>::min()}) {
        report.Trying("setting and reading parameter {}, which it does not have", index);
        effect.setParameter(index, 0.5F);
        effect.parameter(index);
        effect.Text(effGetParamName, index);
        effect.Text(effGetParamLabel, index);
        effect.Text(effGetParamDisplay, index);
    }
    effect.Off();
}

} // namespace vocafade::validate
