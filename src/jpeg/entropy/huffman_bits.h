// SPDX-License-Identifier: Apache-2.0
// What Huffman coders share: magnitude categories (T.81 F.1.2.1), and bits to and from a stream through the state
// objects, one symbol at a time. Position arguments count bytes from the start of the buffer.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "jpeg/entropy/huffman_tables.h"
#include "qeljx/jpeg_entropy.h"

// The number of bits of 0 to 255.
QEL_TABLE const uint32_t own_qj_csize[256];
// The place of the highest bit of 1 to 511 (T.81 G.1.2.2); 0 for 0.
QEL_TABLE const uint32_t own_qj_eobsize[512];
// By category: the lowest value that it holds, -(2^category - 1).
QEL_TABLE const int32_t own_qj_lowest_coef[16];

// The category of a value whose magnitude has at most 16 bits.
QEL_KERNEL uint32_t ownqj_get_csize(int value);
// The number of bits that tell a run of end-of-band blocks from others of its symbol. More than 14 for a run that no
// symbol stands for.
QEL_KERNEL uint32_t ownqj_get_eobsize(uint32_t run);

// Appends the low `length` bits of `value` to the stream, at most 16. Fails with qelStsJPEGHuffSpecErr if the length is
// 0 (a symbol without a code) and with qelStsJPEGOutOfBufErr where the buffer ends: the bytes before stay written and
// counted, and the state is as it was.
QEL_KERNEL QelStatus ownqj_write_bits_jpeg(uint32_t value, int length, uint8_t* dst, int dstLen, int* pos,
                                           QelEncodeHuffmanState* state);
