// SPDX-License-Identifier: Apache-2.0
// Quantization: tables, and public functions.
#include "jpeg/block/quantization.h"

#include <string.h>

#include "core/checks.h"
#include "core/dispatch.h"
#include "jpeg/block/zigzag.h"
#include "qeljx/jpeg_block.h"

using namespace qel;

namespace {

// Percent of the steps of quality 50. Quality 0 would divide by zero: beyond any limit, so that every step becomes 255.
int64_t percentOf(int quality)
{
    if (quality == 0) return 100 * 256;
    return quality < 50 ? 5000 / quality : 200 - 2 * int64_t(quality);
}

}

// Any quality is accepted: from 100 on, and below 0, all steps become 1.
QelStatus qeliQuantFwdRawTableInit_JPEG_8u(uint8_t* pRawTable, int quality)
{
    if (QelStatus bad = first(pointers(pRawTable))) return bad;
    int64_t percent = percentOf(quality);
    for (int i = 0; i < 64; ++i) {
        int64_t step = (pRawTable[i] * percent + 50) / 100;
        pRawTable[i] = uint8_t(step < 1 ? 1 : step > 255 ? 255 : step);
    }
    return qelStsNoErr;
}

QelStatus qeliQuantFwdTableInit_JPEG_8u16u(const uint8_t* pRawTable, uint16_t* pEncTable)
{
    if (QelStatus bad = first(pointers(pRawTable, pEncTable))) return bad;
    QelStatus status = qelStsNoErr;
    uint16_t table[64];
    for (int n = 0; n < 64; ++n) {
        int step = pRawTable[zigzag_index_Fwd[n]];
        if (step == 0) status = qelStsDivByZero;
        table[n] = uint16_t(step == 0 ? 65535 : (32768 + step / 2) / step);
    }
    memcpy(pEncTable, table, sizeof table);
    return status;
}

QelStatus qeliQuantInvTableInit_JPEG_8u16u(const uint8_t* pRawTable, uint16_t* pDecTable)
{
    if (QelStatus bad = first(pointers(pRawTable, pDecTable))) return bad;
    uint16_t table[64];
    for (int n = 0; n < 64; ++n) table[n] = pRawTable[zigzag_index_Fwd[n]];
    memcpy(pDecTable, table, sizeof table);
    return qelStsNoErr;
}

QelStatus qeliQuantFwd8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pEncTable)
{
    if (QelStatus bad = first(pointers(pSrcDst, pEncTable))) return bad;
    kernels<QuantizationKernels>().forward(pSrcDst, pSrcDst, pEncTable);
    return qelStsNoErr;
}

QelStatus qeliQuantInv8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pDecTable)
{
    if (QelStatus bad = first(pointers(pSrcDst, pDecTable))) return bad;
    kernels<QuantizationKernels>().inverse(pSrcDst, pSrcDst, pDecTable);
    return qelStsNoErr;
}
