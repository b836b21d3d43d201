// SPDX-License-Identifier: Apache-2.0
// Pixel formats of colours (core/channels.h), of 8 bits for each channel or packed into 16. Interleaved ones know the
// bytes of a pixel.
#pragma once

#include "core/channels.h"
#include "jpeg/colour/samples.h"

namespace qel::QEL_BUILD {
namespace {

// R, G, B, and C, M, Y, K.
template <class Row> using Rgb24 = Pixels3<Row>;
template <class Row> using Cmyk32 = Pixels4<Row>;

template <class V> QEL_INLINE Triple<V> reversed(Triple<V> v) { return {v.c, v.b, v.a}; }

template <class Row> struct Bgr24 {
    static constexpr int kElements = 3;
    Row row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + 3 * i); }
    QEL_INLINE auto get(auto lanes, ptrdiff_t i) const { return reversed(lanes.load3(row + 3 * i)); }
    QEL_INLINE void put(auto lanes, ptrdiff_t i, auto rgb) const { lanes.store3(row + 3 * i, reversed(rgb)); }
};

// Pixels of 16 bits, little-endian: one colour in bits 0 to 4, green in the middle, one in the upper bits. Channels are
// cut to their upper bits, and read with zeros below. As pairs of bytes (lower, upper):
template <int kGreenBits, class V> QEL_INLINE Triple<V> unpack16(Pair<V> bytes)
{
    auto [lower, upper] = bytes;
    if constexpr (kGreenBits == 5)
        return {V(lower << 3), V((lower >> 2 & 0x38) | upper << 6), V(upper << 1 & 0xF8)};
    else
        return {V(lower << 3), V((lower >> 3 & 0x1C) | upper << 5), V(upper & 0xF8)};
}
template <int kGreenBits, class V> QEL_INLINE Pair<V> pack16(Triple<V> colours)
{
    auto [low, green, high] = colours;
    if constexpr (kGreenBits == 5)
        return {V(low >> 3 | (green << 2 & 0xE0)), V(green >> 6 | (high >> 1 & 0x7C))};
    else
        return {V(low >> 3 | (green << 3 & 0xE0)), V(green >> 5 | (high & 0xF8))};
}

// From whole words, each channel times 16.
template <int kGreenBits, class Words> QEL_INLINE Triple<Words> unpackWords(Words w)
{
    return {w << 7 & 0xF80, kGreenBits == 5 ? w << 2 & 0xF80 : w << 1 & 0xFC0, w >> (kGreenBits - 2) & 0xF80};
}

// Red in the lowest bits.
template <int kGreenBits, class Row> struct Rgb16 {
    static constexpr int kElements = 2;
    Row row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + 2 * i); }
    QEL_INLINE auto get(auto lanes, ptrdiff_t i) const { return unpack16<kGreenBits>(lanes.load2(row + 2 * i)); }
    QEL_INLINE void put(auto lanes, ptrdiff_t i, auto rgb) const { lanes.store2(row + 2 * i, pack16<kGreenBits>(rgb)); }
    // Words by turns of 16 bytes, so that a pack of both halves is in order.
    QEL_INLINE auto getWords(auto lanes, ptrdiff_t i) const
    {
        auto [first, second] = lanes.loadWords(row + 2 * i);
        return Pair{unpackWords<kGreenBits>(first), unpackWords<kGreenBits>(second)};
    }
};
// Blue in the lowest bits.
template <int kGreenBits, class Row> struct Bgr16 {
    static constexpr int kElements = 2;
    Row row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + 2 * i); }
    QEL_INLINE auto get(auto lanes, ptrdiff_t i) const { return reversed(opposite().get(lanes, i)); }
    QEL_INLINE void put(auto lanes, ptrdiff_t i, auto rgb) const { opposite().put(lanes, i, reversed(rgb)); }
    QEL_INLINE auto getWords(auto lanes, ptrdiff_t i) const
    {
        auto [first, second] = opposite().getWords(lanes, i);
        return Pair{reversed(first), reversed(second)};
    }

private:
    QEL_INLINE Rgb16<kGreenBits, Row> opposite() const { return {row}; }
};
template <class Row> using Rgb555 = Rgb16<5, Row>;
template <class Row> using Bgr555 = Bgr16<5, Row>;
template <class Row> using Rgb565 = Rgb16<6, Row>;
template <class Row> using Bgr565 = Bgr16<6, Row>;

}
}
