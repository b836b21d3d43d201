// The reversible 5/3 wavelet: exported functions.
#include "jpeg2k/wavelet53.h"

#include "core/dispatch.h"
#include "jpeg2k/wavelet_calls.h"
#include "qeljx/jpeg2k_transform.h"

using namespace qel;

namespace {

// Of the work buffer: the shortest line that needs one, and the samples of extension that it has room for.
constexpr int kLeast = 3, kExtension = 4;

}

QelStatus qeliWTFwdRow_B53_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDstLow, int dstLowStep,
                                          int16_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    return forwardRows(kernels<Wavelet53Kernels>().of16s, pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep,
                       dstSize, phase);
}

QelStatus qeliWTFwdRow_B53_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, int32_t* pDstLow, int dstLowStep,
                                          int32_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    return forwardRows(kernels<Wavelet53Kernels>().of32s, pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep,
                       dstSize, phase);
}

QelStatus qeliWTInvRow_B53_JPEG2K_16s_C1R(const int16_t* pSrcLow, int srcLowStep, const int16_t* pSrcHigh,
                                          int srcHighStep, QelSize srcSize, int16_t* pDst, int dstStep, int phase)
{
    return inverseRows(kernels<Wavelet53Kernels>().of16s, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst,
                       dstStep, phase);
}

QelStatus qeliWTInvRow_B53_JPEG2K_32s_C1R(const int32_t* pSrcLow, int srcLowStep, const int32_t* pSrcHigh,
                                          int srcHighStep, QelSize srcSize, int32_t* pDst, int dstStep, int phase)
{
    return inverseRows(kernels<Wavelet53Kernels>().of32s, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst,
                       dstStep, phase);
}

QelStatus qeliWTFwdCol_B53_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDstLow, int dstLowStep,
                                          int16_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    if (QelStatus bad = checkColumns(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize)) return bad;
    ownqj_WTFwdColStrip_B53_16s(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);
    return qelStsNoErr;
}

QelStatus qeliWTFwdCol_B53_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, int32_t* pDstLow, int dstLowStep,
                                          int32_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    if (QelStatus bad = checkColumns(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize)) return bad;
    ownqj_WTFwdColStrip_B53_32s(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);
    return qelStsNoErr;
}

QelStatus qeliWTInvCol_B53_JPEG2K_16s_C1R(const int16_t* pSrcLow, int srcLowStep, const int16_t* pSrcHigh,
                                          int srcHighStep, QelSize srcSize, int16_t* pDst, int dstStep, int phase)
{
    if (QelStatus bad = checkColumns(pDst, dstStep, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize)) return bad;
    ownqj_WTInvColStrip_B53_16s(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);
    return qelStsNoErr;
}

QelStatus qeliWTInvCol_B53_JPEG2K_32s_C1R(const int32_t* pSrcLow, int srcLowStep, const int32_t* pSrcHigh,
                                          int srcHighStep, QelSize srcSize, int32_t* pDst, int dstStep, int phase)
{
    if (QelStatus bad = checkColumns(pDst, dstStep, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize)) return bad;
    ownqj_WTInvColStrip_B53_32s(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);
    return qelStsNoErr;
}

QelStatus qeliWTGetBufSize_B53_JPEG2K_16s_C1IR(const QelRect* pTileRect, int* pSize)
{
    return lineBufferSize<int16_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTGetBufSize_B53_JPEG2K_32s_C1IR(const QelRect* pTileRect, int* pSize)
{
    return lineBufferSize<int32_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_B53_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(kernels<Wavelet53Kernels>().of16s, Direction::forward, pSrcDst, srcDstStep, pTileRect,
                            pBuffer);
}

QelStatus qeliWTFwd_B53_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(kernels<Wavelet53Kernels>().of32s, Direction::forward, pSrcDst, srcDstStep, pTileRect,
                            pBuffer);
}

QelStatus qeliWTInv_B53_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(kernels<Wavelet53Kernels>().of16s, Direction::inverse, pSrcDst, srcDstStep, pTileRect,
                            pBuffer);
}

QelStatus qeliWTInv_B53_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(kernels<Wavelet53Kernels>().of32s, Direction::inverse, pSrcDst, srcDstStep, pTileRect,
                            pBuffer);
}

QelStatus qeliWTGetBufSize_B53_JPEG2K_16s_C1R(const QelRect* pTileRect, int* pSize)
{
    return tileBufferSize<int16_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTGetBufSize_B53_JPEG2K_32s_C1R(const QelRect* pTileRect, int* pSize)
{
    return tileBufferSize<int32_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_B53_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, const QelRect* pTileRect,
                                       int16_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer)
{
    return forwardTile(kernels<Wavelet53Kernels>().of16s, pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTFwd_B53_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, const QelRect* pTileRect,
                                       int32_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer)
{
    return forwardTile(kernels<Wavelet53Kernels>().of32s, pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTInv_B53_JPEG2K_16s_C1R(const int16_t* const pSrc[4], const int srcStep[4], const QelRect* pTileRect,
                                       int16_t* pDst, int dstStep, uint8_t* pBuffer)
{
    return inverseTile(kernels<Wavelet53Kernels>().of16s, pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTInv_B53_JPEG2K_32s_C1R(const int32_t* const pSrc[4], const int srcStep[4], const QelRect* pTileRect,
                                       int32_t* pDst, int dstStep, uint8_t* pBuffer)
{
    return inverseTile(kernels<Wavelet53Kernels>().of32s, pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

void ownqj_WTFwd_B53_16s(const int16_t* src, int16_t* low, int16_t* high, int len, int phase)
{
    kernels<Wavelet53Kernels>().of16s.forwardRow(src, extendedLine(len, phase), low, high);
}

void ownqj_WTFwd_B53_32s(const int32_t* src, int32_t* low, int32_t* high, int len, int phase)
{
    kernels<Wavelet53Kernels>().of32s.forwardRow(src, extendedLine(len, phase), low, high);
}

void ownqj_WTInv_B53_16s(const int16_t* low, const int16_t* high, int16_t* dst, int len, int phase)
{
    kernels<Wavelet53Kernels>().of16s.inverseRow(low, high, extendedLine(len, phase), dst);
}

void ownqj_WTInv_B53_32s(const int32_t* low, const int32_t* high, int32_t* dst, int len, int phase)
{
    kernels<Wavelet53Kernels>().of32s.inverseRow(low, high, extendedLine(len, phase), dst);
}

void ownqj_WTFwd_B53_16s_NT(const int16_t* src, int16_t* low, int16_t* high, int len, int phase)
{
    forwardRowPastCaches(kernels<Wavelet53Kernels>().of16s, src, low, high, len, phase);
}

void ownqj_WTFwd_B53_32s_NT(const int32_t* src, int32_t* low, int32_t* high, int len, int phase)
{
    forwardRowPastCaches(kernels<Wavelet53Kernels>().of32s, src, low, high, len, phase);
}

void ownqj_WTInv_B53_16s_NT(const int16_t* low, const int16_t* high, int16_t* dst, int len, int phase)
{
    inverseRowPastCaches(kernels<Wavelet53Kernels>().of16s, low, high, dst, len, phase);
}

void ownqj_WTInv_B53_32s_NT(const int32_t* low, const int32_t* high, int32_t* dst, int len, int phase)
{
    inverseRowPastCaches(kernels<Wavelet53Kernels>().of32s, low, high, dst, len, phase);
}

void ownqj_WTFwd_B53_16s_I(int16_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet53Kernels>().of16s, Direction::forward, line, len, phase);
}

void ownqj_WTFwd_B53_32s_I(int32_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet53Kernels>().of32s, Direction::forward, line, len, phase);
}

void ownqj_WTInv_B53_16s_I(int16_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet53Kernels>().of16s, Direction::inverse, line, len, phase);
}

void ownqj_WTInv_B53_32s_I(int32_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet53Kernels>().of32s, Direction::inverse, line, len, phase);
}

void ownqj_WTFwdColStrip_B53_16s(const int16_t* src, int srcStep, int16_t* low, int lowStep, int16_t* high,
                                 int highStep, QelSize size, int phase)
{
    forwardColumns(kernels<Wavelet53Kernels>().of16s, src, srcStep, low, lowStep, high, highStep, size, phase);
}

void ownqj_WTFwdColStrip_B53_32s(const int32_t* src, int srcStep, int32_t* low, int lowStep, int32_t* high,
                                 int highStep, QelSize size, int phase)
{
    forwardColumns(kernels<Wavelet53Kernels>().of32s, src, srcStep, low, lowStep, high, highStep, size, phase);
}

void ownqj_WTInvColStrip_B53_16s(const int16_t* low, int lowStep, const int16_t* high, int highStep, QelSize size,
                                 int16_t* dst, int dstStep, int phase)
{
    inverseColumns(kernels<Wavelet53Kernels>().of16s, low, lowStep, high, highStep, size, dst, dstStep, phase);
}

void ownqj_WTInvColStrip_B53_32s(const int32_t* low, int lowStep, const int32_t* high, int highStep, QelSize size,
                                 int32_t* dst, int dstStep, int phase)
{
    inverseColumns(kernels<Wavelet53Kernels>().of32s, low, lowStep, high, highStep, size, dst, dstStep, phase);
}
