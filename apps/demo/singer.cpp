// SPDX-License-Identifier: MIT
#include "apps/demo/instruments.h"
#include "apps/demo/score.h"
#include "apps/demo/sound.h"

#include <algorithm>
#include <sstream>

namespace vocafade {
namespace {

/// How one speech sound is made.
struct Phoneme {
    std::string_view name;
    double formantHz[3];
    double level;
    double seconds; ///< 0 for vowels, which take the time that is left
};

// Formants of a woman's voice, rounded from what phonetics measures; the levels and lengths are tuned by ear.
// The breath, the vowels, the ends of diphthongs, the consonants.
constexpr Phoneme kPhonemes[] = {{"", {600, 1400, 2800}, 0.0, 0},       {"AA", {880, 1250, 2800}, 0.95, 0},
                                 {"AO", {680, 1020, 2750}, 1.00, 0},    {"AX", {620, 1400, 2850}, 0.85, 0},
                                 {"EH", {660, 2000, 2950}, 0.95, 0},    {"ER", {540, 1450, 1950}, 0.95, 0},
                                 {"IH", {500, 2250, 3050}, 0.95, 0},    {"IY", {400, 2700, 3300}, 1.00, 0},
                                 {"OH", {600, 980, 2700}, 1.00, 0},     {"UW", {420, 950, 2650}, 0.95, 0},
                                 {"I", {420, 2500, 3100}, 0.85, 0.15},  {"U", {470, 900, 2650}, 0.85, 0.20},
                                 {"L", {380, 1150, 2900}, 0.42, 0.075}, {"M", {280, 1050, 2200}, 0.26, 0.085},
                                 {"N", {280, 1500, 2500}, 0.28, 0.075}, {"NG", {280, 1900, 2600}, 0.26, 0.09},
                                 {"R", {380, 1150, 1750}, 0.48, 0.080}, {"W", {340, 720, 2300}, 0.42, 0.070},
                                 {"Y", {320, 2500, 3200}, 0.50, 0.065}};
constexpr const Phoneme* kBreath = kPhonemes;

/// What the singer aims at from a moment on.
struct Target {
    double second;
    const Phoneme* sound;
    int note;
    double noteSecond; ///< when the note began, for its vibrato
};

std::vector<Target> Targets() {
    std::vector<Target> targets{{-1.0, kBreath, kMelody[0].note, 0.0}};
    for (const Syllable& syllable : kMelody) {
        std::vector<const Phoneme*> sounds;
        double beforeVowel = 0.0, others = 0.0;
        std::istringstream names{std::string(syllable.phonemes)};
        for (std::string name; names >> name;) {
            sounds.push_back(std::ranges::find(kPhonemes, name, &Phoneme::name));
            if (sounds.back()->seconds == 0.0) beforeVowel = others;
            others += sounds.back()->seconds;
        }
        const double start = syllable.beat * kSecondsPerBeat;
        const double vowel = std::max(syllable.beats * kSecondsPerBeat - (others - beforeVowel), 0.1);
        double second = start - beforeVowel;
        // A syllable that begins early cuts the one before short instead of sounding over it.
        while (targets.back().second >= second)
            targets.pop_back();
        for (const Phoneme* sound : sounds) {
            targets.push_back({second, sound, syllable.note, start});
            second += sound->seconds > 0.0 ? sound->seconds : vowel;
        }
        targets.push_back({second, kBreath, syllable.note, start});
    }
    return targets;
}

/// A falling sawtooth, rounded to the band limit (a polynomial band-limited step): about as bright as the
/// air flow through the vocal folds. `phase` goes from 0 to 1 and grows by `step` a sample.
double Sawtooth(double phase, double step) {
    const double behind = std::min(phase / step - 1.0, 0.0);
    const double ahead = std::max((phase - 1.0) / step + 1.0, 0.0);
    return 1.0 - 2.0 * phase - behind * behind + ahead * ahead;
}

} // namespace

std::vector<float> Sing(int rate) {
    constexpr std::size_t kTuneEvery = 32; // the ear does not hear formants step at this pace
    const std::vector<Target> targets = Targets();
    std::vector<float> out(static_cast<std::size_t>(kSongSeconds * rate));

    Noise noise{3};
    Resonator tract[5];
    OnePole presence(1600.0, rate), air(3800.0, rate);
    // What moves slowly: the tongue, the voice's level, the pitch and its drift, the engineer's hand.
    OnePole formants[] = {OnePole(6.0, rate), OnePole(6.0, rate), OnePole(6.0, rate)};
    OnePole voice(8.0, rate), note(4.0, rate), drift(2.0, rate), loudness(30.0, rate);
    double phase = 0.0;
    auto target = targets.begin();
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double second = static_cast<double>(i) / rate;
        while (target + 1 != targets.end() && (target + 1)->second <= second)
            ++target;
        const double age = second - target->noteSecond;
        const double swing = std::sin(kTurn * 5.5 * second);
        const double vibrato = 0.42 * std::clamp((age - 0.22) / 0.45, 0.0, 1.0) * swing;
        const double frequency =
            NoteFrequency(note.LowPass(target->note) + vibrato + drift.LowPass(12.0 * noise.Next()));
        const double step = frequency / rate;
        phase += step - std::floor(phase + step);
        const double level = voice.LowPass(target->sound->level);
        double hz[3];
        for (int k = 0; k < 3; ++k)
            hz[k] = formants[k].LowPass(target->sound->formantHz[k]);
        if (i % kTuneEvery == 0) {
            // High notes are sung with the mouth opened until the first formant reaches the note.
            tract[0].Tune(std::max(hz[0], level > 0.6 ? frequency * 1.10 : 0.0), 130.0, rate);
            tract[1].Tune(hz[1], 115.0, rate);
            tract[2].Tune(hz[2], 160.0, rate);
            tract[3].Tune(3950.0, 260.0, rate);
            tract[4].Tune(4900.0, 380.0, rate);
        }
        const double source = level * ((1.0 + 0.09 * swing) * Sawtooth(phase, step) + 0.1 * noise.Next());
        double sung = source + 6.0 * presence.HighPass(source);
        for (Resonator& resonance : tract)
            sung = resonance.Run(sung);
        sung += 4.0 * air.HighPass(sung) + 0.05 * level * noise.Next();
        // As an engineer would: what is loud comes down by two thirds of what it stands out.
        const double excess = std::max(loudness.LowPass(std::abs(sung)), 0.2);
        out[i] = static_cast<float>(0.1 * sung * std::pow(excess, -2.0 / 3.0));
    }
    return out;
}

} // namespace vocafade
