// Codes recorded decisions into segments.
#include "jpeg2k/decision_coder.h"

#include <string.h>

#include <algorithm>

#include "core/dispatch.h"
#include "jpeg2k/code_block_encode.h"

namespace qel {

namespace {

// encode(decisions, count, next) and terminate(next) return where they stopped writing.
template <class Encode, class Terminate>
int codeInto(DecisionCoder& coder, uint8_t* dst, int* pCount, bool atEnd, Encode encode, Terminate terminate)
{
    uint8_t *next = dst, *limit = dst + *pCount;
    auto handOn = [&] {
        ptrdiff_t count = std::min<ptrdiff_t>(coder.pendingEnd - coder.pendingPosition, limit - next);
        memcpy(next, coder.pending + coder.pendingPosition, (size_t)count);
        next += count;
        coder.pendingPosition += (int)count;
    };
    auto makePending = [&](auto write) {
        coder.pendingPosition = 0;
        coder.pendingEnd = int(write(coder.pending) - coder.pending);
        handOn();
    };
    handOn();
    while (coder.position < coder.end && next < limit) {
        ptrdiff_t fitting = (limit - next) / CodeBlockEncodeKernels::kBytesPerDecision;
        int count = (int)std::min<ptrdiff_t>(fitting, coder.end - coder.position);
        const uint8_t* from = coder.decisions + coder.position;
        coder.position += std::max(count, 1);
        if (count > 0)
            next = encode(from, count, next);
        else
            makePending([&](uint8_t* to) { return encode(from, 1, to); });
    }
    bool isDone = coder.position == coder.end && coder.pendingPosition == coder.pendingEnd;
    if (atEnd && isDone && !coder.isTerminated) {
        makePending(terminate);
        coder.isTerminated = true;
    }
    *pCount = int(next - dst);
    return coder.end - coder.position;
}

int encodeMq(DecisionCoder& coder, uint8_t* dst, int* pCount, bool atEnd)
{
    auto encode = kernels<CodeBlockEncodeKernels>().encode;
    return codeInto(
        coder, dst, pCount, atEnd,
        [&](const uint8_t* from, int count, uint8_t* to) { return encode(coder.mq, from, count, to); },
        [&](uint8_t* to) {
            uint8_t* end = terminate(coder.mq, coder.terminationMethod, to);
            startSegment(coder.mq);
            return end;
        });
}

int encodeRaw(DecisionCoder& coder, uint8_t* dst, int* pCount, bool atEnd)
{
    auto pack = kernels<CodeBlockEncodeKernels>().pack;
    return codeInto(
        coder, dst, pCount, atEnd,
        [&](const uint8_t* from, int count, uint8_t* to) { return pack(coder.raw, from, count, to); },
        [&](uint8_t* to) {
            uint8_t* end = terminate(coder.raw, to);
            startSegment(coder.raw);
            return end;
        });
}

}

void DecisionCoder::start(int method)
{
    startSegment(mq);
    resetContexts(mq);
    startSegment(raw);
    terminationMethod = method;
    pendingPosition = pendingEnd = 0;
    record(nullptr, 0);
}

void DecisionCoder::record(const uint8_t* from, int count)
{
    decisions = from;
    position = 0;
    end = count;
    isTerminated = false;
}

int decEncoderMQEncode(DecisionCoder& coder, uint8_t* dst, int* pCount) { return encodeMq(coder, dst, pCount, false); }

int decEncoderMQEncodeAndTerminate(DecisionCoder& coder, uint8_t* dst, int* pCount)
{
    return encodeMq(coder, dst, pCount, true);
}

int decEncoderRawEncode(DecisionCoder& coder, uint8_t* dst, int* pCount)
{
    return encodeRaw(coder, dst, pCount, false);
}

int decEncoderRawEncodeAndTerminate(DecisionCoder& coder, uint8_t* dst, int* pCount)
{
    return encodeRaw(coder, dst, pCount, true);
}

}
