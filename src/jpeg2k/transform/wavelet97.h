// SPDX-License-Identifier: Apache-2.0
// The irreversible 9/7 wavelet: the table of its kernels.
#pragma once

#include "core/kernel_tables.h"
#include "jpeg2k/transform/wavelet.h"

namespace qel {

struct Wavelet97Kernels {
    LiftingKernels<int16_t> of16s; // fixed point
    LiftingKernels<int32_t> of32s; // single precision between integers
    LiftingKernels<float> of32f;

    QEL_BUILDS(Wavelet97Kernels);
};

}
