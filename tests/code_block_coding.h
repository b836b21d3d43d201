// SPDX-License-Identifier: Apache-2.0
// Code-blocks through the library's encoder, with all that it tells of them.
#pragma once

#include <gtest/gtest.h>
#include <string.h>

#include <memory>
#include <vector>

#include "qeljx.h"

namespace qel::test {

struct FreedEncoder {
    void operator()(QelEncodeState* state) const { EXPECT_EQ(qeliEncodeFree_JPEG2K(state), qelStsNoErr); }
};
using Encoder = std::unique_ptr<QelEncodeState, FreedEncoder>;

inline Encoder makeEncoder(int width, int height)
{
    QelEncodeState* state = nullptr;
    EXPECT_EQ(qeliEncodeInitAlloc_JPEG2K(&state, width, height), qelStsNoErr);
    return Encoder(state);
}

// How a block is coded, and what came of it.
struct Coded {
    QelSize size;
    int band, style, method, nBitPlanes;
    int planes = -1, passes = -1, segments = -1;
    std::vector<uint8_t> bytes = {};
    std::vector<uint32_t> rates = {}, lengths = {};
};

// From an odd address, with rows apart.
inline void load(QelEncodeState* state, const std::vector<int32_t>& block, Coded& c)
{
    const int rowBytes = 4 * c.size.width, step = rowBytes + 3;
    std::vector<uint8_t> rows(1 + size_t(step) * size_t(c.size.height));
    for (int r = 0; r < c.size.height; ++r)
        memcpy(&rows[size_t(1 + r * step)], &block[size_t(r * c.size.width)], size_t(rowBytes));
    EXPECT_EQ(qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R((const int32_t*)&rows[1], step, c.size.width, c.size.height, state,
                                                     c.band, c.nBitPlanes, c.method, -1, c.style, &c.planes, &c.passes,
                                                     &c.segments),
              qelStsNoErr);
}

// As they are now: those of a loaded block change when its bytes are stored.
inline std::vector<uint32_t> passRates(const QelEncodeState* state, const Coded& c)
{
    std::vector<uint32_t> rates(size_t(c.passes));
    for (int i = 0; i < c.passes; ++i) EXPECT_EQ(qeliEncodeGetRate_JPEG2K(state, i, &rates[size_t(i)]), qelStsNoErr);
    return rates;
}

// In pieces of so many bytes.
inline void store(QelEncodeState* state, Coded& c, int piece)
{
    for (int more = 1; more;) {
        std::vector<uint8_t> part(size_t(piece) + 1, 0xEE);
        int count = piece;
        EXPECT_EQ(qeliEncodeStoreBits_JPEG2K_1u(part.data(), &count, state, &more), qelStsNoErr);
        EXPECT_TRUE(count == piece || !more);
        EXPECT_EQ(part[size_t(count)], 0xEE);
        c.bytes.insert(c.bytes.end(), part.begin(), part.begin() + count);
    }
    c.rates = passRates(state, c);
    c.lengths.resize(size_t(c.segments));
    for (int i = 0; i < c.segments; ++i)
        EXPECT_EQ(qeliEncodeGetTermPassLen_JPEG2K(state, i, &c.lengths[size_t(i)]), qelStsNoErr);
}

}
