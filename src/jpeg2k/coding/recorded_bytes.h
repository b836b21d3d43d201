// SPDX-License-Identifier: Apache-2.0
// The decisions of a word's samples as the bytes that are recorded, and those of a set of them appended to a record.
// For kernels.
#pragma once

#include "jpeg2k/coding/mq_tables.h"
#include "jpeg2k/coding/sample_sets.h"

namespace qel::QEL_BUILD {
namespace {

constexpr int N = kWidth;
constexpr bool kGathers = Simd<16>::kGathersFast;

// Decisions in that context as they are recorded, less the lowest bit.
constexpr uint8_t kUniform = kContextUniform << 1;

// body(sample) for each of a set, in order.
template <class Body> QEL_INLINE void eachSample(uint64_t set, Body body)
{
    for (; set != 0; set &= set - 1) body(__builtin_ctzll(set));
}

// Lanes of bytes: which byte of a set they have, and which of its bits.
struct LanesOfSet {
    uint64_t shifts[N / 8];
    uint8_t bits[N];
};
constexpr LanesOfSet kLanesOfSet = [] {
    LanesOfSet lanes = {};
    for (int i = 0; i < N / 8; ++i) lanes.shifts[i] = uint64_t(i / 2 * 16);
    for (int i = 0; i < N; ++i) lanes.bits[i] = uint8_t(1 << i % 8);
    return lanes;
}();

// All ones in the lanes of the first N samples that the set has, 0 in the others.
QEL_INLINE U8<N> lanesOf(uint64_t set)
{
    auto bytes = (U8<N>)((U64<N>{} + set) >> load<U64<N>>(kLanesOfSet.shifts));
    auto bits = load<U8<N>>(kLanesOfSet.bits);
    constexpr int a = kLittleEndian ? 0 : 7, b = kLittleEndian ? 1 : 6; // the lowest byte, and the next
    return (U8<N>)((inBlocks<a, a, a, a, a, a, a, a, b, b, b, b, b, b, b, b>(bytes) & bits) == bits);
}

// Appends those of 16 bytes whose lanes are all ones.
QEL_INLINE uint8_t* putChosen(U8<16> bytes, U8<16> lanes, uint8_t* out)
{
    for (int i = 0; i < 2; ++i) {
        uint64_t chosen = ((U64<16>)lanes)[i];
        store(out, Simd<16>::gatherBits(((U64<16>)bytes)[i], chosen));
        out += __builtin_popcountll(chosen) / 8;
    }
    return out;
}

// The bytes that are recorded for the samples of a word.
struct Bytes64 {
    alignas(64) uint8_t of[64];

    template <int kBits> QEL_INLINE void fill(const Decisions& decisions, int offset = 0)
    {
        for (int i = 0; i < 64; i += N) {
            U8<N> bytes = {};
            for (int k = kBits - 1; k >= 0; --k) bytes = bytes + bytes - lanesOf(decisions.bit[k] >> i);
            store(of + i, bytes + uint8_t(offset));
        }
    }
    QEL_INLINE void fillLanes(uint64_t set)
    {
        for (int i = 0; i < 64; i += N) store(of + i, lanesOf(set >> i));
    }
    QEL_INLINE U8<16> at(int i) const { return load<U8<16>>(of + i); }

    // Appends those of a set.
    QEL_INLINE uint8_t* put(uint64_t set, uint8_t* out) const
    {
        if constexpr (!kGathers) {
            eachSample(set, [&](int i) { *out++ = of[i]; });
            return out;
        }
        Bytes64 chosen;
        chosen.fillLanes(set);
        for (int i = 0; i < 64; i += 16) out = putChosen(at(i), chosen.at(i), out);
        return out;
    }
};

// Zero and sign coding of a word's samples.
struct SampleBytes {
    Bytes64 zero, sign;

    template <Coding kCoding> QEL_INLINE void fillSigns(const Neighbours& n, const Surroundings& signs)
    {
        if constexpr (kCoding == Coding::raw)
            sign.fill<1>({{signs.here}});
        else
            sign.fill<5>(signCoding(n, signs.neighbours(signs.here), signs.here));
    }

    // Appends of each member the byte of zero coding, and if it was added that of its sign.
    QEL_INLINE uint8_t* put(uint64_t members, uint64_t added, uint8_t* out) const
    {
        if (added == 0) return zero.put(members, out);
        if constexpr (!kGathers) {
            eachSample(members, [&](int i) {
                out[0] = zero.of[i];
                out[1] = sign.of[i];
                out += 1 + (added >> i & 1);
            });
            return out;
        }
        using Op = Simd<16>;
        Bytes64 isMember, isAdded;
        isMember.fillLanes(members);
        isAdded.fillLanes(added);
        for (int i = 0; i < 64; i += 16) {
            out = putChosen(Op::zipLow(zero.at(i), sign.at(i)), Op::zipLow(isMember.at(i), isAdded.at(i)), out);
            out = putChosen(Op::zipHigh(zero.at(i), sign.at(i)), Op::zipHigh(isMember.at(i), isAdded.at(i)), out);
        }
        return out;
    }

    // The same where the samples of `ends` become significant at the end of runs. Of their columns' tops, members, the
    // byte is that of the run; their places in the columns and their signs follow it.
    QEL_INLINE uint8_t* putRuns(uint64_t members, uint64_t added, uint64_t ends, uint8_t* out) const
    {
        added &= ~ends;
        for (; ends != 0; ends &= ends - 1) {
            int end = __builtin_ctzll(ends);
            uint64_t upToTop = (uint64_t(2) << (end & ~3)) - 1;
            out = put(members & upToTop, added & upToTop, out);
            out[0] = uint8_t(kUniform | (end >> 1 & 1));
            out[1] = uint8_t(kUniform | (end & 1));
            out[2] = sign.of[end];
            out += 3;
            members &= ~upToTop;
            added &= ~upToTop;
        }
        return put(members, added, out);
    }
};

}
}
