// Colour conversion: exported functions.
#include "jpeg/colour.h"

#include <array>
#include <tuple>

#include "core/checks.h"
#include "core/dispatch.h"
#include "core/rows.h"
#include "qeljx/jpeg_colour.h"

using namespace qel;

namespace {

// A source or a destination as a caller gives it: planes that share a step, or interleaved pixels.
template <class T, int kPlanes> struct Planes {
    using Argument = T* const*;
    Argument planes;
    int step;

    QelStatus check() const { return qel::planes<kPlanes>(planes); }
    auto row(int r) const
    {
        std::array<T*, kPlanes> rows;
        for (int i = 0; i < kPlanes; ++i) rows[i] = rowAt(planes[i], step, r);
        return rows;
    }
};
template <class T> struct Pixels {
    using Argument = T*;
    T* pixels;
    int step;

    QelStatus check() const { return pointers(pixels); }
    auto row(int r) const { return std::tuple(rowAt(pixels, step, r)); }
};
using FromPlanes3 = Planes<const uint8_t, 3>;
using FromPlanes4 = Planes<const uint8_t, 4>;
using FromBytes = Pixels<const uint8_t>;
using FromWords = Pixels<const uint16_t>;
using ToPlanes3 = Planes<uint8_t, 3>;
using ToPlanes4 = Planes<uint8_t, 4>;
using ToBytes = Pixels<uint8_t>;
using ToWords = Pixels<uint16_t>;

enum Loop { kSerial, kParallel };

template <Loop kLoop, class Source, class Destination, class Kernel>
QelStatus convert(Source src, Destination dst, QelSize roi, Kernel* kernel)
{
    if (QelStatus bad = first(src.check(), dst.check(), steps(src.step, dst.step), size(roi))) return bad;
    auto row = [=](int r) { std::apply(kernel, std::tuple_cat(src.row(r), dst.row(r), std::tuple(roi.width))); };
    if constexpr (kLoop == kParallel)
        forRowsInParallel(roi, row);
    else
        forRows(roi, row);
    return qelStsNoErr;
}

}

// A member: the exported function, its layouts, the loop over its rows, its kernel, and the two doors to that kernel.
// Kernels decide by the place in the row, so one serves whole rows and multiples of four pixels.
#define QEL_MEMBER(EXPORTED, SOURCE, DESTINATION, LOOP, KERNEL, ROW, OPT, PARAMETERS, ARGUMENTS)                       \
    QelStatus EXPORTED(SOURCE::Argument pSrc, int srcStep, DESTINATION::Argument pDst, int dstStep, QelSize roi)       \
    {                                                                                                                  \
        SOURCE src = {pSrc, srcStep};                                                                                  \
        DESTINATION dst = {pDst, dstStep};                                                                             \
        return convert<LOOP>(src, dst, roi, kernels<ColourKernels>().KERNEL);                                          \
    }                                                                                                                  \
    void ROW PARAMETERS { kernels<ColourKernels>().KERNEL ARGUMENTS; }                                                 \
    void OPT PARAMETERS { kernels<ColourKernels>().KERNEL ARGUMENTS; }

// Members by layout.
#define QEL_P3C3(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromPlanes3, ToBytes, LOOP, KERNEL, ROW, OPT,                                                     \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* dst, int width), (a, b, c, dst, width))
#define QEL_P3C3_PACKED(NAME, LOOP, KERNEL, ROW, OPT)                                                                  \
    QEL_MEMBER(NAME, FromPlanes3, ToWords, LOOP, KERNEL, ROW, OPT,                                                     \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint16_t* dst, int width),                       \
               (a, b, c, dst, width))
#define QEL_P3P3(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromPlanes3, ToPlanes3, LOOP, KERNEL, ROW, OPT,                                                   \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, uint8_t* d, uint8_t* e, uint8_t* f, int width),  \
               (a, b, c, d, e, f, width))
#define QEL_P4P4(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromPlanes4, ToPlanes4, LOOP, KERNEL, ROW, OPT,                                                   \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* k, uint8_t* d, uint8_t* e,        \
                uint8_t* f, uint8_t* dstK, int width),                                                                 \
               (a, b, c, k, d, e, f, dstK, width))
#define QEL_P4C4(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromPlanes4, ToBytes, LOOP, KERNEL, ROW, OPT,                                                     \
               (const uint8_t* a, const uint8_t* b, const uint8_t* c, const uint8_t* k, uint8_t* dst, int width),      \
               (a, b, c, k, dst, width))
#define QEL_C3P3(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromBytes, ToPlanes3, LOOP, KERNEL, ROW, OPT,                                                     \
               (const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, int width), (src, y, cb, cr, width))
#define QEL_C3P3_PACKED(NAME, LOOP, KERNEL, ROW, OPT)                                                                  \
    QEL_MEMBER(NAME, FromWords, ToPlanes3, LOOP, KERNEL, ROW, OPT,                                                     \
               (const uint16_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, int width), (src, y, cb, cr, width))
#define QEL_C4P4(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromBytes, ToPlanes4, LOOP, KERNEL, ROW, OPT,                                                     \
               (const uint8_t* src, uint8_t* y, uint8_t* cb, uint8_t* cr, uint8_t* k, int width),                      \
               (src, y, cb, cr, k, width))
#define QEL_C3C1(NAME, LOOP, KERNEL, ROW, OPT)                                                                         \
    QEL_MEMBER(NAME, FromBytes, ToBytes, LOOP, KERNEL, ROW, OPT, (const uint8_t* src, uint8_t* dst, int width),        \
               (src, dst, width))

// clang-format off
QEL_P3C3(qeliYCbCrToRGB_JPEG_8u_P3C3R, kParallel, yccToRgb,
         ownqj_YCbCrToRGB_JPEG_8u_P3C3R, ownqj_YCbCrToRGB_JPEG_8u_P3C3R_opt)
QEL_P3C3(qeliYCbCrToBGR_JPEG_8u_P3C3R, kParallel, yccToBgr,
         ownqj_YCbCrToBGR_JPEG_8u_P3C3R, ownqj_YCbCrToBGR_JPEG_8u_P3C3R_opt)
QEL_P3P3(qeliYCbCrToRGB_JPEG_8u_P3R, kParallel, yccToRgbPlanes,
         ownqj_YCbCrToRGB_JPEG_8u_P3R, ownqj_YCbCrToRGB_JPEG_8u_P3R_opt)
QEL_P3C3_PACKED(qeliYCbCrToRGB555_JPEG_8u16u_P3C3R, kSerial, yccToRgb555,
                ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB555_JPEG_8u16u_P3C3R_opt)
QEL_P3C3_PACKED(qeliYCbCrToBGR555_JPEG_8u16u_P3C3R, kSerial, yccToBgr555,
                ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR555_JPEG_8u16u_P3C3R_opt)
QEL_P3C3_PACKED(qeliYCbCrToRGB565_JPEG_8u16u_P3C3R, kSerial, yccToRgb565,
                ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R, ownqj_YCbCrToRGB565_JPEG_8u16u_P3C3R_opt)
QEL_P3C3_PACKED(qeliYCbCrToBGR565_JPEG_8u16u_P3C3R, kSerial, yccToBgr565,
                ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R, ownqj_YCbCrToBGR565_JPEG_8u16u_P3C3R_opt)
QEL_P4P4(qeliYCCKToCMYK_JPEG_8u_P4R, kParallel, ycckToCmykPlanes,
         ownqj_YCCKToCMYK_JPEG_8u_P4R, ownqj_YCCKToCMYK_JPEG_8u_P4R_opt)
QEL_P4C4(qeliYCCKToCMYK_JPEG_8u_P4C4R, kParallel, ycckToCmyk,
         ownqj_YCCKToCMYK_JPEG_8u_P4C4R, ownqj_YCCKToCMYK_JPEG_8u_P4C4R_opt)
QEL_P3P3(qeliRGBToYCbCr_JPEG_8u_P3R, kParallel, rgbPlanesToYcc,
         ownqj_RGBToYCbCr_JPEG_8u_P3R, ownqj_RGBToYCbCr_JPEG_8u_P3R_opt)
QEL_C3P3(qeliRGBToYCbCr_JPEG_8u_C3P3R, kParallel, rgbToYcc,
         ownqj_RGBToYCbCr_JPEG_8u_C3P3R, ownqj_RGBToYCbCr_JPEG_8u_C3P3R_opt)
QEL_C3P3(qeliBGRToYCbCr_JPEG_8u_C3P3R, kParallel, bgrToYcc,
         ownqj_BGRToYCbCr_JPEG_8u_C3P3R, ownqj_BGRToYCbCr_JPEG_8u_C3P3R_opt)
QEL_C3P3_PACKED(qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R, kSerial, rgb555ToYcc,
                ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB555ToYCbCr_JPEG_16u8u_C3P3R_opt)
QEL_C3P3_PACKED(qeliBGR555ToYCbCr_JPEG_16u8u_C3P3R, kSerial, bgr555ToYcc,
                ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR555ToYCbCr_JPEG_16u8u_C3P3R_opt)
QEL_C3P3_PACKED(qeliRGB565ToYCbCr_JPEG_16u8u_C3P3R, kSerial, rgb565ToYcc,
                ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_RGB565ToYCbCr_JPEG_16u8u_C3P3R_opt)
QEL_C3P3_PACKED(qeliBGR565ToYCbCr_JPEG_16u8u_C3P3R, kSerial, bgr565ToYcc,
                ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R, ownqj_BGR565ToYCbCr_JPEG_16u8u_C3P3R_opt)
QEL_P4P4(qeliCMYKToYCCK_JPEG_8u_P4R, kParallel, cmykPlanesToYcck,
         ownqj_CMYKToYCCK_JPEG_8u_P4R, ownqj_CMYKToYCCK_JPEG_8u_P4R_opt)
QEL_C4P4(qeliCMYKToYCCK_JPEG_8u_C4P4R, kParallel, cmykToYcck,
         ownqj_CMYKToYCCK_JPEG_8u_C4P4R, ownqj_CMYKToYCCK_JPEG_8u_C4P4R_opt)
QEL_P3C3(qeliRGBToY_JPEG_8u_P3C1R, kParallel, rgbPlanesToY,
         ownqj_RGBToY_JPEG_8u_P3C1R, ownqj_RGBToY_JPEG_8u_P3C1R_opt)
QEL_C3C1(qeliRGBToY_JPEG_8u_C3C1R, kParallel, rgbToY,
         ownqj_RGBToY_JPEG_8u_C3C1R, ownqj_RGBToY_JPEG_8u_C3C1R_opt)
QEL_C3C1(qeliBGRToY_JPEG_8u_C3C1R, kParallel, bgrToY,
         ownqj_BGRToY_JPEG_8u_C3C1R, ownqj_BGRToY_JPEG_8u_C3C1R_opt)
// clang-format on
