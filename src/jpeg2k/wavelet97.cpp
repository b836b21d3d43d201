// The irreversible 9/7 wavelet: exported functions.
#include "jpeg2k/wavelet97.h"

#include "core/dispatch.h"
#include "jpeg2k/wavelet_members.h"
#include "qeljx/jpeg2k_transform.h"

using namespace qel;

namespace {

auto& of16s() { return kernels<Wavelet97Kernels>().of16s; }
auto& of32s() { return kernels<Wavelet97Kernels>().of32s; }
auto& of32f() { return kernels<Wavelet97Kernels>().of32f; }

}

// clang-format off
QEL_WAVELET_ROWS(float, of32f(), qeliWTFwdRow_D97_JPEG2K_32f_C1R, qeliWTInvRow_D97_JPEG2K_32f_C1R)
QEL_WAVELET_COLUMNS(float, of32f(), qeliWTFwdCol_D97_JPEG2K_32f_C1R, qeliWTInvCol_D97_JPEG2K_32f_C1R,
                    ownqj_WTFwdColStripe_D97_32f, ownqj_WTInvColStripe_D97_32f)
QEL_WAVELET_IN_PLACE(int16_t, of16s(), 2, 8, qeliWTGetBufSize_D97_JPEG2K_16s_C1IR,
                     qeliWTFwd_D97_JPEG2K_16s_C1IR, qeliWTInv_D97_JPEG2K_16s_C1IR)
QEL_WAVELET_IN_PLACE(int32_t, of32s(), 2, 8, qeliWTGetBufSize_D97_JPEG2K_32s_C1IR,
                     qeliWTFwd_D97_JPEG2K_32s_C1IR, qeliWTInv_D97_JPEG2K_32s_C1IR)
QEL_WAVELET_BANDS(int16_t, of16s(), 2, 8, qeliWTGetBufSize_D97_JPEG2K_16s_C1R,
                  qeliWTFwd_D97_JPEG2K_16s_C1R, qeliWTInv_D97_JPEG2K_16s_C1R)
QEL_WAVELET_BANDS(int32_t, of32s(), 2, 8, qeliWTGetBufSize_D97_JPEG2K_32s_C1R,
                  qeliWTFwd_D97_JPEG2K_32s_C1R, qeliWTInv_D97_JPEG2K_32s_C1R)

QEL_WAVELET_FORWARD_ROW(float, of32f(), ownqj_WTFwd_D97_32f)
QEL_WAVELET_LINE(int16_t, of16s(), forward, ownqj_WTFwd_D97_Row_16s)
QEL_WAVELET_LINE(int32_t, of32s(), forward, ownqj_WTFwd_D97_Row_32s)
QEL_WAVELET_LINE(int16_t, of16s(), forward, ownqj_WTFwd_D97_Col_16s)
QEL_WAVELET_LINE(int32_t, of32s(), forward, ownqj_WTFwd_D97_Col_32s)
QEL_WAVELET_LINE(int16_t, of16s(), inverse, ownqj_WTInv_D97_Row_16s)
QEL_WAVELET_LINE(int32_t, of32s(), inverse, ownqj_WTInv_D97_Row_32s)
QEL_WAVELET_LINE(int16_t, of16s(), inverse, ownqj_WTInv_D97_Col_16s)
QEL_WAVELET_LINE(int32_t, of32s(), inverse, ownqj_WTInv_D97_Col_32s)
// clang-format on
