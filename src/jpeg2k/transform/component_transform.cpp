// SPDX-License-Identifier: Apache-2.0
// Component transforms: public functions.
#include "jpeg2k/transform/component_transform.h"

#include "core/conversion.h"
#include "qeljx/jpeg2k_transform.h"

using namespace qel;

namespace {

auto& reversible() { return kernels<ComponentTransformKernels>().reversible; }
auto& irreversible() { return kernels<ComponentTransformKernels>().irreversible; }

template <class T>
QelStatus inPlace(T* const* planes, int step, QelSize roi, typename ComponentTransform<T>::InPlace* row)
{
    if (QelStatus bad = first(qel::planes<3>(planes), steps(step), size(roi))) return bad;
    forRows(roi, [=](int r) {
        row(rowAt(planes[0], step, r), rowAt(planes[1], step, r), rowAt(planes[2], step, r), roi.width);
    });
    return qelStsNoErr;
}

template <class T> QelStatus toPlanes(const T* src, int srcStep, T* const* dst, int dstStep, QelSize roi,
                                      Streamable<typename ComponentTransform<T>::ToPlanes> kernels)
{
    return convert<Threads::one>(Pixels<const T, 3>{src, srcStep}, Planes<T, 3>{dst, dstStep}, roi, kernels);
}

template <class T> QelStatus toPixels(const T* const* src, int srcStep, T* dst, int dstStep, QelSize roi,
                                      Streamable<typename ComponentTransform<T>::ToPixels> kernels)
{
    return convert<Threads::one>(Planes<const T, 3>{src, srcStep}, Pixels<T, 3>{dst, dstStep}, roi, kernels);
}

}

QelStatus qeliRCTFwd_JPEG2K_32s_P3IR(int32_t* const pSrcDst[3], int srcDstStep, QelSize roi)
{
    return inPlace(pSrcDst, srcDstStep, roi, reversible().forwardInPlace);
}

QelStatus qeliRCTInv_JPEG2K_32s_P3IR(int32_t* const pSrcDst[3], int srcDstStep, QelSize roi)
{
    return inPlace(pSrcDst, srcDstStep, roi, reversible().inverseInPlace);
}

QelStatus qeliRCTFwd_JPEG2K_32s_C3P3R(const int32_t* pSrc, int srcStep, int32_t* const pDst[3], int dstStep,
                                      QelSize roi)
{
    return toPlanes(pSrc, srcStep, pDst, dstStep, roi, reversible().forward);
}

QelStatus qeliRCTInv_JPEG2K_32s_P3C3R(const int32_t* const pSrc[3], int srcStep, int32_t* pDst, int dstStep,
                                      QelSize roi)
{
    return toPixels(pSrc, srcStep, pDst, dstStep, roi, reversible().inverse);
}

QelStatus qeliICTFwd_JPEG2K_32f_P3IR(float* const pSrcDst[3], int srcDstStep, QelSize roi)
{
    return inPlace(pSrcDst, srcDstStep, roi, irreversible().forwardInPlace);
}

QelStatus qeliICTInv_JPEG2K_32f_P3IR(float* const pSrcDst[3], int srcDstStep, QelSize roi)
{
    return inPlace(pSrcDst, srcDstStep, roi, irreversible().inverseInPlace);
}

QelStatus qeliICTFwd_JPEG2K_32f_C3P3R(const float* pSrc, int srcStep, float* const pDst[3], int dstStep, QelSize roi)
{
    return toPlanes(pSrc, srcStep, pDst, dstStep, roi, irreversible().forward);
}

QelStatus qeliICTInv_JPEG2K_32f_P3C3R(const float* const pSrc[3], int srcStep, float* pDst, int dstStep, QelSize roi)
{
    return toPixels(pSrc, srcStep, pDst, dstStep, roi, irreversible().inverse);
}
