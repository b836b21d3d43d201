// SPDX-License-Identifier: Apache-2.0
// The 8x8 DCT: public functions.
#include "jpeg/block/dct.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "qeljx/jpeg_block.h"

using namespace qel;

QelStatus qeliDCTQuantFwd8x8LS_JPEG_8u16s_C1R(const uint8_t* pSrc, int srcStep, int16_t* pDst,
                                              const uint16_t* pEncTable)
{
    if (QelStatus bad = first(pointers(pSrc, pDst), steps(srcStep), pointers(pEncTable))) return bad;
    return kernels<DctKernels>().forwardQuantSamples(pSrc, srcStep, pDst, pEncTable);
}

QelStatus qeliDCTQuantFwd8x8_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, const uint16_t* pEncTable)
{
    if (QelStatus bad = first(pointers(pSrc, pDst, pEncTable))) return bad;
    return kernels<DctKernels>().forwardQuant(pSrc, pDst, pEncTable);
}

QelStatus qeliDCTQuantFwd8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pEncTable)
{
    if (QelStatus bad = first(pointers(pSrcDst, pEncTable))) return bad;
    return kernels<DctKernels>().forwardQuant(pSrcDst, pSrcDst, pEncTable);
}

QelStatus qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R(const int16_t* pSrc, uint8_t* pDst, int dstStep,
                                              const uint16_t* pDecTable)
{
    if (QelStatus bad = first(pointers(pSrc, pDst), steps(dstStep), pointers(pDecTable))) return bad;
    return kernels<DctKernels>().inverseQuantSamples(pSrc, pDst, dstStep, pDecTable);
}

QelStatus qeliDCTQuantInv8x8_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, const uint16_t* pDecTable)
{
    if (QelStatus bad = first(pointers(pSrc, pDst, pDecTable))) return bad;
    return kernels<DctKernels>().inverseQuant(pSrc, pDst, pDecTable);
}

QelStatus qeliDCTQuantInv8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pDecTable)
{
    if (QelStatus bad = first(pointers(pSrcDst, pDecTable))) return bad;
    return kernels<DctKernels>().inverseQuant(pSrcDst, pSrcDst, pDecTable);
}

QelStatus qeliDCT8x8InvLSClip_16s8u_C1R(const int16_t* pSrc, uint8_t* pDst, int dstStep, int16_t shift, uint8_t min,
                                        uint8_t max)
{
    if (QelStatus bad = first(pointers(pSrc, pDst), steps(dstStep))) return bad;
    kernels<DctKernels>().inverseClip(pSrc, pDst, dstStep, shift, min, max);
    return qelStsNoErr;
}
