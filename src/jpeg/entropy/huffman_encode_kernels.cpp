// Kernels of sequential Huffman encoding.
#include "jpeg/entropy/huffman_encode.h"

#include "jpeg/entropy/huffman_fast_writer.h"
#include "jpeg/entropy/scan_coefficients.h"

namespace qel {
namespace QEL_BUILD {
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

QelStatus encodeBlock(const int16_t* src, uint8_t* dst, int dstLen, int* pos, int16_t* lastDc,
                      const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state)
{
    // First of all, as the rest waits for it.
    Coefficients coefficients = coefficientsOf(src);
    auto writer = writeBlock(src, coefficients, FastWriter::of(*state, dst, dstLen, *pos), *lastDc, *dc, *ac);
    if (writer.status == qelStsJPEGOutOfBufErr || !writer.out.hasRoom()) return qelStsJPEGOutOfBufErr;
    writer.out.finishAtOnce();
    writer.out.storeTo(*state);
    *lastDc = load<int16_t>(src);
    *pos = int(writer.out.next - dst);
    return writer.status;
}

void encodeBlockDirect(const int16_t* src, uint8_t* dst, int* bitLength, int16_t* lastDc,
                       const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac)
{
    Coefficients coefficients = coefficientsOf(src);
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

const HuffmanEncodeKernels HuffmanEncodeKernels::QEL_BUILD = QEL_BUILD::kKernels;

}
