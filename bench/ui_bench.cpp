// SPDX-License-Identifier: MIT
// What the built plug-in's editor costs its host. The budget: the whole panel under 4 ms, a step of the
// meters under 0.3 ms, an idle with nothing to do next to nothing. It needs a display: xvfb-run -s -noreset.

#include "host/effect.h"
#include "vst/opcodes.h"

#include <array>
#include <benchmark/benchmark.h>
#include <bit>
#include <cstdlib>
#include <vector>
#include <xcb/xcb.h>

namespace {

using namespace vocafade;

/// The plug-in's editor in a host's window.
class Editor {
  public:
    explicit Editor(benchmark::State& state)
        : effect(VOCAFADE_PLUGIN), connection_(xcb_connect(nullptr, nullptr)) {
        effect.Configure(44100.0, kBlock);
        effect.Start();
        if (xcb_connection_has_error(connection_) == 0) {
            const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
            window_ = xcb_generate_id(connection_);
            xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen->root, 0, 0, 500, 300, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
            xcb_map_window(connection_, window_);
            std::free(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        }
        if (!Open()) state.SkipWithError("no display");
        for (int i = 0; i < 5; ++i)
            effect.IdleEditor();
    }
    ~Editor() {
        effect.CloseEditor();
        xcb_disconnect(connection_);
    }
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;

    bool Open() { return effect.OpenEditor(std::bit_cast<void*>(std::uintptr_t{window_})); }
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
    xcb_connection_t* connection_;
    xcb_window_t window_ = 0;
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
