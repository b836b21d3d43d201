// Component transforms: the tables of their row kernels, and their exported doors.
#pragma once

#include <stdint.h>

#include "core/exports.h"

namespace qel {

// Rows of planes in place, or between interleaved pixels and planes; the width is in pixels.
template <class T> struct ComponentTransform {
    using InPlace = void(T*, T*, T*, int);
    using ToPlanes = void(const T*, T*, T*, T*, int);
    using ToPixels = void(const T*, const T*, const T*, T*, int);

    InPlace *forwardInPlace, *inverseInPlace;
    ToPlanes* forward;
    ToPixels* inverse;
};
using ReversibleTransform = ComponentTransform<int32_t>;
using IrreversibleTransform = ComponentTransform<float>;

struct ComponentTransformKernels {
    ReversibleTransform reversible;
    IrreversibleTransform irreversible;

    static const ComponentTransformKernels baseline, avx2, avx512;
    static const ComponentTransformKernels scalar, wide16, wide32, wide64;
};

}

QEL_KERNEL qel::ReversibleTransform::InPlace ownqj_RCTFwd_JPEG2K_32s_P3IR, ownqj_RCTInv_JPEG2K_32s_P3IR;
QEL_KERNEL qel::ReversibleTransform::ToPlanes ownqj_RCTFwd_JPEG2K_32s_C3P3R;
QEL_KERNEL qel::ReversibleTransform::ToPixels ownqj_RCTInv_JPEG2K_32s_P3C3R;
QEL_KERNEL qel::IrreversibleTransform::InPlace ownqj_ICTFwd_JPEG2K_32f_P3IR, ownqj_ICTInv_JPEG2K_32f_P3IR;
QEL_KERNEL qel::IrreversibleTransform::ToPlanes ownqj_ICTFwd_JPEG2K_32f_C3P3R;
QEL_KERNEL qel::IrreversibleTransform::ToPixels ownqj_ICTInv_JPEG2K_32f_P3C3R;
