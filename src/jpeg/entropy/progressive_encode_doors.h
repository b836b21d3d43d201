// SPDX-License-Identifier: Apache-2.0
// Progressive Huffman encoding: the internal functions that the library exports beside its interface. They check
// nothing.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "qeljx/jpeg_progressive.h"

// A block of a first scan, and of a refinement scan, of the band from ss to se.
QEL_KERNEL QelStatus ownqj_EncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int dstLen,
                                                                  int* pos, int ss, int se, int al,
                                                                  const QelEncodeHuffmanSpec* ac,
                                                                  QelEncodeHuffmanState* state);
QEL_KERNEL QelStatus ownqj_EncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int dstLen,
                                                                   int* pos, int ss, int se, int al,
                                                                   const QelEncodeHuffmanSpec* ac,
                                                                   QelEncodeHuffmanState* state);
// Ends a scan of either kind: the pending run and its correction bits, ones to the end of the byte, a fresh state.
QEL_KERNEL QelStatus ownqj_EncodeHuffman8x8_ACFlush_JPEG_16s1u_C1(uint8_t* dst, int dstLen, int* pos,
                                                                  const QelEncodeHuffmanSpec* ac,
                                                                  QelEncodeHuffmanState* state);

// Counts the symbol of the pending run, if any, which ends it.
QEL_KERNEL QelStatus ownqj_count_eobrun(uint32_t* statistics, QelEncodeHuffmanState* state);
// Count the symbols that the encoder would write.
QEL_KERNEL QelStatus ownqj_GetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(const int16_t* src, uint32_t* statistics,
                                                                        int ss, int se, int al,
                                                                        QelEncodeHuffmanState* state);
QEL_KERNEL QelStatus ownqj_GetHuffmanStatistics8x8_ACFlush_JPEG_16s_C1(uint32_t* statistics,
                                                                       QelEncodeHuffmanState* state);
