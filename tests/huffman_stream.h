// Whether a decoder has read as far as the bit-at-a-time one: it may have taken in more bytes, or fewer.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "guarded.h"
#include "huffman_reference.h"
#include "jpeg/huffman_tables.h"

namespace qel::test {

inline QelDecodeHuffmanSpec specOf(const Lists& lists)
{
    QelDecodeHuffmanSpec spec;
    EXPECT_EQ(qeliDecodeHuffmanSpecInit_JPEG_8u(lists.bits.data(), lists.values.data(), &spec), qelStsNoErr);
    return spec;
}

inline QelEncodeHuffmanSpec encodeSpecOf(const Lists& lists)
{
    QelEncodeHuffmanSpec spec;
    EXPECT_EQ(qeliEncodeHuffmanSpecInit_JPEG_8u(lists.bits.data(), lists.values.data(), &spec), qelStsNoErr);
    return spec;
}

// Any bytes, or mostly the same ones. Most 0xFF are stuffed, so that the stream goes on behind them.
inline std::vector<uint8_t> randomStream(Random& random, int length)
{
    std::vector<uint8_t> stream(static_cast<size_t>(length));
    int zeros = random.between(0, 3);
    for (auto& byte : stream)
        byte = uint8_t(random.between(0, 3) < zeros ? random.between(0, 255) : random.between(0, 9) ? 0x55 : 0xFF);
    for (size_t i = 1; i < stream.size(); ++i)
        if (stream[i - 1] == 0xFF && random.between(0, 30) != 0) stream[i] = 0;
    return stream;
}

// What lies between a position and the end of the stream, or the marker before it.
struct Ahead {
    int bits = 0;
    uint32_t marker = 0;
    int markerAt = 0;
};
inline Ahead aheadOf(const std::vector<uint8_t>& src, int pos)
{
    Ahead ahead;
    for (int len = int(src.size()); pos < len; ahead.bits += 8) {
        ahead.markerAt = pos;
        if (src[pos++] != 0xFF) continue;
        while (pos < len && src[pos] == 0xFF) ++pos;
        if (pos == len) break;
        ahead.marker = src[pos++];
        if (ahead.marker != 0) break;
    }
    return ahead;
}

// The library's side of a stream, which ends at a page that faults.
struct Stream {
    Guarded<uint8_t> src;
    int pos = 0;
    uint32_t marker = 0;
    QelDecodeHuffmanState state = {};

    explicit Stream(const std::vector<uint8_t>& bytes) : src(bytes.size())
    {
        std::copy(bytes.begin(), bytes.end(), src.data());
    }
    int len() const { return int(src.size()); }

    void expectAt(const ReferenceReader& expected, bool hasEnded) const
    {
        ASSERT_LE(pos, len());
        ASSERT_GE(state.count, 0);
        ASSERT_LE(state.count, 63);
        Ahead ours = aheadOf(expected.src, pos), theirs = aheadOf(expected.src, expected.pos);
        EXPECT_EQ(state.count + (marker == 0 ? ours.bits : 0),
                  int(expected.held.size()) + (expected.marker == 0 ? theirs.bits : 0));
        EXPECT_EQ(marker == 0 ? ours.marker : marker, expected.marker == 0 ? theirs.marker : expected.marker);
        EXPECT_TRUE(!hasEnded || marker == expected.marker);
        uint64_t bits = uint64_t(state.accumulator[1]) << 32 | state.accumulator[0];
        for (int i = 0; i < std::min(state.count, int(expected.held.size())); ++i)
            ASSERT_EQ((bits >> (state.count - 1 - i)) & 1, uint64_t(expected.held[i]));
    }
};

}
