// SPDX-License-Identifier: Apache-2.0
// Support primitives: public functions.
#include "core/support.h"

#include <string.h>

#include "core/checks.h"
#include "core/streaming.h"
#include "qeljx/support.h"

using namespace qel;

namespace {

// Calls move(kernel, src, dst, elements) for each row, or once for a region whose rows lie back to back.
template <class Src, class Dst, class Row, class Move>
QelStatus eachRow(const Src* pSrc, int srcStep, Dst* pDst, int dstStep, QelSize roi, Streamable<Row> kernels, Move move)
{
    // Sizes before steps, unlike most functions.
    if (QelStatus bad = first(pointers(pSrc, pDst), size(roi), steps(srcStep, dstStep))) return bad;
    size_t width = size_t(roi.width);
    bool isDense = size_t(srcStep) == width * sizeof(Src) && size_t(dstStep) == width * sizeof(Dst);
    size_t elements = isDense ? width * size_t(roi.height) : width;
    QelSize rows = {roi.width, isDense ? 1 : roi.height};
    bool streams = isStreamed(roi, sizeof(Dst));
    forBlocksOfOutput<Threads::one>(rows, streams, kernels, [=](Row* kernel, int row, int end) {
        for (; row < end; ++row) move(kernel, rowAt(pSrc, srcStep, row), rowAt(pDst, dstStep, row), elements);
    });
    return qelStsNoErr;
}

template <class T> QelStatus copyRegion(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roi)
{
    return eachRow(pSrc, srcStep, pDst, dstStep, roi, kernels<SupportKernels>().copy,
                   [](auto copy, const T* src, T* dst, size_t elements) {
                       copy((const uint8_t*)src, (uint8_t*)dst, elements * sizeof(T));
                   });
}

// The nearest integer to value / divisor, ties to even.
uint16_t divide(uint32_t value, uint32_t divisor)
{
    uint32_t quotient = value / divisor, rest = value % divisor;
    return uint16_t(quotient + (2 * rest + (quotient & 1) > divisor));
}

}

QelStatus qeliConvert_8u16u_C1R(const uint8_t* pSrc, int srcStep, uint16_t* pDst, int dstStep, QelSize roi)
{
    return eachRow(pSrc, srcStep, pDst, dstStep, roi, kernels<SupportKernels>().convert8u16u,
                   [](auto convert, const uint8_t* src, uint16_t* dst, size_t len) { convert(src, dst, len); });
}

QelStatus qeliCopy_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDst, int dstStep, QelSize roi)
{
    return copyRegion(pSrc, srcStep, pDst, dstStep, roi);
}

QelStatus qeliCopy_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, QelSize roi)
{
    return copyRegion(pSrc, srcStep, pDst, dstStep, roi);
}

QelStatus qeliAndC_32s_C1R(const int32_t* pSrc, int srcStep, int32_t value, int32_t* pDst, int dstStep, QelSize roi)
{
    if (QelStatus bad = first(pointers(pSrc, pDst), steps(srcStep, dstStep), size(roi))) return bad;
    auto and32s = kernels<SupportKernels>().and32s;
    forRows(roi, [=](int r) { and32s(rowAt(pSrc, srcStep, r), value, rowAt(pDst, dstStep, r), roi.width); });
    return qelStsNoErr;
}

QelStatus qeliAndC_32s_C1IR(int32_t value, int32_t* pSrcDst, int srcDstStep, QelSize roi)
{
    return qeliAndC_32s_C1R(pSrcDst, srcDstStep, value, pSrcDst, srcDstStep, roi);
}

QelStatus qelsZero_8u(uint8_t* pDst, int len)
{
    if (QelStatus bad = first(pointers(pDst), length(len))) return bad;
    memset(pDst, 0, size_t(len));
    return qelStsNoErr;
}

QelStatus qelsZero_16s(int16_t* pDst, int len)
{
    if (QelStatus bad = first(pointers(pDst), length(len))) return bad;
    memset(pDst, 0, size_t(len) * sizeof *pDst);
    return qelStsNoErr;
}

QelStatus qelsCopy_8u(const uint8_t* pSrc, uint8_t* pDst, int len)
{
    if (QelStatus bad = first(pointers(pSrc, pDst), length(len))) return bad;
    memcpy(pDst, pSrc, size_t(len));
    return qelStsNoErr;
}

QelStatus qelsDivCRev_16u(const uint16_t* pSrc, uint16_t value, uint16_t* pDst, int len)
{
    if (QelStatus bad = first(pointers(pSrc, pDst), length(len))) return bad;
    QelStatus status = qelStsNoErr;
    for (int i = 0; i < len; ++i) {
        uint16_t divisor, quotient = value == 0 ? 0 : 65535;
        memcpy(&divisor, pSrc + i, sizeof divisor);
        if (divisor == 0)
            status = qelStsDivByZero;
        else
            quotient = divide(value, divisor);
        memcpy(pDst + i, &quotient, sizeof quotient);
    }
    return status;
}

QelStatus qelsDivCRev_16u_I(uint16_t value, uint16_t* pSrcDst, int len)
{
    return qelsDivCRev_16u(pSrcDst, value, pSrcDst, len);
}
