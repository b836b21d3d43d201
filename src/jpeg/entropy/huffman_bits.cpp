// SPDX-License-Identifier: Apache-2.0
// Sizes of values and runs, and the bit writer that defines what every encoder writes.
#include "jpeg/entropy/huffman_bits.h"

// clang-format off
#define EIGHT(n) n, n, n, n, n, n, n, n
#define SIXTY_FOUR(n) EIGHT(n), EIGHT(n), EIGHT(n), EIGHT(n), EIGHT(n), EIGHT(n), EIGHT(n), EIGHT(n)
const uint32_t own_qj_csize[256] = {
    0, 1, 2, 2, 3, 3, 3, 3, EIGHT(4), EIGHT(5), EIGHT(5), EIGHT(6), EIGHT(6), EIGHT(6), EIGHT(6),
    SIXTY_FOUR(7), SIXTY_FOUR(8), SIXTY_FOUR(8)};

const uint32_t own_qj_eobsize[512] = {
    0, 0, 1, 1, 2, 2, 2, 2, EIGHT(3), EIGHT(4), EIGHT(4), EIGHT(5), EIGHT(5), EIGHT(5), EIGHT(5),
    SIXTY_FOUR(6), SIXTY_FOUR(7), SIXTY_FOUR(7), SIXTY_FOUR(8), SIXTY_FOUR(8), SIXTY_FOUR(8), SIXTY_FOUR(8)};

const int32_t own_qj_lowest_coef[16] = {
    0, -1, -3, -7, -15, -31, -63, -127, -255, -511, -1023, -2047, -4095, -8191, -16383, -32767};
// clang-format on

uint32_t ownqj_get_csize(int value)
{
    uint32_t magnitude = value < 0 ? 0u - uint32_t(value) : uint32_t(value);
    return magnitude < 256 ? own_qj_csize[magnitude] : own_qj_csize[(magnitude >> 8) & 0xFF] + 8;
}

uint32_t ownqj_get_eobsize(uint32_t run)
{
    if (run < 256) return own_qj_eobsize[run];
    uint32_t high = run >> 8;
    return own_qj_eobsize[high < 512 ? high : 511] + 8;
}

QelStatus ownqj_write_bits_jpeg(uint32_t value, int length, uint8_t* dst, int dstLen, int* pos,
                                QelEncodeHuffmanState* state)
{
    if (length == 0) return qelStsJPEGHuffSpecErr;
    int count = (state->count & 7) + length;
    uint32_t bits = state->accumulator[0] | ((value & ((1u << length) - 1)) << (24 - count));
    for (; count >= 8; count -= 8, bits <<= 8) {
        // Unsigned, so that no negative position passes.
        if (unsigned(*pos) >= unsigned(dstLen)) return qelStsJPEGOutOfBufErr;
        auto byte = uint8_t(bits >> 16);
        dst[(*pos)++] = byte;
        if (byte != 0xFF) continue;
        if (*pos == dstLen) return qelStsJPEGOutOfBufErr;
        dst[(*pos)++] = 0;
    }
    state->accumulator[0] = bits;
    state->accumulator[1] = 0;
    state->count = count;
    return qelStsNoErr;
}
