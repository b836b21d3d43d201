// SPDX-License-Identifier: Apache-2.0
// Kernels of sequential Huffman encoding.
#include "jpeg/entropy/huffman_encode.h"

#include "jpeg/entropy/huffman_block_writer.h"
#include "jpeg/entropy/huffman_fast_writer.h"
#include "jpeg/entropy/scan_coefficients.h"

namespace qel::QEL_BUILD {
namespace {

QEL_INLINE Coefficients coefficientsOf(const int16_t* block)
{
    return Coefficients(block, [](auto values) { return values; });
}

// The AC symbols of a block.
template <class Sink> QEL_INLINE bool walkBlock(const int16_t* block, const Coefficients& coefficients, Sink& sink)
{
    auto valueAt = [=](uint64_t position) { return load<int16_t>(block + kScanOrder.index[position]); };
    if (!walk<kLargestOfAll>(coefficients, coefficients.set, 1, sink, valueAt)) return false;
    return coefficients.set >> 63 || sink.symbol(kEndOfBlock, {0, 0});
}

QEL_INLINE SymbolWriter writeBlock(const int16_t* block, const Coefficients& coefficients, const FastWriter& out,
                                   int lastDc, const QelEncodeHuffmanSpec& dc, const QelEncodeHuffmanSpec& ac)
{
    SymbolWriter writer = {ac, out, qelStsNoErr};
    Magnitude difference = magnitudeOf(load<int16_t>(block) - lastDc);
    if (writer.symbolOf(dc, difference.category, difference)) walkBlock(block, coefficients, writer);
    return writer;
}

// Whether to put a block together all at once: that takes the same time whatever the values are, the walk a time for
// each.
QEL_INLINE bool hasMany(uint64_t set) { return kWidth == 64 && __builtin_popcountll(set) >= 11; }

// The block after the bits of `out`; `set` has its values. False if it has a symbol without a code, or more bits than
// fit a step: then `out` stands anywhere, and what is written is what the walk writes there.
template <class S> QEL_INLINE bool putBlock(const int16_t* src, uint64_t set, int lastDc,
                                            const QelEncodeHuffmanSpec& dc, const QelEncodeHuffmanSpec& ac,
                                            BlockWriter& out)
{
    AcSymbols<S> symbols(src, set);
    Magnitude difference = magnitudeOf(load<int16_t>(src) - lastDc);
    uint64_t entry = dc.entries[difference.category], length = entry >> 16;
    if (__builtin_expect(length - 1 >= kLongestCode, 0)) return false;
    out.count += int(length + difference.category);
    out.bits |= ((entry & 0xFFFF) << difference.category | difference.bits) << (64 - out.count);
    for (; symbols.all > 0; symbols.advance()) {
        SymbolBits<S> bits(symbols, ac);
        if (__builtin_expect(!bits.areCodes, 0) || !out.put(bits)) return false;
    }
    return true;
}

// By putBlock. False where that cannot: nothing has changed but bytes after the position.
template <int N> QEL_INLINE bool encodeAtOnce(const int16_t* src, uint64_t set, uint8_t* dst, int* pos, int16_t* lastDc,
                                              const QelEncodeHuffmanSpec& dc, const QelEncodeHuffmanSpec& ac,
                                              QelEncodeHuffmanState& state)
{
    if constexpr (N == 64) {
        uint32_t pending = state.accumulator[0];
        BlockWriter out = {dst + *pos, uint64_t(pending) << 40, state.count, uint8_t(pending >> 24)};
        bool isClean = (out.count & ~7) == 0 && out.bits << out.count == 0;
        if (!isClean || !putBlock<Simd<N>>(src, set, *lastDc, dc, ac, out)) return false;
        state.accumulator[0] = uint32_t(out.last) << 24 | uint32_t(out.bits >> 40);
        state.accumulator[1] = 0;
        state.count = out.count;
        *lastDc = load<int16_t>(src);
        *pos = int(out.next - dst);
        return true;
    }
    return false;
}

QelStatus encodeBlock(const int16_t* src, uint8_t* dst, int dstLen, int* pos, int16_t* lastDc,
                      const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state)
{
    // First of all, as the rest waits for it.
    Coefficients coefficients = coefficientsOf(src);
    if (hasMany(coefficients.set) && dstLen - *pos >= HuffmanEncodeKernels::kRoomForAnyBlock &&
        encodeAtOnce<kWidth>(src, coefficients.set, dst, pos, lastDc, *dc, *ac, *state))
        return qelStsNoErr;
    auto writer = writeBlock(src, coefficients, FastWriter::of(*state, dst, dstLen, *pos), *lastDc, *dc, *ac);
    if (writer.status == qelStsJPEGOutOfBufErr || !writer.out.hasRoom()) return qelStsJPEGOutOfBufErr;
    writer.out.finishAtOnce();
    writer.out.storeTo(*state);
    *lastDc = load<int16_t>(src);
    *pos = int(writer.out.next - dst);
    return writer.status;
}

template <int N> QEL_INLINE bool encodeAtOnce(const int16_t* src, uint64_t set, uint8_t* dst, int* bitLength,
                                              int16_t* lastDc, const QelEncodeHuffmanSpec& dc,
                                              const QelEncodeHuffmanSpec& ac)
{
    if constexpr (N == 64) {
        int count = *bitLength & 7;
        uint8_t* start = dst + (*bitLength >> 3);
        BlockWriter out = {start, count == 0 ? 0 : uint64_t(*start >> (8 - count)) << (64 - count), count, 0};
        if (!putBlock<Simd<N>>(src, set, *lastDc, dc, ac, out)) return false;
        if (out.count != 0) *out.next = uint8_t(out.bits >> 56);
        *lastDc = load<int16_t>(src);
        *bitLength = int(uint32_t(out.next - dst) * 8 + uint32_t(out.count));
        return true;
    }
    return false;
}

void encodeBlockDirect(const int16_t* src, uint8_t* dst, int* bitLength, int16_t* lastDc,
                       const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac)
{
    Coefficients coefficients = coefficientsOf(src);
    if (hasMany(coefficients.set) && encodeAtOnce<kWidth>(src, coefficients.set, dst, bitLength, lastDc, *dc, *ac))
        return;
    int bytes = *bitLength >> 3, count = *bitLength & 7;
    uint64_t bits = count == 0 ? 0 : uint64_t(dst[bytes] >> (8 - count)) << (64 - count);
    FastWriter start = {bits, 64 - count, 0, dst + bytes, (const uint8_t*)UINTPTR_MAX};
    FastWriter out = writeBlock(src, coefficients, start, *lastDc, *dc, *ac).out;
    out.finish();
    if (out.free != 64) *out.next = uint8_t(out.bits >> 56);
    *lastDc = load<int16_t>(src);
    *bitLength = int(uint32_t(out.next - dst) * 8 + uint32_t(64 - out.free));
}

void countBlock(const int16_t* src, uint32_t* dcStatistics, uint32_t* acStatistics, int16_t* lastDc)
{
    Coefficients coefficients = coefficientsOf(src);
    SymbolCounter counter = {acStatistics, qelStsNoErr};
    ++dcStatistics[magnitudeOf(load<int16_t>(src) - *lastDc).category];
    *lastDc = load<int16_t>(src);
    walkBlock(src, coefficients, counter);
}

constexpr HuffmanEncodeKernels kKernels = {
    .encodeBlock = encodeBlock,
    .encodeBlockDirect = encodeBlockDirect,
    .countBlock = countBlock,
};

}
}

const qel::HuffmanEncodeKernels qel::HuffmanEncodeKernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
