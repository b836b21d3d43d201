/* SPDX-License-Identifier: Apache-2.0 */
/* Compiles as C99 with -pedantic-errors, or the public headers are not C99. */
#include "qeljx.h"
#include "qeljx/status.h"

const char* describe(QelStatus status);

const char* describe(QelStatus status) { return *qelStatusText(status) ? qelStatusName(status) : ""; }

QelStatus shiftOneSample(const uint8_t* sample, int16_t* shifted);

QelStatus shiftOneSample(const uint8_t* sample, int16_t* shifted)
{
    QelSize one = {1, 1};
    return qeliSub128_JPEG_8u16s_C1R(sample, 1, shifted, 2, one);
}
