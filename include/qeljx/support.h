/* SPDX-License-Identifier: Apache-2.0 */
/* Library version, aligned memory, and the generic copy, convert, logic, zig-zag and arithmetic primitives. */
#ifndef QELJX_SUPPORT_H
#define QELJX_SUPPORT_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The library's version record: one constant object, the same pointer on every call. */
QEL_API const QelLibraryVersion* qeljGetLibVersion(void);

/* Memory aligned to 32 bytes, or null if `len` (bytes) is less than 1 or memory is short. Release with qelsFree. */
QEL_API uint8_t* qelsMalloc_8u(int len);

/* Releases what qelsMalloc_8u returned; a null pointer is ignored. */
QEL_API void qelsFree(void* ptr);

/* Copy and convert a region, row by row. Steps are in bytes, `roi` in elements; any address and any step from 1 on will
 * do. Source and destination must not overlap; rows of the destination that overlap each other come out as if written
 * from top to bottom. Checks, in this order: null pointers, then the size, then the steps (sizes before steps, unlike
 * most functions). */
QEL_API QelStatus qeliConvert_8u16u_C1R(const uint8_t* pSrc, int srcStep, uint16_t* pDst, int dstStep, QelSize roi);
QEL_API QelStatus qeliCopy_16s_C1R(const int16_t* pSrc, int srcStep, int16_t* pDst, int dstStep, QelSize roi);
QEL_API QelStatus qeliCopy_32f_C1R(const float* pSrc, int srcStep, float* pDst, int dstStep, QelSize roi);

/* Each destination element is the source element AND `value`. Source and destination may be the same region. */
QEL_API QelStatus qeliAndC_32s_C1R(const int32_t* pSrc, int srcStep, int32_t value, int32_t* pDst, int dstStep,
                                   QelSize roi);
QEL_API QelStatus qeliAndC_32s_C1IR(int32_t value, int32_t* pSrcDst, int srcDstStep, QelSize roi);

/* Puts 64 values that stand in zig-zag order (T.81 Figure A.6) into natural order, row after row. Not in place. */
QEL_API QelStatus qeliZigzagInv8x8_16s_C1(const int16_t* pSrc, int16_t* pDst);

/* Fill with zero, or copy, `len` elements. Source and destination must not overlap. */
QEL_API QelStatus qelsZero_8u(uint8_t* pDst, int len);
QEL_API QelStatus qelsZero_16s(int16_t* pDst, int len);
QEL_API QelStatus qelsCopy_8u(const uint8_t* pSrc, uint8_t* pDst, int len);

/* Each destination element is `value` divided by the source element, to nearest, ties to even: 32768 by 3 is 10923.
 * A source of 0 gives 65535 (or 0 if `value` is 0) and the warning qelStsDivByZero; all elements are computed. */
QEL_API QelStatus qelsDivCRev_16u(const uint16_t* pSrc, uint16_t value, uint16_t* pDst, int len);
QEL_API QelStatus qelsDivCRev_16u_I(uint16_t value, uint16_t* pSrcDst, int len);

#ifdef __cplusplus
}
#endif

#endif
