// The irreversible 9/7 wavelet: exported functions.
#include "jpeg2k/wavelet97.h"

#include "core/dispatch.h"
#include "jpeg2k/wavelet_calls.h"
#include "qeljx/jpeg2k_transform.h"

using namespace qel;

namespace {

// Of the work buffer: the shortest line that needs one, and the samples of extension that it has room for.
constexpr int kLeast = 2, kExtension = 8;

}

QelStatus qeliWTFwdRow_D97_JPEG2K_32f_C1R(const float* pSrc, int srcStep, float* pDstLow, int dstLowStep,
                                          float* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    return forwardRows(kernels<Wavelet97Kernels>().of32f, pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep,
                       dstSize, phase);
}

QelStatus qeliWTInvRow_D97_JPEG2K_32f_C1R(const float* pSrcLow, int srcLowStep, const float* pSrcHigh, int srcHighStep,
                                          QelSize srcSize, float* pDst, int dstStep, int phase)
{
    return inverseRows(kernels<Wavelet97Kernels>().of32f, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst,
                       dstStep, phase);
}

QelStatus qeliWTFwdCol_D97_JPEG2K_32f_C1R(const float* pSrc, int srcStep, float* pDstLow, int dstLowStep,
                                          float* pDstHigh, int dstHighStep, QelSize dstSize, int phase)
{
    if (QelStatus bad = checkColumns(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize)) return bad;
    ownqj_WTFwdColStripe_D97_32f(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);
    return qelStsNoErr;
}

QelStatus qeliWTInvCol_D97_JPEG2K_32f_C1R(const float* pSrcLow, int srcLowStep, const float* pSrcHigh, int srcHighStep,
                                          QelSize srcSize, float* pDst, int dstStep, int phase)
{
    if (QelStatus bad = checkColumns(pDst, dstStep, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize)) return bad;
    ownqj_WTInvColStripe_D97_32f(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);
    return qelStsNoErr;
}

QelStatus qeliWTGetBufSize_D97_JPEG2K_16s_C1IR(const QelRect* pTileRect, int* pSize)
{
    return lineBufferSize<int16_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTGetBufSize_D97_JPEG2K_32s_C1IR(const QelRect* pTileRect, int* pSize)
{
    return lineBufferSize<int32_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_D97_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(kernels<Wavelet97Kernels>().of16s, Direction::forward, pSrcDst, srcDstStep, pTileRect,
                            pBuffer);
}

QelStatus qeliWTFwd_D97_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(kernels<Wavelet97Kernels>().of32s, Direction::forward, pSrcDst, srcDstStep, pTileRect,
                            pBuffer);
}

QelStatus qeliWTInv_D97_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(kernels<Wavelet97Kernels>().of16s, Direction::inverse, pSrcDst, srcDstStep, pTileRect,
                            pBuffer);
}

QelStatus qeliWTInv_D97_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)
{
    return transformInPlace(kernels<Wavelet97Kernels>().of32s, Direction::inverse, pSrcDst, srcDstStep, pTileRect,
                            pBuffer);
}

QelStatus qeliWTGetBufSize_D97_JPEG2K_16s_C1R(const QelRect* pTileRect, int* pSize)
{
    return tileBufferSize<int16_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTGetBufSize_D97_JPEG2K_32s_C1R(const QelRect* pTileRect, int* pSize)
{
    return tileBufferSize<int32_t>(pTileRect, pSize, kLeast, kExtension);
}

QelStatus qeliWTFwd_D97_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, const QelRect* pTileRect,
                                       int16_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer)
{
    return forwardTile(kernels<Wavelet97Kernels>().of16s, pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTFwd_D97_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, const QelRect* pTileRect,
                                       int32_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer)
{
    return forwardTile(kernels<Wavelet97Kernels>().of32s, pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTInv_D97_JPEG2K_16s_C1R(const int16_t* const pSrc[4], const int srcStep[4], const QelRect* pTileRect,
                                       int16_t* pDst, int dstStep, uint8_t* pBuffer)
{
    return inverseTile(kernels<Wavelet97Kernels>().of16s, pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

QelStatus qeliWTInv_D97_JPEG2K_32s_C1R(const int32_t* const pSrc[4], const int srcStep[4], const QelRect* pTileRect,
                                       int32_t* pDst, int dstStep, uint8_t* pBuffer)
{
    return inverseTile(kernels<Wavelet97Kernels>().of32s, pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);
}

void ownqj_WTFwd_D97_Row_16s(int16_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet97Kernels>().of16s, Direction::forward, line, len, phase);
}

void ownqj_WTFwd_D97_Row_32s(int32_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet97Kernels>().of32s, Direction::forward, line, len, phase);
}

void ownqj_WTFwd_D97_Col_16s(int16_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet97Kernels>().of16s, Direction::forward, line, len, phase);
}

void ownqj_WTFwd_D97_Col_32s(int32_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet97Kernels>().of32s, Direction::forward, line, len, phase);
}

void ownqj_WTInv_D97_Row_16s(int16_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet97Kernels>().of16s, Direction::inverse, line, len, phase);
}

void ownqj_WTInv_D97_Row_32s(int32_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet97Kernels>().of32s, Direction::inverse, line, len, phase);
}

void ownqj_WTInv_D97_Col_16s(int16_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet97Kernels>().of16s, Direction::inverse, line, len, phase);
}

void ownqj_WTInv_D97_Col_32s(int32_t* line, int len, int phase)
{
    liftLine(kernels<Wavelet97Kernels>().of32s, Direction::inverse, line, len, phase);
}

void ownqj_WTFwd_D97_32f(const float* src, float* low, float* high, int len, int phase)
{
    kernels<Wavelet97Kernels>().of32f.forwardRow(src, extendedLine(len, phase), low, high);
}

void ownqj_WTFwdColStripe_D97_32f(const float* src, int srcStep, float* low, int lowStep, float* high, int highStep,
                                  QelSize size, int phase)
{
    forwardColumns(kernels<Wavelet97Kernels>().of32f, src, srcStep, low, lowStep, high, highStep, size, phase);
}

void ownqj_WTInvColStripe_D97_32f(const float* low, int lowStep, const float* high, int highStep, QelSize size,
                                  float* dst, int dstStep, int phase)
{
    inverseColumns(kernels<Wavelet97Kernels>().of32f, low, lowStep, high, highStep, size, dst, dstStep, phase);
}
