/* SPDX-License-Identifier: Apache-2.0 */
/* JPEG colour conversion of whole planes (JFIF full-range equations). */
#ifndef QELJX_JPEG_COLOUR_H
#define QELJX_JPEG_COLOUR_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Between the colours that JPEG stores and those that applications hold (ITU-T T.871, JFIF; full range, chroma around
 * 128):
 *     R = Y + 1.402 (Cr - 128)                               Y  =  0.299   R + 0.587   G + 0.114   B
 *     G = Y - 0.34414 (Cb - 128) - 0.71414 (Cr - 128)        Cb = -0.16874 R - 0.33126 G + 0.5     B + 128
 *     B = Y + 1.772 (Cb - 128)                               Cr =  0.5     R - 0.41869 G - 0.08131 B + 128
 * CMYK is 255 - R, 255 - G, 255 - B and a K that is copied; YCCK likewise holds the Y, Cb, Cr of the inverted inks.
 *
 * roi is in pixels; steps are the bytes from one row to the next. An array of planes holds 3 pointers (P3) or 4 (P4),
 * whose planes share one step. C3 and C4 are interleaved bytes in the order of the name. 16-bit pixels hold the colour
 * named first in their lowest bits: RGB555 has R in bits 0 to 4, G in 5 to 9, B in 10 to 14 and bit 15 zero; RGB565 has
 * G in bits 5 to 10 and B in 11 to 15; BGR has R and B exchanged. Colours are cut to their upper bits when packed and
 * read with zeros below (0x1F is 248). Any address and any step from 1 on will do, also for 16-bit pixels.
 *
 * Results are clamped to 0..255 and lie within 0.52 of the equations, so rounding may differ by one. Whole groups of
 * four pixels of a row are computed in other fixed point than the last one to three, so a colour may differ by one
 * between places in a row; it never differs between processors or numbers of threads. Planes may be converted in place
 * (P3 to P3, P4 to P4); other overlaps of source and destination are not allowed. Rows of the destination that overlap
 * each other come out as if written from top to bottom, unless threads share them.
 *
 * Samples are 0..255 on both sides: planes of Y, Cb, Cr go with the sampling of planes and with the DCT functions that
 * shift the level (LS).
 *
 * Returns qelStsNullPtrErr if an array or one of its planes, or the pixels, are null, then qelStsStepErr if a step is
 * less than 1, then qelStsSizeErr if a side of roi is less than 1; nothing is written then. Else qelStsNoErr. Functions
 * marked "threads" split regions of more than 8192 pixels over OpenMP threads.
 *
 * Worked: Y, Cb, Cr = 76, 85, 255 gives R, G, B = 254, 0, 0, and 255, 0, 0 gives 76, 85, 255.
 */

/* Planes Y, Cb, Cr to interleaved R, G, B. Threads. */
QEL_API QelStatus qeliYCbCrToRGB_JPEG_8u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                               QelSize roi);
/* Like qeliYCbCrToRGB_JPEG_8u_P3C3R, but B, G, R. Threads. */
QEL_API QelStatus qeliYCbCrToBGR_JPEG_8u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                               QelSize roi);
/* Planes Y, Cb, Cr to planes R, G, B. Threads. */
QEL_API QelStatus qeliYCbCrToRGB_JPEG_8u_P3R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi);
/* Planes Y, Cb, Cr to 16-bit pixels; dstStep in bytes. */
QEL_API QelStatus qeliYCbCrToRGB555_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst,
                                                     int dstStep, QelSize roi);
/* Like qeliYCbCrToRGB555_JPEG_8u16u_P3C3R, but BGR555. */
QEL_API QelStatus qeliYCbCrToBGR555_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst,
                                                     int dstStep, QelSize roi);
/* Like qeliYCbCrToRGB555_JPEG_8u16u_P3C3R, but RGB565. */
QEL_API QelStatus qeliYCbCrToRGB565_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst,
                                                     int dstStep, QelSize roi);
/* Like qeliYCbCrToRGB555_JPEG_8u16u_P3C3R, but BGR565. */
QEL_API QelStatus qeliYCbCrToBGR565_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst,
                                                     int dstStep, QelSize roi);
/* Planes Y, Cb, Cr, K to planes C, M, Y, K. Threads. */
QEL_API QelStatus qeliYCCKToCMYK_JPEG_8u_P4R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi);
/* Planes Y, Cb, Cr, K to interleaved C, M, Y, K. Threads. */
QEL_API QelStatus qeliYCCKToCMYK_JPEG_8u_P4C4R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                               QelSize roi);

/* Planes R, G, B to planes Y, Cb, Cr. Threads. */
QEL_API QelStatus qeliRGBToYCbCr_JPEG_8u_P3R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi);
/* Interleaved R, G, B to planes Y, Cb, Cr. Threads. */
QEL_API QelStatus qeliRGBToYCbCr_JPEG_8u_C3P3R(const uint8_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                               QelSize roi);
/* Like qeliRGBToYCbCr_JPEG_8u_C3P3R, but B, G, R. Threads. */
QEL_API QelStatus qeliBGRToYCbCr_JPEG_8u_C3P3R(const uint8_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                               QelSize roi);
/* 16-bit pixels to planes Y, Cb, Cr; srcStep in bytes. */
QEL_API QelStatus qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst,
                                                     int dstStep, QelSize roi);
/* Like qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R, but BGR555. */
QEL_API QelStatus qeliBGR555ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst,
                                                     int dstStep, QelSize roi);
/* Like qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R, but RGB565. */
QEL_API QelStatus qeliRGB565ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst,
                                                     int dstStep, QelSize roi);
/* Like qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R, but BGR565. */
QEL_API QelStatus qeliBGR565ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst,
                                                     int dstStep, QelSize roi);
/* Planes C, M, Y, K to planes Y, Cb, Cr, K. Threads. */
QEL_API QelStatus qeliCMYKToYCCK_JPEG_8u_P4R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi);
/* Interleaved C, M, Y, K to planes Y, Cb, Cr, K. Threads. */
QEL_API QelStatus qeliCMYKToYCCK_JPEG_8u_C4P4R(const uint8_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                               QelSize roi);
/* Planes R, G, B to a plane Y (gray). Threads. */
QEL_API QelStatus qeliRGBToY_JPEG_8u_P3C1R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                           QelSize roi);
/* Interleaved R, G, B to a plane Y. Threads. */
QEL_API QelStatus qeliRGBToY_JPEG_8u_C3C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi);
/* Like qeliRGBToY_JPEG_8u_C3C1R, but B, G, R. Threads. */
QEL_API QelStatus qeliBGRToY_JPEG_8u_C3C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi);

#ifdef __cplusplus
}
#endif

#endif
