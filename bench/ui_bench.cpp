// SPDX-License-Identifier: MIT
// What the built plug-in's editor costs its host. The budget: the whole panel under 4 ms, a step of the
// meters under 0.3 ms, an idle with nothing to do next to nothing. It needs a display: xvfb-run -s -noreset.

#include "host/effect.h"
#include "host/parent_window.h"
#include "vst/opcodes.h"

#include <array>
#include <benchmark/benchmark.h>
#include <memory>
#include <vector>

namespace {

using namespace vocafade;

/// The plug-in's editor in a host's window.
class Editor {
  public:
    explicit Editor(benchmark::State& state)
        : effect(VOCAFADE_PLUGIN), window_(host::ParentWindow::Make(500, 300)) {
        effect.Configure(44100.0, kBlock);
        effect.Start();
        if (window_) window_->Show();
        if (!Open()) state.SkipWithError("no display");
        for (int i = 0; i < 5; ++i)
            effect.IdleEditor();
    }
    ~Editor() { effect.CloseEditor(); }
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    bool Open() { return window_ && effect.OpenEditor(window_->handle()); }
    /// Lets a loud block through, from which the meters fall for 176 idles.
    void Play() {
        std::array<float, kBlock> loud{};
        loud.fill(0.9f);
        std::array<float, kBlock> left{};
        std::array<float, kBlock> right{};
        float* in[] = {loud.data(), loud.data()};
        float* out[] = {left.data(), right.data()};
        effect.Process(in, out, kBlock);
    }

    host::Effect effect;

  private:
    static constexpr std::int32_t kBlock = 256;
    std::unique_ptr<host::ParentWindow> window_;
};

void PaintThePanel(benchmark::State& state) {
    Editor editor(state);
    for ([[maybe_unused]] auto _ : state) {
        editor.effect.Dispatch(effEditDraw);
        editor.effect.IdleEditor();
    }
}
BENCHMARK(PaintThePanel)->Unit(benchmark::kMillisecond);

void StepTheMeters(benchmark::State& state) {
    Editor editor(state);
    int idles = 0;
    for ([[maybe_unused]] auto _ : state) {
        if (idles++ % 150 == 0) {
            state.PauseTiming();
            editor.Play();
            state.ResumeTiming();
        }
        editor.effect.IdleEditor();
    }
}
BENCHMARK(StepTheMeters)->Unit(benchmark::kMillisecond);

void IdleWithNothingToDo(benchmark::State& state) {
    Editor editor(state);
    for ([[maybe_unused]] auto _ : state)
        editor.effect.IdleEditor();
}
BENCHMARK(IdleWithNothingToDo)->Unit(benchmark::kMicrosecond);

void OpenPaintAndClose(benchmark::State& state) {
    Editor editor(state);
    for ([[maybe_unused]] auto _ : state) {
        editor.effect.CloseEditor();
        editor.Open();
        editor.effect.IdleEditor();
    }
}
BENCHMARK(OpenPaintAndClose)->Unit(benchmark::kMillisecond);

} // namespace
