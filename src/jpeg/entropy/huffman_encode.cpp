// SPDX-License-Identifier: Apache-2.0
// Sequential Huffman encoding and statistics: public functions, and the plain steps, which define what is written.
#include "jpeg/entropy/huffman_encode.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "jpeg/block/zigzag.h"
#include "jpeg/entropy/huffman_plain_writer.h"

using namespace qel;

namespace {

QelStatus encodeDc(const PlainWriter& out, int difference, const QelEncodeHuffmanSpec* dc)
{
    int category = categoryOf(difference);
    if (QelStatus bad = out.writeSymbol(dc, category)) return bad;
    return out.writeValue(difference, category);
}

QelStatus encodeAc(const PlainWriter& out, const int16_t* block, const QelEncodeHuffmanSpec* ac)
{
    int run = 0;
    for (int k = 1; k < 64; ++k) {
        int value = coefficientAt(block, own_qj_izigzag_index[k]), category = categoryOf(value);
        if (value == 0) {
            ++run;
            continue;
        }
        for (; run > 15; run -= 16)
            if (QelStatus bad = out.writeSymbol(ac, kSixteenZeros)) return bad;
        if (QelStatus bad = out.writeSymbol(ac, run << 4 | category)) return bad;
        if (QelStatus bad = out.writeValue(value, category)) return bad;
        run = 0;
    }
    return run == 0 ? qelStsNoErr : out.writeSymbol(ac, kEndOfBlock);
}

int takeDifference(const int16_t* block, int16_t* lastDc)
{
    int16_t dc = coefficientAt(block, 0);
    int difference = dc - *lastDc;
    *lastDc = dc;
    return difference;
}

// The two others that a call may come to have the arguments of the kernel, so that the exported function passes its own
// on as they are.
QelStatus flushStream(const int16_t*, uint8_t* dst, int dstLen, int* pos, int16_t*, const QelEncodeHuffmanSpec*,
                      const QelEncodeHuffmanSpec*, QelEncodeHuffmanState* state)
{
    return PlainWriter{dst, dstLen, pos, state}.flush();
}

QelStatus encodeNearEnd(const int16_t* src, uint8_t* dst, int dstLen, int* pos, int16_t* lastDc,
                        const QelEncodeHuffmanSpec* dc, const QelEncodeHuffmanSpec* ac, QelEncodeHuffmanState* state)
{
    PlainWriter out = {dst, dstLen, pos, state};
    if (out.room() >= HuffmanEncodeKernels::kRoomForBlock) {
        QelStatus status = kernels<HuffmanEncodeKernels>().encodeBlock(src, dst, dstLen, pos, lastDc, dc, ac, state);
        if (status != qelStsJPEGOutOfBufErr) return status;
    }
    if (QelStatus bad = encodeDc(out, takeDifference(src, lastDc), dc)) return bad;
    return encodeAc(out, src, ac);
}

}

QelStatus qeliEncodeHuffman8x8_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes, int* pDstCurrPos,
                                             int16_t* pLastDC, const QelEncodeHuffmanSpec* pDcTable,
                                             const QelEncodeHuffmanSpec* pAcTable, QelEncodeHuffmanState* pState,
                                             int flush)
{
    if (QelStatus bad = first(pointers(pDst), length(dstLenBytes), pointers(pDstCurrPos, pState))) return bad;
    auto encode = flushStream;
    if (!flush) {
        if (QelStatus bad = pointers(pSrc, pLastDC, pDcTable, pAcTable)) return bad;
        bool isFarFromEnd = dstLenBytes - int64_t(*pDstCurrPos) >= HuffmanEncodeKernels::kRoomForAnyBlock;
        encode = isFarFromEnd && *pDstCurrPos >= 0 ? kernels<HuffmanEncodeKernels>().encodeBlock : encodeNearEnd;
    }
    return encode(pSrc, pDst, dstLenBytes, pDstCurrPos, pLastDC, pDcTable, pAcTable, pState);
}

QelStatus qeliEncodeHuffman8x8_Direct_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int* pDstBitsLen,
                                                    int16_t* pLastDC, const QelEncodeHuffmanSpec* pDcTable,
                                                    const QelEncodeHuffmanSpec* pAcTable)
{
    if (QelStatus bad = pointers(pSrc, pDst, pDstBitsLen, pLastDC, pDcTable, pAcTable)) return bad;
    kernels<HuffmanEncodeKernels>().encodeBlockDirect(pSrc, pDst, pDstBitsLen, pLastDC, pDcTable, pAcTable);
    return qelStsNoErr;
}

// What writeShort leaves, faults of arguments, and the end of the scan. Failures to write are not reported. A
// difference of 32768 in magnitude has no bits after its category.
QelStatus qel::encodeOnePlainly(const int16_t* src, uint8_t* dst, int dstLen, int* pos,
                                const QelEncodeHuffmanSpec* spec, QelEncodeHuffmanState* state, int flush)
{
    if (QelStatus bad = first(pointers(dst), length(dstLen), pointers(pos, state))) return bad;
    PlainWriter out = {dst, dstLen, pos, state};
    if (flush) {
        out.flush();
        return qelStsNoErr;
    }
    if (QelStatus bad = pointers(src, spec)) return bad;
    int value = coefficientAt(src, 0), category = categoryOf(value);
    if (out.writeSymbol(spec, category) == qelStsNoErr && category < 16) out.writeValue(value, category);
    return qelStsNoErr;
}

QelStatus qeliEncodeHuffmanOne_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes, int* pDstCurrPos,
                                             const QelEncodeHuffmanSpec* pDcTable, QelEncodeHuffmanState* pState,
                                             int flush)
{
    // With so little to do, which fault comes first is asked where there is one.
    bool isPlain = pDst && pDstCurrPos && pState && pSrc && !flush && pDcTable;
    PlainWriter out = {pDst, dstLenBytes, pDstCurrPos, pState};
    if (isPlain && out.writeShort(pDcTable, magnitudeOf(coefficientAt(pSrc, 0)))) return qelStsNoErr;
    return encodeOnePlainly(pSrc, pDst, dstLenBytes, pDstCurrPos, pDcTable, pState, flush);
}

QelStatus qeliGetHuffmanStatistics8x8_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pDcStatistics, uint32_t* pAcStatistics,
                                                  int16_t* pLastDC)
{
    if (QelStatus bad = pointers(pSrc, pDcStatistics, pAcStatistics, pLastDC)) return bad;
    kernels<HuffmanEncodeKernels>().countBlock(pSrc, pDcStatistics, pAcStatistics, pLastDC);
    return qelStsNoErr;
}

QelStatus qeliGetHuffmanStatisticsOne_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pStatistics)
{
    if (QelStatus bad = pointers(pSrc, pStatistics)) return bad;
    int category = categoryOf(coefficientAt(pSrc, 0));
    if (category > 16) return qelStsOutOfRangeErr;
    ++pStatistics[category];
    return qelStsNoErr;
}
