// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/noise_player.h"
#include "apps/validate/process_state.h"
#include "apps/validate/process_traits.h"
#include "apps/validate/shown_editor.h"

#include <filesystem>
#include <thread>
#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace vocafade::validate {
namespace {

/// Loads, plays and unloads, with sound on a thread of its own, so that what is kept for each thread shows.
/// True when its editor drew through the graphics driver.
bool LoadUseAndUnload(const std::filesystem::path& path, bool editor) {
    const host::SharedObject object(path);
    RawEffect effect(object);
    effect.Start(48000.0, kBlock);
    std::thread audio([&] { NoisePlayer<float>(effect, kBlock, 1).Play(10); });
    audio.join();
    for (std::int32_t i = 0; i < effect->numParams; ++i)
        effect.Text(effGetParamName, i);
    const bool shown = editor && effect.has(effFlagsHasEditor);
    if (shown) ShownEditor(effect).Idle(3);
    effect.Off();
    return shown && HasGraphicsDriver();
}

constexpr unsigned kDenormalBits = 0x8040; // flush to zero, denormals are zero

/// How this thread computes, without the flags of past exceptions; 0 where that is not known.
unsigned FloatMode() {
#if defined(__x86_64__)
    return _mm_getcsr() & ~0x3FU;
#else
    return 0;
#endif
}

struct Manners {
    std::vector<ProcessTrait> traits = ReadProcessTraits();
    unsigned floatMode = FloatMode();
};

void Compare(const Manners& before, const char* when, Report& report) {
    const Manners after;
    for (std::size_t i = 0; i < before.traits.size(); ++i)
        if (before.traits[i].value != after.traits[i].value)
            report.Fault("{} {}", when, after.traits[i].whenChanged);
    const unsigned changed = before.floatMode ^ after.floatMode;
    if ((changed & ~kDenormalBits) != 0)
        report.Fault("{} the rounding or the exceptions of floating point have changed", when);
    else if (changed != 0)
        report.Remark("{} the treatment of denormals has changed", when);
}

void Loading(Subject& subject, Report& report) {
    const std::filesystem::path file = subject.Object().file();
    // One window stands all the while, because a display without any may start anew.
    const auto anchor = host::ParentWindow::Make(10, 10);
    if (!anchor) report.Remark("without its editor: there is no display");
    KeepSystemLibraries();
    subject.Unload(); // it would keep it in memory
    for (const bool editor : {false, true}) {
        if (editor && !anchor) break;
        ReportLeftovers(
            20, 100, editor ? "it is loaded, shown and unloaded" : "it is loaded and unloaded",
            [&](int round) {
                report.Trying("loading, using and unloading it {} its editor, round {}",
                              editor ? "with" : "without", round);
                return LoadUseAndUnload(subject.path(), editor);
            },
            report, kLostByLoading);
        if (IsMapped(file)) report.Remark("it stays in memory after it was unloaded");
    }
}
const Check kLoading{"loading", 10, 120, kPlain, "loaded and unloaded a hundred times, and nothing is left",
                     Loading};

void UnchangedProcess(Subject& subject, Report& report) {
    subject.Unload();
    const auto anchor = host::ParentWindow::Make(10, 10);
    const Manners before;
    {
        report.Trying("using it and watching the process");
        const host::SharedObject object(subject.path());
        Compare(before, "after it was loaded", report);
        RawEffect effect(object);
        effect.Start(48000.0, kBlock);
        Compare(before, "after it was opened", report);
        PlayFinite(effect, report, "while the process is watched");
        Compare(before, "after it processed", report);
        if (anchor && effect.has(effFlagsHasEditor)) {
            report.Trying("showing its editor and watching the process");
            ShownEditor(effect).Idle(3);
            Compare(before, "after its editor was shown", report);
        }
        effect.Off();
        effect.Close();
    }
    Compare(before, "after it was unloaded", report);
}
const Check kManners{"manners",
                     10,
                     30,
                     kPlain,
                     "the process stays as it was: signals, locale, folder, environment, floating-point mode",
                     UnchangedProcess};

} // namespace
} // namespace vocafade::validate
