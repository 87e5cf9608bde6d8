// SPDX-License-Identifier: MIT
#include "apps/vocafade/play/song_reader.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <limits>
#include <sndfile.h>

namespace vocafade::command {
namespace {

constexpr std::chrono::milliseconds kLookAgain{5}; // the audio thread, which makes room, wakes nobody up
constexpr double kFadeSeconds = 0.005;             // at both ends of a passage that is repeated

std::string TitleOf(const AudioInput& input) {
    const auto text = [&](int which) {
        const char* found = sf_get_string(input.sound(), which);
        return std::string(found != nullptr ? found : "");
    };
    const std::string title = text(SF_STR_TITLE);
    const std::string artist = text(SF_STR_ARTIST);
    if (title.empty()) return input.path().stem().string();
    return artist.empty() ? title : artist + " - " + title;
}

std::int64_t FrameAt(double seconds, const AudioInput& input) {
    const double frame = seconds * input.info().samplerate;
    return frame < 9e18 ? static_cast<std::int64_t>(frame) : std::numeric_limits<std::int64_t>::max();
}

} // namespace

SongReader::SongReader(std::vector<std::string> songs, std::optional<Passage> loop, BlockRing& ring)
    : songs_(std::move(songs)), loop_(loop), ring_(ring), infos_(songs_.size()), thread_([this] { Run(); }) {}

SongReader::~SongReader() {
    {
        const std::lock_guard lock(mutex_);
        over_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

std::uint32_t SongReader::Request(std::size_t song, double seconds, int rate) {
    const std::lock_guard lock(mutex_);
    wish_ = {wish_.number + 1, song, seconds, rate};
    stop_.reset();
    atEnd_ = false;
    changed_.notify_all();
    return wish_.number;
}

std::optional<SongReader::Stop> SongReader::stop() const {
    const std::lock_guard lock(mutex_);
    return stop_;
}

bool SongReader::isAtEnd() const {
    const std::lock_guard lock(mutex_);
    return atEnd_;
}

std::optional<SongInfo> SongReader::info(std::size_t song) const {
    const std::lock_guard lock(mutex_);
    return song < infos_.size() ? infos_[song] : std::nullopt;
}

std::vector<std::pair<std::size_t, std::string>> SongReader::TakeFailures() {
    const std::lock_guard lock(mutex_);
    return std::exchange(failures_, {});
}

void SongReader::Run() {
    for (;;) {
        bool isNew = false;
        {
            std::unique_lock lock(mutex_);
            const auto news = [this] { return over_ || wish_.number != now_.number; };
            if (idle_)
                changed_.wait(lock, news);
            else if (ring_.Free() == nullptr)
                changed_.wait_for(lock, kLookAgain, news);
            if (over_) return;
            isNew = wish_.number != now_.number;
            now_ = wish_;
        }
        if (isNew) Begin();
        if (idle_) continue;
        Block* block = ring_.Free();
        if (block == nullptr) continue;
        block->request = now_.number;
        block->song = song_;
        block->first = frame_;
        block->frames = 0;
        block->last = false;
        ReadBlock(*block);
        ring_.Filled();
    }
}

void SongReader::Fail(const std::string& reason) {
    input_.reset();
    const std::lock_guard lock(mutex_);
    failures_.emplace_back(song_, reason);
}

/// Opens a song at its beginning; false when it cannot be read.
bool SongReader::Open(std::size_t song) {
    song_ = song;
    frame_ = 0;
    try {
        input_.emplace(songs_[song]);
    } catch (const std::exception& error) {
        Fail(error.what());
        return false;
    }
    const int rate = input_->info().samplerate;
    const double seconds = static_cast<double>(std::max<std::int64_t>(0, input_->frames())) / rate;
    const std::string title = TitleOf(*input_);
    const std::lock_guard lock(mutex_);
    infos_[song] = SongInfo{title, rate, seconds};
    return true;
}

/// Turns to what was asked for.
void SongReader::Begin() {
    idle_ = false;
    fadeIn_ = std::numeric_limits<std::int64_t>::max() / 2;
    song_ = now_.song;
    frame_ = 0;
    const bool isOpen = input_ && input_->path() == songs_[now_.song];
    if (!isOpen && !Open(now_.song)) return; // the next one is tried with the next block
    const std::int64_t last =
        input_->frames() > 0 ? input_->frames() : std::numeric_limits<std::int64_t>::max();
    frame_ = std::clamp<std::int64_t>(FrameAt(now_.seconds, *input_), 0, last);
    if (!input_->Seek(frame_)) Fail("cannot be wound");
}

/// The block that says that nothing more comes.
void SongReader::EndBlock(Block& block, std::optional<Stop> stop) {
    block.last = true;
    idle_ = true;
    const std::lock_guard lock(mutex_);
    if (wish_.number != now_.number) return; // there is something else to do already
    stop_ = stop;
    atEnd_ = !stop;
}

void SongReader::ReadBlock(Block& block) {
    while (!input_) { // the song before is over, or could not be read
        if (song_ + 1 >= songs_.size()) return EndBlock(block, std::nullopt);
        Open(song_ + 1);
    }
    block.song = song_;
    block.first = frame_;
    if (input_->info().samplerate != now_.rate) {
        const int rate = input_->info().samplerate;
        return EndBlock(block, Stop{song_, static_cast<double>(frame_) / rate, rate});
    }
    std::int64_t wanted = Block::kFrames;
    std::int64_t end = std::numeric_limits<std::int64_t>::max();
    if (loop_) {
        end = FrameAt(loop_->to, *input_);
        if (input_->frames() > 0) end = std::min(end, input_->frames());
        if (FrameAt(loop_->from, *input_) >= end) return Fail("is over before the passage to repeat begins");
        wanted = std::clamp<std::int64_t>(end - frame_, 0, wanted);
    }
    std::int64_t got = 0;
    try {
        got = input_->Read(block.samples.data(), wanted);
    } catch (const std::exception& error) {
        return Fail(error.what());
    }
    block.frames = static_cast<std::size_t>(got);
    frame_ += got;
    if (loop_) {
        // A dip of a few milliseconds, where the end of the passage and its beginning would not fit.
        const double fade = std::max(1.0, kFadeSeconds * input_->info().samplerate);
        for (std::int64_t i = 0; i < got; ++i) {
            const auto toEnd = static_cast<double>(end - block.first - i);
            const double level = std::min({1.0, toEnd / fade, static_cast<double>(fadeIn_ + i) / fade});
            for (std::size_t c = 0; level < 1.0 && c < 2; ++c)
                block.samples[2 * static_cast<std::size_t>(i) + c] *= static_cast<float>(level);
        }
        fadeIn_ += got;
    }
    if (loop_ && (frame_ >= end || got < wanted)) {
        frame_ = FrameAt(loop_->from, *input_);
        fadeIn_ = 0;
        if (!input_->Seek(frame_)) Fail("cannot be wound");
    } else if (got < wanted) {
        input_.reset();
    }
}

} // namespace vocafade::command
