// SPDX-License-Identifier: Apache-2.0
// Progressive Huffman encoding: the table of its kernels.
#pragma once

#include <stdint.h>

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
    // as it was but for bytes after the position.
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
