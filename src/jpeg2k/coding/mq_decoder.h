// SPDX-License-Identifier: Apache-2.0
// The MQ decoder (T.800 C.3), step by step.
//
// The code register holds the complement of the standard's: bytes enter as 0xFF less their value, and the MPS has the
// lower end of the interval.
#pragma once

#include <stdint.h>

#include "jpeg2k/coding/mq_tables.h"

namespace qel {

struct MqDecoderState {
    const uint8_t* buffer; // the segment
    int32_t length;
    int32_t position;         // of the byte that was last taken in
    uint32_t A;               // bit 15 is 1 between decisions
    uint32_t C;               // bits 16 to 31 are compared with A
    uint32_t CT;              // bits left before a byte is taken in
    int32_t index[kContexts]; // states
    int32_t mps[kContexts];
    int32_t endOfData; // 1 from the end of the segment, or a marker in it, on
};

// Where a byte lies after the segment it is 0xFF.
inline __attribute__((always_inline)) unsigned byteAt(const MqDecoderState& mq, int64_t position)
{
    return position < mq.length ? mq.buffer[position] : 0xFF;
}
constexpr unsigned kFirstMarkerByte = 0x90; // after a 0xFF

// Starts a segment; the contexts stay as they are.
void mqDecoderInit(MqDecoderState* mq, const uint8_t* buffer, int length);
void mqDecoderResetCtx(MqDecoderState* mq);
void mqDecoderByteIn(MqDecoderState* mq);
void mqDecoderRenorm(MqDecoderState* mq);
// The next decision.
int ownqj_DecoderDecode_asm(MqDecoderState* mq, int context, const uint32_t (*table)[4]);
// After the last pass of a segment with predictable termination (T.800 D.4.2): 1 if it does not end as it should.
int mqDecoderCheckErrPredTerm(MqDecoderState* mq);

}
