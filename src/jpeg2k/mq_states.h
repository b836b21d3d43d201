// The probability states of the MQ coder (T.800 Table C.2) with the sense of the more probable symbol: state 2i + mps.
#pragma once

#include <stdint.h>

namespace qel {

// A state, as all that coding a decision asks of it.
//   bits 0 to 15, 16 to 31: the state behind the decision 0 and 1, if it renormalizes
//   bit 32: the more probable decision; bits 40 to 47: the shift that brings Qe to 0x8000 or more; bits 48 to 63: Qe
using MqState = uint64_t;

struct MqStates {
    MqState of[2 * 47];
};
extern const MqStates kMqStates;

}
