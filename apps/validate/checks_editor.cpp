// SPDX-License-Identifier: MIT
#include "apps/validate/audio_runner.h"
#include "apps/validate/check.h"
#include "apps/validate/parent_window.h"
#include "apps/validate/process_state.h"

#include <chrono>
#include <optional>

namespace vocafade::validate {
namespace {

constexpr std::int32_t kBlock = 256;

struct Size {
    std::uint16_t width;
    std::uint16_t height;
};

std::optional<Size> SizeOf(Instance& effect, Report& report) {
    if (!effect.has(effFlagsHasEditor)) {
        report.Skipped("it has no editor");
        return std::nullopt;
    }
    ERect* rect = nullptr;
    report.Trying("asking for the editor's size");
    effect.Ask(effEditGetRect, 0, 0, static_cast<void*>(&rect));
    if (rect == nullptr) {
        report.Remark("the editor has no size before it is open");
        return Size{400, 300};
    }
    const int width = rect->right - rect->left;
    const int height = rect->bottom - rect->top;
    if (width <= 0 || height <= 0) {
        report.Remark("the editor is {} by {} pixels before it is open", width, height);
        return Size{400, 300};
    }
    return Size{static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height)};
}

void Idle(Instance& effect, ParentWindow& parent, int times) {
    for (int i = 0; i < times; ++i) {
        effect.Ask(effEditIdle);
        parent.Refresh();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

} // namespace

void CheckEditor(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(48000.0, kBlock);
    const std::optional<Size> size = SizeOf(effect, report);
    if (!size) return;
    const std::string file = subject.Object().file().string();
    // One window stands all the while, because a display without any may start anew.
    const std::unique_ptr<ParentWindow> anchor = ParentWindow::Make(10, 10);
    if (!anchor) {
        report.Skipped("there is no display");
        return;
    }
    std::array<ProcessState, 3> looks;
    constexpr int kWarm = 5;
    constexpr int kRounds = 30;
    for (int i = 0; i < kWarm + kRounds; ++i) {
        if (i == kWarm) looks[0] = ReadProcessState(file);
        if (i == kWarm + kRounds / 2) looks[1] = ReadProcessState(file);
        const std::unique_ptr<ParentWindow> parent = ParentWindow::Make(size->width, size->height);
        if (!parent) throw Hopeless("the display went away");
        report.Trying("opening the editor, round {}", i);
        if (effect.Ask(effEditOpen, 0, 0, parent->handle()) == 0)
            report.Remark("opening the editor answers 0");
        report.Trying("idling the editor, round {}", i);
        Idle(effect, *parent, 4);
        if (i == 0) {
            const int windows = parent->Refresh();
            if (windows == 0) report.Remark("the open editor shows no window");
            report.Measured("the editor is {} by {} pixels, {} windows", size->width, size->height, windows);
        }
        report.Trying("turning the wheel over the editor, round {}", i);
        parent->TurnWheel(static_cast<std::int16_t>(size->width * (i % 7) / 7),
                          static_cast<std::int16_t>(size->height * (i % 5) / 5), i % 2 == 0);
        Idle(effect, *parent, 2);
        report.Trying("closing the editor, round {}", i);
        effect.Ask(effEditClose);
        if (!parent->isAlive())
            report.Fault("the editor brings its host's own connection to the display down");
    }
    looks[2] = ReadProcessState(file);
    ReportLeftovers(looks, kRounds, "the editor is opened and closed", HasGraphicsDriver(), report);
    report.Trying("closing the effect with its editor open");
    const std::unique_ptr<ParentWindow> parent = ParentWindow::Make(size->width, size->height);
    Instance careless(subject.Object());
    careless.Open();
    careless.Ask(effEditOpen, 0, 0, parent->handle());
    Idle(careless, *parent, 2);
    careless.Close();
}

void CheckEditorWhileAudio(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(48000.0, kBlock);
    const std::optional<Size> size = SizeOf(effect, report);
    if (!size) return;
    const std::unique_ptr<ParentWindow> parent = ParentWindow::Make(size->width, size->height);
    if (!parent) {
        report.Skipped("there is no display");
        return;
    }
    AudioRunner audio(effect, kBlock, subject.seed());
    std::mt19937 random(subject.seed());
    for (int round = 0; round < 5; ++round) {
        report.Trying("opening the editor while audio runs, round {}", round);
        effect.Ask(effEditOpen, 0, 0, parent->handle());
        for (int i = 0; i < 40; ++i) {
            report.Trying("turning parameters with the editor open while audio runs, round {}", round);
            for (std::int32_t p = 0; p < effect->numParams; ++p)
                if (effect.IsSettable(p))
                    effect.setParameter(p, static_cast<float>(random() % 1000) / 1000.0F);
            if (effect->numPrograms > 0 && i % 10 == 9) effect.Ask(effSetProgram, 0, i % effect->numPrograms);
            Idle(effect, *parent, 1);
            parent->TurnWheel(static_cast<std::int16_t>(random() % size->width),
                              static_cast<std::int16_t>(random() % size->height), i % 2 == 0);
        }
        report.Trying("closing the editor while audio runs, round {}", round);
        effect.Ask(effEditClose);
        audio.LetPass(2);
    }
    audio.Stop();
    if (!audio.wasFinite()) report.Fault("with its editor open its output was no number");
    const AudioWatch::Counts& counts = audio.counts();
    if (counts.allocations > 0)
        report.Fault("with its editor open the audio thread asked for memory {} times", counts.allocations);
    if (counts.sleeps + counts.fileCalls > 0)
        report.Fault("with its editor open the audio thread waited or called for files ({}{})",
                     counts.lastSleep, counts.lastFileCall);
}

} // namespace vocafade::validate
