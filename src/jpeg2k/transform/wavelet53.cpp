// SPDX-License-Identifier: Apache-2.0
// The reversible 5/3 wavelet: public functions.
#include "jpeg2k/transform/wavelet53.h"

#include "jpeg2k/transform/wavelet_calls.h"
#include "qeljx/jpeg2k_transform.h"

using namespace qel;

namespace {

// The shortest line that needs a work buffer, and the samples of extension that this has room for.
constexpr int kLeast = 3, kExtension = 4;

auto& of16s() { return kernels<Wavelet53Kernels>().of16s; }
auto& of32s() { return kernels<Wavelet53Kernels>().of32s; }

}

QelStatus qeliWTFwdRow_B53_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDstLow, int dstLowStep,
                                          int16_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    return forwardRows(of16s(), pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);
}

QelStatus qeliWTInvRow_B53_JPEG2K_16s_C1R(const int16_t* pSrcLow, int srcLowStep, const int16_t* pSrcHigh,
                                          int srcHighStep, QelSize srcSize, int16_t* pDst, int dstStep, int phase)
{
    return inverseRows(of16s(), pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);
}

QelStatus qeliWTFwdRow_B53_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, int32_t* pDstLow, int dstLowStep,
                                          int32_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    return forwardRows(of32s(), pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);
}

QelStatus qeliWTInvRow_B53_JPEG2K_32s_C1R(const int32_t* pSrcLow, int srcLowStep, const int32_t* pSrcHigh,
                                          int srcHighStep, QelSize srcSize, int32_t* pDst, int dstStep, int phase)
{
    return inverseRows(of32s(), pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);
}

QelStatus qeliWTFwdCol_B53_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDstLow, int dstLowStep,
                                          int16_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    if (QelStatus bad = checkColumns(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize)) return bad;
    forwardColumns(of16s(), pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);
    return qelStsNoErr;
}

QelStatus qeliWTInvCol_B53_JPEG2K_16s_C1R(const int16_t* pSrcLow, int srcLowStep, const int16_t* pSrcHigh,
                                          int srcHighStep, QelSize srcSize, int16_t* pDst, int dstStep, int phase)
{
    if (QelStatus bad = checkColumns(pDst, dstStep, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize)) return bad;
    inverseColumns(of16s(), pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);
    return qelStsNoErr;
}

QelStatus qeliWTFwdCol_B53_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, int32_t* pDstLow, int dstLowStep,
                                          int32_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    if (QelStatus bad = checkColumns(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize)) return bad;
    forwardColumns(of32s(), pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);
    return qelStsNoErr;
}

QelStatus qeliWTInvCol_B53_JPEG2K_32s_C1R(const int32_t* pSrcLow, int srcLowStep, const int32_t* pSrcHigh,
                                          int srcHighStep, QelSize srcSize, int32_t* pDst, int dstStep, int phase)
{
    if (QelStatus bad = checkColumns(pDst, dstStep, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize)) return bad;
    inverseColumns(of32s(), pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);
    return qelStsNoErr;
}

QelStatus qeliWTGetBufSize_B53_JPEG2K_16s_C1IR(const QelRect* pTileRect, int* pSize)
{
    return lineBufferSize<int16_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_B53_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(of16s(), Direction::forward, pSrcDst, srcDstStep, pTileRect, pBuffer);
}

QelStatus qeliWTInv_B53_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(of16s(), Direction::inverse, pSrcDst, srcDstStep, pTileRect, pBuffer);
}

QelStatus qeliWTGetBufSize_B53_JPEG2K_32s_C1IR(const QelRect* pTileRect, int* pSize)
{
    return lineBufferSize<int32_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_B53_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(of32s(), Direction::forward, pSrcDst, srcDstStep, pTileRect, pBuffer);
}

QelStatus qeliWTInv_B53_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(of32s(), Direction::inverse, pSrcDst, srcDstStep, pTileRect, pBuffer);
}

QelStatus qeliWTGetBufSize_B53_JPEG2K_16s_C1R(const QelRect* pTileRect, int* pSize)
{
    return tileBufferSize<int16_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_B53_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, const QelRect* pTileRect,
                                       int16_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer)
{
    return forwardTile(of16s(), pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTInv_B53_JPEG2K_16s_C1R(const int16_t* const pSrc[4], const int srcStep[4], const QelRect* pTileRect,
                                       int16_t* pDst, int dstStep, uint8_t* pBuffer)
{
    return inverseTile(of16s(), pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTGetBufSize_B53_JPEG2K_32s_C1R(const QelRect* pTileRect, int* pSize)
{
    return tileBufferSize<int32_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_B53_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, const QelRect* pTileRect,
                                       int32_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer)
{
    return forwardTile(of32s(), pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTInv_B53_JPEG2K_32s_C1R(const int32_t* const pSrc[4], const int srcStep[4], const QelRect* pTileRect,
                                       int32_t* pDst, int dstStep, uint8_t* pBuffer)
{
    return inverseTile(of32s(), pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}
