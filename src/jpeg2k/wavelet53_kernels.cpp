// Kernels of the 5/3 wavelet.
#include "jpeg2k/lifting_walks.h"
#include "jpeg2k/wavelet53.h"

namespace qel {

const Wavelet53Kernels Wavelet53Kernels::QEL_BUILD = {qel::QEL_BUILD::kLifting<qel::QEL_BUILD::Filter53<int16_t>>,
                                                      qel::QEL_BUILD::kLifting<qel::QEL_BUILD::Filter53<int32_t>>};

}
