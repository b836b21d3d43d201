// SPDX-License-Identifier: Apache-2.0
// Lossless prediction: public functions.
#include "jpeg/lossless/prediction.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "qeljx/jpeg_lossless.h"

using namespace qel;

namespace {

using Rows = PredictionRow* (PredictionKernels::*)[7];

// One of predictor 1 below a sample of half the range. The exponent counts modulo 32, and most of those values are
// beyond 16 bits, which gives 0.
QelStatus firstRow(const int16_t* src, int16_t* dst, int width, int precision, int pointTransform, Rows rows)
{
    bool isAllowed = precision >= 2 && precision <= 16 && pointTransform >= 0;
    if (QelStatus bad = first(pointers(src, dst), length(width), values(isAllowed))) return bad;
    auto above = int16_t(uint32_t(1) << ((precision - pointTransform - 1) & 31));
    (kernels<PredictionKernels>().*rows)[0](src, &above, dst, width);
    return qelStsNoErr;
}

QelStatus laterRow(const int16_t* src, const int16_t* prev, int16_t* dst, int width, int predictor, Rows rows)
{
    bool isAllowed = predictor >= 1 && predictor <= 7;
    if (QelStatus bad = first(pointers(src, prev, dst), length(width), values(isAllowed))) return bad;
    (kernels<PredictionKernels>().*rows)[predictor - 1](src, prev, dst, width);
    return qelStsNoErr;
}

}

QelStatus qeliDiffPredFirstRow_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, int width, int precision,
                                           int pointTransform)
{
    return firstRow(pSrc, pDst, width, precision, pointTransform, &PredictionKernels::diff);
}

QelStatus qeliDiffPredRow_JPEG_16s_C1(const int16_t* pSrc, const int16_t* pPrevRow, int16_t* pDst, int width,
                                      int predictor)
{
    return laterRow(pSrc, pPrevRow, pDst, width, predictor, &PredictionKernels::diff);
}

QelStatus qeliReconstructPredFirstRow_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, int width, int precision,
                                                  int pointTransform)
{
    return firstRow(pSrc, pDst, width, precision, pointTransform, &PredictionKernels::reconstruct);
}

QelStatus qeliReconstructPredRow_JPEG_16s_C1(const int16_t* pSrc, const int16_t* pPrevRow, int16_t* pDst, int width,
                                             int predictor)
{
    return laterRow(pSrc, pPrevRow, pDst, width, predictor, &PredictionKernels::reconstruct);
}
