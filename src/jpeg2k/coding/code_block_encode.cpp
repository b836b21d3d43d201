// SPDX-License-Identifier: Apache-2.0
// Code-block encoding (T.800 Annex D): exported functions, and the sequence of passes and segments.
#include "jpeg2k/coding/code_block_encode.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include "core/checks.h"
#include "core/dispatch.h"
#include "jpeg2k/coding/decision_coder.h"
#include "jpeg2k/coding/distortion_tables.h"
#include "jpeg2k/coding/pass_sequence.h"
#include "qeljx/jpeg2k_coding.h"
#include "qeljx/support.h"

using namespace qel;

namespace {

constexpr uint32_t kTag = 0x4C4D5344;
constexpr int kMagnitudeBits = 31;
constexpr int kMostPasses = 3 * kMagnitudeBits - 2;

struct Pass {
    int32_t mantissa, exponent;
    uint32_t rate;
    uint32_t emitted;    // bytes of the block before those that are still in the coder's registers
    MqInterval interval; // what these amount to
};

}

struct QelEncodeState {
    uint32_t tag;
    QelSize largest;
    int passCount, segmentCount;
    Pass passes[kMostPasses];
    uint32_t segmentLengths[kMostPasses];
    uint32_t codedLength, storedLength;
    MqEncoder mq;
    RawPacker raw;
    uint64_t* maps;
    uint8_t *decisions, *coded;
};

namespace {

constexpr int kSegmentationSymbols = 4;

// Bytes of memory for blocks up to a size: the state, and what follows it.
struct Sizes {
    int64_t maps, decisions, coded;

    explicit Sizes(QelSize largest)
    {
        int64_t words = BlockMaps::wordsFor(largest.width), stripes = BlockMaps::stripesFor(largest.height);
        int64_t columns = largest.width * stripes;
        maps = BlockMaps::kMaps * ((words + 1) * (stripes + 2) + 1) * int64_t(sizeof(uint64_t));
        // Of a column in a pass at most a run and its position, that sample's sign, and three samples with theirs.
        decisions = 10 * columns + kSegmentationSymbols + CodeBlockEncodeKernels::kRecordSlack;
        // Of a column in all: each sample in each plane, their signs, a run and its position. A decision shifts by at
        // most 15 places, of which 7 make a byte.
        constexpr int kDecisions = 4 * kMagnitudeBits + 4 + 3;
        coded = (kDecisions * columns + kSegmentationSymbols * kMagnitudeBits) * 15 / 7 +
                kMostPasses * kTerminationBytes + CodeBlockEncodeKernels::kBytesPerDecision;
    }
    static constexpr int64_t kState = (sizeof(QelEncodeState) + 7) / 8 * 8;
    int64_t all() const { return kState + maps + decisions + coded; }

    // Of more columns the bytes would not fit an int, nor need they fit 64 bits.
    static bool mayFit(QelSize largest)
    {
        return int64_t(largest.width) * BlockMaps::stripesFor(largest.height) <= INT32_MAX;
    }
};

// Decisions 1, 0, 1, 0 in the uniform context.
uint8_t* putSegmentationSymbols(uint8_t* out)
{
    for (int i = 0; i < kSegmentationSymbols; ++i) *out++ = uint8_t(~i & 1);
    return out;
}

PassRecord record(const PassSequence& sequence, int pass, int bandType, const BlockMaps& maps, uint8_t* decisions)
{
    auto& table = kernels<CodeBlockEncodeKernels>();
    int plane = sequence.planeOf(pass);
    PassKind kind = sequence.kindOf(pass);
    PassMode mode = {plane, bandType, sequence.isRaw(pass), (sequence.style & JPEG2K_VERTICALLY_CAUSAL) != 0,
                     (sequence.style & JPEG2K_LOSSLESS) && plane == sequence.low};
    if (kind == kSignificance) return table.significance(maps, mode, decisions);
    if (kind == kRefinement) return table.refinement(maps, mode, decisions);
    PassRecord record = table.cleanup(maps, mode, decisions);
    if (sequence.style & JPEG2K_SEGMENTATION_SYMBOLS) record.end = putSegmentationSymbols(record.end);
    return record;
}

// Where a sum is too large for the mantissa, it loses low bits.
void setReduction(Pass& pass, int64_t reduction, int exponent)
{
    for (; reduction != int32_t(reduction); ++exponent) reduction /= 2;
    pass.mantissa = int32_t(reduction);
    pass.exponent = exponent;
}

// What is in the coder's registers after a pass takes at most so many bytes; the last of the MQ coder's need not be in
// the segment. The byte before the first one of a segment is none.
uint32_t bytesHeld(const MqEncoder& mq) { return (27 - mq.ct > (mq.b < 254 ? 23 : 22) ? 5u : 4u) - mq.isFirst; }

// Bytes that decode to a pass do so to all earlier ones.
void setRate(QelEncodeState& state, int pass, uint32_t rate)
{
    state.passes[pass].rate = rate;
    for (; pass > 0 && state.passes[pass - 1].rate > rate; --pass) state.passes[pass - 1].rate = rate;
}

// Passes of a segment end where the bytes that follow in it do not matter any more to their decisions.
void setLeastRates(QelEncodeState& state, int first, int last, bool isRaw)
{
    const uint32_t end = state.codedLength;
    for (int i = first; i <= last; ++i) {
        const Pass& pass = state.passes[i];
        uint32_t rate = i == last ? end : pass.rate;
        if (!isRaw && i < last)
            rate = pass.emitted +
                   uint32_t(neededBytes(pass.interval, state.coded + pass.emitted, int(end - pass.emitted)));
        while (rate > 0 && state.coded[rate - 1] == 0xFF) --rate;
        setRate(state, i, rate);
    }
}

// Codes what a pass has recorded, after what is coded.
void code(QelEncodeState& state, int index, bool isRaw, const uint8_t* end)
{
    Pass& pass = state.passes[index];
    const int count = int(end - state.decisions);
    uint8_t* next = state.coded + state.codedLength;
    next = isRaw ? decEncoderRawEncode(state.raw, state.decisions, count, next)
                 : decEncoderMQEncode(state.mq, state.decisions, count, next);
    pass.emitted = state.codedLength = uint32_t(next - state.coded);
    pass.interval = intervalOf(state.mq);
    setRate(state, index, pass.emitted + (isRaw ? state.raw.isPending() : bytesHeld(state.mq)));
}

// All decisions are coded.
void endSegment(QelEncodeState& state, uint32_t begin, bool isRaw, int method)
{
    uint8_t* next = state.coded + state.codedLength;
    next = isRaw ? decEncoderRawEncodeAndTerminate(state.raw, state.decisions, 0, next)
                 : decEncoderMQEncodeAndTerminate(state.mq, method, state.decisions, 0, next);
    state.codedLength = uint32_t(next - state.coded);
    state.segmentLengths[state.segmentCount++] = state.codedLength - begin;
}

void encode(QelEncodeState& state, const BlockMaps& maps, const PassSequence& sequence, int bandType, int method)
{
    int firstOfSegment = 0;
    uint32_t segmentBegin = 0;
    state.passCount = int(sequence.count());
    for (int i = 0; i < state.passCount; ++i) {
        bool isRaw = sequence.isRaw(i);
        PassRecord recorded = record(sequence, i, bandType, maps, state.decisions);
        setReduction(state.passes[i], recorded.reduction,
                     2 * (sequence.planeOf(i) - sequence.low) - kDistortionFractionBits);
        code(state, i, isRaw, recorded.end);
        if (sequence.style & JPEG2K_RESET_EVERY_PASS) resetContexts(state.mq);
        if (!sequence.endsSegment(i)) continue;
        endSegment(state, segmentBegin, isRaw, method);
        if (sequence.style & JPEG2K_LEAST_RATES) setLeastRates(state, firstOfSegment, i, isRaw);
        firstOfSegment = i + 1;
        segmentBegin = state.codedLength;
    }
}

// A truncation does not end on 0xFF, which decoders supply: of the rates that end in a part of the bytes.
void lowerRates(QelEncodeState& state, uint32_t begin, uint32_t end)
{
    for (int i = 0; i < state.passCount; ++i) {
        uint32_t& rate = state.passes[i].rate;
        if (rate > begin && rate <= end && state.coded[rate - 1] == 0xFF) --rate;
    }
}

QelStatus checkState(const QelEncodeState* state)
{
    if (state == nullptr) return qelStsNullPtrErr;
    return state->tag == kTag ? qelStsNoErr : qelStsContextMatchErr;
}

QelStatus checkIndex(int index, int count)
{
    return index >= 0 && index < count ? qelStsNoErr : qelStsJPEG2KBadPassNumber;
}

double reductionOf(const Pass& pass)
{
    double power = double(uint64_t(1) << std::abs(pass.exponent));
    return pass.exponent < 1 ? pass.mantissa / power : pass.mantissa * power;
}

}

QelStatus qeliEncodeInitAlloc_JPEG2K(QelEncodeState** ppState, int maxWidth, int maxHeight)
{
    QelSize largest = {maxWidth, maxHeight};
    if (QelStatus bad = first(pointers(ppState), size(largest))) return bad;
    *ppState = nullptr;
    if (!Sizes::mayFit(largest)) return qelStsMemAllocErr;
    Sizes sizes(largest);
    if (sizes.all() > INT32_MAX) return qelStsMemAllocErr;
    uint8_t* memory = qelsMalloc_8u(int(sizes.all()));
    if (memory == nullptr) return qelStsMemAllocErr;
    *ppState = (QelEncodeState*)memory;
    QelEncodeState& state = **ppState;
    state.tag = kTag;
    state.largest = largest;
    state.passCount = state.segmentCount = 0;
    state.codedLength = state.storedLength = 0;
    state.maps = (uint64_t*)(memory + Sizes::kState);
    state.decisions = memory + Sizes::kState + sizes.maps;
    state.coded = state.decisions + sizes.decisions;
    return qelStsNoErr;
}

QelStatus qeliEncodeFree_JPEG2K(QelEncodeState* pState)
{
    if (QelStatus bad = pointers(pState)) return bad;
    qelsFree(pState);
    return qelStsNoErr;
}

QelStatus qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, int width, int height,
                                                 QelEncodeState* pState, int bandType, int nBitPlanes,
                                                 int terminationMethod, int, int style, int* pNumBitPlanes,
                                                 int* pNumPasses, int* pNumSegments)
{
    if (QelStatus bad = checkState(pState)) return bad;
    QelSize block = {width, height};
    bool isKnown = terminationMethod >= kFlush && terminationMethod <= kPredictable && nBitPlanes <= kMagnitudeBits;
    if (QelStatus bad = first(pointers(pNumBitPlanes, pNumPasses, pNumSegments), size(block), pointers(pSrc),
                              steps(srcStep), values(isKnown)))
        return bad;
    if (width > pState->largest.width || height > pState->largest.height) return qelStsSizeErr;

    BlockMaps maps = BlockMaps::of(block, pState->maps);
    int low = kMagnitudeBits - std::max(nBitPlanes, 0);
    uint32_t all = kernels<CodeBlockEncodeKernels>().load(pSrc, srcStep, std::max(low - 6, 0), maps);
    int bitPlanes = all == 0 ? 0 : 32 - __builtin_clz(all);
    pState->segmentCount = 0;
    pState->codedLength = pState->storedLength = 0;
    startSegment(pState->mq);
    resetContexts(pState->mq);
    startSegment(pState->raw);
    encode(*pState, maps, {bitPlanes - 1, low, style}, bandType, terminationMethod);
    *pNumBitPlanes = bitPlanes;
    *pNumPasses = pState->passCount;
    *pNumSegments = pState->segmentCount;
    return qelStsNoErr;
}

QelStatus qeliEncodeGetRate_JPEG2K(const QelEncodeState* pState, int passIndex, uint32_t* pRate)
{
    if (QelStatus bad = checkState(pState)) return bad;
    if (QelStatus bad = first(pointers(pRate), checkIndex(passIndex, pState->passCount))) return bad;
    *pRate = pState->passes[passIndex].rate;
    return qelStsNoErr;
}

QelStatus qeliEncodeGetDistReduction_JPEG2K(const QelEncodeState* pState, int passIndex, int* pMantissa, int* pExponent)
{
    if (QelStatus bad = checkState(pState)) return bad;
    if (QelStatus bad = first(pointers(pMantissa, pExponent), checkIndex(passIndex, pState->passCount))) return bad;
    *pMantissa = pState->passes[passIndex].mantissa;
    *pExponent = pState->passes[passIndex].exponent;
    return qelStsNoErr;
}

QelStatus qeliEncodeGetDist_JPEG2K(const QelEncodeState* pState, int passIndex, double* pDist)
{
    if (QelStatus bad = checkState(pState)) return bad;
    if (QelStatus bad = first(pointers(pDist), checkIndex(passIndex, pState->passCount))) return bad;
    double sum = 0;
    for (int i = 0; i <= passIndex; ++i) sum += reductionOf(pState->passes[i]);
    *pDist = sum;
    return qelStsNoErr;
}

QelStatus qeliEncodeGetTermPassLen_JPEG2K(const QelEncodeState* pState, int segmentIndex, uint32_t* pLength)
{
    if (QelStatus bad = checkState(pState)) return bad;
    if (QelStatus bad = first(pointers(pLength), checkIndex(segmentIndex, pState->segmentCount))) return bad;
    *pLength = pState->segmentLengths[segmentIndex];
    return qelStsNoErr;
}

QelStatus qeliEncodeStoreBits_JPEG2K_1u(uint8_t* pDst, int* pDstLen, QelEncodeState* pState, int* pIsNotLast)
{
    if (QelStatus bad = first(checkState(pState), pointers(pDst, pDstLen, pIsNotLast))) return bad;
    if (QelStatus bad = length(*pDstLen)) return bad;
    auto count = int(std::min<uint32_t>(uint32_t(*pDstLen), pState->codedLength - pState->storedLength));
    memcpy(pDst, pState->coded + pState->storedLength, size_t(count));
    lowerRates(*pState, pState->storedLength, pState->storedLength + uint32_t(count));
    pState->storedLength += uint32_t(count);
    *pDstLen = count;
    *pIsNotLast = pState->storedLength < pState->codedLength;
    return qelStsNoErr;
}
