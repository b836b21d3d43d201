// SPDX-License-Identifier: Apache-2.0
// Component transforms: the internal functions that the library exports beside its interface. They check nothing.
#include "core/dispatch.h"
#include "core/exports.h"
#include "jpeg2k/transform/component_transform.h"

using namespace qel;

#define QEL_DOORS(T, KERNELS, FORWARD_IN_PLACE, INVERSE_IN_PLACE, TO_PLANES, TO_PIXELS)                                \
    QEL_KERNEL void FORWARD_IN_PLACE(T* a, T* b, T* c, int width) { KERNELS.forwardInPlace(a, b, c, width); }          \
    QEL_KERNEL void INVERSE_IN_PLACE(T* a, T* b, T* c, int width) { KERNELS.inverseInPlace(a, b, c, width); }          \
    QEL_KERNEL void TO_PLANES(const T* src, T* a, T* b, T* c, int width) { KERNELS.forward(src, a, b, c, width); }     \
    QEL_KERNEL void TO_PIXELS(const T* a, const T* b, const T* c, T* dst, int width)                                   \
    {                                                                                                                  \
        KERNELS.inverse(a, b, c, dst, width);                                                                          \
    }

// clang-format off
QEL_DOORS(int32_t, kernels<ComponentTransformKernels>().reversible,
          ownqj_RCTFwd_JPEG2K_32s_P3IR, ownqj_RCTInv_JPEG2K_32s_P3IR,
          ownqj_RCTFwd_JPEG2K_32s_C3P3R, ownqj_RCTInv_JPEG2K_32s_P3C3R)
QEL_DOORS(float, kernels<ComponentTransformKernels>().irreversible,
          ownqj_ICTFwd_JPEG2K_32f_P3IR, ownqj_ICTInv_JPEG2K_32f_P3IR,
          ownqj_ICTFwd_JPEG2K_32f_C3P3R, ownqj_ICTInv_JPEG2K_32f_P3C3R)
// clang-format on
