// SPDX-License-Identifier: Apache-2.0
// The reversible 5/3 wavelet: the table of its kernels.
#pragma once

#include "core/kernel_tables.h"
#include "jpeg2k/transform/wavelet.h"

namespace qel {

struct Wavelet53Kernels {
    LiftingKernels<int16_t> of16s;
    LiftingKernels<int32_t> of32s;

    QEL_BUILDS(Wavelet53Kernels);
};

}
