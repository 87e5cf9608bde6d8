// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/renderer.h"

#include "apps/vocafade/render/audio_format.h"
#include "apps/vocafade/render/audio_output.h"
#include "apps/vocafade/render/file_chunks.h"
#include "apps/vocafade/shared/audio_input.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <type_traits>

namespace vocafade::command {
namespace {

constexpr std::int64_t kFilePortion = 8192; // frames a read, about

/// The effect's parameter counts as on by its whole-number part, as the engine's switch takes it.
bool IsOff(host::Effect& effect) {
    return effect.uniqueId() == kVocafadeId && static_cast<int>(effect.parameter(kParameterOnOff)) == 0;
}

/// Samples by which what comes out lies behind what went in.
std::int64_t LatencyOf(host::Effect& effect) {
    if (effect.uniqueId() == kVocafadeId) return IsOff(effect) ? 0 : kVocafadeLatency;
    return std::max<std::int64_t>(0, effect.initialDelay());
}

/// Carries a song through an effect in blocks and lines the outcome up with the song.
template <typename Sample>
class Stream {
  public:
    Stream(host::Effect& effect, AudioInput& input, AudioOutput& output, std::int32_t block, bool keepLatency)
        : effect_(effect), input_(input), output_(output), block_(block), latency_(LatencyOf(effect)),
          toTrim_(keepLatency ? 0 : latency_), toAdd_(keepLatency ? latency_ : 0),
          portion_(block * std::max<std::int64_t>(1, kFilePortion / block)) {
        interleaved_.resize(static_cast<std::size_t>(portion_) * 2);
        const auto channels = static_cast<std::size_t>(std::max(effect.numInputs(), effect.numOutputs()));
        in_.assign(channels, std::vector<Sample>(static_cast<std::size_t>(block)));
        out_ = in_;
        for (std::size_t c = 0; c < channels; ++c) {
            inPointers_.push_back(in_[c].data());
            outPointers_.push_back(out_[c].data());
        }
    }

    void Run(const std::function<void(double)>& progress) {
        for (bool more = true; more;) {
            ThrowIfInterrupted();
            const std::int64_t got = input_.Read(interleaved_.data(), portion_);
            Compare(got);
            Push(got);
            read_ += got;
            more = got == portion_;
            if (input_.frames() > 0)
                progress(static_cast<double>(read_) / static_cast<double>(input_.frames()));
        }
        Flush();
    }

    std::int64_t framesRead() const { return read_; }
    bool oneInBoth() const { return oneInBoth_; }

  private:
    void Compare(std::int64_t frames) {
        for (std::int64_t i = 0; oneInBoth_ && i < frames; ++i)
            oneInBoth_ = interleaved_[2 * i] == interleaved_[2 * i + 1];
    }

    /// Puts `frames` interleaved frames through the effect, in their place, and writes them.
    void Push(std::int64_t frames) {
        for (std::int64_t start = 0; start < frames; start += block_) {
            const auto count = static_cast<std::int32_t>(std::min<std::int64_t>(block_, frames - start));
            Sample* frame = interleaved_.data() + 2 * start;
            for (std::int32_t i = 0; i < count; ++i) {
                in_[0][i] = frame[2 * i];
                in_[1][i] = frame[2 * i + 1];
            }
            effect_.Process(inPointers_.data(), outPointers_.data(), count);
            for (std::int32_t i = 0; i < count; ++i) {
                frame[2 * i] = out_[0][i];
                frame[2 * i + 1] = out_[1][i];
            }
        }
        const std::int64_t trimmed = std::min(toTrim_, frames);
        toTrim_ -= trimmed;
        Write(trimmed, frames - trimmed);
    }

    /// Brings out what the effect still holds, by silence behind the song.
    void Flush() {
        const std::int64_t whole = read_ + toAdd_;
        while (written_ < whole) {
            ThrowIfInterrupted();
            const std::int64_t frames = std::min(portion_, whole - written_ + toTrim_);
            std::fill(interleaved_.begin(), interleaved_.end(), Sample{});
            Push(frames);
        }
    }

    void Write(std::int64_t from, std::int64_t frames) {
        if (frames <= 0) return;
        output_.Write(interleaved_.data() + 2 * from, frames);
        written_ += frames;
    }

    host::Effect& effect_;
    AudioInput& input_;
    AudioOutput& output_;
    std::int32_t block_;
    std::int64_t latency_;
    std::int64_t toTrim_; ///< frames of delay still to be left out
    std::int64_t toAdd_;  ///< frames by which the output outlasts the input
    std::int64_t portion_;
    std::int64_t read_ = 0;
    std::int64_t written_ = 0;
    bool oneInBoth_ = true;
    std::vector<Sample> interleaved_;
    std::vector<std::vector<Sample>> in_;
    std::vector<std::vector<Sample>> out_;
    std::vector<Sample*> inPointers_;
    std::vector<Sample*> outPointers_;
};

template <typename Sample>
void RunStream(host::Effect& effect, AudioInput& input, AudioOutput& output, const RenderSettings& settings,
               const std::function<void(double)>& progress, RenderReport& report) {
    Stream<Sample> stream(effect, input, output, settings.block, settings.keepLatency);
    stream.Run(progress);
    if (stream.framesRead() == 0) throw Failure("holds no sound that can be read");
    report.songSeconds = static_cast<double>(stream.framesRead()) / input.info().samplerate;
    report.oneInBoth = stream.oneInBoth();
}

} // namespace

void SetUp(host::Effect& effect, const RenderSettings& settings) {
    if (settings.bank) ApplyBankFile(effect, *settings.bank);
    if (settings.program) effect.setProgram(*settings.program);
    const bool ours = effect.uniqueId() == kVocafadeId;
    if (ours && !settings.bank && !settings.program) Apply(effect, DefaultAssignments());
    Apply(effect, settings.assignments);
}

RenderReport Render(const RenderJob& job, const RenderSettings& settings,
                    const std::function<void(double)>& progress) {
    const auto begin = std::chrono::steady_clock::now();
    AudioInput input(job.input);
    const std::string ending = settings.format.empty() ? EndingOf(job.output) : settings.format;
    const int format = ChooseFormat(input.info(), EndingOf(job.input), ending, input.frames());
    host::Effect effect(settings.plugin);
    if (effect.numInputs() < 2 || effect.numOutputs() < 2) throw Failure("the plug-in is not stereo");
    effect.Configure(input.info().samplerate, settings.block,
                     settings.doublePrecision ? host::Precision::float64 : host::Precision::float32);
    effect.Start();
    SetUp(effect, settings);
    RenderReport report;
    report.passedThrough = IsOff(effect);
    if (effect.uniqueId() == kVocafadeId) report.outputLevel = ShownNumber(effect, kParameterOutput);
    const FileChunks chunks = ReadFileChunks(job.input);
    AudioOutput output(job.output, format, input, chunks);
    const auto run = settings.doublePrecision ? RunStream<double> : RunStream<float>;
    run(effect, input, output, settings, progress, report);
    output.Finish();
    report.format = FormatText(output.format());
    report.announcedSeconds = report.songSeconds / chunks.soundShare;
    report.clipped = output.clipped();
    report.workSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return report;
}

} // namespace vocafade::command
