/* SPDX-License-Identifier: Apache-2.0 */
/* Conversion of one MCU of a JPEG picture (T.81 A.2.3) between 8x8 blocks and pixels: colours, chroma sampling and
 * level shift (T.81 A.3.1) in one step, so that no plane is written in between. */
#ifndef QELJX_JPEG_MCU_H
#define QELJX_JPEG_MCU_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * A block is 64 samples in row order, level-shifted: s stands for the sample s + 128. The arrays hold one pointer for
 * each component (Y, Cb, Cr and for CMYK also K); the blocks of a component lie one after another. By sampling:
 *     444   8 x 8 pixels, one block of each component
 *     422   16 x 8, two blocks of Y side by side; a sample of Cb and Cr for 2 x 1 pixels
 *     411   16 x 16, four blocks of Y (upper left, upper right, lower left, lower right); Cb and Cr for 2 x 2 pixels,
 *           which elsewhere is called 4:2:0
 * K blocks lie as those of Y do. The tile of pixels is interleaved; steps are the bytes from one of its rows to the
 * next. 16-bit pixels are those of the colour conversion: BGR555 and BGR565 have blue in the lowest bits. Any address
 * and any step from 1 on will do, and the result does not depend on the alignment. Blocks and tile must not overlap;
 * with a step below the bytes of its row, the tile comes out as if its rows were written from top to bottom.
 *
 * The blocks are level-shifted already: they come from qeliDCTQuantInv8x8_JPEG_16s_C1 and go to
 * qeliDCTQuantFwd8x8_JPEG_16s_C1, not to the LS functions beside these.
 *
 * Returns qelStsNullPtrErr if the array, one of its pointers or the tile is null, then qelStsStepErr if the step is
 * less than 1; nothing is written then. Else qelStsNoErr.
 */

/* Blocks to pixels. A pixel takes the chroma sample that covers it, without interpolation, and
 *     R = y + (91881 cr >> 16) + 128    G = y + ((-22554 cb - 46802 cr) >> 16) + 128    B = y + (116130 cb >> 16) + 128
 * where >> rounds down (the conversion of planes rounds to nearest): R, G and B come out half a level too low on
 * average. They are clamped to 0..255. CMYK is 255 - R, 255 - G, 255 - B and K. Samples that no inverse DCT produces
 * are converted exactly too.
 *
 * Worked: blocks of zeros give 128 in every channel; y = 127 with cb = cr = 0 gives 255, and y = -128 gives 0. */
/* R, G, B. */
QEL_API QelStatus qeliYCbCr444ToRGBLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
QEL_API QelStatus qeliYCbCr422ToRGBLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
QEL_API QelStatus qeliYCbCr411ToRGBLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
/* B, G, R. */
QEL_API QelStatus qeliYCbCr444ToBGRLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
QEL_API QelStatus qeliYCbCr422ToBGRLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
QEL_API QelStatus qeliYCbCr411ToBGRLS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
/* 16-bit pixels, BGR555. */
QEL_API QelStatus qeliYCbCr444ToBGR555LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep);
QEL_API QelStatus qeliYCbCr422ToBGR555LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep);
QEL_API QelStatus qeliYCbCr411ToBGR555LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep);
/* 16-bit pixels, BGR565. */
QEL_API QelStatus qeliYCbCr444ToBGR565LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep);
QEL_API QelStatus qeliYCbCr422ToBGR565LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep);
QEL_API QelStatus qeliYCbCr411ToBGR565LS_MCU_16s16u_P3C3R(const int16_t* const* pSrc, uint16_t* pDst, int dstStep);
/* C, M, Y, K from blocks Y, Cb, Cr, K. K is kept to its low 8 bits: outside -128..127 it wraps, while the others are
 * clamped. */
QEL_API QelStatus qeliYCCK444ToCMYKLS_MCU_16s8u_P4C4R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
QEL_API QelStatus qeliYCCK422ToCMYKLS_MCU_16s8u_P4C4R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
QEL_API QelStatus qeliYCCK411ToCMYKLS_MCU_16s8u_P4C4R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
/* Y, Cb, Cr without conversion of colours. */
QEL_API QelStatus qeliSampleUp444LS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
QEL_API QelStatus qeliSampleUp422LS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
QEL_API QelStatus qeliSampleUp411LS_MCU_16s8u_P3C3R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);
/* Two bytes for each pixel: Y0, Cb, Y1, Cr for each pair, without conversion of colours. */
QEL_API QelStatus qeliJoin422LS_MCU_16s8u_P3C2R(const int16_t* const* pSrc, uint8_t* pDst, int dstStep);

/* Pixels to blocks. The colours become those of the equations of JFIF with 16 fraction bits, rounded to nearest; chroma
 * is the mean of the 1, 2 or 4 samples that it covers, rounded down (by a quarter of a level on average in 422, three
 * eighths in 411); 128 is taken off. K is the sample less 128. Tiles are read whole: where the picture ends inside an
 * MCU, the caller repeats its last column and row.
 *
 * Worked: 255, 0, 0 in every pixel gives -52, -43, 127 (the Y, Cb, Cr of 76, 85, 255). */
/* R, G, B. */
QEL_API QelStatus qeliRGBToYCbCr444LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliRGBToYCbCr422LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliRGBToYCbCr411LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
/* B, G, R. */
QEL_API QelStatus qeliBGRToYCbCr444LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliBGRToYCbCr422LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliBGRToYCbCr411LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
/* 16-bit pixels, BGR555. */
QEL_API QelStatus qeliBGR555ToYCbCr444LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliBGR555ToYCbCr422LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliBGR555ToYCbCr411LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst);
/* 16-bit pixels, BGR565. */
QEL_API QelStatus qeliBGR565ToYCbCr444LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliBGR565ToYCbCr422LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliBGR565ToYCbCr411LS_MCU_16u16s_C3P3R(const uint16_t* pSrc, int srcStep, int16_t* const* pDst);
/* C, M, Y, K to blocks Y, Cb, Cr, K. */
QEL_API QelStatus qeliCMYKToYCCK444LS_MCU_8u16s_C4P4R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliCMYKToYCCK422LS_MCU_8u16s_C4P4R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliCMYKToYCCK411LS_MCU_8u16s_C4P4R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
/* Y, Cb, Cr without conversion of colours. */
QEL_API QelStatus qeliSampleDown444LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliSampleDown422LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
QEL_API QelStatus qeliSampleDown411LS_MCU_8u16s_C3P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);
/* Y0, Cb, Y1, Cr for each pair of pixels, without conversion of colours. */
QEL_API QelStatus qeliSplit422LS_MCU_8u16s_C2P3R(const uint8_t* pSrc, int srcStep, int16_t* const* pDst);

#ifdef __cplusplus
}
#endif

#endif
