// SPDX-License-Identifier: Apache-2.0
// The MQ encoder's registers, byte output and terminations (T.800 C.2).
#pragma once

#include <stdint.h>

#include "core/inline.h"
#include "jpeg2k/coding/mq_states.h"
#include "jpeg2k/coding/mq_tables.h"

namespace qel {

// C and CT as in T.800, except that bytes may be late: C has then been shifted -CT places too far. The carry stands at
// bit 27 - CT. Between calls no byte is late.
struct MqEncoder {
    uint32_t a;
    uint64_t c;
    int32_t ct;
    uint32_t b;     // the byte that a carry can still reach
    bool isFirst;   // b precedes the first byte of the segment, and is no part of it
    bool isAfterFF; // the byte before b is 0xFF
    MqState states[kContexts];
};

void startSegment(MqEncoder& mq);
void resetContexts(MqEncoder& mq);

// Hands on b, and takes the next one from the carry position on: 8 bits, or 7 after 0xFF, where the highest bit is the
// carry's.
QEL_INLINE uint8_t* byteOut(MqEncoder& mq, uint8_t* next)
{
    int low = 27 - mq.ct;
    auto takeAbove = [&] {
        auto bits = uint32_t(mq.c >> low);
        mq.c &= (uint64_t(1) << low) - 1;
        return bits;
    };
    if (mq.b != 0xFF) mq.b += takeAbove();
    *next = uint8_t(mq.b);
    next += !mq.isFirst;
    mq.isFirst = false;
    mq.isAfterFF = mq.b == 0xFF;
    low -= 8 - mq.isAfterFF;
    mq.b = takeAbove();
    mq.ct = 27 - low;
    return next;
}

QEL_INLINE uint8_t* lateBytesOut(MqEncoder& mq, uint8_t* next)
{
    while (mq.ct <= 0) next = byteOut(mq, next);
    return next;
}

// What may follow the bytes handed out so far, for decoders to find the decisions so far: with ones after it, a value
// from `lower` on and below `upper`, in units that make the last of those bytes worth `unit`.
struct MqInterval {
    uint64_t lower, upper, unit;
};
MqInterval intervalOf(const MqEncoder& mq);

// How many of the bytes that follow are needed if decoders then find the end of the segment, which they read as ones.
int neededBytes(const MqInterval& interval, const uint8_t* bytes, int length);

enum MqTermination { kFlush = 0, kShortest = 1, kPredictable = 2 };

// Ends the segment; no more than kTerminationBytes bytes follow. Never after a 0xFF, which may be taken back.
constexpr int kTerminationBytes = 8;
uint8_t* terminate(MqEncoder& mq, int method, uint8_t* next);

}
