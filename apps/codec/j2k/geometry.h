// SPDX-License-Identifier: Apache-2.0
// Where things lie in a JPEG 2000 picture: tiles, tile-components, resolutions, subbands, precincts, code-blocks
// (T.800 Annex B). Coordinates are absolute: on the reference grid, or on the same grid divided.
#pragma once

#include <algorithm>
#include <cstdint>

namespace qel::codec::j2k {

// From (x0, y0) up to, not including, (x1, y1).
struct Rect {
    uint32_t x0 = 0, y0 = 0, x1 = 0, y1 = 0;

    uint32_t width() const { return x1 - x0; }
    uint32_t height() const { return y1 - y0; }
    uint64_t area() const { return uint64_t(width()) * height(); }
    bool isEmpty() const { return x0 >= x1 || y0 >= y1; }
    bool operator==(const Rect&) const = default;
};

constexpr uint32_t ceilDivide(uint64_t value, uint64_t by) { return uint32_t((value + by - 1) / by); }

// Subbands, numbered as the library numbers types of bands: the first letter is the horizontal filter.
enum class BandKind { ll = 0, lh = 1, hl = 2, hh = 3 };

// What a rectangle of the reference grid is in a component sampled every dx-th column and dy-th row (B-3, B-12).
Rect subsampled(const Rect& rect, uint32_t dx, uint32_t dy);

// A tile-component after `levels` halvings, 0 to 32 (B-14).
Rect resolutionRect(const Rect& tileComponent, int levels);

// A subband of the decomposition level, 1 to 32; a tile-component that is not decomposed is its own `ll` of level 0
// (B-15).
Rect bandRect(const Rect& tileComponent, int level, BandKind kind);

// The cells of 2^widthBits x 2^heightBits, in a partition that begins at (0, 0), that a rectangle touches.
struct Grid {
    Grid() = default;
    Grid(const Rect& rect, int widthBits, int heightBits);

    uint64_t cells() const { return uint64_t(across) * down; }
    // Part of `rect` in the cell of this column and row, counted from the first ones.
    Rect cell(const Rect& rect, uint32_t column, uint32_t row) const;

    int widthBits = 0, heightBits = 0;
    uint32_t firstColumn = 0, firstRow = 0; // in the whole partition
    uint32_t across = 0, down = 0;          // both 0 for an empty rectangle
};

}
