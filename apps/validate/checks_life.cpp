// SPDX-License-Identifier: MIT
#include "apps/validate/channels.h"
#include "apps/validate/check.h"

#include <algorithm>
#include <numeric>

namespace vocafade::validate {
namespace {

constexpr std::int32_t kBlock = 256;

class Sound {
  public:
    explicit Sound(Instance& effect) : in_(effect->numInputs, kBlock), out_(effect->numOutputs, kBlock) {
        std::mt19937 random(1);
        in_.FillWithNoise(random, 0.5F);
    }
    std::vector<std::vector<float>> Block(Instance& effect) {
        effect.Process(in_.pointers(), out_.pointers(), kBlock);
        std::vector<std::vector<float>> heard;
        for (std::size_t c = 0; c < out_.count(); ++c)
            heard.push_back(out_[c]);
        return heard;
    }
    bool AreFinite() const { return out_.AreFinite(kBlock); }

  private:
    Channels<float> in_;
    Channels<float> out_;
};

void Play(Instance& effect, Report& report, const char* situation, int blocks = 20) {
    Sound sound(effect);
    for (int i = 0; i < blocks; ++i)
        sound.Block(effect);
    if (!sound.AreFinite()) report.Fault("{}: its output is no number", situation);
}

} // namespace

void CheckLifeCycles(Subject& subject, Report& report) {
    const host::SharedObject& object = subject.Object();
    for (int i = 0; i < 100; ++i) {
        report.Trying("making and closing, round {}", i);
        Instance effect(object);
        effect.Close();
    }
    for (int i = 0; i < 100; ++i) {
        report.Trying("making, opening and closing, round {}", i);
        Instance effect(object);
        effect.Open();
        effect.Close();
    }
    for (int i = 0; i < 10; ++i) {
        report.Trying("closing while switched on, round {}", i);
        Instance effect(object);
        effect.Start(48000.0, kBlock);
        Play(effect, report, "a short life");
        effect.Close();
    }
    Instance effect(object);
    effect.Open();
    for (int i = 0; i < 50; ++i) {
        report.Trying("switching off, telling rate and block, switching on, round {}", i);
        effect.Configure(i % 2 == 0 ? 44100.0 : 48000.0, kBlock << (i % 4));
        effect.On();
        Play(effect, report, "switched off and on");
        effect.Off();
    }
    report.Trying("switching on and off without sound");
    for (int i = 0; i < 50; ++i) {
        effect.On();
        effect.Off();
    }
}

void CheckOddLifeCycles(Subject& subject, Report& report) {
    const host::SharedObject& object = subject.Object();
    const auto alone = [&](const char* what, auto work) {
        report.Trying("{}", what);
        Instance effect(object);
        work(effect);
    };
    alone("switching on twice, off twice", [&](Instance& effect) {
        effect.Start(48000.0, kBlock);
        effect.On();
        Play(effect, report, "switched on twice");
        effect.Off();
        effect.Off();
    });
    alone("switching off what was never on", [&](Instance& effect) {
        effect.Open();
        effect.Off();
        effect.Start(48000.0, kBlock);
        Play(effect, report, "switched off before it was on");
    });
    alone("opening twice", [&](Instance& effect) {
        effect.Open();
        effect.Start(48000.0, kBlock);
        Play(effect, report, "opened twice");
    });
    alone("telling the rate before opening", [&](Instance& effect) {
        effect.Configure(96000.0, kBlock);
        effect.Open();
        effect.On();
        Play(effect, report, "told its rate before it was opened");
    });
    alone("switching on without a rate and a block", [&](Instance& effect) {
        effect.Open();
        effect.On();
        Play(effect, report, "without a rate");
    });
    alone("changing rate and block while switched on", [&](Instance& effect) {
        effect.Start(48000.0, kBlock);
        for (int i = 0; i < 40; ++i) {
            effect.Configure(i % 2 == 0 ? 96000.0 : 22050.0, kBlock << (i % 5));
            Play(effect, report, "reconfigured while on", 3);
        }
    });
    alone("asking for everything before opening", [&](Instance& effect) {
        for (std::int32_t i = 0; i < effect->numParams; ++i) {
            effect.parameter(i);
            effect.Text(effGetParamName, i);
            effect.Text(effGetParamDisplay, i);
        }
        effect.Text(effGetEffectName);
        effect.Text(effGetProgramName);
        effect.Ask(effGetProgram);
    });
    alone("processing while switched off", [&](Instance& effect) {
        effect.Open();
        effect.Configure(48000.0, kBlock);
        Play(effect, report, "never switched on");
        effect.On();
        effect.Off();
        Play(effect, report, "switched off");
        effect.On();
        Play(effect, report, "switched on after it ran while off");
    });
    alone("stopping and starting the process without switching", [&](Instance& effect) {
        effect.Start(48000.0, kBlock);
        for (int i = 0; i < 10; ++i) {
            effect.Ask(effStopProcess);
            effect.Ask(effStartProcess);
            effect.Ask(effStartProcess);
            Play(effect, report, "started twice", 2);
        }
    });
}

void CheckManyInstances(Subject& subject, Report& report) {
    constexpr std::size_t kCount = 32;
    std::vector<std::unique_ptr<Instance>> effects;
    for (std::size_t i = 0; i < kCount; ++i) {
        report.Trying("making {} instances at once, number {}", kCount, i + 1);
        effects.push_back(std::make_unique<Instance>(subject.Object()));
        effects.back()->Start(48000.0, kBlock);
    }
    bool differ = false;
    std::vector<std::unique_ptr<Sound>> players;
    players.reserve(kCount);
    for (const auto& effect : effects)
        players.push_back(std::make_unique<Sound>(*effect));
    for (int block = 0; block < 40; ++block) {
        report.Trying("processing with {} instances in turns, block {}", kCount, block);
        const auto first = players[0]->Block(*effects[0]);
        for (std::size_t i = 1; i < kCount; ++i)
            differ = differ || players[i]->Block(*effects[i]) != first;
    }
    if (differ) report.Remark("equal instances give unequal sound: it is random, or they share something");
    // What is turned on one must not move another.
    if (effects[0]->operator->()->numParams > 0 && effects[0]->IsSettable(0)) {
        const float other = effects[1]->parameter(0);
        effects[0]->setParameter(0, other > 0.5F ? 0.0F : 1.0F);
        if (effects[1]->parameter(0) != other)
            report.Fault("a parameter of one instance moves that of another");
    }
    std::vector<std::size_t> order(kCount);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::mt19937 random(subject.seed());
    std::shuffle(order.begin(), order.end(), random);
    for (const std::size_t index : order) {
        report.Trying("closing instance {} of {} in a random order while others play", index + 1, kCount);
        effects[index].reset();
        for (std::size_t i = 0; i < kCount; i += 7)
            if (effects[i]) players[i]->Block(*effects[i]);
    }
}

} // namespace vocafade::validate
