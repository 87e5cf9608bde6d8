// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/noise_player.h"

#include <algorithm>
#include <numeric>

namespace vocafade::validate {
namespace {

void Life(Subject& subject, Report& report) {
    const host::SharedObject& object = subject.Object();
    for (int i = 0; i < 100; ++i) {
        report.Trying("making and closing, round {}", i);
        RawEffect effect(object);
        effect.Close();
    }
    for (int i = 0; i < 100; ++i) {
        report.Trying("making, opening and closing, round {}", i);
        RawEffect effect(object);
        effect.Open();
        effect.Close();
    }
    for (int i = 0; i < 10; ++i) {
        report.Trying("closing while switched on, round {}", i);
        RawEffect effect(object);
        effect.Start(48000.0, kBlock);
        PlayFinite(effect, report, "a short life");
        effect.Close();
    }
    RawEffect effect(object);
    effect.Open();
    for (int i = 0; i < 50; ++i) {
        report.Trying("switching off, setting rate and block, switching on, round {}", i);
        effect.Configure(i % 2 == 0 ? 44100.0 : 48000.0, kBlock << (i % 4));
        effect.On();
        PlayFinite(effect, report, "switched off and on");
        effect.Off();
    }
    report.Trying("switching on and off without sound");
    for (int i = 0; i < 50; ++i) {
        effect.On();
        effect.Off();
    }
}
const Check kLife{
    "life", 5, 60, kPlain, "opened, switched and closed over and over, in the orders that hosts use", Life};

void OddLife(Subject& subject, Report& report) {
    const host::SharedObject& object = subject.Object();
    const auto alone = [&](const char* what, auto work) {
        report.Trying("{}", what);
        RawEffect effect(object);
        work(effect);
    };
    alone("switching on twice, off twice", [&](RawEffect& effect) {
        effect.Start(48000.0, kBlock);
        effect.On();
        PlayFinite(effect, report, "switched on twice");
        effect.Off();
        effect.Off();
    });
    alone("switching off what was never on", [&](RawEffect& effect) {
        effect.Open();
        effect.Off();
        effect.Start(48000.0, kBlock);
        PlayFinite(effect, report, "switched off before it was on");
    });
    alone("opening twice", [&](RawEffect& effect) {
        effect.Open();
        effect.Start(48000.0, kBlock);
        PlayFinite(effect, report, "opened twice");
    });
    alone("setting the rate before opening", [&](RawEffect& effect) {
        effect.Configure(96000.0, kBlock);
        effect.Open();
        effect.On();
        PlayFinite(effect, report, "given its rate before it was opened");
    });
    alone("switching on without a rate and a block", [&](RawEffect& effect) {
        effect.Open();
        effect.On();
        PlayFinite(effect, report, "without a rate");
    });
    alone("changing rate and block while switched on", [&](RawEffect& effect) {
        effect.Start(48000.0, kBlock);
        for (int i = 0; i < 40; ++i) {
            effect.Configure(i % 2 == 0 ? 96000.0 : 22050.0, kBlock << (i % 5));
            PlayFinite(effect, report, "reconfigured while on", 3);
        }
    });
    alone("asking for everything before opening", [&](RawEffect& effect) {
        for (std::int32_t i = 0; i < effect->numParams; ++i) {
            effect.parameter(i);
            effect.Text(effGetParamName, i);
            effect.Text(effGetParamDisplay, i);
        }
        effect.Text(effGetEffectName);
        effect.Text(effGetProgramName);
        effect.Ask(effGetProgram);
    });
    alone("processing while switched off", [&](RawEffect& effect) {
        effect.Open();
        effect.Configure(48000.0, kBlock);
        PlayFinite(effect, report, "never switched on");
        effect.On();
        effect.Off();
        PlayFinite(effect, report, "switched off");
        effect.On();
        PlayFinite(effect, report, "switched on after it ran while off");
    });
    alone("stopping and starting the process without switching", [&](RawEffect& effect) {
        effect.Start(48000.0, kBlock);
        for (int i = 0; i < 10; ++i) {
            effect.Ask(effStopProcess);
            effect.Ask(effStartProcess);
            effect.Ask(effStartProcess);
            PlayFinite(effect, report, "started twice", 2);
        }
    });
}
const Check kOddLife{"odd-life", 9, 60, kPlain, "opened, switched and closed in unusual orders", OddLife};

void Instances(Subject& subject, Report& report) {
    constexpr std::size_t kCount = 32;
    std::vector<std::unique_ptr<RawEffect>> effects;
    for (std::size_t i = 0; i < kCount; ++i) {
        report.Trying("making {} instances at once, number {}", kCount, i + 1);
        effects.push_back(std::make_unique<RawEffect>(subject.Object()));
        effects.back()->Start(48000.0, kBlock);
    }
    bool differ = false;
    std::vector<std::unique_ptr<NoisePlayer<float>>> players;
    players.reserve(kCount);
    for (const auto& effect : effects)
        players.push_back(std::make_unique<NoisePlayer<float>>(*effect, kBlock, subject.seed()));
    for (int block = 0; block < 40; ++block) {
        report.Trying("processing with {} instances in turns, block {}", kCount, block);
        for (const auto& player : players) {
            player->Play();
            differ = differ || player->out() != players[0]->out();
        }
    }
    if (differ) report.Remark("equal instances give unequal sound: it is random, or they share something");
    for (const std::int32_t i : effects[0]->Settable()) {
        const float other = effects[1]->parameter(i);
        effects[0]->setParameter(i, other > 0.5f ? 0.0f : 1.0f);
        if (effects[1]->parameter(i) != other)
            report.Fault("setting parameter {} of one instance changes that of another", i);
    }
    std::vector<std::size_t> order(kCount);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::mt19937 random(subject.seed());
    std::shuffle(order.begin(), order.end(), random);
    for (const std::size_t index : order) {
        report.Trying("closing instance {} of {} in a random order while others play", index + 1, kCount);
        effects[index].reset();
        for (std::size_t i = 0; i < kCount; i += 7)
            if (effects[i]) players[i]->Play();
    }
}
const Check kInstances{
    "instances", 5, 60, kPlain, "many instances at once, which do not influence each other", Instances};

} // namespace
} // namespace vocafade::validate
