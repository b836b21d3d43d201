// The probability states of the MQ coder (T.800 Table C.2) with the sense of the more probable symbol: state 2i + mps.
#pragma once

#include <stdint.h>

namespace qel {

// A state, as all that coding a decision asks of it.
//   bit 0: the more probable symbol; bits 8 to 15: the shift that brings Qe to 0x8000 or more; bits 16 to 31: Qe
//   bits 32 to 47, 48 to 63: the state behind the more and the less probable symbol
using MqState = uint64_t;

struct MqStates {
    MqState of[2 * 47];
};
extern const MqStates kMqStates;

}
