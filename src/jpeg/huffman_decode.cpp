// Sequential Huffman decoding: exported functions, and the doors to the steps of the readers.
#include "jpeg/huffman_decode.h"

#include <limits.h>

#include "core/checks.h"
#include "core/dispatch.h"
#include "jpeg/huffman_bits.h"

using namespace qel;

namespace {

// The caller's variables as a source, for the duration of a call: those of a stream with a state,
class StateStream {
public:
    StateStream(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, QelDecodeHuffmanState* state)
        : source{src, srcLen, *pos, *marker, bitsOf(*state), state->count}, pos_(pos), marker_(marker), state_(state)
    {}
    ~StateStream()
    {
        *pos_ = source.pos;
        *marker_ = source.marker;
        setBits(*state_, source.bits, source.count);
    }

    BitSource source;

private:
    int* pos_;
    uint32_t* marker_;
    QelDecodeHuffmanState* state_;
};

// and those of one without a state, and without a length.
class DirectStream {
public:
    DirectStream(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count)
        : source{src, INT_MAX, *pos, *marker, *bits, *count}, pos_(pos), marker_(marker), bits_(bits), count_(count)
    {}
    ~DirectStream()
    {
        *pos_ = source.pos;
        *marker_ = source.marker;
        *bits_ = (uint32_t)source.bits;
        *count_ = source.count;
    }

    BitSource source;

private:
    int* pos_;
    uint32_t* marker_;
    uint32_t* bits_;
    int* count_;
};

QelStatus symbolStatus(int found, int* symbol)
{
    if (found < 0) return qelStsJPEGOutOfBufErr;
    *symbol = found;
    return qelStsNoErr;
}

}

QelStatus qeliDecodeHuffman8x8_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos, int16_t* pDst,
                                             int16_t* pLastDC, uint32_t* pMarker, const QelDecodeHuffmanSpec* pDcTable,
                                             const QelDecodeHuffmanSpec* pAcTable, QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = first(pointers(pSrc), values(srcLenBytes >= 0),
                              pointers(pSrcCurrPos, pDst, pLastDC, pMarker, pDcTable, pAcTable, pState)))
        return bad;
    if (*pSrcCurrPos < 0) return qelStsBadArgErr;
    return ownqj_DecodeHuffman8x8_JPEG_1u16s_C1(pSrc, srcLenBytes, pSrcCurrPos, pDst, pLastDC, pMarker, pDcTable,
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
    return ownqj_DecodeHuffman8x8_Direct_JPEG_1u16s_C1(pSrc, pSrcBitsLen, pDst, pLastDC, pMarker, pPrefetchedBits,
                                                       pNumValidPrefetchedBits, pDcTable, pAcTable);
}

QelStatus qeliDecodeHuffmanOne_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos, int16_t* pDst,
                                             uint32_t* pMarker, const QelDecodeHuffmanSpec* pTable,
                                             QelDecodeHuffmanState* pState)
{
    if (QelStatus bad =
            first(pointers(pSrc), values(srcLenBytes >= 0), pointers(pSrcCurrPos, pDst, pMarker, pTable, pState)))
        return bad;
    if (*pSrcCurrPos < 0) return qelStsBadArgErr;
    return ownqj_DecodeHuffmanOne_JPEG_1u16s_C1(pSrc, srcLenBytes, pSrcCurrPos, pDst, pMarker, pTable, pState);
}

QelStatus ownqj_DecodeHuffman8x8_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos, int16_t* dst, int16_t* lastDc,
                                               uint32_t* marker, const QelDecodeHuffmanSpec* dc,
                                               const QelDecodeHuffmanSpec* ac, QelDecodeHuffmanState* state)
{
    StateStream stream(src, srcLen, pos, marker, state);
    return kernels<HuffmanDecodeKernels>().decodeBlock(&stream.source, dst, lastDc, {dc, ac}, &state->positionsLeft);
}

// The bit position is that of a byte: bits of it that have been read are in `bits`.
QelStatus ownqj_DecodeHuffman8x8_Direct_JPEG_1u16s_C1(const uint8_t* src, int* bitPosition, int16_t* dst,
                                                      int16_t* lastDc, uint32_t* marker, uint32_t* bits, int* count,
                                                      const QelDecodeHuffmanSpec* dc, const QelDecodeHuffmanSpec* ac)
{
    int pos = *bitPosition / 8;
    QelStatus status;
    {
        DirectStream stream(src, &pos, marker, bits, count);
        status = kernels<HuffmanDecodeKernels>().decodeBlockDirect(&stream.source, dst, lastDc, {dc, ac});
    }
    if (status == qelStsJPEGMarkerWarn) return qelStsNoErr;
    *bitPosition = (int)((uint32_t)pos * 8);
    return status;
}

QelStatus ownqj_DecodeHuffmanOne_JPEG_1u16s_C1(const uint8_t* src, int srcLen, int* pos, int16_t* dst, uint32_t* marker,
                                               const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state)
{
    StateStream stream(src, srcLen, pos, marker, state);
    return kernels<HuffmanDecodeKernels>().decodeOne(&stream.source, spec, dst);
}

QelStatus ownqj_FillBitBuffer(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int needed,
                              QelDecodeHuffmanState* state)
{
    StateStream stream(src, srcLen, pos, marker, state);
    return kernels<HuffmanDecodeKernels>().fill(&stream.source, needed);
}

QelStatus ownqj_DecodeHuffSymbol(const uint8_t* src, int srcLen, int* pos, uint32_t* marker,
                                 const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state, int* symbol)
{
    StateStream stream(src, srcLen, pos, marker, state);
    return symbolStatus(kernels<HuffmanDecodeKernels>().symbol(&stream.source, spec), symbol);
}

QelStatus ownqj_DecodeHuffLongCodes(const uint8_t* src, int srcLen, int* pos, uint32_t* marker, int length,
                                    const QelDecodeHuffmanSpec* spec, QelDecodeHuffmanState* state, int* symbol)
{
    StateStream stream(src, srcLen, pos, marker, state);
    return symbolStatus(kernels<HuffmanDecodeKernels>().longCode(&stream.source, spec, length), symbol);
}

void ownqj_PrefetchBits(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count)
{
    DirectStream stream(src, pos, marker, bits, count);
    kernels<HuffmanDecodeKernels>().fillDirect(&stream.source);
}

int ownqj_HuffDecode(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count,
                     const QelDecodeHuffmanSpec* spec)
{
    DirectStream stream(src, pos, marker, bits, count);
    return kernels<HuffmanDecodeKernels>().symbolDirect(&stream.source, spec);
}

int ownqj_DecodeLongBits(const uint8_t* src, int* pos, uint32_t* marker, uint32_t* bits, int* count, int length,
                         const QelDecodeHuffmanSpec* spec)
{
    DirectStream stream(src, pos, marker, bits, count);
    return kernels<HuffmanDecodeKernels>().longCodeDirect(&stream.source, spec, length);
}
