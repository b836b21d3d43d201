/* SPDX-License-Identifier: Apache-2.0 */
/* Prediction of lossless JPEG, row by row (T.81 Annex H). */
#ifndef QELJX_JPEG_LOSSLESS_H
#define QELJX_JPEG_LOSSLESS_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * An encoder codes each sample x of a component as its difference from a prediction, made of its neighbours a to the
 * left, b above and c above to the left (T.81 H.1.2.1, Table H.1):
 *
 *     1: a    2: b    3: c    4: a + b - c    5: a + (b - c) / 2    6: b + (a - c) / 2    7: (a + b) / 2
 *
 * The first sample of a row is always predicted by b. In the first row of a scan or restart interval the first sample
 * is predicted by 2^(precision - pointTransform - 1), all others by a. Sums and differences are kept modulo 2^16.
 * Halves are rounded down, and what is halved is formed of values from -32768 to 32767: where samples of 16 bits reach
 * 32768, predictors 5 to 7 differ from those of T.81, which reads samples as unsigned.
 *
 * A row has `width` samples (or differences) of one component, next to each other, at any address. Samples are those
 * after the point transform, which a caller applies itself: shifted right by `pointTransform` bits. The differences are
 * what qeliEncodeHuffmanOne_JPEG_16s1u_C1 takes and qeliDecodeHuffmanOne_JPEG_1u16s_C1 gives.
 *
 * Rows may overlap or be the same: the result is that of a loop over the samples from left to right. A decoder may so
 * replace the differences by the samples. An encoder may not: it would predict from differences.
 *
 * Returns qelStsNullPtrErr if a pointer is null, qelStsSizeErr if the width is less than 1, qelStsBadArgErr if the
 * precision is not in 2 to 16 or the point transform less than 0, or if the predictor is not in 1 to 7; nothing is
 * written then. Else qelStsNoErr. The exponent of the first row counts modulo 32, so that a point transform of
 * `precision` or more has a defined result, if a meaningless one.
 *
 * Worked: at 8 bits the first row 130, 129 has the differences 2, -1; a row 131, 131 below it has, by predictor 4, the
 * differences 1, 131 - (131 + 129 - 130) = 1.
 */

/* Samples to differences. */
QEL_API QelStatus qeliDiffPredFirstRow_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, int width, int precision,
                                                   int pointTransform);
QEL_API QelStatus qeliDiffPredRow_JPEG_16s_C1(const int16_t* pSrc, const int16_t* pPrevRow, int16_t* pDst, int width,
                                              int predictor);
/* Differences to samples. */
QEL_API QelStatus qeliReconstructPredFirstRow_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, int width, int precision,
                                                          int pointTransform);
QEL_API QelStatus qeliReconstructPredRow_JPEG_16s_C1(const int16_t* pSrc, const int16_t* pPrevRow, int16_t* pDst,
                                                     int width, int predictor);

#ifdef __cplusplus
}
#endif

#endif
