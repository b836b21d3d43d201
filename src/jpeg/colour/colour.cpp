// SPDX-License-Identifier: Apache-2.0
// Colour conversion: public functions.
#include "jpeg/colour/colour.h"

#include "core/conversion.h"
#include "qeljx/jpeg_colour.h"

using namespace qel;

namespace {

using FromPlanes3 = Planes<const uint8_t, 3>;
using FromPlanes4 = Planes<const uint8_t, 4>;
using FromRgb = Pixels<const uint8_t, 3>;
using FromCmyk = Pixels<const uint8_t, 4>;
using FromWords = Pixels<const uint16_t, 1>;
using ToPlanes3 = Planes<uint8_t, 3>;
using ToPlanes4 = Planes<uint8_t, 4>;
using ToRgb = Pixels<uint8_t, 3>;
using ToCmyk = Pixels<uint8_t, 4>;
using ToGrey = Pixels<uint8_t, 1>;
using ToWords = Pixels<uint16_t, 1>;

}

QelStatus qeliYCbCrToRGB_JPEG_8u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi)
{
    return convert<Threads::all>(FromPlanes3{pSrc, srcStep}, ToRgb{pDst, dstStep}, roi, &ColourKernels::yccToRgb);
}

QelStatus qeliYCbCrToBGR_JPEG_8u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi)
{
    return convert<Threads::all>(FromPlanes3{pSrc, srcStep}, ToRgb{pDst, dstStep}, roi, &ColourKernels::yccToBgr);
}

QelStatus qeliYCbCrToRGB_JPEG_8u_P3R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                     QelSize roi)
{
    return convert<Threads::all>(FromPlanes3{pSrc, srcStep}, ToPlanes3{pDst, dstStep}, roi,
                                 &ColourKernels::yccToRgbPlanes);
}

QelStatus qeliYCbCrToRGB555_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                             QelSize roi)
{
    return convert<Threads::one>(FromPlanes3{pSrc, srcStep}, ToWords{pDst, dstStep}, roi, &ColourKernels::yccToRgb555);
}

QelStatus qeliYCbCrToBGR555_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                             QelSize roi)
{
    return convert<Threads::one>(FromPlanes3{pSrc, srcStep}, ToWords{pDst, dstStep}, roi, &ColourKernels::yccToBgr555);
}

QelStatus qeliYCbCrToRGB565_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                             QelSize roi)
{
    return convert<Threads::one>(FromPlanes3{pSrc, srcStep}, ToWords{pDst, dstStep}, roi, &ColourKernels::yccToRgb565);
}

QelStatus qeliYCbCrToBGR565_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst, int dstStep,
                                             QelSize roi)
{
    return convert<Threads::one>(FromPlanes3{pSrc, srcStep}, ToWords{pDst, dstStep}, roi, &ColourKernels::yccToBgr565);
}

QelStatus qeliYCCKToCMYK_JPEG_8u_P4R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                     QelSize roi)
{
    return convert<Threads::all>(FromPlanes4{pSrc, srcStep}, ToPlanes4{pDst, dstStep}, roi,
                                 &ColourKernels::ycckToCmykPlanes);
}

QelStatus qeliYCCKToCMYK_JPEG_8u_P4C4R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi)
{
    return convert<Threads::all>(FromPlanes4{pSrc, srcStep}, ToCmyk{pDst, dstStep}, roi, &ColourKernels::ycckToCmyk);
}

QelStatus qeliRGBToYCbCr_JPEG_8u_P3R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                     QelSize roi)
{
    return convert<Threads::all>(FromPlanes3{pSrc, srcStep}, ToPlanes3{pDst, dstStep}, roi,
                                 &ColourKernels::rgbPlanesToYcc);
}

QelStatus qeliRGBToYCbCr_JPEG_8u_C3P3R(const uint8_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep, QelSize roi)
{
    return convert<Threads::all>(FromRgb{pSrc, srcStep}, ToPlanes3{pDst, dstStep}, roi, &ColourKernels::rgbToYcc);
}

QelStatus qeliBGRToYCbCr_JPEG_8u_C3P3R(const uint8_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep, QelSize roi)
{
    return convert<Threads::all>(FromRgb{pSrc, srcStep}, ToPlanes3{pDst, dstStep}, roi, &ColourKernels::bgrToYcc);
}

QelStatus qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi)
{
    return convert<Threads::one>(FromWords{pSrc, srcStep}, ToPlanes3{pDst, dstStep}, roi, &ColourKernels::rgb555ToYcc);
}

QelStatus qeliBGR555ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi)
{
    return convert<Threads::one>(FromWords{pSrc, srcStep}, ToPlanes3{pDst, dstStep}, roi, &ColourKernels::bgr555ToYcc);
}

QelStatus qeliRGB565ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi)
{
    return convert<Threads::one>(FromWords{pSrc, srcStep}, ToPlanes3{pDst, dstStep}, roi, &ColourKernels::rgb565ToYcc);
}

QelStatus qeliBGR565ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi)
{
    return convert<Threads::one>(FromWords{pSrc, srcStep}, ToPlanes3{pDst, dstStep}, roi, &ColourKernels::bgr565ToYcc);
}

QelStatus qeliCMYKToYCCK_JPEG_8u_P4R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                     QelSize roi)
{
    return convert<Threads::all>(FromPlanes4{pSrc, srcStep}, ToPlanes4{pDst, dstStep}, roi,
                                 &ColourKernels::cmykPlanesToYcck);
}

QelStatus qeliCMYKToYCCK_JPEG_8u_C4P4R(const uint8_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep, QelSize roi)
{
    return convert<Threads::all>(FromCmyk{pSrc, srcStep}, ToPlanes4{pDst, dstStep}, roi, &ColourKernels::cmykToYcck);
}

QelStatus qeliRGBToY_JPEG_8u_P3C1R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi)
{
    return convert<Threads::all>(FromPlanes3{pSrc, srcStep}, ToGrey{pDst, dstStep}, roi, &ColourKernels::rgbPlanesToY);
}

QelStatus qeliRGBToY_JPEG_8u_C3C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi)
{
    return convert<Threads::all>(FromRgb{pSrc, srcStep}, ToGrey{pDst, dstStep}, roi, &ColourKernels::rgbToY);
}

QelStatus qeliBGRToY_JPEG_8u_C3C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi)
{
    return convert<Threads::all>(FromRgb{pSrc, srcStep}, ToGrey{pDst, dstStep}, roi, &ColourKernels::bgrToY);
}
