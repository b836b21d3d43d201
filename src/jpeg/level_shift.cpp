// Level shift: exported functions.
#include "jpeg/level_shift.h"

#include "core/conversion.h"
#include "qeljx/jpeg_block.h"

using namespace qel;

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
    Pixels<const uint8_t, 1> from = {src, srcStep};
    Pixels<int16_t, 1> to = {dst, dstStep};
    auto& table = kernels<LevelShiftKernels>();
    convertRows<kSerial>(from, to, roi, table.sub128, table.sub128Past);
}

void ownqj_Add128_JPEG_16s8u_C1R(const int16_t* src, int srcStep, uint8_t* dst, int dstStep, QelSize roi)
{
    Pixels<const int16_t, 1> from = {src, srcStep};
    Pixels<uint8_t, 1> to = {dst, dstStep};
    auto& table = kernels<LevelShiftKernels>();
    convertRows<kSerial>(from, to, roi, table.add128, table.add128Past);
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
