// Kernels of the 5/3 wavelet.
#include "jpeg2k/lifting_walks.h"
#include "jpeg2k/wavelet53.h"

namespace qel {

const Wavelet53Kernels Wavelet53Kernels::QEL_BUILD = {
    QEL_BUILD::kLifting<QEL_BUILD::Forward53<int16_t>, QEL_BUILD::Inverse53<int16_t>>,
    QEL_BUILD::kLifting<QEL_BUILD::Forward53<int32_t>, QEL_BUILD::Inverse53<int32_t>>};

}
