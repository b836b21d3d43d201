// SPDX-License-Identifier: Apache-2.0
// Sequential Huffman decoding: public functions.
#include "jpeg/entropy/huffman_decode.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "jpeg/entropy/huffman_reading.h"

using namespace qel;

QelStatus qeliDecodeHuffman8x8_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos, int16_t* pDst,
                                             int16_t* pLastDC, uint32_t* pMarker, const QelDecodeHuffmanSpec* pDcTable,
                                             const QelDecodeHuffmanSpec* pAcTable, QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = first(pointers(pSrc), values(srcLenBytes >= 0),
                              pointers(pSrcCurrPos, pDst, pLastDC, pMarker, pDcTable, pAcTable, pState)))
        return bad;
    if (*pSrcCurrPos < 0) return qelStsBadArgErr;
    return kernels<HuffmanDecodeKernels>().decodeBlock(pSrc, srcLenBytes, pSrcCurrPos, pDst, pLastDC, pMarker, pDcTable,
                                                       pAcTable, pState);
}

QelStatus qeliDecodeHuffman8x8_Direct_JPEG_1u16s_C1(const uint8_t* pSrc, int* pSrcBitsLen, int16_t* pDst,
                                                    int16_t* pLastDC, uint32_t* pMarker, uint32_t* pPrefetchedBits,
                                                    int* pNumValidPrefetchedBits, const QelDecodeHuffmanSpec* pDcTable,
                                                    const QelDecodeHuffmanSpec* pAcTable)
{
    if (QelStatus bad = pointers(pSrc, pSrcBitsLen, pDst, pLastDC, pMarker, pPrefetchedBits, pNumValidPrefetchedBits,
                                 pDcTable, pAcTable))
        return bad;
    if (*pSrcBitsLen < 0 || *pNumValidPrefetchedBits < 0 || *pNumValidPrefetchedBits > 32) return qelStsBadArgErr;
    return kernels<HuffmanDecodeKernels>().decodeBlockDirect(pSrc, pSrcBitsLen, pDst, pLastDC, pMarker, pPrefetchedBits,
                                                             pNumValidPrefetchedBits, pDcTable, pAcTable);
}

namespace {

__attribute__((noinline)) QelStatus faultOfOne(const uint8_t* src, int srcLen, const int* pos, const int16_t* dst,
                                               const uint32_t* marker, const QelDecodeHuffmanSpec* spec,
                                               const QelDecodeHuffmanState* state)
{
    if (QelStatus bad = first(pointers(src), values(srcLen >= 0), pointers(pos, dst, marker, spec, state))) return bad;
    return qelStsBadArgErr;
}

}

QelStatus qeliDecodeHuffmanOne_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos, int16_t* pDst,
                                             uint32_t* pMarker, const QelDecodeHuffmanSpec* pTable,
                                             QelDecodeHuffmanState* pState)
{
    // With so little to do, which fault comes first is asked where there is one.
    bool isSound = pSrc && pSrcCurrPos && (srcLenBytes | *pSrcCurrPos) >= 0 && pMarker && pDst && pTable && pState;
    if (!isSound) return faultOfOne(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, pTable, pState);
    if (takeHeldValue(*pTable, pState, pDst)) return qelStsNoErr;
    return kernels<HuffmanDecodeKernels>().decodeOne(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, pTable, pState);
}
