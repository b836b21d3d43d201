// SPDX-License-Identifier: Apache-2.0
// MCU conversion: public functions.
#include "jpeg/colour/mcu.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "qeljx/jpeg_mcu.h"

using namespace qel;

namespace {

template <int kComponents, class Pixel> QelStatus decode(const int16_t* const* pSrc, Pixel* pDst, int dstStep,
                                                         void (*kernel)(const int16_t* const*, Pixel*, int))
{
    if (QelStatus bad = first(planes<kComponents>(pSrc), pointers(pDst), steps(dstStep))) return bad;
    kernel(pSrc, pDst, dstStep);
    return qelStsNoErr;
}

template <int kComponents, class Pixel> QelStatus encode(const Pixel* pSrc, int srcStep, int16_t* const* pDst,
                                                         void (*kernel)(const Pixel*, int, int16_t* const*))
{
    if (QelStatus bad = first(planes<kComponents>(pDst), pointers(pSrc), steps(srcStep))) return bad;
    kernel(pSrc, srcStep, pDst);
    return qelStsNoErr;
}

}

QelStatus qeliYCbCr444ToRGBLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toRgb.s444);
}

QelStatus qeliYCbCr422ToRGBLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toRgb.s422);
}

QelStatus qeliYCbCr411ToRGBLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toRgb.s411);
}

QelStatus qeliYCbCr444ToBGRLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toBgr.s444);
}

QelStatus qeliYCbCr422ToBGRLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toBgr.s422);
}

QelStatus qeliYCbCr411ToBGRLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toBgr.s411);
}

QelStatus qeliYCbCr444ToBGR555LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toBgr555.s444);
}

QelStatus qeliYCbCr422ToBGR555LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toBgr555.s422);
}

QelStatus qeliYCbCr411ToBGR555LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toBgr555.s411);
}

QelStatus qeliYCbCr444ToBGR565LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toBgr565.s444);
}

QelStatus qeliYCbCr422ToBGR565LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toBgr565.s422);
}

QelStatus qeliYCbCr411ToBGR565LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toBgr565.s411);
}

QelStatus qeliYCCK444ToCMYKLS_MCU_16s8u_P4C4R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<4>(pSrc, pDst, dstStep, kernels<McuKernels>().toCmyk.s444);
}

QelStatus qeliYCCK422ToCMYKLS_MCU_16s8u_P4C4R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<4>(pSrc, pDst, dstStep, kernels<McuKernels>().toCmyk.s422);
}

QelStatus qeliYCCK411ToCMYKLS_MCU_16s8u_P4C4R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<4>(pSrc, pDst, dstStep, kernels<McuKernels>().toCmyk.s411);
}

QelStatus qeliSampleUp444LS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toYcc.s444);
}

QelStatus qeliSampleUp422LS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toYcc.s422);
}

QelStatus qeliSampleUp411LS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toYcc.s411);
}

QelStatus qeliJoin422LS_MCU_16s8u_P3C2R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep)
{
    return decode<3>(pSrc, pDst, dstStep, kernels<McuKernels>().toPairs422);
}

QelStatus qeliRGBToYCbCr444LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromRgb.s444);
}

QelStatus qeliRGBToYCbCr422LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromRgb.s422);
}

QelStatus qeliRGBToYCbCr411LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromRgb.s411);
}

QelStatus qeliBGRToYCbCr444LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromBgr.s444);
}

QelStatus qeliBGRToYCbCr422LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromBgr.s422);
}

QelStatus qeliBGRToYCbCr411LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromBgr.s411);
}

QelStatus qeliBGR555ToYCbCr444LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromBgr555.s444);
}

QelStatus qeliBGR555ToYCbCr422LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromBgr555.s422);
}

QelStatus qeliBGR555ToYCbCr411LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromBgr555.s411);
}

QelStatus qeliBGR565ToYCbCr444LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromBgr565.s444);
}

QelStatus qeliBGR565ToYCbCr422LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromBgr565.s422);
}

QelStatus qeliBGR565ToYCbCr411LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromBgr565.s411);
}

QelStatus qeliCMYKToYCCK444LS_MCU_8u16s_C4P4R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<4>(pSrc, srcStep, pDst, kernels<McuKernels>().fromCmyk.s444);
}

QelStatus qeliCMYKToYCCK422LS_MCU_8u16s_C4P4R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<4>(pSrc, srcStep, pDst, kernels<McuKernels>().fromCmyk.s422);
}

QelStatus qeliCMYKToYCCK411LS_MCU_8u16s_C4P4R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<4>(pSrc, srcStep, pDst, kernels<McuKernels>().fromCmyk.s411);
}

QelStatus qeliSampleDown444LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromYcc.s444);
}

QelStatus qeliSampleDown422LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromYcc.s422);
}

QelStatus qeliSampleDown411LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromYcc.s411);
}

QelStatus qeliSplit422LS_MCU_8u16s_C2P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst)
{
    return encode<3>(pSrc, srcStep, pDst, kernels<McuKernels>().fromPairs422);
}
