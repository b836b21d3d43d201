// SPDX-License-Identifier: Apache-2.0
// The coefficients of a block as its scan meets them, found all at once. For kernels that encode.
#pragma once

#include "jpeg/entropy/coefficient_sets.h"
#include "jpeg/entropy/huffman_tables.h"
#include "jpeg/entropy/magnitudes.h"

namespace qel::QEL_BUILD {
namespace {

// By a byte: the category of the value v that it stands for, which is v itself from 0 on, and else v - 1.
struct Categories {
    uint32_t of[256];
};
constexpr Categories kCategories = [] {
    Categories table = {};
    for (int i = 0; i < 256; ++i) table.of[i] = uint32_t(measure(i < 128 ? i : i - 255).category);
    return table;
}();

// The order of the scan in packed registers of N bytes, whose blocks of 16 hold two rows each.
template <int N> struct PackedScanOrder {
    uint8_t index[64];
};
template <int N> constexpr PackedScanOrder<N> makePackedScanOrder()
{
    PackedScanOrder<N> order = {};
    for (int position = 0; position < 64; ++position) {
        int row = kScanOrder.index[position] / 8, column = kScanOrder.index[position] % 8;
        // Rows of one register: those of its first source are the first halves of the blocks.
        constexpr int kRows = N / 8;
        int first = row / kRows * kRows, inRegister = row % kRows, block = inRegister % (kRows / 2);
        order.index[position] = uint8_t(8 * (first + 2 * block + inRegister / (kRows / 2)) + column);
    }
    return order;
}
template <int N> constexpr PackedScanOrder<N> kPackedScanOrder = makePackedScanOrder<N>();

// The coefficients of a block but the first, each after `transform`: which are not zero, by position in the scan; and a
// byte for each, if all are within -126 to 126. From a negative one 1 is taken away, so that its low bits are those
// that follow its code.
class Coefficients {
public:
    template <class Transform> QEL_INLINE Coefficients(const int16_t* block, Transform transform)
    {
        if constexpr (!kAsBytes) {
            set = nonZero(block, transform) & ~uint64_t(1);
            return;
        }
        U8<N> v[kRegisters], first = {0xFF};
        for (int i = 0; i < kRegisters; ++i)
            v[i] = (U8<N>)Simd<N>::packSigned(transform(load<S16<N>>(block + i * N)),
                                              transform(load<S16<N>>(block + i * N + N / 2)));
        Simd<N>::template permute<kPackedScanOrder<N>>(v);
        uint64_t zeros = 1;
        for (int i = 0; i < kRegisters; ++i) {
            zeros |= Simd<N>::signMask((U8<N>)(v[i] == 0)) << (i * N % 64);
            auto negative = (U8<N>)((S8<N>)v[i] < 0);
            auto beyond = (U8<N>)((v[i] ^ negative) == 127);
            beyond_ |= i == 0 ? beyond & ~first : beyond;
            store(bytes + i * N, v[i] + negative);
        }
        set = ~zeros;
    }

    // False if one may be beyond the bytes.
    QEL_INLINE bool areBytes() const
    {
        if constexpr (!kAsBytes) return false;
        return Simd<N>::isZero(beyond_);
    }

    uint64_t set;
    alignas(32) uint8_t bytes[64];

private:
    static constexpr int N = kWidth, kRegisters = 64 / N;
    static constexpr bool kAsBytes = Simd<N>::kPermutesFast;
    U8<N> beyond_ = {};
};

// Tells `sink` of the positions of `set` from `first` on, in order: sink.symbol(run << 4 | category, magnitude), with
// the number of positions between them, up to 15; kSixteenZeros takes away sixteen at a time. Each returns false to
// stop, and a category above kLargest is left to sink.fail().
template <int kLargest, class Sink, class MagnitudeAt>
QEL_INLINE bool walkSet(uint64_t set, uint64_t first, Sink& sink, MagnitudeAt magnitudeAt)
{
    uint64_t left = set >> first, position = first - 1;
    while (left != 0) {
        auto run = uint64_t(__builtin_ctzll(left));
        left = left >> run >> 1;
        position += run + 1;
        for (; __builtin_expect(run > 15, 0); run -= 16)
            if (!sink.symbol(kSixteenZeros, {0, 0})) return false;
        Magnitude magnitude = magnitudeAt(position);
        if (kLargest < kLargestOfAll && magnitude.category > kLargest) return sink.fail(qelStsJPEGHuffTableErr);
        if (!sink.symbol(run << 4 | magnitude.category, magnitude)) return false;
    }
    return true;
}

QEL_INLINE uint64_t onesBelow(int bit) { return (uint64_t(1) << bit) - 1; }

// Of runs of sixteen zeros and more between positions of `values` the sixteenth, the thirty-second ...
QEL_INLINE uint64_t endsOfSixteenZeros(uint64_t values)
{
    uint64_t sixteen = ~values, ends = 0; // where so many zeros begin: 1, 2, 4, 8, 16
    for (int zeros = 1; zeros < 16; zeros *= 2) sixteen &= sixteen >> zeros;
    for (uint64_t first = values << 1 & sixteen; first != 0; first = first << 16 & sixteen) ends |= first << 15;
    return ends & onesBelow(63 - __builtin_clzll(values));
}

// Symbols all at once, for registers that hold 64 positions.
struct AllPositions {
    alignas(64) uint8_t index[64], category[128]; // of a position: itself; of a byte's magnitude
};
constexpr AllPositions kAllPositions = [] {
    AllPositions positions = {};
    for (int i = 0; i < 64; ++i) positions.index[i] = uint8_t(i);
    for (int i = 0; i < 128; ++i) positions.category[i] = uint8_t(measure(i).category);
    return positions;
}();

// The zeros before each position of `set`, at most 15, as lanes; `before` is the position before the first one. Zeros
// that are symbols join the set. What lies after its lanes is not above 0.
template <class S> QEL_INLINE U8<64> runsOf(uint64_t& set, uint64_t before)
{
    auto runs = [=](uint64_t values) {
        auto positions = load<U8<64>>(kAllPositions.index);
        return S::compress(positions, values) - S::compress(positions + 1, values | before);
    };
    U8<64> all = runs(set);
    if (__builtin_expect(S::greater((S8<64>)all, S8<64>{} + 15) == 0, 1)) return all;
    set |= endsOfSixteenZeros(set | before);
    return runs(set);
}

// Counts the symbols of coefficients that are bytes: each by its run and its category.
template <class S>
QEL_INLINE void countAll(const Coefficients& coefficients, uint64_t set, uint64_t before, uint32_t* counts)
{
    U8<64> runs = runsOf<S>(set, before), value = S::compress(load<U8<64>>(coefficients.bytes), set);
    U8<64> magnitude = value ^ (U8<64>)((S8<64>)value < 0);
    U8<64> category =
        S::pick(load<U8<64>>(kAllPositions.category), load<U8<64>>(kAllPositions.category + 64), magnitude);
    uint8_t indices[64];
    store(indices, (U8<64>)((U16<64>)runs << 4) | category); // up to the last symbol, no run leaves its byte
    for (int i = 0, all = __builtin_popcountll(set); i < all; ++i) ++counts[indices[i]];
}

// The same with the magnitudes of the coefficients; valueAt(position) is for those that are not bytes.
template <int kLargest, class Sink, class ValueAt>
QEL_INLINE bool walk(const Coefficients& coefficients, uint64_t set, uint64_t first, Sink& sink, ValueAt valueAt)
{
    if (__builtin_expect(coefficients.areBytes(), 1)) {
        if constexpr (kWidth == 64 && requires { sink.counts; }) {
            countAll<Simd<64>>(coefficients, set, uint64_t(1) << (first - 1), sink.counts);
            return true;
        }
        return walkSet<kLargestOfAll>(set, first, sink, [&](uint64_t position) -> Magnitude {
            uint64_t value = coefficients.bytes[position], category = kCategories.of[value];
            return {category, value & ((uint64_t(1) << category) - 1)};
        });
    }
    return walkSet<kLargest>(set, first, sink, [&](uint64_t position) { return magnitudeOf(valueAt(position)); });
}

}
}
