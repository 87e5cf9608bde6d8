// SPDX-License-Identifier: MIT
#include "apps/validate/channels.h"
#include "apps/validate/check.h"
#include "apps/validate/parent_window.h"
#include "apps/validate/process_state.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
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

constexpr std::int32_t kBlock = 512;

void PlaySome(Instance& effect, int blocks = 30) {
    Channels<float> in(effect->numInputs, kBlock);
    Channels<float> out(effect->numOutputs, kBlock);
    std::mt19937 random(1);
    in.FillWithNoise(random, 0.5F);
    for (int i = 0; i < blocks; ++i)
        effect.Process(in.pointers(), out.pointers(), kBlock);
}

/// Opens the editor in a window of our own, lets it paint and closes it.
void ShowEditor(Instance& effect) {
    const std::unique_ptr<ParentWindow> parent = ParentWindow::Make(800, 600);
    if (!parent) throw Hopeless("the display went away");
    effect.Ask(effEditOpen, 0, 0, parent->handle());
    for (int i = 0; i < 3; ++i) {
        effect.Ask(effEditIdle);
        parent->Refresh();
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    effect.Ask(effEditClose);
}

/// One life of the shared object, with sound on a thread of its own, so that what is kept a thread shows.
/// True when its editor drew through the graphics driver.
bool LoadUseAndUnload(const std::filesystem::path& path, bool editor) {
    const host::SharedObject object(path);
    Instance effect(object);
    effect.Start(48000.0, kBlock);
    std::thread audio([&] { PlaySome(effect, 10); });
    audio.join();
    for (std::int32_t i = 0; i < effect->numParams; ++i)
        effect.Text(effGetParamName, i);
    const bool shown = editor && effect.has(effFlagsHasEditor);
    if (shown) ShowEditor(effect);
    effect.Off();
    return shown && HasGraphicsDriver();
}

std::string OutputSoFar(int descriptor) {
    std::string text(4096, '\0');
    const ssize_t count = ::pread(descriptor, text.data(), text.size(), 0);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

/// Standard output and error go into a file for as long as this lives.
class OutputCapture {
  public:
    OutputCapture() : file_(std::tmpfile()), out_(::dup(STDOUT_FILENO)), error_(::dup(STDERR_FILENO)) {
        ::dup2(::fileno(file_), STDOUT_FILENO);
        ::dup2(::fileno(file_), STDERR_FILENO);
    }
    ~OutputCapture() {
        std::fflush(stdout);
        ::dup2(out_, STDOUT_FILENO);
        ::dup2(error_, STDERR_FILENO);
        ::close(out_);
        ::close(error_);
        std::fclose(file_);
    }
    OutputCapture(const OutputCapture&) = delete;
    OutputCapture& operator=(const OutputCapture&) = delete;
    std::string Text() const {
        std::fflush(stdout);
        return OutputSoFar(::fileno(file_));
    }

  private:
    std::FILE* file_;
    int out_;
    int error_;
};

/// Everything about the process that a plug-in may not take over.
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
        now.floatMode = _mm_getcsr() & ~0x3FU; // without the marks of what has happened
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
        report.Fault("{} rounding or exceptions of floating point are others", when);
    else if (before.floatMode != after.floatMode)
        report.Remark("{} denormal numbers are treated otherwise", when);
#endif
}

} // namespace

void CheckLoading(Subject& subject, Report& report) {
    constexpr int kWarm = 20; // the system's own caches fill up meanwhile
    constexpr int kRounds = 100;
    const std::filesystem::path& path = subject.path();
    const std::string file = subject.Object().file().string();
    // One window stands all the while, because a display without any may start anew.
    const std::unique_ptr<ParentWindow> anchor = ParentWindow::Make(10, 10);
    if (!anchor) report.Remark("without its editor: there is no display");
    subject.Unload(); // it would keep it in memory
    for (const bool editor : {false, true}) {
        if (editor && !anchor) break;
        std::array<ProcessState, 3> looks;
        bool graphicsDriver = false;
        for (int i = 0; i < kWarm + kRounds; ++i) {
            report.Trying("loading, using and unloading it {}its editor, round {}",
                          editor ? "with " : "without ", i);
            if (i == kWarm) looks[0] = ReadProcessState(file);
            if (i == kWarm + kRounds / 2) looks[1] = ReadProcessState(file);
            if (LoadUseAndUnload(path, editor)) graphicsDriver = true;
        }
        looks[2] = ReadProcessState(file);
        ReportLeftovers(looks, kRounds,
                        editor ? "it is loaded, shown and unloaded" : "it is loaded and unloaded",
                        graphicsDriver, report);
        if (looks[2].mapsThePlugin) report.Remark("it stays in memory after it was unloaded");
    }
}

void CheckFork(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(48000.0, kBlock);
    PlaySome(effect);
    for (const bool uses : {false, true}) {
        report.Trying("forking; the child {}", uses ? "plays on and closes" : "leaves at once");
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(20); // a lock that nobody in the child holds would otherwise be waited for without end
            if (uses) {
                PlaySome(effect);
                effect.Text(effGetEffectName);
                effect.Close();
            }
            ::_exit(0);
        }
        int status = 0;
        while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        if (WIFSIGNALED(status))
            report.Fault("a child of the host that {} dies of signal {}{}",
                         uses ? "uses the effect" : "leaves at once", WTERMSIG(status),
                         WTERMSIG(status) == SIGALRM ? ": it hung" : "");
        else if (WEXITSTATUS(status) != 0)
            report.Fault("a child of the host ends with {}", WEXITSTATUS(status));
        PlaySome(effect);
    }
    effect.Off();
}

void CheckManners(Subject& subject, Report& report) {
    subject.Unload();
    const std::unique_ptr<ParentWindow> anchor = ParentWindow::Make(10, 10);
    const Manners before = Manners::Read();
    std::string said;
    {
        const OutputCapture capture;
        report.Trying("using it and watching the process");
        const host::SharedObject object(subject.path());
        Compare(before, Manners::Read(), "after it was loaded", report);
        Instance effect(object);
        effect.Start(48000.0, kBlock);
        Compare(before, Manners::Read(), "after it was opened", report);
        PlaySome(effect);
        Compare(before, Manners::Read(), "after it processed", report);
        if (anchor && effect.has(effFlagsHasEditor)) {
            report.Trying("showing its editor and watching the process");
            ShowEditor(effect);
            Compare(before, Manners::Read(), "after its editor was shown", report);
        }
        effect.Off();
        effect.Close();
        said = capture.Text();
    }
    Compare(before, Manners::Read(), "after it was unloaded", report);
    said.resize(std::min({said.find('\n'), said.size(), std::size_t{120}}));
    if (!said.empty()) report.Remark("it writes to its host's output: {}", said);
}

} // namespace vocafade::validate
