// SPDX-License-Identifier: Apache-2.0
// Pixels of three colours (R, G, B or Y, Cb, Cr) and K, and how they lie in memory.
#pragma once

#include <stdint.h>
#include <string.h>

namespace qel::test {

struct Pixel {
    int a, b, c, k = 0; // R, G, B or Y, Cb, Cr, and K
};

inline int clamp(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

// Pixel layouts: bytes of a pixel in one plane, planes, and how a pixel lies there.
struct Layout {
    int bytes, planes;
    Pixel (*get)(const uint8_t* const* rows, int i);
    void (*put)(uint8_t* const* rows, int i, Pixel p);
};

inline Pixel getPlanes3(const uint8_t* const* s, int i) { return {s[0][i], s[1][i], s[2][i]}; }
inline Pixel getPlanes4(const uint8_t* const* s, int i) { return {s[0][i], s[1][i], s[2][i], s[3][i]}; }
inline void putPlanes3(uint8_t* const* d, int i, Pixel p)
{
    d[0][i] = uint8_t(p.a), d[1][i] = uint8_t(p.b), d[2][i] = uint8_t(p.c);
}
inline void putPlanes4(uint8_t* const* d, int i, Pixel p)
{
    putPlanes3(d, i, p);
    d[3][i] = uint8_t(p.k);
}
inline Pixel invert(Pixel p) { return {255 - p.a, 255 - p.b, 255 - p.c, p.k}; }

template <bool kIsBgr> Pixel ordered(Pixel p) { return kIsBgr ? Pixel{p.c, p.b, p.a} : p; }
template <bool kIsBgr> Pixel get24(const uint8_t* const* s, int i)
{
    return ordered<kIsBgr>({s[0][3 * i], s[0][3 * i + 1], s[0][3 * i + 2]});
}
template <bool kIsBgr> void put24(uint8_t* const* d, int i, Pixel p)
{
    p = ordered<kIsBgr>(p);
    d[0][3 * i] = uint8_t(p.a), d[0][3 * i + 1] = uint8_t(p.b), d[0][3 * i + 2] = uint8_t(p.c);
}
template <bool kIsBgr, int kGreenBits> Pixel get16(const uint8_t* const* s, int i)
{
    int word = s[0][2 * i] | s[0][2 * i + 1] << 8;
    return ordered<kIsBgr>({(word & 0x1F) << 3, kGreenBits == 5 ? (word & 0x3E0) >> 2 : (word & 0x7E0) >> 3,
                            kGreenBits == 5 ? (word & 0x7C00) >> 7 : (word & 0xF800) >> 8});
}
template <bool kIsBgr, int kGreenBits> void put16(uint8_t* const* d, int i, Pixel p)
{
    p = ordered<kIsBgr>(p);
    int word = p.a >> 3 | p.b >> (8 - kGreenBits) << 5 | p.c >> 3 << (5 + kGreenBits);
    d[0][2 * i] = uint8_t(word), d[0][2 * i + 1] = uint8_t(word >> 8);
}

inline const Layout kPlanes = {1, 3, getPlanes3, putPlanes3};
inline const Layout kPlanesK = {1, 4, getPlanes4, putPlanes4};
inline const Layout kInkPlanes = {1, 4, [](const uint8_t* const* s, int i) { return invert(getPlanes4(s, i)); },
                                  [](uint8_t* const* d, int i, Pixel p) { putPlanes4(d, i, invert(p)); }};
inline const Layout kInks = {4, 1,
                             [](const uint8_t* const* s, int i) {
                                 const uint8_t* p = s[0] + 4 * i;
                                 return invert({p[0], p[1], p[2], p[3]});
                             },
                             [](uint8_t* const* d, int i, Pixel p) {
                                 p = invert(p);
                                 uint8_t inks[] = {uint8_t(p.a), uint8_t(p.b), uint8_t(p.c), uint8_t(p.k)};
                                 memcpy(d[0] + 4 * i, inks, 4);
                             }};
inline const Layout kGray = {1, 1, nullptr, [](uint8_t* const* d, int i, Pixel p) { d[0][i] = uint8_t(p.a); }};
inline const Layout kRgb = {3, 1, get24<false>, put24<false>}, kBgr = {3, 1, get24<true>, put24<true>};
inline const Layout kRgb555 = {2, 1, get16<false, 5>, put16<false, 5>},
                    kBgr555 = {2, 1, get16<true, 5>, put16<true, 5>};
inline const Layout kRgb565 = {2, 1, get16<false, 6>, put16<false, 6>},
                    kBgr565 = {2, 1, get16<true, 6>, put16<true, 6>};

}
