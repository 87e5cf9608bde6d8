// SPDX-License-Identifier: MIT
#include "apps/vocafade/render/stream.h"

#include "apps/vocafade/render/portion_queue.h"
#include "apps/vocafade/shared/interruption.h"

#include <algorithm>
#include <array>
#include <exception>
#include <thread>
#include <vector>

namespace vocafade::command {
namespace {

constexpr std::int64_t kFilePortion = 8192; // frames a read, about
constexpr std::size_t kPortions = 8; // on their way at once: enough that an uneven pace holds nobody up

/// A piece of the song on its way.
template <typename Sample>
struct Portion {
    std::vector<Sample> samples; ///< interleaved
    std::int64_t first = 0;      ///< frame from which on it counts
    std::int64_t frames = 0;     ///< that are there, those before `first` too
};

template <typename Sample>
class Stream {
  public:
    Stream(host::Effect& effect, AudioInput& input, AudioOutput& output, const StreamSettings& settings)
        : effect_(effect), input_(input), output_(output), block_(settings.block),
          toTrim_(settings.keepLatency ? 0 : settings.latency),
          toAdd_(settings.keepLatency ? settings.latency : 0),
          portion_(block_ * std::max<std::int64_t>(1, kFilePortion / block_)) {
        const auto channels = static_cast<std::size_t>(std::max(effect.numInputs(), effect.numOutputs()));
        in_.assign(channels, std::vector<Sample>(static_cast<std::size_t>(block_)));
        out_ = in_;
        for (std::size_t c = 0; c < channels; ++c) {
            inPointers_.push_back(in_[c].data());
            outPointers_.push_back(out_[c].data());
        }
        for (std::size_t i = 0; i < kPortions; ++i)
            free_.Put({std::vector<Sample>(static_cast<std::size_t>(portion_) * 2), 0, 0});
    }

    StreamReport Run(const std::function<void(double)>& progress) {
        {
            const std::jthread reading([this] { Guard(0, [this] { ReadAll(); }); });
            const std::jthread writing([this] { Guard(2, [this] { WriteAll(); }); });
            Guard(1, [&] { ProcessAll(progress); });
        }
        // What went wrong first is not known, but what lies nearest to the file that is missing counts most.
        for (auto error = errors_.rbegin(); error != errors_.rend(); ++error)
            if (*error) std::rethrow_exception(*error);
        return {read_, oneInBoth_};
    }

  private:
    /// Does a thread's work; when it fails, the others come to their ends too.
    template <typename Work>
    void Guard(std::size_t stage, const Work& work) noexcept {
        try {
            work();
        } catch (...) {
            errors_[stage] = std::current_exception();
            for (PortionQueue<Portion<Sample>>* queue : {&free_, &decoded_, &processed_})
                queue->Abandon();
        }
    }

    void ReadAll() {
        while (auto portion = free_.Take()) {
            portion->first = 0;
            portion->frames = input_.Read(portion->samples.data(), portion_);
            const Sample* frame = portion->samples.data();
            for (std::int64_t i = 0; oneInBoth_ && i < portion->frames; ++i)
                oneInBoth_ = frame[2 * i] == frame[2 * i + 1];
            const bool more = portion->frames == portion_;
            decoded_.Put(std::move(*portion));
            if (!more) break;
        }
        decoded_.Close();
    }

    void ProcessAll(const std::function<void(double)>& progress) {
        while (auto portion = decoded_.Take()) {
            ThrowIfInterrupted();
            read_ += portion->frames;
            Push(std::move(*portion));
            if (input_.frames() > 0)
                progress(static_cast<double>(read_) / static_cast<double>(input_.frames()));
        }
        Flush();
        processed_.Close();
    }

    void WriteAll() {
        while (auto portion = processed_.Take()) {
            output_.Write(portion->samples.data() + 2 * portion->first, portion->frames - portion->first);
            free_.Put(std::move(*portion));
        }
    }

    /// Puts a portion through the effect, in its place, and hands it on.
    void Push(Portion<Sample> portion) {
        for (std::int64_t start = 0; start < portion.frames; start += block_) {
            const auto count =
                static_cast<std::int32_t>(std::min<std::int64_t>(block_, portion.frames - start));
            Sample* frame = portion.samples.data() + 2 * start;
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
        portion.first = std::min(toTrim_, portion.frames);
        toTrim_ -= portion.first;
        written_ += portion.frames - portion.first;
        processed_.Put(std::move(portion));
    }

    /// Brings out what the effect still holds, by silence behind the song.
    void Flush() {
        const std::int64_t whole = read_ + toAdd_;
        while (written_ < whole) {
            ThrowIfInterrupted();
            auto portion = free_.Take();
            if (!portion) return; // another thread has failed
            portion->frames = std::min(portion_, whole - written_ + toTrim_);
            std::fill(portion->samples.begin(), portion->samples.end(), Sample{});
            Push(std::move(*portion));
        }
    }

    host::Effect& effect_;
    AudioInput& input_;
    AudioOutput& output_;
    std::int32_t block_;
    std::int64_t toTrim_; ///< frames of delay still to be left out
    std::int64_t toAdd_;  ///< frames by which the output outlasts the input
    std::int64_t portion_;
    std::int64_t read_ = 0;                    ///< frames that came to the effect
    std::int64_t written_ = 0;                 ///< frames that were handed on to be written
    bool oneInBoth_ = true;                    ///< of the reading thread until it has ended
    std::array<std::exception_ptr, 3> errors_; ///< of reading, processing, writing
    PortionQueue<Portion<Sample>> free_;
    PortionQueue<Portion<Sample>> decoded_;
    PortionQueue<Portion<Sample>> processed_;
    std::vector<std::vector<Sample>> in_;
    std::vector<std::vector<Sample>> out_;
    std::vector<Sample*> inPointers_;
    std::vector<Sample*> outPointers_;
};

} // namespace

template <typename Sample>
StreamReport CarryThrough(host::Effect& effect, AudioInput& input, AudioOutput& output,
                          const StreamSettings& settings, const std::function<void(double)>& progress) {
    return Stream<Sample>(effect, input, output, settings).Run(progress);
}

template StreamReport CarryThrough<float>(host::Effect&, AudioInput&, AudioOutput&, const StreamSettings&,
                                          const std::function<void(double)>&);
template StreamReport CarryThrough<double>(host::Effect&, AudioInput&, AudioOutput&, const StreamSettings&,
                                           const std::function<void(double)>&);

} // namespace vocafade::command
