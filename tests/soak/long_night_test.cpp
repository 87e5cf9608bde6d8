// SPDX-License-Identifier: MIT
// Ten hours of audio through one instance, faster than real time: programs, parameters, block lengths and
// rates change at random meanwhile. It sounds at the end as it did at the start, and holds no more memory.
//
// VOCAFADE_SOAK_HOURS=2 shortens it.
#include "host/effect.h"
#include "tests/support/signals.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <malloc.h>

namespace vocafade::test {
namespace {

constexpr std::int32_t kMostBlock = 4096;
constexpr std::size_t kLatency = 1707;

double Hours() {
#ifdef VOCAFADE_SANITIZED
    constexpr double kHours = 0.1; // a sanitizer looks for other faults than drift
#else
    constexpr double kHours = 10.0;
#endif
    const char* text = std::getenv("VOCAFADE_SOAK_HOURS"); // NOLINT(concurrency-mt-unsafe)
    return text != nullptr ? std::strtod(text, nullptr) : kHours;
}

std::int64_t HeapBytes() {
    const struct mallinfo2 heap = ::mallinfo2();
    return static_cast<std::int64_t>(heap.uordblks + heap.hblkhd);
}

std::int64_t ResidentKilobytes() {
    std::int64_t total = 0;
    std::int64_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * ::sysconf(_SC_PAGESIZE) / 1024;
}

class LongNight : public WithSettings {
  protected:
    LongNight() { SetRate(44100.0); }

    unsigned Any(unsigned count) { return static_cast<unsigned>(random_() % count); }

    void SetRate(double rate) {
        rate_ = rate;
        effect_.Configure(rate, kMostBlock);
        effect_.Start();
    }

    /// Plays `count` samples out of the loop in blocks of changing lengths, and adds the left of it to `heard`.
    void Play(std::size_t count, Samples* heard = nullptr) {
        while (count > 0) {
            const std::size_t most = std::min({count, kLoop - place_, std::size_t{kMostBlock}});
            const std::size_t block = std::min<std::size_t>(most, 1 + Any(2 * kMostBlock));
            float* in[] = {&loop_.left[place_], &loop_.right[place_]};
            float* out[] = {outLeft_.data(), outRight_.data()};
            effect_.Process(in, out, static_cast<std::int32_t>(block));
            if (heard != nullptr) heard->insert(heard->end(), out[0], out[0] + block);
            finite_ = finite_ && std::isfinite(out[0][0]) && std::isfinite(out[1][block - 1]);
            place_ = (place_ + block) % kLoop;
            count -= block;
            played_ += static_cast<double>(block) / rate_;
        }
    }

    /// All six parameters in their order; Position is put in the middle.
    void Set(std::initializer_list<float> values) {
        std::int32_t index = 0;
        for (const float value : values)
            effect_.setParameter(index++, value);
        effect_.setParameter(index, 64.0f / 127.0f);
    }

    /// How well noise comes through when nothing is to be removed, in dB.
    double PassThrough() {
        Set({1.0f, 0.5f, 1.0f, 1.0f, 0.0f});
        place_ = Any(kLoop / 2);
        Play(8192); // what was under way
        const float* in = &loop_.left[place_];
        Samples out;
        Play(static_cast<std::size_t>(rate_), &out);
        return FitDb(in, out.data() + kLatency, out.size() - kLatency);
    }

    /// What is left of a voice in the middle, in dB of what went in.
    double VoiceLeft() {
        Set({1.0f, 0.5f, 1.0f, 0.019f, 0.45f});
        const Samples voice = Sine(12 * kMostBlock, 1000.0, rate_);
        const StereoSamples heard =
            InBlocks({voice, voice}, {kMostBlock}, [this](float** in, float** out, std::int32_t count) {
                effect_.Process(in, out, count);
            });
        return Db((Power(heard.left, 8 * kMostBlock) + 1e-20) / Power(voice));
    }

    /// One second of what a night brings.
    void LiveASecond() {
        if (Any(4) == 0) effect_.setProgram(static_cast<std::int32_t>(Any(64)));
        for (unsigned point = 0; point < 4; ++point) {
            const auto parameter = static_cast<std::int32_t>(Any(6));
            const bool on = Any(8) != 0; // ON/OFF is off now and then
            effect_.setParameter(parameter, parameter == 0 ? (on ? 1.0f : 0.0f)
                                                           : static_cast<float>(Any(1001)) / 1000.0f);
            Play(static_cast<std::size_t>(rate_) / 4);
        }
    }

    static constexpr std::size_t kLoop = 10 * 44100;
    host::Effect effect_{VOCAFADE_PLUGIN};
    StereoSamples loop_ = StereoNoise(kLoop);
    Samples outLeft_ = Samples(kMostBlock);
    Samples outRight_ = Samples(kMostBlock);
    std::mt19937 random_{20};
    std::size_t place_ = 0;
    double rate_ = 0.0;
    double played_ = 0.0; ///< seconds
    bool finite_ = true;
};

TEST_F(LongNight, SoundsAtItsEndAsAtItsStartAndHoldsNoMoreMemory) {
    const double firstFit = PassThrough();
    EXPECT_LT(VoiceLeft(), -60.0);
    double worstFit = firstFit;
    double begun = 0.0;
    const auto check = [&] {
        const double fit = PassThrough();
        worstFit = std::min(worstFit, fit);
        std::printf("%7.0f s, %5.0f Hz since %5.0f s: pass-through %.1f dB\n", played_, rate_,
                    played_ - begun, fit);
        EXPECT_LT(VoiceLeft(), -60.0) << "after " << played_ << " s";
    };
    LiveASecond();
    const std::int64_t heap = HeapBytes();
    const std::int64_t resident = ResidentKilobytes();
    while (played_ < Hours() * 3600.0) {
        LiveASecond();
        if (Any(1200) != 0) continue; // three times an hour the sound card's rate changes
        check();                      // after what is by then a long stretch
        static constexpr double kRates[] = {44100.0, 48000.0, 88200.0, 22050.0};
        SetRate(kRates[Any(4)]);
        begun = played_;
        check();
    }
    SetRate(44100.0);
    begun = played_;
    // A last stretch without a new start, so that drift would have its time.
    for (int second = 0; second < static_cast<int>(Hours() * 60.0); ++second)
        LiveASecond();
    check();
    const double lastFit = PassThrough();
    const std::int64_t heapGrowth = HeapBytes() - heap;
    const std::int64_t residentGrowth = ResidentKilobytes() - resident;
    std::printf("%.2f hours of audio\n"
                "pass-through: %.1f dB at the start, %.1f dB at the end, %.1f dB at its worst\n"
                "heap %+lld bytes, resident %+lld kB\n",
                played_ / 3600.0, firstFit, lastFit, worstFit, static_cast<long long>(heapGrowth),
                static_cast<long long>(residentGrowth));
    EXPECT_TRUE(finite_);
    EXPECT_GE(worstFit, 31.0);
    EXPECT_GE(lastFit, firstFit - 1.0);
#ifndef VOCAFADE_SANITIZED // whose allocator keeps what was freed
    EXPECT_LT(heapGrowth, 4096);
    EXPECT_LT(residentGrowth, 2048);
#endif
}

TEST_F(LongNight, PassesTonesAndNoiseAsWellAtItsEndAsAfterASecond) {
    StereoSamples tones = loop_;
    const Samples chords[] = {Chord(44100.0, 0.0), Chord(44100.0, 1.0)};
    for (std::size_t i = 0; i < kLoop; ++i) {
        tones.left[i] = chords[0][i % 44100];
        tones.right[i] = chords[1][i % 44100];
    }
    for (const auto& [name, leastFit, sound] :
         {std::tuple{"tones", 41.0, tones}, std::tuple{"noise", 31.0, StereoNoise(kLoop)}}) {
        loop_ = sound;
        SetRate(44100.0);
        const double begun = played_;
        for (const double seconds : {1.0, 60.0, 600.0, 3600.0, 36000.0}) {
            if (seconds > Hours() * 3600.0) break;
            while (played_ - begun + 1.0 < seconds)
                Play(44100);
            const double fit = PassThrough();
            std::printf("%s after %5.0f s: %.2f dB\n", name, seconds, fit);
            EXPECT_GE(fit, leastFit) << name << " after " << seconds << " s";
        }
    }
}

} // namespace
} // namespace vocafade::test
