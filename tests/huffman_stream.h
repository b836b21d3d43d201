// SPDX-License-Identifier: Apache-2.0
// Whether a decoder has read as far as the bit-at-a-time one: it may have taken in more bytes, or fewer.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "guarded.h"
#include "huffman_reference.h"
#include "jpeg/entropy/huffman_tables.h"

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

// Any bytes, or mostly the same ones. Most 0xFF are stuffed, so that the stream goes on after them.
inline std::vector<uint8_t> randomStream(Random& random, int length)
{
    std::vector<uint8_t> stream(static_cast<size_t>(length));
    int zeros = random.between(0, 3);
    for (auto& byte : stream)
        byte = uint8_t(random.between(0, 3) < zeros ? random.between(0, 255) : random.between(0, 9) ? 0x55 : 0xFF);
    for (size_t i = 1; i < stream.size(); ++i)
        if (stream[i - 1] == 0xFF && random.between(0, 6) != 0) stream[i] = 0;
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

// The library's side of a stream, which ends at a page that faults. It comes whole, or in pieces of up to so many
// bytes; what has not come yet is markers.
struct Stream {
    Guarded<uint8_t> src;
    int pos = 0;
    uint32_t marker = 0;
    QelDecodeHuffmanState state = {};

    explicit Stream(const std::vector<uint8_t>& bytes, int largestPiece = 0)
        : src(bytes.size()), bytes_(bytes), largestPiece_(largestPiece)
    {
        for (size_t i = 0; i < bytes.size(); ++i) src.data()[i] = i % 2 ? 0xD9 : 0xFF;
        receive(largestPiece == 0 ? int(bytes.size()) : 1);
    }
    int len() const { return arrived_; }

    // What `call` gives once enough has come. Until then its caller goes back to where it was before.
    template <class Call, class... Kept> QelStatus whenEnough(Call call, Kept&... kept)
    {
        for (;;) {
            auto before = std::tuple(pos, marker, state, kept...);
            QelStatus status = call();
            if (status != qelStsJPEGOutOfBufErr || arrived_ == int(bytes_.size())) return status;
            std::tie(pos, marker, state, kept...) = before;
            receive(random_.between(1, largestPiece_));
        }
    }

    // The next restart interval, if a marker has ended the one before.
    bool restart(ReferenceReader& reference)
    {
        if (marker == 0) return false;
        state = {};
        marker = reference.marker = reference.word = 0;
        reference.held.clear();
        return true;
    }

    void expectAt(const ReferenceReader& expected, QelStatus status) const
    {
        bool hasEnded = status == qelStsJPEGOutOfBufErr;
        ASSERT_LE(pos, len());
        ASSERT_GE(state.count, 0);
        ASSERT_LE(state.count, 63);
        Ahead ours = aheadOf(expected.src, pos), theirs = aheadOf(expected.src, expected.pos);
        EXPECT_EQ(state.count + (marker == 0 ? ours.bits : 0),
                  int(expected.held.size()) + (expected.marker == 0 ? theirs.bits : 0));
        EXPECT_EQ(marker == 0 ? ours.marker : marker, expected.marker == 0 ? theirs.marker : expected.marker);
        EXPECT_TRUE(!hasEnded || marker == expected.marker);
        // A marker that follows is met at once.
        bool isFollowed = status == qelStsNoErr && len() == int(bytes_.size()) && ours.marker != 0;
        EXPECT_TRUE(marker != 0 || !isFollowed || state.count + ours.bits >= 25);
        uint64_t bits = uint64_t(state.accumulator[1]) << 32 | state.accumulator[0];
        for (int i = 0; i < std::min(state.count, int(expected.held.size())); ++i)
            ASSERT_EQ((bits >> (state.count - 1 - i)) & 1, uint64_t(expected.held[i]));
    }

private:
    void receive(int count)
    {
        int end = std::min(arrived_ + count, int(bytes_.size()));
        std::copy(bytes_.begin() + arrived_, bytes_.begin() + end, src.data() + arrived_);
        arrived_ = end;
    }

    std::vector<uint8_t> bytes_;
    int largestPiece_, arrived_ = 0;
    Random random_{1};
};

}
