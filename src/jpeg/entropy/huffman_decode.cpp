// Sequential Huffman decoding: exported functions, and the doors to the steps of the readers.
#include "jpeg/entropy/huffman_decode.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "jpeg/entropy/huffman_bits.h"
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

QelStatus ownqj_DecodeHuffman8x8_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos, int16_t* dst, int16_t* lastDc,
                                               uint32_t* marker, const QelDecodeHuffmanSpec* dc,
                                               const QelDecodeHuffmanSpec* ac, QelDecodeHuffmanState* state)
{
    return kernels<HuffmanDecodeKernels>().decodeBlock(src, srcLen, pos, dst, lastDc, marker, dc, ac, state);
}

QelStatus ownqj_DecodeHuffman8x8_Direct_JPEG_1u16s_C1(const uint8_t* src, int* bitPosition, int16_t* dst,
                                                      int16_t* lastDc, uint32_t* marker, uint32_t* bits, int* count,
                                                      const QelDecodeHuffmanSpec* dc, const QelDecodeHuffmanSpec* ac)
{
    return kernels<HuffmanDecodeKernels>().decodeBlockDirect(src, bitPosition, dst, lastDc, marker, bits, count, dc,
                                                             ac);
}

QelStatus ownqj_DecodeHuffmanOne_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos, int16_t* dst, uint32_t* marker,
                                               const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state)
{
    return kernels<HuffmanDecodeKernels>().decodeOne(src, srcLen, pos, dst, marker, spec, state);
}

QelStatus ownqj_FillBitBuffer(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int needed,
                              QelDecodeHuffmanState* state)
{
    return kernels<HuffmanDecodeKernels>().fill(src, srcLen, pos, marker, needed, state);
}

QelStatus ownqj_DecodeHuffSymbol(const uint8_t* src, int srcLen, int* pos, uint32_t* marker,
                                 const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state, int* symbol)
{
    return kernels<HuffmanDecodeKernels>().symbol(src, srcLen, pos, marker, spec, state, symbol);
}

QelStatus ownqj_DecodeHuffLongCodes(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int length,
                                    const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state, int* symbol)
{
    return kernels<HuffmanDecodeKernels>().longCode(src, srcLen, pos, marker, length, spec, state, symbol);
}

void ownqj_PrefetchBits(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count)
{
    kernels<HuffmanDecodeKernels>().fillDirect(src, pos, marker, bits, count);
}

int ownqj_HuffDecode(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count,
                     const QelDecodeHuffmanSpec* spec)
{
    return kernels<HuffmanDecodeKernels>().symbolDirect(src, pos, marker, bits, count, spec);
}

int ownqj_DecodeLongBits(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count, int length,
                         const QelDecodeHuffmanSpec* spec)
{
    return kernels<HuffmanDecodeKernels>().longCodeDirect(src, pos, marker, bits, count, length, spec);
}
