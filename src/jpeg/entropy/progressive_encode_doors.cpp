// SPDX-License-Identifier: Apache-2.0
// Progressive Huffman encoding: the internal functions that the library exports beside its interface. They check
// nothing.
#include "core/dispatch.h"
#include "core/exports.h"
#include "jpeg/entropy/progressive_plain_writer.h"

using namespace qel;

QEL_KERNEL QelStatus ownqj_EncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int dstLen,
                                                                  int* pos, int ss, int se, int al,
                                                                  const QelEncodeHuffmanSpec* ac,
                                                                  QelEncodeHuffmanState* state)
{
    auto kernel = kernels<ProgressiveEncodeKernels>().encodeFirst;
    return encodeBand(kernel, writeFirst, src, {ss, se, al}, {{dst, dstLen, pos, state}, ac}, state);
}

QEL_KERNEL QelStatus ownqj_EncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int dstLen,
                                                                   int* pos, int ss, int se, int al,
                                                                   const QelEncodeHuffmanSpec* ac,
                                                                   QelEncodeHuffmanState* state)
{
    auto kernel = kernels<ProgressiveEncodeKernels>().encodeRefinement;
    return encodeBand(kernel, writeRefinement, src, {ss, se, al}, {{dst, dstLen, pos, state}, ac}, state);
}

// Ends a scan of either kind: the pending run and its correction bits, ones to the end of the byte, a fresh state.
QEL_KERNEL QelStatus ownqj_EncodeHuffman8x8_ACFlush_JPEG_16s1u_C1(uint8_t* dst, int dstLen, int* pos,
                                                                  const QelEncodeHuffmanSpec* ac,
                                                                  QelEncodeHuffmanState* state)
{
    return flushRun({{dst, dstLen, pos, state}, ac}, state);
}

// Counts the symbol of the pending run, if any, which ends it.
QEL_KERNEL QelStatus ownqj_count_eobrun(uint32_t* statistics, QelEncodeHuffmanState* state)
{
    return kernels<ProgressiveEncodeKernels>().countRun(statistics, state);
}

QEL_KERNEL QelStatus ownqj_GetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(const int16_t* src, uint32_t* statistics,
                                                                        int ss, int se, int al,
                                                                        QelEncodeHuffmanState* state)
{
    return kernels<ProgressiveEncodeKernels>().countRefinement(src, statistics, {ss, se, al}, state);
}

QEL_KERNEL QelStatus ownqj_GetHuffmanStatistics8x8_ACFlush_JPEG_16s_C1(uint32_t* statistics,
                                                                       QelEncodeHuffmanState* state)
{
    return flushCount(statistics, state);
}
