// SPDX-License-Identifier: Apache-2.0
// Codes recorded decisions, each (context << 1) | decision, into segments.
#pragma once

#include "jpeg2k/coding/mq_encoder.h"
#include "jpeg2k/coding/raw_packer.h"

namespace qel {

// These return where they have stopped writing: after no more than CodeBlockEncodeKernels::kBytesPerDecision bytes for
// a decision.
uint8_t* decEncoderMQEncode(MqEncoder& mq, const uint8_t* decisions, int count, uint8_t* next);
uint8_t* decEncoderRawEncode(RawPacker& raw, const uint8_t* decisions, int count, uint8_t* next);
// The same, and the segment ends after the last decision, with up to kTerminationBytes more; the next decisions start
// another one. The bytes of the segment have to stand before `next`.
uint8_t* decEncoderMQEncodeAndTerminate(MqEncoder& mq, int method, const uint8_t* decisions, int count, uint8_t* next);
uint8_t* decEncoderRawEncodeAndTerminate(RawPacker& raw, const uint8_t* decisions, int count, uint8_t* next);

}
