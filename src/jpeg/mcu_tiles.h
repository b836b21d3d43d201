// Tiles of pixels for the MCU kernels. A register holds 16 pixels of a channel in each of its blocks of 16 bytes: a row
// of 16, or in tiles of 8 columns the halves of two rows.
#pragma once

#include "jpeg/pixel_formats.h"

namespace qel {
namespace QEL_BUILD {
namespace {

constexpr int kWidth = QEL_WIDTH < 16 ? 16 : QEL_WIDTH, kBlocks = kWidth / 16;
using Wide = S16<kWidth>;
using Op = Simd<kWidth>;

// Where the rows of a register lie. A format's Row.
template <class T> struct TileRows {
    T* first;            // the row of the first block
    ptrdiff_t blockStep; // from block to block
    ptrdiff_t upperStep; // in tiles of 8 columns, from the lower half of a block to the upper one

    QEL_INLINE TileRows operator+(ptrdiff_t bytes) const { return {first + bytes, blockStep, upperStep}; }
};

// The samples V of a format: a register of each channel, of pixels in rows of 16 (kIsWide) or 8.
template <bool kIsWide> struct Tile {
    using Type = U8<kWidth>;
    static constexpr int kCount = kWidth;

    // kParts registers, one after another in each block: 16 * kParts bytes of a wide row, or 8 * kParts of two rows.
    template <int kParts> static QEL_INLINE void store(TileRows<uint8_t> rows, const Type (&parts)[kParts])
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
    template <int kParts> static QEL_INLINE void load(TileRows<const uint8_t> rows, Type (&parts)[kParts])
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
        for (int k = 0; k < kParts; ++k) parts[k] = (Type)joinBlocks<kWidth>(blocks[k]);
    }

    static QEL_INLINE Type evenBytes(Type a, Type b) { return Op::packUnsigned((Wide)a & 0xFF, (Wide)b & 0xFF); }
    static QEL_INLINE Type oddBytes(Type a, Type b)
    {
        return Op::packUnsigned((Wide)((U16<kWidth>)a >> 8), (Wide)((U16<kWidth>)b >> 8));
    }

    static QEL_INLINE void store2(TileRows<uint8_t> rows, Type a, Type b)
    {
        store<2>(rows, {Op::zipLow(a, b), Op::zipHigh(a, b)});
    }
    static QEL_INLINE void load2(TileRows<const uint8_t> rows, Type& a, Type& b)
    {
        Type parts[2];
        load(rows, parts);
        a = evenBytes(parts[0], parts[1]);
        b = oddBytes(parts[0], parts[1]);
    }
    static QEL_INLINE void store3(TileRows<uint8_t> rows, Type a, Type b, Type c)
    {
        Op::zip3(a, b, c);
        store<3>(rows, {a, b, c});
    }
    static QEL_INLINE void load3(TileRows<const uint8_t> rows, Type& a, Type& b, Type& c)
    {
        Type parts[3];
        load(rows, parts);
        a = parts[0], b = parts[1], c = parts[2];
        Op::unzip3(a, b, c);
    }
    static QEL_INLINE void store4(TileRows<uint8_t> rows, Type a, Type b, Type c, Type d)
    {
        zip4<kWidth>(a, b, c, d);
        store<4>(rows, {a, b, c, d});
    }
    static QEL_INLINE void load4(TileRows<const uint8_t> rows, Type& a, Type& b, Type& c, Type& d)
    {
        Type parts[4];
        load(rows, parts);
        Type ac[2], bd[2];
#pragma GCC unroll 4
        for (int k = 0; k < 2; ++k) {
            ac[k] = evenBytes(parts[2 * k], parts[2 * k + 1]);
            bd[k] = oddBytes(parts[2 * k], parts[2 * k + 1]);
        }
        a = evenBytes(ac[0], ac[1]), c = oddBytes(ac[0], ac[1]);
        b = evenBytes(bd[0], bd[1]), d = oddBytes(bd[0], bd[1]);
    }
};

// Y0, Cb, Y1, Cr for each pair of pixels.
template <class Row> struct YccPairs {
    static constexpr int kBytes = 2;
    Row row;

    template <class V, class S> QEL_INLINE void get(ptrdiff_t i, S& y, S& cb, S& cr) const
    {
        if constexpr (V::kCount == 1) {
            auto pair = row + 4 * (i / 2);
            y = row[2 * i], cb = pair[1], cr = pair[3];
        } else {
            V::load2(row + 2 * i, y, cb);
            auto words = (Wide)cb;
            cb = (S)((words & 0xFF) | words << 8);
            cr = (S)((words & -256) | (words >> 8 & 0xFF));
        }
    }
    template <class V, class S> QEL_INLINE void put(ptrdiff_t i, S y, S cb, S cr) const
    {
        if constexpr (V::kCount == 1)
            V::store2(row + 2 * i, y, i % 2 == 0 ? cb : cr);
        else
            V::store2(row + 2 * i, y, (S)(((Wide)cb & 0xFF) | ((Wide)cr & -256)));
    }
};

}
}
}
