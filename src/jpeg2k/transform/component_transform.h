// SPDX-License-Identifier: Apache-2.0
// Component transforms: the tables of their row kernels.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"

namespace qel {

// Rows of planes in place, or between interleaved pixels and planes; the width is in pixels.
template <class T> struct ComponentTransform {
    using InPlace = void(T*, T*, T*, int);
    using ToPlanes = void(const T*, T*, T*, T*, int);
    using ToPixels = void(const T*, const T*, const T*, T*, int);

    InPlace *forwardInPlace, *inverseInPlace;
    Streamable<ToPlanes> forward;
    Streamable<ToPixels> inverse;
};
using ReversibleTransform = ComponentTransform<int32_t>;
using IrreversibleTransform = ComponentTransform<float>;

struct ComponentTransformKernels {
    ReversibleTransform reversible;
    IrreversibleTransform irreversible;

    QEL_BUILDS(ComponentTransformKernels);
};

}
