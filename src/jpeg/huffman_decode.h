// Sequential Huffman decoding: the table of its kernels, and their exported doors.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "jpeg/huffman_source.h"
#include "jpeg/huffman_tables.h"
#include "qeljx/jpeg_entropy.h"

namespace qel {

struct HuffmanTablePair {
    const QelDecodeHuffmanSpec* dc;
    const QelDecodeHuffmanSpec* ac;
};

struct HuffmanDecodeKernels {
    // The source moves on over what was used, also by a call that fails; the rest of the block is zero then.
    // *positionsLeft is set when the block is whole.
    QelStatus (*decodeBlock)(BitSource* source, int16_t* block, int16_t* lastDc, HuffmanTablePair tables,
                             uint32_t* positionsLeft);
    // Without a length. A segment that ends within a symbol ends the block too. Within the first symbol only the marker
    // is handed over, and the result is qelStsJPEGMarkerWarn.
    QelStatus (*decodeBlockDirect)(BitSource* source, int16_t* block, int16_t* lastDc, HuffmanTablePair tables);
    QelStatus (*decodeOne)(BitSource* source, const QelDecodeHuffmanSpec* spec, int16_t* value);

    // The steps of the readers.
    QelStatus (*fill)(BitSource* source, int needed);
    int (*symbol)(BitSource* source, const QelDecodeHuffmanSpec* spec);
    int (*longCode)(BitSource* source, const QelDecodeHuffmanSpec* spec, int length);
    void (*fillDirect)(BitSource* source);
    int (*symbolDirect)(BitSource* source, const QelDecodeHuffmanSpec* spec);
    int (*longCodeDirect)(BitSource* source, const QelDecodeHuffmanSpec* spec, int length);

    static const HuffmanDecodeKernels baseline, avx2, avx512;
    static const HuffmanDecodeKernels scalar, wide16, wide32, wide64;
};

}

// `positionsLeft` of the state is set when the block is whole.
QEL_KERNEL QelStatus ownqj_DecodeHuffman8x8_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos, int16_t* dst,
                                                          int16_t* lastDc, uint32_t* marker,
                                                          const QelDecodeHuffmanSpec* dc,
                                                          const QelDecodeHuffmanSpec* ac, QelDecodeHuffmanState* state);
QEL_KERNEL QelStatus ownqj_DecodeHuffman8x8_Direct_JPEG_1u16s_C1(const uint8_t* src, int* bitPosition, int16_t* dst,
                                                                 int16_t* lastDc, uint32_t* marker, uint32_t* bits,
                                                                 int* count, const QelDecodeHuffmanSpec* dc,
                                                                 const QelDecodeHuffmanSpec* ac);
QEL_KERNEL QelStatus ownqj_DecodeHuffmanOne_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos, int16_t* dst,
                                                          uint32_t* marker, const QelDecodeHuffmanSpec* spec,
                                                          QelDecodeHuffmanState* state);
