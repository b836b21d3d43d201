// SPDX-License-Identifier: Apache-2.0
// Huffman objects: their layouts, and the builders.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "qeljx/jpeg_entropy.h"

// Callers may keep them at any address.
#define QEL_ANYWHERE __attribute__((packed))

struct QEL_ANYWHERE QelDecodeHuffmanSpec {
    uint16_t values[256];        // in order of code length
    uint32_t lookAhead[256];     // by the next 8 bits: (length << 16) | value; 0 where the code is longer
    uint16_t firstCode[17 + 1];  // by length, 1 to 16
    uint16_t largestCode[18];    // by length; kNoCodeOfLength where no code has it
    uint16_t valueIndex[17 + 1]; // by length: where in `values` its first code stands
};
static_assert(sizeof(QelDecodeHuffmanSpec) == 1644);

struct QEL_ANYWHERE QelEncodeHuffmanSpec {
    uint32_t entries[256]; // by symbol: (length << 16) | code; 0 for a symbol without a code
};
static_assert(sizeof(QelEncodeHuffmanSpec) == 1024);

struct QEL_ANYWHERE QelDecodeHuffmanState {
    uint32_t accumulator[2]; // low word first; bytes enter at the low end; above `count` bits nothing counts
    int32_t count;           // bits not yet used, at the low end
    uint32_t endOfBandRun;   // progressive scans: blocks still to be passed over
    uint32_t positionsLeft;  // positions after the last one that the last sequential block reached
};
static_assert(sizeof(QelDecodeHuffmanState) == 20);

struct QEL_ANYWHERE QelEncodeHuffmanState {
    uint32_t accumulator[2];      // low word first; the next byte to go out is bits 23 to 16 of the low word
    int32_t count;                // pending bits, 0 to 7 between calls
    uint32_t endOfBandRun;        // progressive scans: blocks not yet written
    uint32_t correctionCount;     // progressive refinement: bits in the buffer below
    uint8_t correctionBits[1024]; // one bit each
};
static_assert(sizeof(QelEncodeHuffmanState) == 1044);

namespace qel {

// The symbol of a code. Lists that describe too many codes may lead outside the values.
inline __attribute__((always_inline)) int valueOf(const QelDecodeHuffmanSpec& spec, uint32_t code, int length)
{
    return spec.values[(spec.valueIndex[length] - spec.firstCode[length] + code) & 0xFF];
}

constexpr int kLookAheadBits = 8;
constexpr int kLongestCode = 16;
constexpr uint16_t kNoCodeOfLength = 0xFFFF;
constexpr int kEndOfBlock = 0x00;
constexpr int kSixteenZeros = 0xF0;

}

QEL_KERNEL QelStatus ownqj_DecodeHuffmanSpecInit(const uint8_t* bits, const uint8_t* values,
                                                 QelDecodeHuffmanSpec* spec);
QEL_KERNEL QelStatus ownqj_EncodeHuffmanSpecInit(const uint8_t* bits, const uint8_t* values,
                                                 QelEncodeHuffmanSpec* spec);
QEL_KERNEL void ownqj_DecodeHuffmanStateInit(QelDecodeHuffmanState* state);
QEL_KERNEL void ownqj_EncodeHuffmanStateInit(QelEncodeHuffmanState* state);
