/* SPDX-License-Identifier: Apache-2.0 */
/* The typical tables of T.81 Annex K, as the segments of a file hold them, and the writing of such segments. */
#ifndef EXAMPLES_T81_H
#define EXAMPLES_T81_H

#include "common.h"

/* clang-format off */
/* Steps of luminance and chrominance (Tables K.1 and K.2), in zig-zag order. */
static const uint8_t kTypicalSteps[2][64] = {{
    16, 11, 12, 14, 12, 10, 16, 14, 13, 14, 18, 17, 16, 19, 24, 40, 26, 24, 22, 22, 24, 49, 35, 37, 29, 40, 58, 51,
    61, 60, 57, 51, 56, 55, 64, 72, 92, 78, 64, 68, 87, 69, 55, 56, 80, 109, 81, 87, 95, 98, 103, 104, 103, 62, 77,
    113, 121, 112, 100, 120, 92, 101, 103, 99
}, {
    17, 18, 18, 24, 21, 24, 47, 26, 26, 47, 99, 66, 56, 66, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99
}};

/* Huffman tables: the numbers of codes of 1 to 16 bits, then their symbols (Tables K.3 to K.6). */
enum { kLumaDc, kChromaDc, kLumaAc, kChromaAc };
static const uint8_t kTypicalBits[4][16] = {
    {0, 1, 5, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0},
    {0, 3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0},
    {0, 2, 1, 3, 3, 2, 4, 3, 5, 5, 4, 4, 0, 0, 1, 125},
    {0, 2, 1, 2, 4, 4, 3, 4, 7, 5, 4, 4, 0, 1, 2, 119}
};
static const uint8_t kTypicalValues[4][162] = {
{
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11
}, {
    0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11
}, {
    1, 2, 3, 0, 4, 17, 5, 18, 33, 49, 65, 6, 19, 81, 97, 7, 34, 113, 20, 50, 129, 145, 161, 8, 35, 66, 177, 193, 21,
    82, 209, 240, 36, 51, 98, 114, 130, 9, 10, 22, 23, 24, 25, 26, 37, 38, 39, 40, 41, 42, 52, 53, 54, 55, 56, 57, 58,
    67, 68, 69, 70, 71, 72, 73, 74, 83, 84, 85, 86, 87, 88, 89, 90, 99, 100, 101, 102, 103, 104, 105, 106, 115, 116,
    117, 118, 119, 120, 121, 122, 131, 132, 133, 134, 135, 136, 137, 138, 146, 147, 148, 149, 150, 151, 152, 153, 154,
    162, 163, 164, 165, 166, 167, 168, 169, 170, 178, 179, 180, 181, 182, 183, 184, 185, 186, 194, 195, 196, 197, 198,
    199, 200, 201, 202, 210, 211, 212, 213, 214, 215, 216, 217, 218, 225, 226, 227, 228, 229, 230, 231, 232, 233, 234,
    241, 242, 243, 244, 245, 246, 247, 248, 249, 250
}, {
    0, 1, 2, 3, 17, 4, 5, 33, 49, 6, 18, 65, 81, 7, 97, 113, 19, 34, 50, 129, 8, 20, 66, 145, 161, 177, 193, 9, 35,
    51, 82, 240, 21, 98, 114, 209, 10, 22, 36, 52, 225, 37, 241, 23, 24, 25, 26, 38, 39, 40, 41, 42, 53, 54, 55, 56,
    57, 58, 67, 68, 69, 70, 71, 72, 73, 74, 83, 84, 85, 86, 87, 88, 89, 90, 99, 100, 101, 102, 103, 104, 105, 106,
    115, 116, 117, 118, 119, 120, 121, 122, 130, 131, 132, 133, 134, 135, 136, 137, 138, 146, 147, 148, 149, 150, 151,
    152, 153, 154, 162, 163, 164, 165, 166, 167, 168, 169, 170, 178, 179, 180, 181, 182, 183, 184, 185, 186, 194, 195,
    196, 197, 198, 199, 200, 201, 202, 210, 211, 212, 213, 214, 215, 216, 217, 218, 226, 227, 228, 229, 230, 231, 232,
    233, 234, 242, 243, 244, 245, 246, 247, 248, 249, 250
}
};
/* clang-format on */

/* A marker segment: its length counts itself (T.81 B.1.1.4). */
static inline void writeSegment(FILE* file, int marker, const uint8_t* bytes, int count)
{
    uint8_t head[4] = {0xFF, (uint8_t)marker, (uint8_t)((count + 2) >> 8), (uint8_t)(count + 2)};
    writeBytes(file, head, 4);
    writeBytes(file, bytes, (size_t)count);
}

/* A DQT segment of 8-bit steps in zig-zag order. */
static inline void writeSteps(FILE* file, int table, const uint8_t steps[64])
{
    uint8_t segment[65] = {(uint8_t)table};
    for (int i = 0; i < 64; ++i) segment[1 + i] = steps[i];
    writeSegment(file, 0xDB, segment, 65);
}

/* A DHT segment. `class` is 0 for DC (and lossless) tables and 1 for AC tables. */
static inline void writeHuffmanTable(FILE* file, int class, int table, const uint8_t bits[16], const uint8_t* values)
{
    uint8_t segment[17 + 256] = {(uint8_t)(class << 4 | table)};
    int count = 0;
    for (int i = 0; i < 16; ++i) count += segment[1 + i] = bits[i];
    for (int i = 0; i < count; ++i) segment[17 + i] = values[i];
    writeSegment(file, 0xC4, segment, 17 + count);
}

#endif
