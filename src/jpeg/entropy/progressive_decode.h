// SPDX-License-Identifier: Apache-2.0
// Progressive Huffman decoding: the table of its kernels.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"
#include "jpeg/entropy/huffman_tables.h"
#include "qeljx/jpeg_progressive.h"

namespace qel {

// All with the arguments of the public functions, which have checked them.
struct ProgressiveDecodeKernels {
    QelStatus (*dcFirst)(const uint8_t* src, int srcLen, int* pos, int16_t* block, int16_t* lastDc, uint32_t* marker,
                         int al, const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state);
    QelStatus (*dcRefine)(const uint8_t* src, int srcLen, int* pos, int16_t* block, uint32_t* marker, int al,
                          QelDecodeHuffmanState* state);
    QelStatus (*acFirst)(const uint8_t* src, int srcLen, int* pos, int16_t* block, uint32_t* marker, int ss, int se,
                         int al, const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state);
    QelStatus (*acRefine)(const uint8_t* src, int srcLen, int* pos, int16_t* block, uint32_t* marker, int ss, int se,
                          int al, const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state);

    QEL_BUILDS(ProgressiveDecodeKernels);
};

}
