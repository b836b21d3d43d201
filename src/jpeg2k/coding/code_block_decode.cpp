// SPDX-License-Identifier: Apache-2.0
// Decoding of code-blocks: exported functions, and which passes a segment holds.
#include "jpeg2k/coding/code_block_decode.h"

#include <limits.h>
#include <string.h>

#include "core/checks.h"
#include "core/dispatch.h"
#include "core/rows.h"
#include "jpeg2k/coding/code_block_contexts.h"

using namespace qel;

namespace qel {
namespace {

constexpr size_t kFlagAlignment = 32;
// Bytes beside the rows of flags that the buffer has room for.
constexpr size_t kStateRoom = 388;
static_assert(sizeof(DecodeCBProgrState) <= kStateRoom - (kFlagAlignment - 1));

DecodeCBProgrState stateIn(const QelDecodeCBProgrState* buffer)
{
    DecodeCBProgrState state;
    memcpy(&state, buffer, sizeof state);
    return state;
}

void put(QelDecodeCBProgrState* buffer, const DecodeCBProgrState& state) { memcpy(buffer, &state, sizeof state); }

QelStatus initialised(const QelDecodeCBProgrState* buffer)
{
    if (buffer == nullptr) return qelStsNullPtrErr;
    return stateIn(buffer).tag == kDecoderTag ? qelStsNoErr : qelStsContextMatchErr;
}

DecodeCBProgrState newState(const QelDecodeCBProgrState* buffer)
{
    DecodeCBProgrState state = {};
    state.tag = kDecoderTag;
    auto flags = (uintptr_t(buffer) + sizeof state + kFlagAlignment - 1) & ~uintptr_t(kFlagAlignment - 1);
    state.flags = (FlagColumn*)flags + kFlagMargin;
    return state;
}

const uint32_t* zeroCodingTable(int bandType)
{
    return bandType == 2 ? ZeroCodingLUT_HxLy.of : bandType == 3 ? ZeroCodingLUT_HxHy.of : ZeroCodingLUT_LxHy.of;
}

void attach(DecodeCBProgrState& state, int32_t* dst, int dstStep, QelSize size, int bandType, int nBitPlanes,
            int nPasses, int style)
{
    state.dst = (uint8_t*)dst;
    state.dstStep = dstStep;
    state.width = size.width;
    state.height = size.height;
    state.plane = nBitPlanes < 1 ? -1 : nBitPlanes - 1;
    state.sequence = {state.plane, 0, style};
    state.passesDone = 0;
    state.passCount = nPasses;
    state.isFinished = 0;
    state.isAttached = 1;
    state.zeroCoding = zeroCodingTable(bandType);
    state.flagPitch = flagPitch(size.width);
    mqDecoderResetCtx(&state.mq);
    if (!(style & JPEG2K_KEEP_DESTINATION))
        forRows(size, [=](int r) { memset(rowAt(dst, dstStep, r), 0, size_t(size.width) * sizeof *dst); });
    if (!(style & JPEG2K_KEEP_FLAGS)) memset(state.flags - kFlagMargin, 0, flagBytes(size.width, size.height));
}

// T.800 D.5.
int checkSegmentationSymbol(MqDecoderState* mq)
{
    constexpr int kSegmentationMarker = 10;
    int symbol = 0;
    for (int i = 0; i < 4; ++i)
        symbol = symbol << 1 | ownqj_DecoderDecode_asm(mq, kContextUniform, owniEstimator_JPEG2K);
    return symbol != kSegmentationMarker;
}

// Returns 1 for an error.
int decodePass(DecodeCBProgrState* s, int pass)
{
    auto& table = kernels<CodeBlockDecodeKernels>();
    const PassSequence& sequence = s->sequence;
    const bool isRaw = sequence.isRaw(pass);
    int failed = 0;
    switch (sequence.kindOf(pass)) {
    case kSignificance:
        (isRaw ? table.significancePropagationRaw : table.significancePropagation)(s);
        break;
    case kRefinement:
        (isRaw ? table.magnitudeRefinementRaw : table.magnitudeRefinement)(s);
        break;
    case kCleanup:
        table.cleanup(s);
        if (sequence.style & JPEG2K_SEGMENTATION_SYMBOLS) failed = checkSegmentationSymbol(&s->mq);
    }
    if (isRaw) return 0;
    if (sequence.style & JPEG2K_PREDICTABLE_TERMINATION && sequence.endsSegment(pass))
        failed = mqDecoderCheckErrPredTerm(&s->mq);
    if (sequence.style & JPEG2K_RESET_EVERY_PASS) mqDecoderResetCtx(&s->mq);
    return failed;
}

// The plane of the next pass, if there is one or the end of the segment lets one follow.
int planeAfter(const DecodeCBProgrState& s, int pass)
{
    const PassSequence& sequence = s.sequence;
    bool mayFollow = sequence.style & JPEG2K_TERMINATE_EVERY_PASS ||
                     (sequence.style & JPEG2K_BYPASS && pass < sequence.kPassesBeforeRaw && sequence.endsSegment(pass));
    return sequence.planeOf(int64_t(pass) + (mayFollow || s.passesDone < s.passCount));
}

// Returns 1 for an error; the current plane is then that of the pass.
int decodeSegment(DecodeCBProgrState* s, const uint8_t* src, int length)
{
    if (s->sequence.isRaw(s->passesDone))
        s->raw = {src, length, 0, -1, 0};
    else
        mqDecoderInit(&s->mq, src, length);
    for (bool isEnd = false; !isEnd && s->passesDone < s->passCount;) {
        int pass = s->passesDone++;
        if (decodePass(s, pass)) return 1;
        s->plane = planeAfter(*s, pass);
        isEnd = s->sequence.endsSegment(pass);
    }
    return 0;
}

QelStatus step(DecodeCBProgrState& state, const uint8_t* src, int length)
{
    if (state.isFinished) return qelStsJPEG2KCodeBlockIsFinished;
    if (state.passesDone >= state.passCount || state.plane < 0) return qelStsNoErr;
    if (!decodeSegment(&state, src, length)) return qelStsNoErr;
    state.isFinished = 1;
    return qelStsJPEG2KCodeBlockIsFinished;
}

// Replaces each coefficient by change(coefficient).
template <class Change> void changeEach(const DecodeCBProgrState& state, Change change)
{
    forRows({state.width, state.height}, [&](int r) {
        auto* row = rowAt(state.dst, state.dstStep, r);
        for (int c = 0; c < state.width; ++c) {
            uint32_t coefficient;
            memcpy(&coefficient, row + size_t(c) * sizeof coefficient, sizeof coefficient);
            coefficient = change(coefficient);
            memcpy(row + size_t(c) * sizeof coefficient, &coefficient, sizeof coefficient);
        }
    });
}

// The bits from a plane up, sign included.
uint32_t bitsFrom(int plane) { return plane < 1 ? ~0u : plane > 31 ? 0 : ~0u << plane; }

void concealError(const DecodeCBProgrState& state)
{
    uint32_t kept = bitsFrom(state.plane), lowest = state.plane < 0 ? 0 : kept & -kept & INT32_MAX;
    changeEach(state, [=](uint32_t c) { return (c & kept & INT32_MAX) == 0 ? 0 : (c & kept) | lowest; });
}

void clearLowBits(const DecodeCBProgrState& state)
{
    if (state.plane < 1) return;
    uint32_t kept = bitsFrom(state.plane);
    changeEach(state, [=](uint32_t c) { return c & kept; });
}

QelStatus decodeAll(DecodeCBProgrState& state, const uint8_t* src, const uint32_t* lengths, int count)
{
    QelStatus status = qelStsNoErr;
    for (int i = 0; i < count && status == qelStsNoErr; ++i) {
        uint32_t length = lengths[i];
        status = step(state, src, int(length < INT_MAX ? length : INT_MAX));
        src += length;
    }
    return status;
}

}
}

QelStatus qeliDecodeGetBufSize_JPEG2K(QelSize maxSize, int* pSize)
{
    if (QelStatus bad = first(pointers(pSize), size(maxSize))) return bad;
    constexpr int64_t kMask = ~int64_t(kFlagAlignment - 1);
    int64_t row = (4 * int64_t(maxSize.width) + 8 + (int64_t(kFlagAlignment) - 1)) & kMask;
    int64_t rows = (int64_t(maxSize.height) + 1) / 2 + 2;
    if (rows > (INT_MAX - int64_t(kStateRoom)) / row) return qelStsSizeErr;
    *pSize = int(row * rows + int64_t(kStateRoom));
    return qelStsNoErr;
}

QelStatus qeliDecodeCodeBlock_JPEG2K_1u32s_C1R(const uint8_t* pSrc, int32_t* pDst, int dstStep, QelSize size,
                                               int bandType, int nBitPlanes, int nPasses, const uint32_t* pSegLengths,
                                               int nSegments, int style, int* pErrorBitPlane,
                                               QelDecodeCBProgrState* pState)
{
    if (QelStatus bad = first(pointers(pSrc, pState), qel::size(size), pointers(pSegLengths, pDst), steps(dstStep)))
        return bad;
    DecodeCBProgrState state = newState(pState);
    attach(state, pDst, dstStep, size, bandType, nBitPlanes, nPasses, style);
    QelStatus status = decodeAll(state, pSrc, pSegLengths, nSegments);
    if (status == qelStsJPEG2KCodeBlockIsFinished) {
        if (pErrorBitPlane != nullptr) *pErrorBitPlane = state.plane;
        if (style & JPEG2K_CONCEAL_ERRORS) concealError(state);
    }
    if (!(style & JPEG2K_KEEP_LOW_BITS)) clearLowBits(state);
    put(pState, state);
    return status;
}

QelStatus qeliDecodeCBProgrInit_JPEG2K(QelDecodeCBProgrState* pState)
{
    if (QelStatus bad = pointers(pState)) return bad;
    put(pState, newState(pState));
    return qelStsNoErr;
}

QelStatus qeliDecodeCBProgrAttach_JPEG2K_32s_C1R(int32_t* pDst, int dstStep, QelSize size, int bandType, int nBitPlanes,
                                                 int nPasses, int style, QelDecodeCBProgrState* pState)
{
    if (QelStatus bad = first(initialised(pState), pointers(pDst), steps(dstStep), qel::size(size))) return bad;
    DecodeCBProgrState state = stateIn(pState);
    attach(state, pDst, dstStep, size, bandType, nBitPlanes, nPasses, style);
    put(pState, state);
    return qelStsNoErr;
}

QelStatus qeliDecodeCBProgrStep_JPEG2K(const uint8_t* pSrc, int segmentLength, QelDecodeCBProgrState* pState)
{
    if (QelStatus bad = initialised(pState)) return bad;
    DecodeCBProgrState state = stateIn(pState);
    if (!state.isAttached) return qelStsJPEG2KCodeBlockIsNotAttached;
    if (QelStatus bad = pointers(pSrc)) return bad;
    QelStatus status = step(state, pSrc, segmentLength);
    put(pState, state);
    return status;
}

QelStatus qeliDecodeCBProgrGetCurBitPlaneNum_JPEG2K(int* pBitPlane, QelDecodeCBProgrState* pState)
{
    if (QelStatus bad = first(initialised(pState), pointers(pBitPlane))) return bad;
    *pBitPlane = stateIn(pState).plane;
    return qelStsNoErr;
}

QelStatus qeliDecodeCBProgrConcealError_JPEG2K(QelDecodeCBProgrState* pState)
{
    if (QelStatus bad = initialised(pState)) return bad;
    concealError(stateIn(pState));
    return qelStsNoErr;
}

QelStatus qeliDecodeCBProgrClearLeastSfBits_JPEG2K(QelDecodeCBProgrState* pState)
{
    if (QelStatus bad = initialised(pState)) return bad;
    clearLowBits(stateIn(pState));
    return qelStsNoErr;
}
