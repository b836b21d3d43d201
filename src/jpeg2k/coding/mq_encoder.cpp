// SPDX-License-Identifier: Apache-2.0
// MQ encoder: start and end of segments.
#include "jpeg2k/coding/mq_encoder.h"

namespace qel {

namespace {

// Moves C up to the next byte's place, and that byte out.
uint8_t* shiftOut(MqEncoder& mq, uint8_t* next)
{
    mq.c <<= mq.ct;
    mq.ct = 0;
    return byteOut(mq, next);
}

// As many bits as possible are set (T.800 Figure C.11), also after the interval's own: the last byte is often 0xFF,
// which stays in b and is dropped.
uint8_t* flush(MqEncoder& mq, uint8_t* next)
{
    uint64_t end = mq.c + mq.a;
    mq.c |= 0xFFFF;
    if (mq.c >= end) mq.c -= 0x8000;
    next = shiftOut(mq, next);
    mq.c |= 0x7FFF;
    next = shiftOut(mq, next);
    mq.c |= 0x7FFF;
    return mq.b == 0xFF ? next : shiftOut(mq, next);
}

// T.800 D.4.2: the decoder can tell from the bits after the last decision whether it has lost its way.
uint8_t* endPredictably(MqEncoder& mq, uint8_t* next)
{
    for (int k = 12 - mq.ct; k > 0; k -= mq.ct) next = shiftOut(mq, next);
    return mq.b == 0xFF ? next : shiftOut(mq, next);
}

// The flush, cut where ones serve as well. There is no shorter end: what n bytes with ones after them amount to is
// less than a multiple of the last byte's unit by nothing that counts, and such a multiple must lie above C and not
// above C + A. The first one above C follows the bits of C down to that unit, which the flush has: it changes only bits
// 0 to 15, and clears bit 15 only where that is 0 in C. As A is at least 0x8000, no smaller unit is needed. If none of
// its bytes is, neither is a 0xFF in front.
uint8_t* endShortest(MqEncoder& mq, uint8_t* next)
{
    const MqInterval interval = intervalOf(mq);
    const bool isAfterFF = mq.isAfterFF;
    uint8_t* end = flush(mq, next);
    int needed = neededBytes(interval, next, int(end - next));
    return next + needed - (needed == 0 && isAfterFF);
}

}

void startSegment(MqEncoder& mq)
{
    mq.a = 0x8000;
    mq.c = 0;
    mq.ct = 12;
    mq.b = 0;
    mq.isFirst = true;
    mq.isAfterFF = false;
}

void resetContexts(MqEncoder& mq)
{
    for (int i = 0; i < kContexts; ++i)
        mq.states[i] = kMqStates.of[2 * owniInitialCtxIndexes_JPEG2K[i] + owniInitialMPS_JPEG2K[i]];
}

MqInterval intervalOf(const MqEncoder& mq)
{
    constexpr uint64_t kUnitOfB = uint64_t(1) << 27;
    uint64_t lower = mq.b * kUnitOfB + (mq.c << mq.ct), length = uint64_t(mq.a) << mq.ct;
    return {lower, lower + length, mq.isFirst ? kUnitOfB : kUnitOfB << (8 - mq.isAfterFF)};
}

int neededBytes(const MqInterval& interval, const uint8_t* bytes, int length)
{
    // What the bytes so far and ones amount to. A byte after 0xFF overlaps it by its highest bit, a carry; so ones may
    // also be too little.
    uint64_t unit = interval.unit, value = 0;
    bool isAfterFF = unit == uint64_t(1) << 34;
    int count = 0;
    for (; count < length && (value + unit > interval.upper || value + unit <= interval.lower); ++count) {
        unit >>= 8 - isAfterFF;
        value += bytes[count] * unit;
        isAfterFF = bytes[count] == 0xFF;
    }
    return count;
}

uint8_t* terminate(MqEncoder& mq, int method, uint8_t* next)
{
    if (method == kShortest) return endShortest(mq, next);
    return method == kPredictable ? endPredictably(mq, next) : flush(mq, next);
}

}
