// SPDX-License-Identifier: Apache-2.0
// MCU conversion: exported internal functions.
#include "jpeg/colour/mcu_doors.h"

#include "core/dispatch.h"

using namespace qel;

#define QEL_DECODE(PIXEL, DOOR, KERNEL)                                                                                \
    void DOOR(const int16_t* const* src, PIXEL* dst, int dstStep) { kernels<McuKernels>().KERNEL(src, dst, dstStep); }
#define QEL_ENCODE(PIXEL, DOOR, KERNEL)                                                                                \
    void DOOR(const PIXEL* src, int srcStep, int16_t* const* dst) { kernels<McuKernels>().KERNEL(src, srcStep, dst); }

QEL_DECODE(uint8_t, ownqj_YCbCr444ToRGBLS_MCU_16s8u_P3C3R, toRgb.s444)
QEL_DECODE(uint8_t, ownqj_YCbCr422ToRGBLS_MCU_16s8u_P3C3R, toRgb.s422)
QEL_DECODE(uint8_t, ownqj_YCbCr411ToRGBLS_MCU_16s8u_P3C3R, toRgb.s411)
QEL_DECODE(uint8_t, ownqj_YCbCr444ToBGRLS_MCU_16s8u_P3C3R, toBgr.s444)
QEL_DECODE(uint8_t, ownqj_YCbCr422ToBGRLS_MCU_16s8u_P3C3R, toBgr.s422)
QEL_DECODE(uint8_t, ownqj_YCbCr411ToBGRLS_MCU_16s8u_P3C3R, toBgr.s411)
QEL_DECODE(uint16_t, ownqj_YCbCr444ToBGR555LS_MCU_16s16u_P3C3R, toBgr555.s444)
QEL_DECODE(uint16_t, ownqj_YCbCr422ToBGR555LS_MCU_16s16u_P3C3R, toBgr555.s422)
QEL_DECODE(uint16_t, ownqj_YCbCr411ToBGR555LS_MCU_16s16u_P3C3R, toBgr555.s411)
QEL_DECODE(uint16_t, ownqj_YCbCr444ToBGR565LS_MCU_16s16u_P3C3R, toBgr565.s444)
QEL_DECODE(uint16_t, ownqj_YCbCr422ToBGR565LS_MCU_16s16u_P3C3R, toBgr565.s422)
QEL_DECODE(uint16_t, ownqj_YCbCr411ToBGR565LS_MCU_16s16u_P3C3R, toBgr565.s411)
QEL_DECODE(uint8_t, ownqj_YCCK444ToCMYKLS_MCU_16s8u_P4C4R, toCmyk.s444)
QEL_DECODE(uint8_t, ownqj_YCCK422ToCMYKLS_MCU_16s8u_P4C4R, toCmyk.s422)
QEL_DECODE(uint8_t, ownqj_YCCK411ToCMYKLS_MCU_16s8u_P4C4R, toCmyk.s411)
QEL_DECODE(uint8_t, ownqj_SampleUp444LS_MCU_16s8u_P3C3R, toYcc.s444)
QEL_DECODE(uint8_t, ownqj_SampleUp422LS_MCU_16s8u_P3C3R, toYcc.s422)
QEL_DECODE(uint8_t, ownqj_SampleUp411LS_MCU_16s8u_P3C3R, toYcc.s411)
QEL_DECODE(uint8_t, ownqj_Join422LS_MCU_16s8u_P3C2R, toPairs422)
QEL_ENCODE(uint8_t, ownqj_RGBToYCbCr444LS_MCU_8u16s_C3P3R, fromRgb.s444)
QEL_ENCODE(uint8_t, ownqj_RGBToYCbCr422LS_MCU_8u16s_C3P3R, fromRgb.s422)
QEL_ENCODE(uint8_t, ownqj_RGBToYCbCr411LS_MCU_8u16s_C3P3R, fromRgb.s411)
QEL_ENCODE(uint8_t, ownqj_BGRToYCbCr444LS_MCU_8u16s_C3P3R, fromBgr.s444)
QEL_ENCODE(uint8_t, ownqj_BGRToYCbCr422LS_MCU_8u16s_C3P3R, fromBgr.s422)
QEL_ENCODE(uint8_t, ownqj_BGRToYCbCr411LS_MCU_8u16s_C3P3R, fromBgr.s411)
QEL_ENCODE(uint16_t, ownqj_BGR555ToYCbCr444LS_MCU_16u16s_C3P3R, fromBgr555.s444)
QEL_ENCODE(uint16_t, ownqj_BGR555ToYCbCr422LS_MCU_16u16s_C3P3R, fromBgr555.s422)
QEL_ENCODE(uint16_t, ownqj_BGR555ToYCbCr411LS_MCU_16u16s_C3P3R, fromBgr555.s411)
QEL_ENCODE(uint16_t, ownqj_BGR565ToYCbCr444LS_MCU_16u16s_C3P3R, fromBgr565.s444)
QEL_ENCODE(uint16_t, ownqj_BGR565ToYCbCr422LS_MCU_16u16s_C3P3R, fromBgr565.s422)
QEL_ENCODE(uint16_t, ownqj_BGR565ToYCbCr411LS_MCU_16u16s_C3P3R, fromBgr565.s411)
QEL_ENCODE(uint8_t, ownqj_CMYKToYCCK444LS_MCU_8u16s_C4P4R, fromCmyk.s444)
QEL_ENCODE(uint8_t, ownqj_CMYKToYCCK422LS_MCU_8u16s_C4P4R, fromCmyk.s422)
QEL_ENCODE(uint8_t, ownqj_CMYKToYCCK411LS_MCU_8u16s_C4P4R, fromCmyk.s411)
QEL_ENCODE(uint8_t, ownqj_SampleDown444LS_MCU_8u16s_C3P3R, fromYcc.s444)
QEL_ENCODE(uint8_t, ownqj_SampleDown422LS_MCU_8u16s_C3P3R, fromYcc.s422)
QEL_ENCODE(uint8_t, ownqj_SampleDown411LS_MCU_8u16s_C3P3R, fromYcc.s411)
QEL_ENCODE(uint8_t, ownqj_Split422LS_MCU_8u16s_C2P3R, fromPairs422)
