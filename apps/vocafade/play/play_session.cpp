// SPDX-License-Identifier: MIT
#include "apps/vocafade/play/play_session.h"

#include "apps/vocafade/play/play_line.h"
#include "apps/vocafade/shared/failures.h"
#include "apps/vocafade/shared/interruption.h"
#include "apps/vocafade/shared/printing.h"
#include "apps/vocafade/shared/session_times.h"
#include "apps/vocafade/shared/terminal.h"
#include "apps/vocafade/shared/text.h"

#include <algorithm>
#include <fmt/format.h>

namespace vocafade::command {
namespace {

constexpr double kStep = 5.0;      // seconds by which the arrows wind
constexpr double kFarStep = 30.0;  // with Shift
constexpr double kBeginning = 3.0; // seconds of a song in which "previous" means the one before

} // namespace

PlaySession::PlaySession(LiveEffect& effect, const PlaySettings& settings)
    : effect_(effect), settings_(settings), line_(!settings.quiet && HasStatusLine()),
      window_(settings.window ? OpenWindow(effect) : nullptr), reader_(settings.songs, settings.loop, ring_) {
}

int PlaySession::Run() {
    Go(0, settings_.loop ? settings_.loop->from : 0.0);
    try {
        while (Tick()) {
        }
    } catch (const Interrupted&) { // many end it by Ctrl+C
        TellGaps();
        throw;
    }
    TellGaps();
    return failures_ == 0 ? kExitFine : kExitFailed;
}

int PlaySession::Gaps() const {
    return gaps_ + (player_ ? player_->gaps() : 0) + (output_ ? output_->underruns() : 0);
}

void PlaySession::TellGaps() {
    if (drawn_) PrintError(kClearLine);
    const int gaps = Gaps();
    if (gaps > 0 && !settings_.quiet)
        PrintError(
            fmt::format("vocafade: the sound had {} gap{}: the machine was too busy; --buffer may help\n",
                        gaps, gaps == 1 ? "" : "s"));
}

/// One turn of the loop; false at the end.
bool PlaySession::Tick() {
    ThrowIfInterrupted();
    TellFailures();
    if (!(output_ ? FollowOutput() : FollowReader())) return false;
    HoldWhilePaused();
    if (player_) Show(Now());
    if (!RunWindow()) return false;
    while (const std::optional<Key> key = keys_.Take(window_ ? 0 : kTickMilliseconds))
        if (!Press(*key)) return false;
    return true;
}

void PlaySession::TellFailures() {
    for (const auto& [song, reason] : reader_.TakeFailures()) {
        ++failures_;
        Tell(Printable(settings_.songs[song]) + ": " + reason);
    }
}

/// Without an output: opens one as soon as its rate is known.
bool PlaySession::FollowReader() {
    if (lost_) return Reconnect();
    if (const auto stop = reader_.stop()) {
        OpenOutput(stop->rate);
        Go(stop->song, stop->seconds);
    }
    return !reader_.isAtEnd();
}

bool PlaySession::FollowOutput() {
    if (const auto loss = output_->Loss()) {
        const Player::Place now = Now();
        Tell(*loss + "; waiting for it to come back");
        song_ = now.song;
        seconds_ = now.seconds;
        gaps_ = Gaps();
        output_.reset();
        player_.reset();
        lost_ = Clock::now();
        lastTry_ = *lost_;
        return true;
    }
    if (const auto device = output_->TakeDevice(); device && !settings_.quiet)
        Tell("playing on " + Printable(*device));
    if (!IsHeardToTheEnd()) return true;
    const auto stop = reader_.stop();
    if (!stop) return false;
    OpenOutput(stop->rate);
    Go(stop->song, stop->seconds);
    return true;
}

bool PlaySession::Reconnect() {
    if (Clock::now() - lastTry_ < kBetweenTries) return true;
    try {
        OpenOutput(rate_);
        Go(song_, seconds_);
        lost_.reset();
    } catch (const Failure& error) {
        lastTry_ = Clock::now();
        if (lastTry_ - *lost_ > kReturnTime)
            throw Failure(std::string("it did not come back: ") + error.what());
    }
    return true;
}

/// True when everything has been played and heard.
bool PlaySession::IsHeardToTheEnd() {
    if (!player_->isOver() || (!reader_.isAtEnd() && !reader_.stop())) {
        end_.reset();
        return false;
    }
    if (!end_) end_ = output_->Filled();
    return output_->Heard() >= *end_;
}

void PlaySession::OpenOutput(int rate) {
    gaps_ = Gaps();
    output_.reset();
    player_.emplace(effect_, ring_, rate);
    player_->Pause(paused_);
    end_.reset();
    silence_.reset();
    held_ = false;
    rate_ = rate;
    shown_.reset();
    output_.emplace(rate, settings_.bufferSeconds,
                    [this](float* samples, std::size_t frames) { player_->Fill(samples, frames); });
}

/// Plays a song from `seconds` on.
void PlaySession::Go(std::size_t song, double seconds) {
    song_ = song;
    seconds_ = seconds;
    request_ = reader_.Request(song, seconds, output_ ? rate_ : 0);
    if (player_) player_->Follow(request_);
}

bool PlaySession::Press(Key key) {
    const Player::Place now = Now();
    switch (key) {
    case Key::quit:
        return false;
    case Key::pause:
        paused_ = !paused_;
        if (player_) player_->Pause(paused_);
        break;
    case Key::voice:
        effect_.Switch(!effect_.isOn());
        break;
    case Key::next:
        if (now.song + 1 >= reader_.songs()) return false;
        Go(now.song + 1, 0.0);
        break;
    case Key::previous:
        Go(now.song - (now.seconds < kBeginning && now.song > 0 ? 1 : 0), 0.0);
        break;
    case Key::back:
    case Key::forward:
        Wind(key == Key::back ? -kStep : kStep);
        break;
    case Key::farBack:
    case Key::farForward:
        Wind(key == Key::farBack ? -kFarStep : kFarStep);
        break;
    }
    return true;
}

void PlaySession::Wind(double seconds) {
    const Player::Place now = Now();
    const auto info = reader_.info(now.song);
    double place = std::max(0.0, now.seconds + seconds);
    if (settings_.loop && (place < settings_.loop->from || place >= settings_.loop->to))
        place = settings_.loop->from;
    if (info && info->seconds > 0.0 && place >= info->seconds && now.song + 1 < reader_.songs())
        Go(now.song + 1, 0.0);
    else
        Go(now.song, place);
}

/// Lets the device sleep once a pause has been heard.
void PlaySession::HoldWhilePaused() {
    if (!output_) return;
    if (!paused_ || !player_->isSilent()) {
        silence_.reset();
        if (held_ && !paused_) output_->Hold(false);
        held_ = held_ && paused_;
        return;
    }
    if (!silence_) silence_ = output_->Filled();
    if (!held_ && output_->Heard() >= *silence_) {
        output_->Hold(true);
        held_ = true;
    }
}

/// What is heard; after winding, where it goes to until it is heard.
Player::Place PlaySession::Now() {
    const Player::Place target{request_, song_, seconds_};
    if (!player_ || !output_) return target;
    const Player::Place heard = player_->Heard(held_ ? 0.0 : output_->Latency());
    return heard.request == request_ ? heard : target;
}

void PlaySession::Show(const Player::Place& now) {
    const auto info = reader_.info(now.song);
    if (info && shown_ != now.song) {
        shown_ = now.song;
        if (output_) output_->SetTitle(info->title);
        if (window_) window_->SetTitle(info->title + " - Vocafade");
        if (!line_ && !settings_.quiet) {
            Print("{} ({})\n", Printable(info->title), ClockTime(info->seconds));
            FlushOutput();
        }
    }
    if (!line_) return;
    PlayState state;
    if (info) state.title = info->title;
    if (info) state.length = info->seconds;
    state.seconds = now.seconds;
    state.peaks = effect_.TakePeaks();
    state.paused = paused_;
    state.voiceOut = effect_.isOn();
    state.gaps = Gaps();
    PrintError(kClearLine + PlayLine(state, StatusWidth() - 1));
    drawn_ = true;
}

void PlaySession::Tell(const std::string& sentence) {
    PrintError((drawn_ ? kClearLine : std::string()) + "vocafade: " + sentence + "\n");
    drawn_ = false;
}

/// Lets the window work; false when it was closed and there is no other way to end.
bool PlaySession::RunWindow() {
    if (!window_ || window_->Run(kTickMilliseconds)) return true;
    window_.reset();
    effect_.setWatched(false);
    return keys_.isOpen();
}

} // namespace vocafade::command
