/* SPDX-License-Identifier: Apache-2.0 */
/* JPEG entropy coding: Huffman tables, and the coding of sequential scans block by block (T.81 Annexes C, F, K.2). */
#ifndef QELJX_JPEG_ENTROPY_H
#define QELJX_JPEG_ENTROPY_H

#include "types.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct QelDecodeHuffmanSpec QelDecodeHuffmanSpec;   /* table of a decoder */
typedef struct QelEncodeHuffmanSpec QelEncodeHuffmanSpec;   /* table of an encoder */
typedef struct QelDecodeHuffmanState QelDecodeHuffmanState; /* bits of a stream that is being read */
typedef struct QelEncodeHuffmanState QelEncodeHuffmanState; /* bits of a stream that is being written */

/*
 * The four objects are flat blocks of memory, at any address, without pointers: a copy of the bytes is a copy of the
 * object. GetBufSize gives the size in bytes, for Init to build one in the caller's memory; or InitAlloc takes memory
 * with qelsMalloc_8u, and Free gives it back. Tables are only read by the coders, so threads may share them; a state
 * belongs to one stream.
 *
 * Spec objects are made of the two lists of a DHT segment (T.81 B.2.4.2, C.2): pBits has 16 bytes, the numbers of codes
 * of 1 to 16 bits, and pVals as many bytes as they add up to, the symbols in order of code length. State objects are
 * zero after Init; a decoder's is initialised again after each restart marker.
 *
 * Returns qelStsNullPtrErr if a pointer is null, and from InitAlloc also if there is no memory; nothing is written
 * then. The Init functions of specs return qelStsJPEGHuffSpecErr if the lists stand for more than 256 codes; for an
 * encoder also if the codes do not fit their lengths with the word of all ones left free, as T.81 demands (a decoder
 * takes such lists as they come). The object is then not to be used, but InitAlloc has handed it over, and it is to be
 * freed.
 *
 * Worked: counts 0, 3 and values 7, 8, 9 give 7 the code 00, 8 the code 01 and 9 the code 10.
 */

/* The table of a decoder, 1644 bytes. */
QEL_API QelStatus qeliDecodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize);
QEL_API QelStatus qeliDecodeHuffmanSpecInit_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals,
                                                    QelDecodeHuffmanSpec* pSpec);
QEL_API QelStatus qeliDecodeHuffmanSpecInitAlloc_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals,
                                                         QelDecodeHuffmanSpec** ppSpec);
QEL_API QelStatus qeliDecodeHuffmanSpecFree_JPEG_8u(QelDecodeHuffmanSpec* pSpec);
/* The state of a decoder, 20 bytes. */
QEL_API QelStatus qeliDecodeHuffmanStateGetBufSize_JPEG_8u(int* pSize);
QEL_API QelStatus qeliDecodeHuffmanStateInit_JPEG_8u(QelDecodeHuffmanState* pState);
QEL_API QelStatus qeliDecodeHuffmanStateInitAlloc_JPEG_8u(QelDecodeHuffmanState** ppState);
QEL_API QelStatus qeliDecodeHuffmanStateFree_JPEG_8u(QelDecodeHuffmanState* pState);

/* The table of an encoder, 1024 bytes. A value that is listed twice has its later code. */
QEL_API QelStatus qeliEncodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize);
QEL_API QelStatus qeliEncodeHuffmanSpecInit_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals,
                                                    QelEncodeHuffmanSpec* pSpec);
QEL_API QelStatus qeliEncodeHuffmanSpecInitAlloc_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals,
                                                         QelEncodeHuffmanSpec** ppSpec);
QEL_API QelStatus qeliEncodeHuffmanSpecFree_JPEG_8u(QelEncodeHuffmanSpec* pSpec);
/* The state of an encoder, 1044 bytes. */
QEL_API QelStatus qeliEncodeHuffmanStateGetBufSize_JPEG_8u(int* pSize);
QEL_API QelStatus qeliEncodeHuffmanStateInit_JPEG_8u(QelEncodeHuffmanState* pState);
QEL_API QelStatus qeliEncodeHuffmanStateInitAlloc_JPEG_8u(QelEncodeHuffmanState** ppState);
QEL_API QelStatus qeliEncodeHuffmanStateFree_JPEG_8u(QelEncodeHuffmanState* pState);

/*
 * The lists of the table that codes symbols of the given frequencies in the fewest bits (T.81 K.2), limited to codes of
 * 16 bits (K.3). pStatistics has 256 counters, by symbol; pBits takes 16 bytes, pVals one byte for each symbol that was
 * counted, at most 256. The sum of the counters has to be less than 1000000000: beyond that symbols may be left without
 * a code.
 * Returns qelStsNullPtrErr if a pointer is null, and qelStsJPEGHuffSpecErr if a code would have more than 32 bits
 * before the lengths are limited; nothing is written then. Where nothing was counted, pBits is all 0 and pVals is left
 * alone. Worked: if only symbol 42 was counted, pBits is 1, 0, 0, ... and pVals is 42.
 */
QEL_API QelStatus qeliEncodeHuffmanRawTableInit_JPEG_8u(const uint32_t* pStatistics, uint8_t* pBits, uint8_t* pVals);

/*
 * Encoding of sequential scans (T.81 F.1.2). A block has 64 coefficients in natural order, row after row, at any
 * address. The stream is written to pDst, a buffer of dstLenBytes bytes, from byte *pDstCurrPos on, which moves on; a
 * byte 0xFF is followed by a stuffed 0. Up to 7 bits stay in pState until the next call. Bytes after the position are
 * left as they are, and those before it are not looked at again: between any two calls the caller may take them away
 * and set the position to 0, or go on in another buffer. No call needs more than 512 bytes of room: 64 codes and values
 * of 32 bits, each byte stuffed; a flush needs 2. *pLastDC is the DC coefficient of the last block of the component (0
 * at the start of a scan or restart interval), and becomes that of this block.
 *
 * A call with `flush` other than 0 ends a scan or restart interval: it fills the last byte with ones and initialises
 * the state again, also if there is no room for that byte. It looks at pDst, dstLenBytes, pDstCurrPos and pState only;
 * the other pointers may be null. Markers are written by the caller.
 *
 * Returns, in this order: qelStsNullPtrErr if pDst is null, qelStsSizeErr if dstLenBytes is less than 1,
 * qelStsNullPtrErr if pDstCurrPos or pState, or without flush another pointer, is null; nothing is written then. Else
 * qelStsJPEGOutOfBufErr if the buffer is full, or qelStsJPEGHuffSpecErr if a symbol has no code: what comes before is
 * written, *pDstCurrPos and *pLastDC have moved on, and the scan has to be started again. Else qelStsNoErr.
 *
 * Worked: with the luminance tables of T.81 K.3 a block of zeros after a *pLastDC of 0 adds the bits 00 (no difference)
 * and 1010 (end of block); a flush then writes the byte 0x2B.
 */
QEL_API QelStatus qeliEncodeHuffman8x8_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                     int* pDstCurrPos, int16_t* pLastDC,
                                                     const QelEncodeHuffmanSpec* pDcTable,
                                                     const QelEncodeHuffmanSpec* pAcTable,
                                                     QelEncodeHuffmanState* pState, int flush);
/*
 * Like qeliEncodeHuffman8x8_JPEG_16s1u_C1, but without a state: *pDstBitsLen is the number of bits in pDst, and those
 * of a partial last byte stand at its top. The caller provides the room: a block adds at most 513 bytes, and nothing
 * after its last byte is touched. The position has 31 bits: a stream ends before 256 MiB. There is no flush. Returns
 * qelStsNullPtrErr if a pointer is null, else qelStsNoErr; a block ends early at a symbol without a code.
 */
QEL_API QelStatus qeliEncodeHuffman8x8_Direct_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int* pDstBitsLen,
                                                            int16_t* pLastDC, const QelEncodeHuffmanSpec* pDcTable,
                                                            const QelEncodeHuffmanSpec* pAcTable);
/*
 * The difference *pSrc of a lossless scan (T.81 H.1.2.2), at any address, like a DC coefficient; -32768 stands for the
 * difference 32768, whose category 16 has no bits after it. Checks and flush are those of
 * qeliEncodeHuffman8x8_JPEG_16s1u_C1 (a flush looks at neither pSrc nor pDcTable), but past the checks the result is
 * always qelStsNoErr: the caller provides 8 bytes of room for a difference, 2 for a flush, and a code for every
 * category. Where one of them lacks, writing ends there.
 */
QEL_API QelStatus qeliEncodeHuffmanOne_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                     int* pDstCurrPos, const QelEncodeHuffmanSpec* pDcTable,
                                                     QelEncodeHuffmanState* pState, int flush);
/*
 * Adds the symbols that qeliEncodeHuffman8x8_JPEG_16s1u_C1 would write to 256 counters each, which the caller has set
 * to 0, and sets *pLastDC as it does. Returns qelStsNullPtrErr if a pointer is null, else qelStsNoErr. Worked: a block
 * of zeros after a *pLastDC of 0 adds 1 to pDcStatistics[0] and 1 to pAcStatistics[0], end of block.
 */
QEL_API QelStatus qeliGetHuffmanStatistics8x8_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pDcStatistics,
                                                          uint32_t* pAcStatistics, int16_t* pLastDC);
/* The same for the difference *pSrc of a lossless scan: adds 1 to pStatistics[category], 0 to 16. */
QEL_API QelStatus qeliGetHuffmanStatisticsOne_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pStatistics);

/*
 * Decoding of sequential scans (T.81 F.2.2). The segment is read from pSrc, srcLenBytes bytes, from byte *pSrcCurrPos
 * on, which moves on past what has been taken in: up to 63 bits wait in pState. Stuffed zeros and fill bytes are
 * dropped. When the reader comes to a marker, its code (0xD9 for 0xFF 0xD9) goes to *pMarker, the position lies after
 * it, and no byte is read until the caller sets *pMarker to 0; what is left in pState is still decoded. That may be
 * some blocks ahead: the reader looks on until it holds 25 bits again, also after a block. So the marker that follows
 * the last block of an interval, if it is in pSrc yet, has come when that block has; and a restart interval is
 *
 *     qeliDecodeHuffmanStateInit_JPEG_8u(state);
 *     marker = 0, lastDc of each component = 0;
 *     for each block of the interval: qeliDecodeHuffman8x8_JPEG_1u16s_C1(..., &marker, ...);
 *     marker is now 0xD0 to 0xD7, in turns, or what ends the scan; position is where the next interval begins
 *
 * Where data come in pieces, the caller keeps copies of position, pState, *pLastDC and *pMarker from before each call.
 * If the call gives qelStsJPEGOutOfBufErr, it puts them back, waits for more and calls again; a *pMarker other than 0
 * after such a call says that no more will come. Pieces may end anywhere, also within 0xFF and what belongs to it: the
 * position does not pass such a byte. Bytes before the position are not needed any more.
 *
 * pDst takes 64 coefficients in natural order, at any address; what a block does not have is 0. *pLastDC is as for the
 * encoder; sums wrap to 16 bits. Codes that the table does not have are read as 16 bits and symbol 0, so that damage
 * ends a block and is not reported. Nothing outside the segment is read, whatever it holds.
 *
 * Returns, in this order: qelStsNullPtrErr if pSrc is null, qelStsBadArgErr if srcLenBytes is less than 0,
 * qelStsNullPtrErr if another pointer is null, qelStsBadArgErr if *pSrcCurrPos is less than 0; nothing is written then.
 * Else qelStsJPEGOutOfBufErr if the segment or a marker ends before the block does, or qelStsJPEGCoeffPosErr if a run
 * leads past the last coefficient: the block then has what came before, and position, state, *pMarker and *pLastDC tell
 * how far that was. Else qelStsNoErr.
 *
 * Worked: with the luminance tables of T.81 K.3 the byte 0x2B gives a block whose only value is *pLastDC.
 */
QEL_API QelStatus qeliDecodeHuffman8x8_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                     int16_t* pDst, int16_t* pLastDC, uint32_t* pMarker,
                                                     const QelDecodeHuffmanSpec* pDcTable,
                                                     const QelDecodeHuffmanSpec* pAcTable,
                                                     QelDecodeHuffmanState* pState);
/*
 * Like qeliDecodeHuffman8x8_JPEG_1u16s_C1, but without a length: the segment has to end with a marker, and no byte
 * after one is read. Without a state: *pPrefetchedBits holds *pNumValidPrefetchedBits unread bits (0 to 32) at its low
 * end, and the byte that *pSrcBitsLen, a position in bits, lies in is read next; it comes back as a multiple of 8. A
 * marker within an AC symbol ends the block with success and no valid bits left; within the DC symbol only *pMarker is
 * set, and the block is 0. The marker after an interval's last block comes when bits are lacking, mostly with that
 * block but perhaps only with such a further call. Segments end before 256 MiB, as the position has 31 bits. Within the
 * bits of a value it gives qelStsJPEGOutOfBufErr. A code that is not in the table gives qelStsJPEGHuffTableErr. Before
 * all of that, qelStsNullPtrErr if a pointer is null, then qelStsBadArgErr if the position is less than 0 or the number
 * of bits not in 0..32.
 */
QEL_API QelStatus qeliDecodeHuffman8x8_Direct_JPEG_1u16s_C1(const uint8_t* pSrc, int* pSrcBitsLen, int16_t* pDst,
                                                            int16_t* pLastDC, uint32_t* pMarker,
                                                            uint32_t* pPrefetchedBits, int* pNumValidPrefetchedBits,
                                                            const QelDecodeHuffmanSpec* pDcTable,
                                                            const QelDecodeHuffmanSpec* pAcTable);
/*
 * One difference of a lossless scan (T.81 H.2) to *pDst; category 16, the difference 32768, comes as -32768. Stream,
 * checks and results are those of qeliDecodeHuffman8x8_JPEG_1u16s_C1; a call that fails leaves *pDst as it is.
 */
QEL_API QelStatus qeliDecodeHuffmanOne_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                     int16_t* pDst, uint32_t* pMarker,
                                                     const QelDecodeHuffmanSpec* pTable, QelDecodeHuffmanState* pState);

#ifdef __cplusplus
}
#endif

#endif
