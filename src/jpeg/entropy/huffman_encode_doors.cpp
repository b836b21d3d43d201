// SPDX-License-Identifier: Apache-2.0
// Sequential Huffman encoding: exported internal functions.
#include "jpeg/entropy/huffman_encode_doors.h"

#include "core/dispatch.h"
#include "jpeg/entropy/huffman_encode.h"

using namespace qel;

QelStatus ownqj_EncodeHuffman8x8_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int dstLen, int* pos, int16_t* lastDc,
                                               const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac,
                                               QelEncodeHuffmanState* state)
{
    return kernels<HuffmanEncodeKernels>().encodeBlock(src, dst, dstLen, pos, lastDc, dc, ac, state);
}

void ownqj_EncodeHuffman8x8_Direct_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int* bitLength, int16_t* lastDc,
                                                 const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac)
{
    kernels<HuffmanEncodeKernels>().encodeBlockDirect(src, dst, bitLength, lastDc, dc, ac);
}

void ownqj_EecodeHuffmanOne_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int* pos, const QelEncodeHuffmanSpec* spec,
                                          QelEncodeHuffmanState* state)
{
    encodeOnePlainly(src, dst, *pos + 9, pos, spec, state, 0);
}
