/* Compiles as C99 with -pedantic-errors, or the public header is not C99. */
#include "qeljx.h"

QelStatus shiftOneSample(const uint8_t* sample, int16_t* shifted);

QelStatus shiftOneSample(const uint8_t* sample, int16_t* shifted)
{
    QelSize one = {1, 1};
    return qeliSub128_JPEG_8u16s_C1R(sample, 1, shifted, 2, one);
}
