/* SPDX-License-Identifier: Apache-2.0 */
/* JPEG chroma resampling by two: box filters down, triangle filters up (the component sampling of T.81 A.1.1, which
 * leaves the filters to the codec). H2V1 halves or doubles the width (4:2:2), H2V2 the width and the height (4:2:0).
 * Samples are unsigned bytes, one channel; pointers and steps may have any alignment. */
#ifndef QELJX_JPEG_SAMPLING_H
#define QELJX_JPEG_SAMPLING_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Planes. `srcSize` and `dstSize` are in samples, steps in bytes. The functions walk the destination: `dstSize` says
 * how many samples are written, and how many are read of each source row. Of `srcSize` up-sampling uses the height,
 * below which the last source row is repeated, and nothing else; down-sampling only checks it. The two sizes are not
 * checked against each other. Source and destination must not overlap; rows of the destination that overlap each other
 * come out as if written from top to bottom, unless threads share them. Checks go argument by argument: source, source
 * step, source size, destination, destination step, destination size (qelStsNullPtrErr, qelStsStepErr, qelStsSizeErr).
 * The H2V2 functions split the destination rows over OpenMP threads if there are more than 8192 destination samples.
 *
 * Down-sampling of planes rounds up, by a quarter of a level on average in H2V1 and three eighths in H2V2; the row
 * functions and up-sampling have no such bias, that of the MCU conversion is as large downwards. */

/* Box filter down: the mean of 2x1 samples, (a + b + 1) >> 1, so the row 0, 1, 0, 1 gives 1, 1.
 * Reads dstSize.width * 2 samples of dstSize.height rows: where the picture's width is odd, the caller's rows need one
 * more sample (as a rule a copy of the last). */
QEL_API QelStatus qeliSampleDownH2V1_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst,
                                                 int dstStep, QelSize dstSize);
/* Like DownH2V1, but the mean of 2x2 samples, rounded up: (a + b + c + d + 3) >> 2, so 0, 0, 0, 1 gives 1.
 * Reads dstSize.height * 2 rows: where the picture's height is odd, the caller's plane needs one more row. */
QEL_API QelStatus qeliSampleDownH2V2_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst,
                                                 int dstStep, QelSize dstSize);

/* Triangle filter up: two samples from each, three parts of the sample itself to one part of its neighbour,
 *     dst[2 i] = (3 src[i] + src[i - 1] + 1) >> 2,    dst[2 i + 1] = (3 src[i] + src[i + 1] + 2) >> 2.
 *
 * NOTE: EACH SOURCE ROW IS READ FROM ONE SAMPLE BEFORE ITS START TO THE ONE AFTER THE LAST PAIR: pSrc[-1] and
 * pSrc[dstSize.width / 2] must be readable, and they take part in the result. As a rule the caller fills them with
 * copies of the first and the last sample of the row; the row functions below do that by themselves.
 *
 * An odd dstSize.width is written in full and not beyond, and its last sample is then made of pSrc[dstSize.width / 2].
 * Destination row r is made of source row r, or of the last one where there are fewer. */
QEL_API QelStatus qeliSampleUpH2V1_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst,
                                               int dstStep, QelSize dstSize);
/* Like UpH2V1, THE SAMPLES BEFORE AND AFTER EACH SOURCE ROW INCLUDED, but in both directions: destination
 * row r takes the sums c[i] = 3 near[i] + far[i], where near is source row r / 2 and far the row above it (r even) or
 * below it (r odd), and
 *     dst[2 i] = (3 c[i] + c[i - 1] + 8) >> 4,    dst[2 i + 1] = (3 c[i] + c[i + 1] + 7) >> 4.
 * The first and the last source row stand for the rows that are missing above and below (also if dstSize.height is
 * more than twice srcSize.height); no row outside the source is read. */
QEL_API QelStatus qeliSampleUpH2V2_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst,
                                               int dstStep, QelSize dstSize);

/* Single rows. `srcWidth` is in source samples. Nothing outside the rows is read or written; source and destination
 * must not overlap. Null pointers give qelStsNullPtrErr, then a width below 1 qelStsSizeErr. */

/* Box filter down: writes srcWidth / 2 samples (none for a width of 1; the last sample of an odd width is left out).
 * Unlike the plane functions, the rounding alternates so that no error builds up:
 *     dst[k] = (src[2 k] + src[2 k + 1] + b) >> 1 with b = 0 for even k and 1 for odd k,
 * so the row 0, 1, 0, 1 gives 0, 1. */
QEL_API QelStatus qeliSampleDownRowH2V1_Box_JPEG_8u_C1(const uint8_t* pSrc, int srcWidth, uint8_t* pDst);
/* Like DownRowH2V1, but over two rows: the sum of four samples + b, shifted right by 2, b = 1 for even k and 2 for odd
 * k. */
QEL_API QelStatus qeliSampleDownRowH2V2_Box_JPEG_8u_C1(const uint8_t* pSrc1, const uint8_t* pSrc2, int srcWidth,
                                                       uint8_t* pDst);
/* Triangle filter up: writes srcWidth * 2 samples, by the formulas of UpH2V1. The first and the last sample stand for
 * their missing neighbours, so the outermost samples pass unchanged: the row 10, 20 gives 10, 13, 17, 20. */
QEL_API QelStatus qeliSampleUpRowH2V1_Triangle_JPEG_8u_C1(const uint8_t* pSrc, int srcWidth, uint8_t* pDst);
/* Like UpRowH2V1, but over two rows by the formulas of UpH2V2: pSrcNear is the source row closer to the destination
 * row, pSrcFar the next one on its other side. At the ends (4 c + 8) >> 4 on the left, (4 c + 7) >> 4 on the right. */
QEL_API QelStatus qeliSampleUpRowH2V2_Triangle_JPEG_8u_C1(const uint8_t* pSrcNear, const uint8_t* pSrcFar, int srcWidth,
                                                          uint8_t* pDst);

#ifdef __cplusplus
}
#endif

#endif
