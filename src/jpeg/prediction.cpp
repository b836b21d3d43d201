// Lossless prediction: exported functions.
#include "jpeg/prediction.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "qeljx/jpeg_lossless.h"

using namespace qel;

namespace {

// A first row is one of predictor 1 below this sample. The exponent counts modulo 32, and most of those values are
// beyond 16 bits, which gives 0.
int16_t aboveFirst(int precision, int pointTransform)
{
    return (int16_t)(uint32_t(1) << ((precision - pointTransform - 1) & 31));
}

QelStatus checkFirstRow(const int16_t* src, const int16_t* dst, int width, int precision, int pointTransform)
{
    return first(pointers(src, dst), length(width), values(precision >= 2 && precision <= 16 && pointTransform >= 0));
}

QelStatus checkRow(const int16_t* src, const int16_t* prev, const int16_t* dst, int width, int predictor)
{
    return first(pointers(src, prev, dst), length(width), values(predictor >= 1 && predictor <= 7));
}

}

QelStatus qeliDiffPredFirstRow_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, int width, int precision,
                                           int pointTransform)
{
    if (QelStatus bad = checkFirstRow(pSrc, pDst, width, precision, pointTransform)) return bad;
    int16_t above = aboveFirst(precision, pointTransform);
    ownqj_DiffRow_PRED1_JPEG_16s_C1(pSrc, &above, pDst, width);
    return qelStsNoErr;
}

QelStatus qeliDiffPredRow_JPEG_16s_C1(const int16_t* pSrc, const int16_t* pPrevRow, int16_t* pDst, int width,
                                      int predictor)
{
    if (QelStatus bad = checkRow(pSrc, pPrevRow, pDst, width, predictor)) return bad;
    kernels<PredictionKernels>().diff[predictor - 1](pSrc, pPrevRow, pDst, width);
    return qelStsNoErr;
}

QelStatus qeliReconstructPredFirstRow_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, int width, int precision,
                                                  int pointTransform)
{
    if (QelStatus bad = checkFirstRow(pSrc, pDst, width, precision, pointTransform)) return bad;
    int16_t above = aboveFirst(precision, pointTransform);
    ownqj_ReconstructRow_PRED1_JPEG_16s_C1(pSrc, &above, pDst, width);
    return qelStsNoErr;
}

QelStatus qeliReconstructPredRow_JPEG_16s_C1(const int16_t* pSrc, const int16_t* pPrevRow, int16_t* pDst, int width,
                                             int predictor)
{
    if (QelStatus bad = checkRow(pSrc, pPrevRow, pDst, width, predictor)) return bad;
    kernels<PredictionKernels>().reconstruct[predictor - 1](pSrc, pPrevRow, pDst, width);
    return qelStsNoErr;
}

void ownqj_DiffRow_PRED1_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().diff[0](src, prev, dst, width);
}
void ownqj_DiffRow_PRED2_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().diff[1](src, prev, dst, width);
}
void ownqj_DiffRow_PRED3_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().diff[2](src, prev, dst, width);
}
void ownqj_DiffRow_PRED4_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().diff[3](src, prev, dst, width);
}
void ownqj_DiffRow_PRED5_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().diff[4](src, prev, dst, width);
}
void ownqj_DiffRow_PRED6_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().diff[5](src, prev, dst, width);
}
void ownqj_DiffRow_PRED7_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().diff[6](src, prev, dst, width);
}
void ownqj_ReconstructRow_PRED1_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().reconstruct[0](src, prev, dst, width);
}
void ownqj_ReconstructRow_PRED2_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().reconstruct[1](src, prev, dst, width);
}
void ownqj_ReconstructRow_PRED3_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().reconstruct[2](src, prev, dst, width);
}
void ownqj_ReconstructRow_PRED4_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().reconstruct[3](src, prev, dst, width);
}
void ownqj_ReconstructRow_PRED5_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().reconstruct[4](src, prev, dst, width);
}
void ownqj_ReconstructRow_PRED6_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().reconstruct[5](src, prev, dst, width);
}
void ownqj_ReconstructRow_PRED7_JPEG_16s_C1(const int16_t* src, const int16_t* prev, int16_t* dst, int width)
{
    kernels<PredictionKernels>().reconstruct[6](src, prev, dst, width);
}
