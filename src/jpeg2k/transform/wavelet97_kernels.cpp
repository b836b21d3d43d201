// SPDX-License-Identifier: Apache-2.0
// Kernels of the 9/7 wavelet.
#include "jpeg2k/transform/lifting_walks.h"
#include "jpeg2k/transform/wavelet97.h"

namespace qel::QEL_BUILD {
namespace {

constexpr Wavelet97Kernels kKernels = {
    .of16s = kLifting<Forward97<Fixed97>, Inverse97<Fixed97>>,
    .of32s = kLifting<Forward97<Rounded97>, Inverse97<Rounded97>>,
    .of32f = kLifting<Forward97<Float97>, Inverse97<Float97>>,
};

}
}

const qel::Wavelet97Kernels qel::Wavelet97Kernels::QEL_BUILD = qel::QEL_BUILD::kKernels;
