// SPDX-License-Identifier: Apache-2.0
// Kernels of the 5/3 wavelet.
#include "jpeg2k/transform/lifting_walks.h"
#include "jpeg2k/transform/wavelet53.h"

namespace qel::QEL_BUILD {
namespace {

constexpr Wavelet53Kernels kKernels = {
    .of16s = kLifting<Forward53<int16_t>, Inverse53<int16_t>>,
    .of32s = kLifting<Forward53<int32_t>, Inverse53<int32_t>>,
};

}
}

const qel::Wavelet53Kernels qel::Wavelet53Kernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
