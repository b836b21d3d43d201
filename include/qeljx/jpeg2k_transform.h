/* SPDX-License-Identifier: Apache-2.0 */
/* JPEG 2000 transforms: of the three colour components of a picture (T.800 Annex G), and wavelets, one level, of rows,
 * columns and tiles (Annex F). Pointers and steps may have any alignment; steps are in bytes. Nothing allocates. */
#ifndef QELJX_JPEG2K_TRANSFORM_H
#define QELJX_JPEG2K_TRANSFORM_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Component transforms, which make three colour components of R, G, B before the wavelets, or R, G, B of them after:
 * the reversible one of integers (RCT, T.800 G.2)
 *     Y0 = (R + 2 G + B) >> 2,   Y1 = B - G,   Y2 = R - G        G = Y0 - ((Y1 + Y2) >> 2),   R = Y2 + G,   B = Y1 + G
 * with floors and sums that wrap in 32 bits, and the irreversible one in single precision (ICT, T.800 G.3)
 *     Y0 =  0.299   R + 0.587   G + 0.114   B                    R = Y0                + 1.402   Y2
 *     Y1 = -0.16875 R - 0.33126 G + 0.5     B                    G = Y0 - 0.34413 Y1 - 0.71414 Y2
 *     Y2 =  0.5     R - 0.41869 G - 0.08131 B                    B = Y0 + 1.772   Y1
 * without rounding to integers or clamping. Each product and sum is rounded by itself; forward adds from left to right,
 * inverse adds Y0 last: the result has the same bits at every place in a row and on every processor.
 *
 * `roi` is in pixels. P3 is an array of three planes that share a step, in the order R, G, B or Y0, Y1, Y2; C3 is
 * pixels of three elements in that order. The P3I forms work in place; else source and destination must not overlap.
 * Here and below, rows of a destination that overlap each other come out as if written from top to bottom.
 * Inverse undoes RCT forward to the bit for signed samples of 30 bits or less; ICT gives samples of magnitude m back
 * within m / 10000. RCT of R, G, B = -1, 0, 0 gives -1, 0, -1, and of a grey pixel v, v, v it gives v, 0, 0.
 *
 * Checks: pointers, also those of the planes (qelStsNullPtrErr), steps below 1 (qelStsStepErr), a width or height below
 * 1 (qelStsSizeErr); then qelStsNoErr. */

/* RCT of planes in place, and back. */
QEL_API QelStatus qeliRCTFwd_JPEG2K_32s_P3IR(int32_t* const pSrcDst[3], int srcDstStep, QelSize roi);
QEL_API QelStatus qeliRCTInv_JPEG2K_32s_P3IR(int32_t* const pSrcDst[3], int srcDstStep, QelSize roi);
/* RCT from interleaved R, G, B to planes, and back. */
QEL_API QelStatus qeliRCTFwd_JPEG2K_32s_C3P3R(const int32_t* pSrc, int srcStep, int32_t* const pDst[3], int dstStep,
                                              QelSize roi);
QEL_API QelStatus qeliRCTInv_JPEG2K_32s_P3C3R(const int32_t* const pSrc[3], int srcStep, int32_t* pDst, int dstStep,
                                              QelSize roi);
/* ICT of planes in place, and back. */
QEL_API QelStatus qeliICTFwd_JPEG2K_32f_P3IR(float* const pSrcDst[3], int srcDstStep, QelSize roi);
QEL_API QelStatus qeliICTInv_JPEG2K_32f_P3IR(float* const pSrcDst[3], int srcDstStep, QelSize roi);
/* ICT from interleaved R, G, B to planes, and back. */
QEL_API QelStatus qeliICTFwd_JPEG2K_32f_C3P3R(const float* pSrc, int srcStep, float* const pDst[3], int dstStep,
                                              QelSize roi);
QEL_API QelStatus qeliICTInv_JPEG2K_32f_P3C3R(const float* const pSrc[3], int srcStep, float* pDst, int dstStep,
                                              QelSize roi);

/* Wavelets. A line of samples is split into a low half (the samples at even positions of the reference grid) and a high
 * half (the odd ones), by the reversible 5/3 or the irreversible 9/7 filter. Sizes are in samples. The tile functions
 * work in a buffer of the caller, of exactly the size that the matching GetBufSize function gives, at any address; the
 * first level's serves all levels.
 *
 * Applying a tile function to the low-low subband again gives the next level. Of a tile x, y, width, height (x and y
 * not negative) that subband is the tile with the left edge ceil(x / 2) and the right edge ceil((x + width) / 2), and
 * upper and lower edges by the same rule; a side may come out as 0, then there is nothing to transform. In place it
 * begins at the same address with the same step. */

/* Rows and columns whose surroundings hold the extension (T.800 F.3.7, F.4.7): the functions take what lies beside the
 * region as it is, so that a region can be any part of a longer line.
 *
 * `dstSize` and `srcSize` are the size of each half: for rows, width is the number of (low, high) pairs in a row and
 * height the number of rows; for columns, width is the number of columns and height the number of pairs. `phase` is 0
 * if the first sample of the region is low, anything else if it is high.
 *
 * Read beside the region are the samples that the results depend on, all of them and nothing else. They are counted
 * here along the line, before it and after it; for columns they are rows.
 *
 *   Forward, of w pairs x[0] .. x[2w - 1]:
 *     - 5/3, phase 0:   x[-2], x[-1]                     x[2w]
 *     - 5/3, phase 1:   x[-1]                            x[2w], x[2w + 1]
 *     - 9/7, phase 0:   x[-4] .. x[-1]                   x[2w] .. x[2w + 2]
 *     - 9/7, phase 1:   x[-3] .. x[-1]                   x[2w] .. x[2w + 3]
 *   Inverse, of low[0] .. low[w - 1] and high[0] .. high[w - 1]:
 *     - 5/3, phase 0:   high[-1]                         low[w], high[w]
 *     - 5/3, phase 1:   low[-1], high[-1]                high[w]
 *     - 9/7, phase 0:   low[-1], high[-2 .. -1]          low[w .. w + 1], high[w .. w + 1]
 *     - 9/7, phase 1:   low[-2 .. -1], high[-2 .. -1]    low[w], high[w .. w + 1]
 *
 * At the ends of a picture that is the symmetric extension: x[-i] = x[i], and beyond the last sample likewise.
 *
 * Source and destinations must not overlap. Checks: pointers (qelStsNullPtrErr), steps below 1 (qelStsStepErr), a width
 * or height below 1 (qelStsSizeErr); then qelStsNoErr. */

/* 5/3 (T.800 F.4.8.1 forward, F.3.8.1 inverse), with floors and sums that wrap in the samples' type:
 *     high[n] = x[2n + 1] - ((x[2n] + x[2n + 2]) >> 1),   low[n] = x[2n] + ((high[n - 1] + high[n] + 2) >> 2).
 * Inverse undoes forward to the bit, whatever the samples: both wrap alike (but see the tile functions for the doubling
 * of single samples, which needs a bit to spare). Coefficients of 16-bit samples are those of the exact formula, also
 * after both directions, as long as the samples have 13 bits or less, signed. The row 0, 10, 20, 30 with its extension,
 * in phase 0, gives the low half 0, 23 and the high half 0, 10. */
QEL_API QelStatus qeliWTFwdRow_B53_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDstLow, int dstLowStep,
                                                  int16_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase);
QEL_API QelStatus qeliWTFwdRow_B53_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, int32_t* pDstLow, int dstLowStep,
                                                  int32_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase);
QEL_API QelStatus qeliWTInvRow_B53_JPEG2K_16s_C1R(const int16_t* pSrcLow, int srcLowStep, const int16_t* pSrcHigh,
                                                  int srcHighStep, QelSize srcSize, int16_t* pDst, int dstStep,
                                                  int phase);
QEL_API QelStatus qeliWTInvRow_B53_JPEG2K_32s_C1R(const int32_t* pSrcLow, int srcLowStep, const int32_t* pSrcHigh,
                                                  int srcHighStep, QelSize srcSize, int32_t* pDst, int dstStep,
                                                  int phase);
QEL_API QelStatus qeliWTFwdCol_B53_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDstLow, int dstLowStep,
                                                  int16_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase);
QEL_API QelStatus qeliWTFwdCol_B53_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, int32_t* pDstLow, int dstLowStep,
                                                  int32_t* pDstHigh, int dstHighStep, QelSize dstSize, int phase);
QEL_API QelStatus qeliWTInvCol_B53_JPEG2K_16s_C1R(const int16_t* pSrcLow, int srcLowStep, const int16_t* pSrcHigh,
                                                  int srcHighStep, QelSize srcSize, int16_t* pDst, int dstStep,
                                                  int phase);
QEL_API QelStatus qeliWTInvCol_B53_JPEG2K_32s_C1R(const int32_t* pSrcLow, int srcLowStep, const int32_t* pSrcHigh,
                                                  int srcHighStep, QelSize srcSize, int32_t* pDst, int dstStep,
                                                  int phase);

/* 9/7 (T.800 F.4.8.2, F.3.8.2) in single precision: four lifting steps, then the low half is multiplied by 0.8128931
 * and the high half by 1.2301741; inverse goes back step by step. Every product and sum is rounded by itself, in the
 * order of the standard, so the result has the same bits on every processor. Inverse after forward gives lines of
 * magnitude m back within m / 200000. */
QEL_API QelStatus qeliWTFwdRow_D97_JPEG2K_32f_C1R(const float* pSrc, int srcStep, float* pDstLow, int dstLowStep,
                                                  float* pDstHigh, int dstHighStep, QelSize dstSize, int phase);
QEL_API QelStatus qeliWTInvRow_D97_JPEG2K_32f_C1R(const float* pSrcLow, int srcLowStep, const float* pSrcHigh,
                                                  int srcHighStep, QelSize srcSize, float* pDst, int dstStep,
                                                  int phase);
QEL_API QelStatus qeliWTFwdCol_D97_JPEG2K_32f_C1R(const float* pSrc, int srcStep, float* pDstLow, int dstLowStep,
                                                  float* pDstHigh, int dstHighStep, QelSize dstSize, int phase);
QEL_API QelStatus qeliWTInvCol_D97_JPEG2K_32f_C1R(const float* pSrcLow, int srcLowStep, const float* pSrcHigh,
                                                  int srcHighStep, QelSize srcSize, float* pDst, int dstStep,
                                                  int phase);

/* Tiles, one level in both directions, with symmetric extension. */

/* Bytes that the in-place functions need for a tile. `pTileRect` is the tile's place in the reference grid: x and y
 * matter by their parity alone. For 5/3 that is 0 if width and height are below 3, else 2 * m + 8 (16s) or 4 * m + 16
 * (32s) with m the larger of width and height; for 9/7, 0 if both are below 2, else 2 * m + 16 (16s) or 4 * m + 32
 * (32s). A null pointer gives qelStsNullPtrErr, a result below 0 or beyond an int qelStsSizeErr; a width or height
 * below 1 is not refused here, but by the transforms. */
QEL_API QelStatus qeliWTGetBufSize_B53_JPEG2K_16s_C1IR(const QelRect* pTileRect, int* pSize);
QEL_API QelStatus qeliWTGetBufSize_B53_JPEG2K_32s_C1IR(const QelRect* pTileRect, int* pSize);
QEL_API QelStatus qeliWTGetBufSize_D97_JPEG2K_16s_C1IR(const QelRect* pTileRect, int* pSize);
QEL_API QelStatus qeliWTGetBufSize_D97_JPEG2K_32s_C1IR(const QelRect* pTileRect, int* pSize);

/* Transforms a tile in place, one level in both directions with symmetric extension, columns first and then rows
 * (T.800 F.4.2; F.3.2 inverse, rows first). The tile's origin says which samples are low: those in columns c and rows r
 * with x + c and y + r even. Forward leaves the low half of each row in its first columns, and of each column in its
 * first rows: ceil(width / 2) columns if x is even, floor(width / 2) if it is odd. A line of one sample is kept at an
 * even position and doubled at an odd one, so a 1x1 tile with both coordinates odd is multiplied by 4; inverse halves.
 * 5/3 of the row 0, 10 at an even x gives 5, 10.
 *
 * 5/3 is reversible as described above. 9/7 of 16-bit samples works with constants of 14 fraction bits, rounds every
 * product to nearest (ties up) and wraps where a sum leaves 16 bits: of signed samples of 12 bits none does, and
 * inverse after forward is within 30 (12 is the worst that was found, more than 3 seldom). 9/7 of 32-bit samples
 * converts to single precision and back, towards zero, in each of the two directions; what lies beyond the integers
 * becomes the nearest of them (2147483648.0 itself becomes -2147483648). For signed samples of 16 bits inverse after
 * forward is within 12, for 20 bits within 26 (8 is the worst that was found).
 *
 * Checks: the data (qelStsNullPtrErr), the step (qelStsStepErr), the rectangle and the buffer, which must not be null
 * even if no bytes are needed, then a width or height below 1 (qelStsSizeErr). The rows must not overlap. */
QEL_API QelStatus qeliWTFwd_B53_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect,
                                                uint8_t* pBuffer);
QEL_API QelStatus qeliWTFwd_B53_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect,
                                                uint8_t* pBuffer);
QEL_API QelStatus qeliWTInv_B53_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect,
                                                uint8_t* pBuffer);
QEL_API QelStatus qeliWTInv_B53_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect,
                                                uint8_t* pBuffer);
QEL_API QelStatus qeliWTFwd_D97_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect,
                                                uint8_t* pBuffer);
QEL_API QelStatus qeliWTFwd_D97_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect,
                                                uint8_t* pBuffer);
QEL_API QelStatus qeliWTInv_D97_JPEG2K_16s_C1IR(int16_t* pSrcDst, int srcDstStep, const QelRect* pTileRect,
                                                uint8_t* pBuffer);
QEL_API QelStatus qeliWTInv_D97_JPEG2K_32s_C1IR(int32_t* pSrcDst, int srcDstStep, const QelRect* pTileRect,
                                                uint8_t* pBuffer);

/* Bytes that the functions with subbands need: a row of the tile rounded up to a multiple of 32 bytes, times height,
 * plus what the in-place functions need. Fails like those. */
QEL_API QelStatus qeliWTGetBufSize_B53_JPEG2K_16s_C1R(const QelRect* pTileRect, int* pSize);
QEL_API QelStatus qeliWTGetBufSize_B53_JPEG2K_32s_C1R(const QelRect* pTileRect, int* pSize);
QEL_API QelStatus qeliWTGetBufSize_D97_JPEG2K_16s_C1R(const QelRect* pTileRect, int* pSize);
QEL_API QelStatus qeliWTGetBufSize_D97_JPEG2K_32s_C1R(const QelRect* pTileRect, int* pSize);

/* Like the in-place functions, but between a picture and four subbands: 0 low in both directions (LL), 1 low
 * horizontally and high vertically (LH), 2 high horizontally and low vertically (HL), 3 high in both (HH), each with a
 * step of its own. Band 0 has ceil(width / 2) x ceil(height / 2) samples, band 1 ceil(width / 2) x floor(height / 2),
 * band 2 floor(width / 2) x ceil(height / 2), band 3 floor(width / 2) x floor(height / 2).
 *
 * NOTE: THESE SIZES DO NOT DEPEND ON THE ORIGIN. At an odd x with an odd width there is one high column more than there
 * are low ones, and the first high column is the last one of bands 0 and 1; likewise for odd y and height. The in-place
 * functions give the subbands of T.800 at every origin: take those for more than one level of a tile at an odd origin.
 *
 * The picture may overlap the subbands: all of the source is read before anything is written. Checks: pointers, also
 * of the arrays and of each subband (qelStsNullPtrErr), steps below 1 (qelStsStepErr), a width or height below 1
 * (qelStsSizeErr). */
QEL_API QelStatus qeliWTFwd_B53_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, const QelRect* pTileRect,
                                               int16_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer);
QEL_API QelStatus qeliWTFwd_B53_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, const QelRect* pTileRect,
                                               int32_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer);
QEL_API QelStatus qeliWTInv_B53_JPEG2K_16s_C1R(const int16_t* const pSrc[4], const int srcStep[4],
                                               const QelRect* pTileRect, int16_t* pDst, int dstStep, uint8_t* pBuffer);
QEL_API QelStatus qeliWTInv_B53_JPEG2K_32s_C1R(const int32_t* const pSrc[4], const int srcStep[4],
                                               const QelRect* pTileRect, int32_t* pDst, int dstStep, uint8_t* pBuffer);
QEL_API QelStatus qeliWTFwd_D97_JPEG2K_16s_C1R(const int16_t* pSrc, int srcStep, const QelRect* pTileRect,
                                               int16_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer);
QEL_API QelStatus qeliWTFwd_D97_JPEG2K_32s_C1R(const int32_t* pSrc, int srcStep, const QelRect* pTileRect,
                                               int32_t* const pDst[4], const int dstStep[4], uint8_t* pBuffer);
QEL_API QelStatus qeliWTInv_D97_JPEG2K_16s_C1R(const int16_t* const pSrc[4], const int srcStep[4],
                                               const QelRect* pTileRect, int16_t* pDst, int dstStep, uint8_t* pBuffer);
QEL_API QelStatus qeliWTInv_D97_JPEG2K_32s_C1R(const int32_t* const pSrc[4], const int srcStep[4],
                                               const QelRect* pTileRect, int32_t* pDst, int dstStep, uint8_t* pBuffer);

#ifdef __cplusplus
}
#endif

#endif
