/* SPDX-License-Identifier: Apache-2.0 */
/* JPEG block transforms: level shift, quantization, and the 8x8 DCT fused with both (T.81 Annex A).
 * Blocks are 64 signed 16-bit values in natural order, row after row; blocks and rows may lie at any address. */
#ifndef QELJX_JPEG_BLOCK_H
#define QELJX_JPEG_BLOCK_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Level shift (T.81 A.3.1): samples to signed values by subtracting 128, and back by adding 128 and clamping to
 * 0..255 (so 32767 gives 255 and -32768 gives 0). Steps are in bytes, `roi` in samples. Source and destination must not
 * overlap; rows of the destination that overlap each other come out as if written from top to bottom.
 * Sub128 checks pointers, then steps, then the size; Add128 goes argument by argument: source, source step,
 * destination, destination step, size. */
QEL_API QelStatus qeliSub128_JPEG_8u16s_C1R(const uint8_t* pSrc, int srcStep, int16_t* pDst, int dstStep, QelSize roi);
QEL_API QelStatus qeliAdd128_JPEG_16s8u_C1R(const int16_t* pSrc, int srcStep, uint8_t* pDst, int dstStep, QelSize roi);

/* Quantization (T.81 A.3.4). A raw table is 64 step sizes in zig-zag order, as a DQT segment holds them. The working
 * tables are 64 entries in natural order: the encoder table holds 32768 / step, rounded to nearest (a step of 3 gives
 * 10923), the decoder table the steps themselves. All functions return qelStsNullPtrErr for a null pointer, checked
 * before anything is written, and else qelStsNoErr, unless said otherwise. */

/* Scales a raw table in place by a quality, in the way that T.81's example tables (Annex K) are meant for: 50 keeps
 * it, 75 halves it, 1 multiplies it by 50; steps are rounded and kept within 1..255. Any quality is accepted: from 100
 * on, and below 0, every step becomes 1; 0 makes every step 255 (but a step of 0 becomes 1, as always). */
QEL_API QelStatus qeliQuantFwdRawTableInit_JPEG_8u(uint8_t* pRawTable, int quality);
/* The working tables of a raw table. A step of 0 gives 65535 in the encoder table and, after all other entries are
 * computed, the warning qelStsDivByZero; the decoder table keeps the 0 without a warning. */
QEL_API QelStatus qeliQuantFwdTableInit_JPEG_8u16u(const uint8_t* pRawTable, uint16_t* pEncTable);
QEL_API QelStatus qeliQuantInvTableInit_JPEG_8u16u(const uint8_t* pRawTable, uint16_t* pDecTable);

/* Quantizes a block in place: each coefficient divided by its step, to nearest with ties upwards after a floor at
 * 2^-16 (a step of 16 takes 8 to 1, -8 to 0, -24 to -1 and -25 to -2). Coefficients are expected within -4096..4095,
 * which the DCT keeps to; others wrap by 8192. qeliDCTQuantFwd8x8* round ties to even instead. */
QEL_API QelStatus qeliQuantFwd8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pEncTable);
/* Multiplies a block by its steps in place. Products are kept to their low 16 bits: 1000 times 100 gives -31072. */
QEL_API QelStatus qeliQuantInv8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pDecTable);

/* The 8x8 DCT (T.81 A.3.3) in fixed point, fused with the steps around it. Samples are 8 rows of 8 bytes, rows
 * srcStep or dstStep bytes apart; blocks are 64 values in natural order, coefficient 8 * v + u having the vertical
 * frequency v and the horizontal frequency u; tables come from qeliQuantFwdTableInit_JPEG_8u16u (pEncTable) and
 * qeliQuantInvTableInit_JPEG_8u16u (pDecTable). A flat block of samples v has the mean coefficient 8 * (v - 128).
 * On pictures a coefficient differs from the exact transform by less than 0.8, a sample by less than 0.62, where
 * rounding alone costs 0.5. The result is the same on every processor.
 * The LS functions and qeliDCT8x8InvLSClip_16s8u_C1R go with samples of planes, those of the colour conversion and the
 * sampling; the functions from block to block with the MCU conversion, which shifts the level itself.
 * Checks, in this order: null samples or blocks, the step (qelStsStepErr below 1), a null table; nothing is written if
 * one fails. Source and destination may be the same block. Rows of samples that overlap each other are written from top
 * to bottom. All return qelStsNoErr otherwise. */

/* Level shift by -128, DCT, and division by the steps, to nearest with ties to even. */
QEL_API QelStatus qeliDCTQuantFwd8x8LS_JPEG_8u16s_C1R(const uint8_t* pSrc, int srcStep, int16_t* pDst,
                                                      const uint16_t* pEncTable);
/* Like that, but from values that are already shifted. Of values within -256..255, which are the fastest, all
 * coefficients fit -2048..2047. Of values within -512..511 those coefficients are right that lie in this range, others
 * wrap by 4096 before they are divided (a flat block of 256 has the mean coefficient -2048); beyond, sums saturate. */
QEL_API QelStatus qeliDCTQuantFwd8x8_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, const uint16_t* pEncTable);
QEL_API QelStatus qeliDCTQuantFwd8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pEncTable);

/* Multiplication by the steps (low 16 bits), inverse DCT, level shift by 128 and clamping to 0..255. */
QEL_API QelStatus qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R(const int16_t* pSrc, uint8_t* pDst, int dstStep,
                                                      const uint16_t* pDecTable);
/* Like that, but without shift and clamping. */
QEL_API QelStatus qeliDCTQuantInv8x8_JPEG_16s_C1(const int16_t* pSrc, int16_t* pDst, const uint16_t* pDecTable);
QEL_API QelStatus qeliDCTQuantInv8x8_JPEG_16s_C1I(int16_t* pSrcDst, const uint16_t* pDecTable);
/* Inverse DCT of a dequantized block, plus `shift`, clamped to min..max (min is not to exceed max). */
QEL_API QelStatus qeliDCT8x8InvLSClip_16s8u_C1R(const int16_t* pSrc, uint8_t* pDst, int dstStep, int16_t shift,
                                                uint8_t min, uint8_t max);

#ifdef __cplusplus
}
#endif

#endif
