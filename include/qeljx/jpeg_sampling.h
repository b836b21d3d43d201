/* JPEG chroma resampling by two: box filters down, triangle filters up. */
#ifndef QELJX_JPEG_SAMPLING_H
#define QELJX_JPEG_SAMPLING_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

QEL_API QelStatus qeliSampleDownH2V1_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst,
                                                 int dstStep, QelSize dstSize);
QEL_API QelStatus qeliSampleDownH2V2_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst,
                                                 int dstStep, QelSize dstSize);
QEL_API QelStatus qeliSampleUpH2V1_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst,
                                               int dstStep, QelSize dstSize);
QEL_API QelStatus qeliSampleUpH2V2_JPEG_8u_C1R(const uint8_t* pSrc, int srcStep, QelSize srcSize, uint8_t* pDst,
                                               int dstStep, QelSize dstSize);
QEL_API QelStatus qeliSampleDownRowH2V1_Box_JPEG_8u_C1(const uint8_t* pSrc, int srcWidth, uint8_t* pDst);
QEL_API QelStatus qeliSampleDownRowH2V2_Box_JPEG_8u_C1(const uint8_t* pSrc1, const uint8_t* pSrc2, int srcWidth,
                                                       uint8_t* pDst);
QEL_API QelStatus qeliSampleUpRowH2V1_Triangle_JPEG_8u_C1(const uint8_t* pSrc, int srcWidth, uint8_t* pDst);
QEL_API QelStatus qeliSampleUpRowH2V2_Triangle_JPEG_8u_C1(const uint8_t* pSrcNear, const uint8_t* pSrcFar, int srcWidth,
                                                          uint8_t* pDst);

#ifdef __cplusplus
}
#endif

#endif
