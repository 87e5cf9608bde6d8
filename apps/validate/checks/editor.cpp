// SPDX-License-Identifier: MIT
#include "apps/validate/audio_runner.h"
#include "apps/validate/check.h"
#include "apps/validate/process_state.h"
#include "apps/validate/shown_editor.h"

#include <optional>

namespace vocafade::validate {
namespace {

/// Opens and closes it once.
void ShowOnce(RawEffect& effect, Report& report, int round) {
    report.Trying("opening the editor, round {}", round);
    std::optional<ShownEditor> editor(std::in_place, effect);
    if (!editor->hadSize()) report.Remark("the editor has no size before it is open");
    if (!editor->opened()) report.Remark("opening the editor returns 0");
    report.Trying("idling the editor, round {}", round);
    editor->Idle(4);
    if (round == 0) {
        const std::size_t windows = editor->parent().Children().size();
        if (windows == 0) report.Remark("the open editor shows no window");
        report.Measured("the editor is {} by {} pixels, {} windows", editor->width(), editor->height(),
                        windows);
    }
    report.Trying("turning the wheel over the editor, round {}", round);
    editor->TurnWheel(round % 7 / 7.0, round % 5 / 5.0, round % 2 == 0);
    editor->Idle(2);
    report.Trying("closing the editor, round {}", round);
    if (!editor->parent().isAlive())
        report.Fault("the editor breaks its host's own window or connection to the display");
    editor.reset();
}

void Editor(Subject& subject, Report& report) {
    RawEffect effect(subject.Object());
    effect.Start(48000.0, kBlock);
    // One window stands all the while, because a display without any may start anew.
    const auto anchor = host::ParentWindow::Make(10, 10);
    ReportLeftovers(
        5, 30, "the editor is opened and closed",
        [&](int round) {
            ShowOnce(effect, report, round);
            return HasGraphicsDriver();
        },
        report);
    report.Trying("closing the effect with its editor open");
    RawEffect careless(subject.Object());
    careless.Open();
    ShownEditor editor(careless);
    editor.Idle(2);
    careless.Close();
}
const Check kEditor{
    "editor", 7, 60, kNeedsEditor | kSeveralThreads, "the editor opens and closes over and over", Editor};

void EditorWhileAudio(Subject& subject, Report& report) {
    RawEffect effect(subject.Object());
    effect.Start(48000.0, kBlock);
    const std::vector<std::int32_t> settable = effect.Settable();
    const auto anchor = host::ParentWindow::Make(10, 10);
    AudioRunner audio(effect, kBlock, subject.seed());
    std::mt19937 random(subject.seed());
    std::uniform_real_distribution<float> value(0.0f, 1.0f);
    for (int round = 0; round < 5; ++round) {
        report.Trying("opening the editor while audio runs, round {}", round);
        ShownEditor editor(effect);
        for (int i = 0; i < 40; ++i) {
            report.Trying("setting parameters with the editor open while audio runs, round {}", round);
            for (const std::int32_t p : settable)
                effect.setParameter(p, value(random));
            if (effect->numPrograms > 0 && i % 10 == 9) effect.Ask(effSetProgram, 0, i % effect->numPrograms);
            editor.Idle(1);
            editor.TurnWheel(value(random), value(random), i % 2 == 0);
        }
        report.Trying("closing the editor while audio runs, round {}", round);
    }
    audio.LetPass(2);
    audio.Stop();
    if (!audio.wasFinite()) report.Fault("with its editor open its output was NaN or infinite");
    const AudioWatch::Counts& counts = audio.counts();
    if (counts.allocations > 0)
        report.Fault("with its editor open the audio thread allocated memory {} times", counts.allocations);
    if (counts.sleeps + counts.fileCalls > 0)
        report.Fault("with its editor open the audio thread waited or called for files ({}{})",
                     counts.lastSleep, counts.lastFileCall);
}
const Check kEditorWhileAudio{
    "editor-while-audio", 7, 60, kNeedsEditor | kSeveralThreads, "the editor is open while audio runs",
    EditorWhileAudio};

} // namespace
} // namespace vocafade::validate
