// SPDX-License-Identifier: MIT
#include "dsp/kernels/frame_transform.h"

#include <algorithm>

namespace vocafade::kernels {
namespace {

/// `value` with its `bits` lowest bits in reverse order.
int ReverseBits(int value, int bits) {
    int reversed = 0;
    for (int bit = 0; bit < bits; ++bit) {
        reversed = 2 * reversed + ((value >> bit) & 1);
    }
    return reversed;
}

/// Fills the factors of group `p`. The table `w` holds the turns in bit-reversed order; the third factor is
/// formed from the first two as the scalar transform does it, in its two kinds of groups.
void FillGroup(const float* w, int reversed, int p, float* const (&to)[6]) {
    const int k1 = reversed & ~1;
    const bool quarterFurther = (reversed & 1) != 0;
    const float baseR = w[k1];
    const float baseI = w[k1 + 1];
    const float* first = w + 2 * k1 + (quarterFurther ? 2 : 0);
    const float lever = quarterFurther ? baseR : baseI;
    to[0][p] = first[0];
    to[1][p] = first[1];
    to[2][p] = quarterFurther ? -baseI : baseR;
    to[3][p] = quarterFurther ? baseR : baseI;
    to[4][p] = first[0] - 2 * lever * first[1];
    to[5][p] = 2 * lever * first[0] - first[1];
}

} // namespace

void FrameTransform::Init(int size) {
    if (size == tables_.size) return;
    tables_.size = size;
    work_.Assign(4 * static_cast<std::size_t>(size));
    forward_.Init(size, true, true);
    if (IsShort()) {
        inverse_.Init(size, true, false);
    } else {
        InitTwiddles();
    }
}

void FrameTransform::Forward(const KernelSet& set, const float* input, const float* window, float* re,
                             float* im) {
    float* work = work_.data();
    if (!IsShort()) {
        set.forward(tables_, input, window, work, re, im);
        return;
    }
    for (int i = 0; i < tables_.size; ++i) {
        work[2 * i] = input[i] * window[i];
        work[2 * i + 1] = 0.0f;
    }
    forward_.ComplexFFT(work);
    for (int k = 0; k < tables_.size / 2; ++k) {
        re[k] = work[2 * k];
        im[k] = work[2 * k + 1];
    }
}

void FrameTransform::Inverse(const KernelSet& set, const float* re, const float* im, float* frame) {
    float* work = work_.data();
    if (!IsShort()) {
        set.inverse(tables_, re, im, work, frame);
        return;
    }
    std::fill_n(work, 2 * tables_.size, 0.0f);
    for (int k = 0; k < tables_.size / 2; ++k) {
        work[2 * k] = re[k];
        work[2 * k + 1] = im[k];
    }
    inverse_.ComplexFFT(work);
    for (int i = 0; i < tables_.size; ++i) {
        frame[i] = work[2 * i] * static_cast<float>(tables_.size); // CFFT has scaled it
    }
}

void FrameTransform::InitTwiddles() {
    const float* w = forward_.Twiddles();
    const int size = tables_.size;
    int bits = 0;
    while ((1 << bits) < size) {
        ++bits;
    }
    tables_.passes = bits / 2 - 1;
    tables_.lastIs8 = bits % 2 != 0;
    tables_.eighth = w[2];

    std::size_t total = 0;
    for (int i = 0, count = size / 4; i < tables_.passes; ++i, count /= 4) {
        total += 6 * static_cast<std::size_t>(count);
    }
    twiddles_.assign(total, 0.0f);
    float* next = twiddles_.data();
    int groups = size / 4;
    for (int i = 0; i < tables_.passes; ++i, groups /= 4) {
        const int groupBits = bits - 2 * (i + 1);
        float* const to[6] = {
            next, next + groups, next + 2 * groups, next + 3 * groups, next + 4 * groups, next + 5 * groups};
        for (int p = 0; p < groups; ++p) {
            FillGroup(w, ReverseBits(p, groupBits), p, to);
        }
        // The factors 1, and those of the middle group, which turns by eighths.
        const float c = tables_.eighth;
        const float middle[6] = {c, c, 0.0f, 1.0f, -c, c};
        for (int part = 0; part < 6; ++part) {
            to[part][0] = part % 2 == 0 ? 1.0f : 0.0f;
            to[part][groups / 2] = middle[part];
        }
        tables_.pass[i] = {groups, to[0], to[1], to[2], to[3], to[4], to[5]};
        next += 6 * groups;
    }
}

} // namespace vocafade::kernels
