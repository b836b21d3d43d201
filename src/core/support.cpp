// Support primitives: exported functions.
#include "core/support.h"

#include <string.h>

#include "core/checks.h"
#include "core/dispatch.h"
#include "core/past_caches.h"
#include "core/rows.h"
#include "jpeg/zigzag.h"
#include "qeljx/support.h"

using namespace qel;

namespace {

// One call of row(src, dst, elements, past) for a region whose rows lie back to back, else one for each row.
template <class Src, class Dst, class Row>
QelStatus eachRow(const Src* pSrc, int srcStep, Dst* pDst, int dstStep, QelSize roi, Row row)
{
    // Sizes before steps, unlike most functions.
    if (QelStatus bad = first(pointers(pSrc, pDst), size(roi), steps(srcStep, dstStep))) return bad;
    size_t width = (size_t)roi.width, elements = width * (size_t)roi.height;
    bool past = elements * sizeof(Dst) > kPastCaches;
    if ((size_t)srcStep == width * sizeof(Src) && (size_t)dstStep == width * sizeof(Dst))
        row(pSrc, pDst, elements, past);
    else
        forRows(roi, [=](int r) { row(rowAt(pSrc, srcStep, r), rowAt(pDst, dstStep, r), width, past); });
    return qelStsNoErr;
}

template <class T> QelStatus copyRegion(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roi)
{
    return eachRow(pSrc, srcStep, pDst, dstStep, roi, [](const T* src, T* dst, size_t len, bool past) {
        owniCopy_8u_C1((const uint8_t*)src, (uint8_t*)dst, len * sizeof(T), past);
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
    return eachRow(pSrc, srcStep, pDst, dstStep, roi, owniConvert_8u16u);
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

QelStatus qeliZigzagInv8x8_16s_C1(const int16_t* pSrc, int16_t* pDst)
{
    if (QelStatus bad = pointers(pSrc, pDst)) return bad;
    for (int n = 0; n < 64; ++n) memcpy(pDst + n, pSrc + zigzag_index_Fwd[n], sizeof *pDst);
    return qelStsNoErr;
}

QelStatus qelsZero_8u(uint8_t* pDst, int len)
{
    if (QelStatus bad = first(pointers(pDst), length(len))) return bad;
    ownsZero_8u(pDst, (size_t)len);
    return qelStsNoErr;
}

QelStatus qelsZero_16s(int16_t* pDst, int len)
{
    if (QelStatus bad = first(pointers(pDst), length(len))) return bad;
    ownsZero_8u((uint8_t*)pDst, (size_t)len * sizeof *pDst);
    return qelStsNoErr;
}

QelStatus qelsCopy_8u(const uint8_t* pSrc, uint8_t* pDst, int len)
{
    if (QelStatus bad = first(pointers(pSrc, pDst), length(len))) return bad;
    ownsCopy_8u(pSrc, pDst, (size_t)len);
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

void ownsZero_8u(uint8_t* dst, size_t len) { memset(dst, 0, len); }

void ownsSet_32s(int32_t value, int32_t* dst, int len) { kernels<SupportKernels>().set32s(value, dst, len); }

void ownsCopy_8u(const uint8_t* src, uint8_t* dst, size_t len) { memcpy(dst, src, len); }

void owniCopy_8u_C1(const uint8_t* src, uint8_t* dst, size_t len, int past)
{
    if (!past) {
        memcpy(dst, src, len);
        return;
    }
    auto& table = kernels<SupportKernels>();
    table.copyPast(src, dst, len);
    table.finishStores();
}

void owniConvert_8u16u(const uint8_t* src, uint16_t* dst, size_t len, int past)
{
    auto& table = kernels<SupportKernels>();
    (past ? table.convert8u16uPast : table.convert8u16u)(src, dst, len);
    if (past) table.finishStores();
}

void ownsMul_16u16s_PosSfs(const uint16_t* table, const int16_t* src, int16_t* dst, int len, int scale)
{
    kernels<SupportKernels>().mulScaled(table, src, dst, len, scale);
}
