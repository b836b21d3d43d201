// Kernels of the 9/7 wavelet.
#include "jpeg2k/lifting_walks.h"
#include "jpeg2k/wavelet97.h"

namespace qel {

const Wavelet97Kernels Wavelet97Kernels::QEL_BUILD = {
    qel::QEL_BUILD::kLifting<qel::QEL_BUILD::Filter97<qel::QEL_BUILD::Fixed97>>,
    qel::QEL_BUILD::kLifting<qel::QEL_BUILD::Filter97<qel::QEL_BUILD::Rounded97>>,
    qel::QEL_BUILD::kLifting<qel::QEL_BUILD::Filter97<qel::QEL_BUILD::Float97>>};

}
