// SPDX-License-Identifier: Apache-2.0
// The probability states of the MQ coder (T.800 Table C.2) with the sense of the more probable symbol, for decoding.
#pragma once

#include <stdint.h>

namespace qel {

struct MqRow {
    uint64_t qe;                 // in the upper 16 bits
    uint32_t afterMps, afterLps; // by mqRow
};
struct MqRows {
    alignas(64) MqRow of[2 * 47];
};
extern const MqRows kMqRows;

// How far the row of a state is from the first one, in bytes.
constexpr uint32_t mqRow(uint32_t state, uint32_t mps) { return (2 * state + mps) * uint32_t(sizeof(MqRow)); }

}
