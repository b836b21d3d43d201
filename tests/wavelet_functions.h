// SPDX-License-Identifier: Apache-2.0
// The tile functions of the wavelets and the textbook filters that they are, by sample type.
#pragma once

#include "qeljx.h"
#include "wavelet_reference.h"

namespace qel::test {

template <class T> struct TileFunctions {
    QelStatus (*inPlaceSize)(const QelRect*, int*);
    QelStatus (*bandsSize)(const QelRect*, int*);
    QelStatus (*forwardInPlace)(T*, int, const QelRect*, uint8_t*);
    QelStatus (*inverseInPlace)(T*, int, const QelRect*, uint8_t*);
    QelStatus (*forward)(const T*, int, const QelRect*, T* const*, const int*, uint8_t*);
    QelStatus (*inverse)(const T* const*, const int*, const QelRect*, T*, int, uint8_t*);
};

struct Tiles53Of16 : Textbook53<int16_t> {
    static constexpr TileFunctions<Sample> kFunctions = {
        qeliWTGetBufSize_B53_JPEG2K_16s_C1IR, qeliWTGetBufSize_B53_JPEG2K_16s_C1R, qeliWTFwd_B53_JPEG2K_16s_C1IR,
        qeliWTInv_B53_JPEG2K_16s_C1IR,        qeliWTFwd_B53_JPEG2K_16s_C1R,        qeliWTInv_B53_JPEG2K_16s_C1R};
};
struct Tiles53Of32 : Textbook53<int32_t> {
    static constexpr TileFunctions<Sample> kFunctions = {
        qeliWTGetBufSize_B53_JPEG2K_32s_C1IR, qeliWTGetBufSize_B53_JPEG2K_32s_C1R, qeliWTFwd_B53_JPEG2K_32s_C1IR,
        qeliWTInv_B53_JPEG2K_32s_C1IR,        qeliWTFwd_B53_JPEG2K_32s_C1R,        qeliWTInv_B53_JPEG2K_32s_C1R};
};
struct Tiles97Of16 : TextbookFixed97 {
    static constexpr TileFunctions<Sample> kFunctions = {
        qeliWTGetBufSize_D97_JPEG2K_16s_C1IR, qeliWTGetBufSize_D97_JPEG2K_16s_C1R, qeliWTFwd_D97_JPEG2K_16s_C1IR,
        qeliWTInv_D97_JPEG2K_16s_C1IR,        qeliWTFwd_D97_JPEG2K_16s_C1R,        qeliWTInv_D97_JPEG2K_16s_C1R};
};
struct Tiles97Of32 : TextbookFloat97<int32_t> {
    static constexpr TileFunctions<Sample> kFunctions = {
        qeliWTGetBufSize_D97_JPEG2K_32s_C1IR, qeliWTGetBufSize_D97_JPEG2K_32s_C1R, qeliWTFwd_D97_JPEG2K_32s_C1IR,
        qeliWTInv_D97_JPEG2K_32s_C1IR,        qeliWTFwd_D97_JPEG2K_32s_C1R,        qeliWTInv_D97_JPEG2K_32s_C1R};
};

}
