// Progressive Huffman decoding: exported functions, and the doors to the kernels of AC scans.
#include "jpeg/progressive_decode.h"

#include "core/checks.h"
#include "core/dispatch.h"

using namespace qel;

namespace {

// The scan parameters are tested before the last pointers.
QelStatus source(const uint8_t* pSrc, int srcLenBytes) { return first(pointers(pSrc), length(srcLenBytes)); }
QelStatus pointTransform(int al) { return values(al >= 0 && al < 14); }
QelStatus band(int ss, int se, int al) { return first(values(ss >= 1 && ss <= se && se <= 63), pointTransform(al)); }

QelStatus acScan(const uint8_t* pSrc, int srcLenBytes, const int* pSrcCurrPos, const int16_t* pDst,
                 const uint32_t* pMarker, int ss, int se, int al, const QelDecodeHuffmanSpec* pAcTable,
                 const QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = first(source(pSrc, srcLenBytes), pointers(pSrcCurrPos, pDst, pMarker), band(ss, se, al),
                              pointers(pAcTable, pState)))
        return bad;
    return values(*pSrcCurrPos >= 0);
}

}

QelStatus qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                     int16_t* pDst, int16_t* pLastDC, uint32_t* pMarker, int al,
                                                     const QelDecodeHuffmanSpec* pDcTable,
                                                     QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = first(source(pSrc, srcLenBytes), pointers(pSrcCurrPos, pDst, pLastDC, pMarker),
                              pointTransform(al), pointers(pDcTable, pState)))
        return bad;
    if (*pSrcCurrPos < 0) return qelStsBadArgErr;
    return kernels<ProgressiveDecodeKernels>().dcFirst(pSrc, srcLenBytes, pSrcCurrPos, pDst, pLastDC, pMarker, al,
                                                       pDcTable, pState);
}

QelStatus qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                      int16_t* pDst, uint32_t* pMarker, int al,
                                                      QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = first(source(pSrc, srcLenBytes), pointers(pSrcCurrPos, pDst, pMarker), pointTransform(al),
                              pointers(pState)))
        return bad;
    if (*pSrcCurrPos < 0) return qelStsBadArgErr;
    return kernels<ProgressiveDecodeKernels>().dcRefine(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, al, pState);
}

QelStatus qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                     int16_t* pDst, uint32_t* pMarker, int ss, int se, int al,
                                                     const QelDecodeHuffmanSpec* pAcTable,
                                                     QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = acScan(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, ss, se, al, pAcTable, pState)) return bad;
    return kernels<ProgressiveDecodeKernels>().acFirst(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, ss, se, al,
                                                       pAcTable, pState);
}

QelStatus qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                      int16_t* pDst, uint32_t* pMarker, int ss, int se, int al,
                                                      const QelDecodeHuffmanSpec* pAcTable,
                                                      QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = acScan(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, ss, se, al, pAcTable, pState)) return bad;
    return kernels<ProgressiveDecodeKernels>().acRefine(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, ss, se, al,
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
