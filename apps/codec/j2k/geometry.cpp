// SPDX-License-Identifier: Apache-2.0
// The divisions of T.800 Annex B.
#include "codec/j2k/geometry.h"

namespace qel::codec::j2k {

namespace {

// ceil((x - 2^(level - 1) * isHigh) / 2^level), never below 0.
uint32_t bandCoordinate(uint32_t x, int level, bool isHigh)
{
    if (level == 0) return x;
    int64_t shifted = int64_t(x) - (isHigh ? int64_t(1) << (level - 1) : 0);
    return uint32_t((shifted + (int64_t(1) << level) - 1) >> level);
}

// Part of from..to in cell number `cell`.
void clip(uint32_t& from, uint32_t& to, uint64_t cell, int bits)
{
    from = uint32_t(std::max<uint64_t>(from, cell << bits));
    to = uint32_t(std::min<uint64_t>(to, (cell + 1) << bits));
}

}

Rect subsampled(const Rect& rect, uint32_t dx, uint32_t dy)
{
    return {ceilDivide(rect.x0, dx), ceilDivide(rect.y0, dy), ceilDivide(rect.x1, dx), ceilDivide(rect.y1, dy)};
}

Rect resolutionRect(const Rect& tileComponent, int levels) { return bandRect(tileComponent, levels, BandKind::ll); }

Rect bandRect(const Rect& tileComponent, int level, BandKind kind)
{
    bool highX = kind == BandKind::hl || kind == BandKind::hh;
    bool highY = kind == BandKind::lh || kind == BandKind::hh;
    return {bandCoordinate(tileComponent.x0, level, highX), bandCoordinate(tileComponent.y0, level, highY),
            bandCoordinate(tileComponent.x1, level, highX), bandCoordinate(tileComponent.y1, level, highY)};
}

Grid::Grid(const Rect& rect, int cellWidthBits, int cellHeightBits)
    : widthBits(cellWidthBits), heightBits(cellHeightBits), firstColumn(rect.x0 >> widthBits),
      firstRow(rect.y0 >> heightBits)
{
    if (rect.isEmpty()) return;
    across = ceilDivide(rect.x1, uint64_t(1) << widthBits) - firstColumn;
    down = ceilDivide(rect.y1, uint64_t(1) << heightBits) - firstRow;
}

Rect Grid::cell(const Rect& rect, uint32_t column, uint32_t row) const
{
    Rect part = rect;
    clip(part.x0, part.x1, uint64_t(firstColumn) + column, widthBits);
    clip(part.y0, part.y1, uint64_t(firstRow) + row, heightBits);
    return part;
}

}
