// Pixel formats for kernels. A format is a row with get<V>(i, ...) and put<V>(i, ...) of the V::kCount pixels from i
// on, channels as V::Type, and atAddresses(i, visit), which calls visit(p) for each address p where a part of pixel i
// begins; interleaved ones know the kBytes of a pixel. Row is a pointer to bytes, or whatever else V loads from and
// stores to.
#pragma once

#include "jpeg/samples.h"

namespace qel {
namespace QEL_BUILD {
namespace {

template <class Row> struct Rgb24 {
    static constexpr int kBytes = 3;
    Row row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + 3 * i); }
    template <class V, class S> QEL_INLINE void get(ptrdiff_t i, S& r, S& g, S& b) const
    {
        V::load3(row + 3 * i, r, g, b);
    }
    template <class V, class S> QEL_INLINE void put(ptrdiff_t i, S r, S g, S b) const
    {
        V::store3(row + 3 * i, r, g, b);
    }
};
template <class Row> struct Bgr24 {
    static constexpr int kBytes = 3;
    Row row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + 3 * i); }
    template <class V, class S> QEL_INLINE void get(ptrdiff_t i, S& r, S& g, S& b) const
    {
        V::load3(row + 3 * i, b, g, r);
    }
    template <class V, class S> QEL_INLINE void put(ptrdiff_t i, S r, S g, S b) const
    {
        V::store3(row + 3 * i, b, g, r);
    }
};

template <class T> struct Planes3 {
    T *first, *second, *third;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const
    {
        visit(first + i), visit(second + i), visit(third + i);
    }
    template <class V, class S> QEL_INLINE void get(ptrdiff_t i, S& a, S& b, S& c) const
    {
        a = V::load(first + i), b = V::load(second + i), c = V::load(third + i);
    }
    template <class V, class S> QEL_INLINE void put(ptrdiff_t i, S a, S b, S c) const
    {
        V::store(first + i, a), V::store(second + i, b), V::store(third + i, c);
    }
};

// Pixels of 16 bits, little-endian: one colour in bits 0 to 4, green in the middle, one in the upper bits. Channels are
// cut to their upper bits, and read with zeros below.
template <int kGreenBits, class S> QEL_INLINE void unpack16(S lower, S upper, S& low, S& green, S& high)
{
    low = S(lower << 3);
    if (kGreenBits == 5) {
        green = S((lower >> 2 & 0x38) | upper << 6);
        high = S(upper << 1 & 0xF8);
    } else {
        green = S((lower >> 3 & 0x1C) | upper << 5);
        high = S(upper & 0xF8);
    }
}
template <int kGreenBits, class S> QEL_INLINE void pack16(S low, S green, S high, S& lower, S& upper)
{
    if (kGreenBits == 5) {
        lower = S(low >> 3 | (green << 2 & 0xE0));
        upper = S(green >> 6 | (high >> 1 & 0x7C));
    } else {
        lower = S(low >> 3 | (green << 3 & 0xE0));
        upper = S(green >> 5 | (high & 0xF8));
    }
}

// From whole words, each channel times 16.
template <int kGreenBits, class Words> QEL_INLINE void unpackWords(Words w, Words& low, Words& green, Words& high)
{
    low = w << 7 & 0xF80;
    green = kGreenBits == 5 ? w << 2 & 0xF80 : w << 1 & 0xFC0;
    high = w >> (kGreenBits - 2) & 0xF80;
}

// Red in the lowest bits.
template <int kGreenBits, class Row> struct Rgb16 {
    static constexpr int kBytes = 2;
    Row row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + 2 * i); }
    template <class V, class S> QEL_INLINE void get(ptrdiff_t i, S& r, S& g, S& b) const
    {
        S lower, upper;
        V::load2(row + 2 * i, lower, upper);
        unpack16<kGreenBits>(lower, upper, r, g, b);
    }
    template <class V, class S> QEL_INLINE void getWords(ptrdiff_t i, S* r, S* g, S* b) const
    {
        S words[2];
        V::loadWords(row + 2 * i, words);
        for (int k = 0; k < 2; ++k) unpackWords<kGreenBits>(words[k], r[k], g[k], b[k]);
    }
    template <class V, class S> QEL_INLINE void put(ptrdiff_t i, S r, S g, S b) const
    {
        S lower, upper;
        pack16<kGreenBits>(r, g, b, lower, upper);
        V::store2(row + 2 * i, lower, upper);
    }
};
// Blue in the lowest bits.
template <int kGreenBits, class Row> struct Bgr16 {
    static constexpr int kBytes = 2;
    Row row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + 2 * i); }
    template <class V, class S> QEL_INLINE void get(ptrdiff_t i, S& r, S& g, S& b) const
    {
        Rgb16<kGreenBits, Row>{row}.template get<V>(i, b, g, r);
    }
    template <class V, class S> QEL_INLINE void getWords(ptrdiff_t i, S* r, S* g, S* b) const
    {
        Rgb16<kGreenBits, Row>{row}.template getWords<V>(i, b, g, r);
    }
    template <class V, class S> QEL_INLINE void put(ptrdiff_t i, S r, S g, S b) const
    {
        Rgb16<kGreenBits, Row>{row}.template put<V>(i, b, g, r);
    }
};
template <class Row> using Rgb555 = Rgb16<5, Row>;
template <class Row> using Bgr555 = Bgr16<5, Row>;
template <class Row> using Rgb565 = Rgb16<6, Row>;
template <class Row> using Bgr565 = Bgr16<6, Row>;

template <class T> struct Planes4 {
    T *first, *second, *third, *fourth;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const
    {
        visit(first + i), visit(second + i), visit(third + i), visit(fourth + i);
    }
    template <class V, class S> QEL_INLINE void get(ptrdiff_t i, S& a, S& b, S& c, S& d) const
    {
        a = V::load(first + i), b = V::load(second + i), c = V::load(third + i), d = V::load(fourth + i);
    }
    template <class V, class S> QEL_INLINE void put(ptrdiff_t i, S a, S b, S c, S d) const
    {
        V::store(first + i, a), V::store(second + i, b), V::store(third + i, c), V::store(fourth + i, d);
    }
};

// Interleaved C, M, Y, K.
template <class Row> struct Cmyk32 {
    static constexpr int kBytes = 4;
    Row row;

    template <class Visit> QEL_INLINE void atAddresses(ptrdiff_t i, Visit visit) const { visit(row + 4 * i); }
    template <class V, class S> QEL_INLINE void get(ptrdiff_t i, S& c, S& m, S& y, S& k) const
    {
        V::load4(row + 4 * i, c, m, y, k);
    }
    template <class V, class S> QEL_INLINE void put(ptrdiff_t i, S c, S m, S y, S k) const
    {
        V::store4(row + 4 * i, c, m, y, k);
    }
};

}
}
}
