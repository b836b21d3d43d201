// SPDX-License-Identifier: Apache-2.0
// Progressive Huffman decoding: the internal functions that the library exports beside its interface. They check
// nothing.
#include "core/dispatch.h"
#include "core/exports.h"
#include "jpeg/entropy/progressive_decode.h"

using namespace qel;

QEL_KERNEL QelStatus ownqj_DecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos,
                                                                  int16_t* block, uint32_t* marker, int ss, int se,
                                                                  int al, const QelDecodeHuffmanSpec* table,
                                                                  QelDecodeHuffmanState* state)
{
    return kernels<ProgressiveDecodeKernels>().acFirst(src, srcLen, pos, block, marker, ss, se, al, table, state);
}

QEL_KERNEL QelStatus ownqj_DecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos,
                                                                   int16_t* block, uint32_t* marker, int ss, int se,
                                                                   int al, const QelDecodeHuffmanSpec* table,
                                                                   QelDecodeHuffmanState* state)
{
    return kernels<ProgressiveDecodeKernels>().acRefine(src, srcLen, pos, block, marker, ss, se, al, table, state);
}
