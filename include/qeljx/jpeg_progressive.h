/* SPDX-License-Identifier: Apache-2.0 */
/* Progressive Huffman coding: the scans of T.81 Annex G, an 8x8 block a call. */
#ifndef QELJX_JPEG_PROGRESSIVE_H
#define QELJX_JPEG_PROGRESSIVE_H

#include "jpeg_entropy.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Encoding of progressive scans (T.81 G.1.2). Blocks, stream, *pDstCurrPos and pState are those of
 * qeliEncodeHuffman8x8_JPEG_16s1u_C1, and so are the padding of a flush and the 512 bytes of room that are enough for
 * any call, also for one that ends a run with all its correction bits. The parameters are those of the scan header:
 * ss and se are the first and the last position of its band in zig-zag order, 1 <= ss <= se <= 63; al is the point
 * transform, 0 to 13. A block is given whole to each of its scans: DC coefficients are shifted right by al, and the
 * magnitudes of AC coefficients are, so that -1 with al = 1 counts as 0.
 *
 * Blocks whose band has nothing (more) to code are counted in pState: the run they form, of up to 32767 blocks, is
 * written before the next coefficient, at its greatest length, or by the flush. Each scan, and after a restart marker
 * each interval, therefore ends with a call whose `flush` is not 0, with the table of the scan. It looks at neither
 * block, *pLastDC, ss, se nor al.
 *
 * Returns, in this order: qelStsNullPtrErr if pDst is null, qelStsSizeErr if dstLenBytes is less than 1,
 * qelStsNullPtrErr if pDstCurrPos, pState or the table is null; without flush qelStsNullPtrErr if the block or pLastDC
 * is, qelStsBadArgErr if a parameter of the scan is out of range; nothing is written then. Else qelStsJPEGHuffTableErr
 * for a value of more than 11 bits, qelStsJPEGOutOfBufErr if the buffer is full, or qelStsJPEGHuffSpecErr if a symbol
 * has no code: what comes before is written, and the scan has to be started again. Else qelStsNoErr. A flush that fails
 * initialises the state in the DC functions only; in the AC functions it keeps the bits that are pending, but neither
 * the run nor its correction bits.
 *
 * Worked: an AC scan of nothing but two blocks of zeros is, at its flush, the code of symbol 0x10 and one bit 0, filled
 * with ones.
 */

/* The first scan of DC coefficients. *pLastDC is the shifted DC coefficient of the component's last block. */
QEL_API QelStatus qeliEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                             int* pDstCurrPos, int16_t* pLastDC, int al,
                                                             const QelEncodeHuffmanSpec* pDcTable,
                                                             QelEncodeHuffmanState* pState, int flush);
/* A later scan of DC coefficients: bit al of each, without a table. */
QEL_API QelStatus qeliEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                              int* pDstCurrPos, int al, QelEncodeHuffmanState* pState,
                                                              int flush);
/* The first scan of a band of AC coefficients. */
QEL_API QelStatus qeliEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                             int* pDstCurrPos, int ss, int se, int al,
                                                             const QelEncodeHuffmanSpec* pAcTable,
                                                             QelEncodeHuffmanState* pState, int flush);
/*
 * A later scan of a band: bit al of the coefficients that are not 0 without it, and those that become not 0 with it.
 * Bits of the former kind wait in pState, up to 937 of them, for the run that their blocks belong to.
 */
QEL_API QelStatus qeliEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                              int* pDstCurrPos, int ss, int se, int al,
                                                              const QelEncodeHuffmanSpec* pAcTable,
                                                              QelEncodeHuffmanState* pState, int flush);

/*
 * Statistics for the tables of these scans: each adds the symbols that its encoder would write to 256 counters, which
 * the caller has set to 0. The AC functions keep the run in pState, initialised before, as the encoders do, and count
 * the last one when `flush` is not 0, which initialises the state again.
 *
 * Returns, in this order: qelStsNullPtrErr if the counters or pState are null, and without flush if the block or
 * pLastDC is; qelStsBadArgErr if a parameter of the scan is out of range; nothing is counted then. Else
 * qelStsJPEGHuffTableErr for a DC difference of more than 11 bits, or a value in the first scan of a band of more than
 * 10, one less than the encoder takes and the most that 8-bit samples have; what comes before it is counted. Else
 * qelStsNoErr.
 */
QEL_API QelStatus qeliGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pDcStatistics,
                                                                  int16_t* pLastDC, int al);
QEL_API QelStatus qeliGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pAcStatistics, int ss,
                                                                  int se, int al, QelEncodeHuffmanState* pState,
                                                                  int flush);
QEL_API QelStatus qeliGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pAcStatistics, int ss,
                                                                   int se, int al, QelEncodeHuffmanState* pState,
                                                                   int flush);

/* Decoding.
 *
 * Of a block, 64 coefficients in natural order at any address, each scan gives some coefficients or some of their bits
 * (T.81 G.2); the caller clears it before the first scan and keeps it between scans. Stream, position, marker and state
 * are those of qeliDecodeHuffman8x8_JPEG_1u16s_C1: the caller initialises pState and sets *pMarker and *pLastDC to 0
 * before each scan and after each restart marker. A caller whose data come in pieces keeps a copy of the block too,
 * for refinements change some coefficients before they find that bits are lacking. ss, se and al are those of the
 * scan's header: the band, in positions along the zigzag, and the bits that this scan leaves to later ones.
 *
 * Returns, in this order: qelStsNullPtrErr if pSrc is null, qelStsSizeErr if srcLenBytes is less than 1,
 * qelStsNullPtrErr if another pointer but the table and the state is null, qelStsBadArgErr unless
 * 1 <= ss <= se <= 63 and 0 <= al <= 13, qelStsNullPtrErr if the table or the state is null, qelStsBadArgErr if
 * *pSrcCurrPos is less than 0; nothing is written then. Else qelStsJPEGOutOfBufErr if the segment or a marker ends
 * before the block does, or qelStsJPEGCoeffPosErr if a run of zeros leads past the block, in a refinement past se: the
 * block then keeps what was decoded before, and position, state, *pMarker and *pLastDC tell how far that was. Else
 * qelStsNoErr. Nothing outside the segment is read, and nothing outside the block is written, whatever the bytes.
 */

/*
 * First scan of DC coefficients (T.81 G.1.2.1): pDst[0] becomes *pLastDC << al; *pLastDC is the sum of the differences,
 * before the shift. Sums and shifts wrap to 16 bits. Worked: a difference of 5 after a *pLastDC of 0 gives, with
 * al = 2, a *pLastDC of 5 and a coefficient of 20.
 */
QEL_API QelStatus qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                             int16_t* pDst, int16_t* pLastDC, uint32_t* pMarker, int al,
                                                             const QelDecodeHuffmanSpec* pDcTable,
                                                             QelDecodeHuffmanState* pState);
/* Refinement of DC coefficients (T.81 G.1.2.1): the next bit, if it is 1, sets bit al of pDst[0]. */
QEL_API QelStatus qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                              int16_t* pDst, uint32_t* pMarker, int al,
                                                              QelDecodeHuffmanState* pState);
/*
 * First scan of AC coefficients (T.81 G.1.2.2): those that are not 0 are stored, shifted left by al (wrapping to 16
 * bits); the others are left alone. An end-of-band run goes to pState: the blocks that it counts are left alone without
 * a look at the stream. A run of sixteen zeros that leads past se ends the block, and so does a coefficient there,
 * which a damaged stream may have: it is stored.
 */
QEL_API QelStatus qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                             int16_t* pDst, uint32_t* pMarker, int ss, int se, int al,
                                                             const QelDecodeHuffmanSpec* pAcTable,
                                                             QelDecodeHuffmanState* pState);
/*
 * Refinement of AC coefficients (T.81 G.1.2.3). A coefficient that is 0 may become 1 << al or its negative; of a symbol
 * only the run counts, and whether its category is 0. One that is not 0 takes a bit of the stream, also in the blocks
 * of an end-of-band run, and moves away from zero by 1 << al (wrapping) if that is 1. A run of sixteen zeros that leads
 * past se ends the block. Worked: after the symbol 0x11, the sign bit 1 and the correction bit 1, with al = 0, a band
 * of 2, 0, 0 is 3, 0, 1.
 */
QEL_API QelStatus qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                              int16_t* pDst, uint32_t* pMarker, int ss, int se, int al,
                                                              const QelDecodeHuffmanSpec* pAcTable,
                                                              QelDecodeHuffmanState* pState);

#ifdef __cplusplus
}
#endif

#endif
