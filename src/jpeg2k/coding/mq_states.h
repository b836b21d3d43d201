// SPDX-License-Identifier: Apache-2.0
// The probability states of the MQ coder (T.800 Table C.2) with the sense of the more probable symbol: state 2i + mps.
#pragma once

#include <stdint.h>

namespace qel {

// All that coding a decision asks of a state.
struct alignas(uint64_t) MqState {
    uint16_t next[2]; // the state after the decision 0 and 1, if it renormalizes
    uint8_t mps;      // the more probable decision
    uint8_t shift;    // brings Qe to 0x8000 or more
    uint16_t qe;
};
static_assert(sizeof(MqState) == sizeof(uint64_t), "states are chosen as words");

struct MqStates {
    MqState of[2 * 47];
};
extern const MqStates kMqStates;

}
