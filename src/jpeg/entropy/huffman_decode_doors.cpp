// SPDX-License-Identifier: Apache-2.0
// Sequential Huffman decoding: exported internal functions.
#include "jpeg/entropy/huffman_decode_doors.h"

#include "core/dispatch.h"
#include "jpeg/entropy/huffman_decode.h"

using namespace qel;

QelStatus ownqj_DecodeHuffman8x8_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos, int16_t* dst, int16_t* lastDc,
                                               uint32_t* marker, const QelDecodeHuffmanSpec* dc,
                                               const QelDecodeHuffmanSpec* ac, QelDecodeHuffmanState* state)
{
    return kernels<HuffmanDecodeKernels>().decodeBlock(src, srcLen, pos, dst, lastDc, marker, dc, ac, state);
}

QelStatus ownqj_DecodeHuffman8x8_Direct_JPEG_1u16s_C1(const uint8_t* src, int* bitPosition, int16_t* dst,
                                                      int16_t* lastDc, uint32_t* marker, uint32_t* bits, int* count,
                                                      const QelDecodeHuffmanSpec* dc, const QelDecodeHuffmanSpec* ac)
{
    return kernels<HuffmanDecodeKernels>().decodeBlockDirect(src, bitPosition, dst, lastDc, marker, bits, count, dc,
                                                             ac);
}

QelStatus ownqj_DecodeHuffmanOne_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos, int16_t* dst, uint32_t* marker,
                                               const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state)
{
    return kernels<HuffmanDecodeKernels>().decodeOne(src, srcLen, pos, dst, marker, spec, state);
}

QelStatus ownqj_FillBitBuffer(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int needed,
                              QelDecodeHuffmanState* state)
{
    return kernels<HuffmanDecodeKernels>().fill(src, srcLen, pos, marker, needed, state);
}

QelStatus ownqj_DecodeHuffSymbol(const uint8_t* src, int srcLen, int* pos, uint32_t* marker,
                                 const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state, int* symbol)
{
    return kernels<HuffmanDecodeKernels>().symbol(src, srcLen, pos, marker, spec, state, symbol);
}

QelStatus ownqj_DecodeHuffLongCodes(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int length,
                                    const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state, int* symbol)
{
    return kernels<HuffmanDecodeKernels>().longCode(src, srcLen, pos, marker, length, spec, state, symbol);
}

void ownqj_PrefetchBits(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count)
{
    kernels<HuffmanDecodeKernels>().fillDirect(src, pos, marker, bits, count);
}

int ownqj_HuffDecode(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count,
                     const QelDecodeHuffmanSpec* spec)
{
    return kernels<HuffmanDecodeKernels>().symbolDirect(src, pos, marker, bits, count, spec);
}

int ownqj_DecodeLongBits(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count, int length,
                         const QelDecodeHuffmanSpec* spec)
{
    return kernels<HuffmanDecodeKernels>().longCodeDirect(src, pos, marker, bits, count, length, spec);
}
