// SPDX-License-Identifier: Apache-2.0
// Tiles of pixels for the MCU kernels. A register holds 16 pixels of a channel in each of its blocks of 16 bytes: a row
// of 16, or in tiles of 8 columns the halves of two rows.
#pragma once

#include "core/blocks.h"
#include "jpeg/colour/pixel_formats.h"

namespace qel::QEL_BUILD {
namespace {

constexpr int kBlocks = kWidth / 16;
using Wide = S16<kWidth>;
using Op = Simd<kWidth>;

// Where the rows of a register lie. A format's Row.
template <class T> struct TileRows {
    T* first;            // the row of the first block
    ptrdiff_t blockStep; // from block to block
    ptrdiff_t upperStep; // in tiles of 8 columns, from the lower half of a block to the upper one

    QEL_INLINE TileRows operator+(ptrdiff_t bytes) const { return {first + bytes, blockStep, upperStep}; }
};

// The lanes of a tile: a register of each channel, of pixels in rows of 16 (kIsWide) or 8.
template <bool kIsWide> struct Tile {
    using Bytes = U8<kWidth>;
    static constexpr int kSamples = kWidth;

    // kParts registers, one after another in each block: 16 * kParts bytes of a wide row, or 8 * kParts of two rows.
    template <int kParts> static QEL_INLINE void store(TileRows<uint8_t> rows, const Bytes (&parts)[kParts])
    {
        U8<16> blocks[kParts][kBlocks];
#pragma GCC unroll 4
        for (int k = 0; k < kParts; ++k) splitBlocks<kWidth>((Wide)parts[k], blocks[k]);
#pragma GCC unroll 4
        for (int i = 0; i < kBlocks; ++i) {
            uint8_t *row = rows.first + i * rows.blockStep, *upper = kIsWide ? row + 8 * kParts : row + rows.upperStep;
#pragma GCC unroll 4
            for (int k = 0; k < kParts; ++k) {
                if (kIsWide || 2 * k + 2 <= kParts)
                    qel::QEL_BUILD::store(row + 16 * k, blocks[k][i]);
                else if (2 * k < kParts)
                    Simd<16>::storeHalves(row + 16 * k, upper, blocks[k][i]);
                else
                    qel::QEL_BUILD::store(upper + 16 * k - 8 * kParts, blocks[k][i]);
            }
        }
    }
    template <int kParts> static QEL_INLINE void load(TileRows<const uint8_t> rows, Bytes (&parts)[kParts])
    {
        U8<16> blocks[kParts][kBlocks];
#pragma GCC unroll 4
        for (int i = 0; i < kBlocks; ++i) {
            const uint8_t* row = rows.first + i * rows.blockStep;
            const uint8_t* upper = kIsWide ? row + 8 * kParts : row + rows.upperStep;
#pragma GCC unroll 4
            for (int k = 0; k < kParts; ++k) {
                if (kIsWide || 2 * k + 2 <= kParts)
                    blocks[k][i] = qel::QEL_BUILD::load<U8<16>>(row + 16 * k);
                else if (2 * k < kParts)
                    blocks[k][i] = (U8<16>)U64<16>{qel::QEL_BUILD::load<uint64_t>(row + 16 * k),
                                                   qel::QEL_BUILD::load<uint64_t>(upper)};
                else
                    blocks[k][i] = qel::QEL_BUILD::load<U8<16>>(upper + 16 * k - 8 * kParts);
            }
        }
#pragma GCC unroll 4
        for (int k = 0; k < kParts; ++k) parts[k] = (Bytes)joinBlocks<kWidth>(blocks[k]);
    }

    static QEL_INLINE Bytes evenBytes(Bytes a, Bytes b) { return Op::packUnsigned((Wide)a & 0xFF, (Wide)b & 0xFF); }
    static QEL_INLINE Bytes oddBytes(Bytes a, Bytes b)
    {
        return Op::packUnsigned((Wide)((U16<kWidth>)a >> 8), (Wide)((U16<kWidth>)b >> 8));
    }

    static QEL_INLINE void store2(TileRows<uint8_t> rows, Pair<Bytes> v)
    {
        store<2>(rows, {Op::zipLow(v.a, v.b), Op::zipHigh(v.a, v.b)});
    }
    static QEL_INLINE Pair<Bytes> load2(TileRows<const uint8_t> rows)
    {
        Bytes parts[2];
        load(rows, parts);
        return {evenBytes(parts[0], parts[1]), oddBytes(parts[0], parts[1])};
    }
    static QEL_INLINE void store3(TileRows<uint8_t> rows, Triple<Bytes> v)
    {
        Op::zip3(v.a, v.b, v.c);
        store<3>(rows, {v.a, v.b, v.c});
    }
    static QEL_INLINE Triple<Bytes> load3(TileRows<const uint8_t> rows)
    {
        Bytes parts[3];
        load(rows, parts);
        Op::unzip3(parts[0], parts[1], parts[2]);
        return {parts[0], parts[1], parts[2]};
    }
    static QEL_INLINE void store4(TileRows<uint8_t> rows, Quad<Bytes> v)
    {
        zip4<kWidth>(v.a, v.b, v.c, v.d);
        store<4>(rows, {v.a, v.b, v.c, v.d});
    }
    static QEL_INLINE Quad<Bytes> load4(TileRows<const uint8_t> rows)
    {
        Bytes parts[4];
        load(rows, parts);
        Bytes ac[2], bd[2];
#pragma GCC unroll 4
        for (int k = 0; k < 2; ++k) {
            ac[k] = evenBytes(parts[2 * k], parts[2 * k + 1]);
            bd[k] = oddBytes(parts[2 * k], parts[2 * k + 1]);
        }
        return {evenBytes(ac[0], ac[1]), evenBytes(bd[0], bd[1]), oddBytes(ac[0], ac[1]), oddBytes(bd[0], bd[1])};
    }
};

// Y0, Cb, Y1, Cr for each pair of pixels.
template <class Row> struct YccPairs {
    static constexpr int kElements = 2;
    Row row;

    QEL_INLINE auto get(Single auto, ptrdiff_t i) const
    {
        auto pair = row + 4 * (i / 2);
        return Triple<uint8_t>{row[2 * i], pair[1], pair[3]};
    }
    QEL_INLINE auto get(Several auto lanes, ptrdiff_t i) const
    {
        using V = typename decltype(lanes)::Bytes;
        auto [y, chroma] = lanes.load2(row + 2 * i);
        auto words = (Wide)chroma;
        return Triple<V>{y, (V)((words & 0xFF) | words << 8), (V)((words & -256) | (words >> 8 & 0xFF))};
    }
    QEL_INLINE void put(Single auto lanes, ptrdiff_t i, auto ycc) const
    {
        lanes.store2(row + 2 * i, {ycc.a, i % 2 == 0 ? ycc.b : ycc.c});
    }
    QEL_INLINE void put(Several auto lanes, ptrdiff_t i, auto ycc) const
    {
        using V = typename decltype(lanes)::Bytes;
        lanes.store2(row + 2 * i, {ycc.a, (V)(((Wide)ycc.b & 0xFF) | ((Wide)ycc.c & -256))});
    }
};

}
}
