// SPDX-License-Identifier: Apache-2.0
// Sequential Huffman encoding: the internal functions that the library exports beside its interface. They check
// nothing.
#include "core/dispatch.h"
#include "core/exports.h"
#include "jpeg/entropy/huffman_encode.h"

using namespace qel;

QEL_KERNEL QelStatus ownqj_EncodeHuffman8x8_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int dstLen, int* pos,
                                                          int16_t* lastDc, const QelEncodeHuffmanSpec* dc,
                                                          const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state)
{
    return kernels<HuffmanEncodeKernels>().encodeBlock(src, dst, dstLen, pos, lastDc, dc, ac, state);
}

QEL_KERNEL void ownqj_EncodeHuffman8x8_Direct_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int* bitLength,
                                                            int16_t* lastDc, const QelEncodeHuffmanSpec* dc,
                                                            const QelEncodeHuffmanSpec* ac)
{
    kernels<HuffmanEncodeKernels>().encodeBlockDirect(src, dst, bitLength, lastDc, dc, ac);
}

// Needs 9 bytes of room.
QEL_KERNEL void ownqj_EecodeHuffmanOne_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int* pos,
                                                     const QelEncodeHuffmanSpec* spec, QelEncodeHuffmanState* state)
{
    encodeOnePlainly(src, dst, *pos + 9, pos, spec, state, 0);
}
