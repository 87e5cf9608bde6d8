// SPDX-License-Identifier: MIT
#include "apps/validate/check.h"
#include "apps/validate/noise_player.h"

#include <cerrno>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace vocafade::validate {
namespace {

void Fork(Subject& subject, Report& report) {
    RawEffect effect(subject.Object());
    effect.Start(48000.0, kBlock);
    PlayFinite(effect, report, "before a fork");
    for (const bool uses : {false, true}) {
        report.Trying("forking; the child {}", uses ? "plays on and closes" : "leaves at once");
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(20); // a lock that nobody in the child holds would otherwise be waited for forever
            if (uses) {
                NoisePlayer<float>(effect, kBlock, 1).Play(30);
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

} // namespace
} // namespace vocafade::validate
