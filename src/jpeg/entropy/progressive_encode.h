// Progressive Huffman encoding: the exported steps of AC scans.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "core/kernel_tables.h"
#include "jpeg/entropy/huffman_tables.h"
#include "qeljx/jpeg_progressive.h"

namespace qel {

// The longest run of end-of-band blocks, and its symbol.
constexpr uint32_t kLongestRun = 32767;
constexpr int kLongestRunSymbol = 0xE0;
constexpr uint32_t kLongestRunSize = 14;
// With the 63 bits of one more block, the buffer of the state is not full.
constexpr uint32_t kMostCorrectionBits = 937;

// The largest category of an AC coefficient: the statistics take one less.
constexpr int kLargestWritten = 11;
constexpr int kLargestCounted = 10;

// Positions ss to se of the scan, and the point transform.
struct Band {
    int ss, se, al;
};

struct ProgressiveEncodeKernels {
    // A block of a first scan, and of a refinement scan; they write what the plain steps write and need kRoomForBlock
    // bytes of room. Where the block comes near the end of the buffer the result is qelStsJPEGOutOfBufErr, and all is
    // as it was but for bytes behind the position.
    QelStatus (*encodeFirst)(const int16_t* src, uint8_t* dst, int dstLen, int* pos, Band band,
                             const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state);
    QelStatus (*encodeRefinement)(const int16_t* src, uint8_t* dst, int dstLen, int* pos, Band band,
                                  const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state);
    // Count the symbols that these would write; of correction bits, only how many there are is kept.
    QelStatus (*countFirst)(const int16_t* src, uint32_t* statistics, Band band, QelEncodeHuffmanState* state);
    QelStatus (*countRefinement)(const int16_t* src, uint32_t* statistics, Band band, QelEncodeHuffmanState* state);
    QelStatus (*countRun)(uint32_t* statistics, QelEncodeHuffmanState* state);

    static constexpr int kRoomForBlock = 16;

    QEL_BUILDS(ProgressiveEncodeKernels);
};

}

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
