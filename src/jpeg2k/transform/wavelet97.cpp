// SPDX-License-Identifier: Apache-2.0
// The irreversible 9/7 wavelet: public functions.
#include "jpeg2k/transform/wavelet97.h"

#include "jpeg2k/transform/wavelet_calls.h"
#include "qeljx/jpeg2k_transform.h"

using namespace qel;

namespace {

// The shortest line that needs a work buffer, and the samples of extension that this has room for.
constexpr int kLeast = 2, kExtension = 8;

auto& of16s() { return kernels<Wavelet97Kernels>().of16s; }
auto& of32s() { return kernels<Wavelet97Kernels>().of32s; }
auto& of32f() { return kernels<Wavelet97Kernels>().of32f; }

}

QelStatus qeliWTFwdRow_D97_JPEG2K_32f_C1R(const float* pSrc, int srcStep, float* pDstLow, int dstLowStep,
                                          float* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    return forwardRows(of32f(), pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);
}

QelStatus qeliWTInvRow_D97_JPEG2K_32f_C1R(const float* pSrcLow, int srcLowStep, const float* pSrcHigh, int srcHighStep,
                                          QelSize srcSize, float* pDst, int dstStep, int phase)
{
    return inverseRows(of32f(), pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);
}

QelStatus qeliWTFwdCol_D97_JPEG2K_32f_C1R(const float* pSrc, int srcStep, float* pDstLow, int dstLowStep,
                                          float* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    if (QelStatus bad = checkColumns(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize)) return bad;
    forwardColumns(of32f(), pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);
    return qelStsNoErr;
}

QelStatus qeliWTInvCol_D97_JPEG2K_32f_C1R(const float* pSrcLow, int srcLowStep, const float* pSrcHigh, int srcHighStep,
                                          QelSize srcSize, float* pDst, int dstStep, int phase)
{
    if (QelStatus bad = checkColumns(pDst, dstStep, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize)) return bad;
    inverseColumns(of32f(), pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);
    return qelStsNoErr;
}

QelStatus qeliWTGetBufSize_D97_JPEG2K_16s_C1IR(const QelRect* pTileRect, int* pSize)
{
    return lineBufferSize<int16_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_D97_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(of16s(), Direction::forward, pSrcDst, srcDstStep, pTileRect, pBuffer);
}

QelStatus qeliWTInv_D97_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(of16s(), Direction::inverse, pSrcDst, srcDstStep, pTileRect, pBuffer);
}

QelStatus qeliWTGetBufSize_D97_JPEG2K_32s_C1IR(const QelRect* pTileRect, int* pSize)
{
    return lineBufferSize<int32_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_D97_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(of32s(), Direction::forward, pSrcDst, srcDstStep, pTileRect, pBuffer);
}

QelStatus qeliWTInv_D97_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(of32s(), Direction::inverse, pSrcDst, srcDstStep, pTileRect, pBuffer);
}

QelStatus qeliWTGetBufSize_D97_JPEG2K_16s_C1R(const QelRect* pTileRect, int* pSize)
{
    return tileBufferSize<int16_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_D97_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, const QelRect* pTileRect,
                                       int16_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer)
{
    return forwardTile(of16s(), pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTInv_D97_JPEG2K_16s_C1R(const int16_t* const pSrc[4], const int srcStep[4], const QelRect* pTileRect,
                                       int16_t* pDst, int dstStep, uint8_t* pBuffer)
{
    return inverseTile(of16s(), pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTGetBufSize_D97_JPEG2K_32s_C1R(const QelRect* pTileRect, int* pSize)
{
    return tileBufferSize<int32_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_D97_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, const QelRect* pTileRect,
                                       int32_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer)
{
    return forwardTile(of32s(), pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTInv_D97_JPEG2K_32s_C1R(const int32_t* const pSrc[4], const int srcStep[4], const QelRect* pTileRect,
                                       int32_t* pDst, int dstStep, uint8_t* pBuffer)
{
    return inverseTile(of32s(), pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}
