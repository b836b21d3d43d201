// SPDX-License-Identifier: Apache-2.0
// Colour conversion: the internal functions that the library exports beside its interface. They check nothing.
#pragma once

#include "core/exports.h"
#include "jpeg/colour/colour.h"

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
