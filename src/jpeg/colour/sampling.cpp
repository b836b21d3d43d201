// SPDX-License-Identifier: Apache-2.0
// Chroma sampling by two: public functions.
#include "jpeg/colour/sampling.h"

#include "core/checks.h"
#include "core/streaming.h"
#include "qeljx/jpeg_sampling.h"

using namespace qel;

namespace {

// Argument by argument; the two sizes are not compared.
QelStatus checkPlanes(const uint8_t* pSrc, int srcStep, QelSize srcSize, const uint8_t* pDst, int dstStep,
                      QelSize dstSize)
{
    return first(pointers(pSrc), steps(srcStep), size(srcSize), pointers(pDst), steps(dstStep), size(dstSize));
}

// The source row that holds destination row r, or its neighbour on the side where r lies. Rows repeat at the edges.
int nearRow(int r, int srcHeight) { return r / 2 < srcHeight ? r / 2 : srcHeight - 1; }
int farRow(int r, int srcHeight)
{
    int row = r % 2 == 0 ? r / 2 - 1 : r / 2 + 1;
    return row < 0 ? 0 : row < srcHeight ? row : srcHeight - 1;
}

}

QelStatus qeliSampleDownH2V1_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst, int dstStep,
                                         QelSize dstSize)
{
    if (QelStatus bad = checkPlanes(pSrc, srcStep, srcSize, pDst, dstStep, dstSize)) return bad;
    auto down = kernels<SamplingKernels>().downH2V1;
    forRows(dstSize, [=](int r) { down(rowAt(pSrc, srcStep, r), rowAt(pDst, dstStep, r), dstSize.width); });
    return qelStsNoErr;
}

QelStatus qeliSampleDownH2V2_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst, int dstStep,
                                         QelSize dstSize)
{
    if (QelStatus bad = checkPlanes(pSrc, srcStep, srcSize, pDst, dstStep, dstSize)) return bad;
    auto down = kernels<SamplingKernels>().downH2V2;
    forRows<Threads::all>(dstSize, [=](int r) {
        const uint8_t* upper = rowAt(rowAt(pSrc, srcStep, r), srcStep, r);
        down(upper, rowAt(upper, srcStep, 1), rowAt(pDst, dstStep, r), dstSize.width);
    });
    return qelStsNoErr;
}

QelStatus qeliSampleUpH2V1_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst, int dstStep,
                                       QelSize dstSize)
{
    if (QelStatus bad = checkPlanes(pSrc, srcStep, srcSize, pDst, dstStep, dstSize)) return bad;
    auto kernels = qel::kernels<SamplingKernels>().upH2V1;
    forBlocksOfOutput<Threads::one>(dstSize, isStreamed(dstSize, 1), kernels, [=](auto* up, int r, int end) {
        for (; r < end; ++r) {
            int from = r < srcSize.height ? r : srcSize.height - 1;
            up(rowAt(pSrc, srcStep, from), rowAt(pDst, dstStep, r), dstSize.width);
        }
    });
    return qelStsNoErr;
}

QelStatus qeliSampleUpH2V2_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst, int dstStep,
                                       QelSize dstSize)
{
    if (QelStatus bad = checkPlanes(pSrc, srcStep, srcSize, pDst, dstStep, dstSize)) return bad;
    auto& table = kernels<SamplingKernels>();
    auto both = table.upBothH2V2;
    // Two rows at a time halve the work of loading, but two rows of non-temporal stores are slower than one, and rows
    // that overlap have to be written one after the other.
    bool streams = isStreamed(dstSize, 1), inPairs = !streams && dstStep >= dstSize.width;
    forBlocksOfOutput<Threads::all>(dstSize, streams, table.upH2V2, [=](auto* up, int r, int end) {
        while (r < end) {
            auto near = rowAt(pSrc, srcStep, nearRow(r, srcSize.height)),
                 far = rowAt(pSrc, srcStep, farRow(r, srcSize.height));
            auto dst = rowAt(pDst, dstStep, r);
            if (inPairs && r % 2 == 1 && r + 1 < end) {
                both(near, far, dst, rowAt(dst, dstStep, 1), dstSize.width);
                r += 2;
            } else {
                up(near, far, dst, dstSize.width);
                ++r;
            }
        }
    });
    return qelStsNoErr;
}

QelStatus qeliSampleDownRowH2V1_Box_JPEG_8u_C1(const uint8_t* pSrc, int srcWidth, uint8_t* pDst)
{
    if (QelStatus bad = first(pointers(pSrc, pDst), length(srcWidth))) return bad;
    kernels<SamplingKernels>().downRowH2V1(pSrc, srcWidth, pDst);
    return qelStsNoErr;
}

QelStatus qeliSampleDownRowH2V2_Box_JPEG_8u_C1(const uint8_t* pSrc1, const uint8_t* pSrc2, int srcWidth, uint8_t* pDst)
{
    if (QelStatus bad = first(pointers(pSrc1, pSrc2, pDst), length(srcWidth))) return bad;
    kernels<SamplingKernels>().downRowH2V2(pSrc1, pSrc2, srcWidth, pDst);
    return qelStsNoErr;
}

QelStatus qeliSampleUpRowH2V1_Triangle_JPEG_8u_C1(const uint8_t* pSrc, int srcWidth, uint8_t* pDst)
{
    if (QelStatus bad = first(pointers(pSrc, pDst), length(srcWidth))) return bad;
    kernels<SamplingKernels>().upRowH2V1(pSrc, srcWidth, pDst);
    return qelStsNoErr;
}

QelStatus qeliSampleUpRowH2V2_Triangle_JPEG_8u_C1(const uint8_t* pSrcNear, const uint8_t* pSrcFar, int srcWidth,
                                                  uint8_t* pDst)
{
    if (QelStatus bad = first(pointers(pSrcNear, pSrcFar, pDst), length(srcWidth))) return bad;
    kernels<SamplingKernels>().upRowH2V2(pSrcNear, pSrcFar, srcWidth, pDst);
    return qelStsNoErr;
}
