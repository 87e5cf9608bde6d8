// SPDX-License-Identifier: MIT
// Carries out one check on one plug-in and dies with it when it must. `vocafade validate` starts it:
//
//   vocafade-validate-runner list                              the checks, one a line
//   vocafade-validate-runner run NAME SEED TWOFOLD PLUGIN      findings go to descriptor 3
#include "apps/validate/audio_watch.h"
#include "apps/validate/check.h"
#include "apps/validate/guarded_memory.h"
#include "host/host_error.h"

#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <exception>
#include <fmt/format.h>
#include <string_view>
#include <unistd.h>

namespace {

using namespace vocafade;
using namespace vocafade::validate;

int List() {
    for (const Check& check : Checks())
        fmt::print("{}\t{}\t{}\t{}\n", check.level, check.name, check.seconds, check.summary);
    return kRunnerDone;
}

int Run(const Check& check, Subject& subject, Report& report) {
    try {
        report.Trying("loading");
        [[maybe_unused]] const host::SharedObject& object = subject.Object();
#ifdef __SANITIZE_THREAD__
        // The sanitizer cannot bear that libraries whose locks it does not see are unloaded.
        ::dlopen(object.file().c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
#endif
    } catch (const host::HostError& error) {
        report.Fault("{}", error.what());
        return kRunnerUnusable;
    }
    try {
        check.run(subject, report);
        report.Trying("ending the process");
    } catch (const Hopeless& hopeless) {
        report.Fault("{}", hopeless.what());
    } catch (const std::exception& error) {
        report.Fault("threw an exception into its host: {}", error.what());
    } catch (...) {
        report.Fault("threw an exception into its host");
    }
    return kRunnerDone;
}

} // namespace

int main(int argumentCount, char** arguments) {
    const std::string_view verb = argumentCount > 1 ? arguments[1] : "";
    if (verb == "list") return List();
    if (verb != "run" || argumentCount != 6) {
        fmt::print(stderr, "usage: vocafade-validate-runner list | run NAME SEED TWOFOLD PLUGIN\n");
        return 2;
    }
    for (const Check& check : Checks()) {
        if (check.name != arguments[2]) continue;
        Report report;
#ifndef VOCAFADE_SANITIZED // the sanitizers tell more of a crash than we can
        InstallCrashReport(report.findingsDescriptor());
#endif
        Subject subject(arguments[5], static_cast<std::uint32_t>(std::strtoul(arguments[3], nullptr, 10)),
                        std::string_view(arguments[4]) == "1");
        return Run(check, subject, report);
    }
    fmt::print(stderr, "there is no check '{}'\n", arguments[2]);
    return 2;
}
