// SPDX-License-Identifier: Apache-2.0
// Sequential Huffman encoding: the table of its kernels, and a plain step that its doors share.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"
#include "jpeg/entropy/huffman_tables.h"
#include "qeljx/jpeg_entropy.h"

namespace qel {

struct HuffmanEncodeKernels {
    // Writes what the plain steps write, up to a symbol that has no code; needs kRoomForBlock bytes of room. Where the
    // block comes near the end of the buffer, which is only with less than kRoomForAnyBlock, the result is
    // qelStsJPEGOutOfBufErr, and all is as it was but for bytes after the position.
    QelStatus (*encodeBlock)(const int16_t* src, uint8_t* dst, int dstLen, int* pos, int16_t* lastDc,
                             const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac,
                             QelEncodeHuffmanState* state);
    // The pending bits stand in the buffer, and nothing after the last bit is touched. Ends at a symbol without a
    // code.
    void (*encodeBlockDirect)(const int16_t* src, uint8_t* dst, int* bitLength, int16_t* lastDc,
                              const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac);
    // Counts the symbols that encodeBlock would write.
    void (*countBlock)(const int16_t* src, uint32_t* dcStatistics, uint32_t* acStatistics, int16_t* lastDc);

    static constexpr int kRoomForBlock = 24;
    // 64 codes and values of 32 bits after 7 pending ones, each byte stuffed, and a step of 16 bytes after them.
    static constexpr int kRoomForAnyBlock = 2 * ((7 + 64 * 32) / 8) + 16;

    QEL_BUILDS(HuffmanEncodeKernels);
};

// What the public function for a single value does, without its fast path.
__attribute__((noinline)) QelStatus encodeOnePlainly(const int16_t* src, uint8_t* dst, int dstLen, int* pos,
                                                     const QelEncodeHuffmanSpec* spec, QelEncodeHuffmanState* state,
                                                     int flush);

}
