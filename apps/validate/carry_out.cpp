// SPDX-License-Identifier: MIT
#include "apps/validate/carry_out.h"

#include "apps/validate/audio_watch.h"
#include "host/host_error.h"
#include "host/parent_window.h"

#include <exception>
#ifdef __SANITIZE_THREAD__
#include <dlfcn.h>
#endif

namespace vocafade::validate {
namespace {

/// Why the check cannot be tried here, or empty.
std::string WhatIsMissing(const Check& check, Subject& subject) {
    if ((check.traits & (kNeedsState | kNeedsEditor)) == 0) return {};
    const RawEffect probe(subject.Object());
    if ((check.traits & kNeedsState) != 0 && !probe.has(effFlagsProgramChunks))
        return "it saves no state of its own form; its parameters are its state";
    if ((check.traits & kNeedsEditor) == 0) return {};
    if (!probe.has(effFlagsHasEditor)) return "it has no editor";
    return host::ParentWindow::Make(1, 1) ? "" : "there is no display";
}

int CarryOut(const Check& check, Subject& subject, Report& report) {
    try {
        report.Trying("loading it");
        const host::SharedObject& object = subject.Object();
#ifdef __SANITIZE_THREAD__
        // The sanitizer cannot bear that libraries whose locks it does not see are unloaded.
        ::dlopen(object.file().c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
#endif
        AudioWatch::Prepare(object);
    } catch (const host::HostError& error) {
        report.Fault("{}", error.what());
        return kUnusable;
    }
    try {
        const std::string missing = WhatIsMissing(check, subject);
        if (missing.empty()) {
            check.function(subject, report);
        } else {
            report.Tell(Kind::skipped, missing);
        }
        report.Trying("ending the process");
    } catch (const Hopeless& hopeless) {
        report.Fault("{}", hopeless.what());
    } catch (const std::exception& error) {
        report.Fault("threw an exception into its host: {}", error.what());
    } catch (...) {
        report.Fault("threw an exception into its host");
    }
    return kDone;
}

} // namespace

int CarryOut(const Check& check, Subject& subject, Notes& notes) {
    int status = kDone;
    {
        Report report(notes);
        status = CarryOut(check, subject, report);
    }
    subject.Unload();
    return status;
}

} // namespace vocafade::validate
