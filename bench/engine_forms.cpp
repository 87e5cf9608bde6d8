// SPDX-License-Identifier: MIT
#include "base/critical_section.h"
#include "bench/engine_interface.h"
#include "bench/plain_engine.h"
#include "dsp/vocafade_unit.h"

#ifdef VOCAFADE_BENCH_LIBRARIES
#include "bench/library_engine.h"
#endif

namespace vocafade::bench {
namespace {

/// The plug-in's own engine.
class UnitEngine final : public Engine {
  public:
    explicit UnitEngine(const kernels::KernelSet& set) : unit_(set) {
        unit_.SetCancelFS(kLowHertz, kHighHertz);
        unit_.Init(kFrameSize, 44100, kOverlap, &lock_);
    }
    void Process(const float* inL, const float* inR, int count, float* outL, float* outR) override {
        int produced = 0;
        unit_.Operate(inL, inR, count, outL, outR, &produced);
    }

  private:
    CCriticalSection lock_;
    CVocafadeUnit unit_;
};

} // namespace

std::vector<EngineForm> EngineForms() {
    std::vector<EngineForm> forms;
    forms.push_back({"plain", MakePlainEngine});
#ifdef VOCAFADE_BENCH_LIBRARIES
    if (MakeLibraryEngine() != nullptr) forms.push_back({"fftw+sleef", MakeLibraryEngine});
#endif
    for (int i = 0; const kernels::KernelSet* set = kernels::AvailableKernels(i); ++i) {
        forms.push_back({std::string("vocafade/") + set->instructionSet,
                         [set] { return std::make_unique<UnitEngine>(*set); }});
    }
    return forms;
}

} // namespace vocafade::bench
