// SPDX-License-Identifier: MIT
#include "apps/vocafade/play/player.h"

#include <algorithm>
#include <cmath>

namespace vocafade::command {
namespace {

constexpr double kBlendSeconds = 0.01;
constexpr std::size_t kPart = 512; // frames that go through the effect at a time

} // namespace

Player::Player(LiveEffect& effect, BlockRing& ring, int rate)
    : effect_(effect), ring_(ring), rate_(rate), step_(static_cast<float>(1.0 / (kBlendSeconds * rate))) {
    effect.Restart(rate);
}

void Player::Fill(float* samples, std::size_t frames) {
    for (std::size_t done = 0; done < frames;) {
        float* part = samples + 2 * done;
        std::size_t count = std::min(kPart, frames - done);
        const float goal = paused_ ? 0.0f : 1.0f;
        if (count_ == 0) outLevel_ = goal; // nothing has been heard that could click
        const bool held = goal == 0.0f && outLevel_ == 0.0f;
        if (held || !HasBegun()) {
            std::fill_n(part, 2 * count, 0.0f);
            silent_ = held;
            sincePause_ = 0;
            done += count;
            continue;
        }
        silent_ = false;
        if (goal == 0.0f) // not a frame of the song more than the blend takes
            count = std::min(count, static_cast<std::size_t>(outLevel_ / step_) + 1);
        const std::size_t taken = Take(part, count);
        if (ended_) {
            tail_ += static_cast<std::int64_t>(count - taken);
            if (tail_ >= effect_.latency()) over_ = request_;
        }
        effect_.Process(part, count);
        count_.fetch_add(static_cast<std::int64_t>(count), std::memory_order_release);
        sincePause_ += static_cast<std::int64_t>(count);
        for (std::size_t i = 0; outLevel_ != goal && i < count; ++i) {
            outLevel_ =
                outLevel_ < goal ? std::min(goal, outLevel_ + step_) : std::max(goal, outLevel_ - step_);
            part[2 * i] *= outLevel_;
            part[2 * i + 1] *= outLevel_;
        }
        done += count;
    }
}

/// Until the first block is there, the effect rests, so that the song begins with its first frame, as in a rendering.
bool Player::HasBegun() {
    for (Block* block = ring_.Front(); !begun_ && block != nullptr; block = ring_.Front()) {
        begun_ = block->request == wanted_;
        if (!begun_) ring_.Emptied();
    }
    return begun_;
}

/// Takes frames of the song; the rest is filled with silence. Answers how many there were.
std::size_t Player::Take(float* samples, std::size_t frames) {
    std::size_t done = 0;
    if (request_ != wanted_ && LeaveOldRequest(samples, frames, done)) {
        request_ = wanted_;
        ended_ = false;
        tail_ = 0;
    }
    while (done < frames && !ended_ && request_ == wanted_) {
        Block* block = ring_.Front();
        if (block == nullptr) {
            if (!inGap_) ++gaps_;
            inGap_ = true;
            songLevel_ = 0.0f;
            break;
        }
        inGap_ = false;
        if (used_ == 0 && block->first == 0) songLevel_ = 1.0f; // a song's own beginning is not blended
        Note(*block, count_ + static_cast<std::int64_t>(done));
        done += TakeFrom(*block, samples + 2 * done, frames - done, 1.0f);
    }
    std::fill_n(samples + 2 * done, 2 * (frames - done), 0.0f);
    return done;
}

/// Blends what is left of an older request out, and throws away what is no longer wanted. True when the first block
/// of the new one is there.
bool Player::LeaveOldRequest(float* samples, std::size_t frames, std::size_t& done) {
    const std::uint32_t wanted = wanted_;
    for (Block* block = ring_.Front(); block != nullptr; block = ring_.Front()) {
        if (block->request == wanted) {
            songLevel_ = 0.0f;
            return true;
        }
        if (songLevel_ > 0.0f && block->request == request_ && !ended_) {
            if (done == frames) return false;
            Note(*block, count_ + static_cast<std::int64_t>(done));
            done += TakeFrom(*block, samples + 2 * done, frames - done, 0.0f);
        } else {
            used_ = 0;
            ring_.Emptied();
        }
    }
    songLevel_ = 0.0f; // what was there is over, or never came
    return false;
}

/// Takes up to `frames` out of a block, and the block out of the ring when that was all. With the goal 0 it stops when
/// the blend is there.
std::size_t Player::TakeFrom(Block& block, float* samples, std::size_t frames, float goal) {
    const std::size_t count = std::min(frames, block.frames - used_);
    const float* from = block.samples.data() + 2 * used_;
    std::size_t i = 0;
    for (; i < count && (goal > 0.0f || songLevel_ > 0.0f); ++i) {
        if (songLevel_ != goal)
            songLevel_ =
                goal > songLevel_ ? std::min(goal, songLevel_ + step_) : std::max(goal, songLevel_ - step_);
        for (std::size_t c = 0; c < 2; ++c)
            samples[2 * i + c] = songLevel_ == 1.0f ? from[2 * i + c] : from[2 * i + c] * songLevel_;
    }
    used_ += i;
    if (used_ == block.frames) {
        ended_ = ended_ || block.last;
        used_ = 0;
        ring_.Emptied();
    }
    return i;
}

/// Notes that the next frame of `block` is frame `count` of what goes into the effect.
void Player::Note(const Block& block, std::int64_t count) {
    if (block.frames == 0) return;
    const Passage now{count, block.request, block.song, block.first + static_cast<std::int64_t>(used_)};
    const bool goesOn = now.request == noted_.request && now.song == noted_.song &&
                        now.frame - noted_.frame == now.count - noted_.count;
    if (goesOn) return;
    noted_ = now;
    Passage* place = passages_.Free();
    if (place == nullptr) return; // nobody asks for the time
    *place = now;
    passages_.Filled();
}

Player::Place Player::Heard(double outputSeconds) {
    while (Passage* passage = passages_.Front()) {
        known_.push_back(*passage);
        passages_.Emptied();
    }
    const std::int64_t count = count_.load(std::memory_order_acquire);
    const std::int64_t onItsWay = std::min<std::int64_t>(std::llround(outputSeconds * rate_),
                                                         sincePause_.load(std::memory_order_relaxed));
    const std::int64_t heard = count - effect_.latency() - onItsWay;
    while (known_.size() > 1 && known_[1].count <= heard)
        known_.pop_front();
    if (known_.empty()) return {};
    const Passage& passage = known_.front();
    const std::int64_t frame = passage.frame + std::max<std::int64_t>(0, heard - passage.count);
    return {passage.request, passage.song, static_cast<double>(frame) / rate_};
}

} // namespace vocafade::command
