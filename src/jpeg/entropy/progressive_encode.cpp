// Progressive Huffman encoding and statistics (T.81 G.1.2): exported functions, and the plain steps, which define what
// is written.
#include "jpeg/entropy/progressive_encode.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "jpeg/block/zigzag.h"
#include "jpeg/entropy/huffman_plain_writer.h"

using namespace qel;

namespace {

constexpr int kLargestDcCategory = 11;
constexpr int kLargestPointTransform = 13;

struct BandWriter {
    PlainWriter out;
    const QelEncodeHuffmanSpec* spec;

    QelStatus symbol(int symbol) const { return out.writeSymbol(spec, symbol); }
    QelStatus bits(uint32_t value, int length) const { return length == 0 ? qelStsNoErr : out.write(value, length); }
    QelStatus corrections(const uint8_t* bit, uint32_t count) const
    {
        for (uint32_t i = 0; i < count; ++i)
            if (QelStatus bad = out.write(bit[i], 1)) return bad;
        return qelStsNoErr;
    }
};

bool isPointTransform(int al) { return al >= 0 && al <= kLargestPointTransform; }
bool isValid(const Band& band)
{
    return band.ss >= 1 && band.ss <= band.se && band.se <= 63 && isPointTransform(band.al);
}

// Ends the pending run, with the correction bits of its blocks.
QelStatus endRun(const BandWriter& sink, QelEncodeHuffmanState* state)
{
    uint32_t run = state->endOfBandRun, count = state->correctionCount;
    state->endOfBandRun = 0;
    state->correctionCount = 0;
    if (run > kLongestRun) {
        if (QelStatus bad = sink.symbol(kLongestRunSymbol)) return bad;
        if (QelStatus bad = sink.bits(run, kLongestRunSize)) return bad;
        run -= kLongestRun;
    }
    if (run > 0) {
        uint32_t size = ownqj_get_eobsize(run);
        if (size > kLongestRunSize) return qelStsJPEGHuffTableErr;
        if (QelStatus bad = sink.symbol((int)size << 4)) return bad;
        if (QelStatus bad = sink.bits(run, (int)size)) return bad;
    }
    return sink.corrections(state->correctionBits, count);
}

// One block more whose band is at its end, with `count` correction bits that stand in the buffer already.
QelStatus lengthenRun(const BandWriter& sink, uint32_t count, QelEncodeHuffmanState* state)
{
    state->endOfBandRun += 1;
    state->correctionCount += count;
    bool isFull = state->endOfBandRun >= kLongestRun || state->correctionCount > kMostCorrectionBits;
    return isFull ? endRun(sink, state) : qelStsNoErr;
}

// A state that nobody initialised may count more than its buffer holds.
void limitCorrections(QelEncodeHuffmanState* state)
{
    if (state->correctionCount > kMostCorrectionBits) state->correctionCount = kMostCorrectionBits;
}

// The point transform divides the magnitude: -1 with al = 1 is 0.
int magnitudeAt(const int16_t* block, int position, const Band& band)
{
    int value = coefficientAt(block, own_qj_izigzag_index[position]);
    return (value < 0 ? -value : value) >> band.al;
}
bool isNegativeAt(const int16_t* block, int position)
{
    return coefficientAt(block, own_qj_izigzag_index[position]) < 0;
}

__attribute__((noinline)) QelStatus writeFirst(const int16_t* block, const Band& band, const BandWriter& sink,
                                               QelEncodeHuffmanState* state)
{
    int zeros = 0;
    for (int k = band.ss; k <= band.se; ++k) {
        int magnitude = magnitudeAt(block, k, band);
        if (magnitude == 0) {
            ++zeros;
            continue;
        }
        if (QelStatus bad = endRun(sink, state)) return bad;
        for (; zeros > 15; zeros -= 16)
            if (QelStatus bad = sink.symbol(kSixteenZeros)) return bad;
        int category = categoryOf(magnitude);
        if (category > kLargestWritten) return qelStsJPEGHuffTableErr;
        if (QelStatus bad = sink.symbol(zeros << 4 | category)) return bad;
        if (QelStatus bad = sink.bits((uint32_t)(isNegativeAt(block, k) ? ~magnitude : magnitude), category))
            return bad;
        zeros = 0;
    }
    return zeros == 0 ? qelStsNoErr : lengthenRun(sink, 0, state);
}

// The last position of a coefficient that becomes significant in this scan, 0 if there is none.
int lastNewPosition(const int16_t* block, const Band& band)
{
    for (int k = band.se; k >= band.ss; --k)
        if (magnitudeAt(block, k, band) == 1) return k;
    return 0;
}

// The correction bits of a block are kept behind those of the pending run; once that run is written, they move to the
// front of the buffer.
__attribute__((noinline)) QelStatus writeRefinement(const int16_t* block, const Band& band, const BandWriter& sink,
                                                    QelEncodeHuffmanState* state)
{
    int last = lastNewPosition(block, band), zeros = 0;
    uint8_t* bits = state->correctionBits + state->correctionCount;
    uint32_t count = 0;
    auto writeKept = [&] {
        QelStatus status = sink.corrections(bits, count);
        bits = state->correctionBits;
        count = 0;
        return status;
    };
    for (int k = band.ss; k <= band.se; ++k) {
        int magnitude = magnitudeAt(block, k, band);
        if (magnitude == 0) ++zeros;
        if (magnitude > 1) bits[count++] = magnitude & 1;
        if (zeros > 15 && k <= last) {
            if (QelStatus bad = endRun(sink, state)) return bad;
            if (QelStatus bad = sink.symbol(kSixteenZeros)) return bad;
            if (QelStatus bad = writeKept()) return bad;
            zeros -= 16;
        }
        if (magnitude != 1) continue;
        if (QelStatus bad = endRun(sink, state)) return bad;
        if (QelStatus bad = sink.symbol(zeros << 4 | 1)) return bad;
        if (QelStatus bad = sink.bits(!isNegativeAt(block, k), 1)) return bad;
        if (QelStatus bad = writeKept()) return bad;
        zeros = 0;
    }
    return zeros > 0 || count > 0 ? lengthenRun(sink, count, state) : qelStsNoErr;
}

// By the kernel, or if the block comes near the end of the buffer by the plain steps.
template <class Kernel, class Plainly>
inline QelStatus encodeBand(Kernel kernel, Plainly plainly, const int16_t* src, uint8_t* dst, int dstLen, int* pos,
                            const Band& band, const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state)
{
    BandWriter writer = {{dst, dstLen, pos, state}, ac};
    limitCorrections(state);
    if (writer.out.room() >= ProgressiveEncodeKernels::kRoomForBlock) {
        QelStatus status = kernel(src, dst, dstLen, pos, band, ac, state);
        if (status != qelStsJPEGOutOfBufErr) return status;
    }
    return plainly(src, band, writer, state);
}

QelStatus checkStream(const uint8_t* dst, int dstLen, const int* pos, const QelEncodeHuffmanState* state)
{
    return first(pointers(dst), length(dstLen), pointers(pos, state));
}

// What the exported functions of AC scans do, first and refinement.
template <class Kernel, class Plainly>
inline QelStatus encodeAc(Kernel ProgressiveEncodeKernels::*kernel, Plainly plainly, const int16_t* src, uint8_t* dst,
                          int dstLen, int* pos, const Band& band, const QelEncodeHuffmanSpec* ac,
                          QelEncodeHuffmanState* state, int flush)
{
    if (QelStatus bad = first(checkStream(dst, dstLen, pos, state), pointers(ac))) return bad;
    if (flush) return ownqj_EncodeHuffman8x8_ACFlush_JPEG_16s1u_C1(dst, dstLen, pos, ac, state);
    if (QelStatus bad = first(pointers(src), values(isValid(band)))) return bad;
    return encodeBand(kernels<ProgressiveEncodeKernels>().*kernel, plainly, src, dst, dstLen, pos, band, ac, state);
}

template <class Kernel> inline QelStatus countAc(Kernel ProgressiveEncodeKernels::*kernel, const int16_t* src,
                                                 uint32_t* statistics, const Band& band, QelEncodeHuffmanState* state,
                                                 int flush)
{
    if (QelStatus bad = pointers(statistics, state)) return bad;
    if (flush) return ownqj_GetHuffmanStatistics8x8_ACFlush_JPEG_16s_C1(statistics, state);
    if (QelStatus bad = first(pointers(src), values(isValid(band)))) return bad;
    return (kernels<ProgressiveEncodeKernels>().*kernel)(src, statistics, band, state);
}

// The DC difference after the point transform.
int takeDcDifference(const int16_t* block, int al, int16_t* lastDc)
{
    auto dc = (int16_t)(coefficientAt(block, 0) >> al);
    int difference = dc - *lastDc;
    *lastDc = dc;
    return difference;
}

}

QelStatus qeliEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                     int* pDstCurrPos, int16_t* pLastDC, int al,
                                                     const QelEncodeHuffmanSpec* pDcTable,
                                                     QelEncodeHuffmanState* pState, int flush)
{
    if (QelStatus bad = first(checkStream(pDst, dstLenBytes, pDstCurrPos, pState), pointers(pDcTable))) return bad;
    PlainWriter out = {pDst, dstLenBytes, pDstCurrPos, pState};
    if (flush) return out.flush();
    if (QelStatus bad = first(pointers(pSrc, pLastDC), values(isPointTransform(al)))) return bad;
    int difference = takeDcDifference(pSrc, al, pLastDC), category = categoryOf(difference);
    if (category > kLargestDcCategory) return qelStsJPEGHuffTableErr;
    if (pDcTable->entries[category] == 0) return qelStsJPEGHuffSpecErr;
    if (out.writeShort(pDcTable, magnitudeOf(difference))) return qelStsNoErr;
    if (QelStatus bad = out.writeSymbol(pDcTable, category)) return bad;
    return out.writeValue(difference, category);
}

QelStatus qeliEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                      int* pDstCurrPos, int al, QelEncodeHuffmanState* pState,
                                                      int flush)
{
    if (QelStatus bad = checkStream(pDst, dstLenBytes, pDstCurrPos, pState)) return bad;
    PlainWriter out = {pDst, dstLenBytes, pDstCurrPos, pState};
    if (flush) return out.flush();
    if (QelStatus bad = first(pointers(pSrc), values(isPointTransform(al)))) return bad;
    return out.write((uint32_t)(coefficientAt(pSrc, 0) >> al), 1);
}

QelStatus qeliEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                     int* pDstCurrPos, int ss, int se, int al,
                                                     const QelEncodeHuffmanSpec* pAcTable,
                                                     QelEncodeHuffmanState* pState, int flush)
{
    return encodeAc(&ProgressiveEncodeKernels::encodeFirst, writeFirst, pSrc, pDst, dstLenBytes, pDstCurrPos,
                    {ss, se, al}, pAcTable, pState, flush);
}

QelStatus qeliEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                      int* pDstCurrPos, int ss, int se, int al,
                                                      const QelEncodeHuffmanSpec* pAcTable,
                                                      QelEncodeHuffmanState* pState, int flush)
{
    return encodeAc(&ProgressiveEncodeKernels::encodeRefinement, writeRefinement, pSrc, pDst, dstLenBytes, pDstCurrPos,
                    {ss, se, al}, pAcTable, pState, flush);
}

QelStatus qeliGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pDcStatistics,
                                                          int16_t* pLastDC, int al)
{
    if (QelStatus bad = first(pointers(pSrc, pDcStatistics, pLastDC), values(isPointTransform(al)))) return bad;
    int category = categoryOf(takeDcDifference(pSrc, al, pLastDC));
    if (category > kLargestDcCategory) return qelStsJPEGHuffTableErr;
    ++pDcStatistics[category];
    return qelStsNoErr;
}

QelStatus qeliGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pAcStatistics, int ss, int se,
                                                          int al, QelEncodeHuffmanState* pState, int flush)
{
    return countAc(&ProgressiveEncodeKernels::countFirst, pSrc, pAcStatistics, {ss, se, al}, pState, flush);
}

QelStatus qeliGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pAcStatistics, int ss, int se,
                                                           int al, QelEncodeHuffmanState* pState, int flush)
{
    return countAc(&ProgressiveEncodeKernels::countRefinement, pSrc, pAcStatistics, {ss, se, al}, pState, flush);
}

QelStatus ownqj_EncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int dstLen, int* pos, int ss,
                                                       int se, int al, const QelEncodeHuffmanSpec* ac,
                                                       QelEncodeHuffmanState* state)
{
    return encodeBand(kernels<ProgressiveEncodeKernels>().encodeFirst, writeFirst, src, dst, dstLen, pos, {ss, se, al},
                      ac, state);
}

QelStatus ownqj_EncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(const int16_t* src, uint8_t* dst, int dstLen, int* pos, int ss,
                                                        int se, int al, const QelEncodeHuffmanSpec* ac,
                                                        QelEncodeHuffmanState* state)
{
    return encodeBand(kernels<ProgressiveEncodeKernels>().encodeRefinement, writeRefinement, src, dst, dstLen, pos,
                      {ss, se, al}, ac, state);
}

QelStatus ownqj_EncodeHuffman8x8_ACFlush_JPEG_16s1u_C1(uint8_t* dst, int dstLen, int* pos,
                                                       const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state)
{
    BandWriter sink = {{dst, dstLen, pos, state}, ac};
    limitCorrections(state);
    if (QelStatus bad = endRun(sink, state)) return bad;
    if (QelStatus bad = sink.bits(0x7F, 7)) return bad;
    ownqj_EncodeHuffmanStateInit(state);
    return qelStsNoErr;
}

QelStatus ownqj_count_eobrun(uint32_t* statistics, QelEncodeHuffmanState* state)
{
    return kernels<ProgressiveEncodeKernels>().countRun(statistics, state);
}

QelStatus ownqj_GetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(const int16_t* src, uint32_t* statistics, int ss, int se,
                                                             int al, QelEncodeHuffmanState* state)
{
    return kernels<ProgressiveEncodeKernels>().countRefinement(src, statistics, {ss, se, al}, state);
}

QelStatus ownqj_GetHuffmanStatistics8x8_ACFlush_JPEG_16s_C1(uint32_t* statistics, QelEncodeHuffmanState* state)
{
    if (QelStatus bad = ownqj_count_eobrun(statistics, state)) return bad;
    ownqj_EncodeHuffmanStateInit(state);
    return qelStsNoErr;
}
