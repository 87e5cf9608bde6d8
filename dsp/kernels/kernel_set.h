// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

/// The engine's arithmetic, one function a step, free of any streaming. It exists once for each instruction
/// set of the processors that the plug-in meets; all give the same bits, because every element passes through
/// the same operations in the same order. Nothing here allocates.
///
/// The arithmetic assumes rounding to nearest, and gives its best time with denormals taken as zero.
namespace vocafade::kernels {

/// Arrays that the kernels read or write are followed by this many floats that may be read and written, too:
/// a last vector need not be cut to size.
inline constexpr int kPadding = 16;

/// The shortest frame that the transforms of every instruction set take.
inline constexpr int kSmallestFrame = 64;

/// The twiddles of one radix-4 pass: for group p of `groups`, the factors exp(2 pi i r p / (4 groups)) of
/// results r = 1, 2, 3, separately real and imaginary.
struct PassTwiddles {
    int groups;
    const float* w1r;
    const float* w1i;
    const float* w2r;
    const float* w2i;
    const float* w3r;
    const float* w3i;
};

/// What the transforms of one frame size need; `FrameTransform` owns the memory behind it.
struct TransformTables {
    static constexpr int kMostPasses = 15;

    int size;     ///< points, a power of two of at least `kSmallestFrame`
    int passes;   ///< radix-4 passes with twiddles; a last one without follows, or a radix-8 one
    bool lastIs8; ///< for odd powers of two
    float eighth; ///< cos(pi/4) as the twiddle table has it
    PassTwiddles pass[kMostPasses];
};

/// What the phase vocoder needs to know of the frame, all in single precision as the steps use it.
struct VocoderConstants {
    int bins;                   ///< half the frame size
    float expectedPhaseAdvance; ///< radians that bin 1's centre frequency turns in one hop
    float binWidth;             ///< Hz
    float overlap;              ///< frames over each sample
};

/// What is removed: where the two channels' magnitudes stand in a given ratio, in bins `firstBin` to
/// `lastBin` (inclusive; none where the last is below the first).
struct Removal {
    float scaleLeft; ///< factors that make equal magnitudes of what is to be removed
    float scaleRight;
    int firstBin;
    int lastBin;
};

/// The kernels, compiled for one instruction set.
struct KernelSet {
    const char* instructionSet; ///< its name

    /// re + i im = the first half of the transform (negative exponent, unscaled) of input * window.
    /// `work` holds 4 * size floats.
    void (*forward)(const TransformTables& tables, const float* input, const float* window, float* work,
                    float* re, float* im);

    /// Phase-vocoder analysis of one channel's bins: magnitude and true frequency (Hz) of each; in `phase`
    /// that of the previous frame is replaced by this one's, in [-pi, pi].
    void (*analyse)(const VocoderConstants& constants, const float* re, const float* im, float* phase,
                    float* magnitude, float* trueFrequency);

    /// Turns both channels' magnitudes into what remains of them: in the band left becomes left minus right
    /// (both scaled), and right the negative of that, which turns the bin's phase by half a turn.
    void (*remove)(const Removal& removal, int bins, float* left, float* right);

    /// Lets each bin's phase run on by its true frequency for one hop and writes re + i im of the given
    /// amplitude at that phase. The sums are kept within half a turn by taking off whole turns of the
    /// single-precision 2 pi, and are pulled towards the analysed `phase`, from which only rounding parts
    /// them: they stay as precise after hours as in the first second.
    void (*resynthesise)(const VocoderConstants& constants, const float* amplitude,
                         const float* trueFrequency, const float* phase, float* phaseSum, float* re,
                         float* im);

    /// frame = the real part of the transform (positive exponent, unscaled) of a spectrum whose first half is
    /// re + i im and whose second half is zero. `work` holds 4 * size floats.
    void (*inverse)(const TransformTables& tables, const float* re, const float* im, float* work,
                    float* frame);

    /// Adds a frame as `inverse` left it, windowed and scaled, from sample `lead` on to the accumulator of
    /// `size` samples, and moves the accumulator down by `hop`. The first `hop` samples have been sent out
    /// and are dropped; the last `hop` are zero before and after.
    void (*overlapAdd)(const float* frame, const float* window, int hop, int lead, int size, float overlap,
                       float* accumulator);

    /// The greatest |sample| * gain of a block, for meters; 0 at least, and 0 for an empty block. NaN is
    /// passed over.
    float (*peak)(const float* samples, int count, float gain);
};

extern const KernelSet kPortableKernels;
extern const KernelSet kSse2Kernels; ///< x86-64 only, as the next two
extern const KernelSet kAvx2Kernels;
extern const KernelSet kAvx512Kernels; ///< needs the F, BW, DQ and VL groups
extern const KernelSet kNeonKernels;   ///< AArch64 only

/// [any-thread] The kernels that this process uses: for the best that the processor has, chosen once when the
/// library is loaded. The environment variable VOCAFADE_SIMD (portable, sse2, avx2, avx512, neon) asks for
/// another; what is unknown or missing here is ignored.
const KernelSet& ChosenKernels();

/// [any-thread] The kernels at `index` of those that this processor can run, the portable ones first, or null
/// beyond the last.
const KernelSet* AvailableKernels(int index);

} // namespace vocafade::kernels
