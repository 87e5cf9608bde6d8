// SPDX-License-Identifier: MIT
#include "apps/validate/channels.h"
#include "apps/validate/check.h"

#include <algorithm>
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
        const unsigned what = Any(100);
        if (what < 50) {
            Play(number);
        } else if (what < 75) {
            SetParameter(number);
        } else if (what < 82) {
            SetProgram(number);
        } else if (what < 87) {
            Reconfigure(number);
        } else if (what < 91) {
            Save(number);
        } else if (what < 95) {
            Restore(number);
        } else if (what < 98) {
            AskTexts(number);
        } else {
            Renew();
        }
    }

  private:
    unsigned Any(unsigned count) { return static_cast<unsigned>(random_() % count); }

    void Renew() {
        effect_ = std::make_unique<Instance>(subject_.Object());
        block_ = 512;
        effect_->Start(48000.0, block_);
    }

    void Play(int number) {
        const auto frames = static_cast<std::int32_t>(Any(static_cast<unsigned>(block_) + 1));
        report_.Trying("step {} of seed {}: a block of {}", number, subject_.seed(), frames);
        Channels<float> in((*effect_)->numInputs, frames);
        Channels<float> out((*effect_)->numOutputs, frames);
        in.FillWithNoise(random_, Any(10) == 0 ? 1000.0F : 0.5F);
        const bool inPlace = in.count() == out.count() && Any(2) == 0;
        Channels<float>& heard = inPlace ? in : out;
        effect_->Process(in.pointers(), heard.pointers(), frames);
        if (!heard.AreFinite(frames)) report_.Fault("in the middle of a session its output is no number");
    }

    void SetParameter(int number) {
        if ((*effect_)->numParams == 0) return;
        const auto index = static_cast<std::int32_t>(Any(static_cast<unsigned>((*effect_)->numParams)));
        const float value = static_cast<float>(Any(1001)) / 1000.0F;
        if (!effect_->IsSettable(index)) return;
        report_.Trying("step {} of seed {}: parameter {} to {}", number, subject_.seed(), index, value);
        effect_->setParameter(index, value);
    }

    void SetProgram(int number) {
        if ((*effect_)->numPrograms == 0) return;
        const auto program = Any(static_cast<unsigned>((*effect_)->numPrograms));
        report_.Trying("step {} of seed {}: program {}", number, subject_.seed(), program);
        effect_->Ask(effSetProgram, 0, program);
    }

    void Reconfigure(int number) {
        static constexpr std::array<double, 6> kRates = {8000.0,  44100.0,  48000.0,
                                                         96000.0, 192000.0, 384000.0};
        const double rate = kRates[Any(kRates.size())];
        block_ = static_cast<std::int32_t>(1 + Any(8192));
        report_.Trying("step {} of seed {}: {:g} Hz, blocks of {}", number, subject_.seed(), rate, block_);
        effect_->Off();
        effect_->Configure(rate, block_);
        effect_->On();
    }

    void Save(int number) {
        if (!effect_->has(effFlagsProgramChunks)) return;
        report_.Trying("step {} of seed {}: saving", number, subject_.seed());
        savedProgram_ = Any(2) == 0;
        void* data = nullptr;
        const VstIntPtr size = effect_->Ask(effGetChunk, savedProgram_ ? 1 : 0, 0, static_cast<void*>(&data));
        const auto* bytes = static_cast<const char*>(data);
        if (size > 0 && bytes != nullptr) saved_.assign(bytes, bytes + size);
    }

    void Restore(int number) {
        if (saved_.empty()) return;
        report_.Trying("step {} of seed {}: restoring", number, subject_.seed());
        effect_->Ask(effSetChunk, savedProgram_ ? 1 : 0, static_cast<VstIntPtr>(saved_.size()),
                     saved_.data());
    }

    void AskTexts(int number) {
        report_.Trying("step {} of seed {}: all texts", number, subject_.seed());
        for (std::int32_t i = 0; i < (*effect_)->numParams; ++i)
            for (const std::int32_t opcode : {effGetParamName, effGetParamLabel, effGetParamDisplay})
                effect_->Text(opcode, i);
        effect_->Text(effGetProgramName);
    }

    Subject& subject_;
    Report& report_;
    std::mt19937 random_;
    std::unique_ptr<Instance> effect_;
    std::int32_t block_ = 512;
    std::vector<char> saved_;
    bool savedProgram_ = false;
};

} // namespace

void CheckRandomSession(Subject& subject, Report& report) {
    Session session(subject, report);
    for (int i = 0; i < 6000; ++i)
        session.Step(i);
}

} // namespace vocafade::validate
