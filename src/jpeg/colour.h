// Colour conversion: the table of its row kernels, and their exported doors.
#pragma once

#include <stdint.h>

#include "core/exports.h"

namespace qel {

// Row kernels by layout: the source's planes or interleaved pixels, then the destination's, then the width in pixels.
// Rows of the 16-bit formats may lie at odd addresses.
using RowP3C3 = void(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, int);
using RowP3P3 = void(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint8_t*, uint8_t*, int);
using RowP3C3Packed = void(const uint8_t*, const uint8_t*, const uint8_t*, uint16_t*, int);
using RowP4P4 = void(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint8_t*, uint8_t*,
                     uint8_t*, int);
using RowP4C4 = void(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, int);
using RowC3P3 = void(const uint8_t*, uint8_t*, uint8_t*, uint8_t*, int);
using RowC3P3Packed = void(const uint16_t*, uint8_t*, uint8_t*, uint8_t*, int);
using RowC4P4 = void(const uint8_t*, uint8_t*, uint8_t*, uint8_t*, uint8_t*, int);
using RowP3C1 = void(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, int);
using RowC3C1 = void(const uint8_t*, uint8_t*, int);

struct ColourKernels {
    RowP3C3 *yccToRgb, *yccToBgr;
    RowP3P3* yccToRgbPlanes;
    RowP3C3Packed *yccToRgb555, *yccToBgr555, *yccToRgb565, *yccToBgr565;
    RowP4P4* ycckToCmykPlanes;
    RowP4C4* ycckToCmyk;

    RowP3P3* rgbPlanesToYcc;
    RowC3P3 *rgbToYcc, *bgrToYcc;
    RowC3P3Packed *rgb555ToYcc, *bgr555ToYcc, *rgb565ToYcc, *bgr565ToYcc;
    RowP4P4* cmykPlanesToYcck;
    RowC4P4* cmykToYcck;
    RowP3C1* rgbPlanesToY;
    RowC3C1 *rgbToY, *bgrToY;
    const ColourKernels* past; // the same with output past the caches

    static const ColourKernels baseline, avx2, avx512;
    static const ColourKernels scalar, wide16, wide32, wide64;
};

}

// Whole rows, and (_opt) the part of a row that is a multiple of four pixels.
QEL_KERNEL qel::RowP3C3 ownqj_YCbCrToRGB_JPEG_8u_P3C3R, ownqj_YCbCrToRGB_JPEG_8u_P3C3R_opt;
QEL_KERNEL qel::RowP3C3 ownqj_YCbCrToBGR_JPEG_8u_P3C3R, ownqj_YCbCrToBGR_JPEG_8u_P3C3R_opt;
QEL_KERNEL qel::RowP3P3 ownqj_YCbCrToRGB_JPEG_8u_P3R, ownqj_YCbCrToRGB_JPEG_8u_P3R_opt;
QEL_KERNEL qel::RowP3C3Packed ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R_opt;
QEL_KERNEL qel::RowP3C3Packed ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R_opt;
QEL_KERNEL qel::RowP3C3Packed ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R_opt;
QEL_KERNEL qel::RowP3C3Packed ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R_opt;
QEL_KERNEL qel::RowP4P4 ownqj_YCCKToCMYK_JPEG_8u_P4R, ownqj_YCCKToCMYK_JPEG_8u_P4R_opt;
QEL_KERNEL qel::RowP4C4 ownqj_YCCKToCMYK_JPEG_8u_P4C4R, ownqj_YCCKToCMYK_JPEG_8u_P4C4R_opt;

QEL_KERNEL qel::RowP3P3 ownqj_RGBToYCbCr_JPEG_8u_P3R, ownqj_RGBToYCbCr_JPEG_8u_P3R_opt;
QEL_KERNEL qel::RowC3P3 ownqj_RGBToYCbCr_JPEG_8u_C3P3R, ownqj_RGBToYCbCr_JPEG_8u_C3P3R_opt;
QEL_KERNEL qel::RowC3P3 ownqj_BGRToYCbCr_JPEG_8u_C3P3R, ownqj_BGRToYCbCr_JPEG_8u_C3P3R_opt;
QEL_KERNEL qel::RowC3P3Packed ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R_opt;
QEL_KERNEL qel::RowC3P3Packed ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R_opt;
QEL_KERNEL qel::RowC3P3Packed ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R_opt;
QEL_KERNEL qel::RowC3P3Packed ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R_opt;
QEL_KERNEL qel::RowP4P4 ownqj_CMYKToYCCK_JPEG_8u_P4R, ownqj_CMYKToYCCK_JPEG_8u_P4R_opt;
QEL_KERNEL qel::RowC4P4 ownqj_CMYKToYCCK_JPEG_8u_C4P4R, ownqj_CMYKToYCCK_JPEG_8u_C4P4R_opt;
QEL_KERNEL qel::RowP3C1 ownqj_RGBToY_JPEG_8u_P3C1R, ownqj_RGBToY_JPEG_8u_P3C1R_opt;
QEL_KERNEL qel::RowC3C1 ownqj_RGBToY_JPEG_8u_C3C1R, ownqj_RGBToY_JPEG_8u_C3C1R_opt;
QEL_KERNEL qel::RowC3C1 ownqj_BGRToY_JPEG_8u_C3C1R, ownqj_BGRToY_JPEG_8u_C3C1R_opt;
