// SPDX-License-Identifier: Apache-2.0
// Sequential Huffman decoding: the table of its kernels.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"
#include "jpeg/entropy/huffman_tables.h"
#include "qeljx/jpeg_entropy.h"

namespace qel {

// With the arguments of the public functions, which have checked them, and of the exported steps of the readers.
struct HuffmanDecodeKernels {
    // `positionsLeft` of the state is set when the block is whole.
    QelStatus (*decodeBlock)(const uint8_t* src, int srcLen, int* pos, int16_t* dst, int16_t* lastDc, uint32_t* marker,
                             const QelDecodeHuffmanSpec* dc, const QelDecodeHuffmanSpec* ac,
                             QelDecodeHuffmanState* state);
    QelStatus (*decodeBlockDirect)(const uint8_t* src, int* bitPosition, int16_t* dst, int16_t* lastDc,
                                   uint32_t* marker, uint32_t* bits, int* count, const QelDecodeHuffmanSpec* dc,
                                   const QelDecodeHuffmanSpec* ac);
    QelStatus (*decodeOne)(const uint8_t* src, int srcLen, int* pos, int16_t* dst, uint32_t* marker,
                           const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state);

    QelStatus (*fill)(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int needed,
                      QelDecodeHuffmanState* state);
    QelStatus (*symbol)(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, const QelDecodeHuffmanSpec* spec,
                        QelDecodeHuffmanState* state, int* symbol);
    QelStatus (*longCode)(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int length,
                          const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state, int* symbol);
    void (*fillDirect)(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count);
    int (*symbolDirect)(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count,
                        const QelDecodeHuffmanSpec* spec);
    int (*longCodeDirect)(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count, int length,
                          const QelDecodeHuffmanSpec* spec);

    QEL_BUILDS_TO_AVX2(HuffmanDecodeKernels);
};

}
