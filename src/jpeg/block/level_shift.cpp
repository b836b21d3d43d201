// SPDX-License-Identifier: Apache-2.0
// Level shift: public functions.
#include "jpeg/block/level_shift.h"

#include "core/conversion.h"
#include "qeljx/jpeg_block.h"

using namespace qel;

QelStatus qeliSub128_JPEG_8u16s_C1R(const uint8_t* pSrc, int srcStep, int16_t* pDst, int dstStep, QelSize roi)
{
    Pixels<const uint8_t, 1> src = {pSrc, srcStep};
    Pixels<int16_t, 1> dst = {pDst, dstStep};
    return convert<Threads::one>(src, dst, roi, &LevelShiftKernels::sub128);
}

QelStatus qeliAdd128_JPEG_16s8u_C1R(const int16_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi)
{
    // Argument by argument, unlike Sub128.
    if (QelStatus bad = first(pointers(pSrc), steps(srcStep), pointers(pDst), steps(dstStep), size(roi))) return bad;
    Pixels<const int16_t, 1> src = {pSrc, srcStep};
    Pixels<uint8_t, 1> dst = {pDst, dstStep};
    convertRows<Threads::one>(src, dst, roi, kernels<LevelShiftKernels>().add128);
    return qelStsNoErr;
}
