// SPDX-License-Identifier: Apache-2.0
// Progressive Huffman encoding and statistics (T.81 G.1.2): public functions.
#include "jpeg/entropy/progressive_encode.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "jpeg/entropy/progressive_plain_writer.h"

using namespace qel;

namespace {

constexpr int kLargestDcCategory = 11;
constexpr int kLargestPointTransform = 13;

bool isPointTransform(int al) { return al >= 0 && al <= kLargestPointTransform; }
bool isValid(const Band& band)
{
    return band.ss >= 1 && band.ss <= band.se && band.se <= 63 && isPointTransform(band.al);
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
    BandWriter writer = {{dst, dstLen, pos, state}, ac};
    if (flush) return flushRun(writer, state);
    if (QelStatus bad = first(pointers(src), values(isValid(band)))) return bad;
    return encodeBand(kernels<ProgressiveEncodeKernels>().*kernel, plainly, src, band, writer, state);
}

template <class Kernel> inline QelStatus countAc(Kernel ProgressiveEncodeKernels::*kernel, const int16_t* src,
                                                 uint32_t* statistics, const Band& band, QelEncodeHuffmanState* state,
                                                 int flush)
{
    if (QelStatus bad = pointers(statistics, state)) return bad;
    if (flush) return flushCount(statistics, state);
    if (QelStatus bad = first(pointers(src), values(isValid(band)))) return bad;
    return (kernels<ProgressiveEncodeKernels>().*kernel)(src, statistics, band, state);
}

// The DC difference after the point transform.
int takeDcDifference(const int16_t* block, int al, int16_t* lastDc)
{
    auto dc = int16_t(coefficientAt(block, 0) >> al);
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
    return out.write(uint32_t(coefficientAt(pSrc, 0) >> al), 1);
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
