// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/noise_player.h"

#include <array>

namespace vocafade::validate {
namespace {

/// One instance and what a host would remember of it.
class Session {
  public:
    Session(Subject& subject, Report& report) : subject_(subject), report_(report), random_(subject.seed()) {
        Renew();
    }

    void Step(int number) {
        number_ = number;
        const unsigned kind = Any(100);
        if (kind < 50) {
            Play();
        } else if (kind < 75) {
            SetParameter();
        } else if (kind < 82) {
            SetProgram();
        } else if (kind < 87) {
            Reconfigure();
        } else if (kind < 91) {
            Save();
        } else if (kind < 95) {
            Restore();
        } else if (kind < 98) {
            AskTexts();
        } else {
            Renew();
        }
    }

  private:
    unsigned Any(unsigned count) { return static_cast<unsigned>(random_() % count); }

    template <typename... Args>
    void Trying(fmt::format_string<Args...> format, Args&&... args) {
        report_.Trying("step {} of seed {}: {}", number_, subject_.seed(),
                       fmt::format(format, std::forward<Args>(args)...));
    }

    void Renew() {
        effect_ = std::make_unique<RawEffect>(subject_.Object());
        block_ = kBlock;
        effect_->Start(48000.0, block_);
    }

    void Play() {
        const auto frames = static_cast<std::int32_t>(Any(static_cast<unsigned>(block_) + 1));
        Trying("a block of {}", frames);
        Channels<float> in((*effect_)->numInputs, frames);
        Channels<float> out((*effect_)->numOutputs, frames);
        in.FillWithNoise(random_, Any(10) == 0 ? 1000.0f : 0.5f);
        const bool inPlace = in.count() == out.count() && Any(2) == 0;
        Channels<float>& heard = inPlace ? in : out;
        effect_->Process(in.pointers(), heard.pointers(), frames);
        if (!heard.AreFinite(frames)) report_.Fault("during a session its output is NaN or infinite");
    }

    void SetParameter() {
        const std::vector<std::int32_t> settable = effect_->Settable();
        if (settable.empty()) return;
        const std::int32_t index = settable[Any(static_cast<unsigned>(settable.size()))];
        const float value = static_cast<float>(Any(1001)) / 1000.0f;
        Trying("parameter {} to {}", index, value);
        effect_->setParameter(index, value);
    }

    void SetProgram() {
        if ((*effect_)->numPrograms == 0) return;
        const auto program = Any(static_cast<unsigned>((*effect_)->numPrograms));
        Trying("program {}", program);
        effect_->Ask(effSetProgram, 0, program);
    }

    void Reconfigure() {
        static constexpr std::array<double, 6> kRates = {8000.0,  44100.0,  48000.0,
                                                         96000.0, 192000.0, 384000.0};
        const double rate = kRates[Any(kRates.size())];
        block_ = static_cast<std::int32_t>(1 + Any(8192));
        Trying("{:g} Hz, blocks of {}", rate, block_);
        effect_->Off();
        effect_->Configure(rate, block_);
        effect_->On();
    }

    void Save() {
        if (!effect_->has(effFlagsProgramChunks)) return;
        Trying("saving");
        savedProgram_ = Any(2) == 0;
        saved_ = effect_->SaveState(savedProgram_);
    }

    void Restore() {
        if (saved_.empty()) return;
        Trying("restoring");
        effect_->RestoreState(saved_, savedProgram_);
    }

    void AskTexts() {
        Trying("all texts");
        for (std::int32_t i = 0; i < (*effect_)->numParams; ++i)
            for (const std::int32_t opcode : {effGetParamName, effGetParamLabel, effGetParamDisplay})
                effect_->Text(opcode, i);
        effect_->Text(effGetProgramName);
    }

    Subject& subject_;
    Report& report_;
    std::mt19937 random_;
    int number_ = 0;
    std::unique_ptr<RawEffect> effect_;
    std::int32_t block_ = kBlock;
    std::vector<char> saved_;
    bool savedProgram_ = false;
};

void RandomSession(Subject& subject, Report& report) {
    Session session(subject, report);
    for (int i = 0; i < 6000; ++i)
        session.Step(i);
}
const Check kRandomSession{
    "random-session", 10, 180, kPlain, "thousands of calls at random, processing among them", RandomSession};

} // namespace
} // namespace vocafade::validate
