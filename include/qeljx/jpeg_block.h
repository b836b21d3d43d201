/* JPEG block transforms: level shift, quantization, and the 8x8 DCT fused with both (T.81 Annex A).
 * Blocks are 64 signed 16-bit values in natural order, row after row; blocks and rows may lie at any address. */
#ifndef QELJX_JPEG_BLOCK_H
#define QELJX_JPEG_BLOCK_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Level shift (T.81 A.3.1): samples to signed values by subtracting 128, and back by adding 128 and clamping to
 * 0..255 (so 32767 gives 255 and -32768 gives 0). Steps are in bytes, `roi` in samples.
 * Sub128 checks pointers, then steps, then the size; Add128 goes argument by argument: source, source step,
 * destination, destination step, size. */
QEL_API QelStatus qeliSub128_JPEG_8u16s_C1R(const uint8_t* pSrc, int srcStep, int16_t* pDst, int dstStep, QelSize roi);
QEL_API QelStatus qeliAdd128_JPEG_16s8u_C1R(const int16_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi);

/* Quantization tables: see the documentation of each function. */
QEL_API QelStatus qeliQuantFwdRawTableInit_JPEG_8u(uint8_t* pRawTable, int quality);
QEL_API QelStatus qeliQuantFwdTableInit_JPEG_8u16u(const uint8_t* pRawTable, uint16_t* pEncTable);
QEL_API QelStatus qeliQuantInvTableInit_JPEG_8u16u(const uint8_t* pRawTable, uint16_t* pDecTable);
QEL_API QelStatus qeliQuantFwd8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pEncTable);
QEL_API QelStatus qeliQuantInv8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pDecTable);

/* DCT with quantization. */
QEL_API QelStatus qeliDCTQuantFwd8x8LS_JPEG_8u16s_C1R(const uint8_t* pSrc, int srcStep, int16_t* pDst,
                                                      const uint16_t* pEncTable);
QEL_API QelStatus qeliDCTQuantFwd8x8_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, const uint16_t* pEncTable);
QEL_API QelStatus qeliDCTQuantFwd8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pEncTable);
QEL_API QelStatus qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R(const int16_t* pSrc, uint8_t* pDst, int dstStep,
                                                      const uint16_t* pDecTable);
QEL_API QelStatus qeliDCTQuantInv8x8_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, const uint16_t* pDecTable);
QEL_API QelStatus qeliDCTQuantInv8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pDecTable);
QEL_API QelStatus qeliDCT8x8InvLSClip_16s8u_C1R(const int16_t* pSrc, uint8_t* pDst, int dstStep, int16_t shift,
                                                uint8_t min, uint8_t max);

#ifdef __cplusplus
}
#endif

#endif
