// Kernels of the 9/7 wavelet.
#include "jpeg2k/lifting_walks.h"
#include "jpeg2k/wavelet97.h"

namespace qel {

const Wavelet97Kernels Wavelet97Kernels::QEL_BUILD = {
    QEL_BUILD::kLifting<QEL_BUILD::Forward97<QEL_BUILD::Fixed97>, QEL_BUILD::Inverse97<QEL_BUILD::Fixed97>>,
    QEL_BUILD::kLifting<QEL_BUILD::Forward97<QEL_BUILD::Rounded97>, QEL_BUILD::Inverse97<QEL_BUILD::Rounded97>>,
    QEL_BUILD::kLifting<QEL_BUILD::Forward97<QEL_BUILD::Float97>, QEL_BUILD::Inverse97<QEL_BUILD::Float97>>};

}
