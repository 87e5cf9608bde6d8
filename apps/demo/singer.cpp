// SPDX-License-Identifier: MIT
#include "apps/demo/singer.h"

#include "apps/demo/filters.h"
#include "apps/demo/noise.h"
#include "apps/demo/score.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string_view>

namespace vocafade {
namespace {

/// How one speech sound is made.
struct Phoneme {
    std::string_view name;
    double formantHz[3];
    double voice;   ///< level of the glottal source
    double hiss;    ///< level of the noise made at teeth and lips
    double hissHz;  ///< where that noise is loudest
    double seconds; ///< length of a consonant; 0 for vowels, which take what is left
};

// Formants of a woman's voice, rounded from what phonetics measures; the levels and lengths are tuned by ear.
constexpr std::array kPhonemes{
    Phoneme{"AA", {880, 1250, 2800}, 0.95, 0, 0, 0},
    Phoneme{"AO", {680, 1020, 2750}, 1.00, 0, 0, 0},
    Phoneme{"AX", {620, 1400, 2850}, 0.85, 0, 0, 0},
    Phoneme{"ER", {540, 1450, 1950}, 0.95, 0, 0, 0},
    Phoneme{"IH", {500, 2250, 3050}, 0.95, 0, 0, 0},
    Phoneme{"IY", {400, 2700, 3300}, 1.00, 0, 0, 0},
    Phoneme{"OH", {600, 980, 2700}, 1.00, 0, 0, 0},
    Phoneme{"UH", {470, 900, 2650}, 0.85, 0, 0, 0},
    Phoneme{"UW", {420, 950, 2650}, 0.95, 0, 0, 0},
    Phoneme{"L", {380, 1150, 2900}, 0.42, 0, 0, 0.075},
    Phoneme{"M", {280, 1050, 2200}, 0.26, 0, 0, 0.085},
    Phoneme{"N", {280, 1500, 2500}, 0.28, 0, 0, 0.075},
    Phoneme{"NG", {280, 1900, 2600}, 0.26, 0, 0, 0.090},
    Phoneme{"R", {380, 1150, 1750}, 0.48, 0, 0, 0.080},
    Phoneme{"W", {340, 720, 2300}, 0.42, 0, 0, 0.070},
    Phoneme{"Y", {320, 2500, 3200}, 0.50, 0, 0, 0.065},
    Phoneme{"DH", {320, 1400, 2600}, 0.30, 0.05, 5500, 0.050},
    Phoneme{"V", {320, 1200, 2500}, 0.30, 0.05, 6500, 0.060},
    Phoneme{"Z", {320, 1600, 2600}, 0.25, 0.20, 7000, 0.080},
    Phoneme{"F", {400, 1200, 2500}, 0.00, 0.13, 6500, 0.090},
    Phoneme{"H", {550, 1400, 2700}, 0.00, 0.02, 2500, 0.075},
    // Stops: the mouth is closed, then bursts open.
    Phoneme{"-", {320, 1400, 2600}, 0.00, 0, 4000, 0.045},
    Phoneme{"=", {300, 1200, 2500}, 0.10, 0, 4000, 0.040},
    Phoneme{"T", {400, 1700, 2700}, 0.00, 0.28, 5000, 0.030},
    Phoneme{"K", {400, 1900, 2600}, 0.00, 0.24, 2400, 0.035},
    Phoneme{"D", {350, 1700, 2700}, 0.20, 0.15, 4500, 0.020},
    Phoneme{"B", {300, 900, 2300}, 0.30, 0.08, 1200, 0.015},
    Phoneme{"G", {300, 1900, 2500}, 0.20, 0.15, 2000, 0.020},
};

const Phoneme& Find(std::string_view name) {
    return *std::find_if(kPhonemes.begin(), kPhonemes.end(),
                         [&](const Phoneme& phoneme) { return phoneme.name == name; });
}

std::vector<const Phoneme*> Pronounce(std::string_view text) {
    std::vector<const Phoneme*> sounds;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view name = text.substr(0, end);
        if (name == "T" || name == "K") sounds.push_back(&Find("-"));
        if (name == "D" || name == "B" || name == "G") sounds.push_back(&Find("="));
        sounds.push_back(&Find(name));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return sounds;
}

/// What the singer aims at from a moment on.
struct Target {
    double second;
    const Phoneme* sound; ///< null: breathes
    double note;
    double noteStart; ///< when this note began, for its vibrato
    double noteSeconds;
};

void AddSyllable(const Syllable& syllable, std::vector<Target>& targets) {
    const std::vector<const Phoneme*> sounds = Pronounce(syllable.phonemes);
    const double start = syllable.beat * kSecondsPerBeat;
    const double length = syllable.beats * kSecondsPerBeat;
    double consonants = 0.0;
    int vowels = 0;
    double onset = 0.0; // consonants before the beat: the vowel is what falls on it
    for (const Phoneme* sound : sounds) {
        if (sound->seconds > 0.0) {
            consonants += sound->seconds;
            if (vowels == 0) onset += sound->seconds;
        } else {
            ++vowels;
        }
    }
    const double vowelTime = std::max(length - (consonants - onset) - 0.02, 0.08);
    double second = start - onset * 0.8;
    int vowel = 0;
    for (const Phoneme* sound : sounds) {
        targets.push_back({second, sound, static_cast<double>(syllable.note), start, length});
        if (sound->seconds > 0.0) {
            second += sound->seconds;
        } else {
            // Of a diphthong the first vowel is held and the second only touched at the end.
            const double last = vowels > 1 ? std::min(0.3 * vowelTime, 0.22) : 0.0;
            second += vowels > 1 ? (++vowel < vowels ? vowelTime - last : last) : vowelTime;
        }
    }
    targets.push_back({second, nullptr, static_cast<double>(syllable.note), start, length});
}

std::vector<Target> Score() {
    std::vector<Target> targets;
    for (const Syllable& syllable : Melody()) {
        // A syllable that begins early cuts the one before short instead of sounding over it.
        std::vector<Target> next;
        AddSyllable(syllable, next);
        while (!targets.empty() && targets.back().second >= next.front().second)
            targets.pop_back();
        targets.insert(targets.end(), next.begin(), next.end());
    }
    return targets;
}

/// A parameter that moves to its target smoothly, like a tongue: two one-pole steps.
class Glide {
  public:
    explicit Glide(double value) : first_(value), second_(value) {}
    double Step(double target, double seconds, double rate) {
        const double share = 1.0 - std::exp(-1.0 / (seconds * rate));
        first_ += (target - first_) * share;
        second_ += (first_ - second_) * share;
        return second_;
    }
    double value() const { return second_; }

  private:
    double first_;
    double second_;
};

/// The derivative of the air flow through the vocal folds: 2x - 3x^2 while they are open, with the sudden
/// closing that gives a voice its brilliance, rounded to the band limit (polynomial band-limited step).
class Glottis {
  public:
    double Next(double frequency, double rate) {
        constexpr double kOpen = 0.55;
        const double step = frequency / rate;
        phase_ += step;
        phase_ -= std::floor(phase_);
        open_ = phase_ < kOpen;
        double out = 0.0;
        if (open_) {
            const double x = phase_ / kOpen;
            out = 2.0 * x - 3.0 * x * x;
        }
        const double t = phase_ - kOpen; // the closing is a step from -1 to 0
        if (t >= 0.0 && t < step) {
            const double u = t / step;
            out += 0.5 * (2.0 * u - u * u - 1.0);
        } else if (t < 0.0 && t > -step) {
            const double u = t / step;
            out += 0.5 * (u * u + 2.0 * u + 1.0);
        }
        return out;
    }
    bool open() const { return open_; }

  private:
    double phase_ = 0.0;
    bool open_ = false;
};

/// Pitch in Hz with glide, vibrato and the slow drift of a living voice.
class Pitch {
  public:
    Pitch(double note, double rate) : rate_(rate), note_(note), drift_(0.0) {}
    double Next(const Target& target, double second) {
        if (--untilDrift_ <= 0) {
            untilDrift_ = static_cast<int>(rate_ * 0.09);
            driftTarget_ = noise_.Next() * 0.07;
            vibratoHz_ = 5.5 + 0.35 * noise_.Next();
        }
        const double age = second - target.noteStart;
        const double scoop = age < 0.06 ? -0.6 : 0.0; // a note is begun from a little below
        const double note = note_.Step(target.note + scoop, 0.028, rate_);
        const double depth =
            target.noteSeconds > 0.45 ? 0.42 * std::clamp((age - 0.22) / 0.45, 0.0, 1.0) : 0.06;
        vibrato_ += 2.0 * std::numbers::pi * vibratoHz_ / rate_;
        swing_ = std::sin(vibrato_);
        return NoteFrequency(note + depth * swing_ + drift_.Step(driftTarget_, 0.05, rate_));
    }
    /// -1 to 1: where the vibrato stands, which a voice's level follows a little.
    double swing() const { return swing_; }

  private:
    double rate_;
    Glide note_;
    Glide drift_;
    Noise noise_{7};
    double driftTarget_ = 0.0;
    double vibrato_ = 0.0;
    double vibratoHz_ = 5.5;
    double swing_ = 0.0;
    int untilDrift_ = 0;
};

/// What an engineer does to a voice: loud vowels down by two thirds of what they stand out, with a fast
/// attack.
void Level(std::vector<float>& voice, int rate) {
    constexpr double kThreshold = 0.12;
    const double attack = std::exp(-1.0 / (0.004 * rate));
    const double release = std::exp(-1.0 / (0.120 * rate));
    double envelope = 0.0;
    for (float& sample : voice) {
        const double size = std::abs(static_cast<double>(sample));
        const double keep = size > envelope ? attack : release;
        envelope = size + (envelope - size) * keep;
        if (envelope > kThreshold)
            sample = static_cast<float>(sample * std::pow(envelope / kThreshold, -2.0 / 3.0));
    }
}

} // namespace

std::vector<float> Sing(int rate) {
    constexpr int kTuneEvery = 32; // the ear does not hear formants step at this pace
    const std::vector<Target> targets = Score();
    std::vector<float> out(static_cast<std::size_t>(SongSeconds() * rate));

    Glottis glottis;
    Pitch pitch(targets.front().note, rate);
    Noise noise(3);
    std::array<Resonator, 5> tract;
    Resonator teeth;
    OnePole tilt(7000.0, rate);
    OnePole presence(1600.0, rate);
    OnePole air(3800.0, rate);
    OnePole rumble(120.0, rate);
    std::array<Glide, 3> formants{Glide{600}, Glide{1400}, Glide{2800}};
    Glide hissHz(4000.0);
    Glide voice(0.0);
    Glide hiss(0.0);
    Glide breath(0.0);
    const Target before{0.0, nullptr, targets.front().note, 0.0, 0.0};
    std::size_t next = 0;

    for (std::size_t i = 0; i < out.size(); ++i) {
        const double second = static_cast<double>(i) / rate;
        while (next < targets.size() && targets[next].second <= second)
            ++next;
        const Target& target = next == 0 ? before : targets[next - 1];
        const Phoneme* sound = target.sound;

        const double frequency = pitch.Next(target, second);
        const bool stop = sound && sound->seconds > 0.0 && sound->seconds < 0.04;
        const double level = voice.Step(sound ? sound->voice : 0.0, sound ? 0.014 : 0.035, rate);
        const double hissLevel = hiss.Step(sound ? sound->hiss : 0.0, stop ? 0.003 : 0.012, rate);
        const bool whisper = sound && (sound->name == "H");
        const double breathLevel = breath.Step(whisper ? 0.5 : 0.0, 0.02, rate);
        for (std::size_t k = 0; k < formants.size(); ++k)
            formants[k].Step(sound ? sound->formantHz[k] : formants[k].value(), 0.018, rate);
        hissHz.Step(sound && sound->hissHz > 0.0 ? sound->hissHz : hissHz.value(), 0.006, rate);

        if (i % kTuneEvery == 0) {
            // High notes are sung with the mouth opened until the first formant reaches the note.
            tract[0].Tune(std::max(formants[0].value(), level > 0.6 ? frequency * 1.10 : 0.0), 130, rate);
            tract[1].Tune(formants[1].value(), 115, rate);
            tract[2].Tune(formants[2].value(), 160, rate);
            tract[3].Tune(3950, 260, rate);
            tract[4].Tune(4900, 380, rate);
            teeth.Tune(hissHz.value(), 0.45 * hissHz.value(), rate);
        }
        const double swell = 1.0 + 0.09 * pitch.swing();
        const double breeze = noise.Next();
        const double source = glottis.Next(frequency, rate) * level * swell +
                              breeze * (glottis.open() ? 0.035 : 0.012) * level + breeze * 0.10 * breathLevel;
        // A voice that carries over a band is sung with more edge than one that speaks.
        const float edge = tilt.LowPass(static_cast<float>(source));
        double sung = edge + 3.5F * presence.HighPass(edge);
        for (Resonator& resonance : tract)
            sung = resonance.Run(sung);
        const double hissed = rumble.HighPass(static_cast<float>(teeth.Run(noise.Next()) * hissLevel));
        sung += 1.5 * air.HighPass(static_cast<float>(sung));
        out[i] = static_cast<float>(sung * 0.25 + hissed * 0.8);
    }
    Level(out, rate);
    return out;
}

} // namespace vocafade
