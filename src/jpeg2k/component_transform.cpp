// Component transforms: exported functions.
#include "jpeg2k/component_transform.h"

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
                                      typename ComponentTransform<T>::ToPlanes* row)
{
    return convert<kSerial>(Pixels<const T, 3>{src, srcStep}, Planes<T, 3>{dst, dstStep}, roi, row);
}

template <class T> QelStatus toPixels(const T* const* src, int srcStep, T* dst, int dstStep, QelSize roi,
                                      typename ComponentTransform<T>::ToPixels* row)
{
    return convert<kSerial>(Planes<const T, 3>{src, srcStep}, Pixels<T, 3>{dst, dstStep}, roi, row);
}

}

// One transform: the exported functions in place and between interleaved pixels and planes, and the doors to its
// kernels.
#define QEL_COMPONENTS(T, KERNELS, FORWARD_IN_PLACE, INVERSE_IN_PLACE, TO_PLANES, TO_PIXELS)                           \
    QelStatus FORWARD_IN_PLACE(T* const pSrcDst[3], int srcDstStep, QelSize roi)                                       \
    {                                                                                                                  \
        return inPlace(pSrcDst, srcDstStep, roi, KERNELS.forwardInPlace);                                              \
    }                                                                                                                  \
    QelStatus INVERSE_IN_PLACE(T* const pSrcDst[3], int srcDstStep, QelSize roi)                                       \
    {                                                                                                                  \
        return inPlace(pSrcDst, srcDstStep, roi, KERNELS.inverseInPlace);                                              \
    }                                                                                                                  \
    QelStatus TO_PLANES(const T* pSrc, int srcStep, T* const pDst[3], int dstStep, QelSize roi)                        \
    {                                                                                                                  \
        return toPlanes(pSrc, srcStep, pDst, dstStep, roi, KERNELS.forward);                                           \
    }                                                                                                                  \
    QelStatus TO_PIXELS(const T* const pSrc[3], int srcStep, T* pDst, int dstStep, QelSize roi)                        \
    {                                                                                                                  \
        return toPixels(pSrc, srcStep, pDst, dstStep, roi, KERNELS.inverse);                                           \
    }
#define QEL_COMPONENT_DOORS(T, KERNELS, FORWARD_IN_PLACE, INVERSE_IN_PLACE, TO_PLANES, TO_PIXELS)                      \
    void FORWARD_IN_PLACE(T* a, T* b, T* c, int width) { KERNELS.forwardInPlace(a, b, c, width); }                     \
    void INVERSE_IN_PLACE(T* a, T* b, T* c, int width) { KERNELS.inverseInPlace(a, b, c, width); }                     \
    void TO_PLANES(const T* src, T* a, T* b, T* c, int width) { KERNELS.forward(src, a, b, c, width); }                \
    void TO_PIXELS(const T* a, const T* b, const T* c, T* dst, int width) { KERNELS.inverse(a, b, c, dst, width); }

// clang-format off
QEL_COMPONENTS(int32_t, reversible(), qeliRCTFwd_JPEG2K_32s_P3IR, qeliRCTInv_JPEG2K_32s_P3IR,
               qeliRCTFwd_JPEG2K_32s_C3P3R, qeliRCTInv_JPEG2K_32s_P3C3R)
QEL_COMPONENT_DOORS(int32_t, reversible(), ownqj_RCTFwd_JPEG2K_32s_P3IR, ownqj_RCTInv_JPEG2K_32s_P3IR,
                    ownqj_RCTFwd_JPEG2K_32s_C3P3R, ownqj_RCTInv_JPEG2K_32s_P3C3R)
QEL_COMPONENTS(float, irreversible(), qeliICTFwd_JPEG2K_32f_P3IR, qeliICTInv_JPEG2K_32f_P3IR,
               qeliICTFwd_JPEG2K_32f_C3P3R, qeliICTInv_JPEG2K_32f_P3C3R)
QEL_COMPONENT_DOORS(float, irreversible(), ownqj_ICTFwd_JPEG2K_32f_P3IR, ownqj_ICTInv_JPEG2K_32f_P3IR,
                    ownqj_ICTFwd_JPEG2K_32f_C3P3R, ownqj_ICTInv_JPEG2K_32f_P3C3R)
// clang-format on
