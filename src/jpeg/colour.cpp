// Colour conversion: exported functions.
#include "jpeg/colour.h"

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

// A member: the exported function, its layouts, the loop over its rows, its kernel, and the two doors to that kernel.
// Kernels decide by the place in the row, so one serves whole rows and multiples of four pixels.
#define QEL_MEMBER(EXPORTED, SOURCE, DESTINATION, LOOP, KERNEL, ROW, OPT, PARAMETERS, ARGUMENTS)                       \
    QelStatus EXPORTED(SOURCE::Argument pSrc, int srcStep, DESTINATION::Argument pDst, int dstStep, QelSize roi)       \
    {                                                                                                                  \
        SOURCE src = {pSrc, srcStep};                                                                                  \
        DESTINATION dst = {pDst, dstStep};                                                                             \
        auto& table = kernels<ColourKernels>();                                                                        \
        return convert<LOOP>(src, dst, roi, table.KERNEL, table.past->KERNEL);                                         \
    }                                                                                                                  \
    void ROW PARAMETERS { kernels<ColourKernels>().KERNEL ARGUMENTS; }                                                 \
    void OPT PARAMETERS { kernels<ColourKernels>().KERNEL ARGUMENTS; }

// Members by layout.
#define QEL_P3C3(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromPlanes3, ToRgb, LOOP, KERNEL, ROW, OPT,                                                       \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* dst, int width), (a, b, c, dst, width))
#define QEL_P3C3_PACKED(NAME, LOOP, KERNEL, ROW, OPT)                                                                  \
    QEL_MEMBER(NAME, FromPlanes3, ToWords, LOOP, KERNEL, ROW, OPT,                                                     \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint16_t* dst, int width),                       \
               (a, b, c, dst, width))
#define QEL_P3P3(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromPlanes3, ToPlanes3, LOOP, KERNEL, ROW, OPT,                                                   \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* d, uint8_t* e, uint8_t* f, int width),  \
               (a, b, c, d, e, f, width))
#define QEL_P4P4(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromPlanes4, ToPlanes4, LOOP, KERNEL, ROW, OPT,                                                   \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* k, uint8_t* d, uint8_t* e,        \
                uint8_t* f, uint8_t* dstK, int width),                                                                 \
               (a, b, c, k, d, e, f, dstK, width))
#define QEL_P4C4(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromPlanes4, ToCmyk, LOOP, KERNEL, ROW, OPT,                                                      \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* k, uint8_t* dst, int width),      \
               (a, b, c, k, dst, width))
#define QEL_C3P3(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromRgb, ToPlanes3, LOOP, KERNEL, ROW, OPT,                                                       \
               (const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, int width), (src, y, cb, cr, width))
#define QEL_C3P3_PACKED(NAME, LOOP, KERNEL, ROW, OPT)                                                                  \
    QEL_MEMBER(NAME, FromWords, ToPlanes3, LOOP, KERNEL, ROW, OPT,                                                     \
               (const uint16_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, int width), (src, y, cb, cr, width))
#define QEL_C4P4(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromCmyk, ToPlanes4, LOOP, KERNEL, ROW, OPT,                                                      \
               (const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, uint8_t* k, int width),                      \
               (src, y, cb, cr, k, width))
#define QEL_P3C1(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromPlanes3, ToGrey, LOOP, KERNEL, ROW, OPT,                                                      \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* dst, int width), (a, b, c, dst, width))
#define QEL_C3C1(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromRgb, ToGrey, LOOP, KERNEL, ROW, OPT, (const uint8_t* src, uint8_t* dst, int width),           \
               (src, dst, width))

// clang-format off
QEL_P3C3(qeliYCbCrToRGB_JPEG_8u_P3C3R, kParallel, yccToRgb,
         ownqj_YCbCrToRGB_JPEG_8u_P3C3R, ownqj_YCbCrToRGB_JPEG_8u_P3C3R_opt)
QEL_P3C3(qeliYCbCrToBGR_JPEG_8u_P3C3R, kParallel, yccToBgr,
         ownqj_YCbCrToBGR_JPEG_8u_P3C3R, ownqj_YCbCrToBGR_JPEG_8u_P3C3R_opt)
QEL_P3P3(qeliYCbCrToRGB_JPEG_8u_P3R, kParallel, yccToRgbPlanes,
         ownqj_YCbCrToRGB_JPEG_8u_P3R, ownqj_YCbCrToRGB_JPEG_8u_P3R_opt)
QEL_P3C3_PACKED(qeliYCbCrToRGB555_JPEG_8u16u_P3C3R, kSerial, yccToRgb555,
                ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R_opt)
QEL_P3C3_PACKED(qeliYCbCrToBGR555_JPEG_8u16u_P3C3R, kSerial, yccToBgr555,
                ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R_opt)
QEL_P3C3_PACKED(qeliYCbCrToRGB565_JPEG_8u16u_P3C3R, kSerial, yccToRgb565,
                ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R_opt)
QEL_P3C3_PACKED(qeliYCbCrToBGR565_JPEG_8u16u_P3C3R, kSerial, yccToBgr565,
                ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R_opt)
QEL_P4P4(qeliYCCKToCMYK_JPEG_8u_P4R, kParallel, ycckToCmykPlanes,
         ownqj_YCCKToCMYK_JPEG_8u_P4R, ownqj_YCCKToCMYK_JPEG_8u_P4R_opt)
QEL_P4C4(qeliYCCKToCMYK_JPEG_8u_P4C4R, kParallel, ycckToCmyk,
         ownqj_YCCKToCMYK_JPEG_8u_P4C4R, ownqj_YCCKToCMYK_JPEG_8u_P4C4R_opt)
QEL_P3P3(qeliRGBToYCbCr_JPEG_8u_P3R, kParallel, rgbPlanesToYcc,
         ownqj_RGBToYCbCr_JPEG_8u_P3R, ownqj_RGBToYCbCr_JPEG_8u_P3R_opt)
QEL_C3P3(qeliRGBToYCbCr_JPEG_8u_C3P3R, kParallel, rgbToYcc,
         ownqj_RGBToYCbCr_JPEG_8u_C3P3R, ownqj_RGBToYCbCr_JPEG_8u_C3P3R_opt)
QEL_C3P3(qeliBGRToYCbCr_JPEG_8u_C3P3R, kParallel, bgrToYcc,
         ownqj_BGRToYCbCr_JPEG_8u_C3P3R, ownqj_BGRToYCbCr_JPEG_8u_C3P3R_opt)
QEL_C3P3_PACKED(qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R, kSerial, rgb555ToYcc,
                ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R_opt)
QEL_C3P3_PACKED(qeliBGR555ToYCbCr_JPEG_16u8u_C3P3R, kSerial, bgr555ToYcc,
                ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R_opt)
QEL_C3P3_PACKED(qeliRGB565ToYCbCr_JPEG_16u8u_C3P3R, kSerial, rgb565ToYcc,
                ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R_opt)
QEL_C3P3_PACKED(qeliBGR565ToYCbCr_JPEG_16u8u_C3P3R, kSerial, bgr565ToYcc,
                ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R_opt)
QEL_P4P4(qeliCMYKToYCCK_JPEG_8u_P4R, kParallel, cmykPlanesToYcck,
         ownqj_CMYKToYCCK_JPEG_8u_P4R, ownqj_CMYKToYCCK_JPEG_8u_P4R_opt)
QEL_C4P4(qeliCMYKToYCCK_JPEG_8u_C4P4R, kParallel, cmykToYcck,
         ownqj_CMYKToYCCK_JPEG_8u_C4P4R, ownqj_CMYKToYCCK_JPEG_8u_C4P4R_opt)
QEL_P3C1(qeliRGBToY_JPEG_8u_P3C1R, kParallel, rgbPlanesToY,
         ownqj_RGBToY_JPEG_8u_P3C1R, ownqj_RGBToY_JPEG_8u_P3C1R_opt)
QEL_C3C1(qeliRGBToY_JPEG_8u_C3C1R, kParallel, rgbToY,
         ownqj_RGBToY_JPEG_8u_C3C1R, ownqj_RGBToY_JPEG_8u_C3C1R_opt)
QEL_C3C1(qeliBGRToY_JPEG_8u_C3C1R, kParallel, bgrToY,
         ownqj_BGRToY_JPEG_8u_C3C1R, ownqj_BGRToY_JPEG_8u_C3C1R_opt)
// clang-format on
