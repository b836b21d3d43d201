// MCU conversion: the table of its kernels, and their exported doors.
#pragma once

#include <stdint.h>

#include "core/exports.h"
#include "core/kernel_tables.h"

namespace qel {

// Blocks by component, at any address, to a tile of pixels whose rows lie `dstStep` bytes apart, and back.
using BlocksToBytes = void(const int16_t* const* src, uint8_t* dst, int dstStep);
using BlocksToWords = void(const int16_t* const* src, uint16_t* dst, int dstStep);
using BytesToBlocks = void(const uint8_t* src, int srcStep, int16_t* const* dst);
using WordsToBlocks = void(const uint16_t* src, int srcStep, int16_t* const* dst);

// A kernel for each sampling: chroma in every pixel, in every second one of a row, in every second one of both ways.
template <class Kernel> struct BySampling {
    Kernel *s444, *s422, *s411;
};

struct McuKernels {
    BySampling<BlocksToBytes> toRgb, toBgr;
    BySampling<BlocksToWords> toBgr555, toBgr565;
    BySampling<BlocksToBytes> toCmyk, toYcc;
    BlocksToBytes* toPairs422;

    BySampling<BytesToBlocks> fromRgb, fromBgr;
    BySampling<WordsToBlocks> fromBgr555, fromBgr565;
    BySampling<BytesToBlocks> fromCmyk, fromYcc;
    BytesToBlocks* fromPairs422;

    QEL_BUILDS(McuKernels);
};

}

QEL_KERNEL qel::BlocksToBytes ownqj_YCbCr444ToRGBLS_MCU_16s8u_P3C3R;
QEL_KERNEL qel::BlocksToBytes ownqj_YCbCr422ToRGBLS_MCU_16s8u_P3C3R;
QEL_KERNEL qel::BlocksToBytes ownqj_YCbCr411ToRGBLS_MCU_16s8u_P3C3R;
QEL_KERNEL qel::BlocksToBytes ownqj_YCbCr444ToBGRLS_MCU_16s8u_P3C3R;
QEL_KERNEL qel::BlocksToBytes ownqj_YCbCr422ToBGRLS_MCU_16s8u_P3C3R;
QEL_KERNEL qel::BlocksToBytes ownqj_YCbCr411ToBGRLS_MCU_16s8u_P3C3R;
QEL_KERNEL qel::BlocksToWords ownqj_YCbCr444ToBGR555LS_MCU_16s16u_P3C3R;
QEL_KERNEL qel::BlocksToWords ownqj_YCbCr422ToBGR555LS_MCU_16s16u_P3C3R;
QEL_KERNEL qel::BlocksToWords ownqj_YCbCr411ToBGR555LS_MCU_16s16u_P3C3R;
QEL_KERNEL qel::BlocksToWords ownqj_YCbCr444ToBGR565LS_MCU_16s16u_P3C3R;
QEL_KERNEL qel::BlocksToWords ownqj_YCbCr422ToBGR565LS_MCU_16s16u_P3C3R;
QEL_KERNEL qel::BlocksToWords ownqj_YCbCr411ToBGR565LS_MCU_16s16u_P3C3R;
QEL_KERNEL qel::BlocksToBytes ownqj_YCCK444ToCMYKLS_MCU_16s8u_P4C4R;
QEL_KERNEL qel::BlocksToBytes ownqj_YCCK422ToCMYKLS_MCU_16s8u_P4C4R;
QEL_KERNEL qel::BlocksToBytes ownqj_YCCK411ToCMYKLS_MCU_16s8u_P4C4R;
QEL_KERNEL qel::BlocksToBytes ownqj_SampleUp444LS_MCU_16s8u_P3C3R;
QEL_KERNEL qel::BlocksToBytes ownqj_SampleUp422LS_MCU_16s8u_P3C3R;
QEL_KERNEL qel::BlocksToBytes ownqj_SampleUp411LS_MCU_16s8u_P3C3R;
QEL_KERNEL qel::BlocksToBytes ownqj_Join422LS_MCU_16s8u_P3C2R;
QEL_KERNEL qel::BytesToBlocks ownqj_RGBToYCbCr444LS_MCU_8u16s_C3P3R;
QEL_KERNEL qel::BytesToBlocks ownqj_RGBToYCbCr422LS_MCU_8u16s_C3P3R;
QEL_KERNEL qel::BytesToBlocks ownqj_RGBToYCbCr411LS_MCU_8u16s_C3P3R;
QEL_KERNEL qel::BytesToBlocks ownqj_BGRToYCbCr444LS_MCU_8u16s_C3P3R;
QEL_KERNEL qel::BytesToBlocks ownqj_BGRToYCbCr422LS_MCU_8u16s_C3P3R;
QEL_KERNEL qel::BytesToBlocks ownqj_BGRToYCbCr411LS_MCU_8u16s_C3P3R;
QEL_KERNEL qel::WordsToBlocks ownqj_BGR555ToYCbCr444LS_MCU_16u16s_C3P3R;
QEL_KERNEL qel::WordsToBlocks ownqj_BGR555ToYCbCr422LS_MCU_16u16s_C3P3R;
QEL_KERNEL qel::WordsToBlocks ownqj_BGR555ToYCbCr411LS_MCU_16u16s_C3P3R;
QEL_KERNEL qel::WordsToBlocks ownqj_BGR565ToYCbCr444LS_MCU_16u16s_C3P3R;
QEL_KERNEL qel::WordsToBlocks ownqj_BGR565ToYCbCr422LS_MCU_16u16s_C3P3R;
QEL_KERNEL qel::WordsToBlocks ownqj_BGR565ToYCbCr411LS_MCU_16u16s_C3P3R;
QEL_KERNEL qel::BytesToBlocks ownqj_CMYKToYCCK444LS_MCU_8u16s_C4P4R;
QEL_KERNEL qel::BytesToBlocks ownqj_CMYKToYCCK422LS_MCU_8u16s_C4P4R;
QEL_KERNEL qel::BytesToBlocks ownqj_CMYKToYCCK411LS_MCU_8u16s_C4P4R;
QEL_KERNEL qel::BytesToBlocks ownqj_SampleDown444LS_MCU_8u16s_C3P3R;
QEL_KERNEL qel::BytesToBlocks ownqj_SampleDown422LS_MCU_8u16s_C3P3R;
QEL_KERNEL qel::BytesToBlocks ownqj_SampleDown411LS_MCU_8u16s_C3P3R;
QEL_KERNEL qel::BytesToBlocks ownqj_Split422LS_MCU_8u16s_C2P3R;
