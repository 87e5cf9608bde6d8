// SPDX-License-Identifier: MIT
#include "apps/validate/audio_watch.h"
#include "apps/validate/check.h"
#include "apps/validate/player.h"
#include "apps/validate/thread_clock.h"

#include <algorithm>

namespace vocafade::validate {
namespace {

void Tell(const AudioWatch::Counts& counts, Report& report, const char* situation) {
    if (counts.allocations > 0)
        report.Fault("{}: the audio thread allocated memory {} times", situation, counts.allocations);
    if (counts.frees > 0) report.Fault("{}: the audio thread freed memory {} times", situation, counts.frees);
    if (counts.sleeps > 0)
        report.Fault("{}: the audio thread waited {} times ({})", situation, counts.sleeps, counts.lastSleep);
    if (counts.fileCalls > 0)
        report.Fault("{}: the audio thread called for files {} times ({})", situation, counts.fileCalls,
                     counts.lastFileCall);
    if (counts.lockWaits > 0)
        report.Remark("{}: the audio thread waited {} times for a lock, though no other thread called",
                      situation, counts.lockWaits);
}

template <typename Sample>
void Watch(Instance& effect, Subject& subject, Report& report, const char* precision) {
    constexpr std::int32_t kMost = 4096;
    Player<Sample> player(effect, kMost, subject.seed());
    std::mt19937 random(subject.seed());
    AudioWatch::Counts first;
    AudioWatch::Counts later;
    AudioWatch::Counts automated;
    for (int i = 0; i < 400; ++i) {
        const std::int32_t block = i == 0 ? kMost : static_cast<std::int32_t>(random() % kMost) >> (i % 10);
        report.Trying("counting what the audio thread does in a block of {} in {} precision", block,
                      precision);
        AudioWatch watch;
        player.PlayBlock(block);
        (i == 0 ? first : later) += watch.Stop();
    }
    const std::vector<std::int32_t> settable = effect.Settable();
    for (int i = 0; i < 100; ++i) { // automation comes in on the audio thread of many hosts
        report.Trying("counting what the audio thread does with automation in {} precision", precision);
        AudioWatch watch;
        for (const std::int32_t p : settable)
            effect.setParameter(p, static_cast<float>(i) / 100.0f);
        player.PlayBlock(256);
        automated += watch.Stop();
    }
    Tell(first, report, "in its first block");
    Tell(later, report, "while it runs");
    Tell(automated, report, "while parameters are automated");
    report.Measured("{} precision: {} locks taken in 500 blocks", precision,
                    first.locks + later.locks + automated.locks);
}

void AudioThread(Subject& subject, Report& report) {
    Instance effect(subject.Object());
    effect.Start(48000.0, 4096);
    Watch<float>(effect, subject, report, "single");
    effect.Off();
    if (!subject.CallsDoubles(*effect)) return;
    effect.Ask(effSetProcessPrecision, 0, 1);
    effect.On();
    Watch<double>(effect, subject, report, "double");
}
const Check kAudioThread{
    "audio-thread", 8, 60, kNotSanitized, "no memory, no sleep and no file on the audio thread", AudioThread};

void Timing(Subject& subject, Report& report) {
    for (const double rate : {48000.0, 96000.0}) {
        for (const std::int32_t block : {32, 256, 1024}) {
            Instance effect(subject.Object());
            effect.Start(rate, block);
            Player<float> player(effect, block, subject.seed());
            report.Trying("measuring blocks of {} at {:g} Hz", block, rate);
            player.Play();             // the first block may make things ready
            std::vector<double> times; // as fractions of the time that a block lasts
            double sum = 0.0;
            const double duration = block / rate;
            while (static_cast<double>(times.size()) * duration < 3.0) {
                const double begin = ThreadSeconds();
                player.Play();
                times.push_back((ThreadSeconds() - begin) / duration);
                sum += times.back();
                const auto count = static_cast<double>(times.size());
                if (sum * duration > 1.0 && sum > 3.0 * count) break; // clear enough
            }
            std::sort(times.begin(), times.end());
            const double load = sum / static_cast<double>(times.size());
            const double nearlyWorst = times[times.size() * 999 / 1000];
            report.Measured("{:g} Hz, blocks of {}: load {:.1f} %, one block in a thousand above {:.1f} %, "
                            "worst {:.1f} %",
                            rate, block, load * 100.0, nearlyWorst * 100.0, times.back() * 100.0);
            if (load > 1.0) {
                report.Fault("at {:g} Hz in blocks of {} it needs {:.0f} % of the time there is", rate, block,
                             load * 100.0);
                return; // other rates and blocks would take as long
            }
            if (nearlyWorst > 1.0)
                report.Remark("at {:g} Hz one block of {} in a thousand comes too late", rate, block);
        }
    }
}
const Check kTiming{"timing", 8, 60, kNotSanitized, "every block is ready in time", Timing};

} // namespace
} // namespace vocafade::validate
