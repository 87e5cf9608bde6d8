// SPDX-License-Identifier: MIT
//
// Compares what a host rendered through the plug-in with what this project's own host library renders.
//
//   vocafade-compare-rendering PLUGIN SONG.wav HOST.wav BLOCK [SAMPLE:PARAMETER:VALUE ...]
//
// Parameters are set at the given samples of the song; a block is split there, as hosts with sample-accurate
// automation do. How much silence a host sends ahead of the song is the host's affair, so the number of samples
// that gives the smallest difference is found:
//
//   silence 17 difference 0 at -1 peak 0.43 frames 176400
//
// `difference` is the greatest absolute one over both channels and the whole song, `at` its sample. The
// host's file starts with the song; the plug-in's delay counts as part of the sound. 1 is returned when
// something is in the way, not when the two differ.

#include "host/effect.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <sndfile.hh>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr std::int64_t kHop = 341;
constexpr float kOtherPhase = 1e-3f; // a difference that no rounding explains: this silence is not the one

struct Change {
    std::int64_t sample;
    std::int32_t parameter;
    float value; // normalised
};

struct Sound {
    std::vector<float> left, right;
    int rate = 0;
};

struct Verdict {
    std::int64_t silence = -1;
    float difference = 1e30f;
    std::int64_t at = -1;
    std::int64_t reached = -1; ///< samples until the comparison was given up, or all
};

Change ParseChange(const char* text) {
    std::istringstream stream(text);
    Change change{};
    char first = 0;
    char second = 0;
    stream >> change.sample >> first >> change.parameter >> second >> change.value;
    if (!stream || first != ':' || second != ':')
        throw std::invalid_argument(std::string("not SAMPLE:PARAMETER:VALUE: ") + text);
    return change;
}

Sound ReadSound(const char* path) {
    SndfileHandle file(path);
    if (file.error() != 0 || file.channels() != 2)
        throw std::runtime_error(std::string(path) + ": no stereo sound");
    std::vector<float> frames(static_cast<std::size_t>(file.frames()) * 2);
    if (file.readf(frames.data(), file.frames()) != file.frames())
        throw std::runtime_error(std::string(path) + ": ends early");
    Sound sound;
    sound.rate = file.samplerate();
    for (std::size_t i = 0; i < frames.size(); i += 2) {
        sound.left.push_back(frames[i]);
        sound.right.push_back(frames[i + 1]);
    }
    return sound;
}

/// Renders after `silence` samples of nothing, until the end or the first difference beyond `kOtherPhase`.
Verdict Compare(vocafade::host::Effect& effect, const Sound& song, const Sound& host, std::int32_t block,
                const std::vector<Change>& changes, std::int64_t silence) {
    effect.Stop();
    effect.Start();
    auto change = changes.begin();
    const auto apply = [&](std::int64_t position) {
        for (; change != changes.end() && change->sample <= position; ++change)
            effect.setParameter(change->parameter, change->value);
    };
    std::vector<float> left(static_cast<std::size_t>(block));
    std::vector<float> right(left);
    float* channels[] = {left.data(), right.data()};
    apply(0);
    for (std::int64_t rest = silence; rest > 0; rest -= block)
        effect.Process(channels, channels, static_cast<std::int32_t>(std::min<std::int64_t>(rest, block)));

    Verdict verdict{silence, 0.0f, -1, 0};
    const auto frames = static_cast<std::int64_t>(song.left.size());
    for (std::int64_t position = 0; position < frames;) {
        apply(position);
        std::int64_t end = std::min(frames, (position / block + 1) * block);
        if (change != changes.end()) end = std::min(end, change->sample);
        const auto count = static_cast<std::int32_t>(end - position);
        std::copy_n(song.left.begin() + position, count, left.begin());
        std::copy_n(song.right.begin() + position, count, right.begin());
        effect.Process(channels, channels, count);
        for (std::int64_t i = 0; i < count; ++i) {
            const float difference = std::max(std::abs(left[i] - host.left[position + i]),
                                              std::abs(right[i] - host.right[position + i]));
            if (!(difference <= verdict.difference)) {
                verdict.difference = difference;
                verdict.at = position + i;
            }
        }
        position = verdict.reached = end;
        if (!(verdict.difference <= kOtherPhase)) break;
    }
    return verdict;
}

/// Takes the better one; true when that is `other`.
bool Improve(Verdict& best, const Verdict& other) {
    const bool closer =
        other.reached > best.reached || (other.reached == best.reached && other.difference < best.difference);
    if (closer) best = other;
    return closer;
}

void Run(int argc, char** argv) {
    const std::int32_t block = std::stoi(argv[4]);
    if (block < kHop) throw std::invalid_argument("the block is shorter than a hop");
    std::vector<Change> changes;
    for (int i = 5; i < argc; ++i)
        changes.push_back(ParseChange(argv[i]));
    std::stable_sort(changes.begin(), changes.end(),
                     [](const Change& a, const Change& b) { return a.sample < b.sample; });
    const Sound song = ReadSound(argv[2]);
    const Sound host = ReadSound(argv[3]);
    if (song.rate != host.rate) throw std::runtime_error("the rates differ");
    if (host.left.size() < song.left.size())
        throw std::runtime_error("the host's file is shorter than the song");

    vocafade::host::Effect effect(argv[1]);
    effect.Configure(song.rate, block);
    // Where the frames lie: any other place differs grossly.
    Verdict best;
    for (std::int64_t silence = 0; silence < kHop; ++silence)
        Improve(best, Compare(effect, song, host, block, changes, silence));
    // How many frames there were: the difference grows with the distance from the right number.
    for (std::int64_t step = 256; step > 0 && best.difference > 0.0f;) {
        bool closer = Improve(best, Compare(effect, song, host, block, changes, best.silence + step * kHop));
        if (!closer && best.silence >= step * kHop)
            closer = Improve(best, Compare(effect, song, host, block, changes, best.silence - step * kHop));
        if (!closer) step /= 2;
    }
    float peak = 0.0f;
    for (const float sample : host.left)
        peak = std::max(peak, std::abs(sample));
    std::printf("silence %lld difference %g at %lld peak %g frames %lld\n",
                static_cast<long long>(best.silence), static_cast<double>(best.difference),
                static_cast<long long>(best.at), static_cast<double>(peak),
                static_cast<long long>(best.reached));
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 5) {
        std::fputs("usage: vocafade-compare-rendering PLUGIN SONG HOST BLOCK [SAMPLE:PARAMETER:VALUE ...]\n",
                   stderr);
        return 2;
    }
    try {
        Run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vocafade-compare-rendering: %s\n", error.what());
        return 1;
    }
}
