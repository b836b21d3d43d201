// Definitions of the exported functions of the wavelets, by the shape of their arguments. Names stand whole where these
// macros are used; KERNELS is what lifts lines of T.
#pragma once

#include "jpeg2k/wavelet_calls.h"

// Rows of an extended region.
#define QEL_WAVELET_ROWS(T, KERNELS, FORWARD, INVERSE)                                                                 \
    QelStatus FORWARD(const T* pSrc, int srcStep, T* pDstLow, int dstLowStep, T* pDstHigh, int dstHighStep,            \
                      QelSize dstSize, int phase)                                                                      \
    {                                                                                                                  \
        return forwardRows(KERNELS, pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);        \
    }                                                                                                                  \
    QelStatus INVERSE(const T* pSrcLow, int srcLowStep, const T* pSrcHigh, int srcHighStep, QelSize srcSize, T* pDst,  \
                      int dstStep, int phase)                                                                          \
    {                                                                                                                  \
        return inverseRows(KERNELS, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);        \
    }

// Its columns, and the doors to them.
#define QEL_WAVELET_COLUMNS(T, KERNELS, FORWARD, INVERSE, FORWARD_DOOR, INVERSE_DOOR)                                  \
    QelStatus FORWARD(const T* pSrc, int srcStep, T* pDstLow, int dstLowStep, T* pDstHigh, int dstHighStep,            \
                      QelSize dstSize, int phase)                                                                      \
    {                                                                                                                  \
        if (QelStatus bad = checkColumns(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize))          \
            return bad;                                                                                                \
        FORWARD_DOOR(pSrc, srcStep, pDstLow, dstLowStep, pDstHigh, dstHighStep, dstSize, phase);                       \
        return qelStsNoErr;                                                                                            \
    }                                                                                                                  \
    QelStatus INVERSE(const T* pSrcLow, int srcLowStep, const T* pSrcHigh, int srcHighStep, QelSize srcSize, T* pDst,  \
                      int dstStep, int phase)                                                                          \
    {                                                                                                                  \
        if (QelStatus bad = checkColumns(pDst, dstStep, pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize))          \
            return bad;                                                                                                \
        INVERSE_DOOR(pSrcLow, srcLowStep, pSrcHigh, srcHighStep, srcSize, pDst, dstStep, phase);                       \
        return qelStsNoErr;                                                                                            \
    }                                                                                                                  \
    void FORWARD_DOOR(const T* src, int srcStep, T* low, int lowStep, T* high, int highStep, QelSize size, int phase)  \
    {                                                                                                                  \
        forwardColumns(KERNELS, src, srcStep, low, lowStep, high, highStep, size, phase);                              \
    }                                                                                                                  \
    void INVERSE_DOOR(const T* low, int lowStep, const T* high, int highStep, QelSize size, T* dst, int dstStep,       \
                      int phase)                                                                                       \
    {                                                                                                                  \
        inverseColumns(KERNELS, low, lowStep, high, highStep, size, dst, dstStep, phase);                              \
    }

// Tiles in place, and what of the work buffer depends on the filter: the shortest line that needs one, and the samples
// of extension that it has room for.
#define QEL_WAVELET_IN_PLACE(T, KERNELS, LEAST, EXTENSION, SIZE, FORWARD, INVERSE)                                     \
    QelStatus SIZE(const QelRect* pTileRect, int* pSize)                                                               \
    {                                                                                                                  \
        return lineBufferSize<T>(pTileRect, pSize, LEAST, EXTENSION);                                                  \
    }                                                                                                                  \
    QelStatus FORWARD(T* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)                          \
    {                                                                                                                  \
        return transformInPlace(KERNELS, Direction::forward, pSrcDst, srcDstStep, pTileRect, pBuffer);                 \
    }                                                                                                                  \
    QelStatus INVERSE(T* pSrcDst, int srcDstStep, const QelRect* pTileRect, uint8_t* pBuffer)                          \
    {                                                                                                                  \
        return transformInPlace(KERNELS, Direction::inverse, pSrcDst, srcDstStep, pTileRect, pBuffer);                 \
    }

// Tiles between a picture and four subbands.
#define QEL_WAVELET_BANDS(T, KERNELS, LEAST, EXTENSION, SIZE, FORWARD, INVERSE)                                        \
    QelStatus SIZE(const QelRect* pTileRect, int* pSize)                                                               \
    {                                                                                                                  \
        return tileBufferSize<T>(pTileRect, pSize, LEAST, EXTENSION);                                                  \
    }                                                                                                                  \
    QelStatus FORWARD(const T* pSrc, int srcStep, const QelRect* pTileRect, T* const pDst[4], const int dstStep[4],    \
                      uint8_t* pBuffer)                                                                                \
    {                                                                                                                  \
        return forwardTile(KERNELS, pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);                                 \
    }                                                                                                                  \
    QelStatus INVERSE(const T* const pSrc[4], const int srcStep[4], const QelRect* pTileRect, T* pDst, int dstStep,    \
                      uint8_t* pBuffer)                                                                                \
    {                                                                                                                  \
        return inverseTile(KERNELS, pSrc, srcStep, pTileRect, pDst, dstStep, pBuffer);                                 \
    }

// The door to lines in place.
#define QEL_WAVELET_LINE(T, KERNELS, DIRECTION, DOOR)                                                                  \
    void DOOR(T* line, int len, int phase) { liftLine(KERNELS, Direction::DIRECTION, line, len, phase); }

// The doors to single rows.
#define QEL_WAVELET_FORWARD_ROW(T, KERNELS, DOOR)                                                                      \
    void DOOR(const T* src, T* low, T* high, int len, int phase)                                                       \
    {                                                                                                                  \
        KERNELS.forwardRow(src, extendedLine(len, phase), low, high);                                                  \
    }
#define QEL_WAVELET_INVERSE_ROW(T, KERNELS, DOOR)                                                                      \
    void DOOR(const T* low, const T* high, T* dst, int len, int phase)                                                 \
    {                                                                                                                  \
        KERNELS.inverseRow(low, high, extendedLine(len, phase), dst);                                                  \
    }
#define QEL_WAVELET_ROWS_PAST_CACHES(T, KERNELS, FORWARD, INVERSE)                                                     \
    void FORWARD(const T* src, T* low, T* high, int len, int phase)                                                    \
    {                                                                                                                  \
        forwardRowPastCaches(KERNELS, src, low, high, len, phase);                                                     \
    }                                                                                                                  \
    void INVERSE(const T* low, const T* high, T* dst, int len, int phase)                                              \
    {                                                                                                                  \
        inverseRowPastCaches(KERNELS, low, high, dst, len, phase);                                                     \
    }
