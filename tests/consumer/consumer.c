/* SPDX-License-Identifier: Apache-2.0 */
/* A caller in C: runs one parallel function and one block function of an installed library. */
#include <qeljx.h>

#include <stdio.h>

enum { kWidth = 128, kHeight = 128 };

int main(void)
{
    static uint8_t rgb[kWidth * kHeight * 3], luma[kWidth * kHeight];
    int16_t shifted;
    QelSize size = {kWidth, kHeight}, one = {1, 1};
    rgb[0] = rgb[1] = rgb[2] = 255;
    if (qeliRGBToY_JPEG_8u_C3C1R(rgb, kWidth * 3, luma, kWidth, size) != qelStsNoErr) return 1;
    if (qeliSub128_JPEG_8u16s_C1R(luma, kWidth, &shifted, sizeof(shifted), one) != qelStsNoErr) return 2;
    printf("%s %s: white is %d\n", qeljGetLibVersion()->name, qeljGetLibVersion()->version, shifted);
    return shifted == 127 ? 0 : 3;
}
