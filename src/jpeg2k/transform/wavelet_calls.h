// SPDX-License-Identifier: Apache-2.0
// What the public functions of both filters do: one template for each shape of arguments, with its checks.
#pragma once

#include "core/checks.h"
#include "core/dispatch.h"
#include "core/rows.h"
#include "jpeg2k/transform/wavelet_tiles.h"

namespace qel {
namespace {

inline Line extendedLine(int pairs, int phase) { return {2 * ptrdiff_t(pairs), phase != 0, false}; }

template <class T> QelStatus forwardRows(const LiftingKernels<T>& kernels, const T* src, int srcStep, T* low,
                                         int lowStep, T* high, int highStep, QelSize dstSize, int phase)
{
    if (QelStatus bad = first(pointers(src, low, high), steps(srcStep, lowStep, highStep), size(dstSize))) return bad;
    forRows(dstSize, [&](int r) {
        kernels.forwardRow(rowAt(src, srcStep, r), extendedLine(dstSize.width, phase), rowAt(low, lowStep, r),
                           rowAt(high, highStep, r));
    });
    return qelStsNoErr;
}

template <class T> QelStatus inverseRows(const LiftingKernels<T>& kernels, const T* low, int lowStep, const T* high,
                                         int highStep, QelSize srcSize, T* dst, int dstStep, int phase)
{
    if (QelStatus bad = first(pointers(low, high, dst), steps(lowStep, highStep, dstStep), size(srcSize))) return bad;
    forRows(srcSize, [&](int r) {
        kernels.inverseRow(rowAt(low, lowStep, r), rowAt(high, highStep, r), extendedLine(srcSize.width, phase),
                           rowAt(dst, dstStep, r));
    });
    return qelStsNoErr;
}

// The doors to the columns, which check nothing.
template <class T> void forwardColumns(const LiftingKernels<T>& kernels, const T* src, int srcStep, T* low, int lowStep,
                                       T* high, int highStep, QelSize size, int phase)
{
    Line line = extendedLine(size.height, phase);
    liftColumns<T>(kernels, Direction::forward, line, interleaved(src, srcStep),
                   inHalves(low, lowStep, high, highStep, line.phase), size.width);
}
template <class T> void inverseColumns(const LiftingKernels<T>& kernels, const T* low, int lowStep, const T* high,
                                       int highStep, QelSize size, T* dst, int dstStep, int phase)
{
    Line line = extendedLine(size.height, phase);
    liftColumns<T>(kernels, Direction::inverse, line, inHalves(low, lowStep, high, highStep, line.phase),
                   interleaved(dst, dstStep), size.width);
}
template <class T> QelStatus checkColumns(const T* whole, int wholeStep, const T* low, int lowStep, const T* high,
                                          int highStep, QelSize halfSize)
{
    return first(pointers(whole, low, high), steps(wholeStep, lowStep, highStep), size(halfSize));
}

// A line in place, with its extension around it: a column of width 1.
template <class T> void liftLine(const LiftingKernels<T>& kernels, Direction direction, T* line, int len, int phase)
{
    auto samples = interleaved(line, sizeof(T));
    liftColumns<T>(kernels, direction, {len, phase != 0, false}, samples, samples, 1);
}

// Sizes that an int cannot hold are no sizes.
inline QelStatus putSize(int64_t bytes, int* pSize)
{
    if (bytes < 0 || bytes > INT32_MAX) return qelStsSizeErr;
    *pSize = int(bytes);
    return qelStsNoErr;
}
// A line of the tile and its extension, for tiles that have lines of `least` samples or more.
template <class T> int64_t lineBytes(const QelRect& tile, int least, int extension)
{
    if (tile.width < least && tile.height < least) return 0;
    int64_t longer = tile.width > tile.height ? tile.width : tile.height;
    return int64_t(sizeof(T)) * (longer + extension);
}
template <class T> QelStatus lineBufferSize(const QelRect* tile, int* pSize, int least, int extension)
{
    if (QelStatus bad = pointers(tile, pSize)) return bad;
    return putSize(lineBytes<T>(*tile, least, extension), pSize);
}
template <class T> QelStatus tileBufferSize(const QelRect* tile, int* pSize, int least, int extension)
{
    if (QelStatus bad = pointers(tile, pSize)) return bad;
    int64_t step = (int64_t(sizeof(T)) * tile->width + 31) & ~int64_t(31), rows;
    if (__builtin_mul_overflow(step, tile->height, &rows) || rows > INT32_MAX) return qelStsSizeErr;
    return putSize(rows + lineBytes<T>(*tile, least, extension), pSize);
}

inline QelStatus tileSize(const QelRect* tile) { return size({tile->width, tile->height}); }

template <class T> QelStatus transformInPlace(const LiftingKernels<T>& kernels, Direction direction, T* data, int step,
                                              const QelRect* tile, void* buffer)
{
    if (QelStatus bad = first(pointers(data), steps(step), pointers(tile, buffer))) return bad;
    if (QelStatus bad = tileSize(tile)) return bad;
    (direction == Direction::forward ? forwardInPlace<T> : inverseInPlace<T>)(kernels, data, step, *tile, buffer);
    return qelStsNoErr;
}

// The plane's pointer and step, the subbands and their steps, the tile and the buffer.
template <class T> QelStatus checkBands(const T* plane, int step, T* const* bands, const int* bandSteps,
                                        const QelRect* tile, const void* buffer)
{
    if (QelStatus bad = first(pointers(plane, tile, bandSteps, buffer), planes<4>(bands))) return bad;
    return first(steps(step, bandSteps[0], bandSteps[1], bandSteps[2], bandSteps[3]), tileSize(tile));
}
template <class T> QelStatus forwardTile(const LiftingKernels<T>& kernels, const T* src, int srcStep,
                                         const QelRect* tile, T* const* dst, const int* dstSteps, void* buffer)
{
    if (QelStatus bad = checkBands<const T>(src, srcStep, dst, dstSteps, tile, buffer)) return bad;
    forwardToBands(kernels, src, srcStep, *tile, Bands<T>{dst, dstSteps}, buffer);
    return qelStsNoErr;
}
template <class T> QelStatus inverseTile(const LiftingKernels<T>& kernels, const T* const* src, const int* srcSteps,
                                         const QelRect* tile, T* dst, int dstStep, void* buffer)
{
    if (QelStatus bad = checkBands<const T>(dst, dstStep, src, srcSteps, tile, buffer)) return bad;
    inverseFromBands(kernels, Bands<const T>{src, srcSteps}, *tile, dst, dstStep, buffer);
    return qelStsNoErr;
}

}
}
