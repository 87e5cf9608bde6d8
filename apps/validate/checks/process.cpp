// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/player.h"
#include "apps/validate/process_state.h"
#include "apps/validate/shown_editor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace vocafade::validate {
namespace {

/// Loads, plays and unloads, with sound on a thread of its own, so that what is kept for each thread shows.
/// True when its editor drew through the graphics driver.
bool LoadUseAndUnload(const std::filesystem::path& path, bool editor) {
    const host::SharedObject object(path);
    Instance effect(object);
    effect.Start(48000.0, kBlock);
    std::thread audio([&] { Player<float>(effect, kBlock, 1).Play(10); });
    audio.join();
    for (std::int32_t i = 0; i < effect->numParams; ++i)
        effect.Text(effGetParamName, i);
    const bool shown = editor && effect.has(effFlagsHasEditor);
    if (shown) ShownEditor(effect).Idle(3);
    effect.Off();
    return shown && HasGraphicsDriver();
}

/// What belongs to the whole process, and what a plug-in must therefore leave as it is.
struct Manners {
    std::array<struct sigaction, 65> actions{};
    sigset_t blocked{};
    std::string locale;
    std::string folder;
    mode_t mask = 0;
#if defined(__x86_64__)
    unsigned floatMode = 0;
#endif
    std::vector<std::string> environment;

    static Manners Read() {
        Manners now;
        for (int signal = 1; signal < 65; ++signal)
            ::sigaction(signal, nullptr, &now.actions[static_cast<std::size_t>(signal)]);
        ::pthread_sigmask(SIG_SETMASK, nullptr, &now.blocked);
        now.locale = std::setlocale(LC_ALL, nullptr); // NOLINT(concurrency-mt-unsafe): it only asks
        std::error_code error;
        now.folder = std::filesystem::current_path(error).string();
        now.mask = ::umask(0);
        ::umask(now.mask);
#if defined(__x86_64__)
        now.floatMode = _mm_getcsr() & ~0x3FU; // without the flags of past exceptions
#endif
        for (char** variable = environ; *variable != nullptr; ++variable)
            now.environment.emplace_back(*variable);
        return now;
    }
};

void Compare(const Manners& before, const Manners& after, const char* when, Report& report) {
    for (std::size_t signal = 1; signal < before.actions.size(); ++signal)
        if (before.actions[signal].sa_sigaction != after.actions[signal].sa_sigaction)
            report.Fault("{} signal {} has another handler", when, signal);
    if (std::memcmp(&before.blocked, &after.blocked, sizeof before.blocked) != 0)
        report.Fault("{} other signals are blocked", when);
    if (before.locale != after.locale) report.Fault("{} the locale is {}", when, after.locale);
    if (before.folder != after.folder) report.Fault("{} the current folder is {}", when, after.folder);
    if (before.mask != after.mask) report.Fault("{} new files get other permissions", when);
    if (before.environment != after.environment) report.Fault("{} the environment has changed", when);
#if defined(__x86_64__)
    constexpr unsigned kDenormals = 0x8040; // flush to zero, denormals are zero
    if (((before.floatMode ^ after.floatMode) & ~kDenormals) != 0)
        report.Fault("{} the rounding or the exceptions of floating point have changed", when);
    else if (before.floatMode != after.floatMode)
        report.Remark("{} the treatment of denormals has changed", when);
#endif
}

void Loading(Subject& subject, Report& report) {
    const std::string file = subject.Object().file().string();
    // One window stands all the while, because a display without any may start anew.
    const auto anchor = host::ParentWindow::Make(10, 10);
    if (!anchor) report.Remark("without its editor: there is no display");
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
            report);
        if (IsMapped(file)) report.Remark("it stays in memory after it was unloaded");
    }
}
const Check kLoading{"loading", 10, 120, kPlain, "loaded and unloaded a hundred times, and nothing is left",
                     Loading};

void Fork(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(48000.0, kBlock);
    PlayFinite(effect, report, "before a fork");
    for (const bool uses : {false, true}) {
        report.Trying("forking; the child {}", uses ? "plays on and closes" : "leaves at once");
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(20); // a lock that nobody in the child holds would otherwise be waited for forever
            if (uses) {
                Player<float>(effect, kBlock, 1).Play(30);
                effect.Text(effGetEffectName);
                effect.Close();
            }
            ::_exit(0);
        }
        int status = 0;
        while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        const char* what = uses ? "uses the effect" : "leaves at once";
        if (WIFSIGNALED(status))
            report.Fault("a child of the host that {} dies of signal {}{}", what, WTERMSIG(status),
                         WTERMSIG(status) == SIGALRM ? ": it hung" : "");
        else if (WEXITSTATUS(status) != 0)
            report.Fault("a child of the host that {} ends with {}", what, WEXITSTATUS(status));
        PlayFinite(effect, report, "after a fork");
    }
    effect.Off();
}
const Check kFork{"fork", 10, 60, kPlain, "the host forks, and its child uses the effect or leaves", Fork};

void UnchangedProcess(Subject& subject, Report& report) {
    subject.Unload();
    const auto anchor = host::ParentWindow::Make(10, 10);
    const Manners before = Manners::Read();
    {
        report.Trying("using it and watching the process");
        const host::SharedObject object(subject.path());
        Compare(before, Manners::Read(), "after it was loaded", report);
        Instance effect(object);
        effect.Start(48000.0, kBlock);
        Compare(before, Manners::Read(), "after it was opened", report);
        PlayFinite(effect, report, "while the process is watched");
        Compare(before, Manners::Read(), "after it processed", report);
        if (anchor && effect.has(effFlagsHasEditor)) {
            report.Trying("showing its editor and watching the process");
            ShownEditor(effect).Idle(3);
            Compare(before, Manners::Read(), "after its editor was shown", report);
        }
        effect.Off();
        effect.Close();
    }
    Compare(before, Manners::Read(), "after it was unloaded", report);
}
const Check kManners{"manners",
                     10,
                     30,
                     kPlain,
                     "the process stays as it was: signals, locale, folder, environment, floating-point mode",
                     UnchangedProcess};

} // namespace
} // namespace vocafade::validate
