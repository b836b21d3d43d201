// SPDX-License-Identifier: Apache-2.0
// Records of decisions to bytes: all but the loop of a kernel.
#include "jpeg2k/coding/decision_coder.h"

#include "core/dispatch.h"
#include "jpeg2k/coding/code_block_encode.h"

namespace qel {

uint8_t* decEncoderMQEncode(MqEncoder& mq, const uint8_t* decisions, int count, uint8_t* next)
{
    return kernels<CodeBlockEncodeKernels>().encode(mq, decisions, count, next);
}

uint8_t* decEncoderRawEncode(RawPacker& raw, const uint8_t* decisions, int count, uint8_t* next)
{
    return kernels<CodeBlockEncodeKernels>().pack(raw, decisions, count, next);
}

uint8_t* decEncoderMQEncodeAndTerminate(MqEncoder& mq, int method, const uint8_t* decisions, int count, uint8_t* next)
{
    next = terminate(mq, method, decEncoderMQEncode(mq, decisions, count, next));
    startSegment(mq);
    return next;
}

uint8_t* decEncoderRawEncodeAndTerminate(RawPacker& raw, const uint8_t* decisions, int count, uint8_t* next)
{
    next = terminate(raw, decEncoderRawEncode(raw, decisions, count, next));
    startSegment(raw);
    return next;
}

}
