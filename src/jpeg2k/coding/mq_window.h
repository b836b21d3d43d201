// SPDX-License-Identifier: Apache-2.0
// The MQ decoder without branches: the code register, and after it the bits that come next, in one word that takes in
// several bytes at a time. For kernels; the results are those of the steps in mq_decoder.h, whatever the bytes.
#pragma once

#include "core/big_endian.h"
#include "jpeg2k/coding/mq_decoder.h"
#include "jpeg2k/coding/mq_split.h"

namespace qel::QEL_BUILD {
namespace {

struct MqInput {
    const uint8_t* buffer;
    int32_t length;
    int32_t position; // of the byte that was last taken in
    int32_t filled;   // bits after the end of data that were taken in: kFill, or twice that for more
    static constexpr int32_t kFill = 1 << 24;
};

struct MqBits {
    uint64_t code; // from bit 63 down: 16 bits that are compared with the interval, and `count` that follow
    int64_t count;
};

// One byte as T.800 C.3.4 has it. False where it is not to be taken in yet: the bits of a byte above 0x7F after 0xFF,
// which no encoder writes, reach into those in front of them.
inline bool takeByte(MqBits& bits, MqInput* in)
{
    auto byteAt = [in](int64_t at) { return at < in->length ? in->buffer[at] : 0xFFu; };
    unsigned byte = byteAt(in->position), next = byteAt(int64_t(in->position) + 1);
    bool isStuffed = byte == 0xFF;
    if (isStuffed && next >= kFirstMarkerByte) {
        in->filled = in->filled == 0 ? MqInput::kFill : 2 * MqInput::kFill;
        bits.count += MqInput::kFill;
        return true;
    }
    if (isStuffed && next > 0x7F && bits.count >= 0) return false;
    bits.code += ((isStuffed ? 0x7Fu : 0xFFu) - uint64_t(next)) << (40 + isStuffed - bits.count);
    bits.count += 8 - isStuffed;
    ++in->position;
    return true;
}

__attribute__((noinline)) MqBits refill(uint64_t code, int64_t count, MqInput* in)
{
    if (in->length - in->position >= 8) {
        uint64_t word = loadBig64(in->buffer + in->position);
        if (!hasFF(word)) {
            in->position += 6;
            return {code + ((~word << 8 >> 16) << -count), count + 48};
        }
    }
    MqBits bits = {code, count};
    while (bits.count <= 40 && takeByte(bits, in)) {}
    return bits;
}

// What of a window need not be in registers.
struct MqMemory {
    MqInput input;
    uint64_t contexts[kContexts]; // by mqRow

    QEL_INLINE explicit MqMemory(const MqDecoderState& mq)
        : input{mq.buffer, mq.length, mq.position, mq.endOfData ? 2 * MqInput::kFill : 0}
    {
        for (int i = 0; i < kContexts; ++i) contexts[i] = mqRow(uint32_t(mq.index[i]), uint32_t(mq.mps[i]));
    }
};

class MqWindow {
public:
    QEL_INLINE MqWindow(const MqDecoderState& mq, MqMemory* memory)
        : code_(uint64_t(mq.C) << 32), interval_(uint64_t(mq.A) << 48), count_(mq.CT), memory_(memory)
    {}

    // To the state, without the bytes that need not have been taken in yet.
    QEL_INLINE void giveBack(MqDecoderState* mq) const
    {
        const MqInput& in = memory_->input;
        int64_t count = count_ - in.filled;
        int32_t position = in.position;
        mq->endOfData = count < 0;
        if (count < 0)
            count = count_ & 7;
        else
            for (int size; (size = 8 - (in.buffer[position - 1] == 0xFF)) <= count; count -= size) --position;
        mq->position = position;
        mq->CT = uint32_t(count);
        mq->C = uint32_t(code_ >> 32) & ~0u << (16 - count);
        mq->A = uint32_t(interval_ >> 48);
        for (int i = 0; i < kContexts; ++i) {
            uint64_t row = memory_->contexts[i] / sizeof(MqRow);
            mq->index[i] = int32_t(row / 2);
            mq->mps[i] = int32_t(row % 2);
        }
    }

    // The next decision.
    QEL_INLINE unsigned next(unsigned context)
    {
        unsigned decision = splitInterval(code_, interval_, memory_->contexts[context]);
        int shift = __builtin_clzll(interval_);
        code_ <<= shift;
        interval_ <<= shift;
        count_ -= shift;
        if (__builtin_expect(count_ < 0, 0)) {
            MqBits bits = refill(code_, count_, &memory_->input);
            code_ = bits.code;
            count_ = bits.count;
        }
        return decision;
    }

    // Takes the next decisions, `most` at most, as long as they are an MPS of 0 and leave the interval as it is
    // normalised; returns how many. They change no context, so that none but the first costs more than a comparison.
    QEL_INLINE unsigned skipZeros(unsigned context, unsigned most)
    {
        uint64_t row = memory_->contexts[context];
        if (row & mqRow(0, 1)) return 0;
        uint64_t qe = rowAt(row).qe;
        unsigned count = 0;
        for (uint64_t lower; count < most; ++count, interval_ = lower) {
            lower = interval_ - qe;
            if (code_ >= lower || lower >> 63 == 0) break;
        }
        return count;
    }

private:
    uint64_t code_, interval_; // as in MqBits; in the upper 16 bits
    int64_t count_;
    MqMemory* memory_;
};

}
}
