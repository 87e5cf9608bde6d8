// SPDX-License-Identifier: MIT
// A formant synthesiser: a source with vibrato, breath and small unsteadiness, and a chain of five resonances
// of the vocal tract, which glide from sound to sound.
#include "apps/demo/song.h"
#include "apps/demo/sound.h"

#include <algorithm>
#include <complex>

namespace vocafade {
namespace {

/// A sung syllable: when, how long and how high, and its speech sounds by their letters in X-SAMPA. Its first
/// vowel begins on the beat and takes the time that the other sounds leave.
struct Syllable {
    double beat, beats;
    int note;
    std::string_view sounds;
};

/// "Low moon on my lawn, in a lonely room, when you're all alone we all roam in morning rain." The band takes
/// the middle from 400 Hz up; the tune stays above it, so that all of the voice is inside.
constexpr Syllable kMelody[] = {
    {4.0, 0.9, 74, "loU"},   {5.0, 0.5, 73, "mun"},    {5.5, 1.0, 74, "On"},    {6.5, 0.5, 76, "mAI"},
    {7.0, 3.2, 69, "lOn"},   {11.0, 1.0, 71, "In"},    {12.0, 0.5, 73, "@"},    {12.5, 0.75, 74, "lon"},
    {13.25, 0.75, 73, "li"}, {14.0, 4.2, 71, "rum"},   {19.0, 1.0, 76, "wEn"},  {20.0, 0.5, 76, "j3"},
    {20.5, 1.0, 78, "Ol"},   {21.5, 0.5, 76, "@"},     {22.0, 4.0, 74, "loUn"}, {27.0, 0.5, 76, "wi"},
    {27.5, 0.5, 74, "Ol"},   {28.0, 0.75, 76, "roUm"}, {28.75, 0.75, 78, "In"}, {29.5, 1.25, 74, "mOr"},
    {30.75, 0.5, 73, "nIN"}, {31.25, 4.5, 74, "rEIn"}};

/// How a speech sound is made.
struct SpeechSound {
    char letter;
    double formantHz[3];
    double level;
    bool IsVowel() const { return level > 0.5; }
};

// Formants of a woman's voice, rounded from what phonetics measures; the levels are tuned by ear. The breath,
// the vowels, the consonants.
constexpr SpeechSound kSpeechSounds[] = {
    {' ', {600, 1400, 2800}, 0.0},  {'A', {880, 1250, 2800}, 0.95}, {'O', {680, 1020, 2750}, 1.00},
    {'@', {620, 1400, 2850}, 0.85}, {'E', {660, 2000, 2950}, 0.95}, {'3', {540, 1450, 1950}, 0.95},
    {'I', {460, 2400, 3050}, 0.95}, {'i', {400, 2700, 3300}, 1.00}, {'o', {600, 980, 2700}, 1.00},
    {'u', {420, 950, 2650}, 0.95},  {'U', {470, 900, 2650}, 0.85},  {'l', {380, 1150, 2900}, 0.42},
    {'m', {280, 1050, 2200}, 0.26}, {'n', {280, 1500, 2500}, 0.28}, {'N', {280, 1900, 2600}, 0.26},
    {'r', {380, 1150, 1750}, 0.48}, {'w', {340, 720, 2300}, 0.42},  {'j', {320, 2500, 3200}, 0.50}};

const SpeechSound* Find(char letter) {
    return std::ranges::find(kSpeechSounds, letter, &SpeechSound::letter);
}

/// What the singer aims at for a few samples.
struct Aim {
    const SpeechSound* sound;
    const Syllable* syllable;
};
constexpr std::size_t kAimSamples = 32; // the ear does not hear resonances step at this pace

std::vector<Aim> Aims(int rate) {
    constexpr double kShort = 0.09; // seconds of every sound but the first vowel
    std::vector<Aim> aims(static_cast<std::size_t>(kSongSeconds * rate) / kAimSamples + 1,
                          {Find(' '), kMelody});
    for (const Syllable& syllable : kMelody) {
        // A syllable that begins early cuts the one before short instead of sounding over it.
        const auto aimFrom = [&](double second, char letter) {
            const auto first = static_cast<std::ptrdiff_t>(second * rate / kAimSamples);
            std::fill(aims.begin() + first, aims.end(), Aim{Find(letter), &syllable});
        };
        const double start = syllable.beat * kSecondsPerBeat;
        const double end = start + syllable.beats * kSecondsPerBeat;
        const int count = static_cast<int>(syllable.sounds.size());
        int vowel = 0;
        while (!Find(syllable.sounds[vowel])->IsVowel())
            ++vowel;
        for (int i = 0; i < count; ++i)
            aimFrom(i <= vowel ? start - kShort * (vowel - i) : end - kShort * (count - i),
                    syllable.sounds[i]);
        aimFrom(end, ' ');
    }
    return aims;
}

} // namespace

StereoSound Sing(int rate) {
    const std::vector<Aim> aims = Aims(rate);
    // Resonances of one complex pole each; the last two are the same in all sounds.
    constexpr double kBandwidthHz[] = {130.0, 115.0, 160.0, 260.0, 380.0};
    double formantHz[] = {0.0, 0.0, 0.0, 3950.0, 4900.0};
    std::complex<double> pole[5], ring[5];
    // What moves slowly: the tongue, the voice's level, the pitch and its drift, the engineer's hand.
    OnePole tongue[] = {OnePole(6.0, rate), OnePole(6.0, rate), OnePole(6.0, rate)};
    OnePole voice(8.0, rate), note(4.0, rate), drift(2.0, rate), loudness(30.0, rate);
    OnePole air(3800.0, rate);
    std::minstd_rand random;
    double phase = 0.0;
    StereoSound out(static_cast<std::size_t>(kSongSeconds * rate));
    for (std::size_t i = 0; i < out.size(); ++i) {
        const double second = static_cast<double>(i) / rate;
        const auto& [sound, syllable] = aims[i / kAimSamples];
        const double age = second - syllable->beat * kSecondsPerBeat;
        const double swing = std::sin(kTurn * 5.5 * second);
        const double vibrato = 0.42 * std::clamp((age - 0.22) / 0.45, 0.0, 1.0) * swing;
        const double hz =
            NoteFrequency(note.LowPass(syllable->note) + vibrato + drift.LowPass(12.0 * Noise(random)));
        phase += kTurn * hz / rate;
        // A pulse of air in every turn; its spectrum falls off before the folds could be heard to alias.
        const double pulse = 5.0 * std::exp(40.0 * (std::cos(phase) - 1.0)) - 0.315;
        const double level = voice.LowPass(sound->level);
        double sung = level * ((1.0 + 0.09 * swing) * pulse + 0.1 * Noise(random));
        for (int k = 0; k < 3; ++k)
            formantHz[k] = tongue[k].LowPass(sound->formantHz[k]);
        // High notes are sung with the mouth opened until the first formant reaches the note.
        if (level > 0.6) formantHz[0] = std::max(formantHz[0], 1.1 * hz);
        for (int k = 0; k < 5; ++k) {
            if (i % kAimSamples == 0)
                pole[k] =
                    std::polar(std::exp(-0.5 * kTurn * kBandwidthHz[k] / rate), kTurn * formantHz[k] / rate);
            ring[k] = ring[k] * pole[k] + sung;
            sung = ring[k].imag() * std::norm(1.0 - pole[k]) / pole[k].imag(); // 0 Hz passes as it is
        }
        sung += 4.0 * air.HighPass(sung) + 0.05 * level * Noise(random);
        // As an engineer would: what is loud comes down by two thirds of what it stands out.
        const double excess = std::max(loudness.LowPass(std::abs(sung)), 0.2);
        out[i].left = out[i].right = static_cast<float>(0.11 * sung * std::pow(excess, -2.0 / 3.0));
    }
    return out;
}

} // namespace vocafade
