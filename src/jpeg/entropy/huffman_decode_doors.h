// SPDX-License-Identifier: Apache-2.0
// Sequential Huffman decoding: the internal functions that the library exports beside its interface. They check
// nothing.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "jpeg/entropy/huffman_tables.h"
#include "qeljx/jpeg_entropy.h"

// Blocks, and single values, with the arguments of the public functions.
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

// The steps of the readers. Positions count bytes from the start of the buffer.

// Reads whole bytes until the state holds 25 bits or more. Fails with qelStsJPEGOutOfBufErr where the stream ends, or
// has ended at a marker, before the state holds the bits that are needed; returns qelStsJPEGMarkerWarn, a success, when
// it meets a marker: less than what is needed may then be there.
QEL_KERNEL QelStatus ownqj_FillBitBuffer(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int needed,
                                         QelDecodeHuffmanState* state);
// The next symbol; a code that is not in the table gives symbol 0.
QEL_KERNEL QelStatus ownqj_DecodeHuffSymbol(const uint8_t* src, int srcLen, int* pos, uint32_t* marker,
                                            const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state,
                                            int* symbol);
// The same, for a code that is known to have `length` bits or more.
QEL_KERNEL QelStatus ownqj_DecodeHuffLongCodes(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int length,
                                               const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state,
                                               int* symbol);

// The reader without a length: up to 32 bits in `bits`, the unused ones `count` at the low end.
// Reads whole bytes until 25 bits or more are there, or a marker has been met.
QEL_KERNEL void ownqj_PrefetchBits(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count);
// The next symbol; -1 for a code that is not in the table, -256 if a marker ends the stream.
QEL_KERNEL int ownqj_HuffDecode(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count,
                                const QelDecodeHuffmanSpec* spec);
// The same, for a code that is known to have `length` bits or more.
QEL_KERNEL int ownqj_DecodeLongBits(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count,
                                    int length, const QelDecodeHuffmanSpec* spec);
