// SPDX-License-Identifier: Apache-2.0
// Flags of 16 stripe columns at a time: bit 4 * column + row of a mask is that of a sample, in the order of the scan.
// For kernels.
#pragma once

#include "core/simd.h"
#include "jpeg2k/coding/sample_flags.h"

namespace qel::QEL_BUILD {
namespace {

constexpr int kGroupColumns = 16;
constexpr uint64_t kTopRow = 0x1111111111111111;

// The samples whose byte has its highest bit in choose(bytes).
template <class Choose> QEL_INLINE uint64_t samplesWhere(const FlagColumn* columns, Choose choose)
{
    uint64_t samples = 0;
#pragma GCC unroll 4
    for (int i = 0; i < 64; i += kWidth)
        samples |= Simd<kWidth>::signMask(choose(load<U8<kWidth>>((const uint8_t*)columns + i))) << i;
    return samples;
}
template <unsigned kFlag> QEL_INLINE uint64_t samplesWith(const FlagColumn* columns)
{
    static_assert(kFlag == kSignificant || kFlag == kVisited);
    return samplesWhere(columns, [](auto v) QEL_INLINE_BODY { return kFlag == kVisited ? v + v : v; });
}
QEL_INLINE uint64_t samplesWithNeighbours(const FlagColumn* columns)
{
    return samplesWhere(columns, [](auto v) QEL_INLINE_BODY { return (decltype(v))(v != 0); });
}

struct BitOfLane {
    alignas(32) uint16_t of[16];
};
constexpr BitOfLane kBitOfLane = [] {
    BitOfLane bits = {};
    for (int i = 0; i < 16; ++i) bits.of[i] = uint16_t(1 << i);
    return bits;
}();

// Ones in the lanes of the lowest samples.
template <int kBytes> QEL_INLINE S16<kBytes> lanesOf(uint64_t samples)
{
    auto bits = load<U16<kBytes>>(kBitOfLane.of);
    return (S16<kBytes>)(((U16<kBytes>{} + uint16_t(samples)) & bits) == bits);
}

// Sets a flag of the samples in the mask, and clears another one of all.
template <unsigned kSet, unsigned kCleared = 0> QEL_INLINE void changeFlags(FlagColumn* columns, uint64_t samples)
{
    constexpr int kBytes = QEL_WIDTH < 32 ? 16 : 32, kLanes = kBytes / 2;
    auto* bytes = (uint8_t*)columns;
#pragma GCC unroll 4
    for (int i = 0; i < 64; i += kBytes) {
        U8<kBytes> chosen = Simd<kBytes>::inOrder(
            Simd<kBytes>::packSigned(lanesOf<kBytes>(samples >> i), lanesOf<kBytes>(samples >> i >> kLanes)));
        auto old = load<U8<kBytes>>(bytes + i);
        store(bytes + i, (old & uint8_t(~kCleared)) | (chosen & uint8_t(kSet)));
    }
}

}
}
