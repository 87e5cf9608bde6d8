// SPDX-License-Identifier: MIT
#include "apps/validate/audio_watch.h"
#include "apps/validate/channels.h"
#include "apps/validate/check.h"
#include "apps/validate/thread_clock.h"

#include <algorithm>

namespace vocafade::validate {
namespace {

void Tell(const AudioWatch::Counts& counts, Report& report, const char* situation) {
    if (counts.allocations > 0)
        report.Fault("{}: the audio thread asked for memory {} times", situation, counts.allocations);
    if (counts.frees > 0)
        report.Fault("{}: the audio thread gave memory back {} times", situation, counts.frees);
    if (counts.sleeps > 0)
        report.Fault("{}: the audio thread waited {} times ({})", situation, counts.sleeps, counts.lastSleep);
    if (counts.fileCalls > 0)
        report.Fault("{}: the audio thread called for files {} times ({})", situation, counts.fileCalls,
                     counts.lastFileCall);
    if (counts.lockWaits > 0)
        report.Remark("{}: the audio thread waited {} times for a lock, though nobody else called", situation,
                      counts.lockWaits);
}

template <typename Sample>
void Watch(Instance& effect, Subject& subject, Report& report, const char* precision) {
    constexpr std::int32_t kMost = 4096;
    Channels<Sample> in(effect->numInputs, kMost);
    Channels<Sample> out(effect->numOutputs, kMost);
    std::mt19937 random(subject.seed());
    in.FillWithNoise(random, Sample(0.5));
    AudioWatch::Counts first;
    AudioWatch::Counts later;
    AudioWatch::Counts turning;
    for (int i = 0; i < 400; ++i) {
        const std::int32_t block = i == 0 ? kMost : static_cast<std::int32_t>(random() % kMost) >> (i % 10);
        report.Trying("counting what the audio thread does in a block of {} in {} precision", block,
                      precision);
        Sample** inputs = in.pointers();
        Sample** outputs = out.pointers();
        AudioWatch watch;
        effect.Process(inputs, outputs, block);
        (i == 0 ? first : later) += watch.Stop();
    }
    for (int i = 0; i < 100; ++i) { // automation comes in on the audio thread of many hosts
        report.Trying("counting what the audio thread does with automation in {} precision", precision);
        const float value = static_cast<float>(i) / 100.0F;
        std::vector<std::int32_t> settable;
        for (std::int32_t p = 0; p < effect->numParams; ++p)
            if (effect.IsSettable(p)) settable.push_back(p);
        Sample** inputs = in.pointers();
        Sample** outputs = out.pointers();
        AudioWatch watch;
        for (const std::int32_t p : settable)
            effect.setParameter(p, value);
        effect.Process(inputs, outputs, 256);
        turning += watch.Stop();
    }
    Tell(first, report, "in its first block");
    Tell(later, report, "while it runs");
    Tell(turning, report, "while parameters move");
    if (!AudioWatch::CountsCalls()) return;
    report.Measured("{} precision: {} locks taken in {} blocks", precision,
                    first.locks + later.locks + turning.locks, 500);
}

} // namespace

void CheckAudioThread(Subject& subject, Report& report) {
    if (!AudioWatch::CountsCalls())
        report.Remark("under the sanitizers it is counted for memory alone, not for locks, sleeps and files");
    Instance effect(subject.Object());
    effect.Start(48000.0, 4096);
    Watch<float>(effect, subject, report, "single");
    effect.Off();
    if (!subject.CallsDoubles(*effect)) return;
    effect.Ask(effSetProcessPrecision, 0, 1);
    effect.On();
    Watch<double>(effect, subject, report, "double");
}

void CheckTiming(Subject& subject, Report& report) {
    for (const double rate : {48000.0, 96000.0}) {
        for (const std::int32_t block : {32, 256, 1024}) {
            Instance effect(subject.Object());
            effect.Start(rate, block);
            Channels<float> in(effect->numInputs, block);
            Channels<float> out(effect->numOutputs, block);
            std::mt19937 random(subject.seed());
            in.FillWithNoise(random, 0.5F);
            report.Trying("measuring blocks of {} at {:g} Hz", block, rate);
            std::vector<double> times;
            const auto blocks = static_cast<int>(3.0 * rate / block);
            for (int i = 0; i < blocks; ++i) {
                const double begin = ThreadSeconds();
                effect.Process(in.pointers(), out.pointers(), block);
                times.push_back(ThreadSeconds() - begin);
            }
            std::sort(times.begin(), times.end());
            double sum = 0.0;
            for (const double time : times)
                sum += time;
            const double available = block / rate;
            const double load = sum / (available * blocks);
            const double nearlyWorst = times[times.size() * 999 / 1000] / available;
            report.Measured(
                "{:g} Hz, blocks of {}: load {:.1f} %, one block in a thousand above {:.1f} %, worst "
                "{:.1f} %",
                rate, block, load * 100.0, nearlyWorst * 100.0, times.back() / available * 100.0);
#ifndef VOCAFADE_SANITIZED // which make it many times slower
            if (load > 1.0) {
                report.Fault("at {:g} Hz in blocks of {} it needs {:.0f} % of the time there is", rate, block,
                             load * 100.0);
                return; // other rates and blocks would take as long
            }
            if (nearlyWorst > 1.0)
                report.Remark("at {:g} Hz one block of {} in a thousand comes too late", rate, block);
#endif
        }
    }
}

} // namespace vocafade::validate
