// Level shift: exported functions.
#include "jpeg/level_shift.h"

#include "core/checks.h"
#include "core/dispatch.h"
#include "core/past_caches.h"
#include "core/rows.h"
#include "qeljx/jpeg_block.h"

using namespace qel;

namespace {

template <class Src, class Dst>
void shiftRegion(void (*shift)(const Src*, Dst*, int), const Src* src, int srcStep, Dst* dst, int dstStep, QelSize roi)
{
    if ((size_t)roi.width * (size_t)roi.height * sizeof(Dst) < kPastCaches)
        return forRows(roi, [=](int r) { shift(rowAt(src, srcStep, r), rowAt(dst, dstStep, r), roi.width); });
    forRows(roi, [=](int r) {
        const Src* row = rowAt(src, srcStep, r);
        RowPastCaches out(rowAt(dst, dstStep, r));
        eachPiece(roi.width, [&](int first, int count) {
            shift(row + first, (Dst*)out.room(), count);
            out.add((size_t)count * sizeof(Dst));
        });
        out.finish();
    });
    kernels<SupportKernels>().finishStores();
}

}

QelStatus qeliSub128_JPEG_8u16s_C1R(const uint8_t* pSrc, int srcStep, int16_t* pDst, int dstStep, QelSize roi)
{
    if (QelStatus bad = first(pointers(pSrc, pDst), steps(srcStep, dstStep), size(roi))) return bad;
    ownqj_Sub128_JPEG_8u16s_C1R(pSrc, srcStep, pDst, dstStep, roi);
    return qelStsNoErr;
}

// Checked argument by argument, unlike Sub128.
QelStatus qeliAdd128_JPEG_16s8u_C1R(const int16_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi)
{
    if (QelStatus bad = first(pointers(pSrc), steps(srcStep), pointers(pDst), steps(dstStep), size(roi))) return bad;
    ownqj_Add128_JPEG_16s8u_C1R(pSrc, srcStep, pDst, dstStep, roi);
    return qelStsNoErr;
}

void ownqj_Sub128_JPEG_8u16s_C1R(const uint8_t* src, int srcStep, int16_t* dst, int dstStep, QelSize roi)
{
    shiftRegion(kernels<LevelShiftKernels>().sub128, src, srcStep, dst, dstStep, roi);
}

void ownqj_Add128_JPEG_16s8u_C1R(const int16_t* src, int srcStep, uint8_t* dst, int dstStep, QelSize roi)
{
    shiftRegion(kernels<LevelShiftKernels>().add128, src, srcStep, dst, dstStep, roi);
}

void ownqj_Sub128_JPEG_8u16s_C1(const uint8_t* src, int16_t* dst, int len)
{
    kernels<LevelShiftKernels>().sub128(src, dst, len);
}

void ownqj_Add128_JPEG_16s8u_C1(const int16_t* src, uint8_t* dst, int len)
{
    kernels<LevelShiftKernels>().add128(src, dst, len);
}

void ownqj_Sub128_8x8_8u16s(const uint8_t* src, int srcStep, int16_t* dst)
{
    kernels<LevelShiftKernels>().sub128Block(src, srcStep, dst);
}

void ownqj_Add128_8x8_16s8u(const int16_t* src, uint8_t* dst, int dstStep)
{
    kernels<LevelShiftKernels>().add128Block(src, dst, dstStep);
}
