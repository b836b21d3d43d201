// Codes recorded decisions into segments, as far as there is room.
#pragma once

#include "jpeg2k/mq_encoder.h"
#include "jpeg2k/raw_packer.h"

namespace qel {

struct DecisionCoder {
    MqEncoder mq;
    RawPacker raw;
    int terminationMethod;

    const uint8_t* decisions; // each (context << 1) | decision
    int position, end;
    bool isTerminated; // behind the last of them

    // Bytes for which there was no room.
    uint8_t pending[kTerminationBytes];
    int pendingPosition, pendingEnd;

    void start(int method);
    void record(const uint8_t* from, int count);
};

// At most *pCount bytes go to `dst`, those from earlier calls first; *pCount becomes their number. Returns how many
// decisions are left. All is done when that is 0 and there was more room than bytes.
int decEncoderMQEncode(DecisionCoder& coder, uint8_t* dst, int* pCount);
int decEncoderRawEncode(DecisionCoder& coder, uint8_t* dst, int* pCount);
// The same, and the segment ends behind the last decision; the next decisions start another one.
int decEncoderMQEncodeAndTerminate(DecisionCoder& coder, uint8_t* dst, int* pCount);
int decEncoderRawEncodeAndTerminate(DecisionCoder& coder, uint8_t* dst, int* pCount);

}
