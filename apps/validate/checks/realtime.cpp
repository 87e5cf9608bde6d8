// SPDX-License-Identifier: MIT
#include "apps/validate/audio_watch.h"
#include "apps/validate/check.h"
#include "apps/validate/noise_player.h"
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
void Watch(RawEffect& effect, Subject& subject, Report& report, const char* precision) {
    constexpr std::int32_t kMost = 4096;
    NoisePlayer<Sample> player(effect, kMost, subject.seed());
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
    RawEffect effect(subject.Object());
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

/// What blocks take of the processor, in seconds. The last two only where the clock is fine enough for one block.
struct BlockTimes {
    double mean = 0.0;
    double nearlyWorst = 0.0; ///< what one in a thousand exceeds
    double worst = 0.0;
};

/// Plays three seconds of sound, or until it is clear that this takes three times as long.
BlockTimes Measure(NoisePlayer<float>& player, double duration) {
    constexpr int kBlocksATime = kThreadTick == 0.0 ? 1 : 16;
    std::vector<double> times;
    times.reserve(static_cast<std::size_t>(3.0 / duration) + 1);
    double sum = 0.0;
    int count = 0;
    double before = ThreadSeconds();
    while (count * duration < 3.0 && (sum < 1.0 || sum < 3.0 * count * duration)) {
        for (int i = 0; i < kBlocksATime; ++i)
            player.Play();
        const double now = ThreadSeconds();
        times.push_back(now - before);
        sum += times.back();
        before = now;
        count += kBlocksATime;
    }
    std::sort(times.begin(), times.end());
    return {sum / count, times[times.size() * 999 / 1000], times.back()};
}

void Timing(Subject& subject, Report& report) {
    for (const double rate : {48000.0, 96000.0}) {
        for (const std::int32_t block : {32, 256, 1024}) {
            RawEffect effect(subject.Object());
            effect.Start(rate, block);
            NoisePlayer<float> player(effect, block, subject.seed());
            report.Trying("measuring blocks of {} at {:g} Hz", block, rate);
            player.Play(); // the first block may make things ready
            const double duration = block / rate;
            const BlockTimes times = Measure(player, duration);
            const double load = times.mean / duration;
            const auto told = [&](double seconds) { return seconds / duration * 100.0; };
            report.Measured("{:g} Hz, blocks of {}: load {:.1f} %", rate, block, load * 100.0);
            if (kThreadTick == 0.0)
                report.Measured(
                    "{:g} Hz, blocks of {}: one block in a thousand above {:.1f} %, worst {:.1f} %", rate,
                    block, told(times.nearlyWorst), told(times.worst));
            if (load > 1.0) {
                report.Fault("at {:g} Hz in blocks of {} it needs {:.0f} % of the time there is", rate, block,
                             load * 100.0);
                return; // other rates and blocks would take as long
            }
            if (times.nearlyWorst > duration)
                report.Remark("at {:g} Hz one block of {} in a thousand comes too late", rate, block);
        }
    }
}
const Check kTiming{"timing", 8, 60, kNotSanitized, "every block is ready in time", Timing};

} // namespace
} // namespace vocafade::validate
