// Progressive Huffman decoding: exported functions, and the doors to the kernels of AC scans.
#include "jpeg/progressive_decode.h"

#include "core/checks.h"
#include "core/dispatch.h"

using namespace qel;

namespace {

// The scan parameters are tested before the last pointers.
QelStatus source(const uint8_t* pSrc, int srcLenBytes) { return first(pointers(pSrc), length(srcLenBytes)); }
QelStatus pointTransform(int Al) { return values(Al >= 0 && Al < 14); }
QelStatus band(int Ss, int Se, int Al) { return first(values(Ss >= 1 && Ss <= Se && Se <= 63), pointTransform(Al)); }

QelStatus acScan(const uint8_t* pSrc, int srcLenBytes, const int* pSrcCurrPos, const int16_t* pDst,
                 const uint32_t* pMarker, int Ss, int Se, int Al, const QelDecodeHuffmanSpec* pAcTable,
                 const QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = first(source(pSrc, srcLenBytes), pointers(pSrcCurrPos, pDst, pMarker), band(Ss, Se, Al),
                              pointers(pAcTable, pState)))
        return bad;
    return values(*pSrcCurrPos >= 0);
}

}

QelStatus qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                     int16_t* pDst, int16_t* pLastDC, uint32_t* pMarker, int Al,
                                                     const QelDecodeHuffmanSpec* pDcTable,
                                                     QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = first(source(pSrc, srcLenBytes), pointers(pSrcCurrPos, pDst, pLastDC, pMarker),
                              pointTransform(Al), pointers(pDcTable, pState)))
        return bad;
    if (*pSrcCurrPos < 0) return qelStsBadArgErr;
    return kernels<ProgressiveDecodeKernels>().dcFirst(pSrc, srcLenBytes, pSrcCurrPos, pDst, pLastDC, pMarker, Al,
                                                       pDcTable, pState);
}

QelStatus qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                      int16_t* pDst, uint32_t* pMarker, int Al,
                                                      QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = first(source(pSrc, srcLenBytes), pointers(pSrcCurrPos, pDst, pMarker), pointTransform(Al),
                              pointers(pState)))
        return bad;
    if (*pSrcCurrPos < 0) return qelStsBadArgErr;
    return kernels<ProgressiveDecodeKernels>().dcRefine(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, Al, pState);
}

QelStatus qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                     int16_t* pDst, uint32_t* pMarker, int Ss, int Se, int Al,
                                                     const QelDecodeHuffmanSpec* pAcTable,
                                                     QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = acScan(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, Ss, Se, Al, pAcTable, pState)) return bad;
    return kernels<ProgressiveDecodeKernels>().acFirst(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, Ss, Se, Al,
                                                       pAcTable, pState);
}

QelStatus qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                      int16_t* pDst, uint32_t* pMarker, int Ss, int Se, int Al,
                                                      const QelDecodeHuffmanSpec* pAcTable,
                                                      QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = acScan(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, Ss, Se, Al, pAcTable, pState)) return bad;
    return kernels<ProgressiveDecodeKernels>().acRefine(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, Ss, Se, Al,
                                                        pAcTable, pState);
}

QelStatus ownqj_DecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos, int16_t* block,
                                                       uint32_t* marker, int ss, int se, int al,
                                                       const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    return kernels<ProgressiveDecodeKernels>().acFirst(src, srcLen, pos, block, marker, ss, se, al, table, state);
}

QelStatus ownqj_DecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos, int16_t* block,
                                                        uint32_t* marker, int ss, int se, int al,
                                                        const QelDecodeHuffmanSpec* table, QelDecodeHuffmanState* state)
{
    return kernels<ProgressiveDecodeKernels>().acRefine(src, srcLen, pos, block, marker, ss, se, al, table, state);
}
