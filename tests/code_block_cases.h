// SPDX-License-Identifier: Apache-2.0
// Code-blocks of random bytes, and the library's call on them with every buffer guarded.
#pragma once

#include <gtest/gtest.h>

#include "code_block_reference.h"
#include "guarded.h"
#include "random.h"

namespace qel::test {

inline std::vector<uint8_t> randomSegment(Random& random, int length)
{
    std::vector<uint8_t> bytes(static_cast<size_t>(length));
    int kind = random.between(0, 3), often = random.between(0, 12);
    for (uint8_t& byte : bytes) {
        byte = uint8_t(random.between(0, 255) | (kind == 0 ? 0xC0 : 0));
        if (random.between(0, 15) < often) byte = kind == 1 ? 0 : 0xFF;
        if (random.between(0, 7) == 0) byte = uint8_t(random.between(0x7E, 0x92));
    }
    return bytes;
}

// Of any style, also with planes that have no place. The bytes of most segments end before their passes do.
inline CodedBlock randomBlock(Random& random)
{
    static const QelSize sizes[] = {{1, 1},   {2, 3},   {16, 4},   {17, 3},   {5, 9},   {32, 32}, {64, 64},
                                    {13, 40}, {40, 13}, {4, 1024}, {1024, 4}, {1, 300}, {300, 1}};
    QelSize size = sizes[random.between(0, 12)];
    CodedBlock block = {size.width, size.height, random.between(0, 3), random.between(0, random.between(1, 36))};
    block.passes = random.between(-1, 3 * block.planes + 2);
    // Most blocks have a few modes.
    for (int bit = 1; bit <= JPEG2K_SEGMENTATION_SYMBOLS; bit *= 2) block.style |= random.between(0, 2) == 0 ? bit : 0;
    for (int bit : {JPEG2K_CONCEAL_ERRORS, JPEG2K_KEEP_LOW_BITS}) block.style |= random.between(0, 1) * bit;
    int count = random.between(0, 3) == 0 ? random.between(0, 12) : 100;
    for (int i = 0; i < count; ++i)
        block.segments.push_back(randomSegment(random, random.between(0, random.between(0, 1) ? 20 : 1500)));
    return block;
}

// What the library makes of a block. Rows lie a few bytes further apart than they are long.
inline DecodedBlock decodeGuarded(const CodedBlock& block)
{
    std::vector<uint32_t> lengths;
    std::vector<uint8_t> bytes;
    lengths.reserve(1); // not null, also of no segments
    for (auto& segment : block.segments) {
        lengths.push_back(uint32_t(segment.size()));
        bytes.insert(bytes.end(), segment.begin(), segment.end());
    }
    const size_t width = size_t(block.width), height = size_t(block.height), step = width * 4 + 3;
    Guarded<uint8_t> src(bytes.size()), dst(step * (height - 1) + width * 4);
    std::copy(bytes.begin(), bytes.end(), src.data());
    int stateSize = 0;
    EXPECT_EQ(qeliDecodeGetBufSize_JPEG2K({block.width, block.height}, &stateSize), qelStsNoErr);
    Guarded<uint8_t> state(static_cast<size_t>(stateSize), Fault::after, bytes.size() % 32);
    DecodedBlock decoded = {};
    decoded.status = qeliDecodeCodeBlock_JPEG2K_1u32s_C1R(
        src.data(), (int32_t*)dst.data(), int(step), {block.width, block.height}, block.bandType, block.planes,
        block.passes, lengths.data(), int(lengths.size()), block.style, &decoded.errorPlane,
        (QelDecodeCBProgrState*)state.data());
    EXPECT_TRUE(dst.intact() && state.intact());
    for (size_t y = 0; y < height; ++y) {
        for (size_t i = 0; i < 3 && y + 1 < height; ++i) EXPECT_EQ(dst.data()[y * step + width * 4 + i], 0xA5);
        for (size_t x = 0; x < width; ++x) {
            uint32_t value;
            memcpy(&value, dst.data() + y * step + x * 4, sizeof value);
            decoded.coefficients.push_back(value);
        }
    }
    return decoded;
}

inline void expectAsReference(const CodedBlock& block)
{
    DecodedBlock decoded = decodeGuarded(block), expected = decodeReference(block);
    ASSERT_EQ(decoded.status, expected.status);
    ASSERT_EQ(decoded.errorPlane, expected.errorPlane);
    ASSERT_EQ(decoded.coefficients, expected.coefficients);
}

}
