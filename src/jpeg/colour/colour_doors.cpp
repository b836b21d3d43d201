// SPDX-License-Identifier: Apache-2.0
// Colour conversion: exported internal functions. Kernels decide by the place in the row, so one serves whole rows and
// multiples of four pixels.
#include "jpeg/colour/colour_doors.h"

#include "core/dispatch.h"

using namespace qel;

// ROW and OPT are doors to one kernel of a layout.
#define QEL_DOORS(ROW, OPT, KERNEL, PARAMETERS, ARGUMENTS)                                                             \
    void ROW PARAMETERS { kernels<ColourKernels>().KERNEL ARGUMENTS; }                                                 \
    void OPT PARAMETERS { kernels<ColourKernels>().KERNEL ARGUMENTS; }
#define QEL_P3C3(ROW, OPT, KERNEL)                                                                                     \
    QEL_DOORS(ROW, OPT, KERNEL, (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* dst, int width),       \
              (a, b, c, dst, width))
#define QEL_P3C3_PACKED(ROW, OPT, KERNEL)                                                                              \
    QEL_DOORS(ROW, OPT, KERNEL, (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint16_t* dst, int width),      \
              (a, b, c, dst, width))
#define QEL_P3P3(ROW, OPT, KERNEL)                                                                                     \
    QEL_DOORS(ROW, OPT, KERNEL,                                                                                        \
              (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* d, uint8_t* e, uint8_t* f, int width),   \
              (a, b, c, d, e, f, width))
#define QEL_P4P4(ROW, OPT, KERNEL)                                                                                     \
    QEL_DOORS(ROW, OPT, KERNEL,                                                                                        \
              (const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* k, uint8_t* d, uint8_t* e,         \
               uint8_t* f, uint8_t* dstK, int width),                                                                  \
              (a, b, c, k, d, e, f, dstK, width))
#define QEL_P4C4(ROW, OPT, KERNEL)                                                                                     \
    QEL_DOORS(ROW, OPT, KERNEL,                                                                                        \
              (const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* k, uint8_t* dst, int width),       \
              (a, b, c, k, dst, width))
#define QEL_C3P3(ROW, OPT, KERNEL)                                                                                     \
    QEL_DOORS(ROW, OPT, KERNEL, (const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, int width),                 \
              (src, y, cb, cr, width))
#define QEL_C3P3_PACKED(ROW, OPT, KERNEL)                                                                              \
    QEL_DOORS(ROW, OPT, KERNEL, (const uint16_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, int width),                \
              (src, y, cb, cr, width))
#define QEL_C4P4(ROW, OPT, KERNEL)                                                                                     \
    QEL_DOORS(ROW, OPT, KERNEL, (const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, uint8_t* k, int width),     \
              (src, y, cb, cr, k, width))
#define QEL_P3C1(ROW, OPT, KERNEL)                                                                                     \
    QEL_DOORS(ROW, OPT, KERNEL, (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* dst, int width),       \
              (a, b, c, dst, width))
#define QEL_C3C1(ROW, OPT, KERNEL)                                                                                     \
    QEL_DOORS(ROW, OPT, KERNEL, (const uint8_t* src, uint8_t* dst, int width), (src, dst, width))

// clang-format off
QEL_P3C3(ownqj_YCbCrToRGB_JPEG_8u_P3C3R, ownqj_YCbCrToRGB_JPEG_8u_P3C3R_opt, yccToRgb)
QEL_P3C3(ownqj_YCbCrToBGR_JPEG_8u_P3C3R, ownqj_YCbCrToBGR_JPEG_8u_P3C3R_opt, yccToBgr)
QEL_P3P3(ownqj_YCbCrToRGB_JPEG_8u_P3R, ownqj_YCbCrToRGB_JPEG_8u_P3R_opt, yccToRgbPlanes)
QEL_P3C3_PACKED(ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R_opt, yccToRgb555)
QEL_P3C3_PACKED(ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R_opt, yccToBgr555)
QEL_P3C3_PACKED(ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R_opt, yccToRgb565)
QEL_P3C3_PACKED(ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R_opt, yccToBgr565)
QEL_P4P4(ownqj_YCCKToCMYK_JPEG_8u_P4R, ownqj_YCCKToCMYK_JPEG_8u_P4R_opt, ycckToCmykPlanes)
QEL_P4C4(ownqj_YCCKToCMYK_JPEG_8u_P4C4R, ownqj_YCCKToCMYK_JPEG_8u_P4C4R_opt, ycckToCmyk)
QEL_P3P3(ownqj_RGBToYCbCr_JPEG_8u_P3R, ownqj_RGBToYCbCr_JPEG_8u_P3R_opt, rgbPlanesToYcc)
QEL_C3P3(ownqj_RGBToYCbCr_JPEG_8u_C3P3R, ownqj_RGBToYCbCr_JPEG_8u_C3P3R_opt, rgbToYcc)
QEL_C3P3(ownqj_BGRToYCbCr_JPEG_8u_C3P3R, ownqj_BGRToYCbCr_JPEG_8u_C3P3R_opt, bgrToYcc)
QEL_C3P3_PACKED(ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R_opt, rgb555ToYcc)
QEL_C3P3_PACKED(ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R_opt, bgr555ToYcc)
QEL_C3P3_PACKED(ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R_opt, rgb565ToYcc)
QEL_C3P3_PACKED(ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R_opt, bgr565ToYcc)
QEL_P4P4(ownqj_CMYKToYCCK_JPEG_8u_P4R, ownqj_CMYKToYCCK_JPEG_8u_P4R_opt, cmykPlanesToYcck)
QEL_C4P4(ownqj_CMYKToYCCK_JPEG_8u_C4P4R, ownqj_CMYKToYCCK_JPEG_8u_C4P4R_opt, cmykToYcck)
QEL_P3C1(ownqj_RGBToY_JPEG_8u_P3C1R, ownqj_RGBToY_JPEG_8u_P3C1R_opt, rgbPlanesToY)
QEL_C3C1(ownqj_RGBToY_JPEG_8u_C3C1R, ownqj_RGBToY_JPEG_8u_C3C1R_opt, rgbToY)
QEL_C3C1(ownqj_BGRToY_JPEG_8u_C3C1R, ownqj_BGRToY_JPEG_8u_C3C1R_opt, bgrToY)
// clang-format on
