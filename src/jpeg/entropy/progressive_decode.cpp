// SPDX-License-Identifier: Apache-2.0
// Progressive Huffman decoding: public functions.
#include "jpeg/entropy/progressive_decode.h"

#include "core/checks.h"
#include "core/dispatch.h"

using namespace qel;

namespace {

bool isPointTransform(int al) { return al >= 0 && al < 14; }
bool isBand(int ss, int se, int al) { return ss >= 1 && ss <= se && se <= 63 && isPointTransform(al); }

// Which fault comes first is asked where there is one. The scan parameters are tested before the last pointers.
template <class... Pointers> __attribute__((noinline)) QelStatus
faultOf(const uint8_t* pSrc, int srcLenBytes, QelStatus pointers, QelStatus parameters, const Pointers*... lastPointers)
{
    if (QelStatus bad =
            first(qel::pointers(pSrc), length(srcLenBytes), pointers, parameters, qel::pointers(lastPointers...)))
        return bad;
    return qelStsBadArgErr;
}

// What the exported functions of AC scans do, first and refinement.
template <class Kernel> inline QelStatus decodeAc(Kernel ProgressiveDecodeKernels::*kernel, const uint8_t* pSrc,
                                                  int srcLenBytes, int* pSrcCurrPos, int16_t* pDst, uint32_t* pMarker,
                                                  int ss, int se, int al, const QelDecodeHuffmanSpec* pAcTable,
                                                  QelDecodeHuffmanState* pState)
{
    bool isSound = pSrc && srcLenBytes >= 1 && pSrcCurrPos && *pSrcCurrPos >= 0 && pDst && pMarker &&
                   isBand(ss, se, al) && pAcTable && pState;
    if (!isSound)
        return faultOf(pSrc, srcLenBytes, pointers(pSrcCurrPos, pDst, pMarker), values(isBand(ss, se, al)), pAcTable,
                       pState);
    return (kernels<ProgressiveDecodeKernels>().*kernel)(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, ss, se, al,
                                                         pAcTable, pState);
}

}

QelStatus qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                     int16_t* pDst, int16_t* pLastDC, uint32_t* pMarker, int al,
                                                     const QelDecodeHuffmanSpec* pDcTable,
                                                     QelDecodeHuffmanState* pState)
{
    bool isSound = pSrc && srcLenBytes >= 1 && pSrcCurrPos && *pSrcCurrPos >= 0 && pDst && pLastDC && pMarker &&
                   isPointTransform(al) && pDcTable && pState;
    if (!isSound)
        return faultOf(pSrc, srcLenBytes, pointers(pSrcCurrPos, pDst, pLastDC, pMarker), values(isPointTransform(al)),
                       pDcTable, pState);
    return kernels<ProgressiveDecodeKernels>().dcFirst(pSrc, srcLenBytes, pSrcCurrPos, pDst, pLastDC, pMarker, al,
                                                       pDcTable, pState);
}

QelStatus qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                      int16_t* pDst, uint32_t* pMarker, int al,
                                                      QelDecodeHuffmanState* pState)
{
    bool isSound = pSrc && srcLenBytes >= 1 && pSrcCurrPos && *pSrcCurrPos >= 0 && pDst && pMarker &&
                   isPointTransform(al) && pState;
    if (!isSound)
        return faultOf(pSrc, srcLenBytes, pointers(pSrcCurrPos, pDst, pMarker), values(isPointTransform(al)), pState);
    return kernels<ProgressiveDecodeKernels>().dcRefine(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, al, pState);
}

QelStatus qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                     int16_t* pDst, uint32_t* pMarker, int ss, int se, int al,
                                                     const QelDecodeHuffmanSpec* pAcTable,
                                                     QelDecodeHuffmanState* pState)
{
    return decodeAc(&ProgressiveDecodeKernels::acFirst, pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, ss, se, al,
                    pAcTable, pState);
}

QelStatus qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                      int16_t* pDst, uint32_t* pMarker, int ss, int se, int al,
                                                      const QelDecodeHuffmanSpec* pAcTable,
                                                      QelDecodeHuffmanState* pState)
{
    return decodeAc(&ProgressiveDecodeKernels::acRefine, pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, ss, se, al,
                    pAcTable, pState);
}
