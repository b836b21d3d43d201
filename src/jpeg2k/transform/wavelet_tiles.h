// SPDX-License-Identifier: Apache-2.0
// Tiles: one level of the transform in both directions, in place or between a picture and four subbands.
#pragma once

#include "core/rows.h"
#include "jpeg2k/transform/wavelet_lines.h"
#include "qeljx/types.h"

namespace qel {
namespace {

template <class T> struct Bands {
    T* const* planes;
    const int* steps;
};

// A tile's two directions.
inline Line across(const QelRect& tile) { return {tile.width, tile.x & 1}; }
inline Line down(const QelRect& tile) { return {tile.height, tile.y & 1}; }

// Room for a row of the tile. The work buffer has it unless the tile is tiny.
template <class T> struct SpareRow {
    T few[2];
    T* of(const QelRect& tile, void* buffer) { return tile.width <= 2 ? few : (T*)buffer; }
};

// Permutes the rows of a tile while it moves them: row r comes from row from(r), through move(source row, destination
// row), along one cycle after the other. Only the row that a cycle begins with is put aside.
template <class T, class From, class Move>
void permuteRows(T* data, int step, const QelRect& tile, void* buffer, From from, Move move)
{
    SpareRow<T> spare;
    T* aside = spare.of(tile, buffer);
    auto isFirstOfCycle = [&](ptrdiff_t r) {
        ptrdiff_t other = from(r);
        while (other > r) other = from(other);
        return other == r;
    };
    for (int r = 0; r < tile.height; ++r) {
        if (!isFirstOfCycle(r)) continue;
        memcpy(aside, rowAt(data, step, r), size_t(tile.width) * sizeof(T));
        int to = r;
        for (int next = int(from(to)); next != r; to = next, next = int(from(to)))
            move(rowAt(data, step, next), rowAt(data, step, to));
        move(aside, rowAt(data, step, to));
    }
}

template <class T>
void forwardInPlace(const LiftingKernels<T>& kernels, T* data, int step, const QelRect& tile, void* buffer)
{
    const Line row = across(tile), column = down(tile);
    auto rows = interleaved(data, step);
    liftTileColumns<T>(kernels, Direction::forward, column, rows, rows, tile.width);
    auto from = [=](ptrdiff_t r) { return turnOf(column, r); };
    permuteRows(data, step, tile, buffer, from,
                [&](const T* src, T* dst) { forwardTileRow(kernels, row, src, dst, dst + row.lows()); });
}

template <class T>
void inverseInPlace(const LiftingKernels<T>& kernels, T* data, int step, const QelRect& tile, void* buffer)
{
    const Line row = across(tile), column = down(tile);
    auto from = [=](ptrdiff_t r) { return halfOf(column, r); };
    permuteRows(data, step, tile, buffer, from,
                [&](const T* src, T* dst) { inverseTileRow(kernels, row, src, src + row.lows(), dst); });
    auto rows = interleaved(data, step);
    liftTileColumns<T>(kernels, Direction::inverse, column, rows, rows, tile.width);
}

// The work buffer of the functions with subbands: the tile in rows that begin at multiples of 32 bytes, and a row more.
template <class T> ptrdiff_t bufferStep(const QelRect& tile) { return (ptrdiff_t(tile.width) * sizeof(T) + 31) & ~31; }

// Low and high part of row r of the halves in the subbands. The subbands part the halves in the middle, the larger part
// first: at odd origins and sizes that is one sample or row further than the low half goes.
template <class T> struct BandRow {
    T *first, *second;
    size_t firstCount, secondCount;

    BandRow(Bands<T> bands, const QelRect& tile, int r)
        : firstCount((size_t(tile.width) + 1) / 2), secondCount(size_t(tile.width) / 2)
    {
        int upper = tile.height / 2 + tile.height % 2, band = r < upper ? 0 : 1, rowInBand = r < upper ? r : r - upper;
        first = rowAt(bands.planes[band], bands.steps[band], rowInBand);
        second = rowAt(bands.planes[band + 2], bands.steps[band + 2], rowInBand);
    }
};

template <class T> void forwardToBands(const LiftingKernels<T>& kernels, const T* src, int srcStep, const QelRect& tile,
                                       Bands<T> bands, void* buffer)
{
    const Line row = across(tile), column = down(tile);
    const ptrdiff_t step = bufferStep<T>(tile);
    auto rows = interleaved((T*)buffer, step);
    liftTileColumns<T>(kernels, Direction::forward, column, interleaved(src, srcStep), rows, tile.width);
    SpareRow<T> spare;
    T* halves = spare.of(tile, rows.at(tile.height));
    for (int r = 0; r < tile.height; ++r) {
        const T* from = rows.at(turnOf(column, r));
        BandRow<T> to(bands, tile, r);
        if (row.lows() == ptrdiff_t(to.firstCount)) {
            forwardTileRow(kernels, row, from, to.first, to.second);
            continue;
        }
        forwardTileRow(kernels, row, from, halves, halves + row.lows());
        memcpy(to.first, halves, to.firstCount * sizeof(T));
        memcpy(to.second, halves + to.firstCount, to.secondCount * sizeof(T));
    }
}

template <class T> void inverseFromBands(const LiftingKernels<T>& kernels, Bands<const T> bands, const QelRect& tile,
                                         T* dst, int dstStep, void* buffer)
{
    const Line row = across(tile), column = down(tile);
    const ptrdiff_t step = bufferStep<T>(tile);
    auto rows = interleaved((T*)buffer, step);
    SpareRow<T> spare;
    T* halves = spare.of(tile, rows.at(tile.height));
    for (int r = 0; r < tile.height; ++r) {
        T* to = rows.at(turnOf(column, r));
        BandRow<const T> from(bands, tile, r);
        if (row.lows() == ptrdiff_t(from.firstCount)) {
            inverseTileRow(kernels, row, from.first, from.second, to);
            continue;
        }
        memcpy(halves, from.first, from.firstCount * sizeof(T));
        memcpy(halves + from.firstCount, from.second, from.secondCount * sizeof(T));
        inverseTileRow(kernels, row, (const T*)halves, (const T*)halves + row.lows(), to);
    }
    liftTileColumns<T>(kernels, Direction::inverse, column, rows, interleaved(dst, dstStep), tile.width);
}

}
}
