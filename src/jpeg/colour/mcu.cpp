// MCU conversion: exported functions.
#include "jpeg/colour/mcu.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "qeljx/jpeg_mcu.h"

using namespace qel;

namespace {

template <int kComponents, class Pixel> QelStatus decode(void (*kernel)(const int16_t* const*, Pixel*, int),
                                                         const int16_t* const* pSrc, Pixel* pDst, int dstStep)
{
    if (QelStatus bad = first(planes<kComponents>(pSrc), pointers(pDst), steps(dstStep))) return bad;
    kernel(pSrc, pDst, dstStep);
    return qelStsNoErr;
}

template <int kComponents, class Pixel> QelStatus encode(void (*kernel)(const Pixel*, int, int16_t* const*),
                                                         const Pixel* pSrc, int srcStep, int16_t* const* pDst)
{
    if (QelStatus bad = first(planes<kComponents>(pDst), pointers(pSrc), steps(srcStep))) return bad;
    kernel(pSrc, srcStep, pDst);
    return qelStsNoErr;
}

}

// A member: components, type of its pixels, the exported function, the door to its kernel, and the kernel.
#define QEL_DECODE(COMPONENTS, PIXEL, EXPORTED, DOOR, KERNEL)                                                          \
    QelStatus EXPORTED(const int16_t* const* pSrc, PIXEL* pDst, int dstStep)                                           \
    {                                                                                                                  \
        return decode<COMPONENTS>(kernels<McuKernels>().KERNEL, pSrc, pDst, dstStep);                                  \
    }                                                                                                                  \
    void DOOR(const int16_t* const* src, PIXEL* dst, int dstStep) { kernels<McuKernels>().KERNEL(src, dst, dstStep); }
#define QEL_ENCODE(COMPONENTS, PIXEL, EXPORTED, DOOR, KERNEL)                                                          \
    QelStatus EXPORTED(const PIXEL* pSrc, int srcStep, int16_t* const* pDst)                                           \
    {                                                                                                                  \
        return encode<COMPONENTS>(kernels<McuKernels>().KERNEL, pSrc, srcStep, pDst);                                  \
    }                                                                                                                  \
    void DOOR(const PIXEL* src, int srcStep, int16_t* const* dst) { kernels<McuKernels>().KERNEL(src, srcStep, dst); }

// clang-format off
QEL_DECODE(3, uint8_t, qeliYCbCr444ToRGBLS_MCU_16s8u_P3C3R,
           ownqj_YCbCr444ToRGBLS_MCU_16s8u_P3C3R, toRgb.s444)
QEL_DECODE(3, uint8_t, qeliYCbCr422ToRGBLS_MCU_16s8u_P3C3R,
           ownqj_YCbCr422ToRGBLS_MCU_16s8u_P3C3R, toRgb.s422)
QEL_DECODE(3, uint8_t, qeliYCbCr411ToRGBLS_MCU_16s8u_P3C3R,
           ownqj_YCbCr411ToRGBLS_MCU_16s8u_P3C3R, toRgb.s411)
QEL_DECODE(3, uint8_t, qeliYCbCr444ToBGRLS_MCU_16s8u_P3C3R,
           ownqj_YCbCr444ToBGRLS_MCU_16s8u_P3C3R, toBgr.s444)
QEL_DECODE(3, uint8_t, qeliYCbCr422ToBGRLS_MCU_16s8u_P3C3R,
           ownqj_YCbCr422ToBGRLS_MCU_16s8u_P3C3R, toBgr.s422)
QEL_DECODE(3, uint8_t, qeliYCbCr411ToBGRLS_MCU_16s8u_P3C3R,
           ownqj_YCbCr411ToBGRLS_MCU_16s8u_P3C3R, toBgr.s411)
QEL_DECODE(3, uint16_t, qeliYCbCr444ToBGR555LS_MCU_16s16u_P3C3R,
           ownqj_YCbCr444ToBGR555LS_MCU_16s16u_P3C3R, toBgr555.s444)
QEL_DECODE(3, uint16_t, qeliYCbCr422ToBGR555LS_MCU_16s16u_P3C3R,
           ownqj_YCbCr422ToBGR555LS_MCU_16s16u_P3C3R, toBgr555.s422)
QEL_DECODE(3, uint16_t, qeliYCbCr411ToBGR555LS_MCU_16s16u_P3C3R,
           ownqj_YCbCr411ToBGR555LS_MCU_16s16u_P3C3R, toBgr555.s411)
QEL_DECODE(3, uint16_t, qeliYCbCr444ToBGR565LS_MCU_16s16u_P3C3R,
           ownqj_YCbCr444ToBGR565LS_MCU_16s16u_P3C3R, toBgr565.s444)
QEL_DECODE(3, uint16_t, qeliYCbCr422ToBGR565LS_MCU_16s16u_P3C3R,
           ownqj_YCbCr422ToBGR565LS_MCU_16s16u_P3C3R, toBgr565.s422)
QEL_DECODE(3, uint16_t, qeliYCbCr411ToBGR565LS_MCU_16s16u_P3C3R,
           ownqj_YCbCr411ToBGR565LS_MCU_16s16u_P3C3R, toBgr565.s411)
QEL_DECODE(4, uint8_t, qeliYCCK444ToCMYKLS_MCU_16s8u_P4C4R,
           ownqj_YCCK444ToCMYKLS_MCU_16s8u_P4C4R, toCmyk.s444)
QEL_DECODE(4, uint8_t, qeliYCCK422ToCMYKLS_MCU_16s8u_P4C4R,
           ownqj_YCCK422ToCMYKLS_MCU_16s8u_P4C4R, toCmyk.s422)
QEL_DECODE(4, uint8_t, qeliYCCK411ToCMYKLS_MCU_16s8u_P4C4R,
           ownqj_YCCK411ToCMYKLS_MCU_16s8u_P4C4R, toCmyk.s411)
QEL_DECODE(3, uint8_t, qeliSampleUp444LS_MCU_16s8u_P3C3R,
           ownqj_SampleUp444LS_MCU_16s8u_P3C3R, toYcc.s444)
QEL_DECODE(3, uint8_t, qeliSampleUp422LS_MCU_16s8u_P3C3R,
           ownqj_SampleUp422LS_MCU_16s8u_P3C3R, toYcc.s422)
QEL_DECODE(3, uint8_t, qeliSampleUp411LS_MCU_16s8u_P3C3R,
           ownqj_SampleUp411LS_MCU_16s8u_P3C3R, toYcc.s411)
QEL_DECODE(3, uint8_t, qeliJoin422LS_MCU_16s8u_P3C2R,
           ownqj_Join422LS_MCU_16s8u_P3C2R, toPairs422)
QEL_ENCODE(3, uint8_t, qeliRGBToYCbCr444LS_MCU_8u16s_C3P3R,
           ownqj_RGBToYCbCr444LS_MCU_8u16s_C3P3R, fromRgb.s444)
QEL_ENCODE(3, uint8_t, qeliRGBToYCbCr422LS_MCU_8u16s_C3P3R,
           ownqj_RGBToYCbCr422LS_MCU_8u16s_C3P3R, fromRgb.s422)
QEL_ENCODE(3, uint8_t, qeliRGBToYCbCr411LS_MCU_8u16s_C3P3R,
           ownqj_RGBToYCbCr411LS_MCU_8u16s_C3P3R, fromRgb.s411)
QEL_ENCODE(3, uint8_t, qeliBGRToYCbCr444LS_MCU_8u16s_C3P3R,
           ownqj_BGRToYCbCr444LS_MCU_8u16s_C3P3R, fromBgr.s444)
QEL_ENCODE(3, uint8_t, qeliBGRToYCbCr422LS_MCU_8u16s_C3P3R,
           ownqj_BGRToYCbCr422LS_MCU_8u16s_C3P3R, fromBgr.s422)
QEL_ENCODE(3, uint8_t, qeliBGRToYCbCr411LS_MCU_8u16s_C3P3R,
           ownqj_BGRToYCbCr411LS_MCU_8u16s_C3P3R, fromBgr.s411)
QEL_ENCODE(3, uint16_t, qeliBGR555ToYCbCr444LS_MCU_16u16s_C3P3R,
           ownqj_BGR555ToYCbCr444LS_MCU_16u16s_C3P3R, fromBgr555.s444)
QEL_ENCODE(3, uint16_t, qeliBGR555ToYCbCr422LS_MCU_16u16s_C3P3R,
           ownqj_BGR555ToYCbCr422LS_MCU_16u16s_C3P3R, fromBgr555.s422)
QEL_ENCODE(3, uint16_t, qeliBGR555ToYCbCr411LS_MCU_16u16s_C3P3R,
           ownqj_BGR555ToYCbCr411LS_MCU_16u16s_C3P3R, fromBgr555.s411)
QEL_ENCODE(3, uint16_t, qeliBGR565ToYCbCr444LS_MCU_16u16s_C3P3R,
           ownqj_BGR565ToYCbCr444LS_MCU_16u16s_C3P3R, fromBgr565.s444)
QEL_ENCODE(3, uint16_t, qeliBGR565ToYCbCr422LS_MCU_16u16s_C3P3R,
           ownqj_BGR565ToYCbCr422LS_MCU_16u16s_C3P3R, fromBgr565.s422)
QEL_ENCODE(3, uint16_t, qeliBGR565ToYCbCr411LS_MCU_16u16s_C3P3R,
           ownqj_BGR565ToYCbCr411LS_MCU_16u16s_C3P3R, fromBgr565.s411)
QEL_ENCODE(4, uint8_t, qeliCMYKToYCCK444LS_MCU_8u16s_C4P4R,
           ownqj_CMYKToYCCK444LS_MCU_8u16s_C4P4R, fromCmyk.s444)
QEL_ENCODE(4, uint8_t, qeliCMYKToYCCK422LS_MCU_8u16s_C4P4R,
           ownqj_CMYKToYCCK422LS_MCU_8u16s_C4P4R, fromCmyk.s422)
QEL_ENCODE(4, uint8_t, qeliCMYKToYCCK411LS_MCU_8u16s_C4P4R,
           ownqj_CMYKToYCCK411LS_MCU_8u16s_C4P4R, fromCmyk.s411)
QEL_ENCODE(3, uint8_t, qeliSampleDown444LS_MCU_8u16s_C3P3R,
           ownqj_SampleDown444LS_MCU_8u16s_C3P3R, fromYcc.s444)
QEL_ENCODE(3, uint8_t, qeliSampleDown422LS_MCU_8u16s_C3P3R,
           ownqj_SampleDown422LS_MCU_8u16s_C3P3R, fromYcc.s422)
QEL_ENCODE(3, uint8_t, qeliSampleDown411LS_MCU_8u16s_C3P3R,
           ownqj_SampleDown411LS_MCU_8u16s_C3P3R, fromYcc.s411)
QEL_ENCODE(3, uint8_t, qeliSplit422LS_MCU_8u16s_C2P3R,
           ownqj_Split422LS_MCU_8u16s_C2P3R, fromPairs422)
// clang-format on
