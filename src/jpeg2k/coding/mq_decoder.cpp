// SPDX-License-Identifier: Apache-2.0
// The MQ decoder as T.800 C.3 has it: one decision, one byte at a time.
#include "jpeg2k/coding/mq_decoder.h"

namespace qel {

void mqDecoderInit(MqDecoderState* mq, const uint8_t* buffer, int length)
{
    mq->buffer = buffer;
    mq->length = length;
    mq->position = 0;
    mq->endOfData = 0;
    mq->CT = 0;
    mq->C = length < 1 ? 0 : (0xFFu - buffer[0]) << 16;
    mqDecoderByteIn(mq);
    mq->C <<= 7;
    mq->CT -= 7;
    mq->A = 0x8000;
}

void mqDecoderResetCtx(MqDecoderState* mq)
{
    for (int i = 0; i < kContexts; ++i) {
        mq->index[i] = owniInitialCtxIndexes_JPEG2K[i];
        mq->mps[i] = owniInitialMPS_JPEG2K[i];
    }
}

void mqDecoderByteIn(MqDecoderState* mq)
{
    mq->CT = 8;
    if (mq->endOfData) return;
    unsigned byte = byteAt(*mq, mq->position), next = byteAt(*mq, int64_t(mq->position) + 1);
    if (byte < 0xFF) {
        ++mq->position;
        mq->C += 0xFF00 - (next << 8);
    } else if (next < kFirstMarkerByte) {
        ++mq->position;
        mq->C += 0xFE00 - (next << 9);
        mq->CT = 7;
    } else {
        mq->endOfData = 1;
    }
}

void mqDecoderRenorm(MqDecoderState* mq)
{
    do {
        if (mq->CT == 0) mqDecoderByteIn(mq);
        mq->A <<= 1;
        mq->C <<= 1;
        --mq->CT;
    } while ((mq->A & 0x8000) == 0);
}

int ownqj_DecoderDecode_asm(MqDecoderState* mq, int context, const uint32_t (*table)[4])
{
    const uint32_t* state = table[mq->index[context]];
    uint32_t qe = state[0];
    int decision = mq->mps[context];
    mq->A -= qe;
    bool isUpper = mq->C >> 16 >= mq->A, isExchanged = mq->A < qe;
    if (isUpper) {
        mq->C -= mq->A << 16;
        mq->A = qe;
    } else if (mq->A & 0x8000) {
        return decision;
    }
    if (isUpper == isExchanged) {
        mq->index[context] = int32_t(state[1]);
    } else {
        decision ^= 1;
        mq->mps[context] ^= int32_t(state[3]);
        mq->index[context] = int32_t(state[2]);
    }
    mqDecoderRenorm(mq);
    return decision;
}

int mqDecoderCheckErrPredTerm(MqDecoderState* mq)
{
    if (!mq->endOfData && (byteAt(*mq, mq->position) < 0xFF || mq->CT != 0)) return 1;
    if (mq->CT == 1) return 0;
    if (mq->CT == 0) {
        if (!mq->endOfData && byteAt(*mq, int64_t(mq->position) + 1) < kFirstMarkerByte) return 1;
        mq->CT = 8;
    }
    uint32_t probability = 0x8000u >> (mq->CT - 1), lower = mq->A - probability;
    if (mq->C >> 16 < lower) {
        mq->A = lower;
        return 1;
    }
    mq->C -= lower << 16;
    mq->A = probability;
    mqDecoderRenorm(mq);
    return 0;
}

}
