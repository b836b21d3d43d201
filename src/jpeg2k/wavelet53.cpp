// The reversible 5/3 wavelet: exported functions.
#include "jpeg2k/wavelet53.h"

#include "core/dispatch.h"
#include "jpeg2k/wavelet_members.h"
#include "qeljx/jpeg2k_transform.h"

using namespace qel;

namespace {

auto& of16s() { return kernels<Wavelet53Kernels>().of16s; }
auto& of32s() { return kernels<Wavelet53Kernels>().of32s; }

}

// clang-format off
QEL_WAVELET_ROWS(int16_t, of16s(), qeliWTFwdRow_B53_JPEG2K_16s_C1R, qeliWTInvRow_B53_JPEG2K_16s_C1R)
QEL_WAVELET_ROWS(int32_t, of32s(), qeliWTFwdRow_B53_JPEG2K_32s_C1R, qeliWTInvRow_B53_JPEG2K_32s_C1R)
QEL_WAVELET_COLUMNS(int16_t, of16s(), qeliWTFwdCol_B53_JPEG2K_16s_C1R, qeliWTInvCol_B53_JPEG2K_16s_C1R,
                    ownqj_WTFwdColStrip_B53_16s, ownqj_WTInvColStrip_B53_16s)
QEL_WAVELET_COLUMNS(int32_t, of32s(), qeliWTFwdCol_B53_JPEG2K_32s_C1R, qeliWTInvCol_B53_JPEG2K_32s_C1R,
                    ownqj_WTFwdColStrip_B53_32s, ownqj_WTInvColStrip_B53_32s)
QEL_WAVELET_IN_PLACE(int16_t, of16s(), 3, 4, qeliWTGetBufSize_B53_JPEG2K_16s_C1IR,
                     qeliWTFwd_B53_JPEG2K_16s_C1IR, qeliWTInv_B53_JPEG2K_16s_C1IR)
QEL_WAVELET_IN_PLACE(int32_t, of32s(), 3, 4, qeliWTGetBufSize_B53_JPEG2K_32s_C1IR,
                     qeliWTFwd_B53_JPEG2K_32s_C1IR, qeliWTInv_B53_JPEG2K_32s_C1IR)
QEL_WAVELET_BANDS(int16_t, of16s(), 3, 4, qeliWTGetBufSize_B53_JPEG2K_16s_C1R,
                  qeliWTFwd_B53_JPEG2K_16s_C1R, qeliWTInv_B53_JPEG2K_16s_C1R)
QEL_WAVELET_BANDS(int32_t, of32s(), 3, 4, qeliWTGetBufSize_B53_JPEG2K_32s_C1R,
                  qeliWTFwd_B53_JPEG2K_32s_C1R, qeliWTInv_B53_JPEG2K_32s_C1R)

QEL_WAVELET_FORWARD_ROW(int16_t, of16s(), ownqj_WTFwd_B53_16s)
QEL_WAVELET_FORWARD_ROW(int32_t, of32s(), ownqj_WTFwd_B53_32s)
QEL_WAVELET_INVERSE_ROW(int16_t, of16s(), ownqj_WTInv_B53_16s)
QEL_WAVELET_INVERSE_ROW(int32_t, of32s(), ownqj_WTInv_B53_32s)
QEL_WAVELET_ROWS_PAST_CACHES(int16_t, of16s(), ownqj_WTFwd_B53_16s_NT, ownqj_WTInv_B53_16s_NT)
QEL_WAVELET_ROWS_PAST_CACHES(int32_t, of32s(), ownqj_WTFwd_B53_32s_NT, ownqj_WTInv_B53_32s_NT)
QEL_WAVELET_LINE(int16_t, of16s(), forward, ownqj_WTFwd_B53_16s_I)
QEL_WAVELET_LINE(int32_t, of32s(), forward, ownqj_WTFwd_B53_32s_I)
QEL_WAVELET_LINE(int16_t, of16s(), inverse, ownqj_WTInv_B53_16s_I)
QEL_WAVELET_LINE(int32_t, of32s(), inverse, ownqj_WTInv_B53_32s_I)
// clang-format on
