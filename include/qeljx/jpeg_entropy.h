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

QEL_API QelStatus qeliDecodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize);
QEL_API QelStatus qeliDecodeHuffmanSpecInit_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals,
                                                    QelDecodeHuffmanSpec* pSpec);
QEL_API QelStatus qeliDecodeHuffmanSpecInitAlloc_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals,
                                                         QelDecodeHuffmanSpec** ppSpec);
QEL_API QelStatus qeliDecodeHuffmanSpecFree_JPEG_8u(QelDecodeHuffmanSpec* pSpec);
QEL_API QelStatus qeliDecodeHuffmanStateGetBufSize_JPEG_8u(int* pSize);
QEL_API QelStatus qeliDecodeHuffmanStateInit_JPEG_8u(QelDecodeHuffmanState* pState);
QEL_API QelStatus qeliDecodeHuffmanStateInitAlloc_JPEG_8u(QelDecodeHuffmanState** ppState);
QEL_API QelStatus qeliDecodeHuffmanStateFree_JPEG_8u(QelDecodeHuffmanState* pState);

QEL_API QelStatus qeliEncodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize);
QEL_API QelStatus qeliEncodeHuffmanSpecInit_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals,
                                                    QelEncodeHuffmanSpec* pSpec);
QEL_API QelStatus qeliEncodeHuffmanSpecInitAlloc_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals,
                                                         QelEncodeHuffmanSpec** ppSpec);
QEL_API QelStatus qeliEncodeHuffmanSpecFree_JPEG_8u(QelEncodeHuffmanSpec* pSpec);
QEL_API QelStatus qeliEncodeHuffmanStateGetBufSize_JPEG_8u(int* pSize);
QEL_API QelStatus qeliEncodeHuffmanStateInit_JPEG_8u(QelEncodeHuffmanState* pState);
QEL_API QelStatus qeliEncodeHuffmanStateInitAlloc_JPEG_8u(QelEncodeHuffmanState** ppState);
QEL_API QelStatus qeliEncodeHuffmanStateFree_JPEG_8u(QelEncodeHuffmanState* pState);

QEL_API QelStatus qeliEncodeHuffmanRawTableInit_JPEG_8u(const uint32_t* pStatistics, uint8_t* pBits, uint8_t* pVals);

/* Encoding. */
QEL_API QelStatus qeliEncodeHuffman8x8_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int dstLenBytes,
                                                     int* pDstCurrPos, int16_t* pLastDC,
                                                     const QelEncodeHuffmanSpec* pDcTable,
                                                     const QelEncodeHuffmanSpec* pAcTable,
                                                     QelEncodeHuffmanState* pState, int flush);
QEL_API QelStatus qeliEncodeHuffman8x8_Direct_JPEG_16s1u_C1(const int16_t* pSrc, uint8_t* pDst, int* pDstBitsLen,
                                                            int16_t* pLastDC, const QelEncodeHuffmanSpec* pDcTable,
                                                            const QelEncodeHuffmanSpec* pAcTable);
QEL_API QelStatus qeliEncodeHuffmanOne_JPEG_16s1u_C1(int16_t src, uint8_t* pDst, int dstLenBytes, int* pDstCurrPos,
                                                     const QelEncodeHuffmanSpec* pDcTable,
                                                     QelEncodeHuffmanState* pState, int flush);
QEL_API QelStatus qeliGetHuffmanStatistics8x8_JPEG_16s_C1(const int16_t* pSrc, uint32_t* pDcStatistics,
                                                          uint32_t* pAcStatistics, int16_t* pLastDC);
QEL_API QelStatus qeliGetHuffmanStatisticsOne_JPEG_16s_C1(int16_t src, uint32_t* pStatistics);

/* Decoding. */
QEL_API QelStatus qeliDecodeHuffman8x8_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                     int16_t* pDst, int16_t* pLastDC, uint32_t* pMarker,
                                                     const QelDecodeHuffmanSpec* pDcTable,
                                                     const QelDecodeHuffmanSpec* pAcTable,
                                                     QelDecodeHuffmanState* pState);
QEL_API QelStatus qeliDecodeHuffman8x8_Direct_JPEG_1u16s_C1(const uint8_t* pSrc, int* pSrcBitsLen, int16_t* pDst,
                                                            int16_t* pLastDC, uint32_t* pMarker,
                                                            uint32_t* pPrefetchedBits, int* pNumValidPrefetchedBits,
                                                            const QelDecodeHuffmanSpec* pDcTable,
                                                            const QelDecodeHuffmanSpec* pAcTable);
QEL_API QelStatus qeliDecodeHuffmanOne_JPEG_1u16s_C1(const uint8_t* pSrc, int srcLenBytes, int* pSrcCurrPos,
                                                     int16_t* pDst, uint32_t* pMarker,
                                                     const QelDecodeHuffmanSpec* pTable, QelDecodeHuffmanState* pState);

#ifdef __cplusplus
}
#endif

#endif
