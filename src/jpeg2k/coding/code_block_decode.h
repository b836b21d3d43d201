// SPDX-License-Identifier: Apache-2.0
// Decoding of code-blocks: the state of a decoder, the coding passes, and the table of their kernels.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "core/kernel_tables.h"
#include "jpeg2k/coding/mq_decoder.h"
#include "jpeg2k/coding/pass_sequence.h"
#include "jpeg2k/coding/sample_flags.h"
#include "qeljx/jpeg2k_coding.h"

namespace qel {

// A segment of raw bits (T.800 D.6).
struct RawReader {
    const uint8_t* buffer;
    int32_t length;
    int32_t position; // of the next byte
    int32_t bitIndex; // in the last byte, of the bit that was taken last; below 0 before and after it
    uint32_t lastByte;
};

constexpr int32_t kDecoderTag = -123456;

// At the start of the caller's buffer, at any address; the functions work on a copy. The flags follow.
struct DecodeCBProgrState {
    int32_t tag;
    int32_t width, height, dstStep;
    uint8_t* dst;
    int32_t plane;                 // the current one
    int32_t passesDone, passCount; // as the caller counts, also those that do not exist
    PassSequence sequence;
    int32_t isFinished, isAttached;
    const uint32_t* zeroCoding; // contexts of the band
    FlagColumn* flags;          // the first column
    uint64_t flagPitch;         // columns
    MqDecoderState mq;
    RawReader raw;
};

// The passes: of all samples in the current plane, without what ends a pass.
struct CodeBlockDecodeKernels {
    void (*significancePropagation)(DecodeCBProgrState* state);
    void (*magnitudeRefinement)(DecodeCBProgrState* state);
    void (*cleanup)(DecodeCBProgrState* state);
    void (*significancePropagationRaw)(DecodeCBProgrState* state);
    void (*magnitudeRefinementRaw)(DecodeCBProgrState* state);

    QEL_BUILDS(CodeBlockDecodeKernels);
};

}
