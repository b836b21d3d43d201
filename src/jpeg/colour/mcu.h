// SPDX-License-Identifier: Apache-2.0
// MCU conversion: the table of its kernels.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"

namespace qel {

// Blocks by component, at any address, to a tile of pixels whose rows lie `dstStep` bytes apart, and back.
using BlocksToBytes = void(const int16_t* const* src, uint8_t* dst, int dstStep);
using BlocksToWords = void(const int16_t* const* src, uint16_t* dst, int dstStep);
using BytesToBlocks = void(const uint8_t* src, int srcStep, int16_t* const* dst);
using WordsToBlocks = void(const uint16_t* src, int srcStep, int16_t* const* dst);

// A kernel for each sampling: chroma in every pixel, in every second one of a row, in every second one of both ways.
template <class Kernel> struct BySampling {
    Kernel *s444, *s422, *s411;
};

struct McuKernels {
    BySampling<BlocksToBytes> toRgb, toBgr;
    BySampling<BlocksToWords> toBgr555, toBgr565;
    BySampling<BlocksToBytes> toCmyk, toYcc;
    BlocksToBytes* toPairs422;

    BySampling<BytesToBlocks> fromRgb, fromBgr;
    BySampling<WordsToBlocks> fromBgr555, fromBgr565;
    BySampling<BytesToBlocks> fromCmyk, fromYcc;
    BytesToBlocks* fromPairs422;

    QEL_BUILDS(McuKernels);
};

}
