/* JPEG colour conversion of whole planes (JFIF full-range equations). */
#ifndef QELJX_JPEG_COLOUR_H
#define QELJX_JPEG_COLOUR_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

QEL_API QelStatus qeliYCbCrToRGB_JPEG_8u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                               QelSize roi);
QEL_API QelStatus qeliYCbCrToBGR_JPEG_8u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                               QelSize roi);
QEL_API QelStatus qeliYCbCrToRGB_JPEG_8u_P3R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi);
QEL_API QelStatus qeliYCbCrToRGB555_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst,
                                                     int dstStep, QelSize roi);
QEL_API QelStatus qeliYCbCrToBGR555_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst,
                                                     int dstStep, QelSize roi);
QEL_API QelStatus qeliYCbCrToRGB565_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst,
                                                     int dstStep, QelSize roi);
QEL_API QelStatus qeliYCbCrToBGR565_JPEG_8u16u_P3C3R(const uint8_t* const* pSrc, int srcStep, uint16_t* pDst,
                                                     int dstStep, QelSize roi);
QEL_API QelStatus qeliYCCKToCMYK_JPEG_8u_P4R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi);
QEL_API QelStatus qeliYCCKToCMYK_JPEG_8u_P4C4R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                               QelSize roi);

QEL_API QelStatus qeliRGBToYCbCr_JPEG_8u_P3R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi);
QEL_API QelStatus qeliRGBToYCbCr_JPEG_8u_C3P3R(const uint8_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                               QelSize roi);
QEL_API QelStatus qeliBGRToYCbCr_JPEG_8u_C3P3R(const uint8_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                               QelSize roi);
QEL_API QelStatus qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst,
                                                     int dstStep, QelSize roi);
QEL_API QelStatus qeliBGR555ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst,
                                                     int dstStep, QelSize roi);
QEL_API QelStatus qeliRGB565ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst,
                                                     int dstStep, QelSize roi);
QEL_API QelStatus qeliBGR565ToYCbCr_JPEG_16u8u_C3P3R(const uint16_t* pSrc, int srcStep, uint8_t* const* pDst,
                                                     int dstStep, QelSize roi);
QEL_API QelStatus qeliCMYKToYCCK_JPEG_8u_P4R(const uint8_t* const* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                             QelSize roi);
QEL_API QelStatus qeliCMYKToYCCK_JPEG_8u_C4P4R(const uint8_t* pSrc, int srcStep, uint8_t* const* pDst, int dstStep,
                                               QelSize roi);
QEL_API QelStatus qeliRGBToY_JPEG_8u_P3C1R(const uint8_t* const* pSrc, int srcStep, uint8_t* pDst, int dstStep,
                                           QelSize roi);
QEL_API QelStatus qeliRGBToY_JPEG_8u_C3C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi);
QEL_API QelStatus qeliBGRToY_JPEG_8u_C3C1R(const uint8_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi);

#ifdef __cplusplus
}
#endif

#endif
