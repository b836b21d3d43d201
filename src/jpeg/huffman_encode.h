// Sequential Huffman encoding: the table of its kernels, and their exported doors.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "jpeg/huffman_tables.h"
#include "qeljx/jpeg_entropy.h"

namespace qel {

// Where a stream is written. The low end of `bits` holds the last bits of the stream; `count` of them have not been
// written yet, 0 to 7 between calls.
struct BitSink {
    uint64_t bits;
    int count;
    uint8_t* next;
    int64_t room; // bytes from `next` to the end of the buffer
};

struct HuffmanEncodeKernels {
    // A block whose DC value differs by `difference` from the last one. A symbol without a code ends the call with
    // qelStsJPEGHuffSpecErr, what comes before it being written; where the block comes near the end of the buffer the
    // sink stays as it was, and the result is qelStsJPEGOutOfBufErr.
    QelStatus (*encodeBlock)(const int16_t* block, int difference, const QelEncodeHuffmanSpec* dc,
                             const QelEncodeHuffmanSpec* ac, BitSink* sink);
    // Counts the symbols that encodeBlock would write.
    void (*countBlock)(const int16_t* block, int difference, uint32_t* dcStatistics, uint32_t* acStatistics);

    static const HuffmanEncodeKernels baseline, avx2, avx512;
    static const HuffmanEncodeKernels scalar, wide16, wide32, wide64;
};

}

// The fast paths of the encoders write what the plain steps write. The first needs 24 bytes of room; if it comes near
// the end of the buffer it returns qelStsJPEGOutOfBufErr with nothing changed but bytes behind the position. The second
// needs 9 bytes of room.
QEL_KERNEL QelStatus ownqj_EncodeHuffman8x8_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int dstLen, int* pos,
                                                          int16_t* lastDc, const QelEncodeHuffmanSpec* dc,
                                                          const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state);
QEL_KERNEL void ownqj_EecodeHuffmanOne_JPEG_16s1u_C1(int16_t src, uint8_t* dst, int* pos,
                                                     const QelEncodeHuffmanSpec* spec, QelEncodeHuffmanState* state);
QEL_KERNEL void ownqj_EncodeHuffman8x8_Direct_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int* bitLength,
                                                            int16_t* lastDc, const QelEncodeHuffmanSpec* dc,
                                                            const QelEncodeHuffmanSpec* ac);
